// What a kernel is asked for, once its arguments are looked at, in one form for all shapes.
#pragma once

#include "conv/view.h"

namespace orv::conv {

template <class T> struct Problem {
    bool correlates;
    View<const T> x, y;
    View<T> z;
    i64 start[most_dimensions], step[most_dimensions];

    [[gnu::noinline]] void fill(bool is_correlation, i32 rank, const T* x_at, const i32* xshape, const i32* xstride,
                                const T* y_at, const i32* yshape, const i32* ystride, T* z_at, const i32* zshape,
                                const i32* zstride, const i32* starts, const i32* steps)
    {
        correlates = is_correlation;
        x = View<const T>::of(x_at, rank, xshape, xstride);
        y = View<const T>::of(y_at, rank, yshape, ystride);
        z = View<T>::of(z_at, rank, zshape, zstride);
        for (i32 d = 0; d < rank; ++d) start[d] = starts[d], step[d] = steps[d];
    }
    i64 full(i32 d) const { return x.n[d] + y.n[d] - 1; }
    // Where output 0 stands in the full result, whose element 0 is the first that any product goes to.
    i64 offset(i32 d) const { return correlates ? start[d] + x.n[d] - 1 : start[d]; }
};

// The outputs of one dimension: begin and end of the full result are the least and the last start that there is.
inline Status refuse_start(bool correlates, i64 nx, i64 ny, i64 start)
{
    const i64 least = correlates ? 1 - nx : 0, last = correlates ? ny - 1 : nx + ny - 2;
    return start < least || start > last ? bad_start : ok;
}
inline Status refuse_step(bool correlates, i64 nx, i64 ny, i64 start, i64 nz, i64 step)
{
    const i64 last = correlates ? ny - 1 : nx + ny - 2;
    return step < 1 || (nz - 1) * step + start > last ? bad_decimation : ok;
}

// Looked at in the order of the arguments of one dimension; without a step any number of outputs goes.
template <class T>
[[gnu::noinline]] Status take(Problem<T>& p, bool correlates, const T* x, i32 xstride, const T* y, i32 ystride, T* z,
                              i32 zstride, i32 nx, i32 ny, i32 start, i32 nz, const i32* step)
{
    if (x == nullptr) return null_x;
    if (nx < 1) return bad_xshape;
    if (y == nullptr) return null_y;
    if (ny < 1) return bad_yshape;
    if (z == nullptr) return null_z;
    if (nz < 1) return bad_zshape;
    if (zstride == 0) return bad_zstride;
    if (const Status s = refuse_start(correlates, nx, ny, start)) return s;
    if (step != nullptr)
        if (const Status s = refuse_step(correlates, nx, ny, start, nz, *step)) return s;
    constexpr i32 each = 1;
    p.fill(correlates, 1, x, &nx, &xstride, y, &ny, &ystride, z, &nz, &zstride, &start, step != nullptr ? step : &each);
    return ok;
}

// The same for any rank from least_rank on.
template <class T>
[[gnu::noinline]] Status take(Problem<T>& p, bool correlates, i32 least_rank, i32 rank, const T* x, const i32* xshape,
                              const i32* xstride, const T* y, const i32* yshape, const i32* ystride, T* z,
                              const i32* zshape, const i32* zstride, const i32* start, const i32* step)
{
    if (rank < least_rank || rank > most_dimensions) return bad_rank;
    if (x == nullptr) return null_x;
    if (y == nullptr) return null_y;
    if (z == nullptr) return null_z;
    for (i32 d = 0; d < rank; ++d) {
        if (xshape[d] < 1) return bad_xshape;
        if (yshape[d] < 1) return bad_yshape;
        if (zshape[d] < 1) return bad_zshape;
        if (zstride[d] == 0) return bad_zstride;
        if (const Status s = refuse_start(correlates, xshape[d], yshape[d], start[d])) return s;
        if (const Status s = refuse_step(correlates, xshape[d], yshape[d], start[d], zshape[d], step[d])) return s;
    }
    p.fill(correlates, rank, x, xshape, xstride, y, yshape, ystride, z, zshape, zstride, start, step);
    return ok;
}

} // namespace orv::conv
