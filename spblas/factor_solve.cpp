// x := A^-1*x for A = L*D*L', an incomplete factorisation: L has ones on its diagonal, which are not stored, and below
// it compressed columns, ja the numbers of rows, all from 1; d is D.
//
//   dcscgss(n, a, ja, ia, d, x)
//   orv_ildlt_sv(n, a, ja, ia, flags, d, y, request)   request 0: columns of L whose bit in flags is set are taken as
//                                                      empty, column j's being bit (j - 1) % 32 of word (j - 1) / 32,
//                                                      of 32 bits in both modules; 1: nothing; else dcscgss
#include "spblas/options.h"

namespace orv::ORV_SPBLAS {
namespace {

constexpr Int base = 1;

template <class Empty>
void solve(Int n, const double* a, const Int* ja, const Int* ia, const double* d, double* x, const Empty& empty)
{
    a -= base, ja -= base, x -= base;
    const auto end = [=](Int j) { return empty(j) ? ia[j] : ia[j + 1]; };
    for (Int j = 0; j < n; ++j) {
        const double by = -x[j + base];
        for (Int p = ia[j]; p < end(j); ++p) x[ja[p]] += a[p] * by;
        x[j + base] /= d[j];
    }
    for (Int j = n - 1; j >= 0; --j) {
        double sum = 0;
        for (Int p = ia[j]; p < end(j); ++p) sum += a[p] * x[ja[p]];
        x[j + base] -= sum;
    }
}

void whole(const Int* n, const double* a, const Int* ja, const Int* ia, const double* d, double* x)
{
    solve(*n, a, ja, ia, d, x, [](Int) { return false; });
}

void flagged(const Int* n, const double* a, const Int* ja, const Int* ia, const i32* flags, const double* d, double* y,
             const Int* request)
{
    if (*request == 1) return;
    if (*request != 0) return whole(n, a, ja, ia, d, y);
    solve(*n, a, ja, ia, d, y, [=](Int j) { return (static_cast<std::uint32_t>(flags[j / 32]) >> (j % 32) & 1) != 0; });
}

} // namespace

SPBLAS_ROUTINE(6, dcscgss, whole)
SPBLAS_ROUTINE(8, orv_ildlt_sv, flagged)

} // namespace orv::ORV_SPBLAS
