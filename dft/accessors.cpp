// The settings of a node, read and written. Strides and scales that change return it to uncommitted; distances and the
// number of transforms do not, they wait for the next commit.
#include "dft/node.h"

namespace orv::dft {
namespace {

constexpr i64 name_bytes = sizeof(DftiNode::descriptor_name);

// The side of a transform that a setting belongs to.
struct Side {
    i64 DftiNode::*offset;
    i64 DftiNode::*distance;
    i64 IotensorDim::*step;
};
constexpr Side input{&DftiNode::input_offset, &DftiNode::input_distance, &IotensorDim::is};
constexpr Side output{&DftiNode::output_offset, &DftiNode::output_distance, &IotensorDim::os};

// The offset, then a stride for each dimension.
template <const Side& side> i32 get_strides(const DftiNode* node, i64* out)
{
    out[0] = node->*side.offset;
    for (i32 k = 0; k < node->user_rank; ++k) out[k + 1] = node->lengths.dims[k].*side.step;
    return node_ok;
}
template <const Side& side> i32 set_strides(DftiNode* node, const i64* values)
{
    node->uncommit(node);
    node->*side.offset = values[0];
    for (i32 k = 0; k < node->user_rank; ++k) node->lengths.dims[k].*side.step = values[k + 1];
    return node_ok;
}

template <const Side& side> i32 get_distance(const DftiNode* node, i64* out)
{
    *out = node->batch.dims[0].*side.step;
    return node_ok;
}
template <const Side& side> i32 set_distance(DftiNode* node, i64 value)
{
    node->batch.dims[0].*side.step = node->*side.distance = value;
    return node_ok;
}

i32 get_count(const DftiNode* node, i64* out)
{
    *out = node->batch.dims[0].n;
    return node_ok;
}
i32 set_count(DftiNode* node, i64 value)
{
    node->batch.dims[0].n = node->number_of_transforms = value;
    return node_ok;
}

i32 get_lengths(const DftiNode* node, i64* out)
{
    for (i32 k = 0; k < node->user_rank; ++k) out[k] = node->lengths.dims[k].n;
    return node_ok;
}

i32 get_name(const DftiNode* node, char* out, i64 size)
{
    for (i64 k = 0; k < min(size, name_bytes); ++k) out[k] = node->descriptor_name[k];
    return node_ok;
}
i32 set_name(DftiNode* node, const char* text, i64 size, i32 fill)
{
    for (i64 k = 0; k < name_bytes; ++k) node->descriptor_name[k] = k < size ? text[k] : static_cast<char>(fill);
    return node_ok;
}

double DftiNode::*scale_field(i32 which)
{
    switch (which) {
    case scale_of_forward:
        return &DftiNode::forward_scale;
    case scale_of_backward:
        return &DftiNode::backward_scale;
    default:
        return nullptr;
    }
}
i32 get_scale(const DftiNode* node, double* out, i32 which)
{
    const auto scale = scale_field(which);
    if (scale == nullptr) return node_inconsistent;
    *out = node->*scale;
    return node_ok;
}
i32 set_scale(DftiNode* node, double value, i32 which)
{
    const auto scale = scale_field(which);
    if (scale == nullptr) return node_inconsistent;
    if (node->*scale != value) node->uncommit(node);
    node->*scale = value;
    return node_ok;
}

i32 get_thread_limit(const DftiNode* node, i32* out)
{
    if (node->commit_status == CFG_COMMITTED) *out = static_cast<i32>(min(node->effective_threads, max_threads(*node)));
    else *out = limit_is_fixed(*node) ? 1 : node->thread_limit;
    return node_ok;
}
i32 set_thread_limit(DftiNode* node, i32 value)
{
    if (value < 0) return node_inconsistent;
    node->thread_limit = limit_is_fixed(*node) ? 1 : value;
    return node_ok;
}

} // namespace

PRIMITIVE(2, getInputStrides, get_strides<input>)
PRIMITIVE(2, getOutputStrides, get_strides<output>)
PRIMITIVE(2, setInputStrides, set_strides<input>)
PRIMITIVE(2, setOutputStrides, set_strides<output>)
PRIMITIVE(2, getLengths, get_lengths)
PRIMITIVE(3, getDescriptorName, get_name)
PRIMITIVE(4, setDescriptorName, set_name)
PRIMITIVE(3, getScale, get_scale)
PRIMITIVE(3, setScale, set_scale)
PRIMITIVE(2, getInputDistance, get_distance<input>)
PRIMITIVE(2, getOutputDistance, get_distance<output>)
PRIMITIVE(2, getNumberOfTransforms, get_count)
PRIMITIVE(2, setInputDistance, set_distance<input>)
PRIMITIVE(2, setOutputDistance, set_distance<output>)
PRIMITIVE(2, setNumberOfTransforms, set_count)
PRIMITIVE(2, getThreadLimit, get_thread_limit)
PRIMITIVE(2, setThreadLimit, set_thread_limit)

} // namespace orv::dft
