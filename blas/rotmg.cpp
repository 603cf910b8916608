// Modified Givens rotations: the 2 by 2 matrix H that makes the second component of H (sqrt(d1) x1, sqrt(d2) y1)
// zero, without square roots.
#include "frame/kernels/blas.h"
#include "frame/types.h"

namespace orv {
namespace {

// flag -1: all four entries are stored; 0: h11 = h22 = 1 are implied; 1: h12 = 1, h21 = -1 are implied; -2: H is the
// identity.
template <class R> struct Rotation {
    R flag, h11, h21, h12, h22;

    // Implied entries change when rows are scaled, so they are written out first.
    void spell_out()
    {
        if (flag == 0) h11 = h22 = 1;
        else if (flag > 0) h12 = 1, h21 = -1;
        flag = -1;
    }
};

// gamma = 4096 and its square, powers of two: scaling by them is exact.
template <class R> constexpr R gamma = 4096;
template <class R> constexpr R gamma_squared = 16777216;
template <class R> constexpr R inverse_square = 1 / gamma_squared<R>;

// Brings |d| between 1/gamma^2 and gamma^2; what d gains by gamma^2 the row of H (and x1, for the first) loses by
// gamma. An infinity stays what it is.
template <class R, class... Row> void rescale(R& d, Rotation<R>& h, Row&... row)
{
    if (d == 0) return;
    while (magnitude(d) <= inverse_square<R>) {
        h.spell_out();
        d *= gamma_squared<R>;
        ((row *= 1 / gamma<R>), ...);
    }
    while (magnitude(d) >= gamma_squared<R> && magnitude(d) < __builtin_inf()) {
        h.spell_out();
        d *= inverse_square<R>;
        ((row *= gamma<R>), ...);
    }
}

// param := flag, h11, h21, h12, h22, of which only what the flag does not imply is written. d1, d2 and x1 become the
// scaled squares and the first component of the rotated vector. A negative d1, or a d2 that makes the rotated length
// imaginary, gives flag -1 and zeros throughout; d2*y1 = 0 needs no rotation and changes the flag alone.
template <class R> void rotmg(R* d1, R* d2, R* x1, R y1, R* param)
{
    Rotation<R> h = {};
    const R p1 = *d1 * *x1, p2 = *d2 * y1, q1 = p1 * *x1, q2 = p2 * y1;
    if (!(*d1 < 0) && p2 == 0) {
        param[0] = -2;
        return;
    }
    const bool first_leads = magnitude(q1) > magnitude(q2);
    if (*d1 < 0 || (!first_leads && q2 < 0)) {
        h.flag = -1;
        *d1 = *d2 = *x1 = 0;
    } else {
        if (first_leads) {
            h.flag = 0;
            h.h21 = -y1 / *x1;
            h.h12 = p2 / p1;
            const R u = 1 - h.h12 * h.h21;
            *d1 /= u;
            *d2 /= u;
            *x1 *= u;
        } else {
            h.flag = 1;
            h.h11 = p1 / p2;
            h.h22 = *x1 / y1;
            const R u = 1 + h.h11 * h.h22, turned = *d2 / u;
            *d2 = *d1 / u;
            *d1 = turned;
            *x1 = y1 * u;
        }
        rescale(*d1, h, *x1, h.h11, h.h12);
        rescale(*d2, h, h.h21, h.h22);
    }
    param[0] = h.flag;
    if (h.flag != 0) param[1] = h.h11, param[4] = h.h22;
    if (h.flag <= 0) param[2] = h.h21, param[3] = h.h12;
}

} // namespace
} // namespace orv

using namespace orv;

ORV_EXPORT void BLAS(srotmg)(float* d1, float* d2, float* x1, const float* y1, float* param)
{
    rotmg(d1, d2, x1, *y1, param);
}
ORV_EXPORT void BLAS(drotmg)(double* d1, double* d2, double* x1, const double* y1, double* param)
{
    rotmg(d1, d2, x1, *y1, param);
}
