// A batch of transforms of real and imaginary parts in two arrays, along one dimension, shared among threads. Rows of
// neighbours are transformed where they are; others, a few at a time, in a buffer of rows of their own.
#include "dft/methods/record.h"
#include "frame/kernels/dft_compute.h"

namespace orv::dft {
namespace {

// Lines of both arrays, and their scale.
template <class R> struct Staging;
#define STAGING(R, letters)                                                                                            \
    template <> struct Staging<R> {                                                                                    \
        static constexpr auto& gather = DFT(gather_##letters##_##letters);                                             \
        static constexpr auto& scatter = DFT(scatter_##letters##_##letters);                                           \
        static constexpr auto& scale = DFT(scal_##letters);                                                            \
    };
STAGING(float, ss)
STAGING(double, dd)

// How the batch is cut: so many transforms are staged together; their rows in the buffer stand so many numbers apart,
// an odd multiple of 8 so that neighbours never fall on the same lines of a cache, or 1 where rows stay where they are;
// the blocks are what threads can share.
struct Blocking {
    i64 rows, row_pitch, blocks;
    bool staged() const { return row_pitch > 1; }
};
i64 rows_of(i64 stride) { return stride == 0 ? 8 : max(1, 8 / (stride < 0 ? -stride : stride)); }

Blocking blocking_of(const IotensorDim& length, i64 count)
{
    const i64 n = length.n;
    if (length.is == 1 && length.os == 1) return {1, 1, n <= 32 ? count * n / 32 : count};
    i64 rows = 1;
    if (length.is != 1) rows = max(rows, rows_of(length.is));
    if (length.os != 1) rows = max(rows, rows_of(length.os));
    const i64 pitch = (n - 1) / 8 * 8 + 8;
    return {rows, pitch % 16 == 0 ? pitch + 8 : pitch, max(1, count / rows)};
}

template <class R> struct State {
    Record<R> engine;
    IotensorDim batch;
    R forward_scale, backward_scale; // what the engine does not apply
    Blocking blocking;
    void release() { engine.release(); }
    i64 row_bytes() const
    {
        return blocking.staged() ? blocking.rows * blocking.row_pitch * static_cast<i64>(2 * sizeof(R)) : 0;
    }
};

// ---- Work

template <class R> struct Call {
    const State<R>& state;
    IotensorDim length;
    Arrays<R> re, im;
    SplitDft<R>* transform;
    R scale;
    t_8u* memory; // of each thread: room for rows, then the engine's work area
    i64 memory_bytes;
    i32 status;

    // One row, at which the results stay.
    i32 run(const R* from_re, const R* from_im, R* to_re, R* to_im, t_8u* work) const
    {
        const i32 s = transform(from_re, from_im, to_re, to_im, state.engine.spec, work);
        if (scale != 1) Staging<R>::scale(length.n, scale, to_re, to_im);
        return s;
    }
    i32 where_they_are(Slice part, t_8u* work) const
    {
        i32 s = ok;
        for (i64 j = part.begin; j < part.end && s == ok; ++j) {
            const i64 in = j * state.batch.is, out = j * state.batch.os;
            s = run(re.from + in, im.from + in, re.to + out, im.to + out, work);
        }
        return s;
    }
    i32 staged(Slice part, R* rows, t_8u* work) const
    {
        const i64 pitch = state.blocking.row_pitch;
        R *const row_re = rows, *const row_im = rows + pitch;
        i32 s = ok;
        for (i64 j = part.begin, m; j < part.end && s == ok; j += m) {
            m = min(state.blocking.rows, part.end - j);
            const i64 in = j * state.batch.is, out = j * state.batch.os;
            Staging<R>::gather(length.n, m, row_re, row_im, pitch, re.from + in, im.from + in, length.is,
                               state.batch.is);
            for (i64 r = 0; r < m && s == ok; ++r) {
                R *const at_re = row_re + 2 * r * pitch, *const at_im = row_im + 2 * r * pitch;
                s = run(at_re, at_im, at_re, at_im, work);
            }
            Staging<R>::scatter(length.n, m, re.to + out, im.to + out, length.os, state.batch.os, row_re, row_im,
                                pitch);
        }
        return s;
    }
};

template <class R> void work(i32 thread, i32 threads, void* argument)
{
    auto& call = *static_cast<Call<R>*>(argument);
    const Blocking& blocking = call.state.blocking;
    const Slice part = slice(call.state.batch.n, blocking.rows, thread, threads);
    t_8u* const memory = call.memory + thread * call.memory_bytes;
    t_8u* const work = memory + call.state.row_bytes();
    const i32 s =
        blocking.staged() ? call.staged(part, reinterpret_cast<R*>(memory), work) : call.where_they_are(part, work);
    if (s != ok) __atomic_store_n(&call.status, s, __ATOMIC_RELAXED);
}

template <class R, bool forward> i32 compute(DftiNode* node, void* data0, void* data1, void* data2, void* data3)
{
    const auto& state = *static_cast<const State<R>*>(node->method_data);
    const auto arrays = [node](void* from, void* to) {
        auto* const source = static_cast<R*>(from) + node->input_offset;
        return Arrays<R>{source, is_in_place(*node) ? source : static_cast<R*>(to) + node->output_offset};
    };
    const i64 threads =
        node->number_of_user_threads > 1 ? 1 : max(1, min(node->effective_threads, state.blocking.blocks));
    const i64 bytes = round_up(state.row_bytes() + state.engine.work_bytes, cache_line);
    t_8u* memory = nullptr;
    if (bytes > 0) {
        memory = static_cast<t_8u*>(orv_serv_allocate(threads * bytes, page_bytes()));
        if (memory == nullptr) return node_no_memory;
    }
    Call<R> call{state,
                 node->work_lengths.dims[0],
                 arrays(data0, data2),
                 arrays(data1, data3),
                 forward ? Engine<R>::forward : Engine<R>::backward,
                 forward ? state.forward_scale : state.backward_scale,
                 memory,
                 bytes,
                 ok};
    share(*node, static_cast<i32>(threads), work<R>, &call);
    if (memory != nullptr) orv_serv_deallocate(memory);
    return DFT(transfer_ymp_orv_error)(call.status);
}

// ---- Commit

template <class R> i32 commit(const DftiMethod* method, DftiNode* node)
{
    if (!is_of<R>(*node, CFG_DOMAIN_COMPLEX) || !is_split_and_whole(*node) || node->work_rank != 1 ||
        node->work_batch.rank != 1)
        return node_not_this_method;
    take(method, node);
    i32 flag = scale_none;
    const bool scaled = DFT(ymp_can_scale)(node, &flag) != 0;
    if (!scaled) flag = scale_none;
    auto* const state = state_of<State<R>>(node);
    const i32 status =
        state == nullptr ? i32{node_no_memory} : state->engine.prepare(node->work_lengths.dims[0].n, flag);
    if (status != node_ok) return give_up(node, status);
    state->forward_scale = scaled ? R(1) : static_cast<R>(node->committed_forward_scale);
    state->backward_scale = scaled ? R(1) : static_cast<R>(node->committed_backward_scale);
    state->batch = node->work_batch.dims[0];
    state->blocking = blocking_of(node->work_lengths.dims[0], state->batch.n);
    finish(node, compute<R, true>, compute<R, false>);
    return node_ok;
}

} // namespace

ORV_EXPORT constinit const DftiMethod DFT(bkd_ss2s_1_1){commit<float>, detach<State<float>>};
ORV_EXPORT constinit const DftiMethod DFT(bkd_ds2s_1_1){commit<double>, detach<State<double>>};

} // namespace orv::dft
