// Products of a matrix in compressed rows with one vector, as loops over rows. y has been scaled where rows add to
// other elements than their own.
#pragma once

#include "spblas/csr.h"

namespace orv::ORV_SPBLAS {

// What becomes of a row's sum where nothing else adds to its element.
template <class T> struct Close {
    T alpha, beta;
    bool reads = beta != zero<T>;
    ORV_INLINE void operator()(T sum, T* y) const { *y = reads ? beta * *y + alpha * sum : alpha * sum; }
};

// Rows as they stand: y[i] := alpha*sum + beta*y[i].
template <class T>
[[gnu::noinline]] void multiply_rows(const Options& o, Int i, Int end, Csr<T> a, Close<T> close, const T* x, T* y)
{
    const bool conjugates = o.conjugate_direct;
    for (; i < end; ++i) {
        const Entries<T> row = a.row(i);
        close(row.n >= long_row ? long_dot(row.val, row.col, row.n, x, conjugates) : plain_dot(row, x, conjugates),
              y + i);
    }
}

// The same for a triangle: the whole row without a branch, and what lies outside the triangle taken off again.
template <class T>
[[gnu::noinline]] void multiply_triangle(const Options& o, Int i, Int end, const Csr<T>& a, const Close<T>& close,
                                         const T* x, T* y)
{
    for (; i < end; ++i) {
        const Cut cut = a.cut(o, i);
        const Entries<T> row = a.row(i);
        T sum = dot(row.val, row.col, row.n, x, o.conjugate_direct);
        const Entries<T> outside = o.lower ? a.entries(cut.to(o), cut.end) : a.entries(cut.begin, cut.from(o));
        if (outside.n > 0) sum -= dot(outside.val, outside.col, outside.n, x, o.conjugate_direct);
        if (o.unit) sum += x[i];
        close(sum, y + i);
    }
}

// Rows as columns: y[j] += (alpha*x[i])*a.
template <class T>
[[gnu::noinline]] void scatter_rows(const Options& o, Int i, Int end, const Csr<T>& a, T alpha, const T* x, T* y)
{
    for (; i < end; ++i) {
        Int from = a.begin[i], to = a.end[i];
        if (o.triangle()) {
            const Cut cut = a.cut(o, i);
            from = cut.from(o), to = cut.to(o);
        }
        const T f = alpha * x[i];
        const Multiple<T> multiple(f, o.conjugate_mirrored);
        for (; from < to; ++from) multiple.add(a.val[from], y + a.col[from]);
        if (o.unit) y[i] += f;
    }
}

// Rows of a triangle that stands for both: y[j] += alpha*x[i]*a, y[i] += alpha*(sum of a*x[j]).
template <class T>
[[gnu::noinline]] void multiply_both(const Options& o, Int i, Int end, const Csr<T>& a, T alpha, const T* x, T* y)
{
    constexpr int partial = is_complex<T> ? 4 : 8; // a complex one has two parts
    const T mirrored_alpha = negate_if(o.negate_mirrored, alpha);
    for (; i < end; ++i) {
        const Cut cut = a.cut(o, i);
        const Entries<T> row = a.entries(cut.beside_from(o), cut.beside_to(o));
        const Multiple<T> multiple(mirrored_alpha * x[i], o.conjugate_mirrored);
        One<T> sum[partial]{};
        const auto add = [&](One<T>& to, i64 e) ORV_INLINE_LAMBDA {
            const Int j = row.col[e];
            to.add(row.val + e, x + j);
            multiple.add(row.val[e], y + j);
        };
        i64 e = 0;
        if (row.n >= partial) {
            for (; e + partial <= row.n; e += partial)
                repeat<partial>([&](auto s) ORV_INLINE_LAMBDA { add(sum[s], e + s); });
            add_up<partial>(sum);
            sum[1] = One<T>{};
        }
        for (; e + 2 <= row.n; e += 2) add(sum[0], e), add(sum[1], e + 1);
        if (e < row.n) add(sum[0], e);
        sum[0] += sum[1];
        if (o.diagonal) add_rest(sum[0], a.entries(cut.diagonal, cut.behind), x);
        T dot = negate_if(o.negate_direct, sum[0].value(o.conjugate_direct));
        if (o.unit) dot += x[i];
        y[i] += alpha * dot;
    }
}

// y[i] += (alpha*a)*x[i] with the entry on the diagonal, if there is one; of ones the matrix is not read.
template <class T>
[[gnu::noinline]] void multiply_diagonal(const Options& o, Int i, Int end, const Csr<T>& a, T alpha, const T* x, T* y)
{
    for (; i < end; ++i) {
        const Cut cut = a.cut(o, i);
        if (cut.diagonal < cut.behind) y[i] += alpha * conjugate_if(o.conjugate_diagonal(), a.val[cut.diagonal]) * x[i];
    }
}

// Whether rows write their own elements only. All others add to a y that has been scaled as a whole.
constexpr bool keeps_to_its_rows(const Options& o) { return o.direct && !o.mirrored && !o.diagonal_only(); }

// One vector, rows i to end - 1, everything numbered as the columns are.
template <class T>
void multiply(const Options& o, Int i, Int end, const Csr<T>& a, const Close<T>& close, const T* x, T* y)
{
    if (o.diagonal_only()) multiply_diagonal(o, i, end, a, close.alpha, x, y);
    else if (o.direct && o.mirrored) multiply_both(o, i, end, a, close.alpha, x, y);
    else if (o.mirrored) scatter_rows(o, i, end, a, close.alpha, x, y);
    else if (o.triangle()) multiply_triangle(o, i, end, a, close, x, y);
    else multiply_rows(o, i, end, a, close, x, y);
}

} // namespace orv::ORV_SPBLAS
