// The last step of a result: r := alpha*sum + beta*r, what is left out of it when alpha or beta is 0 or 1, and y :=
// beta*y.
#pragma once

#include "xblas/options.h"
#include "xblas/sums.h"

namespace orv::xblas {

// Calls what(P()) with the arithmetic that prec asks of a routine with result type T. Results in 64 bits have two.
template <class T, class What> ORV_INLINE void with_arithmetic(Prec prec, What what)
{
    if (prec == Prec::extra) return what(Extra());
    if constexpr (sizeof(real_t<T>) == sizeof(float))
        if (prec == Prec::single) return what(Single());
    what(Double());
}

// A sum of a real kind becomes one of the kind of T.
template <class T, class Sum> ORV_INLINE auto widened(Sum sum)
{
    if constexpr (is_complex<T> && !is_complex<Sum>) return cpx<Sum>{sum, Sum{}};
    else return sum;
}
ORV_INLINE float unnamed(float sum) { return sum; }
ORV_INLINE double unnamed(double sum) { return sum; }
ORV_INLINE dd<double> unnamed(dd<double> sum) { return sum; } // Running, too
template <class N> ORV_INLINE auto unnamed(cpx<N> sum)
{
    return cpx<decltype(unnamed(sum.re))>{unnamed(sum.re), unnamed(sum.im)};
}

template <class T, class N> ORV_INLINE T stored(N number) { return static_cast<T>(number); }
template <class T, class N> ORV_INLINE T stored(cpx<N> number)
{
    return {static_cast<real_t<T>>(number.re), static_cast<real_t<T>>(number.im)};
}

// sum + a*b. The real part takes the difference of two products, the imaginary part takes its two products one by one;
// in extra precision the complex product is formed first.
template <class S, class A, class B> ORV_INLINE S plus_product(S sum, A a, B b) { return sum + a * b; }
template <class S, class A, class B> ORV_INLINE cpx<S> plus_product(cpx<S> sum, cpx<A> a, cpx<B> b)
{
    if constexpr (std::is_arithmetic_v<S>)
        return {sum.re + (a.re * b.re - a.im * b.im), (sum.im + a.re * b.im) + a.im * b.re};
    else return plus(sum, product(a, b));
}

// What enters the last step.
struct Terms {
    bool alpha; // the sum is multiplied by alpha
    bool beta;  // r is read, multiplied by beta, and added
};
inline constexpr Terms all_terms{true, true};

// For the families that tell alpha = 1 and beta = 0 apart. Where one vector multiplies, the plain loops multiply by an
// alpha of 1 all the same when y is added: an infinite sum times 1 + 0i is no infinity.
template <class P, int vectors, class T> constexpr Terms product_terms(T alpha, T beta)
{
    const bool read = beta != zero<T>;
    constexpr bool always = vectors == 1 && !std::is_same_v<P, Extra>;
    return {alpha != one<T> || (always && read), read};
}

// Real numbers are closed where they stand, complex ones by a function compiled once for all routines: their last step
// would be most of the code of many.
template <class P, class T> class Closing {
    using N = typename P::One;
    using Factor = decltype(factor<N>(static_cast<const T*>(nullptr)));

public:
    Closing(Terms terms, T alpha, T beta) : terms_(terms), alpha_(scalar(alpha)), beta_(scalar(beta)) {}

    template <class Sum> ORV_INLINE void operator()(Sum s, T* r) const
    {
        const auto sum = unnamed(widened<T>(s));
        if constexpr (!is_complex<T>) store(sum, r);
        else out_of_line(sum, r);
    }
    // For loops over short rows, where a call would be a good part of the time.
    template <class Sum> ORV_INLINE void in_line(Sum s, T* r) const { store(unnamed(widened<T>(s)), r); }
    // r := alpha*head + alpha*tail + beta*r, added from left to right.
    template <class Sum> ORV_INLINE void operator()(Sum h, Sum t, T* r) const
    {
        const auto head = unnamed(widened<T>(h)), tail = unnamed(widened<T>(t));
        if constexpr (!is_complex<T>) store(head, tail, r);
        else out_of_line(head, tail, r);
    }

private:
    [[gnu::noinline]] static Factor split_by_call(T a) { return factor<N>(&a); }
    ORV_INLINE static Factor scalar(T a)
    {
        if constexpr (is_complex<T> && std::is_same_v<P, Extra>) return split_by_call(a);
        else return factor<N>(&a);
    }

    template <class Sum> [[gnu::noinline]] void out_of_line(Sum sum, T* r) const { store(sum, r); }
    template <class Sum> [[gnu::noinline]] void out_of_line(Sum head, Sum tail, T* r) const { store(head, tail, r); }

    template <class Sum> ORV_INLINE void store(Sum sum, T* r) const
    {
        add_old(terms_.alpha ? unnamed(product(sum, alpha_)) : sum, r);
    }
    template <class Sum> ORV_INLINE void store(Sum head, Sum tail, T* r) const
    {
        add_old(terms_.alpha ? plus_product(product(head, alpha_), tail, alpha_) : plus(head, tail), r);
    }
    template <class Sum> ORV_INLINE void add_old(Sum sum, T* r) const
    {
        if (terms_.beta) sum = plus_product(sum, factor<N>(r), beta_);
        *r = stored<T>(rounded(sum));
    }

    Terms terms_;
    Factor alpha_, beta_;
};

// y := beta*y, the product in the arithmetic N.
template <class N, class T> [[gnu::noinline]] void scale(i64 n, T beta, T* y, i64 incy)
{
    const auto by = factor<N>(&beta);
    for (i64 i = 0; i < n; ++i, y += incy) *y = stored<T>(rounded(product(factor<N>(y), by)));
}

template <class T> [[gnu::noinline]] void clear(i64 n, T* y, i64 incy)
{
    for (i64 i = 0; i < n; ++i, y += incy) *y = zero<T>;
}

} // namespace orv::xblas
