// Registers of any width, lane by lane through the compiler's own vectors: what each operation means, and what a branch
// with wider registers begins with.
//
// R is float or double, T one of these or a pair of them. Where p need not stand on a boundary, it may be any address
// that an element has.
#pragma once

#include "frame/vec.h"

#include <utility>

namespace orv {

template <> struct reg<float> {
    using type = float __attribute__((vector_size(vector_bytes), may_alias));
};
template <> struct reg<double> {
    using type = double __attribute__((vector_size(vector_bytes), may_alias));
};
template <> struct reg<i32> {
    using type = i32 __attribute__((vector_size(vector_bytes), may_alias));
};

// The lanes at(0), at(1), .. of a and behind it b.
template <class At, class V, int... lane> ORV_INLINE V picked(V a, V b, std::integer_sequence<int, lane...>)
{
    return __builtin_shufflevector(a, b, At{}(lane)...);
}
template <class T, class At> ORV_INLINE vec<T> pick(vec<T> a, vec<T> b, At)
{
    return {picked<At>(a.r, b.r, std::make_integer_sequence<int, vec<real_t<T>>::lanes>())};
}

// Lanes of reals, whatever the elements; parts: how many of them an element has.
template <class T> inline constexpr int reals = vec<real_t<T>>::lanes;
template <class T> inline constexpr int parts = is_complex<T> ? 2 : 1;

// Memory. load and store want p on a boundary of vector_bytes, loadu and storeu take any address.
template <class R> struct anywhere {
    typename reg<R>::type r;
} __attribute__((packed, may_alias));
template <class T> ORV_INLINE vec<T> load(const T* p)
{
    return {*reinterpret_cast<const typename reg<real_t<T>>::type*>(p)};
}
template <class T> ORV_INLINE vec<T> loadu(const T* p) { return {reinterpret_cast<const anywhere<real_t<T>>*>(p)->r}; }
template <class T> ORV_INLINE void store(T* p, vec<T> v) { *reinterpret_cast<typename reg<real_t<T>>::type*>(p) = v.r; }
template <class T> ORV_INLINE void storeu(T* p, vec<T> v) { reinterpret_cast<anywhere<real_t<T>>*>(p)->r = v.r; }

// The first element in every lane; the first element, and zeros in the other lanes.
template <class T> ORV_INLINE vec<T> splat_first(vec<T> v)
{
    return pick(v, v, [](int lane) { return lane % parts<T>; });
}
template <class T> ORV_INLINE vec<T> first_only(vec<T> v)
{
    return pick(v, vec<T>{}, [](int lane) { return lane < parts<T> ? lane : lane + reals<T>; });
}

// Keeps a value in a register at this point, if the processor has one that holds it: what is made of several is left to
// the compiler.
template <class T> ORV_INLINE void settle([[maybe_unused]] vec<T>& v)
{
#if __AVX512F__ || (__AVX__ && ORV_VECTOR_BYTES == 32)
    asm volatile("" : "+x"(v.r));
#endif
}

// of(0), of(1), .., one a lane.
template <class R, class Of> ORV_INLINE vec<R> generate(Of of)
{
    vec<R> v;
#pragma GCC unroll 16
    for (int lane = 0; lane < vec<R>::lanes; ++lane) v.r[lane] = of(lane);
    return v;
}

// The same value in every lane, or the same pair in every pair of lanes.
template <class T> ORV_INLINE vec<T> splat(T a)
{
    if constexpr (is_complex<T>) return {generate<real_t<T>>([=](int lane) { return lane % 2 == 0 ? a.re : a.im; }).r};
    else return generate<T>([=](int) { return a; });
}

// The first n lanes, from and to any address; nothing beyond them is touched, and a load leaves zeros in the others.
template <int n, class T> ORV_INLINE vec<T> load_first(const T* p)
{
    const auto* at = reinterpret_cast<const real_t<T>*>(p);
    if constexpr (n == vec<T>::lanes) return loadu(p);
    else return {generate<real_t<T>>([=](int lane) { return lane < n * parts<T> ? at[lane] : 0; }).r};
}
template <int n, class T> ORV_INLINE void store_first(T* p, vec<T> v)
{
    auto* at = reinterpret_cast<real_t<T>*>(p);
    if constexpr (n == vec<T>::lanes) storeu(p, v);
    else
#pragma GCC unroll 16
        for (int lane = 0; lane < n * parts<T>; ++lane) at[lane] = v.r[lane];
}

// n elements from any address to the last n lanes, some of them again in the others; nothing before or behind is read.
template <int n, class T> ORV_INLINE vec<T> load_last(const T* p)
{
    const auto* at = reinterpret_cast<const real_t<T>*>(p);
    constexpr int before = reals<T> - n * parts<T>;
    return {generate<real_t<T>>([=](int lane) { return at[lane < before ? lane % parts<T> : lane - before]; }).r};
}

// Two reals from any address, repeated to the width of the register.
template <class T> ORV_INLINE vec<T> load_pair(const T* p)
{
    const auto* at = reinterpret_cast<const real_t<T>*>(p);
    return {generate<real_t<T>>([=](int lane) { return at[lane % 2]; }).r};
}

// A register of reals at p, which stands on a boundary, with its lanes 0, 2, .. or its lanes 1, 3, .. repeated over
// their neighbours.
template <class R> ORV_INLINE vec<R> load_even(const R* p) { return real_parts(load(p)); }
template <class R> ORV_INLINE vec<R> load_odd(const R* p) { return imaginary_parts(load(p)); }

// The first n lanes from singles.
template <int n> ORV_INLINE vec<double> load_widened_first(const float* p)
{
    return generate<double>([=](int lane) { return lane < n ? static_cast<double>(p[lane]) : 0; });
}

// The elements at so many addresses, one a lane, and back.
template <class T, class... P> ORV_INLINE vec<T> collect(const T* first, P... rest)
{
    static_assert(1 + sizeof...(rest) == vec<T>::lanes);
    const T* const at[] = {first, rest...};
    return {generate<real_t<T>>([&](int lane) {
                return reinterpret_cast<const real_t<T>*>(at[lane / parts<T>])[lane % parts<T>];
            }).r};
}
template <class T, class... P> ORV_INLINE void distribute(vec<T> v, T* first, P... rest)
{
    static_assert(1 + sizeof...(rest) == vec<T>::lanes);
    T* const at[] = {first, rest...};
#pragma GCC unroll 16
    for (int lane = 0; lane < reals<T>; ++lane)
        reinterpret_cast<real_t<T>*>(at[lane / parts<T>])[lane % parts<T>] = v.r[lane];
}

// The same at p, p + inc, p + 2*inc, ...
template <class T> ORV_INLINE vec<T> gather(const T* p, i64 inc)
{
    return {generate<real_t<T>>([=](int lane) {
                return reinterpret_cast<const real_t<T>*>(p + lane / parts<T> * inc)[lane % parts<T>];
            }).r};
}
template <class T> ORV_INLINE void scatter(T* p, i64 inc, vec<T> v)
{
#pragma GCC unroll 16
    for (int lane = 0; lane < reals<T>; ++lane)
        reinterpret_cast<real_t<T>*>(p + lane / parts<T> * inc)[lane % parts<T>] = v.r[lane];
}

// The register that starts at lane `offset` of low and goes on into high. Whether that costs less than a load across
// boundaries: registers of more than 16 bytes are shuffled by halves.
inline constexpr bool splices_cheaply = false;
template <int offset, class T> ORV_INLINE vec<T> splice(vec<T> low, vec<T> high)
{
    return pick(low, high, [](int lane) { return lane + offset * parts<T>; });
}

// Neighbours change places: (re, im) becomes (im, re); of reals, lane 0 with 1 and lane 2 with 3.
template <class T> ORV_INLINE vec<T> swap_neighbours(vec<T> a)
{
    return pick(a, a, [](int lane) { return lane ^ 1; });
}

// Of reals or of parts of pairs: lanes 0, 2, .. of the first and lanes 1, 3, .. of the second.
template <class T> ORV_INLINE vec<T> alternate(vec<T> even, vec<T> odd)
{
    return pick(even, odd, [](int lane) { return lane % 2 == 0 ? lane : lane + reals<T>; });
}

// Of each pair the one part, twice.
template <class T> ORV_INLINE vec<T> real_parts(vec<T> a)
{
    return pick(a, a, [](int lane) { return lane & ~1; });
}
template <class T> ORV_INLINE vec<T> imaginary_parts(vec<T> a)
{
    return pick(a, a, [](int lane) { return lane | 1; });
}

// The same of pairs at p. Whether p has to stand on a boundary.
template <class T> inline constexpr bool splits_on_boundaries = false;
template <class R> ORV_INLINE vec<cpx<R>> load_re_twice(const cpx<R>* p) { return real_parts(loadu(p)); }
template <class R> ORV_INLINE vec<cpx<R>> load_im_twice(const cpx<R>* p) { return imaginary_parts(loadu(p)); }

// Differences of real parts, sums of imaginary parts.
template <class T> ORV_INLINE vec<T> add_sub(vec<T> a, vec<T> b)
{
    return alternate(vec<T>{a.r - b.r}, vec<T>{a.r + b.r});
}

template <class T> ORV_INLINE vec<T> conj(vec<T> a)
{
    if constexpr (!is_complex<T>) return a;
    else return alternate(a, vec<T>{-a.r});
}

// Magnitudes of reals, or of the parts of pairs: the sign bits cleared; and the negatives of magnitudes.
template <class T> ORV_INLINE vec<T> negative_magnitude(vec<T> a)
{
    using bits = typename mask<real_t<T>>::bits;
    const auto signs = reinterpret_cast<bits>(-typename reg<real_t<T>>::type{});
    return {reinterpret_cast<decltype(a.r)>(reinterpret_cast<bits>(a.r) | signs)};
}
template <class T> ORV_INLINE vec<T> magnitude(vec<T> a) { return {-negative_magnitude(a).r}; }

// The greater or the lesser; of reals b, if either is NaN.
template <class R> ORV_INLINE vec<R> maximum(vec<R> a, vec<R> b) { return {a.r > b.r ? a.r : b.r}; }
template <class R> ORV_INLINE vec<R> minimum(vec<R> a, vec<R> b) { return {a.r < b.r ? a.r : b.r}; }

template <class R> ORV_INLINE vec<R> root(vec<R> a)
{
    return generate<R>([=](int lane) -> R {
        if constexpr (sizeof(R) == 4) return __builtin_sqrtf(a.r[lane]);
        else return __builtin_sqrt(a.r[lane]);
    });
}

// Whether either is NaN.
template <class R> ORV_INLINE mask<R> unordered(vec<R> a, vec<R> b) { return {(a.r != a.r) | (b.r != b.r)}; }
// Whether a lane is other than zero; NaN is.
template <class T> ORV_INLINE bool any_nonzero(vec<T> a)
{
    bool any = false;
#pragma GCC unroll 16
    for (int lane = 0; lane < reals<T>; ++lane) any |= a.r[lane] != 0;
    return any;
}
// Bit l: the answer of lane l.
template <class R> ORV_INLINE int lane_bits(mask<R> a)
{
    int bits = 0;
#pragma GCC unroll 16
    for (int lane = 0; lane < vec<R>::lanes; ++lane) bits |= a.m[lane] != 0 ? 1 << lane : 0;
    return bits;
}
// The first lane of four registers, one behind the other, that says yes; -1 if none does.
template <class R> ORV_INLINE int first_true(mask<R> a, mask<R> b, mask<R> c, mask<R> d)
{
    u64 all = 0;
    for (const mask<R> m : {d, c, b, a}) all = all << vec<R>::lanes | static_cast<u64>(lane_bits(m));
    return all != 0 ? __builtin_ctzll(all) : -1;
}

// The square of lanes by lanes elements changes rows with columns: blocks of 1, 2, 4, .. elements beside the diagonals
// of blocks twice as large change places.
template <int block, class T, int lanes> ORV_INLINE void exchange_blocks_of(vec<T> (&v)[lanes])
{
    if constexpr (block < lanes) {
        constexpr int width = block * parts<T>;
        for (int i = 0; i < lanes; ++i)
            if ((i & block) == 0) {
                const vec<T> a = v[i], b = v[i + block];
                v[i] = pick(a, b, [](int lane) { return (lane & width) == 0 ? lane : lane - width + reals<T>; });
                v[i + block] =
                    pick(a, b, [](int lane) { return (lane & width) == 0 ? lane + width : lane + reals<T>; });
            }
        exchange_blocks_of<2 * block>(v);
    }
}
template <class T> ORV_INLINE void transpose(vec<T> (&v)[vec<T>::lanes]) { exchange_blocks_of<1>(v); }

// Pair k of each register of a square of pairs, side by side.
template <class R> ORV_INLINE vec<R> pair_of_each(const vec<R> (&v)[vec<R>::lanes / 2], int k)
{
    return generate<R>([&](int lane) { return v[lane / 2].r[2 * k + lane % 2]; });
}

// The first of pairs, its parts and then its parts in the other order; zeros behind.
template <class R> ORV_INLINE vec<R> first_pair_and_turned(vec<cpx<R>> a)
{
    return generate<R>([=](int lane) { return lane < 4 ? a.r[lane == 0 || lane == 3 ? 0 : 1] : 0; });
}

// Complex numbers whose parts are the sums of neighbours: real parts of the first, imaginary parts of the second.
template <class T> ORV_INLINE vec<T> add_pairs(vec<T> re, vec<T> im)
{
    const vec<T> first = pick(re, im, [](int lane) { return lane % 2 == 0 ? lane : lane - 1 + reals<T>; });
    const vec<T> second = pick(re, im, [](int lane) { return lane % 2 == 0 ? lane + 1 : lane + reals<T>; });
    return first + second;
}

// Real part + imaginary part of each number of two registers: in few instructions, or with few of them on the ports for
// shuffles.
template <class R> ORV_INLINE vec<R> add_parts(vec<cpx<R>> low, vec<cpx<R>> high)
{
    const vec<R> a{low.r}, b{high.r};
    return pick(a, b, [](int lane) { return 2 * lane; }) + pick(a, b, [](int lane) { return 2 * lane + 1; });
}

template <class R> ORV_INLINE vec<R> add_parts_sparing_shuffles(vec<cpx<R>> low, vec<cpx<R>> high)
{
    return add_parts(low, high);
}

// The sum of all elements, in lane 0 (the other lanes mean nothing): the upper half of the register is added to the
// lower half, then the upper half of that: of four lanes (0 + 2) + (1 + 3).
template <int half, class T> ORV_INLINE vec<T> folded_from(vec<T> a)
{
    if constexpr (half < parts<T>) return a;
    else return folded_from<half / 2>(a + pick(a, a, [](int lane) { return lane % half + half; }));
}
template <class T> ORV_INLINE vec<T> fold_lanes(vec<T> a) { return folded_from<reals<T> / 2>(a); }

// The greatest of all lanes, in every lane.
template <int half, class R> ORV_INLINE vec<R> greatest_from(vec<R> a)
{
    if constexpr (half == 0) return a;
    else return greatest_from<half / 2>(maximum(a, pick(a, a, [](int lane) { return lane ^ half; })));
}
template <class R> ORV_INLINE vec<R> greatest_lane(vec<R> a) { return greatest_from<vec<R>::lanes / 2>(a); }

} // namespace orv
