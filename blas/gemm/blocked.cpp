// The blocked product: loop orders over blocks of C and of the depth, packing, and the register kernel inside.
//
// Whatever the order, an element of C gets one sum per block of the depth, blocks ascending. Alpha is multiplied into
// packed A. The last block of the depth may be shallower; its panels still stand as far apart as those of a full one.
#include "blas/gemm/direct.h"
#include "blas/gemm/driver.h"
#include "frame/serv.h"
#include "frame/symbol.h"

namespace orv::gemm {
namespace {

constexpr char routine[] = "xgemm"; // the name under which missing memory is reported
constexpr int routine_length = sizeof routine - 1;

// How many steps of `block` from i are left of n.
constexpr i64 part(i64 n, i64 i, i64 block) { return min(n - i, block); }

// One product on its way through the loops.
template <class T> struct Product {
    char transa, transb;
    i64 m, n, k;
    T alpha;
    const T* a;
    i64 lda;
    const T* b;
    i64 ldb;
    T beta; // of the first pass over a piece of C; the later ones add
    T* c;
    i64 ldc;
    Desc<T>* desc;

    T beta_at(i64 p) const { return p == 0 ? beta : one<T>; }

    // op(A)(i:, p:), times alpha, and op(B)(p:, j:), to panels.
    void pack_a(i64 i, i64 p, i64 rows, i64 depth, T* panels) const
    {
        const auto copy = is_plain(transa) ? desc->copyan : is_conjugated(transa) ? desc->copyac : desc->copyat;
        copy(&rows, &depth, corner(a, lda, transa, i, p), &lda, panels, &desc->a.panel_stride, &alpha);
    }
    void pack_b(i64 p, i64 j, i64 depth, i64 columns, T* panels) const
    {
        const auto copy = is_plain(transb) ? desc->copybn : is_conjugated(transb) ? desc->copybc : desc->copybt;
        copy(&depth, &columns, corner(b, ldb, transb, p, j), &ldb, panels, &desc->b.panel_stride, nullptr);
    }

    // C(i:, j:) of rows by columns += panels of A times panels of B, as deep as packing padded them.
    void multiply(i64 i, i64 j, i64 rows, i64 columns, i64 depth, T pass_beta, const T* a_panels, const T* b_panels,
                  i64 a_stride, i64 b_stride) const
    {
        const i64 padded = round_up(depth, desc->k_unit);
        desc->ker(&transa, &transb, &rows, &columns, &padded, &one<T>, a_panels, &a_stride, b_panels, &b_stride,
                  &pass_beta, c + i + j * ldc, &ldc, desc->scratch_buffer, b_packed);
    }
    void multiply(i64 i, i64 j, i64 rows, i64 columns, i64 depth, T pass_beta, const T* a_panels,
                  const T* b_panels) const
    {
        multiply(i, j, rows, columns, depth, pass_beta, a_panels, b_panels, desc->a.panel_stride, desc->b.panel_stride);
    }

    // The same with B in place from step p on. The kernel reads just `depth` steps of it and pads its own copy.
    void multiply_in_place(i64 i, i64 j, i64 p, i64 rows, i64 columns, i64 depth, T pass_beta, const T* a_panels,
                           i64 a_stride) const
    {
        desc->ker(&transa, &transb, &rows, &columns, &depth, &one<T>, a_panels, &a_stride, corner(b, ldb, transb, p, j),
                  &ldb, &pass_beta, c + i + j * ldc, &ldc, desc->scratch_buffer, b_in_place);
    }
};

// A block of B serves all blocks of A before the next one is packed.
template <class T> void loop_b_blocks(const Product<T>& x)
{
    const Desc<T>& d = *x.desc;
    for (i64 j = 0; j < x.n; j += d.nb)
        for (i64 p = 0; p < x.k; p += d.kb) {
            const i64 columns = part(x.n, j, d.nb), depth = part(x.k, p, d.kb);
            x.pack_b(p, j, depth, columns, d.b.buffer);
            for (i64 i = 0; i < x.m; i += d.mb) {
                const i64 rows = part(x.m, i, d.mb);
                x.pack_a(i, p, rows, depth, d.a.buffer);
                x.multiply(i, j, rows, columns, depth, x.beta_at(p), d.a.buffer, d.b.buffer);
            }
        }
}

template <class T> void loop_b_unpacked(const Product<T>& x)
{
    const Desc<T>& d = *x.desc;
    for (i64 j = 0; j < x.n; j += d.nb)
        for (i64 p = 0; p < x.k; p += d.kb)
            for (i64 i = 0; i < x.m; i += d.mb) {
                const i64 rows = part(x.m, i, d.mb), columns = part(x.n, j, d.nb), depth = part(x.k, p, d.kb);
                x.pack_a(i, p, rows, depth, d.a.buffer);
                x.multiply_in_place(i, j, p, rows, columns, depth, x.beta_at(p), d.a.buffer, d.a.panel_stride);
            }
}

// Each panel of A is used while it is still in the first-level cache; the later blocks of B find the whole block
// packed.
template <class T> void loop_a_interleaved(const Product<T>& x)
{
    const Desc<T>& d = *x.desc;
    for (i64 i = 0; i < x.m; i += d.mb)
        for (i64 p = 0; p < x.k; p += d.kb) {
            const i64 rows = part(x.m, i, d.mb), depth = part(x.k, p, d.kb), first = min(x.n, d.nb);
            x.pack_b(p, 0, depth, first, d.b.buffer);
            T* panel = d.a.buffer;
            for (i64 r = 0; r < rows; r += d.m_unit, panel += d.a.panel_stride) {
                const i64 piece = part(rows, r, d.m_unit);
                x.pack_a(i + r, p, piece, depth, panel);
                x.multiply(i + r, 0, piece, first, depth, x.beta_at(p), panel, d.b.buffer);
            }
            for (i64 j = d.nb; j < x.n; j += d.nb) {
                const i64 columns = part(x.n, j, d.nb);
                x.pack_b(p, j, depth, columns, d.b.buffer);
                x.multiply(i, j, rows, columns, depth, x.beta_at(p), d.a.buffer, d.b.buffer);
            }
        }
}

template <class T> void loop_b_interleaved(const Product<T>& x)
{
    const Desc<T>& d = *x.desc;
    for (i64 j = 0; j < x.n; j += d.nb)
        for (i64 p = 0; p < x.k; p += d.kb) {
            const i64 columns = part(x.n, j, d.nb), depth = part(x.k, p, d.kb), first = min(x.m, d.mb);
            x.pack_a(0, p, first, depth, d.a.buffer);
            T* panel = d.b.buffer;
            for (i64 q = 0; q < columns; q += d.n_unit, panel += d.b.panel_stride) {
                const i64 piece = part(columns, q, d.n_unit);
                x.pack_b(p, j + q, depth, piece, panel);
                x.multiply(0, j + q, first, piece, depth, x.beta_at(p), d.a.buffer, panel);
            }
            for (i64 i = d.mb; i < x.m; i += d.mb) {
                const i64 rows = part(x.m, i, d.mb);
                x.pack_a(i, p, rows, depth, d.a.buffer);
                x.multiply(i, j, rows, columns, depth, x.beta_at(p), d.a.buffer, d.b.buffer);
            }
        }
}

// Operands that are multiplied where they stand, to the bits that packing would give: so small ones that packing and
// the kernel's narrow panels would take longer than the product (up to 13 cubed, or 7 cubed for complex ones), and real
// ones of so few rows that a packed B would be read hardly more often than it was written. Those want a B whose columns
// are read along memory; a transposed one is better packed.
template <class T> bool is_better_in_place(const Product<T>& x)
{
    constexpr i64 small_volume = is_complex<T> ? 350 : 2500, few_rows = is_complex<T> ? 0 : 8;
    if (!x.desc->in_place) return false;
    return (x.m <= few_rows && is_plain(x.transb)) ||
           (x.m * x.n <= small_volume && x.m * x.n * x.k <= small_volume); // neither product overflows
}

template <class T> auto in_place_kernel(char transa)
{
    if (is_plain(transa)) return direct<T, Rows::adjacent, Alpha::in_x>;
    if constexpr (is_complex<T>)
        if (is_conjugated(transa)) return direct<T, Rows::apart, Alpha::in_conj_x>;
    return direct<T, Rows::apart, Alpha::in_x>;
}

template <class T> void loop_in_place(const Product<T>& x)
{
    const bool nb = is_plain(x.transb);
    const auto multiply = in_place_kernel<T>(x.transa);
    for (i64 p = 0; p < x.k; p += x.desc->kb)
        multiply(x.m, x.n, part(x.k, p, x.desc->kb),
                 {.x = corner(x.a, x.lda, x.transa, 0, p),
                  .ldx = x.lda,
                  .y = corner(x.b, x.ldb, x.transb, p, 0),
                  .y_step = nb ? 1 : x.ldb,
                  .y_column = nb ? x.ldb : 1,
                  .c = x.c,
                  .c_row = 1,
                  .c_column = x.ldc,
                  .conj_x = false,
                  .conj_y = is_conjugated(x.transb),
                  .replaces = x.beta_at(p) == zero<T>,
                  .alpha = factor<T>(x.alpha)});
}

// One pass over the depth with an operand that the caller has packed, in blocks of kb steps one after another, each as
// the packing routines leave it: with `ld` elements from panel to panel, over all its rows or columns.
constexpr i64 ready_block(i64 block, i64 extent, i64 unit, i64 ld)
{
    return block * (round_up(extent, unit) / unit) * ld;
}

template <class T> void loop_a_ready(const Product<T>& x, bool b_place)
{
    const Desc<T>& d = *x.desc;
    for (i64 p = 0; p < x.k; p += d.kb) {
        const T* a_panels = x.a + ready_block(p / d.kb, x.m, d.m_unit, x.lda);
        const i64 depth = part(x.k, p, d.kb);
        if (b_place) {
            x.multiply_in_place(0, 0, p, x.m, x.n, depth, one<T>, a_panels, x.lda);
            continue;
        }
        for (i64 j = 0; j < x.n; j += d.nb) {
            const i64 columns = part(x.n, j, d.nb);
            x.pack_b(p, j, depth, columns, d.b.buffer);
            x.multiply(0, j, x.m, columns, depth, one<T>, a_panels, d.b.buffer, x.lda, d.b.panel_stride);
        }
    }
}

template <class T> void loop_b_ready(const Product<T>& x, bool a_ready)
{
    const Desc<T>& d = *x.desc;
    for (i64 p = 0; p < x.k; p += d.kb) {
        const T* b_panels = x.b + ready_block(p / d.kb, x.n, d.n_unit, x.ldb);
        const i64 depth = part(x.k, p, d.kb);
        if (a_ready) {
            const T* a_panels = x.a + ready_block(p / d.kb, x.m, d.m_unit, x.lda);
            x.multiply(0, 0, x.m, x.n, depth, one<T>, a_panels, b_panels, x.lda, x.ldb);
            continue;
        }
        for (i64 i = 0; i < x.m; i += d.mb) {
            const i64 rows = part(x.m, i, d.mb);
            x.pack_a(i, p, rows, depth, d.a.buffer);
            x.multiply(i, 0, rows, x.n, depth, one<T>, d.a.buffer, b_panels, d.a.panel_stride, x.ldb);
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

template <class T> void run(const Order& order, const Product<T>& x)
{
    if (order.falls_back && is_better_in_place(x)) return loop_in_place(x);
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

} // namespace

// C := alpha*op(A)*op(B) + beta*C in a given loop order, 0: the one that suits the kernel. The descriptor is bound to a
// kernel; block sizes that are 0 are chosen here. Letters come in either case, and what is neither N nor C counts as T.
//
//   - alpha = 0: b_blocks with beta = 0 leaves C alone, a_interleaved clears it; all others have scaled it.
//   - beta = 0: NaN in C is lost.
//   - No memory: the plain path computes the product; where an operand is packed already, nothing is added and the
//     status is 1. A C that was scaled stays scaled.
template <class T>
int blocked(char transa, char transb, i64 m, i64 n, i64 k, T alpha, const T* a, i64 lda, const T* b, i64 ldb, T beta,
            T* c, i64 ldc, i32 version, Desc<T>* desc)
{
    if (m <= 0 || n <= 0) return 0;
    if (desc->mb == 0 || desc->nb == 0 || desc->kb == 0) desc->get_blks_size(&m, &n, &k, desc);
    if (version == by_kernel) version = get_kernel_version(n, k, desc);
    const Order* order = find_order(version);
    if (order == nullptr) return 1;

    if constexpr (sizes<T>.rank_one)
        if (order->falls_back && k == 1 && beta == one<T>) {
            rank_one(transa, transb, m, n, alpha, a, lda, b, ldb, c, ldc);
            return 0;
        }

    if (beta != one<T> && !(order->keeps_zero_beta && beta == zero<T>)) mscale(m, n, beta, c, ldc), beta = one<T>;
    if (alpha == zero<T>) {
        if (version == a_interleaved && beta == zero<T>) mscale(m, n, beta, c, ldc);
        return 0;
    }
    if (order->falls_back && (m < desc->m_min || n < desc->n_min || k < desc->k_min)) {
        plain(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
        return 0;
    }
    if (k <= 0) return 0;

    void* handle = nullptr;
    desc->get_bufs_size(order->areas, actual_operands, &m, &n, &k, desc);
    desc->get_bufs(order->areas, &handle, desc);
    if (orv_serv_check_ptr(handle, routine, routine_length) != 0) {
        if (!order->falls_back) return 1;
        plain(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
        return 0;
    }
    if constexpr (is_complex<T>) // their kernels always add
        if (beta == zero<T>) mscale(m, n, beta, c, ldc), beta = one<T>;
    const Product<T> product = {transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc, desc};
    run(*order, product);
    orv_serv_deallocate(handle);
    return 0;
}

#define BLOCKED(t, T)                                                                                                  \
    template int blocked(char, char, i64, i64, i64, T, const T*, i64, const T*, i64, T, T*, i64, i32, Desc<T>*);       \
    ORV_EXPORT int BLAS(x##t##gemm_par)(                                                                               \
        const char* transa, const char* transb, const i64* m, const i64* n, const i64* k, const T* alpha, const T* a,  \
        const i64* lda, const T* b, const i64* ldb, const T* beta, T* c, const i64* ldc, i32 version, Desc<T>* desc)   \
    {                                                                                                                  \
        return blocked(*transa, *transb, *m, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc, version, desc);         \
    }

BLOCKED(s, float)
BLOCKED(d, double)
BLOCKED(c, cpx<float>)
BLOCKED(z, cpx<double>)

} // namespace orv::gemm
