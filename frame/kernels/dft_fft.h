// The transforms of 2^order points: plain functions on arrays, by a record that is built once and only read after that.
//
//   ympsFFT<operation>_<kind>_<type>      kind C: complex, R: real; of type 32f and 64f a complex array is split in two
//   ympsFFTFwd_<from>To<to>_<type>[_I]    checks its arguments, then transforms; returns a status; _I works in place
//   ymps_<form>FFT<direction>_<n>_<type>  a transform of so few points that it needs no record
//   ymps_<...>                            parts of the engine
//
// Forms: c interleaved pairs, cr real and imaginary parts in two arrays, r reals. Forward has the kernel
// exp(-2*pi*i/n), nothing is divided unless the record's flag says so. Arrays, buffers and memory stand at any address;
// source and destination are the same or apart.
#pragma once

#include "frame/kernels/dft_primitives.h"

#include <cstddef>

namespace orv::kernels::dft {

// Where the division goes.
enum ScaleFlag : i32 {
    scale_forward = 1, // by n, forward
    scale_inverse = 2, // by n, inverse
    scale_both = 4,    // by the root of n, both
    scale_none = 8
};

// Placed on the first 64-byte boundary of the caller's memory; its tables stand behind it.
struct YmpFftSpec {
    enum Kind : i32 { none = 0, C_32fc = 4, C_32f = 5, R_32f = 6, C_64fc = 7, C_64f = 8, R_64f = 9 };

    i32 id; // a Kind; none after a bad flag, and once it is freed
    i32 order;
    i32 scale_forward, scale_inverse; // 1: that direction multiplies by norm
    t_64f norm;
    i32 hint;
    i32 buffer_bytes;
    i32 user_alloc; // 1: made by InitAlloc
    void* self_memory;
    const i32* bit_reverse_table;
    const void* twiddle_table;
    const void* real_twiddles;
    const void* step_twiddles[9];
};
static_assert(sizeof(YmpFftSpec) == 144 && offsetof(YmpFftSpec, norm) == 16 &&
              offsetof(YmpFftSpec, self_memory) == 40 && offsetof(YmpFftSpec, step_twiddles) == 72);

using FftGetSize = i32(i32 order, i32 flag, i32 hint, i32* spec_bytes, i32* init_bytes, i32* buffer_bytes);
using FftInit = i32(YmpFftSpec** spec, i32 order, i32 flag, i32 hint, t_8u* memory, t_8u* init_memory);
using FftInitAlloc = i32(YmpFftSpec** spec, i32 order, i32 flag, i32 hint);
using FftFree = i32(YmpFftSpec* spec);
using FftGetBufSize = i32(const YmpFftSpec* spec, i32* bytes);

// Without a buffer the function takes one for the time of the call.
template <class T> using Fft = i32(const T* src, T* dst, const YmpFftSpec* spec, t_8u* buffer);
template <class T> using FftInPlace = i32(T* srcdst, const YmpFftSpec* spec, t_8u* buffer);
template <class R>
using SplitFft = i32(const R* src_re, const R* src_im, R* dst_re, R* dst_im, const YmpFftSpec* spec, t_8u* buffer);
template <class R> using SplitFftInPlace = i32(R* re, R* im, const YmpFftSpec* spec, t_8u* buffer);

// Of a fixed number of points; S: the scale, where there is one, comes first.
template <class T, class... S> using FixedFft = void(S... scale, const T* src, T* dst);
template <class R, class... S>
using FixedSplitFft = void(S... scale, const R* src_re, const R* src_im, R* dst_re, R* dst_im);

// Tables; what comes back is the first 64-byte boundary behind. Twiddles are copies of values of a base table, which
// has the sines of the first quarter of 2^order angles.
using InitTabBitRev = t_8u*(i32 order, i32* table);
using InitTabBitRevLarge = t_8u*(i32 order, i32 levels, i32* table);
template <class R> using InitTabTwdBase = t_8u*(i32 order, R* table);
template <class R> using InitTabTwd = t_8u*(i32 order, const R* base, i32 base_order, R* table);
template <class R>
using InitTabTwdLarge = t_8u*(YmpFftSpec* spec, i32 order, const R* base, i32 base_order, t_8u* memory);

// Parts of the engine. Norm forms reverse, the others find their points reversed. The buffer of a Norm form is needed
// where dst_or_src is src, which says that both arrays are the same.
template <class T>
using Radix4Norm = void(const T* src, T* dst, i32 n, const real_t<T>* twiddles, const i32* reversal, T* buffer,
                        const T* dst_or_src);
template <class R>
using SplitRadix4Norm = void(const R* src_re, const R* src_im, R* dst_re, R* dst_im, i32 n, const R* twiddles,
                             const i32* reversal, R* buffer, const R* dst_or_src);
template <class T> using Radix4 = void(const T* src, T* dst, i32 n, const real_t<T>* twiddles);
template <class T> using FftLarge = void(const YmpFftSpec* spec, const T* src, T* dst, i32 order, t_8u* buffer);
template <class R>
using SplitFftLarge = void(const YmpFftSpec* spec, const R* src_re, const R* src_im, R* dst_re, R* dst_im, i32 order,
                           t_8u* buffer);
template <class T> using BitRev1 = void(T* data, i32 n, const i32* reversal);
template <class T> using BitRev2 = void(const T* src, T* dst, i32 n, const i32* reversal);
template <class T> using BlkMerge = void(const T* src, T* block, i32 rows, i32 columns, i64 stride);
template <class T> using BlkSplit = void(const T* block, T* dst, i32 rows, i32 columns, i64 stride, i32 last);
// One stage: groups of 4 or 8 rows that stand so far apart, a group behind the other, each row of so many columns. Rows
// are in blocks: a register of real parts, a register of imaginary parts.
template <class T> using Factor = void(T* data, i32 groups, i64 between, i32 columns, const real_t<T>* twiddles);
template <class R> using SplitFactor = void(R* re, R* im, i32 groups, i64 between, i32 columns, const R* twiddles);
// The last pass of a transform of n points, of each part's transform the points from begin to end, multiples of 4: what
// a thread does of it. There are 8 parts where the order less 4 is a multiple of 3, else 4.
template <class T> using Core = void(T* data, i32 n, i32 begin, i32 end, const real_t<T>* twiddles);
template <class R> using SplitCore = void(R* re, R* im, i32 n, i32 begin, i32 end, const R* twiddles);
template <class T> using Recombine = void(T* data, i32 points, i32 direction, const T* twiddles);

} // namespace orv::kernels::dft

// Kinds of records, and the transforms of few points: their number with the direction, where there is one.
#define ORV_DFT_KINDS(X) X(C_32fc) X(C_64fc) X(C_32f) X(C_64f) X(R_32f) X(R_64f)
#define ORV_DFT_PAIRS(X) X(32fc) X(64fc)
#define ORV_DFT_PACKED(X, t) X(Perm, t) X(Pack, t) X(CCS, t)
#define ORV_DFT_FIXED(X, ...)                                                                                          \
    X(_1, __VA_ARGS__)                                                                                                 \
    X(_2, __VA_ARGS__)                                                                                                 \
    X(fwd_4, __VA_ARGS__)                                                                                              \
    X(fwd_8, __VA_ARGS__)                                                                                              \
    X(fwd_16, __VA_ARGS__)                                                                                             \
    X(fwd_32, __VA_ARGS__) X(inv_4, __VA_ARGS__) X(inv_8, __VA_ARGS__) X(inv_16, __VA_ARGS__) X(inv_32, __VA_ARGS__)

namespace orv::kernels::dft {

#define ORV_NAME(name, ...) ORV_PROTOTYPE(dft, name, name, __VA_ARGS__)
#include "frame/kernels/dft_fft.def"
#undef ORV_NAME

} // namespace orv::kernels::dft
