// Sums of complex products, beside the factor and the product of elements of simd.h. Every form takes reals too, for
// which it is plain multiplication and addition. Each product of parts and each sum is rounded once, as in the plain
// formula; the forms differ in what is prepared beforehand, and in how many sums are carried along.
//
//                     what is prepared            sums   joined
//   factor            a number: re, (-im, im)     1      with each product, terms with re before those with im
//   times_i           x beside i*x                1      with each product, the same
//   Multiplicand      x: its parts, each twice    2      at the end: ProductSum
//   CrossedSum        nothing                     2      at the end
#pragma once

#include "frame/simd.h"

namespace orv {

// i*x and -i*x: re(t)*x + im(t)*times_i(x) is t*x, with times_minus_i(x) it is conj(t)*x.
template <class R> ORV_INLINE vec<cpx<R>> times_i(vec<cpx<R>> x) { return swap_neighbours(conj(x)); }
template <class R> ORV_INLINE vec<cpx<R>> times_minus_i(vec<cpx<R>> x) { return conj(swap_neighbours(x)); }

// One register of x, or one number, made ready to multiply registers of A: for complex numbers the parts apart.
template <class T> struct Multiplicand {
    vec<T> x;
    explicit Multiplicand(vec<T> x) : x(x) {}
};
template <class R> struct Multiplicand<cpx<R>> {
    vec<cpx<R>> re, im;
    explicit Multiplicand(vec<cpx<R>> x) : re(real_parts(x)), im(imaginary_parts(x)) {}
    Multiplicand(vec<cpx<R>> re, vec<cpx<R>> im) : re(re), im(im) {}
};

// The sum of products a*x, lane by lane: of complex numbers one sum with the real parts of x, one with the imaginary.
// Several of them are declared as ProductSum<T> sums[4] = {{}, {}, {}, {}}, however few are needed: an array that is
// not spelled out is cleared by a loop through memory.
template <class T> struct ProductSum {
    vec<T> sum;
    ProductSum() : sum(zeros<T>()) {}
    explicit ProductSum(vec<T> start) : sum(start) {}
    ORV_INLINE void add(vec<T> a, const Multiplicand<T>& x) { sum += a * x.x; }
    ORV_INLINE void begin(vec<T> a, const Multiplicand<T>& x) { add(a, x); }
    template <bool /* of reals nothing is conjugated */ = false> ORV_INLINE vec<T> value() const { return sum; }
    ORV_INLINE ProductSum operator+(ProductSum b) const { return ProductSum(sum + b.sum); }
    ORV_INLINE ProductSum folded() const { return ProductSum(fold_lanes(sum)); }
};
template <class R> struct ProductSum<cpx<R>> {
    using T = cpx<R>;
    vec<T> re, im; // a*x.re and a*x.im
    ProductSum() : ProductSum(zeros<T>()) {}
    explicit ProductSum(vec<T> start) : re(start), im(zeros<T>()) {}
    ORV_INLINE void add(vec<T> a, const Multiplicand<T>& x)
    {
        re += lane_product(a, x.re);
        im += lane_product(a, x.im);
    }
    // The first product, where the start has a real factor.
    ORV_INLINE void begin(vec<T> a, const Multiplicand<T>& x)
    {
        re += lane_product(a, x.re);
        im = lane_product(a, x.im);
    }
    // (re.re - im.im, re.im + im.re), with a conjugated (re.re + im.im, im.re - re.im)
    template <bool conjugated = false> ORV_INLINE vec<T> value() const
    {
        if constexpr (conjugated) return conj(re) + swap_neighbours(im);
        else return add_sub(re, swap_neighbours(im));
    }
    ORV_INLINE ProductSum operator+(ProductSum b) const
    {
        ProductSum s(re + b.re);
        s.im = im + b.im;
        return s;
    }
    ORV_INLINE ProductSum folded() const
    {
        ProductSum s(fold_lanes(re));
        s.im = fold_lanes(im);
        return s;
    }
};

// The sum of products x*y, lane by lane: of complex numbers one sum of products of like parts, one of unlike parts. It
// begins with clear().
template <class T> struct CrossedSum {
    vec<T> sum;
    ORV_INLINE void clear() { sum = zeros<T>(); }
    ORV_INLINE void add(vec<T> x, vec<T> y) { sum += x * y; }
    ORV_INLINE CrossedSum operator+(CrossedSum b) const { return {sum + b.sum}; }
    ORV_INLINE CrossedSum folded() const { return {fold_lanes(sum)}; }
};
template <class R> struct CrossedSum<cpx<R>> {
    using T = cpx<R>;
    vec<T> straight, crossed; // (re*re, im*im) and (x.im*y.re, x.re*y.im)
    ORV_INLINE void clear() { straight = crossed = zeros<T>(); }
    ORV_INLINE void add(vec<T> x, vec<T> y)
    {
        crossed += lane_product(swap_neighbours(x), y); // before x may be overwritten
        straight += lane_product(x, y);
    }
    ORV_INLINE CrossedSum operator+(CrossedSum b) const { return {straight + b.straight, crossed + b.crossed}; }
    ORV_INLINE CrossedSum folded() const { return {fold_lanes(straight), fold_lanes(crossed)}; }
};

} // namespace orv
