// Which kernels are opened where there are two kinds, wide ones (of code 7) and narrow ones (8).
#include "core/serv/processor.h"
#include "tests/support/process.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

using orv::core::avx2;
using orv::core::sse42;
using orv::test::run;

namespace {

const std::string helpers = ORV_HELPERS;

// A folder with the core and the kernels that a test puts there.
class Kinds : public testing::Test {
protected:
    const std::filesystem::path folder = testing::TempDir() + "orv_kinds_" + std::to_string(getpid());

    void SetUp() override
    {
        std::filesystem::create_directory(folder);
        std::filesystem::copy(helpers + "/two/core_of_two.so", folder);
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    void install(const std::string& file, const std::string& as) const
    {
        std::filesystem::copy(helpers + "/" + file, folder / as, std::filesystem::copy_options::overwrite_existing);
    }
    void install_both() const
    {
        for (const char* file : {"liborv_wide.so", "liborv_narrow.so"}) install(file, file);
    }

    // The name of what was opened and its code, or status and sentence.
    std::string opened(unsigned features, const std::string& environment = "") const
    {
        const std::string guest = helpers + "/core_guest " + (folder / "core_of_two.so").string() + " kind";
        return run("FEATURES=" + std::to_string(features) + ' ' + environment + ' ' + guest).text;
    }
};

constexpr unsigned modern = sse42 | avx2;

} // namespace

#define EXPECT_SAYS(text, part) EXPECT_NE((text).find(part), std::string::npos) << (text)

TEST_F(Kinds, are_tried_from_the_best_on)
{
    install_both();
    EXPECT_EQ(opened(modern), "wide 7\n");
    EXPECT_EQ(opened(sse42), "narrow 8\n");
    EXPECT_EQ(opened(avx2),
              "2 this processor (A processor) lacks SSE4.2, which all kernels use: run the program on one "
              "made since 2009\n");
}

TEST_F(Kinds, that_are_not_installed_are_passed_over)
{
    install("liborv_narrow.so", "liborv_narrow.so");
    EXPECT_EQ(opened(modern), "narrow 8\n");
    std::filesystem::remove(folder / "liborv_narrow.so");
    EXPECT_SAYS(opened(modern), "1 the library of kernels cannot be opened (");
    EXPECT_SAYS(opened(modern), "put liborv_wide.so of version " ORV_VERSION " beside liborv.so");
    EXPECT_SAYS(opened(sse42), "put liborv_narrow.so of version ");
}

TEST_F(Kinds, are_forced_by_name)
{
    install_both();
    EXPECT_EQ(opened(modern, "ORV_BRANCH=narrow"), "narrow 8\n");
    EXPECT_EQ(opened(modern, "ORV_BRANCH=wide"), "wide 7\n");
    EXPECT_EQ(opened(modern, "ORV_BRANCH="), "wide 7\n");
    const std::string file = "ORV_BRANCH_PATH=" + (folder / "liborv_narrow.so").string();
    EXPECT_EQ(opened(modern, file), "narrow 8\n");
    EXPECT_EQ(opened(modern, file + " ORV_BRANCH=narrow"), "narrow 8\n");
}

TEST_F(Kinds, of_an_unknown_name_are_refused)
{
    install_both();
    for (const char* name : {"broad", "wid", "WIDE", "liborv_wide.so"})
        EXPECT_EQ(opened(modern, "ORV_BRANCH=" + std::string(name)),
                  "6 ORV_BRANCH=\"" + std::string(name) + "\" is no name of kernels: give one of wide narrow\n");
}

TEST_F(Kinds, that_the_processor_cannot_run_are_refused)
{
    install_both();
    const std::string sentence =
        "2 this processor (A processor) lacks AVX2, or runs a system that does not keep its "
        "registers, which the kernels wide use: run the program on one made since 2013, or let "
        "orv choose, without ORV_BRANCH and ORV_BRANCH_PATH\n";
    EXPECT_EQ(opened(sse42, "ORV_BRANCH=wide"), sentence);
    EXPECT_EQ(opened(sse42, "ORV_BRANCH_PATH=" + (folder / "liborv_wide.so").string()), sentence);
}

TEST_F(Kinds, that_are_forced_and_not_installed_are_not_replaced_by_others)
{
    install("liborv_narrow.so", "liborv_narrow.so");
    EXPECT_SAYS(opened(modern, "ORV_BRANCH=wide"), "1 the library of kernels cannot be opened (");
    EXPECT_SAYS(opened(sse42, "ORV_BRANCH=wide"), "2 this processor (A processor) lacks AVX2")
        << "to install helps not";
}

TEST_F(Kinds, in_the_wrong_file_are_refused)
{
    install_both();
    install("liborv_narrow.so", "liborv_wide.so");
    EXPECT_SAYS(opened(modern), "3 " + (folder / "liborv_wide.so").string() + " holds the kernels narrow, not wide");
    EXPECT_SAYS(opened(modern, "ORV_BRANCH=wide ORV_BRANCH_PATH=" + (folder / "liborv_narrow.so").string()),
                "holds the kernels narrow, not wide");
    install("old_wide.so", "liborv_wide.so");
    EXPECT_SAYS(opened(modern),
                "3 " + (folder / "liborv_wide.so").string() + " is not the library of kernels of version");
    EXPECT_SAYS(opened(modern), "it has version 0.0.7");
    EXPECT_EQ(opened(modern, "ORV_BRANCH=narrow"), "narrow 8\n");
}
