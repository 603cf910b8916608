// What the short ways ask of a node: one transform of neighbouring pairs that begin where the caller says.
#pragma once

#include "dft/methods/method.h"

namespace orv::dft {

template <class R> bool is_plain_row(const DftiNode& node)
{
    return is_of<R>(node, CFG_DOMAIN_COMPLEX) && node.complex_storage == CFG_STORE_COMPLEX && node.input_offset == 0 &&
           node.output_offset == 0 && (node.flags & DftiNode::no_decomposition) == 0 && is_one_transform(node) &&
           is_one_row(node);
}

} // namespace orv::dft
