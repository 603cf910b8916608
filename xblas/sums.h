// Sums of products, the inner loops of the whole folder. They know elements, steps and an arithmetic, and nothing of
// routines: each is compiled once, in sums_*.cpp.
#pragma once

#include "xblas/arithmetic.h"

namespace orv::xblas {

// The operand that all results share: an element every step, and step grows by bend from one element to the next, as it
// does along a row of a packed triangle. sign: -1 takes conjugates.
template <class S> struct Shared {
    const S* at;
    i64 step, bend = 0;
    double sign = 1;
};

// The operands that differ: result number i has its first element i*apart elements behind that of result 0.
template <class L> struct Several {
    const L* at;
    i64 step, apart = 0;
    double sign = 1;
    i64 bend = 0;
};

// count elements: the first at `at`, the next a step further, and the step grows by bend each time.
struct Walk {
    i64 at, step, bend, count;
};
constexpr i64 distance(i64 few, i64 step, i64 bend) { return few * step + (few * (few - 1) >> 1) * bend; }
constexpr Walk without_first(Walk w, i64 few = 1)
{
    return {w.at + distance(few, w.step, w.bend), w.step + few * w.bend, w.bend, w.count - few};
}

// Four rows one below the other of a stored matrix a, of each the columns from `column` on as far as its walk goes.
// They begin and end at ascending columns, and in the same column all have the same step.
struct FourRows {
    Walk walk[4];
    i64 column[4];
};

// Four running sums, two a register where the arithmetic is in doubles.
template <class P, class S, class L> struct FourSums {
    using N = typename P::Four;
    static constexpr int lanes = lanes_of<typename N::lane>, groups = 4 / lanes;
    sum_of<N, S, L> group[groups] = {};
};

namespace compiled {

// Arguments one by one, so that they travel in registers, as does the sum.
template <class P, class S, class L>
sum_of<typename P::One, S, L> with_products(sum_of<typename P::One, S, L> sum, i64 n, const S* s, i64 s_step,
                                            const L* v, i64 v_step, i64 s_bend, double s_sign, double v_sign);
template <class P, class S, class L>
void add_products(i64 n, const S* s, i64 s_step, const L* v, i64 v_step, FourSums<P, S, L>& sums, double s_sign,
                  double v_sign, i64 s_bend, i64 v_apart);
template <class P, class A, class B>
void add_rows(const FourRows& rows, const A* a, double sign, const B* x, i64 incx, sum_of<typename P::One, A, B>* sums);

} // namespace compiled

// sum := sum + s(0)*v(0) + s(1)*v(1) + ... + s(n-1)*v(n-1), added in this order.
template <class P, class S, class L>
ORV_INLINE void add_products(i64 n, Shared<S> s, Several<L> v, sum_of<typename P::One, S, L>& sum)
{
    sum = compiled::with_products<P>(sum, n, s.at, s.step, v.at, v.step, s.bend, s.sign, v.sign);
}
template <class P, class S, class L>
ORV_INLINE void add_products(i64 n, Shared<S> s, Several<L> v, FourSums<P, S, L>& sums)
{
    compiled::add_products<P>(n, s.at, s.step, v.at, v.step, sums, s.sign, v.sign, s.bend, v.apart);
}

// sums[l] := sums[l] + row l of a times x, in the order of the columns. x: the element of column 0.
template <class P, class A, class B>
ORV_INLINE void add_rows(const FourRows& rows, const A* a, double sign, const B* x, i64 incx,
                         sum_of<typename P::One, A, B> (&sums)[4])
{
    compiled::add_rows<P>(rows, a, sign, x, incx, sums);
}

// A number as the running sum that it begins or goes on.
template <class S, class N> ORV_INLINE S as_sum(N a)
{
    if constexpr (is_complex<S>) return {as_sum<real_t<S>>(a.re), as_sum<real_t<S>>(a.im)};
    else if constexpr (requires { a.l; }) return S{{a.h, a.l}};
    else if constexpr (requires { a.value; }) return S{{a.value, 0}};
    else return a;
}

// Two results in the lanes of a register.
ORV_INLINE two in_lanes(double a, double b) { return two{a, b}; }
ORV_INLINE dd<two> in_lanes(dd<double> a, dd<double> b) { return {in_lanes(a.h, b.h), in_lanes(a.l, b.l)}; }
template <class N> ORV_INLINE auto in_lanes(cpx<N> a, cpx<N> b)
{
    return cpx<decltype(in_lanes(a.re, b.re))>{in_lanes(a.re, b.re), in_lanes(a.im, b.im)};
}

// Result number i of four.
template <class D> ORV_INLINE dd<double> lane(dd<D> sum, int i) { return {sum.h[i], sum.l[i]}; }
ORV_INLINE double lane(two sum, int i) { return sum[i]; }
ORV_INLINE float lane(float sum, int) { return sum; }
template <class N> ORV_INLINE auto lane(cpx<N> sum, int i)
{
    return cpx<decltype(lane(sum.re, i))>{lane(sum.re, i), lane(sum.im, i)};
}
template <class P, class S, class L> ORV_INLINE auto result(const FourSums<P, S, L>& sums, int i)
{
    constexpr int lanes = FourSums<P, S, L>::lanes;
    return lane(sums.group[i / lanes], i % lanes);
}

} // namespace orv::xblas
