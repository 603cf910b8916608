// Diagnostics of sine and cosine transforms: their lines in both wordings, where they go, and when there are none.
#include "tests/pde/messages.h"
#include "tests/pde/trig.h"
#include "tests/support/probe.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace orv::test {
namespace {

using namespace pdett;

constexpr const char* log_name = "ORV_Trig_Transforms_Log.txt";

// The whole of a diagnostic: the heading, the class and its lines.
std::string whole(bool error, const std::string& lines)
{
    return "\n" + message(396) + message(error ? 397 : 398) + lines + "\n\n";
}
std::string rest(int first, int last)
{
    std::string lines;
    for (int number = first; number <= last; ++number) lines += message(number);
    return lines;
}

template <class T> class TrigMessages : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(TrigMessages, Reals);

// Runs the case silently, on standard output and into the log, in both languages; all of it has to be as told.
template <class T, class Case, class Expected> void expect_everywhere(i64 kind, i64 n, Case run, Expected expected)
{
    for (const bool fortran : {false, true})
        for (const i64 channel : {-1, 0, 1}) {
            InFolder folder;
            Trig<T> trig(kind, n);
            trig.ipar[ipar_errors] = trig.ipar[ipar_warnings] = channel;
            trig.ipar[ipar_language] = !fortran;
            const std::string printed = shown([&] { run(trig); });
            const std::string should = expected(fortran ? -39 : 0);
            EXPECT_EQ(printed, channel > 0 ? should : "");
            EXPECT_EQ(log_in_folder(log_name), channel < 0 ? should : "");
            EXPECT_EQ(fs::exists(log_name), channel < 0 && !should.empty());
        }
}

TYPED_TEST(TrigMessages, tell_why_a_commit_is_refused)
{
    using T = TypeParam;
    const std::vector<T> f(9, T(0));
    expect_everywhere<T>(
        0, 8, [&](auto& trig) { trig.ipar[ipar_status] = 11, trig.commit(f.data()); },
        [](int shift) { return whole(true, message(449 + shift, 11LL) + rest(450, 450)); });
    expect_everywhere<T>(
        0, 8, [&](auto& trig) { trig.ipar[ipar_n] = -3, trig.commit(f.data()); },
        [](int shift) { return whole(true, message(451 + shift, -3LL) + rest(452, 452)); });
    expect_everywhere<T>(
        0, 8, [&](auto& trig) { trig.ipar[ipar_kind] = 9, trig.commit(f.data()); },
        [](int shift) { return whole(true, message(453 + shift, 9LL) + rest(454, 456)); });
}

TYPED_TEST(TrigMessages, tell_why_a_run_is_refused)
{
    using T = TypeParam;
    for (const bool forward : {true, false}) {
        const auto run = [forward](auto& trig) {
            std::vector<T> f(9, T(0));
            forward ? trig.forward(f.data()) : trig.backward(f.data());
        };
        expect_everywhere<T>(
            1, 8, [&](auto& trig) { trig.ipar[ipar_status] = 1, run(trig); },
            [](int shift) { return whole(true, message(460) + message(461 + shift, 1LL) + rest(462, 463)); });
        expect_everywhere<T>(
            1, 8, [&](auto& trig) { trig.ipar[ipar_kind] = -1, run(trig); },
            [](int shift) { return whole(true, message(453 + shift, -1LL) + rest(454, 456)); });
        expect_everywhere<T>(
            1, 8, [&](auto& trig) { trig.ipar[ipar_n] = 0, run(trig); },
            [=](int shift) {
                return forward ? whole(true, message(464) + message(465 + shift, 0LL) + message(466)) : "";
            });
    }
}

TYPED_TEST(TrigMessages, warn_of_ends_with_the_value_and_the_tolerance)
{
    using T = TypeParam;
    struct End {
        i64 kind;
        bool last;
        int number;
    };
    for (const End& end : {End{0, false, 472}, End{0, true, 475}, End{2, true, 478}, End{3, false, 484}}) {
        std::vector<T> f(9, T(0));
        f[end.last ? 8 : 0] = T(-0.25);
        expect_everywhere<T>(
            end.kind, 8, [&](auto& trig) { EXPECT_EQ(trig.commit(f.data()), 1); },
            [&](int shift) {
                const double tolerance = T(8) * (sizeof(T) == 4 ? T(1e-05F) : T(1e-12));
                return whole(false, message(end.number + shift, "-2.500000e-01", tolerance) +
                                        rest(end.number + 1, end.number + 2));
            });
    }
}

TYPED_TEST(TrigMessages, warn_of_what_is_corrected)
{
    using T = TypeParam;
    const std::vector<T> f(9, T(0));
    const double tolerance = T(8) * (sizeof(T) == 4 ? T(1e-05F) : T(1e-12));
    expect_everywhere<T>(
        2, 8, [&](auto& trig) { trig.dpar[0] = -3, trig.commit(f.data()); },
        [&](int shift) { return whole(false, message(467 + shift, -3.0) + rest(468, 470) + message(471, tolerance)); });
    expect_everywhere<T>(
        4, 8, [&](auto& trig) { trig.ipar[ipar_threads] = -6, trig.commit(f.data()); },
        [](int shift) { return whole(false, message(481 + shift, -6LL, 1LL) + rest(482, 483)); });
}

TYPED_TEST(TrigMessages, pass_on_what_the_fourier_transform_says)
{
    using T = TypeParam;
    const auto no_memory = [](int) { return whole(true, message(487, "no memory is left for a Fourier transform")); };
    expect_everywhere<T>(
        5, 8,
        [](auto& trig) {
            ProbeScope scope;
            scope->fail_all = true;
            const std::vector<T> f(8, T(0));
            EXPECT_EQ(trig.commit(f.data()), -1000);
        },
        no_memory);
    expect_everywhere<T>(
        5, 8,
        [](auto& trig) {
            std::vector<T> f(8, T(0));
            EXPECT_EQ(trig.forward(f.data()), -1000); // was never committed
        },
        [](int) {
            return whole(true, message(487, "settings of a Fourier transform contradict each other, or it is not "
                                            "committed"));
        });
}

// Both forms by name, which speak even where an operation would be silent: then to the log.
TYPED_TEST(TrigMessages, can_be_asked_for_by_code)
{
    using T = TypeParam;
    for (const bool fortran : {false, true}) {
        auto* print = kernel<PrintDiagnostics<T>>("pdett", letter<T>, "_print_diagnostics_", fortran ? "f" : "c");
        const int shift = fortran ? -39 : 0;
        InFolder folder;
        i64 ipar[ipar_size] = {12, 0, 0, 0, 0, 4, 10, 1, !fortran, 3, 0};
        const T dpar[] = {T(0.5)};
        const auto log_of = [&](i64 code, const char* text) {
            fs::remove(log_name);
            EXPECT_EQ(shown([&] { print(&code, ipar, dpar, text); }), "");
            return log_in_folder(log_name);
        };
        EXPECT_EQ(log_of(0, nullptr), whole(true, message(449 + shift, 10LL) + message(450)));
        EXPECT_EQ(log_of(1, nullptr), whole(true, message(451 + shift, 12LL) + message(452)));
        EXPECT_EQ(log_of(3, nullptr), whole(true, message(453 + shift, 4LL) + rest(454, 456)));
        EXPECT_EQ(log_of(4, nullptr), whole(true, rest(457, 459)));
        EXPECT_EQ(log_of(303, "text"), whole(false, message(475 + shift, "text", 0.5) + rest(476, 477)));
        EXPECT_EQ(log_of(308, nullptr), whole(false, message(481 + shift, 3LL, 1LL) + rest(482, 483)));
        EXPECT_EQ(log_of(777, nullptr), whole(false, message(407)));
        EXPECT_EQ(log_of(1001, "text"), whole(true, message(487, "text")));
        // A class has a channel of its own.
        ipar[ipar_errors] = 1;
        const i64 error = 4, warning = 777;
        EXPECT_EQ(shown([&] { print(&error, ipar, dpar, nullptr); }), whole(true, rest(457, 459)));
        EXPECT_EQ(shown([&] { print(&warning, ipar, dpar, nullptr); }), "");
    }
}

TYPED_TEST(TrigMessages, cut_off_lines_that_are_too_long)
{
    using T = TypeParam;
    auto* print = kernel<PrintDiagnostics<T>>("pdett", letter<T>, "_print_diagnostics_c");
    InFolder folder;
    const i64 ipar[ipar_size] = {}, code = 1001;
    const T dpar[] = {0};
    print(&code, ipar, dpar, std::string(100000, 'x').c_str());
    const std::string log = log_in_folder(log_name);
    EXPECT_EQ(std::count(log.begin(), log.end(), 'x') + std::string(message(487, "")).size() - 1, 512);
}

TYPED_TEST(TrigMessages, are_appended_to_the_log)
{
    using T = TypeParam;
    InFolder folder;
    const std::vector<T> f(9, T(0));
    for (int time = 0; time < 3; ++time) {
        Trig<T> trig(0, 8);
        trig.ipar[ipar_errors] = -1, trig.ipar[ipar_n] = time - 2;
        trig.commit(f.data());
    }
    std::string should;
    for (const long long n : {-2, -1, 0}) should += whole(true, message(451, n) + message(452));
    EXPECT_EQ(log_in_folder(log_name), should);
}

TYPED_TEST(TrigMessages, tell_that_the_log_cannot_be_opened)
{
    using T = TypeParam;
    InFolder folder;
    folder.vanish();
    Trig<T> trig(0, 8);
    trig.ipar[ipar_errors] = trig.ipar[ipar_warnings] = -1;
    trig.ipar[ipar_n] = 1;
    std::vector<T> f(9, T(1));
    const std::string should = message(0) + message(408, log_name) + message(409);
    EXPECT_EQ(shown([&] { EXPECT_EQ(trig.commit(f.data()), -100); }), should);
    trig.ipar[ipar_n] = 8, trig.ipar[ipar_status] = 0;
    EXPECT_EQ(shown([&] { EXPECT_EQ(trig.commit(f.data()), 1); }), should + should); // two ends
}

// All other tests take texts by number from where kernels take them.
TEST(TrigWords, name_positions_as_the_language_counts_them)
{
    std::vector<double> f(9, 0);
    f[8] = -0.25;
    const auto words = [&](bool fortran, i64 kind, i64 n) {
        Trig<double> trig(kind, 8);
        trig.ipar[ipar_errors] = trig.ipar[ipar_warnings] = 1;
        trig.ipar[ipar_language] = !fortran, trig.ipar[ipar_n] = n;
        return shown([&] { trig.commit(f.data()); });
    };
    EXPECT_EQ(words(false, 0, 1), "\norv: sine and cosine transforms\n"
                                  "Error:\n"
                                  "commit: ipar[0], the size n of the transform, is 1\n"
                                  "n has to be at least 2\n\n\n");
    EXPECT_EQ(words(true, 0, 1), "\norv: sine and cosine transforms\n"
                                 "Error:\n"
                                 "commit: ipar(1), the size n of the transform, is 1\n"
                                 "n has to be at least 2\n\n\n");
    EXPECT_EQ(words(false, 2, 8), "\norv: sine and cosine transforms\n"
                                  "Warning:\n"
                                  "commit: f[n] is -2.500000e-01, and not 0 within the tolerance of 8.000000e-12\n"
                                  "sums of staggered cosines vanish at the last point:\n"
                                  "the transform will be that of an array with 0 there\n\n\n");
}

TEST(TrigWords, are_there_for_every_number_and_tell_positions_twice)
{
    const std::string none = orv_serv_get_msg(-1);
    for (int number = 396; number <= 487; ++number) {
        const bool used = number <= 398 || (number >= 407 && number <= 409) || number >= 449;
        const std::string text = orv_serv_get_msg(number);
        EXPECT_TRUE(!used || text != none) << number;
        for (const char* const array : {"ipar", "dpar", "f"}) { // a position in C has its twin in Fortran
            const std::size_t at = text.find(std::string(array) + "[");
            if (at == std::string::npos || (at > 0 && text[at - 1] != ' ')) continue;
            const std::string twin = orv_serv_get_msg(number - 39), place = text.substr(at + std::strlen(array) + 1);
            const std::string counted = place[0] == 'n' ? "n+1" : std::to_string(std::stoi(place) + 1);
            EXPECT_NE(twin.find(array + ("(" + counted) + ")"), std::string::npos) << text << " / " << twin;
        }
    }
}

} // namespace
} // namespace orv::test
