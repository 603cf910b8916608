// How CBLAS passes arguments, as follows from a routine's declaration in orv/blas.h.
#pragma once

#include "compat/blas/report.h"

namespace orv::compat {

// How CBLAS takes an argument of a routine.
template <class Int, class A> struct Argument {
    using type = std::conditional_t<is_complex<A>, const void*, A>;
};
template <class Int> struct Argument<Int, i64> {
    using type = Int;
};
template <class Int> struct Argument<Int, char> {
    using type = int; // an enumerator
};
template <class Int, class T> struct Argument<Int, T*> {
    using type = std::conditional_t<!is_complex<std::remove_const_t<T>>, T*,
                                    std::conditional_t<std::is_const_v<T>, const void*, void*>>;
};

template <auto& F, int i> using cblas32_argument = typename Argument<i32, value_argument<F, i>>::type;
template <auto& F, int i> using cblas64_argument = typename Argument<i64, value_argument<F, i>>::type;

// An argument of CBLAS as the core takes it.
template <class A, class C> A native(C argument)
{
    if constexpr (is_complex<A>) return *static_cast<const A*>(argument);
    else return static_cast<A>(argument);
}

} // namespace orv::compat
