// Where complex numbers stand in memory, and in which shape they come from there: view.get(i) is the one at index i,
// or as many from i on as its shape has lanes; put is the way back. No address need be aligned.
#pragma once

#include "dft/primitives/fft/numbers.h"

namespace orv::dft {

// Pairs, as they are.
template <class R> struct Numbers {
    using shape = cpx<R>;
    cpx<R>* p;
    ORV_INLINE shape get(i64 i) const { return p[i]; }
    ORV_INLINE void put(i64 i, shape x) const { p[i] = x; }
};
template <class R> struct Registers {
    using shape = vec<cpx<R>>;
    cpx<R>* p;
    ORV_INLINE shape get(i64 i) const { return loadu(p + i); }
    ORV_INLINE void put(i64 i, shape x) const { storeu(p + i, x); }
};

// Neighbouring pairs taken apart.
ORV_INLINE split<double> apart(vec<cpx<double>> a, vec<cpx<double>> b)
{
    return {{low_halves(a.r, b.r)}, {high_halves(a.r, b.r)}};
}
ORV_INLINE split<float> apart(vec<cpx<float>> a, vec<cpx<float>> b)
{
    return {{_mm_shuffle_ps(a.r, b.r, _MM_SHUFFLE(2, 0, 2, 0))}, {_mm_shuffle_ps(a.r, b.r, _MM_SHUFFLE(3, 1, 3, 1))}};
}

// And back to memory.
ORV_INLINE void interleave(cpx<double>* p, split<double> x)
{
    storeu(&p[0].re, vec<double>{low_halves(x.re.r, x.im.r)}),
        storeu(&p[1].re, vec<double>{high_halves(x.re.r, x.im.r)});
}
ORV_INLINE void interleave(cpx<float>* p, split<float> x)
{
    storeu(&p[0].re, vec<float>{low_lanes(x.re.r, x.im.r)}), storeu(&p[2].re, vec<float>{high_lanes(x.re.r, x.im.r)});
}

// Pairs that are taken apart; exchanged: real parts come as imaginary ones, so that a forward transform with both ends
// exchanged is the inverse one.
template <class R, bool exchange> struct Pairs {
    using shape = split<R>;
    cpx<R>* p;
    ORV_INLINE shape get(i64 i) const
    {
        const auto a = loadu(p + i), b = loadu(p + i + shape_lanes / 2);
        const shape x = apart(a, b);
        return exchange ? exchanged(x) : x;
    }
    ORV_INLINE void put(i64 i, shape x) const { interleave(p + i, exchange ? exchanged(x) : x); }

private:
    static constexpr i64 shape_lanes = vec<R>::lanes;
};

// Blocks: a register of real parts, then one of imaginary parts. What stands between the first pass and the last.
template <class R> struct Blocks {
    using shape = split<R>;
    R* p;
    ORV_INLINE shape get(i64 i) const { return {loadu(p + 2 * i), loadu(p + 2 * i + vec<R>::lanes)}; }
    ORV_INLINE void put(i64 i, shape x) const { storeu(p + 2 * i, x.re), storeu(p + 2 * i + vec<R>::lanes, x.im); }
    Blocks from(i64 i) const { return {p + 2 * i}; }
};

// Two arrays.
template <class R> struct Planes {
    using shape = split<R>;
    R *re, *im;
    ORV_INLINE shape get(i64 i) const { return {loadu(re + i), loadu(im + i)}; }
    ORV_INLINE void put(i64 i, shape x) const { storeu(re + i, x.re), storeu(im + i, x.im); }
    Planes from(i64 i) const { return {re + i, im + i}; }
};
template <class R> struct PlaneNumbers {
    using shape = cpx<R>;
    R *re, *im;
    ORV_INLINE shape get(i64 i) const { return {re[i], im[i]}; }
    ORV_INLINE void put(i64 i, shape x) const { re[i] = x.re, im[i] = x.im; }
};

// A source that is only read: views have one kind of pointer.
template <class T> ORV_INLINE T* readable(const T* p) { return const_cast<T*>(p); }

} // namespace orv::dft
