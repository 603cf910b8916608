// Nodes as a caller has them: made by a creator, set, committed and destroyed through their own tables.
#pragma once

#include "frame/kernels/dft_methods.h"
#include "frame/kernels/dft_node.h"
#include "tests/dft/primitive.h"
#include "tests/support/probe.h"

#include <cstdlib>
#include <memory>

namespace orv::test {

struct DestroyNode {
    void operator()(DftiNode* node) const { node->destroy(node); }
};
using Node = std::unique_ptr<DftiNode, DestroyNode>;

// precision d or s, domain c or r
inline Node create_1d(char precision, char domain, i64 n)
{
    DftiNode* node = nullptr;
    const std::string name = std::string("dfti_create_") + precision + domain + "1d";
    EXPECT_EQ(primitive<Create1d>(name)(&node, n), node_ok);
    return Node(node);
}
inline Node create_md(char precision, char domain, const std::vector<i64>& lengths)
{
    DftiNode* node = nullptr;
    const std::string name = std::string("dfti_create_") + precision + domain + "md";
    EXPECT_EQ(primitive<CreateMd>(name)(&node, static_cast<i32>(lengths.size()), lengths.data()), node_ok);
    return Node(node);
}
template <class R> inline constexpr char precision_letter = sizeof(R) == 4 ? 's' : 'd';

inline i32 commit(const Node& node) { return node->methods->commit(node.get()); }
inline void set_strides(const Node& node, std::vector<i64> input, std::vector<i64> output)
{
    input.insert(input.begin(), 0), output.insert(output.begin(), 0);
    node->methods->set_input_strides(node.get(), input.data());
    node->methods->set_output_strides(node.get(), output.data());
}
inline void set_batch(const Node& node, i64 count, i64 input_distance, i64 output_distance)
{
    node->methods->set_number_of_transforms(node.get(), count);
    node->methods->set_input_distance(node.get(), input_distance);
    node->methods->set_output_distance(node.get(), output_distance);
}
inline void set_scales(const Node& node, double forward, double backward)
{
    node->methods->set_scale(node.get(), forward, scale_of_forward);
    node->methods->set_scale(node.get(), backward, scale_of_backward);
}

// A method's record by its name.
inline const DftiMethod* method(const std::string& name)
{
    return static_cast<const DftiMethod*>(kernel_address("dft", name));
}

// Services of the core are one table for all nodes: what a test puts there goes with it.
class ServicesScope {
public:
    explicit ServicesScope(const Node& node) : services_(node->api), before_(*node->api) {}
    ServicesScope(const ServicesScope&) = delete;
    ServicesScope& operator=(const ServicesScope&) = delete;
    ~ServicesScope() { *services_ = before_; }
    DftiServices* operator->() { return services_; }

private:
    DftiServices* services_;
    DftiServices before_;
};

class EnvironmentScope {
public:
    EnvironmentScope(const char* name, const char* value) : name_(name) { setenv(name, value, 1); }
    EnvironmentScope(const EnvironmentScope&) = delete;
    EnvironmentScope& operator=(const EnvironmentScope&) = delete;
    ~EnvironmentScope() { unsetenv(name_); }

private:
    const char* name_;
};

} // namespace orv::test
