// How complex numbers stand in memory. Kernels compute on registers of pairs and get and put them through one of these:
//
//   Interleaved   pairs
//   Split         real and imaginary parts in two arrays
//
// and hand them on to functions that take the arrays; so does Reals, which has no numbers to get. All are cheap values
// like pointers. width: how many numbers a register has; get and put move the first n of them.
#pragma once

#include "dft/primitives/dft/butterflies.h"
#include "dft/primitives/members.h"

#include <type_traits>

namespace orv::dft::general {

static_assert(vector_bytes == 16, "a register has one pair of doubles or two of singles");

// Of two pairs of singles: the second one first, and the first ones of two registers together.
ORV_INLINE vec<cpx<float>> second_pair(vec<cpx<float>> v) { return {_mm_movehl_ps(v.r, v.r)}; }
ORV_INLINE vec<cpx<float>> first_pairs(vec<cpx<float>> a, vec<cpx<float>> b) { return {_mm_movelh_ps(a.r, b.r)}; }

ORV_INLINE void multiply(float by, float* p, i32 n) { DFT(ympsMulC_32f_I)(by, p, n); }
ORV_INLINE void multiply(double by, double* p, i32 n) { DFT(ympsMulC_64f_I)(by, p, n); }

template <class R> struct Interleaved {
    using real = R;
    using type = cpx<R>;
    static constexpr int width = vec<cpx<R>>::lanes;
    cpx<R>* p;

    ORV_INLINE Interleaved operator+(i64 i) const { return {p + i}; }
    template <int n = width> ORV_INLINE vec<cpx<R>> get(i64 i) const { return load_first<n>(p + i); }
    template <int n = width> ORV_INLINE void put(i64 i, vec<cpx<R>> v) const { store_first<n>(p + i, v); }
    ORV_INLINE bool meets(Interleaved other) const { return p == other.p; }

    // The n elements of an area of memory.
    ORV_INLINE static Interleaved within(void* area, i64 /* n */) { return {static_cast<cpx<R>*>(area)}; }

    ORV_INLINE bool missing() const { return p == nullptr; }
    ORV_INLINE void scale(R by, i32 n) const { multiply(by, reinterpret_cast<R*>(p), 2 * n); }

    // f(this array's pointers, the other's, more), and with another argument before them.
    template <class F, class... More> ORV_INLINE auto pass(F& f, Interleaved to, More... more) const
    {
        return f(p, to.p, more...);
    }
    template <class F, class First, class... More>
    ORV_INLINE auto pass_behind(F& f, First first, Interleaved to, More... more) const
    {
        return f(first, p, to.p, more...);
    }
};

template <class R> struct Split {
    using real = R;
    using type = R;
    static constexpr int width = vec<cpx<R>>::lanes;
    R *re, *im;

    ORV_INLINE Split operator+(i64 i) const { return {re + i, im + i}; }
    template <int n = width> ORV_INLINE vec<cpx<R>> get(i64 i) const
    {
        if constexpr (sizeof(R) == 8) return {_mm_loadh_pd(_mm_load_sd(re + i), im + i)};
        else return {_mm_unpacklo_ps(load_first<n>(re + i).r, load_first<n>(im + i).r)};
    }
    template <int n = width> ORV_INLINE void put(i64 i, vec<cpx<R>> v) const
    {
        if constexpr (sizeof(R) == 8) _mm_storel_pd(re + i, v.r), _mm_storeh_pd(im + i, v.r);
        else {
            const vec<cpx<R>> parts{_mm_shuffle_ps(v.r, v.r, _MM_SHUFFLE(3, 1, 2, 0))};
            store_first<n>(re + i, vec<R>{parts.r}), store_first<n>(im + i, vec<R>{second_pair(parts).r});
        }
    }
    ORV_INLINE bool meets(Split other) const
    {
        return re == other.re || im == other.im || re == other.im || im == other.re;
    }

    ORV_INLINE static Split within(void* area, i64 n) { return {static_cast<R*>(area), static_cast<R*>(area) + n}; }

    ORV_INLINE bool missing() const { return re == nullptr || im == nullptr; }
    ORV_INLINE void scale(R by, i32 n) const { multiply(by, re, n), multiply(by, im, n); }

    template <class F, class... More> ORV_INLINE auto pass(F& f, Split to, More... more) const
    {
        return f(re, im, to.re, to.im, more...);
    }
    template <class F, class First, class... More>
    ORV_INLINE auto pass_behind(F& f, First first, Split to, More... more) const
    {
        return f(first, re, im, to.re, to.im, more...);
    }
};

template <class R> struct Reals {
    using real = R;
    R* p;

    ORV_INLINE Reals operator+(i64 i) const { return {p + i}; }
    template <class F, class... More> ORV_INLINE auto pass(F& f, Reals to, More... more) const
    {
        return f(p, to.p, more...);
    }
};

// Numbers of as many arrays as a register has lanes, each at place i of its own.
template <class Form> struct Lanes {
    static constexpr int width = Form::width;
    Form of[width];
    ORV_INLINE auto get(i64 i) const
    {
        auto v = of[0].template get<1>(i);
        if constexpr (width == 2) v = first_pairs(v, of[1].template get<1>(i));
        return v;
    }
    template <class V> ORV_INLINE void put(i64 i, V v) const
    {
        of[0].template put<1>(i, v);
        if constexpr (width == 2) of[1].template put<1>(i, second_pair(v));
    }
    // The places 0 to n-1, a register's at a time: what loads them next would wait for halves of a register.
    template <int n, class V> ORV_INLINE void put_all(V (&x)[n]) const
    {
        steps<n / width>([&](auto block) ORV_INLINE_LAMBDA {
            constexpr int i = width * block;
            V square[width];
            steps<width>([&](auto l) ORV_INLINE_LAMBDA { square[l] = x[i + l]; });
            transpose(square);
            steps<width>([&](auto l) ORV_INLINE_LAMBDA { of[l].template put<width>(i, square[l]); });
        });
        if constexpr (n % width != 0) put(n - 1, x[n - 1]);
    }
};

} // namespace orv::dft::general
