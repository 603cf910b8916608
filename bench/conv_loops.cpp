// The loops that anyone would write behind the routines that bench/conv.cpp times: for each element of the filter all
// of the signal, which is the order that compilers make registers of. Long lines go in slices, so that their outputs
// stay in the first cache.
#include "bench/conv_routines.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr long slice = 1024;

template <class R> void add(R a, const R* y, R* z, long n)
{
    for (long j = 0; j < n; ++j) z[j] += a * y[j];
}
// The plain product: that of std::complex looks for NaN.
template <class R> void add(std::complex<R> a, const std::complex<R>* y, std::complex<R>* z, long n)
{
    const R re = a.real(), im = a.imag();
    const R* from = reinterpret_cast<const R*>(y);
    R* to = reinterpret_cast<R*>(z);
    for (long j = 0; j < n; ++j) {
        to[2 * j] += re * from[2 * j] - im * from[2 * j + 1];
        to[2 * j + 1] += re * from[2 * j + 1] + im * from[2 * j];
    }
}

template <class T> void add_line(long n, long m, const T* x, const T* y, T* z)
{
    for (long j = 0; j < m; j += slice)
        for (long k = 0; k < n; ++k) add(x[k], y + j, z + j + k, std::min(slice, m - j));
}

template <class T> void convolve(int rank, long n, long m, const T* x, const T* y, T* z)
{
    const long rows = rank == 1 ? 1 : n, lines = rank == 1 ? 1 : m, full = n + m - 1;
    std::memset(static_cast<void*>(z), 0, static_cast<std::size_t>(full * (rows + lines - 1)) * sizeof(T));
    for (long i = 0; i < lines; ++i)
        for (long k = 0; k < rows; ++k) add_line(n, m, x + k * n, y + i * m, z + (i + k) * full);
}

} // namespace

ORV_BENCH_CONVOLUTIONS
