// y := op(A)^-1*y in place, A in coordinates: triangular without alpha, diagonal as (alpha/a)*y. sv one vector, sm
// columns first to last of a dense matrix, counted from 1.
//
// A triangle is turned into lists of entries by row first, once a call. Of several entries on the diagonal the last
// counts, duplicates beside it add up. A row without a diagonal is divided by the first of all entries, val[0]; nothing
// tests it. An empty list of entries leaves y alone. Rows of a diagonal matrix without an entry are left alone.
//
// Memory: three arrays, and one more to fill them. Refused, each row looks through all entries, with the same result
// but for the order of the sums.
//
//   scoofill_0coo2csr_data_<triangle><diagonal>(m, rowind, colind, nnz, diag, count, list, flag)
//   scoofill_coo2csr_data_...                   the same for indices from 1
//
// give these lists, with numbers of entries from 0: list has the entries beside the diagonal, row after row, in their
// order; those of row i end before list[count[i]] and begin where the row before ends. diag[i] is the last entry on the
// diagonal, 0 if there is none or ones stand in their place. flag := 0, or 1 without memory for a list of nnz.
#include "spblas/coo.h"

#include "spblas/counting.h"
#include "spblas/memory.h"
#include "spblas/quotient.h"

namespace orv::ORV_SPBLAS {
namespace {

// Whether an entry is beside the diagonal, in the triangle.
constexpr bool beside(bool lower, Int row, Int col) { return lower ? row > col : row < col; }

bool fill(bool lower, bool unit, Int base, Int m, const Int* row, const Int* col, Int nnz, Int* diag, Int* count,
          Int* list)
{
    const Block<Int> found(nnz);
    if (found.data() == nullptr) return false;
    for (Int i = 0; i < m; ++i) diag[i] = 0, count[i] = 0;
    Int n = 0;
    for (Int e = 0; e < nnz; ++e) {
        if (row[e] == col[e] && !unit) diag[row[e] - base] = e;
        if (beside(lower, row[e], col[e])) ++count[row[e] - base], found[n++] = e;
    }
    counts_to_places(count, m, 0);
    for (Int k = 0; k < n; ++k) list[count[row[found[k]] - base]++] = found[k];
    return true;
}

template <bool lower, bool unit, int base>
void fill_rows(const Int* m, const Int* rowind, const Int* colind, const Int* nnz, Int* diag, Int* count, Int* list,
               Int* flag)
{
    *flag = fill(lower, unit, base, *m, rowind, colind, *nnz, diag, count, list) ? 0 : 1;
}

// The lists of all rows.
struct Lists {
    const Block<Int> diag, count, list;
    Lists(Int m, Int nnz) : diag(m), count(m), list(nnz) {}
    bool complete() const { return diag.data() != nullptr && count.data() != nullptr && list.data() != nullptr; }
};

template <class T> struct Problem {
    Options o;
    Int m, nnz;
    T alpha;
    Coo<T> a; // indices from o.base, as rows and the elements of columns
};

// Columns of the solution, numbered as the matrix numbers them.
template <class T> struct Columns {
    T* y;
    i64 next, step, count;
};

template <class T> ORV_INLINE T closed(const Problem<T>& p, T value, Int diagonal)
{
    return p.o.unit ? value : divide(value, conjugate_if(p.o.conjugate_direct, p.a.val[diagonal]));
}
// The rows in the order in which they can be solved.
template <class T> ORV_INLINE Int row_of_step(const Problem<T>& p, Int step)
{
    return p.o.lower ? step : p.m - 1 - step;
}

template <class T> void solve_by_lists(const Problem<T>& p, const Lists& rows, const Columns<T>& columns)
{
    for (i64 c = 0; c < columns.count; ++c) {
        T* y = columns.y + c * columns.next;
        for (Int step = 0; step < p.m; ++step) {
            const Int i = row_of_step(p, step), end = rows.count[i];
            One<T> sum[4]{};
            const auto add = [&](int s, Int at) ORV_INLINE_LAMBDA {
                const Int e = rows.list[at];
                sum[s].add(p.a.val + e, y + p.a.col[e] * columns.step);
            };
            Int at = i > 0 ? rows.count[i - 1] : 0;
            for (; at + 4 <= end; at += 4) repeat<4>([&](auto s) ORV_INLINE_LAMBDA { add(s, at + s); });
            add_up<4>(sum);
            for (; at < end; ++at) add(0, at);
            T& element = y[(i + p.o.base) * columns.step];
            element = closed(p, element - sum[0].value(p.o.conjugate_direct), rows.diag[i]);
        }
    }
}

template <class T> void solve_by_search(const Problem<T>& p, const Columns<T>& columns)
{
    for (i64 c = 0; c < columns.count; ++c) {
        T* y = columns.y + c * columns.next;
        for (Int step = 0; step < p.m; ++step) {
            const Int i = row_of_step(p, step) + p.o.base;
            One<T> sum{};
            Int diagonal = 0;
            for (Int e = 0; e < p.nnz; ++e) {
                if (p.a.row[e] != i) continue;
                if (p.a.col[e] == i) diagonal = e;
                if (beside(p.o.lower, i, p.a.col[e])) sum.add(p.a.val + e, y + p.a.col[e] * columns.step);
            }
            T& element = y[i * columns.step];
            element = closed(p, element - sum.value(p.o.conjugate_direct), diagonal);
        }
    }
}

// last: room for the last entry on the diagonal of each row, from 1; without it every row is looked for.
template <class T> void solve_diagonal(const Problem<T>& p, Int* last, const Columns<T>& columns)
{
    const auto is_on = [&](Int e, Int i) { return p.a.row[e] == i && p.a.col[e] == i; };
    if (last != nullptr) {
        for (Int i = 0; i < p.m; ++i) last[i] = 0;
        for (Int e = 0; e < p.nnz; ++e)
            if (p.a.row[e] == p.a.col[e]) last[p.a.row[e] - p.o.base] = e + 1;
    }
    for (Int i = 0; i < p.m; ++i) {
        Int e = last != nullptr ? last[i] : p.nnz;
        if (last == nullptr)
            while (e > 0 && !is_on(e - 1, i + p.o.base)) --e;
        if (e == 0) continue;
        const T by = divide(p.alpha, conjugate_if(p.o.conjugate_direct, p.a.val[e - 1]));
        for (i64 c = 0; c < columns.count; ++c) {
            T& element = columns.y[c * columns.next + (i + p.o.base) * columns.step];
            element = by * element;
        }
    }
}

template <class T> [[gnu::noinline]] void solve(const Problem<T>& p, const Columns<T>& columns)
{
    if (p.m < 1 || p.nnz < 1 || columns.count < 1) return;
    if (p.o.diagonal_only()) {
        const Block<Int> last(p.m);
        return solve_diagonal(p, last.data(), columns);
    }
    const Lists rows(p.m, p.nnz);
    if (rows.complete() && fill(p.o.lower, p.o.unit, p.o.base, p.m, p.a.row, p.a.col, p.nnz, rows.diag.data(),
                                rows.count.data(), rows.list.data()))
        solve_by_lists(p, rows, columns);
    else solve_by_search(p, columns);
}

template <class T>
ORV_INLINE void coo_sv_seq_body(const Options& o, const Int* m, const T* alpha, const T* val, const Int* rowind,
                                const Int* colind, const Int* nnz, T* y)
{
    solve(Problem<T>{o, *m, *nnz, *alpha, {val, rowind, colind}}, Columns<T>{y - o.base, 0, 1, 1});
}

template <class T>
ORV_INLINE void coo_sm_par_body(const Options& o, const Int* first, const Int* last, const Int* m, const Int*,
                                const T* alpha, const T* val, const Int* rowind, const Int* colind, const Int* nnz,
                                T* y, const Int* ldy)
{
    const i64 next = o.by_rows ? 1 : *ldy, step = o.by_rows ? *ldy : 1, from = *first - 1;
    solve(Problem<T>{o, *m, *nnz, *alpha, {val, rowind, colind}},
          Columns<T>{y + from * next - o.base * step, next, step, *last - from});
}

} // namespace

ORV_SPBLAS_coo_sv_seq(SPBLAS_MEMBER) ORV_SPBLAS_coo_sm_par(SPBLAS_MEMBER)

    SPBLAS_ROUTINE(8, scoofill_0coo2csr_data_ln, fill_rows<true, false, 0>)
        SPBLAS_ROUTINE(8, scoofill_0coo2csr_data_lu, fill_rows<true, true, 0>)
            SPBLAS_ROUTINE(8, scoofill_0coo2csr_data_un, fill_rows<false, false, 0>)
                SPBLAS_ROUTINE(8, scoofill_0coo2csr_data_uu, fill_rows<false, true, 0>)
                    SPBLAS_ROUTINE(8, scoofill_coo2csr_data_ln, fill_rows<true, false, 1>)
                        SPBLAS_ROUTINE(8, scoofill_coo2csr_data_lu, fill_rows<true, true, 1>)
                            SPBLAS_ROUTINE(8, scoofill_coo2csr_data_un, fill_rows<false, false, 1>)
                                SPBLAS_ROUTINE(8, scoofill_coo2csr_data_uu, fill_rows<false, true, 1>)

} // namespace orv::ORV_SPBLAS
