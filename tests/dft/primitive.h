// The signal primitives as the tests call them: by name, with the operation's shape and the types of its name.
#pragma once

#include "frame/kernels/dft_primitives.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace orv::test {

using namespace orv::dft;

template <class F> F* primitive(const std::string& name) { return kernel<F>("dft", name); }

// The token of a type in a name: width in bits, then the kind.
template <class T> std::string token()
{
    if constexpr (is_complex<T>) return token<real_t<T>>() + 'c';
    else if constexpr (std::is_floating_point_v<T>) return std::to_string(8 * sizeof(T)) + 'f';
    else return std::to_string(8 * sizeof(T)) + (std::is_signed_v<T> ? 's' : 'u');
}

template <class T> constant<T> as_constant(const T& c)
{
    if constexpr (is_complex<T>) return &c;
    else return c;
}

template <class T> bool same_bits(const T* a, const T* b, i64 n)
{
    return std::memcmp(a, b, static_cast<std::size_t>(n) * sizeof(T)) == 0;
}

// Random elements of any type: integers over their whole range, reals in [-1, 1).
template <class T> T random_element(Random& random)
{
    if constexpr (is_complex<T>) {
        const auto re = random_element<real_t<T>>(random), im = random_element<real_t<T>>(random);
        return {re, im};
    } else if constexpr (std::is_floating_point_v<T>) return random.value<T>();
    else return static_cast<T>(random.integer(INT64_MIN, INT64_MAX));
}
template <class T> std::vector<T> random_array(i64 n, std::uint64_t stream)
{
    Random random(stream);
    std::vector<T> elements(static_cast<std::size_t>(n));
    for (T& e : elements) e = random_element<T>(random);
    return elements;
}

// Room for short arrays whose end lies so many bytes before an unreadable page. Everything else keeps its bytes.
class Room {
public:
    template <class T> T* place(i64 n, i64 bytes_before_page)
    {
        std::memset(bytes_.data(), 0x5a, size);
        begin_ = size - bytes_before_page - n * static_cast<i64>(sizeof(T));
        end_ = size - bytes_before_page;
        return reinterpret_cast<T*>(bytes_.data() + begin_);
    }
    bool untouched_around() const
    {
        static const std::vector<unsigned char> fresh(size, 0x5a);
        return same_bits(bytes_.data(), fresh.data(), begin_) &&
               same_bits(bytes_.data() + end_, fresh.data(), size - end_);
    }

private:
    static constexpr i64 size = 1280;
    Guarded<unsigned char> bytes_{size};
    i64 begin_ = 0, end_ = 0;
};

// Distances of an array's end from the page that put its begin on every boundary that its elements can have, and one
// that puts all its elements across them.
template <class T> std::vector<i64> distances()
{
    std::vector<i64> all{1};
    for (i64 d = 0; d < 16; d += static_cast<i64>(sizeof(real_t<T>))) all.push_back(d);
    return all;
}

// Lengths that no checked primitive takes, and a place in which nothing may change.
inline constexpr i32 bad_lengths[] = {0, -1, INT32_MIN};

} // namespace orv::test
