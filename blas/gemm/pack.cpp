// Packing of blocks into panels: ?gemm_copya? and ?gemm_copyb?.
#include "blas/gemm/pack.h"

#include "frame/kernels/blas.h"

namespace orv::gemm {
namespace {

// A source whose columns all stand on 16 bytes is read by aligned loads, which an operation can take from memory.
//
// Strips of the source, two cache lines high, go from left to right, four columns at a time, into as many panels as a
// set of the first-level cache has room for: panels are often 4096 bytes apart and meet in one set. Columns are asked
// for ahead, because the processor does not foresee runs as short as these.
template <int unit, bool aligned, class T, class Op>
void pack_adjacent(i64 n, i64 k, const T* source, i64 ld, T* buffer, i64 stride, const Op& op)
{
    constexpr i64 height = 2 * cache_line / sizeof(T), ahead = 2 * group;

    for (i64 first = 0; first < n; first += height) {
        const i64 rows = min(n - first, height);
        i64 p = 0;
        for (; p + group <= k; p += group) {
            const T* from = source + first + p * ld;
            for (i64 i = ahead; i < ahead + group; ++i)
                prefetch(from + i * ld), prefetch(from + i * ld + cache_line / sizeof(T));
            for_each_panel<unit>(rows, [&](auto width, i64 j) ORV_INLINE_LAMBDA {
                constexpr int w = decltype(width)::value;
                T* panel = buffer + panel_offset(first + j, unit, stride, k);
                pack_group<Source::adjacent, w, aligned>(from + j, ld, panel + p * w, op);
            });
        }
        if (p < k)
            for_each_panel<unit>(rows, [&](auto width, i64 j) ORV_INLINE_LAMBDA {
                constexpr int w = decltype(width)::value;
                T* panel = buffer + panel_offset(first + j, unit, stride, k);
                pack_last_group<Source::adjacent, w>(k - p, source + first + j + p * ld, ld, panel + p * w, op);
            });
    }
}

// n rows of op(A) or columns of op(B), k steps deep, to panels of `unit` at buffer, `stride` elements apart. Padding
// steps are zeros; nothing is written between panels or behind the last. Source: any alignment.
template <Source order, int unit, class T, class Op>
void pack(i64 n, i64 k, const T* source, i64 ld, T* buffer, i64 stride, const Op& op)
{
    if constexpr (order == Source::across)
        for_each_panel<unit>(n, [&](auto width, i64 j) ORV_INLINE_LAMBDA {
            pack_panel<order, decltype(width)::value>(k, source + j * ld, ld, buffer + panel_offset(j, unit, stride, k),
                                                      op);
        });
    else if (is_aligned(source, vector_bytes) && ld % vec<T>::lanes == 0)
        pack_adjacent<unit, true>(n, k, source, ld, buffer, stride, op);
    else pack_adjacent<unit, false>(n, k, source, ld, buffer, stride, op);
}

enum class Operator { n, t, c };

template <Operator op, class T> void copy_a(i64 m, i64 k, const T* a, i64 lda, T* buffer, i64 stride, T alpha)
{
    constexpr Source order = op == Operator::n ? Source::adjacent : Source::across;
    pack<order, a_unit<T>>(m, k, a, lda, buffer, stride, Scaled<T, op == Operator::c>{factor<T>(alpha)});
}

template <Operator op, class T> void copy_b(i64 k, i64 n, const T* b, i64 ldb, T* buffer, i64 stride)
{
    constexpr Source order = op == Operator::n ? Source::across : Source::adjacent;
    pack<order, b_unit<T>>(n, k, b, ldb, buffer, stride, Copied<T, op == Operator::c>{});
}

} // namespace

#define COPY_A(symbol, op, T)                                                                                          \
    ORV_EXPORT void BLAS(symbol)(const i64* m, const i64* k, const T* a, const i64* lda, T* buffer, const i64* stride, \
                                 const T* alpha)                                                                       \
    {                                                                                                                  \
        copy_a<Operator::op>(*m, *k, a, *lda, buffer, *stride, *alpha);                                                \
    }
#define COPY_B(symbol, op, T)                                                                                          \
    ORV_EXPORT void BLAS(symbol)(const i64* k, const i64* n, const T* b, const i64* ldb, T* buffer, const i64* stride, \
                                 const T*)                                                                             \
    {                                                                                                                  \
        copy_b<Operator::op>(*k, *n, b, *ldb, buffer, *stride);                                                        \
    }
#define COPIES(letter, T)                                                                                              \
    COPY_A(letter##gemm_copyan, n, T)                                                                                  \
    COPY_A(letter##gemm_copyat, t, T) COPY_B(letter##gemm_copybn, n, T) COPY_B(letter##gemm_copybt, t, T)

COPIES(s, float)
COPIES(d, double)
COPIES(c, cpx<float>)
COPIES(z, cpx<double>)
COPY_A(cgemm_copyac, c, cpx<float>)
COPY_A(zgemm_copyac, c, cpx<double>)
COPY_B(cgemm_copybc, c, cpx<float>)
COPY_B(zgemm_copybc, c, cpx<double>)

// For callers that keep panels of their own and run a kernel on them: op N, the same panels as in the blocked driver.
COPY_A(sgemm_copya_ext, n, float)
COPY_A(dgemm_copya_ext, n, double)
COPY_B(sgemm_copyb_ext, n, float)
COPY_B(dgemm_copyb_ext, n, double)

} // namespace orv::gemm
