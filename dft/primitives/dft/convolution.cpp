// Complex transforms as convolutions with a chirp, and the chirps' tables.
#include "dft/primitives/dft/chirp.h"

namespace orv::dft::general {
namespace {

// An inverse is a forward transform whose results 1 to n-1 stand in reverse.
template <class R> i32 transform(const YmpDftSpec* spec, const cpx<R>* src, cpx<R>* dst, i32 n, i32 sign, t_8u* work)
{
    const auto from = array(src), to = array(dst);
    const i32 status = convolve<R>(
        *spec, n, n, work, [=](auto lanes, i64 k) ORV_INLINE_LAMBDA { return from.template get<lanes>(k); },
        [=](auto lanes, i64 k, auto x) ORV_INLINE_LAMBDA { to.template put<lanes>(k, x); });
    if (status == ok && sign < 0)
        for (i32 k = 1, l = n - 1; k < l; ++k, --l) {
            const cpx<R> kept = dst[k];
            dst[k] = dst[l], dst[l] = kept;
        }
    return status;
}

template <class R>
i32 transform_split(const YmpDftSpec* spec, const R* src_re, const R* src_im, R* dst_re, R* dst_im, i32 n, i32 sign,
                    t_8u* work)
{
    const bool inverse = sign < 0; // the parts exchanged
    const auto from = inverse ? array(src_im, src_re) : array(src_re, src_im);
    const auto to = inverse ? array(dst_im, dst_re) : array(dst_re, dst_im);
    return convolve<R>(
        *spec, n, n, work, [=](auto lanes, i64 k) ORV_INLINE_LAMBDA { return from.template get<lanes>(k); },
        [=](auto lanes, i64 k, auto x) ORV_INLINE_LAMBDA { to.template put<lanes>(k, x); });
}

// The chirp out of 2n roots: k^2 modulo 2n grows by the odd numbers.
template <class R> void fill_chirp(i32 n, const cpx<R>* base, i32 base_length, cpx<R>* chirp)
{
    i64 square = 0;
    for (i64 k = 0; k < n; ++k) {
        chirp[k] = base[square];
        square += 2 * k + 1;
        if (square >= base_length) square -= base_length;
    }
}

// Its conjugate, so that neither a place left nor right of 0 is another's; then the spectrum, divided by the length,
// since the inverse transform divides by nothing.
template <class R> i32 fill_filter(const YmpDftSpec& spec, i32 n, cpx<R>* filter, t_8u* buffer)
{
    const auto* const chirp = static_cast<const cpx<R>*>(spec.chirp_a);
    const i32 length = spec.conv_length;
    clear(filter, length);
    filter[0] = conj(chirp[0]);
    for (i32 k = 1; k < n; ++k) filter[k] = filter[length - k] = conj(chirp[k]);
    if (const i32 s = Tables<R>::forward(filter, filter, spec.conv_spec, buffer)) return s;
    const R scale = static_cast<R>(1.0 / length);
    for (i32 k = 0; k < length; ++k) filter[k] = scale * filter[k];
    return ok;
}

template <class R>
i32 init(YmpDftSpec* spec, i32 n, const cpx<R>* base, i32 base_length, t_8u* memory, t_8u* init_memory)
{
    Store store{memory, false};
    spec->conv_length = plan_of(*spec).convolution;
    auto* const chirp = store.take<cpx<R>>(bytes_of_base<R>(n));
    auto* const filter = store.take<cpx<R>>(area_of_convolution<R>(spec->conv_length));
    spec->chirp_a = chirp, spec->chirp_b = filter;
    fill_chirp(n, base, base_length, chirp);
    spec->conv_spec = reinterpret_cast<YmpDftSpec*>(store.next);
    if (const i32 s = Tables<R>::init(spec->conv_length, scale_none, 0, store.next, init_memory)) return s;
    return fill_filter(*spec, n, filter, init_memory);
}

template <class R> i32 create(YmpDftSpec* spec, i32 n, const cpx<R>* base, i32 base_length)
{
    Store store{nullptr, true};
    spec->conv_length = plan_of(*spec).convolution;
    auto* const chirp = store.take<cpx<R>>(bytes_of_base<R>(n));
    if ((spec->chirp_a = chirp) == nullptr) return no_memory;
    auto* const filter = store.take<cpx<R>>(area_of_convolution<R>(spec->conv_length));
    if ((spec->chirp_b = filter) == nullptr) return no_memory;
    fill_chirp(n, base, base_length, chirp);
    if (const i32 s = Tables<R>::init_alloc(&spec->conv_spec, spec->conv_length, scale_none, 0)) return s;
    return fill_filter(*spec, n, filter, nullptr);
}

} // namespace

#define CONVOLUTION(t)                                                                                                 \
    PRIMITIVE(8, ownscrDft_Conv_##t, transform_split)                                                                  \
    PRIMITIVE(6, ownsInitDftConv_##t, init)                                                                            \
    PRIMITIVE(4, ownsInitAllocDftConv_##t, create)
ORV_DFT_REAL(CONVOLUTION)
PRIMITIVE(6, ownscDft_Conv_32fc, transform)
PRIMITIVE(6, ownscDft_Conv_64fc, transform)

} // namespace orv::dft::general
