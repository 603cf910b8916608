// Two products in one pass over the matrix:
//
//   y1 := alpha*A*x1 + beta*y1        y2 := alpha*op(A)*x2 + beta*y2
//
// A has m rows and n columns, lda apart; op is the transpose in gem2vu, the conjugate transpose in gem2vc. x1 and y2
// have n elements, x2 and y1 have m, each with its stride; a negative stride starts at the vector's far end. m or n of
// 0, and alpha = 0 with beta = 1, leave both results alone. beta is applied first: 0 stores zeros, so NaN in y is lost,
// anything else multiplies. alpha = 0 then ends the call with A, x1 and x2 unread.
#include "blas/beta.h"
#include "blas/gemv_kernels.h"
#include "blas/level1.h"
#include "frame/kernels/blas.h"

namespace orv::blas {
namespace {

template <class T> constexpr Op second_op = is_complex<T> ? Op::conjugate : Op::transpose;

// Both products of `columns` neighbouring columns while a block of rows is in registers. Each has the order of
// operations of its gemv kernel.
template <int block, int columns, bool far, class T>
ORV_INLINE void both_columns(i64 m, T alpha, const T* a, i64 lda, const T* x1, const T* x2, T* y1, T* y2)
{
    const auto scaled = [&](int j) { return Multiplicand<T>(splat(alpha * x1[min(j, columns - 1)])); };
    const Multiplicand<T> f[4] = {scaled(0), scaled(1), scaled(2), scaled(3)};
    ProductSum<T> dot[4] = {{}, {}, {}, {}};
    each_piece<block, T>(m, [&]<class Piece>(Piece, i64 i) {
        if constexpr (far && Piece::rows == block) look_ahead<columns, block>(i, m, a, lda);
#pragma GCC unroll 12
        for (int r = 0; r < Piece::registers; ++r) {
            const Multiplicand<T> g(Piece::load(x2 + i, r));
            ProductSum<T> sum(Piece::load(y1 + i, r));
#pragma GCC unroll 4
            for (int j = 0; j < columns; ++j) {
                const vec<T> v = Piece::load(a + i + j * lda, r);
                sum.add(v, f[j]);
                dot[j].add(v, g);
            }
            Piece::store(y1 + i, r, sum.value());
        }
    });
#pragma GCC unroll 4
    for (int j = 0; j < columns; ++j)
        y2[j] = y2[j] + alpha * first_lane(dot[j].folded().template value<second_op<T> == Op::conjugate>());
}

// y1 += alpha*A*x1, y2 += alpha*op(A)*x2, unit strides, four columns a step: two of complex numbers, whose sums take
// twice the registers. All block lengths give the same result.
template <int block, class T>
void gem2v_unit(i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x1, const T* x2, T* y1, T* y2)
{
    if (m <= 0) return;
    const auto run = [&]<bool far>() {
        const auto strip = [&]<int columns>(i64 j) {
            both_columns<block, columns, far>(m, alpha, a + j * lda, lda, x1 + j, x2, y1, y2 + j);
        };
        i64 j = 0;
        if constexpr (!is_complex<T>)
            for (; j + 4 <= n; j += 4) strip.template operator()<4>(j);
        for (; j + 2 <= n; j += 2) strip.template operator()<2>(j);
        if (j < n) strip.template operator()<1>(j);
    };
    if (block > 2 && is_far<T>(m, n, lda)) run.template operator()<true>();
    else run.template operator()<false>();
}

// The same at any strides, column by column; y1, y2, x1, x2 are the vectors' first elements.
template <class T>
void gem2v_columns(i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x1, i64 incx1, const T* x2, i64 incx2, T* y1,
                   i64 incy1, T* y2, i64 incy2)
{
    for (i64 j = 0; j < n; ++j, a += lda, x1 += incx1, y2 += incy2) {
        axpy(m, alpha * *x1, a, 1, y1, incy1);
        *y2 = *y2 + alpha * conjugated_dot(m, a, 1, x2, incx2);
    }
}

template <class T>
using UnitKernel = void(i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x1, const T* x2, T* y1, T* y2);

// By the length of columns: a longer row block makes up for its tail only in longer columns.
constexpr UnitKernel<double>* kernel_for_rows(i64 m)
{
    return m < 50 ? gem2v_unit<2, double> : m < 110 ? gem2v_unit<16, double> : gem2v_unit<24, double>;
}
// Many columns at once are no gain for pairs of singles: from here on each goes alone.
constexpr UnitKernel<cpx<float>>* kernel_for_columns(i64 n) { return n < 200 ? gem2v_unit<8, cpx<float>> : nullptr; }

// The whole operation. `unit` serves unit strides; null leaves those to the columns too.
template <class T>
void gem2v(i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x1, i64 incx1, const T* x2, i64 incx2, T beta, T* y1,
           i64 incy1, T* y2, i64 incy2, UnitKernel<T>* unit)
{
    if (m == 0 || n == 0 || (alpha == zero<T> && beta == one<T>)) return;
    const auto prepare = [&](i64 length, T* y, i64 inc) {
        if (beta == zero<T>) apply_beta(length, beta, first(y, length, inc), inc);
        else scal(length, beta, y, inc);
    };
    prepare(m, y1, incy1);
    prepare(n, y2, incy2);
    if (alpha == zero<T>) return;
    if (unit != nullptr && incx1 == 1 && incx2 == 1 && incy1 == 1 && incy2 == 1)
        return unit(m, n, alpha, a, lda, x1, x2, y1, y2);
    // The vector kernels move the bases of y1 and x2 themselves.
    gem2v_columns(m, n, alpha, a, lda, first(x1, n, incx1), incx1, x2, incx2, y1, incy1, first(y2, n, incy2), incy2);
}

} // namespace
} // namespace orv::blas

using namespace orv;

#define UNIT_KERNEL(name, T, block)                                                                                    \
    ORV_EXPORT void BLAS(name)(const i64* m, const i64* n, const T* alpha, const T* a, const i64* lda, const T* x1,    \
                               const T* x2, T* y1, T* y2)                                                              \
    {                                                                                                                  \
        blas::gem2v_unit<block>(*m, *n, *alpha, a, *lda, x1, x2, y1, y2);                                              \
    }
#define GEM2V(name, T, unit)                                                                                           \
    ORV_EXPORT void BLAS(name)(const i64* m, const i64* n, const T* alpha, const T* a, const i64* lda, const T* x1,    \
                               const i64* incx1, const T* x2, const i64* incx2, const T* beta, T* y1,                  \
                               const i64* incy1, T* y2, const i64* incy2)                                              \
    {                                                                                                                  \
        blas::gem2v<T>(*m, *n, *alpha, a, *lda, x1, *incx1, x2, *incx2, *beta, y1, *incy1, y2, *incy2, unit);          \
    }

UNIT_KERNEL(dgem2vu_even_m2_n4, double, 2)
UNIT_KERNEL(dgem2vu_even_m16_n4, double, 16)
UNIT_KERNEL(dgem2vu_even_m24_n4, double, 24)
UNIT_KERNEL(sgem2vu_even, float, 16)
UNIT_KERNEL(zgem2vc_f, cpx<double>, 8)

GEM2V(dgem2vu, double, blas::kernel_for_rows(*m))
GEM2V(sgem2vu, float, (blas::gem2v_unit<16, float>))
GEM2V(cgem2vc, cpx<float>, blas::kernel_for_columns(*n))
GEM2V(cgem2vc_f, cpx<float>, (blas::gem2v_unit<8, cpx<float>>))
GEM2V(zgem2vc, cpx<double>, nullptr)
