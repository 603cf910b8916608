// One contiguous transform of pairs by the engine, of up to 4096 points, if its work area is so small that it can lie
// on the stack: so short transforms ask for no memory, and the engine applies the scale where it can.
#include "dft/methods/record.h"
#include "dft/methods/row.h"

namespace orv::dft {
namespace {

constexpr i64 longest = 4096;
constexpr i32 most_work_bytes = 2048;

template <class R, bool forward> i32 compute(DftiNode* node, void* data, void* output, void*, void*)
{
    alignas(cache_line) t_8u work[most_work_bytes];
    const auto* const from = static_cast<const cpx<R>*>(data);
    auto* const to = static_cast<cpx<R>*>(is_in_place(*node) ? data : output);
    const auto transform = forward ? Engine<cpx<R>>::forward : Engine<cpx<R>>::backward;
    return DFT(transfer_ymp_orv_error)(
        transform(from, to, static_cast<Record<cpx<R>>*>(node->method_data)->spec, work));
}

template <class R> i32 commit(const DftiMethod* method, DftiNode* node)
{
    i32 flag = 0;
    if (!is_plain_row<R>(*node) || node->work_lengths.dims[0].n > longest || !DFT(ymp_can_scale)(node, &flag))
        return node_not_this_method;
    take(method, node);
    auto* const state = state_of<Record<cpx<R>>>(node);
    i32 status = state == nullptr ? i32{node_no_memory} : state->prepare(node->work_lengths.dims[0].n, flag);
    if (status == node_ok && state->work_bytes > most_work_bytes) status = node_not_in_table;
    if (status != node_ok) return give_up(node, status);
    finish(node, compute<R, true>, compute<R, false>);
    return node_ok;
}

} // namespace

ORV_EXPORT constinit const DftiMethod DFT(bkd1_c){commit<float>, detach<Record<cpx<float>>>};
ORV_EXPORT constinit const DftiMethod DFT(bkd1_z){commit<double>, detach<Record<cpx<double>>>};

} // namespace orv::dft
