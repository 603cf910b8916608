// The loop of all sums of products, for those who compile it.
#pragma once

#include "xblas/pairs.h"
#include "xblas/sums.h"

namespace orv::xblas {

template <class P> inline constexpr bool is_plain = !std::is_same_v<P, Extra>;
template <class S, class L> inline constexpr bool are_real = !is_complex<S> && !is_complex<L>;

// offset: how far behind v.at the operand of each result is. in_two_loops: two terms a trip where steps do not grow,
// for short terms.
template <class N, int groups, bool in_two_loops, class S, class L, class Sum, class Sign>
ORV_INLINE void run(i64 n, Shared<S> s, Several<L> v, const i64* offset, Sum* sums, Sign s_sign, Sign v_sign)
{
    constexpr int lanes = lanes_of<typename N::lane>;
    Sum kept[groups];
    for (int g = 0; g < groups; ++g) kept[g] = sums[g];
    const auto add_next = [&]() ORV_INLINE_LAMBDA {
        const auto shared = factor<N>(s.at, s_sign);
#pragma GCC unroll 4
        for (int g = 0; g < groups; ++g) {
            const i64* const at = offset + g * lanes;
            kept[g] = plus(kept[g], product(shared, factor<N>(v.at + at[0], v_sign, at[lanes - 1] - at[0])));
        }
        s.at += s.step;
        v.at += v.step;
    };
    if (in_two_loops && s.bend == 0 && v.bend == 0) in_pairs<are_real<S, L>>(n, add_next);
    else
        for (i64 k = 0; k < n; ++k, s.step += s.bend, v.step += v.bend) add_next();
    for (int g = 0; g < groups; ++g) sums[g] = kept[g];
}
template <class N, int groups, bool in_two_loops, class S, class L, class Sum>
ORV_INLINE void run(i64 n, Shared<S> s, Several<L> v, const i64* offset, Sum* sums)
{
    if constexpr (is_complex<S> || is_complex<L>)
        if (s.sign < 0 || v.sign < 0) return run<N, groups, in_two_loops>(n, s, v, offset, sums, s.sign, v.sign);
    run<N, groups, in_two_loops>(n, s, v, offset, sums, AsStored(), AsStored());
}

inline constexpr i64 alone[] = {0};

} // namespace orv::xblas
