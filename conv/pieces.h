// Where an operand is cut, so that a piece of it and the whole other operand fit a transform of a power of two.
#pragma once

#include "conv/window.h"

namespace orv::conv {

constexpr bool is_tiny(i64 length) { return length < 3; }

// The longest piece beside the whole of the other operand.
inline i64 piece_beside(i64 other)
{
    const i64 piece = 2 * least_pow2(other) - other + 1;
    return is_tiny(piece) ? 4 * least_pow2(other) - other + 1 : piece;
}

struct Pieces {
    i64 x, y;
    bool cut;
};
[[gnu::noinline]] inline Pieces pieces_of(i64 nx, i64 ny)
{
    const i64 px = is_tiny(ny) ? nx : piece_beside(ny), py = is_tiny(nx) ? ny : piece_beside(nx);
    if (py < ny) return {nx, py, true};
    if (px < nx) return {px, ny, true};
    return {nx, ny, false};
}

// result := x * y of one dimension. All pieces of one operand meet the other, which is whole.
template <class I, class T>
Status convolve_pieces(const View<const T>& x, const View<const T>& y, const View<I>& result)
{
    const Pieces p = pieces_of(x.n[0], y.n[0]);
    if (!p.cut) return convolve_window(x, y, result, false);
    clear(result.at, result.n[0]);
    for (i64 i = 0; i < x.n[0]; i += p.x)
        for (i64 j = 0; j < y.n[0]; j += p.y) {
            const i64 nx = min(p.x, x.n[0] - i), ny = min(p.y, y.n[0] - j), at = i + j, n = nx + ny - 1;
            const Status status = convolve_window(x.part(&i, &nx), y.part(&j, &ny), result.part(&at, &n), true);
            if (status != ok) return status;
        }
    return ok;
}

} // namespace orv::conv
