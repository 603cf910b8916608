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

#include <type_traits>

namespace orv::blas {

// Element i stands at at[i*inc].
template <class T> struct StridedVector {
    const T* at;
    i64 inc;
    StridedVector(i64 n, const T* x, i64 inc) : at(first(x, n, inc)), inc(inc) {}
    T operator[](i64 i) const { return at[i * inc]; }
};

// What multiplies the vectors in one column.
template <class T, int terms> struct Factors {
    T of[terms];
    bool all_zero() const { return of[0] == zero<T> && of[terms - 1] == zero<T>; }
};

// Columns from..to-1.
struct Columns {
    i64 from, to;
};

enum class Diagonal { general, real };

// From this size on, half of a second-level cache, the next lines of A are asked for ahead of their turn.
inline constexpr i64 far_update_bytes = 1 << 20;

// c(0:m) += f.of[0]*x[0](0:m) + ..., unit strides. What is updated next starts at next.
template <bool far, int terms, class T>
ORV_INLINE void add_terms(i64 m, const Factors<T, terms>& f, const T* const (&x)[terms], T* c, const T* next)
{
    constexpr i64 lanes = vec<T>::lanes, block = 4 * lanes, ahead = 2048 / sizeof(T);
    static_assert(terms == 1 || terms == 2);
    const factor<T> by[2] = {factor<T>(f.of[0]), factor<T>(f.of[terms - 1])};
    const auto piece = [&]<int n>(std::integral_constant<int, n>, i64 at) ORV_INLINE_LAMBDA {
        vec<T> sum = load_first<n>(c + at);
#pragma GCC unroll 2
        for (int t = 0; t < terms; ++t) sum += by[t] * load_first<n>(x[t] + at);
        store_first<n>(c + at, sum);
    };
    constexpr std::integral_constant<int, vec<T>::lanes> whole;
    constexpr std::integral_constant<int, 1> single;
    i64 i = 0;
    for (; i + block <= m; i += block) {
        if (far) prefetch(i + ahead < m ? c + i + ahead : next + (i + ahead - m));
#pragma GCC unroll 4
        for (i64 r = 0; r < block; r += lanes) piece(whole, i + r);
    }
    for (; i + lanes <= m; i += lanes) piece(whole, i);
    for (; i < m; ++i) piece(single, i);
}

// The rows `rows` of the columns. x[t] points to the element for the first of these rows.
template <bool far, Diagonal diagonal, class Update, class Storage, class T, int terms>
void update_rows(const Storage& a, Columns columns, Rows rows, const Update& update, const T* const (&x)[terms])
{
    for (i64 j = columns.from; j < columns.to; ++j) {
        const i64 from = max(a.rows(j).from, rows.from), to = min(a.rows(j).to, rows.to);
        if (from >= to) continue;
        T* const c = a.column(j);
        const Factors<T, terms> f = update.factors(j);
        if (!f.all_zero()) {
            const T* part[terms];
            for (int t = 0; t < terms; ++t) part[t] = x[t] + (from - rows.from);
            add_terms<far>(to - from, f, part, c + from, a.column(j + 1) + max(a.rows(j + 1).from, rows.from));
        }
        if constexpr (diagonal == Diagonal::real)
            if (from <= j && j < to) c[j].im = 0;
    }
}

// Strided vectors are gathered once for all columns, in chunks that fit on a small stack.
template <bool far, Diagonal diagonal, class Update, class Storage>
[[gnu::noinline]] void update_strided(const Storage& a, Columns columns, Rows rows, const Update& update)
{
    using T = typename Update::Element;
    constexpr i64 chunk = 16384 / sizeof(T) / Update::terms;
    alignas(vector_bytes) T gathered[Update::terms][chunk];
    const T* x[Update::terms];
    for (int t = 0; t < Update::terms; ++t) x[t] = gathered[t];
    for (i64 i = rows.from; i < rows.to; i += chunk) {
        const i64 count = min(chunk, rows.to - i);
        for (int t = 0; t < Update::terms; ++t)
            for (i64 r = 0; r < count; ++r) gathered[t][r] = update.vectors[t][i + r];
        update_rows<far, diagonal>(a, columns, {i, i + count}, update, x);
    }
}

// Updates the columns, at least one. An Update has
//
//   Element, terms    the type of an element, and 1 or 2
//   vectors[terms]    StridedVector x, or x and y, long enough for the rows of the columns
//   factors(j)        the Factors of column j
//
// A real diagonal has imaginary parts that count as zero and are left zero.
template <Diagonal diagonal, class Update, class Storage>
void update_columns(const Storage& a, Columns columns, const Update& update)
{
    using T = typename Update::Element;
    constexpr int terms = Update::terms;
    const Rows rows = {a.rows(columns.from).from, a.rows(columns.to - 1).to};
    const auto run = [&]<bool far>(std::bool_constant<far>) {
        if (update.vectors[0].inc != 1 || update.vectors[terms - 1].inc != 1)
            return update_strided<far, diagonal>(a, columns, rows, update);
        const T* x[terms];
        for (int t = 0; t < terms; ++t) x[t] = update.vectors[t].at + rows.from;
        update_rows<far, diagonal>(a, columns, rows, update, x);
    };
    const i64 bytes = (rows.to - rows.from) * (columns.to - columns.from) * static_cast<i64>(sizeof(T));
    if (bytes >= far_update_bytes) run(std::true_type());
    else run(std::false_type());
}

} // namespace orv::blas
