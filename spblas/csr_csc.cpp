// Compressed rows and compressed columns: csrcsc(job, m, acsr, ja, ia, acsc, ja1, ia1, info), square matrices of order
// m. Either way entries go through the rows of what there is, each to the end of its column: so what comes out is
// sorted. asks 0: the pattern alone. Of job[1], job[2] and job[5] only the low 32 bits count, in both modules; room is
// not asked.
#include "spblas/conversion.h"

namespace orv::ORV_SPBLAS {
namespace {

template <bool values, class T>
void turn(Int m, const T* a, const Int* index, const Int* start, Int base, T* b, Int* to_index, Int* to_start,
          Int to_base)
{
    const Int entries = start[m] - start[0];
    Int* count = to_start - base;
    clear_counts(to_start, m);
    for (Int p = 0; p < entries; ++p) ++count[index[p]];
    to_start[m] = counts_to_places(to_start, m, to_base);
    b -= to_base, to_index -= to_base;
    for (Int i = 0; i < m; ++i)
        for (Int p = start[i] - start[0], end = start[i + 1] - start[0]; p < end; ++p) {
            if (p + ahead < entries) {
                const Int soon = count[index[p + ahead]];
                prefetch(to_index + soon);
                if constexpr (values) prefetch(b + soon);
            }
            const Int at = count[index[p]]++;
            to_index[at] = i + to_base;
            if constexpr (values) b[at] = a[p];
        }
    places_to_starts(to_start, m, to_base);
}

template <class T>
void csrcsc(const Int* job, const Int* m, T* acsr, Int* ja, Int* ia, T* acsc, Int* ja1, Int* ia1, Int* info)
{
    const Int csr = static_cast<i32>(job[1]), csc = static_cast<i32>(job[2]);
    const bool values = static_cast<i32>(job[5]) != 0;
    const auto& go = values ? turn<true, T> : turn<false, T>;
    if (job[0] == 0) go(*m, acsr, ja, ia, csr, acsc, ja1, ia1, csc);
    else go(*m, acsc, ja1, ia1, csc, acsr, ja, ia, csr);
    *info = 0;
}

} // namespace

SPBLAS_SDCZ(9, orv_, csrcsc, csrcsc)

} // namespace orv::ORV_SPBLAS
