// Dense matrices and compressed rows: dnscsr(job, m, n, adns, lda, acsr, ja, ia, info), m rows and n columns, dense
// ones by columns whatever job[2] says. job[3] is the part of the matrix that counts: 0 the lower triangle, 1 the upper
// one, both with the diagonal, else all of it.
//
//   to compressed rows    (job[0] 0) asks 0: ia alone, and room is not asked. Zeros are dropped, negative ones too. A
//                         row for which job[4] has no room is told in info, counted from 1; those before it are there,
//                         it and those behind it are empty; what of it there is room for stands behind them.
//   back                  all m by n elements are cleared, then entries added.
#include "spblas/conversion.h"

namespace orv::ORV_SPBLAS {
namespace {

bool counts(const Job& job, Int i, Int j) { return job.detail == 0 ? i >= j : job.detail == 1 ? i <= j : true; }

template <class T> Int from_dense(const Job& job, Int m, Int n, const T* adns, i64 ld, T* acsr, Int* ja, Int* ia)
{
    // By columns, as they lie: a row's entries come one after the other all the same.
    const auto each = [&](Int rows, const auto& act) {
        for (Int j = 0; j < n; ++j) {
            const T* column = adns + j * ld;
            const Int end = job.detail == 1 ? static_cast<Int>(min(j + 1, rows)) : rows;
            for (Int i = job.detail == 0 ? j : 0; i < end; ++i) act(i, j, column[i]);
        }
    };
    clear_counts(ia, m);
    each(m, [=](Int i, Int, T value) { ia[i] += value != zero<T>; });
    ia[m] = counts_to_places(ia, m, job.csr);
    if (job.asks == 0) return 0;
    Int rows = m; // for which there is room
    while (rows > 0 && ia[rows] - job.csr > job.room) --rows;
    for (Int i = rows + 1; i <= m; ++i) ia[i] = ia[rows];
    each(rows < m ? rows + 1 : m, [=](Int i, Int j, T value) {
        if (value == zero<T> || (i == rows && ia[i] - job.csr >= job.room)) return;
        const Int at = ia[i]++ - job.csr;
        ja[at] = j + job.csr, acsr[at] = value;
    });
    places_to_starts(ia, rows, job.csr);
    return rows < m ? rows + 1 : 0;
}

template <class T>
Int to_dense(const Job& job, Int m, Int n, T* adns, i64 ld, const T* acsr, const Int* ja, const Int* ia)
{
    for (Int j = 0; j < n; ++j) clear(adns + j * ld, m);
    for (Int i = 0; i < m; ++i)
        for (Int p = ia[i] - ia[0]; p < ia[i + 1] - ia[0]; ++p) {
            const Int j = ja[p] - job.csr;
            if (counts(job, i, j)) adns[i + j * ld] += acsr[p];
        }
    return 0;
}

template <class T>
void dnscsr(const Int* job_, const Int* m, const Int* n, T* adns, const Int* lda, T* acsr, Int* ja, Int* ia, Int* info)
{
    const Job job(job_);
    *info =
        job.back ? to_dense(job, *m, *n, adns, *lda, acsr, ja, ia) : from_dense(job, *m, *n, adns, *lda, acsr, ja, ia);
}

} // namespace

SPBLAS_SDCZ(9, orv_, dnscsr, dnscsr)

} // namespace orv::ORV_SPBLAS
