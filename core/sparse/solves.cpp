// Solves with triangular and diagonal matrices, in place in y. Columns of a dense matrix are shared among threads.
#include "core/sparse/calls.h"
#include "core/sparse/formats.h"

namespace orv::core::sparse {
namespace {

// What has to be there before anything is written. Of a diagonal that costs a look at each row the caller's word is
// taken.
template <class A> orv_status ready(const Call& call, const orv_sparse& record, A& a)
{
    const bool by_search = record.format == ORV_SPARSE_DIA; // of the list of diagonals
    if (by_search) {
        if (const orv_status status = a.prepare_solve()) return status;
    }
    if (!is_unit(record) && (by_search || record.has_diagonal == 0)) {
        const i64 row = a.row_without_diagonal();
        if (row >= 0)
            return fail(ORV_NO_DIAGONAL, "%s: row %lld has no entry on the diagonal (rows count from %d)", call.name,
                        static_cast<long long>(row + record.base), record.base);
    }
    return by_search ? orv_status{ORV_OK} : a.prepare_solve();
}

// y := alpha*op(A)^-1*x; triangles do not look at alpha, and of ones on a diagonal matrix nothing else is left.
template <class T> bool is_copy(const orv_sparse& a, T alpha)
{
    return a.rows == 0 || alpha == zero<T> || (kind_of(a) == 'D' && is_unit(a));
}

template <class T> orv_status sv(const Call& call, char trans, T alpha, const orv_sparse* record, const T* x, T* y)
{
    if (const orv_status bad = refuse(call, trans, record)) return bad;
    const i64 n = record->rows;
    const Dense<const T> from{x, 1, n, n, false};
    const Dense<T> to{y, 1, n, n, false};
    if (is_copy(*record, alpha)) return copy(alpha, from, to);
    return with_format<T>(*record, trans, [&](auto& a, bool) {
        if (!a.find(Form::sv)) return last_status();
        if (const orv_status bad = ready(call, *record, a)) return bad;
        const T factor = a.applies_alpha() ? one<T> : alpha;
        if (const orv_status bad = copy(factor, from, to)) return bad;
        remember_threads(1);
        a.solve(alpha, y);
        return orv_status{ORV_OK};
    });
}

template <class T>
orv_status sm(const Call& call, char order, char trans, T alpha, const orv_sparse* record, i64 n, const T* x, i64 ldx,
              T* y, i64 ldy)
{
    if (const orv_status bad = refuse_order(call, order)) return bad;
    if (const orv_status bad = refuse(call, trans, record)) return bad;
    if (const orv_status bad = refuse_columns(call, *record, n)) return bad;
    const bool by_rows = fold(order) == 'R';
    const i64 rows = record->rows;
    if (const orv_status bad = refuse_dense(call, order, *record, rows, n, ldx, 7)) return bad;
    if (const orv_status bad = refuse_dense(call, order, *record, rows, n, ldy, 9)) return bad;
    const auto from = Dense<const T>::of(x, rows, n, ldx, by_rows);
    const auto to = Dense<T>::of(y, rows, n, ldy, by_rows);
    if (n == 0) return ORV_OK;
    if (is_copy(*record, alpha)) return copy(alpha, from, to);
    return with_format<T>(*record, trans, [&](auto& a, bool) {
        if (!a.find(Form::sm)) return last_status();
        if (const orv_status bad = ready(call, *record, a)) return bad;
        const T factor = a.applies_alpha() ? one<T> : alpha;
        const auto solve = [&](const Dense<T>& part) {
            each_share_of_columns(static_cast<double>(a.work()), part,
                                  [&](i64 first, i64 columns) { a.solve(alpha, part.part(first, columns)); });
        };
        if (a.by_rows() == by_rows) {
            if (const orv_status bad = copy(factor, from, to)) return bad;
            solve(to);
            return orv_status{ORV_OK};
        }
        const i64 width = min(n, turned_columns);
        const Block<T> work(rows * width);
        if (work.get() == nullptr)
            return fail(ORV_NO_MEMORY, "no memory is left for %lld columns", static_cast<long long>(width));
        orv_status status = ORV_OK;
        for (i64 j = 0; j < n && status == ORV_OK; j += width) {
            const auto turned = laid_out(work.get(), rows, min(width, n - j), a.by_rows());
            status = turn(from.part(j, turned.columns()), turned);
            if (status == ORV_OK) status = scale(turned, factor);
            if (status != ORV_OK) break;
            solve(turned);
            status = turn(read(turned), to.part(j, turned.columns()));
        }
        return status;
    });
}

} // namespace
} // namespace orv::core::sparse

using namespace orv;
using namespace orv::core::sparse;

#define ORV_SPARSE_SOLVES(t, T)                                                                                        \
    orv_status orv_sparse_##t##sv(char trans, T alpha, const orv_sparse* a, const T* x, T* y)                          \
    {                                                                                                                  \
        return sv<T>({"orv_sparse_" #t "sv", *#t, true, 1, 3}, trans, alpha, a, x, y);                                 \
    }                                                                                                                  \
    orv_status orv_sparse_##t##sm(char order, char trans, T alpha, const orv_sparse* a, int64_t n, const T* x,         \
                                  int64_t ldx, T* y, int64_t ldy)                                                      \
    {                                                                                                                  \
        return sm<T>({"orv_sparse_" #t "sm", *#t, true, 2, 4}, order, trans, alpha, a, n, x, ldx, y, ldy);             \
    }

ORV_SPARSE_SOLVES(s, float)
ORV_SPARSE_SOLVES(d, double)
ORV_SPARSE_SOLVES(c, cpx<float>)
ORV_SPARSE_SOLVES(z, cpx<double>)
