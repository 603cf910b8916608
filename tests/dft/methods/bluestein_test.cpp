// Transforms as a convolution with a chirp, of pairs and of reals in every layout.
#include "tests/dft/methods/node.h"

#include <cstdio>

namespace orv::test {
namespace {

template <class T> std::string name() { return std::string("bluestein_") + letter<T>; }

// As for convolutions of the engine: three transforms of m points and products with three tables. The angles of a table
// are 3.6 in the mean, of three rounded numbers: that makes 1.3 units. It is one table, so its three errors may agree.
double bound(i64 n)
{
    const double log_m = std::ceil(std::log2(2.0 * static_cast<double>(n)));
    return std::sqrt(0.36 * (3 * log_m + 6) + 3.9 * 3.9);
}

constexpr i64 lengths[] = {3,  5,  6,   7,   9,   11,  12,  13,  15,  17,  24,  31,   33,   63,   65,   96,
                           97, 99, 100, 127, 129, 191, 211, 257, 300, 511, 513, 1000, 1009, 2047, 3001, 4099};

template <class T> std::vector<QuadPair> definition(const std::vector<T>& x, const std::vector<i64>& points)
{
    const auto roots = quad_roots(static_cast<i64>(x.size()));
    std::vector<QuadPair> exact(x.size());
    for (const i64 k : points) exact[k] = point(x, roots, k);
    return exact;
}

struct Case {
    u32 storage, format;
    const char* layout;
};
constexpr Case cases[] = {{CFG_STORE_PACKED, CFG_CCS, "CCS"},
                          {CFG_STORE_PACKED, CFG_PACK, "Pack"},
                          {CFG_STORE_PACKED, CFG_PERM, "Perm"},
                          {CFG_STORE_COMPLEX, CFG_CCE, "CCS"},
                          {CFG_STORE_COMPLEX, CFG_PERM, "CCS"}};

template <class R> void set(Node& node, const Case& c, bool in_place)
{
    node->conjugate_even_storage = c.storage, node->packed_format = c.format;
    node->placement = in_place ? CFG_IN_PLACE : CFG_OUT_OF_PLACE;
}

template <class R> class Bluestein : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(Bluestein, Reals);

TYPED_TEST(Bluestein, gives_the_sums_of_the_definition_for_pairs)
{
    using R = TypeParam;
    using T = cpx<R>;
    double worst = 0;
    for (const i64 n : lengths) {
        const auto x = random_array<T>(n, static_cast<std::uint64_t>(n));
        const auto points = points_to_see(n, n <= 300 ? n : 24);
        const auto exact = definition(x, points);
        for (const bool in_place : {true, false}) {
            Node node(precision_of<T>, CFG_DOMAIN_COMPLEX, {n}, {name<T>()});
            node->placement = in_place ? CFG_IN_PLACE : CFG_OUT_OF_PLACE;
            ASSERT_EQ(node.commit(), node_ok) << n;
            EXPECT_EQ(node->nioargs, in_place ? 1u : 2u);
            for (const bool forward : {true, false}) {
                Guarded<T> src(x.size()), other(x.size());
                std::copy(x.begin(), x.end(), src.begin());
                const auto& dst = in_place ? src : other;
                ASSERT_EQ(node.run(forward, src.data(), in_place ? nullptr : dst.data()), node_ok);
                if (!in_place) {
                    EXPECT_TRUE(same_bits(src.data(), x.data(), n)) << "the input changed";
                }
                Errors errors;
                for (const i64 k : points) errors.add(dst[forward ? k : (n - k) % n], exact[k]);
                EXPECT_LE(errors.rms(), bound(n)) << n;
                worst = std::max(worst, errors.rms() / bound(n));
            }
        }
    }
    std::printf("pairs: %.0f%% of the bound\n", 100 * worst);
}

TYPED_TEST(Bluestein, gives_the_spectrum_of_reals_in_the_layout_asked_for_and_takes_it_back)
{
    using R = TypeParam;
    double worst = 0;
    for (const i64 n : lengths) {
        const auto x = random_array<R>(n, static_cast<std::uint64_t>(n));
        auto points = points_to_see(n, n <= 300 ? n : 24);
        std::erase_if(points, [n](i64 k) { return 2 * k > n; });
        const auto exact = definition(x, points);
        for (const Case& c : cases)
            for (const bool in_place : {true, false}) {
                Node node(precision_of<R>, CFG_DOMAIN_REAL, {n}, {name<R>()});
                set<R>(node, c, in_place);
                ASSERT_EQ(node.commit(), node_ok) << n;
                const i64 values = values_in(c.layout, n);
                Guarded<R> src(in_place ? values : n), other(values), back(n);
                std::copy(x.begin(), x.end(), src.begin());
                const auto& dst = in_place ? src : other;
                ASSERT_EQ(node.run(true, src.data(), in_place ? nullptr : dst.data()), node_ok);
                const std::vector<R> spectrum(dst.begin(), dst.end());
                Errors errors;
                for (const i64 k : points) errors.add(unpacked(c.layout, spectrum, n, k), exact[k]);
                EXPECT_LE(errors.rms(), bound(n)) << n << c.layout;
                worst = std::max(worst, errors.rms() / bound(n));
                if (std::string("CCS") == c.layout) {
                    EXPECT_EQ(spectrum[1], 0);
                    if (n % 2 == 0) {
                        EXPECT_EQ(spectrum[n + 1], 0);
                    }
                }
                const auto& result = in_place ? dst : back;
                ASSERT_EQ(node.run(false, dst.data(), in_place ? nullptr : back.data()), node_ok);
                Errors round_trip;
                for (i64 k = 0; k < n; ++k)
                    round_trip.add(cpx<R>{result[k], 0}, {quad(x[k]) * static_cast<quad>(n), 0});
                EXPECT_LE(round_trip.rms(), 1.5 * bound(n)) << n << c.layout;
            }
    }
    std::printf("reals: %.0f%% of the bound\n", 100 * worst);
}

TYPED_TEST(Bluestein, does_not_read_what_is_always_zero)
{
    using R = TypeParam;
    for (const i64 n : {5, 6}) {
        Node node(precision_of<R>, CFG_DOMAIN_REAL, {n}, {name<R>()});
        set<R>(node, cases[0], false);
        ASSERT_EQ(node.commit(), node_ok);
        auto spectrum = random_array<R>(values_in("CCS", n), 1);
        std::vector<R> once(n), again(n);
        ASSERT_EQ(node.run(false, spectrum.data(), once.data()), node_ok);
        spectrum[1] = NAN;
        if (n == 6) spectrum[7] = NAN;
        ASSERT_EQ(node.run(false, spectrum.data(), again.data()), node_ok);
        EXPECT_TRUE(same_bits(once.data(), again.data(), n));
    }
}

TYPED_TEST(Bluestein, begins_at_the_offset_of_each_side)
{
    using R = TypeParam;
    const i64 n = 7, in = 3, out = 5;
    for (const Case& c : cases)
        for (const bool in_place : {true, false})
            for (const bool forward : {true, false}) {
                Node plain(precision_of<R>, CFG_DOMAIN_REAL, {n}, {name<R>()});
                Node moved(precision_of<R>, CFG_DOMAIN_REAL, {n}, {name<R>()});
                for (Node* node : {&plain, &moved}) set<R>(*node, c, in_place);
                moved->input_offset = in, moved->output_offset = out;
                ASSERT_EQ(plain.commit(), node_ok);
                ASSERT_EQ(moved.commit(), node_ok);
                const bool pairs = c.storage == CFG_STORE_COMPLEX;
                const i64 from = in * (pairs && !forward ? 2 : 1);
                const i64 to = in_place && !pairs ? in : out * (pairs && forward ? 2 : 1);
                const i64 values = values_in(c.layout, n), results = forward ? values : n;
                std::vector<R> a(40), b(40), x = random_array<R>(values, 3);
                std::copy(x.begin(), x.end(), a.begin() + from);
                ASSERT_EQ(plain.run(forward, x.data(), in_place ? nullptr : b.data()), node_ok);
                const std::vector<R> expected = in_place ? x : b;
                ASSERT_EQ(moved.run(forward, a.data(), in_place ? nullptr : b.data()), node_ok);
                EXPECT_TRUE(same_bits((in_place ? a : b).data() + to, expected.data(), results))
                    << c.layout << in_place;
            }
    using T = cpx<R>;
    for (const bool in_place : {true, false}) {
        Node plain(precision_of<T>, CFG_DOMAIN_COMPLEX, {n}, {name<T>()});
        Node moved(precision_of<T>, CFG_DOMAIN_COMPLEX, {n}, {name<T>()});
        moved->placement = in_place ? CFG_IN_PLACE : CFG_OUT_OF_PLACE;
        moved->input_offset = in, moved->output_offset = out;
        ASSERT_EQ(plain.commit(), node_ok);
        ASSERT_EQ(moved.commit(), node_ok);
        std::vector<T> a(20), b(20), x = random_array<T>(n, 3);
        std::copy(x.begin(), x.end(), a.begin() + in);
        ASSERT_EQ(plain.run(true, x.data()), node_ok);
        ASSERT_EQ(moved.run(true, a.data(), in_place ? nullptr : b.data()), node_ok);
        EXPECT_TRUE(same_bits(in_place ? a.data() + in : b.data() + out, x.data(), n));
    }
}

template <class T> std::vector<T> both_ways(Node& node, i64 n, i64 values)
{
    auto x = random_array<T>(values, 9);
    EXPECT_EQ(node.run(true, x.data()), node_ok);
    std::vector<T> results = x;
    EXPECT_EQ(node.run(false, x.data()), node_ok);
    results.insert(results.end(), x.begin(), x.begin() + n);
    return results;
}
TYPED_TEST(Bluestein, has_the_same_bits_with_any_number_of_threads)
{
    using R = TypeParam;
    using T = cpx<R>;
    for (const i64 n : {3, 5, 17, 100, 1009}) {
        std::vector<T> pairs;
        std::vector<R> reals;
        for (i32 threads = 1; threads <= 5; ++threads) {
            Node p(precision_of<T>, CFG_DOMAIN_COMPLEX, {n}, {name<T>()});
            Node r(precision_of<R>, CFG_DOMAIN_REAL, {n}, {name<R>()});
            for (Node* node : {&p, &r}) {
                Team::of(*node, threads);
                ASSERT_EQ(node->commit(), node_ok);
            }
            const auto x = both_ways<T>(p, n, n);
            EXPECT_EQ(Team::started, threads > 1 ? 8 * threads : 0);
            const auto y = both_ways<R>(r, n, values_in("CCS", n));
            if (threads == 1) pairs = x, reals = y;
            EXPECT_TRUE(same_bits(x.data(), pairs.data(), static_cast<i64>(x.size()))) << n << ' ' << threads;
            EXPECT_TRUE(same_bits(y.data(), reals.data(), static_cast<i64>(y.size()))) << n << ' ' << threads;
        }
    }
}
// Of the last of four stages only one task runs: what it has written tells its slice.
TYPED_TEST(Bluestein, shares_results_in_units_of_four)
{
    using T = cpx<TypeParam>;
    static i32 stage, runs;
    const i64 n = 99;
    for (runs = 0; runs < 3; ++runs) {
        Node node(precision_of<T>, CFG_DOMAIN_COMPLEX, {n}, {name<T>()});
        Team::of(node, 3);
        node.services.parallel_for = [](i32 threads, DftTask* task, void* argument) {
            if (++stage < 4) return Team::one_by_one(threads, task, argument);
            task(runs, threads, argument);
        };
        node->placement = CFG_OUT_OF_PLACE;
        ASSERT_EQ(node.commit(), node_ok);
        auto x = random_array<T>(n, 2);
        std::vector<T> y(n, T{});
        stage = 0;
        ASSERT_EQ(node.run(true, x.data(), y.data()), node_ok);
        EXPECT_EQ(stage, 4);
        const i64 share = 9 * 4; // of 25 units
        for (i64 k = 0; k < n; ++k) EXPECT_EQ(y[k] != T{}, k / share == runs) << k;
    }
}
TYPED_TEST(Bluestein, starts_no_more_threads_than_the_user_allows)
{
    using T = cpx<TypeParam>;
    Node node(precision_of<T>, CFG_DOMAIN_COMPLEX, {7}, {name<T>()});
    Team::of(node, 4);
    const auto started = [&] {
        Team::started = 0;
        EXPECT_EQ(node.commit(), node_ok);
        std::vector<T> x(7);
        EXPECT_EQ(node.run(true, x.data()), node_ok);
        return Team::started;
    };
    EXPECT_EQ(started(), 16);
    node->thread_limit = 3;
    EXPECT_EQ(started(), 12);
    node->number_of_user_threads = 2;
    EXPECT_EQ(started(), 0);
}

TYPED_TEST(Bluestein, takes_one_plain_ordered_transform_of_a_length_that_is_no_power_of_two)
{
    using R = TypeParam;
    using T = cpx<R>;
    for (const i64 n : {1, 2, 4, 64, 1024})
        for (const u32 domain : {CFG_DOMAIN_COMPLEX, CFG_DOMAIN_REAL}) {
            Node node(precision_of<R>, domain, {n}, {domain == CFG_DOMAIN_REAL ? name<R>() : name<T>()});
            EXPECT_EQ(node.commit(), node_inconsistent) << n;
        }
    Node two(precision_of<T>, CFG_DOMAIN_COMPLEX, {3, 3}, {name<T>()});
    EXPECT_EQ(two.commit(), node_inconsistent);
    Node other_precision(sizeof(R) == 4 ? CFG_DOUBLE : CFG_SINGLE, CFG_DOMAIN_COMPLEX, {3}, {name<T>()});
    EXPECT_EQ(other_precision.commit(), node_inconsistent);
    Node other_domain(precision_of<T>, CFG_DOMAIN_REAL, {3}, {name<T>()});
    EXPECT_EQ(other_domain.commit(), node_inconsistent);
    Node too_long(precision_of<T>, CFG_DOMAIN_COMPLEX, {(i64{1} << 30) + 1}, {name<T>()});
    EXPECT_EQ(too_long.commit(), node_too_long);

    Node pairs(precision_of<T>, CFG_DOMAIN_COMPLEX, {7}, {name<T>()});
    Node reals(precision_of<R>, CFG_DOMAIN_REAL, {7}, {name<R>()});
    const Change split = change("two arrays", &DftiNode::complex_storage, CFG_STORE_SPLIT, CFG_STORE_COMPLEX);
    for (Node* node : {&pairs, &reals}) {
        for (const Change& c :
             {split, change("any order", &DftiNode::ordering, CFG_ORDERED + 1, CFG_ORDERED), transforms(2),
              scale("forward scale", &DftiNode::forward_scale, 0.5),
              scale("backward scale", &DftiNode::backward_scale, 0.5), stride("input stride", 0, &IotensorDim::is, 2)})
            expect_refused(*node, c);
        (*node)->placement = CFG_OUT_OF_PLACE;
        expect_refused(*node, stride("output stride", 0, &IotensorDim::os, 2));
    }
    pairs->placement = CFG_IN_PLACE; // where the output's stride does not count
    pairs->lengths.dims[0].os = 2;
    EXPECT_EQ(pairs.commit(), node_ok);
}

TYPED_TEST(Bluestein, leaves_nothing_behind_and_writes_nothing_without_memory)
{
    using T = cpx<TypeParam>;
    Node node(precision_of<T>, CFG_DOMAIN_COMPLEX, {2049}, {name<T>()});
    const auto x = random_array<T>(2049, 5);
    auto y = x;
    expect_commit_to_survive_without_memory(node);
    i32 status = node_ok;
    each_allocation_fails([&] { y = x, status = node.run(true, y.data()); },
                          [&] {
                              if (probe().failed == 0) return;
                              EXPECT_EQ(status, node_no_memory);
                              EXPECT_TRUE(same_bits(x.data(), y.data(), 2049));
                          });
    EXPECT_FALSE(same_bits(x.data(), y.data(), 2049));
}

TYPED_TEST(Bluestein, keeps_its_tables_for_the_next_commit_and_gives_them_back_when_it_is_detached)
{
    using T = cpx<TypeParam>;
    Node node(precision_of<T>, CFG_DOMAIN_COMPLEX, {7}, {name<T>()});
    expect_state_to_be_kept_and_let_go(method(name<T>()), node, [&] { node->placement = CFG_OUT_OF_PLACE; });
}

} // namespace
} // namespace orv::test
