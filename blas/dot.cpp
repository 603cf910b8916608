// Dot products. Their order of summation is part of the contract: the same operands give the same bits.
//
// Four accumulators A, B, C, D of L lanes start at zero; vector p stands for elements L*p .. L*p + L-1, one a lane.
//
//   both strides 1   L is what a register holds (float 4, double 2, complex single 2, complex double 1).
//                    While a block is left, vector p goes to A, B, C, D for p mod 4 = 0, 1, 2, 3; then every whole
//                    vector left goes to A. A block is 16 vectors for double, 4 for the other types.
//   other strides    L is 2, for complex double 1. While 4 vectors are left, one each goes to A, B, C, D.
//
// The sum is (B + A) + (C + D), then its lanes (lane 0 + lane 1; of four lanes (0 + 2) + (1 + 3)), and to that the
// elements left are added one by one. Each product and each sum is rounded once.
//
// A complex product is four such real sums: of re*re, im*im, re*im and im*re. They meet at the very end, so the
// conjugating form differs in two signs only.
#include "frame/kernels/blas.h"
#include "frame/products.h"

#include <type_traits>

namespace orv {
namespace {

enum class Form { plain, conjugate };

template <Form form, class R> ORV_INLINE cpx<R> complex_sum(R re_re, R im_im, R re_im, R im_re)
{
    if constexpr (form == Form::plain) return {re_re - im_im, re_im + im_re};
    else return {re_re + im_im, re_im - im_re};
}

// Sums over whole registers of elements, for unit stride.
template <class T> struct wide {
    CrossedSum<T> sum;

    wide() { sum.clear(); }
    explicit wide(CrossedSum<T> sum) : sum(sum) {}
    ORV_INLINE void add(vec<T> x, vec<T> y)
    {
        if constexpr (is_complex<T>) {
            asm("" : "+x"(y.r)); // or else y is loaded again for the swap
            sum.add(y, x);
        } else sum.add(x, y);
    }
    ORV_INLINE void add(const T* x, const T* y) { add(loadu(x), loadu(y)); }
    ORV_INLINE void add_first(const T* x, const T* y) { add(load_first<1>(x), load_first<1>(y)); }
    ORV_INLINE wide operator+(wide b) const { return wide(sum + b.sum); }
    ORV_INLINE wide folded() const { return wide(sum.folded()); }
    template <Form form> ORV_INLINE T value() const
    {
        if constexpr (!is_complex<T>) return first_lane(sum.sum);
        else {
            const T s = first_lane(sum.straight), c = first_lane(sum.crossed);
            return complex_sum<form>(s.re, s.im, c.re, c.im);
        }
    }
};

// The same sums in other lanes: loads that duplicate a part of x save the shuffles.
template <class T> struct by_parts {
    ProductSum<T> sum; // re*re, re*im and im*re, im*im

    ORV_INLINE void add(const T* x, const T* y)
    {
        const vec<T> pair = loadu(y);
        sum.re += lane_product(load_re_twice(x), pair); // one after the other, lest a product be copied
        sum.im += lane_product(load_im_twice(x), pair);
    }
    ORV_INLINE void add_first(const T* x, const T* y) { sum.add(load_first<1>(y), Multiplicand<T>(load_first<1>(x))); }
    ORV_INLINE by_parts operator+(by_parts b) const { return {sum + b.sum}; }
    ORV_INLINE by_parts folded() const { return {sum.folded()}; }
    template <Form form> ORV_INLINE T value() const
    {
        const T r = first_lane(sum.re), i = first_lane(sum.im);
        return complex_sum<form>(r.re, i.im, r.im, i.re);
    }
};
// Sums over single elements, for other strides: to gather reals costs more than to multiply them one by one.
template <class T> struct single {
    T sum = 0;

    ORV_INLINE void add(const T* x, const T* y) { sum += *x * *y; }
    ORV_INLINE single operator+(single b) const { return {sum + b.sum}; }
    template <Form> ORV_INLINE T value() const { return sum; }
};
template <> struct single<cpx<float>> {
    using T = cpx<float>;
    vec<float> sum = zeros<float>(); // re*re, im*im, re*im, im*re

    ORV_INLINE void add(const T* x, const T* y)
    {
        sum += load_pair(reinterpret_cast<const float*>(x)) * first_pair_and_turned(load_first<1>(y));
    }
    ORV_INLINE single operator+(single b) const { return {sum + b.sum}; }
    template <Form form> ORV_INLINE T value() const
    {
        return complex_sum<form>(sum.r[0], sum.r[1], sum.r[2], sum.r[3]);
    }
};
template <> struct single<cpx<double>> : by_parts<cpx<double>> {
    using T = cpx<double>;
    ORV_INLINE void add(const T* x, const T* y) { vec<T>::lanes == 1 ? by_parts::add(x, y) : add_first(x, y); }
    ORV_INLINE single operator+(single b) const { return {{sum + b.sum}}; }
};

// Above this size the vectors come from beyond the first-level cache, and asking for the lines ahead pays.
constexpr i64 near_bytes = 16384;

template <class Sum, bool far, class T> ORV_INLINE Sum unit_stride(i64 n, const T* x, const T* y)
{
    constexpr i64 lanes = vec<T>::lanes, rotation = 4 * lanes;
    Sum a, b, c, d;
    const auto rotate = [&] {
        if constexpr (far) prefetch_ahead(x), prefetch_ahead(y);
        a.add(x, y);
        b.add(x + lanes, y + lanes);
        c.add(x + 2 * lanes, y + 2 * lanes);
        d.add(x + 3 * lanes, y + 3 * lanes);
        x += rotation, y += rotation;
    };
    if constexpr (!is_complex<T>)
        for (; n >= 4 * rotation; n -= 4 * rotation) rotate(), rotate(), rotate(), rotate();
    if constexpr (!std::is_same_v<T, double>)
        for (; n >= rotation; n -= rotation) rotate();
    for (; n >= lanes; n -= lanes, x += lanes, y += lanes) a.add(x, y);
    Sum total = ((b + a) + (c + d)).folded();
    if constexpr (lanes > 1)
        for (; n > 0; --n) total.add_first(x++, y++);
    return total;
}

template <class T> ORV_INLINE single<T> any_stride(i64 n, const T* x, i64 incx, const T* y, i64 incy)
{
    const auto next = [&](single<T>& sum) { sum.add(x, y), x += incx, y += incy; };
    single<T> a0, b0, c0, d0, total;
    if constexpr (std::is_same_v<T, cpx<double>>) {
        for (; n >= 4; n -= 4) next(a0), next(b0), next(c0), next(d0);
        total = (a0 + b0) + (c0 + d0);
    } else {
        single<T> a1, b1, c1, d1;
        for (; n >= 8; n -= 8) next(a0), next(a1), next(b0), next(b1), next(c0), next(c1), next(d0), next(d1);
        total = ((a0 + b0) + (c0 + d0)) + ((a1 + b1) + (c1 + d1));
    }
    for (; n > 0; --n) next(total);
    return total;
}

template <class Sum, Form form, class T> ORV_INLINE T dot_at_unit_stride(i64 n, const T* x, const T* y)
{
    if (n * static_cast<i64>(sizeof(T)) > near_bytes) return unit_stride<Sum, true>(n, x, y).template value<form>();
    return unit_stride<Sum, false>(n, x, y).template value<form>();
}

// A function of its own, so that unit stride need not save the registers that this wants.
template <class T, Form form> [[gnu::noinline]] T dot_at_strides(i64 n, const T* x, i64 incx, const T* y, i64 incy)
{
    return any_stride(n, first(x, n, incx), incx, first(y, n, incy), incy).template value<form>();
}

// x . y, or conj(x) . y, over n elements; 0 for n <= 0. A negative stride starts at the vector's far end.
template <class T, Form form> ORV_INLINE T dot(i64 n, const T* x, i64 incx, const T* y, i64 incy)
{
    if (n <= 0) return zero<T>;
    if (incx != 1 || incy != 1) return dot_at_strides<T, form>(n, x, incx, y, incy);
    if constexpr (is_complex<T>)
        if (!splits_on_boundaries<T> || is_aligned(x, vector_bytes))
            return dot_at_unit_stride<by_parts<T>, form>(n, x, y);
    if constexpr (!is_complex<T> || splits_on_boundaries<T>) return dot_at_unit_stride<wide<T>, form>(n, x, y);
}

// start + x . y with products and sums in double, one after the other.
double dot_in_double(i64 n, double start, const float* x, i64 incx, const float* y, i64 incy)
{
    x = first(x, n, incx);
    y = first(y, n, incy);
    for (; n > 0; --n, x += incx, y += incy) start += static_cast<double>(*x) * static_cast<double>(*y);
    return start;
}

} // namespace
} // namespace orv

using namespace orv;

#define REAL_DOT(name, T)                                                                                              \
    ORV_EXPORT T BLAS(name)(const i64* n, const T* x, const i64* incx, const T* y, const i64* incy)                    \
    {                                                                                                                  \
        return dot<T, Form::plain>(*n, x, *incx, y, *incy);                                                            \
    }
#define COMPLEX_DOT(name, T, form)                                                                                     \
    ORV_EXPORT void BLAS(name)(T * result, const i64* n, const T* x, const i64* incx, const T* y, const i64* incy)     \
    {                                                                                                                  \
        *result = dot<T, form>(*n, x, *incx, y, *incy);                                                                \
    }

REAL_DOT(xsdot, float)
REAL_DOT(xddot, double)
COMPLEX_DOT(cdotu, cpx<float>, Form::plain)
COMPLEX_DOT(xcdotc, cpx<float>, Form::conjugate)
COMPLEX_DOT(zdotu, cpx<double>, Form::plain)
COMPLEX_DOT(zdotc, cpx<double>, Form::conjugate)

// sb + x . y, rounded to single once.
ORV_EXPORT float BLAS(sdsdot)(const i64* n, const float* sb, const float* x, const i64* incx, const float* y,
                              const i64* incy)
{
    return static_cast<float>(dot_in_double(*n, *sb, x, *incx, y, *incy));
}
ORV_EXPORT double BLAS(xdsdot)(const i64* n, const float* x, const i64* incx, const float* y, const i64* incy)
{
    return dot_in_double(*n, 0, x, *incx, y, *incy);
}
