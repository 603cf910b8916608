// Solutions of Helmholtz problems on rectangles and boxes, beside those of the same linear system by elimination.
#include "tests/pde/poisson.h"

#include <gtest/gtest.h>

namespace orv::test {
namespace {

constexpr const char* pairs_of_sides[] = {"dd", "dn", "nd", "nn", "pp"};

// The largest difference from the exact solution of the system, as a multiple of what its condition allows: a method
// that is backward stable is off by some units times the condition. The systems along the last axis lose no more than
// the transforms, which are some units for each doubling of the points.
template <class T, int axes> long double excess_over_condition(const Problem<T, axes>& solved, const Equations& e)
{
    std::vector<long double> inverse = e.matrix;
    EXPECT_TRUE(invert(inverse, e.count));
    const auto u = product(inverse, e.right);
    long double worst = 0;
    for (i64 point = 0; point < solved.points(); ++point)
        if (const i64 k = e.unknown[point]; k >= 0)
            worst = std::fmax(worst, std::fabs(static_cast<long double>(solved.f[point]) - u[k]));
    const long double unit = std::numeric_limits<T>::epsilon() / 2.0L;
    const long double condition = row_sum_norm(e.matrix, e.count) * row_sum_norm(inverse, e.count);
    return worst / (16 * unit * condition * largest(u));
}

template <class T, int axes>
void expect_solved(const std::string& sides, const i64 (&cells)[axes], double q, std::uint64_t stream)
{
    Problem<T, axes> p(sides, cells, static_cast<T>(q));
    p.draw(stream);
    const Equations e = equations_of(p);
    ASSERT_EQ(p.run(), pdepl::good) << sides << " q=" << q;
    EXPECT_LE(excess_over_condition(p, e), 1) << sides << " q=" << q << " nx=" << cells[0] << " ny=" << cells[1];
    EXPECT_EQ(p.free(), 0);
}

template <class T> class PoissonValues : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(PoissonValues, Reals);

bool leaves_constant_open(const std::string& sides) { return sides.find_first_not_of("np") == std::string::npos; }

TYPED_TEST(PoissonValues, solve_a_rectangle_with_any_pairs_of_sides)
{
    const i64 odd_and_even[][2] = {{7, 6}, {6, 7}, {12, 5}, {4, 9}};
    std::uint64_t stream = 0;
    for (const std::string x : pairs_of_sides)
        for (const std::string y : pairs_of_sides)
            for (const auto& cells : odd_and_even) {
                const i64 n[] = {x == "pp" ? cells[0] / 2 * 2 : cells[0], cells[1]};
                for (const double q : {0., 3.5, -1.75, -150.})
                    if (n[0] > 3 || x != "pp")
                        if (q != 0 || !leaves_constant_open(x + y)) expect_solved<TypeParam>(x + y, n, q, ++stream);
            }
}

TYPED_TEST(PoissonValues, solve_a_box_with_any_pairs_of_sides)
{
    std::uint64_t stream = 1000;
    for (const std::string x : pairs_of_sides)
        for (const std::string y : pairs_of_sides)
            for (const std::string z : pairs_of_sides) {
                const i64 odd = static_cast<i64>(++stream % 2),
                          n[] = {x == "pp" ? 4 : 3 + odd, y == "pp" ? 4 : 4 - odd, 3 + odd};
                for (const double q : {0., 2.25, -40.})
                    if (q != 0 || !leaves_constant_open(x + y + z)) expect_solved<TypeParam>(x + y + z, n, q, stream);
            }
}

// A single wave along x, whose systems have 1 on their diagonals: 1, then 1 - 1 = 0 to rounding.
TYPED_TEST(PoissonValues, exchange_rows_where_elimination_meets_a_zero)
{
    const i64 n[] = {2, 5};
    for (const std::string y : {"dd", "pp", "nd"}) {
        Problem<TypeParam, 2> p("dd" + y, n, TypeParam(-3));
        p.from[0] = p.from[1] = 0, p.to[0] = 2, p.to[1] = 5;
        p.draw(9);
        const Equations e = equations_of(p);
        ASSERT_EQ(p.run(), pdepl::good) << y;
        EXPECT_LE(excess_over_condition(p, e), 1) << y;
    }
}

} // namespace
} // namespace orv::test
