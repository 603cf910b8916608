#include "dft/compute/plane.h"

namespace orv::dft {
namespace {

// Blocks of columns are of one cache line where rows are dense.
template <class R> i64 log2_of_plane(Strides s) { return log2_of_columns<R>(s.first == 1 ? 2 : 3); }

// A plane may have less rows than a block, but they may go on in the next plane.
template <class In, class Out> i64 block_of_rows(const DftiNode& node, i64 log2_block)
{
    return block_bytes<In, Out>(node, log2_block, i64{1} << log2_block);
}

} // namespace

template <class R>
PairPlane<R>::PairPlane(const PlaneRun& run, const cpx<R>* input, Strides is, cpx<R>* output, Strides os)
    : run_(run), in_(lines_of(input, is.first, is.second)), out_(lines_of(output, os.first, os.second)), os_(os)
{
}

template <class R> i64 PairPlane<R>::buffer_bytes(const DftiNode& node, Strides is, Strides os)
{
    using Pair = cpx<R>;
    const i64 log2_block = log2_of_plane<R>(os);
    const bool stages_rows = is.first != 1 || os.first != 1;
    return max(stages_rows ? block_of_rows<Pair, Pair>(node, log2_block) : 0,
               block_bytes<Pair, Pair>(*node.next, log2_block, node.length));
}

template <class R> i32 PairPlane<R>::rows(i64 begin, i64 end) const
{
    const Run run{run_.node, run_.kernel0, run_.buffer, log2_of_plane<R>(os_), run_.work};
    return transform<cpx<R>, cpx<R>>(run, end - begin, in_.from(begin), out_.from(begin));
}

template <class R> i32 PairPlane<R>::columns(i64 begin, i64 end) const
{
    const Run run{run_.node->next, run_.kernel1, run_.buffer, log2_of_plane<R>(os_), run_.work};
    const Lines<cpx<R>> lines{out_.data, out_.distance, out_.stride};
    return transform<R>(run, end - begin, lines.from(begin));
}

template <class R> bool PairPlane<R>::short_columns(i64 planes, i64, i64 out_step) const
{
    const Run run{run_.node->next, run_.kernel1, run_.buffer, 0, run_.work};
    const Lines<cpx<R>> lines{out_.data, out_.distance, out_.stride};
    return short_lines_of_planes<R>(run, column_count(), lines, lines, planes, out_step, out_step);
}

// Back to reals that stand apart from the half spectrum, or are what it is packed among, columns leave their results
// where the reals will be, in the order that the kernel of rows reads.
template <class R>
RealPlane<R>::RealPlane(const PlaneRun& run, bool forward, bool as_pairs, R* reals, Strides of_reals, R* half,
                        Strides of_half, void* work_area)
    : run_(run), forward_(forward), reals_(lines_of(reals, of_reals.first, of_reals.second))
{
    const DftiNode& node = *run.node;
    const i64 n = node.length;
    half_ = as_pairs ? HalfRows<R>::pairs(half, of_half, n)
                     : HalfRows<R>::packed(half, of_half, layout_of(node.packed_format), n);
    middle_ = half_;
    if (work_area != nullptr) middle_ = HalfRows<R>::pairs(static_cast<R*>(work_area), {1, dft::half(n)}, n);
    else if (!forward && (!as_pairs || !is_in_place(node)))
        middle_ = HalfRows<R>::packed(reals, of_reals, read_by_kernel(node), n);
}

template <class R> void RealPlane<R>::move(i64 reals, i64 half)
{
    middle_.data += middle_.data == half_.data ? half : reals;
    half_.data += half;
    reals_.data += reals;
}

// A column that goes alone takes less than two of a block.
template <class R> i64 RealPlane<R>::buffer_bytes(const DftiNode& node)
{
    using Pair = cpx<R>;
    return max(block_of_rows<R, Pair>(node, log2_block),
               max(2, i64{1} << log2_block) * (node.next->length + 2) * static_cast<i64>(sizeof(Pair)));
}

template <class R> i32 RealPlane<R>::rows_forward(i64 begin, i64 end) const
{
    const Lines<const R> from = reals_.from(begin);
    if (middle_.as_pairs)
        return transform<R, cpx<R>>(run_of_rows(), end - begin, from, middle_.lines_of_pairs().from(begin));
    return transform<R, R>(run_of_rows(), end - begin, from, middle_.lines_of_reals().from(begin));
}

template <class R> i32 RealPlane<R>::rows_backward(i64 begin, i64 end) const
{
    const Lines<R> to = reals_.from(begin);
    if (middle_.as_pairs)
        return transform<cpx<R>, R>(run_of_rows(), end - begin, middle_.lines_of_pairs().from(begin), to);
    return transform<R, R>(run_of_rows(), end - begin, middle_.lines_of_reals().from(begin), to);
}

// Columns whose pairs are side by side on both sides go by blocks; the others alone, through single(k).
template <class R>
template <class Single>
i32 RealPlane<R>::columns_between(const HalfRows<R>& from, const HalfRows<R>& to, i64 begin, i64 end,
                                  const Single& single) const
{
    const auto alone = [&](i64 k) {
        return from.is_real(k) || to.is_real(k) || !from.is_adjacent() || !to.is_adjacent();
    };
    for (i64 k = begin, next; k < end; k = next) {
        next = k + 1;
        i32 status;
        if (alone(k)) status = single(k);
        else {
            if (from.as_pairs && to.as_pairs) next = end;
            while (next < end && !alone(next)) ++next;
            const Lines<cpx<R>> in = from.columns(k), out = to.columns(k);
            const bool in_place = in.data == out.data && in.stride == out.stride;
            status = in_place ? transform<R>(run_of_columns(), next - k, out)
                              : transform<cpx<R>, cpx<R>>(run_of_columns(), next - k, in, out);
        }
        if (status != node_ok) return status;
    }
    return node_ok;
}

// A column of reals has half a spectrum in its turn, packed as the rows are.
template <class R> i32 RealPlane<R>::columns_forward(i64 begin, i64 end) const
{
    const HalfRows<R>&from = middle_, &to = half_;
    DftiNode* const node = run_.node->next;
    const Layout layout = layout_of(run_.node->packed_format);
    cpx<R>* const column = static_cast<cpx<R>*>(run_.buffer);
    return columns_between(from, to, begin, end, [&](i64 k) {
        from.get(k, node->length, column);
        const i32 status = run_.kernel1(column, column, node, run_.work);
        if (from.is_real(k)) {
            R* const packed = &column[node->length].re;
            pack_row(node->length, layout, column, packed);
            scatter<R>(packed_length(layout, node->length), 1, to.column_of_reals(k), packed, 0);
        } else {
            to.put(k, node->length, column);
        }
        return status;
    });
}

template <class R> i32 RealPlane<R>::columns_backward(i64 begin, i64 end) const
{
    const HalfRows<R>&from = half_, &to = middle_;
    DftiNode* const node = run_.node->next;
    const Layout layout = layout_of(run_.node->packed_format);
    cpx<R>* const column = static_cast<cpx<R>*>(run_.buffer);
    return columns_between(from, to, begin, end, [&](i64 k) {
        if (from.is_real(k)) {
            R* const packed = &column[node->length].re;
            gather<R>(packed_length(layout, node->length), 1, packed, 0, from.column_of_reals(k));
            unpack_row(node->length, layout, packed, column);
            for (i64 j = half(node->length); j < node->length; ++j) column[j] = conj(column[node->length - j]);
        } else {
            from.get(k, node->length, column);
        }
        const i32 status = run_.kernel1(column, column, node, run_.work);
        to.put(k, node->length, column);
        return status;
    });
}

template <class R> bool RealPlane<R>::short_columns(i64 planes, i64 reals_step, i64 half_step) const
{
    if (!middle_.as_pairs || !half_.as_pairs) return false;
    const i64 middle_step = middle_.data == half_.data ? half_step : reals_step;
    const Lines<cpx<R>> middle = middle_.columns(0), half = half_.columns(0);
    return forward_ ? short_lines_of_planes<R>(run_of_columns(), column_count(), middle, half, planes, middle_step,
                                               half_step)
                    : short_lines_of_planes<R>(run_of_columns(), column_count(), half, middle, planes, half_step,
                                               middle_step);
}

template class PairPlane<float>;
template class PairPlane<double>;
template class RealPlane<float>;
template class RealPlane<double>;

} // namespace orv::dft
