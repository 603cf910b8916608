// Real transforms of any length by their records. Of an even length, pairs of neighbours are the elements of a complex
// transform of half the length, whose results are recombined.
#include "dft/primitives/dft/call.h"
#include "dft/primitives/dft/complex.h"
#include "dft/primitives/dft/recombine.h"
#include "dft/primitives/fft.h"

namespace orv::dft::general {
namespace {

template <class R> void recombine_perm(const R* src, R* dst, i32 m, const cpx<R>* twiddles)
{
    recombine_inverse(src, places(Layout::perm, 2 * i64{m}), dst, m, twiddles);
}

// What one type's transforms are called.
template <class R> struct Names;
#define ORV_DFT_NAMES(t)                                                                                               \
    template <> struct Names<t_##t> {                                                                                  \
        static constexpr Fft<t_##t>*forward[] = {DFT(ympsFFTFwd_RToPerm_##t), DFT(ympsFFTFwd_RToPack_##t),             \
                                                 DFT(ympsFFTFwd_RToCCS_##t)},                                          \
                         *inverse[] = {DFT(ympsFFTInv_PermToR_##t), DFT(ympsFFTInv_PackToR_##t),                       \
                                       DFT(ympsFFTInv_CCSToR_##t)};                                                    \
        static constexpr auto& recombine = DFT(ownsrDftFwdRecombine_##t);                                              \
        static constexpr auto& forward_by_factors = DFT(ownsrDftFwd_PrimeFact_##t);                                    \
        static constexpr auto& inverse_by_factors = DFT(ownsrDftInv_PrimeFact_##t);                                    \
        static constexpr auto& direct = DFT(ownsrDft_Dir_##t);                                                         \
        static constexpr auto& convolution = DFT(ownsrDft_Conv_##t);                                                   \
        static constexpr Kind kind = Kind::R_##t;                                                                      \
    };
ORV_DFT_REAL(ORV_DFT_NAMES)
#undef ORV_DFT_NAMES

template <bool forward, class R> i32 odd(const YmpDftSpec& spec, const R* src, R* dst, t_8u* work)
{
    using N = Names<R>;
    constexpr i32 sign = forward ? 1 : -1;
    if (spec.prime_fact) return (forward ? N::forward_by_factors : N::inverse_by_factors)(&spec, src, dst, work), ok;
    if (spec.conv_length == 0) return N::direct(src, dst, spec.length, sign, spec.direct_table, work), ok;
    return N::convolution(&spec, src, dst, spec.length, sign, work);
}

template <class R> Interleaved<R> as_pairs(const R* p) { return array(reinterpret_cast<const cpx<R>*>(p)); }

// The transforms without scale, to and from Perm or from any layout.
template <class R> i32 forward_to_perm(const YmpDftSpec& spec, const R* src, R* dst, t_8u* work)
{
    if (spec.length % 2 != 0) return odd<true>(spec, src, dst, work);
    const i32 m = spec.length / 2;
    const i32 status = run<true>(spec, m, as_pairs(src), as_pairs(dst), work);
    if (status == ok) Names<R>::recombine(dst, dst, m, static_cast<const cpx<R>*>(spec.recombine_forward));
    return status;
}
template <class R> i32 inverse_from(Layout layout, const YmpDftSpec& spec, const R* src, R* dst, t_8u* work)
{
    if (spec.length % 2 != 0) {
        if (layout == Layout::ccs) to_perm(layout, src, dst, spec.length), src = dst;
        return odd<false>(spec, src, dst, work);
    }
    const i32 m = spec.length / 2;
    auto* const half = reinterpret_cast<R*>(work);
    recombine_inverse(src, places(layout, spec.length), half, m, static_cast<const cpx<R>*>(spec.recombine_inverse));
    return run<false>(spec, m, as_pairs(half), as_pairs(dst), work + area_of_half<R>(m));
}

template <bool is_forward, class R>
i32 transform(Layout layout, const R* src, R* dst, const YmpDftSpec* record, t_8u* buffer)
{
    using N = Names<R>;
    using Body = Bodies<Reals<R>, is_forward>;
    if (record == nullptr || src == nullptr || dst == nullptr) return null_pointer;
    const YmpDftSpec& spec = record_of(record);
    if (spec.id != N::kind) return bad_record;
    const i32 n = spec.length;
    const WorkArea area(spec.buffer_bytes, buffer);
    if (area.missing()) return no_memory;
    if (spec.is_pow2)
        return (is_forward ? N::forward : N::inverse)[static_cast<int>(layout)](src, dst, spec.fft_spec, area.begin());

    const bool scaled = is_forward ? spec.scale_forward : spec.scale_inverse;
    const auto norm = static_cast<R>(spec.norm);
    i32 status = ok;
    if (n <= longest_fixed) {
        R perm[longest_fixed];
        if (!is_forward) to_perm(layout, src, perm, n), src = perm;
        if (scaled) Body::scaled.of[n](norm, src, dst);
        else Body::fixed.of[n](src, dst);
    } else {
        if constexpr (is_forward) status = forward_to_perm(spec, src, dst, area.begin());
        else status = inverse_from(layout, spec, src, dst, area.begin());
        if (status == ok && scaled) multiply(norm, dst, n);
    }
    if (status == ok && is_forward) from_perm(layout, dst, n);
    return status;
}

template <Layout layout, class R> i32 forward(const R* src, R* dst, const YmpDftSpec* spec, t_8u* buffer)
{
    return transform<true>(layout, src, dst, spec, buffer);
}
// In place, CCS leaves a value behind the reals.
template <Layout layout, class R> i32 inverse(const R* src, R* dst, const YmpDftSpec* spec, t_8u* buffer)
{
    const i32 status = transform<false>(layout, src, dst, spec, buffer);
    if (status == ok && layout == Layout::ccs && src == dst) dst[record_of(spec).length] = 0;
    return status;
}

} // namespace

#define LAYOUT(Name, layout, t)                                                                                        \
    PRIMITIVE(4, ympsDFTFwd_RTo##Name##_##t, forward<layout>)                                                          \
    PRIMITIVE(4, ympsDFTInv_##Name##ToR_##t, inverse<layout>)
#define REAL(t)                                                                                                        \
    LAYOUT(Perm, Layout::perm, t)                                                                                      \
    LAYOUT(Pack, Layout::pack, t)                                                                                      \
    LAYOUT(CCS, Layout::ccs, t)                                                                                        \
    PRIMITIVE(4, ownsrDftFwdRecombine_##t, recombine_forward)                                                          \
    PRIMITIVE(4, ownsrDftInvRecombine_##t, recombine_perm)
ORV_DFT_REAL(REAL)

} // namespace orv::dft::general
