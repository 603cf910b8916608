// Sine and cosine transforms between half points, kinds 4 and 5, in place, of n elements:
//
//   kind 4   2 * sum over 0 <= k < n of F[k]*cos((2k+1)*(2i+1)*pi/4n), i = 0 to n-1
//   kind 5   2 * sum over 0 <= k < n of F[k]*sin((2k+1)*(2i+1)*pi/4n)
//
// Each is its own inverse but for a factor of 2n, so forward and backward have the same formula, and only go their
// steps the other way round. An element and its mirror image are turned by a quarter angle, the Fourier transform of
// that by half an angle: then sums and differences of parts are the results. (Sums of neighbours, by which kinds 0 to 3
// find every other result, would be needed twice here, and lose n^1.5 roundings; turned pairs lose none.)
#include "pde/trig/passes.h"
#include "pde/trig/trig.h"

namespace orv::pdett {
namespace {

// A pair is turned by (p d, -d p), where p^2 + d^2 = 2.
template <bool is_cosine, class T> struct Turn {
    T p, d;
    ORV_INLINE Turn(T sine, T cosine) : p(cosine + sine), d(is_cosine ? sine - cosine : cosine - sine) {}
    ORV_INLINE Images<T> there(Images<T> a) const { return {a.front * p + a.back * d, a.back * p - a.front * d}; }
    ORV_INLINE Images<T> back(Images<T> y) const { return {y.front * p - y.back * d, y.back * p + y.front * d}; }
};

template <bool is_cosine, class T> i64 backward(const Job<T>& job)
{
    const auto [f, n, table, scale, handle] = job;
    const T* const sines = table + quarter_angles(n);
    const i64 last = n - 1;
    mirror(f, last, n / 2, [=](i64 j, Images<T> a) ORV_INLINE_LAMBDA {
        return Turn<is_cosine, T>(sines[j], sines[last - j]).there(a);
    });
    if (!is_even(n)) f[n / 2] *= 2 * sines[n / 2];

    if (const i64 status = Layer<T>::forward(handle, f)) return status;
    const T end = f[1];
    const auto pass = [=](i64 k, cpx<T> z) ORV_INLINE_LAMBDA -> cpx<T> {
        const T c = table[2 * k - 2], s = table[2 * k - 1];
        const T a = c * z.re + s * z.im, b = s * z.re - c * z.im;
        return {(is_cosine ? b + a : b - a) * scale, (is_cosine ? a - b : a + b) * scale};
    };
    walk<1>(pairs(f, n), f - 1, 1, pairs_of(n), pass);
    f[0] *= scale;
    if (is_even(n)) f[last] = end * scale;
    return 0;
}

template <bool is_cosine, class T> i64 forward(const Job<T>& job)
{
    const auto [f, n, table, scale, handle] = job;
    const T* const sines = table + quarter_angles(n);
    const i64 last = n - 1;
    const T end = f[last];
    const auto pass = [=](i64 k, cpx<T> g) ORV_INLINE_LAMBDA -> cpx<T> {
        const T c = table[2 * k - 2], s = table[2 * k - 1];
        const T sum = g.re + g.im, difference = is_cosine ? g.re - g.im : g.im - g.re;
        const T a = is_cosine ? sum : difference, b = is_cosine ? difference : sum;
        return {c * a + s * b, s * a - c * b};
    };
    walk<1>(f - 1, pairs(f, n), 1, pairs_of(n), pass);
    f[0] *= 2;
    if (is_even(n)) f[1] = 2 * end;

    if (const i64 status = Layer<T>::backward(handle, f)) return status;
    const T half = scale / 2;
    mirror(f, last, n / 2, [=](i64 j, Images<T> y) ORV_INLINE_LAMBDA -> Images<T> {
        const Images<T> a = Turn<is_cosine, T>(sines[j], sines[last - j]).back(y);
        return {a.front * half, a.back * half};
    });
    if (!is_even(n)) f[n / 2] = f[n / 2] * (2 * sines[n / 2]) * half;
    return 0;
}

} // namespace

template <class T> i64 staggered2_cosine_forward(const Job<T>& job) { return forward<true>(job); }
template <class T> i64 staggered2_cosine_backward(const Job<T>& job) { return backward<true>(job); }
template <class T> i64 staggered2_sine_forward(const Job<T>& job) { return forward<false>(job); }
template <class T> i64 staggered2_sine_backward(const Job<T>& job) { return backward<false>(job); }

} // namespace orv::pdett

ORV_PDETT_ROUTINE(scos2_f, staggered2_cosine_forward)
ORV_PDETT_ROUTINE(scos2_b, staggered2_cosine_backward)
ORV_PDETT_ROUTINE(ssin2_f, staggered2_sine_forward)
ORV_PDETT_ROUTINE(ssin2_b, staggered2_sine_backward)
