// Sums of sines and cosines by FFTW, planned as in bench/fft_fftw.cpp.
#include "bench/trig_plans.h"

#include <cstdlib>
#include <cstring>
#include <fftw3.h>

namespace orv::bench {
namespace {

unsigned effort(int points)
{
    const char* word = std::getenv("BENCH_FFTW");
    return word != nullptr && std::strcmp(word, "patient") == 0 && points <= 1 << 14 ? FFTW_PATIENT : FFTW_MEASURE;
}

} // namespace

template <bool single> struct Wave;
#define PRECISION(is_single, prefix, R)                                                                                \
    template <> struct Wave<is_single> {                                                                               \
        explicit Wave(const WaveKey& key)                                                                              \
        {                                                                                                              \
            const auto bytes = sizeof(R) * static_cast<std::size_t>(key.points);                                       \
            R *const from = static_cast<R*>(fftw_malloc(bytes)), *const to = static_cast<R*>(fftw_malloc(bytes));      \
            plan = prefix##_plan_r2r_1d(key.points, from, to, static_cast<fftw_r2r_kind>(FFTW_REDFT00 + key.kind),     \
                                        effort(key.points) | FFTW_PRESERVE_INPUT);                                     \
            fftw_free(from), fftw_free(to);                                                                            \
        }                                                                                                              \
        void run(const void* x, void* y) const                                                                         \
        {                                                                                                              \
            prefix##_execute_r2r(plan, static_cast<R*>(const_cast<void*>(x)), static_cast<R*>(y));                     \
        }                                                                                                              \
        prefix##_plan plan;                                                                                            \
    };
PRECISION(false, fftw, double)
PRECISION(true, fftwf, float)

} // namespace orv::bench

ORV_BENCH_WAVES
