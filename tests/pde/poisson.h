// Helmholtz solvers as a caller of their kernels meets them, and the linear system that they should solve.
#pragma once

#include "frame/kernels/pdepl.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace orv::test {

namespace pdepl = kernels::pdepl;
namespace pdett = kernels::pdett;

#define ORV_POISSON_KERNEL(name, Type, stem)                                                                           \
    template <class T> auto* name = kernel<pdepl::Type<T>>("pdepl", letter<T>, stem);
ORV_POISSON_KERNEL(init_2d, Init2d, "_init_helmholtz_2d")
ORV_POISSON_KERNEL(init_3d, Init3d, "_init_helmholtz_3d")
ORV_POISSON_KERNEL(commit_2d, Step2d, "_commit_helmholtz_2d")
ORV_POISSON_KERNEL(commit_3d, Step3d, "_commit_helmholtz_3d")
ORV_POISSON_KERNEL(solve_2d, Step2d, "_helmholtz_2d")
ORV_POISSON_KERNEL(solve_3d, Step3d, "_helmholtz_3d")
#undef ORV_POISSON_KERNEL
inline pdepl::Free2d* free_2d = kernel<pdepl::free_helmholtz_2d>();
inline pdepl::Free3d* free_3d = kernel<pdepl::free_helmholtz_3d>();

// A rectangle (2 axes) or a box (3): its grid, what is told of its sides, and the arrays of a solver, silent and no
// longer than they must be.
template <class T, int axes> struct Problem {
    std::string sides; // letters
    i64 n[axes];
    T from[axes], to[axes], q;
    std::vector<T> f, bd[2 * axes];

    i64 ipar[pdepl::ipar_size];
    Guarded<T> dpar;
    i64 stat = -1;
    imports::Handle handles[2] = {nullptr, nullptr};

    Problem(std::string letters, const i64 (&cells)[axes], T coefficient)
        : sides(std::move(letters)), q(coefficient),
          dpar(static_cast<std::size_t>(axes == 2 ? pdepl::dpar_size_2d(cells[0])
                                                  : pdepl::dpar_size_3d(cells[0], cells[1])))
    {
        std::copy(cells, cells + axes, n);
        for (int a = 0; a < axes; ++a)
            from[a] = T(0.25) * static_cast<T>(a), to[a] = from[a] + T(1) + T(0.375) * static_cast<T>(a);
        f.assign(static_cast<std::size_t>(points()), T(0));
        for (int side = 0; side < 2 * axes; ++side)
            bd[side].assign(static_cast<std::size_t>(points() / (n[side / 2] + 1)), T(0));
    }
    Problem(const Problem&) = delete;
    Problem& operator=(const Problem&) = delete;
    ~Problem()
    {
        if (handles[0] != nullptr) free();
    }

    i64 points() const
    {
        i64 all = 1;
        for (const i64 cells : n) all *= cells + 1;
        return all;
    }
    long double step(int axis) const
    {
        return (static_cast<long double>(to[axis]) - static_cast<long double>(from[axis])) /
               static_cast<long double>(n[axis]);
    }
    void draw(std::uint64_t stream)
    {
        Random random(stream);
        for (T& value : f) value = random.value<T>();
        for (auto& values : bd)
            for (T& value : values) value = random.value<T>();
    }

    i64 init()
    {
        if constexpr (axes == 2)
            init_2d<T>(&from[0], &to[0], &from[1], &to[1], &n[0], &n[1], sides.c_str(), &q, ipar, dpar.data(), &stat);
        else
            init_3d<T>(&from[0], &to[0], &from[1], &to[1], &from[2], &to[2], &n[0], &n[1], &n[2], sides.c_str(), &q,
                       ipar, dpar.data(), &stat);
        ipar[pdepl::ipar_errors] = ipar[pdepl::ipar_warnings] = 0;
        return stat;
    }
    i64 commit() { return step_of(commit_2d<T>, commit_3d<T>); }
    i64 solve() { return step_of(solve_2d<T>, solve_3d<T>); }
    i64 free()
    {
        if constexpr (axes == 2) free_2d(&handles[0], ipar, &stat);
        else free_3d(&handles[0], &handles[1], ipar, &stat);
        return stat;
    }
    // Everything up to the solution; the first status that is below 0, else that of the solve.
    i64 run()
    {
        if (init() < 0 || commit() < 0) return stat;
        return solve();
    }

private:
    template <class Two, class Three> i64 step_of(Two* two, Three* three)
    {
        const auto at = [this](int side) { return bd[side].data(); };
        if constexpr (axes == 2) two(f.data(), at(0), at(1), at(2), at(3), &handles[0], ipar, dpar.data(), &stat);
        else
            three(f.data(), at(0), at(1), at(2), at(3), at(4), at(5), &handles[0], &handles[1], ipar, dpar.data(),
                  &stat);
        return stat;
    }
};

// The equations of all unknowns of a problem, as they stand in a textbook: a matrix and a right-hand side.
struct Equations {
    std::vector<i64>
        unknown; // of each point of the grid its number, -1 for those on Dirichlet sides and for repetitions
    i64 count = 0;
    std::vector<long double> matrix, right; // by rows
    std::vector<long double> weight;        // of the trapezoidal rule
};

template <class T, int axes> Equations equations_of(const Problem<T, axes>& p)
{
    Equations e;
    const auto each_point = [&](const std::function<void(i64, const i64*)>& visit) {
        i64 at[3] = {0, 0, 0};
        for (i64 point = 0; point < p.points(); ++point) {
            visit(point, at);
            for (int a = 0; a < axes && ++at[a] > p.n[a]; ++a) at[a] = 0;
        }
    };
    e.unknown.assign(static_cast<std::size_t>(p.points()), -1);
    each_point([&](i64 point, const i64* at) {
        bool is_unknown = true;
        for (int a = 0; a < axes; ++a) {
            if (at[a] == 0) is_unknown &= p.sides[2 * a] != 'd';
            if (at[a] == p.n[a]) is_unknown &= p.sides[2 * a + 1] == 'n';
        }
        if (is_unknown) e.unknown[point] = e.count++;
    });
    e.matrix.assign(static_cast<std::size_t>(e.count * e.count), 0), e.right.assign(e.count, 0),
        e.weight.assign(e.count, 1);
    each_point([&](i64 point, const i64* at) {
        const i64 row = e.unknown[point];
        if (row < 0) return;
        e.right[row] = static_cast<long double>(p.f[point]);
        e.matrix[row * e.count + row] += static_cast<long double>(p.q);
        i64 stride = 1;
        for (int a = 0; a < axes; ++a, stride *= p.n[a - 1] + 1) {
            const long double h = p.step(a);
            e.matrix[row * e.count + row] += 2 / (h * h);
            for (const int way : {-1, 1}) {
                const int side = 2 * a + (way > 0);
                i64 place = at[a] + way;
                const bool outside = place < 0 || place > p.n[a];
                i64 of_side = 0, scale = 1; // this point's place in the arrays of the sides
                for (int b = 0; b < axes; ++b)
                    if (b != a) of_side += at[b] * scale, scale *= p.n[b] + 1;
                const auto value = [&](int of) { return static_cast<long double>(p.bd[of][of_side]); };
                if (outside && p.sides[side] == 'n')
                    e.right[row] += 2 * value(side) / h, place = at[a] - way, e.weight[row] /= 2;
                if (p.sides[side] == 'p') place = (place + p.n[a]) % p.n[a];
                const i64 neighbour = e.unknown[point + (place - at[a]) * stride];
                if (neighbour >= 0) e.matrix[row * e.count + neighbour] -= 1 / (h * h);
                else e.right[row] += value(2 * a + (place > at[a])) / (h * h);
            }
        }
    });
    return e;
}

// Gauss-Jordan with pivots: the matrix becomes its inverse. False if it has none.
inline bool invert(std::vector<long double>& a, i64 n)
{
    std::vector<i64> from(n);
    for (i64 k = 0; k < n; ++k) {
        i64 best = k;
        for (i64 i = k; i < n; ++i)
            if (std::fabs(a[i * n + k]) > std::fabs(a[best * n + k])) best = i;
        if (std::fabs(a[best * n + k]) < 1e-12L) return false;
        from[k] = best;
        if (best != k)
            for (i64 j = 0; j < n; ++j) std::swap(a[k * n + j], a[best * n + j]);
        const long double pivot = 1 / a[k * n + k];
        a[k * n + k] = 1;
        for (i64 j = 0; j < n; ++j) a[k * n + j] *= pivot;
        for (i64 i = 0; i < n; ++i) {
            const long double by = a[i * n + k];
            if (i == k || by == 0) continue;
            a[i * n + k] = 0;
            for (i64 j = 0; j < n; ++j) a[i * n + j] -= by * a[k * n + j];
        }
    }
    for (i64 k = n - 1; k >= 0; --k)
        if (from[k] != k)
            for (i64 i = 0; i < n; ++i) std::swap(a[i * n + k], a[i * n + from[k]]);
    return true;
}

inline long double largest(const std::vector<long double>& x)
{
    long double most = 0;
    for (const long double value : x) most = std::fmax(most, std::fabs(value));
    return most;
}
inline long double row_sum_norm(const std::vector<long double>& a, i64 n)
{
    long double most = 0;
    for (i64 i = 0; i < n; ++i) {
        long double sum = 0;
        for (i64 j = 0; j < n; ++j) sum += std::fabs(a[i * n + j]);
        most = std::fmax(most, sum);
    }
    return most;
}
inline std::vector<long double> product(const std::vector<long double>& a, const std::vector<long double>& x)
{
    const std::size_t n = x.size();
    std::vector<long double> y(n, 0);
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j < n; ++j) y[i] += a[i * n + j] * x[j];
    return y;
}

} // namespace orv::test
