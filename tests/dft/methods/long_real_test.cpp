// Long transforms of reals that threads share.
#include "tests/dft/methods/node.h"

namespace orv::test {
namespace {

template <class R> std::string name() { return std::string("par_1d_r2c_") + letter<R>; }

template <class R> class Long : public Node {
public:
    Long(i64 n, i32 threads, bool in_place = false, u32 format = CFG_CCS)
        : Node(precision_of<R>, CFG_DOMAIN_REAL, {n}, {name<R>()})
    {
        Team::of(*this, threads);
        get()->placement = in_place ? CFG_IN_PLACE : CFG_OUT_OF_PLACE;
        get()->packed_format = format;
    }
};

// The sums of the definition take steps as a transform of its length does; each of two tables of products of roots adds
// three roundings, and errors of two passes of general radices come on top.
double bound(i64 n) { return std::sqrt(0.36 * std::log2(static_cast<double>(n)) + 3); }

// Powers of two; N odd, with a large prime on either side or on one alone; squares of 3 and 5; many factors.
constexpr i64 lengths[] = {16384, 32768, 16386, 2 * 8209, 4 * 8209, 18432, 40000, 2 * 9 * 25 * 49, 17160, 30030};

// Root of the mean square error of n*x in units of the last place of its own.
template <class R> double off_after_round_trip(const R* computed, const std::vector<R>& x)
{
    const auto n = static_cast<long double>(x.size());
    long double off = 0, whole = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const long double exact = n * x[i], error = computed[i] - exact;
        off += error * error, whole += exact * exact;
    }
    return static_cast<double>(std::sqrt(off / whole)) / (sizeof(R) == 4 ? 0x1p-23 : 0x1p-52);
}

template <class R> class LongReal : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(LongReal, Reals);

struct Case {
    u32 storage, format;
    const char* layout;
};
constexpr Case cases[] = {{CFG_STORE_PACKED, CFG_CCS, "CCS"},
                          {CFG_STORE_PACKED, CFG_PERM, "Perm"},
                          {CFG_STORE_COMPLEX, CFG_CCE, "CCS"},
                          {CFG_STORE_COMPLEX, CFG_PERM, "CCS"}};

TYPED_TEST(LongReal, transform_gives_the_sums_of_the_definition_in_every_layout_and_comes_back)
{
    using R = TypeParam;
    for (const i64 n : lengths) {
        const auto x = random_array<R>(n, static_cast<std::uint64_t>(n));
        const auto roots = quad_roots(n);
        auto points = points_to_see(n / 2, 8);
        points.push_back(n / 2);
        std::vector<QuadPair> exact;
        for (const i64 k : points) exact.push_back(point(x, roots, k));
        for (const Case& c : cases)
            for (const bool in_place : {true, false}) {
                if (n > 18432 && !in_place) continue;
                Long<R> node(n, 2, in_place, c.format);
                node->conjugate_even_storage = c.storage;
                ASSERT_EQ(node.commit(), node_ok) << n;
                EXPECT_EQ(node->nioargs, in_place ? 1u : 2u);
                const i64 values = values_in(c.layout, n);
                Guarded<R> src(in_place ? values : n), other(values), back(n);
                std::copy(x.begin(), x.end(), src.begin());
                const auto& dst = in_place ? src : other;
                ASSERT_EQ(node.run(true, src.data(), in_place ? nullptr : dst.data()), node_ok);
                const std::vector<R> spectrum(dst.begin(), dst.end());
                Errors errors;
                for (std::size_t i = 0; i < points.size(); ++i)
                    errors.add(unpacked(c.layout, spectrum, n, points[i]), exact[i]);
                EXPECT_LE(errors.rms(), bound(n)) << n << c.layout;
                if (values > n) {
                    EXPECT_EQ(spectrum[1], 0);
                    EXPECT_EQ(spectrum[n + 1], 0);
                }
                const auto& result = in_place ? dst : back;
                ASSERT_EQ(node.run(false, dst.data(), in_place ? nullptr : back.data()), node_ok);
                EXPECT_LE(off_after_round_trip(result.data(), x), 1.5 * bound(n)) << n << c.layout;
                if (!in_place) {
                    EXPECT_TRUE(same_bits(src.data(), x.data(), n)) << "the input changed";
                    EXPECT_TRUE(same_bits(dst.data(), spectrum.data(), values)) << "the spectrum changed";
                }
            }
    }
}

// Every point, by an engine that has tests of its own.
TYPED_TEST(LongReal, transform_agrees_with_the_engine_at_every_point)
{
    using R = TypeParam;
    for (const i64 n : lengths) {
        const auto x = random_array<R>(n, 3);
        const Made<R> engine(Form::real, static_cast<i32>(n));
        const auto expected = real_transformed(engine, "CCS", true, x, false, engine.buffer());
        Long<R> node(n, 3);
        ASSERT_EQ(node.commit(), node_ok);
        auto y = x;
        y.resize(n + 2);
        ASSERT_EQ(node.run(true, const_cast<R*>(x.data()), y.data()), node_ok);
        double most = 0, off = 0;
        for (i64 i = 0; i < n + 2; ++i) {
            most = std::max<double>(most, std::abs(expected[i]));
            off = std::max<double>(off, std::abs(static_cast<double>(y[i]) - static_cast<double>(expected[i])));
        }
        EXPECT_LE(off, 8 * (sizeof(R) == 4 ? 0x1p-23 : 0x1p-52) * most) << n;
    }
}

TYPED_TEST(LongReal, transform_has_the_same_bits_with_any_number_of_threads)
{
    using R = TypeParam;
    for (const i64 n : {16384, 16386, 4 * 8209, 18432}) {
        std::vector<R> first;
        for (const i32 threads : {2, 3, 4, 5}) {
            Long<R> node(n, threads, true);
            ASSERT_EQ(node.commit(), node_ok);
            auto x = random_array<R>(n, 5);
            x.resize(n + 2);
            Team::started = 0;
            ASSERT_EQ(node.run(true, x.data()), node_ok);
            EXPECT_EQ(Team::started, threads);
            auto y = x;
            ASSERT_EQ(node.run(false, x.data()), node_ok);
            y.insert(y.end(), x.begin(), x.begin() + n);
            if (first.empty()) { // what a single task does
                node.services.parallel_together = nullptr;
                auto z = random_array<R>(n, 5);
                z.resize(n + 2);
                ASSERT_EQ(node.run(true, z.data()), node_ok);
                first = z;
                ASSERT_EQ(node.run(false, z.data()), node_ok);
                first.insert(first.end(), z.begin(), z.begin() + n);
            }
            EXPECT_TRUE(same_bits(first.data(), y.data(), static_cast<i64>(y.size()))) << n << ' ' << threads;
        }
    }
}

TYPED_TEST(LongReal, threads_may_be_fewer_than_asked_for)
{
    using R = TypeParam;
    const i64 n = 16384;
    Long<R> all(n, 4), fewer(n, 4);
    fewer.services.parallel_together = [](i32 count, DftTask* task, void* argument) {
        Team::together(count / 2, task, argument);
    };
    ASSERT_EQ(all.commit(), node_ok);
    ASSERT_EQ(fewer.commit(), node_ok);
    auto x = random_array<R>(n, 5);
    std::vector<R> y(n + 2), z(n + 2);
    ASSERT_EQ(all.run(true, x.data(), y.data()), node_ok);
    ASSERT_EQ(fewer.run(true, x.data(), z.data()), node_ok);
    EXPECT_TRUE(same_bits(y.data(), z.data(), n + 2));
}

TYPED_TEST(LongReal, transform_is_scaled_behind)
{
    using R = TypeParam;
    const i64 n = 16384;
    for (const u32 format : {CFG_CCS, CFG_PERM}) {
        const i64 values = format == CFG_CCS ? n + 2 : n;
        Long<R> plain(n, 3, false, format), scaled(n, 3, false, format);
        scaled->forward_scale = 0.3, scaled->backward_scale = -7;
        ASSERT_EQ(plain.commit(), node_ok);
        ASSERT_EQ(scaled.commit(), node_ok);
        auto x = random_array<R>(values, 5);
        std::vector<R> y(values), z(values);
        for (const bool forward : {true, false}) {
            const R factor = static_cast<R>(forward ? 0.3 : -7);
            ASSERT_EQ(plain.run(forward, x.data(), y.data()), node_ok);
            ASSERT_EQ(scaled.run(forward, x.data(), z.data()), node_ok);
            for (i64 i = 0; i < (forward ? values : n); ++i) ASSERT_EQ(z[i], factor * y[i]) << i;
        }
    }
}

TYPED_TEST(LongReal, transform_begins_at_the_offset_of_each_side)
{
    using R = TypeParam;
    const i64 n = 16384;
    for (const Case& c : cases)
        for (const bool forward : {true, false}) {
            Long<R> plain(n, 2, false, c.format), moved(n, 2, false, c.format);
            for (Long<R>* node : {&plain, &moved}) (*node)->conjugate_even_storage = c.storage;
            moved->input_offset = 3, moved->output_offset = 5;
            ASSERT_EQ(plain.commit(), node_ok);
            ASSERT_EQ(moved.commit(), node_ok);
            const bool pairs = c.storage == CFG_STORE_COMPLEX;
            const i64 from = 3 * (pairs && !forward ? 2 : 1), to = 5 * (pairs && forward ? 2 : 1);
            auto x = random_array<R>(n + 2, 1);
            std::vector<R> a(n + 20), y(n + 2), z(n + 20);
            std::copy(x.begin(), x.end(), a.begin() + from);
            ASSERT_EQ(plain.run(forward, x.data(), y.data()), node_ok);
            ASSERT_EQ(moved.run(forward, a.data(), z.data()), node_ok);
            EXPECT_TRUE(same_bits(z.data() + to, y.data(), n));
        }
}

TYPED_TEST(LongReal, transform_is_one_of_reals_that_is_worth_it)
{
    using R = TypeParam;
    const auto commit = [](const std::vector<i64>& lengths, i32 threads) {
        Node node(precision_of<R>, CFG_DOMAIN_REAL, lengths, {name<R>()});
        Team::of(node, threads);
        return node.commit();
    };
    EXPECT_EQ(commit({16384}, 2), node_ok);
    EXPECT_EQ(commit({16384}, 1), node_inconsistent);
    EXPECT_EQ(commit({16382}, 2), node_inconsistent);
    EXPECT_EQ(commit({16385}, 2), node_inconsistent);
    EXPECT_EQ(commit({16384, 2}, 2), node_inconsistent);
    EXPECT_EQ(commit({i64{1} << 42}, 2), node_too_long);

    Long<R> node(16384, 2);
    const u32 other = sizeof(R) == 4 ? CFG_DOUBLE : CFG_SINGLE;
    for (const Change& c :
         {change("precision", &DftiNode::precision, other, precision_of<R>),
          change("pairs", &DftiNode::forward_domain, CFG_DOMAIN_COMPLEX, CFG_DOMAIN_REAL),
          change("format", &DftiNode::packed_format, CFG_PACK, CFG_CCS), transforms(2),
          stride("input stride", 0, &IotensorDim::is, 2), stride("output stride", 0, &IotensorDim::os, 2)})
        expect_refused(node, c);
    expect_refused(node, {"threads of the user", [](Node& n) { n->number_of_user_threads = 2; },
                          [](Node& n) { n->number_of_user_threads = 1; }});
    expect_refused(node, {"thread limit", [](Node& n) { n->thread_limit = 1; }, [](Node& n) { n->thread_limit = 0; }});
    node->packed_format = CFG_CCE;
    EXPECT_EQ(node.commit(), node_ok);
}

TYPED_TEST(LongReal, record_tells_format_placement_and_split)
{
    struct Begin { // of the method's record
        i64 first;
        u32 packed_format, placement;
        i64 m1, m2;
    };
    for (const u32 format : {CFG_CCS, CFG_PERM, CFG_CCE})
        for (const bool in_place : {true, false}) {
            const Long<TypeParam> node(2 * 2 * 9 * 25 * 49, 2, in_place, format);
            ASSERT_EQ(node.commit(), node_ok);
            const auto* const record = static_cast<const Begin*>(node->method_data);
            EXPECT_EQ(record->packed_format, format);
            EXPECT_EQ(record->placement, in_place ? CFG_IN_PLACE : CFG_OUT_OF_PLACE);
            EXPECT_EQ(record->m1, 15 * 7); // one 7 each, for m1 is the smaller one
            EXPECT_EQ(record->m2, 30 * 7);
        }
}

TYPED_TEST(LongReal, tables_stay_for_the_next_commit_and_go_when_it_is_detached)
{
    Long<TypeParam> node(16384, 2);
    expect_state_to_be_kept_and_let_go(method(name<TypeParam>()), node, [&] {
        node->packed_format = CFG_PERM;
        node->placement = CFG_IN_PLACE;
    });
}

TYPED_TEST(LongReal, transform_without_memory_leaves_its_arrays_alone)
{
    using R = TypeParam;
    Long<R> node(16384, 2, true);
    expect_commit_to_survive_without_memory(node);
    const auto x = random_array<R>(16384 + 2, 1);
    auto y = x;
    each_allocation_fails(
        [&] {
            y = x;
            const i32 status = node.run(true, y.data());
            EXPECT_EQ(status, probe().failed == 0 ? node_ok : node_no_memory);
            EXPECT_EQ(same_bits(x.data(), y.data(), 16384), probe().failed != 0);
        },
        [] {});
}

} // namespace
} // namespace orv::test
