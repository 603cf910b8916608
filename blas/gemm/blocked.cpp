// The blocked product: loop orders over blocks of C and of the depth, packing, and the register kernel inside.
//
// Whatever the order, an element of C gets one sum per block of the depth, blocks ascending. Alpha is multiplied into
// packed A. The last block of the depth may be shallower; its panels still stand as far apart as those of a full one.
#include "blas/gemm/driver.h"
#include "frame/kernels/blas.h"
#include "frame/serv.h"

namespace orv::gemm {
namespace {

// How many steps of `block` from i are left of n.
constexpr i64 part(i64 n, i64 i, i64 block) { return min(n - i, block); }

// A product on its way through the loops.
template <class T> struct Job : Product<T> {
    const Desc<T>* desc;

    // Later passes over a piece of C add.
    T beta_at(i64 p) const { return p == 0 ? this->beta : one<T>; }
};

// op(A)(i:, p:), times alpha, and op(B)(p:, j:), to panels.
template <class T> void pack_a(const Job<T>& x, i64 i, i64 p, i64 rows, i64 depth, T* panels)
{
    const Desc<T>& d = *x.desc;
    const auto copy = is_plain(x.transa) ? d.copyan : is_conjugated(x.transa) ? d.copyac : d.copyat;
    copy(&rows, &depth, corner(x.a, x.lda, x.transa, i, p), &x.lda, panels, &d.a.panel_stride, &x.alpha);
}
template <class T> void pack_b(const Job<T>& x, i64 p, i64 j, i64 depth, i64 columns, T* panels)
{
    const Desc<T>& d = *x.desc;
    const auto copy = is_plain(x.transb) ? d.copybn : is_conjugated(x.transb) ? d.copybc : d.copybt;
    copy(&depth, &columns, corner(x.b, x.ldb, x.transb, p, j), &x.ldb, panels, &d.b.panel_stride, nullptr);
}

// C(i:, j:) of rows by columns += panels of A times panels of B, as deep as packing padded them.
template <class T>
void multiply(const Job<T>& x, i64 i, i64 j, i64 rows, i64 columns, i64 depth, T pass_beta, const T* a_panels,
              const T* b_panels, i64 a_stride, i64 b_stride)
{
    const Desc<T>& d = *x.desc;
    const i64 padded = round_up(depth, d.k_unit);
    d.ker(&x.transa, &x.transb, &rows, &columns, &padded, &one<T>, a_panels, &a_stride, b_panels, &b_stride, &pass_beta,
          x.c + i + j * x.ldc, &x.ldc, d.scratch_buffer, b_packed);
}
template <class T>
void multiply(const Job<T>& x, i64 i, i64 j, i64 rows, i64 columns, i64 depth, T pass_beta, const T* a_panels,
              const T* b_panels)
{
    multiply(x, i, j, rows, columns, depth, pass_beta, a_panels, b_panels, x.desc->a.panel_stride,
             x.desc->b.panel_stride);
}

// The same with B in place from step p on. The kernel reads just `depth` steps of it and pads its own copy.
template <class T>
void multiply_b_in_place(const Job<T>& x, i64 i, i64 j, i64 p, i64 rows, i64 columns, i64 depth, T pass_beta,
                         const T* a_panels, i64 a_stride)
{
    const Desc<T>& d = *x.desc;
    d.ker(&x.transa, &x.transb, &rows, &columns, &depth, &one<T>, a_panels, &a_stride,
          corner(x.b, x.ldb, x.transb, p, j), &x.ldb, &pass_beta, x.c + i + j * x.ldc, &x.ldc, d.scratch_buffer,
          b_in_place);
}

// A block of B serves all blocks of A before the next one is packed.
template <class T> void loop_b_blocks(const Job<T>& x)
{
    const Desc<T>& d = *x.desc;
    for (i64 j = 0; j < x.n; j += d.nb)
        for (i64 p = 0; p < x.k; p += d.kb) {
            const i64 columns = part(x.n, j, d.nb), depth = part(x.k, p, d.kb);
            pack_b(x, p, j, depth, columns, d.b.buffer);
            for (i64 i = 0; i < x.m; i += d.mb) {
                const i64 rows = part(x.m, i, d.mb);
                pack_a(x, i, p, rows, depth, d.a.buffer);
                multiply(x, i, j, rows, columns, depth, x.beta_at(p), d.a.buffer, d.b.buffer);
            }
        }
}

template <class T> void loop_b_unpacked(const Job<T>& x)
{
    const Desc<T>& d = *x.desc;
    for (i64 j = 0; j < x.n; j += d.nb)
        for (i64 p = 0; p < x.k; p += d.kb)
            for (i64 i = 0; i < x.m; i += d.mb) {
                const i64 rows = part(x.m, i, d.mb), columns = part(x.n, j, d.nb), depth = part(x.k, p, d.kb);
                pack_a(x, i, p, rows, depth, d.a.buffer);
                multiply_b_in_place(x, i, j, p, rows, columns, depth, x.beta_at(p), d.a.buffer, d.a.panel_stride);
            }
}

// Each panel of A is used while it is still in the first-level cache; the later blocks of B find the whole block
// packed.
template <class T> void loop_a_interleaved(const Job<T>& x)
{
    const Desc<T>& d = *x.desc;
    for (i64 i = 0; i < x.m; i += d.mb)
        for (i64 p = 0; p < x.k; p += d.kb) {
            const i64 rows = part(x.m, i, d.mb), depth = part(x.k, p, d.kb), first = min(x.n, d.nb);
            pack_b(x, p, 0, depth, first, d.b.buffer);
            T* panel = d.a.buffer;
            for (i64 r = 0; r < rows; r += d.m_unit, panel += d.a.panel_stride) {
                const i64 piece = part(rows, r, d.m_unit);
                pack_a(x, i + r, p, piece, depth, panel);
                multiply(x, i + r, 0, piece, first, depth, x.beta_at(p), panel, d.b.buffer);
            }
            for (i64 j = d.nb; j < x.n; j += d.nb) {
                const i64 columns = part(x.n, j, d.nb);
                pack_b(x, p, j, depth, columns, d.b.buffer);
                multiply(x, i, j, rows, columns, depth, x.beta_at(p), d.a.buffer, d.b.buffer);
            }
        }
}

template <class T> void loop_b_interleaved(const Job<T>& x)
{
    const Desc<T>& d = *x.desc;
    for (i64 j = 0; j < x.n; j += d.nb)
        for (i64 p = 0; p < x.k; p += d.kb) {
            const i64 columns = part(x.n, j, d.nb), depth = part(x.k, p, d.kb), first = min(x.m, d.mb);
            pack_a(x, 0, p, first, depth, d.a.buffer);
            T* panel = d.b.buffer;
            for (i64 q = 0; q < columns; q += d.n_unit, panel += d.b.panel_stride) {
                const i64 piece = part(columns, q, d.n_unit);
                pack_b(x, p, j + q, depth, piece, panel);
                multiply(x, 0, j + q, first, piece, depth, x.beta_at(p), d.a.buffer, panel);
            }
            for (i64 i = d.mb; i < x.m; i += d.mb) {
                const i64 rows = part(x.m, i, d.mb);
                pack_a(x, i, p, rows, depth, d.a.buffer);
                multiply(x, i, j, rows, columns, depth, x.beta_at(p), d.a.buffer, d.b.buffer);
            }
        }
}

// One pass over the depth with an operand that the caller has packed, in blocks of kb steps one after another, each as
// the packing routines leave it: with `ld` elements from panel to panel, over all its rows or columns.
constexpr i64 ready_block(i64 block, i64 extent, i64 unit, i64 ld)
{
    return block * (round_up(extent, unit) / unit) * ld;
}

template <class T> void loop_a_ready(const Job<T>& x, bool b_place)
{
    const Desc<T>& d = *x.desc;
    for (i64 p = 0; p < x.k; p += d.kb) {
        const T* a_panels = x.a + ready_block(p / d.kb, x.m, d.m_unit, x.lda);
        const i64 depth = part(x.k, p, d.kb);
        if (b_place) {
            multiply_b_in_place(x, 0, 0, p, x.m, x.n, depth, one<T>, a_panels, x.lda);
            continue;
        }
        for (i64 j = 0; j < x.n; j += d.nb) {
            const i64 columns = part(x.n, j, d.nb);
            pack_b(x, p, j, depth, columns, d.b.buffer);
            multiply(x, 0, j, x.m, columns, depth, one<T>, a_panels, d.b.buffer, x.lda, d.b.panel_stride);
        }
    }
}

template <class T> void loop_b_ready(const Job<T>& x, bool a_ready)
{
    const Desc<T>& d = *x.desc;
    for (i64 p = 0; p < x.k; p += d.kb) {
        const T* b_panels = x.b + ready_block(p / d.kb, x.n, d.n_unit, x.ldb);
        const i64 depth = part(x.k, p, d.kb);
        if (a_ready) {
            const T* a_panels = x.a + ready_block(p / d.kb, x.m, d.m_unit, x.lda);
            multiply(x, 0, 0, x.m, x.n, depth, one<T>, a_panels, b_panels, x.lda, x.ldb);
            continue;
        }
        for (i64 i = 0; i < x.m; i += d.mb) {
            const i64 rows = part(x.m, i, d.mb);
            pack_a(x, i, p, rows, depth, d.a.buffer);
            multiply(x, i, 0, rows, x.n, depth, one<T>, d.a.buffer, b_panels, d.a.panel_stride, x.ldb);
        }
    }
}

// What sets a loop order apart before its loops start.
struct Order {
    Version version;
    Selector areas;
    bool keeps_zero_beta; // the first pass over the depth stores, so C need not be cleared
    bool falls_back;      // the operands are plain matrices: small ones, and missing memory, go to the plain path
};
constexpr Order orders[] = {
    {b_blocks, a_scratch_b, true, true},
    {b_unpacked, a_scratch, false, true},
    {a_interleaved, a_scratch_b, true, true},
    {b_interleaved, a_scratch_b, false, true},
    // An operand without an area of its own is ready. What is left is the order in which the areas are listed, and that
    // the types whose kernels cannot copy B in place lack the bits of b_unpacked and a_ready_b_place.
    {a_ready, scratch_b, false, false},
    {a_ready_b_place, only_scratch, false, false},
    {b_ready, a_scratch, false, false},
    {both_ready, only_scratch, false, false},
};

const Order* find_order(i32 version)
{
    for (const Order& order : orders)
        if (order.version == version) return &order;
    return nullptr;
}

template <class T> void run(const Order& order, const Job<T>& x)
{
    switch (order.version) {
    case b_blocks:
        return loop_b_blocks(x);
    case b_unpacked:
        return loop_b_unpacked(x);
    case a_interleaved:
        return loop_a_interleaved(x);
    case b_interleaved:
        return loop_b_interleaved(x);
    case a_ready:
        return loop_a_ready(x, false);
    case a_ready_b_place:
        return loop_a_ready(x, true);
    case b_ready:
        return loop_b_ready(x, false);
    case both_ready:
        return loop_b_ready(x, true);
    case by_kernel:
        return;
    }
}

// C := alpha*op(A)*op(B) + beta*C for a beta of 0 or 1 and an alpha that is not 0.
template <class T> int multiply_in_blocks(const Order& order, const Product<T>& x, Desc<T>* desc)
{
    if (order.falls_back && (x.m < desc->m_min || x.n < desc->n_min || x.k < desc->k_min)) {
        plain(x);
        return 0;
    }
    if (x.k <= 0) return 0;

    void* handle = nullptr;
    desc->get_bufs_size(order.areas, actual_operands, &x.m, &x.n, &x.k, desc);
    desc->get_bufs(order.areas, &handle, desc);
    if (orv_serv_check_ptr(handle, routine, routine_length) != 0) {
        if (!order.falls_back) return 1;
        plain(x);
        return 0;
    }
    run(order, Job<T>{x, desc});
    orv_serv_deallocate(handle);
    return 0;
}

// C := alpha*op(A)*op(B) + beta*C in a given loop order, 0: the one that suits the kernel. The descriptor is bound to a
// kernel; block sizes that are 0 are chosen here. What is neither N nor C counts as T.
//
//   - alpha = 0: b_blocks with beta = 0 leaves C alone, a_interleaved clears it; all others have scaled it.
//   - beta = 0: NaN in C is lost.
//   - No memory: the plain path computes the product; where an operand is packed already, nothing is added and the
//     status is 1. A C that was scaled stays scaled.
template <class T> int multiply_in_order(i32 version, Product<T> x, Desc<T>* desc)
{
    if (x.m <= 0 || x.n <= 0) return 0;
    if (desc->mb == 0 || desc->nb == 0 || desc->kb == 0) desc->get_blks_size(&x.m, &x.n, &x.k, desc);
    if (version == by_kernel) version = get_kernel_version(x.n, x.k, desc);
    const Order* order = find_order(version);
    if (order == nullptr) return 1;

    if constexpr (sizes<T>.rank_one)
        if (order->falls_back && x.k == 1 && x.beta == one<T>) {
            rank_one(x);
            return 0;
        }

    const bool stores_first = order->keeps_zero_beta && x.beta == zero<T>;
    if (x.beta != one<T> && !stores_first) mscale(x.m, x.n, x.beta, x.c, x.ldc), x.beta = one<T>;
    if (x.alpha == zero<T>) {
        if (version == a_interleaved && stores_first) mscale(x.m, x.n, x.beta, x.c, x.ldc);
        return 0;
    }
    if (is_complex<T> && stores_first) mscale(x.m, x.n, x.beta, x.c, x.ldc), x.beta = one<T>;
    return multiply_in_blocks(*order, x, desc);
}

} // namespace

template <class T> void blocked(const Product<T>& x, i32 kernel)
{
    Desc<T> desc;
    zero_desc(&desc);
    get_kernel(kernel, &desc);
    desc.get_blks_size(&x.m, &x.n, &x.k, &desc);
    desc.version = get_kernel_version(x.n, x.k, &desc);
    multiply_in_blocks(*find_order(desc.version), x, &desc);
}

#define BLOCKED(t, T)                                                                                                  \
    template void blocked(const Product<T>&, i32);                                                                     \
    ORV_EXPORT int BLAS(x##t##gemm_par)(ORV_GEMM_ARGUMENTS(T), i32 version, Desc<T> * desc)                            \
    {                                                                                                                  \
        return multiply_in_order(version, product_of(ORV_GEMM_PASS), desc);                                            \
    }

BLOCKED(s, float)
BLOCKED(d, double)
BLOCKED(c, cpx<float>)
BLOCKED(z, cpx<double>)

} // namespace orv::gemm
