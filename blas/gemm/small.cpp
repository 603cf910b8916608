// Products of depth 1 to 10 with at most 10 rows and columns, one routine a depth: no scaling of C, no work area.
#include "blas/gemm/direct.h"
#include "blas/gemm/driver.h"
#include "frame/serv.h"
#include "frame/symbol.h"

#include <utility>

namespace orv::gemm {
namespace {

bool is_letter(const char* op, char letter) { return orv_serv_lsame(op, &letter, 1, 1) != 0; }

// C := C + alpha*op(A)*op(B) of that depth; beta counts as 1. What is neither N nor (for complex types) C is T. An
// alpha of 0 leaves A, B and C unread.
template <int depth, class T>
void small_of(const char* transa, const char* transb, i64 m, i64 n, T alpha, const T* a, i64 lda, const T* b, i64 ldb,
              T* c, i64 ldc)
{
    if (alpha == zero<T>) return;
    const bool na = is_letter(transa, 'N'), nb = is_letter(transb, 'N');
    const bool ca = is_complex<T> && !na && is_letter(transa, 'C'), cb = is_complex<T> && !nb && is_letter(transb, 'C');
    const Operands<T> o = {a, lda, b, nb ? 1 : ldb, nb ? ldb : 1, c, 1, ldc, ca, cb, factor<T>(alpha)};
    if (na) Direct<T, Rows::adjacent>(o, depth)(m, n);
    else Direct<T, Rows::apart>(o, depth)(m, n);
}

} // namespace

template <class T>
void small(const char* transa, const char* transb, i64 m, i64 n, i64 k, T alpha, const T* a, i64 lda, const T* b,
           i64 ldb, T* c, i64 ldc)
{
    constexpr i64 deepest = 10;
    using Routine = void(const char*, const char*, i64, i64, T, const T*, i64, const T*, i64, T*, i64);
    constexpr auto routines = []<int... i>(std::integer_sequence<int, i...>)
    {
        struct {
            Routine* of_depth[deepest];
        } all = {small_of<i + 1, T>...};
        return all;
    }
    (std::make_integer_sequence<int, deepest>());
    if (k >= 1 && k <= deepest) routines.of_depth[k - 1](transa, transb, m, n, alpha, a, lda, b, ldb, c, ldc);
}

#define ARGUMENTS(T)                                                                                                   \
    const char *transa, const char *transb, const i64 *m, const i64 *n, const i64 *k, const T *alpha, const T *a,      \
        const i64 *lda, const T *b, const i64 *ldb, const T *, T *c, const i64 *ldc

#define OF_DEPTH(t, T, digits, depth)                                                                                  \
    ORV_EXPORT void BLAS(t##gemm_sm_##digits)(ARGUMENTS(T))                                                            \
    {                                                                                                                  \
        static_cast<void>(k);                                                                                          \
        small_of<depth>(transa, transb, *m, *n, *alpha, a, *lda, b, *ldb, c, *ldc);                                    \
    }
#define SMALL(t, T)                                                                                                    \
    template void small(const char*, const char*, i64, i64, i64, T, const T*, i64, const T*, i64, T*, i64);            \
    ORV_EXPORT void BLAS(t##gemm_sm_01_10)(ARGUMENTS(T))                                                               \
    {                                                                                                                  \
        small(transa, transb, *m, *n, *k, *alpha, a, *lda, b, *ldb, c, *ldc);                                          \
    }                                                                                                                  \
    OF_DEPTH(t, T, 01, 1)                                                                                              \
    OF_DEPTH(t, T, 02, 2)                                                                                              \
    OF_DEPTH(t, T, 03, 3)                                                                                              \
    OF_DEPTH(t, T, 04, 4)                                                                                              \
    OF_DEPTH(t, T, 05, 5)                                                                                              \
    OF_DEPTH(t, T, 06, 6)                                                                                              \
    OF_DEPTH(t, T, 07, 7)                                                                                              \
    OF_DEPTH(t, T, 08, 8)                                                                                              \
    OF_DEPTH(t, T, 09, 9)                                                                                              \
    OF_DEPTH(t, T, 10, 10)

SMALL(s, float)
SMALL(d, double)
SMALL(c, cpx<float>)
SMALL(z, cpx<double>)

} // namespace orv::gemm
