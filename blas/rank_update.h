// Updates of rank one or two, column by column, over any storage of columns:
//
//   A(i, j) := A(i, j) + f(j)*x(i)                   one term
//   A(i, j) := (A(i, j) + f(j)*x(i)) + g(j)*y(i)     two
//
// for the stored rows i of each column j. Every element is computed alone, by these products and sums, a rounding each;
// so neither alignment nor stride nor the distance of columns changes a bit. A column whose factors are all zero is
// left alone: NaN in x and y does not reach it.
#pragma once

#include "blas/storage.h"
#include "frame/simd.h"

namespace orv::blas {

// Element i stands at at[i*inc].
template <class T> struct StridedVector {
    const T* at;
    i64 inc;
    StridedVector(i64 n, const T* x, i64 inc) : at(first(x, n, inc)), inc(inc) {}
    const T& operator[](i64 i) const { return at[i * inc]; }
};

// What multiplies the vectors in one column.
template <class T, int terms> struct Factors {
    T of[terms];
    bool all_zero() const { return !any_nonzero(splat(of[0])) && !any_nonzero(splat(of[terms - 1])); }
};

// An update: the vectors x, or x and y, long enough for the rows of the columns, and what gives the factors.
template <class T, int terms> struct RankUpdate;

// alpha*x*op(y)
template <class T> struct RankUpdate<T, 1> {
    T alpha;
    StridedVector<T> vectors[1], y;
    bool conjugated, real_alpha; // a real alpha multiplies parts alone: infinities and zeros stay apart
    Factors<T, 1> factors(i64 j) const
    {
        const T f = conjugated ? conj(y[j]) : y[j];
        if constexpr (is_complex<T>)
            if (real_alpha) return {{alpha.re * f}};
        return {{alpha * f}};
    }
};

// alpha*x*conj(y) + conj(alpha*x)*y
template <class T> struct RankUpdate<T, 2> {
    T alpha;
    StridedVector<T> vectors[2];
    Factors<T, 2> factors(i64 j) const { return {{alpha * conj(vectors[1][j]), conj(alpha * vectors[0][j])}}; }
};

// Columns from..to-1.
struct Columns {
    i64 from, to;
};

// A real diagonal has imaginary parts that count as zero and are left zero.
enum class Diagonal { general, real };

// Updates the columns, at least one. far_pairs: whether columns of a far matrix go two at a time. Where the next column
// does not follow the last one at once, the processor's own look-ahead starts anew with every column, and two at a time
// halve what that costs.
template <int terms, class T>
void update_columns(const Storage<T>& a, Columns columns, const RankUpdate<T, terms>& update, Diagonal diagonal,
                    bool far_pairs);

} // namespace orv::blas
