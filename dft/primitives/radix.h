// Digits and keys of the radix sorts. A key is an unsigned number that orders as its element does: of signed integers
// with the sign turned over, of floats with all bits turned over where they are negative, else only the sign. So -0
// stands before 0, and NaN outside of all numbers on the side of its sign. Inverted keys sort downward, just as stably.
#pragma once

#include "dft/primitives/members.h"

namespace orv::dft {

enum class Direction { ascend, descend };

template <int bytes> struct unsigned_of;
template <> struct unsigned_of<1> {
    using type [[gnu::may_alias]] = t_8u;
    static constexpr int widths[] = {8};
};
template <> struct unsigned_of<2> {
    using type [[gnu::may_alias]] = t_16u;
    static constexpr int widths[] = {8, 8};
};
template <> struct unsigned_of<4> {
    using type [[gnu::may_alias]] = t_32u;
    static constexpr int widths[] = {11, 11, 10};
};
template <> struct unsigned_of<8> {
    using type [[gnu::may_alias]] = u64;
    static constexpr int widths[] = {11, 11, 10, 11, 11, 10};
};

// Elements of type T, one digit a pass from the lowest on.
template <class T> struct Radix {
    using Key = typename unsigned_of<sizeof(T)>::type;
    static constexpr auto& widths = unsigned_of<sizeof(T)>::widths;
    static constexpr int passes = sizeof widths / sizeof *widths;
    static constexpr int bits = 8 * sizeof(T);
    static constexpr Key sign = static_cast<Key>(u64{1} << (bits - 1));

    template <Direction d> ORV_INLINE static Key encode(Key x)
    {
        if constexpr (std::is_floating_point_v<T>) x ^= negative(x) | sign;
        else if constexpr (std::is_signed_v<T>) x ^= sign;
        return d == Direction::descend ? static_cast<Key>(~x) : x;
    }
    template <Direction d> ORV_INLINE static Key decode(Key x)
    {
        if (d == Direction::descend) x = static_cast<Key>(~x);
        if constexpr (std::is_floating_point_v<T>) x ^= static_cast<Key>(~negative(x)) | sign;
        else if constexpr (std::is_signed_v<T>) x ^= sign;
        return x;
    }

    template <int pass> ORV_INLINE static u64 digit(Key x)
    {
        constexpr int shift = [] {
            int below = 0;
            for (int p = 0; p < pass; ++p) below += widths[p];
            return below;
        }();
        return u64{x} >> shift & ((u64{1} << widths[pass]) - 1);
    }

private:
    // All bits where the highest is set, else none.
    ORV_INLINE static Key negative(Key x) { return static_cast<Key>(-(x >> (bits - 1))); }
};

// How often each digit occurs, for every pass, and then where the next element with that digit goes, less 1.
template <class T> struct Histograms {
    static constexpr int bins = 1 << Radix<T>::widths[0]; // no digit is wider than the first
    t_32u counts[Radix<T>::passes][bins];

    Histograms() { clear(&counts[0][0], i64{Radix<T>::passes} * bins); }
    ORV_INLINE void count(typename Radix<T>::Key key)
    {
        for_each_pass([&](auto pass) ORV_INLINE_LAMBDA { ++counts[pass][Radix<T>::template digit<pass>(key)]; });
    }
    void places_from_counts()
    {
        for (auto& histogram : counts) {
            t_32u place = static_cast<t_32u>(-1);
            for (t_32u& bin : histogram) {
                const t_32u here = bin;
                bin = place;
                place += here;
            }
        }
    }
    template <int pass> ORV_INLINE t_32u place(typename Radix<T>::Key key)
    {
        return ++counts[pass][Radix<T>::template digit<pass>(key)];
    }

    template <class F> ORV_INLINE static void for_each_pass(F f)
    {
        [&]<int... pass>(std::integer_sequence<int, pass...>) ORV_INLINE_LAMBDA
        {
            (f(std::integral_constant<int, pass>{}), ...);
        }
        (std::make_integer_sequence<int, Radix<T>::passes>());
    }
};

} // namespace orv::dft
