// Problems that leave a constant open, or have no solution at all.
#include "tests/pde/poisson.h"

#include <gtest/gtest.h>

namespace orv::test {
namespace {

constexpr const char* open_pairs[] = {"nn", "pp"};

// The mean that the solution is told to have: points on a side count half.
template <class T, int axes> long double trapezoidal_mean(const Problem<T, axes>& p)
{
    long double sum = 0, weights = 0;
    for (i64 point = 0, rest; point < p.points(); ++point) {
        long double weight = 1;
        rest = point;
        for (int a = 0; a < axes; rest /= p.n[a] + 1, ++a)
            if (const i64 at = rest % (p.n[a] + 1); at == 0 || at == p.n[a]) weight /= 2;
        sum += weight * static_cast<long double>(p.f[point]), weights += weight;
    }
    return sum / weights;
}

// A right-hand side of a solution that is known and has mean 0.
template <class T, int axes>
void expect_solution_of_mean_zero(const std::string& sides, const i64 (&cells)[axes], T added, std::uint64_t stream)
{
    Problem<T, axes> p(sides, cells, 0);
    p.draw(stream);
    const Equations e = equations_of(p);
    std::vector<long double> u(e.count), sides_alone = e.right;
    Random random(stream + 1);
    long double mean = 0, weights = 0;
    for (i64 k = 0; k < e.count; ++k) u[k] = random.value<T>(), mean += e.weight[k] * u[k], weights += e.weight[k];
    for (auto& value : u) value -= mean / weights;
    const auto f = product(e.matrix, u);
    for (i64 point = 0; point < p.points(); ++point)
        if (const i64 k = e.unknown[point]; k >= 0) // what flows in stays
            p.f[point] = static_cast<T>(f[k] - (e.right[k] - static_cast<long double>(p.f[point])) +
                                        static_cast<long double>(added));
    ASSERT_EQ(p.run(), pdepl::singular) << sides;
    EXPECT_EQ(p.ipar[pdepl::ipar_status], pdepl::singular);
    const long double unit = std::numeric_limits<T>::epsilon() / 2.0L, size = row_sum_norm(e.matrix, e.count);
    const long double allowed = 64 * unit * size; // of eigenvalues of at least 1 in an area of about 1
    EXPECT_LE(std::fabs(trapezoidal_mean(p)), allowed) << sides;
    for (i64 point = 0; point < p.points(); ++point)
        if (const i64 k = e.unknown[point]; k >= 0) {
            EXPECT_NEAR(p.f[point], u[k], allowed) << sides << " point " << point;
        }
}

template <class T> class PoissonOpen : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(PoissonOpen, Reals);

TYPED_TEST(PoissonOpen, solve_a_rectangle_with_the_mean_zero)
{
    std::uint64_t stream = 0;
    for (const std::string x : open_pairs)
        for (const std::string y : open_pairs)
            for (const i64 ny : {5, 8}) {
                const i64 n[] = {6, ny};
                expect_solution_of_mean_zero<TypeParam>(x + y, n, 0, ++stream);
            }
}

TYPED_TEST(PoissonOpen, solve_a_box_with_the_mean_zero)
{
    std::uint64_t stream = 100;
    for (const std::string x : open_pairs)
        for (const std::string y : open_pairs)
            for (const std::string z : open_pairs) {
                const i64 n[] = {4, 6, 3 + static_cast<i64>(++stream % 2)};
                expect_solution_of_mean_zero<TypeParam>(x + y + z, n, 0, stream);
            }
}

TYPED_TEST(PoissonOpen, take_what_does_not_fit_off_the_right_hand_side)
{
    const i64 n[] = {6, 7}, box[] = {4, 4, 5};
    for (const std::string x : open_pairs)
        for (const std::string y : open_pairs) {
            expect_solution_of_mean_zero<TypeParam>(x + y, n, 3, 7);
            expect_solution_of_mean_zero<TypeParam>(x + y + "nn", box, -2, 8);
        }
}

TYPED_TEST(PoissonOpen, are_those_without_a_given_value_and_without_q_alone)
{
    const i64 n[] = {6, 6};
    for (const char* sides : {"nnnd", "ddpp", "ppdn", "dnnn"}) {
        Problem<TypeParam, 2> p(sides, n, 0);
        EXPECT_EQ(p.run(), pdepl::good) << sides;
    }
    Problem<TypeParam, 2> with_q("nnnn", n, TypeParam(0.5));
    EXPECT_EQ(with_q.run(), pdepl::good);
}

TYPED_TEST(PoissonOpen, stay_solvable_again_and_again)
{
    const i64 n[] = {4, 4};
    Problem<TypeParam, 2> p("nnpp", n, 0);
    ASSERT_EQ(p.run(), pdepl::singular);
    EXPECT_EQ(p.solve(), pdepl::singular); // 1 is no obstacle
    p.ipar[pdepl::ipar_status] = 9;
    EXPECT_EQ(p.commit(), pdepl::good);
}

// q is minus an eigenvalue, exactly: on 2 by 2 cells of size 1 there is one wave, of 2 + 2.
TYPED_TEST(PoissonOpen, of_a_resonance_have_no_solution)
{
    const i64 n[] = {2, 2};
    Problem<TypeParam, 2> p("dddd", n, -4);
    for (int a = 0; a < 2; ++a) p.from[a] = 0, p.to[a] = 2;
    p.draw(1);
    EXPECT_EQ(p.run(), pdepl::not_allowed);
    EXPECT_EQ(p.ipar[pdepl::ipar_status], pdepl::not_allowed);
    EXPECT_EQ(p.solve(), pdepl::not_ready);

    Problem<TypeParam, 2> beside("dddd", n, TypeParam(-4.5));
    for (int a = 0; a < 2; ++a) beside.from[a] = 0, beside.to[a] = 2;
    beside.f.assign(9, 0);
    beside.f[4] = 1;
    EXPECT_EQ(beside.run(), pdepl::good);
    EXPECT_NEAR(beside.f[4], -2, 1e-5);
}

} // namespace
} // namespace orv::test
