// The numbers of each type: granules of the register tile, least operands, block sizes. Everything that differs between
// the drivers of s, d, c and z by more than its element type stands here.
#pragma once

#include "frame/simd.h"

namespace orv::gemm {

// Rows of A and columns of B in a whole panel. A panel of A fills one register a step.
template <class T> inline constexpr int a_unit = vec<T>::lanes;
template <class T> inline constexpr int b_unit = is_complex<T> ? 4 : 8;

struct Sizes {
    i64 m_unit, n_unit, k_unit; // the register tile: rows, columns, and steps of depth that panels are padded to
    i32 scratch_factor;         // strips of n_unit columns that the scratch area has room for
    i64 m_min, n_min, k_min;    // below any of them packing costs more than it saves
    i32 capability_mask;        // the loop orders that the kernels of this type can serve, as bits
    i64 mb_small, mb_large;     // rows of an A block, for a last-level cache up to 4 MiB and beyond
    i64 nb_cap;                 // columns of a B block, at most
    i64 n_kernels;
    bool rank_one; // depth 1 is a rank-one update
};

// A block of A is mb by 256 at most: 1.25 MiB for s, d and 1 MiB for c, z where the cache is large, so that it stays in
// the second level while B is swept; about 60 % of that where the cache is small. z halves the columns of B, whose
// elements are twice as wide. The complex kernels cannot copy B in place: bits 4 and 0x10 are missing.
template <class T> inline constexpr Sizes sizes = {};
template <>
inline constexpr Sizes sizes<float> = {a_unit<float>, b_unit<float>, 4, 2, 4, 4, 4, 0x7e, 0x300, 0x500, 5000, 1, false};
template <>
inline constexpr Sizes sizes<double> = {a_unit<double>, b_unit<double>, 4,     1,    4, 4,   4,
                                        0x7e,           0x180,          0x280, 5000, 2, true};
template <>
inline constexpr Sizes sizes<cpx<float>> = {
    a_unit<cpx<float>>, b_unit<cpx<float>>, 4, 2, 2, 4, 4, 0x6a, 0x140, 0x200, 5000, 1, false};
template <>
inline constexpr Sizes sizes<cpx<double>> = {
    a_unit<cpx<double>>, b_unit<cpx<double>>, 4, 1, 2, 4, 4, 0x6a, 0xa0, 0x100, 2000, 1, false};

inline constexpr i32 small_cache = 0x400000; // bytes of the last-level cache

} // namespace orv::gemm
