// Dense operands for products and solves: rows or columns one after the other, with padding that must stay as it is.
#pragma once

#include "tests/spblas/matrix.h"

namespace orv::test {

template <class T> class Dense {
public:
    Dense(i64 rows, i64 columns, bool by_rows, i64 padding, bool nan = false)
        : by_rows_(by_rows), rows_(rows), columns_(columns), ld_((by_rows ? columns : rows) + padding), data_(size())
    {
        Random random(static_cast<std::size_t>(rows * 7 + columns));
        for (i64 i = 0; i < rows; ++i)
            for (i64 j = 0; j < columns; ++j) (*this)(i, j) = nan ? not_a_number<T>() : random.value<T>();
        before_.assign(data_.begin(), data_.end());
    }
    T& operator()(i64 i, i64 j) const { return data_[static_cast<std::size_t>(at(i, j))]; }
    T before(i64 i, i64 j) const { return before_[static_cast<std::size_t>(at(i, j))]; }
    void restart() { std::copy(before_.begin(), before_.end(), data_.begin()); }
    T* data() const { return data_.data(); }
    template <class Int> Int ld() const { return static_cast<Int>(ld_); }
    std::vector<T> copy() const { return {data_.begin(), data_.end()}; }
    bool same_as(const std::vector<T>& other) const
    {
        return same_bits(data_.data(), other.data(), static_cast<i64>(other.size()));
    }

    // Whether all that lies between rows, or columns, has the bits that it had.
    bool padding_is_untouched() const
    {
        const i64 used = by_rows_ ? columns_ : rows_;
        for (i64 p = 0; p < static_cast<i64>(before_.size()); ++p)
            if (p % ld_ >= used &&
                !same_bits(&data_[static_cast<std::size_t>(p)], &before_[static_cast<std::size_t>(p)], 1))
                return false;
        return true;
    }

private:
    i64 at(i64 i, i64 j) const { return by_rows_ ? i * ld_ + j : i + j * ld_; }
    std::size_t size() const
    {
        const i64 lines = by_rows_ ? rows_ : columns_, used = by_rows_ ? columns_ : rows_;
        return lines == 0 || used == 0 ? 0 : static_cast<std::size_t>((lines - 1) * ld_ + used);
    }

    bool by_rows_;
    i64 rows_, columns_, ld_;
    Guarded<T> data_;
    std::vector<T> before_;
};

// ---- Solves are judged by what the matrix makes of the solution: op(A)*y against the right-hand side, with the
// magnitude of all that went in.

// The worst row of one column, as a multiple of the textbook's bound; scaled: for diagonal matrices, by alpha.
template <class T, class Solution, class Right>
long double residual(const SparseName& name, const Coordinates<T>& a, T alpha, const Solution& y, const Right& right)
{
    std::vector<WideSum> sums(static_cast<std::size_t>(a.m));
    std::vector<T> diagonal(sums.size(), zero<T>);
    for (const auto& [i, j, value] : meant(name, a)) {
        sums[static_cast<std::size_t>(i)].add(value, y(j));
        if (i == j) diagonal[static_cast<std::size_t>(i)] = value;
    }
    long double worst = 0;
    for (i64 i = 0; i < a.m; ++i) {
        WideSum& sum = sums[static_cast<std::size_t>(i)];
        if (name.kind == 'd') sum.add(-alpha, right(i));
        else sum.add(-one<T>, right(i));
        sum.terms += 4; // a complex quotient
        keep_worst(worst, sum.excess(zero<T>));
    }
    return worst;
}

// Whether a solve for the columns first to last of y, from 0, solved these and left the others and the padding alone.
template <class T, class Residual>
void expect_solved(const Dense<T>& y, i64 rows, i64 columns, i64 first, i64 last, const Residual& residual_of)
{
    for (i64 column = 0; column < columns; ++column) {
        if (column >= first && column <= last) EXPECT_LE(residual_of(column), 1) << column;
        else
            for (i64 i = 0; i < rows; ++i) EXPECT_EQ(y(i, column), y.before(i, column));
    }
    EXPECT_TRUE(y.padding_is_untouched());
}

// Every row has its diagonal, unless ones stand there: then some have and some have not. In a triangle of random
// numbers solutions would grow beyond all bounds, so entries beside the diagonal are small.
template <class T> std::vector<Coordinates<T>> solvable_patterns(const SparseName& name)
{
    auto all = square_patterns<T>(!name.unit());
    for (auto& a : all)
        for (auto& entry : a.entries)
            if (entry.i != entry.j) entry.a = real_t<T>(0.125) * entry.a;
    return all;
}

} // namespace orv::test
