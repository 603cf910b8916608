// Radix sorts. One pass over the data counts all digits; then each pass scatters by one digit, from the lowest on,
// which keeps equal elements in order. Data and temp take turns, and the last pass ends where the result belongs.
#include "dft/primitives/radix.h"

namespace orv::dft {
namespace {

// to[place of element i] := element(i), by digit `pass` of key(i).
template <int pass, class T, class To, class Key, class Element>
ORV_INLINE void scatter(To* to, i32 n, Histograms<T>& histograms, Key key, Element element)
{
    constexpr i32 together = 256;
    t_32u places[together];
    for (i32 i = 0; i < n; i += together) {
        const i32 count = n - i < together ? n - i : together;
        for (i32 j = 0; j < count; ++j) {
            places[j] = histograms.template place<pass>(key(i + j));
            prefetch(to + places[j]);
        }
        for (i32 j = 0; j < count; ++j) to[places[j]] = element(i + j);
    }
}

template <Direction d, class T> i32 sort(T* data, T* temp, i32 n)
{
    if (const Status s = refusal(n, data, temp)) return s;
    using R = Radix<T>;
    using Key = typename R::Key;
    Histograms<T> histograms;
    Key *from = reinterpret_cast<Key*>(data), *to = reinterpret_cast<Key*>(temp);
    // An even number of passes starts at data.
    Key* keys = R::passes % 2 == 0 ? from : to;
#pragma GCC unroll 12
    for (i32 i = 0; i < n; ++i) {
        const Key key = R::template encode<d>(from[i]);
        keys[i] = key;
        histograms.count(key);
    }
    histograms.places_from_counts();
    if (keys == to) to = from, from = keys;
    histograms.for_each_pass([&](auto pass) ORV_INLINE_LAMBDA {
        const auto key = [=](i32 i) ORV_INLINE_LAMBDA { return from[i]; };
        const auto element = [=](i32 i) ORV_INLINE_LAMBDA {
            return pass == R::passes - 1 ? R::template decode<d>(from[i]) : from[i];
        };
        scatter<pass>(to, n, histograms, key, element);
        Key* next = to;
        to = from, from = next;
    });
    return ok;
}

// The element that stands so many strides behind the first one.
template <class T> struct StridedKeys {
    const char* first;
    i64 stride;
    ORV_INLINE typename Radix<T>::Key operator[](i64 i) const
    {
        typename Radix<T>::Key x;
        __builtin_memcpy(&x, first + i * stride, sizeof x);
        return x;
    }
};

template <Direction d, class T> i32 sort_index(const T* keys, i32 key_stride, i32* index, i32* temp, i32 n)
{
    if (const Status s = refusal(n, keys, index, temp)) return s;
    using R = Radix<T>;
    const StridedKeys<T> elements{reinterpret_cast<const char*>(keys), key_stride};
    const auto key = [=](i64 i) ORV_INLINE_LAMBDA { return R::template encode<d>(elements[i]); };
    Histograms<T> histograms;
#pragma GCC unroll 12
    for (i32 i = 0; i < n; ++i) histograms.count(key(i));
    histograms.places_from_counts();
    i32 *to = R::passes % 2 == 0 ? temp : index, *from = R::passes % 2 == 0 ? index : temp;
    histograms.for_each_pass([&](auto pass) ORV_INLINE_LAMBDA {
        const auto element = [=](i32 i) ORV_INLINE_LAMBDA { return pass == 0 ? i : from[i]; };
        const auto key_of = [=](i32 i) ORV_INLINE_LAMBDA { return key(element(i)); };
        scatter<pass>(to, n, histograms, key_of, element);
        i32* next = to;
        to = from, from = next;
    });
    return ok;
}

} // namespace

#define SORT(t)                                                                                                        \
    PRIMITIVE(3, ympsSortRadixAscend_##t##_I, sort<Direction::ascend>)                                                 \
    PRIMITIVE(3, ympsSortRadixDescend_##t##_I, sort<Direction::descend>)
ORV_DFT_SORTED(SORT)

#define SORT_INDEX(t)                                                                                                  \
    PRIMITIVE(5, ympsSortRadixIndexAscend_##t, sort_index<Direction::ascend>)                                          \
    PRIMITIVE(5, ympsSortRadixIndexDescend_##t, sort_index<Direction::descend>)
ORV_DFT_SORTED_BY_INDEX(SORT_INDEX)

} // namespace orv::dft
