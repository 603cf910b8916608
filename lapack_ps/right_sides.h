// Right-hand sides of a tridiagonal system, several columns side by side: recurrences go down the rows, where each step
// waits for the one before, so the columns of a group keep the processor busy meanwhile.
#pragma once

#include "lapack_ps/lanes.h"
#include "lapack_ps/scalar.h"

namespace orv::lapack {

// What op(A) is made of: elements of A, or for its conjugate transpose their conjugates.
enum class Transposition { none, plain, conjugate };
template <Transposition op, class T> ORV_INLINE T coefficient(const T* x, i64 i)
{
    return op == Transposition::conjugate ? conj(x[i]) : x[i];
}

// Element i of each column of a group.
template <class T, int columns> struct Row {
    using V = std::conditional_t<columns == 1, T, vec<T>>;
    static constexpr int count = columns / lanes_of<V>::count;
    V v[count];
};

template <class T, int columns, class F> ORV_INLINE Row<T, columns> each(F f)
{
    Row<T, columns> result;
#pragma GCC unroll 8
    for (int k = 0; k < result.count; ++k) result.v[k] = f(k);
    return result;
}

// x - f*y, f*x, x/f; f may be real where the elements are complex. Rows of several complex numbers are never divided.
template <class T, int n> ORV_INLINE Row<T, n> minus_product(Row<T, n> x, T f, Row<T, n> y)
{
    return each<T, n>([&](int k) ORV_INLINE_LAMBDA { return x.v[k] - product(f, y.v[k]); });
}
template <class T, int n, class A> ORV_INLINE Row<T, n> operator*(A f, Row<T, n> x)
{
    return each<T, n>([&](int k) ORV_INLINE_LAMBDA {
        if constexpr (std::is_same_v<A, T>) return product(f, x.v[k]);
        else return scaled(x.v[k], f);
    });
}
template <class T, int n, class A> ORV_INLINE Row<T, n> operator/(Row<T, n> x, A f)
{
    return each<T, n>([&](int k) ORV_INLINE_LAMBDA {
        if constexpr (n == 1) return quotient(x.v[k], f);
        else return x.v[k] / splat(f);
    });
}
template <class T, int n> ORV_INLINE Row<T, n> operator-(Row<T, n> x, Row<T, n> y)
{
    return each<T, n>([&](int k) ORV_INLINE_LAMBDA { return x.v[k] - y.v[k]; });
}

// A group of neighbouring columns of B.
template <class T, int columns> struct Group {
    using R = Row<T, columns>;
    static constexpr int step = lanes_of<typename R::V>::count;
    T* b;
    i64 ldb;

    ORV_INLINE R operator[](i64 i) const
    {
        return each<T, columns>(
            [&](int k) ORV_INLINE_LAMBDA { return get<typename R::V, false>(b + i + k * step * ldb, ldb); });
    }
    ORV_INLINE void set(i64 i, R row) const
    {
#pragma GCC unroll 8
        for (int k = 0; k < row.count; ++k) put<false>(b + i + k * step * ldb, ldb, row.v[k]);
    }
};

// f(group) for all columns, in groups of four registers at most, of four columns, and singly. A group is whole
// registers.
template <class T, class F> void in_groups(i64 columns, T* b, i64 ldb, const F& f)
{
    constexpr int widest = sizeof(T) < 16 ? 8 : 4;
    i64 j = 0;
    for (; j + widest <= columns; j += widest) f(Group<T, widest>{b + j * ldb, ldb});
    static_assert(widest % vec<T>::lanes == 0);
    if constexpr (widest > 4 && 4 % vec<T>::lanes == 0)
        for (; j + 4 <= columns; j += 4) f(Group<T, 4>{b + j * ldb, ldb});
    for (; j < columns; ++j) f(Group<T, 1>{b + j * ldb, ldb});
}

// Rows first .. first+rows of a group go through an elimination with row exchanges. Step i, with f = factor(i):
//
//   not exchanged(i)   b(i+1) := b(i+1) - f*b(i)
//   exchanged(i)       b(i), b(i+1) := b(i+1), b(i) - f*b(i+1)
template <class T, int columns, class Factor, class Exchanged>
ORV_INLINE void eliminate(const Group<T, columns>& b, i64 first, i64 rows, const Factor& factor,
                          const Exchanged& exchanged)
{
    auto current = b[first];
    for (i64 i = first; i < first + rows; ++i) {
        const auto next = b[i + 1];
        if (exchanged(i)) {
            b.set(i, next);
            current = minus_product(current, factor(i), next);
        } else {
            b.set(i, current);
            current = minus_product(next, factor(i), current);
        }
    }
    b.set(first + rows, current);
}

// b := U^-1 * b with n >= 1 rows, U having the superdiagonals u1 and u2:
//
//   b(i) := ((b(i) - u1(i)*b(i+1)) - u2(i)*b(i+2)) / d(i), upwards; over_pivot(row, i) divides.
template <class T, int columns, class OverPivot>
ORV_INLINE void back_substitute(const Group<T, columns>& b, i64 n, const T* u1, const T* u2,
                                const OverPivot& over_pivot)
{
    auto below = over_pivot(b[n - 1], n - 1);
    b.set(n - 1, below);
    if (n == 1) return;
    auto x = over_pivot(minus_product(b[n - 2], u1[n - 2], below), n - 2);
    b.set(n - 2, x);
    for (i64 i = n - 3; i >= 0; --i) {
        const auto sum = minus_product(minus_product(b[i], u1[i], x), u2[i], below);
        below = x;
        x = over_pivot(sum, i);
        b.set(i, x);
    }
}

} // namespace orv::lapack
