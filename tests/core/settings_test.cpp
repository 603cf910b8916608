#include "tests/support/process.h"

#include <gtest/gtest.h>
#include <orv/orv.h>
#include <set>

using orv::test::run;

namespace {

const std::string command = ORV_COMMAND;

std::string info(const std::string& environment) { return run(environment + " " + command + " info").text; }

} // namespace

#define EXPECT_SAYS(text, part) EXPECT_NE((text).find(part), std::string::npos) << (text)
#define EXPECT_SILENT(text, part) EXPECT_EQ((text).find(part), std::string::npos) << (text)

TEST(Settings, are_one_table)
{
    std::set<std::string> names;
    orv_setting setting;
    for (int i = 0; orv_get_setting(i, &setting); ++i) {
        EXPECT_EQ(std::string(setting.name).substr(0, 4), "ORV_");
        EXPECT_TRUE(names.insert(setting.name).second);
        EXPECT_STRNE(setting.meaning, "");
        EXPECT_STRNE(setting.fallback, "");
    }
    EXPECT_EQ(names.count("ORV_NUM_THREADS"), 1u);
    EXPECT_EQ(orv_get_setting(-1, &setting), 0);
}

TEST(Settings, take_effect)
{
    EXPECT_SAYS(info("OMP_NUM_THREADS=3"), "threads       3 for a large call");
    EXPECT_SAYS(info("OMP_NUM_THREADS=3 ORV_NUM_THREADS=5"), "threads       5 for a large call");
    EXPECT_SAYS(info("OMP_THREAD_LIMIT=2 ORV_NUM_THREADS=5"), "threads       2 for a large call");
    EXPECT_SAYS(info("ORV_MEMORY_LIMIT=123"), "up to 123 bytes kept");
    EXPECT_SAYS(info("ORV_MEMORY_LIMIT=7k"), "up to 7 KiB kept");
    EXPECT_SAYS(info("ORV_MEMORY_LIMIT=512M"), "up to 512 MiB kept");
    EXPECT_SAYS(info("ORV_MEMORY_LIMIT=3G"), "up to 3 GiB kept");
    EXPECT_SAYS(info("ORV_MEMORY_LIMIT=0"), "up to 0 bytes kept");
    EXPECT_SAYS(info("ORV_BRANCH=" + std::string(orv_branch_name())), orv_branch_name() + std::string(", version"));
    EXPECT_SAYS(info("ORV_REPRODUCIBLE=1"), "the same bits on every run\n\n");
    EXPECT_SILENT(info("ORV_REPRODUCIBLE=0 ORV_NUM_THREADS="), "makes no sense");
}

TEST(Settings, that_make_no_sense_are_told_by_the_public_status)
{
    const std::string sentence = "ORV_NUM_THREADS=\"banana\" makes no sense: give a whole number from 1 to 1024; the "
                                 "default is used (as OpenMP)\n";
    const auto guest = [](const std::string& environment, const std::string& verb) {
        return run(environment + " " ORV_HELPERS "/core_guest " ORV_CORE " " + verb).text;
    };
    EXPECT_EQ(guest("ORV_NUM_THREADS=banana", "check"), std::to_string(ORV_BAD_SETTING) + " " + sentence);
    EXPECT_EQ(guest("ORV_NUM_THREADS=banana", "first"), "before: \n0 and 5 after: " + sentence);
    EXPECT_EQ(guest("ORV_NUM_THREADS=2", "check"), "0 \n");
    EXPECT_EQ(guest("ORV_NUM_THREADS=2", "first"), "before: \n0 and 5 after: \n");
}

TEST(Settings, that_make_no_sense_are_named_and_the_default_holds)
{
    const std::string plain = info("OMP_NUM_THREADS=3");
    for (const char* value : {"many", "0", "-1", "1025", "2.5", "' 2'", "4x", "99999999999999999999999"}) {
        const std::string text = info("OMP_NUM_THREADS=3 ORV_NUM_THREADS=" + std::string(value));
        EXPECT_SAYS(text, "makes no sense: give a whole number from 1 to 1024; the default is used (as OpenMP)");
        EXPECT_SAYS(text, "threads       3 for a large call");
    }
    for (const char* value : {"1.5G", "-1", "G", "10T", "99999999999G", "12345678901234567890123456789012345678901"}) {
        const std::string text = info("ORV_MEMORY_LIMIT=" + std::string(value));
        EXPECT_SAYS(text, "makes no sense: give bytes, or a number with K, M or G such as 512M");
    }
    EXPECT_SAYS(info("ORV_REPRODUCIBLE=yes"), "ORV_REPRODUCIBLE=\"yes\" makes no sense: give 0 or 1");
    const std::string path = info("ORV_BRANCH_PATH=kernels.so");
    EXPECT_SAYS(path, "makes no sense: give the path of a file, with a /");
    EXPECT_SAYS(path, std::string(orv_branch_name()) + ", version");
    EXPECT_SAYS(info("ORV_BRANCH=odd"), "none: ORV_BRANCH=\"odd\" is no name of kernels: give one of");
    const std::string helper = ORV_HELPERS "/core_guest " ORV_CORE " check";
    EXPECT_EQ(run("ORV_REPRODUCIBLE=2 " + helper).text.substr(0, 25), "6 ORV_REPRODUCIBLE=\"2\" ma");
}

TEST(Settings, without_effect_are_named)
{
    EXPECT_SAYS(info("ORV_NUM_THRAEDS=2"), "ORV_NUM_THRAEDS is no variable of orv");
}

TEST(Command, tells_its_verbs_and_refuses_others)
{
    EXPECT_SAYS(run(command).text, "usage: orv VERB");
    EXPECT_EQ(run(command).status, 0);
    EXPECT_EQ(run(command + " help").text, run(command).text);
    const auto unknown = run(command + " frobnicate");
    EXPECT_EQ(unknown.text, "orv: there is no verb \"frobnicate\"; `orv help` lists the verbs\n");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(run(command + " info more").status, 2);
}

TEST(Command, info_fails_where_orv_cannot_compute)
{
    const auto outcome = run("ORV_BRANCH_PATH=/nowhere/x.so " + command + " info");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_SAYS(outcome.text, "kernels       none: the library of kernels cannot be opened");
    EXPECT_EQ(run(command + " info").status, 0);
}
