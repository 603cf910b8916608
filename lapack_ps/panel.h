// What the panel kernels share. A panel is nb neighbouring columns of the stored triangle of a symmetric matrix or, if
// complex, a Hermitian one of order n: the last nb columns of the upper triangle, the first nb of the lower one. a
// points to the element (0, 0) of the matrix in both cases. The imaginary parts of a Hermitian diagonal are not read.
#pragma once

#include "frame/products.h"
#include "frame/serv.h"

namespace orv::lapack {

template <class T> struct Panel {
    bool upper;
    i64 n, from, to; // its columns
    T* a;
    i64 lda;

    Panel(const char* uplo, i64 n, i64 nb, T* a, i64 lda)
        : upper(fold(*uplo) == 'U'), n(n), from(upper ? max(n - nb, 0) : 0), to(upper ? n : min(nb, n)), a(a), lda(lda)
    {
    }
    T* column(i64 j) const { return a + j * lda; }
};

// Whether all columns and vectors can go through registers in step: the leading dimensions are even, and all pointers
// stand on a boundary of 16 bytes, or all 8 bytes behind one.
enum class Path { plain, lanes };
template <class... P> Path path_in_step(bool even, const P*... pointers)
{
    const auto all_at = [&](std::uintptr_t off) {
        return ((reinterpret_cast<std::uintptr_t>(pointers) % vector_bytes == off) && ...);
    };
    return even && (all_at(0) || all_at(8)) ? Path::lanes : Path::plain;
}
inline bool is_even(i64 n) { return n % 2 == 0; }

// The sum of conj(a)*x: of registers, and of single elements.
template <class T> struct InnerProduct {
    ProductSum<T> many;
    T single = zero<T>;
    ORV_INLINE void add(vec<T> a, vec<T> x) { many.add(a, Multiplicand<T>(x)); }
    ORV_INLINE void add(T a, T x) { single += conj(a) * x; }
    T total() const { return single + first_lane(many.folded().template value<true>()); }
};

// The way through rows from..to-1: single(i) until x + i stands on a boundary, registers(i), and single(i) at the end.
// On the plain path single(i) only.
template <class T, class Registers, class Single>
ORV_INLINE void each_row(Path path, i64 from, i64 to, const T* x, Registers registers, Single single)
{
    constexpr i64 lanes = vec<T>::lanes;
    i64 i = from;
    if (path == Path::lanes) {
        if constexpr (lanes > 1)
            for (; i < to && !is_aligned(x + i, vector_bytes); ++i) single(i);
        for (; i + lanes <= to; i += lanes) registers(i);
    }
    for (; i < to; ++i) single(i);
}

} // namespace orv::lapack
