#include "blas/gemv_kernels.h"

#include "frame/kernels/blas.h"

namespace orv::blas {
namespace {

template <class T> constexpr int block = is_complex<T> ? 8 : 16;

// y += a(:, 0)*x(0) + ... over `columns` neighbouring columns.
template <int columns, bool far, class T>
ORV_INLINE void add_columns(i64 m, T alpha, const T* a, i64 lda, const T* x, T* y)
{
    const auto scaled = [&](int j) { return Multiplicand<T>(splat(alpha * x[min(j, columns - 1)])); };
    const Multiplicand<T> f[4] = {scaled(0), scaled(1), scaled(2), scaled(3)};
    each_piece<block<T>, T>(
        m, [&]<class Piece>(Piece, i64 i) __attribute__((always_inline)) {
            if constexpr (far && Piece::rows == block<T>) look_ahead<columns, block<T>>(i, m, a, lda);
#pragma GCC unroll 8
            for (int r = 0; r < Piece::registers; ++r) {
                ProductSum<T> sum(Piece::load(y + i, r));
#pragma GCC unroll 4
                for (int j = 0; j < columns; ++j) sum.add(Piece::load(a + i + j * lda, r), f[j]);
                Piece::store(y + i, r, sum.value());
            }
        });
}

// y(j) += alpha*(a(:, j) . x) for `columns` neighbouring columns.
template <int columns, bool far, Op op, class T>
ORV_INLINE void dot_columns(i64 m, T alpha, const T* a, i64 lda, const T* x, T* y)
{
    ProductSum<T> sum[4] = {{}, {}, {}, {}};
    each_piece<block<T>, T>(
        m, [&]<class Piece>(Piece, i64 i) __attribute__((always_inline)) {
            if constexpr (far && Piece::rows == block<T>) look_ahead<columns, block<T>>(i, m, a, lda);
#pragma GCC unroll 8
            for (int r = 0; r < Piece::registers; ++r) {
                const Multiplicand<T> f(Piece::load(x + i, r));
#pragma GCC unroll 4
                for (int j = 0; j < columns; ++j) sum[j].add(Piece::load(a + i + j * lda, r), f);
            }
        });
#pragma GCC unroll 4
    for (int j = 0; j < columns; ++j)
        y[j] = y[j] + alpha * first_lane(sum[j].folded().template value<op == Op::conjugate>());
}

template <Op op, bool far, class T> void all_columns(i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x, T* y)
{
    const auto strip = [&]<int columns>(i64 j) __attribute__((always_inline))
    {
        if constexpr (op == Op::none) add_columns<columns, far>(m, alpha, a + j * lda, lda, x + j, y);
        else dot_columns<columns, far, op>(m, alpha, a + j * lda, lda, x, y + j);
    };
    i64 j = 0;
    for (; j + 4 <= n; j += 4) strip.template operator()<4>(j);
    if (j + 2 <= n) strip.template operator()<2>(j), j += 2;
    if (j < n) strip.template operator()<1>(j);
}

} // namespace

template <Op op, class T> void gemv_kernel(i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x, T* y, bool far)
{
    if (m <= 0) return;
    if (far) all_columns<op, true>(m, n, alpha, a, lda, x, y);
    else all_columns<op, false>(m, n, alpha, a, lda, x, y);
}

// The exported kernels. Every load takes any address, at no cost where it does not straddle a cache line, so an odd
// leading dimension needs no loop of its own.
#define GEMV_INSTANCE(op, T) template void gemv_kernel<op>(i64, i64, T, const T*, i64, const T*, T*, bool);
#define GEMV_KERNEL(name, op, T)                                                                                       \
    ORV_EXPORT void BLAS(name)(const i64* m, const i64* n, const T* alpha, const T* a, const i64* lda, const T* x,     \
                               T* y)                                                                                   \
    {                                                                                                                  \
        gemv_kernel<op>(*m, *n, *alpha, a, *lda, x, y, is_far<T>(*m, *n));                                             \
    }
#define BY_PARITY(stem, op, T)                                                                                         \
    GEMV_INSTANCE(op, T)                                                                                               \
    GEMV_KERNEL(stem##_even, op, T)                                                                                    \
    GEMV_KERNEL(stem##_odd, op, T)
#define ALIKE(name, op, T)                                                                                             \
    GEMV_INSTANCE(op, T)                                                                                               \
    GEMV_KERNEL(name, op, T)

BY_PARITY(sgemv_n, Op::none, float)
BY_PARITY(sgemv_t, Op::transpose, float)
BY_PARITY(dgemv_n, Op::none, double)
BY_PARITY(dgemv_t, Op::transpose, double)
BY_PARITY(cgemv_n, Op::none, cpx<float>)
BY_PARITY(cgemv_t, Op::transpose, cpx<float>)
BY_PARITY(cgemv_c, Op::conjugate, cpx<float>)

// An element of 16 bytes stands alike in every column.
ALIKE(zgemv_n, Op::none, cpx<double>)
ALIKE(zgemv_t, Op::transpose, cpx<double>)
ALIKE(zgemv_c, Op::conjugate, cpx<double>)

} // namespace orv::blas
