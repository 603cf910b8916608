// C := A*B and C := A'*B in compressed rows, A' being A transposed, of complex matrices too. All indices and pointers
// count from 1, rows of A and B may be in any order. C has n columns. Columns of a row of C come in the order in which
// they are met, going through the row of A, or the column, from its first entry; entries that cancel stay.
//
//   mcsr_notr(first, last, m, n, request, start, a, ja, ia, b, jb, ib, c, jc, ic, nzmax, work, info)   A*B
//   mcsr_trans                                                                                         A'*B, m rows of
//   A
//     request 1: ic alone, from which sizes can be read; nzmax, a, b, c and jc are not read
//             2: c and jc, with ic as it is; nzmax is not read
//             else all of it
//     Rows first to last of C. start: entries in front of them, so ic[first - 1] is start + 1 (2: not read). nzmax:
//     room in c and jc; a row that it does not hold is told in info: those before it are there, it and those behind it
//     are empty. work: n integers, or null: then they are taken from memory, twice as many for request 1. info -1: no
//     memory.
//
//   multcsr_tr(request, m, n, k, block, a, ja, ia, b, jb, ib, c, jc, ic, nzmax, info)   A'*B, A m by n, B m by k
//     the same for all n rows, block of them at a time, for which A is gone through once. request 0: all, 2: all, nzmax
//     not read; odd ones are refused, with nothing written. Blocks below 1 are one.
//   multcsr_trom
//     the same at once, with rows sorted by column at the end; request 1: ic alone. block is not read.
//
//   mcsr_trnnz(m, n, first, last, ja, ia, jb, ib, ic)   ic[i - 1] := entries of row i of A'*B. It asks for memory, and
//   goes on
//                                                       without, slowly.
#include "spblas/columns.h"
#include "spblas/sort.h"

#include <limits>

namespace orv::ORV_SPBLAS {
namespace {

constexpr Int base = 1;
constexpr Int sizes_alone = 1, values_alone = 2;

// B, and C as far as it is built. Arrays are moved so that they are indexed as they count.
template <class T> struct Product {
    const T* b;
    const Int *jb, *ib;
    T* c;
    Int *jc, *ic;
    i64 room;
    Int* last; // place where a column was met last

    // Adds factor times row k of B to the row of C from begin on; next: behind it. False: no room.
    template <bool values> ORV_INLINE bool add(T factor, Int k, Int begin, Int& next) const
    {
        for (Int q = ib[k]; q < ib[k + 1]; ++q) {
            const Int j = jb[q];
            if (Int& place = last[j]; place < begin) {
                if (values && next > room) return false;
                if constexpr (values) jc[next] = j, c[next] = factor * b[q];
                place = next++;
            } else if constexpr (values) c[place] += factor * b[q];
        }
        return true;
    }
};

// Rows first to last of C, of which row i is the sum of factors(i, act), act(entry of A, row of B). Returns the row for
// which there is no room, or 0.
template <bool values, class T, class Factors>
Int build(const Product<T>& p, const T* a, bool pointers, Int first, Int last, const Factors& factors)
{
    for (Int i = first; i <= last; ++i) {
        const Int begin = p.ic[i];
        Int next = begin;
        const auto add = [&](Int entry, Int k) ORV_INLINE_LAMBDA {
            return p.template add<values>(values ? a[entry] : zero<T>, k, begin, next);
        };
        if (!factors(i, add)) return i;
        if (pointers) p.ic[i + 1] = next;
    }
    return 0;
}

template <class T> Product<T> product(const T* b, const Int* jb, const Int* ib, T* c, Int* jc, Int* ic, i64 room)
{
    return {b - base, jb - base, ib - base, c - base, jc - base, ic - base, room, nullptr};
}
constexpr i64 no_limit = std::numeric_limits<i64>::max();

template <class T, class Factors>
void multiply(Int first, Int last, Int n, Int request, Int start, const T* a, Product<T> p, Int* marks, Int* info,
              const Factors& factors)
{
    p.last = marks - base;
    clear_counts(marks, n);
    if (request != values_alone) p.ic[first] = start + base;
    const Int row = request == sizes_alone ? build<false>(p, a, true, first, last, factors)
                                           : build<true>(p, a, request != values_alone, first, last, factors);
    if (row != 0) leave_empty(row, last, p.ic);
    *info = row;
}

// Hands the markers of a product to act: those of the caller, or memory.
template <class Act> void with_marks(Int n, Int request, Int* work, Int* info, const Act& act)
{
    if (work != nullptr) return act(work);
    const Block<Int> marks(request == sizes_alone ? 2 * i64{n} : n);
    if (marks.data() == nullptr) *info = -1;
    else act(marks.data());
}

template <class T>
void by_rows(const Int* first, const Int* last, const Int*, const Int* n, const Int* request, const Int* start,
             const T* a, const Int* ja, const Int* ia, const T* b, const Int* jb, const Int* ib, T* c, Int* jc, Int* ic,
             const Int* nzmax, Int* work, Int* info)
{
    a -= base, ja -= base, ia -= base;
    with_marks(*n, *request, work, info, [&](Int* marks) {
        const auto row = [=](Int i, const auto& act) ORV_INLINE_LAMBDA {
            for (Int p = ia[i]; p < ia[i + 1]; ++p)
                if (!act(p, ja[p])) return false;
            return true;
        };
        multiply(*first, *last, *n, *request, *start, a,
                 product(b, jb, ib, c, jc, ic, *request == values_alone ? no_limit : *nzmax), marks, info, row);
    });
}

template <class T>
void by_columns(const Int* first, const Int* last, const Int* m, const Int* n, const Int* request, const Int* start,
                const T* a, const Int* ja, const Int* ia, const T* b, const Int* jb, const Int* ib, T* c, Int* jc,
                Int* ic, const Int* nzmax, Int* work, Int* info)
{
    const Columns columns(*first, *last, *m, ja, ia);
    if (!columns.complete()) return void(*info = -1);
    with_marks(*n, *request, work, info, [&](Int* marks) {
        const auto column = [&](Int i, const auto& act) ORV_INLINE_LAMBDA { return columns.all(i, act); };
        multiply(*first, *last, *n, *request, *start, a - base,
                 product(b, jb, ib, c, jc, ic, *request == values_alone ? no_limit : *nzmax), marks, info, column);
    });
}

constexpr Int everything = 0;

// request 2 of A'*B is request 0 without a limit: nothing else could have made the pointers.
Int room_for(Int request, Int nzmax) { return request == values_alone ? std::numeric_limits<Int>::max() : nzmax; }

template <class T>
void by_blocks(const Int* request, const Int* m, const Int* n, const Int* k, const Int* block, const T* a,
               const Int* ja, const Int* ia, const T* b, const Int* jb, const Int* ib, T* c, Int* jc, Int* ic,
               const Int* nzmax, Int* info)
{
    if ((*request & 1) != 0) return;
    const Block<Int> marks(*k);
    if (marks.data() == nullptr) return void(*info = -1);
    const Int room = room_for(*request, *nzmax);
    const i64 step = *block < 1 ? max(1, *n) : *block;
    *info = 0, ic[0] = base;
    for (i64 from = 1; from <= *n && *info == 0; from += step) {
        const Int first = static_cast<Int>(from), last = static_cast<Int>(min(from + step - 1, *n));
        const Int start = ic[first - base] - base;
        by_columns(&first, &last, m, k, &everything, &start, a, ja, ia, b, jb, ib, c, jc, ic, &room, marks.data(),
                   info);
        if (*info != 0) leave_empty(static_cast<Int>(max(first, *info)), *n, ic - base);
    }
}

template <class T>
void sorted(const Int* request, const Int* m, const Int* n, const Int* k, const Int*, const T* a, const Int* ja,
            const Int* ia, const T* b, const Int* jb, const Int* ib, T* c, Int* jc, Int* ic, const Int* nzmax,
            Int* info)
{
    const Int first = 1, start = 0, room = room_for(*request, *nzmax), what = *request & 1;
    by_columns(&first, n, m, k, &what, &start, a, ja, ia, b, jb, ib, c, jc, ic, &room, nullptr, info);
    if (*info >= 0 && what == everything) sort_rows(0, *n, ic, base, jc, c);
}

// The first column of row i of A'*B behind j, or one behind n; all of A is looked through.
Int column_behind(Int j, Int i, Int m, Int n, const Int* ja, const Int* ia, const Int* jb, const Int* ib)
{
    Int found = n + base;
    for (Int row = base; row < m + base; ++row)
        for (Int p = ia[row]; p < ia[row + 1]; ++p)
            if (ja[p] == i)
                for (Int q = ib[row]; q < ib[row + 1]; ++q)
                    if (jb[q] > j && jb[q] < found) found = jb[q];
    return found;
}

void count(const Int* m, const Int* n, const Int* first, const Int* last, const Int* ja, const Int* ia, const Int* jb,
           const Int* ib, Int* ic)
{
    const Columns columns(*first, *last, *m, ja, ia);
    const Block<Int> marks(*n);
    ja -= base, ia -= base, jb -= base, ib -= base, ic -= base;
    const bool in_memory = columns.complete() && marks.data() != nullptr;
    if (in_memory) clear_counts(marks.data(), *n);
    Int* met = marks.data() - base; // last row that had the column
    for (Int i = *first; i <= *last; ++i) {
        Int found = 0;
        if (in_memory)
            columns.all(i, [&](Int, Int row) {
                for (Int q = ib[row]; q < ib[row + 1]; ++q) found += met[jb[q]] != i, met[jb[q]] = i;
                return true;
            });
        else
            for (Int j = 0; (j = column_behind(j, i, *m, *n, ja, ia, jb, ib)) <= *n;) ++found;
        ic[i] = found;
    }
}
template <class T> constexpr auto& count_of = count; // the same for all types

} // namespace

SPBLAS_SDCZ(18, , mcsr_notr, by_rows)
SPBLAS_SDCZ(18, , mcsr_trans, by_columns)
SPBLAS_SDCZ(9, , mcsr_trnnz, count_of)
SPBLAS_SDCZ(16, , multcsr_tr, by_blocks)
SPBLAS_SDCZ(16, , multcsr_trom, sorted)

} // namespace orv::ORV_SPBLAS
