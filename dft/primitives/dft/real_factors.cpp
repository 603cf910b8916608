// Real transforms of odd length that need a record: between reals and a spectrum in Pack, which for odd lengths is
// Perm.
#include "dft/primitives/dft/chirp.h"
#include "dft/primitives/dft/factors.h"
#include "dft/primitives/dft/real_stages.h"

namespace orv::dft::general {
namespace {

// Between (Re X[k], Im X[k]) together and Re X[k] at k, Im X[k] at n-k.
template <class R> void to_pack(const R* half, R* pack, i64 n)
{
    pack[0] = half[0];
    for (i64 k = 1; 2 * k < n; ++k) pack[2 * k - 1] = half[k], pack[2 * k] = half[n - k];
}
template <class R> void from_pack(const R* pack, R* half, i64 n)
{
    half[0] = pack[0];
    for (i64 k = 1; 2 * k < n; ++k) half[k] = pack[2 * k - 1], half[n - k] = pack[2 * k];
}

template <class R> void forward_by_factors(const YmpDftSpec* spec, const R* src, R* dst, t_8u* work)
{
    const i64 n = points_of(*spec);
    auto* const half = reinterpret_cast<R*>(work);
    ByFactors<Reals<R>, true>(*spec, work + area_of_result<R>(n)).join({const_cast<R*>(src)}, {half}, {half});
    to_pack(half, dst, n);
}
template <class R> void inverse_by_factors(const YmpDftSpec* spec, const R* src, R* dst, t_8u* work)
{
    const i64 n = points_of(*spec);
    auto* const half = reinterpret_cast<R*>(work);
    from_pack(src, half, n);
    ByFactors<Reals<R>, false>(*spec, work + area_of_result<R>(n)).part({half}, {dst});
}

// Point k of a spectrum of odd length in Pack; beyond the middle it is a conjugate.
template <class R> struct Packed {
    R* p;
    i64 n;
    cpx<R>* place(i64 k) const { return reinterpret_cast<cpx<R>*>(p + 2 * k - 1); }
    ORV_INLINE pairs<R> get(i64 k) const
    {
        if (k == 0) return only_real(p[0]);
        return 2 * k < n ? load_first<1>(place(k)) : conj(load_first<1>(place(n - k)));
    }
    ORV_INLINE void put(i64 k, pairs<R> x) const
    {
        if (k == 0) p[0] = first_lane(x).re;
        else if (2 * k < n) store_first<1>(place(k), x);
        else store_first<1>(place(n - k), conj(x));
    }
};

template <class R> void direct(const R* src, R* dst, i32 n, i32 sign, const void* table, t_8u* work)
{
    if (sign < 0) {
        const Packed<R> spectrum{const_cast<R*>(src), n};
        any_real_inverse<R>(
            n, {table, n}, work, [=](i64 k) ORV_INLINE_LAMBDA { return spectrum.get(k); },
            [=](i64 j, R x) ORV_INLINE_LAMBDA { dst[j] = x; });
    } else {
        const Packed<R> spectrum{dst, n};
        any_real_forward<R>(
            n, {table, n}, work, [=](i64 j) ORV_INLINE_LAMBDA { return src[j]; },
            [=](i64 k, pairs<R> x) ORV_INLINE_LAMBDA { spectrum.put(k, x); });
    }
}

// Pairs of single numbers, each got by get(k) and put by put(k, x), where a register has several.
template <class R, class Get> ORV_INLINE auto one_by_one(Get get)
{
    return [=](auto lanes, i64 k) ORV_INLINE_LAMBDA {
        auto x = get(k);
        if constexpr (lanes == 2) x = first_pairs(x, get(k + 1));
        return x;
    };
}
template <class R, class Put> ORV_INLINE auto put_one_by_one(Put put)
{
    return [=](auto lanes, i64 k, pairs<R> x) ORV_INLINE_LAMBDA {
        put(k, x);
        if constexpr (lanes == 2) put(k + 1, second_pair(x));
    };
}

// An inverse is the forward transform of the conjugates, and its results are real: so they need no conjugation.
template <class R> i32 convolution(const YmpDftSpec* spec, const R* src, R* dst, i32 n, i32 sign, t_8u* work)
{
    if (sign < 0) {
        const Packed<R> spectrum{const_cast<R*>(src), n};
        return convolve<R>(*spec, n, n, work,
                           one_by_one<R>([=](i64 k) ORV_INLINE_LAMBDA { return conj(spectrum.get(k)); }),
                           put_one_by_one<R>([=](i64 j, pairs<R> x) ORV_INLINE_LAMBDA { dst[j] = first_lane(x).re; }));
    }
    const Packed<R> spectrum{dst, n};
    return convolve<R>(*spec, n, n / 2 + 1, work,
                       one_by_one<R>([=](i64 j) ORV_INLINE_LAMBDA { return only_real(src[j]); }),
                       put_one_by_one<R>([=](i64 k, pairs<R> x) ORV_INLINE_LAMBDA { spectrum.put(k, x); }));
}

} // namespace

#define REAL(t)                                                                                                        \
    PRIMITIVE(4, ownsrDftFwd_PrimeFact_##t, forward_by_factors)                                                        \
    PRIMITIVE(4, ownsrDftInv_PrimeFact_##t, inverse_by_factors)                                                        \
    PRIMITIVE(6, ownsrDft_Dir_##t, direct)                                                                             \
    PRIMITIVE(6, ownsrDft_Conv_##t, convolution)
ORV_DFT_REAL(REAL)

} // namespace orv::dft::general
