// Public LAPACK routines that kernels ask for: copies and scaled matrices. Columns lie lda apart.
//
//   orv_lapack_?lacpy   B := A, or its upper (uplo U) or lower (L) trapezoid, the rest of B untouched
//   orv_lapack_?lascl   A := (to/from)*A, where neither to/from nor a step on the way needs to be a number that can be
//                       represented: only results that are too large overflow, and only those that are too small
//                       underflow. What A holds is told by type: G all, L lower, U upper, H upper Hessenberg; B and Q
//                       the lower and upper half of a symmetric band, Z a band as the factorisation of one stores it.
//
// Arguments by pointer; of letters the first character counts, in either case, and no lengths are passed. lascl tells
// of a bad argument by its negated number in info and to orv_serv_xerbla; a factor that is NaN, or from = 0, is bad.
#include "frame/arguments.h"
#include "frame/export.h"
#include "frame/imports.h"
#include "frame/serv.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace orv::core {
namespace {

using arguments::one_of;

// Rows first <= i < last of a column.
struct RowRange {
    i64 first, last;
};

template <class T> void lacpy(char uplo, i64 m, i64 n, const T* a, i64 lda, T* b, i64 ldb)
{
    for (i64 j = 0; j < n; ++j) {
        const RowRange rows = fold(uplo) == 'U' ? RowRange{0, min(j + 1, m)} : RowRange{fold(uplo) == 'L' ? j : 0, m};
        if (rows.first < rows.last)
            std::memcpy(b + j * ldb + rows.first, a + j * lda + rows.first, (rows.last - rows.first) * sizeof(T));
    }
}

// Where column j of m rows lies in a matrix of a type, kl diagonals below and ku above.
RowRange stored_rows(char type, i64 kl, i64 ku, i64 m, i64 n, i64 j)
{
    switch (type) {
    case 'L':
        return {j, m};
    case 'U':
        return {0, min(j + 1, m)};
    case 'H':
        return {0, min(j + 2, m)};
    case 'B':
        return {0, min(kl + 1, n - j)};
    case 'Q':
        return {max(ku - j, 0), ku + 1};
    case 'Z':
        return {max(kl + ku - j, kl), min(2 * kl + ku + 1, kl + ku + m - j)};
    default:
        return {0, m};
    }
}

template <class R> int bad_scaling(char type, i64 kl, i64 ku, R from, R to, i64 m, i64 n, i64 lda)
{
    const bool symmetric_band = type == 'B' || type == 'Q', band = symmetric_band || type == 'Z';
    if (!one_of(type, "GLUHBQZ")) return 1;
    if (from == 0 || std::isnan(from)) return 4;
    if (std::isnan(to)) return 5;
    if (m < 0) return 6;
    if (n < 0 || (symmetric_band && n != m)) return 7;
    if (!band) return lda < max(1, m) ? 9 : 0;
    if (kl < 0 || kl > max(m - 1, 0)) return 2;
    if (ku < 0 || ku > max(n - 1, 0) || (symmetric_band && kl != ku)) return 3;
    const i64 rows = type == 'B' ? kl + 1 : type == 'Q' ? ku + 1 : 2 * kl + ku + 1;
    return lda < rows ? 9 : 0;
}

// The quotient to/from as factors that can be represented, one after the other. The largest and the smallest step are
// powers of two, so only the last factor rounds.
template <class R> class Factors {
public:
    Factors(R from, R to) : from_(from), to_(to) {}

    bool left() const { return left_; }
    R next()
    {
        const R from_down = from_ * smallest, to_down = to_ / largest;
        if (from_down != from_ && to_down != to_) { // neither is zero or infinite
            if (std::fabs(from_down) > std::fabs(to_)) return from_ = from_down, smallest;
            if (std::fabs(to_down) > std::fabs(from_)) return to_ = to_down, largest;
        }
        left_ = false;
        return to_ / from_;
    }

private:
    static constexpr R smallest = std::numeric_limits<R>::min(), largest = 1 / smallest;
    R from_, to_;
    bool left_ = true;
};

template <class R> i64 lascl(const char* name, char letter, i64 kl, i64 ku, R from, R to, i64 m, i64 n, R* a, i64 lda)
{
    const char type = fold(letter);
    if (const int bad = bad_scaling(type, kl, ku, from, to, m, n, lda)) {
        const i64 negated_position = -bad;
        orv_serv_xerbla(name, &negated_position, arguments::Name::length);
        return negated_position;
    }
    if (m == 0 || n == 0) return 0;
    for (Factors<R> factors(from, to); factors.left();) {
        const R factor = factors.next();
        for (i64 j = 0; j < n; ++j) {
            const RowRange rows = stored_rows(type, kl, ku, m, n, j);
            for (i64 i = rows.first; i < rows.last; ++i) a[i + j * lda] *= factor;
        }
    }
    return 0;
}

} // namespace
} // namespace orv::core

using namespace orv;

#define LACPY(name, T)                                                                                                 \
    ORV_EXPORT void orv_lapack_##name(const char* uplo, const i64* m, const i64* n, const T* a, const i64* lda, T* b,  \
                                      const i64* ldb)                                                                  \
    {                                                                                                                  \
        core::lacpy(*uplo, *m, *n, a, *lda, b, *ldb);                                                                  \
    }

LACPY(slacpy, float)
LACPY(dlacpy, double)

#define LASCL(name, NAME, T)                                                                                           \
    ORV_EXPORT void orv_lapack_##name(const char* type, const i64* kl, const i64* ku, const T* from, const T* to,      \
                                      const i64* m, const i64* n, T* a, const i64* lda, i64* info)                     \
    {                                                                                                                  \
        *info = core::lascl(NAME, *type, *kl, *ku, *from, *to, *m, *n, a, *lda);                                       \
    }

LASCL(slascl, "SLASCL", float)
LASCL(dlascl, "DLASCL", double)
