// Whole transforms through the general path of commit, drawn from the cube of precision, domain, rank, placement,
// storage, packed format, strides, distances, batch and scale: each against the definition in quadruple precision, on
// one thread and on several.
#include "tests/dft/compute/trial.h"

namespace orv::test {
namespace {

i64 pick(Random& random, std::initializer_list<i64> values)
{
    return values.begin()[random.integer(0, static_cast<i64>(values.size()) - 1)];
}

// Dimensions and the batch in any order from the innermost on, with or without gaps.
Layout draw_layout(Random& random, const std::vector<i64>& shape, i64 count)
{
    Layout layout;
    layout.strides.resize(shape.size());
    std::vector<std::size_t> order(shape.size() + 1);
    for (std::size_t k = 0; k < order.size(); ++k) order[k] = k;
    const bool dense = random.integer(0, 1) == 0;
    if (!dense)
        for (std::size_t k = order.size() - 1; k > 0; --k)
            std::swap(order[k], order[random.integer(0, static_cast<i64>(k))]);
    i64 step = dense ? 1 : pick(random, {1, 1, 2, 3});
    for (const std::size_t k : order) {
        (k == shape.size() ? layout.distance : layout.strides[k]) = step;
        step = step * (k == shape.size() ? count : shape[k]) + (dense ? 0 : pick(random, {0, 0, 1, 2}));
    }
    layout.offset = pick(random, {0, 0, 1, 5});
    return layout;
}

std::vector<i64> draw_lengths(Random& random, int rank)
{
    std::vector<i64> lengths;
    const i64 longest = rank == 1 ? 70 : rank == 2 ? 36 : rank == 3 ? 10 : 5;
    for (int k = 0; k < rank; ++k)
        lengths.push_back(random.integer(0, 1) == 0 ? random.integer(1, longest)
                                                    : min(longest, pick(random, {1, 2, 3, 4, 8, 16, 32, 64})));
    if (rank == 2 && random.integer(0, 7) == 0) lengths[1] = random.integer(65, 90); // planned in batches
    return lengths;
}

Problem draw(Random& random, bool real)
{
    Problem p;
    p.real = real;
    p.forward = random.integer(0, 1) == 0;
    p.in_place = random.integer(0, 1) == 0;
    p.storage = Storage::pairs;
    int most = 4;
    if (real) {
        p.storage =
            std::array{Storage::half, Storage::half, Storage::CCS, Storage::PACK, Storage::PERM}[random.integer(0, 4)];
        if (p.storage != Storage::half) most = 2;
    } else if (random.integer(0, 5) == 0) p.storage = Storage::split, most = 1;
    p.lengths = draw_lengths(random, static_cast<int>(random.integer(1, most)));
    p.count = pick(random, {1, 1, 2, 3, 7});
    if (p.rank() == 1) p.count = pick(random, {1, 2, 5, 8, 17, 19});
    p.scale = std::array{1.0, 1.0, 0.3, 1.0 / static_cast<double>(p.points())}[random.integer(0, 3)];

    std::vector<i64> shape = p.lengths;
    if (p.packed())
        for (i64& n : shape) n = packed_row(p.storage, n);
    else if (real) shape[0] = p.lengths[0] / 2 + 1;
    // In place reals with a stride reach as far as so many pairs.
    std::vector<i64> room = shape;
    if (p.in_place && p.storage == Storage::half) room[0] = p.lengths[0];
    p.spectrum = draw_layout(random, random.integer(0, 1) == 0 ? shape : room, p.count);
    if (p.spectrum.strides[0] != 1) p.spectrum = draw_layout(random, room, p.count);
    p.signal = p.in_place ? p.spectrum : draw_layout(random, p.lengths, p.count);
    if (p.in_place && p.storage == Storage::half) {
        for (i64& stride : p.signal.strides) stride *= 2;
        if (p.spectrum.strides[0] == 1) p.signal.strides[0] = 1;
        p.signal.offset *= 2, p.signal.distance *= 2;
    }
    return p;
}

// The dimensions whose columns go by plans of batches.
std::vector<bool> planned(const Node& node)
{
    std::vector<bool> all;
    for (const DftiNode* n = node.get(); n != nullptr; n = n->next) all.push_back(n->method != nullptr);
    return all;
}

template <class R> void expect_problem(const Problem& p, std::uint64_t stream)
{
    Trial<R> trial(p, stream);
    ServicesScope services(trial.node());
    services->dynamic_threads = []() -> i32 { return 0; }; // small work, too, is for as many as are allowed
    ASSERT_EQ(trial.run(1), node_ok) << p.line();
    trial.expect_right();
    const std::vector<R> alone = trial.result();
    const std::vector<bool> planned_alone = planned(trial.node());
    for (const i32 threads : {2, 3, 5}) {
        ASSERT_EQ(trial.run(threads), node_ok) << p.line();
        // Which columns are planned in batches depends on the threads; only with the same plans the bits are the same.
        if (planned(trial.node()) != planned_alone) {
            trial.expect_right();
            continue;
        }
        const std::vector<R> shared = trial.result();
        ASSERT_TRUE(same_bits(shared.data(), alone.data(), static_cast<i64>(alone.size())))
            << p.line() << " threads=" << threads;
    }
}

template <class R> void expect_problems(int how_many, bool real, std::uint64_t stream)
{
    Random random(stream);
    for (int i = 0; i < how_many && !testing::Test::HasFailure(); ++i) expect_problem<R>(draw(random, real), i);
}

template <class R> class WholeTransform : public testing::Test {
};
template <class R> class WholeTransformFull : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(WholeTransform, Reals);
TYPED_TEST_SUITE(WholeTransformFull, Reals);

TYPED_TEST(WholeTransform, of_complex_numbers_is_the_definition_for_any_layout_and_any_number_of_threads)
{
    expect_problems<TypeParam>(60, false, 1501);
}
TYPED_TEST(WholeTransform, of_reals_is_the_definition_for_any_layout_and_any_number_of_threads)
{
    expect_problems<TypeParam>(60, true, 1502);
}
TYPED_TEST(WholeTransformFull, of_complex_numbers_is_the_definition_for_many_layouts)
{
    expect_problems<TypeParam>(250, false, 1503);
}
TYPED_TEST(WholeTransformFull, of_reals_is_the_definition_for_many_layouts)
{
    expect_problems<TypeParam>(250, true, 1504);
}

} // namespace
} // namespace orv::test
