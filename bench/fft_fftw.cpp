// FFTW behind the routines that bench/fft.cpp times, planned as BENCH_FFTW says: "patient", or by measurements.
// Patience with more than 2^14 points takes minutes a length, so those are planned by measurements either way.
#include "bench/fft_plans.h"

#include <cstdlib>
#include <cstring>
#include <fftw3.h>

namespace orv::bench {
namespace {

unsigned effort(const Shape& shape)
{
    const char* word = std::getenv("BENCH_FFTW");
    const bool patient =
        word != nullptr && std::strcmp(word, "patient") == 0 && shape.elements() * shape.count <= 1 << 14;
    return patient ? FFTW_PATIENT : FFTW_MEASURE;
}

// Lengths as FFTW wants them, the innermost last.
struct Lengths {
    explicit Lengths(const Shape& shape)
    {
        for (int k = 0; k < shape.rank(); ++k) n[shape.rank() - 1 - k] = shape.n[k];
    }
    int n[3];
};

// FFTW by precision. Sources are not const there, and not written either: out of place they are preserved.
template <bool single> struct Fftw;
#define PRECISION(is_single, prefix, R)                                                                                \
    template <> struct Fftw<is_single> {                                                                               \
        using Real = R;                                                                                                \
        using Complex = prefix##_complex;                                                                              \
        using Plan = prefix##_plan;                                                                                    \
        static Plan make(const Shape& s, Real* x, Complex* y)                                                          \
        {                                                                                                              \
            return prefix##_plan_many_dft_r2c(s.rank(), Lengths(s).n, s.count, x, nullptr, 1,                          \
                                              static_cast<int>(s.elements()), y, nullptr, 1,                           \
                                              static_cast<int>(s.half_spectrum()), effort(s) | FFTW_PRESERVE_INPUT);   \
        }                                                                                                              \
        static Plan make(const Shape& s, Complex* x, Complex* y)                                                       \
        {                                                                                                              \
            const int apart = static_cast<int>(s.elements());                                                          \
            return prefix##_plan_many_dft(s.rank(), Lengths(s).n, s.count, x, nullptr, 1, apart, y, nullptr, 1, apart, \
                                          FFTW_FORWARD, effort(s));                                                    \
        }                                                                                                              \
        static void run(Plan plan, Real* x, Complex* y) { prefix##_execute_dft_r2c(plan, x, y); }                      \
        static void run(Plan plan, Complex* x, Complex* y) { prefix##_execute_dft(plan, x, y); }                       \
    };
PRECISION(false, fftw, double)
PRECISION(true, fftwf, float)

} // namespace

template <Domain domain, bool single> struct Plan {
    // Planning writes to its operands, so it gets others of the same alignment.
    explicit Plan(const Shape& shape)
    {
        const std::size_t bytes = sizeof(Complex) * static_cast<std::size_t>(2 * shape.elements() * shape.count);
        void *from = fftw_malloc(bytes), *to = fftw_malloc(bytes);
        plan = Library::make(shape, static_cast<Source*>(from), static_cast<Complex*>(to));
        fftw_free(from);
        fftw_free(to);
    }
    void run(const void* x, void* y) const
    {
        Library::run(plan, static_cast<Source*>(const_cast<void*>(x)), static_cast<Complex*>(y));
    }

private:
    using Library = Fftw<single>;
    using Complex = typename Library::Complex;
    using Source = std::conditional_t<domain == Domain::real, typename Library::Real, Complex>;
    typename Library::Plan plan;
};

template <Domain domain, bool single> struct Line : Plan<domain, single> {
    explicit Line(int n) : Plan<domain, single>(Shape{{n, 1, 1}, 1}) {}
};

} // namespace orv::bench

ORV_BENCH_TRANSFORMS
