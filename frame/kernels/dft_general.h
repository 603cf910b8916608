// The transforms of any length: plain functions on arrays, by a record that is built once and only read after that.
//
//   ympsDFT<operation>_<kind>_<type>        kind C: complex, R: real; of type 32f and 64f a complex array is split in
//   two ympsDFTFwd_<from>To<to>_<type>          checks its arguments, then transforms; returns a status
//   owns<form>DFT<direction>_<n>_<type>     a transform of so few points that it needs no record
//   owns<form>Dft<direction>_<stage>_<type> a stage of a transform by factors, and the ways for lengths without any
//
// Forms: c interleaved pairs, cr real and imaginary parts in two arrays, r reals. Stages: Prime<r> transforms r points
// of the input at a time, Fact<r> joins r transforms to one, both without a number for any radix. Arrays, buffers and
// memory stand at any address; source and destination are the same or apart.
#pragma once

#include "frame/kernels/dft_fft.h"

namespace orv::kernels::dft {

// One stage of a transform of length points by factors.
struct DftFactor {
    i32 stride;             // the product of the factors before it: so many transforms come out
    i32 radix;              //
    i32 count;              // the product of the factors behind it: of so many points each are those that it joins
    i32 blocks;             // how many of them are joined while they are in cache
    const void* twiddles;   // none for the last one, which is the first to run
    const void* fact_table; // roots of a radix that has no body of its own
};

// Placed on the first 64-byte boundary of the caller's memory; its tables stand behind it. A real transform of even
// length is a complex one of half the length, and then all but the first fields are of that one.
struct YmpDftSpec {
    enum Kind : i32 {
        none = 0,
        C_32fc = 13,
        C_32f = 14,
        R_32f = 15,
        C_64fc = 16,
        C_64f = 17,
        R_64f = 18,
        OutOrd_32fc = 0x434D414A,
        OutOrd_64fc = 0x434D414B
    };
    static constexpr i32 most_factors = 20;

    i32 id; // a Kind; none after a refusal, and once it is freed
    i32 length;
    i32 scale_forward, scale_inverse; // 1: that direction multiplies by norm
    t_64f norm;
    i32 hint;
    i32 buffer_bytes;
    i32 is_pow2;      // 1: all is left to fft_spec
    i32 out_of_order; // 1: spectra are in the order in which the factors leave them
    i32 conv_length;  // of the convolution with a chirp; 0: another way
    const void* direct_table;
    const void *chirp_a, *chirp_b; // the chirp, and the spectrum of its conjugate
    YmpFftSpec* fft_spec;
    YmpDftSpec* conv_spec;
    i32 prime_fact;  // 1: by factors
    i32 last_factor; // the place of the last one
    const i32* permutation;
    DftFactor factors[most_factors];
    const void *recombine_forward, *recombine_inverse; // of real transforms of even length
    void* self_memory;                                 // the block that Free releases; none after Init
};
static_assert(sizeof(DftFactor) == 32 && offsetof(DftFactor, twiddles) == 16);
static_assert(sizeof(YmpDftSpec) == 768 && offsetof(YmpDftSpec, norm) == 16 &&
              offsetof(YmpDftSpec, conv_length) == 40 && offsetof(YmpDftSpec, direct_table) == 48 &&
              offsetof(YmpDftSpec, prime_fact) == 88 && offsetof(YmpDftSpec, permutation) == 96 &&
              offsetof(YmpDftSpec, factors) == 104);

// Memory may stand anywhere: the record is on its first boundary, and every function takes the one or the other.
using DftGetSize = i32(i32 length, i32 flag, i32 hint, i32* spec_bytes, i32* init_bytes, i32* buffer_bytes);
using DftInit = i32(i32 length, i32 flag, i32 hint, t_8u* memory, t_8u* init_memory);
using DftInitAlloc = i32(YmpDftSpec** spec, i32 length, i32 flag, i32 hint);
using DftFree = i32(YmpDftSpec* spec);
using DftGetBufSize = i32(const YmpDftSpec* spec, i32* bytes);

// Without a buffer the function takes one for the time of the call.
template <class T> using Dft = i32(const T* src, T* dst, const YmpDftSpec* spec, t_8u* buffer);
template <class R>
using SplitDft = i32(const R* src_re, const R* src_im, R* dst_re, R* dst_im, const YmpDftSpec* spec, t_8u* buffer);

// Stages. Transforms of r points, so many: of elements that stand stride apart, from starts[b] on for transform b; its
// results are together. Interleaved transforms of r*count points are blocks behind one another.
template <class T> using DftPrime = void(const T* src, T* dst, i32 stride, i32 transforms, const i32* starts);
template <class R>
using SplitDftPrime = void(const R* src_re, const R* src_im, R* dst_re, R* dst_im, i32 stride, i32 transforms,
                           const i32* starts);
template <class T> using DftFact = void(const T* src, T* dst, i32 count, i32 blocks, const real_t<T>* twiddles);
template <class R>
using SplitDftFact = void(const R* src_re, const R* src_im, R* dst_re, R* dst_im, i32 count, i32 blocks,
                          const R* twiddles);
template <class T> using OutOrdPrime = void(const T* src, T* dst, i32 transforms);

// The same for any odd prime, one transform or block; work holds as many registers as the radix has points.
template <class T> using AnyPrime = void(const T* src, T* dst, i32 radix, i32 stride, const void* table, t_8u* work);
template <class R>
using SplitAnyPrime = void(const R* src_re, const R* src_im, R* dst_re, R* dst_im, i32 radix, i32 stride,
                           const void* table, t_8u* work);
template <class T>
using AnyFact = void(const T* src, T* dst, i32 radix, i32 count, const real_t<T>* twiddles, const void* table,
                     t_8u* work);
template <class R>
using SplitAnyFact = void(const R* src_re, const R* src_im, R* dst_re, R* dst_im, i32 radix, i32 count,
                          const R* twiddles, const void* table, t_8u* work);

// Whole transforms without scale. A negative sign is the inverse.
template <class T> using PrimeFact = void(const YmpDftSpec* spec, const T* src, T* dst, t_8u* work);
template <class R>
using SplitPrimeFact = void(const YmpDftSpec* spec, const R* src_re, const R* src_im, R* dst_re, R* dst_im, t_8u* work);
template <class T> using DftDirect = void(const T* src, T* dst, i32 n, i32 sign, const void* table, t_8u* work);
template <class R>
using SplitDftDirect = void(const R* src_re, const R* src_im, R* dst_re, R* dst_im, i32 n, i32 sign, const void* table,
                            t_8u* work);
template <class T> using DftConv = i32(const YmpDftSpec* spec, const T* src, T* dst, i32 n, i32 sign, t_8u* work);
template <class R>
using SplitDftConv = i32(const YmpDftSpec* spec, const R* src_re, const R* src_im, R* dst_re, R* dst_im, i32 n,
                         i32 sign, t_8u* work);

// To the order of frequencies for a sign above 0, from it below.
template <class T> using DftReord = void(const YmpDftSpec* spec, const T* src, T* dst, i32 sign);

// Tables. Init: into memory, back comes the first 64-byte boundary behind; Create: in a block of their own. Base: the
// roots exp(-2*pi*i*k/n).
template <class R> using InitTabDft = t_8u*(i32 n, cpx<R>* table);
template <class R> using CreateTabDft = cpx<R>*(i32 n);
template <class R> using InitTabDftFrom = t_8u*(i32 n, const cpx<R>* base, i32 base_length, t_8u* table);
template <class R> using CreateTabDftFrom = t_8u*(i32 n, const cpx<R>* base, i32 base_length);
template <class R> using InitPrimeFact = t_8u*(YmpDftSpec* spec, const cpx<R>* base, t_8u* memory);
template <class R> using InitAllocPrimeFact = i32(YmpDftSpec* spec, const cpx<R>* base);
template <class R>
using InitDftConv = i32(YmpDftSpec* spec, i32 n, const cpx<R>* base, i32 base_length, t_8u* memory, t_8u* init_memory);
template <class R> using InitAllocDftConv = i32(YmpDftSpec* spec, i32 n, const cpx<R>* base, i32 base_length);
template <class R> using DftRecombine = void(const R* src, R* dst, i32 points, const cpx<R>* twiddles);

} // namespace orv::kernels::dft

// Numbers in names. X(n, ...) or X(r, ...).
#define ORV_DFT_FIXED_SIZES(X, ...)                                                                                    \
    X(3, __VA_ARGS__)                                                                                                  \
    X(5, __VA_ARGS__)                                                                                                  \
    X(6, __VA_ARGS__) X(7, __VA_ARGS__) X(9, __VA_ARGS__) X(10, __VA_ARGS__) X(11, __VA_ARGS__) X(12, __VA_ARGS__)     \
        X(13, __VA_ARGS__) X(14, __VA_ARGS__) X(15, __VA_ARGS__)
#define ORV_DFT_PRIMES(X, ...)                                                                                         \
    X(2, __VA_ARGS__)                                                                                                  \
    X(3, __VA_ARGS__)                                                                                                  \
    X(4, __VA_ARGS__) X(5, __VA_ARGS__) X(6, __VA_ARGS__) X(7, __VA_ARGS__) X(8, __VA_ARGS__) X(11, __VA_ARGS__)       \
        X(13, __VA_ARGS__) X(16, __VA_ARGS__)
#define ORV_DFT_ODD_RADIXES(X, ...)                                                                                    \
    X(3, __VA_ARGS__) X(5, __VA_ARGS__) X(7, __VA_ARGS__) X(11, __VA_ARGS__) X(13, __VA_ARGS__)
#define ORV_DFT_FACTS(X, ...) X(2, __VA_ARGS__) X(4, __VA_ARGS__) ORV_DFT_ODD_RADIXES(X, __VA_ARGS__)

namespace orv::kernels::dft {

#define ORV_NAME(name, ...) ORV_PROTOTYPE(dft, name, name, __VA_ARGS__)
#include "frame/kernels/dft_general.def"
#undef ORV_NAME

} // namespace orv::kernels::dft
