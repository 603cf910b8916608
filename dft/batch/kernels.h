// Passes over columns that lie side by side: a register holds an element of neighbouring columns, so a transform down
// the columns has no shuffle but its own. The number of columns fills registers; rows are a pitch apart.
//
// The shortest transforms come first, out of the source; each following pass joins some of them.
#pragma once

#include "frame/kernels/dft_batch.h"
#include "frame/simd.h"

namespace orv::dft::batch {

inline constexpr i64 longest_straight = 32;

// Transform t of so many has its first point in row starts[t], the next ones apart from there, modulo length; and its
// results in rows behind one another. A negative distance goes backwards from starts that are counted from the end, so
// the first one may be the length itself.
template <class R> struct Leaves {
    const cpx<R>* src;
    i64 src_pitch, length, apart;
    const i64* starts;
    cpx<R>* dst;
    i64 dst_pitch, transforms, columns;
};

// Row q of each of radix transforms of count rows is turned, and transforms of radix points run over them.
template <class R> struct Join {
    const cpx<R>* src;
    i64 src_pitch;
    cpx<R>* dst;
    i64 dst_pitch, count, columns;
    const R* twiddles;
};

// By radix; null where there is none.
template <class R> struct Passes {
    void (*leaves[longest_straight + 1])(const Leaves<R>&);
    void (*joins[longest_straight + 1])(const Join<R>&);
};
template <class R> const Passes<R>& passes();
template <> const Passes<float>& passes();
template <> const Passes<double>& passes();

} // namespace orv::dft::batch
