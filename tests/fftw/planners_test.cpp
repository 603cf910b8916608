// Every planner of the interface, of C and of Fortran, beside the same plan of Debian's FFTW.
#include "tests/fftw/api.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace orv::test {
namespace {

constexpr std::size_t size = 4096; // numbers, more than any problem here spans

template <class R> struct Buffers {
    std::vector<R> a, b, c, d;
    Buffers() : a(size), b(size), c(size), d(size)
    {
        unsigned state = 1;
        for (auto* array : {&a, &b, &c, &d})
            for (R& x : *array) state = state * 1664525u + 1013904223u, x = static_cast<R>(state >> 8) / (1 << 23) - 1;
    }
    using C = typename Api<R>::C;
    R* ra() { return a.data(); }
    R* rb() { return b.data(); }
    R* rc() { return c.data(); }
    R* rd() { return d.data(); }
    C* ca() { return reinterpret_cast<C*>(a.data()); }
    C* cb() { return reinterpret_cast<C*>(b.data()); }
};

// The plan that `make` makes of either library is run on the same numbers; what is outside of the output is equal, too.
// Of what it came from FFTW's c2r may leave anything, so the first array counts only where it is the output.
template <class R, class Make> void compare(const char* what, Make make, bool in_place = false)
{
    SCOPED_TRACE(what);
    Buffers<R> mine, others;
    const Plan plan = make(ours<R>(), mine), other = make(debian<R>(), others);
    ASSERT_NE(plan, nullptr);
    ASSERT_NE(other, nullptr);
    const Buffers<R> fresh;
    EXPECT_EQ(mine.a, fresh.a);
    EXPECT_EQ(mine.b, fresh.b);
    EXPECT_EQ(mine.c, fresh.c);
    EXPECT_EQ(mine.d, fresh.d);
    ours<R>().execute(plan), debian<R>().execute(other);
    const auto near = [](const std::vector<R>& x, const std::vector<R>& y) {
        std::size_t far = 0;
        R largest = 1; // sums of sines and cosines are twice as long in each dimension
        for (const R value : y) largest = std::max(largest, std::abs(value));
        for (std::size_t k = 0; k < size; ++k)
            far += !(std::abs(x[k] - y[k]) <= 300 * std::numeric_limits<R>::epsilon() * largest);
        return far;
    };
    EXPECT_EQ(near(mine.b, others.b), 0u);
    EXPECT_EQ(near(mine.c, others.c), 0u);
    EXPECT_EQ(near(mine.d, others.d), 0u);
    if (in_place) EXPECT_EQ(near(mine.a, others.a), 0u);
    else EXPECT_EQ(mine.a, fresh.a);
    EXPECT_TRUE(mine.b != fresh.b || mine.c != fresh.c || mine.d != fresh.d || in_place);
    ours<R>().destroy(plan), debian<R>().destroy(other);
}

template <class R> class FftwPlanners : public testing::Test {
};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(FftwPlanners, Precisions);

#define FORM(...) [&](const Api<R>& api, Buffers<R>& x) -> Plan { return __VA_ARGS__; }
#define CHECK(...) compare<R>(#__VA_ARGS__, FORM(__VA_ARGS__))
#define CHECK_IN_PLACE(...) compare<R>(#__VA_ARGS__, FORM(__VA_ARGS__), true)

template <class R, class... Args> Plan by_fortran(const Api<R>& api, const std::string& name, Args... args)
{
    Plan made = nullptr;
    api.fortran("plan_" + name, &made, args...);
    return made;
}

const int* no_embed() { return nullptr; }
constexpr int n3[] = {4, 6, 5}, n1[] = {12};

TYPED_TEST(FftwPlanners, OfComplexNumbersAreAsDebians)
{
    using R = TypeParam;
    NEED_DEBIAN(R);
    for (const int sign : {-1, 1}) {
        CHECK(api.plan("dft", 3, n3, x.ca(), x.cb(), sign, estimate));
        CHECK(api.plan("dft", 0, n3, x.ca(), x.cb(), sign, estimate));
        CHECK(api.plan("dft_1d", 30, x.ca(), x.cb(), sign, estimate));
        CHECK(api.plan("dft_2d", 6, 10, x.ca(), x.cb(), sign, estimate));
        CHECK(api.plan("dft_3d", 4, 3, 10, x.ca(), x.cb(), sign, estimate));
        CHECK_IN_PLACE(api.plan("dft_1d", 30, x.ca(), x.ca(), sign, estimate));
        CHECK_IN_PLACE(api.plan("dft_3d", 4, 3, 10, x.ca(), x.ca(), sign, estimate));
        const int in_embed[] = {99, 7, 8}, out_embed[] = {99, 6, 5};
        CHECK(api.plan("many_dft", 3, n3, 3, x.ca(), in_embed, 2, 500, x.cb(), out_embed, 3, 1, sign, estimate));
        CHECK(api.plan("many_dft", 3, n3, 2, x.ca(), no_embed(), 1, 120, x.cb(), no_embed(), 2, 1, sign, estimate));
        CHECK(api.plan("many_dft", 1, n1, 7, x.ca(), no_embed(), 7, 1, x.cb(), no_embed(), 1, 12, sign, estimate));
        CHECK_IN_PLACE(
            api.plan("many_dft", 1, n1, 7, x.ca(), no_embed(), 7, 1, x.ca(), no_embed(), 7, 1, sign, estimate));
        const ShortDim dims[] = {{6, 20, 7}, {7, 2, 1}}, loops[] = {{2, 1, 200}, {3, 300, 50}};
        CHECK(api.plan("guru_dft", 2, dims, 2, loops, x.ca(), x.cb(), sign, estimate));
        const Dim long_dims[] = {{6, 20, 7}, {7, 2, 1}}, long_loops[] = {{2, 1, 200}, {3, 300, 50}};
        CHECK(api.plan("guru64_dft", 2, long_dims, 2, long_loops, x.ca(), x.cb(), sign, estimate));
    }
    const ShortDim dims[] = {{6, 20, 7}, {7, 2, 1}}, loops[] = {{2, 1, 200}, {3, 300, 50}};
    CHECK(api.plan("guru_split_dft", 2, dims, 2, loops, x.ra(), x.rb(), x.rc(), x.rd(), estimate));
    CHECK(api.plan("guru_split_dft", 2, dims, 2, loops, x.rb(), x.ra(), x.rd(), x.rc(), estimate));
    const Dim long_dims[] = {{6, 20, 7}, {7, 2, 1}}, long_loops[] = {{2, 1, 200}, {3, 300, 50}};
    CHECK(api.plan("guru64_split_dft", 2, long_dims, 2, long_loops, x.ra(), x.rb(), x.rc(), x.rd(), estimate));
    const Dim same[] = {{6, 20, 20}, {7, 2, 2}};
    CHECK_IN_PLACE(api.plan("guru64_split_dft", 2, same, 0, same, x.ra(), x.rb(), x.ra(), x.rb(), estimate));
    // Both parts in one array, in turn.
    const Dim pairs[] = {{6, 14, 14}, {7, 2, 2}};
    CHECK(api.plan("guru64_split_dft", 2, pairs, 0, pairs, x.ra(), x.ra() + 1, x.rb(), x.rb() + 1, estimate));
}

TYPED_TEST(FftwPlanners, OfRealsToTheirHalfSpectrumAreAsDebians)
{
    using R = TypeParam;
    NEED_DEBIAN(R);
    CHECK(api.plan("dft_r2c", 3, n3, x.ra(), x.cb(), estimate));
    CHECK(api.plan("dft_r2c_1d", 30, x.ra(), x.cb(), estimate));
    CHECK(api.plan("dft_r2c_1d", 1, x.ra(), x.cb(), estimate));
    CHECK(api.plan("dft_r2c_2d", 6, 11, x.ra(), x.cb(), estimate));
    CHECK(api.plan("dft_r2c_3d", 4, 3, 10, x.ra(), x.cb(), estimate));
    const int in_embed[] = {99, 7, 8}, out_embed[] = {99, 6, 5};
    CHECK(api.plan("many_dft_r2c", 3, n3, 3, x.ra(), in_embed, 2, 500, x.cb(), out_embed, 3, 1, estimate));
    CHECK(api.plan("many_dft_r2c", 3, n3, 2, x.ra(), no_embed(), 1, 120, x.cb(), no_embed(), 2, 1, estimate));
    CHECK(api.plan("many_dft_r2c", 1, n1, 7, x.ra(), no_embed(), 7, 1, x.cb(), no_embed(), 1, 7, estimate));
    const ShortDim dims[] = {{6, 20, 7}, {7, 2, 1}}, loops[] = {{2, 1, 200}, {3, 300, 50}};
    const Dim long_dims[] = {{6, 20, 7}, {7, 2, 1}}, long_loops[] = {{2, 1, 200}, {3, 300, 50}};
    CHECK(api.plan("guru_dft_r2c", 2, dims, 2, loops, x.ra(), x.cb(), estimate));
    CHECK(api.plan("guru64_dft_r2c", 2, long_dims, 2, long_loops, x.ra(), x.cb(), estimate));
    CHECK(api.plan("guru_split_dft_r2c", 2, dims, 2, loops, x.ra(), x.rb(), x.rc(), estimate));
    CHECK(api.plan("guru64_split_dft_r2c", 2, long_dims, 2, long_loops, x.ra(), x.rb(), x.rc(), estimate));
}

// Spectra of reals are needed: forward first, by the oracle, out of the place where the plan's input is.
TYPED_TEST(FftwPlanners, FromTheHalfSpectrumAreAsDebians)
{
    using R = TypeParam;
    NEED_DEBIAN(R);
    const auto check = [](const char* what, auto forward, auto backward) {
        const auto with_spectrum = [&](const Api<R>& api, Buffers<R>& x) {
            const Plan first = forward(debian<R>(), x);
            if (first) debian<R>().execute(first), debian<R>().destroy(first);
            return backward(api, x);
        };
        SCOPED_TRACE(what);
        Buffers<R> mine, others;
        const Plan plan = with_spectrum(ours<R>(), mine), other = with_spectrum(debian<R>(), others);
        ASSERT_NE(plan, nullptr);
        ASSERT_NE(other, nullptr);
        const auto a = mine.a, c = mine.c, before = mine.b;
        ours<R>().execute(plan), debian<R>().execute(other);
        EXPECT_EQ(mine.a, a);
        EXPECT_EQ(mine.c, c); // the input
        EXPECT_NE(mine.b, before);
        for (std::size_t k = 0; k < size; ++k)
            ASSERT_NEAR(mine.b[k], others.b[k], 2000 * std::numeric_limits<R>::epsilon()) << k;
        ours<R>().destroy(plan), debian<R>().destroy(other);
    };
#define CHECK_BACK(forward, backward) check(#backward, FORM(forward), FORM(backward))
    CHECK_BACK(api.plan("dft_r2c", 3, n3, x.rd(), x.ca(), estimate),
               api.plan("dft_c2r", 3, n3, x.ca(), x.rb(), estimate));
    CHECK_BACK(api.plan("dft_r2c_1d", 30, x.rd(), x.ca(), estimate),
               api.plan("dft_c2r_1d", 30, x.ca(), x.rb(), estimate));
    CHECK_BACK(api.plan("dft_r2c_2d", 6, 11, x.rd(), x.ca(), estimate),
               api.plan("dft_c2r_2d", 6, 11, x.ca(), x.rb(), estimate));
    CHECK_BACK(api.plan("dft_r2c_3d", 4, 3, 10, x.rd(), x.ca(), estimate),
               api.plan("dft_c2r_3d", 4, 3, 10, x.ca(), x.rb(), estimate | destroy_input));
    const int embed[] = {99, 7, 8}, half_embed[] = {99, 6, 5};
    CHECK_BACK(api.plan("many_dft_r2c", 3, n3, 3, x.rd(), embed, 2, 500, x.ca(), half_embed, 3, 1, estimate),
               api.plan("many_dft_c2r", 3, n3, 3, x.ca(), half_embed, 3, 1, x.rb(), embed, 2, 500, estimate));
    CHECK_BACK(api.plan("many_dft_r2c", 1, n1, 7, x.rd(), no_embed(), 7, 1, x.ca(), no_embed(), 1, 7, estimate),
               api.plan("many_dft_c2r", 1, n1, 7, x.ca(), no_embed(), 1, 7, x.rb(), no_embed(), 7, 1, estimate));
    const ShortDim dims[] = {{6, 20, 7}, {7, 2, 1}}, loops[] = {{2, 1, 200}, {3, 300, 50}};
    const ShortDim back[] = {{6, 7, 20}, {7, 1, 2}}, back_loops[] = {{2, 200, 1}, {3, 50, 300}};
    const Dim long_back[] = {{6, 7, 20}, {7, 1, 2}}, long_loops[] = {{2, 200, 1}, {3, 50, 300}};
    CHECK_BACK(api.plan("guru_dft_r2c", 2, dims, 2, loops, x.rd(), x.ca(), estimate),
               api.plan("guru_dft_c2r", 2, back, 2, back_loops, x.ca(), x.rb(), estimate));
    CHECK_BACK(api.plan("guru_dft_r2c", 2, dims, 2, loops, x.rd(), x.ca(), estimate),
               api.plan("guru64_dft_c2r", 2, long_back, 2, long_loops, x.ca(), x.rb(), estimate));
    CHECK_BACK(api.plan("guru_split_dft_r2c", 2, dims, 2, loops, x.rd(), x.ra(), x.rc(), estimate),
               api.plan("guru_split_dft_c2r", 2, back, 2, back_loops, x.ra(), x.rc(), x.rb(), estimate));
    CHECK_BACK(api.plan("guru_split_dft_r2c", 2, dims, 2, loops, x.rd(), x.ra(), x.rc(), estimate),
               api.plan("guru64_split_dft_c2r", 2, long_back, 2, long_loops, x.ra(), x.rc(), x.rb(), estimate));
    // Fortran's arrays are by columns.
    const int flags = estimate, three = 3, two = 2, one = 1, far = 500, n = 30, c3[] = {5, 6, 4}, rows[] = {8, 7, 99},
              half_rows[] = {5, 6, 99}, gn[] = {6, 7}, gis[] = {7, 1}, gos[] = {20, 2}, hn[] = {2, 3},
              his[] = {200, 50}, hos[] = {1, 300};
    for (const std::string end : {"_", "__"}) {
        CHECK_BACK(api.plan("dft_r2c", 3, n3, x.rd(), x.ca(), estimate),
                   by_fortran(api, "dft_c2r" + end, &three, c3, x.ca(), x.rb(), &flags));
        CHECK_BACK(api.plan("dft_r2c_1d", 30, x.rd(), x.ca(), estimate),
                   by_fortran(api, "dft_c2r_1d" + end, &n, x.ca(), x.rb(), &flags));
        CHECK_BACK(api.plan("dft_r2c_2d", 6, 5, x.rd(), x.ca(), estimate),
                   by_fortran(api, "dft_c2r_2d" + end, c3, c3 + 1, x.ca(), x.rb(), &flags));
        CHECK_BACK(api.plan("dft_r2c", 3, n3, x.rd(), x.ca(), estimate),
                   by_fortran(api, "dft_c2r_3d" + end, c3, c3 + 1, c3 + 2, x.ca(), x.rb(), &flags));
        CHECK_BACK(api.plan("many_dft_r2c", 3, n3, 3, x.rd(), embed, 2, 500, x.ca(), half_embed, 3, 1, estimate),
                   by_fortran(api, "many_dft_c2r" + end, &three, c3, &three, x.ca(), half_rows, &three, &one, x.rb(),
                              rows, &two, &far, &flags));
        CHECK_BACK(
            api.plan("guru_dft_r2c", 2, dims, 2, loops, x.rd(), x.ca(), estimate),
            by_fortran(api, "guru_dft_c2r" + end, &two, gn, gis, gos, &two, hn, his, hos, x.ca(), x.rb(), &flags));
        CHECK_BACK(api.plan("guru_split_dft_r2c", 2, dims, 2, loops, x.rd(), x.ra(), x.rc(), estimate),
                   by_fortran(api, "guru_split_dft_c2r" + end, &two, gn, gis, gos, &two, hn, his, hos, x.ra(), x.rc(),
                              x.rb(), &flags));
    }
}

// In place a row of reals has room for the pairs of its spectrum.
TYPED_TEST(FftwPlanners, InPlaceOfRealsPadTheRows)
{
    using R = TypeParam;
    NEED_DEBIAN(R);
    for (const int n : {8, 9}) {
        const int lengths[] = {3, n}, padded[] = {3, 2 * (n / 2 + 1)};
        Buffers<R> mine, others;
        const auto there_and_back = [&](const Api<R>& api, Buffers<R>& x) {
            const Plan forth = api.plan("dft_r2c", 2, lengths, x.ra(), x.ca(), estimate);
            const Plan back =
                api.plan("many_dft_c2r", 2, lengths, 1, x.ca(), no_embed(), 1, 0, x.ra(), padded, 1, 0, estimate);
            ASSERT_TRUE(forth && back);
            api.execute(forth);
            for (int k = 0; k < 3 * (n / 2 + 1); ++k) x.ra()[2 * k] *= 2; // the real parts
            api.execute(back);
            api.destroy(forth), api.destroy(back);
        };
        there_and_back(ours<R>(), mine), there_and_back(debian<R>(), others);
        for (int row = 0; row < 3; ++row)
            for (int k = 0; k < n; ++k) {
                const auto at = static_cast<std::size_t>(row * padded[1] + k);
                EXPECT_NEAR(mine.a[at], others.a[at], 300 * std::numeric_limits<R>::epsilon()) << n << " " << at;
            }
        const auto end = static_cast<std::ptrdiff_t>(3 * padded[1]);
        EXPECT_TRUE(std::equal(mine.a.begin() + end, mine.a.end(), Buffers<R>().a.begin() + end));
    }
}

TYPED_TEST(FftwPlanners, OfRealsToRealsAreAsDebians)
{
    using R = TypeParam;
    NEED_DEBIAN(R);
    constexpr int all = 11, redft00 = 3;
    for (int first = 0; first < all; ++first) {
        const int kinds[] = {first, (first + 1) % all, (first + 2) % all};
        CHECK(api.plan("r2r", 3, n3, x.ra(), x.rb(), kinds, estimate));
        for (const int n : {1, 2, 3, 12, 13}) {
            if (n == 1 && first == redft00) continue; // of which there is no plan
            CHECK(api.plan("r2r_1d", n, x.ra(), x.rb(), first, estimate));
        }
        CHECK(api.plan("r2r_2d", 6, 11, x.ra(), x.rb(), kinds[0], kinds[1], estimate));
        CHECK(api.plan("r2r_3d", 4, 3, 10, x.ra(), x.rb(), kinds[0], kinds[1], kinds[2], estimate));
        CHECK_IN_PLACE(api.plan("r2r_3d", 4, 3, 10, x.ra(), x.ra(), kinds[0], kinds[1], kinds[2], estimate));
        const int in_embed[] = {99, 7, 8}, out_embed[] = {99, 6, 5};
        CHECK(api.plan("many_r2r", 3, n3, 3, x.ra(), in_embed, 2, 500, x.rb(), out_embed, 3, 1, kinds, estimate));
        const ShortDim dims[] = {{6, 20, 7}, {7, 2, 1}}, loops[] = {{2, 1, 200}, {3, 300, 50}};
        const Dim long_dims[] = {{6, 20, 7}, {7, 2, 1}}, long_loops[] = {{2, 1, 200}, {3, 300, 50}};
        CHECK(api.plan("guru_r2r", 2, dims, 2, loops, x.ra(), x.rb(), kinds, estimate));
        CHECK(api.plan("guru64_r2r", 2, long_dims, 2, long_loops, x.ra(), x.rb(), kinds, estimate));
        CHECK(api.plan("guru64_r2r", 0, long_dims, 2, long_loops, x.ra(), x.rb(), kinds, estimate));
    }
}

// Fortran's names by columns, with one underscore and with two.
TYPED_TEST(FftwPlanners, OfFortranAreAsDebians)
{
    using R = TypeParam;
    NEED_DEBIAN(R);
    const int rank = 3, flags = estimate, two = 2, three = 3, four = 4, ten = 10, twelve = 12, one = 1, count = 2;
    const int far = 480, k0 = 0, k1 = 1, k2 = 2, kinds[] = {0, 1, 2}, embed[] = {6, 7, 8};
    const int n[] = {6, 7}, is[] = {20, 2}, os[] = {7, 1}, hn[] = {2, 3}, his[] = {1, 300}, hos[] = {200, 50};
    const int sign = -1;
    for (const std::string end : {"_", "__"}) {
        CHECK(by_fortran(api, "dft" + end, &rank, n3, x.ca(), x.cb(), &sign, &flags));
        CHECK(by_fortran(api, "dft_1d" + end, &twelve, x.ca(), x.cb(), &sign, &flags));
        CHECK(by_fortran(api, "dft_2d" + end, &three, &twelve, x.ca(), x.cb(), &sign, &flags));
        CHECK(by_fortran(api, "dft_3d" + end, &four, &three, &ten, x.ca(), x.cb(), &sign, &flags));
        CHECK(by_fortran(api, "dft_r2c" + end, &rank, n3, x.ra(), x.cb(), &flags));
        CHECK(by_fortran(api, "dft_r2c_1d" + end, &twelve, x.ra(), x.cb(), &flags));
        CHECK(by_fortran(api, "dft_r2c_2d" + end, &three, &twelve, x.ra(), x.cb(), &flags));
        CHECK(by_fortran(api, "dft_r2c_3d" + end, &four, &three, &ten, x.ra(), x.cb(), &flags));
        CHECK(by_fortran(api, "r2r" + end, &rank, n3, x.ra(), x.rb(), kinds, &flags));
        CHECK(by_fortran(api, "r2r_1d" + end, &twelve, x.ra(), x.rb(), &k2, &flags));
        CHECK(by_fortran(api, "r2r_2d" + end, &three, &twelve, x.ra(), x.rb(), &k2, &k1, &flags));
        CHECK(by_fortran(api, "r2r_3d" + end, &four, &three, &ten, x.ra(), x.rb(), &k0, &k1, &k2, &flags));
        CHECK(by_fortran(api, "many_dft" + end, &rank, n3, &count, x.ca(), embed, &one, &far, x.cb(), embed, &two, &one,
                         &sign, &flags));
        CHECK(by_fortran(api, "many_dft_r2c" + end, &rank, n3, &count, x.ra(), embed, &one, &far, x.cb(), embed, &two,
                         &one, &flags));
        CHECK(by_fortran(api, "many_r2r" + end, &rank, n3, &count, x.ra(), embed, &one, &far, x.rb(), embed, &two, &one,
                         kinds, &flags));
        CHECK(by_fortran(api, "guru_dft" + end, &two, n, is, os, &two, hn, his, hos, x.ca(), x.cb(), &sign, &flags));
        CHECK(by_fortran(api, "guru_dft_r2c" + end, &two, n, is, os, &two, hn, his, hos, x.ra(), x.cb(), &flags));
        CHECK(by_fortran(api, "guru_r2r" + end, &two, n, is, os, &two, hn, his, hos, x.ra(), x.rb(), kinds, &flags));
        CHECK(by_fortran(api, "guru_split_dft" + end, &two, n, is, os, &two, hn, his, hos, x.ra(), x.rb(), x.rc(),
                         x.rd(), &flags));
        CHECK(by_fortran(api, "guru_split_dft_r2c" + end, &two, n, is, os, &two, hn, his, hos, x.ra(), x.rb(), x.rc(),
                         &flags));
    }
}

} // namespace
} // namespace orv::test
