// Tridiagonal systems by elimination from both ends, and scaled copies: each routine is its kernel behind a check of
// the arguments.
#include "core/blas/routine.h"
#include "frame/kernels/lapack_ps.h"
#include "frame/lapack_arguments.h"
#include "orv/lapack.h"

using namespace orv;
using namespace orv::core;

namespace {

template <auto& F> using Dttrfb = Checked<F, arguments::dttrfb>;
template <auto& F> using Dttrsb = Checked<F, arguments::dttrsb>;
template <auto& F> using Dtsvb = Checked<F, arguments::dtsvb>;
template <auto& F> using Lacpy2 = Checked<F, arguments::lacpy2>;
template <auto& F> using Lacpy3 = Checked<F, arguments::lacpy3>;

} // namespace

// ROUTINE(number of arguments, name, body, kernel)
#define ROUTINE(arity, name, Body, kernel)                                                                             \
    namespace {                                                                                                        \
    constinit Body<orv_##name> name##_body{kernels::lapack_ps::kernel()};                                              \
    }                                                                                                                  \
    orv_status orv_##name(ORV_PARAMETERS_##arity(value_argument, orv_##name))                                          \
    {                                                                                                                  \
        return by_value<orv_##name>("orv_" #name, name##_body, ORV_NAMES_##arity);                                     \
    }
#define ROUTINES(t)                                                                                                    \
    ROUTINE(5, t##dttrfb, Dttrfb, t##dttrfb)                                                                           \
    ROUTINE(9, t##dttrsb, Dttrsb, x##t##dttrsb)                                                                        \
    ROUTINE(8, t##dtsvb, Dtsvb, t##dtsvb)                                                                              \
    ROUTINE(9, t##lacpy2, Lacpy2, t##lacpy2)                                                                           \
    ROUTINE(8, t##lacpy3, Lacpy3, t##lacpy3)

ROUTINES(s)
ROUTINES(d)
ROUTINES(c)
ROUTINES(z)
