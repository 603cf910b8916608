// The ways through an array that transforms have before and behind the Fourier transform, in place.
//
// A spectrum of n reals has its first part, which is real, at 0. Of an even n the last one, real too, is at 1, and pair
// k (a real and an imaginary part) at 2k; of an odd n pair k is at 2k-1.
#pragma once

#include "frame/simd.h"

namespace orv::pdett {

constexpr i64 pairs_of(i64 n) { return (n - 1) / 2; }
constexpr bool is_even(i64 n) { return n % 2 == 0; }
template <class T> T* pairs(T* spectrum, i64 n) { return spectrum - !is_even(n); } // pair k at 2k behind this

// Two elements that are each other's mirror images.
template <class T> struct Images {
    T front, back;
};

// body(j, images) of elements j and last - j, which become what it returns, for j below count; the elements do not
// meet.
template <class T, class Body> ORV_INLINE void mirror(T* f, i64 last, i64 count, Body body)
{
#pragma omp simd
    for (i64 j = 0; j < count; ++j) {
        const Images<T> images = body(j, Images<T>{f[j], f[last - j]});
        f[j] = images.front;
        f[last - j] = images.back;
    }
}

// body(k, pair) for the pairs k = first to last at from + 2k, which become pairs at to + 2k. `to` may be an element
// before or behind `from`: the next pair is read before a pair is written.
template <i64 step, class T, class Body> ORV_INLINE void walk(const T* from, T* to, i64 first, i64 last, Body body)
{
    if ((last - first) * step < 0) return;
    const auto at = [=](i64 k) { return cpx<T>{from[2 * k], from[2 * k + 1]}; };
    const auto put = [=](i64 k, cpx<T> pair) { to[2 * k] = pair.re, to[2 * k + 1] = pair.im; };
    cpx<T> pair = at(first);
    for (i64 k = first; k != last; k += step) {
        const cpx<T> next = at(k + step);
        put(k, body(k, pair));
        pair = next;
    }
    put(last, body(last, pair));
}

} // namespace orv::pdett
