// y := A*x, A symmetric of order m in compressed rows of its upper triangle: dcsrsymmvs(m, val, col, ia, x, y). ia has
// m + 1 elements, the first of which is the base of all pointers and of col. A diagonal element comes first in its row,
// or is missing.
#include "spblas/csr_mv.h"

namespace orv::ORV_SPBLAS {
namespace {

void multiply_symmetric(const Int* m, const double* val, const Int* col, const Int* ia, const double* x, double* y)
{
    if (*m < 1) return;
    const Options o = options('n', "sun", static_cast<int>(*ia), 'f');
    multiply(o, o.base, *m + o.base, Csr<double>(o, val, col, ia, ia + 1), Close<double>{1, 0}, x - o.base, y - o.base,
             i64{*m + o.base});
}

} // namespace

SPBLAS_ROUTINE(6, dcsrsymmvs, multiply_symmetric)

} // namespace orv::ORV_SPBLAS
