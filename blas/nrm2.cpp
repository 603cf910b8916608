// Euclidean norms, in two ways that are deliberately not alike.
//
// Double precision scales: one pass carries scale = max |x_i| so far and sum with scale^2 * sum = sum of squares, and
// divides once a real. It neither overflows nor underflows before the result does.
// Single precision squares and sums in double, where no square of a single can overflow, and rounds once at the end.
//
// A stride's sign does not matter: the vector starts at x and goes on by |incx|.
#include "blas/ladder.h"
#include "frame/kernels/blas.h"
#include "frame/simd.h"

namespace orv::blas {
namespace {

// The scaled sum of squares. The order is part of the contract: reals in turn, the real part before the imaginary one.
//   v = |x| of a real; a zero is passed over, a NaN is not
//   v > scale:  sum := sum*(scale/v)*(scale/v) + 1, scale := v
//   otherwise:  sum := sum + (v/scale)^2      (here NaN enters, and stays)
struct ScaledSum {
    double scale = 0, sum = 1;

    ORV_INLINE void add(double v)
    {
        if (v == 0) return;
        if (v > scale) {
            const double ratio = scale / v;
            sum = sum * ratio * ratio + 1;
            scale = v;
        } else {
            const double ratio = v / scale;
            sum += ratio * ratio;
        }
    }

    // The same for `count` registers of reals. While none exceeds the scale, nothing depends on the order but the sum
    // itself, so the divisions run side by side. A zero then adds 0 to a sum of at least 1, which is as good as passing
    // it over. A scale of 0 has seen zeros only, and 0/0 must not happen.
    template <int count> ORV_INLINE void add(const vec<double> (&v)[count])
    {
        constexpr int lanes = vec<double>::lanes;
        const vec<double> bound = splat(scale);
        mask<double> above = bound == zeros<double>();
#pragma GCC unroll 4
        for (const auto& some : v) above = above | (some > bound);
        if (!any(above)) {
#pragma GCC unroll 4
            for (const auto& some : v) {
                const vec<double> ratio = some / bound, square = ratio * ratio;
#pragma GCC unroll 8
                for (int lane = 0; lane < lanes; ++lane) sum += square.r[lane];
            }
        } else if constexpr (count > 1) {
            for (const auto& some : v) add<1>({some});
        } else if (lanes > 2 || scale == 0) {
#pragma GCC unroll 8
            for (int lane = 0; lane < lanes; ++lane) add(v[0].r[lane]);
        } else raise(v[0]);
    }

    // A pair that exceeds the scale, by a single division, too. Where v is NaN, so is `lesser`, and the scale stays.
    ORV_INLINE void raise(vec<double> v)
    {
        const vec<double> bound = splat(scale);
        const vec<double> before = alternate(bound, maximum(real_parts(v), bound)); // the scale so far
        const vec<double> greater = maximum(v, before), lesser = minimum(before, v), ratio = lesser / greater;
        const int raised = lane_bits(v > before);
        sum = (raised & 1) != 0 ? sum * ratio.r[0] * ratio.r[0] + 1 : sum + ratio.r[0] * ratio.r[0];
        sum = (raised & 2) != 0 ? sum * ratio.r[1] * ratio.r[1] + 1 : sum + ratio.r[1] * ratio.r[1];
        scale = greater.r[1];
    }

    double norm() const { return scale * __builtin_sqrt(sum); }
};

template <bool unit, class T> double scaled_norm(i64 n, const T* x, i64 step)
{
    constexpr i64 lanes = vec<T>::lanes, count = 4;
    ScaledSum total;
    const auto next = [&](vec<double>& some) {
        some.r = magnitude(load_strided<unit>(x, step)).r;
        x += lanes * step;
    };
    for (; n >= count * lanes; n -= count * lanes) {
        if constexpr (unit) prefetch_ahead(x);
        vec<double> v[count];
#pragma GCC unroll 4
        for (auto& some : v) next(some);
        total.add(v);
    }
    for (; n >= lanes; n -= lanes) {
        vec<double> v[1];
        next(v[0]);
        total.add(v);
    }
    if constexpr (lanes > 1)
        for (; n > 0; --n, x += step) {
            const auto* real = reinterpret_cast<const double*>(x);
            for (int part = 0; part < int(sizeof(T) / sizeof(double)); ++part) total.add(magnitude(real[part]));
        }
    return total.norm();
}

// sqrt(sum |x_i|^2); 0 for n <= 0.
template <class T> double norm_by_scaling(i64 n, const T* x, i64 incx)
{
    if (n <= 0) return 0;
    const i64 step = incx < 0 ? -incx : incx;
    return step == 1 ? scaled_norm<true>(n, x, 1) : scaled_norm<false>(n, x, step);
}

ORV_INLINE vec<double> squares(vec<double> x) { return x * x; }

// Eight accumulators of a register each, two lanes. Single elements up to a boundary go to lane 0 of A0; then blocks of
// 16, 8, 4, 2 and 1 registers, register r of a block to A(r mod 8); single elements that are left to lane 0 of A0. The
// sum is ((A0+A1) + (A2+A3)) + ((A4+A5) + (A6+A7)), then lane 0 + lane 1.
double sum_of_squares(i64 n, const float* x)
{
    constexpr int lanes = vec<double>::lanes;
    vec<double> a[8] = {};
    const auto one = [&](i64 i) { a[0] += squares(load_widened_first<1>(x + i)); };
    const i64 head = min(to_boundary(x), n);
    for (i64 i = 0; i < head; ++i) one(i);
    x += head;
    n = Blocks<16, 8, 4, 2, 1>::run<lanes>(n - head, [&](auto registers) {
#pragma GCC unroll 16
        for (int r = 0; r < decltype(registers)::value; ++r, x += lanes) {
            if (r % 8 == 0) prefetch_ahead(x);
            a[r % 8] += squares(load_widened(x));
        }
    });
    for (i64 i = 0; i < n; ++i) one(i);
    return first_lane(fold_lanes(((a[0] + a[1]) + (a[2] + a[3])) + ((a[4] + a[5]) + (a[6] + a[7]))));
}

// An element in double: a real in lane 0 beside a zero, or a pair.
ORV_INLINE vec<double> widened(const float* x) { return load_widened_first<1>(x); }
ORV_INLINE vec<double> widened(const cpx<float>* x) { return load_widened_first<2>(&x->re); }

// Any other stride, 0 among them: four accumulators of an element each; blocks of 4, 2 and 1 elements, element e of a
// block to A(e). The sum is (A0+A1) + (A2+A3), then, of a complex vector, real + imaginary.
template <class T> double sum_of_squares(i64 n, const T* x, i64 step)
{
    vec<double> a[4] = {};
    const auto next = [&](int e) { a[e] += squares(widened(x)), x += step; };
    for (; n >= 4; n -= 4) next(0), next(1), next(2), next(3);
    if (n >= 2) next(0), next(1);
    if (n % 2 != 0) next(0);
    return first_lane(fold_lanes((a[0] + a[1]) + (a[2] + a[3])));
}

// sqrt(sum |x_i|^2), rounded to single once; 0 for n <= 0. A complex vector of unit stride is a real one of twice the
// length, whatever its address.
template <class T> float norm_in_double(i64 n, const T* x, i64 incx)
{
    if (n <= 0) return 0;
    const i64 step = incx < 0 ? -incx : incx;
    constexpr i64 reals = sizeof(T) / sizeof(float);
    const double sum =
        step == 1 ? sum_of_squares(reals * n, reinterpret_cast<const float*>(x)) : sum_of_squares(n, x, step);
    return static_cast<float>(__builtin_sqrt(sum));
}

} // namespace
} // namespace orv::blas

using namespace orv;
using namespace orv::blas;

ORV_EXPORT float BLAS(snrm2)(const i64* n, const float* x, const i64* incx) { return norm_in_double(*n, x, *incx); }
ORV_EXPORT float BLAS(scnrm2)(const i64* n, const cpx<float>* x, const i64* incx)
{
    return norm_in_double(*n, x, *incx);
}
// The norm of one element is its magnitude, exactly, whatever the stride.
ORV_EXPORT double BLAS(dnrm2)(const i64* n, const double* x, const i64* incx)
{
    return *n == 1 ? magnitude(*x) : norm_by_scaling(*n, x, *incx);
}
ORV_EXPORT double BLAS(dznrm2)(const i64* n, const cpx<double>* x, const i64* incx)
{
    return norm_by_scaling(*n, x, *incx);
}
