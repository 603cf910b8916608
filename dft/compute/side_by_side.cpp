#include "dft/compute/side_by_side.h"
#include "dft/compute/side_by_side_passes.h"

namespace orv::dft {
namespace {

i64 points(const DftFactor& f) { return i64{f.radix} * f.count; }

} // namespace

template <class R> SideBySide<R>::SideBySide(const YmpDftSpec& spec, bool forward) : forward_(forward)
{
    if (spec.prime_fact == 0 || spec.out_of_order != 0 || points(spec.factors[0]) > general::working_set) return;
    for (i64 k = 0; k <= spec.last_factor; ++k) {
        const DftFactor& f = spec.factors[k];
        if (k > 0 && side_by_side::is_leaf(points(f))) {
            spec_ = &spec, first_ = k;
            return;
        }
        if (!side_by_side::is_join(f.radix)) return;
    }
}

template <class R> void SideBySide<R>::run(const R* from, i64 from_step, R* to, i64 to_step, i64 count) const
{
    using Lines = side_by_side::LinesInLanes<R>;
    constexpr i64 lanes = vec<cpx<R>>::lanes, most_joins = 8;
    const auto& passes = side_by_side::passes<R>();
    const DftFactor &leaf = spec_->factors[first_], &last = spec_->factors[spec_->last_factor];
    alignas(cache_line) vec<cpx<R>> between[general::working_set];
    const side_by_side::Leaves<R> leaves{points(spec_->factors[0]), leaf.stride, !forward_, spec_->permutation,
                                         last.stride / leaf.stride, leaf.stride, between};
    auto* const run_leaves = passes.leaves[points(leaf)];
    side_by_side::Join<R> joins[most_joins];
    for (i64 k = 0; k < first_; ++k) {
        const DftFactor& f = spec_->factors[k];
        joins[k] = {static_cast<const R*>(f.twiddles), f.count, f.stride, between};
    }
    for (; count > 0; count -= lanes, from += lanes * from_step, to += lanes * to_step) {
        const Lines out = Lines::from(to, to_step, count);
        run_leaves(leaves, Lines::from(from, from_step, count));
        for (i64 k = first_; --k > 0;) passes.joins[spec_->factors[k].radix](joins[k], out);
        passes.last_joins[spec_->factors[0].radix](joins[0], out);
    }
}

template class SideBySide<float>;
template class SideBySide<double>;

} // namespace orv::dft
