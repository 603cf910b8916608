#include "dft/compute/whole.h"

namespace orv::dft {
namespace {

template <class R> Strides plane_strides(const DftiNode& head, Box<R> box)
{
    const i64 unit = box.as_pairs ? 2 : 1;
    return {box.stride(head, head) / unit, box.stride(head, *head.next) / unit};
}

} // namespace

// ---- Pairs to pairs: planes from input to output, then columns of higher dimensions in the output

template <class R> i64 WholeOfPairs<R>::buffer_bytes(const DftiNode& head)
{
    const bool in_place = is_in_place(head);
    const Strides is{head.input_stride, head.next->input_stride};
    const Strides os = in_place ? is : Strides{head.output_stride, head.next->output_stride};
    return max(PairPlane<R>::buffer_bytes(head, is, os), columns_buffer_bytes<R>(head));
}

template <class R> Steps WholeOfPairs<R>::steps() const
{
    return {2 * head->input_distance, 2 * (is_in_place(*head) ? head->input_distance : head->output_distance)};
}

template <class R> PairPlane<R> WholeOfPairs<R>::first_plane(void* buffer, void* work) const
{
    const PlaneRun run{head, kernel_of_pairs<R>(direction, *head), kernel_of_pairs<R>(direction, *head->next), buffer,
                       work};
    return {run, reinterpret_cast<const cpx<R>*>(input), plane_strides(*head, source()),
            reinterpret_cast<cpx<R>*>(output), plane_strides(*head, target())};
}

template <class R> i32 WholeOfPairs<R>::planes(Span items, void* buffer, void* work) const
{
    const Box<R> from = source(), to = target();
    return each_run_of_planes(*head, from, to, items.begin, items.end,
                              [&](i64 count, i64 in, i64 out, PlaneSteps steps) {
                                  PairPlane<R> plane = first_plane(buffer, work);
                                  plane.move(in, out);
                                  return run(plane, count, steps.in, steps.out);
                              });
}

template <class R> i32 WholeOfPairs<R>::columns(DftiNode* node, Span items, void* buffer, void* work) const
{
    return columns_of_box(head, node, kernel_of_pairs<R>(direction, *node), target(), target(), items.begin, items.end,
                          buffer, work);
}

template <class R> i32 WholeOfPairs<R>::all(void* buffer, void* work) const
{
    i32 status = planes({0, plane_count(*head)}, buffer, work);
    for (DftiNode* node = head->next->next; node != nullptr && status == node_ok; node = node->next)
        status = columns(node, {0, column_count(*head, *node)}, buffer, work);
    return status;
}

// ---- Reals: forward rows, columns, columns of higher dimensions; backward in the reverse order

template <class R> i64 WholeOfReals<R>::buffer_bytes(const DftiNode& head)
{
    return max(RealPlane<R>::buffer_bytes(head), columns_buffer_bytes<R>(head));
}

template <class R> Steps WholeOfReals<R>::steps() const
{
    return {head->input_distance * (as_pairs && !is_forward() ? 2 : 1),
            head->output_distance * (as_pairs && is_forward() ? 2 : 1)};
}

template <class R> Box<R> WholeOfReals<R>::source() const
{
    if (!is_forward() && middle != nullptr && head->next->next != nullptr) return {middle, Side::middle, true};
    return {const_cast<R*>(input), Side::input, as_pairs && !is_forward()};
}

template <class R> Box<R> WholeOfReals<R>::target() const
{
    if (is_forward() && middle != nullptr && head->next->next != nullptr) return {middle, Side::middle, true};
    return {output, Side::output, as_pairs && is_forward()};
}

template <class R> RealPlane<R> WholeOfReals<R>::first_plane(void* buffer, void* work) const
{
    const PlaneRun how{head, kernel_of_reals<R>(direction, *head), kernel_of_pairs<R>(direction, *head->next), buffer,
                       work};
    const Box<R> from = source(), to = target();
    const Box<R> reals = is_forward() ? from : to, half = is_forward() ? to : from;
    return {how,
            is_forward(),
            as_pairs,
            reals.data,
            plane_strides(*head, reals),
            half.data,
            plane_strides(*head, half),
            head->next->next == nullptr ? middle : nullptr};
}

template <class R> i32 WholeOfReals<R>::planes(Span items, void* buffer, void* work) const
{
    const Box<R> from = source(), to = target();
    return each_run_of_planes(
        *head, from, to, items.begin, items.end, [&](i64 count, i64 in, i64 out, PlaneSteps steps) {
            RealPlane<R> plane = first_plane(buffer, work);
            if (is_forward()) plane.move(in, out);
            else plane.move(out, in);
            return is_forward() ? run(plane, count, steps.in, steps.out) : run(plane, count, steps.out, steps.in);
        });
}

// Through the middle the outermost dimension's lines, which are the last ones forward and the first ones backward, come
// from the input or go to the output.
template <class R> i32 WholeOfReals<R>::columns(DftiNode* node, Span items, void* buffer, void* work) const
{
    Box<R> from = is_forward() ? target() : source(), to = from;
    if (node->next == nullptr && middle != nullptr) {
        if (is_forward()) to = {output, Side::output, true};
        else from = {const_cast<R*>(input), Side::input, true};
    }
    return columns_of_box(head, node, kernel_of_pairs<R>(direction, *node), from, to, items.begin, items.end, buffer,
                          work);
}

template <class R> i32 WholeOfReals<R>::all(void* buffer, void* work) const
{
    const auto lines = [&](DftiNode* node) { return columns(node, {0, column_count(*head, *node)}, buffer, work); };
    i32 status = node_ok;
    if (!is_forward()) {
        DftiNode* last = head;
        while (last->next != nullptr) last = last->next;
        for (DftiNode* node = last; node != head->next && status == node_ok; node = node->prev) status = lines(node);
    }
    if (status == node_ok) status = planes({0, plane_count(*head)}, buffer, work);
    if (is_forward())
        for (DftiNode* node = head->next->next; node != nullptr && status == node_ok; node = node->next)
            status = lines(node);
    return status;
}

template struct WholeOfPairs<float>;
template struct WholeOfPairs<double>;
template struct WholeOfReals<float>;
template struct WholeOfReals<double>;

} // namespace orv::dft
