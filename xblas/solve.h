// Solving with a triangle, one unknown after the other: what trsv and tbsv share.
//
//   x(i) := (alpha*x(i) - t(i,j)*x(j) - t(i,j')*x(j') - ...) / t(i,i)      subtracted one by one
//
// The solved elements that later rows multiply by are kept as precisely as the arithmetic computes them: where that is
// the precision of x, in x itself; else in work memory, 64 bits each or, in extra precision, in heads and tails.
#pragma once

#include "frame/serv.h"
#include "xblas/closing.h"
#include "xblas/pairs.h"

namespace orv::xblas {

// ---- Division -------------------------------------------------------------------------------------------------------

// By a real number. No diagonal is tested for 0: what comes out is infinite or no number.
template <class N, class F> ORV_INLINE auto quotient(N a, F d)
{
    if constexpr (requires { d.high; }) return unnamed(a) / d;
    else if constexpr (requires { d.value; }) return unnamed(a) / Wide<double>{d.value, d.value, 0};
    else return a / d;
}
template <class N, class F> ORV_INLINE cpx<N> quotient(cpx<N> a, F d)
{
    return {N(quotient(a.re, d)), N(quotient(a.im, d))};
}

// By a complex number in plain arithmetic: the larger part of d is divided out first, so that squares neither overflow
// nor vanish (Smith).
template <class R>
requires std::is_arithmetic_v<R> ORV_INLINE cpx<R> quotient(cpx<R> a, cpx<R> d)
{
    if (magnitude(d.re) >= magnitude(d.im)) {
        const R ratio = d.im / d.re, whole = d.re + d.im * ratio;
        return {(a.re + a.im * ratio) / whole, (a.im - a.re * ratio) / whole};
    }
    const R ratio = d.re / d.im, whole = d.re * ratio + d.im;
    return {(a.re * ratio + a.im) / whole, (a.im * ratio - a.re) / whole};
}

// The power of two that brings |a| to the order of 1.
inline double to_order_one(double a)
{
    constexpr i64 smallest = 0x0010000000000000, one_and_one = 0x7fe0000000000000; // exponents of 2^-1022, of 1 twice
    const i64 exponent = __builtin_bit_cast(i64, a) & 0x7ff0000000000000;
    return __builtin_bit_cast(double, max(smallest, one_and_one - max(smallest, exponent)));
}

// By a complex number in extra precision: a*conj(d) / |d|^2, with d brought to the order of 1 before it is squared.
ORV_INLINE double value_of(Wide<double> d) { return d.value; }
ORV_INLINE double value_of(Narrow<double> d) { return d.value; }
ORV_INLINE dd<double> quotient(dd<double> a, dd<double> b)
{
    const double q1 = a.h / b.h;
    const double q2 = (a - b * split(q1)).h / b.h, h = q1 + q2;
    return {h, q2 - (h - q1)};
}
template <class D, class F>
requires std::is_base_of_v<dd<double>, D> ORV_INLINE cpx<D> quotient(cpx<D> a, cpx<F> d)
{
    const double re = magnitude(value_of(d.re)), im = magnitude(value_of(d.im));
    const double by = to_order_one(re >= im ? re : im);
    const auto dre = split(value_of(d.re) * by), dim = split(value_of(d.im) * by);
    const dd<double> square = dre * dre + dim * dim;
    const dd<double> qre = quotient(unnamed(a.re) * dre + unnamed(a.im) * dim, square);
    const dd<double> qim = quotient(unnamed(a.im) * dre - unnamed(a.re) * dim, square);
    return {D{{qre.h * by, qre.l * by}}, D{{qim.h * by, qim.l * by}}};
}

// ---- Solved elements ------------------------------------------------------------------------------------------------

// Blocks of work memory. If one cannot be had that is reported, and the others stay taken: callers of this interface
// count on no further call of the service layer then.
template <int blocks> class Memory {
public:
    bool open(i64 numbers)
    {
        for (double*& b : block_) b = static_cast<double*>(orv_serv_allocate(numbers * i64(sizeof(double)), 128));
        for (const double* b : block_)
            if (b == nullptr) return Routine{"blas_malloc"}.report(0, 0, "malloc failed.\n"), false;
        return true;
    }
    void close()
    {
        for (int i = blocks; i-- > 0;) orv_serv_deallocate(block_[i]); // the block that was taken first goes last
    }

protected:
    double* block_[blocks] = {};
};

// Element j of those that are kept, as the loops multiply by it. open: room for this many; x: the solution in the
// making.
template <class P, class T> class Solved {
public:
    static constexpr bool in_place = true;
    bool open(i64, const T* x, i64 incx) { return x_ = x, incx_ = incx, true; }
    auto operator[](i64 j) const { return factor<typename P::One>(x_ + j * incx_); }
    template <class Value> void keep(i64, Value) {}
    void close() {}

private:
    const T* x_;
    i64 incx_;
};

// 32-bit results in 64-bit arithmetic.
template <class T>
requires std::is_same_v < real_t<T>,
float > class Solved<Double, T> : Memory<1> {
    static constexpr i64 parts = is_complex<T> ? 2 : 1;

public:
    static constexpr bool in_place = false;
    bool open(i64 count, const T*, i64) { return Memory::open(parts * count); }
    auto operator[](i64 j) const { return factor<Plain<double>>(at(j)); }
    template <class Value> void keep(i64 j, Value value) { *at(j) = value; }
    using Memory::close;

private:
    using Wide = std::conditional_t<is_complex<T>, cpx<double>, double>;
    Wide* at(i64 j) const { return reinterpret_cast<Wide*>(block_[0]) + j; }
};

template <class T> class Solved<Extra, T> : Memory<2> {
    static constexpr i64 parts = is_complex<T> ? 2 : 1;

public:
    static constexpr bool in_place = false;
    bool open(i64 count, const T*, i64) { return Memory::open(parts * count); }
    auto operator[](i64 j) const
    {
        const auto part = [this](i64 i) { return dd<double>{block_[0][i], block_[1][i]}; };
        if constexpr (is_complex<T>) return cpx<dd<double>>{part(2 * j), part(2 * j + 1)};
        else return part(j);
    }
    void keep(i64 j, dd<double> value) { block_[0][j] = value.h, block_[1][j] = value.l; }
    template <class N> void keep(i64 j, cpx<N> value) { keep(2 * j, value.re), keep(2 * j + 1, value.im); }
    using Memory::close;
};

// ---- One unknown ----------------------------------------------------------------------------------------------------

template <class N> ORV_INLINE N negated(N a) { return -a; }
template <class N> ORV_INLINE cpx<N> negated(cpx<N> a) { return {-a.re, -a.im}; }

// A head is what x gets, and it is final: no tail is added to it any more.
ORV_INLINE float head(float a) { return a; }
ORV_INLINE double head(double a) { return a; }
ORV_INLINE double head(dd<double> a) { return a.h; }
template <class N> ORV_INLINE auto head(cpx<N> a) { return cpx<decltype(head(a.re))>{head(a.re), head(a.im)}; }

// alpha*x, from which a row subtracts.
template <class P, class A, class T> ORV_INLINE auto start(T alpha, const T* x)
{
    using N = typename P::One;
    return as_sum<sum_of<N, A, T>>(product(factor<N>(x), factor<N>(&alpha)));
}

// value - solved[j]*t(0) - solved[j + 1]*t(1) - ..., count terms, those of t a step apart. Complex terms are long:
// their loop is called, to be compiled once for both solves and both halves of a ring.
template <class P, class Sum, class A, class T>
ORV_INLINE Sum subtracted_here(Sum value, const Solved<P, T>& solved, i64 j, i64 count, const A* t, i64 step,
                               double sign)
{
    const auto subtract_next = [&]() ORV_INLINE_LAMBDA {
        value = plus(value, negated(product(solved[j], factor<typename P::One>(t, sign))));
        ++j, t += step;
    };
    if constexpr (!is_complex<T>) in_pairs<true>(count, subtract_next);
    else
        for (; count > 0; --count) subtract_next();
    return value;
}
template <class P, class Sum, class A, class T>
[[gnu::noinline]] Sum subtracted_by_call(Sum value, const Solved<P, T>& solved, i64 j, i64 count, const A* t, i64 step,
                                         double sign)
{
    return subtracted_here<P>(value, solved, j, count, t, step, sign);
}
template <class P, class Sum, class A, class T>
ORV_INLINE Sum subtracted(Sum value, const Solved<P, T>& solved, i64 j, i64 count, const A* t, i64 step, double sign)
{
    if constexpr (!is_complex<T>) return subtracted_here<P>(value, solved, j, count, t, step, sign);
    else return subtracted_by_call<P>(value, solved, j, count, t, step, sign);
}

// value over the diagonal element.
template <class P, class Sum, class A> [[gnu::noinline]] Sum divided_by_call(Sum value, const A* diagonal, double sign)
{
    return as_sum<Sum>(quotient(value, factor<typename P::One>(diagonal, sign)));
}
// The same unless that is 1.
template <class P, class Sum, class A> ORV_INLINE Sum divided(Sum value, const A* diagonal, bool unit, double sign)
{
    if (unit) return value;
    if constexpr (std::is_arithmetic_v<Sum>) return value / factor<typename P::One>(diagonal, sign);
    else return divided_by_call<P>(value, diagonal, sign);
}

} // namespace orv::xblas
