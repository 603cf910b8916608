#include "dft/compute/column_plan.h"
#include "dft/compute/plain.h"
#include "dft/primitives/dft/kernels.h"
#include "dft/primitives/dft/plan.h"
#include "frame/kernels/dft_batch.h"

namespace orv::dft {
namespace {

// Elements of a line on either side.
template <class In, class Out> struct Ends {
    static constexpr bool between_reals = !is_complex<In> && !is_complex<Out>;
    i64 n_in, n_out;

    explicit Ends(const Run& run)
    {
        const DftiNode& node = *run.node;
        const bool forward = run.kernel == node.*Precision<real_t<In>>::real_forward;
        n_in = n_out = node.length;
        if constexpr (is_complex<Out> && !is_complex<In>) n_out = half(node.length);
        if constexpr (is_complex<In> && !is_complex<Out>) n_in = half(node.length);
        if constexpr (between_reals) {
            if (forward) n_out = packed_length(layout_of(node.packed_format), node.length);
            else n_in = packed_length(read_by_kernel(node), node.length);
        }
    }
};

// Rows so far apart, in reals, that are transformed where the others are.
template <class R> struct RowsAt {
    R* row;
    i64 step;
};

// If the points of a line push each other out of a first-level cache, so that neighbouring lines, which have the same
// cache lines, would fetch them again.
template <class T> bool collide(i64 points, const Lines<T>& lines)
{
    constexpr i64 way = 4096, ways = 8;
    const i64 bytes = lines.stride * static_cast<i64>(sizeof(*lines.data));
    return points * min(way, max(cache_line, bytes & -bytes)) > ways * way;
}

template <class In, class Out, class R> i32 transform_rows(const Run& run, i64 count, RowsAt<R> from, RowsAt<R> to)
{
    // Pairs that become reals may first have to become the row that the kernel reads.
    const bool packs = is_complex<In> && !is_complex<Out> && keeps_rows_apart(*run.node);
    if constexpr (is_complex<In> && is_complex<Out>) {
        if (auto* const lines = short_lines<R>(run))
            return lines(from.row, {2, from.step}, to.row, {2, to.step}, count), node_ok;
        if (const auto lines = side_by_side<R>(run); lines.applies())
            return lines.run(from.row, from.step, to.row, to.step, count), node_ok;
        if (const EngineRows<R> engine(run); engine.applies()) {
            for (; count > 0; --count, from.row += from.step, to.row += to.step) engine.run(from.row, to.row);
            return node_ok;
        }
    } else if (const auto rows = short_rows<R>(run, packs ? Layout::ccs : read_by_kernel(*run.node));
               rows.body != nullptr) {
        rows.run(from.row, from.step, to.row, to.step, count);
        return node_ok;
    } else if (const HalvedRows<R> halved(run, read_by_kernel(*run.node)); !packs && halved.applies()) {
        halved.run(from.row, from.step, to.row, to.step, count);
        return node_ok;
    }
    for (; count > 0; --count, from.row += from.step, to.row += to.step) {
        if (packs) pack_row(run.node->length, Layout::perm, reinterpret_cast<const cpx<R>*>(from.row), to.row);
        if (const i32 status = run.kernel(packs ? to.row : from.row, to.row, run.node, run.work); status != node_ok)
            return status;
    }
    return node_ok;
}

// Null where lines are not so short, or had better be staged.
template <class R> ShortLines<R>* short_lines(const Run& run, const Lines<const cpx<R>>& in, const Lines<cpx<R>>& out)
{
    const i64 n = run.node->length;
    auto* const lines = short_lines<R>(run);
    const bool may_go = n <= longest_strided || (in.is_dense() && out.is_dense());
    return lines != nullptr && may_go && !collide(n, in) && !collide(n, out) ? lines : nullptr;
}

} // namespace

template <class R>
bool short_lines_of_planes(const Run& run, i64 count, const Lines<const cpx<R>>& in, const Lines<cpx<R>>& out,
                           i64 planes, i64 in_step, i64 out_step)
{
    auto* const lines = short_lines<R>(run, in, out);
    if (lines == nullptr) return false;
    for (i64 p = 0; p < planes; ++p)
        lines(in.data + p * in_step, {in.stride, in.distance}, out.data + p * out_step, {out.stride, out.distance},
              count);
    return true;
}

// Rows are transformed from and to where they stand in the array, or in the buffer.
template <class In, class Out>
i32 transform(const Run& run, i64 count, const Lines<const In>& in, const Lines<Out>& out)
{
    using R = real_t<In>;
    const Ends<In, Out> ends(run);
    if constexpr (is_complex<In> && is_complex<Out>) {
        if (auto* const lines = short_lines<R>(run, in, out))
            return lines(in.data, {in.stride, in.distance}, out.data, {out.stride, out.distance}, count), node_ok;
        if (planned_columns<R>(run, count, in, out)) return node_ok;
    }
    const bool gathers = !in.is_dense(), scatters = !out.is_dense();
    const i64 pitch = row_reals<In, Out>(*run.node);
    const RowsAt<R> rows{static_cast<R*>(run.buffer), pitch};
    const i64 block = gathers || scatters ? i64{1} << run.log2_block : count;
    for (i64 first = 0, m; first < count; first += m) {
        m = min(block, count - first);
        if (gathers) gather(ends.n_in, m, reinterpret_cast<In*>(rows.row), pitch / reals<In>, in.from(first));
        const RowsAt<R> from{const_cast<R*>(in.from(first).data), in.distance}, to{out.from(first).data, out.distance};
        if (const i32 status = transform_rows<In, Out>(run, m, gathers ? rows : from, scatters ? rows : to);
            status != node_ok)
            return status;
        if (scatters)
            scatter(ends.n_out, m, out.from(first), reinterpret_cast<const Out*>(rows.row), pitch / reals<Out>);
    }
    return node_ok;
}

namespace {

i32 all_columns(bool forward, cpx<double>* data, DftiNode* node, i64 count)
{
    return (forward ? DFT(xbatchfft_fwd_64fc) : DFT(xbatchfft_inv_64fc))(data, data, node, &count);
}
i32 all_columns(bool forward, cpx<float>* data, DftiNode* node, i64 count)
{
    return (forward ? DFT(xbatchfft_fwd_32fc) : DFT(xbatchfft_inv_32fc))(data, data, node, &count);
}

} // namespace

template <class R> i32 transform(const Run& run, i64 count, const Lines<cpx<R>>& data)
{
    DftiNode* const node = run.node;
    const i64 planned = is_in_place(*node) ? node->input_stride : node->output_stride;
    if (node->method != nullptr && data.are_neighbours() && data.stride == 2 * planned) {
        const bool forward = run.kernel == node->*Precision<R>::forward;
        if (all_columns(forward, data.line(0), node, count) == node_ok) return node_ok;
    }
    return transform<cpx<R>, cpx<R>>(run, count, data, data);
}

// X[0] and, of even n, X[n/2] are real.
template <class R> void unpack_row(i64 n, Layout layout, const R* packed, cpx<R>* half)
{
    const Places at = places(layout, n);
    const R first = packed[0], middle = n % 2 == 0 ? packed[at.half] : R(0);
    for (i64 k = (n - 1) / 2; k > 0; --k) // from the end: the row may be the packed one
        half[k] = {packed[2 * k + at.shift], packed[2 * k + at.shift + 1]};
    half[0] = {first, R(0)};
    if (n % 2 == 0) half[n / 2] = {middle, R(0)};
}

template <class R> void pack_row(i64 n, Layout layout, const cpx<R>* half, R* packed)
{
    const Places at = places(layout, n);
    const R middle = half[n / 2].re;
    packed[0] = half[0].re;
    for (i64 k = 1; 2 * k < n; ++k) {
        const cpx<R> x = half[k];
        packed[2 * k + at.shift] = x.re;
        packed[2 * k + at.shift + 1] = x.im;
    }
    if (n % 2 == 0) packed[at.half] = middle;
    if (layout != Layout::ccs) return;
    packed[1] = R(0);
    if (n % 2 == 0) packed[n + 1] = R(0);
}

// Short lines of few transforms go 4 at a time, else 8.
template <class R> static i64 log2_of_batch(i64 n, i64 count)
{
    return log2_of_columns<R>(count <= 16384 && n < 33 ? 2 : 3);
}

template <class In, class Out>
i32 transform_batch(DftiNode* node, const In* input, Out* output, DftiKernel* kernel, i64 count, void* work)
{
    const i64 log2_block = log2_of_batch<real_t<In>>(node->length, count);
    const Buffer buffer(block_bytes<In, Out>(*node, log2_block, count));
    if (buffer.missing()) return node_no_memory;
    return transform<In, Out>({node, kernel, buffer.begin(), log2_block, work}, count,
                              lines_of(input, node->input_stride, node->input_distance),
                              lines_of(output, node->output_stride, node->output_distance));
}

template <class R> i32 transform_batch(DftiNode* node, cpx<R>* data, DftiKernel* kernel, i64 count, void* work)
{
    const i64 log2_block = log2_of_batch<R>(node->length, count);
    const Buffer buffer(block_bytes<cpx<R>, cpx<R>>(*node, log2_block, count));
    if (buffer.missing()) return node_no_memory;
    return transform<R>({node, kernel, buffer.begin(), log2_block, work}, count,
                        lines_of(data, node->input_stride, node->input_distance));
}

#define INSTANCES(R, ...)                                                                                              \
    template i32 transform<cpx<R>, cpx<R>>(const Run&, i64, const Lines<const cpx<R>>&, const Lines<cpx<R>>&);         \
    template i32 transform<R, R>(const Run&, i64, const Lines<const R>&, const Lines<R>&);                             \
    template i32 transform<R, cpx<R>>(const Run&, i64, const Lines<const R>&, const Lines<cpx<R>>&);                   \
    template i32 transform<cpx<R>, R>(const Run&, i64, const Lines<const cpx<R>>&, const Lines<R>&);                   \
    template i32 transform<R>(const Run&, i64, const Lines<cpx<R>>&);                                                  \
    template i32 transform_batch<cpx<R>, cpx<R>>(DftiNode*, const cpx<R>*, cpx<R>*, DftiKernel*, i64, void*);          \
    template i32 transform_batch<R, R>(DftiNode*, const R*, R*, DftiKernel*, i64, void*);                              \
    template i32 transform_batch<R, cpx<R>>(DftiNode*, const R*, cpx<R>*, DftiKernel*, i64, void*);                    \
    template i32 transform_batch<cpx<R>, R>(DftiNode*, const cpx<R>*, R*, DftiKernel*, i64, void*);                    \
    template i32 transform_batch<R>(DftiNode*, cpx<R>*, DftiKernel*, i64, void*);                                      \
    template bool short_lines_of_planes<R>(const Run&, i64, const Lines<const cpx<R>>&, const Lines<cpx<R>>&, i64,     \
                                           i64, i64);                                                                  \
    template void unpack_row<R>(i64, Layout, const R*, cpx<R>*);                                                       \
    template void pack_row<R>(i64, Layout, const cpx<R>*, R*);
ORV_DFT_PRECISIONS(INSTANCES)

} // namespace orv::dft

using namespace orv;
using namespace orv::dft;

namespace {

template <class In, class Out>
i32 told(const In* input, i64 input_stride, Out* output, i64 output_stride, DftiKernel* kernel, DftiNode* node,
         i64 count, i64 input_distance, i64 output_distance, void* buffer, i64 log2_block, void* work)
{
    return transform<In, Out>({node, kernel, buffer, log2_block, work}, count,
                              lines_of(input, input_stride, input_distance),
                              lines_of(output, output_stride, output_distance));
}

} // namespace

#define TOLD(letters, In, Out)                                                                                         \
    ORV_EXPORT i32 DFT(x##letters##dft1d_out_copy)(const In* input, i64 input_stride, Out* output, i64 output_stride,  \
                                                   DftiKernel* kernel, DftiNode* node, i64 count, i64 input_distance,  \
                                                   i64 output_distance, void* buffer, i64 log2_block, void* work)      \
    {                                                                                                                  \
        return told(input, input_stride, output, output_stride, kernel, node, count, input_distance, output_distance,  \
                    buffer, log2_block, work);                                                                         \
    }                                                                                                                  \
    ORV_EXPORT i32 DFT(x##letters##dft_out_mult)(DftiNode * node, const In* input, Out* output, DftiKernel* kernel,    \
                                                 i64 count, void* work)                                                \
    {                                                                                                                  \
        return transform_batch(node, input, output, kernel, count, work);                                              \
    }
#define BY_NAME(R, d, z, dz, zd, f, fc)                                                                                \
    TOLD(z, cpx<R>, cpx<R>)                                                                                            \
    TOLD(d, R, R)                                                                                                      \
    TOLD(dz, R, cpx<R>)                                                                                                \
    TOLD(zd, cpx<R>, R)                                                                                                \
    ORV_EXPORT i32 DFT(x##z##dft1d_copy)(cpx<R> * data, i64 stride, DftiKernel * kernel, DftiNode * node, i64 count,   \
                                         i64 distance, void* buffer, i64 log2_block, void* work)                       \
    {                                                                                                                  \
        return transform<R>({node, kernel, buffer, log2_block, work}, count, lines_of(data, stride, distance));        \
    }                                                                                                                  \
    ORV_EXPORT i32 DFT(x##zd##dft1d_copy)(cpx<R> * data, i64 input_stride, i64 output_stride, DftiKernel * kernel,     \
                                          DftiNode * node, i64 count, i64 input_distance, i64 output_distance,         \
                                          void* buffer, i64 log2_block, void* work)                                    \
    {                                                                                                                  \
        return told(data, input_stride, reinterpret_cast<R*>(data), output_stride, kernel, node, count,                \
                    input_distance, output_distance, buffer, log2_block, work);                                        \
    }                                                                                                                  \
    ORV_EXPORT i32 DFT(x##z##dft_mult)(DftiNode * node, cpx<R> * data, DftiKernel * kernel, i64 count, void* work)     \
    {                                                                                                                  \
        return transform_batch(node, data, kernel, count, work);                                                       \
    }                                                                                                                  \
    ORV_EXPORT void DFT(zd##_complex_for_real_by_row)(i64 n, u32 format, const cpx<R>* half, R* packed)                \
    {                                                                                                                  \
        pack_row(n, layout_of(format), half, packed);                                                                  \
    }
ORV_DFT_PRECISIONS(BY_NAME)

ORV_EXPORT void DFT(d_complex_for_real_by_row)(i64 n, u32 format, const double* packed, cpx<double>* half)
{
    unpack_row(n, layout_of(format), packed, half);
}
ORV_EXPORT void DFT(c_complex_for_real_by_row)(i64 n, u32 format, const float* packed, cpx<float>* half)
{
    unpack_row(n, layout_of(format), packed, half);
}
