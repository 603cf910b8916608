// Operands of the standard interface as Eigen's maps.
#pragma once

#include <Eigen/Dense>
#include <complex>

using cfloat = std::complex<float>;
using cdouble = std::complex<double>;

#define EXPORT extern "C" __attribute__((visibility("default")))

template <class T> using Column = Eigen::Matrix<T, Eigen::Dynamic, 1>;
template <class T> using Matrix = Eigen::Matrix<T, Eigen::Dynamic, Eigen::Dynamic>;
template <class T> using Real = typename Eigen::NumTraits<T>::Real;

template <class T> auto matrix(T* a, int rows, int columns, int step)
{
    return Eigen::Map<Matrix<T>, 0, Eigen::OuterStride<>>(a, rows, columns, Eigen::OuterStride<>(step));
}

// Calls f with a map of the vector: a contiguous one where it is, so that Eigen can use vector registers.
template <class T, class F> auto with(int n, T* x, int inc, F f)
{
    using Strided = Eigen::Map<Column<T>, 0, Eigen::InnerStride<>>;
    if (inc == 1) return f(Eigen::Map<Column<T>>(x, n));
    return f(Strided(inc < 0 ? x + static_cast<Eigen::Index>(1 - n) * inc : x, n, Eigen::InnerStride<>(inc)));
}
template <class T, class F> auto with(int n, T* x, int incx, T* y, int incy, F f)
{
    return with(n, x, incx, [&](auto u) { return with(n, y, incy, [&](auto v) { return f(u, v); }); });
}
