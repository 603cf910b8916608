// Dense operands: lines of elements, one after the other, and what is done to them beside the kernels.
#pragma once

#include "core/serv/block.h"
#include "core/sparse/matrix.h"
#include "core/trans/kernels.h"
#include "frame/kernels/blas.h"

#include <cstring>

namespace orv::core::sparse {

template <class T>
inline constinit Kernel axpy_kernel{
    kernels::of_type<T, kernels::blas::xsaxpy, kernels::blas::xdaxpy, kernels::blas::xcaxpy, kernels::blas::xzaxpy>()};

// Lines of a matrix that is stored by rows or by columns; a vector is one line.
template <class T> struct Dense {
    T* at;
    i64 lines, length, ld;
    bool by_rows;

    i64 columns() const { return by_rows ? length : lines; }
    T* line(i64 i) const { return at + i * ld; }
    // Some of its columns.
    Dense part(i64 first, i64 count) const
    {
        return by_rows ? Dense{at + first, lines, count, ld, true} : Dense{line(first), count, length, ld, false};
    }
    // The lines of another, which is as this one.
    static Dense of(T* at, i64 rows, i64 columns, i64 ld, bool by_rows)
    {
        return {at, by_rows ? rows : columns, by_rows ? columns : rows, ld, by_rows};
    }
};

// y := beta*y; beta = 0 does not read y.
template <class T> orv_status scale(const Dense<T>& y, T beta)
{
    if (beta == one<T> || y.lines == 0 || y.length == 0) return ORV_OK;
    if (beta != zero<T>) return trans::Kernels<T>::imatcopy.run('R', 'N', y.lines, y.length, beta, y.at, y.ld, y.ld);
    for (i64 i = 0; i < y.lines; ++i) std::memset(y.line(i), 0, static_cast<std::size_t>(y.length) * sizeof(T));
    return ORV_OK;
}

// y := alpha*x; alpha = 0 does not read x. x and y may be the same.
template <class T> orv_status copy(T alpha, const Dense<const T>& x, const Dense<T>& y)
{
    if (y.lines == 0 || y.length == 0) return ORV_OK;
    if (x.at == y.at || alpha == zero<T>) return scale(y, alpha);
    if (alpha != one<T>)
        return trans::Kernels<T>::omatcopy.run('R', 'N', y.lines, y.length, alpha, x.at, x.ld, y.at, y.ld);
    for (i64 i = 0; i < y.lines; ++i) std::memcpy(y.line(i), x.line(i), static_cast<std::size_t>(y.length) * sizeof(T));
    return ORV_OK;
}

// y := y + alpha*x
template <class T> orv_status add(T alpha, const Dense<const T>& x, const Dense<T>& y)
{
    constexpr i64 step = 1;
    orv_status status = ORV_OK;
    for (i64 i = 0; i < y.lines && status == ORV_OK; ++i)
        status = axpy_kernel<T>.run(&y.length, &alpha, x.line(i), &step, y.line(i), &step);
    return status;
}

} // namespace orv::core::sparse
