// Block sizes out of operand and cache sizes, and the work areas that they need.
#include "blas/gemm/driver.h"
#include "blas/gemm/tables.h"
#include "frame/serv.h"
#include "frame/simd.h"

namespace orv::gemm {
namespace {

// Depth of a block. Panels are 256 deep, so that a panel pair of d fills half of a 32 KiB first-level cache with room
// for C; a shallow product is one block. Between 256 and 512 a real product splits evenly: 300 is not 256 and a rest of
// 44, which would hardly pay for reading C once more. Complex products of middling depth take half the depth.
template <class T> i64 depth_block(i64 k, i64 k_unit)
{
    constexpr i64 full = 256, half = 128;
    if (k < full) return max(round_up(k, k_unit), half);
    if constexpr (is_complex<T>) return k <= 4 * full ? half : full;
    return k > full && k < 2 * full ? round_up(k / 2, k_unit) : full;
}

// Rows of a block of A; a cache of unknown size counts as large.
template <class T> i64 row_block()
{
    i32 cache[orv_serv_cache_entries] = {};
    orv_serv_cache_info(cache);
    return cache[0] != 0 && cache[3] <= small_cache ? sizes<T>.mb_small : sizes<T>.mb_large;
}

template <class T> void get_blks_size(i64 n, i64 k, Desc<T>* desc)
{
    if (desc->kb == 0) desc->kb = depth_block<T>(k, desc->k_unit);
    if (desc->mb == 0) desc->mb = row_block<T>();
    if (desc->nb == 0) desc->nb = round_up(min(max(n, desc->n_unit), sizes<T>.nb_cap), desc->n_unit);
}

struct Areas {
    bool a, scratch, b;
};

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

constexpr i64 margin = 0x200; // bytes behind the panels, for kernels that load ahead of their use
constexpr i64 page_shift = 12, line_shift = 7;

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
    const i64 column = kp * static_cast<i64>(sizeof(T));
    if (areas.a)
        desc->a.bytes = mp * column + margin, desc->a.panel_stride = kp * desc->m_unit,
        desc->a.align_shift = page_shift;
    if (areas.b)
        desc->b.bytes = np * column + margin, desc->b.panel_stride = kp * desc->n_unit,
        desc->b.align_shift = page_shift;
    if (areas.scratch)
        desc->scratch_bytes = column * desc->n_unit * desc->scratch_factor + margin,
        desc->scratch_align_shift = line_shift;
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

// One block for all areas of a selector, each with room to be pushed up to its own boundary. Without memory the handle
// is null and the buffers are left alone.
template <class T> int get_bufs(int selector, void** handle, Desc<T>* desc)
{
    Areas areas;
    if (selector == a_and_b || areas_of(selector, areas) != 0) return 1;
    const auto room = [](bool wanted, i64 bytes, i64 shift) { return wanted ? (i64(2) << shift) + bytes : 0; };
    *handle = orv_serv_allocate(room(areas.a, desc->a.bytes, desc->a.align_shift) +
                                    room(areas.scratch, desc->scratch_bytes, desc->scratch_align_shift) +
                                    room(areas.b, desc->b.bytes, desc->b.align_shift),
                                128);
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
