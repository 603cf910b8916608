// Sine and cosine transforms between whole points and half ones, kinds 2 and 3, in place. Backward from n coefficients:
//
//   kind 2   f[i] = 2 * sum over 0 <= k < n of F[k]*cos((2k+1)*i*pi/2n), i = 0 to n-1; element n is left alone
//   kind 3   f[i] = 2 * sum over 1 <= k <= n of F[k]*sin((2k-1)*i*pi/2n), i = 1 to n, which stand from element 0 on
//
// and forward the inverse times 2n:
//
//   kind 2   F[k] = f[0] + 2 * sum over 0 < i < n of f[i]*cos((2k+1)*i*pi/2n)
//   kind 3   F[k] = (-1)^(k-1)*f[n] + 2 * sum over 0 < i < n of f[i]*sin((2k-1)*i*pi/2n)
//
// Backward one step makes n reals of F; turned by half an angle, their Fourier transform has the even results and the
// differences of neighbouring odd ones. Forward goes the same steps back, last one first. Its last step divides by
// sines, the least of which is pi/2n: results near the ends take up to n/6 times the rounding errors of the others.
#include "pde/trig/passes.h"
#include "pde/trig/trig.h"

namespace orv::pdett {
namespace {

// What stands in the tables: sines of half steps, and the angle of pair k.
template <class T> struct Angles {
    const T *half, *whole;
    explicit Angles(const Job<T>& job) : half(job.table + half_angles(staggered_cosine, job.n)), whole(job.table) {}
    ORV_INLINE T cosine(i64 k) const { return whole[2 * k - 2]; }
    ORV_INLINE T sine(i64 k) const { return whole[2 * k - 1]; }
};

} // namespace

template <class T> i64 staggered_cosine_backward(const Job<T>& job)
{
    const auto [f, n, table, scale, handle] = job;
    const Angles angles(job);
    mirror(f, n - 1, n / 2, [=](i64 j, Images<T> a) ORV_INLINE_LAMBDA -> Images<T> {
        const T sum = a.front + a.back, difference = 2 * angles.half[j] * (a.front - a.back);
        return {sum + difference, sum - difference};
    });
    if (!is_even(n)) f[n / 2] *= 2;

    if (const i64 status = Layer<T>::forward(handle, f)) return status;
    T odd = is_even(n) ? f[1] / 2 : 0;
    const T last = odd;
    const auto pass = [&](i64 k, cpx<T> z) ORV_INLINE_LAMBDA -> cpx<T> {
        const T c = angles.cosine(k), s = angles.sine(k);
        odd += s * z.re - c * z.im;
        return {odd * scale, (c * z.re + s * z.im) * scale};
    };
    walk<-1>(pairs(f, n), f - 1, pairs_of(n), 1, pass);
    f[0] *= scale;
    if (is_even(n)) f[n - 1] = last * scale;
    return 0;
}

template <class T> i64 staggered_cosine_forward(const Job<T>& job)
{
    const auto [f, n, table, scale, handle] = job;
    const Angles angles(job);
    const T last = f[n - 1];
    T above = is_even(n) ? last : 0;
    const auto pass = [&](i64 k, cpx<T> odd_even) ORV_INLINE_LAMBDA -> cpx<T> {
        const T c = angles.cosine(k), s = angles.sine(k);
        const T difference = odd_even.re - above, even = odd_even.im;
        above = odd_even.re;
        return {c * even + s * difference, s * even - c * difference};
    };
    walk<-1>(f - 1, pairs(f, n), pairs_of(n), 1, pass);
    if (is_even(n)) f[1] = 2 * last;

    if (const i64 status = Layer<T>::backward(handle, f)) return status;
    mirror(f, n - 1, n / 2, [=](i64 j, Images<T> y) ORV_INLINE_LAMBDA -> Images<T> {
        const T sum = (y.front + y.back) / 2, difference = (y.front - y.back) / (4 * angles.half[j]);
        return {(sum + difference) * scale, (sum - difference) * scale};
    });
    if (!is_even(n)) f[n / 2] *= scale;
    return 0;
}

template <class T> i64 staggered_sine_backward(const Job<T>& job)
{
    const auto [f, n, table, scale, handle] = job;
    const Angles angles(job);
    mirror(f, n - 1, n / 2, [=](i64 j, Images<T> a) ORV_INLINE_LAMBDA -> Images<T> {
        const T sum = 2 * angles.half[j] * (a.front + a.back), difference = a.front - a.back;
        return {sum + difference, sum - difference};
    });
    if (!is_even(n)) f[n / 2] *= 4;

    if (const i64 status = Layer<T>::forward(handle, f)) return status;
    T odd = f[0] / 2;
    const T first = odd, last = f[1];
    const auto pass = [&](i64 k, cpx<T> z) ORV_INLINE_LAMBDA -> cpx<T> {
        const T c = angles.cosine(k), s = angles.sine(k);
        odd += c * z.re + s * z.im;
        return {(s * z.re - c * z.im) * scale, odd * scale};
    };
    walk<1>(pairs(f, n), f - 1, 1, pairs_of(n), pass);
    f[0] = first * scale;
    if (is_even(n)) f[n - 1] = last * scale;
    return 0;
}

template <class T> i64 staggered_sine_forward(const Job<T>& job)
{
    const auto [f, n, table, scale, handle] = job;
    const Angles angles(job);
    const T last = f[n - 1];
    T below = f[0];
    const auto pass = [&](i64 k, cpx<T> even_odd) ORV_INLINE_LAMBDA -> cpx<T> {
        const T c = angles.cosine(k), s = angles.sine(k);
        const T even = even_odd.re, difference = even_odd.im - below;
        below = even_odd.im;
        return {c * difference + s * even, s * difference - c * even};
    };
    walk<1>(f - 1, pairs(f, n), 1, pairs_of(n), pass);
    f[0] *= 2;
    if (is_even(n)) f[1] = last;

    if (const i64 status = Layer<T>::backward(handle, f)) return status;
    mirror(f, n - 1, n / 2, [=](i64 j, Images<T> y) ORV_INLINE_LAMBDA -> Images<T> {
        const T sum = (y.front + y.back) / (4 * angles.half[j]), difference = (y.front - y.back) / 2;
        return {(sum + difference) * scale, (sum - difference) * scale};
    });
    if (!is_even(n)) f[n / 2] = f[n / 2] / 2 * scale;
    return 0;
}

} // namespace orv::pdett

ORV_PDETT_ROUTINE(scos_f, staggered_cosine_forward)
ORV_PDETT_ROUTINE(scos_b, staggered_cosine_backward)
ORV_PDETT_ROUTINE(ssin_f, staggered_sine_forward)
ORV_PDETT_ROUTINE(ssin_b, staggered_sine_backward)
