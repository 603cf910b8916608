// The grammar of the names:
//
//   BLAS_<t><op>[_<a>[_<b>]][_x]    for C         BLAS_zgemv_d_z_x: result z, first input d, second input z, with prec
//   blas_<t><op>[_<a>[_<b>]][_x]    for Fortran
//
// op names the template (and the file: gemv, gemv2 in gemv.cpp), the letters t, a, b are its element types; without
// them all are t. The same tokens make both, so that name and types cannot disagree. A body is declared once, by value:
//
//   template <class T, class A, class B> void gemv(Routine, Order, Trans, i64 m, ..., T alpha, const A* a, ..., Prec);
//
// and both forms follow from that declaration. For C scalars go by value, but complex ones by pointer. For Fortran
// everything goes by pointer, and there is no Order: matrices are column-major. Without _x there is no Prec: the loop
// in the arithmetic of the result's type runs.
#pragma once

#include "frame/interface.h"
#include "frame/simd.h"
#include "xblas/options.h"

namespace orv::xblas {

// The letters of the types.
namespace types {
using s = float;
using d = double;
using c = cpx<float>;
using z = cpx<double>;
} // namespace types

// The arguments of a body behind the Routine, in the form for C and for Fortran.
template <class A> struct c_form {
    using type = std::conditional_t<is_complex<A>, const A*, A>;
};
template <class T> struct c_form<T*> {
    using type = T*;
};
template <class A> struct fortran_form {
    using type = const A*;
};
template <class T> struct fortran_form<T*> {
    using type = T*;
};
template <auto& body> inline constexpr bool has_order = std::is_same_v<value_argument<body, 1>, Order>;
template <auto& body, int i> using c_argument = typename c_form<value_argument<body, i + 1>>::type;
template <auto& body, int i>
using fortran_argument = typename fortran_form<value_argument<body, i + 1 + has_order<body>>>::type;

namespace detail {

template <class A, class P> ORV_INLINE A value(P passed)
{
    if constexpr (std::is_same_v<A, P>) return passed;
    else return *passed;
}
template <auto& body, int first, int... i, class... P>
ORV_INLINE void forward(const char* name, std::integer_sequence<int, i...>, P... passed)
{
    constexpr bool has_prec = first + sizeof...(P) == arity<body>;
    static_assert(has_prec || first + sizeof...(P) + 1 == arity<body>);
    const auto call = [&](auto... head) {
        if constexpr (has_prec)
            body(Routine{name, has_prec}, head..., value<value_argument<body, first + i>>(passed)...);
        else body(Routine{name, has_prec}, head..., value<value_argument<body, first + i>>(passed)..., Prec::single);
    };
    if constexpr (first == 2) call(Order::column_major);
    else call();
}

} // namespace detail

template <auto& body, class... P> ORV_INLINE void from_c(const char* name, P... passed)
{
    detail::forward<body, 1>(name, std::make_integer_sequence<int, sizeof...(P)>(), passed...);
}
template <auto& body, class... P> ORV_INLINE void from_fortran(const char* name, P... passed)
{
    detail::forward<body, 1 + has_order<body>>(name, std::make_integer_sequence<int, sizeof...(P)>(), passed...);
}

} // namespace orv::xblas

// Exports one name in both forms. c, f: how many arguments the form for C and the form for Fortran have.
#define XBLAS_EXPORT(name, body, c, f, reported)                                                                       \
    ORV_EXPORT void XBLAS(BLAS_##name)(ORV_PARAMETERS_##c(c_argument, body))                                           \
    {                                                                                                                  \
        from_c<body>("BLAS_" reported, ORV_NAMES_##c);                                                                 \
    }                                                                                                                  \
    ORV_EXPORT void XBLAS(blas_##name)(ORV_PARAMETERS_##f(fortran_argument, body))                                     \
    {                                                                                                                  \
        from_fortran<body>("BLAS_" reported, ORV_NAMES_##f);                                                           \
    }
#define XBLAS_BODY(member, op, ...)                                                                                    \
    namespace {                                                                                                        \
    constexpr auto& member = op<__VA_ARGS__>;                                                                          \
    }

// One member: t, types all the same, only with _x. cx, fx count arguments with prec, c, f without; x is "_x" if the
// name is reported with it.
#define XBLAS_PURE(t, op, cx, fx, x, ...)                                                                              \
    XBLAS_BODY(t##op, op, __VA_ARGS__)                                                                                 \
    XBLAS_EXPORT(t##op##_x, t##op, cx, fx, #t #op x)
// One member with suffix ab, with and without _x.
#define XBLAS_MIXED(t, op, ab, cx, fx, c, f, x, ...)                                                                   \
    XBLAS_BODY(t##op##_##ab, op, __VA_ARGS__)                                                                          \
    XBLAS_EXPORT(t##op##_##ab##_x, t##op##_##ab, cx, fx, #t #op "_" #ab x)                                             \
    XBLAS_EXPORT(t##op##_##ab, t##op##_##ab, c, f, #t #op "_" #ab)

#define XBLAS_PURE_1(t, op, cx, fx, x) XBLAS_PURE(t, op, cx, fx, x, types::t, types::t)
#define XBLAS_PURE_2(t, op, cx, fx, x) XBLAS_PURE(t, op, cx, fx, x, types::t, types::t, types::t)
#define XBLAS_MIXED_1(t, op, a, cx, fx, c, f, x) XBLAS_MIXED(t, op, a, cx, fx, c, f, x, types::t, types::a)
#define XBLAS_MIXED_2(t, op, a, b, cx, fx, c, f, x)                                                                    \
    XBLAS_MIXED(t, op, a##_##b, cx, fx, c, f, x, types::t, types::a, types::b)

// The members of a family, by the shape of its inputs.
#define XBLAS_TWO_INPUTS(op, ...)                                                                                      \
    XBLAS_ALL_PURE_2(op, __VA_ARGS__)                                                                                  \
    XBLAS_MIXED_2(d, op, d, s, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(d, op, s, d, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(d, op, s, s, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(c, op, c, s, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(c, op, s, c, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(c, op, s, s, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(z, op, c, c, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(z, op, c, z, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(z, op, z, c, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(z, op, d, d, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(z, op, d, z, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(z, op, z, d, __VA_ARGS__)
#define XBLAS_HERMITIAN(op, ...)                                                                                       \
    XBLAS_COMPLEX_PURE_2(op, __VA_ARGS__)                                                                              \
    XBLAS_MIXED_2(c, op, c, s, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(z, op, c, c, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(z, op, c, z, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(z, op, z, c, __VA_ARGS__)                                                                            \
    XBLAS_MIXED_2(z, op, z, d, __VA_ARGS__)
#define XBLAS_ONE_INPUT(op, ...)                                                                                       \
    XBLAS_ALL_PURE_1(op, __VA_ARGS__)                                                                                  \
    XBLAS_MIXED_1(d, op, s, __VA_ARGS__)                                                                               \
    XBLAS_MIXED_1(c, op, s, __VA_ARGS__)                                                                               \
    XBLAS_MIXED_1(z, op, c, __VA_ARGS__)                                                                               \
    XBLAS_MIXED_1(z, op, d, __VA_ARGS__)

#define XBLAS_ALL_PURE_2(op, cx, fx, c, f, x)                                                                          \
    XBLAS_PURE_2(s, op, cx, fx, x)                                                                                     \
    XBLAS_PURE_2(d, op, cx, fx, x)                                                                                     \
    XBLAS_COMPLEX_PURE_2(op, cx, fx, c, f, x)
#define XBLAS_COMPLEX_PURE_2(op, cx, fx, c_, f, x)                                                                     \
    XBLAS_PURE_2(c, op, cx, fx, x)                                                                                     \
    XBLAS_PURE_2(z, op, cx, fx, x)
#define XBLAS_ALL_PURE_1(op, cx, fx, c_, f, x)                                                                         \
    XBLAS_PURE_1(s, op, cx, fx, x)                                                                                     \
    XBLAS_PURE_1(d, op, cx, fx, x)                                                                                     \
    XBLAS_PURE_1(c, op, cx, fx, x)                                                                                     \
    XBLAS_PURE_1(z, op, cx, fx, x)
