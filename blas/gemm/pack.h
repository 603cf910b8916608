// Panels: how a block of op(A) or op(B) is laid out for the register kernels, and the bodies that fill them.
//
// A panel holds `width` rows of op(A), or columns of op(B), side by side: element (c, p) at p*width + c for the steps p
// of the inner dimension, which are padded with zeros to a multiple of 4.
#pragma once

#include "blas/gemm/gemm.h"
#include "blas/gemm/sizes.h"
#include "frame/simd.h"

namespace orv::gemm {

// Steps come in groups of 4.
inline constexpr int group = 4;

// Where the elements of one step stand in the source: side by side, so that a step copies a run of a column, or a
// leading dimension apart, so that a step gathers across columns.
enum class Source { adjacent, across };

// Where element (c, p) stands.
template <Source order> constexpr i64 source_offset(i64 c, i64 p, i64 ld)
{
    return order == Source::adjacent ? c + p * ld : p + c * ld;
}

// What happens to an element on its way: conjugation, then the product with alpha.
template <class T, bool conjugated> struct Copied {
    ORV_INLINE vec<T> operator()(vec<T> x) const { return conjugated ? conj(x) : x; }
};
template <class T, bool conjugated> struct Scaled {
    factor<T> alpha;
    ORV_INLINE vec<T> operator()(vec<T> x) const { return alpha * (conjugated ? conj(x) : x); }
};

// Four steps of one panel.
template <Source order, int width, bool aligned, class T, class Op>
ORV_INLINE void pack_group(const T* source, i64 ld, T* panel, const Op& op)
{
    constexpr int lanes = vec<T>::lanes;
    // Columns that turn into steps do so in squares, which a group of steps is made of.
    constexpr bool in_registers = order == Source::adjacent || group % lanes == 0;
    constexpr int whole = in_registers ? width / lanes * lanes : 0, rest = width - whole;

    if constexpr (order == Source::adjacent) {
#pragma GCC unroll 4
        for (int p = 0; p < group; ++p, source += ld, panel += width) {
#pragma GCC unroll 4
            for (int c = 0; c < whole; c += lanes)
                storeu(panel + c, op(aligned ? load(source + c) : loadu(source + c)));
            if constexpr (rest > 0) store_first<rest>(panel + whole, op(load_first<rest>(source + whole)));
        }
    } else {
#pragma GCC unroll 4
        for (int c = 0; c < whole; c += lanes)
#pragma GCC unroll 4
            for (int p = 0; p < group; p += lanes) {
                vec<T> square[lanes];
#pragma GCC unroll 4
                for (int i = 0; i < lanes; ++i) square[i] = op(loadu(source + p + (c + i) * ld));
                transpose(square);
#pragma GCC unroll 4
                for (int i = 0; i < lanes; ++i) storeu(panel + (p + i) * width + c, square[i]);
            }
#pragma GCC unroll 4
        for (int c = whole; c < width; ++c)
#pragma GCC unroll 4
            for (int p = 0; p < group; ++p)
                store_first<1>(panel + p * width + c, op(load_first<1>(source + p + c * ld)));
    }
}

// The last group of a panel, of which only `steps` exist in the source; zeros stand for the others.
template <Source order, int width, class T, class Op>
ORV_INLINE void pack_last_group(i64 steps, const T* source, i64 ld, T* panel, const Op& op)
{
    for (int p = 0; p < group; ++p)
        for (int c = 0; c < width; ++c)
            store_first<1>(panel + p * width + c,
                           p < steps ? op(load_first<1>(source + source_offset<order>(c, p, ld))) : zeros<T>());
}

// One panel, k steps deep in the source.
template <Source order, int width, class T, class Op>
ORV_INLINE void pack_panel(i64 k, const T* source, i64 ld, T* panel, const Op& op)
{
    constexpr bool aligned = false;
    i64 p = 0;
    for (; p + group <= k; p += group)
        pack_group<order, width, aligned>(source + source_offset<order>(0, p, ld), ld, panel + p * width, op);
    if (p < k) pack_last_group<order, width>(k - p, source + source_offset<order>(0, p, ld), ld, panel + p * width, op);
}

// Calls visit(width, j) for the panels of n columns in their order: a constant width and the first column.
template <int n> struct constant {
    static constexpr int value = n;
};
template <int unit, class Visit> ORV_INLINE void for_each_panel(i64 n, const Visit& visit)
{
    i64 j = 0;
    for (; j + unit <= n; j += unit) visit(constant<unit>{}, j);
    if constexpr (unit > 4)
        if (n - j >= 4) visit(constant<4>{}, j), j += 4;
    if constexpr (unit > 3)
        if (n - j == 3) return visit(constant<3>{}, j);
    if constexpr (unit > 2)
        if (n - j == 2) return visit(constant<2>{}, j);
    if constexpr (unit > 1)
        if (n - j == 1) return visit(constant<1>{}, j);
}

// Elements from the start of a packed block to the panel that begins with column j, which is a multiple of `unit` or
// the first one of a narrower panel: those follow the whole panels closely.
constexpr i64 panel_offset(i64 j, i64 unit, i64 stride, i64 k)
{
    return j / unit * stride + j % unit * round_up(k, group);
}

} // namespace orv::gemm
