// A Fourier transform as a test describes it, memory with just its elements, and what should come out.
#pragma once

#include "orv/dft.h"
#include "tests/support/guarded.h"
#include "tests/support/random.h"

#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

namespace orv::test {

// An orv_dft that ends with its scope.
class Transform {
public:
    Transform(int precision, int domain, std::vector<i64> lengths) : lengths_(std::move(lengths))
    {
        EXPECT_EQ(orv_dft_create(&dft_, precision, domain, static_cast<int>(lengths_.size()), lengths_.data()), ORV_OK)
            << orv_last_error();
    }
    Transform(const Transform&) = delete;
    Transform& operator=(const Transform&) = delete;
    ~Transform() { orv_dft_free(dft_); }

    operator orv_dft*() const { return dft_; }
    Transform& set(int setting, i64 value)
    {
        EXPECT_EQ(orv_dft_set(dft_, setting, value), ORV_OK) << orv_last_error();
        return *this;
    }
    i64 get(int setting) const
    {
        i64 value = -1;
        EXPECT_EQ(orv_dft_get(dft_, setting, &value), ORV_OK);
        return value;
    }
    std::vector<i64> strides(bool of_spectrum) const
    {
        std::vector<i64> s(lengths_.size());
        EXPECT_EQ(orv_dft_get_strides(dft_, of_spectrum ? nullptr : s.data(), of_spectrum ? s.data() : nullptr),
                  ORV_OK);
        return s;
    }
    const std::vector<i64>& lengths() const { return lengths_; }

private:
    orv_dft* dft_ = nullptr;
    std::vector<i64> lengths_;
};

using exact = std::complex<long double>;

inline i64 product(const std::vector<i64>& numbers)
{
    i64 all = 1;
    for (const i64 n : numbers) all *= n;
    return all;
}

// The definition, dimension by dimension; lengths[0] is the innermost.
inline std::vector<exact> transformed(std::vector<exact> x, const std::vector<i64>& lengths, int sign)
{
    i64 below = 1;
    for (const i64 n : lengths) {
        std::vector<exact> root(n), line(n);
        for (i64 k = 0; k < n; ++k)
            root[k] = std::polar(1.0L, sign * 2 * std::numbers::pi_v<long double> * static_cast<long double>(k) / n);
        for (i64 first = 0; first < static_cast<i64>(x.size()); ++first) {
            if (first / below % n != 0) continue;
            for (i64 k = 0; k < n; ++k) {
                line[k] = 0;
                for (i64 j = 0; j < n; ++j) line[k] += x[first + j * below] * root[j * k % n];
            }
            for (i64 k = 0; k < n; ++k) x[first + k * below] = line[k];
        }
        below *= n;
    }
    return x;
}

// Where the elements of one side stand.
struct Places {
    std::vector<i64> extents, strides;
    i64 transforms, distance, offset;
    i64 reals; // a position: 2 for interleaved complex numbers

    // f(position, element) for each element of a transform, dimension 0 first.
    template <class F> void each(i64 transform, F&& f) const
    {
        const i64 count = product(extents);
        for (i64 i = 0; i < count; ++i) {
            i64 place = offset + transform * distance, rest = i;
            for (std::size_t k = 0; k < extents.size(); ++k)
                place += rest % extents[k] * strides[k], rest /= extents[k];
            f(place, i);
        }
    }
    template <class F> void each(F&& f) const
    {
        for (i64 b = 0; b < transforms; ++b) each(b, f);
    }
};

inline Places places(const Transform& t, bool of_spectrum)
{
    const bool is_real = t.get(ORV_DFT_DOMAIN) == ORV_DFT_REAL, is_split = t.get(ORV_DFT_STORAGE) == ORV_DFT_SPLIT;
    const i64 format = t.get(ORV_DFT_FORMAT);
    Places p{t.lengths(),
             t.strides(of_spectrum),
             t.get(ORV_DFT_TRANSFORMS),
             t.get(of_spectrum ? ORV_DFT_SPECTRUM_DISTANCE : ORV_DFT_SIGNAL_DISTANCE),
             t.get(of_spectrum ? ORV_DFT_SPECTRUM_OFFSET : ORV_DFT_SIGNAL_OFFSET),
             1};
    const bool is_half = is_real && of_spectrum && format == ORV_DFT_HALF;
    if (is_half) p.extents[0] = p.extents[0] / 2 + 1;
    if (is_real && of_spectrum && format == ORV_DFT_CCS)
        for (i64& n : p.extents) n = 2 * (n / 2 + 1);
    if (!is_split && (!is_real || is_half)) p.reals = 2;
    return p;
}

// Memory from the first to the last element of one or of two sides, unreadable outside, NaN between the elements.
template <class R> class Array {
public:
    Array(const std::vector<Places>& sides, Edge edge) : first_(INT64_MAX)
    {
        i64 last = INT64_MIN;
        for (const Places& p : sides)
            p.each([&](i64 place, i64) {
                first_ = std::min(first_, place * p.reals), last = std::max(last, place * p.reals + p.reals - 1);
            });
        reals_ = std::make_unique<Guarded<R>>(last - first_ + 1, edge);
        used_.resize(reals_->size());
        for (const Places& p : sides)
            p.each([&](i64 place, i64) {
                for (i64 i = 0; i < p.reals; ++i) used_[place * p.reals + i - first_] = true;
            });
    }
    R* data() const { return reals_->data() - first_; } // element 0 of the transform's own count, which may be outside
    std::vector<R> copy() const { return {reals_->begin(), reals_->end()}; }
    bool gaps_are_as_in(const std::vector<R>& before) const
    {
        for (std::size_t i = 0; i < used_.size(); ++i)
            if (!used_[i] && std::memcmp(&before[i], &(*reals_)[i], sizeof(R)) != 0) return false;
        return true;
    }
    bool is_as(const std::vector<R>& before) const
    {
        return std::memcmp(before.data(), reals_->data(), before.size() * sizeof(R)) == 0;
    }

private:
    i64 first_;
    std::unique_ptr<Guarded<R>> reals_;
    std::vector<bool> used_;
};

// How far two vectors are apart, in units of rounding and of the length of the second.
template <class R> long double distance_in_units(const std::vector<exact>& computed, const std::vector<exact>& wanted)
{
    long double error = 0, norm = 0;
    for (std::size_t i = 0; i < wanted.size(); ++i)
        error += std::norm(computed[i] - wanted[i]), norm += std::norm(wanted[i]);
    return std::sqrt(error / norm) / std::numeric_limits<R>::epsilon(); // NaN stays NaN
}

// What a transform of so many points may be away from the exact one, in the same units: the textbook's growth with the
// logarithm of the length (Higham, chapter 24), and room for lengths that are done as convolutions or as direct sums.
inline long double units_allowed(const std::vector<i64>& lengths)
{
    return 6 + 3 * std::log2(static_cast<long double>(product(lengths)));
}

} // namespace orv::test
