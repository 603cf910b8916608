// Prototypes of kernels, one header a module beside this one, each with a list (.def) of the module's names. A
// signature is written once, as an alias template over the element type; a line of the list gives it to names, by type
// letters:
//
//   ORV_SDCZ(x, gemm, Gemm)       xsgemm is a Gemm<float>, xdgemm a Gemm<double>, xcgemm a Gemm<cpx<float>>, ...
//   ORV_NAME(scabs1, Abs1<float>) a single name
//
// Where kernels are compiled, each name is declared under its symbol, so that a body with other arguments does not
// compile. Everywhere else it is a type that knows its signature, module and name: kernels::blas::xsgemm.
#pragma once

#include "frame/types.h"

#include <type_traits>

#if __has_include("frame/branch.h") // the header that only kernels have
#include "frame/symbol.h"
#define ORV_PROTOTYPE(module, id, stem, ...) ORV_EXPORT __VA_ARGS__ ORV_KERNEL(module, stem);
#else
#define ORV_PROTOTYPE(module_, id, stem_, ...)                                                                         \
    struct id {                                                                                                        \
        using signature = __VA_ARGS__;                                                                                 \
        static constexpr const char *module = #module_, *stem = #stem_;                                                \
    };

namespace orv::kernels {

// One of a family by element type: of_type<T, blas::xsgemm, blas::xdgemm, blas::xcgemm, blas::xzgemm>.
template <class T, class S, class D, class C = void, class Z = void>
using of_type = std::conditional_t<
    std::is_same_v<T, float>, S,
    std::conditional_t<std::is_same_v<T, double>, D, std::conditional_t<std::is_same_v<T, cpx<float>>, C, Z>>>;

} // namespace orv::kernels
#endif

#define ORV_S(before, after, F) ORV_NAME(before##s##after, F<float>)
#define ORV_D(before, after, F) ORV_NAME(before##d##after, F<double>)
#define ORV_C(before, after, F) ORV_NAME(before##c##after, F<cpx<float>>)
#define ORV_Z(before, after, F) ORV_NAME(before##z##after, F<cpx<double>>)
#define ORV_SD(before, after, F) ORV_S(before, after, F) ORV_D(before, after, F)
#define ORV_CZ(before, after, F) ORV_C(before, after, F) ORV_Z(before, after, F)
#define ORV_SCZ(before, after, F) ORV_S(before, after, F) ORV_CZ(before, after, F)
#define ORV_DCZ(before, after, F) ORV_D(before, after, F) ORV_CZ(before, after, F)
#define ORV_SDCZ(before, after, F) ORV_SD(before, after, F) ORV_CZ(before, after, F)
// Real and complex: scgemm and dzgemm.
#define ORV_MIXED(before, after, F) ORV_C(before##s, after, F) ORV_Z(before##d, after, F)
