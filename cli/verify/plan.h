// What a routine promises, as equations between matrices. All that is checked here has one form:
//
//     sum over terms of factor*op(L)*op(R) = value
//
// where operands are seen as matrices whatever their storage (a vector is one column, a number 1 by 1) and as they
// stood before or after the call. A product has its result as the value; a solution is an operand, and the value is 0.
#pragma once

#include "frame/types.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace orv::verify {

using Number = cpx<double>;

// Where element i of a sparse vector stands in the dense one: neighbours in pairs the wrong way round, gaps between.
constexpr i64 sparse_position(i64 i) { return 3 * (i ^ 1) + i % 3 / 2; }

// rows by columns of an array.
struct View {
    std::string array; // an argument's name; "result": what is returned; empty: ones, or roots of one
    i64 rows = 1, columns = 1;

    // Element (i,j) stands at base + i*row + j*column, if it lies in the band of so many diagonals below the main one
    // and above it; packed: the columns (or rows) of a triangle one after the other without gaps, each longer or
    // shorter than the one before; sparse: see above.
    enum class Places { even, packed_growing, packed_shrinking, sparse } places = Places::even;
    i64 base = 0, row = 1, column = 0;
    i64 below = none, above = none;
    static constexpr i64 none = i64(1) << 40;

    // What elements are that are not stored. A Hermitian matrix takes its diagonal as real.
    enum class Rest { zero, symmetric, hermitian } rest = Rest::zero;
    bool unit = false;     // the diagonal is not stored and 1
    bool dominant = false; // to be filled so that solving with it neither grows nor shrinks a vector

    // Without an array: element (i,j) is exp(2*pi*i*turns*p*q/points), turns being 1 or -1, of the frequency p in its
    // row and the point q in its column, or one part of that; the first and the last column count by their weights.
    i64 points = 0;
    int turns = 0;
    enum class Part { whole, real, imaginary } part = Part::whole;
    struct Steps { // start + i*step
        i64 start = 0, step = 1;
        i64 at(i64 i) const { return start + i * step; }
    } by_rows{}, by_columns{};
    double first_weight = 1, last_weight = 1;

    void keep_triangle(bool upper) { (upper ? below : above) = 0; }

    // -1: the element is not stored.
    i64 at(i64 i, i64 j) const
    {
        if (i - j > below || j - i > above || (unit && i == j)) return -1;
        const i64 less = std::min(i, j), more = std::max(i, j);
        switch (places) {
        case Places::packed_growing:
            return more * (more + 1) / 2 + less;
        case Places::packed_shrinking:
            return less * (2 * rows - less - 1) / 2 + more;
        case Places::sparse:
            return sparse_position(i);
        default:
            return base + i * row + j * column;
        }
    }
};

struct Operand {
    View view;
    char op = 'n';      // n, t, c as in the BLAS; r: the conjugate, a: the sizes |re| + |im|
    bool after = false; // the call: its elements may be written
};

struct Term {
    Number factor{1, 0};
    Operand left;
    std::optional<Operand> right{};
};

struct Equation {
    std::optional<Operand> value; // none: zeros
    std::vector<Term> terms;
    double roundings = 0; // on the longest way from an operand to an element of the result; 0: it is exact
};

struct Plan {
    std::vector<Equation> equations;
    char work = 0; // kind of the numbers that are computed with, if they are wider than the result: d, or x: 105 bits

    // Elements that are not random.
    struct Preset {
        std::string array;
        i64 position;
        Number value;
    };
    std::vector<Preset> presets{};

    // The one promise that is no equation: the result is the position of an extreme size, 1 the largest, -1 the least.
    int extreme = 0;
};

// Roundings into a sum of products that a scalar multiplies and that is added to a scaled element: a product and a sum
// a term, scalars, joins of partial sums (of complex numbers, more), one addition for each block of a long sum.
inline double roundings_of_sum(i64 terms)
{
    const double k = static_cast<double>(terms);
    return 1.5 * k + 12;
}

} // namespace orv::verify
