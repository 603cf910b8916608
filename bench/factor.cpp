// Small factorisations and tridiagonal solves. None can be repeated on what it leaves, so the operands are copied anew
// before each call.
#include "bench/case.h"

#include <numeric>

namespace orv::bench {
namespace {

constexpr char types[] = {'s', 'd', 'c', 'z'};

std::string named(char type, const char* stem) { return std::string(1, type) + stem; }

// Diagonally dominant, so positive definite.
Case potrf(char type, char uplo, i64 n)
{
    Case c{named(type, "potrf"), std::string(1, uplo), n, type};
    c.quick = n == 32;
    std::vector<i64> diagonal(n);
    for (i64 i = 0; i < n; ++i) diagonal[i] = i * (n + 1);
    c.letter(uplo)
        .integer(n)
        .renewed(n * n, Use::updated, 0.5 / static_cast<double>(n), diagonal)
        .integer(n)
        .integer(0);
    c.kernel_steps = {{named(type, uplo == 'L' ? "potrf_l_small" : "potrf_u_small"), {0, 1, 2, 3, 4}}};
    const auto order = static_cast<double>(n);
    c.work = c.reals() * c.reals() * order * order * order / 3;
    c.unit = "GFLOP/s";
    c.limit = Limit::arithmetic;
    c.roundings = 4 * order;
    return c;
}

// Indefinite, with exchanges and blocks of two. LAPACK's own unblocked routine is what it calls at these orders.
Case sytrf(char type, char uplo, i64 n)
{
    Case c{named(type, "sytf2"), std::string(1, uplo), n, type};
    c.quick = n == 32;
    c.letter(uplo).integer(n).renewed(n * n, Use::updated, 1, {}).integer(n).operand(2 * n, Use::spent).integer(0);
    c.kernel_steps = {{named(type, uplo == 'L' ? "sytrf_l_small" : "sytrf_u_small"), {0, 1, 2, 3, 4, 5}}};
    const auto order = static_cast<double>(n);
    c.work = order * order * order / 3;
    c.unit = "GFLOP/s";
    c.limit = Limit::arithmetic;
    c.roundings = 1e4; // growth, on the way to small pivots
    return c;
}

Case getc2(char type, i64 n)
{
    Case c{named(type, "getc2"), "", n, type};
    c.quick = n == 8;
    c.integer(n)
        .renewed(n * n, Use::updated, 1, {})
        .integer(n)
        .operand(2 * n, Use::spent)
        .operand(2 * n, Use::spent)
        .integer(0);
    const auto order = static_cast<double>(n);
    c.work = 2 * c.reals() * c.reals() * order * order * order / 3;
    c.unit = "GFLOP/s";
    c.roundings = 1e4;
    return c;
}

enum class Diagonals { dominant, random };
const char* name(Diagonals kind) { return kind == Diagonals::dominant ? "dominant" : "random"; }

struct Tridiagonal {
    char type;
    Diagonals kind;
    i64 n, sides;

    // dl d du
    Case& diagonals(Case& c) const
    {
        std::vector<i64> all;
        if (kind == Diagonals::dominant) all.resize(n), std::iota(all.begin(), all.end(), 0);
        const double scale = kind == Diagonals::dominant ? 0.3 : 1;
        return c.renewed(n - 1, Use::spent, scale, {})
            .renewed(n, Use::spent, 1, all)
            .renewed(n - 1, Use::spent, scale, {});
    }
    Case finished(Case c) const
    {
        c.quick = n == 100 && sides == 4;
        const auto rows = static_cast<double>(n), columns = static_cast<double>(sides);
        c.work = c.reals() * c.reals() * (3 * rows + 5 * rows * columns);
        c.unit = "GFLOP/s";
        c.roundings = kind == Diagonals::dominant ? 40 : 1e5; // random ones are near singular now and then
        return c;
    }
    std::string variant() const { return std::string(name(kind)) + " nrhs=" + std::to_string(sides); }

    // With exchanges, in one call.
    Case gtsv() const
    {
        Case c{named(type, "gtsv"), variant(), n, type};
        c.integer(n).integer(sides);
        diagonals(c).renewed(n * sides, Use::updated, 1, {}).integer(n).integer(0);
        c.kernel_steps = {{named(type, "gtsv_small"), {0, 1, 2, 3, 4, 5, 6, 7}}};
        return finished(c);
    }

    // With the factors of a positive definite matrix.
    Case ptts2() const
    {
        Case c{named(type, "ptts2"), variant(), n, type};
        c.integer(n)
            .integer(sides)
            .operand(n, Use::read)
            .operand(n - 1, Use::read)
            .renewed(n * sides, Use::updated, 1, {});
        c.integer(n);
        c.operands[0].ones.resize(n), std::iota(c.operands[0].ones.begin(), c.operands[0].ones.end(), 0);
        c.operands[1].scale = 0.3;
        return finished(c);
    }

    // From both ends, beside LAPACK's factorisation with exchanges; a factorisation, then a solve.
    Case dttrb() const
    {
        enum { order, columns, below, diagonal, above, b, ldb, info, trans, second, pivots };
        Case c{named(type, "dttrb"), variant(), n, type};
        c.integer(n).integer(sides);
        diagonals(c).renewed(n * sides, Use::updated, 1, {}).integer(n).integer(0).letter('N');
        c.operand(n, Use::spent).operand(n, Use::spent);
        c.kernel_steps = {{named(type, "dttrfb"), {order, below, diagonal, above, info}},
                          {"x" + named(type, "dttrsb"), {trans, order, columns, below, diagonal, above, b, ldb, info}}};
        c.standard_steps = {
            {named(type, "gttrf"), {order, below, diagonal, above, second, pivots, info}},
            {named(type, "gttrs"), {trans, order, columns, below, diagonal, above, second, pivots, b, ldb, info}}};
        return finished(c);
    }
};

} // namespace

std::vector<Case> factor_cases()
{
    std::vector<Case> cases;
    for (int type = 0; type < 4; ++type)
        for (const char uplo : {'L', 'U'})
            for (const i64 n : {4, 8, 16, 24, 32, 39, 48, 59, 64, 100, 200, 500, 1000})
                cases.push_back(potrf(types[type], uplo, n));
    for (const char type : {'s', 'd'})
        for (const char uplo : {'L', 'U'})
            for (const i64 n : {4, 8, 16, 32, 44, 59}) cases.push_back(sytrf(type, uplo, n));
    for (const char type : types)
        for (const i64 n : {2, 4, 8, 16}) cases.push_back(getc2(type, n));
    for (int type = 0; type < 4; ++type)
        for (const i64 n : {100, 10000})
            for (const i64 sides : {1, 4, 64}) {
                const Tridiagonal dominant{types[type], Diagonals::dominant, n, sides};
                cases.push_back(dominant.dttrb());
                if (type >= 2) continue; // the others are here for reals
                cases.push_back(dominant.ptts2());
                cases.push_back(dominant.gtsv());
                cases.push_back(Tridiagonal{types[type], Diagonals::random, n, sides}.gtsv());
            }
    return cases;
}

} // namespace orv::bench
