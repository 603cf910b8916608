// Transforms of 1 to 128 numbers in registers. The one body divides by the split radix: a transform of the even points
// and two of every fourth point, 4m + 1 and 4m - 1, whose twiddles are conjugates.
//
// The numbers are treated as if they were reals: with r = -i forward and i inverse result k is a + r*b, result n - k is
// a - r*b, and a and b are sums of real multiples of the points. So r is left to the very end, where each pair of
// results takes one turn. Where pairs are in registers a turn is a shuffle, and no ports are as busy as those that add
// and shuffle.
#pragma once

#include "dft/primitives/fft/numbers.h"
#include "frame/sines.h"

namespace orv::dft {

// A circle in as many steps as the longest transform of constant length has points (two_passes.h).
inline constexpr int circle_order = 12, circle = 1 << circle_order;
constexpr double sine_of(int step)
{
    const int k = step % circle;
    if (k > circle / 2) return -sine_of(k - circle / 2);
    return base_sine<double>(k > circle / 4 ? circle / 2 - k : k, circle_order);
}

// exp(-2*pi*i*k/n) forward, n a divisor of the circle; its conjugate inverse.
template <class R, bool forward> constexpr cpx<R> root_of_one(int n, int k)
{
    const int step = k * (circle / n) % circle;
    const double s = sine_of(step);
    return {static_cast<R>(sine_of(step + circle / 4)), static_cast<R>(forward ? -s : s)};
}

constexpr int reversed(int index, int bits)
{
    int r = 0;
    for (int b = 0; b < bits; ++b) r |= (index >> b & 1) << (bits - 1 - b);
    return r;
}
constexpr int log_of(int n) { return n <= 1 ? 0 : 1 + log_of(n / 2); }

// Calls f with the integral constants 0, 1, ..., count - 1.
template <int count, class F> ORV_INLINE void each(F f)
{
    [&]<int... i>(std::integer_sequence<int, i...>) ORV_INLINE_LAMBDA { (f(std::integral_constant<int, i>()), ...); }
    (std::make_integer_sequence<int, count>());
}

// What a transform of n reals consists of: a of result k at k, b at n - k; results 0 and n/2 have no b.
//
// Joins k and n/4 - k of three such transforms: e of n/2 even points, o and p of n/4 others. With w = c + s*r:
//
//   x[k], x[k + n/2]           := e[k] +- (w*o[k] + conj(w)*p[k])
//   x[k + n/4], x[k + 3*n/4]   := e[k + n/4] +- r*(w*o[k] - conj(w)*p[k])
template <int n, int k, class C> ORV_INLINE void join(C* x, const C* e, const C* o, const C* p)
{
    using R = typename number<C>::real;
    constexpr int half = n / 2, quarter = n / 4, eighth = n / 8, step = k * (circle / n);
    constexpr R c = static_cast<R>(sine_of(step + circle / 4)), s = static_cast<R>(sine_of(step));
    if constexpr (k == 0) {
        const C sum = o[0] + p[0], difference = o[0] - p[0];
        const C first = e[0], middle = e[quarter];
        x[0] = first + sum, x[half] = first - sum;
        x[quarter] = middle, x[n - quarter] = difference;
    } else if constexpr (k == eighth) { // c and s are equal
        const C sum = scaled_by(o[k] + p[k], c), difference = scaled_by(o[k] - p[k], c);
        const C a = e[k], b = e[half - k];
        x[k] = a + sum, x[half - k] = a - sum;
        x[n - k] = difference + b, x[half + k] = difference - b;
    } else {
        const C a = o[k] + p[k], a_odd = o[k] - p[k], b = o[quarter - k] - p[quarter - k];
        const C b_odd = o[quarter - k] + p[quarter - k];
        const C sum = scaled_by(a, c) - scaled_by(b, s), sum_b = scaled_by(b_odd, c) + scaled_by(a_odd, s);
        const C odd = scaled_by(a_odd, c) - scaled_by(b_odd, s), odd_b = scaled_by(b, c) + scaled_by(a, s);
        const C outer = e[k], outer_b = e[half - k], inner = e[quarter - k], inner_b = e[quarter + k];
        x[k] = outer + sum, x[n - k] = outer_b + sum_b;
        x[half - k] = outer - sum, x[half + k] = sum_b - outer_b;
        x[quarter + k] = inner - odd_b, x[n - quarter - k] = odd - inner_b;
        x[quarter - k] = inner + odd_b, x[n - quarter + k] = inner_b + odd;
    }
}

// As if the points at, at + step, ... were reals. load(i) gives point i when it is needed; after(k) is told when all of
// k and n/4 - k, and of these and every quarter more, is there.
template <int n, int at, int step, class C, class Load, class After>
ORV_INLINE void transform_as_reals(C* x, Load load, After after)
{
    constexpr auto nothing = [](auto) {};
    constexpr auto point = [](int i) { return (i % (n * step) + n * step) % (n * step); };
    if constexpr (n == 1) x[0] = load(std::integral_constant<int, at>());
    else if constexpr (n == 2) {
        const C a = load(std::integral_constant<int, at>()), b = load(std::integral_constant<int, point(at + step)>());
        x[0] = a + b, x[1] = a - b;
    } else {
        C even[n / 2], up[n / 4], down[n / 4];
        transform_as_reals<n / 2, at, 2 * step>(even, load, nothing);
        transform_as_reals<n / 4, point(at + step), 4 * step>(up, load, nothing);
        transform_as_reals<n / 4, point(at - step), 4 * step>(down, load, nothing);
        each<n / 8 + 1>([&](auto k) ORV_INLINE_LAMBDA {
            join<n, k>(x, even, up, down);
            after(k);
        });
    }
    if constexpr (n <= 2) after(std::integral_constant<int, 0>());
}

// The transform of n points to x[0], ..., x[n - 1]. after(k) is told when the results from k to k + together - 1, and
// those n/4, n/2 and 3*n/4 behind each, are there: there are more numbers than registers, and one that comes late or
// leaves early needs none. conjugate: what is left there are the results' conjugates, at no cost.
template <int n, bool forward, int together = 1, bool conjugate = false, class C, class Load, class After>
ORV_INLINE void transform(C* x, Load load, After after)
{
    constexpr int quarter = n < 4 ? 1 : n / 4;
    transform_as_reals<n, 0, 1>(x, load, [&](auto step) ORV_INLINE_LAMBDA {
        constexpr int k = step;
        if constexpr (conjugate && k == 0) x[0] = conj(x[0]), x[n / 2] = conj(x[n / 2]);
        each<n / 2>([&](auto i) ORV_INLINE_LAMBDA {
            if constexpr (i > 0 && (i % quarter == k || i % quarter == (quarter - k) % quarter)) {
                if constexpr (conjugate) add_turned_conjugates<forward>(x[i], x[n - i], x[i], x[n - i]);
                else add_turned<forward>(x[i], x[n - i], x[i], x[n - i]);
            }
        });
        each<quarter / together>([&](auto i) ORV_INLINE_LAMBDA {
            constexpr int last = (i + 1) * together - 1, first = i * together;
            constexpr int done = max(min(first, quarter - first), min(last, quarter - last));
            if constexpr (done == k) after(std::integral_constant<int, first>());
        });
    });
}
// The results that are there after k, of n.
template <int n, class F> ORV_INLINE void each_quarter(int k, F f)
{
    constexpr int count = n < 4 ? n : 4;
    for (int i = 0; i < count; ++i) f(k + i * (n / count));
}

} // namespace orv::dft
