// Compressed rows and rows of blocks: csrbsr(job, m, mblk, ldabsr, acsr, ja, ia, absr, jab, iab, info), square matrices
// and blocks of order mblk, ldabsr elements from one block to the next; job[3] 1: elements of a block by rows, else by
// columns.
//
//   to blocks    m rows. Those that the last row of blocks lacks are zero. Blocks of a row stand in the order in which
//   its
//                rows bring them. asks positive: all; 0: jab and iab; -1: iab[0] receives the number of blocks, and
//                nothing else is written. A mark for each column of blocks is kept in memory.
//   back         m rows of blocks, so m*mblk rows. Zeros are dropped, rows are in the order of the blocks. asks 0: ja
//   and
//                ia alone.
//
// info 1: mblk is below 1. 2: ldabsr is below mblk*mblk.
#include "spblas/conversion.h"
#include "spblas/memory.h"

namespace orv::ORV_SPBLAS {
namespace {

constexpr Int count_alone = -1;

// A block by its elements' places.
struct Layout {
    Int size, row_step, column_step;
    Layout(const Job& job, Int mblk)
        : size(mblk), row_step(job.detail == 1 ? mblk : 1), column_step(job.detail == 1 ? 1 : mblk)
    {
    }
    Int at(Int i, Int j) const { return i * row_step + j * column_step; }
};

// Which columns of blocks a row of blocks has met.
struct Marks {
    Int* last;                 // block of a column, counted from 1
    Int count = 0, before = 0; // all blocks, and those of the rows before

    bool add(Int column) // whether it is new
    {
        if (last[column] > before) return false;
        last[column] = ++count;
        return true;
    }
};

template <class T>
Int to_blocks(const Job& job, Int m, const Layout& block, i64 ld, const T* acsr, const Int* ja, const Int* ia, T* absr,
              Int* jab, Int* iab)
{
    const Int rows = m < 1 ? 0 : (m - 1) / block.size + 1;
    const Block<Int> memory(job.asks == count_alone ? 2 * i64{rows} : rows);
    if (memory.data() == nullptr) return -1;
    clear_counts(memory.data(), rows);
    Marks marks{memory.data()};
    const bool counts = job.asks == count_alone, values = job.asks > 0;
    acsr -= ia[0], ja -= ia[0], absr -= ld;
    for (Int i = 0; i < m; ++i) {
        if (i % block.size == 0) {
            marks.before = marks.count;
            if (!counts) iab[i / block.size] = marks.count + job.other;
        }
        Int column = 0, begin = 0, end = 0; // of the last entry's block, and its columns
        for (Int p = ia[i]; p < ia[i + 1]; ++p) {
            const Int j = ja[p] - job.csr;
            if (j < begin || j >= end) { // a division is dear, and neighbours share a block
                column = j / block.size, begin = column * block.size, end = begin + block.size;
                if (marks.add(column)) {
                    if (!counts) jab[marks.count - 1] = column + job.other;
                    if (values) clear(absr + marks.count * ld, i64{block.size} * block.size);
                }
            }
            if (values) absr[marks.last[column] * ld + block.at(i % block.size, j - begin)] += acsr[p];
        }
    }
    iab[counts ? 0 : rows] = counts ? marks.count : marks.count + job.other;
    return 0;
}

template <class T>
Int from_blocks(const Job& job, Int m, const Layout& block, i64 ld, T* acsr, Int* ja, Int* ia, const T* absr,
                const Int* jab, const Int* iab)
{
    Int n = 0;
    absr -= iab[0] * ld, jab -= iab[0];
    for (Int row = 0; row < m; ++row)
        for (Int i = 0; i < block.size; ++i) {
            ia[row * block.size + i] = n + job.csr;
            for (Int b = iab[row]; b < iab[row + 1]; ++b)
                for (Int j = 0; j < block.size; ++j) {
                    const T value = absr[b * ld + block.at(i, j)];
                    if (value == zero<T>) continue;
                    ja[n] = (jab[b] - job.other) * block.size + j + job.csr;
                    if (job.asks != 0) acsr[n] = value;
                    ++n;
                }
        }
    ia[max(m, 0) * block.size] = n + job.csr;
    return 0;
}

template <class T>
void csrbsr(const Int* job_, const Int* m, const Int* mblk, const Int* ldabsr, T* acsr, Int* ja, Int* ia, T* absr,
            Int* jab, Int* iab, Int* info)
{
    const Job job(job_);
    if (*mblk < 1) return void(*info = 1);
    if (*ldabsr < i64{*mblk} * *mblk) return void(*info = 2);
    const Layout block(job, *mblk);
    *info = job.back ? from_blocks(job, *m, block, *ldabsr, acsr, ja, ia, absr, jab, iab)
                     : to_blocks(job, *m, block, *ldabsr, acsr, ja, ia, absr, jab, iab);
}

} // namespace

SPBLAS_SDCZ(11, orv_, csrbsr, csrbsr)

} // namespace orv::ORV_SPBLAS
