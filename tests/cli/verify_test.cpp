// `orv verify` as a user meets it: what it answers, and that it sees what is wrong.
#include "tests/support/process.h"
#include "tests/support/sanitized.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <regex>
#include <sys/wait.h>
#include <unistd.h>

namespace orv::test {
namespace {

const std::string command = ORV_COMMAND;

Outcome verify(const std::string& words, const std::string& environment = "")
{
    return run(environment + ' ' + command + " verify " + words);
}
Outcome problem(const std::string& line, const std::string& environment = "")
{
    return verify('"' + line + '"', environment);
}
// With wrong routines in place of some true ones.
const std::string wrong = "LD_PRELOAD=" ORV_WRONG;

#define EXPECT_SAYS(outcome, part) EXPECT_NE((outcome).text.find(part), std::string::npos) << (outcome).text

std::vector<std::string> lines_of(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

TEST(Verify, repeats_one_problem_and_tells_the_error_beside_its_bound)
{
    const Outcome o = problem("gemm d tn m=17 n=9 k=300 lda=301 beta=0");
    EXPECT_EQ(o.status, 0);
    EXPECT_TRUE(std::regex_match(o.text, std::regex("gemm d tn m=17 n=9 k=300 alpha=0.75 lda=301 ldb=300 beta=0 ldc=17 "
                                                    "shift=0 threads=1 seed=1\n"
                                                    "largest error \\S+ at c\\(\\d+,\\d+\\), \\S+ of its bound \\S+\n"
                                                    "right\n")))
        << o.text;
}

TEST(Verify, takes_a_problem_in_one_word_or_in_several)
{
    const std::string line = "trsm z ruct m=8 n=5 alpha=(1,-2)";
    EXPECT_EQ(verify(std::regex_replace(line, std::regex("[()]"), "\\$&")).text, problem(line).text);
}

TEST(Verify, prints_a_line_that_repeats_the_problem_bit_by_bit)
{
    for (const char* line : {"hemm c lu m=9 n=4 seed=77", "xblas_gemv z_d_z_x rt m=4 n=7 prec=extra",
                             "axpy s n=33 alpha=0.1 shift=1", "omatcopy2 c rt rows=3 cols=5 stridea=2 lda=12"}) {
        const Outcome first = problem(line);
        EXPECT_EQ(first.status, 0) << first.text;
        EXPECT_EQ(problem(lines_of(first.text)[0]).text, first.text);
    }
    EXPECT_NE(problem("dot d n=50 seed=1").text.substr(60), problem("dot d n=50 seed=2").text.substr(60));
}

TEST(Verify, expects_that_a_leading_dimension_too_small_is_refused)
{
    const Outcome o = problem("gemm d tn m=17 n=9 k=300 lda=31 beta=0");
    EXPECT_EQ(o.status, 0);
    EXPECT_SAYS(o, "refuses lda=31, which has to be at least 300 here, and writes nothing\nright\n");
}

TEST(Verify, answers_what_makes_no_sense_with_what_was_expected)
{
    const std::pair<const char*, const char*> cases[] = {
        {"gem d tn", "there is no family \"gem\"; `orv verify --list` names all there are"},
        {"gemm q tn", "gemm wants a type behind its name, one of s d c z sc dz, not \"q\""},
        {"gemm m=3", "gemm wants a type behind its name, one of s d c z sc dz\n"},
        {"gemm d", "gemm wants 2 letters behind the type (transa: n, t or c; transb: n, t or c), and there is none"},
        {"gemm d tx", "gemm wants 2 letters behind the type (transa: n, t or c; transb: n, t or c), not \"tx\""},
        {"syr d q", "syr wants 1 letter behind the type (uplo: u or l), not \"q\""},
        {"axpy d t n=4", "axpy takes no letters, so \"t\" means nothing"},
        {"gemm d tn kl=3", "gemm has no kl=; it takes m n k alpha lda ldb beta ldc shift threads seed"},
        {"gemm d tn m=3.5", "gemm: m= wants a whole number from 0 to 1000000, not 3.5"},
        {"gemm d tn m=-1", "gemm: m= wants a whole number from 0 to 1000000, not -1"},
        {"gemm d tn m=99999999999999999999", "gemm: m= wants a whole number from 0 to 1000000, not 9999999999999999"},
        {"gemm d tn m=1000000 n=1000000", "c would have more than 2^26 elements"},
        {"gemm d tn lda=x", "gemm: lda= wants a whole number of at least 5 here, not x"},
        {"gemm d tn alpha=(1,2)", "gemm: alpha= wants a number, not (1,2)"},
        {"gemm z tn alpha=(1;2)", "gemm: alpha= wants a number or (re,im), not (1;2)"},
        {"gemm d tn threads=0", "gemm: threads= wants a whole number from 1 to 1024, not 0"},
        {"gemm d tn m=", "\"m=\" wants a name before its = and a value behind it"},
        {"gemm d tn m=1 m=1", "m= is given twice"},
        {"gemm d tn m=1 n", "\"n\" is no name=value: family, type and letters come first, then values"},
        {"gemv dz t lda=1", "gemv: lda= wants at least 5 here: nothing checks it"},
        {"axpy d incy=0", "axpy: incy= wants a stride other than 0"},
        {"amin d incx=-2", "amax and amin want incx= above 0"},
        {"xblas_dot d_x n prec=quad", "xblas_dot: prec= wants single, double, indigenous or extra, not quad"},
        {"rotmg d y1=9", "rotmg wants d1*x1^2 above |d2*y1^2|"},
        {"--quick", "there is no option --quick; --list and --help are the two"}};
    for (const auto& [line, sentence] : cases) {
        const Outcome o = problem(line);
        EXPECT_EQ(o.status, 2) << line;
        EXPECT_SAYS(o, std::string("orv: verify: ") + sentence) << line;
        EXPECT_EQ(lines_of(o.text).size(), 1u) << o.text;
    }
}

TEST(Verify, runs_the_families_and_groups_that_are_named)
{
    const Outcome o = verify("level1 sparse trsv xblas_hbmv");
    EXPECT_EQ(o.status, 0) << o.text;
    for (const char* part : {"\nvectors\n  axpy ", "\nsparse vectors\n  axpyi ", "\nmatrices and vectors\n  trsv ",
                             "\nextended and mixed precision\n  xblas_hbmv ", "\nall right\n"})
        EXPECT_SAYS(o, part);
    EXPECT_EQ(o.text.find("gemm"), std::string::npos);
    EXPECT_EQ(o.text.find('\r'), std::string::npos) << "a progress bar without a terminal";
}

TEST(Verify, lists_every_family_and_each_runs_with_nothing_but_type_and_letters)
{
    const Outcome list = verify("--list");
    EXPECT_EQ(list.status, 0);
    int families = 0;
    const std::map<std::string, char> first{{"transa", 'n'},   {"transb", 'n'}, {"trans", 'n'}, {"uplo", 'u'},
                                            {"diag", 'n'},     {"side", 'l'},   {"conj", 'c'},  {"order", 'c'},
                                            {"ordering", 'c'}, {"format", 'r'}, {"base", 'z'}};
    const std::vector<std::string> lines = lines_of(list.text);
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
        if (!lines[i + 1].starts_with("                   types ")) continue;
        std::istringstream words(lines[i]), types(lines[i + 1].substr(25));
        std::string family, letters, type;
        words >> family;
        for (std::string word; words >> word;) { // "format:rso" tells its letters
            const std::size_t colon = word.find(':');
            if (colon != std::string::npos) letters += word[colon + 1];
            else if (const auto found = first.find(word); found != first.end()) letters += found->second;
        }
        types >> type;
        const Outcome o = problem(family + ' ' + type + ' ' + letters);
        EXPECT_TRUE(o.status == 0 && o.text.ends_with("right\n")) << o.text;
        ++families;
    }
    EXPECT_GE(families, 91);
    EXPECT_SAYS(verify("--help"), "usage: orv verify [FAMILY...]");
}

TEST(Verify, shows_its_progress_on_a_terminal)
{
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    ASSERT_GE(child, 0);
    if (child == 0) {
        execl(command.c_str(), "orv", "verify", "trsv", nullptr);
        _exit(127);
    }
    std::string text;
    char chunk[4096];
    for (ssize_t n; (n = read(terminal, chunk, sizeof chunk)) > 0;) text.append(chunk, static_cast<std::size_t>(n));
    close(terminal);
    int ended = -1;
    waitpid(child, &ended, 0);
    EXPECT_EQ(ended, 0);
    EXPECT_TRUE(std::regex_search(text, std::regex("\r[#.]{40} +\\d+%  trsv"))) << text;
    EXPECT_NE(text.find("all right"), std::string::npos);
}

// What is wrong is seen, told with lines, and each line repeats it: wrong as long as the wrong routine is there.
class VerifyOfWrongRoutines : public testing::Test {
protected:
    void SetUp() override
    {
        if (sanitized()) GTEST_SKIP() << "an instrumented program wants its own run-time library to be preloaded first";
    }
    // The lines that a failing run of a family prints.
    static std::vector<std::string> failures(const std::string& family)
    {
        const Outcome o = verify(family, wrong);
        EXPECT_EQ(o.status, 1) << o.text;
        std::vector<std::string> found;
        bool listed = false;
        for (const std::string& line : lines_of(o.text)) {
            if (listed && line.starts_with("  " + family + ' ')) found.push_back(line.substr(2));
            listed |= line.find("WRONG; `orv verify \"LINE\"` repeats a line:") != line.npos;
        }
        EXPECT_FALSE(found.empty()) << o.text;
        EXPECT_EQ(verify(family).status, 0);
        return found;
    }
    static void expect_repeatable(const std::string& family, const std::string& told)
    {
        for (const std::string& line : failures(family)) {
            const Outcome again = problem(line, wrong), right = problem(line);
            EXPECT_EQ(again.status, 1) << line;
            EXPECT_EQ(lines_of(again.text)[0], line);
            EXPECT_TRUE(std::regex_search(again.text, std::regex(told))) << again.text;
            EXPECT_TRUE(again.text.ends_with("\nWRONG\n")) << again.text;
            EXPECT_EQ(right.status, 0) << right.text;
        }
    }
};

TEST_F(VerifyOfWrongRoutines, sees_an_element_left_out_at_one_length_only)
{
    expect_repeatable("dot", "^dot d n=17 .*\nlargest error \\S+ at result\\(0,0\\), \\S+ of its bound");
}
TEST_F(VerifyOfWrongRoutines, sees_a_sum_in_too_narrow_a_type) { expect_repeatable("dsdot", "largest error"); }
TEST_F(VerifyOfWrongRoutines, sees_an_element_written_too_many) { expect_repeatable("copy", "\nwrote outside of y\n"); }
TEST_F(VerifyOfWrongRoutines, sees_a_corner_left_out_at_few_sizes_by_several_threads_only)
{
    expect_repeatable("syrk",
                      "^syrk s .* threads=[2-8] eager=.*\nlargest error \\S+ at c\\((64,64|128,128|192,192)\\)");
}
TEST_F(VerifyOfWrongRoutines, sees_a_status) { expect_repeatable("scal", "\nanswered 5 .*memory.*, not 0\n"); }
TEST_F(VerifyOfWrongRoutines, sees_what_is_read_though_it_may_not_be)
{
    const Outcome o = problem("gemv d n m=3 n=4 beta=0", wrong); // y is NaN before the call
    EXPECT_EQ(o.status, 1);
    EXPECT_SAYS(o, "\ny(0,0) is NaN or infinite\nWRONG\n");
}
TEST_F(VerifyOfWrongRoutines, sees_what_is_not_refused)
{
    const Outcome o = problem("gemv d n m=4 n=1 lda=2", wrong);
    EXPECT_EQ(o.status, 1);
    EXPECT_SAYS(o, "answered 0");
    EXPECT_SAYS(o, "not -6");
}
TEST_F(VerifyOfWrongRoutines, names_the_problem_that_crashes)
{
    const Outcome o = verify("swap", wrong);
    EXPECT_EQ(o.status, 1) << o.text;
    EXPECT_SAYS(o, "orv: verify was stopped by a bad memory access in the problem\n  swap s n=0 shift=0\n");
}

TEST(Verify, says_why_nothing_can_run)
{
    const Outcome o = verify("dot", "ORV_BRANCH_PATH=/nowhere");
    EXPECT_EQ(o.status, 1);
    EXPECT_SAYS(o, "orv: ");
    EXPECT_SAYS(o, "/nowhere");
}

TEST(VerifyFull, finds_everything_right)
{
    const Outcome o = verify("");
    EXPECT_EQ(o.status, 0) << o.text;
    EXPECT_SAYS(o, "\nall right\n");
    // Large problems are run by a team too, wherever there is one, and small ones as if they were large.
    EXPECT_EQ(problem("gemm d tn m=70 n=60 k=18 threads=3 eager=1000").status, 0);
    EXPECT_EQ(problem("gemm d tn m=170 n=160 k=180 threads=3").status, 0);
}

} // namespace
} // namespace orv::test
