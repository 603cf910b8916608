// The convolution of two windows by one transform: forward both, multiplied, backward.
#pragma once

#include "conv/memory.h"
#include "conv/transform.h"

namespace orv::conv {

constexpr i64 least_pow2(i64 n)
{
    i64 power = 1;
    while (power < n) power *= 2;
    return power;
}
constexpr i64 least_even(i64 n) { return (n + 1) & ~i64{1}; }
constexpr i64 least_div4(i64 n) { return (n + 3) & ~i64{3}; }

// Lengths that transforms like: the more dimensions, the dearer it is to make them longer.
constexpr i64 transform_length(i32 rank, i64 n)
{
    return rank < 3 ? least_pow2(n) : rank == 3 ? least_div4(n) : rank == 4 ? least_even(n) : n;
}

// Reals have transforms of their own in one and two dimensions.
template <class I> constexpr bool uses_real_transform(i32 rank) { return !is_complex<I> && rank < 3; }

template <class R> void multiply_spectra(const cpx<R>* x, cpx<R>* y, i64 count)
{
    each<cpx<R>, 1>(
        count, [&](i64 i, auto) ORV_INLINE_LAMBDA { storeu(y + i, element_product(loadu(x + i), loadu(y + i))); },
        [&](i64 i) ORV_INLINE_LAMBDA { y[i] = x[i] * y[i]; });
}

// The transforms take what is packed into arrays of lengths L, zeros behind it.
template <class E, class T> void pack(const View<const T>& v, E* array, const i64* lengths, i64 count)
{
    clear(array, count);
    copy(v, View<E>::dense(array, v.rank, lengths));
}

// result := x * y in full, or added to it; its lengths are those of x and y together, less one. x comes reversed where
// a correlation is asked for.
template <class I, class T>
[[gnu::noinline]] Status convolve_window(const View<const T>& x, const View<const T>& y, const View<I>& result,
                                         bool adds)
{
    using R = real_t<I>;
    const i32 rank = result.rank;
    i64 lengths[most_dimensions], count = 1;
    for (i32 d = 0; d < rank; ++d) count *= lengths[d] = transform_length(rank, result.n[d]);
    const bool of_reals = uses_real_transform<I>(rank);
    const Block<cpx<R>> x_spectrum(count);
    if (x_spectrum.refused()) return no_memory;
    const Block<cpx<R>> y_spectrum(count);
    if (y_spectrum.refused()) return no_memory;
    const Block<R> x_reals(count, of_reals);
    if (x_reals.refused()) return no_memory;
    const Block<R> y_reals(count, of_reals);
    if (y_reals.refused()) return no_memory;

    Transform<R> transform(of_reals, rank, lengths, count);
    if (!transform.works()) return transform_failed;
    const auto store = [&](auto* from) {
        const auto array = View<std::remove_pointer_t<decltype(from)>>::dense(from, rank, lengths);
        i64 origin[most_dimensions] = {};
        const auto window = array.part(origin, result.n);
        adds ? add(window, result) : copy(window, result);
    };
    if (of_reals) {
        clear(x_spectrum.data(), count), clear(y_spectrum.data(), count);
        pack(x, x_reals.data(), lengths, count), pack(y, y_reals.data(), lengths, count);
        transform.forward(x_reals.data(), x_spectrum.data()), transform.forward(y_reals.data(), y_spectrum.data());
    } else {
        pack(x, x_spectrum.data(), lengths, count), pack(y, y_spectrum.data(), lengths, count);
        transform.forward(x_spectrum.data(), nullptr), transform.forward(y_spectrum.data(), nullptr);
    }
    if (!transform.works()) return transform_failed;
    multiply_spectra(x_spectrum.data(), y_spectrum.data(), count);
    transform.backward(y_spectrum.data(), of_reals ? y_reals.data() : nullptr);
    if (!transform.works()) return transform_failed;
    if (of_reals) store(y_reals.data());
    else store(y_spectrum.data());
    return ok;
}

} // namespace orv::conv
