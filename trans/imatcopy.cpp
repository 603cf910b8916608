// AB := alpha*op(AB) in place: ?imatcopy, and the square routines it begins with.
//
// Letters as in ?omatcopy. AB holds rows by cols elements with leading dimension lda before, and op of them with ldb
// after. Squares whose leading dimension stays are exchanged by tiles; the others follow cycles.
#include "trans/imatcopy.h"

#include "frame/imports.h"
#include "frame/kernels/trans.h"

namespace orv::trans {
namespace {

// The largest n for which a team is never asked.
constexpr u64 small = 64;

// team: the core library's threaded form; nonzero says that it did the work. Tiles know no alpha.
template <class T, auto& team> void square_t(u64 n, T alpha, T* ab, u64 ld)
{
    if (alpha == one<T>) {
        if (n > small && team(n, ab, ld) != 0) return;
        if (turn_tiles(ab, n, ld) == 0) return;
    }
    turn_square(false, n, alpha, ab, ld);
}

template <class T, auto& team>
void imatcopy(char ordering, char trans, u64 rows, u64 cols, T alpha, T* ab, u64 lda, u64 ldb)
{
    constexpr bool conjugated = is_complex<T>;
    if (rows == 0 || cols == 0) return;
    trans = fold(trans), ordering = fold(ordering);

    // Neither asks for the ordering: it makes no difference to a square.
    const bool square = rows == cols && lda == ldb, dense = square && rows == lda;
    if (square && trans == 'T') return square_t<T, team>(rows, alpha, ab, lda);
    if (square && trans == 'C')
        return conjugated ? turn_square(conjugated, rows, alpha, ab, lda) : square_t<T, team>(rows, alpha, ab, lda);
    if (dense && trans == 'N') return scale_square(false, rows, alpha, ab, lda);
    if (dense && trans == 'R') return scale_square(conjugated, rows, alpha, ab, lda);

    if (ordering != 'R' && ordering != 'C') return;
    const u64 m = ordering == 'R' ? rows : cols, n = ordering == 'R' ? cols : rows;
    switch (trans) {
    case 'N':
        return move_rows(false, m, n, alpha, ab, lda, ldb);
    case 'R':
        return move_rows(conjugated, m, n, alpha, ab, lda, ldb);
    case 'T':
        return follow_cycles(false, m, n, alpha, ab, lda, ldb);
    case 'C':
        return follow_cycles(conjugated, m, n, alpha, ab, lda, ldb);
    default: // a letter that names no operation
        return;
    }
}

} // namespace
} // namespace orv::trans

// The core library's threaded form is imported under the name of the last argument.
#define IMATCOPY(name, T, team)                                                                                        \
    ORV_EXPORT void TRANS(name)(char ordering, char trans, u64 rows, u64 cols, T alpha, T* ab, u64 lda, u64 ldb)       \
    {                                                                                                                  \
        trans::imatcopy<T, team>(ordering, trans, rows, cols, alpha, ab, lda, ldb);                                    \
    }                                                                                                                  \
    ORV_EXPORT void TRANS(name##_square_t)(u64 n, T alpha, T * ab, u64 lda)                                            \
    {                                                                                                                  \
        trans::square_t<T, team>(n, alpha, ab, lda);                                                                   \
    }                                                                                                                  \
    ORV_EXPORT void TRANS(name##_square_n)(u64 n, T alpha, T * ab) { trans::scale_square(false, n, alpha, ab, n); }
#define CONJUGATED(name, T)                                                                                            \
    ORV_EXPORT void TRANS(name##_square_c)(u64 n, T alpha, T * ab, u64 lda)                                            \
    {                                                                                                                  \
        trans::turn_square(true, n, alpha, ab, lda);                                                                   \
    }                                                                                                                  \
    ORV_EXPORT void TRANS(name##_square_r)(u64 n, T alpha, T * ab, u64 lda)                                            \
    {                                                                                                                  \
        trans::scale_square(true, n, alpha, ab, lda);                                                                  \
    }

namespace orv {

IMATCOPY(simatcopy, float, orv_trans_orv_simatcopy_square_t_par)
IMATCOPY(dimatcopy, double, orv_trans_orv_dimatcopy_square_t_par)
IMATCOPY(cimatcopy, cpx<float>, orv_trans_orv_cimatcopy_square_t_par)
IMATCOPY(zimatcopy, cpx<double>, orv_trans_orv_zimatcopy_square_t_par)
CONJUGATED(cimatcopy, cpx<float>)
CONJUGATED(zimatcopy, cpx<double>)

} // namespace orv

// An initialiser of old: nothing is to be initialised.
ORV_EXPORT void TRANS(dsoi_init)() {}
