// Compressed rows and compressed columns: csrcsc(job, m, acsr, ja, ia, acsc, ja1, ia1, info), square matrices of order
// m. Either way entries go through the rows of what there is, each to the end of its column: so what comes out is
// sorted. asks 0: the pattern alone. Of job[1], job[2] and job[5] only the low 32 bits count, in both modules; room is
// not asked.
#include "spblas/conversion.h"

namespace orv::ORV_SPBLAS {
namespace {

template <class T>
void turn(Int m, const T* a, const Int* index, const Int* start, Int base, T* b, Int* to_index, Int* to_start,
          Int to_base, bool values)
{
    const Int entries = start[m] - start[0];
    Int* count = to_start - base;
    clear_counts(to_start, m);
    for (Int p = 0; p < entries; ++p) ++count[index[p]];
    counts_to_places(to_start, m, to_base);
    a -= start[0], index -= start[0], b -= to_base, to_index -= to_base;
    for (Int i = 0; i < m; ++i)
        for (Int p = start[i]; p < start[i + 1]; ++p) {
            const Int at = count[index[p]]++;
            to_index[at] = i + to_base;
            if (values) b[at] = a[p];
        }
    places_to_starts(to_start, m, to_base);
}

template <class T>
void csrcsc(const Int* job, const Int* m, T* acsr, Int* ja, Int* ia, T* acsc, Int* ja1, Int* ia1, Int* info)
{
    const Int csr = static_cast<i32>(job[1]), csc = static_cast<i32>(job[2]);
    const bool values = static_cast<i32>(job[5]) != 0;
    if (job[0] == 0) turn(*m, acsr, ja, ia, csr, acsc, ja1, ia1, csc, values);
    else turn(*m, acsc, ja1, ia1, csc, acsr, ja, ia, csr, values);
    *info = 0;
}

} // namespace

SPBLAS_SDCZ(9, orv_, csrcsc, csrcsc)

} // namespace orv::ORV_SPBLAS
