// C := A + beta*op(B) in compressed rows, for rows first to last of C. All indices and pointers count from 1.
//
//   mcsradd_notr(first, last, sort, m, n, a, ja, ia, beta, b, jb, ib, c, jc, ic, nzmax, info)    op(B) = B
//   mcsradd_tr                                                                                   op(B) = B transposed
//
// A and C are m by n; complex matrices are not conjugated. Rows of A and of B are sorted by column, or are told to be
// sorted where they are: sort & 1 those rows of A, sort & 2 those rows of B. A transposed B may be in any order and is
// left as it is. Entries that cancel stay. ic[first - 1] is 1, wherever the rows are in C. nzmax: room in c and jc; a
// row that it does not hold is told in info, counted from 1: those before it are there, it and those behind it are
// empty.
//
//   mcsradd_gloc(first, last, m, n, ja, ia, jb, ib, ic)     the pointers of mcsradd_tr, of sorted rows of A
#include "spblas/counting.h"
#include "spblas/sort.h"
#include "spblas/vectors.h"

namespace orv::ORV_SPBLAS {
namespace {

constexpr Int base = 1;
constexpr Int sort_a = 1, sort_b = 2;

// Arrays moved so that they are indexed as they count.
template <class T> struct Rows {
    T* val;
    Int* col;
    const Int* start;
    Rows(T* a, Int* ja, const Int* ia) : val(a - base), col(ja - base), start(ia - base) {}
    void sort(Int i) const { sort_entries(col, val, start[i], start[i + 1]); }
};

template <class T>
void add(const Int* first, const Int* last, const Int* sort, const Int*, const Int*, T* a_, Int* ja, const Int* ia,
         const T* beta_, T* b_, Int* jb, const Int* ib, T* c, Int* jc, Int* ic, const Int* nzmax, Int* info)
{
    const Rows<T> a(a_, ja, ia), b(b_, jb, ib);
    const T beta = *beta_;
    const i64 end = i64{*nzmax} + base;
    c -= base, jc -= base, ic -= base;
    *info = 0;
    ic[*first] = base;
    for (Int i = *first; i <= *last; ++i) {
        if ((*sort & sort_a) != 0) a.sort(i);
        if ((*sort & sort_b) != 0) b.sort(i);
        Int next = ic[i], p = a.start[i], q = b.start[i];
        const Int p_end = a.start[i + 1], q_end = b.start[i + 1];
        const auto put = [&](Int j, T value) ORV_INLINE_LAMBDA { jc[next] = j, c[next++] = value; };
        while (p < p_end && q < q_end && next < end) {
            const Int j = a.col[p], k = b.col[q];
            if (j == k) put(j, a.val[p++] + beta * b.val[q++]);
            else if (j < k) put(j, a.val[p++]);
            else put(k, beta * b.val[q++]);
        }
        for (; p < p_end && next < end; ++p) put(a.col[p], a.val[p]);
        for (; q < q_end && next < end; ++q) put(b.col[q], beta * b.val[q]);
        if (p < p_end || q < q_end) {
            *info = i;
            return leave_empty(i, *last, ic);
        }
        ic[i + 1] = next;
    }
}

// The entry of a column in a sorted row, or end.
Int find(const Int* col, Int begin, Int end, Int j)
{
    Int last = end;
    while (begin < last) {
        const Int middle = begin + (last - begin) / 2;
        if (col[middle] < j) begin = middle + 1;
        else last = middle;
    }
    return begin < end && col[begin] == j ? begin : end;
}

// act(i, k, q, p) for every entry q of B that goes to row i and column k of C, by k; p: the entry of A there, or the
// end of A's row. n: rows of B.
template <class Act>
void each_transposed(Int first, Int last, Int n, const Int* ja, const Int* ia, const Int* jb, const Int* ib,
                     const Act& act)
{
    for (Int k = base; k < n + base; ++k)
        for (Int q = ib[k]; q < ib[k + 1]; ++q)
            if (const Int i = jb[q]; i >= first && i <= last) act(i, k, q, find(ja, ia[i], ia[i + 1], k));
}

void place(const Int* first, const Int* last, const Int*, const Int* n, const Int* ja, const Int* ia, const Int* jb,
           const Int* ib, Int* ic)
{
    ja -= base, ia -= base, jb -= base, ib -= base, ic -= base;
    for (Int i = *first; i <= *last; ++i) ic[i + 1] = ia[i + 1] - ia[i];
    each_transposed(*first, *last, *n, ja, ia, jb, ib, [=](Int i, Int, Int, Int p) { ic[i + 1] += p == ia[i + 1]; });
    ic[*first] = base;
    for (Int i = *first; i <= *last; ++i) ic[i + 1] += ic[i];
}
template <class T> constexpr auto& place_of = place; // the same for all types

template <class T>
void add_transposed(const Int* first, const Int* last, const Int* sort, const Int* m, const Int* n, T* a_, Int* ja,
                    const Int* ia, const T* beta_, T* b_, Int* jb, const Int* ib, T* c, Int* jc, Int* ic,
                    const Int* nzmax, Int* info)
{
    const Rows<T> a(a_, ja, ia), b(b_, jb, ib);
    const T beta = *beta_;
    if ((*sort & sort_a) != 0)
        for (Int i = *first; i <= *last; ++i) a.sort(i);
    place(first, last, m, n, ja, ia, jb, ib, ic);

    c -= base, jc -= base, ic -= base;
    Int end = *first; // behind the rows for which there is room
    while (end <= *last && ic[end + 1] - base <= *nzmax) ++end;
    *info = end <= *last ? end : 0;
    leave_empty(end, *last, ic);

    const auto each = [&](const auto& act) {
        each_transposed(*first, end - 1, *n, a.col, a.start, b.col, b.start, act);
    };
    for (Int i = *first; i < end; ++i) {
        const Int length = a.start[i + 1] - a.start[i];
        for (Int p = 0; p < length; ++p) jc[ic[i] + p] = a.col[a.start[i] + p];
        copy(a.val + a.start[i], c + ic[i], length);
    }
    each([&](Int i, Int, Int q, Int p) {
        if (p < a.start[i + 1]) c[ic[i] + (p - a.start[i])] += beta * b.val[q];
    });
    // Behind what A brought, what B has alone.
    for (Int i = *first; i < end; ++i) ic[i] += a.start[i + 1] - a.start[i];
    each([&](Int i, Int k, Int q, Int p) {
        if (p == a.start[i + 1]) jc[ic[i]] = k, c[ic[i]++] = beta * b.val[q];
    });
    places_to_starts(ic + *first, end - *first, base);
    sort_rows(*first - base, end - base, ic + base, base, jc + base, c + base);
}

} // namespace

SPBLAS_SDCZ(17, , mcsradd_notr, add)
SPBLAS_SDCZ(17, , mcsradd_tr, add_transposed)
SPBLAS_SDCZ(9, , mcsradd_gloc, place_of)

} // namespace orv::ORV_SPBLAS
