// The tables of records, by name.
#include "dft/primitives/fft/tables.h"
#include "dft/primitives/fft/radix4.h"

namespace orv::dft {
namespace {

// The indices 0, 1, ... over so many bits, reversed and shifted, by an increment that carries downward; then a 0.
t_8u* reverse_indices(i32 bits, i32 shift, i32* table)
{
    const i32 top = bits > 0 ? (i32{1} << (bits - 1)) << shift : 0;
    const i64 count = i64{1} << bits;
    i32 index = 0;
    for (i64 i = 0; i < count; ++i) {
        table[i] = index;
        i32 bit = top;
        for (; index & bit; bit >>= 1) index ^= bit;
        index |= bit;
    }
    table[count] = 0;
    return behind_table(table + count + 1);
}
// Two bits are left to the first pass: it has four points in hand.
t_8u* reversal(i32 order, i32* table) { return reverse_indices(order - 2, 0, table); }
// In units of real numbers: those of pairs are doubled.
t_8u* reversal_of_pairs(i32 order, i32* table) { return reverse_indices(order - 2, 1, table); }
// The upper levels of what stays when as many are taken from both ends; in units of whole points.
t_8u* reversal_of_tiles(i32 order, i32 levels, i32* table)
{
    return reverse_indices(order - 2 * levels, levels, table);
}

template <class R> t_8u* base(i32 order, R* table)
{
    fill_base(order, table);
    return behind_table(table + base_sines(order));
}

// For the passes of the engine, one behind the other.
template <class R> t_8u* level_one(i32 order, const R* sines, i32 base_order, R* table)
{
    const Circle<R> circle(sines, base_order);
    const Passes passes(order);
    for (i32 i = 1; i <= passes.last; ++i)
        table = write_twiddles(circle, passes.done[i], passes.log(i), 1 << passes.log(i), 0,
                               i64{1} << passes.done[i - 1], table);
    return behind_table(table);
}

// Half the sines of a quarter: the sums that they meet are halved too.
template <class R> t_8u* for_reals(i32 order, const R* sines, i32 base_order, R* table)
{
    const Circle<R> circle(sines, base_order);
    const i64 quarter = i64{1} << (order - 2);
    for (i64 k = 0; k <= quarter; ++k) table[k] = circle.root(k << (base_order - order)).im / 2;
    return behind_table(table + quarter + 1);
}

} // namespace

PRIMITIVE(2, ymps_initTabBitRev, reversal)
PRIMITIVE(2, ymps_initTabBitRevNorm, reversal_of_pairs)
PRIMITIVE(3, ymps_initTabBitRevLarge, reversal_of_tiles)
#define TABLES(t)                                                                                                      \
    PRIMITIVE(2, ymps_initTabTwdBase_##t, base)                                                                        \
    PRIMITIVE(4, ymps_initTabTwd_L1_##t, level_one)                                                                    \
    PRIMITIVE(4, ymps_initTabTwdRealRec_##t, for_reals)                                                                \
    PRIMITIVE(4, ymps_initTabTwdCcsRec_##t, for_reals)
ORV_DFT_REAL(TABLES)

} // namespace orv::dft
