// The same bad calls, made of our library and of Debian's reference library.
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

std::vector<std::string> lines_of(const std::string& command)
{
    FILE* output = popen(command.c_str(), "r");
    std::string text;
    for (int c; (c = getc(output)) != EOF;) text += static_cast<char>(c);
    EXPECT_EQ(pclose(output), 0) << command;
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

// Debian's library prints Fortran's errors with the words of CBLAS; ours with Fortran's own.
std::string in_words_of_cblas(const std::string& line)
{
    return std::regex_replace(line, std::regex(R"(\*\* On entry to (\w+) parameter number (\d+) had an illegal value)"),
                              "Parameter $2 to routine $1 was incorrect");
}

// Debian's library tells of a bad diag with the value of uplo in places.
std::string without_option(const std::string& line)
{
    return std::regex_replace(line, std::regex(R"(Illegal (Uplo|Diag) setting, \d+ )"), "");
}

TEST(Reference, all_combinations_of_bad_arguments_are_reported_alike)
{
    if (access(REFERENCE_BLAS, R_OK) != 0) GTEST_SKIP() << "no reference library at " REFERENCE_BLAS;
    // Both libraries end a program in the midst of a call, where memory is still taken.
    const std::string command = "ASAN_OPTIONS=detect_leaks=0 " BAD_CALLS " ";
    const auto ours = lines_of(command + ORV_BLAS), reference = lines_of(command + REFERENCE_BLAS);
    ASSERT_EQ(ours.size(), reference.size());
    ASSERT_GT(ours.size(), 6000u);
    for (std::size_t i = 0; i < ours.size(); ++i)
        ASSERT_EQ(without_option(in_words_of_cblas(ours[i])), without_option(reference[i]));
}

} // namespace
