// Transforms of a few reals in registers: each lane has numbers of a row of its own. Of a spectrum X[0] to X[n/2] are
// formed, or read; parts that are always 0 are not read.
//
// Even lengths are halved: X[k] = E[k] + w^k*O[k] and X[n/2-k] = conj(E[k] - w^k*O[k]), of even and of odd points. Of
// other products rows come first, so that all columns but one are complex (coprime factors need no twiddles between
// them). Primes are sums.
#pragma once

#include "dft/primitives/dft/butterflies.h"
#include "dft/primitives/fft/numbers.h"

namespace orv::dft::real {

using general::steps;

template <class R> ORV_INLINE split<R> conj(split<R> x) { return {x.re, zeros<R>() - x.im}; }
template <class R> ORV_INLINE split<R> only_real(vec<R> x) { return {x, zeros<R>()}; }
template <class R> ORV_INLINE vec<R> times(vec<R> x, long double c) { return x * splat(static_cast<R>(c)); }

// x*exp(-2*pi*i*k/n) forward, its conjugate inverse.
template <int k, int n, bool forward, class R> ORV_INLINE split<R> turned(split<R> x)
{
    constexpr Root w = root(forward ? -k : k, n);
    if constexpr (k % n == 0) return x;
    else if constexpr (8 * k == n && forward) return {times(x.re + x.im, w.re), times(x.im - x.re, w.re)};
    else if constexpr (8 * k == n) return {times(x.re - x.im, w.re), times(x.re + x.im, w.re)};
    else return {times(x.re, w.re) - times(x.im, w.im), times(x.im, w.re) + times(x.re, w.im)};
}

constexpr int least_factor(int n)
{
    for (int d = 2; d * d <= n; ++d)
        if (n % d == 0) return d;
    return n;
}

// n = a*b points as a rows of b, and where points of the rows come from and those of the columns go to.
template <int n> struct Product {
    static constexpr int a = least_factor(n), b = n / a;
    static constexpr bool coprime = b % a != 0;
    static constexpr int from(int row, int j) { return coprime ? (b * row + a * j) % n : row + a * j; }
    static constexpr int to(int column, int k)
    {
        if (!coprime) return b * k + column;
        int at = column;
        while (at % a != k) at += b;
        return at;
    }
};

template <bool forward, class R> ORV_INLINE void three(split<R> (&x)[3])
{
    constexpr Root w = root(1, 3);
    const split<R> sum = x[1] + x[2], difference = scaled_by(x[1] - x[2], static_cast<R>(w.im));
    const split<R> mean = x[0] + scaled_by(sum, static_cast<R>(w.re));
    x[0] = x[0] + sum;
    add_turned<forward>(mean, difference, x[1], x[2]);
}

template <int n, class R> ORV_INLINE void forward(const vec<R> (&x)[n], split<R> (&spectrum)[n / 2 + 1])
{
    if constexpr (n == 2) {
        spectrum[0] = only_real(x[0] + x[1]), spectrum[1] = only_real(x[0] - x[1]);
    } else if constexpr (n % 2 == 0) {
        constexpr int m = n / 2;
        vec<R> even[m], odd[m];
        steps<m>([&](auto j) ORV_INLINE_LAMBDA { even[j] = x[2 * j], odd[j] = x[2 * j + 1]; });
        split<R> e[m / 2 + 1], o[m / 2 + 1];
        real::forward<m, R>(even, e), real::forward<m, R>(odd, o);
        steps<m / 2 + 1>([&](auto k) ORV_INLINE_LAMBDA {
            if constexpr (k == 0) {
                spectrum[0] = only_real(e[0].re + o[0].re), spectrum[m] = only_real(e[0].re - o[0].re);
            } else if constexpr (2 * k == m) {
                spectrum[k] = {e[k].re, zeros<R>() - o[k].re};
            } else {
                const split<R> t = real::turned<k, n, true>(o[k]);
                spectrum[k] = e[k] + t, spectrum[m - k] = {e[k].re - t.re, t.im - e[k].im};
            }
        });
    } else if constexpr (least_factor(n) < n) {
        using P = Product<n>;
        split<R> rows[P::a][P::b / 2 + 1];
        steps<P::a>([&](auto i) ORV_INLINE_LAMBDA {
            vec<R> row[P::b];
            steps<P::b>([&](auto j) ORV_INLINE_LAMBDA { row[j] = x[P::from(i, j)]; });
            real::forward<P::b, R>(row, rows[i]);
        });
        static_assert(P::a == 3);
        const vec<R> first[] = {rows[0][0].re, rows[1][0].re, rows[2][0].re};
        split<R> ends[2];
        real::forward<3, R>(first, ends);
        spectrum[0] = ends[0];
        constexpr int at = P::to(0, 1);
        if constexpr (2 * at < n) spectrum[at] = ends[1];
        else spectrum[n - at] = conj(ends[1]);
        steps<P::b / 2>([&](auto l) ORV_INLINE_LAMBDA {
            constexpr int column = l + 1;
            split<R> points[3];
            steps<3>([&](auto i) ORV_INLINE_LAMBDA {
                points[i] = P::coprime ? rows[i][column] : real::turned<i * column, n, true>(rows[i][column]);
            });
            three<true>(points);
            steps<3>([&](auto k) ORV_INLINE_LAMBDA {
                constexpr int to = P::to(column, k);
                if constexpr (2 * to < n) spectrum[to] = points[k];
                else spectrum[n - to] = conj(points[k]);
            });
        });
    } else {
        constexpr int half = n / 2;
        vec<R> sum[half], difference[half], all = x[0];
        steps<half>([&](auto j) ORV_INLINE_LAMBDA {
            sum[j] = x[j + 1] + x[n - 1 - j], difference[j] = x[n - 1 - j] - x[j + 1];
            all += sum[j];
        });
        spectrum[0] = only_real(all);
        steps<half>([&](auto i) ORV_INLINE_LAMBDA {
            vec<R> re = x[0], im;
            steps<half>([&](auto j) ORV_INLINE_LAMBDA {
                constexpr Root w = root((i + 1) * (j + 1), n);
                re += times(sum[j], w.re);
                if constexpr (j == 0) im = times(difference[j], w.im);
                else im += times(difference[j], w.im);
            });
            spectrum[i + 1] = {re, im};
        });
    }
}

template <int n, class R> ORV_INLINE void inverse(const split<R> (&spectrum)[n / 2 + 1], vec<R> (&x)[n])
{
    if constexpr (n == 2) {
        x[0] = spectrum[0].re + spectrum[1].re, x[1] = spectrum[0].re - spectrum[1].re;
    } else if constexpr (n % 2 == 0) {
        constexpr int m = n / 2;
        split<R> e[m / 2 + 1], o[m / 2 + 1];
        steps<m / 2 + 1>([&](auto k) ORV_INLINE_LAMBDA {
            const split<R> up = spectrum[k], down = spectrum[m - k]; // the conjugate counts
            if constexpr (k == 0) {
                e[0] = only_real(up.re + down.re), o[0] = only_real(up.re - down.re);
            } else if constexpr (2 * k == m) {
                e[k] = only_real(up.re + up.re), o[k] = only_real(zeros<R>() - (up.im + up.im));
            } else {
                e[k] = {up.re + down.re, up.im - down.im};
                o[k] = real::turned<k, n, false>(split<R>{up.re - down.re, up.im + down.im});
            }
        });
        vec<R> even[m], odd[m];
        real::inverse<m, R>(e, even), real::inverse<m, R>(o, odd);
        steps<m>([&](auto j) ORV_INLINE_LAMBDA { x[2 * j] = even[j], x[2 * j + 1] = odd[j]; });
    } else if constexpr (least_factor(n) < n) {
        using P = Product<n>;
        static_assert(P::a == 3);
        split<R> rows[3][P::b / 2 + 1];
        const auto point = [&](auto at) ORV_INLINE_LAMBDA {
            if constexpr (2 * at < n) return spectrum[at];
            else return conj(spectrum[n - at]);
        };
        const split<R> ends[2] = {spectrum[0], point(std::integral_constant<int, P::to(0, 1)>())};
        vec<R> first[3];
        real::inverse<3, R>(ends, first);
        steps<3>([&](auto i) ORV_INLINE_LAMBDA { rows[i][0] = only_real(first[i]); });
        steps<P::b / 2>([&](auto l) ORV_INLINE_LAMBDA {
            constexpr int column = l + 1;
            split<R> points[3];
            steps<3>([&](auto k)
                         ORV_INLINE_LAMBDA { points[k] = point(std::integral_constant<int, P::to(column, k)>()); });
            three<false>(points);
            steps<3>([&](auto i) ORV_INLINE_LAMBDA {
                rows[i][column] = P::coprime ? points[i] : real::turned<i * column, n, false>(points[i]);
            });
        });
        steps<3>([&](auto i) ORV_INLINE_LAMBDA {
            vec<R> row[P::b];
            real::inverse<P::b, R>(rows[i], row);
            steps<P::b>([&](auto j) ORV_INLINE_LAMBDA { x[P::from(i, j)] = row[j]; });
        });
    } else {
        constexpr int half = n / 2;
        split<R> twice[half];
        vec<R> all = spectrum[0].re;
        steps<half>([&](auto k) ORV_INLINE_LAMBDA {
            twice[k] = spectrum[k + 1] + spectrum[k + 1];
            all += twice[k].re;
        });
        x[0] = all;
        steps<half>([&](auto i) ORV_INLINE_LAMBDA {
            vec<R> even = spectrum[0].re, odd;
            steps<half>([&](auto k) ORV_INLINE_LAMBDA {
                constexpr Root w = root((i + 1) * (k + 1), n);
                even += times(twice[k].re, w.re);
                if constexpr (k == 0) odd = times(twice[k].im, w.im);
                else odd += times(twice[k].im, w.im);
            });
            x[i + 1] = even - odd, x[n - 1 - i] = even + odd;
        });
    }
}

} // namespace orv::dft::real
