// The letters of the types, and every combination of types that the loops are compiled for in an arithmetic P.
#pragma once

#include "frame/include/orv/xblas_members.h"
#include "frame/types.h"

namespace orv::xblas::types {
using s = float;
using d = double;
using c = cpx<float>;
using z = cpx<double>;
} // namespace orv::xblas::types

// M(P, A, B) for every pair of types that the inputs of one routine have; narrow: those of results in 32 bits.
#define XBLAS_NARROW_PAIRS(M, P)                                                                                       \
    M(P, float, float)                                                                                                 \
    M(P, float, cpx<float>)                                                                                            \
    M(P, cpx<float>, float)                                                                                            \
    M(P, cpx<float>, cpx<float>)
#define XBLAS_PAIRS(M, P)                                                                                              \
    XBLAS_NARROW_PAIRS(M, P)                                                                                           \
    M(P, double, double)                                                                                               \
    M(P, double, float)                                                                                                \
    M(P, float, double)                                                                                                \
    M(P, double, cpx<double>)                                                                                          \
    M(P, cpx<double>, double)                                                                                          \
    M(P, cpx<double>, cpx<float>)                                                                                      \
    M(P, cpx<float>, cpx<double>)                                                                                      \
    M(P, cpx<double>, cpx<double>)

// M(P, T, A, B) with the type of the result: the members of an operation with two inputs, of which each combination has
// one with prec.
#define XBLAS_TRIPLES(M, P) ORV_XBLAS_TWO_INPUTS(XBLAS_TRIPLE, M, P)
#define XBLAS_NARROW_TRIPLES(M, P) ORV_XBLAS_TWO_INPUTS(XBLAS_NARROW_TRIPLE, M, P)
#define XBLAS_TRIPLE(M, t, ab, a, b, x, P) XBLAS_ONLY##x(M(P, types::t, types::a, types::b))
#define XBLAS_NARROW_TRIPLE(M, t, ab, a, b, x, P) XBLAS_NARROW_##t(XBLAS_TRIPLE(M, t, ab, a, b, x, P))
#define XBLAS_ONLY_x(...) __VA_ARGS__
#define XBLAS_ONLY(...)
#define XBLAS_NARROW_s(...) __VA_ARGS__
#define XBLAS_NARROW_c(...) __VA_ARGS__
#define XBLAS_NARROW_d(...)
#define XBLAS_NARROW_z(...)
