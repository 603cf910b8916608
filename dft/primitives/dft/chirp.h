// Transforms as convolutions with a chirp (Bluestein, A linear filtering approach to the computation of discrete
// Fourier transform, 1970): with a[k] = exp(-pi*i*k^2/n), X[k] = a[k] * sum of a[j]*x[j] * conj(a[k-j]).
#pragma once

#include "dft/primitives/dft/tables.h"

namespace orv::dft::general {

template <class R> ORV_INLINE pairs<R> product(pairs<R> x, pairs<R> y)
{
    return add_sub(lane_product(x, real_parts(y)), lane_product(swap_neighbours(x), imaginary_parts(y)));
}

// The convolution, of get(k) = x[k] for k < n, to put(k, X[k]) for k < results; a convolution of conj_length points
// that lie at the head of the work area. Forward alone: what an inverse is else stands where it is called.
template <class R, class Get, class Put>
i32 convolve(const YmpDftSpec& spec, i32 n, i32 results, t_8u* work, Get get, Put put)
{
    using T = cpx<R>;
    const i32 length = spec.conv_length;
    const auto* const chirp = static_cast<const T*>(spec.chirp_a);
    const auto* const filter = static_cast<const T*>(spec.chirp_b);
    auto* const w = reinterpret_cast<T*>(work);
    t_8u* const buffer = work + area_of_convolution<R>(length);

    const auto each = [](i32 end, auto f) ORV_INLINE_LAMBDA {
        constexpr int width = pairs<R>::lanes;
        i64 k = 0;
        for (; k <= end - width; k += width) f(std::integral_constant<int, width>{}, k);
        if constexpr (width > 1)
            if (k < end) f(std::integral_constant<int, 1>{}, k);
    };
    each(n, [=](auto lanes, i64 k)
                ORV_INLINE_LAMBDA { store_first<lanes>(w + k, product(get(lanes, k), load_first<lanes>(chirp + k))); });
    clear(w + n, length - n);
    if (const i32 s = Tables<R>::forward(w, w, spec.conv_spec, buffer)) return s;
    Tables<R>::multiply(filter, w, length);
    if (const i32 s = Tables<R>::inverse(w, w, spec.conv_spec, buffer)) return s;
    each(results, [=](auto lanes, i64 k) ORV_INLINE_LAMBDA {
        put(lanes, k, product(load_first<lanes>(w + k), load_first<lanes>(chirp + k)));
    });
    return ok;
}

} // namespace orv::dft::general
