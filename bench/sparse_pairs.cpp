// Conversions, sums and products of sparse matrices, in cache and beyond; the larger ones on two threads, too.
#include "bench/case.h"
#include "bench/sparse_patterns.h"

namespace orv::bench {
namespace {

// Products of the large random ones would take a gigabyte, so these are smaller.
struct Kind {
    Pattern pattern;
    const char* name;
    int small, large, large_product;
};
constexpr Kind kinds[] = {
    {Pattern::grid5, "grid5", 60, 1000, 1000},        {Pattern::grid7, "grid7", 15, 100, 100},
    {Pattern::random, "random", 2000, 200000, 20000}, {Pattern::power, "power", 2000, 200000, 20000},
    {Pattern::band, "band", 2000, 200000, 200000},    {Pattern::block, "block", 2000, 200000, 200000}};

// Rows and, a row, entries and multiplications of A*A: of the small matrix, and close enough for rates of the large.
struct Counts {
    double entries, multiplications;
    explicit Counts(const Rows& a) : entries(a.entries()), multiplications(0)
    {
        for (const int j : a.col) multiplications += a.begin[Rows::at(j) + 1] - a.begin[Rows::at(j)];
        entries /= a.n, multiplications /= a.n;
    }
};

double rows_in(const Kind& kind, int size)
{
    const double side = size;
    return kind.pattern == Pattern::grid5 ? side * side : kind.pattern == Pattern::grid7 ? side * side * side : side;
}

Case start(const char* routine, const Kind& kind, int size, double work, const char* unit)
{
    Case c{std::string("dsparse_") + routine, kind.name, size, 'd'};
    c.quick = size == kind.small;
    c.integer(static_cast<int>(kind.pattern)).integer(size).operand(2, Use::written);
    c.work = work, c.unit = unit;
    c.roundings = 2100; // of the longest row
    c.magnitude = 2;
    return c;
}

} // namespace

std::vector<Case> sparse_pair_cases()
{
    std::vector<Case> cases;
    constexpr double entry = sizeof(double) + sizeof(int), place = entry + sizeof(int);
    for (const Kind& kind : kinds) {
        const Counts each(rows_of(kind.pattern, kind.small));
        const auto both = [&](const char* routine, int large, double work, const char* unit) {
            for (const int size : {kind.small, large})
                cases.push_back(start(routine, kind, size, work * rows_in(kind, size), unit));
        };
        const auto threaded = [&] {
            Case shared = cases.back();
            shared.threads = 2, shared.variant += " threads";
            cases.push_back(shared);
        };
        both("csrcsc", kind.large, 2 * entry * each.entries, "GB/s");
        both("coocsr", kind.large, (place + entry) * each.entries, "GB/s");
        both("add", kind.large, 4 * entry * each.entries, "GB/s");
        threaded();
        both("multiply", kind.large_product, 2 * each.multiplications, "GFLOP/s");
        threaded();
    }
    return cases;
}

} // namespace orv::bench
