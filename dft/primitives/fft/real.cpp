// Real transforms: half as many pairs of neighbours go through the complex engine.
#include "dft/primitives/fft/recombine.h"
#include "dft/primitives/fft/record.h"
#include "dft/primitives/packed.h"

namespace orv::dft {
namespace {

template <class R> struct Engine;
#define ENGINE(t)                                                                                                      \
    template <> struct Engine<t_##t> {                                                                                 \
        static constexpr Kind kind = Kind::R_##t;                                                                      \
        static constexpr FixedFft<t_##t>* forward[] = ORV_DFT_FIXED_KERNELS(r, fwd, _, t);                             \
        static constexpr FixedFft<t_##t>* inverse[] = ORV_DFT_FIXED_KERNELS(r, inv, _, t);                             \
        static constexpr FixedFft<t_##t, t_##t>* forward_scaled[] = ORV_DFT_FIXED_KERNELS(r, fwd, _scale_, t);         \
        static constexpr FixedFft<t_##t, t_##t>* inverse_scaled[] = ORV_DFT_FIXED_KERNELS(r, inv, _scale_, t);         \
        static constexpr auto& complex_forward = DFT(ymps_cFFTfwd_32_##t##c);                                          \
        static constexpr auto& complex_inverse = DFT(ymps_cFFTinv_32_##t##c);                                          \
        static constexpr auto& flat_forward = DFT(ymps_cRadix4FwdNorm_##t##c);                                         \
        static constexpr auto& flat_inverse = DFT(ymps_cRadix4InvNorm_##t##c);                                         \
        static constexpr auto& large_forward = DFT(ymps_cFftFwd_Large_##t##c);                                         \
        static constexpr auto& large_inverse = DFT(ymps_cFftInv_Large_##t##c);                                         \
        static constexpr auto& recombine = DFT(ymps_cRealRecombine_##t);                                               \
        static constexpr auto& recombine_ccs = DFT(ymps_cCcsRecombine_##t);                                            \
    };
ORV_DFT_REAL(ENGINE)

template <class R> auto* pairs(R* p) { return reinterpret_cast<cpx<R>*>(p); }
template <class R> auto* pairs(const R* p) { return reinterpret_cast<const cpx<R>*>(p); }

// In place, between the transform of the pairs and Perm.
template <class R> void recombine_perm(R* data, i32 m, i32 direction, const R* twiddles)
{
    const cpx<R> ends{data[0] + data[1], data[0] - data[1]};
    if (direction > 0) recombine_all<true>(pairs(data), pairs(data), m, twiddles);
    else recombine_all<false>(pairs(data), pairs(data), m, twiddles);
    *pairs(data) = ends;
}
// Between the transform of the pairs and CCS, which has two reals more.
template <class R> void recombine_ccs(R* data, i32 m, i32 direction, const R* twiddles)
{
    const i64 n = 2 * i64{m};
    if (direction < 0) data[1] = data[n];
    recombine_perm(data, m, direction, twiddles);
    if (direction > 0) data[n] = data[1], data[1] = data[n + 1] = 0;
}

template <Layout layout, class R> i32 forward(const R* src, R* dst, const YmpFftSpec* spec, t_8u* buffer)
{
    using Way = Engine<R>;
    if (const Status s = refusal_of(spec, Way::kind, src, dst)) return s;
    const i32 order = spec->order;
    const i64 n = i64{1} << order;
    if (order <= fixed_limit) {
        if (divides<true>(*spec)) Way::forward_scaled[order](static_cast<R>(spec->norm), src, dst);
        else Way::forward[order](src, dst);
        from_perm(layout, dst, n);
        return ok;
    }
    const WorkArea work(*spec, buffer);
    if (work.missing()) return no_memory;
    const auto m = static_cast<i32>(n / 2);
    const bool large = order - 1 > flat_limit<R>;
    if (order - 1 == fixed_limit) Way::complex_forward(pairs(src), pairs(dst));
    else if (large) Way::large_forward(spec, pairs(src), pairs(dst), order - 1, work.as<t_8u>());
    else
        Way::flat_forward(pairs(src), pairs(dst), m, static_cast<const R*>(spec->twiddle_table),
                          spec->bit_reverse_table, work.as<cpx<R>>(), pairs(dst));
    if (divides<true>(*spec) && !large) multiply(dst, n, spec->norm);
    const R* const twiddles = static_cast<const R*>(spec->real_twiddles);
    if (layout == Layout::ccs) Way::recombine_ccs(dst, m, 1, twiddles);
    else {
        Way::recombine(dst, m, 1, twiddles);
        from_perm(layout, dst, n);
    }
    return ok;
}

template <Layout layout, class R> i32 inverse(const R* src, R* dst, const YmpFftSpec* spec, t_8u* buffer)
{
    using Way = Engine<R>;
    if (const Status s = refusal_of(spec, Way::kind, src, dst)) return s;
    const i32 order = spec->order;
    const i64 n = i64{1} << order;
    const auto finish = [=] {
        // In place the spectrum was longer than the reals.
        if (layout == Layout::ccs && src == dst) dst[n] = 0;
        return ok;
    };
    if (order <= fixed_limit) {
        to_perm(layout, src, dst, n);
        if (divides<false>(*spec)) Way::inverse_scaled[order](static_cast<R>(spec->norm), dst, dst);
        else Way::inverse[order](dst, dst);
        return finish();
    }
    const WorkArea work(*spec, buffer);
    if (work.missing()) return no_memory;
    const auto m = static_cast<i32>(n / 2);
    const bool large = order - 1 > flat_limit<R>;
    to_perm(layout, src, dst, n);
    Way::recombine(dst, m, -1, static_cast<const R*>(spec->real_twiddles));
    if (order - 1 == fixed_limit) Way::complex_inverse(pairs(dst), pairs(dst));
    else if (large) Way::large_inverse(spec, pairs(dst), pairs(dst), order - 1, work.as<t_8u>());
    else
        Way::flat_inverse(pairs(dst), pairs(dst), m, static_cast<const R*>(spec->twiddle_table),
                          spec->bit_reverse_table, work.as<cpx<R>>(), pairs(dst));
    if (divides<false>(*spec) && !large) multiply(dst, n, spec->norm);
    return finish();
}

template <Layout layout, class R> i32 forward_in_place(R* srcdst, const YmpFftSpec* spec, t_8u* buffer)
{
    return forward<layout>(static_cast<const R*>(srcdst), srcdst, spec, buffer);
}
template <Layout layout, class R> i32 inverse_in_place(R* srcdst, const YmpFftSpec* spec, t_8u* buffer)
{
    return inverse<layout>(static_cast<const R*>(srcdst), srcdst, spec, buffer);
}

constexpr Layout layout_Perm = Layout::perm, layout_Pack = Layout::pack, layout_CCS = Layout::ccs;

} // namespace

#define REAL(format, t)                                                                                                \
    PRIMITIVE(4, ympsFFTFwd_RTo##format##_##t, forward<layout_##format>)                                               \
    PRIMITIVE(4, ympsFFTInv_##format##ToR_##t, inverse<layout_##format>)                                               \
    PRIMITIVE(3, ympsFFTFwd_RTo##format##_##t##_I, forward_in_place<layout_##format>)                                  \
    PRIMITIVE(3, ympsFFTInv_##format##ToR_##t##_I, inverse_in_place<layout_##format>)
#define REALS(t)                                                                                                       \
    ORV_DFT_PACKED(REAL, t)                                                                                            \
    PRIMITIVE(4, ymps_cRealRecombine_##t, recombine_perm)                                                              \
    PRIMITIVE(4, ymps_cCcsRecombine_##t, recombine_ccs)
ORV_DFT_REAL(REALS)

} // namespace orv::dft
