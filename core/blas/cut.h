// How a matrix and its vectors are cut in parts.
#pragma once

#include "frame/types.h"

#include <cmath>

namespace orv::core {

// Bytes of a matrix worth a thread. Two threads that are awake gain from 4 MB on (1.1 times, 1.3 to 1.8 at 8 MB), but
// one that has to be woken costs more than reading a few of them.
inline constexpr i64 grain = i64(4) << 20;

struct Range {
    i64 begin, size;
};

// Part `index` of `parts` of 0..n-1. Its edges are multiples of the granules of all kernels, so that no part ends in
// leftovers that the whole has not.
inline constexpr i64 granule = 64;
constexpr Range even_part(i64 n, int parts, int index, i64 step = granule)
{
    const auto edge = [&](int i) { return i == parts ? n : n / step * i / parts * step; };
    return {edge(index), edge(index + 1) - edge(index)};
}

// The same of the columns of a triangle of order n: each part has as many elements, to a granule.
inline Range triangle_part(bool upper, i64 n, int parts, int index)
{
    const auto share = [&](int i) { return static_cast<i64>(static_cast<double>(n) * std::sqrt(double(i) / parts)); };
    const auto edge = [&](int i) {
        return i == parts ? n : (upper ? share(i) : n - share(parts - i)) / granule * granule;
    };
    return {edge(index), edge(index + 1) - edge(index)};
}

// So many parts have a granule of columns at least: the part of the longest columns is n/2/parts of them wide.
constexpr i64 most_triangle_parts(i64 n) { return n / (2 * granule); }

// Elements of a vector of n as a vector of the same stride.
template <class T> T* part(T* x, i64 n, i64 inc, Range r)
{
    return inc < 0 ? x + (r.begin + r.size - n) * inc : x + r.begin * inc;
}

// Columns of a triangle. With all their rows they make the end of a leading part of the triangle, in the upper one, or
// the start of a trailing part, in the lower one.
struct Columns {
    i64 count, others; // the own ones; those before or behind them
    Range rows;        // all that the columns have
    i64 right, down;   // where their part of the matrix starts

    Columns(bool upper, i64 n, int parts, int index)
    {
        const Range r = triangle_part(upper, n, parts, index);
        const i64 end = r.begin + r.size;
        count = r.size;
        others = upper ? r.begin : n - end;
        rows = upper ? Range{0, end} : Range{r.begin, n - r.begin};
        right = r.begin;
        down = upper ? 0 : r.begin;
    }
};

} // namespace orv::core
