// Compressed rows and diagonals (spblas/dia.h): csrdia(job, n, acsr, ja, ia, adia, ndiag, distance, idiag, acsr_rem,
// ja_rem, ia_rem, info), square matrices; idiag diagonals, ndiag elements from one to the next.
//
//   to diagonals    job[5]/10 0: those that distance names; else idiag at most, those with the most entries (of as
//   many,
//                   the lower ones), and distance receives them in ascending order, idiag their number. Entries beside
//                   them are dropped, or, job[5]%10 being 1, make compressed rows of their own in acsr_rem, ja_rem,
//                   ia_rem. A counter for each of the 2*n - 1 diagonals is kept in memory; info -1 without it.
//   back            the elements inside the matrix, by rows, in the order of distance; zeros only if job[5] is not 0.
#include "spblas/conversion.h"
#include "spblas/memory.h"

namespace orv::ORV_SPBLAS {
namespace {

// Names at most `most` diagonals, those with the most entries. count[d], d from -(n - 1) to n - 1: their numbers.
Int choose(const Int* count, Int n, Int entries, Int most, Int* distance)
{
    const auto with_at_least = [=](Int limit) {
        Int found = 0;
        for (Int d = 1 - n; d < n; ++d) found += count[d] >= limit;
        return found;
    };
    Int limit = 1, high = entries + 1; // the lowest limit that not too many reach
    while (limit < high) {
        const Int middle = limit + (high - limit) / 2;
        if (with_at_least(middle) <= most) high = middle;
        else limit = middle + 1;
    }
    Int next_best = max(0, most - with_at_least(limit)), chosen = 0; // room for some that just fail
    for (Int d = 1 - n; d < n; ++d)
        if (count[d] >= limit || (count[d] > 0 && count[d] == limit - 1 && next_best-- > 0)) distance[chosen++] = d;
    return chosen;
}

template <class T>
Int to_diagonals(const Job& job, Int n, const T* acsr, const Int* ja, const Int* ia, T* adia, i64 ld, Int* distance,
                 Int* idiag, T* acsr_rem, Int* ja_rem, Int* ia_rem)
{
    const bool chooses = job.asks / 10 != 0, keeps_rest = job.asks % 10 == 1;
    const Block<Int> memory(2 * i64{n} - 1);
    if (memory.data() == nullptr) return -1;
    acsr -= ia[0], ja -= ia[0];
    Int* of_diagonal = memory.data() + max(n, 1) - 1; // from -(n - 1) to n - 1
    const auto reset = [&] { clear_counts(memory.data(), 2 * i64{n} - 1); };
    reset();
    if (chooses) {
        for (Int i = 0; i < n; ++i)
            for (Int p = ia[i]; p < ia[i + 1]; ++p) ++of_diagonal[ja[p] - job.csr - i];
        *idiag = choose(of_diagonal, n, ia[n] - ia[0], *idiag, distance);
        reset();
    }
    for (Int k = *idiag - 1; k >= 0; --k) { // of one that is named twice, the first has the entries
        if (distance[k] > -n && distance[k] < n) of_diagonal[distance[k]] = k + 1;
        clear(adia + k * ld, n);
    }
    Int rest = 0;
    for (Int i = 0; i < n; ++i) {
        if (keeps_rest) ia_rem[i] = rest + job.csr;
        for (Int p = ia[i]; p < ia[i + 1]; ++p) {
            const Int k = of_diagonal[ja[p] - job.csr - i];
            if (k > 0) adia[i + (k - 1) * ld] += acsr[p];
            else if (keeps_rest) acsr_rem[rest] = acsr[p], ja_rem[rest++] = ja[p];
        }
    }
    if (keeps_rest) ia_rem[max(n, 0)] = rest + job.csr;
    return 0;
}

template <class T>
Int from_diagonals(const Job& job, Int n, T* acsr, Int* ja, Int* ia, const T* adia, i64 ld, const Int* distance,
                   Int idiag)
{
    Int next = 0;
    for (Int i = 0; i < n; ++i) {
        ia[i] = next + job.csr;
        for (Int k = 0; k < idiag; ++k) {
            const i64 j = i64{i} + distance[k];
            if (j < 0 || j >= n) continue;
            const T value = adia[i + k * ld];
            if (job.asks == 0 && value == zero<T>) continue;
            ja[next] = static_cast<Int>(j) + job.csr, acsr[next++] = value;
        }
    }
    ia[max(n, 0)] = next + job.csr;
    return 0;
}

template <class T>
void csrdia(const Int* job_, const Int* n, T* acsr, Int* ja, Int* ia, T* adia, const Int* ndiag, Int* distance,
            Int* idiag, T* acsr_rem, Int* ja_rem, Int* ia_rem, Int* info)
{
    const Job job(job_);
    *info = job.back ? from_diagonals(job, *n, acsr, ja, ia, adia, *ndiag, distance, *idiag)
                     : to_diagonals(job, *n, acsr, ja, ia, adia, *ndiag, distance, idiag, acsr_rem, ja_rem, ia_rem);
}

} // namespace

SPBLAS_SDCZ(13, orv_, csrdia, csrdia)

} // namespace orv::ORV_SPBLAS
