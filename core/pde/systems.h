// Tridiagonal systems, one for each wave, of many neighbouring waves at once:
//
//     -u[j-1] + d*u[j] - u[j+1] = f[j],     d of the wave, the same in all rows,
//
// with what the ends make of the first and the last row. An equation of a Neumann end is taken by half, which makes all
// systems symmetric. Periodic ends make two systems of half the rows: u[j] + u[n-j] and u[j] - u[n-j].
#pragma once

#include "core/pde/grid.h"

#include <limits>

namespace orv::core::pde {

// The rows of one system: `count` of them, `stride` elements apart. The diagonal of the first one is first*d, of the
// last one last*d + added; of a single one first*last*d + added. Halved rows have right-hand sides halved, too.
template <class T> struct Lines {
    T* at;
    i64 stride, count;
    T first, last, added;
};

// Work of waves that stand side by side, so many at once.
template <class T> inline constexpr i64 strip = 256 / sizeof(T);

// d at least 2 in magnitude: no row has to change places. f is multiplied by scale as it is read. The factors c of the
// elimination, c[j] = 1/(d - c[j-1]), come to stand still after some rows, and then one row of them serves all others.
// factors: count*strip numbers.
template <class T> void eliminate(const Lines<T>& lines, const T* d, i64 width, T scale, T* factors);

// Any d: with pivots, in double precision, one wave. In a singular system f is made fit for a solution by taking off
// its mean, and the last unknown is 0. work: 5*count numbers. False if the system has no unique solution.
template <class T> bool solve_with_pivots(const Lines<T>& lines, T d, T scale, bool is_singular, double* work);

// The same of a symmetric tridiagonal system of any elements, diagonal a[0] to a[n-1], beside it b[0] to b[n-2]; x is
// the right-hand side and then the solution. a and b are overwritten, more and lower have n numbers. False if a pivot
// is no larger than least.
bool solve_symmetric(i64 n, double* a, double* b, double* more, double* lower, double* x, double least);

// What is left of a pivot by rounding where it should be 0: equations are written so that what they are made of is
// about 1 to 4, in the precision of the grid.
template <class T> inline constexpr double least_pivot = 8. * std::numeric_limits<T>::epsilon();

// All systems of a layer of waves: `rows` rows, `stride` elements apart, of `width` waves with these diagonals.
// Singular: wave 0 of those is one of a problem that leaves a constant open.
template <class T> class Systems {
public:
    Systems(i64 pair, i64 n, i64 stride, T scale) : pair_(pair), n_(n), stride_(stride), scale_(scale) {}

    // Numbers of T that one call of solve needs.
    static constexpr i64 work(i64 n)
    {
        return max(strip<T>, 6 * static_cast<i64>(sizeof(double) / sizeof(T))) * (n + 1);
    }

    i64 solve(T* f, const T* d, i64 width, bool first_is_singular, T* work) const;

private:
    i64 solve_some(T* f, const T* d, i64 width, bool pivots, bool is_singular, T* work) const;
    bool needs_pivots(T d) const;

    i64 pair_, n_, stride_;
    T scale_;
};

} // namespace orv::core::pde
