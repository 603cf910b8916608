// The routines that bench/conv.cpp times: z := x * y in full, n and m elements a side, in so many dimensions. Whoever
// includes this defines convolve<T>(rank, n, m, x, y, z).
//   ?conv_(rank, n, m, x, y, z)
#pragma once

#include <complex>

#define ORV_BENCH_CONVOLUTION(t, T)                                                                                    \
    extern "C" __attribute__((visibility("default"))) void t##conv_(const int* rank, const int* n, const int* m,       \
                                                                    const T* x, const T* y, T* z)                      \
    {                                                                                                                  \
        convolve<T>(*rank, *n, *m, x, y, z);                                                                           \
    }
#define ORV_BENCH_CONVOLUTIONS                                                                                         \
    ORV_BENCH_CONVOLUTION(s, float)                                                                                    \
    ORV_BENCH_CONVOLUTION(d, double)                                                                                   \
    ORV_BENCH_CONVOLUTION(c, std::complex<float>) ORV_BENCH_CONVOLUTION(z, std::complex<double>)
