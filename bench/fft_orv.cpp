// The library's transforms behind the routines that bench/fft.cpp times: the engine's for a line, those of <orv/dft.h>
// for all else. What is made at the first call is kept, as by a program that repeats a transform.
#include "bench/fft_plans.h"
#include "orv/branch.h"
#include "orv/dft.h"

#include <bit>
#include <cstddef>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace orv::bench {
namespace {

template <class F> F* kernel(const std::string& name)
{
    void* found = orv_kernel("dft", name.c_str());
    if (found == nullptr) throw std::runtime_error("no kernel " + name);
    return reinterpret_cast<F*>(found);
}

} // namespace

// Kernels of the engine for powers of two differ in their names only from those of the engine for other lengths.
template <Domain domain, bool single> struct Line {
    explicit Line(int n)
    {
        constexpr int no_scale = 8;
        constexpr bool real = domain == Domain::real;
        const bool power = std::has_single_bit(static_cast<unsigned>(n));
        const std::string engine = power ? "ympsFFT" : "ympsDFT";
        const std::string type = std::string(single ? "32f" : "64f") + (real ? "" : "c");
        const std::string kind = (real ? "_R_" : "_C_") + type;
        const int size = power ? std::countr_zero(static_cast<unsigned>(n)) : n;
        kernel<int(void**, int, int, int)>(engine + "InitAlloc" + kind)(&spec, size, no_scale, 0);
        int bytes = 0;
        kernel<int(const void*, int*)>(engine + "GetBufSize" + kind)(spec, &bytes);
        buffer = std::malloc(static_cast<std::size_t>(bytes) + 1);
        forward = kernel<Forward>(engine + (real ? "Fwd_RToCCS_" : "Fwd_CToC_") + type);
    }
    void run(const void* x, void* y) const { forward(x, y, spec, buffer); }

private:
    using Forward = int(const void* src, void* dst, const void* spec, void* buffer);
    void* spec = nullptr;
    void* buffer = nullptr;
    Forward* forward = nullptr;
};

template <Domain domain, bool single> struct Plan {
    explicit Plan(const Shape& shape)
    {
        const int64_t lengths[] = {shape.n[0], shape.n[1], shape.n[2]};
        orv_dft_create(&dft, single ? ORV_DFT_SINGLE : ORV_DFT_DOUBLE,
                       domain == Domain::real ? ORV_DFT_REAL : ORV_DFT_COMPLEX, shape.rank(), lengths);
        orv_dft_set(dft, ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE);
        orv_dft_set(dft, ORV_DFT_DIRECTIONS, ORV_DFT_FORWARD);
        orv_dft_set(dft, ORV_DFT_TRANSFORMS, shape.count);
        if (orv_dft_commit(dft) != ORV_OK) throw std::runtime_error(orv_last_error());
    }
    void run(const void* x, void* y) const { orv_dft_forward(dft, x, y); }

private:
    orv_dft* dft = nullptr; // to the end of the program
};

} // namespace orv::bench

ORV_BENCH_TRANSFORMS
