#include "tests/dft/primitive.h"

namespace orv::test {
namespace {

#define VISIT(t) visit(t_##t{});
template <class Visit> void each_filled(Visit visit) { ORV_DFT_FILLED(VISIT) }

template <class T> auto* zero_all = primitive<OnOne<T>>("ympsZero_" + token<T>());
template <class T> auto* set_all = primitive<Filling<T>>("ympsSet_" + token<T>());
template <class T> auto* copy_all = primitive<OneToOne<T, T>>("ympsCopy_" + token<T>());

// call(dst, n) has to make `expected`, of every length and at every address, and nothing else.
template <class T, class Call> void expect_array(const std::vector<T>& expected, Call call)
{
    Room room;
    for (i32 n = 1; n <= 70; ++n)
        for (i64 distance = 0; distance < 16; ++distance) {
            T* dst = room.place<T>(n, distance);
            ASSERT_EQ(call(dst, n), ok);
            ASSERT_TRUE(same_bits(dst, expected.data(), n)) << token<T>() << " n=" << n << " from page " << distance;
            ASSERT_TRUE(room.untouched_around()) << token<T>() << " n=" << n << " from page " << distance;
        }
}

TEST(Fill, zeros_every_length_at_every_address)
{
    each_filled([]<class T>(T) { expect_array(std::vector<T>(70), zero_all<T>); });
}

TEST(Fill, sets_every_length_at_every_address)
{
    each_filled([]<class T>(T) {
        const T value = random_array<T>(1, 5)[0];
        expect_array(std::vector<T>(70, value), [&](T* dst, i32 n) { return set_all<T>(as_constant(value), dst, n); });
    });
}

TEST(Fill, copies_every_length_between_all_addresses)
{
    each_filled([]<class T>(T) {
        const auto elements = random_array<T>(70, 6);
        Room from;
        for (const i64 distance : distances<T>())
            expect_array(elements, [&](T* dst, i32 n) {
                T* src = from.place<T>(n, distance);
                std::memcpy(static_cast<void*>(src), elements.data(), static_cast<std::size_t>(n) * sizeof(T));
                return copy_all<T>(src, dst, n);
            });
    });
}

TEST(Fill, copies_an_array_onto_itself)
{
    auto elements = random_array<t_32f>(100, 7);
    const auto before = elements;
    EXPECT_EQ(copy_all<t_32f>(elements.data(), elements.data(), 100), ok);
    EXPECT_TRUE(same_bits(elements.data(), before.data(), 100));
}

TEST(Fill, tells_null_before_a_bad_length_and_touches_nothing)
{
    each_filled([]<class T>(T value) {
        T dst[2];
        std::memset(static_cast<void*>(dst), 0x5a, sizeof dst);
        for (const i32 n : bad_lengths) {
            EXPECT_EQ(zero_all<T>(nullptr, n), null_pointer);
            EXPECT_EQ(set_all<T>(as_constant(value), nullptr, n), null_pointer);
            EXPECT_EQ(copy_all<T>(nullptr, dst, n), null_pointer);
            EXPECT_EQ(copy_all<T>(dst, nullptr, n), null_pointer);
            EXPECT_EQ(zero_all<T>(dst, n), bad_size);
            EXPECT_EQ(set_all<T>(as_constant(value), dst, n), bad_size);
            EXPECT_EQ(copy_all<T>(&value, dst, n), bad_size);
        }
        if constexpr (is_complex<T>) {
            EXPECT_EQ(set_all<T>(nullptr, dst, 1), null_pointer);
        }
        for (std::size_t i = 0; i < sizeof dst; ++i) EXPECT_EQ(reinterpret_cast<unsigned char*>(dst)[i], 0x5a);
    });
}

template <class T> void expect_worker(const std::string& name)
{
    const T value = random_array<T>(1, 8)[0];
    expect_array(std::vector<T>(70, value), [&](T* dst, i32 n) {
        primitive<Work<Filling<T>>>(name)(as_constant(value), dst, n);
        return ok;
    });
}

TEST(Fill, workers_set_by_width)
{
    expect_worker<t_8u>("ownsSet_8u_M7");
    expect_worker<t_16u>("ownsSet_16u_M7");
    expect_worker<t_32s>("ownsSet_32s_M7");
    expect_worker<t_64s>("ownsSet_64s_M7");
    expect_worker<t_64sc>("ownsSet_64sc_M7");
}

TEST(Fill, workers_clear_and_copy_long_arrays)
{
    auto* zero_bytes = primitive<void(t_8u*, i64)>("ownsZero_8u");
    auto* copy_bytes = primitive<void(const t_8u*, t_8u*, i64)>("ownsCopy_8u");
    std::vector<t_8u> a(1000003, 7), b(a.size());
    copy_bytes(a.data(), b.data(), static_cast<i64>(a.size()));
    EXPECT_EQ(a, b);
    zero_bytes(b.data(), static_cast<i64>(b.size()));
    EXPECT_EQ(b, std::vector<t_8u>(a.size()));
}

} // namespace
} // namespace orv::test
