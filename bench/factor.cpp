// Small factorisations and tridiagonal solves. None can be repeated on what it leaves, so the operands are copied anew
// before each call.
#include "bench/case.h"

#include <numeric>

namespace orv::bench {
namespace {

constexpr char types[] = "sdcz";

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
    for (int type = 0; type < 4; ++type)
        for (const i64 n : {100, 10000})
            for (const i64 sides : {1, 4, 64}) {
                const Tridiagonal dominant{types[type], Diagonals::dominant, n, sides};
                cases.push_back(dominant.dttrb());
                if (type >= 2) continue; // gtsv is for reals
                cases.push_back(dominant.gtsv());
                cases.push_back(Tridiagonal{types[type], Diagonals::random, n, sides}.gtsv());
            }
    return cases;
}

} // namespace orv::bench
