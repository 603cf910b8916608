// Transforms of more points than the engine's tables lead to. All points are reversed; then transforms of neighbours,
// each within a cache; then an outer step that goes by blocks of columns: rows are merged in the buffer, a chain of
// stages joins them, and the block is split back. Transforms of neighbours that are large themselves divide again.
//
// Form says how numbers stand in the arrays: PairForm or PlaneForm.
#pragma once

#include "dft/primitives/fft/record.h"
#include "dft/primitives/fft/reversal.h"

namespace orv::dft {

// Pairs, which are blocks between the first pass and the outermost split.
template <bool forward, class R> struct PairForm {
    cpx<R>* p;

    PairForm from(i64 i) const { return {p + i}; }
    static auto in_buffer(t_8u* buffer, i64) { return PairForm{reinterpret_cast<cpx<R>*>(buffer)}; }
    auto working() const { return Blocks<R>{&p->re}; }
    auto source() const { return PairSource<forward, R, InOrder>{p, {}}; }
    template <class F> void each_array(PairForm other, F f) const { f(p, other.p); }
    void scale(i64 points, t_64f by) const { multiply(&p->re, 2 * points, by); }
    // A row of a block at last.
    void finish(PairForm to, i64 columns) const
    {
        const Blocks<R> blocks{&p->re};
        const Pairs<R, !forward> pairs{to.p};
        for (i64 c = 0; c < columns; c += vec<R>::lanes) pairs.put(c, blocks.get(c));
    }
};

template <class R> struct PlaneForm {
    R *re, *im;

    PlaneForm from(i64 i) const { return {re + i, im + i}; }
    static auto in_buffer(t_8u* buffer, i64 points)
    {
        R* const first = reinterpret_cast<R*>(buffer);
        return PlaneForm{first, first + points};
    }
    auto working() const { return Planes<R>{re, im}; }
    auto source() const { return PlaneSource<R, InOrder>{{re, im}, {}}; }
    template <class F> void each_array(PlaneForm other, F f) const { f(re, other.re), f(im, other.im); }
    void scale(i64 points, t_64f by) const { multiply(re, points, by), multiply(im, points, by); }
    void finish(PlaneForm to, i64 columns) const
    {
        each_array(to, [=](const R* a, R* b) { copy_rows(a, 0, b, 0, 1, columns); });
    }
};

template <bool forward, class R, class Form> class Large {
public:
    Large(const YmpFftSpec& spec, t_8u* buffer) : spec_(spec), buffer_(buffer) {}

    // src and dst: one array of the form's, or both.
    template <class T> void reverse(const T* src, T* dst, i32 order) const
    {
        BitReversal<T>(order, spec_.bit_reverse_table, buffer_).run(src, dst);
    }
    void step(Form data, i32 order, int level) const
    {
        const auto [rows, block] = step_of<R>(order);
        const i32 inner = order - rows;
        const i64 columns = i64{1} << inner, width = i64{1} << (block - rows);
        for (i64 row = 0; row < i64{1} << rows; ++row) transform_row(data.from(row * columns), inner, level);

        const Form merged = Form::in_buffer(buffer_, i64{1} << block);
        const R* twiddles = static_cast<const R*>(spec_.step_twiddles[level]);
        for (i64 c = 0; c < columns; c += width) {
            copy_block(data.from(c), columns, merged, width, rows, width);
            twiddles = chain(merged, rows, width, twiddles);
            if (level > 0) copy_block(merged, width, data.from(c), columns, rows, width);
            else
                for (i64 row = 0; row < i64{1} << rows; ++row)
                    merged.from(row * width).finish(data.from(c + row * columns), width);
        }
    }

private:
    void transform_row(Form row, i32 order, int level) const
    {
        if (order > flat_limit<R>) return step(row, order, level + 1);
        const Flat flat(row.source(), row.working(), order, static_cast<const R*>(spec_.twiddle_table));
        flat.run(row.working());
        if (divides<forward>(spec_)) row.scale(i64{1} << order, spec_.norm);
    }
    static void copy_block(Form from, i64 stride, Form to, i64 to_stride, i32 rows, i64 columns)
    {
        from.each_array(to,
                        [=](const auto* a, auto* b) { copy_rows(a, stride, b, to_stride, i64{1} << rows, columns); });
    }
    // Returns the twiddles of the next block.
    static const R* chain(Form merged, i32 rows, i64 width, const R* twiddles)
    {
        for (i32 done = 0; done < rows;) {
            const int log = stage_log(rows, done);
            const i64 together = i64{1} << done, groups = i64{1} << (rows - done - log);
            for (i64 row = 0; row < together; ++row) {
                const auto view = merged.from(row * width).working();
                const i64 between = together * width;
                if (log == 3) {
                    pass<8>(view, view, groups, between, width, twiddles);
                    twiddles += 7 * 2 * width;
                } else if (done + log < rows) {
                    pass<4>(view, view, groups, between, width, twiddles);
                    twiddles += 3 * 2 * width;
                } else {
                    pass<4, Twiddles::one>(view, view, groups, between, width, twiddles);
                    twiddles += 2 * width;
                }
            }
            done += log;
        }
        return twiddles;
    }

    const YmpFftSpec& spec_;
    t_8u* buffer_;
};

} // namespace orv::dft
