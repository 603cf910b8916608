// CBLAS, level 1: cblas_daxpy with 32-bit integers; cblas_daxpy_64 and cblas_daxpy64_, the two spellings in use, with
// 64-bit ones. Complex scalars and arrays pass as void pointers, complex results go to a last argument of the ..._sub
// forms.
#include "compat/blas/cblas.h"
#include "compat/blas/strides.h"

using namespace orv;
using namespace orv::compat;

namespace {

template <auto& F, int... i, class... C> auto enter(std::integer_sequence<int, i...>, C... arguments)
{
    return F(native<value_argument<F, i>>(arguments)...);
}
template <auto& F, class... C> auto enter(C... arguments)
{
    return enter<F>(std::make_integer_sequence<int, sizeof...(C)>(), arguments...);
}

template <auto& F, class Int, class... C>
[[gnu::cold, gnu::noinline]] auto first_call(CblasCall<Int> made, C... arguments)
{
    if constexpr (std::is_same_v<result_of<F>, i64>) return first_answer<F>(made, enter<F>(arguments...) + 1) - 1;
    else return first_answer<F>(made, enter<F>(arguments...));
}

template <auto& F, class Int, class... C> auto run(const CblasCall<Int>& made, C... arguments)
{
    if (!runs<F, CblasCall<Int>>.load(std::memory_order_relaxed)) [[unlikely]]
        return first_call<F>(made, arguments...);
    return enter<F>(arguments...);
}

// A position counts from 0 here too, but that of nothing is 0.
template <auto& F, class Int, class... C> auto call(const CblasCall<Int>& made, C... arguments)
{
    using R = result_of<F>;
    if constexpr (std::is_same_v<R, orv_status>) {
        if (!goes_nowhere<F>(arguments...)) run<F>(made, arguments...);
    } else if constexpr (std::is_same_v<R, i64>) return static_cast<std::size_t>(max(run<F>(made, arguments...), 0));
    else return goes_nowhere<F>(arguments...) ? R{} : run<F>(made, arguments...);
}

} // namespace

#define FORM(symbol, xerbla, width, arity, name)                                                                       \
    STANDARD auto symbol(ORV_PARAMETERS_##arity(cblas##width##_argument, orv_##name))                                  \
    {                                                                                                                  \
        return call<orv_##name>(CblasCall<i##width>{"cblas_" #name, xerbla}, ORV_NAMES_##arity);                       \
    }
#define CBLAS(arity, name)                                                                                             \
    FORM(cblas_##name, cblas_xerbla, 32, arity, name)                                                                  \
    FORM(cblas_##name##_64, cblas_xerbla_64, 64, arity, name)                                                          \
    FORM(cblas_##name##64_, cblas_xerbla64_, 64, arity, name)

#define SUB_FORM(symbol, xerbla, width, arity, name)                                                                   \
    STANDARD void symbol(ORV_PARAMETERS_##arity(cblas##width##_argument, orv_##name), void* result)                    \
    {                                                                                                                  \
        const CblasCall<i##width> made{"cblas_" #name "_sub", xerbla};                                                 \
        *static_cast<result_of<orv_##name>*>(result) = call<orv_##name>(made, ORV_NAMES_##arity);                      \
    }
#define CBLAS_SUB(arity, name)                                                                                         \
    SUB_FORM(cblas_##name##_sub, cblas_xerbla, 32, arity, name)                                                        \
    SUB_FORM(cblas_##name##_sub_64, cblas_xerbla_64, 64, arity, name)                                                  \
    SUB_FORM(cblas_##name##_sub64_, cblas_xerbla64_, 64, arity, name)

CBLAS(6, saxpy)
CBLAS(6, daxpy)
CBLAS(6, caxpy)
CBLAS(6, zaxpy)
CBLAS(7, saxpby)
CBLAS(7, daxpby)
CBLAS(7, caxpby)
CBLAS(7, zaxpby)

CBLAS(4, sscal)
CBLAS(4, dscal)
CBLAS(4, cscal)
CBLAS(4, zscal)
CBLAS(4, csscal)
CBLAS(4, zdscal)
CBLAS(5, scopy)
CBLAS(5, dcopy)
CBLAS(5, ccopy)
CBLAS(5, zcopy)
CBLAS(5, sswap)
CBLAS(5, dswap)
CBLAS(5, cswap)
CBLAS(5, zswap)

CBLAS(5, sdot)
CBLAS(5, ddot)
CBLAS_SUB(5, cdotu)
CBLAS_SUB(5, cdotc)
CBLAS_SUB(5, zdotu)
CBLAS_SUB(5, zdotc)
CBLAS(6, sdsdot)
CBLAS(5, dsdot)

CBLAS(3, snrm2)
CBLAS(3, dnrm2)
CBLAS(3, scnrm2)
CBLAS(3, dznrm2)
CBLAS(3, sasum)
CBLAS(3, dasum)
CBLAS(3, scasum)
CBLAS(3, dzasum)
CBLAS(1, scabs1)
CBLAS(1, dcabs1)
CBLAS(3, isamax)
CBLAS(3, idamax)
CBLAS(3, icamax)
CBLAS(3, izamax)
CBLAS(3, isamin)
CBLAS(3, idamin)
CBLAS(3, icamin)
CBLAS(3, izamin)

CBLAS(7, srot)
CBLAS(7, drot)
CBLAS(7, csrot)
CBLAS(7, zdrot)
CBLAS(4, srotg)
CBLAS(4, drotg)
CBLAS(4, crotg)
CBLAS(4, zrotg)
CBLAS(6, srotm)
CBLAS(6, drotm)
CBLAS(5, srotmg)
CBLAS(5, drotmg)
