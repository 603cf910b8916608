// The loops of sums.h, for the files that compile them.
#pragma once

#include "xblas/loop.h"
#include "xblas/types.h"

namespace orv::xblas {

template <class P, class S, class L>
sum_of<typename P::One, S, L> compiled::with_products(sum_of<typename P::One, S, L> sum, i64 n, const S* s, i64 s_step,
                                                      const L* v, i64 v_step, i64 s_bend, double s_sign, double v_sign)
{
    run<typename P::One, 1, is_plain<P> || are_real<S, L>>(n, Shared<S>{s, s_step, s_bend, s_sign},
                                                           Several<L>{v, v_step, 0, v_sign}, alone, &sum);
    return sum;
}
template <class P, class S, class L>
void compiled::add_products(i64 n, const S* s, i64 s_step, const L* v, i64 v_step, FourSums<P, S, L>& sums,
                            double s_sign, double v_sign, i64 s_bend, i64 v_apart)
{
    const i64 offset[] = {0, v_apart, 2 * v_apart, 3 * v_apart};
    run<typename P::Four, FourSums<P, S, L>::groups, is_plain<P>>(n, Shared<S>{s, s_step, s_bend, s_sign},
                                                                  Several<L>{v, v_step, 0, v_sign}, offset, sums.group);
}

// The columns that all four rows have run side by side. What a row has before and behind them, it runs alone.
template <class P, class A, class B>
void compiled::add_rows(const FourRows& rows, const A* a, double sign, const B* x, i64 incx,
                        sum_of<typename P::One, A, B>* sums)
{
    const i64 last_end = rows.column[0] + rows.walk[0].count;
    const i64 from = rows.column[3], to = max(from, last_end);
    const auto add_part = [&](int l, i64 begin, i64 end) {
        if (end <= begin) return;
        const Walk w = without_first(rows.walk[l], begin - rows.column[l]);
        orv::xblas::add_products<P>(end - begin, Shared<A>{a + w.at, w.step, w.bend, sign},
                                    Several<B>{x + begin * incx, incx}, sums[l]);
    };
    for (int l = 0; l < 4; ++l) add_part(l, rows.column[l], min(from, rows.column[l] + rows.walk[l].count));
    if (to > from) {
        i64 at[4];
        for (int l = 0; l < 4; ++l) at[l] = without_first(rows.walk[l], from - rows.column[l]).at;
        const i64 offset[] = {0, at[1] - at[0], at[2] - at[0], at[3] - at[0]};
        FourSums<P, B, A> four;
        for (int l = 0; l < 4; l += four.lanes) {
            if constexpr (four.lanes == 2) four.group[l / 2] = in_lanes(sums[l], sums[l + 1]);
            else four.group[l] = sums[l];
        }
        run<typename P::Four, four.groups, is_plain<P> && are_real<A, B>>(
            to - from, Shared<B>{x + from * incx, incx},
            Several<A>{a + at[0], rows.walk[3].step, 0, sign, rows.walk[3].bend}, offset, four.group);
        for (int l = 0; l < 4; ++l) sums[l] = as_sum<sum_of<typename P::One, A, B>>(result(four, l));
    }
    for (int l = 0; l < 4; ++l) add_part(l, max(to, rows.column[l]), rows.column[l] + rows.walk[l].count);
}

#define XBLAS_SUMS(P, S, L)                                                                                            \
    template sum_of<P::One, S, L> compiled::with_products<P>(sum_of<P::One, S, L>, i64, const S*, i64, const L*, i64,  \
                                                             i64, double, double);                                     \
    template void compiled::add_products<P>(i64, const S*, i64, const L*, i64, FourSums<P, S, L>&, double, double,     \
                                            i64, i64);                                                                 \
    template void compiled::add_rows<P>(const FourRows&, const S*, double, const L*, i64, sum_of<P::One, S, L>*);

} // namespace orv::xblas
