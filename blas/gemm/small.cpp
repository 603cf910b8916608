// Products of depth 1 to 10 with at most 10 rows and columns, one routine a depth: no scaling of C, no work area.
#include "blas/gemm/direct.h"
#include "blas/gemm/driver.h"
#include "frame/kernels/blas.h"
#include "frame/serv.h"

namespace orv::gemm {
namespace {

constexpr char letter_n = 'N', letter_c = 'C';

bool is_letter(const char* op, const char& letter) { return orv_serv_lsame(op, &letter, 1, 1) != 0; }

// C := C + alpha*op(A)*op(B) of that depth; beta counts as 1. What is neither N nor (for complex types) C is T. An
// alpha of 0 leaves A, B and C unread.
template <int depth, class T>
ORV_INLINE void product(const char* transa, const char* transb, i64 m, i64 n, T alpha, const T* a, i64 lda, const T* b,
                        i64 ldb, T* c, i64 ldc)
{
    if (alpha == zero<T>) return;
    const bool na = is_letter(transa, letter_n), nb = is_letter(transb, letter_n);
    const bool ca = is_complex<T> && !na && is_letter(transa, letter_c),
               cb = is_complex<T> && !nb && is_letter(transb, letter_c);
    const Operands<T> o = {depth, a, lda, b, nb ? 1 : ldb, nb ? ldb : 1, c, 1, ldc, ca, cb, false, factor<T>(alpha)};
    if (na) direct<T, RowLayout::adjacent>(m, n, o);
    else direct<T, RowLayout::apart>(m, n, o);
}

} // namespace

#define OF_DEPTH(type, T, digits, depth)                                                                               \
    ORV_EXPORT void BLAS(type##gemm_sm_##digits)(ORV_GEMM_ARGUMENTS(T))                                                \
    {                                                                                                                  \
        static_cast<void>(k), static_cast<void>(beta);                                                                 \
        product<depth>(transa, transb, *m, *n, *alpha, a, *lda, b, *ldb, c, *ldc);                                     \
    }
#define SMALL(type, T)                                                                                                 \
    OF_DEPTH(type, T, 01, 1)                                                                                           \
    OF_DEPTH(type, T, 02, 2)                                                                                           \
    OF_DEPTH(type, T, 03, 3)                                                                                           \
    OF_DEPTH(type, T, 04, 4)                                                                                           \
    OF_DEPTH(type, T, 05, 5)                                                                                           \
    OF_DEPTH(type, T, 06, 6)                                                                                           \
    OF_DEPTH(type, T, 07, 7)                                                                                           \
    OF_DEPTH(type, T, 08, 8)                                                                                           \
    OF_DEPTH(type, T, 09, 9)                                                                                           \
    OF_DEPTH(type, T, 10, 10)                                                                                          \
    ORV_EXPORT void BLAS(type##gemm_sm_01_10)(ORV_GEMM_ARGUMENTS(T))                                                   \
    {                                                                                                                  \
        static constexpr Gemm<T>* of_depth[] = {                                                                       \
            BLAS(type##gemm_sm_01), BLAS(type##gemm_sm_02), BLAS(type##gemm_sm_03), BLAS(type##gemm_sm_04),            \
            BLAS(type##gemm_sm_05), BLAS(type##gemm_sm_06), BLAS(type##gemm_sm_07), BLAS(type##gemm_sm_08),            \
            BLAS(type##gemm_sm_09), BLAS(type##gemm_sm_10)};                                                           \
        if (*k >= 1 && *k <= 10) of_depth[*k - 1](ORV_GEMM_PASS);                                                      \
    }

SMALL(s, float)
SMALL(d, double)
SMALL(c, cpx<float>)
SMALL(z, cpx<double>)

} // namespace orv::gemm
