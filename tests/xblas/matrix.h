// Matrices of every storage by the textbook's formulas, and what a routine makes of them.
#pragma once

#include "tests/xblas/problem.h"

#include <functional>

namespace orv::test::extended {

// rows by columns; at(i, j): where the element stands, -1 if it is 0 and not stored. What is not a place is NaN.
struct Stored {
    i64 rows, columns;
    std::function<i64(i64, i64)> at;
    Array data;

    Stored(char type, i64 rows, i64 columns, std::function<i64(i64, i64)> at, Random& random)
        : rows(rows), columns(columns), at(std::move(at)), data(type, length(rows, columns, this->at))
    {
        for (i64 i = 0; i < rows; ++i)
            for (i64 j = 0; j < columns; ++j)
                if (this->at(i, j) >= 0) data.fill(random, this->at(i, j));
    }
    bool has(i64 i, i64 j) const { return at(i, j) >= 0; }
    Element operator()(i64 i, i64 j) const { return data[at(i, j)]; }

private:
    static i64 length(i64 rows, i64 columns, const std::function<i64(i64, i64)>& at)
    {
        i64 end = 0;
        for (i64 i = 0; i < rows; ++i)
            for (i64 j = 0; j < columns; ++j) end = max(end, at(i, j) + 1);
        return end;
    }
};

using Places = std::function<i64(i64, i64)>;

inline Places full(i64 order, i64 ld)
{
    return [=](i64 i, i64 j) { return order == column_major ? i + j * ld : i * ld + j; };
}
inline Places general_band(i64 order, i64 kl, i64 ku, i64 ld)
{
    return [=](i64 i, i64 j) -> i64 {
        if (i - j > kl || j - i > ku) return -1;
        return order == column_major ? j * ld + ku + i - j : i * ld + kl + j - i;
    };
}
// One triangle, diagonal included.
inline Places triangle(i64 uplo, Places all)
{
    return [=](i64 i, i64 j) { return (uplo == upper ? i <= j : i >= j) ? all(i, j) : -1; };
}
inline Places band_triangle(i64 order, i64 uplo, i64 k, i64 ld)
{
    return uplo == upper ? general_band(order, 0, k, ld) : general_band(order, k, 0, ld);
}
inline Places packed(i64 order, i64 uplo, i64 n)
{
    return triangle(uplo, [=](i64 i, i64 j) {
        // The outer index runs along the storage; rows (columns) grow if what lies before the diagonal is stored.
        const i64 outer = order == column_major ? j : i, inner = order == column_major ? i : j;
        const bool growing = (order == column_major) == (uplo == upper);
        return growing ? outer * (outer + 1) / 2 + inner : outer * (2 * n - outer - 1) / 2 + inner;
    });
}

// A symmetric or Hermitian matrix of which one triangle is stored.
inline bool is_hermitian(const Member& m) { return m.op[0] == 'h'; }
inline Element symmetric_element(const Stored& half, bool hermitian, i64 i, i64 j)
{
    if (hermitian && i == j) {
        Element e = half(i, i);
        return {e.re, 0, false, e.narrow};
    }
    if (half.has(i, j)) return half(i, j);
    return hermitian ? conjugate(half(j, i)) : half(j, i);
}
inline bool in_symmetric(const Stored& half, i64 i, i64 j) { return half.has(i, j) || half.has(j, i); }

// One row of products: elements of the matrix and of the vector, in the order of their sum.
using Terms = std::vector<std::pair<Element, Element>>;

inline Complex sum_of(const Ring& ring, const Terms& terms)
{
    Complex sum;
    for (const auto& [a, x] : terms) {
        const Complex p = ring.product(a, x);
        sum.re = ring.add(sum.re, p.re);
        if (a.is_complex || x.is_complex) sum.im = ring.add(sum.im, p.im);
    }
    return sum;
}

// Which of the cases of alpha and beta a family tells apart.
struct Cases {
    bool any = true;              // else everything is read and multiplied
    bool zero_clears = false;     // alpha = beta = 0 clears without reading
    bool returns = true;          // alpha = 0 with beta = 1 does nothing
    bool scales_in_extra = false; // alpha = 0 multiplies in extra precision where that is asked for
};
inline Cases cases(const std::string& op)
{
    if (op.starts_with("gemv")) return {.zero_clears = true, .returns = false};
    if (op.starts_with("gbmv")) return {.any = false};
    if (op.starts_with("hemv")) return {.scales_in_extra = true};
    return {};
}

// r := alpha*(sum of heads + sum of tails) + beta*r as the family does it; tails: none or as many as heads.
inline void expect_closed(const Member& m, i64 prec, Array& out, i64 i, const Array& alpha, const Array& beta,
                          const Terms& heads, const Terms* tails)
{
    const Cases c = cases(m.op);
    const Ring ring(m.arithmetic(prec));
    const Element a = alpha[0], b = beta[0];
    if (c.returns && equals(alpha, 0) && equals(beta, 1)) return;
    if (c.any && equals(alpha, 0)) {
        if (c.zero_clears && equals(beta, 0)) return out.set(i, 0, 0);
        const Ring by(ring.extra() && !c.scales_in_extra ? Arithmetic::double_ : m.arithmetic(prec));
        return store(by, out, i, by.product(out[i], b));
    }
    const bool multiply = !c.any || !equals(alpha, 1);
    Complex sum = sum_of(ring, heads);
    if (tails) {
        const Complex tail = sum_of(ring, *tails);
        sum = multiply ? ring.add_product(ring.multiply(sum, a), tail, a) : ring.add(sum, tail);
    } else if (multiply) sum = ring.multiply(sum, a);
    if (!c.any || !equals(beta, 0)) sum = ring.add_product(sum, out[i], b);
    store(ring, out, i, sum);
}

// Sizes and strides of a run, all combinations of which would take too long: each run takes the next of every list, and
// the lists' lengths have no common factor with one another.
class Rotation {
public:
    template <class List> auto operator()(const List& list)
    {
        return list[static_cast<std::size_t>(run_) % std::size(list)];
    }
    void next() { ++run_; }
    // A size from 1 to 40, all of which come in turn.
    i64 size(i64 step = 1) const { return 1 + run_ * step % 40; }
    i64 run() const { return run_; }

private:
    i64 run_ = 0;
};

template <class T> std::vector<T> with(std::vector<T> list, T other) { return list.push_back(other), list; }

inline std::vector<i64> orders(const Member& m)
{
    return m.for_c ? std::vector<i64>{row_major, column_major} : std::vector<i64>{column_major};
}

} // namespace orv::test::extended
