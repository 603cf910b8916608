// Columns that go by a plan of their node: of every shape of plan, against the definition; and what of them does not
// show in a result.
#include "tests/dft/compute/trial.h"

#include <utility>

namespace orv::test {
namespace {

template <class R> class PlannedColumns : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(PlannedColumns, Reals);

template <class R> void expect_definition(const Problem& p)
{
    Trial<R> trial(p, 1601);
    ASSERT_EQ(trial.run(1), node_ok) << p.line();
    ASSERT_NE(trial.node()->next->buffer0, nullptr) << p.line();
    trial.expect_right();
}

TYPED_TEST(PlannedColumns, are_the_definition_for_every_way_to_divide_a_length)
{
    for (const i64 n : {16, 20, 32, 60, 64, 100, 128, 143})
        for (const bool forward : {true, false})
            for (const bool in_place : {true, false}) {
                expect_definition<TypeParam>(of_reals(Storage::half, forward, in_place, {4, n}));
                Problem p = of_pairs({3, n});
                p.forward = forward, p.in_place = in_place;
                // Some of these the batches of commit take.
                if ((n & (n - 1)) == 0) expect_definition<TypeParam>(p);
                if (testing::Test::HasFailure()) return;
            }
}

// The same by the kernel of rows, which other tests know.
TYPED_TEST(PlannedColumns, of_many_points_are_what_the_kernel_makes_of_them)
{
    using R = TypeParam;
    Random random(1605);
    for (const i64 n : {250, 256, 500, 512, 1000, 1024, 1331, 2048})
        for (const bool forward : {true, false}) {
            const i64 width = 5;
            const Node node = create_md(precision_letter<R>, 'r', {2 * width - 2, n});
            node->conjugate_even_storage = CFG_STORE_COMPLEX, node->packed_format = CFG_CCE;
            const std::vector<i64> reals{1, 2 * width}, pairs{1, width};
            set_strides(node, forward ? reals : pairs, forward ? pairs : reals);
            ASSERT_EQ(commit(node), node_ok);
            ASSERT_NE(node->next->buffer0, nullptr) << "n=" << n;
            std::vector<R> planned(static_cast<std::size_t>(2 * width * n));
            for (R& value : planned) value = random.value<R>();
            for (i64 j = 0; j < n; ++j) planned[2 * width * j + 1] = planned[2 * width * j + 2 * width - 1] = 0;
            std::vector<R> staged = planned;
            DftiCompute* const run = forward ? node->compute_forward : node->compute_backward;
            EXPECT_EQ(run(node.get(), planned.data(), nullptr, nullptr, nullptr), node_ok);
            void* const plan = std::exchange(node->next->buffer0, nullptr);
            EXPECT_EQ(run(node.get(), staged.data(), nullptr, nullptr, nullptr), node_ok);
            node->next->buffer0 = plan;
            double error = 0, size = 0;
            for (std::size_t i = 0; i < planned.size(); ++i) {
                const double difference = double(planned[i]) - double(staged[i]);
                error += difference * difference, size += double(staged[i]) * double(staged[i]);
            }
            const auto bound = 2 * static_cast<double>(allowed_error<R>({2 * width - 2, n}));
            EXPECT_GT(size, 0);
            EXPECT_LE(error, bound * bound * size) << "n=" << n << " forward=" << forward;
        }
}

TYPED_TEST(PlannedColumns, are_the_definition_in_several_parts_and_at_any_pitch_of_rows)
{
    for (const i64 width : {33, 65, 70}) expect_definition<TypeParam>(of_pairs({width, 16}));
    for (const i64 n : {16, 32})
        for (const i64 pitch : {11, 128, 256, 512}) {
            Problem p = of_pairs({9, n});
            p.signal.strides[1] = pitch, p.signal.distance = n * pitch, p.spectrum = p.signal;
            expect_definition<TypeParam>(p);
        }
    for (const i64 apart : {2, 3}) {
        Problem p = of_pairs({9, 20});
        p.signal.strides = {apart, 9 * apart}, p.spectrum = p.signal;
        expect_definition<TypeParam>(p);
    }
    // Packed rows of an odd length have pairs between reals.
    for (const Storage storage : {Storage::CCS, Storage::PERM})
        for (const bool forward : {true, false})
            for (const i64 width : {6, 7}) expect_definition<TypeParam>(of_reals(storage, forward, false, {width, 20}));
}

TYPED_TEST(PlannedColumns, do_not_depend_on_the_columns_beside_them)
{
    using R = TypeParam;
    const i64 n = 32;
    std::vector<std::vector<R>> columns;
    for (const i64 width : {2, 3, 33, 67}) {
        const Problem p = of_pairs({width, n});
        Trial<R> trial(p, 1602);
        ASSERT_EQ(trial.commit_for(1), node_ok);
        trial.fill();
        auto* const data = static_cast<R*>(trial.pointers()[0]);
        for (i64 j = 0; j < n; ++j) // of a row that is the same everywhere the transform stands in column 0
            for (i64 c = 0; c < 2 * width; ++c) data[2 * j * width + c] = c < 2 ? static_cast<R>(j * j % 17) : R(0);
        ASSERT_EQ(trial.compute(), node_ok);
        std::vector<R> column;
        for (i64 j = 0; j < n; ++j) column.push_back(data[2 * j * width]), column.push_back(data[2 * j * width + 1]);
        columns.push_back(column);
        // The last one has what its row had, a number and nothing else.
        for (i64 j = 0; j < 2 * n; ++j) {
            const R last = data[2 * (j / 2) * width + 2 * (width - 1) + j % 2];
            ASSERT_EQ(last, column[static_cast<std::size_t>(j)]) << "width=" << width << " j=" << j;
        }
    }
    for (const auto& column : columns) EXPECT_EQ(column, columns[0]);
}

// Element beside element, which one thread goes through by elements, and several by transforms.
Problem interleaved()
{
    Problem p = of_pairs({16, 26}, 2);
    p.in_place = false;
    p.signal.strides = {2, 32}, p.signal.distance = 1;
    return p;
}

TYPED_TEST(PlannedColumns, have_the_same_bits_on_any_number_of_threads)
{
    using R = TypeParam;
    for (const Problem& p : {of_pairs({35, 32}), of_pairs({13, 32, 4}), of_reals(Storage::half, true, false, {67, 24}),
                             of_reals(Storage::half, false, false, {67, 24}),
                             of_reals(Storage::half, true, true, {20, 3, 18}), interleaved()}) {
        Trial<R> trial(p, 1603);
        ServicesScope services(trial.node());
        services->dynamic_threads = []() -> i32 { return 0; };
        ASSERT_EQ(trial.run(1), node_ok);
        const std::vector<R> alone = trial.result();
        for (const i32 threads : {2, 3, 5}) {
            ASSERT_EQ(trial.run(threads), node_ok);
            const std::vector<R> shared = trial.result();
            EXPECT_TRUE(same_bits(shared.data(), alone.data(), static_cast<i64>(alone.size())))
                << p.line() << " threads=" << threads;
        }
    }
}

int calls;
i32 counting_kernel(void*, void*, DftiNode*, void*) { return ++calls, node_ok; }

TEST(PlannedColumn, is_left_to_a_kernel_that_does_something_else)
{
    Trial<double> trial(of_pairs({12, 64}), 1604);
    ASSERT_EQ(trial.commit_for(1), node_ok);
    trial.node()->next->kernel_d_forward = counting_kernel;
    trial.fill();
    calls = 0;
    EXPECT_EQ(trial.compute(), node_ok);
    EXPECT_EQ(calls, 12);
}

TEST(PlannedColumn, has_no_plan_along_the_first_dimension_or_out_of_order_and_loses_it_with_the_commit)
{
    ProbeScope memory;
    {
        const Node node = create_md('d', 'c', {64, 64});
        node->flags |= DftiNode::no_decomposition;
        ASSERT_EQ(commit(node), node_ok);
        EXPECT_EQ(node->buffer0, nullptr);
        EXPECT_NE(node->next->buffer0, nullptr);
        node->ordering = 49;
        ASSERT_EQ(commit(node), node_ok);
        EXPECT_EQ(node->next->buffer0, nullptr);
    }
    EXPECT_EQ(memory->live, 0);
}

} // namespace
} // namespace orv::test
