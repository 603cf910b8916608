// Transforms of a few points in registers: straight-line code for any number of points that is a product of 2, 3, 4, 5
// and odd primes. Each register has one complex number for every transform that runs in its lanes.
//
// An odd prime pairs x[j] with x[n-j]: from their sums come the parts that X[k] and X[n-k] share, from their
// differences those in which they differ. Coprime factors need no twiddles between them (Good, The interaction
// algorithm and practical Fourier analysis, 1958), others do (Cooley and Tukey, 1965).
#pragma once

#include "frame/roots.h"
#include "frame/simd.h"

#include <type_traits>
#include <utility>

namespace orv::dft::general {

// f(0), f(1), ..., f(n-1), each with its number as a constant.
template <int n, class F> ORV_INLINE void steps(F f)
{
    [&]<int... i>(std::integer_sequence<int, i...>) ORV_INLINE_LAMBDA { (f(std::integral_constant<int, i>{}), ...); }
    (std::make_integer_sequence<int, n>{});
}

template <class R> using pairs = vec<cpx<R>>;

// x times a real constant, and times one whose sign is of the second part: what swapped is i times the product.
template <class R> ORV_INLINE pairs<R> times(pairs<R> x, long double c)
{
    return lane_product(x, splat(cpx<R>{static_cast<R>(c), static_cast<R>(c)}));
}
template <class R> ORV_INLINE pairs<R> times_alternating(pairs<R> x, long double c)
{
    return lane_product(x, splat(cpx<R>{static_cast<R>(-c), static_cast<R>(c)}));
}

// -i*x forward, i*x inverse.
template <bool forward, class R> ORV_INLINE pairs<R> quarter_turn(pairs<R> x)
{
    return forward ? conj(swap_neighbours(x)) : swap_neighbours(conj(x));
}

// x times exp(-2*pi*i*k/n) forward, its conjugate inverse.
template <int k, int n, bool forward, class R> ORV_INLINE pairs<R> turned(pairs<R> x)
{
    constexpr Root w = root(k, n);
    if constexpr (k % n == 0) return x;
    else if constexpr (4 * k == n) return quarter_turn<forward>(x);
    else return times(x, w.re) + swap_neighbours(times_alternating(x, forward ? w.im : -w.im));
}

template <int n, bool forward, class R> ORV_INLINE void butterfly(pairs<R> (&x)[n]);

// X[k] = even + odd, X[n-k] = even - odd, for k > 0.
template <int n, bool forward, class R> ORV_INLINE void odd_prime(pairs<R> (&x)[n])
{
    constexpr int half = n / 2;
    pairs<R> sum[half], difference[half], all = x[0];
    steps<half>([&](auto j) ORV_INLINE_LAMBDA {
        sum[j] = x[j + 1] + x[n - 1 - j];
        difference[j] = x[j + 1] - x[n - 1 - j];
        all = all + sum[j];
    });
    steps<half>([&](auto i) ORV_INLINE_LAMBDA {
        constexpr int k = i + 1;
        pairs<R> even = x[0], odd{};
        steps<half>([&](auto j) ORV_INLINE_LAMBDA {
            constexpr Root w = root(k * (j + 1), n);
            even = even + times(sum[j], w.re);
            const auto term = times_alternating(difference[j], forward ? w.im : -w.im);
            odd = j == 0 ? term : odd + term;
        });
        odd = swap_neighbours(odd);
        x[k] = even + odd, x[n - k] = even - odd;
    });
    x[0] = all;
}

// As an odd prime, with two products less: cos(2*pi/5) and cos(4*pi/5) are -1/4 with sqrt(5)/4 added and subtracted.
template <bool forward, class R> ORV_INLINE void five(pairs<R> (&x)[5])
{
    constexpr Root w = root(1, 5), w2 = root(2, 5);
    const auto a = x[1] + x[4], b = x[2] + x[3], c = x[1] - x[4], d = x[2] - x[3];
    const auto sum = a + b, mean = x[0] + times(sum, (w.re + w2.re) / 2), spread = times(a - b, (w.re - w2.re) / 2);
    constexpr long double sine = forward ? w.im : -w.im, sine2 = forward ? w2.im : -w2.im;
    const auto odd = swap_neighbours(times_alternating(c, sine) + times_alternating(d, sine2));
    const auto odd2 = swap_neighbours(times_alternating(c, sine2) + times_alternating(d, -sine));
    const auto even = mean + spread, even2 = mean - spread;
    x[0] = x[0] + sum;
    x[1] = even + odd, x[4] = even - odd;
    x[2] = even2 + odd2, x[3] = even2 - odd2;
}

// n = a*b points as a rows of b, columns of a behind them.
struct Product {
    int a, b;
    constexpr bool is_coprime() const { return a % b != 0 && b % a != 0; }
};
constexpr Product product_of(int n) // a = 0: not a product
{
    if (n == 4) return {};
    for (const Product p : {Product{2, 4}, {3, 3}, {4, 3}, {3, 5}, {4, 4}, {4, 5}, {8, 3}, {5, 5}, {4, 8}})
        if (p.a * p.b == n) return p;
    return n > 2 && n % 2 == 0 ? Product{2, n / 2} : Product{};
}

// Coprime a and b: x[b*i + a*j] are a by b points; X[k] is where k is row modulo a, column modulo b. Other a and b:
// x[i + a*j] are a by b points, X[b*k + l] come out of column l, before which they are turned. get(j) is x[j], and
// put(k, X[k]) is for points that have been formed, while others wait.
template <int n, bool forward, class R, class Get, class Put> ORV_INLINE void by_rows_and_columns(Get get, Put put)
{
    constexpr int a = product_of(n).a, b = product_of(n).b;
    constexpr bool coprime = product_of(n).is_coprime();
    pairs<R> row[a][b];
    steps<a>([&](auto i) ORV_INLINE_LAMBDA {
        steps<b>([&](auto j) ORV_INLINE_LAMBDA {
            constexpr int from = coprime ? (b * i + a * j) % n : i + a * j;
            row[i][j] = get(std::integral_constant<int, from>());
        });
        butterfly<b, forward>(row[i]);
    });
    steps<b>([&](auto l) ORV_INLINE_LAMBDA {
        pairs<R> column[a];
        steps<a>([&](auto i) ORV_INLINE_LAMBDA {
            if constexpr (coprime) column[i] = row[i][l];
            else column[i] = turned<i * l, n, forward>(row[i][l]);
        });
        butterfly<a, forward>(column);
        if constexpr (coprime)
            steps<n>([&](auto k) ORV_INLINE_LAMBDA {
                if constexpr (k % b == l) put(k, column[k % a]);
            });
        else steps<a>([&](auto k) ORV_INLINE_LAMBDA { put(std::integral_constant<int, b * k + l>(), column[k]); });
    });
}

// x := X in natural order, X[k] = sum of x[j]*exp(-+2*pi*i*j*k/n).
template <int n, bool forward, class R> ORV_INLINE void butterfly(pairs<R> (&x)[n])
{
    if constexpr (n == 2) {
        const auto difference = x[0] - x[1];
        x[0] = x[0] + x[1], x[1] = difference;
    } else if constexpr (n == 4) {
        const auto a = x[0] + x[2], b = x[0] - x[2], c = x[1] + x[3], d = quarter_turn<forward>(x[1] - x[3]);
        x[0] = a + c, x[1] = b + d, x[2] = a - c, x[3] = b - d;
    } else if constexpr (n == 5) five<forward>(x);
    else if constexpr (product_of(n).a != 0)
        by_rows_and_columns<n, forward, R>([&](auto j) ORV_INLINE_LAMBDA { return x[j]; },
                                           [&](auto k, pairs<R> v) ORV_INLINE_LAMBDA { x[k] = v; });
    else odd_prime<n, forward>(x);
}

// The same from get(j) to put(k, X[k]): more points than there are registers for need not all be there at once.
template <int n, bool forward, class R, class Get, class Put> ORV_INLINE void butterfly_between(Get get, Put put)
{
    if constexpr (product_of(n).a != 0) by_rows_and_columns<n, forward, R>(get, put);
    else {
        pairs<R> x[n];
        steps<n>([&](auto j) ORV_INLINE_LAMBDA { x[j] = get(j); });
        butterfly<n, forward>(x);
        steps<n>([&](auto k) ORV_INLINE_LAMBDA { put(k, x[k]); });
    }
}

} // namespace orv::dft::general
