// Updates of rank one or two, column by column, over any storage of columns:
//
//   A(i, j) := A(i, j) + f(j)*x(i)                   one term
//   A(i, j) := (A(i, j) + f(j)*x(i)) + g(j)*y(i)     two
//
// for the stored rows i of each column j. Every element is computed alone, by these products and sums, a rounding each;
// so neither alignment nor stride nor the distance of columns changes a bit. A column whose factors are all zero is
// left alone: NaN in x and y does not reach it.
#pragma once

#include "blas/gemv_kernels.h"
#include "blas/storage.h"

namespace orv::blas {

// Element i stands at at[i*inc].
template <class T> struct StridedVector {
    const T* at;
    i64 inc;
    StridedVector(i64 n, const T* x, i64 inc) : at(first(x, n, inc)), inc(inc) {}
    const T& operator[](i64 i) const { return at[i * inc]; }
};

// What multiplies the vectors in one column, in every lane.
template <class T, int terms> struct Factors {
    vec<T> of[terms];
    bool all_zero() const { return !any_nonzero(of[0]) && !any_nonzero(of[terms - 1]); }
};

// An update: the vectors x, or x and y, long enough for the rows of the columns, and what gives the factors.
template <class T, int terms> struct RankUpdate;

// alpha*x*op(y)
template <class T> struct RankUpdate<T, 1> {
    factor<T> alpha; // of y, or of its conjugate
    StridedVector<T> vectors[1], y;
    bool real_alpha = false; // multiplies parts alone: infinities and zeros stay apart
    Factors<T, 1> factors(i64 j) const
    {
        const vec<T> v = load_splat(&y[j]);
        if constexpr (is_complex<T>)
            if (real_alpha) return {{lane_product(v, alpha.re)}};
        return {{alpha * v}};
    }
};

// alpha*x*conj(y) + conj(alpha*x)*y
template <class T> struct RankUpdate<T, 2> {
    factor<T> alpha, of_conjugate;
    StridedVector<T> vectors[2];
    RankUpdate(T alpha, const StridedVector<T>& x, const StridedVector<T>& y)
        : alpha(alpha), of_conjugate(alpha, true), vectors{x, y}
    {
    }
    Factors<T, 2> factors(i64 j) const
    {
        return {{of_conjugate * load_splat(&vectors[1][j]), conj(alpha * load_splat(&vectors[0][j]))}};
    }
};

// Columns from..to-1.
struct Columns {
    i64 from, to;
};

// A real diagonal has imaginary parts that count as zero and are left zero.
enum class Diagonal { general, real };

// How the columns of a rectangle or a triangle follow one another, each from its first row on.
template <class T> struct Flight {
    T* c; // column `from`
    i64 from, row, rows, step;
    i64 down, longer, bend; // by which row, rows and step grow from column to column

    Flight(const Storage<T>& a, i64 from)
        : from(from), down(a.begins_at_diagonal()), longer(a.ends_at_diagonal() - down), bend(a.bend)
    {
        row = down ? from : 0;
        rows = longer > 0 ? from + 1 : a.all.to - row;
        c = a.column(from) + row;
        step = a.step(from) + down;
    }
    i64 most_rows(i64 columns) const { return longer > 0 ? rows + columns - 1 : rows; }
};

// The vectors have unit stride, and reach a boundary together if T is read there only: complex singles are, as there
// loads alone bring real and imaginary parts apart.
template <class T> inline constexpr bool on_boundaries = is_complex<T>&& splits_on_boundaries<T>;
template <class T, int terms> bool in_place(const StridedVector<T> (&x)[terms])
{
    const auto a = reinterpret_cast<std::uintptr_t>(x[0].at), b = reinterpret_cast<std::uintptr_t>(x[terms - 1].at);
    return x[0].inc == 1 && x[terms - 1].inc == 1 &&
           (!on_boundaries<T> || (a % sizeof(T) == 0 && (a - b) % vector_bytes == 0));
}

// Columns up to `to`, with vectors in place, x and y being the first and the last one.
template <int terms, class T>
void update_near(const Flight<T>& a, i64 to, const RankUpdate<T, terms>& update, const T* x, const T* y,
                 Diagonal diagonal);
// Any columns, vectors and distance.
template <int terms, class T>
void update_any(const Storage<T>& a, Columns columns, const RankUpdate<T, terms>& update, Diagonal diagonal,
                bool far_pairs);

// Updates the columns, at least one. far_pairs: whether columns of a far matrix go two at a time. Where the next column
// does not follow the last one at once, the processor's own look-ahead starts anew with every column, and two at a time
// halve what that costs.
template <int terms, class T>
ORV_INLINE void update_columns(const Storage<T>& a, Columns columns, const RankUpdate<T, terms>& update,
                               Diagonal diagonal, bool far_pairs)
{
    const Flight<T> flight(a, columns.from);
    const i64 count = columns.to - columns.from;
    if (!in_place(update.vectors) || is_far<T>(flight.most_rows(count), count))
        return update_any(a, columns, update, diagonal, far_pairs);
    update_near(flight, columns.to, update, update.vectors[0].at, update.vectors[terms - 1].at, diagonal);
}

} // namespace orv::blas
