// Compressed rows and skylines (spblas/skyline.cpp): csrsky(job, n, acsr, ja, ia, asky, pointers, info). job[3] 0: the
// lower triangle, rows from their first entry to the diagonal; else the upper one, columns in the same way. A line has
// its diagonal at least.
//
//   to a skyline    pointers first, from job[2] on; that is all unless asks is 0. What is of the other triangle is left
//                   out, what the profile encloses is zero.
//   back            ia first; that is all unless asks is 0. Zeros are dropped, rows are sorted.
//
// info 1: values and columns for which job[4] has no room are not written, pointers are.
#include "spblas/conversion.h"

namespace orv::ORV_SPBLAS {
namespace {

// Elements of a triangle, by the line that stores them and their place before its end.
struct Place {
    Int line, from_end;
    Place(bool upper, Int i, Int j) : line(upper ? j : i), from_end(upper ? j - i : i - j) {}
    bool inside() const { return from_end >= 0; }
};

template <class T>
Int to_skyline(const Job& job, Int n, const T* acsr, const Int* ja, const Int* ia, T* asky, Int* pointers)
{
    const bool upper = job.detail != 0;
    const auto each = [&](const auto& act) {
        for (Int i = 0; i < n; ++i)
            for (Int p = ia[i] - ia[0]; p < ia[i + 1] - ia[0]; ++p)
                if (const Place at(upper, i, ja[p] - job.csr); at.inside()) act(at, p);
    };
    pointers[0] = job.other;
    for (Int line = 0; line < n; ++line) pointers[line + 1] = 1;
    each([&](Place at, Int) {
        Int& length = pointers[at.line + 1];
        length = static_cast<Int>(max(length, at.from_end + 1));
    });
    i64 total = 0; // a triangle may have more elements than an Int can count
    for (Int line = 0; line < n; ++line) {
        total += pointers[line + 1];
        pointers[line + 1] = static_cast<Int>(total + job.other);
    }
    if (job.asks != 0) return 0;
    if (total > job.room) return 1;
    clear(asky, total);
    each([&](Place at, Int p) { asky[pointers[at.line + 1] - job.other - 1 - at.from_end] += acsr[p]; });
    return 0;
}

template <class T>
Int from_skyline(const Job& job, Int n, T* acsr, Int* ja, Int* ia, const T* asky, const Int* pointers)
{
    const auto each = [&](const auto& act) { // row, column, value
        for (Int line = 0; line < n; ++line) {
            const Int end = pointers[line + 1] - pointers[0];
            for (Int p = pointers[line] - pointers[0]; p < end; ++p) {
                const Int other = line - (end - 1 - p);
                if (asky[p] == zero<T>) continue;
                if (job.detail == 0) act(line, other, asky[p]);
                else act(other, line, asky[p]);
            }
        }
    };
    clear_counts(ia, n);
    each([&](Int i, Int, T) { ++ia[i]; });
    ia[n] = counts_to_places(ia, n, job.csr);
    if (job.asks != 0) return 0;
    if (ia[n] - job.csr > job.room) return 1;
    each([&](Int i, Int j, T value) {
        const Int at = ia[i]++ - job.csr;
        ja[at] = j + job.csr, acsr[at] = value;
    });
    places_to_starts(ia, n, job.csr);
    return 0;
}

template <class T>
void csrsky(const Int* job_, const Int* n, T* acsr, Int* ja, Int* ia, T* asky, Int* pointers, Int* info)
{
    const Job job(job_);
    *info = job.back ? from_skyline(job, *n, acsr, ja, ia, asky, pointers)
                     : to_skyline(job, *n, acsr, ja, ia, asky, pointers);
}

} // namespace

SPBLAS_SDCZ(8, orv_, csrsky, csrsky)

} // namespace orv::ORV_SPBLAS
