// A task runs: one kernel of the grid, chosen by five fields, with what the task leaves open filled in.
#include "frame/kernels/conv.h"

namespace orv::conv {
namespace {

using Numbers = i32[most_dimensions];
constexpr Numbers zeros{}, ones{1, 1, 1, 1, 1, 1, 1};

// Operands and numbers as kernels take them.
struct Arguments {
    const void *x, *y;
    void* z;
    const i32 *xshape, *yshape, *zshape, *xstride, *ystride, *zstride, *start, *decimation;
};

// The kernels of a pair, [through a transform][correlation].
template <class T> struct Kernels {
    signature_1d_de<T>* line[2][2];
    signature_all_de<T>* all[2][2];
};
#define CONV_KERNELS(pair)                                                                                             \
    constexpr Kernels<pair_##pair::Data> kernels_##pair{                                                               \
        {{CONV(pair##direct_1d_conv_de), CONV(pair##direct_1d_corr_de)},                                               \
         {CONV(pair##fft_1d_conv_de), CONV(pair##fft_1d_corr_de)}},                                                    \
        {{CONV(pair##direct_all_conv_de), CONV(pair##direct_all_corr_de)},                                             \
         {CONV(pair##fft_all_conv_de), CONV(pair##fft_all_corr_de)}}};
CONV_KERNELS(ss)
CONV_KERNELS(sd)
CONV_KERNELS(dd)
CONV_KERNELS(cc)
CONV_KERNELS(cz)
CONV_KERNELS(zz)

template <class T> i32 run(const ConvTask& task, const Kernels<T>& kernels, const Arguments& a)
{
    const auto *x = static_cast<const T*>(a.x), *y = static_cast<const T*>(a.y);
    auto* const z = static_cast<T*>(a.z);
    const bool transforms = task.mode != direct_mode, correlates = task.job != convolution;
    if (task.rank != 1)
        return kernels.all[transforms][correlates](task.rank, x, a.xshape, a.xstride, y, a.yshape, a.ystride, z,
                                                   a.zshape, a.zstride, a.start, a.decimation);
    return kernels.line[transforms][correlates](x, *a.xstride, y, *a.ystride, z, *a.zstride, *a.xshape, *a.yshape,
                                                *a.start, *a.zshape, *a.decimation);
}

// The one shape and pair that has kernels without a step.
i32 run_undecimated(const ConvTask& task, const Arguments& a)
{
    auto* const kernel = task.job == convolution ? CONV(ssdirect_1d_conv_nd) : CONV(ssdirect_1d_corr_nd);
    return kernel(static_cast<const float*>(a.x), *a.xstride, static_cast<const float*>(a.y), *a.ystride,
                  static_cast<float*>(a.z), *a.zstride, *a.xshape, *a.yshape, *a.start, *a.zshape);
}

i32 choose(const ConvTask& task, const Arguments& a)
{
    const bool pairs = task.kind == complex_kind;
    const bool narrow = task.data_precision == single_precision,
               narrow_sums = task.internal_precision == single_precision;
    if (narrow && narrow_sums) {
        if (pairs) return run(task, kernels_cc, a);
        const bool undecimated = task.rank == 1 && task.mode == direct_mode && task.decimation == nullptr;
        return undecimated ? run_undecimated(task, a) : run(task, kernels_ss, a);
    }
    if (narrow) return pairs ? run(task, kernels_cz, a) : run(task, kernels_sd, a);
    if (narrow_sums && task.rank == 1) return no_kernel; // of other ranks it runs in double
    return pairs ? run(task, kernels_zz, a) : run(task, kernels_dd, a);
}

// Strides without gaps, where none are given.
const i32* strides_or(const i32* given, Numbers& dense, const i32* shape, i32 rank)
{
    if (given != nullptr) return given;
    u64 step = 1; // no signed overflow, whatever the shape
    for (i32 d = 0; d < rank && d < most_dimensions; step *= static_cast<u64>(shape[d++]))
        dense[d] = static_cast<i32>(step);
    return dense;
}

// What was not given when the task was made has no elements, which kernels refuse.
const i32* shape_or_none(const i32* shape) { return shape != nullptr ? shape : zeros; }

} // namespace

ORV_EXPORT i32 CONV(exec)(ConvTask* task, const void* x, const i32* xstride, const void* y, const i32* ystride, void* z,
                          const i32* zstride)
{
    if (task == nullptr) return null_argument;
    if (task->status != ok) return task->status;
    if (task->committed == 0) CONV(committask)(task); // the status was looked at: it cannot fail
    Arguments a{x,
                y,
                z,
                shape_or_none(task->xshape),
                shape_or_none(task->yshape),
                shape_or_none(task->zshape),
                {},
                {},
                {},
                task->start,
                task->decimation != nullptr ? task->decimation : ones};
    Numbers x_dense, y_dense, z_dense, first_lags;
    a.xstride = strides_or(xstride, x_dense, a.xshape, task->rank);
    a.ystride = strides_or(ystride, y_dense, a.yshape, task->rank);
    a.zstride = strides_or(zstride, z_dense, a.zshape, task->rank);
    if (a.start == nullptr) {
        for (i32 d = 0; d < most_dimensions; ++d) first_lags[d] = 1 - a.xshape[d];
        a.start = task->job == convolution ? zeros : first_lags;
    }
    const i32 status = choose(*task, a);
    CONV(ccsetstatus)(task, status);
    return status;
}

ORV_EXPORT i32 CONV(execx)(ConvTask* task, const void* y, const i32* ystride, void* z, const i32* zstride)
{
    if (task == nullptr) return null_argument;
    return CONV(exec)(task, task->xdata, task->xstride, y, ystride, z, zstride);
}

} // namespace orv::conv
