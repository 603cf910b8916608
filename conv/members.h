// How the kernels of the grid get their bodies. A route is a record with
//
//   least_rank              that its kernels for any rank take
//   has_undecimated_lines   whether its kernels of one dimension without a step do anything, of ss
//   run_line<Pair>, run<Pair>(const Problem<typename Pair::Data>&)   a Status
//
// and a file's line ORV_CONV_ROUTE(CONV_EXPORT, direct) exports all names of the route `direct`.
#pragma once

#include "conv/problem.h"

namespace orv::conv {

inline constexpr bool job_conv = false, job_corr = true; // whether it is a correlation

template <class Pair, class Route> struct Entry {
    using T = typename Pair::Data;

    static i32 call(bool correlates, const T* x, i32 xs, const T* y, i32 ys, T* z, i32 zs, i32 nx, i32 ny, i32 start,
                    i32 nz, i32 step)
    {
        return line(correlates, x, xs, y, ys, z, zs, nx, ny, start, nz, &step);
    }
    // Without a step: one product of routes and types has that.
    static i32 call(bool correlates, const T* x, i32 xs, const T* y, i32 ys, T* z, i32 zs, i32 nx, i32 ny, i32 start,
                    i32 nz)
    {
        if constexpr (std::is_same_v<Pair, pair_ss> && Route::has_undecimated_lines)
            return line(correlates, x, xs, y, ys, z, zs, nx, ny, start, nz, nullptr);
        else return no_kernel;
    }
    [[gnu::noinline]] static i32 call(bool correlates, i32 rank, const T* x, const i32* nx, const i32* xs, const T* y,
                                      const i32* ny, const i32* ys, T* z, const i32* nz, const i32* zs,
                                      const i32* start, const i32* step)
    {
        Problem<T> p;
        const Status refused =
            take(p, correlates, Route::least_rank, rank, x, nx, xs, y, ny, ys, z, nz, zs, start, step);
        return refused != ok ? refused : Route::template run<Pair>(p);
    }
    static i32 call(bool, i32, const T*, const i32*, const i32*, const T*, const i32*, const i32*, T*, const i32*,
                    const i32*, const i32*)
    {
        return no_kernel;
    }

private:
    [[gnu::noinline]] static i32 line(bool correlates, const T* x, i32 xs, const T* y, i32 ys, T* z, i32 zs, i32 nx,
                                      i32 ny, i32 start, i32 nz, const i32* step)
    {
        Problem<T> p;
        const Status refused = take(p, correlates, x, xs, y, ys, z, zs, nx, ny, start, nz, step);
        return refused != ok ? refused : Route::template run_line<Pair>(p);
    }
};

} // namespace orv::conv

#define CONV_ARGUMENTS_1d_de 11
#define CONV_ARGUMENTS_1d_nd 10
#define CONV_ARGUMENTS_all_de 12
#define CONV_ARGUMENTS_all_nd 11
#define CONV_EXPORT(pair, route, shape, job, decimation)                                                               \
    CONV_EXPORT_NAME(CONV_ARGUMENTS_##shape##_##decimation, ORV_CONV_NAME(pair, route, shape, job, decimation), pair,  \
                     route, job)
#define CONV_EXPORT_NAME(count, name, pair, route, job)                                                                \
    ORV_EXPORT i32 CONV(name)(ORV_PARAMETERS(count, value_argument, CONV(name)))                                       \
    {                                                                                                                  \
        return Entry<pair_##pair, route>::call(job_##job, ORV_NAMES(count));                                           \
    }
