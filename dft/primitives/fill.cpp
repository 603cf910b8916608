// Zeros, a value, or another array. Nothing reads or writes outside of the arrays; they may stand at any address. A
// copy onto itself changes nothing; arrays must not overlap otherwise.
#include "dft/primitives/members.h"
#include "frame/simd_int.h"

namespace orv::dft {
namespace {

// Writes n elements, register by register: from(offset) gives the bytes that belong at that offset, single(i) element
// i. The first and the last register go to wherever the array begins and ends, all between to boundaries; so some bytes
// are written twice.
template <class T, class From, class Single> ORV_INLINE void write(T* dst, i64 n, From from, Single single)
{
    const i64 bytes = n * static_cast<i64>(sizeof(T));
    if (bytes < vector_bytes) {
        for (i64 i = 0; i < n; ++i) dst[i] = single(i);
        return;
    }
    auto* to = reinterpret_cast<char*>(dst);
    const auto put = [&](i64 at) ORV_INLINE_LAMBDA { _mm_storeu_si128(reinterpret_cast<__m128i*>(to + at), from(at)); };
    const auto last = from(bytes - vector_bytes);
    put(0);
    // A register's start keeps the phase of the elements, or the boundary cannot be had.
    const i64 gap = static_cast<i64>(-reinterpret_cast<std::uintptr_t>(dst) % vector_bytes);
    i64 at = gap % static_cast<i64>(sizeof(T)) == 0 ? gap : vector_bytes;
    for (; at <= bytes - 4 * vector_bytes; at += 4 * vector_bytes)
        for (int k = 0; k < 4; ++k) put(at + k * vector_bytes);
    for (; at <= bytes - vector_bytes; at += vector_bytes) put(at);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + bytes - vector_bytes), last);
}

template <class T> void set(constant<T> c, T* dst, i64 n)
{
    const T value = value_of(c);
    T pattern[vector_bytes / sizeof(T)];
    for (T& element : pattern) element = value;
    const auto filled = load_words<false>(pattern);
    write(
        dst, n, [=](i64) ORV_INLINE_LAMBDA { return filled.r; }, [=](i64) ORV_INLINE_LAMBDA { return value; });
}

void clear_bytes(t_8u* dst, i64 bytes) { set<t_8u>(0, dst, bytes); }

void copy_bytes(const t_8u* src, t_8u* dst, i64 bytes)
{
    write(
        dst, bytes, [=](i64 at) ORV_INLINE_LAMBDA { return load_words<false>(src + at).r; },
        [=](i64 i) ORV_INLINE_LAMBDA { return src[i]; });
}

template <class T> i32 clear_all(T* dst, i32 n)
{
    if (const Status s = refusal(n, dst)) return s;
    clear(dst, n);
    return ok;
}
template <class T> i32 copy_all(const T* src, T* dst, i32 n)
{
    if (const Status s = refusal(n, src, dst)) return s;
    copy(src, dst, n);
    return ok;
}

// The worker of a width takes the bits of any type of that width.
template <auto& worker, class T> i32 fill(constant<T> c, T* dst, i32 n)
{
    if (const Status s = refusal(n, constant_pointer(c), dst)) return s;
    using Bits = std::remove_pointer_t<value_argument<worker, 1>>;
    static_assert(sizeof(Bits) == sizeof(T));
    if constexpr (is_complex<Bits>) worker(reinterpret_cast<const Bits*>(c), reinterpret_cast<Bits*>(dst), n);
    else worker(__builtin_bit_cast(Bits, value_of(c)), reinterpret_cast<Bits*>(dst), n);
    return ok;
}

} // namespace

PRIMITIVE(2, ownsZero_8u, clear_bytes)
PRIMITIVE(3, ownsCopy_8u, copy_bytes)
PRIMITIVE(3, ownsSet_8u_M7, set<t_8u>)
PRIMITIVE(3, ownsSet_16u_M7, set<t_16u>)
PRIMITIVE(3, ownsSet_32s_M7, set<t_32s>)
PRIMITIVE(3, ownsSet_64s_M7, set<t_64s>)
PRIMITIVE(3, ownsSet_64sc_M7, set<t_64sc>)

#define WHOLE_ARRAY(t)                                                                                                 \
    PRIMITIVE(2, ympsZero_##t, clear_all)                                                                              \
    PRIMITIVE(3, ympsCopy_##t, copy_all)
ORV_DFT_FILLED(WHOLE_ARRAY)

#define SET(t, worker) PRIMITIVE(3, ympsSet_##t, fill<DFT(worker), t_##t>)
SET(8u, ownsSet_8u_M7)
SET(16s, ownsSet_16u_M7)
SET(16sc, ownsSet_32s_M7)
SET(32s, ownsSet_32s_M7)
SET(32f, ownsSet_32s_M7)
SET(32sc, ownsSet_64s_M7)
SET(64s, ownsSet_64s_M7)
SET(32fc, ownsSet_64s_M7)
SET(64f, ownsSet_64s_M7)
SET(64sc, ownsSet_64sc_M7)
SET(64fc, ownsSet_64sc_M7)

} // namespace orv::dft
