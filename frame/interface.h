// One routine, several ways to call it. A public header declares a routine once: by value, with 64-bit integers. The
// signatures of its kernel and of its Fortran-like forms follow from that declaration by one rule:
//
//   by value                      by pointer
//   int64_t n                     const Int* n           Int: 64 or 32 bits
//   double alpha                  const double* alpha    the same for characters and complex numbers
//   const double* x               const double* x        arrays stay; an array of integers takes the width
//   returns a complex number      a pointer before all other arguments receives it
//   returns a position from 0     returns it from 1, as an Int
#pragma once

#include "frame/types.h"

#include <tuple>
#include <type_traits>
#include <utility>

namespace orv {

namespace detail {

template <class Int, class A> struct by_pointer {
    using type = const A*;
};
template <class Int, class T> struct by_pointer<Int, T*> {
    using type = T*;
};
template <class Int> struct by_pointer<Int, i64> {
    using type = const Int*;
};
template <class Int> struct by_pointer<Int, const i64*> {
    using type = const Int*;
};

template <class F> struct signature;
template <class R, class... A> struct signature<R(A...)> {
    using result = R;
    using arguments = std::tuple<A...>;

    template <class Int, class Status> static auto pointer_form()
    {
        if constexpr (std::is_same_v<R, int>) return std::type_identity<Status(typename by_pointer<Int, A>::type...)>();
        else if constexpr (std::is_same_v<R, i64>)
            return std::type_identity<Int(typename by_pointer<Int, A>::type...)>();
        else if constexpr (is_complex<R>) return std::type_identity<void(R*, typename by_pointer<Int, A>::type...)>();
        else return std::type_identity<R(typename by_pointer<Int, A>::type...)>();
    }
};

} // namespace detail

// F: a routine by its public declaration; routines that return int return a status.
template <auto& F> using signature_of = detail::signature<std::remove_reference_t<decltype(F)>>;
template <auto& F> using result_of = typename signature_of<F>::result;
template <auto& F, int i> using value_argument = std::tuple_element_t<i, typename signature_of<F>::arguments>;
template <auto& F, int i> using pointer64_argument = typename detail::by_pointer<i64, value_argument<F, i>>::type;
template <auto& F, int i> using pointer32_argument = typename detail::by_pointer<i32, value_argument<F, i>>::type;
template <auto& F> inline constexpr int arity = std::tuple_size_v<typename signature_of<F>::arguments>;

// What the forms by pointer return; a complex result does not return.
template <auto& F, class Int>
using pointer_result = std::conditional_t<std::is_same_v<result_of<F>, i64>, Int, result_of<F>>;
template <auto& F> using pointer64_result = pointer_result<F, i64>;
template <auto& F> using pointer32_result = pointer_result<F, i32>;

// The whole function type with its arguments by pointer. A kernel has no status to return.
template <auto& F, class Int>
using pointer_form = typename decltype(signature_of<F>::template pointer_form<Int, int>())::type;
template <auto& F> using kernel_form = typename decltype(signature_of<F>::template pointer_form<i64, void>())::type;

namespace detail {

template <class A, class P> A value(P pointer)
{
    if constexpr (std::is_pointer_v<A>) return pointer;
    else return static_cast<A>(*pointer);
}

template <auto& F, class Function, int... i, class... P>
auto on_values(Function function, std::integer_sequence<int, i...>, P... pointers)
{
    return function(value<value_argument<F, i>>(pointers)...);
}

} // namespace detail

// function(arguments of F by value), of arguments by pointer.
template <auto& F, class Function, class... P> auto on_values(Function function, P... pointers)
{
    return detail::on_values<F>(function, std::make_integer_sequence<int, arity<F>>(), pointers...);
}

} // namespace orv

// The parameters a0, a1, ... of an exported function whose types follow from the declaration of F, and their names.
// type is one of the ..._argument templates above.
#define ORV_PARAMETERS_1(type, F) type<F, 0> a0
#define ORV_PARAMETERS_2(type, F) ORV_PARAMETERS_1(type, F), type<F, 1> a1
#define ORV_PARAMETERS_3(type, F) ORV_PARAMETERS_2(type, F), type<F, 2> a2
#define ORV_PARAMETERS_4(type, F) ORV_PARAMETERS_3(type, F), type<F, 3> a3
#define ORV_PARAMETERS_5(type, F) ORV_PARAMETERS_4(type, F), type<F, 4> a4
#define ORV_PARAMETERS_6(type, F) ORV_PARAMETERS_5(type, F), type<F, 5> a5
#define ORV_PARAMETERS_7(type, F) ORV_PARAMETERS_6(type, F), type<F, 6> a6
#define ORV_PARAMETERS_8(type, F) ORV_PARAMETERS_7(type, F), type<F, 7> a7
#define ORV_PARAMETERS_9(type, F) ORV_PARAMETERS_8(type, F), type<F, 8> a8
#define ORV_PARAMETERS_10(type, F) ORV_PARAMETERS_9(type, F), type<F, 9> a9
#define ORV_PARAMETERS_11(type, F) ORV_PARAMETERS_10(type, F), type<F, 10> a10
#define ORV_PARAMETERS_12(type, F) ORV_PARAMETERS_11(type, F), type<F, 11> a11
#define ORV_PARAMETERS_13(type, F) ORV_PARAMETERS_12(type, F), type<F, 12> a12
#define ORV_PARAMETERS_14(type, F) ORV_PARAMETERS_13(type, F), type<F, 13> a13
#define ORV_PARAMETERS_15(type, F) ORV_PARAMETERS_14(type, F), type<F, 14> a14
#define ORV_PARAMETERS_16(type, F) ORV_PARAMETERS_15(type, F), type<F, 15> a15
#define ORV_PARAMETERS_17(type, F) ORV_PARAMETERS_16(type, F), type<F, 16> a16
#define ORV_PARAMETERS_18(type, F) ORV_PARAMETERS_17(type, F), type<F, 17> a17

#define ORV_NAMES_1 a0
#define ORV_NAMES_2 ORV_NAMES_1, a1
#define ORV_NAMES_3 ORV_NAMES_2, a2
#define ORV_NAMES_4 ORV_NAMES_3, a3
#define ORV_NAMES_5 ORV_NAMES_4, a4
#define ORV_NAMES_6 ORV_NAMES_5, a5
#define ORV_NAMES_7 ORV_NAMES_6, a6
#define ORV_NAMES_8 ORV_NAMES_7, a7
#define ORV_NAMES_9 ORV_NAMES_8, a8
#define ORV_NAMES_10 ORV_NAMES_9, a9
#define ORV_NAMES_11 ORV_NAMES_10, a10
#define ORV_NAMES_12 ORV_NAMES_11, a11
#define ORV_NAMES_13 ORV_NAMES_12, a12
#define ORV_NAMES_14 ORV_NAMES_13, a13
#define ORV_NAMES_15 ORV_NAMES_14, a14
#define ORV_NAMES_16 ORV_NAMES_15, a15
#define ORV_NAMES_17 ORV_NAMES_16, a16
#define ORV_NAMES_18 ORV_NAMES_17, a17
