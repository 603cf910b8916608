// Entries and routes: which way a call goes, what it asks memory for, and what failures leave behind.
#include "tests/dft/compute/trial.h"

#include <utility>

namespace orv::test {
namespace {

// What the last replaced kernel or routine was called with.
struct Seen {
    int calls = 0, fails_at = -1;
    void *input = nullptr, *output = nullptr, *work = nullptr;
    const i64 *strides0 = nullptr, *strides1 = nullptr;
} seen;
i32 recording_kernel(void* input, void* output, DftiNode*, void* work)
{
    seen.input = input, seen.output = output, seen.work = work;
    return seen.calls++ == seen.fails_at ? node_internal_error : node_ok;
}
i32 recording_plane(void* data, const i64* strides0, const i64* strides1, DftiKernel*, DftiKernel*, DftiNode*, void*)
{
    seen = {1, -1, data, data, nullptr, strides0, strides1};
    return node_ok;
}

TEST(Entry, calls_the_kernel_of_a_plain_row_with_offsets_added_and_a_page_of_work_memory)
{
    Trial<double> trial(of_pairs({1000}, 1, 0, 7), 1);
    ASSERT_EQ(trial.commit_for(1), node_ok);
    ASSERT_EQ(trial.node()->flags & DftiNode::direct_1d, DftiNode::direct_1d);
    trial.node()->kernel_d_forward = recording_kernel;
    trial.node()->max_buffer_bytes = 5000;
    trial.fill();
    seen = {};
    ProbeScope probe;
    EXPECT_EQ(trial.compute(), node_ok);
    EXPECT_EQ(seen.calls, 1);
    EXPECT_EQ(seen.input, static_cast<cpx<double>*>(trial.pointers()[0]) + 7);
    EXPECT_EQ(seen.output, seen.input);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(seen.work) % 4096, 0u);
    EXPECT_EQ(probe->asked_bytes, (std::vector<i64>{5000}));
    EXPECT_EQ(probe->asked_alignments, (std::vector<i64>{4096}));
    EXPECT_EQ(probe->live, 0);
}

TEST(Entry, calls_the_routine_of_one_plane_with_the_strides_of_both_dimensions)
{
    Trial<float> trial(of_pairs({70, 60}, 1, 2, 3), 1);
    ASSERT_EQ(trial.commit_for(1), node_ok);
    DftiNode* const node = trial.node().get();
    ASSERT_EQ(node->flags & DftiNode::direct_2d, DftiNode::direct_2d);
    node->kernel_2d_forward = recording_plane;
    trial.fill();
    EXPECT_EQ(trial.compute(), node_ok);
    EXPECT_EQ(seen.input, static_cast<cpx<float>*>(trial.pointers()[0]) + 3);
    EXPECT_EQ(seen.strides0, &node->input_stride);
    EXPECT_EQ(seen.strides1, &node->next->input_stride);
}

TEST(Entry, goes_to_a_threaded_transform_of_one_dimension_only_with_its_data)
{
    Trial<double> trial(of_pairs({64}), 1);
    ASSERT_EQ(trial.commit_for(1), node_ok);
    DftiNode* const node = trial.node().get();
    node->flags &= ~DftiNode::direct_1d;
    node->effective_threads = 2;
    node->threaded_forward_d = recording_kernel;
    trial.fill();
    seen = {};
    EXPECT_EQ(trial.compute(), node_internal_error);
    EXPECT_EQ(seen.calls, 0);
    int data;
    node->via2d_data = &data;
    EXPECT_EQ(trial.compute(), node_ok);
    EXPECT_EQ(seen.calls, 1);
    node->via2d_data = nullptr;
}

TEST(Entry, asks_for_nothing_but_the_work_area_where_rows_are_dense)
{
    Trial<double> trial(of_pairs({100}, 9), 1);
    ASSERT_EQ(trial.commit_for(1), node_ok);
    trial.fill();
    ProbeScope probe;
    EXPECT_EQ(trial.compute(), node_ok);
    EXPECT_EQ(probe->allocations, trial.node()->max_buffer_bytes > 0 ? 1 : 0);
}

TEST(Entry, takes_elements_of_a_batch_side_by_side_by_blocks_but_not_those_of_length_1)
{
    for (const i64 n : {1, 90}) {
        Problem p = of_pairs({n}, 40);
        p.signal.strides = {40}, p.signal.distance = 1, p.spectrum = p.signal;
        Trial<double> trial(p, 2);
        ASSERT_EQ(trial.commit_for(1), node_ok);
        trial.fill();
        ProbeScope probe;
        EXPECT_EQ(trial.compute(), node_ok);
        const i64 block = n == 1 ? 1 : 8;
        EXPECT_NE(std::find(probe->asked_bytes.begin(), probe->asked_bytes.end(), block * n * 16),
                  probe->asked_bytes.end());
        trial.expect_right();
    }
}

// Rows of small planes go on in the next plane, so a block has more of them than one plane.
i32 kernel_that_minds_its_row(void*, void* output, DftiNode* node, void*)
{
    const bool real = node->forward_domain == CFG_DOMAIN_REAL;
    const i64 row = (real ? 2 * (node->length / 2 + 1) : 2 * node->length) * static_cast<i64>(sizeof(double));
    const auto at = static_cast<char*>(output) - static_cast<char*>(probe().living.back());
    EXPECT_TRUE(0 <= at && at + row <= probe().asked_bytes.back()) << at << '+' << row;
    ++seen.calls;
    return node_ok;
}
TEST(Entry, stages_rows_of_small_planes_where_there_is_room_for_them)
{
    Problem pairs = of_pairs({4, 6, 2});
    pairs.signal.strides = {3, 12, 72}, pairs.spectrum = pairs.signal;
    Problem reals = of_reals(Storage::half, true, false, {8, 2, 2});
    reals.signal.strides = {3, 24, 48}, reals.spectrum.strides = {3, 15, 30};
    for (const Problem& p : {pairs, reals}) {
        Trial<double> trial(p, 9);
        ASSERT_EQ(trial.commit_for(1), node_ok) << p.line();
        DftiNode* const node = trial.node().get();
        node->kernel_d_forward = node->kernel_rd_forward = kernel_that_minds_its_row;
        trial.fill();
        seen = {};
        ProbeScope probe;
        EXPECT_EQ(trial.compute(), node_ok) << p.line();
        EXPECT_EQ(seen.calls, p.lengths[1] * p.lengths[2]) << p.line();
    }
}

// All ways that take memory, and more than one transform each.
std::vector<Problem> problems_of_every_route()
{
    std::vector<Problem> all{of_pairs({66}, 3, 1), of_pairs({9, 70}, 2, 1), of_pairs({6, 5, 7}, 2), of_pairs({66}, 5)};
    all.push_back(of_pairs({66}, 5)); // side by side
    all.back().signal.strides = {5}, all.back().signal.distance = 1, all.back().spectrum = all.back().signal;
    all.push_back(of_pairs({6, 7}, 5));
    all.back().signal.strides = {5, 30}, all.back().signal.distance = 1, all.back().spectrum = all.back().signal;
    all.push_back(of_pairs({66}, 2));
    all.back().storage = Storage::split, all.back().signal.strides = {2}, all.back().signal.distance = 140;
    all.back().spectrum = all.back().signal;
    for (const bool forward : {true, false})
        for (const bool in_place : {true, false}) {
            for (const Storage storage : {Storage::half, Storage::CCS, Storage::PACK, Storage::PERM}) {
                all.push_back(of_reals(storage, forward, in_place, {66}, 2));
                all.push_back(of_reals(storage, forward, in_place, {10, 9}, 2));
            }
            all.push_back(of_reals(Storage::half, forward, in_place, {10, 9, 4}, 2));
        }
    return all;
}

TEST(Entry, without_memory_gives_1_keeps_none_and_computes_again_later)
{
    for (const Problem& p : problems_of_every_route())
        for (const i32 threads : {1, 2}) {
            Trial<double> trial(p, 3);
            ServicesScope services(trial.node());
            services->dynamic_threads = []() -> i32 { return 0; };
            ASSERT_EQ(trial.commit_for(threads), node_ok) << p.line();
            i32 status = -1;
            each_allocation_fails([&] { trial.fill(), status = trial.compute(); },
                                  [&] {
                                      // Without memory for a batch plan the columns go by blocks.
                                      if (probe().failed == 0 || status == node_ok) {
                                          EXPECT_EQ(status, node_ok) << p.line();
                                          trial.expect_right();
                                      } else EXPECT_EQ(status, node_no_memory) << p.line();
                                  });
        }
}

TEST(Entry, ends_with_the_status_of_a_failing_kernel_and_releases_what_it_took)
{
    for (const Problem& p : {of_pairs({66}, 3, 1), of_pairs({9, 11}, 2, 1), of_pairs({6, 5, 7}, 2)})
        for (const int call : {0, 1, 5}) {
            if (p.rank() == 1 && call >= p.count) continue;
            Trial<double> trial(p, 4);
            ASSERT_EQ(trial.commit_for(1), node_ok);
            std::vector<const DftiMethod*> plans; // of batches: they would not call the kernel
            for (DftiNode* node = trial.node().get(); node != nullptr; node = node->next) {
                plans.push_back(std::exchange(node->method, nullptr));
                node->kernel_d_forward = recording_kernel;
            }
            trial.fill();
            seen = {0, call};
            ProbeScope probe;
            EXPECT_EQ(trial.compute(), node_internal_error) << p.line();
            EXPECT_EQ(seen.calls, call + 1) << p.line();
            EXPECT_EQ(probe->live, 0) << p.line();
            auto plan = plans.begin();
            for (DftiNode* node = trial.node().get(); node != nullptr; node = node->next) node->method = *plan++;
        }
}

i32 negating_kernel(void* input, void* output, DftiNode* node, void*)
{
    for (int part = 0; part < 2; ++part)
        for (i64 i = 0; i < node->length; ++i)
            static_cast<double* const*>(output)[part][i] = -static_cast<double* const*>(input)[part][i];
    return node_internal_error;
}
TEST(Entry, puts_strided_parts_back_before_it_tells_of_a_failing_kernel)
{
    Problem p = of_pairs({5}, 2);
    p.storage = Storage::split, p.signal.strides = {3}, p.signal.distance = 16, p.spectrum = p.signal;
    Trial<double> trial(p, 5);
    ASSERT_EQ(trial.commit_for(1), node_ok);
    trial.node()->kernel_d_forward = negating_kernel;
    trial.fill();
    const std::vector<double> before = trial.result();
    EXPECT_EQ(trial.compute(), node_internal_error);
    const std::vector<double> after = trial.result();
    for (i64 i = 0; i < 5; ++i) EXPECT_EQ(after[3 * i], -before[3 * i]) << i;          // the first transform
    for (i64 i = 0; i < 5; ++i) EXPECT_EQ(after[16 + 3 * i], before[16 + 3 * i]) << i; // the second was not begun
}

TEST(Entry, refuses_two_arrays_of_more_than_one_dimension)
{
    for (const bool in_place : {true, false})
        for (const bool forward : {true, false}) {
            Problem p = of_pairs({6, 5});
            p.storage = Storage::split, p.in_place = in_place, p.forward = forward;
            Trial<float> trial(p, 6);
            ASSERT_EQ(trial.commit_for(1), node_ok);
            trial.fill();
            EXPECT_EQ(trial.compute(), node_unsupported);
        }
}

TEST(Entry, refuses_packed_reals_of_three_dimensions)
{
    Trial<double> trial(of_reals(Storage::half, true, false, {4, 4, 4}), 7);
    ASSERT_EQ(trial.commit_for(1), node_ok);
    trial.node()->conjugate_even_storage = CFG_STORE_PACKED;
    trial.fill();
    EXPECT_EQ(trial.compute(), node_unsupported);
}

TEST(RealPlane, in_place_takes_a_work_area_where_a_row_would_fall_on_another_rows_input)
{
    for (const bool forward : {true, false})
        for (const std::vector<i64>& lengths : {std::vector<i64>{9, 7}, {8, 5, 6}}) {
            Problem p = of_reals(Storage::half, forward, true, lengths);
            const std::vector<i64> spectrum = p.spectrum.strides;
            p.spectrum.strides =
                p.signal.strides; // pairs twice as far apart as reals: in ratio 2, but the other way round
            for (std::size_t k = 1; k < lengths.size(); ++k) p.spectrum.strides[k] = 2 * p.signal.strides[k];
            Trial<double> trial(p, 8);
            ASSERT_EQ(trial.run(1), node_ok) << p.line();
            trial.expect_right();
            const std::vector<double> alone = trial.result();
            ServicesScope services(trial.node());
            services->dynamic_threads = []() -> i32 { return 0; };
            ASSERT_EQ(trial.run(3), node_ok) << p.line();
            EXPECT_TRUE(same_bits(trial.result().data(), alone.data(), static_cast<i64>(alone.size()))) << p.line();
        }
}

} // namespace
} // namespace orv::test
