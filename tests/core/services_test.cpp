#include "frame/serv.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <orv/orv.h>
#include <random>
#include <string>

using orv::i32;
using orv::i64;

namespace {

std::string reported_routine;
int reported_argument;
void report(const char* routine, int argument) { reported_routine = routine, reported_argument = argument; }

} // namespace

TEST(Services, tell_a_null_pointer)
{
    const int something = 0;
    EXPECT_EQ(orv_serv_check_ptr(&something, "xdgemm", 6), 0);
    EXPECT_NE(orv_serv_check_ptr(nullptr, "xdgemm", 6), 0);
}

TEST(Services, compare_letters_but_for_case)
{
    for (int a = 0; a < 256; ++a)
        for (int b = 0; b < 256; ++b) {
            const char x = static_cast<char>(a), y = static_cast<char>(b);
            const bool letter = a < 128 && std::isalpha(a);
            const bool same = a == b || (letter && b < 128 && std::toupper(a) == std::toupper(b));
            ASSERT_EQ(orv_serv_lsame(&x, &y, 1, 1) != 0, same) << a << " " << b;
        }
}

TEST(Services, record_a_bad_argument_in_silence)
{
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    const i64 position = -4;
    orv_serv_xerbla("DLASD3extra", &position, 6);
    EXPECT_EQ(testing::internal::GetCapturedStderr() + testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(std::string(orv_last_error()).substr(0, 18), "DLASD3: argument 4");
}

TEST(Services, hand_a_bad_argument_to_the_users_handler)
{
    EXPECT_EQ(orv_set_argument_handler(report), nullptr);
    for (const i64 position : {-2, 3}) { // negated or not
        orv_serv_xerbla("SLASD3", &position, 6);
        EXPECT_EQ(reported_routine, "SLASD3");
        EXPECT_EQ(reported_argument, std::abs(position));
    }
    EXPECT_EQ(orv_set_argument_handler(nullptr), report);
}

TEST(Services, tell_the_reproducibility_state)
{
    ASSERT_EQ(orv_get_reproducible(), 0);
    EXPECT_EQ(orv_serv_cbwr_get(1), 1);
    orv_set_reproducible(1);
    EXPECT_NE(orv_serv_cbwr_get(1), 1);
    EXPECT_EQ(orv_get_reproducible(), 1);
    orv_set_reproducible(0);
    EXPECT_EQ(orv_serv_cbwr_get(1), 1);
}

TEST(Services, tell_the_caches_of_the_processor)
{
    orv_processor p;
    orv_get_processor(&p);
    i32 entries[orv_serv_cache_entries];
    std::fill(std::begin(entries), std::end(entries), -77);
    orv_serv_cache_info(entries);
    EXPECT_EQ(entries[0] > 0, p.l1_data_cache > 0 && p.last_cache > 0);
    EXPECT_EQ(entries[1], p.l1_data_cache);
    EXPECT_EQ(entries[2], p.l2_cache);
    EXPECT_EQ(entries[3], p.last_cache);
    EXPECT_EQ(entries[4], -77);
    EXPECT_EQ(orv_serv_get_cache_size(0), p.last_cache);
}

TEST(Services, tell_no_processor_that_kernels_treat_specially)
{
    EXPECT_NE(orv_serv_get_microarchitecture(), 0x42);
    EXPECT_NE(orv_serv_cpu_detect(), 4);
}

TEST(Services, transfer_signs)
{
    const double values[] = {0.0, -0.0, 1.5, -1.5, INFINITY, -INFINITY, NAN, -NAN, 5e-324};
    for (double a : values)
        for (double b : values) {
            const double d = orv_serv_d_sign(&a, &b);
            EXPECT_EQ(std::signbit(d), std::signbit(b));
            EXPECT_TRUE(std::fabs(d) == std::fabs(a) || (std::isnan(d) && std::isnan(a)));
            const float fa = static_cast<float>(a), fb = static_cast<float>(b), f = orv_serv_s_sign(&fa, &fb);
            EXPECT_EQ(std::signbit(f), std::signbit(fb));
            EXPECT_TRUE(std::fabs(f) == std::fabs(fa) || (std::isnan(f) && std::isnan(fa)));
        }
}

TEST(Services, give_sine_and_cosine_at_once)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> angles(-100, 100);
    for (int i = 0; i < 1000; ++i) {
        volatile double angle = i == 0 ? -0.0 : angles(random); // volatile: two calls, not one of sincos
        double sine, cosine;
        orv_serv_libm_sincos(angle, &sine, &cosine);
        ASSERT_NEAR(sine, std::sin(static_cast<long double>(angle)), 1.2e-16);
        ASSERT_NEAR(cosine, std::cos(static_cast<long double>(angle)), 1.2e-16);
        const float narrow = static_cast<float>(angle);
        float fsine, fcosine;
        orv_serv_libm_sincosf(narrow, &fsine, &fcosine);
        ASSERT_NEAR(fsine, std::sin(static_cast<double>(narrow)), 6e-8);
        ASSERT_NEAR(fcosine, std::cos(static_cast<double>(narrow)), 6e-8);
    }
}

TEST(Services, print_numbered_messages_where_they_are_told)
{
    EXPECT_STREQ(orv_serv_get_msg(408, 1, 2), "the log file %s cannot be opened");
    EXPECT_STREQ(orv_serv_get_msg(-5), "this message has no text");
    testing::internal::CaptureStdout();
    orv_serv_print(1, 408, 1, "some.log");
    orv_serv_format_print(1, "%.4s|%d\n", 2, "abcdef", 7);
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "the log file some.log cannot be opened\nabcd|7\n");
    testing::internal::CaptureStderr();
    orv_serv_print(2, 409, 0);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}

TEST(Services, write_the_version_within_the_buffer)
{
    char buffer[200];
    for (int size : {0, 1, 8, 198}) {
        std::memset(buffer, '#', sizeof buffer);
        orv_serv_get_version_string_c(buffer, size);
        for (std::size_t i = size; i < sizeof buffer; ++i) ASSERT_EQ(buffer[i], '#');
        EXPECT_TRUE(size == 0 || strnlen(buffer, size) < static_cast<std::size_t>(size));
    }
    EXPECT_NE(std::string(buffer).find(std::string("orv ") + orv_version()), std::string::npos);
}

TEST(Status, has_a_text_for_every_code)
{
    const std::string unknown = orv_status_text(9999);
    for (orv_status status = ORV_OK; status <= ORV_INTERNAL_ERROR; ++status)
        EXPECT_NE(orv_status_text(status), unknown);
    EXPECT_NE(orv_status_text(-3), unknown);
}
