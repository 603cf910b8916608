#include "tests/dft/primitive.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

namespace orv::test {
namespace {

#define VISIT(t) visit(t_##t{});
template <class Visit> void each_sorted(Visit visit) { ORV_DFT_SORTED(VISIT) }
template <class Visit> void each_sorted_by_index(Visit visit) { ORV_DFT_SORTED_BY_INDEX(VISIT) }

// The order of bits, without the tricks that make keys of them: magnitudes below zero run backward.
template <class T> bool before(T a, T b)
{
    if constexpr (std::is_floating_point_v<T>) {
        using Bits = std::conditional_t<sizeof(T) == 4, std::int32_t, std::int64_t>;
        const bool a_below = std::signbit(a), b_below = std::signbit(b);
        if (a_below != b_below) return a_below;
        const auto x = std::bit_cast<Bits>(a), y = std::bit_cast<Bits>(b);
        return a_below ? x > y : x < y;
    } else return a < b;
}

// Few different values, so that many are equal; all values; all equal; sorted already; of floats what is special.
template <class T> std::vector<std::vector<T>> arrays(i64 n)
{
    std::vector<std::vector<T>> all{random_array<T>(n, 1)};
    Random random(2);
    std::vector<T> few(static_cast<std::size_t>(n));
    for (T& x : few) x = static_cast<T>(random.integer(std::is_signed_v<T> ? -3 : 0, 3));
    all.push_back(few);
    std::sort(few.begin(), few.end());
    all.push_back(few);
    all.emplace_back(static_cast<std::size_t>(n), static_cast<T>(5));
    if constexpr (std::is_floating_point_v<T>) {
        using limits = std::numeric_limits<T>;
        const T special[]{0,
                          T(-0.0),
                          limits::infinity(),
                          -limits::infinity(),
                          limits::quiet_NaN(),
                          -limits::quiet_NaN(),
                          limits::denorm_min(),
                          -limits::denorm_min(),
                          limits::max(),
                          limits::lowest(),
                          1,
                          -1};
        for (T& x : few) x = special[random.integer(0, 11)];
        all.push_back(few);
        using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
        for (T& x : few) x = std::bit_cast<T>(random_element<Bits>(random)); // also NaN of all kinds
        all.push_back(few);
    }
    return all;
}

template <class T> void expect_sorted(i64 n)
{
    for (const bool ascend : {true, false}) {
        const std::string name = std::string("ympsSortRadix") + (ascend ? "Ascend_" : "Descend_") + token<T>() + "_I";
        for (const auto& elements : arrays<T>(n)) {
            auto should = elements;
            std::stable_sort(should.begin(), should.end(),
                             [&](T a, T b) { return ascend ? before(a, b) : before(b, a); });
            Guarded<T> data(elements.size()), temp(elements.size());
            std::copy(elements.begin(), elements.end(), data.begin());
            ASSERT_EQ(primitive<Sort<T>>(name)(data.data(), temp.data(), static_cast<i32>(n)), ok);
            ASSERT_TRUE(same_bits(data.data(), should.data(), n)) << name << " n=" << n;
        }
    }
}

// Equal keys keep the order of their indices, downward too.
template <class T> void expect_sorted_by_index(i64 n, i64 stride)
{
    for (const bool ascend : {true, false}) {
        const std::string name = std::string("ympsSortRadixIndex") + (ascend ? "Ascend_" : "Descend_") + token<T>();
        for (const auto& keys : arrays<T>(n)) {
            std::vector<i32> should(keys.size());
            std::iota(should.begin(), should.end(), 0);
            std::stable_sort(should.begin(), should.end(), [&](i32 i, i32 j) {
                const T a = keys[static_cast<std::size_t>(i)], b = keys[static_cast<std::size_t>(j)];
                return ascend ? before(a, b) : before(b, a);
            });
            const std::size_t bytes = (keys.size() - 1) * static_cast<std::size_t>(stride) + sizeof(T);
            Guarded<char> strided(bytes);
            std::memset(strided.data(), 0x5a, bytes);
            for (std::size_t i = 0; i < keys.size(); ++i)
                std::memcpy(strided.data() + i * static_cast<std::size_t>(stride), &keys[i], sizeof(T));
            const std::vector<char> copy(strided.begin(), strided.end());
            Guarded<i32> index(keys.size()), temp(keys.size());
            ASSERT_EQ(primitive<IndexSort<T>>(name)(reinterpret_cast<const T*>(strided.data()),
                                                    static_cast<i32>(stride), index.data(), temp.data(),
                                                    static_cast<i32>(n)),
                      ok);
            ASSERT_TRUE(same_bits(index.data(), should.data(), n)) << name << " n=" << n << " stride=" << stride;
            ASSERT_TRUE(std::equal(copy.begin(), copy.end(), strided.begin())) << name << " changes the keys";
        }
    }
}

constexpr i64 lengths[] = {1,  2,  3,  4,  5,   8,   11,  12,   13,   23,   24,
                           25, 31, 64, 70, 255, 256, 257, 1000, 2047, 2049, 10000};

TEST(Sort, puts_every_type_in_order_of_bits)
{
    each_sorted([]<class T>(T) {
        for (const i64 n : lengths) expect_sorted<T>(n);
    });
}

TEST(Sort, by_index_is_stable_in_both_directions)
{
    each_sorted_by_index([]<class T>(T) {
        for (const i64 n : lengths)
            for (const i64 stride : {i64{sizeof(T)}, 2 * i64{sizeof(T)}, i64{sizeof(T)} + 5})
                expect_sorted_by_index<T>(n, stride);
    });
}

TEST(Sort, puts_the_negative_zero_first_and_NaN_outside_by_its_sign)
{
    float data[] = {NAN, 0.0f, -0.0f, INFINITY, -NAN, 1, -INFINITY}, temp[7];
    ASSERT_EQ(primitive<Sort<t_32f>>("ympsSortRadixAscend_32f_I")(data, temp, 7), ok);
    EXPECT_TRUE(std::isnan(data[0]) && std::signbit(data[0]));
    EXPECT_EQ(data[1], -INFINITY);
    EXPECT_TRUE(data[2] == 0 && std::signbit(data[2]));
    EXPECT_TRUE(data[3] == 0 && !std::signbit(data[3]));
    EXPECT_EQ(data[4], 1);
    EXPECT_EQ(data[5], INFINITY);
    EXPECT_TRUE(std::isnan(data[6]) && !std::signbit(data[6]));
}

TEST(Sort, tells_null_before_a_bad_length_and_touches_nothing)
{
    each_sorted([]<class T>(T) {
        T data[]{2, 1}, temp[]{9, 9};
        for (const std::string direction : {"Ascend_", "Descend_"}) {
            auto* f = primitive<Sort<T>>("ympsSortRadix" + direction + token<T>() + "_I");
            for (const i32 n : bad_lengths) {
                EXPECT_EQ(f(nullptr, temp, n), null_pointer);
                EXPECT_EQ(f(data, nullptr, n), null_pointer);
                EXPECT_EQ(f(data, temp, n), bad_size);
            }
            EXPECT_EQ(f(data, nullptr, 2), null_pointer);
        }
        EXPECT_TRUE(data[0] == 2 && data[1] == 1 && temp[0] == 9);
    });
    each_sorted_by_index([]<class T>(T) {
        T keys[]{2, 1};
        i32 index[]{7, 7}, temp[]{9, 9};
        for (const std::string direction : {"Ascend_", "Descend_"}) {
            auto* f = primitive<IndexSort<T>>("ympsSortRadixIndex" + direction + token<T>());
            for (const i32 n : bad_lengths) {
                EXPECT_EQ(f(nullptr, sizeof(T), index, temp, n), null_pointer);
                EXPECT_EQ(f(keys, sizeof(T), nullptr, temp, n), null_pointer);
                EXPECT_EQ(f(keys, sizeof(T), index, nullptr, n), null_pointer);
                EXPECT_EQ(f(keys, sizeof(T), index, temp, n), bad_size);
            }
        }
        EXPECT_TRUE(index[0] == 7 && index[1] == 7);
    });
}

TEST(SortFull, puts_a_million_elements_in_order)
{
    each_sorted([]<class T>(T) { expect_sorted<T>(1000000); });
    each_sorted_by_index([]<class T>(T) { expect_sorted_by_index<T>(1000000, sizeof(T)); });
}

} // namespace
} // namespace orv::test
