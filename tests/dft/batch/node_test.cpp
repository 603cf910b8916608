// All columns of a node by its plans: which plans, in which order, the scale, and the end of the plans.
#include "frame/serv.h"
#include "tests/dft/batch/batch.h"

namespace orv::test {
namespace {

// A node as commit leaves it: plans of n points that are stride apart, for widths of 2^k, k in ks.
template <class R> struct Batched {
    DftiNode node{};
    BatchPlans* plans;
    const DftiMethod method{nullptr, primitive<BatchDetach>(sizeof(R) == 4 ? "batchfft_free_c" : "batchfft_free_z")};

    Batched(i64 n, i64 stride, i64 widest, const std::vector<int>& ks)
        : plans(static_cast<BatchPlans*>(orv_serv_malloc(sizeof(BatchPlans), 256)))
    {
        *plans = {0, widest, {}, {}};
        for (const int k : ks)
            for (const bool forward : {true, false}) {
                const BatchName<R> name{forward, "IT"};
                const i64 columns = i64{1} << k;
                plans->thread_bytes = std::max(plans->thread_bytes, name.size("GetThreadSize", n, columns, stride));
                EXPECT_EQ(name.template entry<BatchInitAlloc>("InitAlloc")(
                              &(forward ? plans->forward : plans->inverse)[k], n, 1, columns, stride, 1),
                          0);
            }
        node.method = &method;
        node.method_data = plans;
        node.length = n;
        node.placement = CFG_IN_PLACE;
        node.input_stride = stride;
        node.output_stride = -1;
        node.committed_forward_scale = node.committed_backward_scale = 1;
    }
    ~Batched()
    {
        if (node.method_data != nullptr) detach();
    }
    i32 detach() { return method.detach(&method, &node); }
    i32 run(bool forward, cpx<R>* data, i64 count)
    {
        const std::string name = std::string("xbatchfft_") + (forward ? "fwd_" : "inv_") + token<cpx<R>>();
        return primitive<BatchAll<cpx<R>>>(name)(data, nullptr, &node, &count);
    }
};

// Each column alone, times a scale.
template <class R>
void transform_singly(bool forward, std::vector<cpx<R>>& data, i64 n, i64 stride, i64 count, R scale = 1)
{
    const BatchPlanOf<R> plan({forward, "IT"}, n, 1, stride);
    for (i64 c = 0; c < count; ++c) {
        ASSERT_EQ(plan.run(nullptr, data.data() + c), 0);
        for (i64 j = 0; j < n; ++j) data[j * stride + c] = scale * data[j * stride + c];
    }
}

TEST(BatchOfNode, transforms_all_columns_in_place)
{
    both_types([]<class R>() {
        for (const bool forward : {true, false})
            for (const i64 count : {1, 2, 3, 5, 8, 21, 40}) {
                const i64 n = 60, stride = 41;
                Batched<R> batched(n, stride, 8, {0, 1, 2, 3});
                auto data = random_array<cpx<R>>(n * stride, 1), expected = data;
                EXPECT_EQ(batched.run(forward, data.data(), count), 0);
                transform_singly<R>(forward, expected, n, stride, count);
                EXPECT_TRUE(same_bits(data.data(), expected.data(), n * stride)) << count;
            }
    });
}

// Columns 5 are 4 and 1: plans of other widths are not asked for.
TEST(BatchOfNode, takes_the_widest_that_fits_first)
{
    both_types([]<class R>() {
        std::vector<cpx<R>> data(7 * 64);
        EXPECT_EQ((Batched<R>(7, 64, 8, {0, 2}).run(true, data.data(), 5)), 0);
        EXPECT_EQ((Batched<R>(7, 64, 9, {0, 1, 3}).run(true, data.data(), 27)), 0); // 3 of 8, then 2 and 1
        EXPECT_EQ((Batched<R>(7, 64, 8, {0, 1, 2}).run(true, data.data(), 7)), 0);  // not 8
        EXPECT_EQ((Batched<R>(7, 64, 8, {3}).run(true, data.data(), 64)), 0);
        EXPECT_EQ((Batched<R>(7, 64, 8, {0, 1}).run(true, data.data(), 5)), 3) << "there is none of 4";
        EXPECT_EQ((Batched<R>(7, 64, 8, {}).run(true, data.data(), 0)), 0);
        EXPECT_EQ((Batched<R>(2, 4096, 4096, {12}).run(true, std::vector<cpx<R>>(8192).data(), 4096)), 0);
    });
}

TEST(BatchOfNode, multiplies_by_a_scale_that_is_not_one_at_the_stride_of_the_elements)
{
    both_types([]<class R>() {
        for (const bool forward : {true, false})
            for (const bool in_place : {true, false}) {
                const i64 n = 10, stride = 9, count = 7;
                Batched<R> batched(n, stride, 4, {0, 1, 2});
                (forward ? batched.node.committed_forward_scale : batched.node.committed_backward_scale) = 0.25;
                if (!in_place) {
                    batched.node.placement = CFG_OUT_OF_PLACE;
                    std::swap(batched.node.input_stride, batched.node.output_stride);
                }
                auto data = random_array<cpx<R>>(n * stride, 2), expected = data;
                EXPECT_EQ(batched.run(forward, data.data(), count), 0);
                transform_singly<R>(forward, expected, n, stride, count, R(0.25));
                EXPECT_TRUE(same_bits(data.data(), expected.data(), n * stride));
            }
    });
}

TEST(BatchOfNode, asks_for_one_buffer_and_gives_it_back_on_every_way)
{
    both_types([]<class R>() {
        const i64 n = 100, stride = 16;
        Batched<R> batched(n, stride, 8, {3});
        auto data = random_array<cpx<R>>(n * stride, 3);
        const auto before = data;
        ProbeScope probe;
        probe->fail_at = 0;
        EXPECT_EQ(batched.run(true, data.data(), 16), 1);
        EXPECT_TRUE(same_bits(data.data(), before.data(), n * stride)) << "nothing is written without memory";
        probe->fail_at = -1;
        EXPECT_EQ(batched.run(true, data.data(), 16), 0);
        EXPECT_EQ(batched.run(true, data.data(), 4), 3) << "no plan so narrow";
        EXPECT_EQ(probe->asked_bytes, (std::vector<i64>(3, batched.plans->thread_bytes)));
        EXPECT_EQ(probe->live, 0);
    });
}

TEST(BatchOfNode, ends_with_all_of_its_plans)
{
    both_types([]<class R>() {
        ProbeScope probe;
        Batched<R> batched(12, 4, 4, {0, 2});
        EXPECT_GE(probe->live, 4);
        EXPECT_EQ(batched.detach(), 0);
        EXPECT_EQ(probe->live, 0);
        EXPECT_TRUE(batched.node.method == nullptr && batched.node.method_data == nullptr);
        EXPECT_EQ(batched.detach(), 0) << "of no plans";
    });
}

} // namespace
} // namespace orv::test
