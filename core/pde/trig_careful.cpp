// Sine and cosine transforms whose rounding errors are those of a Fourier transform, however long the row: no sums of
// neighbours, no division by small sines.
//
//   staggered       the points in even places, then those in odd places backwards, are n reals whose Fourier transform,
//                   turned by k*pi/2n, has two results in each number (J. Makhoul, 1980)
//   whole points    of an even number of cells: even results are such a transform of half the cells, odd results a
//                   staggered one; of an odd number, a Fourier transform of the row and its mirror image
//
// A sine is a cosine of the row with every other sign turned, from the last result to the first.
#include "core/pde/trig.h"
#include "frame/kernels/dft_node.h"
#include "frame/roots.h"
#include "frame/serv.h"

#include <algorithm>
#include <type_traits>

namespace orv::core::pde {
namespace {

using namespace kernels::pdett;

template <class T> i64 to_spectrum(imports::Handle handle, T* v)
{
    if constexpr (std::is_same_v<T, double>) return orv_dft_dfti_compute_forward_d(handle, v);
    else return orv_dft_dfti_compute_forward_s(handle, v);
}
template <class T> i64 from_spectrum(imports::Handle handle, T* v)
{
    if constexpr (std::is_same_v<T, double>) return orv_dft_dfti_compute_backward_d(handle, v);
    else return orv_dft_dfti_compute_backward_s(handle, v);
}

bool is_even(i64 n) { return n % 2 == 0; }
i64 pairs(i64 n) { return (n - 1) / 2; }
i64 place_of_pair(i64 k, i64 n) { return 2 * k - !is_even(n); }

// So few cells are mirrored also where they could be halved: one transform of twice the size is faster than four calls.
constexpr i64 longest_mirrored = 32;

// exp(i*k*pi/2n) for k = 1 to n/2.
template <class T> void fill_turns(T* turns, i64 n)
{
    RootWalk roots(4 * n);
    for (i64 k = 1; k <= n / 2; ++k) {
        const cpx<T> root = rounded<T>(roots.at(k));
        turns[2 * k - 2] = root.re, turns[2 * k - 1] = root.im;
    }
}

// A row of n reals as cosines see it: of sines, frequencies stand backwards and every other point is negative.
template <class T> class Staggered {
public:
    Staggered(const orv_trig& trig, T* row, T* v)
        : handle_(trig.handle), n_(trig.n), is_sine_(trig.kind == staggered_sine), turns_(static_cast<T*>(trig.turns)),
          row_(row), v_(v)
    {
    }

    bool to_points() // backward
    {
        const T odd = is_sine_ ? -1 : 1;
        for (i64 j = 0; j < n_ / 2; ++j) v_[j] = row_[2 * j], v_[n_ - 1 - j] = odd * row_[2 * j + 1];
        if (!is_even(n_)) v_[n_ / 2] = row_[n_ - 1];
        if (to_spectrum(handle_, v_) != 0) return false;
        result(0) = 2 * v_[0];
        for (i64 k = 1; k <= pairs(n_); ++k) {
            const T c = turns_[2 * k - 2], s = turns_[2 * k - 1];
            const T re = v_[place_of_pair(k, n_)], im = v_[place_of_pair(k, n_) + 1];
            result(k) = 2 * (c * re + s * im);
            result(n_ - k) = 2 * (s * re - c * im);
        }
        if (is_even(n_)) result(n_ / 2) = 2 * turns_[n_ - 2] * v_[1];
        return true;
    }

    bool to_frequencies() // forward
    {
        v_[0] = result(0);
        for (i64 k = 1; k <= pairs(n_); ++k) {
            const T c = turns_[2 * k - 2], s = turns_[2 * k - 1], a = result(k), b = result(n_ - k);
            v_[place_of_pair(k, n_)] = c * a + s * b;
            v_[place_of_pair(k, n_) + 1] = s * a - c * b;
        }
        if (is_even(n_)) v_[1] = 2 * turns_[n_ - 2] * result(n_ / 2);
        if (from_spectrum(handle_, v_) != 0) return false;
        const T odd = is_sine_ ? -1 : 1;
        for (i64 j = 0; j < n_ / 2; ++j) row_[2 * j] = v_[j], row_[2 * j + 1] = odd * v_[n_ - 1 - j];
        if (!is_even(n_)) row_[n_ - 1] = v_[n_ / 2];
        return true;
    }

private:
    T& result(i64 k) { return row_[is_sine_ ? n_ - 1 - k : k]; }

    imports::Handle handle_;
    i64 n_;
    bool is_sine_;
    const T* turns_;
    T *row_, *v_;
};

// Point j of a sine stands in place j-1: its ends are no points.
template <class T> bool run_halves(const orv_trig& trig, T* row, T* work)
{
    const i64 n = trig.n, half = n / 2;
    const bool is_sine = trig.kind == sine;
    const T sign = is_sine ? -1 : 1;
    T *const x = row - is_sine, *const evens = work, *const odds = work + half + 1, *const rest = odds + half + 1;
    for (i64 j = is_sine; j < half + !is_sine; ++j) evens[j] = x[j] + sign * x[n - j];
    for (i64 j = is_sine; j < half + is_sine; ++j) odds[j] = x[j] - sign * x[n - j];
    if (trig.evens != nullptr) {
        if (!run_careful(*trig.evens, true, evens + is_sine, rest)) return false;
    } else if (!is_sine) { // a single cell
        const T first = evens[0], last = evens[1];
        evens[0] = first + last, evens[1] = first - last;
    }
    if (trig.odds != nullptr && !run_careful(*trig.odds, true, odds + is_sine, rest)) return false;
    for (i64 k = is_sine; k < half + !is_sine; ++k) x[2 * k] = evens[k];
    for (i64 k = 0; k < half; ++k) x[2 * k + 1] = odds[k + is_sine];
    return true;
}

template <class T> bool run_mirrored(const orv_trig& trig, T* row, T* z)
{
    const i64 n = trig.n;
    const bool is_sine = trig.kind == sine;
    T* const x = row - is_sine;
    z[0] = is_sine ? 0 : x[0];
    z[n] = is_sine ? 0 : x[n];
    for (i64 j = 1; j < n; ++j) z[j] = x[j], z[2 * n - j] = is_sine ? -x[j] : x[j];
    if (to_spectrum(trig.handle, z) != 0) return false;
    for (i64 k = 1; k < n; ++k) x[k] = is_sine ? -z[2 * k + 1] : z[2 * k];
    if (!is_sine) x[0] = z[0], x[n] = z[1];
    return true;
}

template <class T> bool run(const orv_trig& trig, bool is_forward, T* row, T* work)
{
    if (trig.kind == sine || trig.kind == cosine)
        return trig.handle != nullptr ? run_mirrored(trig, row, work) : run_halves(trig, row, work);
    Staggered<T> staggered(trig, row, work);
    return is_forward ? staggered.to_frequencies() : staggered.to_points();
}

template <class T> orv_status prepare_staggered(orv_trig& trig)
{
    trig.work = trig.n;
    if (const i64 status = make_handle(trig.handle, trig.precision, trig.n)) return explain(status, trig.points);
    auto* const turns = static_cast<T*>(orv_serv_malloc(static_cast<i64>(sizeof(T)) * (trig.n + 1), 64));
    trig.turns = turns;
    if (turns == nullptr) return explain(kernels::dft::node_no_memory, trig.points);
    fill_turns(turns, trig.n);
    return ORV_OK;
}

// Transforms of a single cell are left out.
orv_status prepare_halves(orv_trig& trig)
{
    const i64 half = trig.n / 2;
    trig.work = 2 * (half + 1);
    if (half == 1) return ORV_OK;
    const bool is_sine = trig.kind == sine;
    orv_status status = orv_trig_create_careful(&trig.evens, trig.precision, trig.kind, is_sine ? half - 1 : half + 1);
    if (status == ORV_OK)
        status = orv_trig_create_careful(&trig.odds, trig.precision,
                                         is_sine ? ORV_TRIG_STAGGERED_SINE : ORV_TRIG_STAGGERED_COSINE, half);
    if (status == ORV_OK) trig.work += std::max(trig.evens->work, trig.odds->work);
    return status;
}

} // namespace

bool is_careful(const orv_trig& trig) { return trig.careful && trig.n > 1 && trig.kind < staggered2_cosine; }

orv_status prepare_careful(orv_trig& trig)
{
    if (trig.kind == staggered_cosine || trig.kind == staggered_sine)
        return trig.precision == ORV_DFT_DOUBLE ? prepare_staggered<double>(trig) : prepare_staggered<float>(trig);
    if (is_even(trig.n) && trig.n > longest_mirrored) return prepare_halves(trig);
    trig.work = 2 * trig.n;
    const i64 status = make_handle(trig.handle, trig.precision, 2 * trig.n);
    return status ? explain(status, trig.points) : ORV_OK;
}

bool run_careful(const orv_trig& trig, bool is_forward, float* row, float* work)
{
    return run(trig, is_forward, row, work);
}
bool run_careful(const orv_trig& trig, bool is_forward, double* row, double* work)
{
    return run(trig, is_forward, row, work);
}

} // namespace orv::core::pde
