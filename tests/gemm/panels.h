// Packed blocks as their definition has them, element by element, for the tests of packing and of register kernels.
#pragma once

#include "blas/gemm/gemm.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"

#include <cstring>
#include <string>
#include <vector>

namespace orv::test {

template <class T> struct TileShape;
template <> struct TileShape<float> {
    static constexpr i64 m_unit = 4, n_unit = 8, scratch_factor = 2;
};
template <> struct TileShape<double> {
    static constexpr i64 m_unit = 2, n_unit = 8, scratch_factor = 1;
};
template <> struct TileShape<cpx<float>> {
    static constexpr i64 m_unit = 2, n_unit = 4, scratch_factor = 2;
};
template <> struct TileShape<cpx<double>> {
    static constexpr i64 m_unit = 1, n_unit = 4, scratch_factor = 1;
};

// Widths of the panels of n columns: whole ones, for B one of 4, and one of what is left.
inline std::vector<i64> panel_widths(i64 n, i64 unit, bool has_half)
{
    std::vector<i64> widths(n / unit, unit);
    n %= unit;
    if (has_half && unit > 4 && n >= 4) widths.push_back(4), n -= 4;
    if (n > 0) widths.push_back(n);
    return widths;
}

// Elements that a packed block spans, whole panels being `stride` apart.
inline i64 packed_size(i64 n, i64 k, i64 unit, i64 stride) { return n / unit * stride + n % unit * round_up(k, 4); }

// Puts element(c, p) of n columns and k steps to its place in a packed block, zeros to the padding steps, and leaves
// everything else alone.
template <class T, class Element>
void pack_by_definition(i64 n, i64 k, i64 unit, bool has_half, i64 stride, T* buffer, Element element)
{
    i64 first = 0;
    for (const i64 width : panel_widths(n, unit, has_half)) {
        for (i64 p = 0; p < round_up(k, 4); ++p)
            for (i64 c = 0; c < width; ++c) buffer[p * width + c] = p < k ? element(first + c, p) : zero<T>;
        first += width;
        buffer += width == unit ? stride : width * round_up(k, 4);
    }
}

template <class T> bool same_bits(const T* x, const T* y, std::size_t n)
{
    return n == 0 || std::memcmp(x, y, n * sizeof(T)) == 0; // of nothing, the pointers may be null
}

template <class T> std::string symbol(const std::string& name) { return letter<T> + ("gemm_" + name); }

// Names typed tests by the letter of their type.
struct TypeName {
    template <class T> static std::string GetName(int) { return std::string(1, letter<T>); }
};

} // namespace orv::test
