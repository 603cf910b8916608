// The plain path of triangular solves and products: no work memory, no packing, a division for each element of a solve.
// Side L goes through B column by column, side R adds columns of B to columns. The kernels named by side, uplo and
// transa are this path, too.
#include "blas/level3/triangular.h"
#include "frame/imports.h"

namespace orv::level3 {
namespace {

// Columns of a product are added by the public routine, which may go parallel; those of a solve by our own.
using kernels::blas::Axpy;
template <Task task, class T> constexpr Axpy<T>* axpy = nullptr;
#define AXPY_OF(t, T)                                                                                                  \
    template <> constexpr Axpy<T>* axpy<Task::solve, T> = kernels::blas::BLAS(x##t##axpy);                             \
    template <> constexpr Axpy<T>* axpy<Task::multiply, T> = orv_blas_##t##axpy;
AXPY_OF(s, float)
AXPY_OF(d, double)
AXPY_OF(c, cpx<float>)
AXPY_OF(z, cpx<double>)

template <Task task, class T> void left(const Triangular<T>& x)
{
    const auto a = blas::full_triangle(x.form.half, x.a, x.lda, x.order);
    const blas::Rows all{0, x.order};
    for (i64 j = 0; j < x.others; ++j) blas::block_in_place<task>(x.form, a, all, x.b + j * x.ldb);
}

// x := f(x) for n neighbours.
template <class T, class F> void each(i64 n, T* x, const F& f)
{
    constexpr i64 lanes = vec<T>::lanes;
    i64 i = 0;
    for (; i + lanes <= n; i += lanes) storeu(x + i, f(loadu(x + i)));
    for (; i < n; ++i) store_first<1>(x + i, f(load_first<1>(x + i)));
}

template <Task task, class T> void by_diagonal(i64 n, T d, T* x)
{
    if constexpr (task == Task::solve) each(n, x, [=](vec<T> v) { return blas::quotient<Op::none>(v, d); });
    else each(n, x, [f = factor<T>(d)](vec<T> v) { return f * v; });
}

// Rows of X are columns of B. Row i is changed by those before it in the walk of a solve.
template <Task task, class T> void right(const Triangular<T>& x)
{
    constexpr i64 adjacent = 1;
    const bool lower = x.lower();
    const i64 t_column = x.t_column();
    const auto of_t = [conjugated = x.form.op == Op::conjugate](T t) { return conjugated ? conj(t) : t; };
    for (i64 s = 0; s < x.order; ++s) {
        const Piece p = piece_of(lower, x.order, task == Task::solve ? s : x.order - 1 - s, 1);
        T* const own = x.b + p.from * x.ldb;
        const T diagonal = x.form.unit ? one<T> : of_t(x.a[p.from * (x.lda + 1)]);
        if (task == Task::multiply && !x.form.unit) by_diagonal<task>(x.others, diagonal, own);
        const T* t = x.a + p.from * x.t_row() + p.done_from * t_column;
        const T* other = x.b + p.done_from * x.ldb;
        for (i64 j = 0; j < p.done; ++j, t += t_column, other += x.ldb) {
            const T f = factor_of_rectangles<task, T> * of_t(*t);
            axpy<task, T>(&x.others, &f, other, &adjacent, own, &adjacent);
        }
        if (task == Task::solve && !x.form.unit) by_diagonal<task>(x.others, diagonal, own);
    }
}

} // namespace

template <Task task, class T> void plain(const Triangular<T>& x)
{
    if (x.order <= 0 || x.others <= 0) return;
    if (x.right) right<task>(x);
    else left<task>(x);
}

#define PLAIN(name, T, task)                                                                                           \
    template void plain<Task::task>(const Triangular<T>&);                                                             \
    ORV_EXPORT void BLAS(name##_pst)(const char* side, TRIANGULAR_FLAGS, TRIANGULAR_OPERANDS(T))                       \
    {                                                                                                                  \
        plain<Task::task>(                                                                                             \
            Triangular<T>::of(is_right(*side), form_of_flags<T>(upper, is_n, is_t, diag), *m, *n, a, *lda, b, *ldb));  \
    }
PLAIN(strsm, float, solve)
PLAIN(dtrsm, double, solve)
PLAIN(ctrsm, cpx<float>, solve)
PLAIN(ztrsm, cpx<double>, solve)
PLAIN(strmm, float, multiply)
PLAIN(dtrmm, double, multiply)
PLAIN(ctrmm, cpx<float>, multiply)
PLAIN(ztrmm, cpx<double>, multiply)

// llt: side L, lower, transposed.
#define BY_LETTERS(name, T, task, side, uplo, transa)                                                                  \
    ORV_EXPORT void BLAS(name##_##side##uplo##transa)(const char* diag, TRIANGULAR_OPERANDS(T))                        \
    {                                                                                                                  \
        plain<Task::task>(Triangular<T>::of(is_right(#side[0]), blas::form_of<T>(#uplo[0], #transa[0], *diag), *m, *n, \
                                            a, *lda, b, *ldb));                                                        \
    }
#define BOTH_HALVES(name, T, task, side, transa)                                                                       \
    BY_LETTERS(name, T, task, side, l, transa) BY_LETTERS(name, T, task, side, u, transa)
#define SIDE(name, T, task, side) BOTH_HALVES(name, T, task, side, n) BOTH_HALVES(name, T, task, side, t)
#define COMPLEX_SIDE(name, T, task, side) SIDE(name, T, task, side) BOTH_HALVES(name, T, task, side, c)
#define COMPLEX(name, T, task) COMPLEX_SIDE(name, T, task, l) COMPLEX_SIDE(name, T, task, r)

SIDE(strsm, float, solve, l)
SIDE(strsm, float, solve, r)
SIDE(strmm, float, multiply, l)
SIDE(strmm, float, multiply, r)
SIDE(dtrmm, double, multiply, r)
COMPLEX(ctrsm, cpx<float>, solve)
COMPLEX(ztrsm, cpx<double>, solve)
COMPLEX(ctrmm, cpx<float>, multiply)
COMPLEX(ztrmm, cpx<double>, multiply)

} // namespace orv::level3
