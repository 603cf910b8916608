// B := alpha*A for dense matrices by columns: matcopy(m, n, a, lda, b, ldb, alpha). alpha = 0 does not read A. Where
// the two overlap, elements are taken and written one after the other, down the columns.
#include "spblas/vectors.h"

namespace orv::ORV_SPBLAS {
namespace {

template <class T>
void matcopy(const Int* m_, const Int* n, const T* a, const Int* lda, T* b, const Int* ldb, const T* alpha)
{
    const i64 m = *m_, lanes = vec<T>::lanes;
    if (m < 1 || *n < 1) return;
    const T* a_end = a + (*n - 1) * i64{*lda} + m;
    const T* b_end = b + (*n - 1) * i64{*ldb} + m;
    const bool apart = a_end <= b || b_end <= a;
    const factor<T> by(*alpha);
    for (i64 j = 0; j < *n; ++j, a += *lda, b += *ldb) {
        if (*alpha == zero<T>) {
            clear(b, m);
            continue;
        }
        i64 i = 0;
        if (apart)
            for (; i + lanes <= m; i += lanes) storeu(b + i, by * loadu(a + i));
        for (; i < m; ++i) b[i] = *alpha * a[i];
    }
}

} // namespace

SPBLAS_SDCZ(7, , matcopy, matcopy)

} // namespace orv::ORV_SPBLAS
