// B := alpha*op(A) out of place, by letters: ?omatcopy, ?omatcopy2, ?omatcopy2_seq.
//
// trans: N A, T its transpose, R the conjugate of A, C that of its transpose; for real types R is N and C is T.
// ordering: R says that rows of A are lda apart and elements of a row stridea, C the same of columns. Either case; any
// other letter leaves B alone. rows and cols are those of A.
#include "trans/omatcopy.h"
#include "frame/imports.h"
#include "frame/kernels/trans.h"

namespace orv::trans {
namespace {

template <class T>
void by_letters(char ordering, char trans, u64 rows, u64 cols, T alpha, const T* a, u64 lda, u64 stridea, T* b, u64 ldb,
                u64 strideb)
{
    constexpr bool conjugated = is_complex<T>;
    ordering = fold(ordering);
    if (ordering != 'R' && ordering != 'C') return;
    const u64 m = ordering == 'R' ? rows : cols, n = ordering == 'R' ? cols : rows;
    switch (fold(trans)) {
    case 'N':
        return copy(false, m, n, alpha, a, lda, stridea, b, ldb, strideb);
    case 'R':
        return copy(conjugated, m, n, alpha, a, lda, stridea, b, ldb, strideb);
    case 'T':
        return transpose(false, m, n, alpha, a, lda, stridea, b, ldb, strideb);
    case 'C':
        return transpose(conjugated, m, n, alpha, a, lda, stridea, b, ldb, strideb);
    default: // a letter that names no operation
        return;
    }
}

// A team costs more than it brings where A is small or thin.
template <class T> bool worth_a_team(u64 rows, u64 cols)
{
    return rows > 16 && cols > 16 && rows * sizeof(T) * cols > 0x8000;
}

template <class T, auto& team>
void omatcopy2(char ordering, char trans, u64 rows, u64 cols, T alpha, const T* a, u64 lda, u64 stridea, T* b, u64 ldb,
               u64 strideb)
{
    if (rows == 0 || cols == 0) return;
    if (worth_a_team<T>(rows, cols)) team(ordering, trans, rows, cols, alpha, a, lda, stridea, b, ldb, strideb);
    else by_letters(ordering, trans, rows, cols, alpha, a, lda, stridea, b, ldb, strideb);
}

} // namespace
} // namespace orv::trans

// The core library's threaded form is imported under the name of the last argument.
#define OMATCOPY(name, T, team)                                                                                        \
    ORV_EXPORT void TRANS(name)(char ordering, char trans, u64 rows, u64 cols, T alpha, const T* a, u64 lda, T* b,     \
                                u64 ldb)                                                                               \
    {                                                                                                                  \
        trans::omatcopy2<T, team>(ordering, trans, rows, cols, alpha, a, lda, 1, b, ldb, 1);                           \
    }                                                                                                                  \
    ORV_EXPORT void TRANS(name##2)(char ordering, char trans, u64 rows, u64 cols, T alpha, const T* a, u64 lda,        \
                                   u64 stridea, T* b, u64 ldb, u64 strideb)                                            \
    {                                                                                                                  \
        trans::omatcopy2<T, team>(ordering, trans, rows, cols, alpha, a, lda, stridea, b, ldb, strideb);               \
    }                                                                                                                  \
    ORV_EXPORT void TRANS(name##2_seq)(char ordering, char trans, u64 rows, u64 cols, T alpha, const T* a, u64 lda,    \
                                       u64 stridea, T* b, u64 ldb, u64 strideb)                                        \
    {                                                                                                                  \
        trans::by_letters(ordering, trans, rows, cols, alpha, a, lda, stridea, b, ldb, strideb);                       \
    }

namespace orv {

OMATCOPY(somatcopy, float, orv_trans_orv_somatcopy2_par)
OMATCOPY(domatcopy, double, orv_trans_orv_domatcopy2_par)
OMATCOPY(comatcopy, cpx<float>, orv_trans_orv_comatcopy2_par)
OMATCOPY(zomatcopy, cpx<double>, orv_trans_orv_zomatcopy2_par)

} // namespace orv
