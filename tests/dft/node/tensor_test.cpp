#include "tests/dft/node/node.h"

namespace orv::test {
namespace {

namespace k = kernels::dft;

using Triples = std::vector<std::vector<i64>>; // n, is, os

// A tensor of the branch's own memory.
class Tensor {
public:
    explicit Tensor(const Triples& triples)
    {
        EXPECT_EQ(kernel<k::Iotensor_create>()(&t_, static_cast<i32>(triples.size())), 0);
        for (std::size_t i = 0; i < triples.size(); ++i) t_.dims[i] = {triples[i][0], triples[i][1], triples[i][2]};
    }
    Tensor(const Tensor&) = delete;
    Tensor& operator=(const Tensor&) = delete;
    ~Tensor() { kernel<k::Iotensor_destroy>()(&t_); }
    operator Iotensor*() { return &t_; }
    Triples triples() const
    {
        Triples all;
        for (i32 i = 0; i < t_.rank; ++i) all.push_back({t_.dims[i].n, t_.dims[i].is, t_.dims[i].os});
        return all;
    }

private:
    Iotensor t_{};
};

Triples sorted(const Triples& from)
{
    Tensor t(from);
    kernel<k::Iotensor_sort>()(t);
    return t.triples();
}
Triples without_ones(const Triples& from)
{
    Tensor t(from);
    kernel<k::Iotensor_remove1>()(t);
    return t.triples();
}
Triples compressed(const Triples& from)
{
    Tensor t(from);
    kernel<k::Iotensor_compress>()(t);
    return t.triples();
}
std::string printed(const Iotensor* t)
{
    char* text = nullptr;
    std::size_t bytes = 0;
    std::FILE* const stream = open_memstream(&text, &bytes);
    kernel<k::Iotensor_print>()(t, stream);
    const std::string result(text, bytes); // flushed
    std::fclose(stream);
    std::free(text);
    return result;
}

TEST(Tensor, is_sorted_by_input_stride_and_keeps_its_triples_whole)
{
    const Triples t = sorted({{5, 30, 1}, {3, 10, 2}, {7, -2, 3}, {2, 20, 4}});
    EXPECT_EQ(t, (Triples{{7, -2, 3}, {3, 10, 2}, {2, 20, 4}, {5, 30, 1}}));
    EXPECT_EQ(sorted({}), Triples{});
}

TEST(Tensor, loses_ones_but_never_its_first_dimension)
{
    EXPECT_EQ(without_ones({{1, 1, 2}, {1, 3, 4}, {1, 5, 6}}), (Triples{{1, 1, 2}}));
    EXPECT_EQ(without_ones({{1, 1, 2}, {4, 3, 4}, {1, 5, 6}}), (Triples{{4, 3, 4}}));
    EXPECT_EQ(without_ones({{2, 1, 1}, {1, 2, 2}, {3, 2, 2}}), (Triples{{2, 1, 1}, {3, 2, 2}}));
}

TEST(Tensor, merges_neighbours_that_are_one_dimension_on_both_sides)
{
    EXPECT_EQ(compressed({{4, 1, 1}, {8, 4, 4}}), (Triples{{32, 1, 1}}));
    EXPECT_EQ(compressed({{4, 1, 1}, {8, 4, 5}}), (Triples{{4, 1, 1}, {8, 4, 5}}));
    EXPECT_EQ(compressed({{4, 1, 1}, {8, 5, 4}}), (Triples{{4, 1, 1}, {8, 5, 4}}));
    EXPECT_EQ(compressed({{4, 2, 3}, {8, 8, 12}, {2, 64, 96}}), (Triples{{64, 2, 3}}));
    EXPECT_EQ(compressed({{4, 1, 1}, {8, 5, 5}, {2, 40, 40}}), (Triples{{4, 1, 1}, {16, 5, 5}}));
    EXPECT_EQ(compressed({{4, 1, 1}, {8, 4, 4}, {2, 99, 99}}), (Triples{{32, 1, 1}, {2, 99, 99}}));
}

TEST(Tensor, is_in_place_when_every_stride_is_the_same)
{
    const auto is_inplace = kernel<k::Iotensor_is_inplace>();
    Tensor none({}), same({{4, 1, 1}, {8, 4, 4}}), other({{4, 1, 1}, {8, 4, 5}});
    EXPECT_EQ(is_inplace(none), 1);
    EXPECT_EQ(is_inplace(same), 1);
    EXPECT_EQ(is_inplace(other), 0);
}

TEST(Tensor, is_copied_with_the_strides_that_the_mode_tells)
{
    Tensor from({{4, 1, 2}, {8, 4, 9}});
    const Triples expected[] = {
        {{4, 1, 2}, {8, 4, 9}}, {{4, 1, 1}, {8, 4, 4}}, {{4, 2, 2}, {8, 9, 9}}, {{4, 2, 1}, {8, 9, 4}}};
    for (i32 mode = 0; mode < 4; ++mode) {
        Tensor smaller({{1, 1, 1}}), larger({{1, 1, 1}, {2, 2, 2}, {3, 3, 3}});
        for (Tensor* to : {&smaller, &larger}) {
            ASSERT_EQ(kernel<k::Iotensor_copy>()(*to, from, mode), 0);
            EXPECT_EQ(to->triples(), expected[mode]);
        }
    }
}

TEST(Tensor, joins_two_to_one)
{
    Tensor a({{4, 1, 2}}), b({{8, 4, 9}, {3, 5, 6}}), none({}), large({{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}});
    for (Tensor* to : {&none, &large}) {
        ASSERT_EQ(kernel<k::Iotensor_join>()(*to, a, b), 0);
        EXPECT_EQ(to->triples(), (Triples{{4, 1, 2}, {8, 4, 9}, {3, 5, 6}}));
    }
    ASSERT_EQ(kernel<k::Iotensor_join>()(a, a, b), 0);
    EXPECT_EQ(a.triples(), (Triples{{4, 1, 2}, {8, 4, 9}, {3, 5, 6}}));
}

TEST(Tensor, prints_its_triples_on_one_line_without_an_end)
{
    Tensor two({{8, 1, 1}, {4, 8, 8}}), one({{3, -1, 70}}), none({});
    EXPECT_EQ(printed(two), "8:1:1x4:8:8");
    EXPECT_EQ(printed(one), "3:-1:70");
    EXPECT_EQ(printed(none), "");
    EXPECT_EQ(printed(nullptr), "");
}

TEST(Tensor, asks_for_no_more_than_its_triples_and_keeps_what_it_had_without_memory)
{
    ProbeScope memory;
    memory->fail_at = 0;
    Iotensor t{};
    EXPECT_EQ(kernel<k::Iotensor_create>()(&t, 3), 1);
    EXPECT_EQ(memory->asked_bytes, std::vector<i64>{72});
    EXPECT_EQ(memory->asked_alignments, std::vector<i64>{16});
    Tensor small({{4, 1, 2}}), large({{4, 1, 2}, {8, 4, 9}});
    memory->fail_all = true;
    EXPECT_EQ(kernel<k::Iotensor_copy>()(small, large, 0), 1);
    EXPECT_EQ(kernel<k::Iotensor_join>()(small, small, large), 1);
    EXPECT_EQ(small.triples(), (Triples{{4, 1, 2}}));
}

} // namespace
} // namespace orv::test
