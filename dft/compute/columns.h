// Neighbouring columns become rows, and back: every source row is read once, a register of neighbours at a time.
#pragma once

#include "dft/compute/lines.h"
#include "frame/simd.h"

namespace orv::dft {

// Columns that go at once fill one cache line of reals, two of pairs.
template <class T> inline constexpr int widest = (is_complex<T> ? 2 : 1) * static_cast<int>(cache_line / sizeof(T));

// The stride counts reals.
template <class T> using ToRows = void(i64 n, T* dst, i64 ldd, const real_t<T>* src, i64 stride);
template <class T> using ToColumns = void(i64 n, real_t<T>* dst, i64 stride, const T* src, i64 lds);

template <class T, int width> [[gnu::noinline]] void to_rows(i64 n, T* dst, i64 ldd, const real_t<T>* src, i64 stride)
{
    constexpr int lanes = vec<T>::lanes, tiled = width / lanes * lanes;
    i64 i = 0;
    for (; i + lanes <= n; i += lanes, src += lanes * stride) {
        T* row = dst + i;
#pragma GCC unroll 16
        for (int j = 0; j < tiled; j += lanes, row += lanes * ldd) {
            vec<T> tile[lanes];
#pragma GCC unroll 16
            for (int k = 0; k < lanes; ++k) tile[k] = loadu(reinterpret_cast<const T*>(src + k * stride) + j);
            transpose(tile);
#pragma GCC unroll 16
            for (int k = 0; k < lanes; ++k) storeu(row + k * ldd, tile[k]);
        }
        for (int j = tiled; j < width; ++j, row += ldd)
            for (int k = 0; k < lanes; ++k) row[k] = reinterpret_cast<const T*>(src + k * stride)[j];
    }
    for (; i < n; ++i, src += stride)
        for (int j = 0; j < width; ++j) dst[i + j * ldd] = reinterpret_cast<const T*>(src)[j];
}

template <class T, int width>
[[gnu::noinline]] void to_columns(i64 n, real_t<T>* dst, i64 stride, const T* src, i64 lds)
{
    constexpr int lanes = vec<T>::lanes, tiled = width / lanes * lanes;
    i64 i = 0;
    for (; i + lanes <= n; i += lanes, dst += lanes * stride) {
        const T* row = src + i;
#pragma GCC unroll 16
        for (int j = 0; j < tiled; j += lanes, row += lanes * lds) {
            vec<T> tile[lanes];
#pragma GCC unroll 16
            for (int k = 0; k < lanes; ++k) tile[k] = loadu(row + k * lds);
            transpose(tile);
#pragma GCC unroll 16
            for (int k = 0; k < lanes; ++k) storeu(reinterpret_cast<T*>(dst + k * stride) + j, tile[k]);
        }
        for (int j = tiled; j < width; ++j, row += lds)
            for (int k = 0; k < lanes; ++k) reinterpret_cast<T*>(dst + k * stride)[j] = row[k];
    }
    for (; i < n; ++i, dst += stride)
        for (int j = 0; j < width; ++j) reinterpret_cast<T*>(dst)[j] = src[i + j * lds];
}

} // namespace orv::dft
