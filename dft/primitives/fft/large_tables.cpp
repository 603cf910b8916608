// The tables of transforms beyond those of one level.
#include "dft/primitives/fft/plan.h"
#include "dft/primitives/fft/tables.h"

namespace orv::dft {
namespace {

// In the order of the chain of stages, block by block.
template <class R> void write_step(const Circle<R>& circle, i32 order, R* out)
{
    const auto [rows, block] = step_of<R>(order);
    const i32 inner = order - rows;
    const i64 columns = i64{1} << inner, width = i64{1} << (block - rows);
    for (i64 c = 0; c < columns; c += width)
        for (i32 done = 0; done < rows;) {
            const int log = stage_log(rows, done);
            const bool one = log == 2 && done + log == rows; // its square and cube are made in the run
            for (i64 row = 0; row < i64{1} << done; ++row)
                out = write_twiddles(circle, inner + done + log, one ? 1 : log, one ? 2 : 1 << log, row * columns + c,
                                     width, out);
            done += log;
        }
}

template <class R> t_8u* large(YmpFftSpec* spec, i32 order, const R* base, i32 base_order, t_8u* memory)
{
    const Circle<R> circle(base, base_order);
    i32 innermost = order;
    for (int level = 0; innermost > flat_limit<R>; ++level) {
        spec->step_twiddles[level] = memory;
        write_step(circle, innermost, reinterpret_cast<R*>(memory));
        memory += step_bytes<R>(innermost);
        innermost -= step_of<R>(innermost).rows;
    }

    R* const twiddles = reinterpret_cast<R*>(memory);
    const i32 one_level = static_cast<i32>(min(innermost, table_limit));
    spec->twiddle_table = twiddles;
    if constexpr (sizeof(R) == 8) DFT(ymps_initTabTwd_L1_64f)(one_level, base, base_order, twiddles);
    else DFT(ymps_initTabTwd_L1_32f)(one_level, base, base_order, twiddles);
    if (innermost > table_limit)
        write_twiddles(circle, innermost, 1, 2, 0, i64{1} << (innermost - 2),
                       twiddles + (extra_twiddles(twiddles) - twiddles));

    t_8u* const reversal = memory + flat_bytes<R>(innermost) - table_bytes(reversal_entries(innermost), sizeof(i32));
    auto* const table = reinterpret_cast<i32*>(reversal);
    spec->bit_reverse_table = table;
    if (order <= untiled_limit) DFT(ymps_initTabBitRevNorm)(order, table);
    else {
        DFT(ymps_initTabBitRevNorm)(tile_order, table);
        DFT(ymps_initTabBitRevLarge)(order, tile_side, table + tile_table);
    }
    return memory + flat_bytes<R>(innermost) + (order > flat_limit<R> ? large_reversal_bytes(order) : 0);
}

} // namespace

#define LARGE(t) PRIMITIVE(5, ymps_initTabTwd_Large_##t, large)
ORV_DFT_REAL(LARGE)

} // namespace orv::dft
