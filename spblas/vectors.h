// Elements and whole vectors: clearing, scaling, and adding multiples.
#pragma once

#include "spblas/options.h"

namespace orv::ORV_SPBLAS {

// act(0), act(1), ... act(n - 1), each for itself: arrays that only these numbers index are registers.
template <int n, class Act> ORV_INLINE void repeat(const Act& act)
{
    [&]<int... i>(std::integer_sequence<int, i...>) ORV_INLINE_LAMBDA { (act(std::integral_constant<int, i>()), ...); }
    (std::make_integer_sequence<int, n>());
}

// y[0 .. n-1] := 0, not read.
template <class T> void clear(T* y, i64 n)
{
    i64 i = 0;
    for (; i + vec<T>::lanes <= n; i += vec<T>::lanes) storeu(y + i, zeros<T>());
    for (; i < n; ++i) y[i] = zero<T>;
}

template <class T> void copy(const T* x, T* y, i64 n)
{
    i64 i = 0;
    for (; i + vec<T>::lanes <= n; i += vec<T>::lanes) storeu(y + i, loadu(x + i));
    for (; i < n; ++i) y[i] = x[i];
}

// y := beta*y; beta = 0 does not read y.
template <class T> void scale(T* y, i64 n, T beta)
{
    if (beta == zero<T>) return clear(y, n);
    if (beta == one<T>) return;
    const factor<T> by(beta);
    i64 i = 0;
    for (; i + vec<T>::lanes <= n; i += vec<T>::lanes) storeu(y + i, by * loadu(y + i));
    for (; i < n; ++i) y[i] = beta * y[i];
}

// A number that multiplies entries of a matrix, or their conjugates, and adds the products to elements. Signs of the
// entries go over to the number, so conjugation costs nothing.
template <class T> class Multiple {
public:
    explicit Multiple(T f, bool = false) : f_(f) {}
    ORV_INLINE void add(T a, T* y) const { *y += f_ * a; }

private:
    T f_;
};
template <class R> class Multiple<cpx<R>> {
public:
    explicit Multiple(cpx<R> f, bool conjugates = false) : f_(f, conjugates) {}
    ORV_INLINE void add(const cpx<R>& a, cpx<R>* y) const
    {
        store_first<1>(y, load_first<1>(y) + f_ * load_first<1>(&a));
    }

private:
    factor<cpx<R>> f_;
};

// alpha*a, with what the options do to an entry that acts where it stands (direct) or mirrored.
template <class T> constexpr T conjugate_if(bool conjugates, T a)
{
    if constexpr (is_complex<T>) return {a.re, conjugates ? -a.im : a.im};
    else return a;
}
template <class T> constexpr T negate_if(bool negates, T a) { return negates ? -a : a; }

// y := y + f*x for n elements of either, or for rows of dense operands.
template <class T> ORV_INLINE void add_multiple(i64 n, T f, const T* x, T* y)
{
    const factor<T> by(f);
    i64 i = 0;
    for (; i + vec<T>::lanes <= n; i += vec<T>::lanes) storeu(y + i, loadu(y + i) + by * loadu(x + i));
    for (; i < n; ++i) y[i] += f * x[i];
}

} // namespace orv::ORV_SPBLAS
