// The grammar of the names:
//
//   BLAS_<t><op>[_<a>[_<b>]][_x]    for C         BLAS_zgemv_d_z_x: result z, first input d, second input z, with prec
//   blas_<t><op>[_<a>[_<b>]][_x]    for Fortran
//
// op names the template (and the file: gemv, gemv2 in gemv.cpp), the letters t, a, b are its element types; without
// them all are t. The same tokens of the list (orv/xblas_members.h) make both, so that name and types cannot disagree.
// A body is declared once, by value, and has a B also where there is one input:
//
//   template <class T, class A, class B> void gemv(Routine, Order, Trans, i64 m, ..., T alpha, const A* a, ..., Prec);
//
// and both forms follow from that declaration. For C scalars go by value, but complex ones by pointer. For Fortran
// everything goes by pointer, and there is no Order: matrices are column-major. Without _x there is no Prec: the loop
// in the arithmetic of the result's type runs.
#pragma once

#include "frame/grid.h"
#include "frame/simd.h"
#include "xblas/options.h"
#include "xblas/types.h"

namespace orv::xblas {

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

// Exports one member in both forms. count, rest: of the arguments of the form for C, and for Fortran.
#define XBLAS_MEMBER(op, t, ab, a, b, x, reported, count, rest)                                                        \
    namespace {                                                                                                        \
    constexpr auto& t##op##ab##x = op<types::t, types::a, types::b>;                                                   \
    }                                                                                                                  \
    ORV_EXPORT void XBLAS(BLAS_##t##op##ab##x)(ORV_PARAMETERS(count, c_argument, t##op##ab##x))                        \
    {                                                                                                                  \
        from_c<t##op##ab##x>("BLAS_" #t #op #ab XBLAS_ENDING##x##reported, ORV_NAMES(count));                          \
    }                                                                                                                  \
    ORV_EXPORT void XBLAS(blas_##t##op##ab##x)(ORV_PARAMETERS(rest, fortran_argument, t##op##ab##x))                   \
    {                                                                                                                  \
        from_fortran<t##op##ab##x>("BLAS_" #t #op #ab XBLAS_ENDING##x##reported, ORV_NAMES(rest));                     \
    }
// What a reported name ends in: _x where both the member and its family's reports have it.
#define XBLAS_ENDING_x_x "_x"
#define XBLAS_ENDING_x
#define XBLAS_ENDING

// All members of an operation on vectors, and of one on matrices, which has an order for C. reported: _x if members
// with prec report under their name, nothing if they do under that without _x.
#define XBLAS_VECTORS(op, reported) ORV_XBLAS_MEMBERS_##op(XBLAS_OF_VECTORS, op, reported)
#define XBLAS_MATRICES(op, reported) ORV_XBLAS_MEMBERS_##op(XBLAS_OF_MATRICES, op, reported)
#define XBLAS_OF_VECTORS(op, t, ab, a, b, x, reported)                                                                 \
    XBLAS_MEMBER(op, t, ab, a, b, x, reported, ORV_COUNT(ORV_XBLAS_ARGUMENTS_##op(, , ) ORV_XBLAS_PREC##x),            \
                 ORV_COUNT(ORV_XBLAS_ARGUMENTS_##op(, , ) ORV_XBLAS_PREC##x))
#define XBLAS_OF_MATRICES(op, t, ab, a, b, x, reported)                                                                \
    XBLAS_MEMBER(op, t, ab, a, b, x, reported, ORV_COUNT(ORV_XBLAS_ARGUMENTS_##op(, , ) ORV_XBLAS_PREC##x),            \
                 ORV_COUNT_REST(ORV_XBLAS_ARGUMENTS_##op(, , ) ORV_XBLAS_PREC##x))
