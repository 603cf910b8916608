// Poisson and Helmholtz problems on rectangles: the grid's equations at every point, seen as sums of matrices that are
// the solution itself, moved by one row or one column. What stands on given sides holds NaN before the call.
#include "cli/verify/setting.h"

#include <cmath>
#include <type_traits>

namespace orv::verify {
namespace {

// The sides of an axis by one letter: d given values, n given slopes, p periodic, m values below and slopes above, w
// the other way round.
int low_end(char letter)
{
    return letter == 'p' ? ORV_PERIODIC : letter == 'n' || letter == 'w' ? ORV_NEUMANN : ORV_DIRICHLET;
}
int high_end(char letter)
{
    return letter == 'p' ? ORV_PERIODIC : letter == 'n' || letter == 'm' ? ORV_NEUMANN : ORV_DIRICHLET;
}

// A rectangle whose longer side is 1 to 2 long.
double length(i64 n) { return 1 + 1 / static_cast<double>(n); }

template <class T> orv_status solve(char x, char y, i64 nx, i64 ny, T alpha, T* u)
{
    const orv_poisson_axis axes[] = {{0, length(nx), nx, low_end(x), high_end(x)},
                                     {0, length(ny), ny, low_end(y), high_end(y)}};
    constexpr bool is_double = std::is_same_v<T, double>;
    orv_poisson* p = nullptr;
    const int precision = is_double ? ORV_DFT_DOUBLE : ORV_DFT_SINGLE;
    if (const orv_status status = orv_poisson_create(&p, precision, 2, axes, static_cast<double>(alpha))) return status;
    orv_status status;
    if constexpr (is_double) status = orv_dpoisson_solve(p, u, nullptr, nullptr, nullptr);
    else status = orv_spoisson_solve(p, u, nullptr, nullptr, nullptr);
    orv_poisson_free(p);
    return status;
}

// Points along an axis with equations of one form, and where their neighbours begin.
struct Stretch {
    i64 first, count, below, above;
};
std::vector<Stretch> stretches(char letter, i64 n)
{
    std::vector<Stretch> all{{1, n - 1, 0, 2}};
    if (letter == 'p') all.push_back({0, 1, n - 1, 1});
    if (low_end(letter) == ORV_NEUMANN) all.push_back({0, 1, 1, 1});
    if (high_end(letter) == ORV_NEUMANN) all.push_back({n, 1, n - 1, n - 1});
    return all;
}

Plan helmholtz(Setting& s)
{
    const char letters[] = {s.letter("xsides"), s.letter("ysides")};
    const i64 least[] = {letters[0] == 'p' ? 4 : 2, letters[1] == 'p' ? 4 : 2};
    const i64 half = letters[0] == 'p' ? 2 : 1; // a periodic x has an even number of cells
    const i64 n[] = {s.extra("nx", 6, least[0], 1 << 15) / half * half, s.extra("ny", 5, least[1], 1 << 15)};
    const Number q = s.scalar("alpha");
    const auto view = [&](i64 i, i64 rows, i64 j, i64 columns) {
        View v{"u", rows, columns};
        v.base = i + j * (n[0] + 1), v.row = 1, v.column = n[0] + 1;
        return v;
    };
    const double steps[] = {length(n[0]) / static_cast<double>(n[0]), length(n[1]) / static_cast<double>(n[1])};
    const Number x{1 / (steps[0] * steps[0]), 0}, y{1 / (steps[1] * steps[1]), 0};

    Plan plan;
    const double roundings = 200 + 30 * static_cast<double>(std::max(n[0], n[1]));
    for (const Stretch& a : stretches(letters[0], n[0]))
        for (const Stretch& b : stretches(letters[1], n[1])) {
            const auto at = [&](i64 i, i64 j) { return view(i, a.count, j, b.count); };
            plan.equations.push_back({{},
                                      {{{q.re + 2 * x.re + 2 * y.re, 0}, after(at(a.first, b.first))},
                                       {{-x.re, 0}, after(at(a.below, b.first))},
                                       {{-x.re, 0}, after(at(a.above, b.first))},
                                       {{-y.re, 0}, after(at(a.first, b.below))},
                                       {{-y.re, 0}, after(at(a.first, b.above))},
                                       {{-1, 0}, op(at(a.first, b.first))}},
                                      roundings});
        }
    // Sides: zeros, or what the facing side has.
    for (int axis : {0, 1})
        for (int high : {0, 1}) {
            const auto side = [&](bool is_high) {
                const i64 at = is_high ? n[axis] : 0;
                return axis == 0 ? view(at, 1, 0, n[1] + 1) : view(0, n[0] + 1, at, 1);
            };
            const char letter = letters[axis];
            const int kind = high ? high_end(letter) : low_end(letter);
            if (kind == ORV_DIRICHLET) plan.equations.push_back({{}, {{{1, 0}, after(side(high))}}, 0});
            if (kind == ORV_PERIODIC && high)
                plan.equations.push_back({{}, {{{1, 0}, after(side(true))}, {{-1, 0}, after(side(false))}}, 0});
        }
    return plan;
}

} // namespace

Group poisson_problems()
{
    const std::vector<const char*> sizes{"nx=4|6|16 ny=4|5|17", "nx=64 ny=4|33|100", "nx=12|50 ny=12 alpha=0.5|-0.75",
                                         "d dd nx=300 ny=200",
                                         "times=3 nx=20..150 ny=20..150 threads=2..8 eager=100000"};
    return {"poisson",
            "Poisson and Helmholtz problems",
            {{"helmholtz",
              "xsides:dnpmw ysides:dnpmw nx ny alpha u",
              helmholtz,
              sizes,
              {routine<solve<float>>("s"), routine<solve<double>>("d")}}}};
}

} // namespace orv::verify
