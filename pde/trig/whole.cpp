// Sine and cosine transforms between whole points, kinds 0 and 1, in place, of f[0] to f[n]:
//
//   kind 0   S[k] = 2 * sum over 0 < j < n of f[j]*sin(pi*j*k/n)
//   kind 1   C[k] = f[0] + (-1)^k*f[n] + 2 * sum over 0 < j < n of f[j]*cos(pi*j*k/n)
//
// Each is its own inverse but for a factor of 2n. One step makes n reals of f, of which the Fourier transform holds the
// even results as they are and the odd ones as differences of neighbours: running sums give them back. See W. H. Press
// et al., Numerical Recipes, 12.4. Kind 0 sets f[0] to zero and leaves f[n] alone.
#include "pde/trig/passes.h"
#include "pde/trig/trig.h"

namespace orv::pdett {
namespace {

template <class T> ORV_INLINE Images<T> before_sine(T sine, Images<T> a)
{
    const T difference = a.front - a.back, sum = 2 * sine * (a.front + a.back);
    return {difference + sum, sum - difference};
}

} // namespace

template <class T> i64 whole_sine(const Job<T>& job)
{
    const auto [f, n, sines, scale, handle] = job;
    f[0] = 0;
    mirror(f + 1, n - 2, pairs_of(n), [=](i64 j, Images<T> a) ORV_INLINE_LAMBDA { return before_sine(sines[j], a); });
    if (const i64 j = n / 2; is_even(n)) f[j] = before_sine(sines[j - 1], {f[j], f[j]}).front;

    if (const i64 status = Layer<T>::forward(handle, f)) return status;
    const i64 last = pairs_of(n);
    T sum = f[0] / 2;
    const T first = sum * scale;
    const auto pass = [&](i64, cpx<T> z) ORV_INLINE_LAMBDA -> cpx<T> {
        sum += z.re;
        return {-z.im * scale, sum * scale};
    };
    walk<1>(pairs(f, n), f, 1, is_even(n) ? last : last - 1, pass);
    if (!is_even(n)) f[n - 1] = -f[n - 1] * scale; // its neighbour is no result
    f[0] = 0;
    f[1] = first;
    return 0;
}

namespace {

// The first odd result is a sum of its own. Of short arrays it is taken in order, from the middle to the ends.
template <class T> T before_cosine(T* f, i64 n, const T* table)
{
    constexpr i64 longest_in_order = 64;
    T sum = f[0] - f[n];
    f[0] += f[n];
    if (is_even(n)) f[n / 2] += f[n / 2];
    const auto pass = [=](i64 j) ORV_INLINE_LAMBDA {
        const T cosine = table[2 * j], sine = table[2 * j + 1];
        const T together = f[j + 1] + f[n - 1 - j], apart = 2 * (f[j + 1] - f[n - 1 - j]);
        f[j + 1] = together - apart * sine;
        f[n - 1 - j] = together + apart * sine;
        return cosine * apart;
    };
    const i64 count = pairs_of(n);
    if (n <= longest_in_order) {
        for (i64 j = count; j-- > 0;) sum += pass(j);
        return sum;
    }
#pragma omp simd reduction(+ : sum)
    for (i64 j = 0; j < count; ++j) sum += pass(j);
    return sum;
}

} // namespace

template <class T> i64 whole_cosine(const Job<T>& job)
{
    const auto [f, n, table, scale, handle] = job;
    T sum = before_cosine(f, n, table);
    const T first = sum * scale;
    if (const i64 status = Layer<T>::forward(handle, f)) return status;
    const T last = f[1];
    const auto pass = [&](i64, cpx<T> z) ORV_INLINE_LAMBDA -> cpx<T> {
        sum -= z.im;
        return {z.re * scale, sum * scale};
    };
    walk<1>(pairs(f, n), f, 1, pairs_of(n), pass);
    f[0] *= scale;
    f[1] = first;
    if (is_even(n)) f[n] = last * scale;
    return 0;
}

} // namespace orv::pdett

ORV_PDETT_ROUTINE(sin, whole_sine)
ORV_PDETT_ROUTINE(cos, whole_cosine)
