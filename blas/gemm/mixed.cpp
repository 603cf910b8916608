// C := alpha*op(A)*op(B) + beta*C with a real A and complex B, C, alpha and beta: xdzgemm, xscgemm. B is split in two
// planes, columns of real parts and behind them columns of imaginary ones, so that one real product serves both. For A,
// C means T.
//
// beta is applied first, 0 by storing zeros; an alpha of 0 then leaves A and B unread. Operands with a side of 3 or
// less, and want of memory, go the plain way.
#include "blas/gemm/blocks.h"
#include "blas/gemm/by_symbol.h"
#include "frame/serv.h"

namespace orv::gemm {

namespace {

constexpr i64 least_side = 4, most_rows = 500, most_columns = 5000, depth_block = 128;

// A product of these: alpha, beta, B and C are complex.
template <class R> struct Mixed {
    using T = cpx<R>;
    char transa, transb;
    i64 m, n, k;
    T alpha;
    const R* a;
    i64 lda;
    const T* b;
    i64 ldb;
    T* c;
    i64 ldc;
};

// op(B), k by n, to planes of k rows, `plane` elements apart.
template <class R> void split(char transb, i64 k, i64 n, const cpx<R>* b, i64 ldb, R* planes, i64 plane)
{
    const i64 row = is_plain(transb) ? 1 : ldb, column = is_plain(transb) ? ldb : 1;
    const R sign = is_conjugated(transb) ? -1 : 1;
    for (i64 j = 0; j < n; ++j)
        for (i64 p = 0; p < k; ++p) {
            const cpx<R> e = b[p * row + j * column];
            planes[p + j * k] = e.re, planes[p + j * k + plane] = sign * e.im;
        }
}

// C(0:m, 0:n) += alpha*planes.
template <class R> void add(i64 m, i64 n, cpx<R> alpha, const R* planes, i64 plane, cpx<R>* c, i64 ldc)
{
    for (i64 j = 0; j < n; ++j)
        for (i64 i = 0; i < m; ++i) c[i + j * ldc] += alpha * cpx<R>{planes[i + j * m], planes[i + j * m + plane]};
}

// The whole product, without memory: each element one sum over k, ascending, then C + alpha*sum.
template <class R> void plain(const Mixed<R>& x)
{
    if (x.k <= 0 || x.alpha == zero<cpx<R>>) return;
    const bool na = is_plain(x.transa), nb = is_plain(x.transb);
    const i64 a_row = na ? 1 : x.lda, a_step = na ? x.lda : 1, b_step = nb ? 1 : x.ldb, b_column = nb ? x.ldb : 1;
    const R sign = is_conjugated(x.transb) ? -1 : 1;
    for (i64 j = 0; j < x.n; ++j)
        for (i64 i = 0; i < x.m; ++i) {
            const R* a = x.a + i * a_row;
            const cpx<R>* b = x.b + j * b_column;
            cpx<R> sum = zero<cpx<R>>;
            for (i64 p = 0; p < x.k; ++p, a += a_step, b += b_step) sum += *a * *b;
            x.c[i + j * x.ldc] += x.alpha * cpx<R>{sum.re, sign * sum.im};
        }
}

template <class R> R* take(i64 pairs) { return static_cast<R*>(orv_serv_allocate(pairs * i64(sizeof(cpx<R>)), 128)); }

// Work areas: planes for a block of B, and for a block of C.
template <class R> bool take_areas(i64 mb, i64 nb, R** b, R** c)
{
    *b = take<R>(depth_block * nb), *c = *b != nullptr ? take<R>(mb * nb) : nullptr;
    return *c != nullptr;
}
template <class R> void free_areas(R* b, R* c)
{
    if (c != nullptr) orv_serv_deallocate(c);
    if (b != nullptr) orv_serv_deallocate(b);
}

template <class R> void in_planes(const Mixed<R>& x, i32 kernel, i64 mb, i64 nb, R* b_planes, R* c_planes)
{
    constexpr char n = 'N';
    Desc<R> desc;
    zero_desc(&desc);
    get_kernel(kernel, &desc);
    desc.mb = most_rows, desc.nb = most_columns, desc.kb = depth_block;
    for (i64 j = 0; j < x.n; j += nb)
        for (i64 i = 0; i < x.m; i += mb) {
            const i64 columns = min(x.n - j, nb), rows = min(x.m - i, mb), both = 2 * columns;
            for (i64 p = 0; p < x.k; p += depth_block) {
                const i64 depth = min(x.k - p, depth_block);
                const R beta = p > 0;
                split(x.transb, depth, columns, corner(x.b, x.ldb, x.transb, p, j), x.ldb, b_planes, depth * columns);
                product_in_blocks<R>(&x.transa, &n, &rows, &both, &depth, &one<R>, corner(x.a, x.lda, x.transa, i, p),
                                     &x.lda, b_planes, &depth, &beta, c_planes, &rows, by_kernel, &desc);
            }
            add(rows, columns, x.alpha, c_planes, rows * columns, x.c + i + j * x.ldc, x.ldc);
        }
}

template <class R> void product(const Mixed<R>& x)
{
    if (x.alpha == zero<cpx<R>>) return;
    if (min(min(x.m, x.n), x.k) < least_side) return plain(x);
    const i32 kernel = best_kernel<R>(); // before memory is asked for, as in every product
    const i64 mb = min(x.m, most_rows), nb = min(x.n, most_columns);
    R *b = nullptr, *c = nullptr;
    if (take_areas(mb, nb, &b, &c)) in_planes(x, kernel, mb, nb, b, c);
    else plain(x);
    free_areas(b, c);
}

} // namespace

#define MIXED_ARGUMENTS(R)                                                                                             \
    const char *transa, const char *transb, const i64 *m, const i64 *n, const i64 *k, const cpx<R>*alpha, const R *a,  \
        const i64 *lda, const cpx<R>*b, const i64 *ldb, const cpx<R>*beta, cpx<R>*c, const i64 *ldc
#define MIXED_PRODUCT(symbol, R, body)                                                                                 \
    ORV_EXPORT void BLAS(symbol)(MIXED_ARGUMENTS(R))                                                                   \
    {                                                                                                                  \
        if (*m < 1 || *n < 1) return;                                                                                  \
        if (*beta != one<cpx<R>>) mscale(*m, *n, *beta, c, *ldc);                                                      \
        body(Mixed<R>{fold(*transa), fold(*transb), *m, *n, *k, *alpha, a, *lda, b, *ldb, c, *ldc});                   \
    }
#define SPLIT_B(symbol, R)                                                                                             \
    ORV_EXPORT void BLAS(symbol)(const char* transb, const i64* k, const i64* n, const cpx<R>* b, const i64* ldb,      \
                                 R* planes, const i64* plane)                                                          \
    {                                                                                                                  \
        split(fold(*transb), *k, *n, b, *ldb, planes, *plane);                                                         \
    }
#define ADD_C(symbol, R)                                                                                               \
    ORV_EXPORT void BLAS(symbol)(const i64* m, const i64* n, const cpx<R>* alpha, const R* planes, const i64* plane,   \
                                 cpx<R>* c, const i64* ldc)                                                            \
    {                                                                                                                  \
        add(*m, *n, *alpha, planes, *plane, c, *ldc);                                                                  \
    }
#define TAKE_AREAS(symbol, R)                                                                                          \
    ORV_EXPORT int BLAS(symbol)(const i64* mb, const i64* nb, R** b, R** c) { return take_areas(*mb, *nb, b, c); }

// The product, and its parts under all names that they have.
#define MIXED(stem, R)                                                                                                 \
    MIXED_PRODUCT(x##stem, R, product)                                                                                 \
    MIXED_PRODUCT(stem##_pst, R, plain)                                                                                \
    ORV_EXPORT void BLAS(stem##_mscale)(const i64* m, const i64* n, const cpx<R>* beta, cpx<R>* c, const i64* ldc)     \
    {                                                                                                                  \
        mscale(*m, *n, *beta, c, *ldc);                                                                                \
    }                                                                                                                  \
    SPLIT_B(stem##_copyb, R)                                                                                           \
    SPLIT_B(stem##1_copyb, R)                                                                                          \
    ADD_C(stem##1_copyc_b_bwd, R)                                                                                      \
    ADD_C(stem##2_copyc_b_bwd, R)                                                                                      \
    ORV_EXPORT void BLAS(stem##_copyc_fwd)(const i64* m, const i64* n, const cpx<R>* c, const i64* ldc, R* planes,     \
                                           const i64* plane)                                                           \
    {                                                                                                                  \
        split('N', *m, *n, c, *ldc, planes, *plane);                                                                   \
    }                                                                                                                  \
    ADD_C(stem##_copyc_bwd, R)                                                                                         \
    TAKE_AREAS(stem##_getbufs, R)                                                                                      \
    TAKE_AREAS(stem##_getbufs_c, R)                                                                                    \
    ORV_EXPORT void BLAS(stem##_freebufs)(R * b, R * c) { free_areas(b, c); }

MIXED(scgemm, float)
MIXED(dzgemm, double)

} // namespace orv::gemm
