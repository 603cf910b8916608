// Lines of elements in strided memory, and their copies in rows of a buffer, where they are transformed.
#pragma once

#include "dft/node.h"
#include "dft/primitives/packed.h"
#include "frame/kernels/dft_compute.h"

namespace orv::dft {

using namespace kernels::dft;

// Reals that an element takes.
template <class T> inline constexpr i64 reals = sizeof(T) / sizeof(real_t<T>);

// Many lines. Strides count reals, for pairs stand between reals too: in packed rows of any length.
template <class T> struct Lines {
    using real =
        std::conditional_t<std::is_const_v<T>, const real_t<std::remove_const_t<T>>, real_t<std::remove_const_t<T>>>;
    real* data;
    i64 stride, distance; // between elements, between lines

    bool is_dense() const { return stride == reals<std::remove_const_t<T>>; }
    bool are_neighbours() const { return distance == reals<std::remove_const_t<T>>; }
    Lines from(i64 j) const { return {data + j * distance, stride, distance}; }
    T* line(i64 j) const { return reinterpret_cast<T*>(data + j * distance); }
    operator Lines<const T>() const { return {data, stride, distance}; }
};

// What callers tell in elements.
template <class T> Lines<T> lines_of(T* data, i64 stride, i64 distance)
{
    constexpr i64 unit = reals<std::remove_const_t<T>>;
    return {reinterpret_cast<typename Lines<T>::real*>(data), stride * unit, distance * unit};
}

// m lines of n elements to rows, and back.
template <class T> void gather(i64 n, i64 m, T* dst, i64 ldd, const Lines<const T>& src);
template <class T> void scatter(i64 n, i64 m, const Lines<T>& dst, const T* src, i64 lds);

} // namespace orv::dft
