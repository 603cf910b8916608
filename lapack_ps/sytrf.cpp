// Bunch-Kaufman factorisation of a small symmetric matrix: A = L*D*L^T (sytrf_l_small) or A = U*D*U^T (sytrf_u_small),
// in place, D having blocks of order 1 and 2.
//
//   uplo    not read: the name tells the triangle, the other one is left alone
//   a       order n, columns lda apart; becomes D and the factors that L or U is a product of
//   ipiv    counts from 1. ipiv(k) > 0: a block of order 1, and row and column k changed places with ipiv(k). Negative
//           in k and k+1 (upper: k-1): a block of order 2, and its other row and column, k+1 (k-1), changed places with
//           -ipiv(k).
//   info    0, or one more than the first k whose column was all zero; the factorisation goes on behind it
//
// A pivot a(k, k) that is NaN stays where it is. From the orders below on, the public routines scale columns and, where
// there is one for the type, make the update of rank one; the result is the same where the reciprocals of pivots are
// finite. No memory is taken.
//
// Published source: Bunch and Kaufman, Some Stable Methods for Calculating Inertia and Solving Symmetric Linear
// Systems, Math. Comp. 31, 1977; Anderson et al., LAPACK Users' Guide, 3rd ed., 1999 (sytf2).
#include "frame/kernels/lapack_ps.h"
#include "lapack_ps/front_ends.h"
#include "lapack_ps/lanes.h"

namespace orv::lapack {
namespace {

// (1 + sqrt(17))/8 bounds the growth of elements over two steps of order 1 by that over one of order 2.
template <class T> constexpr T pivot_ratio = T(0.6403882032022076);

// Orders from which the public routines take part; the upper triangles have one path.
constexpr i64 never = INT64_MAX;
template <class T, bool lower> constexpr i64 calls_from = never;
template <> constexpr i64 calls_from<float, true> = 60;
template <> constexpr i64 calls_from<double, true> = 45;

// y := y - f*x
template <class T> void subtract(i64 n, T f, const T* x, T* y)
{
    i64 i = 0;
    for (; i + vec<T>::lanes <= n; i += vec<T>::lanes) storeu(y + i, loadu(y + i) - product(f, loadu(x + i)));
    for (; i < n; ++i) y[i] = y[i] - f * x[i];
}
template <class T> void swap(T& a, T& b)
{
    const T t = a;
    a = b, b = t;
}

// The factorisation eats the triangle from one corner: the lower one from the first column on, the upper one from the
// last column back. "Beyond" is the direction in which it goes.
template <class T, bool lower> struct Symmetric {
    T* a;
    i64 lda, n;
    i64* ipiv;

    struct RowRun {
        i64 first, count;
    };
    struct Largest {
        i64 row;
        T magnitude;
    };

    static constexpr i64 forward = lower ? 1 : -1;
    T& at(i64 i, i64 j) const { return a[i + j * lda]; }
    RowRun beyond(i64 k) const { return lower ? RowRun{k + 1, n - 1 - k} : RowRun{0, k}; }
    RowRun from(i64 k) const { return lower ? RowRun{k, n - k} : RowRun{0, k + 1}; }

    // The first of the largest elements of column j in some rows; the largest of row i in the columns from k to i.
    Largest largest_in_column(i64 j, RowRun rows) const
    {
        Largest result{rows.first, 0};
        for (i64 i = rows.first; i < rows.first + rows.count; ++i)
            if (magnitude(at(i, j)) > result.magnitude) result = {i, magnitude(at(i, j))};
        return result;
    }
    T largest_in_row(i64 i, i64 k) const
    {
        T result = 0;
        for (i64 j = k; j != i; j += forward)
            if (magnitude(at(i, j)) > result) result = magnitude(at(i, j));
        return result;
    }

    // Rows and columns p and q of what is left change places; p lies beyond q.
    void exchange(i64 p, i64 q) const
    {
        const RowRun rows = beyond(p);
        for (i64 i = rows.first; i < rows.first + rows.count; ++i) swap(at(i, q), at(i, p));
        for (i64 j = q + forward; j != p; j += forward) swap(at(j, q), at(p, j));
        swap(at(q, q), at(p, p));
    }

    // What is left, minus column * column^T / pivot; the column is divided by the pivot.
    void eliminate_one(i64 k) const
    {
        const RowRun rows = beyond(k);
        if (rows.count == 0) return;
        const T reciprocal = 1 / at(k, k);
        T* const x = &at(rows.first, k);
        const bool calls = n >= calls_from<T, lower>;
        if constexpr (std::is_same_v<T, float>) {
            if (calls) front::her("Lower", rows.count, -reciprocal, x, 1, &at(k + 1, k + 1), lda);
            else update_one(k, reciprocal);
        } else update_one(k, reciprocal);
        if (calls) return front::scal(rows.count, reciprocal, x, 1);
        for (i64 i = 0; i < rows.count; ++i) x[i] = reciprocal * x[i];
    }
    void update_one(i64 k, T reciprocal) const
    {
        for (i64 j = k + forward; j >= 0 && j < n; j += forward) {
            if (at(j, k) == 0) continue; // times an infinite reciprocal it would be NaN
            const T f = reciprocal * at(j, k);
            const RowRun rows = from(j);
            subtract(rows.count, f, &at(rows.first, k), &at(rows.first, j));
        }
    }

    // What is left, minus the two columns times the inverse of their block times the columns transposed; the columns
    // are multiplied by the inverse. It is computed from the block divided by its off-diagonal element.
    void eliminate_two(i64 k) const
    {
        const i64 l = k + forward;
        const T off = at(l, k), d_l = at(l, l) / off, d_k = at(k, k) / off;
        const T f = 1 / (d_l * d_k - 1) / off;
        for (i64 j = l + forward; j >= 0 && j < n; j += forward) {
            const T w_k = f * (d_l * at(j, k) - at(j, l)), w_l = f * (d_k * at(j, l) - at(j, k));
            const RowRun rows = from(j);
            subtract(rows.count, w_k, &at(rows.first, k), &at(rows.first, j));
            subtract(rows.count, w_l, &at(rows.first, l), &at(rows.first, j));
            at(j, k) = w_k, at(j, l) = w_l;
        }
    }

    i64 factor() const
    {
        i64 info = 0;
        for (i64 k = lower ? 0 : n - 1; k >= 0 && k < n;) {
            const T diagonal = magnitude(at(k, k));
            const Largest column = largest_in_column(k, beyond(k));
            const T colmax = column.magnitude;
            if (diagonal == 0 && colmax == 0) {
                if (info == 0) info = k + 1;
                ipiv[k] = k + 1;
                k += forward;
                continue;
            }
            i64 pivot = k;
            bool two = false;
            if (diagonal < pivot_ratio<T> * colmax) {
                const i64 r = column.row;
                const T before = largest_in_row(r, k), behind = largest_in_column(r, beyond(r)).magnitude;
                const T rowmax = before < behind ? behind : before;
                if (diagonal < pivot_ratio<T> * colmax * (colmax / rowmax)) {
                    pivot = r;
                    two = magnitude(at(r, r)) < pivot_ratio<T> * rowmax;
                }
            }
            const i64 moved = two ? k + forward : k;
            if (pivot != moved) {
                exchange(pivot, moved);
                if (two) swap(at(moved, k), at(pivot, k));
            }
            if (two) {
                eliminate_two(k);
                ipiv[k] = ipiv[moved] = -(pivot + 1);
            } else {
                eliminate_one(k);
                ipiv[k] = pivot + 1;
            }
            k = moved + forward;
        }
        return info;
    }
};

} // namespace
} // namespace orv::lapack

using namespace orv;

#define SYTRF(name, T, lower)                                                                                          \
    ORV_EXPORT void LAPACK_PS(name)(const char*, const i64* n, T* a, const i64* lda, i64* ipiv, i64* info)             \
    {                                                                                                                  \
        *info = lapack::Symmetric<T, lower>{a, *lda, *n, ipiv}.factor();                                               \
    }

SYTRF(ssytrf_l_small, float, true)
SYTRF(dsytrf_l_small, double, true)
SYTRF(ssytrf_u_small, float, false)
SYTRF(dsytrf_u_small, double, false)
