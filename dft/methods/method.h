// What ways to do a transform share: what they ask of a node, where its arrays begin, and how work is cut.
#pragma once

#include "dft/node.h"

namespace orv::dft {

// ---- Conditions. Tensors are those that commit has put in order; where pairs are transformed in place, it has given
// the output the strides of the input.

template <class R> bool is_of(const DftiNode& node, u32 domain)
{
    return node.precision == Precision<R>::code && node.forward_domain == domain;
}
inline bool is_one_transform(const DftiNode& node)
{
    const Iotensor& batch = node.work_batch;
    return batch.rank == 0 || (batch.rank == 1 && batch.dims[0].n == 1);
}
inline bool is_unscaled(const DftiNode& node)
{
    return node.committed_forward_scale == 1 && node.committed_backward_scale == 1;
}
// One dimension of neighbours; reals in place have a spectrum with a stride of its own.
inline bool is_one_row(const DftiNode& node)
{
    if (node.work_rank != 1) return false;
    const IotensorDim& dim = node.work_lengths.dims[0];
    return dim.is == 1 && (dim.os == 1 || (is_in_place(node) && node.forward_domain == CFG_DOMAIN_COMPLEX));
}
// Two arrays, in a node that may be taken to pieces.
inline bool is_split_and_whole(const DftiNode& node)
{
    return node.complex_storage == CFG_STORE_SPLIT && (node.flags & DftiNode::no_decomposition) == 0;
}

// ---- Arrays, with their offsets. In place all is where the input is, but for the half spectrum of reals.

template <class T> struct Arrays {
    const T* from;
    T* to;
};
template <class R> Arrays<cpx<R>> pairs_of(const DftiNode& node, void* data, void* output)
{
    auto* const from = static_cast<cpx<R>*>(data) + node.input_offset;
    return {from, is_in_place(node) ? from : static_cast<cpx<R>*>(output) + node.output_offset};
}
template <class R> Arrays<R> reals_of(const DftiNode& node, bool forward, void* data, void* output)
{
    const bool pairs = has_half_spectrum(node);
    const i64 input = node.input_offset * (pairs && !forward ? 2 : 1);
    auto* const from = static_cast<R*>(data) + input;
    if (is_in_place(node) && !pairs) return {from, from};
    return {from, static_cast<R*>(is_in_place(node) ? data : output) + node.output_offset * (pairs && forward ? 2 : 1)};
}

// The spectrum of n reals in one of its layouts.
template <class R> struct Spectrum {
    using T = cpx<std::remove_const_t<R>>;
    R* values;
    i64 n;
    Places at;
    bool zeros; // the parts that are always 0 have a place
    Spectrum(R* values, i64 n, Layout layout)
        : values(values), n(n), at(places(layout, n)), zeros(layout == Layout::ccs)
    {
    }
    // Point k, 0 <= 2*k <= n. What is always 0 is not read.
    ORV_INLINE T get(i64 k) const
    {
        if (k == 0) return {values[0], 0};
        if (2 * k == n) return {values[at.half], 0};
        return {values[2 * k + at.shift], values[2 * k + at.shift + 1]};
    }
    ORV_INLINE void put(i64 k, T x) const
    {
        const bool real = k == 0 || 2 * k == n;
        const i64 place = k == 0 ? 0 : real ? at.half : 2 * k + at.shift;
        values[place] = x.re;
        if (zeros || !real) values[place + 1] = real ? R(0) : x.im;
    }
};

// ---- Work

struct Slice {
    i64 begin, end;
};
// A thread's part of so many elements, cut between units only; the last ones may have nothing.
inline Slice slice(i64 count, i64 unit, i32 thread, i32 threads)
{
    const i64 units = (count + unit - 1) / unit, each = (units + threads - 1) / threads * unit;
    return {min(thread * each, count), min((thread + 1) * each, count)};
}

// Threads that a node may use which has not had them counted by commit.
inline i32 threads_allowed(const DftiNode& node)
{
    if (node.number_of_user_threads > 1) return 1;
    const i32 most = max_threads(node);
    return node.thread_limit > 0 && node.thread_limit < most ? node.thread_limit : most;
}
// The same with a direct call for one.
inline void share(const DftiNode& node, i32 threads, DftTask* task, void* argument)
{
    if (threads > 1) parallel_for(node, threads, task, argument);
    else task(0, 1, argument);
}

// ---- Detach

// State is what method_data points to; it has release(), which takes a half-built one too.
template <class State> i32 detach(const DftiMethod* method, DftiNode* node)
{
    if (!let_go(method, node)) return node_internal_error;
    if (auto* const state = static_cast<State*>(node->method_data)) {
        state->release();
        orv_serv_free(state);
    }
    node->method = nullptr;
    node->method_data = nullptr;
    return node_ok;
}
struct NoState {
    void release() {}
};

// The state of the method in force, made where there is none yet: all zero. Null without memory.
template <class State> State* state_of(DftiNode* node, i64 alignment = cache_line)
{
    if (node->method_data == nullptr) node->method_data = orv_serv_calloc(1, sizeof(State), alignment);
    return static_cast<State*>(node->method_data);
}

} // namespace orv::dft
