#include "core/pde/systems.h"

#include <cmath>
#include <limits>

namespace orv::core::pde {
namespace {

// Whether the factors of a row are those of the row before.
template <class T> bool stands_still(const T* row, const T* before, i64 width)
{
    bool same = true;
    for (i64 i = 0; i < width; ++i) same &= row[i] == before[i];
    return same;
}

} // namespace

template <class T> void eliminate(const Lines<T>& lines, const T* d, i64 width, T scale, T* factors)
{
    const i64 n = lines.count, step = lines.stride;
    T* const f = lines.at;
    if (n == 1) {
        const T by = scale * lines.first * lines.last;
        for (i64 i = 0; i < width; ++i) f[i] = f[i] * by / (lines.first * lines.last * d[i] + lines.added);
        return;
    }
    T *c = factors, *row = f;
    for (i64 i = 0; i < width; ++i) {
        c[i] = 1 / (lines.first * d[i]);
        row[i] = row[i] * (scale * lines.first) * c[i];
    }
    i64 known = 1; // rows of factors that differ
    bool still = false;
    for (i64 j = 1; j + 1 < n; ++j) {
        const T* const before = row;
        row += step;
        if (!still) {
            T* const next = c + strip<T>;
            for (i64 i = 0; i < width; ++i) next[i] = 1 / (d[i] - c[i]);
            still = stands_still(next, c, width);
            c = next;
            if (!still) ++known;
        }
        for (i64 i = 0; i < width; ++i) row[i] = (row[i] * scale + before[i]) * c[i];
    }
    const T* const before = row;
    row += step;
    const T end = scale * lines.last;
    for (i64 i = 0; i < width; ++i) row[i] = (row[i] * end + before[i]) / (lines.last * d[i] + lines.added - c[i]);
    for (i64 j = n - 2; j >= 0; --j) {
        const T *const behind = row, *const by = factors + min(j, known - 1) * strip<T>;
        row -= step;
        for (i64 i = 0; i < width; ++i) row[i] += by[i] * behind[i];
    }
}

bool solve_symmetric(i64 n, double* a, double* b, double* more, double* lower, double* x, double least)
{
    for (i64 j = 0; j + 1 < n; ++j) lower[j] = b[j], more[j] = 0;
    for (i64 j = 0; j + 1 < n; ++j) {
        if (std::fabs(a[j]) < std::fabs(lower[j])) { // row j + 1 is the better one to eliminate with
            const double right = j + 2 < n ? b[j + 1] : 0, below = a[j + 1];
            const double by = a[j] / lower[j];
            a[j] = lower[j];
            a[j + 1] = b[j] - by * below;
            b[j] = below;
            more[j] = right;
            if (j + 2 < n) b[j + 1] = -by * right;
            const double swapped = x[j];
            x[j] = x[j + 1];
            x[j + 1] = swapped - by * x[j];
        } else if (a[j] != 0) {
            const double by = lower[j] / a[j];
            a[j + 1] -= by * b[j];
            x[j + 1] -= by * x[j];
        }
    }
    for (i64 j = n - 1; j >= 0; --j) {
        if (!(std::fabs(a[j]) > least)) return false;
        double sum = x[j];
        if (j + 1 < n) sum -= b[j] * x[j + 1];
        if (j + 2 < n) sum -= more[j] * x[j + 2];
        x[j] = sum / a[j];
    }
    return true;
}

template <class T> bool solve_with_pivots(const Lines<T>& lines, T d, T scale, bool is_singular, double* work)
{
    const i64 n = lines.count;
    double *const a = work, *const b = a + n, *const more = b + n, *const lower = more + n, *const x = lower + n;
    const auto weight = [&](i64 j) {
        return (j == 0 ? static_cast<double>(lines.first) : 1) * (j == n - 1 ? static_cast<double>(lines.last) : 1);
    };
    double sum = 0, weights = 0;
    for (i64 j = 0; j < n; ++j) {
        x[j] = weight(j) * static_cast<double>(lines.at[j * lines.stride]) * static_cast<double>(scale);
        a[j] = weight(j) * static_cast<double>(d) + (j == n - 1 ? static_cast<double>(lines.added) : 0);
        b[j] = -1;
        sum += x[j], weights += weight(j);
    }
    if (is_singular)
        for (i64 j = 0; j < n; ++j) x[j] -= sum / weights * weight(j);
    const bool solved = solve_symmetric(is_singular ? n - 1 : n, a, b, more, lower, x, least_pivot<T>);
    if (is_singular) x[n - 1] = 0;
    for (i64 j = 0; j < n; ++j) lines.at[j * lines.stride] = static_cast<T>(x[j]);
    return solved;
}

// Whether a row may have to change places: where the diagonal does not dominate, and where it only just does so in a
// system that is singular for d = 2.
template <class T> bool Systems<T>::needs_pivots(T d) const
{
    const T magnitude = std::fabs(d);
    return pair_ == nn || pair_ == pp ? !(magnitude > 2) : !(magnitude >= 2);
}

template <class T> i64 Systems<T>::solve_some(T* f, const T* d, i64 width, bool pivots, bool is_singular, T* work) const
{
    const auto system = [&](const Lines<T>& lines, bool singular_one) {
        if (lines.count < 1) return true;
        if (!pivots) return eliminate(lines, d, width, scale_, work), true;
        return solve_with_pivots(lines, *d, scale_, singular_one, reinterpret_cast<double*>(work));
    };
    const T half = T(0.5);
    if (pair_ != pp) {
        const i64 first = pair_ == dd || pair_ == dn ? 1 : 0, end = pair_ == dn || pair_ == nn ? n_ + 1 : n_;
        const Lines<T> lines{f + first * stride_, stride_, end - first, first == 0 ? half : 1, end > n_ ? half : 1, 0};
        return system(lines, is_singular) ? i64{good} : i64{loop_resonance};
    }

    // Twice the even part, and twice the odd part from the last row back.
    const i64 m = n_ / 2, odd_rows = (n_ - 1) / 2;
    const auto butterfly = [&](T by) {
        for (i64 j = 1; j <= odd_rows; ++j) {
            T *const low = f + j * stride_, *const high = f + (n_ - j) * stride_;
            for (i64 i = 0; i < width; ++i) {
                const T a = low[i], b = high[i];
                low[i] = (a + b) * by, high[i] = (a - b) * by;
            }
        }
    };
    butterfly(half);
    const bool is_even = n_ % 2 == 0;
    const Lines<T> even{f, stride_, m + 1, half, is_even ? half : 1, is_even ? T(0) : T(-1)};
    const Lines<T> odd{f + (n_ - 1) * stride_, -stride_, odd_rows, 1, 1, is_even ? T(0) : T(1)};
    const bool solved = system(even, is_singular) & system(odd, false);
    butterfly(1);
    T* const closing = f + n_ * stride_;
    for (i64 i = 0; i < width; ++i) closing[i] = f[i];
    return solved ? i64{good} : i64{loop_resonance};
}

template <class T> i64 Systems<T>::solve(T* f, const T* d, i64 width, bool first_is_singular, T* work) const
{
    i64 status = good;
    for (i64 i = 0; i < width;) {
        const bool is_singular = first_is_singular && i == 0, pivots = is_singular || needs_pivots(d[i]);
        i64 same = 1;
        while (!pivots && i + same < width && same < strip<T> && !needs_pivots(d[i + same])) ++same;
        const i64 failed = solve_some(f + i, d + i, same, pivots, is_singular, work);
        if (failed != good) status = failed;
        i += same;
    }
    return status;
}

template class Systems<float>;
template class Systems<double>;

} // namespace orv::core::pde
