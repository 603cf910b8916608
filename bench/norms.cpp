// Norms of square matrices: how fast a matrix is read.
#include "bench/case.h"

namespace orv::bench {
namespace {

Case norm(char type, const char* stem, char which, i64 n)
{
    const bool triangle = std::string(stem) != "lange";
    Case c{std::string(1, type) + stem, std::string(1, which), n, type};
    c.quick = n == 300 && which == 'M';
    c.letter(which);
    if (triangle) c.letter('L').integer(n);
    else c.integer(n).integer(n);
    c.operand(n * n, Use::read).integer(n).operand(n, Use::spent);
    c.result = c.single() ? Result::single_real : Result::double_real;
    const double order = static_cast<double>(n), elements = triangle ? order * (order + 1) / 2 : order * order;
    c.work = elements * c.reals() * (c.single() ? 4 : 8);
    c.unit = "GB/s";
    c.limit = Limit::matrix;
    c.roundings = c.magnitude = order;
    return c;
}

} // namespace

std::vector<Case> norm_cases()
{
    std::vector<Case> cases;
    for (const char type : {'s', 'd', 'c', 'z'})
        for (const char* stem : {"lange", "lansy"})
            for (const char which : {'M', 'O', 'I', 'F'})
                for (const i64 n : {20, 60, 300, 1200})
                    if (which != 'I' || stem[3] == 'g')
                        cases.push_back(norm(type, stem, which, n)); // a triangle's is O
    return cases;
}

} // namespace orv::bench
