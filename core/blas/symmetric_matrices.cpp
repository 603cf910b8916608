// Products with symmetric and Hermitian matrices: arguments checked, large ones shared among threads.
#include "core/blas/cut_products.h"
#include "core/blas/shared.h"
#include "frame/arguments.h"

using namespace orv;
using namespace orv::core;

namespace {

// By columns of B and C, or by rows of them where A comes from the right: each needs all of A.
template <class T> struct SymmCut {
    template <class... P>
    static int threads(const char* side, const char*, const i64* m, const i64* n, const T* alpha, P...)
    {
        if (*alpha == zero<T>) return 1;
        const bool left = fold(*side) == 'L';
        return threads_for_products<T>(volume(*m, *n, left ? *m : *n), (left ? *n : *m) / least_side);
    }
    template <class K>
    static void run(int index, int count, K* kernel, const char* side, const char* uplo, const i64* m, const i64* n,
                    const T* alpha, const T* a, const i64* lda, const T* b, const i64* ldb, const T* beta, T* c,
                    const i64* ldc)
    {
        if (fold(*side) == 'L') {
            const Range r = even_part(*n, count, index, tile);
            kernel(side, uplo, m, &r.size, alpha, a, lda, b + r.begin * *ldb, ldb, beta, c + r.begin * *ldc, ldc);
        } else {
            const Range r = even_part(*m, count, index, tile);
            kernel(side, uplo, &r.size, n, alpha, a, lda, b + r.begin, ldb, beta, c + r.begin, ldc);
        }
    }
};
template <auto& F> using Symm = Shared<F, arguments::symm, SymmCut<value_argument<F, 4>>>;

} // namespace

ORV_BLAS(12, ssymm, Symm, xssymm)
ORV_BLAS(12, dsymm, Symm, xdsymm)
ORV_BLAS(12, csymm, Symm, xcsymm)
ORV_BLAS(12, zsymm, Symm, xzsymm)

ORV_BLAS(12, chemm, Symm, xchemm)
ORV_BLAS(12, zhemm, Symm, xzhemm)
