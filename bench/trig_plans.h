// The routines that bench/trig.cpp times: ?r2r_(kind, points, source, destination). Whoever includes this defines
// Wave<single> of a kind and a number of points, which is made once and kept, and what it runs.
#pragma once

#include "bench/fft_plans.h"

namespace orv::bench {

inline constexpr struct {
    const char* name;
    int more_points; // than cells between them
} waves[] = {{"REDFT00", 1},  {"REDFT01", 0}, {"REDFT10", 0}, {"REDFT11", 0},
             {"RODFT00", -1}, {"RODFT01", 0}, {"RODFT10", 0}, {"RODFT11", 0}};
inline constexpr int wave_kinds = 8;

struct WaveKey {
    int kind, points;
    auto operator<=>(const WaveKey&) const = default;
};
template <bool single> struct Wave;

} // namespace orv::bench

#define ORV_BENCH_WAVE(t, single)                                                                                      \
    extern "C" __attribute__((visibility("default"))) void t##r2r_(const int* kind, const int* points, const void* x,  \
                                                                   void* y)                                            \
    {                                                                                                                  \
        orv::bench::transform<orv::bench::Wave<single>>(orv::bench::WaveKey{*kind, *points}, x, y);                    \
    }
#define ORV_BENCH_WAVES ORV_BENCH_WAVE(d, false) ORV_BENCH_WAVE(s, true)
