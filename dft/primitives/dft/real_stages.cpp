// The stages of real transforms of odd length. Forward they are decimated in time and go from the last factor to the
// first; the inverse goes back the same way, decimated in frequency.
#include "dft/primitives/dft/real_stages.h"
#include "dft/primitives/dft/kernels.h"

namespace orv::dft::general {
namespace {

template <class R> R* writable(const R* p) { return const_cast<R*>(p); }

// r reals that stand stride apart, from starts[b] on, and their spectra behind one another; and back.
template <int r, class R> ORV_INLINE void split_up(const R* src, R* dst, i64 stride, i32 number, const i32* starts)
{
    for (i64 b = 0; b < number; ++b) {
        const R* const x = src + starts[b];
        const HalfPoints<R> spectrum{dst + r * b, r, 1};
        real_forward<r, R>([=](int j) ORV_INLINE_LAMBDA { return x[j * stride]; },
                           [=](auto k, pairs<R> point) ORV_INLINE_LAMBDA { spectrum.put(k, point); });
    }
}
template <int r, class R> ORV_INLINE void put_together(const R* src, R* dst, i64 stride, i32 number, const i32* starts)
{
    for (i64 b = 0; b < number; ++b) {
        R* const x = dst + starts[b];
        const HalfPoints<R> spectrum{writable(src) + r * b, r, 1};
        real_inverse<r, R>([=](int k) ORV_INLINE_LAMBDA { return spectrum.get(k); },
                           [=](int j, R value) ORV_INLINE_LAMBDA { x[j * stride] = value; });
    }
}

// Column 0 of a block is real, and its transform the points of the block's spectrum that are count apart.
template <int r, class R> ORV_INLINE void join(const R* src, R* dst, i64 count, i32 blocks, const R* twiddles)
{
    for (i64 b = 0; b < blocks; ++b, src += r * count, dst += r * count) {
        const HalfPoints<R> spectrum{dst, r, count};
        real_forward<r, R>([=](int j) ORV_INLINE_LAMBDA { return src[j * count]; },
                           [=](auto k, pairs<R> point) ORV_INLINE_LAMBDA { spectrum.put(k, point); });
        columns<r, true, Decimation::in_time>(HalfRows<R>{writable(src), count}, HalfSpectrum<R>{dst, count, r}, 1,
                                              (count + 1) / 2, twiddles);
    }
}
template <int r, class R> ORV_INLINE void part(const R* src, R* dst, i64 count, i32 blocks, const R* twiddles)
{
    for (i64 b = 0; b < blocks; ++b, src += r * count, dst += r * count) {
        const HalfPoints<R> spectrum{writable(src), r, count};
        real_inverse<r, R>([=](int k) ORV_INLINE_LAMBDA { return spectrum.get(k); },
                           [=](int j, R value) ORV_INLINE_LAMBDA { dst[j * count] = value; });
        columns<r, false, Decimation::in_frequency>(HalfSpectrum<R>{writable(src), count, r}, HalfRows<R>{dst, count},
                                                    1, (count + 1) / 2, twiddles);
    }
}

// The same for any radix.
template <class R> void any_split_up(const R* src, R* dst, i32 r, i32 stride, const void* table, t_8u* work)
{
    const HalfPoints<R> spectrum{dst, r, 1};
    any_real_forward<R>(
        r, {table, r}, work, [=](i64 j) ORV_INLINE_LAMBDA { return src[j * stride]; },
        [=](i64 k, pairs<R> point) ORV_INLINE_LAMBDA { spectrum.put(k, point); });
}
template <class R> void any_put_together(const R* src, R* dst, i32 r, i32 stride, const void* table, t_8u* work)
{
    const HalfPoints<R> spectrum{writable(src), r, 1};
    any_real_inverse<R>(
        r, {table, r}, work, [=](i64 k) ORV_INLINE_LAMBDA { return spectrum.get(k); },
        [=](i64 j, R value) ORV_INLINE_LAMBDA { dst[j * stride] = value; });
}
template <class R>
void any_join(const R* src, R* dst, i32 r, i32 count, const R* twiddles, const void* table, t_8u* work)
{
    const HalfPoints<R> spectrum{dst, r, count};
    any_real_forward<R>(
        r, {table, r}, work, [=](i64 j) ORV_INLINE_LAMBDA { return src[j * count]; },
        [=](i64 k, pairs<R> point) ORV_INLINE_LAMBDA { spectrum.put(k, point); });
    any_columns<true, Decimation::in_time, R>(HalfRows<R>{writable(src), count}, HalfSpectrum<R>{dst, count, r}, r, 1,
                                              (count + 1) / 2, twiddles, {table, r}, work);
}
template <class R>
void any_part(const R* src, R* dst, i32 r, i32 count, const R* twiddles, const void* table, t_8u* work)
{
    const HalfPoints<R> spectrum{writable(src), r, count};
    any_real_inverse<R>(
        r, {table, r}, work, [=](i64 k) ORV_INLINE_LAMBDA { return spectrum.get(k); },
        [=](i64 j, R value) ORV_INLINE_LAMBDA { dst[j * count] = value; });
    any_columns<false, Decimation::in_frequency, R>(HalfSpectrum<R>{writable(src), count, r}, HalfRows<R>{dst, count},
                                                    r, 1, (count + 1) / 2, twiddles, {table, r}, work);
}

} // namespace

#define RADIX(r, t)                                                                                                    \
    PRIMITIVE(5, ownsrDftFwd_Prime##r##_##t, split_up<r>)                                                              \
    PRIMITIVE(5, ownsrDftInv_Prime##r##_##t, put_together<r>)                                                          \
    PRIMITIVE(5, ownsrDftFwd_Fact##r##_##t, join<r>)                                                                   \
    PRIMITIVE(5, ownsrDftInv_Fact##r##_##t, part<r>)
#define STAGES(t)                                                                                                      \
    ORV_DFT_ODD_RADIXES(RADIX, t)                                                                                      \
    PRIMITIVE(6, ownsrDftFwd_Prime_##t, any_split_up)                                                                  \
    PRIMITIVE(6, ownsrDftInv_Prime_##t, any_put_together)                                                              \
    PRIMITIVE(7, ownsrDftFwd_Fact_##t, any_join)                                                                       \
    PRIMITIVE(7, ownsrDftInv_Fact_##t, any_part)
ORV_DFT_REAL(STAGES)

} // namespace orv::dft::general
