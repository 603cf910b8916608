// Which method takes a node with the list of ways that its creator gives it.
#include "tests/dft/methods/node.h"

#include <cstdio>
#include <map>

namespace orv::test {
namespace {

constexpr const char* all_methods[] = {"bkd_as2s_n_m", "bkd_as2s_1_m", "bkd_ds2s_1_1", "bkd_ss2s_1_1", "bkd3_z",
                                       "bkd3_c",       "bkd2_z",       "bkd2_c",       "bkd1_z",       "bkd1_c",
                                       "tiny_3d_z2z",  "tiny_3d_c2c",  "tiny_3d_z2d",  "tiny_3d_c2s",  "par_1d_r2c_d",
                                       "par_1d_r2c_s", "bluestein_z",  "bluestein_c",  "bluestein_d",  "bluestein_s"};

// A node as a program gets it: precision s or d, domain c or r, by the creator for its rank.
class Created {
public:
    Created(const std::string& kind, const std::vector<i64>& lengths)
    {
        const i32 status = lengths.size() == 1 ? primitive<Create1d>("dfti_create_" + kind + "1d")(&node_, lengths[0])
                                               : primitive<CreateMd>("dfti_create_" + kind + "md")(
                                                     &node_, static_cast<i32>(lengths.size()), lengths.data());
        EXPECT_EQ(status, node_ok);
        node_->thread_limit = 1;
    }
    Created(const Created&) = delete;
    Created& operator=(const Created&) = delete;
    ~Created() { node_->destroy(node_); }
    DftiNode* operator->() const { return node_; }

    // The name of the method, "chain" where there is none, or the status.
    std::string taken_by() const
    {
        const i32 status = node_->methods->commit(node_);
        if (status != node_ok) return std::to_string(status);
        if (node_->method == nullptr) return "chain";
        for (const char* name : all_methods)
            if (node_->method == method(name)) return name;
        return "another";
    }

private:
    DftiNode* node_ = nullptr;
};

template <class... Set> std::string taken_by(const std::string& kind, const std::vector<i64>& lengths, Set... set)
{
    const Created node(kind, lengths);
    (set(*node.operator->()), ...);
    return node.taken_by();
}
constexpr auto apart = [](DftiNode& n) { n.placement = CFG_OUT_OF_PLACE; };
constexpr auto split = [](DftiNode& n) { n.complex_storage = CFG_STORE_SPLIT; };
constexpr auto half_spectrum = [](DftiNode& n) { n.conjugate_even_storage = CFG_STORE_COMPLEX; };
constexpr auto two_threads = [](DftiNode& n) { n.thread_limit = 2; };
constexpr auto two_transforms = [](DftiNode& n) { n.batch.dims[0] = {2, 1 << 20, 1 << 20}; };

TEST(Choice, of_one_dimension_of_pairs_is_by_length_and_scale)
{
    std::map<std::string, i64> first;
    for (const char* kind : {"dc", "sc"})
        for (i64 n = 1; n <= 300; ++n) first.emplace(taken_by(kind, {n}) + " in " + kind, n);
    for (const auto& [name, n] : first) std::printf("%-20s from n = %lld\n", name.c_str(), static_cast<long long>(n));
    const std::map<std::string, i64> fixed = {{"bkd1_z in dc", 1}, {"bkd2_z in dc", 2}, {"bkd3_z in dc", 8},
                                              {"bkd1_c in sc", 1}, {"bkd2_c in sc", 2}, {"bkd3_c in sc", 16}};
    for (const auto& [name, n] : fixed) EXPECT_EQ(first[name], n) << name;
    EXPECT_EQ(first.size(), 8u); // and the chain, in each

    for (const auto& [n, name] : {std::pair{4, "bkd2_z"}, {8, "bkd3_z"}, {128, "bkd3_z"}, {256, "chain"}})
        EXPECT_EQ(taken_by("dc", {n}), name) << n;
    for (const auto& [n, name] : {std::pair{8, "bkd2_c"}, {16, "bkd3_c"}, {64, "bkd3_c"}})
        EXPECT_EQ(taken_by("sc", {n}), name) << n;
    EXPECT_EQ(taken_by("sc", {64}, [](DftiNode& n) { n.forward_scale = 1.0 / 64; }), "bkd1_c");
    EXPECT_EQ(taken_by("sc", {64}, [](DftiNode& n) { n.forward_scale = 0.3; }), "chain");
    EXPECT_EQ(taken_by("dc", {16}, two_transforms), "chain");
    EXPECT_EQ(taken_by("dc", {16}, apart), "bkd3_z");
    EXPECT_EQ(taken_by("dc", {4096}), "chain");
}

TEST(Choice, of_two_arrays_is_by_rank_and_never_the_chain)
{
    for (const auto& [kind, one] : {std::pair{"dc", "bkd_ds2s_1_1"}, {"sc", "bkd_ss2s_1_1"}}) {
        EXPECT_EQ(taken_by(kind, {16}, split), one);
        EXPECT_EQ(taken_by(kind, {16}, split, two_transforms), one);
        EXPECT_EQ(taken_by(kind, {16, 4}, split), "bkd_as2s_n_m");
        EXPECT_EQ(taken_by(kind, {1, 4, 1}, split), one); // what is left of it is one dimension
        EXPECT_EQ(taken_by(kind, {8, 8, 8}, split), "bkd_as2s_n_m");
    }
}

TEST(Choice, of_cubes_is_by_side)
{
    for (const auto& [pairs, reals] : {std::pair{"tiny_3d_z2z", "tiny_3d_z2d"}, {"tiny_3d_c2c", "tiny_3d_c2s"}}) {
        const std::string p(pairs[8] == 'z' ? "d" : "s");
        for (const i64 n : {2, 8, 10}) {
            EXPECT_EQ(taken_by(p + "c", {n, n, n}), pairs) << n;
            EXPECT_EQ(taken_by(p + "r", {n, n, n}, apart, half_spectrum), reals) << n;
        }
        EXPECT_EQ(taken_by(p + "c", {11, 11, 11}), "chain");
        EXPECT_EQ(taken_by(p + "r", {11, 11, 11}, apart, half_spectrum), "chain");
        EXPECT_EQ(taken_by(p + "c", {8, 8}), "chain");
        EXPECT_EQ(taken_by(p + "r", {8, 8, 8}, apart), std::to_string(node_unsupported));
    }
}

TEST(Choice, of_reals_is_by_length_and_threads)
{
    for (const auto& [kind, name] : {std::pair{"dr", "par_1d_r2c_d"}, {"sr", "par_1d_r2c_s"}}) {
        EXPECT_EQ(taken_by(kind, {16384}), "chain");
        EXPECT_EQ(taken_by(kind, {16384}, two_threads), name);
        EXPECT_EQ(taken_by(kind, {16382}, two_threads), "chain");
        EXPECT_EQ(taken_by(kind, {16385}, two_threads), "chain");
        EXPECT_EQ(taken_by(kind, {16384}, two_threads, [](DftiNode& n) { n.packed_format = CFG_PACK; }), "chain");
    }
}

// Behind a way that finds the length too long comes the convolution; one that finds no memory is the last.
TEST(Choice, goes_on_to_a_convolution_where_the_engine_ends)
{
    const auto too_long = [](const DftiMethod*, DftiNode*) -> i32 { return node_too_long; };
    const auto no_memory = [](const DftiMethod*, DftiNode*) -> i32 { return node_no_memory; };
    for (const char* kind : {"dc", "sc", "dr", "sr"}) {
        const std::string letters = kind, name = std::string("bluestein_") + (letters[1] == 'r'   ? letters[0]
                                                                              : letters[0] == 'd' ? 'z'
                                                                                                  : 'c');
        const Created node(kind, {127});
        const DftiMethod engine{too_long, nullptr}, exhausted{no_memory, nullptr};
        const DftiMethod* const first_list[] = {&engine, method(name), nullptr};
        const DftiMethod* const second_list[] = {&exhausted, method(name), nullptr};
        node->bkdown_list = first_list;
        EXPECT_EQ(node.taken_by(), name);
        node->bkdown_list = second_list;
        EXPECT_EQ(node.taken_by(), std::to_string(node_no_memory));
    }
}

} // namespace
} // namespace orv::test
