// Rotations and small reflectors, in the forms that LAPACK's own loops call. Repeated on what they leave, numbers keep
// their size if sines and reflectors are next to nothing.
#include "bench/case.h"

#include <numeric>

namespace orv::bench {
namespace {

constexpr double next_to_nothing = 1e-7;

// A sequence of n - 1 rotations of n columns. The angles are real, and so are all operands of a case.
Case lasr(char type, char pivot, char direct, i64 n)
{
    Case c{std::string(1, type) + "lasr", std::string("L") + pivot + direct, n, type};
    c.quick = n == 500 && pivot == 'V' && direct == 'F';
    c.letter('L').letter(pivot).letter(direct).integer(n).integer(n);
    c.operand(n - 1, Use::read);
    c.operands.back().ones.resize(n - 1);
    std::iota(c.operands.back().ones.begin(), c.operands.back().ones.end(), 0);
    c.operand(n - 1, Use::read).operands.back().scale = next_to_nothing;
    c.matrix(n, n, Use::updated);
    const std::string kernel = c.kernel + "_l" + static_cast<char>(pivot | 32) + static_cast<char>(direct | 32);
    c.kernel_steps = {{kernel, {3, 4, 5, 6, 7, 8}}};
    const auto order = static_cast<double>(n);
    c.work = 6 * (order - 1) * order;
    c.unit = "GFLOP/s";
    c.roundings = 8 * order;
    return c;
}

// A reflector of the given order on 1000 columns (L) or rows (R).
Case larfx(char type, char side, i64 order)
{
    constexpr i64 count = 1000;
    const bool left = side == 'L';
    const i64 m = left ? order : count, n = left ? count : order;
    Case c{std::string(1, type) + "larfx", std::string(1, side), order, type};
    c.quick = order == 6;
    c.letter(side).integer(m).integer(n).operand(order, Use::read).scalar(next_to_nothing, 0);
    c.matrix(m, n, Use::updated).operand(count, Use::spent);
    c.work = (type == 'c' ? 16.0 : 4.0) * static_cast<double>(order * count);
    c.unit = "GFLOP/s";
    c.limit = Limit::arithmetic;
    c.roundings = 8 * static_cast<double>(order);
    return c;
}

} // namespace

std::vector<Case> rotation_cases()
{
    std::vector<Case> cases;
    for (const char type : {'s', 'd'})
        for (const i64 n : {50, 500})
            for (const char pivot : {'V', 'T', 'B'})
                for (const char direct : {'F', 'B'}) cases.push_back(lasr(type, pivot, direct, n));
    for (const char type : {'d', 'c'})
        for (const char side : {'L', 'R'})
            for (const i64 order : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}) cases.push_back(larfx(type, side, order));
    return cases;
}

} // namespace orv::bench
