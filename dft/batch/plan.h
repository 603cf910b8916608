// Plans: what the entries of all forms, types and directions do.
#pragma once

#include "dft/batch/objects.h"

namespace orv::dft::batch {

struct Problem {
    i64 n, rows, columns, width, one;
    i64 form; // as BatchPlan has it

    i32 refusal() const;
    Layout from() const;
    Layout to() const;
    i64 share_rule() const;
};

// The sizes of memory and of a thread's buffer; the problem is not one that is refused.
template <class R> i64 plan_bytes(const Problem& p);
template <class R> i64 thread_bytes(const Problem& p);

template <class R> i32 init(bool forward, void* memory, const Problem& p);
template <class R> i32 init_alloc(bool forward, void** plan, const Problem& p);
template <class R> i32 run(bool forward, const cpx<R>* src, cpx<R>* dst, const BatchThread* ctx, const void* plan);
i32 end(void* plan);

} // namespace orv::dft::batch
