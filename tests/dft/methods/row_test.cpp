// The short ways of one contiguous transform of pairs: straight code of fixed sizes, and the engine on the stack.
#include "tests/dft/methods/node.h"

namespace orv::test {
namespace {

template <class T> std::string name(const std::string& stem) { return stem + '_' + letter<T>; }

// Transforms n points forward or backward by a committed node, on guarded arrays; without a byte of memory.
template <class T> std::vector<T> transformed(Node& node, bool forward, const std::vector<T>& x)
{
    const bool in_place = node->placement == CFG_IN_PLACE;
    Guarded<T> src(x.size()), other(x.size());
    std::copy(x.begin(), x.end(), src.begin());
    ProbeScope probe;
    EXPECT_EQ(node.run(forward, src.data(), in_place ? nullptr : other.data()), node_ok);
    EXPECT_EQ(probe->allocations, 0);
    if (!in_place) {
        EXPECT_TRUE(same_bits(src.data(), x.data(), static_cast<i64>(x.size()))) << "the input changed";
    }
    const auto& dst = in_place ? src : other;
    return {dst.begin(), dst.end()};
}
template <class T> void expect_definition(Node& node, i64 n, double forward_scale, double backward_scale)
{
    const auto x = random_array<T>(n, static_cast<std::uint64_t>(n));
    const auto roots = quad_roots(n);
    const auto points = points_to_see(n, n <= 128 ? n : 16);
    for (const bool forward : {true, false}) {
        const auto y = transformed(node, forward, x);
        Errors errors;
        for (const i64 k : points) {
            const QuadPair exact = point(x, roots, k);
            errors.add(y[forward ? k : (n - k) % n], exact, 1 / (forward ? forward_scale : backward_scale));
        }
        EXPECT_LE(errors.rms(), 0.7 * std::sqrt(std::log2(n + 1.0) + 0.12 * static_cast<double>(n))) << n << forward;
    }
}

struct Table {
    const char* stem;
    std::vector<i64> single, twice;
};
const Table tables[] = {{"bkd3", {16, 32, 64}, {8, 16, 32, 64, 128}},
                        {"bkd2", {2, 4, 8, 16, 32, 64}, {2, 4, 8, 16, 32, 64}}};

template <class T> class Row : public testing::Test {
};
using Pairs = testing::Types<cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(Row, Pairs);

TYPED_TEST(Row, of_a_fixed_size_is_the_transform_of_the_definition_and_no_other_size_is_in_the_table)
{
    using T = TypeParam;
    for (const Table& table : tables) {
        const auto& sizes = sizeof(T) == 8 ? table.single : table.twice;
        for (i64 n = 1; n <= 260; ++n) {
            Node node(precision_of<T>, CFG_DOMAIN_COMPLEX, {n}, {name<T>(table.stem)});
            const bool there = std::count(sizes.begin(), sizes.end(), n) > 0;
            ASSERT_EQ(node.commit(), there ? node_ok : node_not_in_table) << n;
            ASSERT_EQ(node.committed(), there) << n;
            if (!there) continue;
            for (const u32 placement : {CFG_IN_PLACE, CFG_OUT_OF_PLACE}) {
                node->placement = placement;
                ASSERT_EQ(node.commit(), node_ok);
                EXPECT_EQ(node->nioargs, placement == CFG_IN_PLACE ? 1u : 2u);
                expect_definition<T>(node, n, 1, 1);
            }
        }
    }
}

TYPED_TEST(Row, is_plain)
{
    using T = TypeParam;
    const u32 other = sizeof(T) == 8 ? CFG_DOUBLE : CFG_SINGLE, same = precision_of<T>;
    for (const char* stem : {"bkd3", "bkd2", "bkd1"}) {
        Node two(precision_of<T>, CFG_DOMAIN_COMPLEX, {16, 16}, {name<T>(stem)});
        EXPECT_EQ(two.commit(), node_inconsistent);
        Node node(precision_of<T>, CFG_DOMAIN_COMPLEX, {16}, {name<T>(stem)});
        const Change further{"no further decomposition", [](Node& n) { n->flags |= DftiNode::no_decomposition; },
                             [](Node& n) { n->flags &= ~DftiNode::no_decomposition; }};
        for (const Change& c :
             {change("precision", &DftiNode::precision, other, same),
              change("reals", &DftiNode::forward_domain, CFG_DOMAIN_REAL, CFG_DOMAIN_COMPLEX),
              change("two arrays", &DftiNode::complex_storage, CFG_STORE_SPLIT, CFG_STORE_COMPLEX),
              offset("input offset", &DftiNode::input_offset), offset("output offset", &DftiNode::output_offset),
              further, transforms(2), stride("input stride", 0, &IotensorDim::is, 2),
              scale("forward scale", &DftiNode::forward_scale, 0.5),
              scale("backward scale", &DftiNode::backward_scale, 0.5)})
            expect_refused(node, c);
        node->placement = CFG_OUT_OF_PLACE;
        expect_refused(node, stride("output stride", 0, &IotensorDim::os, 2));
        node->placement = CFG_IN_PLACE; // where the output's stride does not count
        node->lengths.dims[0].os = 2;
        EXPECT_EQ(node.commit(), node_ok);
        EXPECT_EQ(method(name<T>("bkd3"))->detach(method(name<T>("bkd3")), node.get()),
                  stem == std::string("bkd3") ? node_ok : node_internal_error);
    }
}

TYPED_TEST(Row, of_fixed_size_needs_no_memory_and_lets_go_of_the_method_before_it)
{
    using T = TypeParam;
    Node node(precision_of<T>, CFG_DOMAIN_COMPLEX, {16}, {name<T>("bkd3"), name<T>("bkd1")});
    node->forward_scale = 0.0625;
    ASSERT_EQ(node.commit(), node_ok);
    EXPECT_EQ(node->method, method(name<T>("bkd1")));
    node->forward_scale = 1;
    ASSERT_EQ(node.commit(), node_ok);
    EXPECT_EQ(node->method, method(name<T>("bkd3")));
    EXPECT_EQ(node->method_data, nullptr);
    node->forward_scale = 0.0625;
    ASSERT_EQ(node.commit(), node_ok);
    EXPECT_EQ(node->method, method(name<T>("bkd1")));
}

template <class T> i32 work_bytes(i32 n, i32 flag)
{
    const std::string kind = token<real_t<T>>() + "c";
    YmpDftSpec* spec = nullptr;
    i32 bytes = 0;
    EXPECT_EQ(primitive<DftInitAlloc>("ympsDFTInitAlloc_C_" + kind)(&spec, n, flag, 0), ok);
    EXPECT_EQ(primitive<DftGetBufSize>("ympsDFTGetBufSize_C_" + kind)(spec, &bytes), ok);
    primitive<DftFree>("ympsDFTFree_C_" + kind)(spec);
    return bytes;
}
TYPED_TEST(Row, goes_through_the_engine_where_its_work_area_has_room_on_the_stack)
{
    using T = TypeParam;
    int taken = 0, left = 0;
    std::vector<i64> lengths(400);
    std::iota(lengths.begin(), lengths.end(), 1);
    for (const i64 n : {512, 1000, 1024, 2048, 2187, 4093, 4095, 4096}) lengths.push_back(n);
    for (const i64 n : lengths) {
        ProbeScope probe;
        Node node(precision_of<T>, CFG_DOMAIN_COMPLEX, {n}, {name<T>("bkd1")});
        const i64 before = probe->live;
        const bool room = work_bytes<T>(static_cast<i32>(n), scale_none) <= 2048;
        ASSERT_EQ(node.commit(), room ? node_ok : node_not_in_table) << n;
        (room ? taken : left) += 1;
        EXPECT_EQ(node.committed(), room);
        if (!room) {
            EXPECT_EQ(node->method, nullptr);
            EXPECT_EQ(probe->live, before);
        }
        if (!room || n % 7 > 1) continue;
        for (const u32 placement : {CFG_IN_PLACE, CFG_OUT_OF_PLACE}) {
            node->placement = placement;
            ASSERT_EQ(node.commit(), node_ok);
            expect_definition<T>(node, n, 1, 1);
        }
    }
    EXPECT_GT(taken, 0);
    EXPECT_GT(left, 0);
    Node longer(precision_of<T>, CFG_DOMAIN_COMPLEX, {4097}, {name<T>("bkd1")});
    EXPECT_EQ(longer.commit(), node_inconsistent);
}

TYPED_TEST(Row, is_scaled_by_the_engine_where_the_scale_is_one_of_its_own)
{
    using T = TypeParam;
    for (const i64 n : {1, 7, 16, 27, 60, 64}) {
        const double whole = 1.0 / static_cast<double>(n), root = 1.0 / std::sqrt(static_cast<double>(n));
        Node node(precision_of<T>, CFG_DOMAIN_COMPLEX, {n}, {name<T>("bkd1")});
        for (const auto& [forward, backward] : {std::pair{whole, 1.0}, {1.0, whole}, {root, root}, {1.0, 1.0}}) {
            node->forward_scale = forward, node->backward_scale = backward;
            ASSERT_EQ(node.commit(), node_ok);
            expect_definition<T>(node, n, forward, backward);
        }
        if (n == 1) continue;
        node->forward_scale = node->backward_scale = whole;
        EXPECT_EQ(node.commit(), node_inconsistent);
    }
}

TYPED_TEST(Row, keeps_its_record_for_a_commit_of_the_same_length_and_scale)
{
    using T = TypeParam;
    Node node(precision_of<T>, CFG_DOMAIN_COMPLEX, {21}, {name<T>("bkd1")});
    expect_state_to_be_kept_and_let_go(method(name<T>("bkd1")), node, [&] { node->placement = CFG_OUT_OF_PLACE; });

    ASSERT_EQ(node.commit(), node_ok);
    ProbeScope probe;
    node->forward_scale = 1.0 / 21; // which the record applies
    ASSERT_EQ(node.commit(), node_ok);
    EXPECT_GT(probe->allocations, 0);
}

TYPED_TEST(Row, is_left_uncommitted_without_memory)
{
    using T = TypeParam;
    Node node(precision_of<T>, CFG_DOMAIN_COMPLEX, {21}, {name<T>("bkd1")});
    expect_commit_to_survive_without_memory(node);
    expect_definition<T>(node, 21, 1, 1);
}

} // namespace
} // namespace orv::test
