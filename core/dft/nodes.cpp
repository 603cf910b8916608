// From settings to nodes. A node knows of an input and an output; settings know of signal and spectrum, so backward
// needs a node of its own where the two sides differ.
#include "core/dft/nodes.h"

#include "core/branch/kernel.h"
#include "core/dft/long_line.h"
#include "core/dft/services.h"
#include "orv/numerics.h"

#include <cinttypes>
#include <cstdio>

namespace orv::core::dft {
namespace {

using namespace kernels::dft;

// Values are given to nodes as they are.
static_assert(+ORV_DFT_HALF == +CFG_CCE && +ORV_DFT_PERM == +CFG_PERM && +ORV_DFT_SPLIT == +CFG_STORE_SPLIT &&
              +ORV_DFT_INTERLEAVED == +CFG_STORE_COMPLEX && +ORV_DFT_IN_PLACE == +CFG_IN_PLACE &&
              +ORV_DFT_ORDERED == +CFG_ORDERED && +ORV_DFT_AVOID == +CFG_AVOID);

constinit Kernel create_dc{dfti_create_dc1d()}, create_dr{dfti_create_dr1d()}, create_sc{dfti_create_sc1d()},
    create_sr{dfti_create_sr1d()};
constinit Kernel create_dcm{dfti_create_dcmd()}, create_drm{dfti_create_drmd()}, create_scm{dfti_create_scmd()},
    create_srm{dfti_create_srmd()};

// Dimensions of length 1 add nothing: they go, so that a plane of one line is a line. That of a real signal which is
// halved stays, and one stays in any case.
Settings without_ones(const Settings& from)
{
    Settings s = from;
    const Layout sides_of[both_sides] = {layout(from, signal), layout(from, spectrum)};
    for (int side = signal; side < both_sides; ++side)
        s.side[side].has_strides = true, s.side[side].distance = {true, sides_of[side].distance},
        s.side[side].offset = {true, sides_of[side].offset};
    int rank = 0;
    for (int k = 0; k < from.rank; ++k) {
        const bool is_halved = from.is_real() && k == 0, is_all_there_is = k == from.rank - 1 && rank == 0;
        if (from.lengths[k] == 1 && !is_halved && !is_all_there_is) continue;
        s.lengths[rank] = from.lengths[k];
        for (int side = signal; side < both_sides; ++side) s.side[side].strides[rank] = sides_of[side].strides[k];
        ++rank;
    }
    s.rank = rank;
    return s;
}

// No kernel splits the spectrum of reals: it goes through work memory, interleaved and without gaps.
Settings with_staged_spectrum(const Settings& from)
{
    Settings s = from;
    s.storage = ORV_DFT_INTERLEAVED;
    s.side[spectrum] = {};
    return s;
}

bool is_staged(const Settings& s) { return s.is_real() && s.is_split(); }

i64 staged_bytes(const Settings& s) { return layout(s, spectrum).distance * s.transforms * element_bytes(s, spectrum); }

bool are_alike(const Settings& s)
{
    const Layout a = layout(s, signal), b = layout(s, spectrum);
    for (int k = 0; k < s.rank; ++k)
        if (a.strides[k] != b.strides[k]) return false;
    return a.offset == b.offset && (a.distance == b.distance || s.transforms == 1);
}

i32 set_side(DftiNode* node, const Layout& l, decltype(DftiMethods::set_input_strides) set_strides,
             decltype(DftiMethods::set_input_distance) set_distance)
{
    i64 offset_and_strides[1 + ORV_DFT_MAX_RANK] = {l.offset};
    for (int k = 0; k < ORV_DFT_MAX_RANK; ++k) offset_and_strides[1 + k] = l.strides[k];
    const i32 status = set_strides(node, offset_and_strides);
    return status ? status : set_distance(node, l.distance);
}

// A node for `direction`; for the other one, too, if it is shared.
i32 describe(DftiNode* node, const Settings& s, Direction direction, bool shared)
{
    const DftiMethods& set = *node->methods;
    node->placement = s.placement;
    node->workspace = s.workspace;
    if (s.is_real()) {
        node->packed_format = s.format;
        node->conjugate_even_storage = s.is_half() ? CFG_STORE_COMPLEX : CFG_STORE_PACKED;
    } else {
        node->complex_storage = s.storage;
        if (!s.is_split()) node->ordering = s.ordering; // split spectra are always in order
    }
    const SideName in = direction == forward ? signal : spectrum, out = direction == forward ? spectrum : signal;
    i32 status = set_side(node, layout(s, in), set.set_input_strides, set.set_input_distance);
    if (!status) status = set_side(node, layout(s, out), set.set_output_strides, set.set_output_distance);
    if (!status) status = set.set_number_of_transforms(node, s.transforms);
    // A scale that is not used would only keep kernels from applying the other one on the way.
    if (!status && (shared || direction == forward)) status = set.set_scale(node, s.scales[forward], scale_of_forward);
    if (!status && (shared || direction == backward))
        status = set.set_scale(node, s.scales[backward], scale_of_backward);
    // Some methods are chosen by the number of threads.
    if (!status) status = set.set_thread_limit(node, orv_get_reproducible() ? 1 : s.threads);
    return status;
}

void destroy(DftiNode* node)
{
    if (node) node->destroy(node);
}

i32 make_node(const Settings& s, Direction direction, bool shared, DftiNode*& out)
{
    DftiNode* node = nullptr;
    i32 status = create_node(&node, s.precision, s.domain, s.rank, s.lengths);
    if (status != node_ok) return status;
    status = describe(node, s, direction, shared);
    if (status == node_ok) status = node->methods->commit(node);
    if (status == node_ok) return out = node, status;
    destroy(node);
    return status;
}

bool wants(const Settings& s, Direction direction)
{
    return s.directions == ORV_DFT_BOTH || s.directions == (direction == forward ? ORV_DFT_FORWARD : ORV_DFT_BACKWARD);
}

i32 make_nodes(orv_dft& dft, const Settings& s)
{
    const bool shared = s.directions == ORV_DFT_BOTH && are_alike(s);
    for (const Direction direction : {forward, backward}) {
        if (!wants(s, direction)) continue;
        if (shared && direction == backward) {
            dft.node[backward] = dft.node[forward];
        } else if (const i32 status = make_node(s, direction, shared, dft.node[direction])) {
            drop_nodes(dft);
            return status;
        }
    }
    return node_ok;
}

// The sentence for what kernels answer.
orv_status explain(i32 status, const Settings& s)
{
    char lengths[24 * ORV_DFT_MAX_RANK] = {};
    for (int k = 0, at = 0; k < s.rank; ++k)
        at += std::snprintf(lengths + at, sizeof lengths - at, "%s%" PRId64, k ? " by " : "", s.lengths[k]);
    switch (status) {
    case no_kernel:
        return last_status();
    case node_no_memory:
        return fail(ORV_NO_MEMORY, "orv_dft_commit: no memory is left for the tables of a transform of %s", lengths);
    case node_too_long:
        return fail(ORV_UNSUPPORTED,
                    "a transform of %s has a length beyond the kernels' limits: 2^26 in double and 2^27 in single "
                    "precision for a power of two, 2^24 and 2^25 for any other; longer ones need one dimension, one "
                    "transform, strides and scales of 1",
                    lengths);
    case node_inconsistent:
    case node_unsupported:
    case node_not_this_method:
    case node_not_in_table:
        return fail(ORV_UNSUPPORTED, "no kernel takes a transform of %s with these strides, distances and formats",
                    lengths);
    default:
        return fail(ORV_INTERNAL_ERROR,
                    "a kernel did not take a transform of %s, with status %d: a fault of orv itself", lengths, status);
    }
}

} // namespace

i32 create_node(DftiNode** node, int precision, int domain, int rank, const i64* lengths)
{
    const bool is_double = precision == ORV_DFT_DOUBLE, is_real = domain == ORV_DFT_REAL;
    i32 status;
    if (rank == 1) {
        auto& one = is_real ? (is_double ? create_dr : create_sr) : (is_double ? create_dc : create_sc);
        Create1d* const kernel = one.get();
        status = kernel ? kernel(node, lengths[0]) : no_kernel;
    } else {
        auto& many = is_real ? (is_double ? create_drm : create_srm) : (is_double ? create_dcm : create_scm);
        CreateMd* const kernel = many.get();
        status = kernel ? kernel(node, rank, lengths) : no_kernel;
    }
    if (status == node_ok) lend((*node)->api);
    return status;
}

orv_status make_nodes(orv_dft& dft)
{
    if (const auto status = open_branch()) return status;
    const Settings& s = dft.settings;
    if (s.transforms == 0) return ORV_OK;
    Settings plain = without_ones(is_staged(s) ? with_staged_spectrum(s) : s);
    dft.staged_bytes = is_staged(s) ? staged_bytes(plain) : 0;
    const int threads = line_threads(plain);
    if (threads > 1) plain.workspace = ORV_DFT_AVOID;
    const i32 status = make_nodes(dft, plain);
    if (status != node_ok) return explain(status, s);
    for (const DftiNode* node : dft.node)
        if (node && threads > 1 && is_in_two_dimensions(*node)) dft.line_threads = threads;
    return ORV_OK;
}

void drop_nodes(orv_dft& dft)
{
    if (dft.node[backward] != dft.node[forward]) destroy(dft.node[backward]);
    destroy(dft.node[forward]);
    dft.node[forward] = dft.node[backward] = nullptr;
    dft.line_threads = 1;
}

} // namespace orv::core::dft

orv_status orv_dft_commit(orv_dft* dft)
{
    using namespace orv::core::dft;
    if (dft == nullptr) return orv::core::bad_argument("orv_dft_commit", 1, "null");
    dft->committed = false;
    drop_nodes(*dft);
    orv_status status = check(dft->settings);
    if (status == ORV_OK) status = make_nodes(*dft);
    dft->committed = status == ORV_OK;
    return status;
}
