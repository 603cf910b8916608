// What an ordinary program sees of the library when something is wrong.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

struct Outcome {
    std::string text; // standard output, then standard error
    int status;
};

Outcome run(const std::string& variables)
{
    FILE* output = popen((variables + " " ORDINARY " 2>&1").c_str(), "r");
    Outcome outcome;
    for (int c; (c = getc(output)) != EOF;) outcome.text += static_cast<char>(c);
    outcome.status = pclose(output);
    return outcome;
}

const std::string bad_arguments = " ** On entry to DGEMM  parameter number  3 had an illegal value\n"
                                  "Parameter 6 to routine cblas_dgemm was incorrect\n";

TEST(Ordinary, bad_arguments_print_a_line_each_and_the_program_goes_on)
{
    const Outcome outcome = run("");
    EXPECT_EQ(outcome.text, "11 11 8 -3\n" + bad_arguments);
    EXPECT_EQ(outcome.status, 0);
}

TEST(Ordinary, missing_kernels_are_told_once)
{
    const Outcome outcome = run("ORV_BRANCH_PATH=/nowhere/kernels.so");
    const std::size_t line = outcome.text.find('\n');
    const std::string told = outcome.text.substr(0, line);
    EXPECT_TRUE(told.starts_with("orv: the library of kernels cannot be opened (/nowhere/kernels.so: "
                                 "cannot open shared object file: No such file or directory): put liborv_"))
        << told;
    EXPECT_TRUE(told.ends_with(".so of version " ORV_VERSION " beside liborv.so, or set ORV_BRANCH_PATH to its path"))
        << told;
    EXPECT_EQ(outcome.text.substr(line + 1), "nan nan 4 nan\n" + bad_arguments);
    EXPECT_EQ(outcome.status, 0);
}

} // namespace
