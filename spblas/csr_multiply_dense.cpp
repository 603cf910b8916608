// C := A*B or C := C + A'*B for compressed rows A and B and a dense C with n columns; indices and pointers count
// from 1.
//
//   csrmultd_ker(op, first, last, n, a, ja, ia, b, jb, ib, c, ldc)   C by rows
//   csrmultd_ker_t                                                   C by columns
//
// op 0: rows first to last of C := A*B, cleared first. Else rows first to last of A and B add their part of A'*B to all
// of C, which the caller has cleared, and no two calls may share; A is transposed, not conjugated.
#include "spblas/vectors.h"

namespace orv::ORV_SPBLAS {
namespace {

constexpr Int base = 1;

template <class T, bool by_rows>
void multiply(const Int* op, const Int* first, const Int* last, const Int* n, const T* a, const Int* ja, const Int* ia,
              const T* b, const Int* jb, const Int* ib, T* c, const Int* ldc)
{
    a -= base, ja -= base, ia -= base, b -= base, jb -= base, ib -= base;
    const i64 row = by_rows ? *ldc : 1, column = by_rows ? 1 : *ldc;
    T* from_one = c - base * (row + column);
    if (*op == 0) {
        if constexpr (by_rows)
            for (i64 i = *first; i <= *last; ++i) clear(c + (i - base) * row, *n);
        else
            for (i64 j = 0; j < *n; ++j) clear(c + (*first - base) + j * column, i64{*last} - *first + 1);
    }
    for (Int i = *first; i <= *last; ++i)
        for (Int p = ia[i]; p < ia[i + 1]; ++p) {
            const Int of_b = *op == 0 ? ja[p] : i;
            T* line = from_one + (*op == 0 ? i : ja[p]) * row;
            const Multiple<T> factor(a[p]);
            for (Int q = ib[of_b]; q < ib[of_b + 1]; ++q) factor.add(b[q], line + jb[q] * column);
        }
}
template <class T> constexpr auto& by_rows = multiply<T, true>;
template <class T> constexpr auto& by_columns = multiply<T, false>;

} // namespace

SPBLAS_SDCZ(12, , csrmultd_ker, by_rows)
SPBLAS_SDCZ(12, , csrmultd_ker_t, by_columns)

} // namespace orv::ORV_SPBLAS
