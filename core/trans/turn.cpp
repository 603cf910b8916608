// A matrix without gaps is turned in two passes. If it is tall, m >= n:
//
//        n columns               1. Panels of h rows are turned one after the other through work memory: n pieces of h
//      ┌────────────┐               elements each, which stand together in a row of the result.
//   h  │     0      │            2. Pieces move to where they belong along the cycles of the transposition of a smaller
//      ├────────────┤               matrix, one of pieces.
//   h  │     1      │
//      ├────────────┤            If it is wide, the same backwards: pieces of h columns of a row move first, and then
//      panels └────────────┘            of m rows of them are turned.
//
// Rows left over by panels of a tall matrix wait in work memory until the rows of the result are spread to let them in;
// columns left over of a wide one are taken out before.
#include "core/trans/turn.h"

#include "core/serv/block.h"
#include "core/trans/kernels.h"

#include <cstring>

namespace orv::core::trans {
namespace {

// What a panel takes: half of a second-level cache.
constexpr i64 budget = 1 << 20;

template <class T> void move(T* to, const T* from, i64 n)
{
    std::memcpy(to, from, static_cast<std::size_t>(n) * sizeof(T));
}

// Elements of the longer side in a panel: what the budget has room for, but a cache line at least; somewhat fewer if
// nothing is left over then.
template <class T> i64 panel_side(i64 longer, i64 shorter)
{
    constexpr i64 line = 64 / sizeof(T);
    const i64 most = min(longer, max(line, budget / static_cast<i64>(sizeof(T)) / shorter));
    for (i64 side = most; side > most / 2; --side)
        if (longer % side == 0) return side;
    return most;
}

// to := alpha*op(from), m by n elements before.
template <class T> struct Turning {
    decltype(Kernels<T>::omatcopy2_seq.get()) kernel;
    char op;
    T alpha;
    void operator()(i64 m, i64 n, const T* from, i64 ld_from, T* to, i64 ld_to) const
    {
        if (m > 0 && n > 0) kernel('R', op, m, n, alpha, from, ld_from, 1, to, ld_to, 1);
    }
};

// Asks for a piece that is moved next.
template <class T> void ask(const T* piece, i64 size)
{
    constexpr i64 line = 64 / sizeof(T), most = 32 * line;
    for (i64 i = 0; i < min(size, most); i += line) __builtin_prefetch(piece + i);
}

// The pieces of a rows by columns matrix of pieces change to the order of its transpose. Bit k of `moved` tells that
// piece k stands where it belongs.
template <class T> void turn_pieces(i64 rows, i64 columns, i64 size, T* pieces, T* spare, unsigned char* moved)
{
    const i64 count = rows * columns;
    std::memset(moved, 0, static_cast<std::size_t>(count + 7) / 8);
    const auto source = [&](i64 k) { return k % rows * columns + k / rows; };
    const auto settle = [&](i64 k, const T* from) {
        move(pieces + k * size, from, size);
        moved[k / 8] |= static_cast<unsigned char>(1 << k % 8);
    };
    for (i64 first = 0; first < count; ++first) {
        if (moved[first / 8] >> first % 8 & 1) continue;
        i64 k = first, from = source(k);
        if (from == k) continue;
        move(spare, pieces + k * size, size);
        while (from != first) {
            const i64 next = source(from);
            ask(pieces + next * size, size);
            settle(k, pieces + from * size);
            k = from, from = next;
        }
        settle(k, spare);
    }
}

template <class T> bool turn_by_panels(i64 m, i64 n, T* ab, const Turning<T>& turning)
{
    const i64 longer = max(m, n), shorter = min(m, n), side = panel_side<T>(longer, shorter);
    const i64 panels = longer / side, whole = panels * side, left = longer - whole, bits = (panels * shorter + 7) / 8;
    const Block<T> work((side + left) * shorter + side + bits / static_cast<i64>(sizeof(T)) + 1);
    if (work.missing()) return false;
    T *const panel = work.get(), *const rest = panel + side * shorter, *const spare = rest + left * shorter;
    auto* const moved = reinterpret_cast<unsigned char*>(spare + side);

    const i64 size = side * shorter; // of a panel
    const auto turn_panel = [&](i64 rows, i64 columns, T* at) {
        turning(rows, columns, at, columns, panel, rows);
        move(at, panel, size);
    };
    if (m >= n) {
        turning(left, n, ab + whole * n, n, rest, left);
        for (i64 i = 0; i < panels; ++i) turn_panel(side, n, ab + i * size);
        turn_pieces(panels, n, side, ab, spare, moved);
        for (i64 j = left == 0 ? 0 : n; j-- > 0;) {
            std::memmove(ab + j * m, ab + j * whole, static_cast<std::size_t>(whole) * sizeof(T));
            move(ab + j * m + whole, rest + j * left, left);
        }
    } else {
        turning(m, left, ab + whole, n, rest, m);
        for (i64 i = 1; i < (left == 0 ? 0 : m); ++i)
            std::memmove(ab + i * whole, ab + i * n, static_cast<std::size_t>(whole) * sizeof(T));
        turn_pieces(m, panels, side, ab, spare, moved);
        for (i64 j = 0; j < panels; ++j) turn_panel(m, side, ab + j * size);
        move(ab + whole * m, rest, left * m);
    }
    return true;
}

// The whole matrix goes through work memory.
template <class T> bool turn_by_copy(i64 m, i64 n, T* ab, i64 lda, i64 ldb, const Turning<T>& turning)
{
    const Block<T> work(m * n);
    if (work.missing()) return false;
    turning(m, n, ab, lda, work.get(), m);
    for (i64 j = 0; j < n; ++j) move(ab + j * ldb, work.get() + j * m, m);
    return true;
}

} // namespace

template <class T> bool turn(char op, i64 m, i64 n, T alpha, T* ab, i64 lda, i64 ldb)
{
    if (m == 0 || n == 0) return true;
    const Turning<T> turning{Kernels<T>::omatcopy2_seq.get(), op, alpha};
    if (turning.kernel == nullptr) return false;
    const bool gaps = lda != n || ldb != m, small = m * n * static_cast<i64>(sizeof(T)) <= budget;
    return gaps || small ? turn_by_copy(m, n, ab, lda, ldb, turning) : turn_by_panels(m, n, ab, turning);
}

template bool turn(char, i64, i64, float, float*, i64, i64);
template bool turn(char, i64, i64, double, double*, i64, i64);
template bool turn(char, i64, i64, cpx<float>, cpx<float>*, i64, i64);
template bool turn(char, i64, i64, cpx<double>, cpx<double>*, i64, i64);

} // namespace orv::core::trans
