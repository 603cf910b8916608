// How many threads a transform is worth, and whether it needs any dispatch at all.
#include "dft/node.h"

#include <cmath>

namespace orv::dft {
namespace {

struct Variant {
    u32 precision, domain;
    bool md;
    constexpr bool complex() const { return domain == CFG_DOMAIN_COMPLEX; }
    constexpr i64 element_bytes() const { return (precision == CFG_DOUBLE ? 8 : 4) * (complex() ? 2 : 1); }
};

constexpr i64 tiny = 342; // elements that are not worth a second thread, if there is no better rule

// Bytes that a transform reads and writes.
double bytes_of(const Variant& v, const DftiNode& node)
{
    const double elements = static_cast<double>(node.total_size) * static_cast<double>(node.number_of_transforms);
    return static_cast<double>(v.element_bytes()) * elements * (is_in_place(node) ? 1 : 2);
}

// Suggestions: a number of threads, or 0 for none.
using Suggestion = i32(const Variant& v, const DftiNode& node);

i32 for_small_planes(const Variant& v, const DftiNode& node)
{
    if (!v.md || node.work_rank != 2 || node.number_of_transforms != 1) return 0;
    if (v.complex() && v.precision == CFG_DOUBLE) return node.total_size < 625;
    return is_power_of_two(node.total_size) ? node.total_size < 2048 : node.total_size <= tiny;
}

// As many as a share of the work keeps busy.
i32 for_work(const Variant& v, const DftiNode& node)
{
    if (v.md && node.work_rank != 1 && node.total_size > tiny) {
        const i32 all = processors(node);
        if (all > 1 && node.total_size < (all > 3 ? 8192 : 32000)) return all;
    }
    const double bytes = bytes_of(v, node);
    const i32 passes = v.md && node.work_rank >= 2 ? node.work_rank : node.via2d_data != nullptr ? 2 : 1;
    return static_cast<i32>(__builtin_sqrt(bytes * std::log(bytes) / 313600.0) + 0.5) * passes;
}

i64 first_cache_bytes()
{
    i32 entries[orv_serv_cache_entries] = {};
    orv_serv_cache_info(entries);
    return entries[0] > 0 ? entries[1] : 8192;
}

i32 for_small_batches(const Variant& v, const DftiNode& node)
{
    if (node.number_of_transforms > 1) return bytes_of(v, node) < static_cast<double>(first_cache_bytes());
    return v.md && node.work_rank >= 2 && node.total_size <= tiny;
}

constexpr Suggestion* suggestions[] = {for_small_planes, for_work, for_small_batches};

bool has_threaded_kernel(const DftiNode& node)
{
    return node.threaded_forward_d != nullptr || node.threaded_backward_d != nullptr ||
           node.threaded_forward_s != nullptr || node.threaded_backward_s != nullptr;
}

template <Variant v> i32 define(DftiNode* node, u32 dynamic)
{
    i32& threads = node->effective_threads;
    const bool single = node->number_of_transforms == 1;
    const bool one_dimension = !v.md || node->work_rank == 1;
    if (one_dimension && single && !(v.complex() && has_threaded_kernel(*node))) threads = 1;
    if (node->number_of_user_threads > 1) threads = 1;
    if (dynamic != 0)
        for (Suggestion* const suggest : suggestions) {
            const i32 suggested = suggest(v, *node);
            if (suggested >= 1 && suggested < threads) threads = suggested;
            if (threads == 1) break;
        }
    const bool unit_strides = node->input_stride == 1 && node->output_stride == 1;
    const bool direct = single && threads == 1;
    node->flags &= static_cast<u8>(~(DftiNode::direct_1d | DftiNode::direct_2d));
    if (direct && node->work_rank == 1 && unit_strides) node->flags |= DftiNode::direct_1d;
    if (direct && v.md && node->work_rank == 2) node->flags |= DftiNode::direct_2d;
    return node_ok;
}

} // namespace

#define DEFINITIONS(p, precision, d, domain)                                                                           \
    PRIMITIVE(2, threaded_mode_definition_##p##_##d##_1d, define<Variant{precision, domain, false}>)                   \
    PRIMITIVE(2, threaded_mode_definition_##p##_##d##_md, define<Variant{precision, domain, true}>)
DEFINITIONS(d, CFG_DOUBLE, c2c, CFG_DOMAIN_COMPLEX)
DEFINITIONS(d, CFG_DOUBLE, r2c, CFG_DOMAIN_REAL)
DEFINITIONS(s, CFG_SINGLE, c2c, CFG_DOMAIN_COMPLEX)
DEFINITIONS(s, CFG_SINGLE, r2c, CFG_DOMAIN_REAL)

} // namespace orv::dft
