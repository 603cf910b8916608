// Register kernels: a block of C, strip by strip of the columns of B and tile by tile of the rows of A.
#pragma once

#include "blas/gemm/driver.h"
#include "blas/gemm/tile.h"

namespace orv::gemm {

// The arguments of a Ker that kernels use, by value. alpha is in the packed A already, and transa with it.
template <class T> struct Block {
    char transb;
    i64 m, n, k;
    const T* a;
    i64 a_stride;
    const T* b;
    i64 b_stride;
    T beta;
    T* c;
    i64 ldc;
    T* scratch;
};

// C(0:m, 0:columns) of one strip, for the whole panels of `rows` rows in m.
template <int rows, int columns, TileStore store, template <class, int, int> class Scheme, class T>
[[gnu::noinline]] void multiply_strip(i64 m, i64 depth, const T* a, i64 a_stride, const T* b, T* c, i64 ldc)
{
    for (; m >= rows; m -= rows, a += a_stride, c += rows)
        if constexpr (columns % vec<T>::lanes == 0) multiply_tile<rows, columns, store, Scheme>(depth, a, b, c, ldc);
        else multiply_tile<rows, columns, store, Swapping>(depth, a, b, c, ldc);
}

// Columns of op(B) that stand in place, as one panel.
template <int columns, class T> void pack_strip(char transb, i64 k, const T* b, i64 ldb, T* panel)
{
    if (transb == 'N') pack_panel<Source::across, columns>(k, b, ldb, panel, Copied<T, false>{});
    else if (is_complex<T> && transb == 'C')
        pack_panel<Source::adjacent, columns>(k, b, ldb, panel, Copied<T, is_complex<T>>{});
    else pack_panel<Source::adjacent, columns>(k, b, ldb, panel, Copied<T, false>{});
}

// C := beta*C + A*B, or C := A*B, over the rows that fill panels of `rows` rows.
template <int rows, BForm form, TileStore store, template <class, int, int> class Scheme, class T>
void kernel(const Block<T>& x)
{
    const i64 depth = round_up(x.k, group);

    for_each_panel<b_unit<T>>(x.n, [&](auto width, i64 j) ORV_INLINE_LAMBDA {
        constexpr int columns = decltype(width)::value;
        T* const c = x.c + j * x.ldc;
        if (store != TileStore::replace && x.beta != one<T>) mscale(x.m / rows * rows, columns, x.beta, c, x.ldc);
        const T* panel = x.scratch;
        if constexpr (form == b_in_place)
            pack_strip<columns>(fold(x.transb), x.k, x.b + j * (fold(x.transb) == 'N' ? x.b_stride : 1), x.b_stride,
                                x.scratch);
        else panel = x.b + panel_offset(j, b_unit<T>, x.b_stride, x.k);
        multiply_strip<rows, columns, store, Scheme>(x.m, depth, x.a, x.a_stride, panel, c, x.ldc);
    });
}

} // namespace orv::gemm
