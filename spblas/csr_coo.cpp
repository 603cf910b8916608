// Compressed rows and coordinates: csrcoo(job, n, acsr, ja, ia, nnz, acoo, rowind, colind, info).
//
//   to coordinates    nnz receives the count, indices move by job[2] - job[1]. asks 1: rowind; 2: colind, too; 3: acoo,
//                     too; anything else is info 2. More than job[4] entries are info 1. In both cases nothing is
//                     written.
//   back              nnz entries in any order; indices move by job[1] - job[2]. They are put in rows, and these sorted
//                     by column; asks 2: values and columns are only copied, as they come, and ia is left alone. More
//                     than job[4] entries are info 1, with nothing written.
#include "spblas/conversion.h"
#include "spblas/sort.h"

namespace orv::ORV_SPBLAS {
namespace {

enum CoordinateParts { rows_alone = 1, indices_alone = 2, all_three = 3 };

template <class T>
Int to_coordinates(const Job& job, Int n, const T* acsr, const Int* ja, const Int* ia, Int* nnz, T* acoo, Int* rowind,
                   Int* colind)
{
    const Int count = ia[n] - ia[0];
    if (count > job.room) return 1;
    if (job.asks < rows_alone || job.asks > all_three) return 2;
    *nnz = count;
    for (Int i = 0; i < n; ++i)
        for (Int p = ia[i]; p < ia[i + 1]; ++p) rowind[p - ia[0]] = i + job.other;
    if (job.asks >= indices_alone)
        for (Int p = 0; p < count; ++p) colind[p] = ja[p] + (job.other - job.csr);
    if (job.asks == all_three) copy(acsr, acoo, count);
    return 0;
}

template <class T>
Int from_coordinates(const Job& job, Int n, T* acsr, Int* ja, Int* ia, Int nnz, const T* acoo, const Int* rowind,
                     const Int* colind)
{
    const Int shift = job.csr - job.other;
    if (nnz > job.room) return 1;
    if (job.asks == indices_alone) {
        for (Int p = 0; p < nnz; ++p) ja[p] = colind[p] + shift;
        copy(acoo, acsr, nnz);
        return 0;
    }
    clear_counts(ia, n);
    for (Int p = 0; p < nnz; ++p) ++ia[rowind[p] - job.other];
    ia[n] = counts_to_places(ia, n, job.csr);
    for (Int p = 0; p < nnz; ++p) {
        if (p + ahead < nnz) {
            const Int soon = ia[rowind[p + ahead] - job.other] - job.csr;
            prefetch(ja + soon), prefetch(acsr + soon);
        }
        const Int at = ia[rowind[p] - job.other]++ - job.csr;
        ja[at] = colind[p] + shift, acsr[at] = acoo[p];
    }
    places_to_starts(ia, n, job.csr);
    sort_rows(0, n, ia, job.csr, ja, acsr);
    return 0;
}

template <class T>
void csrcoo(const Int* job_, const Int* n, T* acsr, Int* ja, Int* ia, Int* nnz, T* acoo, Int* rowind, Int* colind,
            Int* info)
{
    const Job job(job_);
    *info = job.back ? from_coordinates(job, *n, acsr, ja, ia, *nnz, acoo, rowind, colind)
                     : to_coordinates(job, *n, acsr, ja, ia, nnz, acoo, rowind, colind);
}

} // namespace

SPBLAS_SDCZ(10, orv_, csrcoo, csrcoo)

} // namespace orv::ORV_SPBLAS
