#include "cli/verbs.h"

#include <cstdio>
#include <cstring>

namespace orv::cli {
namespace {

int help(Words words);

struct Verb {
    const char *name, *meaning;
    int (*run)(Words words);
};

constexpr Verb verbs[] = {
    {"info", "what orv runs on: processor, kernels, threads, memory, environment", info},
    {"verify", "whether this machine computes what it should; `orv verify --help` tells more", verify},
    {"sparse", "a matrix from a file, and the format that suits it: orv sparse FILE.mtx [--svg PICTURE.svg]", sparse},
    {"help", "this text", help},
};

int help(Words)
{
    std::puts("usage: orv VERB\n");
    for (const Verb& verb : verbs) std::printf("  %-8s %s\n", verb.name, verb.meaning);
    return 0;
}

int run(Words words)
{
    if (words.empty()) return help(words);
    for (const Verb& verb : verbs)
        if (std::strcmp(words[0], verb.name) == 0) return verb.run(words.subspan(1));
    std::fprintf(stderr, "orv: there is no verb \"%s\"; `orv help` lists the verbs\n", words[0]);
    return 2;
}

} // namespace
} // namespace orv::cli

int main(int count, char** words)
{
    return orv::cli::run({words + 1, static_cast<std::size_t>(count > 1 ? count - 1 : 0)});
}
