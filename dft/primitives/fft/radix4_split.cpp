// The engine on numbers in two arrays, at any order, and its parts by name. An inverse transform is the forward one
// with both arrays exchanged, at both ends.
#include "dft/primitives/fft/large.h"

namespace orv::dft {
namespace {

// The buffer has room for both arrays.
template <class R>
void normal(const R* src_re, const R* src_im, R* dst_re, R* dst_im, i32 n, const R* twiddles, const i32* reversal,
            R* buffer, const R* dst_or_src)
{
    const Planes<R> src{readable(src_re), readable(src_im)}, dst{dst_re, dst_im};
    const Planes<R> work = dst_or_src == src_re ? Planes<R>{buffer, buffer + n} : dst;
    const Flat flat(PlaneSource<R, Reversed>{src, {reversal, n}}, work, log_of(n), twiddles);
    flat.run(dst);
}

template <bool forward, class R>
void large(const YmpFftSpec* spec, const R* src_re, const R* src_im, R* dst_re, R* dst_im, i32 order, t_8u* buffer)
{
    const Large<forward, R, PlaneForm<R>> transform(*spec, buffer);
    transform.reverse(src_re, dst_re, order), transform.reverse(src_im, dst_im, order);
    transform.step(forward ? PlaneForm<R>{dst_re, dst_im} : PlaneForm<R>{dst_im, dst_re}, order, 0);
}

template <class R> void factor8(R* re, R* im, i32 groups, i64 between, i32 columns, const R* twiddles)
{
    const Planes<R> planes{re, im};
    pass<8>(planes, planes, groups, between, columns, twiddles);
}

template <class R> void core(R* re, R* im, i32 n, i32 begin, i32 end, const R* twiddles)
{
    const Planes<R> columns{re + begin, im + begin};
    last_pass(columns, n, begin, end, twiddles);
}
template <class R> void inverse_core(R* re, R* im, i32 n, i32 begin, i32 end, const R* twiddles)
{
    core(im, re, n, begin, end, twiddles);
}

} // namespace

#define SPLIT(t)                                                                                                       \
    PRIMITIVE(9, ymps_crRadix4FwdNorm_##t, normal)                                                                     \
    PRIMITIVE(7, ymps_crFftFwd_Large_##t, large<true>)                                                                 \
    PRIMITIVE(7, ymps_crFftInv_Large_##t, large<false>)                                                                \
    PRIMITIVE(6, ymps_crFftFwd_Fact8_Last_##t, factor8)                                                                \
    PRIMITIVE(6, ymps_crFftFwd_CoreMT_##t, core)                                                                       \
    PRIMITIVE(6, ymps_crFftInv_CoreMT_##t, inverse_core)
ORV_DFT_REAL(SPLIT)

} // namespace orv::dft
