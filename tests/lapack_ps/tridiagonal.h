// Tridiagonal systems for tests: operands in guarded storage, and how far a computed solution may be off.
#pragma once

#include "tests/lapack_ps/matrix.h"

namespace orv::test {

// a/b; of complex numbers by the larger part of b.
template <class R> R quotient(R a, R b) { return a / b; }
template <class R> cpx<R> quotient(cpx<R> a, R b) { return {a.re / b, a.im / b}; }
template <class R> cpx<R> quotient(cpx<R> a, cpx<R> b)
{
    if (std::fabs(b.re) >= std::fabs(b.im)) {
        const R ratio = b.im / b.re, divisor = b.re + ratio * b.im;
        return {(a.re + a.im * ratio) / divisor, (a.im - a.re * ratio) / divisor};
    }
    const R ratio = b.re / b.im, divisor = b.im + ratio * b.re;
    return {(a.re * ratio + a.im) / divisor, (a.im * ratio - a.re) / divisor};
}

// The diagonals of A, and right-hand sides n by nrhs with padding that is NaN.
template <class T> struct System {
    i64 n, nrhs, ldb;
    Guarded<T> dl, d, du, b;

    System(i64 order, i64 sides)
        : n(order), nrhs(sides), ldb(std::max<i64>(order, 1) + sides % 3), dl(std::max<i64>(order - 1, 0)), d(order),
          du(std::max<i64>(order - 1, 0)), b(order > 0 && sides > 0 ? (sides - 1) * ldb + order : 0)
    {
    }
    T& side(i64 i, i64 j) const { return b[static_cast<std::size_t>(i + j * ldb)]; }
    void copy(const System& other) const
    {
        const auto all = [](const Guarded<T>& from, const Guarded<T>& to) {
            std::copy(from.begin(), from.end(), to.begin());
        };
        all(other.dl, dl), all(other.d, d), all(other.du, du), all(other.b, b);
    }
    // dominance: how much larger than the other elements those of the diagonal are.
    void fill(double dominance) const
    {
        Random random(static_cast<std::uint64_t>(100 * n + nrhs));
        random.fill(dl), random.fill(du);
        for (T& e : d) {
            const T value = random.value<T>();
            e = value + number<T>(real_of(value) < 0 ? -dominance : dominance);
        }
        for (i64 j = 0; j < nrhs; ++j)
            for (i64 i = 0; i < n; ++i) side(i, j) = random.value<T>();
    }
    std::string differs_from(const System& other) const
    {
        for (const auto& [name, mine, theirs] : {std::tuple("dl", &dl, &other.dl), std::tuple("d", &d, &other.d),
                                                 std::tuple("du", &du, &other.du), std::tuple("b", &b, &other.b)})
            if (const std::string text = difference(*mine, *theirs); !text.empty())
                return std::string(name) + ' ' + text;
        return {};
    }
};

template <class T> std::string problem(const char* routine, const System<T>& s)
{
    return std::string(1, letter<T>) + routine + " n=" + std::to_string(s.n) + " nrhs=" + std::to_string(s.nrhs) +
           " seed=" + std::to_string(seed());
}

// The largest |b - op(A)*x| as a multiple of (|op(A)|*|x|)(i); 0 stands for A, 1 for the transpose, 2 for its
// conjugate. NaN anywhere is infinitely far off.
template <class T> long double backward_error(int op, const System<T>& a, const System<T>& x)
{
    long double worst = 0;
    const auto element = [&](const Guarded<T>& diagonal, i64 i) {
        return wide(op == 2 ? conj(diagonal[i]) : diagonal[i]);
    };
    const auto &below = op == 0 ? a.dl : a.du, &above = op == 0 ? a.du : a.dl;
    for (i64 j = 0; j < a.nrhs; ++j)
        for (i64 i = 0; i < a.n; ++i) {
            Wide rest = wide(a.side(i, j));
            long double magnitudes = 0;
            const auto take = [&](Wide coefficient, i64 k) {
                const Wide e = wide(x.side(k, j));
                rest -= coefficient * e, magnitudes += size(coefficient) * size(e);
            };
            if (i > 0) take(element(below, i - 1), i - 1);
            take(element(a.d, i), i);
            if (i + 1 < a.n) take(element(above, i), i + 1);
            const long double error = size(rest) == 0 ? 0 : size(rest) / magnitudes;
            if (!(error <= worst)) worst = error == error ? error : INFINITY;
        }
    return worst;
}

// Of diagonally dominant A = L*U, |L||U| <= 3|A| (Higham, section 9.5), and |b - A*x| <= (2*gamma + gamma^2)|L||U||x|
// with the gamma of the roundings that an element takes part in.
template <class T> long double dominant_bound(int roundings)
{
    const long double gamma = gamma_n<T>((is_complex<T> ? 4 : 1) * roundings);
    return 3 * (2 * gamma + gamma * gamma);
}

} // namespace orv::test
