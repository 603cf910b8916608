// Sparse products and solves, in cache and beyond. Each library makes the matrix from the same pattern at its first
// call and keeps it, in its own arrays if it has such.
#include "bench/case.h"
#include "bench/sparse_patterns.h"

namespace orv::bench {
namespace {

struct Kind {
    Pattern pattern;
    const char* name;
    int small, large;
};
constexpr Kind kinds[] = {{Pattern::grid5, "grid5", 60, 1000},       {Pattern::grid7, "grid7", 15, 100},
                          {Pattern::random, "random", 2000, 200000}, {Pattern::power, "power", 2000, 200000},
                          {Pattern::band, "band", 2000, 200000},     {Pattern::block, "block", 2000, 200000}};

// Close enough for rates: rows of the larger matrices are like those of the smaller.
struct Counts {
    int n;
    double entries, lower;
    Counts(const Kind& kind, int size)
    {
        const Rows small = rows_of(kind.pattern, kind.small);
        const double side = size;
        n = kind.pattern == Pattern::grid5 ? size * size : kind.pattern == Pattern::grid7 ? size * size * size : size;
        entries = kind.pattern == Pattern::grid5   ? 5 * side * side - 4 * side
                  : kind.pattern == Pattern::grid7 ? 7 * side * side * side - 6 * side * side
                                                   : static_cast<double>(small.entries()) / small.n * n;
        lower = (entries + n) / 2;
    }
};

Case start(const char* routine, const std::string& variant, const Kind& kind, int size, double entries, int columns)
{
    Case c{std::string("dsparse_") + routine, variant, size, 'd'};
    c.quick = size == kind.small;
    c.integer(static_cast<int>(kind.pattern)).integer(size);
    c.work = 2 * entries * columns;
    c.unit = "GFLOP/s";
    c.roundings = 2100; // of the longest row
    c.magnitude = 2;
    return c;
}

} // namespace

std::vector<Case> sparse_cases()
{
    std::vector<Case> cases;
    for (const Kind& kind : kinds)
        for (const int size : {kind.small, kind.large}) {
            const Counts rows(kind, size);
            const double entries = rows.entries;
            const bool large = size == kind.large;
            const auto vectors = [&](const char* routine, double stored, double work, int threads = 1) {
                Case c = start(routine, kind.name + std::string(threads > 1 ? " threads" : ""), kind, size, work, 1);
                if (large) {
                    constexpr double entry = 12, row = 4; // bytes
                    c.kept(static_cast<i64>((entry * stored + row * rows.n) / 8)).limit = Limit::kept;
                }
                c.operand(rows.n, Use::read).operand(rows.n, Use::written).threads = threads;
                c.quick = !large || (threads > 1 && kind.pattern == Pattern::grid5);
                cases.push_back(c);
            };
            const bool symmetric =
                kind.pattern == Pattern::grid5 || kind.pattern == Pattern::grid7 || kind.pattern == Pattern::band;
            const auto products = [&](int threads) {
                vectors("mv", entries, entries, threads);
                if (symmetric) vectors("symv", rows.lower, entries, threads); // as work, those of the full matrix
            };
            products(1);
            vectors("sv", rows.lower, rows.lower);
            for (const int columns : {8, 16, 24, 64}) {
                if (large && columns > 16) continue;
                cases.push_back(
                    start("mm", kind.name + (" columns=" + std::to_string(columns)), kind, size, entries, columns));
                cases.back()
                    .integer(columns)
                    .operand(i64{rows.n} * columns, Use::read)
                    .operand(i64{rows.n} * columns, Use::written);
            }
            if (large) {
                Case shared = cases[cases.size() - 2]; // eight columns
                shared.threads = 2, shared.variant += " threads";
                cases.push_back(shared);
                products(2);
            }
        }
    return cases;
}

} // namespace orv::bench
