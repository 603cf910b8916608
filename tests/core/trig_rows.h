// Sine and cosine transforms as a program makes them, and what they should compute of a row.
#pragma once

#include "tests/pde/trig.h"

#include <gtest/gtest.h>
#include <memory>
#include <orv/orv.h>

namespace orv::test {

template <class T> constexpr int precision = sizeof(T) == 8 ? ORV_DFT_DOUBLE : ORV_DFT_SINGLE;

struct Freed {
    void operator()(orv_trig* trig) const { orv_trig_free(trig); }
};
using Made = std::unique_ptr<orv_trig, Freed>;
enum class Way { kernel, careful };
constexpr Way ways[] = {Way::kernel, Way::careful};
template <class T> Made made(i64 kind, i64 points, Way way = Way::kernel)
{
    orv_trig* trig = nullptr;
    const auto create = way == Way::kernel ? orv_trig_create : orv_trig_create_careful;
    EXPECT_EQ(create(&trig, precision<T>, static_cast<int>(kind), points), ORV_OK) << orv_last_error();
    return Made(trig);
}

inline i64 cells(i64 kind, i64 points) { return points + (kind == ORV_TRIG_SINE) - (kind == ORV_TRIG_COSINE); }
inline i64 least_points(i64 kind) { return kind == ORV_TRIG_COSINE ? 2 : 1; }

template <class T> std::vector<T> random_row(i64 points, std::uint64_t stream)
{
    std::vector<T> row(static_cast<std::size_t>(points));
    Random(stream).fill(row);
    return row;
}

// Unscaled sums of the points, which are all unknowns.
template <class T> std::vector<long double> sums(i64 kind, bool forward, const std::vector<T>& x)
{
    const i64 points = static_cast<i64>(x.size()), n = cells(kind, points), first = first_unknown(kind);
    std::vector<long double> padded(static_cast<std::size_t>(n + 1), 0);
    std::copy(x.begin(), x.end(), padded.begin() + first);
    const std::vector<long double> all = trig_sums(kind, forward, n, padded);
    return {all.begin() + first, all.begin() + first + points};
}
// The careful way is within what Fourier transforms of 2n reals are, and a turn before or behind.
template <class T> long double bound_of(i64 kind, Way way, const std::vector<T>& x)
{
    const i64 n = cells(kind, static_cast<i64>(x.size()));
    if (way == Way::kernel) return trig_bound<T>(n, {x.begin(), x.end()});
    long double squares = 0;
    for (const T element : x) squares += static_cast<long double>(element) * element;
    const long double size = 2 * static_cast<long double>(n), u = std::numeric_limits<T>::epsilon() / 2;
    return 6 * u * (std::log2(size) + 2) * std::sqrt(size * squares);
}

} // namespace orv::test
