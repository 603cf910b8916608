// What the workers do with two elements, or with two registers of them. The results of integers are as wide as their
// exact values need: 64 bits, 128 for pairs of 32 bits; registers of 16 bits give 32. Floating types stay what they
// are: each product and each sum is rounded once.
#pragma once

#include "dft/primitives/scale.h"
#include "dft/primitives/walk.h"

namespace orv::dft {

template <class T> struct exact {
    using type = std::conditional_t<is_floating<T>, real_t<T>, i64>;
};
template <> struct exact<cpx<i32>> {
    using type = i128;
};
template <class T> using Exact = typename exact<T>::type;

template <class R> ORV_INLINE auto widened(cpx<R> a)
{
    using W = Exact<cpx<R>>;
    return cpx<W>{a.re, a.im};
}
template <class T> ORV_INLINE Exact<T> widened(T a) { return a; }

// mend: of registers, whether -32768 may meet itself in all four parts.
template <bool mend> struct ProductOf {
    template <class T> ORV_INLINE static auto of(T a, T b) { return widened(a) * widened(b); }
    template <class T> ORV_INLINE static vec<T> of(vec<T> a, vec<T> b) { return element_product(b, a); }
    ORV_INLINE static wide of(words<i16> a, words<i16> b) { return products(a, b); }
    ORV_INLINE static wide of(words<cpx<i16>> a, words<cpx<i16>> b) { return products<mend>(a, b); }
};
using Product = ProductOf<true>;
using ProductInRange = ProductOf<false>;

struct ConjugateProduct {
    template <class R> ORV_INLINE static auto of(cpx<R> a, cpx<R> b)
    {
        const auto x = widened(a), y = widened(b);
        return x * conj(y);
    }
    template <class T> ORV_INLINE static vec<T> of(vec<T> a, vec<T> b) { return element_product(conj(b), a); }
    ORV_INLINE static wide of(words<cpx<i16>> a, words<cpx<i16>> b) { return conjugate_products(a, b); }
};

struct Sum {
    template <class T> ORV_INLINE static auto of(T a, T b) { return widened(a) + widened(b); }
    template <class T> ORV_INLINE static vec<T> of(vec<T> a, vec<T> b) { return a + b; }
    template <class T> ORV_INLINE static wide of(words<T> a, words<T> b) { return sums(a, b); }
};

template <class T, class W> ORV_INLINE T narrowed(W v) { return static_cast<T>(clamp(v, lowest<T>, highest<T>)); }

// Any number below 2^62 by any factor: beyond these two nothing changes any more.
template <class T> ORV_INLINE T scaled_number(i64 v, i32 factor)
{
    if (factor > 0) return narrowed<T>(Down{static_cast<int>(min(factor, 62))}(v));
    return narrowed<T>(Up<T>{static_cast<int>(min(-i64{factor}, bits_of<T>))}(v));
}

// The whole operation: exact, by the law, saturated.
template <class Op, class L> struct Scaled {
    L law;
    template <class T> ORV_INLINE T operator()(T a, T b) const
    {
        const auto v = Op::of(a, b);
        if constexpr (is_complex<T>) return {narrowed<real_t<T>>(law(v.re)), narrowed<real_t<T>>(law(v.im))};
        else return narrowed<T>(law(v));
    }
    template <class T> ORV_INLINE words<T> operator()(words<T> a, words<T> b) const
    {
        const wide v = Op::of(a, b);
        return saturated<T>({law(v.low), law(v.high)});
    }
};
template <class Op> struct Rounded {
    template <class V> ORV_INLINE V operator()(V a, V b) const { return Op::of(a, b); }
};

// f: the scale factor where the law needs it.
template <class Op, Law law, class A, class B, class T, class... F>
[[gnu::noinline]] void work(A a, B b, T* dst, i64 n, F... f)
{
    if constexpr (is_floating<T>) walk(a, b, dst, n, Rounded<Op>{});
    else {
        const auto chosen = law_of<law, real_t<T>>(f...);
        walk(a, b, dst, n, Scaled<Op, decltype(chosen)>{chosen});
    }
}

// The forms of a worker. A sum or a product that is in place has the operand that is overwritten last.
template <class Op, Law law> struct TwoArrays {
    template <class T, class... F> static void apart(const T* a, const T* b, T* dst, i32 n, F... f)
    {
        work<Op, law>(Array<T>{a}, Array<T>{b}, dst, n, f...);
    }
    template <class T, class... F> static void in_place(const T* a, T* dst, i32 n, F... f)
    {
        work<Op, law>(Array<T>{a}, Array<T>{dst}, dst, n, f...);
    }
};
template <class Op, Law law> struct ArrayAndConstant {
    template <class C, class T, class... F> static void apart(const T* a, C c, T* dst, i32 n, F... f)
    {
        work<Op, law>(Array<T>{a}, Constant<T>{value_of(c)}, dst, n, f...);
    }
    template <class C, class T, class... F> static void in_place(C c, T* dst, i32 n, F... f)
    {
        work<Op, law>(Array<T>{dst}, Constant<T>{value_of(c)}, dst, n, f...);
    }
};

} // namespace orv::dft

// The exported workers of one operation: apart and in place, for type t and the law of that name.
#define ORV_DFT_WORKER(Forms, Op, name, t, law, ...)                                                                   \
    PRIMITIVE(ORV_DFT_COUNT_4_##__VA_ARGS__, owns##name##_##t##law, Forms<Op, Law::factor##law>::apart)                \
    PRIMITIVE(ORV_DFT_COUNT_3_##__VA_ARGS__, owns##name##_##t##_I##law, Forms<Op, Law::factor##law>::in_place)
#define ORV_DFT_COUNT_4_ 4
#define ORV_DFT_COUNT_4_i32 5
#define ORV_DFT_COUNT_3_ 3
#define ORV_DFT_COUNT_3_i32 4
