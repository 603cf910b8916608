// Convolutions as programs ask for them: outputs, strides, routes, threads, and what is refused with which sentence.
#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include "frame/types.h"
#include <orv/conv.h>
#include <orv/dft.h>

#include "core/team/eagerness.h"
#include "tests/core/teams.h"
#include "tests/support/kernels.h"
#include "tests/support/probe.h"
#include "tests/support/random.h"

#include <cmath>
#include <thread>

namespace orv::test {
namespace {

using Shape = std::vector<i64>;

struct Conv {
    orv_conv* conv = nullptr;
    Conv(char type, int job, const Shape& x, const Shape& y)
    {
        EXPECT_EQ(orv_conv_create(&conv, type, job, static_cast<int>(x.size()), x.data(), y.data()), ORV_OK)
            << orv_last_error();
    }
    Conv(const Conv&) = delete;
    ~Conv() { orv_conv_free(conv); }
    operator orv_conv*() const { return conv; }
    i64 get(int setting) const
    {
        i64 value = -1;
        EXPECT_EQ(orv_conv_get(conv, setting, &value), ORV_OK);
        return value;
    }
    Shape shape() const
    {
        Shape shape(static_cast<std::size_t>(get(ORV_CONV_RANK)));
        EXPECT_EQ(orv_conv_get_outputs(conv, shape.data(), nullptr), ORV_OK);
        return shape;
    }
    Shape start() const
    {
        Shape start(static_cast<std::size_t>(get(ORV_CONV_RANK)));
        EXPECT_EQ(orv_conv_get_outputs(conv, nullptr, start.data()), ORV_OK);
        return start;
    }
};

void expect_sentence(orv_status status, orv_status expected, const std::string& part)
{
    EXPECT_EQ(status, expected);
    EXPECT_NE(std::string(orv_last_error()).find(part), std::string::npos) << orv_last_error();
}

TEST(Conv, has_all_outputs_those_in_the_middle_or_those_without_an_edge)
{
    for (const int job : {ORV_CONV_CONVOLUTION, ORV_CONV_CORRELATION}) {
        const bool correlates = job == ORV_CONV_CORRELATION;
        Conv c('d', job, {4, 3}, {10, 2});
        EXPECT_EQ(c.shape(), (Shape{13, 4}));
        EXPECT_EQ(c.start(), correlates ? (Shape{-3, -2}) : (Shape{0, 0}));
        ASSERT_EQ(orv_conv_set(c, ORV_CONV_SIZE, ORV_CONV_SAME), ORV_OK);
        EXPECT_EQ(c.shape(), (Shape{10, 2}));
        EXPECT_EQ(c.start(), correlates ? (Shape{-2, -1}) : (Shape{1, 1}));
        ASSERT_EQ(orv_conv_set(c, ORV_CONV_SIZE, ORV_CONV_VALID), ORV_OK);
        EXPECT_EQ(c.shape(), (Shape{7, 2}));
        EXPECT_EQ(c.start(), correlates ? (Shape{0, -1}) : (Shape{3, 1}));
    }
}

TEST(Conv, takes_any_outputs_that_there_are)
{
    Conv c('d', ORV_CONV_CONVOLUTION, {4}, {10});
    ASSERT_EQ(orv_conv_set(c, ORV_CONV_SIZE, ORV_CONV_SAME), ORV_OK); // starts 1 to 10
    const i64 three = 3, two = 2, four = 4, twelve = 12, one = 1, zero = 0, thirteen = 13, minus = -1;
    ASSERT_EQ(orv_conv_set_outputs(c, nullptr, nullptr, &three), ORV_OK);
    EXPECT_EQ(c.shape(), Shape{4});
    EXPECT_EQ(c.start(), Shape{1});
    ASSERT_EQ(orv_conv_set_outputs(c, &two, nullptr, &three), ORV_OK); // 2, 5, 8, 11
    EXPECT_EQ(c.shape(), Shape{4});
    ASSERT_EQ(orv_conv_set_outputs(c, &two, &three, nullptr), ORV_OK);
    EXPECT_EQ(c.shape(), Shape{3});
    ASSERT_EQ(orv_conv_set_outputs(c, &twelve, nullptr, nullptr), ORV_OK);
    EXPECT_EQ(c.shape(), Shape{1});
    expect_sentence(orv_conv_set_outputs(c, &thirteen, nullptr, nullptr), -2, "from 0 to 12");
    EXPECT_EQ(orv_conv_set_outputs(c, &minus, nullptr, nullptr), -2);
    expect_sentence(orv_conv_set_outputs(c, &four, &four, &three), -3, "there are 3");
    EXPECT_EQ(orv_conv_set_outputs(c, &four, &zero, &one), -3);
    EXPECT_EQ(orv_conv_set_outputs(c, nullptr, nullptr, &zero), -4);
    EXPECT_EQ(c.start(), Shape{12}); // refused ones change nothing
    ASSERT_EQ(orv_conv_set_outputs(c, nullptr, nullptr, nullptr), ORV_OK);
    EXPECT_EQ(c.shape(), Shape{10});
}

TEST(Conv, refuses_what_makes_no_problem)
{
    orv_conv* c = nullptr;
    const i64 x[] = {3, 4}, y[] = {5, 6}, none[] = {3, 0}, huge[] = {INT32_MAX, 2};
    EXPECT_EQ(orv_conv_create(nullptr, 'd', 1, 2, x, y), -1);
    expect_sentence(orv_conv_create(&c, 'q', 1, 2, x, y), -2, "'q'");
    expect_sentence(orv_conv_create(&c, 'd', 3, 2, x, y), -3, "ORV_CONV_CORRELATION");
    expect_sentence(orv_conv_create(&c, 'd', 1, 8, x, y), -4, "from 1 to 7");
    EXPECT_EQ(orv_conv_create(&c, 'd', 1, 0, x, y), -4);
    EXPECT_EQ(orv_conv_create(&c, 'd', 1, 2, nullptr, y), -5);
    EXPECT_EQ(orv_conv_create(&c, 'd', 1, 2, x, nullptr), -6);
    expect_sentence(orv_conv_create(&c, 'd', 1, 2, none, y), -5, "0 elements");
    EXPECT_EQ(orv_conv_create(&c, 'd', 1, 2, x, none), -6);
    expect_sentence(orv_conv_create(&c, 'd', 1, 2, huge, y), -5, "2147483647");
    const Shape big(7, 10000);
    expect_sentence(orv_conv_create(&c, 'd', 1, 7, big.data(), big.data()), -6, "addresses");
    EXPECT_EQ(c, nullptr);
    ProbeScope memory;
    memory->fail_all = true;
    EXPECT_EQ(orv_conv_create(&c, 'd', 1, 2, x, y), ORV_NO_MEMORY);
    EXPECT_EQ(c, nullptr);
}

TEST(Conv, refuses_direct_sums_of_arrays_whose_strides_are_beyond_32_bits)
{
    Conv c('d', ORV_CONV_CONVOLUTION, {2, 2, 2}, {50000, 50000, 3});
    ASSERT_EQ(orv_conv_set(c, ORV_CONV_ROUTE, ORV_CONV_DIRECT), ORV_OK);
    double nothing = 0;
    expect_sentence(orv_conv_run(c, &nothing, &nothing, &nothing), ORV_UNSUPPORTED, "ORV_CONV_TRANSFORM");
}

TEST(Conv, keeps_settings_and_refuses_others)
{
    Conv c('S', ORV_CONV_CORRELATION, {3}, {5});
    EXPECT_EQ(c.get(ORV_CONV_JOB), ORV_CONV_CORRELATION);
    for (const int setting : {ORV_CONV_SIZE, ORV_CONV_ROUTE, ORV_CONV_DOUBLE_SUMS}) EXPECT_EQ(c.get(setting), 0);
    for (const int value : {1, 0}) {
        for (const int setting : {ORV_CONV_SIZE, ORV_CONV_ROUTE, ORV_CONV_DOUBLE_SUMS}) {
            ASSERT_EQ(orv_conv_set(c, setting, value), ORV_OK);
            EXPECT_EQ(c.get(setting), value);
        }
    }
    expect_sentence(orv_conv_set(c, ORV_CONV_SIZE, 3), -3, "ORV_CONV_VALID");
    expect_sentence(orv_conv_set(c, ORV_CONV_ROUTE, -1), -3, "ORV_CONV_DIRECT");
    expect_sentence(orv_conv_set(c, ORV_CONV_DOUBLE_SUMS, 2), -3, "0 or 1");
    expect_sentence(orv_conv_set(c, ORV_CONV_JOB, 1), -2, "nothing that can be set");
    EXPECT_EQ(orv_conv_set(nullptr, ORV_CONV_SIZE, 0), -1);
    i64 value = 7;
    EXPECT_EQ(orv_conv_get(nullptr, ORV_CONV_SIZE, &value), -1);
    EXPECT_EQ(orv_conv_get(c, 99, &value), -2);
    EXPECT_EQ(orv_conv_get(c, ORV_CONV_SIZE, nullptr), -3);
    EXPECT_EQ(value, 7);
}

TEST(Conv, copies_are_independent)
{
    Conv c('d', ORV_CONV_CONVOLUTION, {3}, {5});
    orv_conv_set(c, ORV_CONV_SIZE, ORV_CONV_SAME);
    orv_conv* copy = nullptr;
    ASSERT_EQ(orv_conv_copy(&copy, c), ORV_OK);
    orv_conv_set(c, ORV_CONV_SIZE, ORV_CONV_VALID);
    i64 shape = 0;
    orv_conv_get_outputs(copy, &shape, nullptr);
    EXPECT_EQ(shape, 5);
    orv_conv_free(copy);
    EXPECT_EQ(orv_conv_copy(nullptr, c), -1);
    EXPECT_EQ(orv_conv_copy(&copy, nullptr), -2);
    orv_conv_free(nullptr);
}

TEST(Conv, runs_with_strides_and_a_fixed_operand)
{
    const double x[] = {1, 0, 2, 0, 3}, y[] = {10, 20, 30};
    std::vector<double> z(9, -1);
    Conv c('d', ORV_CONV_CONVOLUTION, {3}, {3});
    const i64 two = 2, back = -1, minus_two = -2, zero = 0, wide = i64{1} << 31;
    ASSERT_EQ(orv_conv_set_strides(c, &two, &back, &minus_two), ORV_OK);
    expect_sentence(orv_conv_run(c, nullptr, y, z.data()), -2, "orv_conv_set_fixed");
    ASSERT_EQ(orv_conv_set_fixed(c, x), ORV_OK);
    ASSERT_EQ(orv_conv_run(c, nullptr, y, z.data()), ORV_OK);
    // (1 2 3) * (30 20 10), backwards in every second place
    EXPECT_EQ(z, (std::vector<double>{30, -1, 80, -1, 140, -1, 80, -1, 30}));
    EXPECT_EQ(orv_conv_run(nullptr, x, y, z.data()), -1);
    EXPECT_EQ(orv_conv_run(c, x, nullptr, z.data()), -3);
    EXPECT_EQ(orv_conv_run(c, x, y, nullptr), -4);
    EXPECT_EQ(orv_conv_set_strides(nullptr, nullptr, nullptr, nullptr), -1);
    EXPECT_EQ(orv_conv_set_strides(c, &wide, nullptr, nullptr), -2);
    expect_sentence(orv_conv_set_strides(c, nullptr, nullptr, &zero), -4, "share a place");
    EXPECT_EQ(orv_conv_set_strides(c, nullptr, &zero, nullptr), ORV_OK); // 10 three times
    ASSERT_EQ(orv_conv_run(c, y, y, z.data()), ORV_OK);
    EXPECT_EQ(z[0], 100);
    EXPECT_EQ(z[2], 600);
}

// The same problem on both routes, as the names of the kernels tell.
template <class T> std::vector<T> computed(Conv& c, int route, const std::vector<T>& x, const std::vector<T>& y)
{
    EXPECT_EQ(orv_conv_set(c, ORV_CONV_ROUTE, route), ORV_OK);
    i64 count = 1;
    for (const i64 n : c.shape()) count *= n;
    std::vector<T> z(static_cast<std::size_t>(count));
    EXPECT_EQ(orv_conv_run(c, x.data(), y.data(), z.data()), ORV_OK) << orv_last_error();
    return z;
}

TEST(Conv, tells_its_route_and_its_kernel)
{
    const auto x = random_elements<float>(12, 1), y = random_elements<float>(200, 2);
    Conv line('s', ORV_CONV_CORRELATION, {12}, {200}), plane('s', ORV_CONV_CONVOLUTION, {4, 3}, {20, 10});
    const auto kernel = [] { return std::string(orv_conv_kernel()).substr(sizeof "orv_conv"); };
    const auto ends_with = [&](const char* end) { return kernel().ends_with(end); };
    computed(line, ORV_CONV_DIRECT, x, y);
    EXPECT_TRUE(ends_with("_ssdirect_1d_corr_de")) << kernel();
    EXPECT_NE(kernel_address("conv", "ssdirect_1d_corr_de"), nullptr);
    EXPECT_EQ(line.get(ORV_CONV_ROUTE_TAKEN), ORV_CONV_DIRECT);
    computed(plane, ORV_CONV_TRANSFORM, x, y);
    orv_dft* transform = nullptr; // of the same kind
    const i64 lengths[] = {32, 16};
    ASSERT_EQ(orv_dft_create(&transform, ORV_DFT_SINGLE, ORV_DFT_REAL, 2, lengths), ORV_OK);
    orv_dft_set(transform, ORV_DFT_THREADS, 1);
    ASSERT_EQ(orv_dft_commit(transform), ORV_OK);
    const auto words = [](const std::string& method) { return method.substr(0, method.find(';')); };
    EXPECT_EQ(words(orv_conv_kernel()), words(orv_dft_method(transform)));
    orv_dft_free(transform);
    EXPECT_EQ(plane.get(ORV_CONV_ROUTE_TAKEN), ORV_CONV_TRANSFORM);
    orv_conv_set(plane, ORV_CONV_DOUBLE_SUMS, 1);
    computed(plane, ORV_CONV_DIRECT, x, y);
    EXPECT_TRUE(ends_with("_sddirect_all_conv_de")) << kernel();
    EXPECT_EQ(orv_conv_threads(), 1);
}

TEST(Conv, takes_direct_sums_for_short_operands_and_transforms_for_long_ones)
{
    const auto route = [](char type, const Shape& x, const Shape& y) {
        return Conv(type, ORV_CONV_CONVOLUTION, x, y).get(ORV_CONV_ROUTE_TAKEN);
    };
    for (const char type : {'s', 'd', 'c', 'z'}) {
        EXPECT_EQ(route(type, {3}, {100000}), ORV_CONV_DIRECT) << type;
        EXPECT_EQ(route(type, {100000}, {3}), ORV_CONV_DIRECT) << type;
        EXPECT_EQ(route(type, {10000}, {100000}), ORV_CONV_TRANSFORM) << type;
        EXPECT_EQ(route(type, {3, 3}, {1000, 1000}), ORV_CONV_DIRECT) << type;
        EXPECT_EQ(route(type, {200, 200}, {1000, 1000}), ORV_CONV_TRANSFORM) << type;
        EXPECT_EQ(route(type, {2, 2, 2}, {50, 50, 50}), ORV_CONV_DIRECT) << type;
    }
}

TEST(Conv, sums_singles_in_double_if_asked)
{
    // 1 is lost beside 2^25 in single precision.
    const std::vector<float> x{1, 1, 1}, y{0x1p25f, 1, -0x1p25f};
    Conv c('s', ORV_CONV_CONVOLUTION, {3}, {3});
    for (const int route : {ORV_CONV_DIRECT, ORV_CONV_TRANSFORM}) {
        orv_conv_set(c, ORV_CONV_DOUBLE_SUMS, 1);
        EXPECT_EQ(computed(c, route, x, y)[2], 1);
        orv_conv_set(c, ORV_CONV_DOUBLE_SUMS, 0);
        EXPECT_EQ(computed(c, route, x, y)[2], 0);
    }
}

template <class T> double norm(const std::vector<T>& v)
{
    double squares = 0;
    for (const T& e : v) {
        if constexpr (is_complex<T>) squares += double{e.re} * e.re + double{e.im} * e.im;
        else squares += double{e} * e;
    }
    return std::sqrt(squares);
}

// Both routes, outputs every `step` apart, all arrays backwards or forwards.
template <class T> void expect_routes_agree(int job, const Shape& nx, const Shape& ny, i64 step, bool backwards)
{
    Conv c(letter<T>, job, nx, ny);
    const Shape steps(nx.size(), step);
    ASSERT_EQ(orv_conv_set_outputs(c, nullptr, nullptr, steps.data()), ORV_OK);
    std::vector<Shape> strides;
    std::vector<std::vector<T>> operands;
    for (const Shape& shape : {nx, ny, c.shape()}) {
        i64 room = 1;
        strides.emplace_back();
        for (const i64 n : shape) strides.back().push_back(backwards ? -room : room), room *= n;
        operands.push_back(random_elements<T>(room, strides.size()));
    }
    ASSERT_EQ(orv_conv_set_strides(c, strides[0].data(), strides[1].data(), strides[2].data()), ORV_OK);
    const auto direct = computed(c, ORV_CONV_DIRECT, operands[0], operands[1]);
    const auto transformed = computed(c, ORV_CONV_TRANSFORM, operands[0], operands[1]);
    const double allowed = 200 * std::numeric_limits<real_t<T>>::epsilon() * norm(operands[0]) * norm(operands[1]);
    for (std::size_t i = 0; i < direct.size(); ++i)
        ASSERT_LE(norm(std::vector<T>{direct[i] - transformed[i]}), allowed) << letter<T> << job << " at " << i;
}

TEST(Conv, has_the_same_outputs_through_transforms_of_parts)
{
    for (const int job : {ORV_CONV_CONVOLUTION, ORV_CONV_CORRELATION})
        for (const bool backwards : {false, true})
            for (const i64 step : {1, 3}) {
                expect_routes_agree<double>(job, {9, 7}, {600, 70}, step, backwards);
                expect_routes_agree<float>(job, {9, 7}, {70, 600}, step, backwards);
                expect_routes_agree<cpx<double>>(job, {600, 70}, {9, 7}, step, backwards);
                expect_routes_agree<cpx<float>>(job, {3, 2, 3}, {150, 9, 10}, step, backwards);
                expect_routes_agree<double>(job, {100}, {400000}, step, backwards);
                expect_routes_agree<float>(job, {400000}, {100}, step, backwards);
            }
}

// Small work is worth a team while this lives.
struct Eager {
    Eager() { orv_team_set_eagerness(1e9); }
    ~Eager() { orv_team_set_eagerness(1); }
};

template <class T> void expect_same_on_threads(const Shape& nx, const Shape& ny, int route)
{
    i64 x_count = 1, y_count = 1;
    for (const i64 n : nx) x_count *= n;
    for (const i64 n : ny) y_count *= n;
    const auto x = random_elements<T>(x_count, 1), y = random_elements<T>(y_count, 2);
    for (const int job : {ORV_CONV_CONVOLUTION, ORV_CONV_CORRELATION})
        for (const bool backwards : {false, true}) {
            Conv c(letter<T>, job, nx, ny);
            const Shape step(nx.size(), 2);
            if (backwards) orv_conv_set_outputs(c, nullptr, nullptr, step.data());
            Shape strides;
            i64 room = 1;
            for (const i64 n : c.shape()) strides.push_back(backwards ? -room : room), room *= n;
            ASSERT_EQ(orv_conv_set_strides(c, nullptr, nullptr, strides.data()), ORV_OK);
            orv_set_thread_num_threads(1);
            const auto alone = computed(c, route, x, y);
            for (const int threads : {2, 3, 5}) {
                orv_set_thread_num_threads(threads);
                const auto together = computed(c, route, x, y);
                if (route == ORV_CONV_DIRECT) {
                    EXPECT_GT(orv_conv_threads(), 1);
                }
                EXPECT_TRUE(same_bits(together, alone)) << letter<T> << nx.size() << " on " << threads;
                EXPECT_EQ(orv_get_num_threads(), threads);
            }
            orv_set_thread_num_threads(0);
        }
}

TEST(Conv, has_the_same_bits_on_any_number_of_threads)
{
    const Eager eager;
    const auto all = [](const Shape& x, const Shape& y, int route) {
        expect_same_on_threads<float>(x, y, route), expect_same_on_threads<double>(x, y, route);
        expect_same_on_threads<cpx<float>>(x, y, route), expect_same_on_threads<cpx<double>>(x, y, route);
    };
    for (const int route : {ORV_CONV_DIRECT, ORV_CONV_TRANSFORM}) {
        all({7}, {300}, route);
        all({5, 6}, {90, 70}, route);
        expect_same_on_threads<double>({5, 6}, {300, 2}, route);
        all({3, 3, 2}, {20, 10, 9}, route);
        expect_same_on_threads<float>({2, 3, 2, 2}, {7, 5, 6, 1}, route);
    }
    expect_same_on_threads<double>({40, 40}, {250, 200}, ORV_CONV_TRANSFORM);
    expect_same_on_threads<float>({9, 7}, {600, 70}, ORV_CONV_TRANSFORM);
    expect_same_on_threads<float>({300}, {400000}, ORV_CONV_TRANSFORM);
}

// Of 4 and 9 elements, of which some stand beside an edge.
TEST(Conv, has_nan_in_the_outputs_that_meet_it_by_direct_sums_and_zeros_do_not_stop_it)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const int job : {ORV_CONV_CONVOLUTION, ORV_CONV_CORRELATION})
        for (i64 at = 0; at < 9; ++at) {
            const std::vector<double> x(4, 0.0);
            std::vector<double> y(9, 1.0);
            y[at] = nan;
            Conv c('d', job, {4}, {9});
            const auto z = computed(c, ORV_CONV_DIRECT, x, y);
            for (i64 j = 0; j < 12; ++j) {
                const i64 t = j + c.start()[0], k = job == ORV_CONV_CONVOLUTION ? t - at : at - t;
                EXPECT_EQ(std::isnan(z[j]), k >= 0 && k < 4) << job << " " << at << " " << j;
            }
            const auto through = computed(c, ORV_CONV_TRANSFORM, x, y); // so short that there are no parts
            for (const double element : through) EXPECT_TRUE(std::isnan(element));
        }
}

TEST(Conv, is_told_when_memory_is_refused)
{
    const auto x = random_elements<double>(450, 1), y = random_elements<double>(600, 2);
    for (const int route : {ORV_CONV_DIRECT, ORV_CONV_TRANSFORM}) {
        std::vector<double> z;
        each_allocation_fails(
            [&] {
                z.assign(54 * 37, 7);
                orv_conv* c = nullptr;
                const i64 nx[] = {25, 18}, ny[] = {30, 20}; // too close to each other for parts
                orv_status status = orv_conv_create(&c, 'd', ORV_CONV_CONVOLUTION, 2, nx, ny);
                if (status == ORV_OK) {
                    orv_conv_set(c, ORV_CONV_ROUTE, route);
                    status = orv_conv_run(c, x.data(), y.data(), z.data());
                }
                orv_conv_free(c);
                if (status == ORV_OK) return;
                EXPECT_EQ(status, ORV_NO_MEMORY);
                EXPECT_EQ(z, std::vector<double>(54 * 37, 7));
            },
            [] {});
    }
}

TEST(Conv, keeps_its_transforms_until_a_setting_changes)
{
    const auto x = random_elements<float>(300, 1), y = random_elements<float>(2000, 2);
    Conv c('s', ORV_CONV_CONVOLUTION, {300}, {2000});
    const auto objects = [&] { // of the service layer that outlive a call
        ProbeScope memory;
        computed(c, ORV_CONV_TRANSFORM, x, y); // sets the route, and with that drops them
        const i64 made = memory->live;
        std::vector<float> z(2299);
        EXPECT_EQ(orv_conv_run(c, x.data(), y.data(), z.data()), ORV_OK);
        EXPECT_EQ(memory->live, made);
        EXPECT_EQ(orv_conv_run(c, x.data(), y.data(), z.data()), ORV_OK);
        EXPECT_EQ(memory->live, made);
        return made;
    };
    EXPECT_GT(objects(), 0);
    const auto full = computed(c, ORV_CONV_TRANSFORM, x, y);
    const i64 start = 100, step = 7;
    ASSERT_EQ(orv_conv_set_outputs(c, &start, nullptr, &step), ORV_OK);
    const auto some = computed(c, ORV_CONV_TRANSFORM, x, y);
    for (std::size_t i = 0; i < some.size(); ++i) ASSERT_NEAR(some[i], full[100 + 7 * i], 1e-3) << i;
}

TEST(Conv, may_be_run_by_several_threads_from_the_first_time_on)
{
    const auto x = random_elements<cpx<double>>(200, 1), y = random_elements<cpx<double>>(1000, 2);
    const auto expected = [&] {
        Conv c('z', ORV_CONV_CORRELATION, {200}, {1000});
        return computed(c, ORV_CONV_TRANSFORM, x, y);
    }();
    for (int round = 0; round < 20; ++round) {
        Conv c('z', ORV_CONV_CORRELATION, {200}, {1000});
        ASSERT_EQ(orv_conv_set(c, ORV_CONV_ROUTE, ORV_CONV_TRANSFORM), ORV_OK);
        std::vector<std::vector<cpx<double>>> z(4, std::vector<cpx<double>>(expected.size()));
        std::vector<std::thread> threads;
        for (auto& own : z)
            threads.emplace_back([&] { EXPECT_EQ(orv_conv_run(c, x.data(), y.data(), own.data()), ORV_OK); });
        for (auto& thread : threads) thread.join();
        for (const auto& own : z) EXPECT_TRUE(same_bits(own, expected));
    }
}

TEST(ConvOnce, is_that_of_a_problem_of_the_same_shapes)
{
    const auto x = random_elements<double>(12, 1), y = random_elements<double>(60, 2);
    Conv line('d', ORV_CONV_CONVOLUTION, {12}, {60}), plane('d', ORV_CONV_CORRELATION, {4, 3}, {10, 6});
    for (const int size : {ORV_CONV_FULL, ORV_CONV_SAME, ORV_CONV_VALID}) {
        orv_conv_set(line, ORV_CONV_SIZE, size), orv_conv_set(plane, ORV_CONV_SIZE, size);
        const auto of_line = computed(line, ORV_CONV_AUTOMATIC, x, y),
                   of_plane = computed(plane, ORV_CONV_AUTOMATIC, x, y);
        auto z = of_line;
        std::fill(z.begin(), z.end(), 0);
        ASSERT_EQ(orv_convolve_d(12, x.data(), 60, y.data(), size, z.data()), ORV_OK);
        EXPECT_EQ(z, of_line);
        z.assign(of_plane.size(), 0);
        ASSERT_EQ(orv_correlate2_d(3, 4, x.data(), 6, 10, y.data(), size, z.data()), ORV_OK);
        EXPECT_EQ(z, of_plane);
    }
}

TEST(ConvOnce, refuses_arguments_by_their_numbers)
{
    const double x[4] = {}, y[4] = {};
    double z[16];
    EXPECT_EQ(orv_convolve_d(0, x, 4, y, 0, z), -1);
    EXPECT_EQ(orv_convolve_d(4, nullptr, 4, y, 0, z), -2);
    EXPECT_EQ(orv_convolve_d(4, x, -1, y, 0, z), -3);
    EXPECT_EQ(orv_convolve_d(4, x, 4, nullptr, 0, z), -4);
    expect_sentence(orv_correlate_d(4, x, 4, y, 3, z), -5, "orv_correlate_d");
    EXPECT_EQ(orv_convolve_d(4, x, 4, y, 0, nullptr), -6);
    EXPECT_EQ(orv_convolve2_d(0, 2, x, 2, 2, y, 0, z), -1);
    EXPECT_EQ(orv_convolve2_d(2, 0, x, 2, 2, y, 0, z), -2);
    EXPECT_EQ(orv_convolve2_d(2, 2, nullptr, 2, 2, y, 0, z), -3);
    EXPECT_EQ(orv_convolve2_d(2, 2, x, 0, 2, y, 0, z), -4);
    EXPECT_EQ(orv_convolve2_d(2, 2, x, 2, 0, y, 0, z), -5);
    EXPECT_EQ(orv_convolve2_d(2, 2, x, 2, 2, nullptr, 0, z), -6);
    EXPECT_EQ(orv_convolve2_d(2, 2, x, 2, 2, y, -1, z), -7);
    EXPECT_EQ(orv_convolve2_d(2, 2, x, 2, 2, y, 0, nullptr), -8);
}

} // namespace
} // namespace orv::test
