// Sparse matrices for tests: entries in coordinates, what they mean by the letters of a name, and the storage formats
// in arrays that end at unreadable pages.
#pragma once

#include "frame/kernels/spblas.h"
#include "tests/spblas/name.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/quad.h"
#include "tests/support/random.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <utility>
#include <vector>

namespace orv::test {

template <class T> struct Coordinate {
    i64 i, j;
    T a;
    friend bool operator==(const Coordinate&, const Coordinate&) = default;
};

// m rows, k columns; entries sorted by row, then by column.
template <class T> struct Coordinates {
    std::string pattern;
    i64 m, k;
    std::vector<Coordinate<T>> entries;
};

template <class T> T conjugated(T a)
{
    if constexpr (is_complex<T>) return {a.re, -a.im};
    else return a;
}
template <class T> T real_part(T a)
{
    if constexpr (is_complex<T>) return {a.re, 0};
    else return a;
}

// The matrix op(A) that a name says: entries that don't count are gone, mirrored and unit ones are there.
template <class T> std::vector<Coordinate<T>> meant(const SparseName& name, const Coordinates<T>& a)
{
    std::vector<Coordinate<T>> all;
    const bool mirrors = name.kind == 's' || name.kind == 'h' || name.kind == 'a';
    for (const auto& [i, j, value] : a.entries) {
        if (!name.keeps(i, j)) continue;
        all.push_back({i, j, value});
        if (!mirrors || i == j) continue;
        const T other = name.kind == 'h' ? conjugated(value) : name.kind == 'a' ? -value : value;
        all.push_back({j, i, other});
    }
    if (name.unit())
        for (i64 i = 0; i < std::min(a.m, a.k); ++i) all.push_back({i, i, one<T>});
    for (auto& entry : all) {
        if (name.transposes()) std::swap(entry.i, entry.j);
        if (name.conjugates()) entry.a = conjugated(entry.a);
    }
    return all;
}

// A number in wide arithmetic with the magnitude of all that went in.
struct WideSum {
    quad re = 0, im = 0, magnitude = 0;
    long double terms = 0;

    template <class T> static std::pair<quad, quad> parts(T a)
    {
        if constexpr (is_complex<T>) return {a.re, a.im};
        else return {a, 0};
    }
    template <class... T> void add(T... factors)
    {
        quad r = 1, i = 0, size = 1;
        const auto multiply = [&](auto factor) {
            const auto [fr, fi] = parts(factor);
            std::tie(r, i) = std::pair(r * fr - i * fi, r * fi + i * fr);
            size *= test::magnitude(fr) + test::magnitude(fi);
        };
        (multiply(factors), ...);
        re += r, im += i, magnitude += size, terms += 1;
    }
    template <class T> WideSum times(T factor) const
    {
        const auto [fr, fi] = parts(factor);
        return {re * fr - im * fi, re * fi + im * fr, magnitude * (test::magnitude(fr) + test::magnitude(fi)), terms};
    }
    // The error of a computed number as a multiple of what its roundings may make; at most 1 passes, NaN does not.
    template <class T> long double excess(T computed) const
    {
        const auto [r, i] = parts(computed);
        const long double error = std::max(test::magnitude(r - re), test::magnitude(i - im));
        if (!(error == error)) return error;
        const long double unit = std::numeric_limits<real_t<T>>::epsilon() / 2.0L, roundings = 2 * terms + 8;
        const long double allowed = roundings * unit / (1 - roundings * unit) * static_cast<long double>(magnitude) +
                                    roundings * std::numeric_limits<real_t<T>>::denorm_min();
        return error == 0 ? 0 : error / allowed;
    }
};

// The larger error of two; once it is not a number it stays that.
inline void keep_worst(long double& worst, long double error)
{
    if (worst == worst && !(error <= worst)) worst = error;
}

// ---- Patterns

template <class T> Coordinates<T> from_rows(std::string pattern, i64 k, const std::vector<std::vector<i64>>& rows)
{
    Coordinates<T> a{std::move(pattern), static_cast<i64>(rows.size()), k, {}};
    Random random(rows.size() * 31 + static_cast<std::size_t>(k));
    for (i64 i = 0; i < a.m; ++i)
        for (const i64 j : rows[static_cast<std::size_t>(i)]) {
            T value = random.value<T>();
            if (i == j) value = real_part(value) + one<T> + one<T>; // solvable, and Hermitian where that is asked
            a.entries.push_back({i, j, value});
        }
    return a;
}

// Rows of the given lengths with columns drawn at random; of square matrices every row has its diagonal, if asked.
template <class T>
Coordinates<T> drawn(const std::string& pattern, i64 k, const std::vector<i64>& lengths, bool with_diagonal = false)
{
    Random random(static_cast<std::size_t>(k) + lengths.size());
    std::vector<std::vector<i64>> rows;
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        std::vector<i64> columns;
        std::vector<bool> taken(static_cast<std::size_t>(k));
        const auto take = [&](i64 j) {
            if (!taken[static_cast<std::size_t>(j)]) columns.push_back(j);
            taken[static_cast<std::size_t>(j)] = true;
        };
        if (with_diagonal) take(static_cast<i64>(i));
        while (static_cast<i64>(columns.size()) < std::min(lengths[i], k)) take(random.integer(0, k - 1));
        std::sort(columns.begin(), columns.end());
        rows.push_back(columns);
    }
    return from_rows<T>(pattern, k, rows);
}

// Square ones for every kind, with rows on both sides of the steps of the loops.
template <class T> std::vector<Coordinates<T>> square_patterns(bool with_diagonal)
{
    const bool d = with_diagonal;
    std::vector<i64> mixed{0, 3, 1, 0, 9, 8, 7, 16, 17, 2, 5, 70, 63, 64, 65, 4}, full(9, 9), long_rows;
    while (mixed.size() < 71) mixed.push_back(static_cast<i64>(mixed.size() * 7 % 12));
    for (i64 i = 0; i < 150; ++i) long_rows.push_back(i % 3 == 0 ? 150 - i % 20 : i % 7);
    return {drawn<T>("no row", 0, {}, d), drawn<T>("one entry", 1, {1}, d), drawn<T>("full", 9, full, d),
            drawn<T>("mixed rows", 71, mixed, d), drawn<T>("long rows", 150, long_rows, d)};
}
// Further ones for general matrices.
template <class T> std::vector<Coordinates<T>> rectangular_patterns()
{
    return {drawn<T>("one row", 40, {33}), drawn<T>("one column", 1, {1, 0, 1, 1, 1, 0, 1}),
            drawn<T>("very long rows", 1700, {700, 3, 1699, 64, 128, 575, 513, 511}),
            drawn<T>("tall", 5, {1, 2, 5, 0, 0, 3, 4, 5, 5, 5, 1, 1}), drawn<T>("no column", 0, {0, 0, 0})};
}
template <class T> std::vector<Coordinates<T>> patterns(const SparseName& name, bool with_diagonal = false)
{
    auto all = square_patterns<T>(with_diagonal);
    if (name.kind == 'g')
        for (auto& a : rectangular_patterns<T>()) all.push_back(std::move(a));
    return all;
}

// ---- Storage

// Compressed rows with gaps between them, whose columns and values would be seen: far away, and not a number.
template <class T, class Int> struct CsrArrays {
    Guarded<T> val;
    Guarded<Int> col, begin, end;

    CsrArrays(const Coordinates<T>& a, int base, Int first_pointer)
        : val(size(a)), col(size(a)), begin(static_cast<std::size_t>(a.m)), end(static_cast<std::size_t>(a.m))
    {
        std::fill(col.begin(), col.end(), std::numeric_limits<Int>::max() / 2);
        std::size_t at = 0, next = 0;
        for (i64 i = 0; i < a.m; ++i) {
            if (i > 0) at += gap(i);
            begin[static_cast<std::size_t>(i)] = first_pointer + static_cast<Int>(at);
            for (; next < a.entries.size() && a.entries[next].i == i; ++next, ++at)
                val[at] = a.entries[next].a, col[at] = static_cast<Int>(a.entries[next].j + base);
            end[static_cast<std::size_t>(i)] = first_pointer + static_cast<Int>(at);
        }
    }

private:
    static std::size_t gap(i64 i) { return i % 3 == 1 ? 2 : 0; }
    static std::size_t size(const Coordinates<T>& a)
    {
        std::size_t n = a.entries.size();
        for (i64 i = 1; i < a.m; ++i) n += gap(i);
        return n;
    }
};

// Adds up parts of a product by split_par: parts - 1 vectors of n elements in work, and y.
template <class T, class Int> void add_parts(Int parts, i64 n, const std::vector<T>& work, T* y)
{
    const Int first = 1, last = static_cast<Int>(n);
    auto* const add = kernel<kernels::sparse::SplitPar<T, Int>>(module_of<Int>, std::string(1, letter<T>), "split_par");
    add(&first, &last, &parts, &last, work.data(), y);
}

// alpha and beta
template <class T> std::vector<std::pair<T, T>> factors()
{
    T a = T{}, b = T{};
    if constexpr (is_complex<T>) a = {0.75f, -0.5f}, b = {-0.25f, 1.5f};
    else a = T(0.75), b = T(-1.5);
    return {{a, zero<T>}, {a, b}, {one<T>, one<T>}, {zero<T>, a}};
}
template <class T> T not_a_number()
{
    const auto nan = std::numeric_limits<real_t<T>>::quiet_NaN();
    if constexpr (is_complex<T>) return {nan, nan};
    else return nan;
}
// The matrix with values that are not numbers wherever they do not count.
template <class T> Coordinates<T> with_nan_where_nothing_counts(const SparseName& name, Coordinates<T> a)
{
    for (auto& entry : a.entries)
        if (!name.keeps(entry.i, entry.j)) entry.a = not_a_number<T>();
    return a;
}
template <class T> bool same_bits(const T* a, const T* b, i64 n)
{
    return n <= 0 || std::memcmp(a, b, static_cast<std::size_t>(n) * sizeof(T)) == 0;
}

} // namespace orv::test
