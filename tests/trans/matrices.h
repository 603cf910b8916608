// Matrices for tests of copies and transpositions: the whole storage, padding included, is compared with what a plain
// loop makes of a copy.
#pragma once

#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/line.h"
#include "tests/support/random.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace orv::test {

using Types = ::testing::Types<float, double, cpx<float>, cpx<double>>;

template <class T> constexpr T scalar(double re, double im)
{
    if constexpr (is_complex<T>) return {static_cast<real_t<T>>(re), static_cast<real_t<T>>(im)};
    else return static_cast<T>(re);
}

// Elements from the first to the last of a matrix of m rows, ld apart, of n elements, inc apart.
constexpr u64 extent(u64 m, u64 n, u64 ld, u64 inc = 1)
{
    return m == 0 || n == 0 ? 0 : (m - 1) * ld + (n - 1) * inc + 1;
}

// Storage of so many elements against an unreadable page, all of them numbers in [-1, 1).
template <class T> class Storage {
public:
    explicit Storage(u64 length, Edge edge = Edge::end, std::size_t shift = 0) : data_(length, edge, shift)
    {
        auto* reals = reinterpret_cast<real_t<T>*>(data_.data());
        for (u64 i = 0; i < length * (sizeof(T) / sizeof(real_t<T>)); ++i) {
            state_ = state_ * 6364136223846793005u + 1442695040888963407u;
            const double value = std::ldexp(static_cast<double>(static_cast<std::int64_t>(state_)), -63);
            reals[i] = static_cast<real_t<T>>(value);
        }
    }
    T* data() const { return data_.data(); }
    T& operator[](u64 i) const { return data_[i]; }
    std::vector<T> copy() const { return {data_.begin(), data_.end()}; }

private:
    Guarded<T> data_;
    static inline u64 state_ = seed();
};

// The same value; NaN is NaN, whatever its bits.
inline bool same(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0 || (a != a && b != b); }
inline bool same(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0 || (a != a && b != b); }
template <class R> bool same(cpx<R> a, cpx<R> b) { return same(a.re, b.re) && same(a.im, b.im); }

// The first element of the storage that differs; the number of all if none does.
template <class T> u64 first_difference(const Storage<T>& storage, const std::vector<T>& expected)
{
    if (expected.empty() || std::memcmp(storage.data(), expected.data(), expected.size() * sizeof(T)) == 0)
        return expected.size();
    u64 i = 0;
    while (i < expected.size() && same(storage[i], expected[i])) ++i;
    return i;
}
#define ASSERT_HOLDS(storage, expected) ASSERT_EQ(first_difference(storage, expected), (expected).size())

constexpr bool turns(char op) { return op == 'T' || op == 'C'; }
template <class T> constexpr T conjugated_by(char op, T x) { return op == 'R' || op == 'C' ? conj(x) : x; }

// What becomes of an element. A transposition out of place moves by an alpha of 1; all else multiplies.
enum class By { multiplying, moving_by_one };
template <class T> T element(char op, T alpha, T x, By by)
{
    x = conjugated_by(op, x);
    return by == By::moving_by_one && alpha == one<T> ? x : alpha * x;
}

template <class T>
std::string problem(const char* routine, char ordering, char op, u64 rows, u64 cols, u64 lda, u64 ldb, T alpha)
{
    Line text = line<T>(routine, {ordering, op});
    return text.with("rows", rows).with("cols", cols).with("alpha", alpha).with("lda", lda).with("ldb", ldb).text();
}

template <class T> std::string symbol(const std::string& name) { return "orv_" + (letter<T> + name); }

// How often kernels asked the core for a team, and what it answers in place of the core: nothing, or a fixed number.
struct Teams {
    int copies = 0, squares = 0;
    int answer = -1;         // for squares; -1: what the core says
    std::string last_copy{}; // letters and numbers of the latest
};
Teams& teams();

} // namespace orv::test
