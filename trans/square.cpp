// Squares in place, tile by tile: ?sqtrans, the shares of a team, and the general exchange.
#include "trans/square.h"

#include "frame/kernels/trans.h"
#include "trans/imatcopy.h"
#include "trans/rows.h"

namespace orv::trans {

template <class T> void scale_square(bool conjugated, u64 n, T alpha, T* ab, u64 ld)
{
    rows_upwards(n, n, Source{ab, ld, Scale<T>(alpha, conjugated)}, Target{ab, ld});
}

template <class T> void turn_square(bool conjugated, u64 n, T alpha, T* ab, u64 ld)
{
    turn_square(n, ab, ld, Scale<T>(alpha, conjugated));
}

constexpr i64 not_aligned = 6, done = 0;

template <class T> i64 turn_tiles(T* ab, u64 n, u64 ld)
{
    constexpr u64 unit = tile_unit<T>;
    if (n % unit != 0 && ld % unit != 0) return not_aligned;
    turn_square(n, ab, ld, Move<T, false>{});
    return done;
}

namespace {

// count tiles of one row of tiles, from a on, change places with those of one column of tiles, from b on. a = b is a
// tile on the diagonal, which changes places with itself.
template <class T> void exchange_row(T* a, T* b, u64 ld, u64 count)
{
    constexpr u64 unit = tile_unit<T>;
    u64 k = 0;
    if (a == b && count > 0) turn_tile(a, ld, Move<T, false>{}), k = 1;
    const bool crowded = is_crowded<T>(ld);
    for (; k < count; ++k) {
        ask_tiles(a + (k + 1) * unit, b + (k + 1) * unit * ld, ld);
        if (crowded) exchange_crowded_tiles(a + k * unit, b + k * unit * ld, ld, Move<T, false>{});
        else exchange_tiles(a + k * unit, b + k * unit * ld, ld, Move<T, false>{});
    }
}

// One member's share of a square of whole tiles: rows of tiles tid, tid + team_size, ...
//
// Tiles stand in a circle of T. A row takes the tile on the diagonal and the half of the circle that comes next, so
// all rows have as many, and each pair of tiles belongs to one row: no member waits for another.
template <class T> void share_of_team(u64 n, T* ab, u64 ld, u64 tid, u64 team_size)
{
    constexpr u64 unit = tile_unit<T>;
    const u64 tiles = n / unit, half = tiles / 2;
    u64 t = tid;
    const auto at = [&](u64 i, u64 j) { return ab + i * unit * ld + j * unit; };
    for (; t < half; t += team_size) exchange_row(at(t, t), at(t, t), ld, half + 1);
    for (; t < tiles; t += team_size) {
        exchange_row(at(t, t), at(t, t), ld, tiles - t);
        exchange_row(at(t, 0), at(0, t), ld, t - half);
    }
}

} // namespace
} // namespace orv::trans

// There is no team form of ?sqtrans: it says so in its status.
#define SQUARE(t, T)                                                                                                   \
    template i64 trans::turn_tiles<T>(T*, u64, u64);                                                                   \
    ORV_EXPORT i64 TRANS(t##sqtrans)(T * ab, u64 n, u64 lda) { return trans::turn_tiles(ab, n, lda); }                 \
    ORV_EXPORT void TRANS(t##sqtrans_team)(u64, T*, u64, u64, u64, i64 * status) { *status = trans::not_aligned; }     \
    ORV_EXPORT void TRANS(t##imatcopy_square_t_team)(u64 n, T * ab, u64 lda, u64 tid, u64 team_size)                   \
    {                                                                                                                  \
        trans::share_of_team(n, ab, lda, tid, team_size);                                                              \
    }                                                                                                                  \
    ORV_EXPORT void TRANS(t##imatcopy_square_t_64x64n)(T * a, T * b, u64 lda, u64 count)                               \
    {                                                                                                                  \
        trans::exchange_row(a, b, lda, count);                                                                         \
    }

#define INSTANCES(T)                                                                                                   \
    template void trans::scale_square(bool, u64, T, T*, u64);                                                          \
    template void trans::turn_square(bool, u64, T, T*, u64);

namespace orv {

INSTANCES(float)
INSTANCES(double)
INSTANCES(cpx<float>)
INSTANCES(cpx<double>)
SQUARE(s, float)
SQUARE(d, double)
SQUARE(c, cpx<float>)
SQUARE(z, cpx<double>)

} // namespace orv
