// The matrices that bench/sparse.cpp times products and solves with, and the routines that do so:
//
//   dsparse_mv_(pattern, size, x, y)            y := A*x
//   dsparse_symv_(pattern, size, x, y)          the same with the lower triangle of a symmetric A
//   dsparse_sv_(pattern, size, x, y)            y := L^-1*x, L the lower triangle
//   dsparse_mm_(pattern, size, columns, x, y)   Y := A*X, both by rows
//
// Whoever includes this defines Matrix, made once from compressed rows and kept.
#pragma once

#include <algorithm>
#include <map>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

namespace orv::bench {

enum class Pattern : int { grid5, grid7, random, power, band, block };

// Compressed rows, sorted, indices from 0; square.
struct Rows {
    int n = 0;
    std::vector<int> begin{0}, col;
    std::vector<double> val;

    int entries() const { return static_cast<int>(col.size()); }
    Rows lower() const
    {
        Rows half;
        half.n = n;
        for (int i = 0; i < n; ++i) {
            for (int e = begin[at(i)]; e < begin[at(i) + 1]; ++e)
                if (col[at(e)] <= i) half.col.push_back(col[at(e)]), half.val.push_back(val[at(e)]);
            half.begin.push_back(half.entries());
        }
        return half;
    }
    static std::size_t at(int i) { return static_cast<std::size_t>(i); }
};

// size: points along a side of a grid, else rows. Diagonals outweigh their rows, so solves neither grow nor fade.
inline Rows rows_of(Pattern pattern, int size)
{
    Rows a;
    std::mt19937 random(7);
    const auto draw = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    std::vector<int> columns;
    const auto grid = [&](int i, int dimensions) {
        for (int d = 0, step = 1; d < dimensions; ++d, step *= size) {
            const int along = i / step % size;
            if (along > 0) columns.push_back(i - step);
            if (along < size - 1) columns.push_back(i + step);
        }
    };
    const bool is_grid = pattern == Pattern::grid5 || pattern == Pattern::grid7;
    a.n = !is_grid ? size : pattern == Pattern::grid5 ? size * size : size * size * size;
    for (int i = 0; i < a.n; ++i) {
        columns.assign(1, i);
        switch (pattern) {
        case Pattern::grid5:
        case Pattern::grid7:
            grid(i, pattern == Pattern::grid5 ? 2 : 3);
            break;
        case Pattern::random:
            for (int e = 0; e < 20; ++e) columns.push_back(draw(a.n));
            break;
        case Pattern::power: // one row in a thousand has some thousand entries
            for (int e = 0, length = std::min(2 + 2000 / (1 + draw(1000)), a.n); e < length; ++e)
                columns.push_back(draw(a.n));
            break;
        case Pattern::band:
            for (int j = std::max(0, i - 10); j <= std::min(a.n - 1, i + 10); ++j) columns.push_back(j);
            break;
        default: // blocks of 8 by 8, three a row
            for (int b : {i / 8, (i / 8 * 7 + 3) % (a.n / 8), (i / 8 * 5 + 1) % (a.n / 8)})
                for (int j = 0; j < 8; ++j) columns.push_back(8 * b + j);
        }
        std::sort(columns.begin(), columns.end());
        columns.erase(std::unique(columns.begin(), columns.end()), columns.end());
        for (const int j : columns) {
            a.col.push_back(j);
            a.val.push_back(j == i ? 1.0 : 0.5 / static_cast<double>(columns.size()));
        }
        a.begin.push_back(a.entries());
    }
    return a;
}

struct Matrix; // Matrix(Rows, bool symmetric, bool triangular), mv(x, y), mm(columns, x, y), sv(x, y)

enum class Task { general, symmetric, solve };

template <class Kept> const Kept& kept(int pattern, int size, Task task)
{
    static std::map<std::tuple<int, int, Task>, Kept> all;
    static std::tuple<int, int, Task> last_key;
    static const Kept* last = nullptr;
    const std::tuple key{pattern, size, task};
    if (last == nullptr || key != last_key) { // the same comes again and again
        auto found = all.find(key);
        if (found == all.end()) {
            Rows rows = rows_of(static_cast<Pattern>(pattern), size);
            if (task != Task::general) rows = rows.lower();
            found = all.try_emplace(key, std::move(rows), task == Task::symmetric, task == Task::solve).first;
        }
        last_key = key, last = &found->second;
    }
    return *last;
}

} // namespace orv::bench

#define ORV_BENCH_SPARSE_EXPORT extern "C" __attribute__((visibility("default"))) void
#define ORV_BENCH_SPARSE_ROUTINE(name, task, method)                                                                   \
    ORV_BENCH_SPARSE_EXPORT name(const int* pattern, const int* size, const double* x, double* y)                      \
    {                                                                                                                  \
        orv::bench::kept<orv::bench::Matrix>(*pattern, *size, orv::bench::Task::task).method(x, y);                    \
    }
#define ORV_BENCH_SPARSE                                                                                               \
    ORV_BENCH_SPARSE_ROUTINE(dsparse_mv_, general, mv)                                                                 \
    ORV_BENCH_SPARSE_ROUTINE(dsparse_symv_, symmetric, mv)                                                             \
    ORV_BENCH_SPARSE_ROUTINE(dsparse_sv_, solve, sv)                                                                   \
    ORV_BENCH_SPARSE_EXPORT dsparse_mm_(const int* pattern, const int* size, const int* columns, const double* x,      \
                                        double* y)                                                                     \
    {                                                                                                                  \
        orv::bench::kept<orv::bench::Matrix>(*pattern, *size, orv::bench::Task::general).mm(*columns, x, y);           \
    }
