// x?gemm: the ladder of early exits, and the product at every boundary between its paths.
#include "tests/gemm/product.h"
#include "tests/support/probe.h"

#include <array>
#include <thread>

namespace orv::test {
namespace {

template <class T> struct Multiplied : Operands<T> {
    explicit Multiplied(const Problem<T>& p, Place place = {}, std::uint64_t stream = 0) : Operands<T>(p, place, stream)
    {
        this->call(gemm<T>());
    }
};

// Scalars take their turns: each case meets another pair.
template <class T> struct Scalars {
    std::array<T, 4> alphas = {one<T>, scalar<T>(-1), scalar<T>(0.7, -0.4), zero<T>};
    std::array<T, 4> betas = {one<T>, zero<T>, scalar<T>(-0.3, 1.1), scalar<T>(-1)};
    unsigned turn = 0;
    void next(Problem<T>& p)
    {
        p.alpha = alphas[(turn / 4 + turn) % 4], p.beta = betas[turn % 4];
        turn += turn % 16 == 15 ? 2 : 1;
    }
};

TEST(Gemm, multiplies_all_small_shapes)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        Scalars<T> scalars;
        unsigned turn = 0;
        for (i64 m = 0; m <= 12; ++m)
            for (i64 n = 0; n <= 12; ++n)
                for (i64 k = 0; k <= 12; ++k)
                    for (int op = 0; op < 4; ++op) {
                        Problem<T> p = {all_letters[turn / 8 % 8], all_letters[turn % 8], m, n, k};
                        scalars.next(p);
                        turn += 9 + turn % 5;
                        expect_product(Multiplied<T>(p.padded(turn % 4, turn % 3, turn % 2), {}, turn));
                    }
    });
}

TEST(Gemm, takes_every_pair_of_letters_and_of_scalars)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        Scalars<T> scalars;
        for (auto [m, n, k] : {std::array<i64, 3>{3, 4, 5}, {11, 4, 3}, {10, 13, 9}, {17, 19, 21}})
            for (char ta : {'n', 'N', 't', 'T', 'c', 'C', '?', 'x'})
                for (char tb : {'n', 'N', 't', 'T', 'c', 'C', '?', 'x'})
                    for (T alpha : scalars.alphas)
                        for (T beta : scalars.betas)
                            expect_product(Multiplied<T>(Problem<T>{ta, tb, m, n, k, alpha, beta}.padded(1, 2, 3)));
    });
}

constexpr i64 edges[] = {15, 16, 17, 31, 32, 33, 127, 128, 129, 255, 256, 257, 300, 511, 512, 513};

TEST(Gemm, crosses_block_edges_in_each_dimension)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        Scalars<T> scalars;
        unsigned turn = 0;
        for (i64 edge : edges)
            for (auto [m, n, k] : {std::array<i64, 3>{edge, 13, 9},
                                   {7, edge, 11},
                                   {9, 14, edge},
                                   {edge, 3, 40},
                                   {1, edge, 35},
                                   {2, 30, edge}})
                for (int op = 0; op < 2; ++op) {
                    Problem<T> p = {"nntc"[turn % 4], "ntcn"[turn / 3 % 4], m, n, k};
                    scalars.next(p);
                    if (p.alpha == zero<T>) p.alpha = scalar<T>(0.6, 0.1);
                    ++turn;
                    expect_product(Multiplied<T>(p.padded(turn % 2, turn % 3, turn % 5), {}, turn));
                }
    });
}

// C*x = alpha*op(A)*(op(B)*x) + beta*(C*x) within the bound of the product, at the price of three matrix-vector
// products.
template <class T> void expect_product_times_vector(const Operands<T>& x)
{
    const Problem<T>& p = x.p;
    Random random(77);
    std::vector<wide> v(p.n), bv(p.k), bv_bound(p.k);
    for (wide& e : v) e = widen(random.value<T>());
    for (i64 q = 0; q < p.k; ++q)
        for (i64 j = 0; j < p.n; ++j) {
            const wide b = widen(x.right(q, j));
            bv[q] += b * v[j], bv_bound[q] += bound_product(magnitude(b), magnitude(v[j]));
        }
    const long double roundings = p.k + p.k / 128 + 9;
    for (i64 i = 0; i < p.m; ++i) {
        wide computed = {}, exact = {}, bound = {};
        for (i64 q = 0; q < p.k; ++q) {
            const wide a = widen(x.left(i, q));
            exact += a * bv[q], bound += bound_product(magnitude(a), bv_bound[q]);
        }
        exact = widen(p.alpha) * exact, bound = bound_product(magnitude(widen(p.alpha)), bound);
        for (i64 j = 0; j < p.n; ++j) {
            const wide c = widen(p.beta) * widen(x.was(i, j));
            computed += widen(x.at(i, j)) * v[j];
            exact += c * v[j], bound += bound_product(magnitude(c), magnitude(v[j]));
        }
        const long double allowed = gamma_n<T>(roundings);
        ASSERT_LE(std::fabs(computed.re - exact.re), allowed * bound.re) << repro(p) << ": row " << i;
        ASSERT_LE(std::fabs(computed.im - exact.im), allowed * bound.im) << repro(p) << ": row " << i;
    }
}

TEST(GemmFull, crosses_the_far_edges_of_blocks)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (auto [m, n, k] : {std::array<i64, 3>{1300, 31, 1100}, {30, 5011, 300}, {645, 70, 515}, {9, 2011, 1030}})
            for (char ta : {'n', 't', 'c'})
                for (char tb : {'n', 't'})
                    for (T beta : {zero<T>, scalar<T>(0.5)}) {
                        const Problem<T> p = {ta, tb, m, n, k, scalar<T>(0.9, 0.2), beta};
                        expect_product_times_vector(Multiplied<T>(p.padded(3, 1, 2)));
                    }
    });
}

TEST(GemmFull, multiplies_random_shapes)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        Random random(5);
        Scalars<T> scalars;
        for (int turn = 0; turn < 150; ++turn) {
            Problem<T> p = {all_letters[random.integer(0, 7)], all_letters[random.integer(0, 7)]};
            p.m = edges[random.integer(0, 15)], p.n = edges[random.integer(0, 15)], p.k = edges[random.integer(0, 15)];
            scalars.next(p);
            const Multiplied<T> x(p.padded(turn % 4, turn % 5, turn % 3), {}, turn);
            expect_product_times_vector(x);
            Multiplied<T> row(p.padded(0, 0, 0), {}, turn); // a few entries one by one
            for (int e = 0; e < 50; ++e) {
                const i64 i = random.integer(0, p.m - 1), j = random.integer(0, p.n - 1);
                ASSERT_LE(excess(row, i, j, row.at(i, j)), 1) << repro(row.p) << ": (" << i << ',' << j << ')';
            }
        }
    });
}

TEST(Gemm, reads_and_writes_nothing_outside_its_operands)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (Edge edge : {Edge::start, Edge::end})
            for (std::size_t shift = 0; shift < 4; ++shift)
                for (char ta : {'n', 't', 'c'})
                    for (char tb : {'n', 't', 'c'})
                        for (auto [m, n, k] : {std::array<i64, 3>{7, 5, 9}, {13, 11, 5}, {33, 29, 31}, {5, 3, 70}}) {
                            const Problem<T> p = {ta, tb, m, n, k, scalar<T>(0.7, 0.3), one<T>};
                            const Place place = {edge, shift, (shift + 1) % 4, (shift + 2) % 4};
                            expect_product(Multiplied<T>(p.padded(0, 0, 0), place));
                            expect_product(Multiplied<T>(p.padded(shift % 2, 1, shift / 2), place));
                        }
    });
}

TEST(Gemm, adds_one_chain_a_block_of_depth_with_alpha_in_packed_a)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        const auto kb = [](i64 k) -> i64 {
            if (k < 256) return k;
            if (is_complex<T>) return k <= 1024 ? 128 : 256;
            return k == 300 ? 152 : k == 500 ? 252 : 256;
        };
        for (char ta : {'n', 't', 'c'})
            for (char tb : {'n', 't', 'c'})
                for (i64 k : {4, 5, 50, 255, 256, 300, 500, 512, 600, 1030}) {
                    Operands<T> x(Problem<T>{ta, tb, 11, 13, k, scalar<T>(0.7, -0.4), scalar<T>(-1)});
                    x.call(gemm<T>());
                    expect_bits(x, [&](i64 i, i64 j) { return blocked_entry(x, i, j, kb(k)); });
                }
    });
}

// Operands that are small, or real and of few rows, are not packed; the bits do not tell.
TEST(Gemm, keeps_the_bits_of_the_packed_product_where_it_multiplies_in_place)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        const T alpha = scalar<T>(1 / 3.0, 0.7);
        unsigned turn = 0;
        for (auto [from, to] : {std::array<i64, 2>{is_complex<T> ? 2 : 4, 15}, {24, 24}})
            for (i64 m = from; m <= to; ++m)
                for (i64 n = max(from, is_complex<T> ? 4 : 8); n <= to; ++n)
                    for (i64 k : {4, 5, 6, 7, 11, 13, 18, 40})
                        for (T beta : {zero<T>, scalar<T>(0.5)}) {
                            ++turn;
                            const Problem<T> p = {"ntc"[turn % 3], "cnt"[turn / 3 % 3], m, n, k, alpha, beta};
                            const Place place = {turn % 2 ? Edge::start : Edge::end, turn % 4, turn % 3, turn % 2};
                            Operands<T> x(p.padded(turn % 3, turn % 2, turn % 4), place, turn);
                            x.call(gemm<T>());
                            expect_bits(x, [&](i64 i, i64 j) { return blocked_entry(x, i, j, 128); });
                        }
        // From both sides of the volumes up to which each type stays in place, and of the block of A.
        for (auto [m, n, k] : {std::array<i64, 3>{20, 21, 23},
                               {22, 21, 22},
                               {13, 15, 12},
                               {13, 15, 13},
                               {39, 53, 61},
                               {85, 86, 84},
                               {85, 86, 85},
                               {767, 8, 5},
                               {769, 8, 5},
                               {1281, 8, 4},
                               {11, 300, 150}})
            for (char ta : {'n', 't', 'c'})
                for (T a : {one<T>, alpha})
                    for (T beta : {zero<T>, one<T>}) {
                        const Problem<T> p = {ta, "nct"[++turn % 3], m, n, k, a, beta};
                        Operands<T> x(p.padded(turn % 3, turn % 2, turn % 4), {}, turn);
                        x.call(gemm<T>());
                        expect_bits(x, [&](i64 i, i64 j) { return blocked_entry(x, i, j, 152); });
                    }
        for (i64 lda : {511, 512, 1024}) { // columns of A whole pages apart
            Problem<T> p = {'n', 'n', 17, 19, 21};
            p.lda = lda, p.ldb = 21, p.ldc = 17;
            Operands<T> x(p);
            x.call(gemm<T>());
            expect_bits(x, [&](i64 i, i64 j) { return blocked_entry(x, i, j, 128); });
        }
        for (i64 m : {4, 5, 7, 8, 9})
            for (char ta : {'n', 't', 'c'})
                for (char tb : {'n', 't', 'c'})
                    for (auto [k, kb] : {std::array<i64, 2>{300, is_complex<T> ? 128 : 152}, {1100, 256}}) {
                        Operands<T> x(Problem<T>{ta, tb, m, 50, k, alpha, scalar<T>(-2)});
                        x.call(gemm<T>());
                        expect_bits(x, [&](i64 i, i64 j) { return blocked_entry(x, i, j, kb); });
                    }
    });
}

TEST(Gemm, scales_c_for_a_depth_of_zero)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (i64 k : {0, -3}) {
            Operands<T> x(Problem<T>{'n', 'n', 20, 12, k, one<T>, scalar<T>(2)}.padded(0, 3, 1));
            x.call(gemm<T>());
            expect_bits(x, [&](i64 i, i64 j) { return scalar<T>(2) * x.was(i, j); });
        }
    });
}

TEST(Gemm, leaves_on_an_empty_c_without_asking_anything)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        ProbeScope probe;
        for (auto [m, n] : {std::array<i64, 2>{0, 5}, {5, 0}, {-1, 5}, {5, -1}}) {
            const i64 k = 5, ld = 5;
            const T alpha = one<T>, beta = scalar<T>(2);
            gemm<T>()("n", "n", &m, &n, &k, &alpha, nullptr, &ld, nullptr, &ld, &beta, nullptr, &ld);
        }
        EXPECT_EQ(probe->allocations, 0);
    });
}

// The path that a problem takes shows in its bits: alpha folded into A, or multiplied into the whole sum.
template <class T> bool is_plain_sum(i64 m, i64 n, i64 k, T beta)
{
    const T alpha = scalar<T>(1 / 3.0, 0.1);
    Operands<T> x(Problem<T>{'n', 'n', m, n, k, alpha, beta});
    ProbeScope probe;
    x.call(gemm<T>());
    expect_product(x);
    i64 plain = 0, blocked = 0;
    for (i64 j = 0; j < n; ++j)
        for (i64 i = 0; i < m; ++i) {
            plain += same_bits(x.at(i, j), plain_entry(x, i, j));
            blocked += same_bits(x.at(i, j), blocked_entry(x, i, j, 256));
        }
    EXPECT_TRUE((plain == m * n) != (blocked == m * n)) << repro(x.p);
    EXPECT_EQ(probe->allocations, plain == m * n ? 0 : 1) << repro(x.p);
    return plain == m * n;
}

TEST(Gemm, takes_the_small_path_up_to_ten_and_for_a_beta_of_one)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        EXPECT_TRUE(is_plain_sum<T>(10, 10, 10, one<T>));
        EXPECT_FALSE(is_plain_sum<T>(11, 10, 10, one<T>));
        EXPECT_FALSE(is_plain_sum<T>(10, 11, 10, one<T>));
        EXPECT_FALSE(is_plain_sum<T>(10, 10, 11, one<T>));
        EXPECT_FALSE(is_plain_sum<T>(10, 10, 10, scalar<T>(0.5)));
        EXPECT_FALSE(is_plain_sum<T>(10, 10, 10, zero<T>));
    });
    EXPECT_FALSE(is_plain_sum<cpx<double>>(10, 10, 10, cpx<double>{1, 1e-300}));
    EXPECT_FALSE(is_plain_sum<cpx<double>>(2, 10, 10, one<cpx<double>>));
    EXPECT_TRUE(is_plain_sum<cpx<double>>(3, 10, 10, one<cpx<double>>));
    EXPECT_FALSE(is_plain_sum<cpx<float>>(2, 10, 10, one<cpx<float>>));
    EXPECT_TRUE(is_plain_sum<cpx<float>>(3, 10, 10, one<cpx<float>>));
}

TEST(Gemm, takes_the_plain_path_below_a_granule)
{
    const auto expect_granules = [](auto type, i64 m, i64 n, i64 k) {
        using T = decltype(type);
        EXPECT_FALSE(is_plain_sum<T>(m, n, k, zero<T>)) << letter<T>;
        EXPECT_TRUE(is_plain_sum<T>(m - 1, 20, 20, zero<T>)) << letter<T>;
        EXPECT_TRUE(is_plain_sum<T>(20, n - 1, 20, zero<T>)) << letter<T>;
        EXPECT_TRUE(is_plain_sum<T>(20, 20, k - 1, zero<T>)) << letter<T>;
    };
    expect_granules(float{}, 4, 8, 4);
    expect_granules(double{}, 4, 8, 4); // m_unit is 2, but below m_min of 4 the blocked driver declines
    expect_granules(cpx<float>{}, 2, 4, 4);
    expect_granules(cpx<double>{}, 2, 4, 4); // m_unit is 1, m_min 2
    EXPECT_TRUE(is_plain_sum<double>(10000, 7, 500, one<double>));
}

TEST(Gemm, makes_a_rank_one_update_of_a_double_product_of_depth_one)
{
    for (char ta : {'n', 't'})
        for (char tb : {'n', 'c'})
            for (double beta : {1.0, 0.0, -2.0}) {
                Operands<double> x(Problem<double>{ta, tb, 23, 17, 1, 1 / 3.0, beta}.padded(2, 3, 1));
                x.call(gemm<double>());
                expect_bits(x, [&](i64 i, i64 j) {
                    const double t = x.p.alpha * x.right(0, j);
                    return scaled(beta, x.was(i, j)) + t * x.left(i, 0);
                });
            }
    Operands<double> x(Problem<double>{'n', 'n', 23, 17, 1, 0.0, -2.0}.padded(2, 3, 1));
    for (double& a : x.a) a = NAN;
    x.call(gemm<double>());
    expect_bits(x, [&](i64 i, i64 j) { return -2 * x.was(i, j); });
}

TEST(Gemm, reads_no_operand_for_an_alpha_of_zero)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (i64 size : {5, 9, 40})
            for (T beta : {zero<T>, one<T>, scalar<T>(0.5)}) {
                const i64 one_ = size;
                const T alpha = zero<T>;
                Operands<T> x(Problem<T>{'n', 'n', size, size, size, alpha, beta}.padded(0, 0, 3));
                gemm<T>()("n", "t", &size, &size, &size, &alpha, nullptr, &one_, nullptr, &one_, &beta, x.c.data(),
                          &x.p.ldc);
                expect_bits(x, [&](i64 i, i64 j) { return scaled(beta, x.was(i, j)); });
            }
    });
}

TEST(Gemm, lets_nan_scalars_reach_all_of_c)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (i64 size : {1, 3, 9, 12, 40}) {
            expect_all_nan(Multiplied<T>(Problem<T>{'n', 't', size, size, size, scalar<T>(NAN), one<T>}));
            expect_all_nan(Multiplied<T>(Problem<T>{'n', 't', size, size, size, scalar<T>(NAN), zero<T>}));
            expect_all_nan(Multiplied<T>(Problem<T>{'n', 't', size, size, size, one<T>, scalar<T>(NAN)}));
        }
    });
}

TEST(Gemm, loses_nan_in_c_for_a_beta_of_zero)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (auto [m, n, k] : {std::array<i64, 3>{5, 5, 5}, {3, 4, 1}, {12, 3, 9}, {40, 30, 300}, {9, 9, 0}}) {
            Operands<T> x(Problem<T>{'t', 'n', m, n, k, one<T>, zero<T>}.padded(0, 0, 2));
            for (T& c : x.c) c = scalar<T>(NAN, NAN);
            x.remember();
            x.call(gemm<T>());
            expect_product(x);
        }
    });
}

TEST(Gemm, makes_the_same_product_without_memory)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (char op : {'n', 't', 'c'})
            for (T beta : {zero<T>, one<T>, scalar<T>(-0.5, 0.5)}) {
                Operands<T> x(Problem<T>{op, op, 61, 47, 140, scalar<T>(0.7, 0.4), beta}.padded(1, 0, 2));
                std::vector<std::string> checked;
                each_allocation_fails(
                    [&] {
                        x.restore();
                        x.call(gemm<T>());
                        checked = probe().checked;
                    },
                    [&] { expect_product(x); });
                EXPECT_EQ(checked, std::vector<std::string>{"xgemm"});
            }
    });
}

TEST(Gemm, asks_once_which_processor_it_runs_on_unless_the_product_is_empty_or_tiny)
{
    const auto asked = [](i64 m, i64 n, i64 k, double alpha, double beta) {
        ProbeScope probe;
        Multiplied<double>(Problem<double>{'n', 't', m, n, k, alpha, beta});
        return probe->microarchitecture_asked;
    };
    EXPECT_EQ(asked(0, 9, 9, 2, 2), 0);
    EXPECT_EQ(asked(9, 0, 9, 2, 2), 0);
    EXPECT_EQ(asked(10, 10, 10, 2, 1), 0) << "tiny";
    EXPECT_EQ(asked(10, 10, 10, 2, 2), 1) << "to be scaled";
    EXPECT_EQ(asked(10, 10, 0, 2, 1), 1) << "no depth";
    EXPECT_EQ(asked(11, 9, 1, 2, 1), 1) << "an update of rank one";
    EXPECT_EQ(asked(11, 9, 1, 0, 2), 1) << "alpha of zero";
    EXPECT_EQ(asked(11, 9, 40, 0, 1), 1) << "nothing to be done";
    EXPECT_EQ(asked(1, 40, 40, 2, 1), 1) << "fewer rows than a granule";
    EXPECT_EQ(asked(40, 7, 40, 2, 1), 1) << "fewer columns";
    EXPECT_EQ(asked(40, 40, 3, 2, 1), 1) << "less deep";
    EXPECT_EQ(asked(40, 30, 20, 2, 2), 1) << "in place";
    EXPECT_EQ(asked(150, 140, 130, 2, 2), 1) << "in blocks";
    ProbeScope probe;
    Multiplied<float>(Problem<float>{'n', 't', 40, 30, 20, 2, 2});
    EXPECT_EQ(probe->microarchitecture_asked, 0) << "one kernel only";
}

TEST(Gemm, asks_for_one_block_aligned_to_128)
{
    const i64 m = 50, n = 40, k = 30; // 52 deep; panels of 50 rows and 40 columns
    ProbeScope probe;
    Multiplied<double>(Problem<double>{'n', 'n', m, n, k});
    EXPECT_EQ(probe->asked_alignments, std::vector<i64>{128});
    EXPECT_EQ(probe->asked_bytes,
              std::vector<i64>{(8192 + 50 * 32 * 8 + 512) + (256 + 32 * 8 * 8 + 512) + (8192 + 40 * 32 * 8 + 512)});
    EXPECT_EQ(probe->live, 0);
}

TEST(Gemm, gives_four_threads_the_bits_of_one)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        const Problem<T> p = {'n', 't', 83, 71, 310, scalar<T>(0.7, 0.4), scalar<T>(0.5)};
        const Multiplied<T> alone(p);
        std::vector<std::thread> threads;
        std::array<bool, 4> same = {};
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&, t] {
                same[t] = true;
                for (int turn = 0; turn < 5; ++turn) {
                    const Multiplied<T> x(p);
                    same[t] = same[t] && std::memcmp(x.c.data(), alone.c.data(), x.c.size() * sizeof(T)) == 0;
                }
            });
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(same, (std::array{true, true, true, true})) << repro(p);
    });
}

} // namespace
} // namespace orv::test
