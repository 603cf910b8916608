// How a routine of the public BLAS is written: a body over its kernel, by pointer, and one line that gives the body all
// its names:
//
//   ORV_BLAS(6, daxpy, Direct, xdaxpy)      orv_daxpy             by value, as orv/blas.h declares it
//                                           orv_blas_daxpy        by pointer, 64-bit integers
//                                           orv_blas_lp64_daxpy   by pointer, 32-bit integers
//
// 6 is the number of arguments, Direct the body, xdaxpy of the module blas its kernel. Types follow from the
// declaration.
#pragma once

#include "core/branch/kernel.h"
#include "core/serv/status.h"
#include "frame/export.h"
#include "frame/interface.h"
#include "frame/kernels/blas.h"

// In the library a complex number is the type that kernels know; it is passed and returned like C's own.
#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include "orv/blas.h"

#include <limits>
#include <utility>

namespace orv::core {

// What a routine returns when no kernel can run.
template <class R> R failed()
{
    if constexpr (std::is_same_v<R, orv_status>) return last_status();
    else if constexpr (std::is_same_v<R, i64>) return 0;
    else if constexpr (is_complex<R>) return {failed<real_t<R>>(), failed<real_t<R>>()};
    else return std::numeric_limits<R>::quiet_NaN();
}

// The body of a routine that takes whatever comes: its kernel.
template <auto& F> class Direct {
public:
    template <class Prototype> constexpr explicit Direct(Prototype kernel) : kernel_(kernel) {}

    template <class... P> result_of<F> operator()(P... arguments)
    {
        using R = result_of<F>;
        auto* kernel = kernel_.get();
        if (kernel == nullptr) [[unlikely]]
            return failed<R>();
        if constexpr (is_complex<R>) {
            R result;
            kernel(&result, arguments...);
            return result;
        } else if constexpr (std::is_same_v<R, orv_status>) {
            kernel(arguments...);
            return ORV_OK;
        } else return kernel(arguments...);
    }

private:
    Kernel<kernel_form<F>> kernel_;
};

// The same behind a check of the arguments, a function of frame/arguments.h.
template <auto& F, auto check> class Checked : Direct<F> {
public:
    using Direct<F>::Direct;

    template <class... P> orv_status operator()(P... arguments)
    {
        const int bad = on_values<F>(check, arguments...);
        return bad != 0 ? -bad : Direct<F>::operator()(arguments...);
    }
};

// Tells of a bad argument in the way of the public interface, and in that of the wrappers; both return the status.
orv_status report_by_value(const char* routine, orv_status status);
orv_status report_by_pointer(const char* routine, orv_status status);

namespace detail {

// The position of the operand that an index array counts in; -1 if a routine has none.
template <class Body> constexpr int dense_operand()
{
    if constexpr (requires { Body::dense; }) return Body::dense;
    else return -1;
}

// Kernels take scalars by pointer, and index arrays that count from 1: y[i] from 0 is element i of y + 1 from 1.
template <bool counted, class A> const A* address(const A& scalar) { return &scalar; }
template <bool counted, class T> T* address(T* const& array) { return counted && array != nullptr ? array + 1 : array; }

// An argument by pointer as a body takes it: integers widened, everything else as it comes.
template <class A, class P> struct Widened {
    P pointer;
    P get() const { return pointer; }
};
template <> struct Widened<i64, const i32*> {
    i64 value;
    explicit Widened(const i32* pointer) : value(*pointer) {}
    const i64* get() const { return &value; }
};

template <auto& F, class Body, int... i, class... A>
auto by_value(const char* name, Body& body, std::integer_sequence<int, i...>, const A&... arguments)
{
    const auto result = body(address<i == dense_operand<Body>()>(arguments)...);
    using R = result_of<F>;
    if constexpr (std::is_same_v<R, i64>) return result - 1;
    else if constexpr (std::is_same_v<R, orv_status>) {
        return result >= 0 ? result : report_by_value(name, result);
    } else return result;
}

template <auto& F, class Body, int... i, class... P>
auto by_pointer(const char* name, Body& body, std::integer_sequence<int, i...>, P... pointers)
{
    const auto result = body(Widened<value_argument<F, i>, P>(pointers).get()...);
    if constexpr (std::is_same_v<result_of<F>, orv_status>)
        return result >= 0 ? result : report_by_pointer(name, result);
    else return result;
}

template <auto& F> using every_argument = std::make_integer_sequence<int, arity<F>>;

} // namespace detail

// The three ways into a body. A complex result goes to `result` if the caller passes by pointer.
template <auto& F, class Body, class... A> result_of<F> by_value(const char* name, Body& body, const A&... arguments)
{
    return detail::by_value<F>(name, body, detail::every_argument<F>(), arguments...);
}

template <auto& F, class Body, class... P> result_of<F> by_pointer(const char* name, Body& body, P... pointers)
{
    return detail::by_pointer<F>(name, body, detail::every_argument<F>(), pointers...);
}

template <auto& F, class Body, class... P>
void by_pointer_to(result_of<F>* result, const char* name, Body& body, P... pointers)
{
    *result = by_pointer<F>(name, body, pointers...);
}

} // namespace orv::core

// The body and the form by value of a routine.
#define ORV_BLAS_BY_VALUE(arity, name, Body, kernel)                                                                   \
    namespace {                                                                                                        \
    constinit Body<orv_##name> name##_body{kernels::blas::kernel()};                                                   \
    }                                                                                                                  \
    result_of<orv_##name> orv_##name(ORV_PARAMETERS_##arity(value_argument, orv_##name))                               \
    {                                                                                                                  \
        return by_value<orv_##name>("orv_" #name, name##_body, ORV_NAMES_##arity);                                     \
    }

#define ORV_BLAS_BY_POINTER(symbol, width, arity, name)                                                                \
    ORV_EXPORT pointer##width##_result<orv_##name> symbol(                                                             \
        ORV_PARAMETERS_##arity(pointer##width##_argument, orv_##name))                                                 \
    {                                                                                                                  \
        return static_cast<pointer##width##_result<orv_##name>>(                                                       \
            by_pointer<orv_##name>(#name, name##_body, ORV_NAMES_##arity));                                            \
    }

#define ORV_BLAS_BY_POINTER_TO(symbol, width, arity, name)                                                             \
    ORV_EXPORT void symbol(result_of<orv_##name>* result,                                                              \
                           ORV_PARAMETERS_##arity(pointer##width##_argument, orv_##name))                              \
    {                                                                                                                  \
        by_pointer_to<orv_##name>(result, #name, name##_body, ORV_NAMES_##arity);                                      \
    }

// All three names. ORV_BLAS_COMPLEX is for routines whose result is a complex number.
#define ORV_BLAS(arity, name, Body, kernel)                                                                            \
    ORV_BLAS_BY_VALUE(arity, name, Body, kernel)                                                                       \
    ORV_BLAS_BY_POINTER(orv_blas_##name, 64, arity, name)                                                              \
    ORV_BLAS_BY_POINTER(orv_blas_lp64_##name, 32, arity, name)
#define ORV_BLAS_COMPLEX(arity, name, Body, kernel)                                                                    \
    ORV_BLAS_BY_VALUE(arity, name, Body, kernel)                                                                       \
    ORV_BLAS_BY_POINTER_TO(orv_blas_##name, 64, arity, name)                                                           \
    ORV_BLAS_BY_POINTER_TO(orv_blas_lp64_##name, 32, arity, name)
