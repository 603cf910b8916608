// Transforms for other kernels: convolutions, and sine and cosine transforms. Bare nodes, with the statuses of nodes.
#include "core/dft/nodes.h"
#include "frame/export.h"
#include "frame/imports.h"

#include <cstdarg>

using namespace orv;
using namespace orv::core::dft;
using namespace orv::imports;
using namespace orv::kernels::dft;

namespace {

// What stays within a commit never leaves it.
i64 told(i64 status)
{
    if (status == node_not_this_method || status == node_not_in_table) return node_inconsistent;
    return status == no_kernel ? i64{node_internal_error} : status;
}

i64 create(Handle* handle, i32 precision, i32 domain, i32 rank, const i64* lengths)
{
    if (handle == nullptr || lengths == nullptr || (domain != CFG_DOMAIN_COMPLEX && domain != CFG_DOMAIN_REAL))
        return node_inconsistent;
    if (rank < 1 || rank > ORV_DFT_MAX_RANK) return node_bad_length;
    i64 innermost_first[ORV_DFT_MAX_RANK];
    for (i32 k = 0; k < rank; ++k) {
        if (lengths[k] < 1) return node_bad_length;
        innermost_first[rank - 1 - k] = lengths[k];
    }
    return told(create_node(handle, precision, domain, rank, innermost_first));
}

bool is_between(i64 value, u32 first, u32 last) { return value >= first && value <= last; }

i64 change(Handle node, u32 DftiNode::*setting, i64 value)
{
    node->uncommit(node);
    node->*setting = static_cast<u32>(value);
    return node_ok;
}

i64 set(Handle node, i32 parameter, i64 value)
{
    if (node == nullptr) return node_inconsistent;
    if (parameter == dfti_conjugate_even_storage && is_between(value, CFG_STORE_COMPLEX, CFG_STORE_PACKED))
        return change(node, &DftiNode::conjugate_even_storage, value);
    if (parameter == dfti_placement && is_between(value, CFG_IN_PLACE, CFG_OUT_OF_PLACE))
        return change(node, &DftiNode::placement, value);
    if (parameter == dfti_packed_format && is_between(value, CFG_CCS, CFG_CCE))
        return change(node, &DftiNode::packed_format, value);
    if (parameter == dfti_number_of_user_threads && is_between(value, 1, INT32_MAX))
        return node->number_of_user_threads = static_cast<i32>(value), node_ok;
    return node_inconsistent;
}

i64 commit(Handle node) { return node ? told(node->methods->commit(node)) : i64{node_inconsistent}; }

i64 compute(Handle node, Direction direction, void* input, void* output)
{
    if (node == nullptr) return node_inconsistent;
    DftiCompute* const run = direction == forward ? node->compute_forward : node->compute_backward;
    const bool in_place = node->placement == CFG_IN_PLACE;
    if (run == nullptr || input == nullptr || (!in_place && output == nullptr)) return node_inconsistent;
    return told(run(node, input, in_place ? nullptr : output, nullptr, nullptr));
}

i64 free_node(Handle* handle)
{
    if (handle == nullptr || *handle == nullptr) return node_inconsistent;
    (*handle)->destroy(*handle);
    *handle = nullptr;
    return node_ok;
}

} // namespace

#define CREATE(p, precision)                                                                                           \
    ORV_EXPORT i64 orv_dft_dfticreatedescriptor_##p##_1d(Handle* handle, i32 domain, i64 length)                       \
    {                                                                                                                  \
        return create(handle, precision, domain, 1, &length);                                                          \
    }                                                                                                                  \
    ORV_EXPORT i64 orv_dft_dfticreatedescriptor_##p##_md(Handle* handle, i32 domain, i32 rank, const i64* lengths)     \
    {                                                                                                                  \
        return create(handle, precision, domain, rank, lengths);                                                       \
    }                                                                                                                  \
    ORV_EXPORT i64 orv_dft_dfti_create_descriptor_##p##_1d(Handle* handle, i32 asked, i32 domain, i32 rank,            \
                                                           i64 length)                                                 \
    {                                                                                                                  \
        if (asked != precision || rank != 1) return node_inconsistent;                                                 \
        return create(handle, precision, domain, 1, &length);                                                          \
    }
CREATE(s, CFG_SINGLE)
CREATE(d, CFG_DOUBLE)

ORV_EXPORT i64 orv_dft_dftisetvalue(Handle handle, i32 parameter, ...)
{
    const bool is_scale = parameter == dfti_forward_scale || parameter == dfti_backward_scale;
    va_list value;
    va_start(value, parameter);
    const double scale = is_scale ? va_arg(value, double) : 0;
    const i32 number = is_scale ? 0 : va_arg(value, i32);
    va_end(value);
    if (!is_scale || handle == nullptr) return set(handle, parameter, number);
    return told(handle->methods->set_scale(handle, scale, parameter));
}

ORV_EXPORT i64 orv_dft_dfti_set_value_intval(Handle handle, i32 parameter, i64 value)
{
    return set(handle, parameter, value);
}

ORV_EXPORT i64 orv_dft_dfticommitdescriptor(Handle handle) { return commit(handle); }
ORV_EXPORT i64 orv_dft_dfti_commit_descriptor_external(Handle handle) { return commit(handle); }

ORV_EXPORT i64 orv_dft_dfticomputeforward(Handle handle, void* input, void* output)
{
    return compute(handle, forward, input, output);
}
ORV_EXPORT i64 orv_dft_dfticomputebackward(Handle handle, void* input, void* output)
{
    return compute(handle, backward, input, output);
}

#define COMPUTE(t, T)                                                                                                  \
    ORV_EXPORT i64 orv_dft_dfti_compute_forward_##t(Handle handle, T* data)                                            \
    {                                                                                                                  \
        return compute(handle, forward, data, nullptr);                                                                \
    }                                                                                                                  \
    ORV_EXPORT i64 orv_dft_dfti_compute_backward_##t(Handle handle, T* data)                                           \
    {                                                                                                                  \
        return compute(handle, backward, data, nullptr);                                                               \
    }
COMPUTE(s, float)
COMPUTE(d, double)

ORV_EXPORT i64 orv_dft_dftifreedescriptor(Handle* handle) { return free_node(handle); }
ORV_EXPORT i64 orv_dft_dfti_free_descriptor_external(Handle* handle) { return free_node(handle); }

ORV_EXPORT i64 orv_dft_dftierrorclass(i64 status, i64 error_class) { return told(status) == error_class; }

ORV_EXPORT const char* orv_dft_dfti_error_message_external(i64 status)
{
    switch (told(status)) {
    case node_ok:
        return "no error";
    case node_no_memory:
        return "no memory is left for a Fourier transform";
    case node_bad_length:
        return "a length or the rank of a Fourier transform is not allowed";
    case node_inconsistent:
        return "settings of a Fourier transform contradict each other, or it is not committed";
    case node_unsupported:
        return "no kernel does this Fourier transform";
    case node_internal_error:
        return "a kernel of Fourier transforms failed: a fault of orv itself";
    case node_too_long:
        return "a length of a Fourier transform is beyond the kernels' limits";
    default:
        return "no status of Fourier transforms";
    }
}
