// One long transform of n = 2*m1*m2 reals by several threads. With w = exp(-2*pi*i/n), element r + 2*m1*c and point
// k2 + m2*k1 go
//
//   rows      for each r, m2 reals c to the half spectrum k2 <= m2/2
//   columns   for each k2, 2*m1 pairs r, times w^(r*k2), to k1; those of k2 = 0 are real
//
// A column has the points k2 + m2*k1 of the spectrum for k1 < m1, and the conjugates of N - k2 - m2*(k1 - m1) for the
// others, N = n/2. Threads share rows, wait for each other, and share columns; backward it is columns, then rows.
#pragma once

#include "dft/methods/method.h"

namespace orv::dft::long_real {

// Real transforms between reals and Perm, and those of pairs.
template <class R> struct Engine;
#define ORV_DFT_ENGINE(t)                                                                                              \
    template <> struct Engine<t_##t> {                                                                                 \
        static constexpr auto& init_real = DFT(ympsDFTInitAlloc_R_##t);                                                \
        static constexpr auto& real_bytes = DFT(ympsDFTGetBufSize_R_##t);                                              \
        static constexpr auto& free_real = DFT(ympsDFTFree_R_##t);                                                     \
        static constexpr auto& to_perm = DFT(ympsDFTFwd_RToPerm_##t);                                                  \
        static constexpr auto& from_perm = DFT(ympsDFTInv_PermToR_##t);                                                \
        static constexpr auto& init_pairs = DFT(ympsDFTInitAlloc_C_##t##c);                                            \
        static constexpr auto& pairs_bytes = DFT(ympsDFTGetBufSize_C_##t##c);                                          \
        static constexpr auto& free_pairs = DFT(ympsDFTFree_C_##t##c);                                                 \
        static constexpr auto& forward = DFT(ympsDFTFwd_CToC_##t##c);                                                  \
        static constexpr auto& backward = DFT(ympsDFTInv_CToC_##t##c);                                                 \
    };
ORV_DFT_REAL(ORV_DFT_ENGINE)
#undef ORV_DFT_ENGINE

template <class R> struct State {
    i64 threads;
    u32 packed_format, placement; // of the node, as committed
    i64 m1, m2;
    cpx<R>* twiddle_a;                     // w^(2*j*k2), a row of m1 for each k2
    cpx<R>* twiddle_b;                     // w^(m1*q) for q <= 2*m2, then w^r for r < m1
    YmpDftSpec *spec_r, *spec_r2, *spec_c; // of m2 reals, of 2*m1 reals, of 2*m1 pairs
    i64 columns;                           // m2/2 + 1
    i64 buffer_bytes;                      // the largest of the engine's work areas

    i64 half() const { return m1 * m2; } // N
    void release();
    i32 build(const DftiNode& node, i64 n, i32 team);

    // w^t, 0 <= t <= n
    ORV_INLINE cpx<R> root(i64 t) const { return twiddle_b[t / m1] * twiddle_b[2 * m2 + 1 + t % m1]; }
};
static_assert(sizeof(State<double>) == 88);

extern template struct State<float>;
extern template struct State<double>;

template <class R, bool forward> i32 compute(DftiNode* node, void* data, void* output, void*, void*);

} // namespace orv::dft::long_real
