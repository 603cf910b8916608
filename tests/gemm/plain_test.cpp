// ?gemm_pst and ?gemm_mscale.
#include "frame/kernels/blas.h"
#include "tests/gemm/product.h"

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> Mscale<T>* mscale() { return kernel<Mscale<T>>("blas", name_of<T>("", "gemm_mscale")); }
template <class T> Gemm<T>* pst() { return gemm<T>("", "gemm_pst"); }

template <class T>
constexpr T some = [] {
    if constexpr (is_complex<T>) return T{real_t<T>(0.75), real_t<T>(-1.25)};
    else return T(-0.75);
}();

TEST(Plain, sums_all_of_k_in_order_for_every_shape_and_operator)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        std::uint64_t stream = 0;
        for (char ta : {'n', 'T', 'c'})
            for (char tb : {'N', 't', 'C'})
                for (i64 m = 0; m <= 11; ++m)
                    for (i64 n = 0; n <= 9; ++n)
                        for (i64 k : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 17}) {
                            const T beta = ++stream % 3 == 0 ? zero<T> : stream % 3 == 1 ? one<T> : some<T>;
                            const Problem<T> p = {ta, tb, m, n, k, stream % 2 ? some<T> : one<T>, beta};
                            Operands<T> x(p.padded(stream % 3, stream % 4, stream % 2), {}, stream);
                            x.call(pst<T>());
                            expect_bits(x, [&](i64 i, i64 j) { return plain_entry(x, i, j); });
                        }
    });
}

TEST(Plain, keeps_the_order_where_rows_are_cut_into_chunks)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (char ta : {'n', 't'})
            for (char tb : {'n', 't'})
                for (auto [m, n, k] :
                     {std::array<i64, 3>{700, 5, 300}, {1, 300, 130}, {3, 65, 513}, {2100, 9, 3}, {13, 7, 20000}}) {
                    Operands<T> x(Problem<T>{ta, tb, m, n, k, some<T>, one<T>});
                    x.call(pst<T>());
                    expect_bits(x, [&](i64 i, i64 j) { return plain_entry(x, i, j); });
                }
    });
}

TEST(Plain, stays_inside_its_operands_at_every_alignment)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (Edge edge : {Edge::start, Edge::end})
            for (std::size_t shift = 0; shift < 4; ++shift)
                for (char op : {'n', 't'})
                    for (i64 m : {1, 2, 3, 5, 8, 11}) {
                        Operands<T> x(Problem<T>{op, op, m, 7, 5, some<T>, some<T>}, {edge, shift, 3 - shift, shift});
                        x.call(pst<T>());
                        expect_product(x);
                    }
    });
}

TEST(Plain, clears_a_nan_by_a_beta_of_zero_and_lets_others_pass)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        Operands<T> x(Problem<T>{'n', 't', 9, 5, 6, some<T>, zero<T>});
        for (T& c : x.c) c = scalar<T>(NAN, NAN);
        x.call(pst<T>());
        expect_product(x);
        x.p.beta = one<T>;
        x.a[0] = scalar<T>(NAN);
        x.restore();
        x.call(pst<T>());
        for (i64 j = 0; j < 5; ++j) {
            EXPECT_TRUE(is_nan(x.at(0, j)));
            EXPECT_FALSE(is_nan(x.at(1, j)));
        }
    });
}

TEST(Plain, reads_no_operand_for_an_alpha_of_zero_or_an_empty_sum)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (i64 k : {-1, 0, 5}) {
            Problem<T> p = {'n', 'n', 9, 5, k, k == 5 ? zero<T> : scalar<T>(INFINITY), some<T>};
            Operands<T> x(p.padded(0, 5, 2));
            for (T& a : x.a) a = scalar<T>(NAN);
            x.call(pst<T>());
            expect_bits(x, [&](i64 i, i64 j) { return some<T> * x.was(i, j); });
        }
    });
}

TEST(Mscale, multiplies_every_entry_once_and_no_padding)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (std::size_t shift = 0; shift < 4; ++shift)
            for (i64 m = 0; m <= 21; ++m)
                for (i64 n = 0; n <= 5; ++n)
                    for (T beta : {some<T>, one<T>, scalar<T>(-1)}) {
                        const Problem<T> p = {'n', 'n', m, n, 0, one<T>, beta};
                        Operands<T> x(p.padded(0, 0, m % 3), {shift % 2 ? Edge::end : Edge::start, 0, 0, shift});
                        mscale<T>()(&p.m, &p.n, &p.beta, x.c.data(), &x.p.ldc);
                        expect_bits(x, [&](i64 i, i64 j) { return beta * x.was(i, j); });
                    }
    });
}

TEST(Mscale, stores_zeros_over_nan_for_a_beta_of_zero_of_either_sign)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (double sign : {0.0, -0.0})
            for (i64 m : {1, 7, 40}) {
                Operands<T> x(Problem<T>{'n', 'n', m, 3, 0, one<T>, scalar<T>(sign)}.padded(0, 0, 2));
                for (T& c : x.c) c = scalar<T>(NAN, NAN);
                x.remember();
                mscale<T>()(&x.p.m, &x.p.n, &x.p.beta, x.c.data(), &x.p.ldc);
                expect_bits(x, [](i64, i64) { return zero<T>; });
            }
    });
}

TEST(Line, of_a_product_repeats_it)
{
    for (const char transa : {'N', 't', 'C'}) {
        EXPECT_TRUE(repeats(repro(Problem<double>{transa, 'n', 17, 9, 33, 0.5, 0}.padded(1, 2, 3))));
        EXPECT_TRUE(repeats(repro(Problem<cpx<float>>{transa, 'T', 5, 6, 7, {0.1f, -2}, {1, 0}}.padded(0, 0, 1))));
    }
}

} // namespace
} // namespace orv::test
