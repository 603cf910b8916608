// Points in bit-reversed order of their indices. Of an index the highest and the lowest bit change places, the table
// has the bits between them reversed: four points at a time.
#pragma once

#include "dft/primitives/fft/plan.h"

namespace orv::dft {

// The four places of an index between the ends, and those of its reverse, in the order of what changes places.
template <class T, class F> ORV_INLINE void each_of_four(T* at, i64 index, i64 reverse, i64 half, F f)
{
    f(at[index], at[reverse]);
    f(at[index + 1], at[reverse + half]);
    f(at[index + half], at[reverse + 1]);
    f(at[index + half + 1], at[reverse + half + 1]);
}

template <class T> ORV_INLINE void reverse_in_place(T* data, i32 n, const i32* table)
{
    const i64 half = n / 2;
    const auto swap = [](T& a, T& b) ORV_INLINE_LAMBDA { std::swap(a, b); };
    for (i64 i = 0; i < n / 4; ++i) {
        const i64 index = 2 * i, reverse = table[i];
        if (index < reverse) each_of_four(data, index, reverse, half, swap);
        else if (index == reverse) swap(data[index + 1], data[reverse + half]);
    }
}

template <class T> ORV_INLINE void reverse(const T* src, T* dst, i32 n, const i32* table)
{
    const i64 half = n / 2;
    for (i64 i = 0; i < n / 4; ++i) {
        const T* from = src + table[i];
        T* to = dst + 2 * i;
        to[0] = from[0], to[1] = from[half], to[half] = from[1], to[half + 1] = from[half + 1];
    }
}

// Rows of neighbours, `stride` apart, to a block where they stand one behind the other, and back.
template <class T>
ORV_INLINE void copy_rows(const T* src, i64 src_stride, T* dst, i64 dst_stride, i64 rows, i64 columns)
{
    constexpr i64 lanes = vec<T>::lanes;
    for (i64 row = 0; row < rows; ++row, src += src_stride, dst += dst_stride)
        for (i64 c = 0; c < columns; c += 2 * lanes) {
            storeu(dst + c, loadu(src + c));
            storeu(dst + c + lanes, loadu(src + c + lanes));
        }
}

// Two arrays from this order on lie on the same sets of a cache for each other; one array is reversed by itself then,
// after a copy in slices.
inline constexpr i32 one_array_from = 23;
inline constexpr i64 slice_bytes = i64{1} << 27;

// All 2^order points. table: up to untiled_limit the one of that order; else the one of a tile, and on the next
// boundary the one of the bits between a tile's row and column.
template <class T> class BitReversal {
public:
    BitReversal(i32 order, const i32* table, t_8u* buffer)
        : order_(order), of_tile_(table), table_(order > untiled_limit ? table + tile_table : table),
          first_(reinterpret_cast<T*>(buffer)), second_(first_ + tile)
    {
    }
    void run(const T* src, T* dst) const
    {
        const auto n = static_cast<i32>(i64{1} << order_);
        if (order_ <= untiled_limit) {
            if (src == dst) reverse_in_place(dst, n, table_);
            else reverse(src, dst, n, table_);
            return;
        }
        if (src != dst && order_ < one_array_from) {
            for (i64 i = 0; i < tiles(); ++i) {
                take(src, column(i), first_);
                put(first_, dst, table_[i]);
            }
            return;
        }
        if (src != dst) copy_in_slices(src, dst, n);
        for (i64 i = 0; i < tiles(); ++i) {
            if (column(i) > table_[i]) continue; // done with the other
            take(dst, column(i), first_);
            take(dst, table_[i], second_);
            put(first_, dst, table_[i]);
            put(second_, dst, column(i));
        }
    }

private:
    static constexpr i64 side = i64{1} << tile_side, tile = i64{1} << tile_order;
    i64 tiles() const { return i64{1} << (order_ - tile_order); }
    static i64 column(i64 i) { return i * side; }
    i64 stride() const { return i64{1} << (order_ - tile_side); }
    void take(const T* from, i64 column, T* to) const
    {
        copy_rows(from + column, stride(), to, side, side, side);
        reverse_in_place(to, tile, of_tile_);
    }
    void put(const T* from, T* to, i64 column) const { copy_rows(from, side, to + column, stride(), side, side); }
    static void copy_in_slices(const T* src, T* dst, i64 n)
    {
        constexpr i64 slice = slice_bytes / static_cast<i64>(sizeof(T));
        for (i64 at = 0; at < n; at += slice) copy(src + at, dst + at, min(slice, n - at));
    }

    i32 order_;
    const i32 *of_tile_, *table_;
    T *first_, *second_;
};

} // namespace orv::dft
