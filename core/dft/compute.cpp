// Running a committed transform.
#include "core/dft/long_line.h"
#include "core/dft/nodes.h"
#include "core/dft/split.h"

using namespace orv;
using namespace orv::core;
using namespace orv::core::dft;

namespace orv::core::dft {
namespace {

using namespace kernels::dft;

[[gnu::noinline]] orv_status explain_failure(i32 status)
{
    switch (status) {
    case node_no_memory:
        return fail(ORV_NO_MEMORY, "no memory is left for a transform to work with");
    case node_unsupported:
        return fail(ORV_UNSUPPORTED, "no kernel does this transform");
    default:
        return fail(ORV_INTERNAL_ERROR, "a kernel did not finish a transform, with status %d: a fault of orv itself",
                    status);
    }
}

orv_status explain(i32 status) { return status == node_ok ? ORV_OK : explain_failure(status); }

DftiCompute* compute_of(const DftiNode* node, Direction direction)
{
    return direction == forward ? node->compute_forward : node->compute_backward;
}

orv_status compute_interleaved(const orv_dft& dft, Direction direction, void* from, void* to)
{
    if (dft.line_threads > 1) return explain(compute_line(dft, direction, from, to));
    DftiNode* const node = dft.node[direction];
    return explain(compute_of(node, direction)(node, from, dft.settings.in_place() ? nullptr : to, nullptr, nullptr));
}

} // namespace

orv_status compute(const orv_dft& dft, Direction direction, Arrays from, Arrays to)
{
    const Settings& s = dft.settings;
    if (dft.node[direction] == nullptr) return ORV_OK; // there are no transforms to do
    if (!s.is_split()) return compute_interleaved(dft, direction, from.first, to.first);
    DftiNode* const node = dft.node[direction];
    DftiCompute* const run = compute_of(node, direction);
    if (dft.staged_bytes > 0) return explain(compute_staged(dft, direction, run, from, to));
    if (s.in_place()) return explain(run(node, from.first, from.second, nullptr, nullptr));
    return explain(run(node, from.first, from.second, to.first, to.second));
}

} // namespace orv::core::dft

namespace {

struct Call {
    const char* routine;
    Direction direction;
    bool is_split;
};

orv_status check_state(const orv_dft* dft, const Call& call)
{
    if (dft == nullptr) return bad_argument(call.routine, 1, "null");
    if (!dft->committed)
        return fail(ORV_NOT_COMMITTED, "%s: the transform is not committed, or was changed since: call orv_dft_commit",
                    call.routine);
    const Settings& s = dft->settings;
    if (s.is_split() != call.is_split)
        return fail(ORV_BAD_SETTING, "%s: ORV_DFT_STORAGE is %s: call orv_dft_%s%s, or set the other storage",
                    call.routine, s.is_split() ? "ORV_DFT_SPLIT" : "ORV_DFT_INTERLEAVED",
                    call.direction == forward ? "forward" : "backward", s.is_split() ? "_split" : "");
    const int other = call.direction == forward ? ORV_DFT_BACKWARD : ORV_DFT_FORWARD;
    if (s.directions == other)
        return fail(ORV_BAD_SETTING, "%s: ORV_DFT_DIRECTIONS is %s alone: set ORV_DFT_BOTH and commit again",
                    call.routine, other == ORV_DFT_FORWARD ? "ORV_DFT_FORWARD" : "ORV_DFT_BACKWARD");
    return ORV_OK;
}

// One array of the input and what stands in its place on the other side; `argument` is the position of the latter.
orv_status check_pair(const orv_dft* dft, const Call& call, const void* from, const void* to, int argument)
{
    if (dft->settings.transforms == 0) return ORV_OK;
    const int arrays = call.is_split ? 2 : 1;
    if (from == nullptr) return bad_argument(call.routine, argument - arrays, "null");
    if (to == nullptr) return bad_argument(call.routine, argument, "null");
    if (dft->settings.in_place() == (from == to)) return ORV_OK;
    return from == to ? bad_argument(call.routine, argument,
                                     "the array that is argument %d, but ORV_DFT_PLACEMENT is ORV_DFT_OUT_OF_PLACE",
                                     argument - arrays)
                      : bad_argument(call.routine, argument,
                                     "not the array that is argument %d, but ORV_DFT_PLACEMENT is ORV_DFT_IN_PLACE",
                                     argument - arrays);
}

// A real signal has no second array.
orv_status check_single(const orv_dft* dft, const Call& call, const void* array, int argument)
{
    return array || dft->settings.transforms == 0 ? ORV_OK : bad_argument(call.routine, argument, "null");
}

// A short transform takes no longer than all these questions, so those that are always answered alike come first.
inline bool may_run(const orv_dft* dft, Direction direction, const void* from, const void* to)
{
    return dft && dft->committed && !dft->settings.is_split() && dft->node[direction] && from && to &&
           dft->settings.in_place() == (from == to);
}

[[gnu::noinline]] orv_status check_and_run(const orv_dft* dft, const Call& call, const void* from, void* to)
{
    if (const auto status = check_state(dft, call)) return status;
    if (const auto status = check_pair(dft, call, from, to, 3)) return status;
    return compute(*dft, call.direction, {const_cast<void*>(from), nullptr}, {to, nullptr});
}

orv_status run_split(const orv_dft* dft, const Call& call, const void* from_re, const void* from_im, void* to_re,
                     void* to_im)
{
    if (const auto status = check_state(dft, call)) return status;
    if (const auto status = check_pair(dft, call, from_re, to_re, 4)) return status;
    const bool is_real = dft->settings.is_real();
    const auto status = !is_real                    ? check_pair(dft, call, from_im, to_im, 5)
                        : call.direction == forward ? check_single(dft, call, to_im, 5)
                                                    : check_single(dft, call, from_im, 3);
    if (status != ORV_OK) return status;
    return compute(*dft, call.direction, {const_cast<void*>(from_re), const_cast<void*>(from_im)}, {to_re, to_im});
}

} // namespace

orv_status orv_dft_forward(const orv_dft* dft, const void* signal, void* spectrum)
{
    if (may_run(dft, forward, signal, spectrum))
        return compute_interleaved(*dft, forward, const_cast<void*>(signal), spectrum);
    return check_and_run(dft, {"orv_dft_forward", forward, false}, signal, spectrum);
}

orv_status orv_dft_backward(const orv_dft* dft, const void* spectrum, void* signal)
{
    if (may_run(dft, backward, spectrum, signal))
        return compute_interleaved(*dft, backward, const_cast<void*>(spectrum), signal);
    return check_and_run(dft, {"orv_dft_backward", backward, false}, spectrum, signal);
}

orv_status orv_dft_forward_split(const orv_dft* dft, const void* signal_re, const void* signal_im, void* spectrum_re,
                                 void* spectrum_im)
{
    return run_split(dft, {"orv_dft_forward_split", forward, true}, signal_re, signal_im, spectrum_re, spectrum_im);
}

orv_status orv_dft_backward_split(const orv_dft* dft, const void* spectrum_re, const void* spectrum_im, void* signal_re,
                                  void* signal_im)
{
    return run_split(dft, {"orv_dft_backward_split", backward, true}, spectrum_re, spectrum_im, signal_re, signal_im);
}
