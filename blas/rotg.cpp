// Plane rotations that turn (a, b) into (r, 0).
#include "frame/kernels/blas.h"
#include "frame/types.h"

namespace orv {
namespace {

float square_root(float a) { return __builtin_sqrtf(a); }
double square_root(double a) { return __builtin_sqrt(a); }

// Real c and s with  [ c s; -s c ] (a, b) = (r, 0).  a receives r, and b the one number z that c and s can be had back
// from: z = s where |a| > |b|, else 1/c, and 1 where c is 0. Of equal magnitudes b gives r its sign.
template <class R> void rotg(R* a, R* b, R* c, R* s)
{
    const R abs_a = magnitude(*a), abs_b = magnitude(*b), scale = abs_a + abs_b;
    if (scale == 0) {
        *c = 1;
        *s = *a = *b = 0;
        return;
    }
    const R roe = abs_a > abs_b ? *a : *b;
    const R p = *a / scale, q = *b / scale;
    const R length = scale * square_root(p * p + q * q);
    const R r = roe < 0 ? -length : length;
    *c = *a / r;
    *s = *b / r;
    *b = abs_a > abs_b ? *s : *c != 0 ? 1 / *c : R(1);
    *a = r;
}

// |a|. Squares that overflow are taken of scaled parts; squares that vanish make a zero.
template <class R> R modulus(cpx<R> a)
{
    const R plain = square_root(a.re * a.re + a.im * a.im);
    if (plain < __builtin_inf()) return plain;
    const R re = magnitude(a.re), im = magnitude(a.im), larger = re > im ? re : im;
    if (!(larger < __builtin_inf())) return plain; // an infinity, or NaN
    const R p = re / larger, q = im / larger;
    return larger * square_root(p * p + q * q);
}

// Real c and complex s with  [ c s; -conj(s) c ] (a, b) = (r, 0).  a receives r.
template <class R> void rotg(cpx<R>* a, const cpx<R>* b, R* c, cpx<R>* s)
{
    const R abs_a = modulus(*a);
    if (abs_a == 0) {
        *c = 0;
        *s = one<cpx<R>>;
        *a = *b;
        return;
    }
    const R scale = abs_a + modulus(*b);
    const R a_re = a->re / scale, a_im = a->im / scale, b_re = b->re / scale, b_im = b->im / scale;
    const R r = scale * square_root(a_re * a_re + a_im * a_im + b_re * b_re + b_im * b_im);
    const cpx<R> alpha = {a->re / abs_a, a->im / abs_a}, turned = alpha * conj(*b);
    *c = abs_a / r;
    *s = {turned.re / r, turned.im / r};
    *a = r * alpha;
}

} // namespace
} // namespace orv

using namespace orv;

ORV_EXPORT void BLAS(srotg)(float* a, float* b, float* c, float* s) { rotg(a, b, c, s); }
ORV_EXPORT void BLAS(drotg)(double* a, double* b, double* c, double* s) { rotg(a, b, c, s); }
ORV_EXPORT void BLAS(crotg)(cpx<float>* a, const cpx<float>* b, float* c, cpx<float>* s) { rotg(a, b, c, s); }
ORV_EXPORT void BLAS(zrotg)(cpx<double>* a, const cpx<double>* b, double* c, cpx<double>* s) { rotg(a, b, c, s); }
