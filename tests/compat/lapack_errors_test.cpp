// What liborv_lapack says of bad arguments, and of what it leaves to a library behind it where there is none.
#include "tests/compat/lapack.h"
#include "tests/support/sanitized.h"

#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <sys/wait.h>

namespace orv::test {
namespace {

// A call whose letters and integers can be made bad, one at a time. Of its integers those below zero are the leading
// dimensions, as small as they may be; 0 stands for an array.
struct Call {
    std::string name, letters;
    std::vector<int> integers;
    bool has_info;
};
using Outcome = std::pair<std::vector<Report>, i32>;

// Argument `bad` gets the value, or another letter.
Outcome outcome(Library library, const std::string& name, const Call& c, std::size_t bad, i32 value)
{
    std::string letters = c.letters;
    std::vector<i32> integers;
    for (const int i : c.integers) integers.push_back(std::abs(i));
    if (bad < letters.size()) letters[bad] = 'Q';
    else integers[bad - letters.size()] = value;
    std::vector<double> array(100);
    i32 info = 77;
    std::vector<void*> p;
    for (char& letter : letters) p.push_back(&letter);
    for (std::size_t i = 0; i < integers.size(); ++i)
        p.push_back(c.integers[i] == 0 ? static_cast<void*>(array.data()) : &integers[i]);
    if (c.has_info) p.push_back(&info);
    p.resize(20);
    using V = void*;
    using F = void(V, V, V, V, V, V, V, V, V, V, V, V, V, V, V, V, V, V, V, V);
    reinterpret_cast<F*>(dlsym(library.handle, name.c_str()))(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8],
                                                              p[9], p[10], p[11], p[12], p[13], p[14], p[15], p[16],
                                                              p[17], p[18], p[19]);
    return {take_reports(), info};
}

TEST_F(Lapack, reports_bad_arguments_as_the_reference_does)
{
    const Call calls[] = {
        {"potrf", "U", {3, 0, -3}, true},
        {"potrf2", "L", {3, 0, -3}, true},
        {"sytrf", "L", {3, 0, -3, 0, 0, 1}, true},
        {"gtsv", "", {3, 2, 0, 0, 0, 0, -3}, true},
        {"gttrs", "T", {3, 2, 0, 0, 0, 0, 0, 0, -3}, true},
        {"pttrs", "", {3, 2, 0, 0, 0, -3}, true},
        {"pttrs", "U", {3, 2, 0, 0, 0, -3}, true},
        {"lasr", "LVF", {3, 2, 0, 0, 0, -3}, false},
        {"lasd3", "", {2, 2, 1, 3, 0, 0, -3, 0, 0, -5, 0, -5, 0, -6, 0, -6, 0, 0, 0}, true},
    };
    for (const Call& c : calls)
        for (const char type : {'s', 'd', 'c', 'z'}) {
            const std::string name = type + c.name + '_';
            const bool is_complex_type = type == 'c' || type == 'z';
            if (dlsym(ours().handle, name.c_str()) == nullptr) continue;
            if (c.name == "pttrs" && is_complex_type == c.letters.empty()) continue;
            for (std::size_t bad = 0; bad < c.letters.size() + c.integers.size(); ++bad) {
                const int good = bad < c.letters.size() ? 1 : c.integers[bad - c.letters.size()];
                for (const i32 value : {-1, good < 0 ? -good - 1 : -2}) {
                    if (good == 0) continue;
                    const Outcome mine = outcome(ours(), name, c, bad, value),
                                  other = outcome(theirs(), name, c, bad, value);
                    EXPECT_EQ(mine, other) << name << ' ' << bad << " = " << value;
                    const bool asks =
                        c.name == "sytrf" && value == -1 && bad + 1 == c.letters.size() + c.integers.size();
                    EXPECT_EQ(mine.first.size(), asks ? 0u : 1u) << name << ' ' << bad << " = " << value;
                }
            }
        }
    const i32 none = 0, one = 1;
    const cpx<float> alpha = {1, 0};
    call<void>(ours(), "cspr_", "U", &one, &alpha, &alpha, &none, &alpha);
    call<void>(ours(true), "zspr_", "U", &one, &alpha, &alpha, &none, &alpha);
    EXPECT_EQ(take_reports(), (std::vector<Report>{{"xerbla_", "CSPR  ", 5, ""}, {"xerbla_64_", "ZSPR  ", 5, ""}}));
}

// Programs whose system has no LAPACK.
struct Ended {
    std::string said; // on standard output and standard error
    int status;
};
Ended ended(const std::string& command)
{
    std::FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
    Ended result;
    for (int c; (c = std::fgetc(pipe)) != EOF;) result.said += static_cast<char>(c);
    result.status = WEXITSTATUS(pclose(pipe));
    return result;
}

TEST(LapackAlone, what_no_kernel_covers_stops_the_program)
{
    if (sanitized()) GTEST_SKIP() << "the sanitizer has a dlopen of its own";
    const Ended program = ended(ALONE);
    EXPECT_EQ(program.said,
              "0 2\n"
              "2 -1 4 -3\n" // a quarter turn
              "orv: DLASR was not carried out: liborv_lapack leaves these arguments to the LAPACK behind it, and there "
              "is none: link the program with one, or install it\n");
    EXPECT_EQ(program.status, EXIT_FAILURE);
}

TEST(LapackAlone, a_bad_argument_stops_the_program)
{
    if (sanitized()) GTEST_SKIP() << "the sanitizer has a dlopen of its own";
    const Ended program = ended(ALONE " bad");
    EXPECT_EQ(program.said, " ** On entry to DLASR parameter number  4 had an illegal value\n");
    EXPECT_EQ(program.status, EXIT_FAILURE);
}

TEST(LapackAlone, an_error_routine_of_the_program_hears_of_both_by_numbers_that_tell_them_apart)
{
    if (sanitized()) GTEST_SKIP() << "the sanitizer has a dlopen of its own";
    const Ended program = ended(ALONE_OWN_ERRORS " bad");
    EXPECT_EQ(program.said, "mine: DLASR  4\n"
                            "0 2\n"
                            "2 -1 4 -3\n"
                            "mine: DLASR  1000\n"
                            "mine: DLASR  1000 of 64 bits\n"
                            "2 -1 4 -3\n");
    EXPECT_EQ(program.status, 0);
}

// 1001: 1000 and ORV_NO_BRANCH.
TEST(LapackAlone, without_kernels_info_is_no_success_and_norms_are_no_numbers)
{
    if (sanitized()) GTEST_SKIP() << "the sanitizer has a dlopen of its own";
    const Ended program = ended("ORV_BRANCH_PATH=/nowhere/kernels.so " ALONE_OWN_ERRORS);
    EXPECT_EQ(program.said, "mine: DPOTRF 1001\n"
                            "mine: DLANGE 1001\n"
                            "-1001 nan\n"
                            "mine: DLASR  1001\n"
                            "1 2 3 4\n"
                            "mine: DLASR  1001\n"
                            "mine: DLASR  1001 of 64 bits\n"
                            "1 2 3 4\n");
    const Ended stopped = ended("ORV_BRANCH_PATH=/nowhere/kernels.so " ALONE);
    EXPECT_TRUE(stopped.said.starts_with("orv: DPOTRF was not carried out: the library of kernels cannot be opened "))
        << stopped.said;
    EXPECT_EQ(stopped.status, EXIT_FAILURE);
}

} // namespace
} // namespace orv::test
