// What a program asks a planner for, whatever way it asked: dimensions to transform, loops around them, and the form of
// the numbers. Strides count elements of their side, as the interface has them.
#pragma once

#include "frame/types.h"

#include <cstddef>

namespace orv::compat::fftw {

#ifdef ORV_FFTW_SINGLE
using R = float;
#define X(name) fftwf_##name
#else
using R = double;
#define X(name) fftw_##name
#endif
using C = R[2];

#define EXPORT extern "C" __attribute__((visibility("default")))

enum Sign { forward = -1, backward = 1 };
enum Flag : unsigned { wisdom_only = 1u << 21 };
enum RealKind { r2hc, hc2r, dht, redft00, redft01, redft10, redft11, rodft00, rodft01, rodft10, rodft11 };
constexpr bool is_wave(RealKind kind) { return kind >= redft00; } // sines and cosines

struct Dim {
    std::ptrdiff_t n, is, os;
};
struct ShortDim { // the same where integers are short
    int n, is, os;
};

// Some dimensions; none of a rank below 0 where there are too many or a length is negative.
struct Dims {
    static constexpr int most = 16;
    int rank = 0;
    Dim dim[most];

    Dims() = default;
    template <class D> Dims(int count, const D* from) : rank(count >= 0 && count <= most ? count : -1)
    {
        for (int k = 0; k < rank; ++k) dim[k] = {from[k].n, from[k].is, from[k].os};
        for (int k = 0; k < rank; ++k)
            if (dim[k].n < 0) rank = -1;
    }
    bool valid() const { return rank >= 0; }
    const Dim* begin() const { return dim; }
    const Dim* end() const { return dim + rank; }
    void add(Dim d) { dim[rank++] = d; }
    bool empty() const // a length is 0: there is nothing to do
    {
        for (const Dim& d : *this)
            if (d.n == 0) return true;
        return false;
    }
    // Calls f(input offset, output offset) for every index.
    template <class F> void each(F f, int level = 0, std::ptrdiff_t in = 0, std::ptrdiff_t out = 0) const
    {
        if (level == rank) return f(in, out);
        for (std::ptrdiff_t i = 0; i < dim[level].n; ++i)
            each(f, level + 1, in + i * dim[level].is, out + i * dim[level].os);
    }
};

// Arrays stored by rows, last index innermost, inside of larger ones where `embed` is not null.
struct Side {
    const int* embed;
    int stride;
};
inline Dims by_rows(int rank, const int* n, Side in, Side out)
{
    Dims dims;
    if (rank < 0 || rank > Dims::most) return dims.rank = -1, dims;
    dims.rank = rank;
    std::ptrdiff_t is = in.stride, os = out.stride;
    for (int k = rank - 1; k >= 0; --k) {
        if (n[k] <= 0) return dims.rank = -1, dims;
        dims.dim[k] = {n[k], is, os};
        is *= in.embed ? in.embed[k] : n[k], os *= out.embed ? out.embed[k] : n[k];
    }
    return dims;
}

enum class Form { complex, to_half, from_half, reals }; // half: of the spectrum of reals

// Arrays: interleaved and real ones have the first of each pair alone.
struct Arrays {
    void *in, *in_im, *out, *out_im;
};

struct Problem {
    Form form;
    Sign sign;
    bool split;
    Dims dims, loops;
    Arrays arrays;
    unsigned flags;
    RealKind kinds[Dims::most] = {}; // of reals, a dimension each

    bool in_place() const { return arrays.in == arrays.out; }
    // Two ways to say the same become one. False: nobody can do that.
    bool normalise();
    bool is_forward() const { return form == Form::complex ? sign == forward : form == Form::to_half; }
};

} // namespace orv::compat::fftw
