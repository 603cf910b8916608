// Registers of integers, beside those of reals in frame/simd.h. A register of words<T> holds elements of 16 bits or
// pairs of them; products of them are 32 bits wide and take two registers, in the order of the elements.
#pragma once

#include "frame/simd.h"

namespace orv {

static_assert(vector_bytes == 16, "the instructions below are of this width");

using i16 = std::int16_t;
using i32s = i32 __attribute__((vector_size(vector_bytes))); // with the operators of the language, lane by lane

template <class T> struct words {
    static constexpr int lanes = vector_bytes / sizeof(T);
    __m128i r;
};

template <bool aligned, class T> ORV_INLINE words<T> load_words(const T* p)
{
    const auto* at = reinterpret_cast<const __m128i*>(p);
    return {aligned ? _mm_load_si128(at) : _mm_loadu_si128(at)};
}
template <class T> ORV_INLINE void storeu(T* p, words<T> v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v.r); }

ORV_INLINE words<i16> splat_words(i16 c) { return {_mm_set1_epi16(c)}; }
ORV_INLINE words<cpx<i16>> splat_words(cpx<i16> c)
{
    return {_mm_setr_epi16(c.re, c.im, c.re, c.im, c.re, c.im, c.re, c.im)};
}

// The 32-bit lanes of as many elements as a register of 16-bit lanes has.
struct wide {
    i32s low, high;
};
ORV_INLINE i32s lanes32(__m128i r) { return reinterpret_cast<i32s>(r); }
ORV_INLINE __m128i bits(i32s v) { return reinterpret_cast<__m128i>(v); }

// Halves of each 32-bit result, or results of even and odd lanes, side by side in the order of the elements.
ORV_INLINE wide interleave16(__m128i lower, __m128i upper)
{
    return {lanes32(_mm_unpacklo_epi16(lower, upper)), lanes32(_mm_unpackhi_epi16(lower, upper))};
}
ORV_INLINE wide interleave32(i32s even, i32s odd)
{
    return {lanes32(_mm_unpacklo_epi32(bits(even), bits(odd))), lanes32(_mm_unpackhi_epi32(bits(even), bits(odd)))};
}
template <class T> ORV_INLINE words<T> saturated(wide v) { return {_mm_packs_epi32(bits(v.low), bits(v.high))}; }

ORV_INLINE wide products(words<i16> a, words<i16> b)
{
    return interleave16(_mm_mullo_epi16(a.r, b.r), _mm_mulhi_epi16(a.r, b.r));
}
template <class T> ORV_INLINE wide sums(words<T> a, words<T> b)
{
    const auto widened = [](__m128i r) { return interleave16(r, _mm_srai_epi16(r, 15)); };
    const wide x = widened(a.r), y = widened(b.r);
    return {x.low + y.low, x.high + y.high};
}

// A sum of two products of 16 bits leaves 32 bits in one case, -32768 four times, and is the lowest number only then.
// The highest number stands for it: one less, which no scaling by a power of two and rounding to 16 bits can tell.
ORV_INLINE i32s mend_overflow(i32s v) { return v ^ (v == INT32_MIN); }

ORV_INLINE words<cpx<i16>> swap_parts(words<cpx<i16>> a)
{
    return {_mm_or_si128(_mm_slli_epi32(a.r, 16), _mm_srli_epi32(a.r, 16))};
}

// Parts of products of pairs, as pairs of 32 bits. -x is ~x + 1, which exists for the lowest number too. mend: whether
// all four parts may be the lowest.
template <bool mend> ORV_INLINE wide products(words<cpx<i16>> a, words<cpx<i16>> b)
{
    const __m128i not_im = _mm_xor_si128(b.r, _mm_set1_epi32(INT32_MIN >> 15)); // (re, ~im)
    const i32s re = lanes32(_mm_add_epi32(_mm_madd_epi16(a.r, not_im), _mm_srai_epi32(a.r, 16)));
    const i32s im = lanes32(_mm_madd_epi16(a.r, swap_parts(b).r));
    return interleave32(re, mend ? mend_overflow(im) : im);
}
ORV_INLINE wide conjugate_products(words<cpx<i16>> a, words<cpx<i16>> b)
{
    const i32s re = mend_overflow(lanes32(_mm_madd_epi16(a.r, b.r)));
    const __m128i not_im = _mm_xor_si128(swap_parts(b).r, _mm_set1_epi32(0xffff)); // (~im, re)
    const __m128i a_re = _mm_srai_epi32(_mm_slli_epi32(a.r, 16), 16);
    const i32s im = lanes32(_mm_add_epi32(_mm_madd_epi16(a.r, not_im), a_re));
    return interleave32(re, im);
}

} // namespace orv
