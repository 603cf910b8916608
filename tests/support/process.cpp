#include "tests/support/process.h"

#include <cstdio>
#include <sys/wait.h>

namespace orv::test {

Outcome run(const std::string& line)
{
    Outcome outcome{-1, {}};
    std::FILE* output = popen(("exec 2>&1; " + line).c_str(), "r");
    if (output == nullptr) return outcome;
    char chunk[4096];
    while (const std::size_t n = std::fread(chunk, 1, sizeof chunk, output)) outcome.text.append(chunk, n);
    const int ended = pclose(output);
    outcome.status = WIFEXITED(ended) ? WEXITSTATUS(ended) : -WTERMSIG(ended);
    return outcome;
}

} // namespace orv::test
