// Transposition by a team: what kernels ask for when a matrix is large enough to be shared. The work of each member is
// again a kernel's.
#include "core/trans/kernels.h"
#include "core/trans/share.h"
#include "frame/export.h"
#include "frame/imports.h"

#include <cstring>

using namespace orv;
using namespace orv::core;
using core::trans::edge;
using core::trans::granule;
using core::trans::Kernels;
using core::trans::threads_worth;

namespace {

// Members get rows of B each, or, if B has few of them, pieces of all rows.
template <class T>
void omatcopy2_par(char ordering, char trans, u64 rows, u64 cols, T alpha, const T* a, u64 lda, u64 stridea, T* b,
                   u64 ldb, u64 strideb)
{
    auto* const kernel = Kernels<T>::omatcopy2_seq.get();
    if (kernel == nullptr) return;
    const int threads = threads_worth<T>(rows, cols);
    const char order = fold(ordering), op = fold(trans);
    if (threads == 1 || (order != 'R' && order != 'C'))
        return kernel(ordering, trans, rows, cols, alpha, a, lda, stridea, b, ldb, strideb);

    const u64 m = order == 'R' ? rows : cols, n = order == 'R' ? cols : rows;
    const bool turns = op == 'T' || op == 'C';
    parallel(threads, [&](int index, int count) {
        const u64 least = granule * static_cast<u64>(count), b_rows = turns ? n : m;
        const bool cuts_rows = turns == (b_rows < least); // of A
        const u64 side = cuts_rows ? m : n, begin = edge(side, count, index),
                  part = edge(side, count, index + 1) - begin;
        const u64 i = cuts_rows ? begin : 0, j = cuts_rows ? 0 : begin;
        T* const to = turns ? b + j * ldb + i * strideb : b + i * ldb + j * strideb;
        kernel('R', trans, cuts_rows ? part : m, cuts_rows ? n : part, alpha, a + i * lda + j * stridea, lda, stridea,
               to, ldb, strideb);
    });
}

// The rows and columns of a square behind its last whole tile, w columns at a time: they change places through a block
// on the stack.
template <class T> void turn_rest(u64 n, u64 tiled, T* ab, u64 ld)
{
    auto* const turn = Kernels<T>::omatcopy2_t.get();
    constexpr u64 width = 64, unit = 64 / sizeof(T);
    const u64 rest = n - tiled;
    const T one = orv::one<T>;
    T block[width * unit];
    for (u64 j = 0; j < tiled; j += width) {
        const u64 w = tiled - j < width ? tiled - j : width;
        T *const across = ab + tiled * ld + j, *const down = ab + j * ld + tiled;
        turn(w, rest, one, down, ld, 1, block, w, 1);
        turn(rest, w, one, across, ld, 1, down, ld, 1);
        for (u64 i = 0; i < rest; ++i) std::memcpy(across + i * ld, block + i * w, w * sizeof(T));
    }
    Kernels<T>::square_t.get()(rest, one, ab + tiled * ld + tiled, ld);
}

// Nonzero if the square is transposed; 0 leaves the work to the caller.
template <class T> int square_t_par(u64 n, T* ab, u64 ld)
{
    auto* const kernel = Kernels<T>::square_t_team.get();
    const int threads = threads_worth<T>(n, n);
    // One thread takes rows of tiles in groups, which shares go without: two are slower than one alone.
    if (threads <= 2 || kernel == nullptr) return 0;
    constexpr u64 unit = 64 / sizeof(T);
    const u64 tiled = n / unit * unit;
    parallel(threads,
             [&](int index, int count) { kernel(tiled, ab, ld, static_cast<u64>(index), static_cast<u64>(count)); });
    if (tiled < n) turn_rest(n, tiled, ab, ld);
    return 1;
}

} // namespace

#define PAR(t, T)                                                                                                      \
    ORV_EXPORT void orv_trans_orv_##t##omatcopy2_par(char ordering, char trans, u64 rows, u64 cols, T alpha,           \
                                                     const T* a, u64 lda, u64 stridea, T* b, u64 ldb, u64 strideb)     \
    {                                                                                                                  \
        omatcopy2_par(ordering, trans, rows, cols, alpha, a, lda, stridea, b, ldb, strideb);                           \
    }                                                                                                                  \
    ORV_EXPORT int orv_trans_orv_##t##imatcopy_square_t_par(u64 n, T* ab, u64 lda) { return square_t_par(n, ab, lda); }

PAR(s, float)
PAR(d, double)
PAR(c, cpx<float>)
PAR(z, cpx<double>)
