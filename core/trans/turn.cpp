// A matrix without gaps is turned by tiles:
//
//        n' columns                  1. What is left over of whole tiles, columns on the right and rows at the bottom,
//      ┌────┬────┬──┐                   is turned into work memory.
//   m' │ 0  │ 1  │  │                2. A row of tiles after the other is gathered, tile by tile, each turned, so that
//      ├────┼────┤  │                   a tile is one piece of memory.
//      │ 2  │ 3  │  │                3. Tiles move to where they belong, as pieces, along the cycles of a small matrix
//      ├────┴────┴──┤                   of tiles.
//      └────────────┘                4. A row of tiles after the other, from the last, is spread to rows of the
//                                       result, and what was left over takes its place among them.
//
// Each element is moved three times, always in pieces of a tile or of its rows. Work memory is a row of tiles; kernels
// do all that is more than a move.
#include "core/trans/turn.h"

#include "core/trans/kernels.h"
#include "frame/serv.h"

#include <cstring>

namespace orv::core::trans {
namespace {

// What a row of tiles may take, if tiles can be made that flat: half of a second-level cache.
constexpr i64 budget = 1 << 20;

// Work memory for one call; given back at its end.
template <class T> class Work {
public:
    explicit Work(i64 elements) : block_(orv_serv_allocate(elements * static_cast<i64>(sizeof(T)), 128)) {}
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
    ~Work()
    {
        if (block_ != nullptr) orv_serv_deallocate(block_);
    }
    T* data() const { return static_cast<T*>(block_); }

private:
    void* block_;
};

template <class T> void move(T* to, const T* from, i64 n)
{
    std::memcpy(to, from, static_cast<std::size_t>(n) * sizeof(T));
}

// Rows of a tile, if the other side of the matrix is so long: a few cache lines, or what the budget has room for.
template <class T> i64 tile_side(i64 side, i64 other)
{
    constexpr i64 most = 64, line = 64 / sizeof(T);
    const i64 fits = budget / static_cast<i64>(sizeof(T)) / other, wanted = min(min(fits, most), side);
    return wanted >= line ? wanted / line * line : max(wanted, 1);
}

// to := alpha*op(from), m by n elements before.
template <class T> struct Turning {
    decltype(kernels<T>.omatcopy2_seq.get()) kernel;
    char op;
    T alpha;
    void operator()(i64 m, i64 n, const T* from, i64 ld_from, T* to, i64 ld_to) const
    {
        if (m > 0 && n > 0) kernel('R', op, m, n, alpha, from, ld_from, 1, to, ld_to, 1);
    }
};

// The pieces of a rows by columns matrix of pieces change to the order of its transpose. Bit k of `moved` tells that
// piece k stands where it belongs.
template <class T> void turn_pieces(i64 rows, i64 columns, i64 size, T* pieces, T* spare, unsigned char* moved)
{
    const i64 count = rows * columns;
    std::memset(moved, 0, static_cast<std::size_t>(count + 7) / 8);
    for (i64 first = 0; first < count; ++first) {
        if (moved[first / 8] >> first % 8 & 1) continue;
        const auto source = [&](i64 k) { return k % rows * columns + k / rows; };
        i64 k = first;
        if (source(k) == k) continue;
        move(spare, pieces + k * size, size);
        for (i64 from = source(k); from != first; k = from, from = source(k)) {
            move(pieces + k * size, pieces + from * size, size);
            moved[k / 8] |= static_cast<unsigned char>(1 << k % 8);
        }
        move(pieces + k * size, spare, size);
        moved[k / 8] |= static_cast<unsigned char>(1 << k % 8);
    }
}

template <class T> bool turn_by_tiles(i64 m, i64 n, T* ab, const Turning<T>& turning)
{
    const i64 height = tile_side<T>(m, n), width = tile_side<T>(n, m), size = height * width;
    const i64 rows = m / height, columns = n / width; // of tiles
    const i64 whole_m = rows * height, whole_n = columns * width, left_m = m - whole_m, left_n = n - whole_n;

    const i64 line = max(height * whole_n, width * whole_m), bits = (rows * columns + 7) / 8;
    const Work<T> work(line + left_m * n + left_n * whole_m + size + bits / static_cast<i64>(sizeof(T)) + 1);
    if (work.data() == nullptr) return false;
    T *const panel = work.data(), *const bottom = panel + line, *const right = bottom + left_m * n;
    T *const spare = right + left_n * whole_m, *const moved = spare + size;

    turning(left_m, n, ab + whole_m * n, n, bottom, left_m);
    turning(whole_m, left_n, ab + whole_n, n, right, whole_m);
    for (i64 i = 0; i < rows; ++i) {
        for (i64 j = 0; j < columns; ++j)
            turning(height, width, ab + i * height * n + j * width, n, panel + j * size, height);
        move(ab + i * height * whole_n, panel, height * whole_n);
    }

    turn_pieces(rows, columns, size, ab, spare, reinterpret_cast<unsigned char*>(moved));

    for (i64 j = columns; j-- > 0;) {
        move(panel, ab + j * width * whole_m, width * whole_m);
        for (i64 r = 0; r < width; ++r) {
            T* const row = ab + (j * width + r) * m;
            for (i64 i = 0; i < rows; ++i) move(row + i * height, panel + i * size + r * height, height);
            move(row + whole_m, bottom + (j * width + r) * left_m, left_m);
        }
    }
    for (i64 r = 0; r < left_n; ++r) {
        T* const row = ab + (whole_n + r) * m;
        move(row, right + r * whole_m, whole_m);
        move(row + whole_m, bottom + (whole_n + r) * left_m, left_m);
    }
    return true;
}

// The whole matrix goes through work memory.
template <class T> bool turn_by_copy(i64 m, i64 n, T* ab, i64 lda, i64 ldb, const Turning<T>& turning)
{
    const Work<T> work(m * n);
    if (work.data() == nullptr) return false;
    turning(m, n, ab, lda, work.data(), m);
    for (i64 j = 0; j < n; ++j) move(ab + j * ldb, work.data() + j * m, m);
    return true;
}

} // namespace

template <class T> bool turn(char op, i64 m, i64 n, T alpha, T* ab, i64 lda, i64 ldb)
{
    if (m == 0 || n == 0) return true;
    const Turning<T> turning{kernels<T>.omatcopy2_seq.get(), op, alpha};
    if (turning.kernel == nullptr) return false;
    const bool gaps = lda != n || ldb != m, small = m * n * static_cast<i64>(sizeof(T)) <= budget;
    return gaps || small ? turn_by_copy(m, n, ab, lda, ldb, turning) : turn_by_tiles(m, n, ab, turning);
}

template bool turn(char, i64, i64, float, float*, i64, i64);
template bool turn(char, i64, i64, double, double*, i64, i64);
template bool turn(char, i64, i64, cpx<float>, cpx<float>*, i64, i64);
template bool turn(char, i64, i64, cpx<double>, cpx<double>*, i64, i64);

} // namespace orv::core::trans
