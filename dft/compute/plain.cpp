#include "dft/compute/plain.h"
#include "dft/primitives/dft/plan.h"
#include "dft/primitives/dft/recombine.h"
#include "dft/primitives/fft/plan.h"
#include "dft/primitives/fft/radix4.h"
#include "frame/kernels/dft_batch.h"

namespace orv::dft {
namespace {

// Those over the engine, by precision, and the codelets of few reals.
template <class R> struct Plain;
#define PLAIN(R, d, z, dz, zd, f, fc)                                                                                  \
    template <> struct Plain<R> {                                                                                      \
        static constexpr auto &forward = DFT(xymps_fwd_##fc), &backward = DFT(xymps_inv_##fc);                         \
        static constexpr auto &from_reals = DFT(xymps_fwd_rtocomplex_##f), &to_reals = DFT(xymps_inv_complextor_##f);  \
        static constexpr DftiKernel *codelets_forward[] = {DFT(x##d##_f2_1df), DFT(x##d##_f4_1df), DFT(x##d##_f8_1df), \
                                                           DFT(x##d##_f16_1df)},                                       \
                                    *codelets_backward[] = {DFT(x##d##_f2_1db), DFT(x##d##_f4_1db),                    \
                                                            DFT(x##d##_f8_1db), DFT(x##d##_f16_1db)};                  \
        static constexpr auto &flat_forward = DFT(ymps_cRadix4FwdNorm_##fc),                                           \
                              &flat_inverse = DFT(ymps_cRadix4InvNorm_##fc);                                           \
        static constexpr auto &factors_forward = DFT(ownscDftFwd_PrimeFact_##fc),                                      \
                              &factors_inverse = DFT(ownscDftInv_PrimeFact_##fc);                                      \
        static bool is_primitive(DftiPrimitive* called, bool forward, Layout layout)                                   \
        {                                                                                                              \
            constexpr auto &to_ccs = DFT(ympsDFTFwd_RToCCS_##f), &to_pack = DFT(ympsDFTFwd_RToPack_##f),               \
                           &to_perm = DFT(ympsDFTFwd_RToPerm_##f), &of_ccs = DFT(ympsDFTInv_CCSToR_##f),               \
                           &of_perm = DFT(ympsDFTInv_PermToR_##f);                                                     \
            const auto is = [=](auto& known) { return called == reinterpret_cast<DftiPrimitive*>(&known); };           \
            if (layout == Layout::ccs) return forward ? is(to_ccs) : is(of_ccs);                                       \
            if (layout == Layout::perm) return forward ? is(to_perm) : is(of_perm);                                    \
            return forward ? is(to_pack) : is(DFT(workaround_for_DFTInv_RPack_##f));                                   \
        }                                                                                                              \
    };
ORV_DFT_PRECISIONS(PLAIN)

bool is_unscaled(const DftiNode& node, bool forward)
{
    return (forward ? node.committed_forward_scale : node.committed_backward_scale) == 1;
}
bool is_record(const YmpDftSpec* record, i64 n, bool forward)
{
    const YmpDftSpec* const spec = general::on_boundary(record);
    return spec != nullptr && spec->length == n && (forward ? spec->scale_forward : spec->scale_inverse) == 0;
}

template <class R> bool goes_to_engine(const Run& run, bool forward)
{
    const DftiNode& node = *run.node;
    return run.kernel == (forward ? Plain<R>::forward : Plain<R>::backward) && is_unscaled(node, forward) &&
           is_record(node.*Precision<R>::spec_complex, node.length, forward);
}

// The kernel of few pairs, which does not go to the engine; null where there is none.
template <class R> DftiKernel* kernel_of_few(i64 n, bool forward)
{
    if constexpr (sizeof(R) == 8) {
        if (n < 2 || n > 64) return nullptr;
        return (forward ? DFT(zsmallradix_forward) : DFT(zsmallradix_inverse))[n - 2];
    } else {
        if (n == 2) return forward ? DFT(xc_f2_1df) : DFT(xc_f2_1db);
        if (n == 4) return forward ? DFT(xc_f4_1df) : DFT(xc_f4_1db);
        return nullptr;
    }
}

template <class R> bool transforms_reals(const Run& run, bool forward)
{
    using P = Precision<R>;
    const DftiNode& node = *run.node;
    if (!is_unscaled(node, forward)) return false;
    if (run.kernel == (forward ? Plain<R>::from_reals : Plain<R>::to_reals))
        return is_record(node.*P::spec_real, node.length, forward) &&
               Plain<R>::is_primitive(node.*(forward ? P::primitive_forward : P::primitive_backward), forward,
                                      layout_of(node));
    i64 n = 2;
    for (DftiKernel* const codelet : forward ? Plain<R>::codelets_forward : Plain<R>::codelets_backward) {
        if (run.kernel == codelet) return node.length == n;
        n *= 2;
    }
    return false;
}

} // namespace

template <class R> bool transforms_pairs(const Run& run, bool forward)
{
    const DftiNode& node = *run.node;
    return goes_to_engine<R>(run, forward) ||
           (is_unscaled(node, forward) && run.kernel == kernel_of_few<R>(node.length, forward));
}

template <class R> ShortLines<R>* short_lines(const Run& run)
{
    const i64 n = run.node->length;
    return transforms_pairs<R>(run, true)    ? short_lines<R>(n, true)
           : transforms_pairs<R>(run, false) ? short_lines<R>(n, false)
                                             : nullptr;
}

template <class R> SideBySide<R> side_by_side(const Run& run)
{
    const YmpDftSpec* const record = run.node->*Precision<R>::spec_complex;
    for (const bool forward : {true, false})
        if (is_record(record, run.node->length, forward) && transforms_pairs<R>(run, forward))
            return SideBySide<R>(*general::on_boundary(record), forward);
    return {};
}

template <class R> EngineRows<R>::EngineRows(const Run& run)
{
    forward_ = goes_to_engine<R>(run, true);
    if (run.work == nullptr || (!forward_ && !goes_to_engine<R>(run, false))) return;
    const YmpDftSpec* const spec = general::on_boundary(run.node->*Precision<R>::spec_complex);
    const i32 order = spec->is_pow2 != 0 ? spec->fft_spec->order : 0;
    const bool flat = order > fixed_limit && order <= flat_limit<R>;
    if (!flat && spec->prime_fact == 0) return;
    spec_ = spec, work_ = general::on_boundary(static_cast<t_8u*>(run.work));
}

template <class R> void EngineRows<R>::run(const R* from, R* to) const
{
    const auto* const src = reinterpret_cast<const cpx<R>*>(from);
    auto* const dst = reinterpret_cast<cpx<R>*>(to);
    if (spec_->is_pow2 == 0)
        return (forward_ ? Plain<R>::factors_forward : Plain<R>::factors_inverse)(spec_, src, dst, work_);
    const YmpFftSpec& fft = *spec_->fft_spec;
    (forward_ ? Plain<R>::flat_forward
              : Plain<R>::flat_inverse)(src, dst, spec_->length, static_cast<const R*>(fft.twiddle_table),
                                        fft.bit_reverse_table, reinterpret_cast<cpx<R>*>(work_), dst);
}

template <class R> RealRows<R> short_rows(const Run& run, Layout read)
{
    const DftiNode& node = *run.node;
    const i64 n = node.length;
    if (transforms_reals<R>(run, true)) return {short_rows<R>(n, true), n, layout_of(node), false};
    if (transforms_reals<R>(run, false))
        return {short_rows<R>(n, false), n, read, is_in_place(node) && read == Layout::ccs};
    return {};
}

// Pack has its pairs between those of the halves: it is left to the kernel that reads it.
template <class R> HalvedRows<R>::HalvedRows(const Run& run, Layout read)
{
    const DftiNode& node = *run.node;
    const YmpDftSpec* const record = node.*Precision<R>::spec_real;
    forward_ = transforms_reals<R>(run, true);
    layout_ = forward_ ? layout_of(node) : read;
    clears_behind_ = !forward_ && is_in_place(node) && read == Layout::ccs;
    if (node.length % 2 != 0 || !is_record(record, node.length, forward_)) return;
    if (!forward_ && (layout_ == Layout::pack || !transforms_reals<R>(run, false))) return;
    spec_ = general::on_boundary(record);
    half_ = SideBySide<R>(*spec_, forward_);
}

// So many rows at a time that they stay in a first-level cache between their steps.
template <class R> void HalvedRows<R>::run(const R* from, i64 from_step, R* to, i64 to_step, i64 count) const
{
    constexpr i64 together = 8;
    const i64 n = spec_->length;
    const auto* const twiddles =
        static_cast<const cpx<R>*>(forward_ ? spec_->recombine_forward : spec_->recombine_inverse);
    for (i64 m; count > 0; count -= m, from += m * from_step, to += m * to_step) {
        m = min(count, together);
        if (!forward_)
            for (i64 row = 0; row < m; ++row)
                general::recombine_inverse(from + row * from_step, places(layout_, n), to + row * to_step, n / 2,
                                           twiddles);
        half_.run(forward_ ? from : to, forward_ ? from_step : to_step, to, to_step, m);
        for (i64 row = 0; row < m; ++row) {
            R* const at = to + row * to_step;
            if (forward_) general::recombine_forward(at, at, n / 2, twiddles), from_perm(layout_, at, n);
            else if (clears_behind_) at[n] = 0;
        }
    }
}

#define INSTANCES(R, ...)                                                                                              \
    template bool transforms_pairs<R>(const Run&, bool);                                                               \
    template ShortLines<R>* short_lines<R>(const Run&);                                                                \
    template SideBySide<R> side_by_side<R>(const Run&);                                                                \
    template RealRows<R> short_rows<R>(const Run&, Layout);                                                            \
    template class HalvedRows<R>;                                                                                      \
    template class EngineRows<R>;
ORV_DFT_PRECISIONS(INSTANCES)

} // namespace orv::dft
