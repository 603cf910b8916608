// Vectors with a stride, in guarded storage, whose gaps are watched.
#pragma once

#include "tests/support/guarded.h"
#include "tests/support/line.h"
#include "tests/support/random.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace orv::test {

// Where a vector lies: the edge it touches, and how many bytes away from it (to try every alignment).
struct Place {
    Edge edge = Edge::end;
    std::size_t shift = 0;
};

// n logical elements with stride inc. data() is what a kernel is given; v(i) is logical element i, wherever the stride
// puts it. All else in the storage is NaN and must stay what it is.
template <class T> class Strided {
public:
    Strided(i64 n, i64 inc, Place place = {})
        : n_(n), inc_(inc), length_(n <= 0 ? 0 : 1 + (n - 1) * std::abs(inc)),
          bytes_(length_ * sizeof(T) + place.shift),
          data_(reinterpret_cast<T*>(place.edge == Edge::end ? bytes_.at_end() : bytes_.at_start() + place.shift))
    {
    }

    T* data() const { return data_; }
    i64 inc() const { return inc_; }
    T& operator()(i64 i) const { return data_[inc_ < 0 ? (i - (n_ - 1)) * inc_ : i * inc_]; }

    void fill(Random& random)
    {
        for (i64 i = 0; i < n_; ++i) (*this)(i) = random.value<T>();
    }

    // All storage between first and last element, gaps included.
    std::vector<std::byte> bits() const
    {
        const auto* p = reinterpret_cast<const std::byte*>(data_);
        return {p, p + length_ * sizeof(T)};
    }

    Strided(const Strided& other, Place place) : Strided(other.n_, other.inc_, place) { copy(other); }
    void copy(const Strided& other)
    {
        if (length_ > 0) std::memcpy(data_, other.data_, length_ * sizeof(T));
    }

private:
    i64 n_, inc_, length_;
    GuardedBytes bytes_;
    T* data_;
};

inline std::string told(const char* name, Place p)
{
    return name + std::string(p.edge == Edge::end ? " end-" : " start+") + std::to_string(p.shift);
}
inline std::string problem(const std::string& routine, char type, i64 n, i64 incx, Place x)
{
    return Line(routine, {type}).with("n", n).with("incx", incx).text(told("x", x));
}
inline std::string problem(const std::string& routine, char type, i64 n, i64 incx, i64 incy, Place x, Place y)
{
    return Line(routine, {type})
        .with("n", n)
        .with("incx", incx)
        .with("incy", incy)
        .text(told("x", x) + ' ' + told("y", y));
}

// Lengths on both sides of every block that a vector kernel may have, in elements.
inline std::vector<i64> vector_lengths()
{
    std::vector<i64> lengths;
    for (i64 n = -1; n <= 72; ++n) lengths.push_back(n);
    for (i64 n : {95, 96, 97, 127, 128, 129, 130, 131, 160, 191, 193, 255, 256, 257, 259, 300}) lengths.push_back(n);
    return lengths;
}

// Lengths on both sides of the sizes in bytes from which kernels treat a vector of T as long, and some way beyond.
template <class T> std::vector<i64> long_lengths()
{
    std::vector<i64> lengths;
    for (const i64 bytes : {2048, 16384, 40960, 1 << 20})
        for (const i64 off : {-1, 0, 1, 2, 67}) lengths.push_back(bytes / i64(sizeof(T)) + off);
    return lengths;
}

// Every alignment that an element of T can have by the edge of a page, and off by half an element.
template <class T> std::vector<Place> places()
{
    constexpr std::size_t step = sizeof(real_t<T>) / 2;
    std::vector<Place> all;
    for (std::size_t shift = 0; shift < 16 + sizeof(T); shift += step)
        for (const Edge edge : {Edge::end, Edge::start})
            if (shift % sizeof(real_t<T>) == 0 || shift < sizeof(T)) all.push_back({edge, shift});
    return all;
}

} // namespace orv::test
