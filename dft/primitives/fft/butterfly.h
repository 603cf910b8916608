// Transforms of 2 to 32 numbers in registers. The one body divides by the split radix: a transform of the even points
// and two of every fourth point, 4m + 1 and 4m + 3. It finds its points in bit-reversed order, where these parts stand
// one behind the other, and leaves the spectrum in order.
#pragma once

#include "dft/primitives/fft/numbers.h"

namespace orv::dft {

// The sines of the first quarter of a circle in 32 steps.
inline constexpr double sines_of_32[] = {0,
                                         0.19509032201612826784828486847702224,
                                         0.38268343236508977172845998403039887,
                                         0.55557023301960222474283081394853288,
                                         0.70710678118654752440084436210484904,
                                         0.83146961230254523707878837761790576,
                                         0.92387953251128675612818318939678829,
                                         0.98078528040323044912618223613423904,
                                         1};
constexpr double sine_of_32(int step)
{
    const int k = step % 32;
    if (k > 16) return -sine_of_32(k - 16);
    return k > 8 ? sines_of_32[16 - k] : sines_of_32[k];
}

// exp(-2*pi*i*k/n) forward, n a divisor of 32; its conjugate inverse.
template <class R, bool forward> constexpr cpx<R> root_of_one(int n, int k)
{
    const int step = k * (32 / n) % 32;
    const double s = sine_of_32(step);
    return {static_cast<R>(sine_of_32(step + 8)), static_cast<R>(forward ? -s : s)};
}

constexpr int reversed(int index, int bits)
{
    int r = 0;
    for (int b = 0; b < bits; ++b) r |= (index >> b & 1) << (bits - 1 - b);
    return r;
}
constexpr int log_of(int n) { return n <= 1 ? 0 : 1 + log_of(n / 2); }

template <int n, int k, bool forward, class C> ORV_INLINE C times_root(C a)
{
    using R = typename number<C>::real;
    constexpr int step = k * (32 / n) % 32;
    if constexpr (step == 0) return a;
    else if constexpr (step % 8 == 4) { // both parts have the magnitude of the root of a half
        C sum, difference;
        add_turned<forward>(a, a, sum, difference); // a*(1 - i), a*(1 + i)
        constexpr R half = static_cast<R>(sines_of_32[4]);
        if constexpr (step == 4) return scaled_by(sum, half);
        else if constexpr (step == 12) return scaled_by(difference, -half);
        else if constexpr (step == 20) return scaled_by(sum, -half);
        else return scaled_by(difference, half);
    } else return times(a, root_of_one<R, forward>(n, k));
}

// Calls f with the integral constants 0, 1, ..., count - 1.
template <int count, class F> ORV_INLINE void each(F f)
{
    [&]<int... i>(std::integer_sequence<int, i...>) ORV_INLINE_LAMBDA { (f(std::integral_constant<int, i>()), ...); }
    (std::make_integer_sequence<int, count>());
}

// x[from] to x[from + n - 1]. load(i) gives point i when it is needed, after(k) is told when the results at k, k + n/4,
// k + n/2 and k + 3*n/4 are there: there are more numbers than registers, and a number that comes late or leaves early
// needs none.
template <int n, bool forward, int from = 0, class C, class Load, class After>
ORV_INLINE void transform(C* x, Load load, After after)
{
    constexpr auto nothing = [](auto) {};
    if constexpr (n == 1) {
        x[from] = load(std::integral_constant<int, from>());
        after(std::integral_constant<int, 0>());
    } else if constexpr (n == 2) {
        const C a = load(std::integral_constant<int, from>()), b = load(std::integral_constant<int, from + 1>());
        x[from] = a + b, x[from + 1] = a - b;
        after(std::integral_constant<int, 0>());
    } else {
        constexpr int quarter = n / 4;
        transform<2 * quarter, forward, from>(x, load, nothing);
        transform<quarter, forward, from + 2 * quarter>(x, load, nothing);
        transform<quarter, forward, from + 3 * quarter>(x, load, nothing);
        each<quarter>([&](auto k) ORV_INLINE_LAMBDA {
            C* const y = x + from + k;
            const C first = times_root<n, k, forward>(y[2 * quarter]);
            const C third = times_root<n, 3 * k, forward>(y[3 * quarter]);
            const C a = y[0], b = y[quarter], sum = first + third, difference = first - third;
            y[0] = a + sum, y[2 * quarter] = a - sum;
            add_turned<forward>(b, difference, y[quarter], y[3 * quarter]);
            after(k);
        });
    }
}
// Where all is in registers.
template <int n, bool forward, class C> ORV_INLINE void transform(C* x)
{
    transform<n, forward>(
        x, [x](int i) ORV_INLINE_LAMBDA { return x[i]; }, [](auto) {});
}
// The results that are there after k, of n.
template <int n, class F> ORV_INLINE void each_quarter(int k, F f)
{
    constexpr int count = n < 4 ? n : 4;
    for (int i = 0; i < count; ++i) f(k + i * (n / count));
}

} // namespace orv::dft
