// Compressed rows without gaps, as conversions, sums and products take and make them, and matrices that try them.
#pragma once

#include "frame/kernels/spblas.h"
#include "tests/spblas/matrix.h"
#include "tests/support/probe.h"

namespace orv::test {

namespace sparse = kernels::sparse;

template <class T> using Entries = std::vector<Coordinate<T>>;

template <class Check> void each_type(const Check& check)
{
    for (const char type : {'s', 'd', 'c', 'z'}) each_width(type, check);
}

// Runs check<T, Int>(base of compressed rows, base of the other side) for all types and widths.
template <class Check> void each_base(const Check& check)
{
    each_type([&]<class T, class Int> {
        for (const Int csr : {0, 1})
            for (const Int other : {0, 1}) check.template operator()<T, Int>(csr, other);
    });
}

// Whole numbers: so sums and products have no roundings, and results can be told exactly.
template <class T> T whole_number(Random& random)
{
    const auto part = [&] { return static_cast<real_t<T>>(random.integer(-3, 3)); };
    if constexpr (is_complex<T>) {
        const auto re = part(), im = part();
        return {re, im};
    } else return part();
}

// By rows, but in no order within; with empty rows and columns, zeros that are stored, and several entries of one
// place.
template <class T> Coordinates<T> disorder(i64 m, i64 k, std::uint64_t seed = 0)
{
    Coordinates<T> a{"disorder", m, k, {}};
    Random random(seed + static_cast<std::uint64_t>(m * 100 + k));
    for (i64 i = 0; i < m; ++i) {
        if (i % 4 == 1) continue;
        for (i64 e = k > 0 ? random.integer(0, i % 7 == 3 ? 90 : 6) : 0; e > 0; --e) {
            const i64 j = random.integer(0, k - 1);
            if (j % 5 == 2) continue;
            a.entries.push_back({i, j, whole_number<T>(random)});
            if (random.integer(0, 5) == 0) a.entries.push_back({i, j, whole_number<T>(random)});
        }
    }
    return a;
}
constexpr i64 orders[] = {0, 1, 2, 5, 16, 41};

template <class T> Entries<T> sorted(Entries<T> entries)
{
    std::stable_sort(entries.begin(), entries.end(),
                     [](const auto& a, const auto& b) { return std::pair(a.i, a.j) < std::pair(b.i, b.j); });
    return entries;
}
template <class T> Entries<T> transposed(Entries<T> entries)
{
    for (auto& entry : entries) std::swap(entry.i, entry.j);
    return sorted(entries);
}
template <class T> Entries<T> without_zeros(Entries<T> entries)
{
    std::erase_if(entries, [](const auto& entry) { return entry.a == zero<T>; });
    return entries;
}
// One entry for each place, by rows: the sum of what is there. Sums that are zero stay.
template <class T> Entries<T> added_up(const Entries<T>& entries)
{
    Entries<T> sums;
    for (const auto& entry : sorted(entries))
        if (!sums.empty() && sums.back().i == entry.i && sums.back().j == entry.j) sums.back().a += entry.a;
        else sums.push_back(entry);
    return sums;
}

// Whether every byte is as the arrays have them before anything is written.
template <class E> bool untouched(const Guarded<E>& array, std::size_t from = 0)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(array.data() + from);
    return std::all_of(bytes, bytes + (array.size() - from) * sizeof(E), [](unsigned char b) { return b == 0xff; });
}

// Room for the result, or a matrix.
template <class T, class Int> struct Csr {
    Guarded<T> val;
    Guarded<Int> col, start;

    Csr(i64 rows, i64 room)
        : val(static_cast<std::size_t>(room)), col(val.size()), start(static_cast<std::size_t>(rows + 1))
    {
    }
    Csr(i64 rows, const Entries<T>& entries, Int base) : Csr(rows, static_cast<i64>(entries.size()))
    {
        std::fill(start.begin(), start.end(), Int{0});
        for (std::size_t e = 0; e < entries.size(); ++e) {
            val[e] = entries[e].a, col[e] = static_cast<Int>(entries[e].j) + base;
            ++start[static_cast<std::size_t>(entries[e].i + 1)];
        }
        start[0] = base;
        for (std::size_t i = 1; i < start.size(); ++i) start[i] += start[i - 1];
    }
    Entries<T> entries(Int base, bool values = true) const
    {
        Entries<T> all;
        for (std::size_t i = 0; i + 1 < start.size(); ++i)
            for (Int p = start[i] - base; p < start[i + 1] - base; ++p) {
                const auto e = static_cast<std::size_t>(p);
                all.push_back({static_cast<i64>(i), i64{col[e]} - base, values ? val[e] : T{}});
            }
        return all;
    }
    bool is_untouched() const { return untouched(val) && untouched(col) && untouched(start); }
};
template <class T> Entries<T> pattern(Entries<T> entries)
{
    for (auto& entry : entries) entry.a = T{};
    return entries;
}
// Of results for rows first to last, counted from 1, with pointers and columns from 1, too.
template <class T> Entries<T> in_rows(Entries<T> entries, i64 first, i64 last) // counted from 1
{
    std::erase_if(entries, [=](const auto& e) { return e.i < first - 1 || e.i >= last; });
    return entries;
}
template <class T, class Int> Entries<T> rows_of(const Csr<T, Int>& c, Int first, Int last)
{
    Entries<T> all;
    for (Int i = first; i <= last; ++i)
        for (Int p = c.start[static_cast<std::size_t>(i - 1)]; p < c.start[static_cast<std::size_t>(i)]; ++p)
            all.push_back({i - 1, c.col[static_cast<std::size_t>(p - 1)] - 1, c.val[static_cast<std::size_t>(p - 1)]});
    return all;
}
template <class Int> bool untouched_but(const Guarded<Int>& start, Int first, Int last) // rows, from 1
{
    for (std::size_t i = 0; i < start.size(); ++i)
        if ((static_cast<Int>(i) < first - 1 || static_cast<Int>(i) > last) && start[i] != Int{-1}) return false;
    return true;
}

template <class T> i64 count(const Entries<T>& entries) { return static_cast<i64>(entries.size()); }

} // namespace orv::test
