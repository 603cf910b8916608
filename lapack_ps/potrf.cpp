// Cholesky factorisation of a small matrix: A = L*L^H (potrf_l_small) or A = U^H*U (potrf_u_small), in place.
//
//   uplo    not read: the name tells the triangle, the other one is left alone
//   a       order n, columns lda apart
//   info    one more than the index of the first pivot that is not positive (zero, negative, NaN), and not written if
//           there is none
//
// Column j of L, and row j of U, is computed in the order
//
//   a(i, j) := (..((a(i, j) - a(i, 0)*conj(a(j, 0))) - a(i, 1)*conj(a(j, 1))) ..)          i >= j
//   a(j, j) := sqrt(a(j, j)),     a(i, j) := a(i, j)*(1/a(j, j))                           i > j
//
// and where it fails, its pivot keeps the updated value, with an imaginary part of 0; earlier columns are done, later
// ones are as they came. From the orders that `path` tells on, the public routines do a part of the work, in their own
// order of summation, and where they update ahead, later columns hold what is left of them after a failure. No memory
// is taken.
//
// Published source: Anderson et al., LAPACK Users' Guide, 3rd ed., 1999 (potf2).
#include "frame/kernels/lapack_ps.h"
#include "frame/products.h"
#include "lapack_ps/front_ends.h"
#include "lapack_ps/lanes.h"
#include "lapack_ps/scalar.h"

namespace orv::lapack {
namespace {

// x*conj(*w)
template <class T> ORV_INLINE T times_conj(T x, const T* w) { return x * conj(*w); }
template <class T> ORV_INLINE vec<T> times_conj(vec<T> x, const T* w)
{
    if constexpr (!is_complex<T>) return x * load_splat(w);
    else {
        const vec<T> re = splat(T{w->re, w->re}), im = splat(T{w->im, w->im});
        return lane_product(x, re) + lane_product(times_minus_i(x), im);
    }
}

// Who brings column j up to date: this file; a product with the columns before it; a dot product for the pivot and then
// a product; or each finished column updates all that follow, so that nothing is left to do.
enum class Updater { here, product, dot_and_product, rank_one };

// How orders from `from` on are factored. Below, everything is done here, for a call costs more than the arithmetic.
struct Path {
    i64 from;
    Updater updater;
    bool scal; // the column is scaled by the public routine
};
constexpr i64 never = INT64_MAX;
template <class T, bool lower> constexpr Path path{};
template <> constexpr Path path<float, true>{50, Updater::here, true};
template <> constexpr Path path<float, false>{never, Updater::here, false};
template <> constexpr Path path<double, true>{40, Updater::product, false};
template <> constexpr Path path<double, false>{50, Updater::product, false};
template <> constexpr Path path<cpx<float>, true>{20, Updater::dot_and_product, true};
template <> constexpr Path path<cpx<float>, false>{50, Updater::dot_and_product, true};
template <> constexpr Path path<cpx<double>, true>{40, Updater::rank_one, true};
template <> constexpr Path path<cpx<double>, false>{40, Updater::dot_and_product, false};

// L(i, j) of a lower triangle, conj(U(j, i)) of an upper one, which obeys the same formulas: the factor by its rows and
// columns, whichever of them has neighbours in memory.
template <class T, bool lower> struct Triangle {
    T* a;
    i64 lda, n;

    static constexpr int lanes = vec<T>::lanes;
    using R = real_t<T>;

    ORV_INLINE T* at(i64 i, i64 j) const { return lower ? a + i + j * lda : a + j + i * lda; }
    template <class V> ORV_INLINE V get_rows(i64 i, i64 j) const { return get<V, lower>(at(i, j), lda); }
    template <class V> ORV_INLINE void put_rows(i64 i, i64 j, V v) const { put<lower>(at(i, j), lda, v); }

    // The sums of a tile, `count` registers of rows from i on in the columns j .. j+columns-1, up to column j.
    template <int columns, int count, class V> ORV_INLINE void sum(i64 i, i64 j, V (&tile)[columns][count]) const
    {
        constexpr int step = lanes_of<V>::count;
#pragma GCC unroll 8
        for (int c = 0; c < columns; ++c)
#pragma GCC unroll 8
            for (int r = 0; r < count; ++r) tile[c][r] = get_rows<V>(i + r * step, j + c);
        for (i64 p = 0; p < j; ++p) {
            V x[count];
#pragma GCC unroll 8
            for (int r = 0; r < count; ++r) x[r] = get_rows<V>(i + r * step, p);
#pragma GCC unroll 8
            for (int c = 0; c < columns; ++c)
#pragma GCC unroll 8
                for (int r = 0; r < count; ++r) tile[c][r] = tile[c][r] - times_conj(x[r], at(j + c, p));
        }
    }

    // The square of `columns` columns on the diagonal. False if a pivot fails; then only a single one is written.
    template <int columns> bool diagonal(i64 j, R (&reciprocals)[columns]) const
    {
        T square[columns][columns];
        using V = std::conditional_t<columns % lanes == 0, vec<T>, T>;
        constexpr int step = lanes_of<V>::count, count = min(2, columns / step);
#pragma GCC unroll 8
        for (int i = 0; i < columns; i += count * step) {
            V tile[columns][count];
            sum<columns>(j + i, j, tile);
#pragma GCC unroll 8
            for (int c = 0; c < columns; ++c)
#pragma GCC unroll 8
                for (int r = 0; r < count; ++r) put<true>(&square[c][i + r * step], 1, tile[c][r]);
        }
        bool positive = true;
#pragma GCC unroll 8
        for (int c = 0; c < columns; ++c) {
#pragma GCC unroll 8
            for (int e = 0; e < c; ++e)
#pragma GCC unroll 8
                for (int i = c; i < columns; ++i) square[c][i] -= square[e][i] * conj(square[e][c]);
            const R pivot = real_part(square[c][c]);
            positive = positive && pivot > 0;
            const R root = positive ? square_root(pivot) : pivot;
            square[c][c] = element<T>::make(root);
            reciprocals[c] = positive ? 1 / root : 1;
#pragma GCC unroll 8
            for (int i = c + 1; i < columns; ++i) square[c][i] = scaled(square[c][i], reciprocals[c]);
        }
        if (columns > 1 && !positive) return false;
#pragma GCC unroll 8
        for (int c = 0; c < columns; ++c)
#pragma GCC unroll 8
            for (int i = c; i < columns; ++i) *at(j + i, j + c) = square[c][i];
        return positive;
    }

    // The rows below the square, from i on, in tiles of `count` registers, then in ever smaller ones.
    template <int columns, int count, class V> ORV_INLINE void rows(i64 i, i64 j, const R (&reciprocals)[columns]) const
    {
        constexpr int step = lanes_of<V>::count;
        for (; i + count * step <= n; i += count * step) {
            V tile[columns][count];
            sum<columns>(i, j, tile);
#pragma GCC unroll 8
            for (int c = 0; c < columns; ++c)
#pragma GCC unroll 8
                for (int r = 0; r < count; ++r) {
#pragma GCC unroll 8
                    for (int e = 0; e < c; ++e) tile[c][r] = tile[c][r] - times_conj(tile[e][r], at(j + c, j + e));
                    tile[c][r] = scaled(tile[c][r], reciprocals[c]);
                    put_rows(i + r * step, j + c, tile[c][r]);
                }
        }
        if constexpr (count > 1) rows<columns, count / 2, V>(i, j, reciprocals);
        else if constexpr (lanes > 1 && std::is_same_v<V, vec<T>>) rows<columns, 1, T>(i, j, reciprocals);
    }

    // Columns j .. j+columns-1. False if a pivot fails: of several columns, nothing is written then; a single one is
    // updated and not scaled.
    template <int columns> bool panel(i64 j) const
    {
        R reciprocals[columns];
        const bool positive = diagonal(j, reciprocals);
        if (columns == 1 || positive) rows<columns, 8 / columns, vec<T>>(j + columns, j, reciprocals);
        return positive;
    }

    // Everything here: four columns at a time where their pivots are positive, so that an element read serves four
    // times, and singly else, so that a failure finds the later columns untouched.
    void factor_short(i64* info) const
    {
        for (i64 j = 0; j < n;) {
            if (n - j >= 4 && panel<4>(j)) j += 4;
            else if (panel<1>(j)) ++j;
            else return void(*info = j + 1);
        }
    }

    // Rows i .. of column j minus their products with row j, all from the earlier columns.
    void subtract_product(i64 i, i64 j) const
    {
        const i64 rows = n - i;
        if (j == 0) return; // no earlier column
        if constexpr (lower)
            front::gemv("No traspose", rows, j, -one<T>, at(i, 0), lda, at(j, 0), lda, one<T>, at(i, j), 1);
        else front::gemv("Transpose", j, rows, -one<T>, at(i, 0), lda, at(j, 0), 1, one<T>, at(i, j), lda);
    }

    // Row j, left of the diagonal.
    void conjugate_row(i64 j) const
    {
        for (i64 p = 0; p < j; ++p) *at(j, p) = conj(*at(j, p));
    }

    void scale(i64 i, i64 j, R reciprocal) const
    {
        for (; i + lanes <= n; i += lanes) put_rows(i, j, scaled(get_rows<vec<T>>(i, j), reciprocal));
        for (; i < n; ++i) *at(i, j) = scaled(*at(i, j), reciprocal);
    }

    // Column j with the help of the public routines. False if its pivot fails.
    bool column_by_calls(i64 j) const
    {
        constexpr Path p = path<T, lower>;
        if constexpr (p.updater == Updater::here) rows<1, 8, vec<T>>(j, j, {1});
        if constexpr (p.updater == Updater::product) subtract_product(j, j);

        R pivot = real_part(*at(j, j));
        if constexpr (p.updater == Updater::dot_and_product) {
            const i64 step = lower ? lda : 1;
            pivot -= real_part(front::dotc(j, at(j, 0), step, at(j, 0), step));
        }
        const bool positive = pivot > 0;
        const R root = positive ? square_root(pivot) : pivot;
        *at(j, j) = element<T>::make(root);
        const i64 i = j + 1;
        if (!positive || i == n) return positive;

        if constexpr (p.updater == Updater::dot_and_product) {
            conjugate_row(j);
            subtract_product(i, j);
            conjugate_row(j);
        }
        if constexpr (p.scal) front::scal(n - i, 1 / root, at(i, j), lower ? 1 : lda);
        else scale(i, j, 1 / root);
        if constexpr (p.updater == Updater::rank_one) front::her("Lower", n - i, R(-1), at(i, j), 1, at(i, i), lda);
        return true;
    }

    void factor(i64* info) const
    {
        if (n < path<T, lower>.from) return factor_short(info);
        if constexpr (path<T, lower>.from != never)
            for (i64 j = 0; j < n; ++j)
                if (!column_by_calls(j)) return void(*info = j + 1);
    }
};

} // namespace
} // namespace orv::lapack

using namespace orv;

#define POTRF(name, T, lower)                                                                                          \
    ORV_EXPORT void LAPACK_PS(name)(const char*, const i64* n, T* a, const i64* lda, i64* info)                        \
    {                                                                                                                  \
        lapack::Triangle<T, lower>{a, *lda, *n}.factor(info);                                                          \
    }

POTRF(spotrf_l_small, float, true)
POTRF(dpotrf_l_small, double, true)
POTRF(cpotrf_l_small, cpx<float>, true)
POTRF(zpotrf_l_small, cpx<double>, true)
POTRF(spotrf_u_small, float, false)
POTRF(dpotrf_u_small, double, false)
POTRF(cpotrf_u_small, cpx<float>, false)
POTRF(zpotrf_u_small, cpx<double>, false)
