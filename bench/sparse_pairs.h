// Conversions, sums and products of the matrices of bench/sparse_patterns.h, with memory for the result taken and given
// back in each call:
//
//   dsparse_csrcsc_(pattern, size, y)     A from compressed rows to compressed columns
//   dsparse_coocsr_(pattern, size, y)     A from coordinates in any order to compressed rows
//   dsparse_add_(pattern, size, y)        A + A'
//   dsparse_multiply_(pattern, size, y)   A*A
//
// y receives how many entries came out, and the sum of those of the line in the middle. Whoever includes this defines
// Pair, made once and kept.
#pragma once

#include "bench/sparse_patterns.h"

namespace orv::bench {

struct Pair; // Pair(Rows), csrcsc(y), coocsr(y), add(y), multiply(y)

// Coordinates of the entries, shuffled.
inline std::vector<std::pair<int, int>> places_of(const Rows& a, std::vector<double>& values)
{
    std::vector<std::pair<int, int>> places;
    std::vector<std::size_t> order;
    for (int i = 0; i < a.n; ++i)
        for (int e = a.begin[Rows::at(i)]; e < a.begin[Rows::at(i) + 1]; ++e)
            order.push_back(places.size()), places.emplace_back(i, a.col[Rows::at(e)]);
    std::shuffle(order.begin(), order.end(), std::mt19937(7));
    auto sorted = places;
    values.clear();
    for (std::size_t e = 0; e < order.size(); ++e) {
        sorted[e] = places[order[e]];
        values.push_back(a.val[order[e]]);
    }
    return sorted;
}

inline void tell(int entries, const double* from, const double* to, double* y)
{
    y[0] = entries, y[1] = 0;
    for (; from < to; ++from) y[1] += *from;
}

template <class Kept> const Kept& kept_pair(int pattern, int size)
{
    static std::map<std::pair<int, int>, Kept> all;
    const std::pair key{pattern, size};
    const auto found = all.find(key);
    if (found != all.end()) return found->second;
    return all.try_emplace(key, rows_of(static_cast<Pattern>(pattern), size)).first->second;
}

} // namespace orv::bench

#define ORV_BENCH_SPARSE_PAIR(name, method)                                                                            \
    ORV_BENCH_SPARSE_EXPORT name(const int* pattern, const int* size, double* y)                                       \
    {                                                                                                                  \
        orv::bench::kept_pair<orv::bench::Pair>(*pattern, *size).method(y);                                            \
    }
#define ORV_BENCH_SPARSE_PAIRS                                                                                         \
    ORV_BENCH_SPARSE_PAIR(dsparse_csrcsc_, csrcsc)                                                                     \
    ORV_BENCH_SPARSE_PAIR(dsparse_coocsr_, coocsr)                                                                     \
    ORV_BENCH_SPARSE_PAIR(dsparse_add_, add)                                                                           \
    ORV_BENCH_SPARSE_PAIR(dsparse_multiply_, multiply)
