// Messages that kernels print, or append to a file of the current folder.
#pragma once

#include "frame/serv.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

namespace orv::test {

namespace fs = std::filesystem;

// A folder of its own to work in, for messages that go to a file.
class InFolder {
public:
    InFolder() : before_(fs::current_path())
    {
        char name[] = "/tmp/orv-pde-XXXXXX";
        folder_ = mkdtemp(name);
        fs::current_path(folder_);
    }
    ~InFolder()
    {
        fs::current_path(before_);
        fs::remove_all(folder_);
    }
    // From now on nothing can be made in it, whoever asks.
    void vanish() const { fs::remove_all(folder_); }

private:
    fs::path before_, folder_;
};

// What stands in a log of the folder.
inline std::string log_in_folder(const char* name)
{
    std::ifstream file(name);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

// A numbered text with its places filled in, as a line.
template <class... Values> std::string message(int number, Values... values)
{
    char text[1000];
    std::snprintf(text, sizeof text, orv_serv_get_msg(number), values...);
    return std::string(text) + "\n";
}

// What stands on standard output meanwhile.
template <class Call> std::string shown(Call call)
{
    testing::internal::CaptureStdout();
    call();
    return testing::internal::GetCapturedStdout();
}

} // namespace orv::test
