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

template <class T> bool is_worth_sharing(double multiplications) { return multiplications >= 2.0 * product_grain<T>; }

// Threads for so many multiplications, cut in `most` parts at most.
template <class T> int threads_for_products(double multiplications, i64 most)
{
    if (!is_worth_sharing<T>(multiplications)) return 1;
    const i64 work = static_cast<i64>(multiplications < 1e18 ? multiplications : 1e18);
    return static_cast<int>(max(1, min(most, threads_for(work, product_grain<T>))));
}

inline double volume(i64 m, i64 n, i64 k)
{
    return static_cast<double>(m) * static_cast<double>(n) * static_cast<double>(k);
}

// A cut of m by n elements into one part a thread: rows by columns, the parts as square as may be, which reads the
// least.
struct Grid {
    int rows = 1, columns = 1;

    Grid(i64 m, i64 n, int parts)
    {
        double best = 0;
        for (int r = 1; r <= parts; ++r) {
            const double edges = static_cast<double>(m) / r + static_cast<double>(n) * r / parts;
            if (parts % r != 0 || (best != 0 && edges >= best)) continue;
            best = edges, rows = r, columns = parts / r;
        }
    }
};

} // namespace orv::core
