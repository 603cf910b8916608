#include "dft/compute/routes.h"

namespace orv::dft {
namespace {

// A batch whose transforms lie element beside element on either side goes by blocks, as columns do; of length 1 there
// is nothing to gain by that.
bool is_interleaved(const DftiNode& head)
{
    const bool beside = head.input_distance == 1 || (!is_in_place(head) && head.output_distance == 1);
    return beside && head.length != 1;
}

template <class In, class Out>
i32 lines_of_node(DftiNode* node, DftiKernel* kernel, const In* input, Out* output, i64 output_stride,
                  i64 output_distance, i64 count, void* work)
{
    const Lines<const In> in = lines_of(input, node->input_stride, node->input_distance);
    const Lines<Out> out = lines_of(output, output_stride, output_distance);
    const Buffer buffer(in.is_dense() && out.is_dense() ? 0 : block_bytes<In, Out>(*node, 0, 1));
    if (buffer.missing()) return node_no_memory;
    return transform<In, Out>({node, kernel, buffer.begin(), 0, work}, count, in, out);
}

// Two dimensions of interleaved transforms: all columns of the batch at each place of the other dimension, in turn.
template <class R>
i32 interleaved_planes(Direction direction, DftiNode* head, const cpx<R>* input, cpx<R>* output, Strides os,
                       i64 output_distance, i64 count, void* work)
{
    using Pair = cpx<R>;
    DftiNode* const next = head->next;
    const i64 log2_block = log2_of_columns<R>(3);
    const Buffer buffer(
        max(block_bytes<Pair, Pair>(*head, log2_block, count), block_bytes<Pair, Pair>(*next, log2_block, count)));
    if (buffer.missing()) return node_no_memory;
    i32 status = node_ok;
    const Run rows{head, kernel_of_pairs<R>(direction, *head), buffer.begin(), log2_block, work};
    for (i64 j = 0; j < next->length && status == node_ok; ++j) {
        const Lines<const Pair> in = lines_of(input + j * next->input_stride, head->input_stride, head->input_distance);
        const Lines<Pair> out = lines_of(output + j * os.second, os.first, output_distance);
        status = input == output ? transform<R>(rows, count, out) : transform<Pair, Pair>(rows, count, in, out);
    }
    const Run columns{next, kernel_of_pairs<R>(direction, *next), buffer.begin(), log2_block, work};
    for (i64 i = 0; i < head->length && status == node_ok; ++i)
        status = transform<R>(columns, count, lines_of(output + i * os.first, os.second, output_distance));
    return status;
}

// A batch, from its first transform on.
template <class Whole> i32 each_of(Whole& one, i64 count, void* buffer, void* work)
{
    const Steps steps = one.steps();
    i32 status = node_ok;
    for (i64 t = 0; t < count && status == node_ok; ++t, one.input += steps.in, one.output += steps.out)
        status = one.all(buffer, work);
    return status;
}

} // namespace

template <class R>
i32 route_of_pairs(Direction direction, DftiNode* head, const void* input, void* output, i64 count, void* work)
{
    if (is_split(*head)) return route_of_two_arrays<R>(direction, head, input, output, count, work);
    const auto* const in = static_cast<const cpx<R>*>(input);
    auto* const out = static_cast<cpx<R>*>(output);
    const bool in_place = is_in_place(*head);
    const auto stride = [&](const DftiNode& node) { return in_place ? node.input_stride : node.output_stride; };
    const i64 distance = in_place ? head->input_distance : head->output_distance;
    DftiKernel* const kernel = kernel_of_pairs<R>(direction, *head);

    if (head->work_rank == 1) {
        if (!is_interleaved(*head)) return lines_of_node(head, kernel, in, out, stride(*head), distance, count, work);
        return in_place ? transform_batch<R>(head, out, kernel, count, work)
                        : transform_batch<cpx<R>, cpx<R>>(head, in, out, kernel, count, work);
    }
    if (head->work_rank == 2 && is_interleaved(*head))
        return interleaved_planes<R>(direction, head, in, out, {stride(*head), stride(*head->next)}, distance, count,
                                     work);

    const Buffer buffer(WholeOfPairs<R>::buffer_bytes(*head));
    if (buffer.missing()) return node_no_memory;
    WholeOfPairs<R> one{direction, head, &in->re, &out->re};
    return each_of(one, count, buffer.begin(), work);
}

// A failing kernel's row goes back to its place all the same.
template <class R>
i32 route_of_two_arrays(Direction direction, DftiNode* head, const void* input, void* output, i64 count, void* work)
{
    if (head->work_rank != 1) return node_unsupported;
    const R* const* const in = static_cast<const R* const*>(input);
    R* const* const out = static_cast<R* const*>(output);
    const bool in_place = is_in_place(*head);
    const i64 n = head->length, is = head->input_stride, os = in_place ? is : head->output_stride;
    const i64 id = head->input_distance, od = in_place ? id : head->output_distance;
    const bool staged = is != 1 || os != 1;

    const i64 part = round_up(n * static_cast<i64>(sizeof(R)), page_bytes());
    const Buffer buffer(staged ? 2 * part : 0);
    if (buffer.missing()) return node_no_memory;
    R* const re = static_cast<R*>(buffer.begin());
    R* rows[] = {re, staged ? re + part / static_cast<i64>(sizeof(R)) : nullptr};

    DftiKernel* const kernel = kernel_of_pairs<R>(direction, *head);
    for (i64 t = 0; t < count; ++t) {
        const R* from[] = {in[0] + t * id, in[1] + t * id};
        R* to[] = {out[0] + t * od, out[1] + t * od};
        if (staged)
            for (int p = 0; p < 2; ++p) gather<R>(n, 1, rows[p], n, lines_of(from[p], is, id));
        const i32 status = staged ? kernel(rows, rows, head, work) : kernel(from, to, head, work);
        if (staged)
            for (int p = 0; p < 2; ++p) scatter<R>(n, 1, lines_of(to[p], os, od), rows[p], n);
        if (status != node_ok) return status;
    }
    return node_ok;
}

template <class In, class Out>
static i32 real_lines(DftiNode* head, DftiKernel* kernel, const void* input, void* output, i64 count, void* work)
{
    const auto* const in = static_cast<const In*>(input);
    auto* const out = static_cast<Out*>(output);
    if (is_interleaved(*head)) return transform_batch(head, in, out, kernel, count, work);
    return lines_of_node(head, kernel, in, out, head->output_stride, head->output_distance, count, work);
}

template <class R>
i32 route_of_reals(Direction direction, bool as_pairs, DftiNode* head, const void* input, void* output, i64 count,
                   void* work)
{
    const bool forward = direction == Direction::forward;
    if (head->work_rank == 1) {
        auto* const lines = !as_pairs ? &real_lines<R, R> : forward ? &real_lines<R, cpx<R>> : &real_lines<cpx<R>, R>;
        return lines(head, kernel_of_reals<R>(direction, *head), input, output, count, work);
    }
    if (!as_pairs && head->work_rank > 2) return node_unsupported;

    const Buffer buffer(WholeOfReals<R>::buffer_bytes(*head));
    const bool between = as_pairs && needs_middle(*head, forward, input, output);
    const Buffer middle(between ? half_spectrum_pairs(*head) * static_cast<i64>(sizeof(cpx<R>)) : 0);
    if (buffer.missing() || middle.missing()) return node_no_memory;
    WholeOfReals<R> one{direction,
                        head,
                        static_cast<const R*>(input),
                        static_cast<R*>(output),
                        as_pairs,
                        static_cast<R*>(middle.begin())};
    return each_of(one, count, buffer.begin(), work);
}

#define INSTANCES(R, ...)                                                                                              \
    template i32 route_of_pairs<R>(Direction, DftiNode*, const void*, void*, i64, void*);                              \
    template i32 route_of_reals<R>(Direction, bool, DftiNode*, const void*, void*, i64, void*);
ORV_DFT_PRECISIONS(INSTANCES)

namespace {

template <class R, Direction direction>
i32 of_pairs(DftiNode* head, const void* input, void* output, i64 count, void* work)
{
    return route_of_pairs<R>(direction, head, input, output, count, work);
}
template <class R, Direction direction, bool as_pairs>
i32 of_reals(DftiNode* head, const void* input, void* output, i64 count, void* work)
{
    return route_of_reals<R>(direction, as_pairs, head, input, output, count, work);
}

} // namespace
} // namespace orv::dft

using namespace orv;
using namespace orv::dft;

#define IN_PLACE(name, ...)                                                                                            \
    ORV_EXPORT i32 DFT(name)(DftiNode * node, void* data, i64 count, void* work)                                       \
    {                                                                                                                  \
        return __VA_ARGS__(node, data, data, count, work);                                                             \
    }
#define APART(name, ...)                                                                                               \
    ORV_EXPORT i32 DFT(name)(DftiNode * node, const void* input, void* output, i64 count, void* work)                  \
    {                                                                                                                  \
        return __VA_ARGS__(node, input, output, count, work);                                                          \
    }
// In place from reals to pairs and back there are two pointers, too.
#define ROUTES(R, d, z, dz, zd, f, fc)                                                                                 \
    IN_PLACE(x##z##forward, of_pairs<R, Direction::forward>)                                                           \
    IN_PLACE(x##z##backward, of_pairs<R, Direction::backward>)                                                         \
    APART(x##z##forward_out, of_pairs<R, Direction::forward>)                                                          \
    APART(x##z##backward_out, of_pairs<R, Direction::backward>)                                                        \
    IN_PLACE(x##d##forward, of_reals<R, Direction::forward, false>)                                                    \
    IN_PLACE(x##d##backward, of_reals<R, Direction::backward, false>)                                                  \
    APART(x##d##forward_out, of_reals<R, Direction::forward, false>)                                                   \
    APART(x##d##backward_out, of_reals<R, Direction::backward, false>)                                                 \
    APART(x##dz##forward, of_reals<R, Direction::forward, true>)                                                       \
    APART(x##dz##forward_out, of_reals<R, Direction::forward, true>)                                                   \
    APART(x##zd##backward, of_reals<R, Direction::backward, true>)                                                     \
    APART(x##zd##backward_out, of_reals<R, Direction::backward, true>)
ORV_DFT_PRECISIONS(ROUTES)
