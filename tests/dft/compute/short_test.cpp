// Many lines of a few points, every length of them, and of products of small factors: dense rows and neighbouring
// columns, against the definition, and that a line's bits do not depend on how many lines there are.
#include "tests/dft/compute/trial.h"

namespace orv::test {
namespace {

template <class R> class ShortLines : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(ShortLines, Reals);

constexpr i64 longest = 18;
const std::vector<i64> counts{2, 3, 4, 5, 7};
std::vector<i64> lengths()
{
    std::vector<i64> all{31, 32, 33};
    for (i64 n = 1; n <= longest; ++n) all.push_back(n);
    return all;
}

// Products whose factors come together in every way: of two and of more, as many at the end as are one pass.
std::vector<i64> products()
{
    return {18, 20, 21, 22, 24, 25, 26, 27, 30, 33, 36, 39, 40, 45, 48, 49, 50, 54, 63, 65, 70, 72, 75, 84, 98, 100};
}
std::vector<i64> twice(std::vector<i64> all)
{
    for (i64& n : all) n *= 2;
    return all;
}

// Lines one behind the other, or element beside element.
Layout lay_out(bool rows, i64 n, i64 count) { return rows ? Layout{{1}, 0, n} : Layout{{count}, 0, 1}; }

template <class R>
void expect_lines(Problem p, bool rows, const std::vector<i64>& lengths, const std::vector<i64>& counts)
{
    for (const i64 n : lengths)
        for (const i64 count : counts)
            for (const bool forward : {true, false})
                for (const bool in_place : {true, false}) {
                    const i64 stored = p.storage == Storage::pairs  ? n
                                       : p.storage == Storage::half ? n / 2 + 1
                                                                    : packed_row(p.storage, n);
                    p.lengths = {n}, p.count = count, p.forward = forward, p.in_place = in_place;
                    p.spectrum = lay_out(rows, stored, count);
                    p.signal = lay_out(rows, n, count);
                    if (in_place && p.real) {
                        if (!rows) continue; // there reals and pairs are apart
                        p.signal.distance = p.storage == Storage::half ? 2 * stored : stored;
                    }
                    Trial<R> trial(p, static_cast<std::uint64_t>(n));
                    ASSERT_EQ(trial.run(1), node_ok) << p.line();
                    trial.expect_right();
                    if (testing::Test::HasFailure()) return;
                }
}

TYPED_TEST(ShortLines, of_pairs_are_the_definition_as_rows_and_as_columns)
{
    for (const bool rows : {true, false}) expect_lines<TypeParam>({}, rows, lengths(), counts);
}

TYPED_TEST(ShortLines, of_reals_are_the_definition_in_every_storage)
{
    Problem p;
    p.real = true;
    for (const Storage storage : {Storage::half, Storage::CCS, Storage::PACK, Storage::PERM})
        for (const bool rows : {true, false}) {
            p.storage = storage;
            expect_lines<TypeParam>(p, rows, lengths(), counts);
        }
}

TYPED_TEST(ShortLines, of_products_are_the_definition_as_rows_and_as_columns)
{
    for (const bool rows : {true, false}) expect_lines<TypeParam>({}, rows, products(), {3});
    expect_lines<TypeParam>({}, true, {121, 143, 225, 500, 504}, {2});
}

TYPED_TEST(ShortLines, of_twice_as_many_reals_are_the_definition_in_every_storage)
{
    Problem p;
    p.real = true;
    for (const Storage storage : {Storage::half, Storage::CCS, Storage::PACK, Storage::PERM}) {
        p.storage = storage;
        expect_lines<TypeParam>(p, true, twice(products()), {3});
        expect_lines<TypeParam>(p, true, {60}, {9});
        expect_lines<TypeParam>(p, false, {60}, {9});
    }
}

TYPED_TEST(ShortLines, of_reals_in_place_clear_what_the_longer_spectrum_leaves_behind)
{
    using R = TypeParam;
    for (const i64 n : {4, 6, 15, 60}) {
        Problem p;
        const i64 stored = packed_row(Storage::CCS, n), count = 5;
        p.real = true, p.forward = false, p.storage = Storage::CCS, p.lengths = {n}, p.count = count;
        p.signal = p.spectrum = lay_out(true, stored, count);
        Trial<R> trial(p, 3);
        ASSERT_EQ(trial.run(1), node_ok);
        const std::vector<R> result = trial.result();
        for (i64 row = 0; row < count; ++row) EXPECT_EQ(result[row * stored + n], R(0)) << "n=" << n << " row=" << row;
    }
}

// Lines by name, with their places told, in one call and in a call each.
template <class In, class Out>
void expect_lines_by_themselves(const std::string& name, DftiKernel* kernel, DftiNode* node, i64 n_in, i64 n_out)
{
    constexpr i64 count = 7;
    auto* const lines = primitive<DftCopyAndTransformOut<In, Out>>(name);
    const auto input = random_array<In>(n_in * count, 5);
    std::vector<Out> together(static_cast<std::size_t>(n_out * count)), alone = together;
    ASSERT_EQ(lines(input.data(), 1, together.data(), 1, kernel, node, count, n_in, n_out, nullptr, 0, nullptr),
              node_ok);
    for (i64 j = 0; j < count; ++j)
        ASSERT_EQ(lines(input.data() + j * n_in, 1, alone.data() + j * n_out, 1, kernel, node, 1, n_in, n_out, nullptr,
                        0, nullptr),
                  node_ok);
    EXPECT_TRUE(same_bits(together.data(), alone.data(), n_out * count)) << name << " n=" << node->length;
}

// As pairs, and n reals.
template <class R> void expect_lines_by_themselves(i64 n)
{
    using T = cpx<R>;
    const bool single = sizeof(R) == 4;
    const Node pairs = create_1d(precision_letter<R>, 'c', n);
    pairs->flags |= DftiNode::no_decomposition;
    set_batch(pairs, 2, n, n);
    ASSERT_EQ(commit(pairs), node_ok);
    DftiKernel* const of_pairs = single ? pairs->kernel_s_forward : pairs->kernel_d_forward;
    expect_lines_by_themselves<T, T>(single ? "xcdft1d_out_copy" : "xzdft1d_out_copy", of_pairs, pairs.get(), n, n);

    const Node reals = create_1d(precision_letter<R>, 'r', n);
    reals->placement = CFG_OUT_OF_PLACE;
    reals->conjugate_even_storage = CFG_STORE_COMPLEX;
    set_batch(reals, 2, n, n / 2 + 1);
    ASSERT_EQ(commit(reals), node_ok);
    const std::string there = single ? "xscdft1d_out_copy" : "xdzdft1d_out_copy";
    const std::string back = single ? "xcsdft1d_out_copy" : "xzddft1d_out_copy";
    expect_lines_by_themselves<R, T>(there, single ? reals->kernel_rs_forward : reals->kernel_rd_forward, reals.get(),
                                     n, n / 2 + 1);
    expect_lines_by_themselves<T, R>(back, single ? reals->kernel_rs_backward : reals->kernel_rd_backward, reals.get(),
                                     n / 2 + 1, n);
}

TYPED_TEST(ShortLines, do_not_depend_on_the_lines_beside_them)
{
    for (i64 n = 2; n <= 16; ++n) expect_lines_by_themselves<TypeParam>(n);
    for (const i64 n : {36, 60, 100, 144}) expect_lines_by_themselves<TypeParam>(n); // and both halves are products
}

// Other lengths go to the engine: to the bit what the kernel makes of each row.
TYPED_TEST(ShortLines, of_other_lengths_are_what_their_kernel_gives)
{
    using R = TypeParam;
    using T = cpx<R>;
    constexpr i64 count = 3;
    auto* const lines =
        primitive<DftCopyAndTransformOut<T, T>>(sizeof(R) == 4 ? "xcdft1d_out_copy" : "xzdft1d_out_copy");
    for (const i64 n : {17, 64, 68, 128, 256, 1000, 2048, 3000})
        for (const bool forward : {true, false})
            for (const double scale : {1.0, 0.5}) {
                const Node node = create_1d(precision_letter<R>, 'c', n);
                node->flags |= DftiNode::no_decomposition;
                set_batch(node, count, n, n);
                set_scales(node, scale, scale);
                ASSERT_EQ(commit(node), node_ok);
                DftiKernel* const kernel = sizeof(R) == 4
                                               ? (forward ? node->kernel_s_forward : node->kernel_s_backward)
                                               : (forward ? node->kernel_d_forward : node->kernel_d_backward);
                std::vector<char> work(static_cast<std::size_t>(node->node_buffer_bytes) + 64);
                auto input = random_array<T>(n * count, 6);
                std::vector<T> together(input.size()), alone(input.size());
                ASSERT_EQ(lines(input.data(), 1, together.data(), 1, kernel, node.get(), count, n, n, nullptr, 0,
                                work.data()),
                          node_ok);
                for (i64 j = 0; j < count; ++j)
                    ASSERT_EQ(kernel(input.data() + j * n, alone.data() + j * n, node.get(), work.data()), node_ok);
                EXPECT_TRUE(same_bits(together.data(), alone.data(), n * count)) << "n=" << n << " scale=" << scale;
            }
}

} // namespace
} // namespace orv::test
