// One matrix product as a problem: what to multiply, operands between guard pages, what the entries of C should be.
#pragma once

#include "frame/kernels/blas.h"
#include "tests/support/bounds.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/line.h"
#include "tests/support/random.h"

#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace orv::test {

using kernels::blas::Gemm;

template <class T> std::string name_of(const std::string& before, const std::string& after)
{
    return before + letter<T> + after;
}
// gemm<double>("x", "gemm"): xdgemm
template <class T> Gemm<T>* gemm(const std::string& before = "x", const std::string& after = "gemm")
{
    return kernel<Gemm<T>>("blas", name_of<T>(before, after));
}

template <class T> T scalar(double re, double im = 0)
{
    if constexpr (is_complex<T>) return {real_t<T>(re), real_t<T>(im)};
    else return T(re);
}
template <class T> bool same_bits(const T& a, const T& b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }
template <class T> bool is_nan(const T& a) { return !(a == a); }

template <class T> struct Problem {
    char transa = 'n', transb = 'n';
    i64 m = 0, n = 0, k = 0;
    T alpha = one<T>, beta = one<T>;
    i64 lda = 0, ldb = 0, ldc = 0; // 0: no padding

    bool na() const { return fold(transa) == 'N'; }
    bool nb() const { return fold(transb) == 'N'; }
    bool ca() const { return is_complex<T> && fold(transa) == 'C'; }
    bool cb() const { return is_complex<T> && fold(transb) == 'C'; }
    i64 rows_a() const { return na() ? m : k; }
    i64 rows_b() const { return nb() ? k : n; }

    // The padding of each operand, in elements.
    Problem padded(i64 a, i64 b, i64 c) const
    {
        Problem p = *this;
        p.lda = max(rows_a(), 1) + a, p.ldb = max(rows_b(), 1) + b, p.ldc = max(m, 1) + c;
        return p;
    }
};

template <class T> std::string repro(const Problem<T>& p)
{
    Line text = line<T>("gemm", {p.transa, p.transb});
    text.with("m", p.m).with("n", p.n).with("k", p.k).with("alpha", p.alpha).with("lda", p.lda).with("ldb", p.ldb);
    return text.with("beta", p.beta).with("ldc", p.ldc).text();
}

// Where operands touch the guard pages, and how many elements they are moved away from them.
struct Place {
    Edge edge = Edge::end;
    std::size_t shift_a = 0, shift_b = 0, shift_c = 0;
};

// Operands of a problem. Padding of A and B holds NaN, padding of C a NaN that must not change.
template <class T> class Operands {
    static std::size_t extent(i64 rows, i64 columns, i64 ld)
    {
        return rows <= 0 || columns <= 0 ? 0 : (columns - 1) * ld + rows;
    }
    static void fill(Guarded<T>& x, i64 rows, i64 columns, i64 ld, Random& random)
    {
        for (i64 j = 0; j < columns; ++j)
            for (i64 i = 0; i < rows; ++i) x[i + j * ld] = random.value<T>();
    }

public:
    Problem<T> p;
    Guarded<T> a, b, c;
    std::vector<T> before; // C as it was

    explicit Operands(const Problem<T>& problem, Place place = {}, std::uint64_t stream = 0)
        : p(problem.ldc == 0 ? problem.padded(0, 0, 0) : problem),
          a(extent(p.rows_a(), p.na() ? p.k : p.m, p.lda), place.edge, place.shift_a),
          b(extent(p.rows_b(), p.nb() ? p.n : p.k, p.ldb), place.edge, place.shift_b),
          c(extent(p.m, p.n, p.ldc), place.edge, place.shift_c)
    {
        Random random(stream);
        fill(a, p.rows_a(), p.na() ? p.k : p.m, p.lda, random);
        fill(b, p.rows_b(), p.nb() ? p.n : p.k, p.ldb, random);
        fill(c, p.m, p.n, p.ldc, random);
        remember();
    }

    void remember() { before.assign(c.begin(), c.end()); }
    void restore() { std::copy(before.begin(), before.end(), c.begin()); }

    // Elements of op(A), op(B), C.
    T left(i64 i, i64 q) const
    {
        const T x = p.na() ? a[i + q * p.lda] : a[q + i * p.lda];
        return p.ca() ? conj(x) : x;
    }
    T right(i64 q, i64 j) const
    {
        const T x = p.nb() ? b[q + j * p.ldb] : b[j + q * p.ldb];
        return p.cb() ? conj(x) : x;
    }
    T& at(i64 i, i64 j) const { return c[i + j * p.ldc]; }
    T was(i64 i, i64 j) const { return before[i + j * p.ldc]; }

    void call(Gemm<T>* routine) const
    {
        routine(&p.transa, &p.transb, &p.m, &p.n, &p.k, &p.alpha, a.data(), &p.lda, b.data(), &p.ldb, &p.beta, c.data(),
                &p.ldc);
    }
};

using wide = cpx<long double>;
template <class T> wide widen(T x)
{
    if constexpr (is_complex<T>) return {x.re, x.im};
    else return {x, 0};
}
inline wide magnitude(wide x) { return {std::fabs(x.re), std::fabs(x.im)}; }
// The product of magnitudes, which bounds all products of parts.
inline wide bound_product(wide a, wide b) { return {a.re * b.re + a.im * b.im, a.re * b.im + a.im * b.re}; }

// Error of entry (i, j) as a multiple of the bound. Roundings: k products and sums, the sums of parts, the products
// with alpha and beta, and one addition to C for each block of the depth, of which there are at most k/128 + 1.
template <class T> long double excess(const Operands<T>& x, i64 i, i64 j, const T& computed)
{
    const Problem<T>& p = x.p;
    wide sum = {}, sum_bound = {};
    if (p.alpha != zero<T>) {
        for (i64 q = 0; q < p.k; ++q) {
            const wide l = widen(x.left(i, q)), r = widen(x.right(q, j));
            if constexpr (is_complex<T>) {
                sum += l * r;
                sum_bound += bound_product(magnitude(l), magnitude(r));
            } else sum.re += l.re * r.re, sum_bound.re += std::fabs(l.re * r.re);
        }
        sum = widen(p.alpha) * sum;
        sum_bound = bound_product(magnitude(widen(p.alpha)), sum_bound);
    }
    if (p.beta != zero<T>) {
        const wide c = widen(x.was(i, j));
        sum += widen(p.beta) * c;
        sum_bound += bound_product(magnitude(widen(p.beta)), magnitude(c));
    }
    const long double roundings = p.k + p.k / 128 + (is_complex<T> ? 9 : 4);
    if constexpr (is_complex<T>)
        return excess(computed, ComplexEntry{{sum.re, sum_bound.re, roundings}, {sum.im, sum_bound.im, roundings}});
    else return excess(computed, Entry{sum.re, sum_bound.re, roundings});
}

// C holds the product within the bound, and its padding what it held. One line tells the first entry that is wrong.
template <class T> void expect_product(const Operands<T>& x)
{
    const Problem<T>& p = x.p;
    if (p.m <= 0) return;
    for (i64 j = 0; j < p.n; ++j) {
        for (i64 i = 0; i < p.m; ++i) {
            const long double e = excess(x, i, j, x.at(i, j));
            if (!(e <= 1)) {
                ADD_FAILURE() << repro(p) << ": entry (" << i << ',' << j << ") is " << double(e) << " bounds off";
                return;
            }
        }
        for (i64 i = p.m; i < p.ldc && j + 1 < p.n; ++i)
            if (!same_bits(x.at(i, j), x.was(i, j))) {
                ADD_FAILURE() << repro(p) << ": padding (" << i << ',' << j << ") was written";
                return;
            }
    }
}

// C holds these bits, and its padding what it held; element(i, j) recomputes.
template <class T, class Element> void expect_bits(const Operands<T>& x, const Element& element)
{
    if (x.p.m <= 0) return;
    for (i64 j = 0; j < x.p.n; ++j)
        for (i64 i = 0; i < (j + 1 < x.p.n ? x.p.ldc : x.p.m); ++i)
            if (!same_bits(x.at(i, j), i < x.p.m ? element(i, j) : x.was(i, j))) {
                ADD_FAILURE() << repro(x.p) << ": entry (" << i << ',' << j << ") has other bits";
                return;
            }
}

// Every entry of C is NaN, or has the bits that it had.
template <class T> void expect_all_nan(const Operands<T>& x)
{
    for (i64 j = 0; j < x.p.n; ++j)
        for (i64 i = 0; i < x.p.m; ++i) ASSERT_TRUE(is_nan(x.at(i, j))) << repro(x.p) << ": (" << i << ',' << j << ')';
}
template <class T> void expect_unchanged(const Operands<T>& x)
{
    expect_bits(x, [&](i64 i, i64 j) { return x.was(i, j); });
}

// The orders of operation, in scalar code. A sum over steps [p, end) of f*op(A) times op(B): parts of complex products
// are summed apart.
template <class T> T chain(const Operands<T>& x, i64 i, i64 j, i64 p, i64 end, T f)
{
    if constexpr (is_complex<T>) {
        real_t<T> rr = 0, ii = 0, ir = 0, ri = 0;
        for (; p < end; ++p) {
            const T l = f == one<T> ? x.left(i, p) : f * x.left(i, p), r = x.right(p, j);
            rr += l.re * r.re, ii += l.im * r.im, ir += l.im * r.re, ri += l.re * r.im;
        }
        return {rr - ii, ir + ri};
    } else {
        T sum = 0;
        for (; p < end; ++p) sum += f * x.left(i, p) * x.right(p, j);
        return sum;
    }
}
template <class T> T scaled(T beta, T c) { return beta == one<T> ? c : beta == zero<T> ? zero<T> : beta * c; }

// The plain path: one sum, times alpha, added once.
template <class T> T plain_entry(const Operands<T>& x, i64 i, i64 j)
{
    const T c = scaled(x.p.beta, x.was(i, j));
    return x.p.k <= 0 || x.p.alpha == zero<T> ? c : c + x.p.alpha * chain(x, i, j, 0, x.p.k, one<T>);
}
// The blocked path: alpha is in packed A, one addition to C for each block of the depth.
template <class T> T blocked_entry(const Operands<T>& x, i64 i, i64 j, i64 kb)
{
    T c = scaled(x.p.beta, x.was(i, j));
    for (i64 p = 0; p < x.p.k; p += kb) c += chain(x, i, j, p, min(p + kb, x.p.k), x.p.alpha);
    return c;
}

inline constexpr char all_letters[] = "nNtTcC?x"; // the last two are unknown: not N, so T

// Calls visit(T{}) for the four element types.
template <class Visit> void for_all_types(const Visit& visit)
{
    visit(float{}), visit(double{}), visit(cpx<float>{}), visit(cpx<double>{});
}

} // namespace orv::test
