// C := alpha*A*B + beta*C (side L) or alpha*B*A + beta*C (side R), C and B m by n, A symmetric (symm) or Hermitian
// (hemm) with one triangle stored. beta comes first: 0 stores zeros. An alpha of 0 then leaves A and B unread.
//
// A is cut in blocks along its diagonal. Each is completed to a full square; what A stores above it and what it stores
// below it, or turned beside it, are rectangles. With them the block's rows of C (columns for side R) are three general
// products: elements before the block, in it, behind it.
#include "blas/level3/square.h"

namespace orv::level3 {
namespace {

template <class T, Kind kind> struct Product {
    bool left, upper;
    i64 m, n;
    T alpha;
    const T* a;
    i64 lda;
    const T* b;
    i64 ldb;
    T beta;
    T* c;
    i64 ldc;

    i64 order() const { return left ? m : n; }
};

// The block of `size` rows and columns at a, whole, to columns of `size`.
template <class T, Kind kind> void complete(bool upper, i64 size, const T* a, i64 lda, T* square)
{
    for (i64 j = 0; j < size; ++j) {
        const Rows rows = stored(upper, size, j);
        for (i64 i = rows.from; i < rows.to; ++i) {
            const T x = i == j ? on_diagonal<T, kind>(a[i + j * lda]) : a[i + j * lda];
            square[i + j * size] = x, square[j + i * size] = i == j ? x : mirror<T, kind>(x);
        }
    }
}

// C(0:m, 0:n) := beta*C.
template <class T> void scale(i64 m, i64 n, T beta, T* c, i64 ldc)
{
    if (beta != one<T> && m > 0 && n > 0) gemm::mscale(m, n, beta, c, ldc);
}

// The columns (side L) or rows (side R) of B and C from `from` on, `count` of them.
template <class T, Kind kind> void strip(const Product<T, kind>& x, i64 from, i64 count, const Square<T>& square)
{
    const T* const b = x.left ? x.b + from * x.ldb : x.b + from;
    T* const c = x.left ? x.c + from * x.ldc : x.c + from;
    const auto add = [&](i64 block, i64 size, i64 other, i64 others, char op, const T* a, i64 lda) {
        if (x.left) multiply(op, 'N', size, count, others, x.alpha, a, lda, b + other, x.ldb, one<T>, c + block, x.ldc);
        else
            multiply('N', op, count, size, others, x.alpha, b + other * x.ldb, x.ldb, a, lda, one<T>, c + block * x.ldc,
                     x.ldc);
    };
    const i64 order = x.order();
    for (i64 j = 0; j < order; j += square.side) {
        const i64 size = min(order - j, square.side), next = j + size;
        // Elements of A beside the block: stored in its columns or in its rows, as the side that multiplies wants them
        // or turned.
        const auto beside = [&](i64 other, i64 others) {
            if (others == 0) return;
            const bool in_columns = (other < j) == x.upper;
            const char op = in_columns == x.left ? mirrored<T, kind> : 'N';
            add(j, size, other, others, op, in_columns ? x.a + other + j * x.lda : x.a + j + other * x.lda, x.lda);
        };
        beside(0, j);
        complete<T, kind>(x.upper, size, x.a + j * (x.lda + 1), x.lda, square.at);
        add(j, size, j, size, 'N', square.at, size);
        beside(next, order - next);
    }
}

template <class T, Kind kind> void recursive(const Product<T, kind>& x, const Square<T>& square)
{
    scale(x.m, x.n, x.beta, x.c, x.ldc);
    if (x.alpha == zero<T>) return;
    const i64 all = x.left ? x.n : x.m, most = x.left && x.upper ? 1000 : 5000;
    for (i64 from = 0, count; from < all; from += count) {
        count = sweep_of(all - from, most);
        strip(x, from, count, square);
    }
}

template <class T, Kind kind> void without_memory(const Product<T, kind>& x)
{
    if (x.m > 0 && x.n > 0) with_local_square<T, 32>([&](const Square<T>& square) { recursive(x, square); });
}

template <class T, Kind kind> void multiply_symmetric(const Product<T, kind>& x, const Request& request)
{
    if (x.m <= 0 || x.n <= 0) return;
    if (!with_square<T>(request, [&](const Square<T>& square) { recursive(x, square); })) without_memory(x);
}

// A square of 256 z elements would not fit: 176 is the largest whole number of sixteens that does.
template <class T> constexpr Request symmetric_request{sizeof(T) == 16 ? 176 : 256, 0x80000, 64, "xsymm"};
constexpr Request chemm_request{128, 0x20400, 128, "xchemm"}, zhemm_request{128, 0x40800, 128, "xzhemm"};

} // namespace

#define SYMM_ARGUMENTS(T)                                                                                              \
    const char *side, const char *uplo, const i64 *m, const i64 *n, const T *alpha, const T *a, const i64 *lda,        \
        const T *b, const i64 *ldb, const T *beta, T *c, const i64 *ldc
#define SYMM_RECORD(T, kind)                                                                                           \
    Product<T, Kind::kind> { fold(*side) == 'L', fold(*uplo) == 'U', *m, *n, *alpha, a, *lda, b, *ldb, *beta, c, *ldc }
#define WITHOUT_MEMORY(symbol, T, kind)                                                                                \
    ORV_EXPORT void BLAS(symbol)(SYMM_ARGUMENTS(T)) { without_memory(SYMM_RECORD(T, kind)); }
#define SYMM(t, T)                                                                                                     \
    WITHOUT_MEMORY(t##symm_pst, T, symmetric)                                                                          \
    ORV_EXPORT void BLAS(x##t##symm)(SYMM_ARGUMENTS(T))                                                                \
    {                                                                                                                  \
        multiply_symmetric(SYMM_RECORD(T, symmetric), symmetric_request<T>);                                           \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(x##t##symm_recursive)(SYMM_ARGUMENTS(T), T * square)                                          \
    {                                                                                                                  \
        recursive(SYMM_RECORD(T, symmetric), Square<T>{square, symmetric_request<T>.side});                            \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(t##symm_copyal)(const i64* size, const T* a, const i64* lda, T* square)                       \
    {                                                                                                                  \
        complete<T, Kind::symmetric>(false, *size, a, *lda, square);                                                   \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(t##symm_copyau)(const i64* size, const T* a, const i64* lda, T* square)                       \
    {                                                                                                                  \
        complete<T, Kind::symmetric>(true, *size, a, *lda, square);                                                    \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(t##symm_scal)(const i64* m, const i64* n, const T* beta, T* c, const i64* ldc)                \
    {                                                                                                                  \
        scale(*m, *n, *beta, c, *ldc);                                                                                 \
    }
#define HEMM(t, T)                                                                                                     \
    WITHOUT_MEMORY(t##hemm_nobufs, T, hermitian)                                                                       \
    ORV_EXPORT void BLAS(x##t##hemm)(SYMM_ARGUMENTS(T))                                                                \
    {                                                                                                                  \
        multiply_symmetric(SYMM_RECORD(T, hermitian), t##hemm_request);                                                \
    }

SYMM(s, float)
SYMM(d, double)
SYMM(c, cpx<float>)
SYMM(z, cpx<double>)
HEMM(c, cpx<float>)
HEMM(z, cpx<double>)

} // namespace orv::level3
