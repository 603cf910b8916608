// What an ordinary program sees of the library when something is wrong.
#include "tests/support/sanitized.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <orv/branch.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

struct Outcome {
    std::string text; // standard output and standard error
    int status;
};

Outcome run(const std::string& command)
{
    FILE* output = popen((command + " 2>&1").c_str(), "r");
    Outcome outcome;
    for (int c; (c = getc(output)) != EOF;) outcome.text += static_cast<char>(c);
    outcome.status = WEXITSTATUS(pclose(output));
    return outcome;
}

const std::string no_kernels = "ORV_BRANCH_PATH=/nowhere/kernels.so ";
const std::string why = "the library of kernels cannot be opened (/nowhere/kernels.so: cannot open shared object "
                        "file: No such file or directory): put liborv_";
const std::string what_to_do = ".so of version " ORV_VERSION " beside liborv.so, or set ORV_BRANCH_PATH to its path\n";
const std::string good = "11\n11\n2\n2\n6 8 -3\n";

TEST(Ordinary, a_bad_argument_prints_a_line_and_stops_the_program)
{
    Outcome outcome = run(ORDINARY " fortran");
    EXPECT_EQ(outcome.text, good + " ** On entry to DGEMM parameter number  3 had an illegal value\n");
    EXPECT_EQ(outcome.status, EXIT_FAILURE);
    outcome = run(ORDINARY " cblas");
    EXPECT_EQ(outcome.text, good + "Parameter 6 to routine cblas_dgemm was incorrect\n");
    EXPECT_EQ(outcome.status, EXIT_FAILURE);
}

TEST(Ordinary, a_program_with_error_routines_of_its_own_goes_on_after_a_bad_argument)
{
    Outcome outcome = run(OWN_ERRORS " fortran");
    EXPECT_EQ(outcome.text, good + "mine: DGEMM  3\nthe end\n");
    outcome = run(OWN_ERRORS " cblas");
    EXPECT_EQ(outcome.text, good + "mine: cblas_dgemm 6 \nthe end\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST(Ordinary, error_routines_behind_a_preloaded_library_still_hear_of_bad_arguments)
{
    if (orv::test::sanitized()) GTEST_SKIP() << "the sanitizer wants to be the first library";
    Outcome outcome = run("LD_PRELOAD='" ORV_TWIN " " ERROR_ROUTINES "' " ORDINARY " fortran");
    EXPECT_EQ(outcome.text, good + "mine: DGEMM  3\nthe end\n");
    outcome = run("LD_PRELOAD='" ORV_TWIN " " ERROR_ROUTINES "' " ORDINARY " cblas");
    EXPECT_EQ(outcome.text, good + "mine: cblas_dgemm 6 \nthe end\n");
}

TEST(Ordinary, missing_kernels_stop_the_program_at_its_first_call)
{
    const Outcome outcome = run(no_kernels + ORDINARY);
    EXPECT_TRUE(outcome.text.starts_with("orv: DDOT was not carried out: " + why)) << outcome.text;
    EXPECT_TRUE(outcome.text.ends_with(what_to_do)) << outcome.text;
    EXPECT_EQ(std::count(outcome.text.begin(), outcome.text.end(), '\n'), 1) << outcome.text;
    EXPECT_EQ(outcome.status, EXIT_FAILURE);
}

// 1001: 1000 and ORV_NO_BRANCH.
TEST(Ordinary, without_kernels_error_routines_that_return_hear_of_each_call_and_functions_are_no_numbers)
{
    const Outcome outcome = run(no_kernels + OWN_ERRORS);
    const std::string sentence = " 0 " + why.substr(0, 39) + "\n";
    const std::string twice = "mine: IDAMAX 1001\n0\nmine: cblas_daxpy" + sentence;
    EXPECT_EQ(outcome.text, "mine: DDOT   1001\nnan\n"
                            "mine: cblas_ddot" +
                                sentence + "nan\n" + twice + twice + "mine: cblas_zdotu_sub" + sentence +
                                "mine: DGEMM  1001\n"
                                "3 4 nan\n"
                                "the end\n");
}

// A copy of the kernels without some: a letter of their names is another one, so nobody finds them.
class IncompleteBranch {
public:
    explicit IncompleteBranch(std::initializer_list<const char*> missing)
    {
        std::ifstream file(orv_branch_path(), std::ios::binary);
        std::string bytes((std::istreambuf_iterator<char>(file)), {});
        for (const char* stem : missing) {
            const std::string name = "orv_blas_" + std::string(orv_branch_name()) + '_' + stem;
            const auto at = bytes.find('\0' + name + '\0');
            EXPECT_NE(at, bytes.npos) << name;
            if (at != bytes.npos) bytes[at + 1] = '?';
        }
        std::ofstream(path_, std::ios::binary) << bytes;
    }
    ~IncompleteBranch() { std::filesystem::remove(path_); }
    std::string setting() const { return "ORV_BRANCH_PATH=" + path_ + ' '; }

private:
    std::string path_ = testing::TempDir() + "incomplete_" + std::to_string(getpid()) + ".so";
};

// 1004: 1000 and ORV_NO_KERNEL.
TEST(Ordinary, error_routines_hear_of_single_kernels_that_are_missing)
{
    const IncompleteBranch branch({"idamax", "xddot", "zdotu"});
    const Outcome outcome = run(branch.setting() + OWN_ERRORS);
    const auto without_sentence = [](const std::string& line) {
        const auto position = line.find(" 0 ");
        return position != line.npos ? line.substr(0, position + 2) : line;
    };
    std::istringstream text(outcome.text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) lines.push_back(without_sentence(line));
    EXPECT_EQ(lines, (std::vector<std::string>{"mine: DDOT   1004", "nan", "mine: cblas_ddot 0", "nan",
                                               "mine: IDAMAX 1004", "0", "mine: IDAMAX 1004", "0",
                                               "mine: cblas_zdotu_sub 0", "6 8 nan", "the end"}));
}

} // namespace
