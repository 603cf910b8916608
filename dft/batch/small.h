// Transforms of 2 to 64 doubles in a call each, for arrays at any address, in place or not. Lengths of straight-line
// code have that alone. Products of two factors are transforms of every a-th point, then joins of a of them; primes are
// sums. Both take their loops from a few functions that they share.
//
// Results are multiplied by the scale as they are stored.
#pragma once

#include "dft/batch/points.h"
#include "dft/batch/rules.h"
#include "dft/primitives/dft/any_radix.h"
#include "frame/kernels/dft_batch.h"

namespace orv::dft::batch::small {

using Z = cpx<double>;
using Array = general::Interleaved<double>;
using Pair = pairs<double>;
static_assert(Pair::lanes == 1, "a register is a point");

template <class To> struct Scaled {
    To to;
    Pair scale;
    template <int n> ORV_INLINE void put(i64 j, i64 q, Pair x) const
    {
        to.template put<n>(j, q, lane_product(x, scale));
    }
};

// Of the join of a transforms to n points: for every place in them the roots of all but the first.
template <int n, int a> struct Twiddles {
    alignas(vector_bytes) Z of[2 * (n - n / a)];
    constexpr Twiddles() : of()
    {
        Z* to = of;
        for (i64 q = 0; q < n / a; ++q)
            for (i64 j = 1; j < a; ++j, to += 2) {
                const Z w = rounded<double>(root(-j * q, n));
                to[0] = {w.re, w.re}, to[1] = {-w.im, w.im};
            }
    }
};
template <int n, int a> inline constexpr Twiddles<n, a> twiddles;

template <int r> struct PrimeTable {
    using Layout = general::RadixTable<double>;
    alignas(vector_bytes) i32 powers[Layout::bytes_of_powers(r) / i64{sizeof(i32)}];
    Z angles[2 * Layout::angles(r)];
    constexpr PrimeTable() : powers(), angles()
    {
        general::fill_radix_table<double>(
            r, [](i64 k) { return rounded<double>(root(-k, r)); }, powers, angles);
    }
};
template <int r> inline constexpr PrimeTable<r> prime_table;

// A transform of r points that lie stride apart.
template <bool forward>
[[gnu::noinline]] void sums(const Z* src, i64 stride, Z* dst, i64 r, const void* table, double scale)
{
    alignas(vector_bytes) t_8u work[general::work_of_radix(61)];
    const Pair factor = splat(Z{scale, scale});
    general::any_prime<forward, double>(
        r, {table, r}, work, [=](i64 j) ORV_INLINE_LAMBDA { return loadu(src + j * stride); },
        [=](i64 k, Pair x) ORV_INLINE_LAMBDA { storeu(dst + k, lane_product(x, factor)); });
}

// The transforms of b points out of a*b.
template <int b, bool forward> [[gnu::noinline]] void parts(const Z* src, Z* dst, i64 a)
{
    for (i64 t = 0; t < a; ++t, ++src, dst += b) {
        if constexpr (is_straight(b)) {
            Pair x[b];
            steps<b>([&](auto j) ORV_INLINE_LAMBDA { x[j] = loadu(src + j * a); });
            transform<b, forward>(x);
            steps<b>([&](auto k) ORV_INLINE_LAMBDA { storeu(dst + k, x[k]); });
        } else sums<forward>(src, a, dst, b, &prime_table<b>, 1);
    }
}

template <int a, bool forward> [[gnu::noinline]] void join(Z* src, Z* dst, i64 count, const Z* w, double scale)
{
    using Rows = general::Rows<Array>;
    general::columns<a, forward, general::Decimation::in_time>(Rows{{src}, count},
                                                               Scaled<Rows>{{{dst}, count}, splat(Z{scale, scale})}, 0,
                                                               count, reinterpret_cast<const double*>(w));
}

template <int n, bool forward> ORV_INLINE void points(const Z* src, Z* dst, double scale)
{
    constexpr i64 a = split_radix(n);
    if constexpr (is_straight(n)) {
        const Pair factor = splat(Z{scale, scale});
        Pair x[n];
        steps<n>([&](auto j) ORV_INLINE_LAMBDA { x[j] = loadu(src + j); });
        transform<n, forward>(x);
        steps<n>([&](auto k) ORV_INLINE_LAMBDA { storeu(dst + k, lane_product(x[k], factor)); });
    } else if constexpr (a == 0) sums<forward>(src, 1, dst, n, &prime_table<n>, scale);
    else {
        alignas(vector_bytes) Z between[n];
        parts<n / a, forward>(src, between, a);
        join<a, forward>(between, dst, n / a, twiddles<n, a>.of, scale);
    }
}

template <int n, bool forward> ORV_INLINE i32 run(const void* input, void* output, const DftiNode& node)
{
    points<n, forward>(static_cast<const Z*>(input), static_cast<Z*>(output),
                       forward ? node.committed_forward_scale : node.committed_backward_scale);
    return node_ok;
}

} // namespace orv::dft::batch::small

// The functions of a direction, and the table of them by length.
#define ORV_DFT_SMALL_POINTS(n, Dir, forward)                                                                          \
    ORV_EXPORT i32 DFT(smallradixDFT##Dir##_CToC_##n##_64fc)(void* input, void* output, DftiNode* node,                \
                                                             void* /* work */)                                         \
    {                                                                                                                  \
        return run<n, forward>(input, output, *node);                                                                  \
    }
#define ORV_DFT_SMALL_ENTRY(n, Dir) DFT(smallradixDFT##Dir##_CToC_##n##_64fc),
