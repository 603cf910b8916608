// How structured matrices lie in memory. Whatever the storage, it holds columns, and of each column a run of rows:
//
//   column(j)   a pointer c such that c[i] is element (i, j) for every stored row i
//   rows(j)     the stored rows, diagonal included; both ends ascend with j
//
// One record tells it for full, packed and band matrices and for both triangles, so that a loop over columns is
// compiled once for all of them. Bands lie as in BLAS: column j of the array holds column j of the matrix, the diagonal
// in row k of the array (upper), 0 (lower) or ku (general). What lies outside of the run is never read.
#pragma once

#include "frame/types.h"

namespace orv::blas {

enum class Half { lower, upper };

// U is the upper triangle, anything else the lower one.
constexpr Half half_of(char uplo) { return fold(uplo) == 'U' ? Half::upper : Half::lower; }

// Rows from..to-1.
struct Rows {
    i64 from, to;
};

// The rows of neighbouring columns: those that any of them has, and those that all share.
struct Run {
    Rows any, shared;
};

// Pointers as of column(j) to four neighbouring columns, or to as many as wanted: the last one stands for the others.
template <class T> struct Neighbours {
    T* at[4];
    i64 last_step; // from the last one to the column behind it
};

template <class T> struct Storage {
    T* a;
    i64 twice, bend;  // column j begins half of j*(twice + j*bend) behind a; bend is 0 where the distance is constant
    Rows all;         // of the matrix, or those of them that are wanted
    i64 above, below; // rows j-above..j+below-1 of column j are stored, as far as the matrix has them

    T* column(i64 j) const { return a + (j * (twice + j * bend) >> 1); }
    Rows rows(i64 j) const { return {max(all.from, j - above), min(all.to, j + below)}; }
    template <int columns> Run run(i64 j) const
    {
        const Rows left = rows(j), right = rows(j + columns - 1);
        return {{left.from, right.to}, {right.from, left.to}};
    }
    i64 step(i64 j) const { return (twice + (2 * j + 1) * bend) >> 1; } // from column j to the next
    template <int columns> Neighbours<T> neighbours(i64 j) const
    {
        const i64 grown = j * bend;
        i64 way = (twice + 2 * grown + bend) >> 1;
        Neighbours<T> n;
        n.at[0] = a + (j * (twice + grown) >> 1);
#pragma GCC unroll 4
        for (int c = 1; c < 4; ++c) {
            n.at[c] = n.at[c - 1];
            if (c < columns) n.at[c] += way, way += bend;
        }
        n.last_step = way;
        return n;
    }
    bool begins_at_diagonal() const { return above == 0; }
    bool ends_at_diagonal() const { return below == 1; }
    bool ends_before_diagonal() const { return below == 0; }
    // Whether so many neighbouring columns have stored rows in common, or at least end where the last one begins.
    bool share_rows(int columns) const { return columns <= above + below; }
    bool meet(int columns) const { return columns <= above + below + 1; }
};

// The side of a triangle without its diagonal.
template <class T> Storage<T> off_diagonal(Half half, Storage<T> a)
{
    (half == Half::upper ? a.below : a.above) -= 1;
    return a;
}

// k diagonals beside the main one; the other arguments as in the record.
template <class T> Storage<T> triangle(Half half, T* a, i64 twice, i64 bend, i64 n, i64 k)
{
    if (half == Half::upper) return {a, twice, bend, {0, n}, k, 1};
    return {a, twice, bend, {0, n}, 0, k + 1};
}
template <class T> Storage<T> full_triangle(Half half, T* a, i64 lda, i64 n)
{
    return triangle(half, a, 2 * lda, 0, n, n);
}
// Column after column without gaps.
template <class T> Storage<T> packed_triangle(Half half, T* a, i64 n)
{
    if (half == Half::upper) return triangle(half, a, 1, 1, n, n);
    return triangle(half, a, 2 * n - 1, -1, n, n);
}
template <class T> Storage<T> band_triangle(Half half, T* a, i64 lda, i64 n, i64 k)
{
    return triangle(half, half == Half::upper ? a + k : a, 2 * (lda - 1), 0, n, k);
}

// m rows, kl diagonals below the main one and ku above.
template <class T> Storage<T> general_band(T* a, i64 lda, i64 m, i64 kl, i64 ku)
{
    return {a + ku, 2 * (lda - 1), 0, {0, m}, ku, kl + 1};
}
// n full columns of m rows, none of which is told to end at the diagonal.
template <class T> Storage<T> rectangle(T* a, i64 lda, i64 m, i64 n) { return {a, 2 * lda, 0, {0, m}, n, m + 1}; }

} // namespace orv::blas
