// Conjugates, packed spectra expanded, and products of packed spectra, against plain complex arithmetic.
#include "tests/dft/exact.h"

namespace orv::test {
namespace {

#define VISIT(t) visit(t_##t{});
template <class Visit> void each_conjugated(Visit visit) { ORV_DFT_CONJUGATED(VISIT) }

template <class R> cpx<R> conjugated(cpx<R> x)
{
    if constexpr (std::is_integral_v<R>) return {x.re, saturated<R>(-Exact{x.im})};
    else return {x.re, -x.im};
}

// The half spectrum of n reals: X[0] and, of even n, X[n/2] are real.
template <class R> std::vector<cpx<R>> half_spectrum(i64 n, std::uint64_t stream)
{
    auto x = random_array<cpx<R>>(n / 2 + 1, stream);
    x[0].im = 0;
    if (n % 2 == 0) x.back().im = 0;
    if constexpr (std::is_integral_v<R>) {
        if (n > 3) x[1] = {std::numeric_limits<R>::min(), std::numeric_limits<R>::min()};
    }
    return x;
}

template <class R> std::vector<R> packed(const std::string& format, const std::vector<cpx<R>>& x, i64 n)
{
    const bool even = n % 2 == 0;
    const auto half = static_cast<std::size_t>(n / 2);
    std::vector<R> p{x[0].re};
    if (format == "Ccs") p.push_back(0);
    if (format == "Perm" && even) p.push_back(x[half].re);
    for (std::size_t k = 1; 2 * static_cast<i64>(k) < n; ++k) p.push_back(x[k].re), p.push_back(x[k].im);
    if (format == "Pack" && even) p.push_back(x[half].re);
    if (format == "Ccs" && even) p.push_back(x[half].re), p.push_back(0);
    return p;
}

TEST(Conjugates, of_every_length_at_every_boundary)
{
    each_conjugated([]<class T>(T) {
        auto x = random_array<T>(70, 1);
        if constexpr (std::is_same_v<T, t_16sc>) x[3] = x[40] = {INT16_MIN, INT16_MIN};
        auto* conjugate = primitive<OneToOne<T, T>>("ympsConj_" + token<T>());
        auto* in_place = primitive<OnOne<T>>("ympsConj_" + token<T>() + "_I");
        auto* reversed = primitive<OneToOne<T, T>>("ympsConjFlip_" + token<T>());
        Room room;
        for (i32 n = 1; n <= 70; ++n)
            for (const i64 distance : distances<T>()) {
                std::vector<T> should, flipped;
                for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i) {
                    should.push_back(conjugated(x[i]));
                    flipped.push_back(conjugated(x[static_cast<std::size_t>(n) - 1 - i]));
                }
                T* dst = room.place<T>(n, distance);
                ASSERT_EQ(conjugate(x.data(), dst, n), ok);
                ASSERT_TRUE(same_bits(dst, should.data(), n) && room.untouched_around()) << token<T>() << " n=" << n;
                dst = room.place<T>(n, distance);
                ASSERT_EQ(reversed(x.data(), dst, n), ok);
                ASSERT_TRUE(same_bits(dst, flipped.data(), n) && room.untouched_around()) << token<T>() << " n=" << n;
                std::memcpy(static_cast<void*>(dst), x.data(), static_cast<std::size_t>(n) * sizeof(T));
                ASSERT_EQ(in_place(dst, n), ok);
                ASSERT_TRUE(same_bits(dst, should.data(), n) && room.untouched_around()) << token<T>() << " n=" << n;
            }
    });
}

TEST(Conjugates, expand_packed_halves_to_whole_spectra)
{
    each_conjugated([]<class T>(T) {
        using R = real_t<T>;
        for (const char* format : {"Ccs", "Pack", "Perm"}) {
            const std::string name = "ympsConj" + std::string(format) + '_' + token<T>();
            for (i32 n = 1; n <= 70; ++n) {
                const auto x = half_spectrum<R>(n, static_cast<std::uint64_t>(n));
                std::vector<T> should;
                for (i64 k = 0; k < n; ++k)
                    should.push_back(2 * k <= n ? x[static_cast<std::size_t>(k)]
                                                : conjugated(x[static_cast<std::size_t>(n - k)]));
                const auto half = packed(format, x, n);
                Guarded<R> src(half.size());
                std::memcpy(src.data(), half.data(), half.size() * sizeof(R));
                Room room;
                T* dst = room.place<T>(n, n % 2 == 0 ? 0 : static_cast<i64>(sizeof(R)));
                ASSERT_EQ((primitive<OneToOne<R, T>>(name)(src.data(), dst, n)), ok);
                ASSERT_TRUE(same_bits(dst, should.data(), n) && room.untouched_around()) << name << " n=" << n;
                std::vector<R> both(half);
                both.resize(std::max(half.size(), 2 * static_cast<std::size_t>(n)));
                ASSERT_EQ(primitive<OnOne<T>>(name + "_I")(reinterpret_cast<T*>(both.data()), n), ok);
                ASSERT_TRUE(same_bits(both.data(), &should[0].re, 2 * n)) << name << "_I n=" << n;
            }
        }
    });
}

TEST(Conjugates, tell_null_before_a_bad_length)
{
    each_conjugated([]<class T>(T) {
        using R = real_t<T>;
        T x[2]{{1, 2}, {3, 4}};
        for (const i32 n : bad_lengths) {
            for (const char* stem : {"ympsConj_", "ympsConjFlip_"}) {
                auto* f = primitive<OneToOne<T, T>>(stem + token<T>());
                EXPECT_EQ(f(nullptr, x, n), null_pointer);
                EXPECT_EQ(f(x, nullptr, n), null_pointer);
                EXPECT_EQ(f(x, x, n), bad_size);
            }
            for (const char* stem : {"ympsConjCcs_", "ympsConjPack_", "ympsConjPerm_"}) {
                auto* f = primitive<OneToOne<R, T>>(stem + token<T>());
                EXPECT_EQ(f(nullptr, x, n), null_pointer);
                EXPECT_EQ(f(&x[0].re, nullptr, n), null_pointer);
                EXPECT_EQ(f(&x[0].re, x, n), bad_size);
            }
            for (const char* stem : {"ympsConj_", "ympsConjCcs_", "ympsConjPack_", "ympsConjPerm_"}) {
                auto* f = primitive<OnOne<T>>(stem + token<T>() + "_I");
                EXPECT_EQ(f(nullptr, n), null_pointer);
                EXPECT_EQ(f(x, n), bad_size);
            }
        }
        EXPECT_TRUE((x[0] == T{1, 2} && x[1] == T{3, 4}));
    });
}

// The product in the format: of spectra a and b, or of a and the conjugate of b.
template <class R>
std::vector<R> packed_product(const std::string& format, const std::vector<cpx<R>>& a, const std::vector<cpx<R>>& b,
                              i64 n, i32 factor)
{
    std::vector<cpx<R>> x;
    for (std::size_t k = 0; k < a.size(); ++k) {
        const bool real = k == 0 || 2 * static_cast<i64>(k) == n;
        const auto p = exact(a[k]), q = exact(b[k]);
        // A product of reals is one product: a sum with zero could change the sign of a zero.
        if (real) x.push_back({result<R>(p.re * q.re, factor), 0});
        else x.push_back(result<cpx<R>>(format == "PackConj" ? p * conj(q) : p * q, factor));
    }
    return packed(format == "PackConj" ? "Pack" : format, x, n);
}

template <class R, class... F> void expect_packed_products(i32 s, F... factor)
{
    for (const std::string format : {"Perm", "Pack", "PackConj"}) {
        const std::string name = "ympsMul" + format + '_' + token<R>();
        const std::string suffix = sizeof...(F) != 0 ? "Sfs" : "";
        for (i32 n = 1; n <= 70; ++n) {
            const auto a = half_spectrum<R>(n, 100), b = half_spectrum<R>(n, static_cast<std::uint64_t>(n));
            const auto should = packed_product(format, a, b, n, s);
            const auto layout = format == "PackConj" ? "Pack" : format;
            const auto x = packed(layout, a, n), y = packed(layout, b, n);
            Room room;
            for (const i64 distance : distances<R>()) {
                R* dst = room.place<R>(n, distance);
                ASSERT_EQ((primitive<TwoToOne<R, F...>>(name + (suffix.empty() ? "" : "_Sfs"))(x.data(), y.data(), dst,
                                                                                               n, factor...)),
                          ok);
                ASSERT_TRUE(same_bits(dst, should.data(), n) && room.untouched_around())
                    << name << " n=" << n << " factor=" << s;
                std::memcpy(dst, y.data(), static_cast<std::size_t>(n) * sizeof(R));
                ASSERT_EQ((primitive<OneToOne<R, R, F...>>(name + "_I" + suffix)(x.data(), dst, n, factor...)), ok);
                ASSERT_TRUE(same_bits(dst, should.data(), n) && room.untouched_around())
                    << name << "_I n=" << n << " factor=" << s;
            }
        }
    }
}

TEST(PackedProducts, of_floats_round_as_complex_products)
{
    expect_packed_products<t_32f>(0), expect_packed_products<t_64f>(0);
}

TEST(PackedProducts, of_integers_follow_the_law_of_factors)
{
    for (const i32 s : {0, 1, 2, 14, 15, 16, 30, 31, 32, 60, -1, -3, -15, -16, -40})
        expect_packed_products<t_16s>(s, s);
}

TEST(PackedProducts, tell_null_before_a_bad_length)
{
    for (const std::string format : {"Perm", "Pack", "PackConj"}) {
        auto* f = primitive<TwoToOne<t_64f>>("ympsMul" + format + "_64f");
        auto* in_place = primitive<OneToOne<t_64f, t_64f>>("ympsMul" + format + "_64f_I");
        auto* scaled = primitive<TwoToOne<t_16s, i32>>("ympsMul" + format + "_16s_Sfs");
        auto* scaled_in_place = primitive<OneToOne<t_16s, t_16s, i32>>("ympsMul" + format + "_16s_ISfs");
        t_64f x = 1, y = 2, dst = 3;
        t_16s i = 4, j = 5;
        for (const i32 n : bad_lengths) {
            EXPECT_EQ(f(nullptr, &y, &dst, n), null_pointer);
            EXPECT_EQ(f(&x, nullptr, &dst, n), null_pointer);
            EXPECT_EQ(f(&x, &y, nullptr, n), null_pointer);
            EXPECT_EQ(f(&x, &y, &dst, n), bad_size);
            EXPECT_EQ(in_place(nullptr, &dst, n), null_pointer);
            EXPECT_EQ(in_place(&x, nullptr, n), null_pointer);
            EXPECT_EQ(in_place(&x, &dst, n), bad_size);
            EXPECT_EQ(scaled(&i, nullptr, &j, n, 1), null_pointer);
            EXPECT_EQ(scaled(&i, &i, &j, n, 1), bad_size);
            EXPECT_EQ(scaled_in_place(nullptr, &j, n, 1), null_pointer);
            EXPECT_EQ(scaled_in_place(&i, &j, n, 1), bad_size);
        }
        EXPECT_EQ(dst, 3);
        EXPECT_EQ(j, 5);
    }
}

} // namespace
} // namespace orv::test
