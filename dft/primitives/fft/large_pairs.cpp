// Large transforms of pairs, and their parts by name.
#include "dft/primitives/fft/large.h"

namespace orv::dft {
namespace {

template <bool forward, class T> void large(const YmpFftSpec* spec, const T* src, T* dst, i32 order, t_8u* buffer)
{
    using R = real_t<T>;
    const Large<forward, R, PairForm<forward, R>> transform(*spec, buffer);
    transform.reverse(src, dst, order);
    transform.step({dst}, order, 0);
}

template <int radix, class T> void factor(T* data, i32 groups, i64 between, i32 columns, const real_t<T>* twiddles)
{
    const Blocks<real_t<T>> blocks{&data->re};
    pass<radix>(blocks, blocks, groups, between, columns, twiddles);
}

template <class T> void merge(const T* src, T* block, i32 rows, i32 columns, i64 stride)
{
    copy_rows(src, stride, block, columns, rows, columns);
}
// last: 0 as it is; 1 and -1 from blocks to pairs, forward and inverse.
template <class T> void split_back(const T* block, T* dst, i32 rows, i32 columns, i64 stride, i32 last)
{
    using R = real_t<T>;
    if (last == 0) return copy_rows(block, columns, dst, stride, rows, columns);
    for (i64 row = 0; row < rows; ++row, block += columns, dst += stride) {
        if (last > 0) PairForm<true, R>{readable(block)}.finish({dst}, columns);
        else PairForm<false, R>{readable(block)}.finish({dst}, columns);
    }
}

} // namespace

#define LARGE(t)                                                                                                       \
    PRIMITIVE(5, ymps_cFftFwd_Large_##t, large<true>)                                                                  \
    PRIMITIVE(5, ymps_cFftInv_Large_##t, large<false>)                                                                 \
    PRIMITIVE(5, ymps_cFftFwd_Fact4_##t, factor<4>)                                                                    \
    PRIMITIVE(5, ymps_cFftFwd_Fact8_##t, factor<8>)                                                                    \
    PRIMITIVE(5, ymps_cFft_BlkMerge_##t, merge)                                                                        \
    PRIMITIVE(6, ymps_cFft_BlkSplit_##t, split_back)
ORV_DFT_PAIRS(LARGE)
#define REVERSAL(Letter, letter)                                                                                       \
    PRIMITIVE(3, ymps_BitRev1_##Letter, reverse_in_place)                                                              \
    PRIMITIVE(4, ymps_BitRev2_##Letter, reverse)                                                                       \
    PRIMITIVE(3, ymps_##letter##BitRev1_Blk, reverse_in_place)
REVERSAL(C, c)
REVERSAL(Z, z)

} // namespace orv::dft
