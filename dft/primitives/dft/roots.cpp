// Roots of unity and powers modulo m, for index maps and twiddles of transforms above.
#include "dft/primitives/members.h"
#include "frame/kernels/dft_general.h"

extern "C" {
double sin(double);
double cos(double);
float sinf(float);
float cosf(float);
}

namespace orv::dft::general {
namespace {

constexpr double pi = 3.14159265358979323846;

// a*b^e modulo m, by e multiplications; values stay below m, and m below 2^31.
i64 power_modulo(i64 a, i64 b, i64 e, i64 m)
{
    a %= m;
    for (; e > 0; --e) a = a * b % m;
    return a;
}

// The product with pi is rounded to the type of x. Calls of their own: side by side, sine and cosine become one call of
// a function that the branch may not ask for.
double cosine(double x) { return cos(pi * x); }
double sine(double x) { return sin(pi * x); }
[[gnu::noinline]] float cosine(float x) { return cosf(static_cast<float>(pi * x)); }
[[gnu::noinline]] float sine(float x) { return sinf(static_cast<float>(pi * x)); }

template <class R> cpx<R> omega(i64 n, i64 k)
{
    const double angle = 2 * pi * static_cast<double>(k) / static_cast<double>(n);
    return {static_cast<R>(cos(angle)), static_cast<R>(sin(angle))};
}

} // namespace

// These carry no tag.
#define ROOTS(t, R)                                                                                                    \
    ORV_EXPORT i64 orvgPowMod_##t(i64 a, i64 b, i64 e, i64 m) { return power_modulo(a, b, e, m); }                     \
    ORV_EXPORT R orvgCosPi_##t(R x) { return cosine(x); }                                                              \
    ORV_EXPORT R orvgSinPi_##t(R x) { return sine(x); }                                                                \
    ORV_EXPORT cpx<R> orvgOmegaPi_##t(R x) { return {cosine(x), sine(x)}; }                                            \
    ORV_EXPORT cpx<R> orvgOmega_##t(i64 n, i64 k) { return omega<R>(n, k); }
ROOTS(32fc, float)
ROOTS(64fc, double)

} // namespace orv::dft::general
