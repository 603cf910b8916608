// How the bodies of this folder get their names, and what every public one asks first.
//
// A name and its arguments are declared in frame/kernels/dft_primitives.h; a line PRIMITIVE(n, name, body) gives it
// the body, called with the n arguments as they are. The lines for a family's types come out of that header's lists.
#pragma once

#include "frame/interface.h"
#include "frame/kernels/dft_primitives.h"
#include "frame/simd.h"

#define PRIMITIVE(count, name, ...) PRIMITIVE_OF(count, name, __VA_ARGS__)
#define PRIMITIVE_OF(count, name, ...)                                                                                 \
    ORV_EXPORT result_of<DFT(name)> DFT(name)(ORV_PARAMETERS_##count(value_argument, DFT(name)))                       \
    {                                                                                                                  \
        return __VA_ARGS__(ORV_NAMES_##count);                                                                         \
    }

namespace orv::dft {

// Null is told before the length.
template <class... P> ORV_INLINE Status refusal(i32 n, const P*... pointers)
{
    if (((pointers == nullptr) || ...)) return null_pointer;
    return n < 1 ? bad_size : ok;
}

template <class T> ORV_INLINE void clear(T* dst, i64 n)
{
    DFT(ownsZero_8u)(reinterpret_cast<t_8u*>(dst), n * static_cast<i64>(sizeof(T)));
}
template <class T> ORV_INLINE void copy(const T* src, T* dst, i64 n)
{
    DFT(ownsCopy_8u)
    (reinterpret_cast<const t_8u*>(src), reinterpret_cast<t_8u*>(dst), n * static_cast<i64>(sizeof(T)));
}

// A constant's value, however it travels.
template <class T> ORV_INLINE T value_of(T c) { return c; }
template <class R> ORV_INLINE cpx<R> value_of(const cpx<R>* c) { return *c; }
template <class T> ORV_INLINE const void* constant_pointer(T) { return ""; } // never null
template <class T> ORV_INLINE const void* constant_pointer(const T* c) { return c; }

} // namespace orv::dft
