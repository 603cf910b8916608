// Conjugates, and whole spectra out of packed halves. The conjugate of the lowest integer saturates.
#include "dft/primitives/members.h"
#include "dft/primitives/packed.h"

namespace orv::dft {
namespace {

template <class R> ORV_INLINE cpx<R> conjugate(cpx<R> x) { return conj(x); }
ORV_INLINE t_16sc conjugate(t_16sc x)
{
    return {x.re, x.im == INT16_MIN ? t_16s{INT16_MAX} : static_cast<t_16s>(-x.im)};
}

template <class T> i32 conjugate_all(const T* src, T* dst, i32 n)
{
    if (const Status s = refusal(n, src, dst)) return s;
    for (i32 i = 0; i < n; ++i) dst[i] = conjugate(src[i]);
    return ok;
}
template <class T> i32 conjugate_in_place(T* dst, i32 n) { return conjugate_all(static_cast<const T*>(dst), dst, n); }

template <class T> i32 conjugate_reversed(const T* src, T* dst, i32 n)
{
    if (const Status s = refusal(n, src, dst)) return s;
    for (i64 i = 0; i < n; ++i) dst[i] = conjugate(src[n - 1 - i]);
    return ok;
}

// From the highest k down: so every element goes to where the packed half has been read already, and the spectrum may
// replace it in place.
template <Layout layout, class R> i32 expand(const R* src, cpx<R>* dst, i32 n)
{
    if (const Status s = refusal(n, src, dst)) return s;
    const auto [shift, half] = places(layout, n);
    const R first = src[0], middle = n % 2 == 0 ? src[half] : R(0);
    for (i64 k = (i64{n} - 1) / 2; k > 0; --k) {
        const cpx<R> x{src[2 * k + shift], src[2 * k + shift + 1]};
        dst[n - k] = conjugate(x);
        dst[k] = x;
    }
    if (n % 2 == 0) dst[n / 2] = {middle, R(0)};
    dst[0] = {first, R(0)};
    return ok;
}
template <Layout layout, class R> i32 expand_in_place(cpx<R>* dst, i32 n)
{
    return expand<layout>(reinterpret_cast<const R*>(dst), dst, n);
}

} // namespace

#define EXPAND(format, layout, t)                                                                                      \
    PRIMITIVE(3, ympsConj##format##_##t, expand<layout>)                                                               \
    PRIMITIVE(2, ympsConj##format##_##t##_I, expand_in_place<layout>)
#define CONJUGATE(t)                                                                                                   \
    PRIMITIVE(3, ympsConj_##t, conjugate_all)                                                                          \
    PRIMITIVE(2, ympsConj_##t##_I, conjugate_in_place)                                                                 \
    PRIMITIVE(3, ympsConjFlip_##t, conjugate_reversed)                                                                 \
    EXPAND(Ccs, Layout::ccs, t)                                                                                        \
    EXPAND(Pack, Layout::pack, t)                                                                                      \
    EXPAND(Perm, Layout::perm, t)
ORV_DFT_CONJUGATED(CONJUGATE)

} // namespace orv::dft
