// y := x
//
// Vectors and strides as for axpy; bits travel unchanged. A step of 0 of y leaves the last element there.
//
// Published source: Lawson, Hanson, Kincaid, Krogh, Basic Linear Algebra Subprograms for Fortran Usage, 1979.
#include "blas/ladder.h"
#include "frame/kernels/blas.h"

namespace orv::blas {
namespace {

using CopyLadder = Ladder<Blocks<16, 8, 4, 2, 1>, Blocks<16, 8, 4, 2, 1>, Offset::straddling>;

// Between these sizes a string move, which goes by whole cache lines, is faster than registers: it is worth its start,
// and source and destination still fit the second-level cache. Beyond, asking for lines ahead is what counts. It moves
// words, and slowly where they straddle boundaries of their own.
constexpr i64 string_bytes = 2048, string_bytes_end = 1 << 20, word_bytes = 8;

template <class T> ORV_INLINE void copy(i64 n, const T* x, i64 incx, T* y, i64 incy)
{
    constexpr i64 size = sizeof(T);
    if (n >= string_bytes / size && incx * incy == 1 && n < string_bytes_end / size && is_aligned(x, word_bytes) &&
        is_aligned(y, word_bytes)) [[unlikely]] {
        i64 words = n * size / word_bytes;
        const T* last = x + n - 1;
        T* to_last = y + n - 1;
        asm volatile("rep movsq" : "+S"(x), "+D"(y), "+c"(words) : : "memory");
        if constexpr (size < word_bytes) *to_last = *last; // half a word, if their number is odd
        return;
    }
    walk<CopyLadder>(n, x, incx, y, incy, [] {
        return Update{[](auto from) { return from; }, [](auto from, auto) { return from; }};
    });
}

} // namespace
} // namespace orv::blas

using namespace orv;

#define COPY(name, T)                                                                                                  \
    ORV_EXPORT void BLAS(name)(const i64* n, const T* x, const i64* incx, T* y, const i64* incy)                       \
    {                                                                                                                  \
        blas::copy(*n, x, *incx, y, *incy);                                                                            \
    }

COPY(xscopy, float)
COPY(xdcopy, double)
COPY(xccopy, cpx<float>)
COPY(xzcopy, cpx<double>)
