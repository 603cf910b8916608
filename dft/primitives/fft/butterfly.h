// Transforms of 1 to 128 numbers in registers. The one body divides by the split radix: a transform of the even points
// and two of every fourth point, 4m + 1 and 4m - 1. The twiddles of these two are conjugates, so of each two numbers
// only the difference is ever turned by i: where pairs are in registers that costs a shuffle, and no ports are as busy
// as those that add and shuffle.
#pragma once

#include "dft/primitives/fft/numbers.h"
#include "frame/sines.h"

namespace orv::dft {

// A circle in as many steps as the longest of them has points.
inline constexpr int circle_order = 7, circle = 1 << circle_order;
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

// Joins numbers of three transforms: y0 and y1 are of the even points, y2 and y3 of the others. With r = -i forward and
// i inverse, and w = c + s*r:
//
//   y0, y2 := y0 +- (w*y2 + conj(w)*y3)     y1, y3 := y1 +- r*(w*y2 - conj(w)*y3)
template <int n, int k, bool forward, class C> ORV_INLINE void join(C& y0, C& y1, C& y2, C& y3)
{
    using R = typename number<C>::real;
    constexpr int step = k * (circle / n);
    constexpr R c = static_cast<R>(sine_of(step + circle / 4)), s = static_cast<R>(sine_of(step));
    const C a = y0, b = y1, sum = y2 + y3, difference = y2 - y3;
    C even = sum, odd; // what goes to the outer pair, and with the other sign to the inner one
    if constexpr (step == 0) {
        add_turned<forward>(b, difference, y1, y3);
    } else {
        if constexpr (step == circle / 8) { // c and s are equal
            add_turned<forward>(sum, difference, even, odd);
            even = scaled_by(even, c), odd = scaled_by(odd, c);
        } else combine_turned<forward>(sum, difference, c, s, even, odd);
        y1 = b - odd, y3 = b + odd;
    }
    y0 = a + even, y2 = a - even;
}

// Calls f with the integral constants 0, 1, ..., count - 1.
template <int count, class F> ORV_INLINE void each(F f)
{
    [&]<int... i>(std::integer_sequence<int, i...>) ORV_INLINE_LAMBDA { (f(std::integral_constant<int, i>()), ...); }
    (std::make_integer_sequence<int, count>());
}

// The transform of the points at, at + step, ... to x[0], ..., x[n - 1]. load(i) gives point i when it is needed, and
// after(k) is told when the results at k, k + n/4, k + n/2 and k + 3*n/4 are there: there are more numbers than
// registers, and one that comes late or leaves early needs none.
template <int n, bool forward, int at = 0, int step = 1, class C, class Load, class After>
ORV_INLINE void transform(C* x, Load load, After after)
{
    constexpr auto nothing = [](auto) {};
    constexpr auto point = [](int i) { return (i % (n * step) + n * step) % (n * step); };
    if constexpr (n == 1) {
        x[0] = load(std::integral_constant<int, at>());
        after(std::integral_constant<int, 0>());
    } else if constexpr (n == 2) {
        const C a = load(std::integral_constant<int, at>()), b = load(std::integral_constant<int, point(at + step)>());
        x[0] = a + b, x[1] = a - b;
        after(std::integral_constant<int, 0>());
    } else {
        constexpr int quarter = n / 4;
        transform<2 * quarter, forward, at, 2 * step>(x, load, nothing);
        transform<quarter, forward, point(at + step), 4 * step>(x + 2 * quarter, load, nothing);
        transform<quarter, forward, point(at - step), 4 * step>(x + 3 * quarter, load, nothing);
        each<quarter>([&](auto k) ORV_INLINE_LAMBDA {
            join<n, k, forward>(x[k], x[k + quarter], x[k + 2 * quarter], x[k + 3 * quarter]);
            after(k);
        });
    }
}
// The results that are there after k, of n.
template <int n, class F> ORV_INLINE void each_quarter(int k, F f)
{
    constexpr int count = n < 4 ? n : 4;
    for (int i = 0; i < count; ++i) f(k + i * (n / count));
}

} // namespace orv::dft
