// The tables of records: reversed indices, and twiddles copied from a base of sines.
#pragma once

#include "dft/primitives/fft.h"
#include "dft/primitives/fft/butterfly.h"
#include "frame/dft.h"

namespace orv::dft {

inline constexpr i64 table_boundary = cache_line;
constexpr i64 table_bytes(i64 count, i64 size) { return round_up(count * size, table_boundary); }
template <class T> t_8u* behind_table(T* end)
{
    return reinterpret_cast<t_8u*>(round_up(static_cast<i64>(reinterpret_cast<std::uintptr_t>(end)), table_boundary));
}

constexpr i64 reversal_entries(i32 order) { return (i64{1} << (order - 2)) + 1; }

// Any angle k of the 2^order of a base.
template <class R> class Circle {
public:
    Circle(const R* sines, i32 order) : sines_(sines), order_(order) {}
    i32 order() const { return order_; }
    // exp(2*pi*i*k/2^order)
    cpx<R> root(i64 k) const
    {
        const i64 quarter = i64{1} << (order_ - 2), place = k & (quarter - 1);
        const i64 which = k >> (order_ - 2) & 3;
        const i64 of_sine = which & 1 ? quarter - place : place;
        const R sine = sines_[of_sine], cosine = sines_[quarter - of_sine];
        return {(which + 1) & 2 ? -cosine : cosine, which & 2 ? -sine : sine};
    }
    // The conjugates of count roots, from k on by steps, apart. Within a quarter of the circle all lie as the first
    // does.
    template <int count> void conjugates(i64 k, i64 step, R* re, R* im) const
    {
        if ((k ^ (k + (count - 1) * step)) >> (order_ - 2) != 0) {
            for (i64 l = 0; l < count; ++l, k += step) re[l] = root(k).re, im[l] = -root(k).im;
            return;
        }
        const i64 quarter = i64{1} << (order_ - 2), place = k & (quarter - 1), which = k >> (order_ - 2) & 3;
        const R *up = sines_ + place, *down = sines_ + quarter - place;
        const R sign_re = (which + 1) & 2 ? R(-1) : R(1), sign_im = which & 2 ? R(1) : R(-1);
        R *const along_up = which & 1 ? re : im, *const along_down = which & 1 ? im : re;
        const R sign_up = which & 1 ? sign_re : sign_im, sign_down = which & 1 ? sign_im : sign_re;
        for (i64 l = 0; l < count; ++l, up += step, down -= step)
            along_up[l] = sign_up * *up, along_down[l] = sign_down * *down;
    }

private:
    const R* sines_;
    i32 order_;
};

inline constexpr int most_rows = 8; // of a butterfly of a pass or of a stage

// The twiddles of one butterfly of 2^log rows over some columns, in the order in which a pass reads them: for each
// block of columns and each row but the first, in bit-reversed order of the rows as in memory, a register of real and
// one of imaginary parts. Column c of a transform of 2^order points has exp(-2*pi*i*row*c/2^order). Returns the end.
template <class R>
R* write_twiddles(const Circle<R>& circle, i32 order, int log, int rows, i64 begin, i64 columns, R* out)
{
    constexpr i64 lanes = vec<R>::lanes;
    i64 turns[most_rows];
    for (int row = 1; row < rows; ++row) turns[row] = i64{reversed(row, log)} << (circle.order() - order);
    for (i64 c = begin; c < begin + columns; c += lanes)
        for (int row = 1; row < rows; ++row, out += 2 * lanes)
            circle.template conjugates<lanes>(turns[row] * c, turns[row], out, out + lanes);
    return out;
}

} // namespace orv::dft
