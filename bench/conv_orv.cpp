// The library's convolutions behind the routines that bench/conv.cpp times, by the route that BENCH_CONV says:
// "direct", "transform", or the library's own choice.
#include "bench/conv_routines.h"
#include <orv/conv.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <stdexcept>
#include <tuple>

namespace {

int route()
{
    const char* const word = std::getenv("BENCH_CONV");
    if (word == nullptr) return ORV_CONV_AUTOMATIC;
    return std::strcmp(word, "direct") == 0 ? ORV_CONV_DIRECT : ORV_CONV_TRANSFORM;
}

orv_conv* kept(char type, int rank, int n, int m)
{
    static std::map<std::tuple<char, int, int, int>, orv_conv*> problems;
    orv_conv*& conv = problems[{type, rank, n, m}];
    if (conv != nullptr) return conv;
    const int64_t x[] = {n, n}, y[] = {m, m};
    if (orv_conv_create(&conv, type, ORV_CONV_CONVOLUTION, rank, x, y) != ORV_OK)
        throw std::runtime_error(orv_last_error());
    orv_conv_set(conv, ORV_CONV_ROUTE, route());
    return conv;
}

template <class T> constexpr char letter = 's';
template <> constexpr char letter<double> = 'd';
template <> constexpr char letter<std::complex<float>> = 'c';
template <> constexpr char letter<std::complex<double>> = 'z';

template <class T> void convolve(int rank, int n, int m, const T* x, const T* y, T* z)
{
    orv_conv_run(kept(letter<T>, rank, n, m), x, y, z);
}

} // namespace

ORV_BENCH_CONVOLUTIONS
