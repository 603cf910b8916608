// How a product of matrices is cut in parts: by rows and columns of the result.
//
// Every edge of a part but the last is a multiple of the granules of all kernels, and no part is so small that a kernel
// would take another way than for the whole: each element of the result goes through the same operations whoever
// computes it.
#pragma once

#include "core/blas/cut.h"
#include "core/team/team.h"

namespace orv::core {

inline constexpr i64 tile = 16;
// A part has at least this many rows and columns, or the whole is not cut that way: panels stay whole.
inline constexpr i64 least_side = 32;

// Multiplications worth a thread, 0.2 ms of one core: waking a team that has gone to sleep can cost as much.
template <class T>
inline constexpr i64 product_grain = 16'000'000 / static_cast<i64>(sizeof(real_t<T>)) / (is_complex<T> ? 4 : 1);

template <class T> bool is_worth_sharing(double multiplications)
{
    return eagerly(multiplications) >= 2.0 * product_grain<T>;
}

// Threads for so many multiplications, cut in `most` parts at most.
template <class T> int threads_for_products(double multiplications, i64 most)
{
    return threads_for(multiplications, product_grain<T>, most);
}

inline double volume(i64 m, i64 n, i64 k)
{
    return static_cast<double>(m) * static_cast<double>(n) * static_cast<double>(k);
}

// A cut of m by n elements into a part for each of some threads, rows by columns. Where that takes fewer of them, the
// largest part, which all wait for, is smaller yet than where all have one: 7 would cut 100 by 100 in stripes of a tile.
struct Grid {
    int rows = 1, columns = 1;

    Grid(i64 m, i64 n, int threads)
    {
        double best = time(m, n);
        for (int r = 1; r <= threads && r <= most_parts(m); ++r) {
            const int c = static_cast<int>(min(threads / r, most_parts(n)));
            const double t = time(longest_part(m, r), longest_part(n, c));
            if (t < best) best = t, rows = r, columns = c;
        }
    }
    int parts() const { return rows * columns; }

    static i64 most_parts(i64 side) { return max(1, side / least_side); }

private:
    static i64 longest_part(i64 side, int parts) { return even_part(side, parts, parts - 1, tile).size; }
    // Of a part, in multiplications a step of depth: to pack or to read an element of A or B counts as 8 of them.
    static double time(i64 m, i64 n)
    {
        return static_cast<double>(m) * static_cast<double>(n) +
               8.0 * (static_cast<double>(m) + static_cast<double>(n));
    }
};

} // namespace orv::core
