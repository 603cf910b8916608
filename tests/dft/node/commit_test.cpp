// Commit brings the problem into a form of its own and asks the node's methods in turn.
#include "tests/dft/node/node.h"

#include <functional>

namespace orv::test {
namespace {

// Methods of the test's own: each answers with a status, and all note that they were asked.
struct Asked {
    std::vector<int> order;
    std::function<void(DftiNode*)> look;
};
Asked* asked = nullptr;

template <int number, i32 status> i32 answer(const DftiMethod*, DftiNode* node)
{
    asked->order.push_back(number);
    if (asked->look) asked->look(node);
    return status;
}
template <int number, i32 status> constexpr DftiMethod answering{answer<number, status>, nullptr};

class Commit : public testing::Test {
protected:
    void SetUp() override { asked = &asked_; }
    // The status of a commit, and who was asked.
    std::pair<i32, std::vector<int>> commit_by(std::vector<const DftiMethod*> methods, DftiNode* node)
    {
        methods.push_back(nullptr);
        asked_.order.clear();
        node->bkdown_list = methods.data();
        return {node->methods->commit(node), asked_.order};
    }
    std::pair<i32, std::vector<int>> commit_by(const std::vector<const DftiMethod*>& methods)
    {
        return commit_by(methods, create_1d('d', 'c', 8).get());
    }
    Asked asked_;
};

using Result = std::pair<i32, std::vector<int>>;

TEST_F(Commit, stops_at_the_first_method_that_takes_the_node)
{
    EXPECT_EQ(commit_by({&answering<1, 100>, &answering<2, 101>, &answering<3, 0>, &answering<4, 0>}),
              (Result{0, {1, 2, 3}}));
    EXPECT_EQ(commit_by({&answering<1, 9>, &answering<2, 0>}), (Result{0, {1, 2}}));
    EXPECT_EQ(commit_by({&answering<1, 7>, &answering<2, 0>}), (Result{0, {1, 2}}));
}

TEST_F(Commit, fails_with_what_the_last_method_says)
{
    EXPECT_EQ(commit_by({&answering<1, 9>, &answering<2, 100>}), (Result{node_inconsistent, {1, 2}}));
    EXPECT_EQ(commit_by({&answering<1, 100>, &answering<2, 9>}), (Result{node_too_long, {1, 2}}));
    EXPECT_EQ(commit_by({&answering<1, 100>, &answering<2, 6>}), (Result{node_unsupported, {1, 2}}));
    EXPECT_EQ(commit_by({&answering<1, 101>}), (Result{101, {1}}));
    EXPECT_EQ(commit_by({}), (Result{node_inconsistent, {}}));
}

TEST_F(Commit, asks_nobody_else_once_memory_is_missing)
{
    EXPECT_EQ(commit_by({&answering<1, 1>, &answering<2, 0>}), (Result{node_no_memory, {1}}));
}

TEST_F(Commit, leaves_nothing_of_an_earlier_one_in_force_when_it_fails)
{
    const Node node = create_1d('d', 'c', 16);
    ASSERT_EQ(commit(node), node_ok);
    ASSERT_NE(node->compute_forward, nullptr);
    EXPECT_EQ(commit_by({&answering<1, 100>}, node.get()).first, node_inconsistent);
    EXPECT_EQ(node->commit_status, u32{CFG_UNCOMMITTED});
    EXPECT_EQ(node->compute_forward, nullptr);
    EXPECT_EQ(node->method, nullptr);
}

std::vector<std::vector<i64>> triples(const Iotensor& t)
{
    std::vector<std::vector<i64>> all;
    for (i32 k = 0; k < t.rank; ++k) all.push_back({t.dims[k].n, t.dims[k].is, t.dims[k].os});
    return all;
}
using Triples = std::vector<std::vector<i64>>;

TEST_F(Commit, sorts_the_dimensions_of_a_complex_transform_and_drops_those_of_one_point)
{
    const Node node = create_md('d', 'c', {4, 1, 6, 5});
    set_strides(node, {30, 7, 1, 6}, {60, 9, 2, 12});
    set_batch(node, 3, 120, 240);
    set_scales(node, 0.5, 0.1);
    node->placement = CFG_OUT_OF_PLACE;
    commit_by({&answering<1, 0>}, node.get());
    EXPECT_EQ(triples(node->work_lengths), (Triples{{6, 1, 2}, {5, 6, 12}, {4, 30, 60}}));
    EXPECT_EQ(triples(node->lengths), (Triples{{4, 30, 60}, {1, 7, 9}, {6, 1, 2}, {5, 6, 12}}));
    EXPECT_EQ(node->work_rank, 3);
    EXPECT_EQ(node->length, 6);
    EXPECT_EQ(node->input_stride, 1);
    EXPECT_EQ(node->output_stride, 2);
    EXPECT_EQ(node->number_of_transforms, 3);
    EXPECT_EQ(node->input_distance, 120);
    EXPECT_EQ(node->output_distance, 240);
    EXPECT_EQ(node->committed_forward_scale, 0.5);
    EXPECT_EQ(node->backward_scale_s, 0.1f);
}

TEST_F(Commit, ignores_the_strides_of_the_output_of_complex_transforms_in_place)
{
    const Node complex = create_md('d', 'c', {6, 5});
    set_strides(complex, {1, 6}, {3, 50});
    set_batch(complex, 3, 120, 240);
    commit_by({&answering<1, 0>}, complex.get());
    EXPECT_EQ(triples(complex->work_lengths), (Triples{{6, 1, 1}, {5, 6, 6}}));
    EXPECT_EQ(triples(complex->work_batch), (Triples{{3, 120, 120}}));
    EXPECT_EQ(complex->output_distance, 120);
}

TEST_F(Commit, keeps_the_order_of_the_dimensions_of_a_real_transform)
{
    const Node real = create_md('d', 'r', {4, 1, 6});
    set_strides(real, {30, 7, 1}, {60, 9, 2});
    commit_by({&answering<1, 0>}, real.get());
    EXPECT_EQ(triples(real->work_lengths), (Triples{{4, 30, 60}, {1, 7, 9}, {6, 1, 2}}));
    EXPECT_EQ(real->work_rank, 3);
}

TEST_F(Commit, of_a_child_takes_the_tensors_that_its_parent_has_set)
{
    const Node node = create_1d('d', 'c', 6);
    const auto join = kernel<kernels::dft::Iotensor_join>();
    ASSERT_EQ(join(&node->work_batch, &node->batch, &node->batch), 0);
    node->work_batch.dims[0] = {4, 6, 7}, node->work_batch.dims[1] = {5, 24, 30};
    node->work_lengths.dims[0] = {6, 3, 2};
    const DftiMethod* const list[] = {&answering<1, 0>, nullptr};
    node->bkdown_list = list;
    ASSERT_EQ(node->methods->commit_child(node.get()), node_ok);
    EXPECT_EQ(triples(node->work_batch), (Triples{{4, 6, 7}, {5, 24, 30}}));
    EXPECT_EQ(node->number_of_transforms, 4);
    EXPECT_EQ(node->input_distance, 6);
    EXPECT_EQ(node->output_distance, 7);
    EXPECT_EQ(node->input_stride, 3);
    EXPECT_EQ(node->output_stride, 2);
}

i32 five() { return 5; }
i32 dynamic() { return 1; }

TEST_F(Commit, takes_the_users_limit_of_threads_or_the_cores)
{
    const Node node = create_1d('d', 'c', 6);
    ServicesScope services(node);
    services->max_threads = five, services->dynamic_threads = dynamic;
    commit_by({&answering<1, 0>}, node.get());
    EXPECT_EQ(node->effective_threads, 5);
    EXPECT_EQ(node->dynamic_threads, 1u);
    node->methods->set_thread_limit(node.get(), 3);
    services->dynamic_threads = nullptr;
    commit_by({&answering<1, 0>}, node.get());
    EXPECT_EQ(node->effective_threads, 3);
    EXPECT_EQ(node->dynamic_threads, 0u);
    node->methods->set_thread_limit(node.get(), 0);
    services->max_threads = nullptr;
    commit_by({&answering<1, 0>}, node.get());
    EXPECT_EQ(node->effective_threads, 1);
}

TEST_F(Commit, without_memory_for_its_tensors_fails_and_can_be_repeated)
{
    const Node node = create_md('d', 'c', {4, 1, 6});
    commit_by({&answering<1, 0>}, node.get()); // the work tensor has shrunk
    node->commit_status = CFG_COMMITTED;
    ProbeScope memory;
    memory->fail_all = true;
    EXPECT_EQ(commit_by({&answering<1, 0>}, node.get()), (Result{node_no_memory, {}}));
    EXPECT_EQ(node->commit_status, CFG_UNCOMMITTED);
    memory->fail_all = false;
    EXPECT_EQ(commit_by({&answering<1, 0>}, node.get()), (Result{node_ok, {1}}));
    EXPECT_EQ(node->work_rank, 2);
}

} // namespace
} // namespace orv::test
