// How a committed transform runs: entries, the routes below them, kernels over the engine, staging of strided data.
// Each name has a form for both precisions, told by its letters: z, c pairs; d, s reals; dz, sc reals to pairs; zd, cs
// back; a doubled letter (ddz, zzd) where the half spectrum is kept as pairs.
//
// Strides, distances and leading dimensions count elements of the array that they belong to. Where a set has several
// rows, they are lines of a buffer: line j at j times its leading dimension.
#pragma once

#include "frame/kernels/dft_node.h"

namespace orv::kernels::dft {

// m rows of n elements: dst[j*ldd + i] = src[i*stride + j*distance], and the reverse.
template <class T> using Gather = void(i64 n, i64 m, T* dst, i64 ldd, const T* src, i64 stride, i64 distance);
template <class T> using Scatter = void(i64 n, i64 m, T* dst, i64 stride, i64 distance, const T* src, i64 lds);
// Of two arrays; the leading dimension counts pairs, so line j of either part begins at 2*j*ldd.
template <class R>
using SplitGather = void(i64 n, i64 m, R* dst_re, R* dst_im, i64 ldd, const R* src_re, const R* src_im, i64 stride,
                         i64 distance);
template <class R>
using SplitScatter = void(i64 n, i64 m, R* dst_re, R* dst_im, i64 stride, i64 distance, const R* src_re,
                          const R* src_im, i64 lds);

// The same for as many neighbouring columns as the name says, which become as many rows. mod8: rows behind each other.
template <class T> using RowCopy = void(i64 n, T* dst, i64 ldd, const T* src, i64 stride);
template <class T> using RowCopyBack = void(i64 n, T* dst, i64 stride, const T* src, i64 lds);
template <class T> using RowCopyWhole = void(i64 n, T* dst, const T* src, i64 stride);
template <class T> using RowCopyBackWhole = void(i64 n, T* dst, i64 stride, const T* src);
template <class R>
using SplitRowCopy = void(i64 n, R* dst_re, R* dst_im, i64 ldd, const R* src_re, const R* src_im, i64 stride);
template <class R>
using SplitRowCopyBack = void(i64 n, R* dst_re, R* dst_im, i64 stride, const R* src_re, const R* src_im, i64 lds);

template <class T> using DftScale = void(i64 n, real_t<T> scale, T* data, i64 stride);
template <class R> using SplitScale = void(i64 n, R scale, R* re, R* im);
template <class T> using DftCopy = void(i64 n, const T* src, i64 src_stride, T* dst, i64 dst_stride);

// One row between a packed format (CFG_CCS, CFG_PACK, CFG_PERM) and the n/2 + 1 pairs that it stands for.
template <class R> using UnpackRow = void(i64 n, u32 format, const R* packed, cpx<R>* half);
template <class R> using PackRow = void(i64 n, u32 format, const cpx<R>* half, R* packed);

// Many transforms of one dimension, by blocks of 2^log2_block rows in the buffer, which needs room for a block where a
// stride is not 1. A row of reals takes n + 2 there.
template <class T>
using DftCopyAndTransform = i32(T* data, i64 stride, DftiKernel* kernel, DftiNode* node, i64 count, i64 distance,
                                void* buffer, i64 log2_block, void* work);
template <class In, class Out>
using DftCopyAndTransformOut = i32(const In* input, i64 input_stride, Out* output, i64 output_stride,
                                   DftiKernel* kernel, DftiNode* node, i64 count, i64 input_distance,
                                   i64 output_distance, void* buffer, i64 log2_block, void* work);
template <class In>
using DftCopyAndTransformInPlace = i32(In* data, i64 input_stride, i64 output_stride, DftiKernel* kernel,
                                       DftiNode* node, i64 count, i64 input_distance, i64 output_distance, void* buffer,
                                       i64 log2_block, void* work);
// The same with the node's strides and distances, and a buffer of its own.
template <class T> using DftMult = i32(DftiNode* node, T* data, DftiKernel* kernel, i64 count, void* work);
template <class In, class Out>
using DftMultOut = i32(DftiNode* node, const In* input, Out* output, DftiKernel* kernel, i64 count, void* work);

// A route does so many transforms on one thread. Split arrays come as an array of two pointers.
using DftRoute = i32(DftiNode* node, void* data, i64 count, void* work);
using DftRouteOut = i32(DftiNode* node, const void* input, void* output, i64 count, void* work);

// What a thread body works on (its argument): arrays with their offsets added; in place both are the same array. Of c
// items thread t of T does those from t*ceil(c/T), ceil(c/T) or what is left. Items are
//   ?1_nd      transforms, so many; or planes of the two lowest dimensions of one transform, if count is 0
//   ?2_nd      lines of one transform along `dimension`, from 2 on
//   ?2_c, ?2_r rows or columns of one transform of two dimensions: of the pass that comes first, and of the other one
// Of pairs and forward the planes come before the lines, which go by rising dimension; back to reals it is the reverse.
struct DftShare {
    DftiNode* node; // head of the chain
    const void* input;
    void* output;
    void* middle; // where it is needed, see below
    i64 count;
    i32 forward; // 0: backward
    i32 dimension;
    i32* status; // a word for each thread, which the body writes
};

// Pairs of one half spectrum without gaps.
inline i64 half_spectrum_pairs(const DftiNode& head)
{
    i64 pairs = head.length / 2 + 1;
    for (const DftiNode* n = head.next; n != nullptr; n = n->next) pairs *= n->length;
    return pairs;
}

// Whether a transform of reals and pairs goes through a work area of that size: back from three dimensions and more the
// input would be written otherwise; in place a row may stand on another row's input.
inline bool needs_middle(const DftiNode& head, bool forward, const void* input, const void* output)
{
    if (head.forward_domain != CFG_DOMAIN_REAL || head.conjugate_even_storage != CFG_STORE_COMPLEX) return false;
    if (head.work_rank < 2) return false;
    if (head.placement != CFG_IN_PLACE) return !forward && head.work_rank > 2;
    if (input != output) return true;
    for (const DftiNode* n = head.next; n != nullptr; n = n->next)
        if (forward ? n->input_stride != 2 * n->output_stride : n->output_stride != 2 * n->input_stride) return true;
    return false;
}

} // namespace orv::kernels::dft

// X(width, ...)
#define ORV_DFT_WIDTHS_TO_8(X, ...)                                                                                    \
    X(2, __VA_ARGS__)                                                                                                  \
    X(3, __VA_ARGS__) X(4, __VA_ARGS__) X(5, __VA_ARGS__) X(6, __VA_ARGS__) X(7, __VA_ARGS__) X(8, __VA_ARGS__)
#define ORV_DFT_WIDTHS_TO_16(X, ...)                                                                                   \
    ORV_DFT_WIDTHS_TO_8(X, __VA_ARGS__)                                                                                \
    X(9, __VA_ARGS__)                                                                                                  \
    X(10, __VA_ARGS__)                                                                                                 \
    X(11, __VA_ARGS__) X(12, __VA_ARGS__) X(13, __VA_ARGS__) X(14, __VA_ARGS__) X(15, __VA_ARGS__) X(16, __VA_ARGS__)
// The letters of a precision: X(R, real, pairs, real to pairs, back, engine's reals, engine's pairs)
#define ORV_DFT_PRECISIONS(X) X(double, d, z, dz, zd, 64f, 64fc) X(float, s, c, sc, cs, 32f, 32fc)

namespace orv::kernels::dft {

#define ORV_NAME(name, ...) ORV_PROTOTYPE(dft, name, name, __VA_ARGS__)
#include "frame/kernels/dft_compute.def"
#undef ORV_NAME

// What the core does with several threads: it calls the thread bodies. In place from reals to pairs and back there are
// two pointers, for each side has its own offset.
extern "C" {
using DftPar = i32(DftiNode** node, void* data, void* work);
using DftParOut = i32(DftiNode** node, const void* input, void* output, void* work);
#define ORV_DFT_IMPORTS(R, d, z, dz, zd, f, fc)                                                                        \
    DftPar orv_dft_compute_forward_##z##_par, orv_dft_compute_backward_##z##_par, orv_dft_compute_forward_##d##_par,   \
        orv_dft_compute_backward_##d##_par;                                                                            \
    DftParOut orv_dft_compute_forward_##z##_out_par, orv_dft_compute_backward_##z##_out_par,                           \
        orv_dft_compute_forward_##d##_out_par, orv_dft_compute_backward_##d##_out_par,                                 \
        orv_dft_compute_forward_##dz##_par, orv_dft_compute_forward_##dz##_out_par,                                    \
        orv_dft_compute_backward_##zd##_par, orv_dft_compute_backward_##zd##_out_par;
ORV_DFT_PRECISIONS(ORV_DFT_IMPORTS)
#undef ORV_DFT_IMPORTS
}

} // namespace orv::kernels::dft
