// Convolution and correlation: tasks, and the kernels that they choose from.
//
//   convolution   z[j] = sum over k of x[k] * y[start + j*step - k]
//   correlation   z[j] = sum over k of x[k] * y[start + j*step + k]
//
// in each of up to seven dimensions, over all k for which both indices lie in their arrays; nothing is conjugated.
// Shapes, strides and starts are arrays of i32, one number a dimension, the dimension whose elements are neighbours
// first. A stride s > 0 has element i at i*s; 0, of x and y, repeats one element; s < 0 has element i of n at
// (n - 1 - i)*(-s), so that the address is that of the last one.
//
// The grid:
//
//   <pair><route>_<shape>_<job>_<decimation>     ccfft_1d_corr_de
//
//   pair        data and sums: s d c z; single data may be summed in double
//   route       direct sums, fft through a transform
//   shape       1d with numbers for arguments, all for any rank with arrays
//   job         conv, corr
//   decimation  de takes the step between outputs, nd takes none: of these only the direct 1d ones of ss do anything
#pragma once

#include "frame/grid.h"
#include "frame/kernels/prototype.h"

#include <cstddef>

#define CONV(name) ORV_KERNEL(conv, name)

namespace orv::kernels::conv {

inline constexpr int most_dimensions = 7;

enum Status : i32 {
    ok = 0,
    no_record_memory = -4,
    null_argument = -5,
    no_kernel = -2000,
    no_memory = -2001, // for work arrays
    unknown_parameter = -2211,
    read_only_parameter = -2212,
    no_private_free = -2220,
    copy_failed = -2230,
    delete_failed = -2240,
    bad_rank = -2301,
    bad_start = -2302,
    bad_decimation = -2303, // below 1, or the last output is outside of the full result
    bad_xshape = -2311,
    bad_yshape = -2312,
    bad_zshape = -2313,
    bad_zstride = -2323,
    null_x = -2331,
    null_y = -2332,
    null_z = -2333,
    transform_failed = -2800
};

// Job: what is not convolution is correlation. Mode: what is not direct is transform, automatic too. Kind: what is not
// complex is real. Precision: what is not single is double.
enum Job : i32 { convolution = 1, correlation = 2 };
enum Mode : i32 { automatic_mode = 0, direct_mode = 1, transform_mode = 2 };
enum Kind : i32 { real_kind = 1, complex_kind = 2 };
enum Precision : i32 { single_precision = 1, double_precision = 2 };

enum Parameter : i32 {
    mode_parameter = 3,
    option_parameter = 4,
    start_parameter = 5,
    decimation_parameter = 6,
    internal_precision_parameter = 9
};

// A task, made by the entries below; whoever has one reads and sets fields, too.
struct ConvTask {
    i32 status;
    i32 job, method, mode, option;
    const i32 *start, *decimation; // null, or the stores below
    i32 kind, data_precision, internal_precision;
    i32 rank;
    const i32 *xshape, *yshape, *zshape;
    const i32* xstride; // of xdata
    const void* xdata;  // the operand of execx, the caller's
    i32 start_store[most_dimensions], decimation_store[most_dimensions];
    i32 xshape_store[most_dimensions], yshape_store[most_dimensions], zshape_store[most_dimensions];
    i32 xstride_store[most_dimensions];
    i32 committed;
    void* private_data; // what a task prepared: none of the entries here does
    i32 (*private_free)(ConvTask* task);
    i32 (*private_copy)(ConvTask* copy, void** private_data);
};
static_assert(offsetof(ConvTask, start) == 24 && offsetof(ConvTask, xshape) == 56 && offsetof(ConvTask, xdata) == 88 &&
              offsetof(ConvTask, committed) == 264 && sizeof(ConvTask) == 296);

using NewTask = i32(ConvTask** task, i32 job, i32 method, i32 mode, i32 kind, i32 precision, i32 rank,
                    const i32* xshape, const i32* yshape, const i32* zshape);
using NewTaskX = i32(ConvTask** task, i32 job, i32 method, i32 mode, i32 kind, i32 precision, i32 rank,
                     const i32* xshape, const i32* yshape, const i32* zshape, const void* x, const i32* xstride);
using EditTask = i32(ConvTask* task, i32 parameter, const i32* value);
using CommitTask = i32(ConvTask* task);
using CopyTask = i32(ConvTask** copy, const ConvTask* source);
using DeleteTask = i32(ConvTask** task); // clears the pointer
using Exec = i32(ConvTask* task, const void* x, const i32* xstride, const void* y, const i32* ystride, void* z,
                 const i32* zstride); // no strides: dense
using ExecX = i32(ConvTask* task, const void* y, const i32* ystride, void* z, const i32* zstride);
using GetStatus = i32(const ConvTask* task);
using SetStatus = i32(ConvTask* task, i32 status); // returns the one before

// The kernels of the grid, by shape and decimation; T is the type of the data.
template <class T>
using signature_1d_nd = i32(const T* x, i32 xstride, const T* y, i32 ystride, T* z, i32 zstride, i32 nx, i32 ny,
                            i32 start, i32 nz);
template <class T>
using signature_1d_de = i32(const T* x, i32 xstride, const T* y, i32 ystride, T* z, i32 zstride, i32 nx, i32 ny,
                            i32 start, i32 nz, i32 step);
template <class T>
using signature_all_nd = i32(i32 rank, const T* x, const i32* xshape, const i32* xstride, const T* y, const i32* yshape,
                             const i32* ystride, T* z, const i32* zshape, const i32* zstride, const i32* start);
template <class T>
using signature_all_de = i32(i32 rank, const T* x, const i32* xshape, const i32* xstride, const T* y, const i32* yshape,
                             const i32* ystride, T* z, const i32* zshape, const i32* zstride, const i32* start,
                             const i32* step);

// The types of the pairs.
template <class Data_, class Sum_> struct Pair {
    using Data = Data_;
    using Sum = Sum_;
};
using pair_ss = Pair<float, float>;
using pair_sd = Pair<float, double>;
using pair_dd = Pair<double, double>;
using pair_cc = Pair<cpx<float>, cpx<float>>;
using pair_cz = Pair<cpx<float>, cpx<double>>;
using pair_zz = Pair<cpx<double>, cpx<double>>;

} // namespace orv::kernels::conv

// M(pair, route, shape, job, decimation) for each kernel of the grid, or for those of a route.
#define ORV_CONV_ALL(M) ORV_CONV_ROUTE(M, direct) ORV_CONV_ROUTE(M, fft)
#define ORV_CONV_ROUTE(M, route)                                                                                       \
    ORV_CONV_PAIR(M, ss, route)                                                                                        \
    ORV_CONV_PAIR(M, sd, route)                                                                                        \
    ORV_CONV_PAIR(M, dd, route)                                                                                        \
    ORV_CONV_PAIR(M, cc, route)                                                                                        \
    ORV_CONV_PAIR(M, cz, route)                                                                                        \
    ORV_CONV_PAIR(M, zz, route)
#define ORV_CONV_PAIR(M, pair, route) ORV_CONV_SHAPE(M, pair, route, 1d) ORV_CONV_SHAPE(M, pair, route, all)
#define ORV_CONV_SHAPE(M, pair, route, shape)                                                                          \
    M(pair, route, shape, conv, de)                                                                                    \
    M(pair, route, shape, conv, nd)                                                                                    \
    M(pair, route, shape, corr, de)                                                                                    \
    M(pair, route, shape, corr, nd)

#define ORV_CONV_NAME(pair, route, shape, job, decimation) pair##route##_##shape##_##job##_##decimation
#define ORV_CONV_PROTOTYPE(pair, route, shape, job, decimation)                                                        \
    ORV_NAME(ORV_CONV_NAME(pair, route, shape, job, decimation), signature_##shape##_##decimation<pair_##pair::Data>)

namespace orv::kernels::conv {

#define ORV_NAME(name, ...) ORV_PROTOTYPE(conv, name, name, __VA_ARGS__)
#include "frame/kernels/conv.def"
ORV_CONV_ALL(ORV_CONV_PROTOTYPE)
#undef ORV_NAME

} // namespace orv::kernels::conv

namespace orv::conv {
using namespace kernels::conv;
}
