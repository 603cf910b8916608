// A small square beside a matrix. A triangle, or one half of a symmetric matrix, is cut in blocks along its diagonal;
// what is off the diagonal is the general product's. A block on the diagonal is computed, or completed, in a square.
#pragma once

#include "blas/beta.h"
#include "blas/level3/product.h"
#include "blas/storage.h"
#include "frame/serv.h"
#include "frame/simd.h"

#include <type_traits>

namespace orv::level3 {

// Whether a matrix is symmetric or Hermitian: the second half is the first transposed, or conjugated too.
enum class Kind { symmetric, hermitian };

// The letter that turns one half into the other.
template <class T, Kind kind> inline constexpr char mirrored = is_complex<T>&& kind == Kind::hermitian ? 'C' : 'T';
template <class T, Kind kind> constexpr T mirror(T x) { return kind == Kind::hermitian ? conj(x) : x; }
// An element of the diagonal: the imaginary part of a Hermitian one counts as zero.
template <class T, Kind kind> constexpr T on_diagonal(T x)
{
    if constexpr (is_complex<T> && kind == Kind::hermitian) return {x.re, 0};
    else return x;
}

// A factor of a Hermitian update is real.
template <class T, Kind kind> using Factor = std::conditional_t<kind == Kind::hermitian, real_t<T>, T>;
template <class T, class F> constexpr T as_element(F f)
{
    if constexpr (std::is_same_v<T, F>) return f;
    else return {f, 0};
}

// Where the square stands and what fits. A block of work memory, or, where that cannot be had or is not wanted, an
// array of the caller's: smaller, and slower.
template <class T> struct Square {
    T* at;
    i64 side;
};

// Rows of column j that belong to a triangle of order n.
using blas::Rows;
constexpr Rows stored(bool upper, i64 n, i64 j) { return upper ? Rows{0, j + 1} : Rows{j, n}; }

// One triangle of C := beta*C; 0 stores zeros. A real beta takes complex numbers as reals.
template <class T, Kind kind> void scale_triangle(bool upper, i64 n, Factor<T, kind> beta, T* c, i64 ldc)
{
    using F = Factor<T, kind>;
    constexpr i64 parts = sizeof(T) / sizeof(F);
    if (beta == one<F>) return;
    for (i64 j = 0; j < n; ++j, c += ldc) {
        const Rows rows = stored(upper, n, j);
        blas::apply_beta(parts * (rows.to - rows.from), beta, reinterpret_cast<F*>(c + rows.from), 1);
        c[j] = on_diagonal<T, kind>(c[j]);
    }
}

template <class T, i64 side, class Body> [[gnu::noinline]] void with_local_square(const Body& body)
{
    alignas(vector_bytes) T local[side * side];
    body(Square<T>{local, side});
}

// What a routine asks of the service layer for its square.
struct Request {
    i64 side, bytes, alignment;
    const char* name;
    int length;

    template <int size>
    constexpr Request(i64 side_, i64 bytes_, i64 alignment_, const char (&name_)[size])
        : side(side_), bytes(bytes_), alignment(alignment_), name(name_), length(size - 1)
    {
    }
};

// Runs body(square) in work memory; false, and nothing done, if there is none.
template <class T, class Body> bool with_square(const Request& r, const Body& body)
{
    T* const block = static_cast<T*>(orv_serv_allocate(r.bytes, r.alignment));
    if (orv_serv_check_ptr(block, r.name, r.length) != 0) return false;
    body(Square<T>{block, r.side});
    orv_serv_deallocate(block);
    return true;
}

} // namespace orv::level3
