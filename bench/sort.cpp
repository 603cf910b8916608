// Numbers in ascending order. What is sorted is a fresh copy each time, which counts for both sides.
#include "bench/case.h"

namespace orv::bench {

// The routine is that of bench/sort_orv.cpp and bench/sort_std.cpp: count, numbers, as much room again.
std::vector<Case> sort_cases()
{
    std::vector<Case> cases;
    for (const char type : {'s', 'd'})
        for (const i64 n : {1'000, 30'000, 1'000'000, 10'000'000}) {
            Case c{std::string(1, type) + "sort", "ascending", n, type};
            c.quick = n == 30'000;
            c.integer(n).renewed(n, Use::updated, 1, {}).operand(n, Use::spent);
            c.work = static_cast<double>(n);
            c.unit = "Gelements/s";
            cases.push_back(c);
        }
    return cases;
}

} // namespace orv::bench
