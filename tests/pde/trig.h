// Sine and cosine transforms as a caller of their kernels meets them, and what they should compute.
#pragma once

#include "frame/kernels/pdett.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace orv::test {

namespace pdett = kernels::pdett;

template <class T> auto* trig_init = kernel<pdett::Init<T>>("pdett", letter<T>, "_init_trig_transform");
template <class T> auto* trig_commit = kernel<pdett::Commit<T>>("pdett", letter<T>, "_commit_trig_transform");
template <class T> auto* trig_forward = kernel<pdett::Run<T>>("pdett", letter<T>, "_forward_trig_transform");
template <class T> auto* trig_backward = kernel<pdett::Run<T>>("pdett", letter<T>, "_backward_trig_transform");
inline pdett::Free* trig_free = kernel<pdett::free_trig_transform>();

// All that belongs to one transform, silent; dpar is as long as it must be.
template <class T> struct Trig {
    i64 n, kind, ipar[pdett::ipar_size], stat = -1;
    Guarded<T> dpar;
    imports::Handle handle = nullptr;

    Trig(i64 kind_, i64 n_) : n(n_), kind(kind_), dpar(static_cast<std::size_t>(pdett::dpar_size(kind_, n_)))
    {
        trig_init<T>(&n, &kind, ipar, dpar.data(), &stat);
        ipar[pdett::ipar_errors] = ipar[pdett::ipar_warnings] = 0;
    }
    Trig(const Trig&) = delete;
    Trig& operator=(const Trig&) = delete;
    ~Trig()
    {
        if (handle != nullptr) free();
    }

    i64 commit(const T* f) { return trig_commit<T>(f, &handle, ipar, dpar.data(), &stat), stat; }
    i64 forward(T* f) { return trig_forward<T>(f, &handle, ipar, dpar.data(), &stat), stat; }
    i64 backward(T* f) { return trig_backward<T>(f, &handle, ipar, dpar.data(), &stat), stat; }
    i64 free() { return trig_free(&handle, ipar, &stat), stat; }
};

// Elements of an array, and which of them are unknowns: all but the ends that are zero by the kind.
constexpr i64 trig_points(i64 kind, i64 n) { return kind < pdett::staggered2_cosine ? n + 1 : n; }
constexpr i64 first_unknown(i64 kind) { return kind == pdett::sine || kind == pdett::staggered_sine; }
constexpr i64 end_of_unknowns(i64 kind, i64 n)
{
    return kind == pdett::cosine || kind == pdett::staggered_sine ? n + 1 : n;
}

// What the formulas say of all points; those that are no unknowns stay 0. Unscaled: forward and backward times 2n
// and 2.
inline std::vector<long double> trig_sums(i64 kind, bool forward, i64 n, const std::vector<long double>& f)
{
    std::vector<long double> cosines(static_cast<std::size_t>(8 * n)); // of m*pi/4n
    for (i64 m = 0; m < 8 * n; ++m)
        cosines[m] = std::cos(static_cast<long double>(m) * 3.14159265358979323846264338327950288L / (4 * n));
    const auto cosine = [&](i64 m) { return cosines[m % (8 * n)]; };
    const auto sine = [&](i64 m) { return cosines[(m + 6 * n) % (8 * n)]; };
    std::vector<long double> sums(f.size(), 0);
    for (i64 k = first_unknown(kind); k < end_of_unknowns(kind, n); ++k)
        for (i64 j = first_unknown(kind); j < end_of_unknowns(kind, n); ++j) {
            const i64 point = forward ? j : k, frequency = forward ? k : j;
            long double factor = 2;
            switch (kind) {
            case pdett::sine:
                factor *= sine(4 * j * k);
                break;
            case pdett::cosine:
                factor *= cosine(4 * j * k) / (j == 0 || j == n ? 2 : 1);
                break;
            case pdett::staggered_cosine:
                factor *= cosine(2 * (2 * frequency + 1) * point) / (forward && j == 0 ? 2 : 1);
                break;
            case pdett::staggered_sine:
                factor *= sine(2 * (2 * frequency - 1) * point) / (forward && j == n ? 2 : 1);
                break;
            case pdett::staggered2_cosine:
                factor *= cosine((2 * frequency + 1) * (2 * point + 1));
                break;
            case pdett::staggered2_sine:
                factor *= sine((2 * frequency + 1) * (2 * point + 1));
                break;
            }
            sums[k] += factor * f[j];
        }
    return sums;
}

// How far off a sum may be. A Fourier transform of n elements of norm |y| is within 6u*log2(n)*sqrt(n)*|y|
// (Higham, 24.2); the step before it makes y at most 4 times as long as f. Running sums gather half of the n errors,
// and so at most sqrt(n/2) times their norm; the forward transforms of kinds 2 and 3 divide by sines of pi/2n, which
// multiplies by n/2pi; the angles of tables are sums of n steps. 24u*log2(2n)*n*(1 + sqrt(n)/4)*|f| covers each.
template <class T> long double trig_bound(i64 n, const std::vector<long double>& f)
{
    long double squares = 0;
    for (const long double x : f) squares += x * x;
    const long double u = std::numeric_limits<T>::epsilon() / 2, size = static_cast<long double>(n);
    return 24 * u * std::log2(2 * size) * size * (1 + std::sqrt(size) / 4) * std::sqrt(squares);
}

// Numbers between -1 and 1 for the unknowns, 0 elsewhere.
template <class T> std::vector<T> trig_data(i64 kind, i64 n, std::uint64_t stream)
{
    std::vector<T> f(static_cast<std::size_t>(trig_points(kind, n)), T(0));
    Random random(stream);
    for (i64 j = first_unknown(kind); j < end_of_unknowns(kind, n); ++j) f[j] = random.value<T>();
    return f;
}

} // namespace orv::test
