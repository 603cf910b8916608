// Kernels of nodes that do no more than transform: what many short rows or lines go by instead of a call each.
#pragma once

#include "dft/compute/many.h"
#include "dft/compute/short_lines.h"
#include "dft/compute/short_rows.h"
#include "dft/compute/side_by_side.h"

namespace orv::dft {

// If the kernel transforms pairs in a direction and does no more than that.
template <class R> bool transforms_pairs(const Run& run, bool forward);

// Null where the kernel scales, is another one, or has more points.
template <class R> ShortLines<R>* short_lines(const Run& run);

// The same for lengths by factors that stay in a first-level cache.
template <class R> SideBySide<R> side_by_side(const Run& run);

// The same for the kernel of reals. A spectrum that it reads is laid out as told, one that it forms as the node says.
template <class R> struct RealRows {
    ShortRows<R>* body;
    i64 n;
    Layout layout;
    bool clears_behind; // in place the spectrum was longer than the reals

    void run(const R* from, i64 from_step, R* to, i64 to_step, i64 count) const
    {
        body(from, from_step, to, to_step, count, layout);
        if (clears_behind)
            for (i64 row = 0; row < count; ++row) to[row * to_step + n] = 0;
    }
};
template <class R> RealRows<R> short_rows(const Run& run, Layout read);

// The same for even numbers of reals whose halves go side by side.
template <class R> class HalvedRows {
public:
    HalvedRows(const Run& run, Layout read);
    bool applies() const { return half_.applies(); }
    void run(const R* from, i64 from_step, R* to, i64 to_step, i64 count) const;

private:
    SideBySide<R> half_;
    const YmpDftSpec* spec_;
    bool forward_;
    Layout layout_;
    bool clears_behind_; // as RealRows
};

// The same for longer rows of pairs, of powers of two and of products of small factors: the way through the engine is
// found once, not for each row.
template <class R> class EngineRows {
public:
    explicit EngineRows(const Run& run);
    bool applies() const { return spec_ != nullptr; }
    void run(const R* from, R* to) const;

private:
    const YmpDftSpec* spec_ = nullptr; // null where it does not apply
    bool forward_ = true;
    t_8u* work_ = nullptr;
};

} // namespace orv::dft
