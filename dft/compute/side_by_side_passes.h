// The passes of lines side by side. Whichever the direction is they run forward: the inverse of x is the transform of x
// read backwards.
#pragma once

#include "dft/primitives/dft/stages.h"

namespace orv::dft::side_by_side {

constexpr bool is_leaf(i64 n) { return (n >= 2 && n <= 16) || n == 18 || n == 20 || n == 24 || n == 25; }
constexpr bool is_join(i64 r) { return r == 3 || r == 4 || r == 5 || r == 7 || r == 11 || r == 13; }
inline constexpr int longest_leaf = 25, largest_join = 13;

// As many lines as a register has lanes; of fewer the last one stands in for those that are missing.
template <class R> struct LinesInLanes {
    R* of[vec<cpx<R>>::lanes];

    static LinesInLanes from(const R* first, i64 step, i64 count)
    {
        LinesInLanes lines;
        for (i64 l = 0; l < vec<cpx<R>>::lanes; ++l) lines.of[l] = const_cast<R*>(first) + min(l, count - 1) * step;
        return lines;
    }
    ORV_INLINE LinesInLanes operator+(i64 reals) const
    {
        LinesInLanes moved = *this;
        for (R*& line : moved.of) line += reals;
        return moved;
    }
};

// What is the same for all lines. Transform t of so many has its first point starts[t*starts_step], the next ones so
// many points apart. Backwards, x[0] comes first and x[length - j] instead of x[j].
template <class R> struct Leaves {
    i64 length, apart;
    bool backwards;
    const i32* starts;
    i64 starts_step, transforms;
    vec<cpx<R>>* to;
};

// In each of so many blocks, radix transforms of count points are joined to one. The last join has one block, whose
// results go to the lines.
template <class R> struct Join {
    const R* twiddles;
    i64 count, blocks;
    vec<cpx<R>>* data;
};

// By points and radix; null where there is none.
template <class R> struct Passes {
    void (*leaves[longest_leaf + 1])(const Leaves<R>&, LinesInLanes<R> from);
    void (*joins[largest_join + 1])(const Join<R>&, LinesInLanes<R> to);
    void (*last_joins[largest_join + 1])(const Join<R>&, LinesInLanes<R> to);
};
template <class R> const Passes<R>& passes();
template <> const Passes<float>& passes();
template <> const Passes<double>& passes();

} // namespace orv::dft::side_by_side
