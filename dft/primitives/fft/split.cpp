// Complex transforms of numbers in two arrays: the checks, and which way an order goes.
#include "dft/primitives/fft/record.h"

namespace orv::dft {
namespace {

template <class R> struct Engine;
#define ENGINE(t)                                                                                                      \
    template <> struct Engine<t_##t> {                                                                                 \
        static constexpr Kind kind = Kind::C_##t;                                                                      \
        static constexpr FixedSplitFft<t_##t>* fixed[] = ORV_DFT_FIXED_KERNELS(cr, fwd, _, t);                         \
        static constexpr FixedSplitFft<t_##t, t_##t>* scaled[] = ORV_DFT_FIXED_KERNELS(cr, fwd, _scale_, t);           \
        static constexpr auto& flat = DFT(ymps_crRadix4FwdNorm_##t);                                                   \
        static constexpr auto& large_forward = DFT(ymps_crFftFwd_Large_##t);                                           \
        static constexpr auto& large_inverse = DFT(ymps_crFftInv_Large_##t);                                           \
    };
ORV_DFT_REAL(ENGINE)

template <bool forward, class R>
i32 transform_split(const R* src_re, const R* src_im, R* dst_re, R* dst_im, const YmpFftSpec* spec, t_8u* buffer)
{
    using Way = Engine<R>;
    if (const Status s = refusal_of(spec, Way::kind, src_re, src_im, dst_re, dst_im)) return s;
    const i32 order = spec->order;
    const WorkArea work(*spec, buffer);
    if (work.missing()) return no_memory;
    if (order > flat_limit<R>) {
        const auto& large = forward ? Way::large_forward : Way::large_inverse;
        large(spec, src_re, src_im, dst_re, dst_im, order, work.as<t_8u>());
        return ok;
    }
    // An inverse is the forward transform with both arrays exchanged.
    if (!forward) std::swap(src_re, src_im), std::swap(dst_re, dst_im);
    const bool division = divides<forward>(*spec);
    const i64 n = i64{1} << order;
    if (order <= fixed_limit) {
        if (division) Way::scaled[order](static_cast<R>(spec->norm), src_re, src_im, dst_re, dst_im);
        else Way::fixed[order](src_re, src_im, dst_re, dst_im);
        return ok;
    }
    Way::flat(src_re, src_im, dst_re, dst_im, static_cast<i32>(n), static_cast<const R*>(spec->twiddle_table),
              spec->bit_reverse_table, work.as<R>(), dst_re);
    if (division) multiply(dst_re, n, spec->norm), multiply(dst_im, n, spec->norm);
    return ok;
}
template <bool forward, class R> i32 transform_in_place(R* re, R* im, const YmpFftSpec* spec, t_8u* buffer)
{
    return transform_split<forward, R>(re, im, re, im, spec, buffer);
}

} // namespace

#define SPLIT(t)                                                                                                       \
    PRIMITIVE(6, ympsFFTFwd_CToC_##t, transform_split<true>)                                                           \
    PRIMITIVE(6, ympsFFTInv_CToC_##t, transform_split<false>)                                                          \
    PRIMITIVE(4, ympsFFTFwd_CToC_##t##_I, transform_in_place<true>)                                                    \
    PRIMITIVE(4, ympsFFTInv_CToC_##t##_I, transform_in_place<false>)
ORV_DFT_REAL(SPLIT)

} // namespace orv::dft
