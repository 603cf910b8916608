// ?gemm_sm_01 to ?gemm_sm_10, and the choice among them by depth.
#include "tests/gemm/product.h"
#include "tests/support/probe.h"

namespace orv::test {
namespace {

template <class T> Gemm<T>* of_depth(i64 k)
{
    return gemm<T>("", k < 10 ? "gemm_sm_0" + std::to_string(k) : "gemm_sm_10");
}

TEST(Small, adds_the_sum_of_its_depth_for_every_shape_and_letter)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        unsigned turn = 0;
        const T alphas[] = {one<T>, scalar<T>(-0.7, 0.3), scalar<T>(1.5)};
        for (i64 k = 1; k <= 10; ++k)
            for (i64 m = 1; m <= 10; ++m)
                for (i64 n = 1; n <= 10; ++n)
                    for (int op = 0; op < 8; ++op) {
                        ++turn;
                        const Problem<T> p = {all_letters[op], all_letters[turn % 8], m, n, k, alphas[turn % 3]};
                        Operands<T> x(p.padded(turn % 3, turn % 4, turn % 2),
                                      {turn % 5 ? Edge::end : Edge::start, turn % 4, turn % 3, turn % 2}, turn);
                        x.call(turn % 2 ? of_depth<T>(k) : gemm<T>("", "gemm_sm_01_10"));
                        expect_bits(x, [&](i64 i, i64 j) { return plain_entry(x, i, j); });
                    }
    });
}

TEST(Small, does_nothing_for_a_depth_outside_one_to_ten)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (i64 k : {-1, 0, 11, 12}) {
            Operands<T> x(Problem<T>{'n', 't', 5, 4, k});
            x.call(gemm<T>("", "gemm_sm_01_10"));
            expect_unchanged(x);
        }
    });
}

TEST(Small, takes_no_memory)
{
    ProbeScope probe;
    Operands<double> x(Problem<double>{'n', 't', 10, 10, 10});
    x.call(gemm<double>());
    EXPECT_EQ(probe->allocations, 0);
    EXPECT_TRUE(probe->checked.empty());
}

TEST(Small, reads_no_operand_for_an_alpha_of_zero)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        Operands<T> x(Problem<T>{'n', 'n', 5, 4, 3, zero<T>});
        for (T& a : x.a) a = scalar<T>(NAN);
        x.call(of_depth<T>(3));
        expect_unchanged(x);
    });
}

} // namespace
} // namespace orv::test
