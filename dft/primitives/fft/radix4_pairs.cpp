// The engine on pairs. Between first and last pass they are taken apart, in blocks, in the place of the pairs.
#include "dft/primitives/fft/radix4.h"
#include "dft/primitives/fft/two_passes.h"

namespace orv::dft {
namespace {

template <bool forward, class Place, class T>
void transform_pairs(const T* src, T* dst, T* work, i32 n, const real_t<T>* twiddles, Place place)
{
    using R = real_t<T>;
    const Flat flat(PairSource<forward, R, Place>{src, place}, Blocks<R>{&work->re}, log_of(n), twiddles);
    flat.run(Pairs<R, !forward>{dst});
}

template <bool forward, class T>
void normal(const T* src, T* dst, i32 n, const real_t<T>* twiddles, const i32* reversal, T* buffer, const T* dst_or_src)
{
    // The shortest stay pairs, in one piece or in two passes, as long as a first-level cache holds what the second
    // one reads.
    switch (n) {
    case 64:
        return fixed_pairs<64, forward>(src, dst);
    case 128:
        return fixed_pairs<128, forward>(src, dst);
    case 256:
        return two_passes<32, 8, forward>(src, dst);
    case 512:
        return two_passes<64, 8, forward>(src, dst);
    case 1024:
        return two_passes<32, 32, forward>(src, dst);
    case 2048:
        return two_passes<64, 32, forward>(src, dst);
    case 4096:
        if constexpr (sizeof(T) == sizeof(cpx<float>)) return two_passes<64, 64, forward>(src, dst);
    }
    transform_pairs<forward>(src, dst, dst_or_src == src ? buffer : dst, n, twiddles, Reversed{reversal, n});
}
template <class T> void reversed_before(const T* src, T* dst, i32 n, const real_t<T>* twiddles)
{
    transform_pairs<true>(src, dst, dst, n, twiddles, InOrder{});
}

// Of the last pass, some columns.
template <bool forward, class T> void core(T* data, i32 n, i32 begin, i32 end, const real_t<T>* twiddles)
{
    const Pairs<real_t<T>, !forward> columns{data + begin};
    last_pass(columns, n, begin, end, twiddles);
}

} // namespace

#define RADIX4(t)                                                                                                      \
    PRIMITIVE(7, ymps_cRadix4FwdNorm_##t, normal<true>)                                                                \
    PRIMITIVE(7, ymps_cRadix4InvNorm_##t, normal<false>)                                                               \
    PRIMITIVE(4, ymps_cRadix4Fwd_##t, reversed_before)                                                                 \
    PRIMITIVE(5, ymps_cFftFwd_CoreMT_##t, core<true>)                                                                  \
    PRIMITIVE(5, ymps_cFftInv_CoreMT_##t, core<false>)
ORV_DFT_PAIRS(RADIX4)

} // namespace orv::dft
