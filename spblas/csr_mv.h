// Products of a matrix in compressed rows with one vector, as loops over rows. Where rows add to other elements
// than their own y has been scaled, unless they act twice.
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
template <bool large, class T>
[[gnu::noinline]] void multiply_rows(const Options& o, Int i, Int end, Csr<T> a, Close<T> close, const T* x, T* y)
{
    const bool conjugates = o.conjugate_direct;
    for (; i < end; ++i) {
        const Entries<T> row = a.row(i);
        if constexpr (large) ask_ahead<1>(row);
        close(row.n >= long_row ? long_dot(row.val, row.col, row.n, x, conjugates) : plain_dot(row, x, conjugates),
              y + i);
    }
}

// The same for a triangle: the whole row without a branch, and what lies outside the triangle taken off again.
template <bool large, class T>
[[gnu::noinline]] void multiply_triangle(const Options& o, Int i, Int end, const Csr<T>& a, const Close<T>& close,
                                         const T* x, T* y)
{
    for (; i < end; ++i) {
        const Cut cut = a.cut(o, i);
        const Entries<T> row = a.row(i);
        if constexpr (large) ask_ahead<1>(row);
        T sum = dot(row.val, row.col, row.n, x, o.conjugate_direct);
        const Entries<T> outside = o.lower ? a.entries(cut.to(o), cut.end) : a.entries(cut.begin, cut.from(o));
        if (outside.n > 0) sum -= dot(outside.val, outside.col, outside.n, x, o.conjugate_direct);
        if (o.unit) sum += x[i];
        close(sum, y + i);
    }
}

// Rows as columns: y[j] += (alpha*x[i])*a.
template <bool large, class T>
[[gnu::noinline]] void scatter_rows(const Options& o, Int i, Int end, const Csr<T>& a, T alpha, const T* x, T* y)
{
    for (; i < end; ++i) {
        Int from = a.begin[i], to = a.end[i];
        if constexpr (large) ask_ahead<1>(a.row(i));
        if (o.triangle()) {
            const Cut cut = a.cut(o, i);
            from = cut.from(o), to = cut.to(o);
        }
        const T f = alpha * x[i];
        const Multiple<T> multiple(f, o.conjugate_mirrored);
#pragma GCC unroll 4
        for (; from < to; ++from) multiple.add(a.val[from], y + a.col[from]);
        if (o.unit) y[i] += f;
    }
}

// Rows of a triangle that stands for both: y[j] += alpha*x[i]*a, y[i] += alpha*(sum of a*x[j]). y, from o.base to
// y_end - 1, is scaled element by element just before rows reach it, so that it passes through the caches once. Where
// the loop over a row lies in a line of the instruction cache is a tenth of its speed, so that is laid down.
template <bool lower, bool stored, bool large, class T>
[[gnu::noinline, gnu::aligned(64)]] void multiply_both(Options o, i64 i, i64 end, Csr<T> a, Close<T> close, const T* x,
                                                       T* y, i64 y_end)
{
    constexpr int partial = is_complex<T> ? 4 : 8; // a complex one has two parts
    // Nothing adds to an element before its own row does: it is scaled on the way. (1*y of complex numbers is not y.)
    constexpr bool rows_come_first = lower && !is_complex<T>;
    const T direct = negate_if(o.negate_direct, close.alpha), mirrored = negate_if(o.negate_mirrored, close.alpha);
    const auto scaled = [&](i64 j) ORV_INLINE_LAMBDA { return close.reads ? close.beta * y[j] : zero<T>; };
    i64 reached = close.beta == one<T> ? y_end : o.base;
    const auto reach = [&](i64 to) ORV_INLINE_LAMBDA {
        for (; reached < to; ++reached) y[reached] = scaled(reached);
    };
    reach(i);
    for (; i < end; ++i) {
        if constexpr (large) ask_ahead<1>(a.row(i));
        const Cut cut = a.template cut<lower>(i);
        i64 p = lower ? cut.begin : cut.behind;
        const i64 to = lower ? cut.diagonal : cut.end;
        if constexpr (!rows_come_first) reach(1 + (!lower && p < to ? i64{a.col[to - 1]} : i));
        const T xi = x[i], start = rows_come_first ? scaled(i) : zero<T>;
        const Multiple<T> multiple(mirrored * xi, o.conjugate_mirrored);
        const auto add = [&](One<T>& sum, i64 e) ORV_INLINE_LAMBDA {
            const i64 j = a.col[e];
            sum.add(a.val + e, x + j);
            multiple.add(a.val[e], y + j);
        };
        One<T> sum{};
        if (to - p >= partial) {
            One<T> sums[partial]{};
            for (; to - p >= partial; p += partial)
                repeat<partial>([&](auto s) ORV_INLINE_LAMBDA { add(sums[s], p + s); });
            add_up<partial>(sums);
            sum = sums[0];
        }
        for (; p < to; ++p) add(sum, p);
        if (stored && cut.diagonal < cut.behind) [[likely]] {
            i64 e = cut.diagonal;
            do sum.add(a.val + e, &xi);
            while (++e < cut.behind);
        }
        T dot = sum.value(o.conjugate_direct);
        if (!stored && o.unit) dot += xi;
        y[i] = (rows_come_first ? start : y[i]) + direct * dot;
    }
    if (rows_come_first) reached = max(reached, end);
    reach(y_end);
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

// Whether they add to y[i] and to other elements, too.
constexpr bool acts_twice(const Options& o) { return o.direct && o.mirrored && !o.diagonal_only(); }

// One vector, rows i to end - 1, everything numbered as the columns are. What adds to other elements than its own finds
// them scaled, but for rows that act twice: they do it.
template <class T>
void multiply(const Options& o, Int i, Int end, const Csr<T>& a, const Close<T>& close, const T* x, T* y, i64 y_end)
{
    if (o.diagonal_only()) return multiply_diagonal(o, i, end, a, close.alpha, x, y);
    by_size(a, i, end, [&](auto large) ORV_INLINE_LAMBDA {
        const auto both = [&](auto lower, auto stored) ORV_INLINE_LAMBDA {
            multiply_both<lower, stored, large>(o, i64{i}, i64{end}, a, close, x, y, y_end);
        };
        using Yes = std::true_type;
        using No = std::false_type;
        if (acts_twice(o) && o.diagonal) o.lower ? both(Yes(), Yes()) : both(No(), Yes());
        else if (acts_twice(o)) o.lower ? both(Yes(), No()) : both(No(), No());
        else if (o.mirrored) scatter_rows<large>(o, i, end, a, close.alpha, x, y);
        else if (o.triangle()) multiply_triangle<large>(o, i, end, a, close, x, y);
        else multiply_rows<large>(o, i, end, a, close, x, y);
    });
}

} // namespace orv::ORV_SPBLAS
