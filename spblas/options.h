// What the letters of a name mean for the bodies. The letters of the grid (frame/kernels/spblas_members.h) are read
// when the name is compiled, so a name and what its body does cannot disagree.
#pragma once

#include "frame/interface.h"
#include "frame/kernels/spblas.h"
#include "frame/simd.h"

namespace orv::ORV_SPBLAS {

// What becomes of an entry a in row i and column j: it may act where it stands, y[i] += a*x[j], and mirrored,
// y[j] += a*x[i]; each with its own sign and conjugated or not.
struct Options {
    bool lower, upper;                         // which entries beside the main diagonal count
    bool diagonal, unit;                       // whether stored ones on it count; whether ones stand in their place
    bool direct, mirrored;                     // how an entry beside the diagonal acts, and on the diagonal: once
    bool conjugate_direct, conjugate_mirrored; // complex numbers only
    bool negate_direct, negate_mirrored;
    bool by_rows; // dense operands and blocks
    char base;    // of indices

    constexpr bool triangle() const { return lower != upper; } // some entries may have to be left out
    constexpr bool diagonal_only() const { return !lower && !upper; }
    constexpr bool conjugate_diagonal() const { return direct ? conjugate_direct : conjugate_mirrored; }
};

// op: n A, t transposed, c conjugate transposed, s conjugated. shape: kind, triangle, diagonal.
constexpr Options options(char op, const char* shape, int base, char layout)
{
    const char kind = shape[0], triangle = shape[1], diagonal = shape[2];
    const bool transposes = op == 't' || op == 'c', conjugates = op == 's' || op == 'c';
    Options o{};
    o.by_rows = layout == 'c';
    o.base = static_cast<char>(base);
    o.lower = kind == 'g' || triangle == 'l';
    o.upper = kind == 'g' || triangle == 'u';
    o.unit = diagonal == 'u';
    o.diagonal = kind != 'a' && !o.unit;
    const bool both = kind == 's' || kind == 'h' || kind == 'a';
    o.direct = both || !transposes;
    o.mirrored = both || transposes;
    // A Hermitian matrix is not changed by c, and its transpose is its conjugate.
    o.conjugate_direct = kind == 'h' ? op == 't' || op == 's' : conjugates;
    o.conjugate_mirrored = kind == 'h' ? !o.conjugate_direct : conjugates;
    o.negate_direct = kind == 'a' && transposes;
    o.negate_mirrored = kind == 'a' && !transposes;
    return o;
}

// The bounds of a part of the work as they come, from 1, both in it; seen by a loop from i to end.
struct Part {
    Int i, end;
    Part(const Int* first, const Int* last) : i(*first - 1), end(*last) {}
    Part(Int n) : i(0), end(n) {}
};

} // namespace orv::ORV_SPBLAS

// Exports the members of a family of the grid, each as a call of the body family<T>(Options, arguments...).
#define SPBLAS_MEMBER(family, t, format, base, op, shape, layout, form, run)                                           \
    SPBLAS_KERNEL(type_##t, family, ORV_SPBLAS_NAME(t, format, base, op, shape, layout, form, run),                    \
                  ORV_COUNT(ORV_SPBLAS_PARAMETERS_##family(, )), options(*#op, #shape, base, *#layout))
#define SPBLAS_KERNEL(T, family, name, count, options)                                                                 \
    ORV_EXPORT kernels::sparse::family<T, Int> SPBLAS(name);                                                           \
    ORV_EXPORT void SPBLAS(name)(ORV_PARAMETERS(count, value_argument, SPBLAS(name)))                                  \
    {                                                                                                                  \
        constexpr Options o = options;                                                                                 \
        family##_body<T>(o, ORV_NAMES(count));                                                                         \
    }

// Gives routines of frame/kernels/spblas.def their body, called with the arguments as they are: one, and one a type.
#define SPBLAS_ROUTINE(count, name, ...)                                                                               \
    ORV_EXPORT void SPBLAS(name)(ORV_PARAMETERS(count, value_argument, SPBLAS(name))) { __VA_ARGS__(ORV_NAMES(count)); }
#define SPBLAS_SDCZ(count, before, after, body)                                                                        \
    SPBLAS_ROUTINE(count, before##s##after, body<type_s>)                                                              \
    SPBLAS_ROUTINE(count, before##d##after, body<type_d>)                                                              \
    SPBLAS_ROUTINE(count, before##c##after, body<type_c>)                                                              \
    SPBLAS_ROUTINE(count, before##z##after, body<type_z>)
