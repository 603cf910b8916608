// The loops of sums.h, for the files that compile them.
#pragma once

#include "xblas/sums.h"

namespace orv::xblas {
namespace {

template <class N, int groups, class S, class L, class Sum>
ORV_INLINE void run(i64 n, Shared<S> s, Several<L> v, Sum* sums)
{
    constexpr i64 lanes = lanes_of<typename N::lane>;
    Sum kept[groups];
    for (int g = 0; g < groups; ++g) kept[g] = sums[g];
    for (i64 k = 0; k < n; ++k) {
        const auto shared = factor<N>(s.at, s.sign);
#pragma GCC unroll 4
        for (int g = 0; g < groups; ++g)
            kept[g] = plus(kept[g], product(shared, factor<N>(v.at + g * lanes * v.apart, v.sign, v.apart)));
        s.at += s.step;
        s.step += s.bend;
        v.at += v.step;
    }
    for (int g = 0; g < groups; ++g) sums[g] = kept[g];
}

} // namespace

template <class P, class S, class L>
void add_products(i64 n, Shared<S> s, Several<L> v, sum_of<typename P::One, S, L>& sum)
{
    run<typename P::One, 1>(n, s, v, &sum);
}
template <class P, class S, class L> void add_products(i64 n, Shared<S> s, Several<L> v, FourSums<P, S, L>& sums)
{
    run<typename P::Four, FourSums<P, S, L>::groups>(n, s, v, sums.group);
}

#define XBLAS_SUMS(P, S, L)                                                                                            \
    template void add_products<P>(i64, Shared<S>, Several<L>, sum_of<P::One, S, L>&);                                  \
    template void add_products<P>(i64, Shared<S>, Several<L>, FourSums<P, S, L>&);

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
