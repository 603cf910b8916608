// Nodes that are committed by one method alone, and what their transforms have to give.
#pragma once

#include "frame/kernels/dft_methods.h"
#include "tests/dft/dft/general.h"

#include <functional>
#include <numeric>
#include <thread>

namespace orv::test {

inline const DftiMethod* method(const std::string& name)
{
    return static_cast<const DftiMethod*>(kernel_address("dft", name));
}

template <class T> constexpr u32 precision_of = sizeof(real_t<T>) == 4 ? CFG_SINGLE : CFG_DOUBLE;

// A node of its own making, with a table of services of its own, all empty, and a list of the methods named. What it is
// to be is set in its record; what commit takes from that, methods do not see before commit.
class Node {
public:
    Node(u32 precision, u32 domain, const std::vector<i64>& lengths, const std::vector<std::string>& names)
    {
        for (const auto& name : names) list_.push_back(method(name));
        list_.push_back(nullptr);
        const i32 status = kernel<kernels::dft::dfti_create_node>()(&node_, precision, domain,
                                                                    static_cast<i32>(lengths.size()), lengths.data());
        EXPECT_EQ(status, node_ok);
        node_->bkdown_list = list_.data();
        node_->api = &services;
    }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    ~Node() { node_->destroy(node_); }

    DftiNode* operator->() const { return node_; }
    DftiNode* get() const { return node_; }
    i32 commit() const { return node_->methods->commit(node_); }
    bool committed() const
    {
        const bool whole = node_->compute_forward != nullptr && node_->compute_backward != nullptr;
        EXPECT_EQ(node_->commit_status, u32{whole ? CFG_COMMITTED : CFG_UNCOMMITTED});
        return whole;
    }
    i32 run(bool forward, void* a, void* b = nullptr, void* c = nullptr, void* d = nullptr) const
    {
        return (forward ? node_->compute_forward : node_->compute_backward)(node_, a, b, c, d);
    }

    DftiServices services{};

private:
    DftiNode* node_ = nullptr;
    std::vector<const DftiMethod*> list_;
};

// Settings that a method must refuse, one by one, and the status; after each the node is without a method, and the
// settings before it are taken again.
struct Change {
    const char* what;
    std::function<void(Node&)> set, reset;
};
inline Change change(const char* what, u32 DftiNode::*field, u32 to, u32 back)
{
    return {what, [=](Node& n) { n.get()->*field = to; }, [=](Node& n) { n.get()->*field = back; }};
}
inline Change offset(const char* what, i64 DftiNode::*field)
{
    return {what, [=](Node& n) { n.get()->*field = 1; }, [=](Node& n) { n.get()->*field = 0; }};
}
inline Change scale(const char* what, double DftiNode::*field, double to)
{
    return {what, [=](Node& n) { n.get()->*field = to; }, [=](Node& n) { n.get()->*field = 1; }};
}
inline Change stride(const char* what, i32 dim, i64 IotensorDim::*side, i64 to)
{
    return {what, [=](Node& n) { n->lengths.dims[dim].*side = to; },
            [=, back = i64{0}](Node& n) mutable { n->lengths.dims[dim].*side = back; }};
}
inline Change transforms(i64 count)
{
    return {"number of transforms", [=](Node& n) { n->batch.dims[0].n = count; },
            [](Node& n) { n->batch.dims[0].n = 1; }};
}

inline void expect_refused(Node& node, const Change& change, i32 status = node_inconsistent)
{
    const std::vector<IotensorDim> dims(node->lengths.dims, node->lengths.dims + node->lengths.rank);
    ASSERT_EQ(node.commit(), node_ok) << "before: " << change.what;
    change.set(node);
    EXPECT_EQ(node.commit(), status) << change.what;
    EXPECT_FALSE(node.committed()) << change.what;
    EXPECT_EQ(node->method, nullptr) << change.what;
    EXPECT_EQ(node->method_data, nullptr) << change.what;
    change.reset(node);
    std::copy(dims.begin(), dims.end(), node->lengths.dims);
    EXPECT_EQ(node.commit(), node_ok) << "after: " << change.what;
}

// Every allocation of a commit fails in turn: it tells so and leaves nothing in force or taken, and the next one is
// fine.
inline void expect_commit_to_survive_without_memory(Node& node)
{
    each_allocation_fails(
        [&] {
            const i32 status = node.commit();
            EXPECT_EQ(status, probe().failed == 0 ? node_ok : node_no_memory);
            EXPECT_EQ(node.committed(), probe().failed == 0);
            node->uncommit(node.get());
        },
        [&] { EXPECT_EQ(node->method_data, nullptr); });
    ASSERT_EQ(node.commit(), node_ok);
}

// A method refuses to detach from a node that it has not taken; from one that it has, it lets go of all. A second
// commit with another setting, by which nothing that is kept changes, asks for no memory.
inline void expect_state_to_be_kept_and_let_go(const DftiMethod* m, Node& node, const std::function<void()>& set)
{
    ProbeScope probe;
    EXPECT_EQ(m->detach(m, node.get()), node_internal_error);
    ASSERT_EQ(node.commit(), node_ok);
    const void* const data = node->method_data;
    const i64 taken = probe->allocations;
    set();
    ASSERT_EQ(node.commit(), node_ok);
    EXPECT_EQ(probe->allocations, taken);
    EXPECT_EQ(node->method_data, data);
    EXPECT_EQ(m->detach(m, node.get()), node_ok);
    EXPECT_FALSE(node.committed());
    EXPECT_EQ(node->method, nullptr);
    EXPECT_EQ(node->method_data, nullptr);
    EXPECT_EQ(probe->live, 0);
}

// A team that runs its tasks one after another, the last first, or at the same time; it counts what it was asked for.
struct Team {
    static inline i32 threads = 1, started = 0;
    static i32 size() { return threads; }
    static void one_by_one(i32 count, DftTask* task, void* argument)
    {
        started += count;
        for (i32 t = count; t-- > 0;) task(t, count, argument);
    }
    static void together(i32 count, DftTask* task, void* argument)
    {
        started += count;
        std::vector<std::thread> team;
        for (i32 t = 0; t < count; ++t) team.emplace_back(task, t, count, argument);
        for (auto& member : team) member.join();
    }
    static void of(Node& node, i32 count)
    {
        threads = count, started = 0;
        node.services.max_threads = size, node.services.parallel_for = one_by_one;
        node.services.parallel_together = together;
    }
};

} // namespace orv::test
