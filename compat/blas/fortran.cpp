// The Fortran interface: daxpy_ with 32-bit integers, daxpy_64_ with 64-bit ones. Every argument passes by pointer; the
// lengths of strings that Fortran passes behind the others are not looked at, so C may leave them out.
//
// A complex function returns its result by value, in registers, as gfortran and Debian's libraries have it. Code
// compiled by f2c, or with gfortran -ff2c, expects a pointer before the arguments instead (and sdot_ to return a
// double): such code needs an adapter with any library of this name.
#include "compat/blas/strides.h"
#include "frame/arguments.h"

using namespace orv;
using namespace orv::compat;

namespace {

template <auto& F, auto& Entry, class... P> auto enter(P... pointers)
{
    if constexpr (is_complex<result_of<F>>) {
        result_of<F> result;
        Entry(&result, pointers...);
        return result;
    } else return Entry(pointers...);
}

template <auto& F, auto& Entry, class Int, class... P>
[[gnu::cold, gnu::noinline]] auto first_call(const char* name, P... pointers)
{
    return first_answer<F>(FortranCall<Int>{name}, enter<F, Entry>(pointers...));
}

template <auto& F, class Int>
using fortran_result = std::conditional_t<std::is_same_v<result_of<F>, orv_status>, void, pointer_result<F, Int>>;

template <auto& F, auto& Entry, class Int, class... P> fortran_result<F, Int> call(const char* name, P... pointers)
{
    using R = fortran_result<F, Int>;
    if (goes_nowhere<F>(pointers...)) return R();
    if (!runs<F, FortranCall<Int>>.load(std::memory_order_relaxed)) [[unlikely]]
        return static_cast<R>(first_call<F, Entry, Int>(name, pointers...));
    return static_cast<R>(enter<F, Entry>(pointers...));
}

template <auto& F, auto& Entry, class Int, class Check, class... P>
void checked(const char* name, Check check, P... pointers)
{
    const FortranCall<Int> made{name};
    if (const Int bad = on_values<F>(check, pointers...)) [[unlikely]]
        return made.report(bad);
    end(made, Entry(pointers...));
}

} // namespace

// A symbol over the core's form of the same width, and the two symbols of a routine.
#define FORM(symbol, entry, width, arity, name)                                                                        \
    extern "C" pointer_form<orv_##name, i##width> entry;                                                               \
    STANDARD auto symbol(ORV_PARAMETERS_##arity(pointer##width##_argument, orv_##name))                                \
    {                                                                                                                  \
        return call<orv_##name, entry, i##width>(#name, ORV_NAMES_##arity);                                            \
    }
#define FORTRAN(arity, name)                                                                                           \
    FORM(name##_, orv_blas_lp64_##name, 32, arity, name)                                                               \
    FORM(name##_64_, orv_blas_##name, 64, arity, name)
// A third symbol of some functions is a subroutine with the result as last argument: other libraries' CBLAS calls it.
#define FUNCTION(arity, name)                                                                                          \
    FORTRAN(arity, name)                                                                                               \
    STANDARD void name##sub_(ORV_PARAMETERS_##arity(pointer32_argument, orv_##name),                                   \
                             pointer32_result<orv_##name>* result)                                                     \
    {                                                                                                                  \
        *result = name##_(ORV_NAMES_##arity);                                                                          \
    }

// The same with a check of the arguments.
#define CHECKED_FORM(symbol, entry, width, arity, name, check)                                                         \
    extern "C" pointer_form<orv_##name, i##width> entry;                                                               \
    STANDARD void symbol(ORV_PARAMETERS_##arity(pointer##width##_argument, orv_##name))                                \
    {                                                                                                                  \
        checked<orv_##name, entry, i##width>(#name, arguments::check, ORV_NAMES_##arity);                              \
    }
#define FORTRAN_CHECKED(arity, name, check)                                                                            \
    CHECKED_FORM(name##_, orv_blas_lp64_##name, 32, arity, name, check)                                                \
    CHECKED_FORM(name##_64_, orv_blas_##name, 64, arity, name, check)

FORTRAN(6, saxpy)
FORTRAN(6, daxpy)
FORTRAN(6, caxpy)
FORTRAN(6, zaxpy)
FORTRAN(7, saxpby)
FORTRAN(7, daxpby)
FORTRAN(7, caxpby)
FORTRAN(7, zaxpby)

FORTRAN(4, sscal)
FORTRAN(4, dscal)
FORTRAN(4, cscal)
FORTRAN(4, zscal)
FORTRAN(4, csscal)
FORTRAN(4, zdscal)
FORTRAN(5, scopy)
FORTRAN(5, dcopy)
FORTRAN(5, ccopy)
FORTRAN(5, zcopy)
FORTRAN(5, sswap)
FORTRAN(5, dswap)
FORTRAN(5, cswap)
FORTRAN(5, zswap)

FUNCTION(5, sdot)
FUNCTION(5, ddot)
FUNCTION(5, cdotu)
FUNCTION(5, cdotc)
FUNCTION(5, zdotu)
FUNCTION(5, zdotc)
FUNCTION(6, sdsdot)
FUNCTION(5, dsdot)

FUNCTION(3, snrm2)
FUNCTION(3, dnrm2)
FUNCTION(3, scnrm2)
FUNCTION(3, dznrm2)
FUNCTION(3, sasum)
FUNCTION(3, dasum)
FUNCTION(3, scasum)
FUNCTION(3, dzasum)
FUNCTION(1, scabs1)
FUNCTION(1, dcabs1)
FUNCTION(3, isamax)
FUNCTION(3, idamax)
FUNCTION(3, icamax)
FUNCTION(3, izamax)
FORTRAN(3, isamin)
FORTRAN(3, idamin)
FORTRAN(3, icamin)
FORTRAN(3, izamin)

FORTRAN(7, srot)
FORTRAN(7, drot)
FORTRAN(7, csrot)
FORTRAN(7, zdrot)
FORTRAN(4, srotg)
FORTRAN(4, drotg)
FORTRAN(4, crotg)
FORTRAN(4, zrotg)
FORTRAN(6, srotm)
FORTRAN(6, drotm)
FORTRAN(5, srotmg)
FORTRAN(5, drotmg)

FORTRAN(5, saxpyi)
FORTRAN(5, daxpyi)
FORTRAN(5, caxpyi)
FORTRAN(5, zaxpyi)
FORTRAN(4, sdoti)
FORTRAN(4, ddoti)
FORTRAN(4, cdotui)
FORTRAN(4, cdotci)
FORTRAN(4, zdotui)
FORTRAN(4, zdotci)
FORTRAN(4, sgthr)
FORTRAN(4, dgthr)
FORTRAN(4, cgthr)
FORTRAN(4, zgthr)
FORTRAN(4, sgthrz)
FORTRAN(4, dgthrz)
FORTRAN(4, cgthrz)
FORTRAN(4, zgthrz)
FORTRAN(4, ssctr)
FORTRAN(4, dsctr)
FORTRAN(4, csctr)
FORTRAN(4, zsctr)
FORTRAN(6, sroti)
FORTRAN(6, droti)

#define MATRIX(arity, name, check, mapping) FORTRAN_CHECKED(arity, name, check)
#include "compat/blas/matrices.def"
