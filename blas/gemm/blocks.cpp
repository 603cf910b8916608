// Block sizes out of operand and cache sizes, and the work areas that they need.
#include "blas/gemm/blocks.h"

#include "blas/gemm/tables.h"

namespace orv::gemm {
namespace {

template <class T> void get_blks_size(i64 n, i64 k, Desc<T>* desc)
{
    if (desc->kb == 0) desc->kb = depth_block<T>(k, desc->k_unit);
    if (desc->mb == 0) desc->mb = row_block<T>();
    if (desc->nb == 0) desc->nb = column_block<T>(n, desc->n_unit);
}

// 1 if the selector is unknown.
int areas_of(int selector, Areas& areas)
{
    switch (selector) {
    case a_scratch_b:
    case a_scratch_b_too:
        areas = {true, true, true};
        return 0;
    case only_a:
        areas = {true, false, false};
        return 0;
    case only_b:
        areas = {false, false, true};
        return 0;
    case a_and_b:
        areas = {true, false, true};
        return 0;
    case scratch_b:
        areas = {false, true, true};
        return 0;
    case a_scratch:
        areas = {true, true, false};
        return 0;
    case only_scratch:
        areas = {false, true, false};
        return 0;
    default:
        return 1;
    }
}

// Bytes and strides of a selector's areas; those of the others stay as they are.
template <class T> int get_bufs_size(int selector, int mode, i64 m, i64 n, i64 k, Desc<T>* desc)
{
    Areas areas;
    if ((mode != actual_operands && mode != full_blocks) || areas_of(selector, areas) != 0) return 1;
    const auto extent = [mode](i64 size, i64 block, i64 unit) {
        return round_up(mode == actual_operands ? min(size, block) : block, unit);
    };
    const i64 mp = extent(m, desc->mb, desc->m_unit);
    const i64 np = extent(n, desc->nb, desc->n_unit);
    const i64 kp = extent(k, desc->kb, desc->k_unit);
    const AreaBytes bytes(mp, np, kp, sizeof(T), desc->n_unit * desc->scratch_factor);
    if (areas.a)
        desc->a.bytes = bytes.a, desc->a.panel_stride = kp * desc->m_unit, desc->a.align_shift = AreaBytes::page_shift;
    if (areas.b)
        desc->b.bytes = bytes.b, desc->b.panel_stride = kp * desc->n_unit, desc->b.align_shift = AreaBytes::page_shift;
    if (areas.scratch) desc->scratch_bytes = bytes.scratch, desc->scratch_align_shift = AreaBytes::line_shift;
    return 0;
}

// Takes an area from the front of what is left of a block, pushed up to the area's boundary.
template <class T> T* take(std::uintptr_t& front, i64 bytes, i64 shift)
{
    const std::uintptr_t boundary = std::uintptr_t(1) << shift;
    const std::uintptr_t start = (front + boundary - 1) / boundary * boundary;
    front = start + bytes;
    return reinterpret_cast<T*>(start);
}

// One block for all areas of a selector. Without memory the handle is null and the buffers are left alone.
template <class T> int get_bufs(int selector, void** handle, Desc<T>* desc)
{
    Areas areas;
    if (selector == a_and_b || areas_of(selector, areas) != 0) return 1;
    i64 bytes = 0;
    if (areas.a) bytes += room(desc->a.bytes, desc->a.align_shift);
    if (areas.scratch) bytes += room(desc->scratch_bytes, desc->scratch_align_shift);
    if (areas.b) bytes += room(desc->b.bytes, desc->b.align_shift);
    *handle = orv_serv_allocate(bytes, 128);
    if (*handle == nullptr) return 0;
    auto front = reinterpret_cast<std::uintptr_t>(*handle);
    if (areas.a) desc->a.buffer = take<T>(front, desc->a.bytes, desc->a.align_shift);
    if (areas.scratch) desc->scratch_buffer = take<T>(front, desc->scratch_bytes, desc->scratch_align_shift);
    if (areas.b) desc->b.buffer = take<T>(front, desc->b.bytes, desc->b.align_shift);
    return 0;
}

} // namespace

#define BLOCKS(t, T)                                                                                                   \
    ORV_EXPORT void BLAS(t##gemm_get_blks_size)(const i64*, const i64* n, const i64* k, Desc<T>* desc)                 \
    {                                                                                                                  \
        get_blks_size(*n, *k, desc);                                                                                   \
    }                                                                                                                  \
    ORV_EXPORT int BLAS(t##gemm_get_bufs_size)(int selector, int mode, const i64* m, const i64* n, const i64* k,       \
                                               Desc<T>* desc)                                                          \
    {                                                                                                                  \
        return get_bufs_size(selector, mode, *m, *n, *k, desc);                                                        \
    }                                                                                                                  \
    ORV_EXPORT int BLAS(t##gemm_get_bufs)(int selector, void** handle, Desc<T>* desc)                                  \
    {                                                                                                                  \
        return get_bufs(selector, handle, desc);                                                                       \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(t##gemm_free_bufs)(void* handle) { orv_serv_deallocate(handle); }

BLOCKS(s, float)
BLOCKS(d, double)
BLOCKS(c, cpx<float>)
BLOCKS(z, cpx<double>)

} // namespace orv::gemm
