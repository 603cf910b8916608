// What a register is, whatever its width.
#pragma once

#include "frame/branch.h"
#include "frame/types.h"

#include <type_traits>

#define ORV_INLINE [[gnu::always_inline]] inline
#define ORV_INLINE_LAMBDA __attribute__((always_inline))

namespace orv {

template <class R> struct reg; // of reals, and of 32-bit integers

template <class T> struct vec {
    using real = real_t<T>;
    static constexpr int lanes = vector_bytes / sizeof(T);
    typename reg<real>::type r;
};

// The answers of a comparison, one a lane: all bits set, or none.
template <class R> struct mask {
    using bits = decltype(vec<R>{}.r == vec<R>{}.r);
    bits m;
};

} // namespace orv
