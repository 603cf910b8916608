// Two dimensions by name, with the strides told: input_stride and output_stride of either dimension.
#include "dft/compute/whole.h"

namespace orv::dft {
namespace {

template <class R> i32 plane_of_pairs(const void* input, void* output, Strides is, Strides os, const PlaneRun& how)
{
    const Buffer buffer(PairPlane<R>::buffer_bytes(*how.node, is, os));
    if (buffer.missing()) return node_no_memory;
    const PlaneRun with_buffer{how.node, how.kernel0, how.kernel1, buffer.begin(), how.work};
    return run(PairPlane<R>(with_buffer, static_cast<const cpx<R>*>(input), is, static_cast<cpx<R>*>(output), os));
}

enum class Middle { none, where_needed, always };

template <class R, Direction direction, bool as_pairs, Middle middle>
i32 plane_of_reals(const void* input, void* output, const i64* strides0, const i64* strides1, const PlaneRun& how)
{
    constexpr bool forward = direction == Direction::forward;
    const Strides is{strides0[0], strides1[0]}, os{strides0[1], strides1[1]};
    const bool between =
        middle == Middle::always || (middle == Middle::where_needed && needs_middle(*how.node, forward, input, output));
    const Buffer buffer(RealPlane<R>::buffer_bytes(*how.node));
    const Buffer work_area(between ? half_spectrum_pairs(*how.node) * static_cast<i64>(sizeof(cpx<R>)) : 0);
    if (buffer.missing() || work_area.missing()) return node_no_memory;
    const PlaneRun with_buffer{how.node, how.kernel0, how.kernel1, buffer.begin(), how.work};
    R *const from = static_cast<R*>(const_cast<void*>(input)), *const to = static_cast<R*>(output);
    return run(RealPlane<R>(with_buffer, forward, as_pairs, forward ? from : to, forward ? is : os, forward ? to : from,
                            forward ? os : is, work_area.begin()));
}

} // namespace
} // namespace orv::dft

using namespace orv;
using namespace orv::dft;

#define OF_PAIRS(z, R)                                                                                                 \
    ORV_EXPORT i32 DFT(x##z##dft2d)(void* data, const i64* strides0, const i64* strides1, DftiKernel* kernel0,         \
                                    DftiKernel* kernel1, DftiNode* node, void* work)                                   \
    {                                                                                                                  \
        const Strides strides{*strides0, *strides1};                                                                   \
        return plane_of_pairs<R>(data, data, strides, strides, {node, kernel0, kernel1, nullptr, work});               \
    }                                                                                                                  \
    ORV_EXPORT i32 DFT(x##z##dft2d_out)(const void* input, void* output, const i64* strides0, const i64* strides1,     \
                                        DftiKernel* kernel0, DftiKernel* kernel1, DftiNode* node, void* work)          \
    {                                                                                                                  \
        return plane_of_pairs<R>(input, output, {strides0[0], strides1[0]}, {strides0[1], strides1[1]},                \
                                 {node, kernel0, kernel1, nullptr, work});                                             \
    }
OF_PAIRS(z, double)
OF_PAIRS(c, float)

#define OF_REALS(name, ...)                                                                                            \
    ORV_EXPORT i32 DFT(name)(const void* input, void* output, const i64* strides0, const i64* strides1,                \
                             DftiKernel* kernel0, DftiKernel* kernel1, DftiNode* node, void* work)                     \
    {                                                                                                                  \
        return plane_of_reals<__VA_ARGS__>(input, output, strides0, strides1,                                          \
                                           {node, kernel0, kernel1, nullptr, work});                                   \
    }
OF_REALS(xdzdft2d, double, Direction::forward, false, Middle::none)
OF_REALS(xscdft2d, float, Direction::forward, false, Middle::none)
OF_REALS(xzddft2d, double, Direction::backward, false, Middle::none)
OF_REALS(xcsdft2d, float, Direction::backward, false, Middle::none)
OF_REALS(xdzzdft2d, double, Direction::forward, true, Middle::where_needed)
OF_REALS(xsccdft2d, float, Direction::forward, true, Middle::where_needed)
OF_REALS(xzzddft2d, double, Direction::backward, true, Middle::where_needed)
OF_REALS(xccsdft2d, float, Direction::backward, true, Middle::where_needed)
OF_REALS(xdzzdft2d_tmp, double, Direction::forward, true, Middle::always)
OF_REALS(xsccdft2d_tmp, float, Direction::forward, true, Middle::always)
