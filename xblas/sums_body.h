// The loops of sums.h, for the files that compile them.
#pragma once

#include "xblas/sums.h"

namespace orv::xblas {
namespace {

template <class N, int groups, class S, class L, class Sum, class Sign>
ORV_INLINE void run(i64 n, Shared<S> s, Several<L> v, Sum* sums, Sign s_sign, Sign v_sign)
{
    constexpr i64 lanes = lanes_of<typename N::lane>;
    Sum kept[groups];
    for (int g = 0; g < groups; ++g) kept[g] = sums[g];
    const auto add_next = [&]() ORV_INLINE_LAMBDA {
        const auto shared = factor<N>(s.at, s_sign);
#pragma GCC unroll 4
        for (int g = 0; g < groups; ++g)
            kept[g] = plus(kept[g], product(shared, factor<N>(v.at + g * lanes * v.apart, v_sign, v.apart)));
        s.at += s.step;
        v.at += v.step;
    };
    i64 k = 0;
    // Two terms a trip, in their order: short loops overlap with what comes before and behind them.
    if (s.bend == 0)
        for (; k + 2 <= n; k += 2) add_next(), add_next();
    for (; k < n; ++k, s.step += s.bend) add_next();
    for (int g = 0; g < groups; ++g) sums[g] = kept[g];
}
template <class N, int groups, class S, class L, class Sum>
ORV_INLINE void run(i64 n, Shared<S> s, Several<L> v, Sum* sums)
{
    if constexpr (is_complex<S> || is_complex<L>)
        if (s.sign < 0 || v.sign < 0) return run<N, groups>(n, s, v, sums, s.sign, v.sign);
    run<N, groups>(n, s, v, sums, AsStored(), AsStored());
}

} // namespace

template <class P, class S, class L>
sum_of<typename P::One, S, L> compiled::with_products(sum_of<typename P::One, S, L> sum, i64 n, const S* s, i64 s_step,
                                                      const L* v, i64 v_step, i64 s_bend, double s_sign, double v_sign)
{
    run<typename P::One, 1>(n, Shared<S>{s, s_step, s_bend, s_sign}, Several<L>{v, v_step, 0, v_sign}, &sum);
    return sum;
}
template <class P, class S, class L>
void compiled::add_products(i64 n, const S* s, i64 s_step, const L* v, i64 v_step, FourSums<P, S, L>& sums,
                            double s_sign, double v_sign, i64 s_bend, i64 v_apart)
{
    run<typename P::Four, FourSums<P, S, L>::groups>(n, Shared<S>{s, s_step, s_bend, s_sign},
                                                     Several<L>{v, v_step, v_apart, v_sign}, sums.group);
}

#define XBLAS_SUMS(P, S, L)                                                                                            \
    template sum_of<P::One, S, L> compiled::with_products<P>(sum_of<P::One, S, L>, i64, const S*, i64, const L*, i64,  \
                                                             i64, double, double);                                     \
    template void compiled::add_products<P>(i64, const S*, i64, const L*, i64, FourSums<P, S, L>&, double, double,     \
                                            i64, i64);

// Every pair of types that two inputs of one routine have.
#define XBLAS_SUMS_NARROW(P)                                                                                           \
    XBLAS_SUMS(P, float, float)                                                                                        \
    XBLAS_SUMS(P, float, cpx<float>)                                                                                   \
    XBLAS_SUMS(P, cpx<float>, float)                                                                                   \
    XBLAS_SUMS(P, cpx<float>, cpx<float>)
#define XBLAS_SUMS_WIDE(P)                                                                                             \
    XBLAS_SUMS(P, double, double)                                                                                      \
    XBLAS_SUMS(P, double, float)                                                                                       \
    XBLAS_SUMS(P, float, double)                                                                                       \
    XBLAS_SUMS(P, double, cpx<double>)                                                                                 \
    XBLAS_SUMS(P, cpx<double>, double)                                                                                 \
    XBLAS_SUMS(P, cpx<double>, cpx<float>)                                                                             \
    XBLAS_SUMS(P, cpx<float>, cpx<double>)                                                                             \
    XBLAS_SUMS(P, cpx<double>, cpx<double>)

} // namespace orv::xblas
