// Transforms of real and imaginary parts in two arrays: batches, several batches, several dimensions.
#include "tests/dft/methods/node.h"

namespace orv::test {
namespace {

template <class R> std::string batch_method() { return std::string("bkd_") + letter<R> + "s2s_1_1"; }
template <class R> std::vector<std::string> all_methods()
{
    return {"bkd_as2s_n_m", "bkd_as2s_1_m", batch_method<R>()};
}

struct Shape {
    std::vector<IotensorDim> lengths, batches;
    i64 input_offset = 0, output_offset = 0;
    i64 points() const { return size(lengths); }
    i64 count() const { return size(batches); }
    static i64 size(const std::vector<IotensorDim>& dims)
    {
        i64 n = 1;
        for (const auto& d : dims) n *= d.n;
        return n;
    }
    // Where element i, by the lengths, the first the fastest, of transform j stands.
    i64 place(i64 i, i64 j, i64 IotensorDim::*side) const
    {
        i64 at = side == &IotensorDim::is ? input_offset : output_offset;
        for (const auto& d : lengths) at += i % d.n * d.*side, i /= d.n;
        for (const auto& d : batches) at += j % d.n * d.*side, j /= d.n;
        return at;
    }
    i64 room(i64 IotensorDim::*side) const
    {
        i64 most = 0;
        for (i64 j = 0; j < count(); ++j)
            for (i64 i = 0; i < points(); ++i) most = std::max(most, place(i, j, side) + 1);
        return most;
    }
};

// A node with a shape: what the methods read of it stands as commit would have it, with any number of batches.
template <class R> class SplitNode : public Node {
public:
    SplitNode(const Shape& shape, bool in_place, const std::vector<std::string>& names)
        : Node(precision_of<R>, CFG_DOMAIN_COMPLEX, lengths_of(shape), names)
    {
        DftiNode* const node = get();
        node->complex_storage = CFG_STORE_SPLIT;
        node->placement = in_place ? CFG_IN_PLACE : CFG_OUT_OF_PLACE;
        node->input_offset = shape.input_offset, node->output_offset = shape.output_offset;
        set(node->lengths, shape.lengths);
        set(node->batch, shape.batches);
    }

private:
    static std::vector<i64> lengths_of(const Shape& shape)
    {
        std::vector<i64> n;
        for (const auto& d : shape.lengths) n.push_back(d.n);
        return n;
    }
    static void set(Iotensor& t, const std::vector<IotensorDim>& dims)
    {
        kernel<kernels::dft::Iotensor_destroy>()(&t);
        ASSERT_EQ(kernel<kernels::dft::Iotensor_create>()(&t, static_cast<i32>(dims.size())), 0);
        std::copy(dims.begin(), dims.end(), t.dims);
    }
};

// The arrays of a shape: random elements, all else NaN.
template <class R> struct SplitArrays {
    Guarded<R> re, im;
    SplitArrays(const Shape& shape, i64 IotensorDim::*side) : re(shape.room(side)), im(shape.room(side)) {}
    void fill(const Shape& shape)
    {
        Random random(7);
        for (i64 j = 0; j < shape.count(); ++j)
            for (i64 i = 0; i < shape.points(); ++i) {
                const i64 at = shape.place(i, j, &IotensorDim::is);
                re[at] = random.value<R>(), im[at] = random.value<R>();
            }
    }
    std::vector<cpx<R>> transform(const Shape& shape, i64 j, i64 IotensorDim::*side) const
    {
        std::vector<cpx<R>> x;
        for (i64 i = 0; i < shape.points(); ++i) {
            const i64 at = shape.place(i, j, side);
            x.push_back({re[at], im[at]});
        }
        return x;
    }
    // What no element has its place at is as it was.
    void expect_gaps_kept(const Shape& shape, i64 IotensorDim::*side) const
    {
        std::vector<bool> used(re.size());
        for (i64 j = 0; j < shape.count(); ++j)
            for (i64 i = 0; i < shape.points(); ++i) used[shape.place(i, j, side)] = true;
        const Guarded<R> fresh(1);
        for (std::size_t i = 0; i < used.size(); ++i)
            if (!used[i]) {
                EXPECT_TRUE(same_bits(&re[i], fresh.data(), 1) && same_bits(&im[i], fresh.data(), 1)) << i;
            }
    }
};

// The definition in quadruple precision, one dimension after the other.
template <class R> std::vector<QuadPair> definition(const Shape& shape, const std::vector<cpx<R>>& x, bool forward)
{
    std::vector<QuadPair> y;
    for (const auto& e : x) y.push_back(widened(e));
    i64 step = 1;
    for (const auto& d : shape.lengths) {
        const auto roots = quad_roots(d.n);
        auto z = y;
        for (i64 i = 0; i < static_cast<i64>(y.size()); ++i) {
            const i64 k = i / step % d.n, from = i - k * step;
            z[i] = {0, 0};
            for (i64 j = 0; j < d.n; ++j)
                z[i] = z[i] + y[from + j * step] * roots[(forward ? d.n - j * k % d.n : j * k) % d.n];
        }
        y = z, step *= d.n;
    }
    return y;
}

// Runs a node of this shape both ways and compares every transform with the definition.
template <class R>
void expect_definition(SplitNode<R>& node, const Shape& shape, double forward_scale = 1, double backward_scale = 1)
{
    const bool in_place = node->placement == CFG_IN_PLACE;
    const auto side = in_place ? &IotensorDim::is : &IotensorDim::os;
    for (const bool forward : {true, false}) {
        SplitArrays<R> input(shape, &IotensorDim::is), output(shape, &IotensorDim::os);
        input.fill(shape);
        std::vector<std::vector<cpx<R>>> x;
        for (i64 j = 0; j < shape.count(); ++j) x.push_back(input.transform(shape, j, &IotensorDim::is));
        ASSERT_EQ(in_place ? node.run(forward, input.re.data(), input.im.data())
                           : node.run(forward, input.re.data(), input.im.data(), output.re.data(), output.im.data()),
                  node_ok);
        const auto& result = in_place ? input : output;
        const double scale = forward ? forward_scale : backward_scale;
        for (i64 j = 0; j < shape.count(); ++j) {
            const auto y = result.transform(shape, j, side);
            const auto exact = definition(shape, x[j], forward);
            Errors errors;
            for (std::size_t i = 0; i < y.size(); ++i) errors.add(y[i], exact[i], 1 / scale);
            EXPECT_LE(errors.rms(), 1.5 * std::sqrt(1 + std::log2(static_cast<double>(shape.points()))))
                << "transform " << j;
            if (!in_place) {
                const auto kept = input.transform(shape, j, &IotensorDim::is);
                EXPECT_TRUE(same_bits(kept.data(), x[j].data(), shape.points())) << "the input changed";
            }
        }
        result.expect_gaps_kept(shape, side);
    }
}

template <class R> class Split : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(Split, Reals);

// Of one dimension: neighbours and strides of every kind on each side, batches inside and outside of rows.
std::vector<Shape> batches()
{
    std::vector<Shape> shapes;
    for (const i64 n : {1, 2, 7, 8, 16, 20, 33, 60})
        for (const i64 count : {1, 2, 9})
            for (const IotensorDim& dim : {IotensorDim{n, 1, 1}, {n, 1, 3}, {n, 2, 1}, {n, 3, 2}, {n, 9, 12}}) {
                const auto distance = [&](i64 stride) { return stride > count ? 1 : n * stride + 2; };
                shapes.push_back({{dim}, {{count, distance(dim.is), distance(dim.os)}}, 1, 3});
            }
    return shapes;
}
TYPED_TEST(Split, batch_of_one_dimension_gives_the_sums_of_the_definition_and_leaves_gaps_alone)
{
    using R = TypeParam;
    for (const Shape& shape : batches())
        for (const bool in_place : {true, false}) {
            SplitNode<R> node(shape, in_place, {batch_method<R>()});
            ASSERT_EQ(node.commit(), node_ok);
            EXPECT_EQ(node->nioargs, in_place ? 2u : 4u);
            expect_definition(node, shape);
            if (testing::Test::HasFailure()) FAIL() << shape.points() << ' ' << shape.lengths[0].is;
        }
}

TYPED_TEST(Split, scale_is_applied_by_the_engine_or_behind_it)
{
    using R = TypeParam;
    for (const i64 stride : {1, 3}) {
        const Shape shape{{{12, stride, stride}}, {{5, 40, 40}}};
        for (const auto& [forward, backward] :
             {std::pair{1.0 / 12, 1.0}, {1.0, 1.0 / 12}, {std::sqrt(1.0 / 12), std::sqrt(1.0 / 12)}, {0.75, -3.0}}) {
            SplitNode<R> node(shape, true, {batch_method<R>()});
            node->forward_scale = forward, node->backward_scale = backward;
            ASSERT_EQ(node.commit(), node_ok);
            expect_definition(node, shape, forward, backward);
        }
    }
}

TYPED_TEST(Split, batch_has_the_same_bits_with_any_number_of_threads_and_no_more_of_them_than_blocks)
{
    using R = TypeParam;
    struct Case {
        Shape shape;
        i64 blocks;
    };
    for (const auto& [shape, blocks] : {Case{{{{8, 1, 1}}, {{9, 8, 8}}}, 9 * 8 / 32},
                                        {{{{3, 1, 1}}, {{9, 3, 3}}}, 1},
                                        {{{{33, 1, 1}}, {{3, 40, 40}}}, 3},
                                        {{{{20, 2, 2}}, {{11, 40, 40}}}, 11 / 4},
                                        {{{{20, 11, 11}}, {{11, 1, 1}}}, 11}}) {
        std::vector<cpx<R>> first;
        for (i32 threads = 1; threads <= 5; ++threads) {
            SplitNode<R> node(shape, true, {batch_method<R>()});
            Team::of(node, threads);
            ASSERT_EQ(node.commit(), node_ok);
            SplitArrays<R> x(shape, &IotensorDim::is);
            x.fill(shape);
            ASSERT_EQ(node.run(true, x.re.data(), x.im.data()), node_ok);
            const i64 used = std::min<i64>(threads, blocks);
            EXPECT_EQ(Team::started, used > 1 ? used : 0);
            std::vector<cpx<R>> y;
            for (i64 j = 0; j < shape.count(); ++j)
                for (const auto& e : x.transform(shape, j, &IotensorDim::is)) y.push_back(e);
            if (threads == 1) first = y;
            EXPECT_TRUE(same_bits(first.data(), y.data(), static_cast<i64>(y.size()))) << threads;
            node->number_of_user_threads = 2;
            Team::started = 0;
            ASSERT_EQ(node.commit(), node_ok);
            ASSERT_EQ(node.run(true, x.re.data(), x.im.data()), node_ok);
            EXPECT_EQ(Team::started, 0);
        }
    }
}

// So many transforms are staged together as make up for the smaller of the strides that are not 1.
TYPED_TEST(Split, threads_share_what_is_staged_together)
{
    using R = TypeParam;
    struct Case {
        i64 is, os, rows;
    };
    for (const auto& [is, os, rows] :
         {Case{2, 3, 4}, {3, 2, 4}, {1, 3, 2}, {3, 1, 2}, {5, 4, 2}, {9, 12, 1}, {-4, 1, 2}}) {
        const Shape shape{{{20, is, os}}, {{11, 200, 240}}, is < 0 ? 80 : 0};
        SplitNode<R> node(shape, false, {batch_method<R>()});
        Team::of(node, 64);
        ASSERT_EQ(node.commit(), node_ok);
        SplitArrays<R> x(shape, &IotensorDim::is), y(shape, &IotensorDim::os);
        ASSERT_EQ(node.run(true, x.re.data(), x.im.data(), y.re.data(), y.im.data()), node_ok);
        EXPECT_EQ(Team::started, 11 / rows) << is << ' ' << os;
    }
}

TYPED_TEST(Split, several_batches_go_one_after_the_other)
{
    using R = TypeParam;
    for (const Shape& shape : {Shape{{{6, 1, 1}}, {{3, 8, 9}, {4, 30, 40}}, 2, 1},
                               Shape{{{5, 2, 3}}, {{2, 1, 1}, {2, 11, 17}, {3, 50, 60}}, 0, 4}})
        for (const bool in_place : {true, false}) {
            SplitNode<R> node(shape, in_place, all_methods<R>());
            node->forward_scale = 0.5;
            ASSERT_EQ(node.commit(), node_ok);
            EXPECT_EQ(node->method, method("bkd_as2s_1_m"));
            EXPECT_EQ(node->nioargs, in_place ? 2u : 4u);
            expect_definition(node, shape, 0.5);
        }
}

TYPED_TEST(Split, several_dimensions_go_one_after_the_other)
{
    using R = TypeParam;
    const std::vector<Shape> shapes = {
        {{{4, 1, 1}, {6, 4, 4}}, {{1, 0, 0}}},
        {{{4, 1, 1}, {6, 5, 7}}, {{3, 40, 50}}, 3, 2},
        {{{6, 5, 1}, {5, 1, 7}}, {{2, 31, 40}}, 0, 1}, // the output is the transpose
        {{{2, 1, 1}, {3, 2, 2}, {5, 6, 6}}, {{2, 30, 30}}},
        {{{2, 2, 30}, {3, 4, 10}, {5, 12, 1}}, {{2, 1, 61}}},
        {{{2, 1, 1}, {2, 2, 2}, {3, 4, 4}, {2, 12, 12}}, {{1, 0, 0}}},
    };
    for (const Shape& shape : shapes)
        for (const bool in_place : {true, false}) {
            SplitNode<R> node(shape, in_place, all_methods<R>());
            node->forward_scale = 0.5, node->backward_scale = 3;
            ASSERT_EQ(node.commit(), node_ok);
            EXPECT_EQ(node->method, method("bkd_as2s_n_m"));
            expect_definition(node, shape, 0.5, 3);
        }
}

TYPED_TEST(Split, arrays_are_asked_for_by_every_method)
{
    using R = TypeParam;
    const u32 other = sizeof(R) == 4 ? CFG_DOUBLE : CFG_SINGLE;
    const Change pairs = change("pairs", &DftiNode::complex_storage, CFG_STORE_COMPLEX, CFG_STORE_SPLIT);
    const Change reals = change("reals", &DftiNode::forward_domain, CFG_DOMAIN_REAL, CFG_DOMAIN_COMPLEX);
    const Change further{"no further decomposition", [](Node& n) { n->flags |= DftiNode::no_decomposition; },
                         [](Node& n) { n->flags &= ~DftiNode::no_decomposition; }};
    SplitNode<R> one({{{6, 1, 1}}, {{3, 6, 6}}}, true, {batch_method<R>()});
    for (const Change& c : {pairs, reals, further, change("precision", &DftiNode::precision, other, precision_of<R>)})
        expect_refused(one, c);
    SplitNode<R> batches({{{6, 1, 1}}, {{3, 8, 8}, {2, 30, 30}}}, true, {"bkd_as2s_1_m", batch_method<R>()});
    SplitNode<R> dimensions({{{6, 1, 1}, {4, 6, 6}}, {{3, 24, 24}}}, true, all_methods<R>());
    for (auto* node : {&batches, &dimensions})
        for (const Change& c : {pairs, reals, further}) expect_refused(*node, c);
}

TYPED_TEST(Split, method_is_the_one_for_the_number_of_dimensions_and_of_batches)
{
    using R = TypeParam;
    const Shape one{{{6, 1, 1}}, {{3, 6, 6}}}, several{{{6, 1, 1}}, {{3, 8, 8}, {2, 30, 30}}};
    const Shape two{{{6, 1, 1}, {4, 6, 6}}, {{3, 24, 24}}};
    const auto taken = [](const Shape& shape, const std::string& name) {
        const ProbeScope probe;
        SplitNode<R> node(shape, true, {name});
        DftiNode* const n = node.get();
        return node.commit() == node_ok || (n->method != nullptr);
    };
    EXPECT_TRUE(taken(one, batch_method<R>()));
    EXPECT_FALSE(taken(several, batch_method<R>()));
    EXPECT_FALSE(taken(two, batch_method<R>()));
    EXPECT_FALSE(taken(one, "bkd_as2s_1_m"));
    EXPECT_FALSE(taken(two, "bkd_as2s_1_m"));
    EXPECT_FALSE(taken(one, "bkd_as2s_n_m"));
    EXPECT_FALSE(taken(several, "bkd_as2s_n_m"));
}

TYPED_TEST(Split, method_that_finds_none_for_a_part_leaves_nothing_in_force)
{
    using R = TypeParam;
    for (const auto& [shape, name] : {std::pair{Shape{{{6, 1, 1}}, {{3, 8, 8}, {2, 30, 30}}}, "bkd_as2s_1_m"},
                                      {Shape{{{6, 1, 1}, {4, 6, 6}}, {{3, 24, 24}}}, "bkd_as2s_n_m"}}) {
        SplitNode<R> node(shape, true, {name});
        EXPECT_EQ(node.commit(), node_inconsistent);
        EXPECT_FALSE(node.committed());
        EXPECT_EQ(node->method, nullptr);
        EXPECT_EQ(node->method_data, nullptr);
    }
}

TYPED_TEST(Split, children_stay_from_one_commit_to_the_next_and_go_with_what_they_are_for)
{
    using R = TypeParam;
    ProbeScope probe;
    {
        const Shape shape{{{4, 1, 1}, {3, 4, 4}, {5, 12, 12}}, {{2, 60, 60}}};
        SplitNode<R> node(shape, true, all_methods<R>());
        const i64 before = probe->live;
        ASSERT_EQ(node.commit(), node_ok);
        const i64 live = probe->live;
        const void* const data = node->method_data;
        node->forward_scale = 0.5;
        ASSERT_EQ(node.commit(), node_ok);
        EXPECT_EQ(probe->live, live);
        EXPECT_EQ(node->method_data, data);
        expect_definition(node, shape, 0.5);

        node->lengths.dims[2].n = 1; // one dimension less, and one more again
        ASSERT_EQ(node.commit(), node_ok);
        EXPECT_LT(probe->live, live);
        expect_definition(node, {{{4, 1, 1}, {3, 4, 4}}, {{2, 60, 60}}}, 0.5);
        node->lengths.dims[2].n = 5;
        ASSERT_EQ(node.commit(), node_ok);
        expect_definition(node, shape, 0.5);

        const DftiMethod *const other = method("bkd_as2s_1_m"), *const m = method("bkd_as2s_n_m");
        EXPECT_EQ(other->detach(other, node.get()), node_internal_error);
        EXPECT_TRUE(node.committed());
        EXPECT_EQ(m->detach(m, node.get()), node_ok);
        EXPECT_FALSE(node.committed());
        EXPECT_EQ(node->method, nullptr);
        EXPECT_EQ(node->method_data, nullptr);
        EXPECT_LE(probe->live, before + 2); // tensors may have grown
    }
    EXPECT_EQ(probe->live, 0);
}

TYPED_TEST(Split, nothing_is_left_behind_or_written_without_memory)
{
    using R = TypeParam;
    for (const Shape& shape : {Shape{{{20, 3, 3}}, {{5, 80, 80}}}, Shape{{{20, 3, 3}}, {{2, 1, 1}, {5, 80, 80}}},
                               Shape{{{4, 2, 2}, {20, 8, 8}}, {{5, 160, 160}}}}) {
        SplitNode<R> node(shape, true, all_methods<R>());
        ASSERT_EQ(node.commit(), node_ok); // so the tensors have grown
        node->uncommit(node.get());
        expect_commit_to_survive_without_memory(node);
        ProbeScope probe;
        probe->fail_all = true;
        SplitArrays<R> x(shape, &IotensorDim::is), kept(shape, &IotensorDim::is);
        x.fill(shape), kept.fill(shape);
        EXPECT_EQ(node.run(true, x.re.data(), x.im.data()), node_no_memory);
        EXPECT_TRUE(same_bits(x.re.data(), kept.re.data(), static_cast<i64>(x.re.size())));
    }
}

} // namespace
} // namespace orv::test
