// The two number systems that the loops are written in. A loop is one template over them: it multiplies factors, which
// gives products, and adds products to a sum.
//
//                   factor            product                       sum
//   Plain<D>        D                 D                             D             one rounding each
//   Doubled<D>      Narrow, Wide      Exact (of two Narrow), dd     dd            an unevaluated sum of two numbers
//
// D is float, double, or two doubles side by side, whose lanes are two results that never meet. Complex numbers are
// pairs of these. Every line below is one rounded operation after the other in the order written; the error terms
// rest on that, and on rounding to nearest.
#pragma once

#include "frame/simd.h"
#include "frame/types.h"

#include <type_traits>

namespace orv::xblas {

using two = double __attribute__((vector_size(2 * sizeof(double)))); // two in every branch

// The value h + l. Operations return |l| of half a unit in the last place of h at most.
template <class D> struct dd {
    D h, l;
};

// A factor with its halves: high + low = value, of 26 bits each (Veltkamp). Beyond 2^996 the product overflows, and the
// halves are no numbers.
template <class D> struct Wide {
    D value, high, low;
};
template <class D> ORV_INLINE Wide<D> split(D a)
{
    const D c = a * 134217729.0; // 2^27 + 1
    const D high = c - (c - a);
    return {a, high, a - high};
}

// A factor that came from 32 bits: it is its own high half. The product of two is exact.
template <class D> struct Narrow {
    D value;
};
template <class D> struct Exact {
    D value;
};

// two_prod: the rounded product and its error (Dekker). Where a half is known to be 0 its terms are left out.
template <class D> ORV_INLINE dd<D> operator*(Wide<D> a, Wide<D> b)
{
    const D p = a.value * b.value;
    return {p, ((a.high * b.high - p) + a.high * b.low + b.high * a.low) + a.low * b.low};
}
template <class D> ORV_INLINE dd<D> operator*(Narrow<D> a, Wide<D> b)
{
    const D p = a.value * b.value;
    return {p, (a.value * b.high - p) + a.value * b.low};
}
template <class D> ORV_INLINE dd<D> operator*(Wide<D> a, Narrow<D> b) { return b * a; }
template <class D> ORV_INLINE Exact<D> operator*(Narrow<D> a, Narrow<D> b) { return {a.value * b.value}; }

// The error of s = a + b (Knuth).
template <class D> ORV_INLINE D sum_error(D a, D b, D s)
{
    const D v = s - a;
    return (b - v) + (a - (s - v));
}

// dd_add, the accurate form.
template <class D> ORV_INLINE dd<D> operator+(dd<D> a, dd<D> b)
{
    const D s1 = a.h + b.h, t1 = a.l + b.l;
    D s2 = sum_error(a.h, b.h, s1), t2 = sum_error(a.l, b.l, t1);
    s2 = s2 + t1;
    const D t3 = s1 + s2;
    s2 = s2 - (t3 - s1);
    t2 = t2 + s2;
    const D h = t3 + t2;
    return {h, t2 - (h - t3)};
}
// The same with a second tail of 0.
template <class D> ORV_INLINE dd<D> operator+(dd<D> a, Exact<D> b)
{
    const D s1 = a.h + b.value;
    const D s2 = sum_error(a.h, b.value, s1) + a.l;
    const D t3 = s1 + s2;
    const D t2 = s2 - (t3 - s1);
    const D h = t3 + t2;
    return {h, t2 - (h - t3)};
}
// dd_add_d. Its order differs from the form above only in that the result is not renormalised a second time.
template <class D> ORV_INLINE dd<D> operator+(dd<D> a, D b)
{
    const D s1 = a.h + b;
    const D s2 = sum_error(a.h, b, s1) + a.l;
    const D h = s1 + s2;
    return {h, s2 - (h - s1)};
}
template <class D> ORV_INLINE dd<D> operator+(Exact<D> a, Exact<D> b)
{
    const D s = a.value + b.value, e = sum_error(a.value, b.value, s), h = s + e;
    return {h, e - (h - s)};
}

template <class D> ORV_INLINE dd<D> operator+(Exact<D> a, dd<D> b) { return b + a; }

template <class D> ORV_INLINE dd<D> operator-(dd<D> a) { return {-a.h, -a.l}; }
template <class D> ORV_INLINE Exact<D> operator-(Exact<D> a) { return {-a.value}; }
template <class D> ORV_INLINE dd<D> operator-(dd<D> a, dd<D> b) { return a + -b; }
template <class D> ORV_INLINE dd<D> operator-(Exact<D> a, Exact<D> b) { return a + -b; }

// dd_mul_d. The head's product counts as the larger term, so one correction is enough.
template <class D, class Factor> ORV_INLINE dd<D> operator*(dd<D> a, Factor b)
{
    dd<D> head;
    if constexpr (requires { b.high; }) head = split(a.h) * b;
    else head = split(a.h) * Wide<D>{b.value, b.value, D{}};
    const D c = a.l * b.value;
    const D t1 = head.h + c;
    const D t2 = (c - (t1 - head.h)) + head.l;
    const D h = t1 + t2;
    return {h, t2 - (h - t1)};
}

// dd_div_d.
ORV_INLINE dd<double> operator/(dd<double> a, Wide<double> d)
{
    const double q1 = a.h / d.value;
    const dd<double> p = d * split(q1);
    const double s = a.h - p.h, v = s - a.h;
    const double c = (-(p.h + v)) + (a.h - (s - v));
    const double t = (c + a.l) - p.l;
    const double q2 = (s + t) / d.value, h = q1 + q2;
    return {h, q2 - (h - q1)};
}

// A running sum in one lane: bit for bit dd_add, with a shorter way from one head to the next. t3 is the new head
// unless the tail still changes it, which it does once in 2^50 times: a branch that is predicted takes no time, and the
// additions in its place would be two of the nine on that way.
struct Running : dd<double> {};

ORV_INLINE Running head_and_tail(double t3, double t2)
{
    const double h = t3 + t2;
    if (__builtin_expect(h != t3, 0)) {
        asm(""); // keeps the branch a branch
        return {{h, t2 - (h - t3)}};
    }
    return {{t3, t2}};
}
ORV_INLINE Running operator+(Running a, dd<double> b)
{
    const double s1 = a.h + b.h, t1 = a.l + b.l;
    const double s2 = sum_error(a.h, b.h, s1) + t1;
    const double t3 = s1 + s2;
    return head_and_tail(t3, sum_error(a.l, b.l, t1) + (s2 - (t3 - s1)));
}
ORV_INLINE Running operator+(Running a, Exact<double> b)
{
    const double s1 = a.h + b.value;
    const double s2 = sum_error(a.h, b.value, s1) + a.l;
    const double t3 = s1 + s2;
    return head_and_tail(t3, s2 - (t3 - s1));
}

// dd_round, and what a plain number is rounded to: itself.
ORV_INLINE double rounded(dd<double> a) { return a.h + a.l; }
ORV_INLINE double rounded(double a) { return a; }
ORV_INLINE float rounded(float a) { return a; }
template <class N> ORV_INLINE auto rounded(cpx<N> a)
{
    return cpx<decltype(rounded(a.re))>{rounded(a.re), rounded(a.im)};
}

// Products of real and complex factors. A complex product sums four: re*re - im*im, re*im + im*re.
template <class A, class B> ORV_INLINE auto product(A a, B b) { return a * b; }
template <class A, class B> ORV_INLINE auto product(A a, cpx<B> b)
{
    return cpx<decltype(a * b.re)>{a * b.re, a * b.im};
}
template <class A, class B> ORV_INLINE auto product(cpx<A> a, B b)
{
    return cpx<decltype(a.re * b)>{a.re * b, a.im * b};
}
template <class A, class B> ORV_INLINE auto product(cpx<A> a, cpx<B> b)
{
    return cpx<decltype(a.re * b.re - a.im * b.im)>{a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

// sum + term. The imaginary part of a complex sum stays what it is when the term is real.
template <class S, class T> ORV_INLINE S plus(S sum, T term) { return S(sum + term); }
template <class S, class T> ORV_INLINE cpx<S> plus(cpx<S> sum, T term) { return {S(sum.re + term), sum.im}; }
template <class S, class T> ORV_INLINE cpx<S> plus(cpx<S> sum, cpx<T> term)
{
    return {S(sum.re + term.re), S(sum.im + term.im)};
}

// The number systems. factor<R>: the number v, which came from an R in memory.
template <class D> struct Plain {
    using lane = D;
    using sum = D;
    template <class R> ORV_INLINE static D factor(D v) { return v; }
};
template <class D> struct Doubled {
    using lane = D;
    using sum = std::conditional_t<std::is_same_v<D, double>, Running, dd<D>>;
    template <class R> ORV_INLINE static auto factor(D v)
    {
        if constexpr (std::is_same_v<R, float>) return Narrow<D>{v};
        else return split(v);
    }
};
template <class D> inline constexpr int lanes_of = std::is_same_v<D, two> ? 2 : 1;

// The sum of products of elements of A and of B.
template <class N, class A, class B>
using sum_of = std::conditional_t<is_complex<A> || is_complex<B>, cpx<typename N::sum>, typename N::sum>;

// What a loop reads: an element as a factor, from as many places as there are lanes, apart elements from one another.
// sign: -1 takes conjugates, and multiplies all imaginary parts; AsStored multiplies none. Real elements have none.
struct AsStored {};
template <class D> ORV_INLINE D with_sign(D im, AsStored) { return im; }
template <class D> ORV_INLINE D with_sign(D im, double sign) { return im * sign; }
ORV_INLINE float with_sign(float im, double sign) { return im * static_cast<float>(sign); }

template <class D, class R> ORV_INLINE D gather(const R* p, i64 apart)
{
    if constexpr (lanes_of<D> == 2) return D{static_cast<double>(p[0]), static_cast<double>(p[apart])};
    else return static_cast<D>(*p);
}
template <class N, class R, class Sign = AsStored> ORV_INLINE auto factor(const R* p, Sign = {}, i64 apart = 0)
{
    return N::template factor<R>(gather<typename N::lane>(p, apart));
}
template <class N, class R, class Sign = AsStored>
ORV_INLINE auto factor(const cpx<R>* p, Sign sign = {}, i64 apart = 0)
{
    using D = typename N::lane;
    const D re = gather<D>(&p->re, 2 * apart), im = with_sign(gather<D>(&p->im, 2 * apart), sign);
    return cpx<decltype(N::template factor<R>(re))>{N::template factor<R>(re), N::template factor<R>(im)};
}

// The three arithmetics of a routine: for one result at a time, and for four that share an operand.
struct Single {
    using number = float;
    using One = Plain<float>;
    using Four = Plain<float>;
};
struct Double {
    using number = double;
    using One = Plain<double>;
    using Four = Plain<two>;
};
struct Extra {
    using number = double;
    using One = Doubled<double>;
    using Four = Doubled<two>;
};

} // namespace orv::xblas
