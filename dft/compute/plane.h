// Two dimensions: rows, lines along the first one, and columns, along the second. A pass does any share of its lines,
// so that threads can divide it; what a line becomes does not depend on the share.
#pragma once

#include "dft/compute/many.h"

namespace orv::dft {

struct Strides {
    i64 first, second; // in elements
};

// What a transform of two dimensions is made of; the node is that of the first dimension.
struct PlaneRun {
    DftiNode* node;
    DftiKernel *kernel0, *kernel1;
    void* buffer;
    void* work;
};

// Points that are few: all of them stay in a first-level cache.
inline constexpr i64 few_points = 1024;

template <class R> class PairPlane {
public:
    PairPlane(const PlaneRun& run, const cpx<R>* input, Strides is, cpx<R>* output, Strides os);
    static i64 buffer_bytes(const DftiNode& node, Strides is, Strides os);
    // On to a plane so many reals away in either array.
    void move(i64 in, i64 out) { in_.data += in, out_.data += out; }
    i64 row_count() const { return run_.node->next->length; }
    i64 column_count() const { return run_.node->length; }
    i32 rows(i64 begin, i64 end) const; // from input to output
    i32 columns(i64 begin, i64 end) const;
    i64 first_count() const { return row_count(); }
    i64 second_count() const { return column_count(); }
    i32 first_pass(i64 begin, i64 end) const { return rows(begin, end); }
    i32 second_pass(i64 begin, i64 end) const { return columns(begin, end); }

    // If so many planes are few points, and the rows of one go on in the next one.
    bool rows_go_on(i64 planes, i64 in_step, i64 out_step) const
    {
        return planes * row_count() * column_count() <= few_points && in_step == row_count() * in_.distance &&
               out_step == row_count() * out_.distance;
    }
    static constexpr bool rows_come_first() { return true; }
    // All columns of so many planes, if they are short lines; else nothing is done.
    bool short_columns(i64 planes, i64 in_step, i64 out_step) const;

private:
    PlaneRun run_;
    Lines<const cpx<R>> in_;
    Lines<cpx<R>> out_;
    Strides os_;
};

// Where half spectra of rows of n reals stand: as pairs, or packed among reals. Strides count reals.
template <class R> struct HalfRows {
    R* data;
    i64 stride, distance;
    bool as_pairs;
    Places places; // of packed rows
    i64 n;

    static HalfRows pairs(R* data, Strides s, i64 n) { return {data, 2 * s.first, 2 * s.second, true, {}, n}; }
    static HalfRows packed(R* data, Strides s, Layout layout, i64 n)
    {
        return {data, s.first, s.second, false, dft::places(layout, n), n};
    }

    bool is_real(i64 k) const { return !as_pairs && (k == 0 || 2 * k == n); }
    bool is_adjacent() const { return as_pairs || stride == 1; } // both parts of a pair
    R* re(i64 k) const
    {
        return data + stride * (as_pairs || k == 0 ? k : 2 * k == n ? places.half : 2 * k + places.shift);
    }
    R* im(i64 k) const { return re(k) + (as_pairs ? 1 : stride); }
    void get(i64 k, i64 rows, cpx<R>* column) const
    {
        const R *x = re(k), *y = im(k);
        for (i64 j = 0; j < rows; ++j, x += distance, y += distance) column[j] = {*x, is_real(k) ? R(0) : *y};
    }
    void put(i64 k, i64 rows, const cpx<R>* column) const
    {
        R *x = re(k), *y = im(k);
        for (i64 j = 0; j < rows; ++j, x += distance, y += distance) {
            *x = column[j].re;
            if (!is_real(k)) *y = column[j].im;
        }
    }
    Lines<cpx<R>> columns(i64 k) const { return {re(k), distance, as_pairs ? stride : 2}; }
    Lines<R> column_of_reals(i64 k) const { return {re(k), distance, 0}; }
    Lines<cpx<R>> lines_of_pairs() const { return {data, stride, distance}; }
    Lines<R> lines_of_reals() const { return {data, stride, distance}; }
};

// Reals and half spectra. The pass that comes second reads what the first one left in `middle`: the array that is
// written, the one that is read if both are the same, or a work area.
template <class R> class RealPlane {
public:
    // The half spectrum as pairs or packed; a work area for half(n) pairs a row where one is needed, else null.
    RealPlane(const PlaneRun& run, bool forward, bool as_pairs, R* reals, Strides of_reals, R* half, Strides of_half,
              void* work_area);
    static i64 buffer_bytes(const DftiNode& node);
    // On to a plane whose reals and whose half spectra are so many reals away; without a work area.
    void move(i64 reals, i64 half);
    // Forward rows, then columns; backward columns, then rows.
    i64 first_count() const { return forward_ ? row_count() : column_count(); }
    i64 second_count() const { return forward_ ? column_count() : row_count(); }
    i32 first_pass(i64 begin, i64 end) const { return forward_ ? rows(begin, end) : columns(begin, end); }
    i32 second_pass(i64 begin, i64 end) const { return forward_ ? columns(begin, end) : rows(begin, end); }
    i64 row_count() const { return run_.node->next->length; }
    i64 column_count() const { return dft::half(run_.node->length); }
    i32 rows(i64 begin, i64 end) const { return forward_ ? rows_forward(begin, end) : rows_backward(begin, end); }
    i32 columns(i64 begin, i64 end) const
    {
        return forward_ ? columns_forward(begin, end) : columns_backward(begin, end);
    }

    // As of pairs.
    bool rows_go_on(i64 planes, i64 reals_step, i64 half_step) const
    {
        const i64 middle_step = middle_.data == half_.data ? half_step : reals_step;
        return planes * row_count() * column_count() <= few_points && reals_step == row_count() * reals_.distance &&
               middle_step == row_count() * middle_.distance;
    }
    bool rows_come_first() const { return forward_; }
    bool short_columns(i64 planes, i64 reals_step, i64 half_step) const;

private:
    i32 rows_forward(i64 begin, i64 end) const;     // from reals to middle
    i32 columns_forward(i64 begin, i64 end) const;  // from middle to half spectra
    i32 columns_backward(i64 begin, i64 end) const; // and back
    i32 rows_backward(i64 begin, i64 end) const;
    template <class Single>
    i32 columns_between(const HalfRows<R>& from, const HalfRows<R>& to, i64 begin, i64 end, const Single& single) const;
    Run run_of_rows() const { return {run_.node, run_.kernel0, run_.buffer, log2_block, run_.work}; }
    Run run_of_columns() const { return {run_.node->next, run_.kernel1, run_.buffer, log2_block, run_.work}; }
    static constexpr i64 log2_block = log2_of_columns<R>(2);

    PlaneRun run_;
    bool forward_;
    Lines<R> reals_;
    HalfRows<R> half_, middle_;
};

// Both passes.
template <class Plane> i32 run(const Plane& plane)
{
    const i32 status = plane.first_pass(0, plane.first_count());
    return status != node_ok ? status : plane.second_pass(0, plane.second_count());
}

// So many planes, a step apart from each other in either array. Where they are so small that what is asked for each
// takes as long as its lines, the rows of all go at once, and so do their columns.
template <class Plane> i32 run(Plane& plane, i64 count, i64 in_step, i64 out_step)
{
    const bool small = plane.rows_go_on(count, in_step, out_step);
    const i64 rows = plane.row_count();
    i32 status = node_ok;
    if (small && plane.rows_come_first()) status = plane.rows(0, count * rows);
    if (status == node_ok && !(small && plane.short_columns(count, in_step, out_step))) {
        for (i64 p = 0; p < count && status == node_ok; ++p, plane.move(in_step, out_step))
            status = small ? plane.columns(0, plane.column_count()) : run(plane);
        plane.move(-count * in_step, -count * out_step);
    }
    return status != node_ok || !small || plane.rows_come_first() ? status : plane.rows(0, count * rows);
}

} // namespace orv::dft
