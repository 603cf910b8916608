// The matrix product, shared by its driver, its packing routines and its register kernels.
//
// C := alpha*op(A)*op(B) + beta*C, column-major. The driver cuts the operands into blocks, packs a block of op(A)
// (times alpha) and a block of op(B) into panels, and hands both to a register kernel:
//
//   packed A: panels of m_unit rows, a_stride elements apart; element (r, p) of a panel at p*m_unit + r. Rows left over
//             after the last whole panel form one narrower panel at the end, element (r, p) at p*rows + r.
//   packed B: panels of n_unit columns, b_stride elements apart; element (p, c) of a panel at p*n_unit + c. Columns
//             left over form a panel of 4 (where n_unit is 8), then one of 3, 2 or 1 columns, by the same rule.
//   Depth is padded to a multiple of k_unit with zeros on both sides, so kernels have no tail in k.
//
// Matrix dimensions, leading dimensions, strides and scalars pass by pointer; selectors, modes, indices and versions
// pass by value.
#pragma once

#include "frame/kernels/blas.h"

namespace orv::gemm {

using kernels::blas::CopyA;       // op(A) of m by k, times alpha, to panels at buffer
using kernels::blas::CopyB;       // op(B) of k by n to panels at buffer; the last argument is null
using kernels::blas::GetBlksSize; // fills those of desc->mb, nb, kb that are 0
using kernels::blas::GetBufs;     // allocates the areas of a selector in one block; 1 if it is unknown, else 0
using kernels::blas::GetBufsSize; // sizes and strides of the work areas; 1 if the mode is unknown, else 0

// C(0:m, 0:n) := beta*C + A*B for packed A (alpha is already in it, the argument is 1). k is the depth of the block:
// panels are round_up(k, 4) deep; of a B in place (b_stride is then its leading dimension) exactly k steps are read.
using kernels::blas::GemmKernel;

// Where B stands: packed, or in place, to be copied strip by strip into the scratch area by transb.
enum BForm : i32 { b_packed = 2, b_in_place = 3 };

// One row of a kernel table: ?_all_gemm_ker.
template <class T> struct Record {
    i64 m_unit, n_unit, k_unit; // granules of packed A, packed B, depth
    i32 scratch_factor;
    i64 m_min, n_min, k_min; // below any of them the plain path serves
    i32 capability_mask;
    GetBlksSize<T>* get_blks_size;
    GetBufsSize<T>* get_bufs_size;
    GetBufs<T>* get_bufs;
    CopyA<T>*copyan, *copyat, *copyac;
    CopyB<T>*copybn, *copybt, *copybc;
    GemmKernel<T>* ker;
    CopyA<T>* copya_ext;
    CopyB<T>* copyb_ext;
};

// A work area of the descriptor: its start, elements from one panel to the next, its size, log2 of its alignment.
template <class T> struct PanelArea {
    T* buffer;
    i64 panel_stride, bytes, align_shift;
};

// The per-call record that binds a driver to a kernel: a local of the driver, cleared, then filled from a Record.
template <class T> struct Desc {
    i32 unused;
    i32 kernel_index;
    i32 capability_mask;
    i32 version;    // loop order in force
    i64 mb, nb, kb; // block sizes; 0: not yet chosen
    i64 m_unit, n_unit, k_unit, m_min, n_min, k_min;
    PanelArea<T> a, b;
    GetBlksSize<T>* get_blks_size;
    GetBufsSize<T>* get_bufs_size;
    GetBufs<T>* get_bufs;
    CopyA<T>*copyan, *copyat, *copyac;
    CopyB<T>*copybn, *copybt, *copybc;
    CopyA<T>* copya_ext;
    CopyB<T>* copyb_ext;
    i32 scratch_factor;
    GemmKernel<T>* ker;
    T* scratch_buffer;
    i64 scratch_bytes, scratch_align_shift;
};

} // namespace orv::gemm
