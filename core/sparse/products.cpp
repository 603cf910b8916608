// Products: arguments checked, dense operands turned where they have to be, work shared among threads.
#include "core/sparse/calls.h"
#include "core/sparse/formats.h"

namespace orv::core::sparse {
namespace {

// Rows cut among threads, if the format can; X and Y are vectors or dense.
template <class A, class T, class X, class Y>
bool multiply_own_rows(const A& a, double work, T alpha, const X& x, T beta, const Y& y)
{
    if constexpr (requires { a.multiply_rows(0, 1, alpha, x, beta, y); }) {
        if (!a.writes_own_rows()) return false;
        const int threads = threads_for(work, grain<T>);
        remember_threads(threads);
        parallel(threads, [&](int index, int count) { a.multiply_rows(index, count, alpha, x, beta, y); });
        return true;
    }
    return false;
}

// y := beta*y + alpha*op(A)*x by parts of the entries. The first one adds to y itself, each other one to a vector of
// its own, and these are added to y in their order.
template <class T, class A> orv_status add_parts(const A& a, T alpha, const T* x, T beta, const Dense<T>& y)
{
    auto* const add_up = Kernels<T, i64>::split_par.get();
    if (add_up == nullptr) return last_status();
    const i64 n = y.length, stride = round_up(n, 64);
    const i64 most = a.divides() ? 1 + a.work() / (2 * n) : 1; // each has a vector to clear, to fill, and to add
    int threads = threads_for(static_cast<double>(a.work()), grain<T>, most), parts = 1;
    const Block<T> others(stride * (threads - 1));
    if (others.get() == nullptr) threads = 1;
    parallel(threads, [&](int index, int count) {
        T* const own = index == 0 ? y.at : others.get() + stride * (index - 1);
        const T kept = index == 0 ? beta : zero<T>;
        if constexpr (requires { a.scale_and_add(index, count, alpha, x, kept, own); }) {
            a.scale_and_add(index, count, alpha, x, kept, own);
        } else {
            scale(Dense<T>{own, 1, n, n, false}, kept);
            a.add(index, count, alpha, x, own);
        }
        if (index == 0) parts = count;
    });
    remember_threads(parts);
    const i64 slices = parts;
    if (parts > 1)
        parallel(parts, [&](int index, int count) {
            const i64 first = 1 + n * index / count, last = n * (index + 1) / count;
            add_up(&first, &last, &slices, &stride, others.get(), y.at);
        });
    return ORV_OK;
}

// Nothing but y := beta*y is to be done.
template <class T> bool is_trivial(const orv_sparse& a, T alpha)
{
    return a.rows == 0 || a.cols == 0 || alpha == zero<T>;
}

template <class T>
orv_status mv(const Call& call, char trans, T alpha, const orv_sparse* record, const T* x, T beta, T* y)
{
    if (const orv_status bad = refuse(call, trans, record)) return bad;
    const i64 rows = fold(trans) == 'N' ? record->rows : record->cols;
    const Dense<T> result{y, 1, rows, rows, false};
    if (is_trivial(*record, alpha)) return scale(result, beta);
    return with_format<T>(*record, trans, [&](auto& a, bool negative) {
        if (!a.find(Form::mv)) return last_status();
        const T factor = negative ? -alpha : alpha;
        if (multiply_own_rows(a, static_cast<double>(a.work()), factor, x, beta, y)) return orv_status{ORV_OK};
        orv_status status = add_parts(a, factor, x, beta, result);
        if (is_unit(*record) && !a.adds_ones() && status == ORV_OK)
            status = add(factor, Dense<const T>{x, 1, rows, rows, false}, result);
        return status;
    });
}

// Dense operands as the kernels take them.
template <class T, class A>
void multiply(const orv_sparse& record, const A& a, T alpha, const Dense<const T>& x, T beta, const Dense<T>& y)
{
    const double work = static_cast<double>(a.work()) * static_cast<double>(y.columns());
    if (multiply_own_rows(a, work, alpha, x, beta, y)) return;
    each_share_of_columns(static_cast<double>(a.work()), y, [&](i64 from, i64 columns) {
        const auto x_part = x.part(from, columns);
        const auto y_part = y.part(from, columns);
        scale(y_part, beta);
        a.add(alpha, x_part, y_part);
        if (is_unit(record) && !a.adds_ones()) core::sparse::add(alpha, x_part, y_part);
    });
}

// The same for operands in the other order, some columns at a time.
template <class T, class A>
orv_status multiply_turned(const orv_sparse& record, const A& a, T alpha, const Dense<const T>& x, T beta,
                           const Dense<T>& y, i64 rows, i64 cols)
{
    const i64 n = y.columns(), width = min(n, turned_columns);
    const Block<T> work((rows + cols) * width);
    if (work.get() == nullptr)
        return fail(ORV_NO_MEMORY, "no memory is left for %lld columns", static_cast<long long>(width));
    orv_status status = ORV_OK;
    for (i64 j = 0; j < n && status == ORV_OK; j += width) {
        const i64 columns = min(width, n - j);
        const auto x_turned = laid_out(work.get(), cols, columns, a.by_rows());
        const auto y_turned = laid_out(work.get() + cols * width, rows, columns, a.by_rows());
        status = turn(x.part(j, columns), x_turned);
        if (beta != zero<T> && status == ORV_OK) status = turn(read(y.part(j, columns)), y_turned);
        if (status != ORV_OK) break;
        multiply(record, a, alpha, read(x_turned), beta, y_turned);
        status = turn(read(y_turned), y.part(j, columns));
    }
    return status;
}

template <class T>
orv_status mm(const Call& call, char order, char trans, T alpha, const orv_sparse* record, i64 n, const T* x, i64 ldx,
              T beta, T* y, i64 ldy)
{
    if (const orv_status bad = refuse_order(call, order)) return bad;
    if (const orv_status bad = refuse(call, trans, record)) return bad;
    if (const orv_status bad = refuse_columns(call, *record, n)) return bad;
    const bool as_stored = fold(trans) == 'N', by_rows = fold(order) == 'R';
    const i64 rows = as_stored ? record->rows : record->cols, cols = as_stored ? record->cols : record->rows;
    if (const orv_status bad = refuse_dense(call, order, *record, cols, n, ldx, 7)) return bad;
    if (const orv_status bad = refuse_dense(call, order, *record, rows, n, ldy, 10)) return bad;
    const auto from = Dense<const T>::of(x, cols, n, ldx, by_rows);
    const auto to = Dense<T>::of(y, rows, n, ldy, by_rows);
    if (n == 0) return ORV_OK;
    if (is_trivial(*record, alpha)) return scale(to, beta);
    return with_format<T>(*record, trans, [&](auto& a, bool negative) {
        if (!a.find(Form::mm)) return last_status();
        const T factor = negative ? -alpha : alpha;
        if (a.by_rows() != by_rows) return multiply_turned(*record, a, factor, from, beta, to, rows, cols);
        multiply(*record, a, factor, from, beta, to);
        return orv_status{ORV_OK};
    });
}

} // namespace
} // namespace orv::core::sparse

using namespace orv;
using namespace orv::core::sparse;

#define ORV_SPARSE_PRODUCTS(t, T)                                                                                      \
    orv_status orv_sparse_##t##mv(char trans, T alpha, const orv_sparse* a, const T* x, T beta, T* y)                  \
    {                                                                                                                  \
        return mv<T>({"orv_sparse_" #t "mv", *#t, false, 1, 3}, trans, alpha, a, x, beta, y);                          \
    }                                                                                                                  \
    orv_status orv_sparse_##t##mm(char order, char trans, T alpha, const orv_sparse* a, int64_t n, const T* x,         \
                                  int64_t ldx, T beta, T* y, int64_t ldy)                                              \
    {                                                                                                                  \
        return mm<T>({"orv_sparse_" #t "mm", *#t, false, 2, 4}, order, trans, alpha, a, n, x, ldx, beta, y, ldy);      \
    }

ORV_SPARSE_PRODUCTS(s, float)
ORV_SPARSE_PRODUCTS(d, double)
ORV_SPARSE_PRODUCTS(c, cpx<float>)
ORV_SPARSE_PRODUCTS(z, cpx<double>)
