// Sums of magnitudes: of the parts, for complex vectors.
//
// The order of summation, the same for every stride. Eight accumulators A0..A7 of one register each; while a block of
// eight registers is left, register k goes to Ak. In single precision whole registers left then go to A0. The sum is
// ((A0+A1) + (A2+A3)) + ((A4+A5) + (A6+A7)), then its lanes (lane 0 + lane 1; of four lanes (0 + 2) + (1 + 3)), and to
// that the reals left are added one by one. A register holds 4 singles, 2 doubles, 2 pairs of singles or 1 of doubles.
#include "blas/ladder.h"
#include "frame/kernels/blas.h"
#include "frame/simd.h"

namespace orv::blas {
namespace {

template <bool unit, class T> ORV_INLINE real_t<T> sum_of_magnitudes(i64 n, const T* x, i64 inc)
{
    using R = real_t<T>;
    constexpr i64 lanes = vec<T>::lanes, block = 8 * lanes;
    const auto next = [&] {
        const vec<R> v = {magnitude(load_strided<unit>(x, inc)).r};
        x += lanes * inc;
        return v;
    };
    R total = 0;
    if (n >= (sizeof(R) == 4 ? lanes : block)) {
        vec<R> a[8] = {};
        if (n >= block) { // the first block is the sum so far: 0 + |x| is |x|
#pragma GCC unroll 8
            for (auto& sum : a) sum = next();
            n -= block;
        }
        if (unit && n > near_bytes / i64(sizeof(T)))
            for (; n >= block; n -= block) {
                prefetch_ahead(x), prefetch_ahead(x + 4 * lanes); // a line each
#pragma GCC unroll 8
                for (auto& sum : a) sum += next();
            }
        for (; n >= block; n -= block) {
#pragma GCC unroll 8
            for (auto& sum : a) sum += next();
        }
        if constexpr (sizeof(R) == 4)
            for (; n >= lanes; n -= lanes) a[0] += next();
        total = first_lane(fold_lanes(((a[0] + a[1]) + (a[2] + a[3])) + ((a[4] + a[5]) + (a[6] + a[7]))));
    }
    for (; n > 0; --n, x += inc) {
        const vec<T> v = magnitude(load_first<1>(x));
        total += v.r[0];
        if constexpr (is_complex<T>) total += v.r[1];
    }
    return total;
}

// A function of its own, so that unit stride need not save the registers that this wants.
template <class T> [[gnu::noinline]] real_t<T> sum_at_stride(i64 n, const T* x, i64 inc)
{
    return sum_of_magnitudes<false>(n, first(x, n, inc), inc);
}

// sum |x_i|, or sum |re x_i| + |im x_i|; 0 for n <= 0. A negative stride starts at the vector's far end.
template <class T> ORV_INLINE real_t<T> asum(i64 n, const T* x, i64 incx)
{
    if (n <= 0) return 0;
    return incx == 1 ? sum_of_magnitudes<true>(n, x, 1) : sum_at_stride(n, x, incx);
}

template <class R> R abs1(cpx<R> x) { return magnitude(x.re) + magnitude(x.im); }

} // namespace
} // namespace orv::blas

using namespace orv;
using namespace orv::blas;

#define ASUM(name, T)                                                                                                  \
    ORV_EXPORT real_t<T> BLAS(name)(const i64* n, const T* x, const i64* incx) { return asum(*n, x, *incx); }

ASUM(sasum, float)
ASUM(dasum, double)
ASUM(scasum, cpx<float>)
ASUM(dzasum, cpx<double>)

// |re| + |im| of one number.
ORV_EXPORT float BLAS(scabs1)(const cpx<float>* x) { return abs1(*x); }
ORV_EXPORT double BLAS(dcabs1)(const cpx<double>* x) { return abs1(*x); }
