// Products of two arrays, and of an array and a constant.
//
// Of integers, the constant 0 gives zeros, and the constant 1 without a factor is a copy.
#include "dft/primitives/scaled.h"

namespace orv::dft {
namespace {

// With any constant but one, a sum of two products of 16 bits stays within 32.
constexpr t_16sc both_lowest{INT16_MIN, INT16_MIN};
template <class T> using ByMost = std::conditional_t<std::is_same_v<T, t_16sc>, ProductInRange, Product>;

template <class T> void scaled_by_constant(const T* a, T c, T* dst, i32 n, i32 factor)
{
    const Array<T> from{a};
    const Constant<T> by{c};
    if (c == T{}) return clear(dst, n);
    if (c == one<T> && factor == 0) return copy(a, dst, n);
    if constexpr (std::is_same_v<T, t_16sc>)
        if (c == both_lowest) return scaled<Product>(from, by, dst, n, factor);
    scaled<ByMost<T>>(from, by, dst, n, factor);
}

template <class T> i32 multiply(const T* a, const T* b, T* dst, i32 n, i32 factor = 0)
{
    if (const Status s = refusal(n, a, b, dst)) return s;
    scaled<Product>(Array<T>{a}, Array<T>{b}, dst, n, factor);
    return ok;
}
template <class T> i32 multiply_in_place(const T* a, T* dst, i32 n, i32 factor = 0)
{
    return multiply(a, static_cast<const T*>(dst), dst, n, factor);
}

template <class C, class T> i32 multiply_by_constant(const T* a, C c, T* dst, i32 n, i32 factor = 0)
{
    if (const Status s = refusal(n, a, constant_pointer(c), dst)) return s;
    if constexpr (is_floating<T>) work<Product, Law::factor>(Array<T>{a}, Constant<T>{value_of(c)}, dst, n);
    else scaled_by_constant(a, value_of(c), dst, n, factor);
    return ok;
}
template <class C, class T> i32 multiply_by_constant_in_place(C c, T* dst, i32 n, i32 factor = 0)
{
    return multiply_by_constant(static_cast<const T*>(dst), c, dst, n, factor);
}

template <class T> void multiply_three(const T* a, const T* b, const T* c, T* dst, i32 n)
{
    work<Product, Law::factor>(Products<T, Product>{{a}, {b}}, Array<T>{c}, dst, n);
}

// The exact product of two floats is a double, and so is every multiple of it that the factor makes. 2^400 and 2^-400
// do to the smallest and the largest of them what any power beyond does.
i32 multiply_to_16s(const t_32f* src, t_32f c, t_16s* dst, i32 n, i32 factor = 0)
{
    if (const Status s = refusal(n, src, dst)) return s;
    const i64 exponent = clamp(-i64{factor}, -400, 400);
    const __m128d by = _mm_set1_pd(c * __builtin_bit_cast(double, (exponent + 1023) << 52));
    const __m128d low = _mm_set1_pd(INT16_MIN), high = _mm_set1_pd(INT16_MAX);
    // NaN passes both bounds, and converts to the lowest integer.
    const auto rounded = [=](__m128 x) ORV_INLINE_LAMBDA {
        return _mm_cvtpd_epi32(_mm_max_pd(low, _mm_min_pd(high, _mm_cvtps_pd(x) * by)));
    };
    const auto narrow = [](__m128i four) ORV_INLINE_LAMBDA { return _mm_packs_epi32(four, four); };
    i32 i = 0;
    for (; i <= n - 4; i += 4) {
        const __m128 x = loadu(src + i).r;
        const __m128i four = _mm_unpacklo_epi64(rounded(x), rounded(_mm_movehl_ps(x, x)));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(dst + i), narrow(four));
    }
    for (; i < n; ++i) dst[i] = static_cast<t_16s>(_mm_cvtsi128_si32(narrow(rounded(_mm_load_ss(src + i)))));
    return ok;
}

} // namespace

#define PLAIN(t)                                                                                                       \
    PRIMITIVE(4, ympsMul_##t, multiply)                                                                                \
    PRIMITIVE(3, ympsMul_##t##_I, multiply_in_place)                                                                   \
    PRIMITIVE(4, ympsMulC_##t, multiply_by_constant)                                                                   \
    PRIMITIVE(3, ympsMulC_##t##_I, multiply_by_constant_in_place)
ORV_DFT_FLOATING(PLAIN)
PLAIN(16s)

#define SCALED(t)                                                                                                      \
    PRIMITIVE(5, ympsMul_##t##_Sfs, multiply)                                                                          \
    PRIMITIVE(4, ympsMul_##t##_ISfs, multiply_in_place)                                                                \
    PRIMITIVE(5, ympsMulC_##t##_Sfs, multiply_by_constant)                                                             \
    PRIMITIVE(4, ympsMulC_##t##_ISfs, multiply_by_constant_in_place)
ORV_DFT_SCALED(SCALED)

PRIMITIVE(4, ympsMulC_Low_32f16s, multiply_to_16s)
PRIMITIVE(5, ympsMulC_32f16s_Sfs, multiply_to_16s)

#define WORKERS(t, law, ...)                                                                                           \
    ORV_DFT_WORKER(TwoArrays, Product, Mul, t, law, __VA_ARGS__)                                                       \
    ORV_DFT_WORKER(ArrayAndConstant, ByMost<t_##t>, MulC, t, law, __VA_ARGS__)
ORV_DFT_WORKERS(WORKERS)

#define LOWEST(name, law, count) PRIMITIVE(count, ownsMulC_16sc_I_##name, ArrayAndConstant<Product, Law::law>::in_place)
LOWEST(Ovf, factor, 3)
LOWEST(1OvfSfs, factor_1Sfs, 3)
LOWEST(PosOvfSfs, factor_PosSfs, 4)
LOWEST(NegOvfSfs, factor_NegSfs, 4)
LOWEST(BoundOvf, factor_Bound, 3)

#define SEVERAL(t)                                                                                                     \
    PRIMITIVE(4, ownps_Mpy2_##t, TwoArrays<Product, Law::factor>::apart)                                               \
    PRIMITIVE(5, ownps_Mpy3_##t, multiply_three)
ORV_DFT_FLOATING(SEVERAL)

} // namespace orv::dft
