#include "tests/support/process.h"
#include "tests/support/sanitized.h"

#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <orv/orv.h>
#include <sstream>
#include <thread>
#include <unistd.h>
#include <vector>

using orv::test::Outcome;
using orv::test::run;
using orv::test::sanitized;

namespace {

const std::string helpers = ORV_HELPERS, core = ORV_CORE, guest = helpers + "/core_guest ";

// What a privately opened core answers to orv_check with this environment.
std::string check(const std::string& environment = "") { return run(environment + " " + guest + core + " check").text; }

std::string check_with_branch(const std::string& name) { return check("ORV_BRANCH_PATH=" + helpers + "/" + name); }

bool have(const std::string& program) { return run("command -v " + program).status == 0; }

} // namespace

#define EXPECT_SAYS(text, part) EXPECT_NE((text).find(part), std::string::npos) << (text)

TEST(Loader, opens_the_branch_beside_the_core)
{
    ASSERT_EQ(orv_branch_status(), ORV_OK) << orv_last_error();
    EXPECT_STREQ(orv_version(), ORV_VERSION);
    EXPECT_STREQ(orv_branch_version(), ORV_VERSION);
    const auto lib = std::filesystem::absolute(ORV_LIBRARIES);
    EXPECT_EQ(orv_branch_path(), lib / ("liborv_" + std::string(orv_branch_name()) + ".so"));
    EXPECT_EQ(access(orv_path(), R_OK), 0);
    EXPECT_NE(orv_branch_symbol("dll_cpu_version"), nullptr);
}

TEST(Loader, finds_kernels_by_module_and_name)
{
    const std::string symbol = "orv_blas_" + std::string(orv_branch_name()) + "_xdaxpy";
    EXPECT_EQ(orv_kernel("blas", "xdaxpy"), orv_branch_symbol(symbol.c_str()));
    EXPECT_NE(orv_kernel("blas", "xdaxpy"), nullptr);
}

TEST(Loader, names_a_kernel_that_is_not_there)
{
    EXPECT_EQ(orv_branch_symbol("orv_blas_nothing"), nullptr);
    EXPECT_SAYS(std::string(orv_last_error()), "has no symbol orv_blas_nothing: install both libraries");
    EXPECT_EQ(orv_kernel("blas", "nothing"), nullptr);
    const std::string symbol = "orv_blas_" + std::string(orv_branch_name()) + "_nothing";
    EXPECT_SAYS(std::string(orv_last_error()), "has no symbol " + symbol + ": install both libraries");
}

TEST(Loader, has_no_kernel_of_a_name_without_end)
{
    for (std::size_t length : {50, 127, 128, 5000}) {
        const std::string name(length, 'x');
        EXPECT_EQ(orv_kernel("blas", name.c_str()), nullptr);
        EXPECT_SAYS(std::string(orv_last_error()), name.substr(0, 50));
    }
}

TEST(Loader, keeps_the_sentence_of_each_thread)
{
    orv_branch_symbol("here");
    std::thread([] {
        EXPECT_STREQ(orv_last_error(), "");
        orv_branch_symbol("there");
    }).join();
    EXPECT_SAYS(std::string(orv_last_error()), "no symbol here");
}

TEST(Loader, works_when_opened_privately)
{
    EXPECT_EQ(check(), "0 \n");
    const Outcome outcome = run("ORV_BRANCH_PATH=" + helpers + "/importing.so " + guest + core + " call");
    EXPECT_EQ(outcome.text, "1\n");
}

TEST(Loader, works_from_python)
{
    if (sanitized()) GTEST_SKIP() << "an interpreter without the sanitizer cannot load a sanitized library";
    if (access("/usr/bin/python3", X_OK) != 0) GTEST_SKIP() << "no /usr/bin/python3";
    const Outcome outcome = run("/usr/bin/python3 -c 'import ctypes, sys\n"
                                "core = ctypes.CDLL(sys.argv[1])\n"
                                "core.orv_last_error.restype = ctypes.c_char_p\n"
                                "core.orv_branch_path.restype = ctypes.c_char_p\n"
                                "print(core.orv_check(), core.orv_last_error(), core.orv_branch_path())' " +
                                core);
    EXPECT_EQ(outcome.text, "0 b'' b'" + std::string(orv_branch_path()) + "'\n");
}

TEST(Loader, leaves_nothing_behind_when_closed)
{
    const Outcome outcome = run(guest + core + " close");
    EXPECT_EQ(outcome.text, "nothing left\n");
    const Outcome importing = run("ORV_BRANCH_PATH=" + helpers + "/importing.so " + guest + core + " close");
    EXPECT_SAYS(importing.text, "nothing left");
    EXPECT_EQ(importing.status, 0);
}

TEST(Loader, leaves_nothing_behind_when_the_branch_was_refused)
{
    const Outcome outcome = run("ORV_BRANCH_PATH=" + helpers + "/other_tag.so " + guest + core + " check");
    EXPECT_EQ(outcome.status, 0) << outcome.text;
}

TEST(Loader, serves_two_copies_of_the_core_in_one_process)
{
    const std::string folder = testing::TempDir() + "orv_twice_" + std::to_string(getpid());
    ASSERT_EQ(run("mkdir -p " + folder + " && cp " ORV_CORE " " + orv_branch_path() + " " + folder).status, 0);
    const std::string copy = folder + core.substr(core.rfind('/'));
    for (int round = 0; round < 3; ++round) {
        void* second = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(second, nullptr) << dlerror();
        const auto find = reinterpret_cast<void* (*)(const char*)>(dlsym(second, "orv_branch_symbol"));
        const auto tag = reinterpret_cast<int (*)()>(find("dll_cpu_version"));
        ASSERT_NE(tag, nullptr);
        EXPECT_EQ(tag(), 3);
        EXPECT_NE(reinterpret_cast<void*>(tag), orv_branch_symbol("dll_cpu_version"));
        dlclose(second);
    }
    run("rm -r " + folder);
}

TEST(Loader, is_found_by_a_relative_path_after_the_program_moved)
{
    const std::string folder = core.substr(0, core.rfind('/')), file = core.substr(core.rfind('/') + 1);
    EXPECT_EQ(
        run("cd " + folder + "/.. && " + guest + folder.substr(folder.rfind('/') + 1) + "/" + file + " check").text,
        "0 \n");
}

TEST(Loader, says_what_to_do_when_the_branch_is_missing)
{
    const std::string text = check("ORV_BRANCH_PATH=/nowhere/kernels.so");
    EXPECT_SAYS(text, "1 the library of kernels cannot be opened (/nowhere/kernels.so: cannot open");
    EXPECT_SAYS(text, "put liborv_" + std::string(orv_branch_name()) +
                          ".so of version " ORV_VERSION " beside liborv.so, or set ORV_BRANCH_PATH");
}

TEST(Loader, says_what_to_do_when_the_branch_asks_for_what_the_core_lacks)
{
    EXPECT_SAYS(check_with_branch("unresolved.so"), "undefined symbol: orv_serv_of_another_time");
}

TEST(Loader, says_what_to_do_when_the_file_is_no_library)
{
    EXPECT_SAYS(check("ORV_BRANCH_PATH=/etc/passwd"), "1 the library of kernels cannot be opened (/etc/passwd:");
}

TEST(Loader, says_that_the_file_is_cut_short)
{
    const std::string file = testing::TempDir() + "orv_short_" + std::to_string(getpid()) + ".so";
    ASSERT_EQ(run("cp " + helpers + "/importing.so " + file).status, 0);
    const auto whole = std::filesystem::file_size(file);
    EXPECT_EQ(check("ORV_BRANCH_PATH=" + file), "0 \n");
    for (const auto size : {whole - 1, whole - 4096, whole / 2, std::uintmax_t{4096}, std::uintmax_t{64}}) {
        std::filesystem::resize_file(file, size);
        const std::string text = check("ORV_BRANCH_PATH=" + file);
        EXPECT_SAYS(text, "1 " + file + " is cut short: it has " + std::to_string(size) + " of the ");
        EXPECT_SAYS(text, "install orv again");
    }
    std::filesystem::resize_file(file, 20);
    EXPECT_SAYS(check("ORV_BRANCH_PATH=" + file), "1 the library of kernels cannot be opened") << "no header";
    std::filesystem::remove(file);
}

TEST(Loader, says_that_there_is_no_memory)
{
    if (sanitized()) GTEST_SKIP() << "the sanitizer has an allocator of its own";
    const Outcome outcome = run(guest + core + " starve");
    EXPECT_EQ(outcome.status, 0) << outcome.text;
    std::istringstream lines(outcome.text);
    int without = 0;
    for (std::string line; std::getline(lines, line) && line != "0 "; ++without)
        EXPECT_EQ(line.substr(0, 20), "5 no memory is left ") << "request " << without;
    EXPECT_GT(without, 3);
}

TEST(Loader, refuses_a_branch_of_another_tag_or_version)
{
    for (const char* name : {"other_tag.so", "other_version.so", "no_note.so"}) {
        const std::string text = check_with_branch(name);
        EXPECT_EQ(text.substr(0, 2), "3 ") << text;
        EXPECT_SAYS(text, "is not the library of kernels of version " ORV_VERSION);
        EXPECT_SAYS(text, "install both libraries from one build");
    }
    EXPECT_SAYS(check_with_branch("other_version.so"), "it has version 0.0.7");
    EXPECT_SAYS(check_with_branch("no_note.so"), "it tells no version");
}

TEST(Loader, refuses_a_library_without_the_tag)
{
    Dl_info libm;
    ASSERT_NE(dladdr(dlsym(RTLD_DEFAULT, "cos"), &libm), 0);
    EXPECT_EQ(check("ORV_BRANCH_PATH=" + std::string(libm.dli_fname)).substr(0, 2), "3 ");
}

TEST(Loader, refuses_an_old_processor_and_takes_one_with_sse42)
{
    if (!have("qemu-x86_64")) GTEST_SKIP() << "no qemu-x86_64 (Debian: qemu-user)";
    if (sanitized()) GTEST_SKIP() << "the emulator has no room for the sanitizer's memory";
    const Outcome old = run("qemu-x86_64 -cpu Penryn " + guest + core + " check");
    EXPECT_EQ(old.text.substr(0, 2), "2 ") << old.text;
    EXPECT_SAYS(old.text, "lacks SSE4.2, which all kernels use: run the program on one made since 2009");
    const Outcome nehalem = run("qemu-x86_64 -cpu Nehalem " + guest + core + " check");
    EXPECT_EQ(nehalem.text, "0 \n");
}

TEST(Loader, is_content_with_a_small_stack)
{
    const Outcome outcome = run(guest + core + " stack");
    EXPECT_EQ(outcome.status, 0) << outcome.text;
}

TEST(Loader, leaves_the_floating_point_modes_alone)
{
    const Outcome outcome = run(guest + core + " modes");
    EXPECT_EQ(outcome.status, 0) << outcome.text;
}

TEST(Loader, resolves_from_several_threads_at_once)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([] {
            for (int i = 0; i < 200; ++i) EXPECT_NE(orv_branch_symbol("dll_cpu_version"), nullptr);
        });
    for (auto& thread : threads) thread.join();
}
