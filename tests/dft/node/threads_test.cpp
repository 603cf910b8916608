// How many threads a committed transform has, and when it needs no dispatch.
#include "tests/dft/node/node.h"

#include <optional>

namespace orv::test {
namespace {

i32 processor_count = 1;
i32 count_processors() { return processor_count; }

// A head of a chain, as the definition finds it.
struct Problem {
    const char* variant; // d_c2c_1d
    i64 total = 100, transforms = 1;
    i32 rank = 1;
    bool in_place = true;
    u32 dynamic = 1;
    i32 threads = 8, user_threads = 1;
    i64 input_stride = 1, output_stride = 1;
};
struct Defined {
    i32 threads;
    u32 flags;
    bool operator==(const Defined&) const = default;
};

Defined define(const Problem& p)
{
    const Node node = create_1d(p.variant[0], p.variant[2], 4);
    ServicesScope services(node);
    services->processors = count_processors;
    node->work_rank = p.rank, node->total_size = p.total, node->number_of_transforms = p.transforms;
    node->placement = p.in_place ? CFG_IN_PLACE : CFG_OUT_OF_PLACE;
    node->effective_threads = p.threads, node->number_of_user_threads = p.user_threads;
    node->input_stride = p.input_stride, node->output_stride = p.output_stride;
    node->flags = DftiNode::direct_1d | DftiNode::direct_2d | DftiNode::no_decomposition;
    const auto definition = std::string("threaded_mode_definition_") + p.variant;
    EXPECT_EQ(primitive<ThreadedModeDefinition>(definition)(node.get(), p.dynamic), 0);
    EXPECT_TRUE(node->flags & DftiNode::no_decomposition);
    return {node->effective_threads, u32(node->flags & (DftiNode::direct_1d | DftiNode::direct_2d))};
}
i32 threads_of(const Problem& p) { return define(p).threads; }

const char* const variants_1d[] = {"d_c2c_1d", "s_c2c_1d", "d_r2c_1d", "s_r2c_1d"};
const char* const variants_md[] = {"d_c2c_md", "s_c2c_md", "d_r2c_md", "s_r2c_md"};

TEST(Threads, are_not_for_one_transform_of_one_dimension)
{
    for (const char* v : {"d_c2c_1d", "s_r2c_1d", "d_c2c_md", "s_r2c_md"}) {
        EXPECT_EQ(threads_of({.variant = v, .total = 1 << 20, .dynamic = 0}), 1) << v;
        EXPECT_EQ(threads_of({.variant = v, .total = 1 << 20, .transforms = 2, .dynamic = 0}), 8) << v;
    }
    for (const char* v : variants_md)
        EXPECT_EQ(threads_of({.variant = v, .total = 1 << 20, .rank = 2, .dynamic = 0}), 8) << v;
}

TEST(Threads, stay_many_for_a_complex_transform_with_a_threaded_kernel)
{
    for (const char* v : {"d_c2c_1d", "s_c2c_md", "d_r2c_1d", "s_r2c_md"}) {
        const Node node = create_1d(v[0], v[2], 4);
        node->work_rank = 1, node->total_size = 1 << 20, node->effective_threads = 8;
        node->threaded_forward_d = node->threaded_forward_s = primitive<DftiKernel>("xymps_fwd_64fc");
        primitive<ThreadedModeDefinition>(std::string("threaded_mode_definition_") + v)(node.get(), 0);
        EXPECT_EQ(node->effective_threads, v[2] == 'c' ? 8 : 1) << v;
    }
}

TEST(Threads, are_left_to_a_user_with_several_of_his_own)
{
    for (const char* v : variants_md)
        EXPECT_EQ(threads_of({.variant = v, .total = 1 << 20, .rank = 2, .dynamic = 0, .user_threads = 2}), 1);
}

TEST(Threads, make_one_transform_without_strides_a_direct_call)
{
    for (const char* v : variants_1d) {
        EXPECT_EQ(define({.variant = v}), (Defined{1, DftiNode::direct_1d})) << v;
        EXPECT_EQ(define({.variant = v, .input_stride = 2}).flags, 0u);
        EXPECT_EQ(define({.variant = v, .output_stride = 2}).flags, 0u);
        EXPECT_EQ(define({.variant = v, .transforms = 2, .threads = 1}).flags, 0u);
        EXPECT_EQ(define({.variant = v, .rank = 2, .threads = 1}).flags, 0u) << "planes belong to the other forms";
    }
    for (const char* v : variants_md) {
        EXPECT_EQ(define({.variant = v}), (Defined{1, DftiNode::direct_1d})) << v;
        EXPECT_EQ(define({.variant = v, .rank = 2, .threads = 1}), (Defined{1, DftiNode::direct_2d})) << v;
        EXPECT_EQ(define({.variant = v, .rank = 2, .dynamic = 0, .threads = 2}), (Defined{2, 0})) << v;
        EXPECT_EQ(define({.variant = v, .transforms = 2, .rank = 2, .threads = 1}).flags, 0u) << v;
        EXPECT_EQ(define({.variant = v, .rank = 3, .threads = 1}).flags, 0u) << v;
    }
}

TEST(Threads, are_one_for_small_planes)
{
    processor_count = 1;
    const auto plane = [](const char* v, i64 total) {
        return threads_of({.variant = v, .total = total, .rank = 2}) == 1;
    };
    EXPECT_TRUE(plane("d_c2c_md", 624));
    EXPECT_FALSE(plane("d_c2c_md", 625));
    for (const char* v : {"s_c2c_md", "d_r2c_md", "s_r2c_md"}) {
        EXPECT_TRUE(plane(v, 1024)) << v;
        EXPECT_FALSE(plane(v, 2048)) << v;
        EXPECT_TRUE(plane(v, 342)) << v;
        EXPECT_FALSE(plane(v, 343)) << v;
    }
}

// What the formula says, in the words of the suggestion.
i32 by_work(double bytes, i32 passes)
{
    return static_cast<i32>(std::sqrt(bytes * std::log(bytes) / 313600.0) + 0.5) * passes;
}

TEST(Threads, grow_with_the_bytes_of_a_batch)
{
    const struct {
        const char* variant;
        double element;
    } kinds[] = {{"d_c2c_1d", 16}, {"s_c2c_1d", 8}, {"d_r2c_1d", 8}, {"s_r2c_1d", 4}};
    for (const auto& [v, element] : kinds)
        for (const i64 total : {1000, 5000, 20000, 100000, 1000000})
            for (const bool in_place : {true, false}) {
                const double bytes = element * static_cast<double>(total) * 3 * (in_place ? 1 : 2);
                const i32 wanted = by_work(bytes, 1);
                const i32 threads =
                    threads_of({.variant = v, .total = total, .transforms = 3, .in_place = in_place, .threads = 1000});
                ProbeScope cache; // small enough that it doesn't count
                cache->cache = std::vector<i32>{1, 1, 0, 1};
                const i32 without_cache =
                    threads_of({.variant = v, .total = total, .transforms = 3, .in_place = in_place, .threads = 1000});
                EXPECT_EQ(without_cache, wanted < 1 ? 1000 : wanted) << v << ' ' << total;
                EXPECT_LE(threads, without_cache);
            }
}

TEST(Threads, of_several_dimensions_count_a_pass_for_each)
{
    processor_count = 1;
    for (const i32 rank : {2, 3, 4}) {
        const double bytes = 16.0 * 1000000;
        EXPECT_EQ(threads_of({.variant = "d_c2c_md", .total = 1000000, .rank = rank, .threads = 10000}),
                  by_work(bytes, rank));
    }
}

TEST(Threads, are_all_processors_for_arrays_of_a_medium_size)
{
    const auto medium = [](i32 processors, i64 total) {
        processor_count = processors;
        return threads_of({.variant = "d_c2c_md", .total = total, .rank = 3, .threads = 100});
    };
    EXPECT_EQ(medium(4, 8191), 4);
    EXPECT_NE(medium(4, 8192), 4);
    EXPECT_EQ(medium(3, 31999), 3);
    EXPECT_NE(medium(3, 32000), 3);
    EXPECT_NE(medium(1, 8191), 1);
    EXPECT_EQ(medium(4, 343), 4);
    EXPECT_EQ(medium(4, 342), 1) << "too small";
}

TEST(Threads, are_one_for_batches_within_the_first_cache)
{
    const auto batch = [](std::optional<std::vector<i32>> entries, i64 total) {
        ProbeScope cache;
        cache->cache = std::move(entries);
        return threads_of({.variant = "d_c2c_1d", .total = total, .transforms = 2, .threads = 5});
    };
    const std::vector<i32> known{1, 32 * 100000, 0, 1 << 24}, unknown{0, 1 << 30, 0, 0};
    EXPECT_EQ(batch(known, 99999), 1);
    EXPECT_EQ(batch(known, 100000), 5);
    EXPECT_EQ(batch(unknown, 255), 1);
    EXPECT_EQ(batch(unknown, 256), 5);
}

TEST(Threads, are_no_more_than_suggested_only_if_that_is_wanted)
{
    EXPECT_EQ(threads_of({.variant = "d_c2c_md", .total = 100, .rank = 2, .dynamic = 0}), 8);
    EXPECT_EQ(threads_of({.variant = "d_c2c_md", .total = 100, .rank = 2, .dynamic = 1}), 1);
}

} // namespace
} // namespace orv::test
