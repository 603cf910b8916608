// The competitors, each in a process of its own: no symbol of one library can reach another, settings that libraries
// read from the environment while they are loaded differ, and yet all work on the same memory, called in turn.
#pragma once

#include "bench/case.h"

#include <string>
#include <vector>

#include <sys/types.h>

namespace orv::bench {

// Who meets whom in one series of samples.
enum Pass : unsigned { held = 1, unrestricted = 2, threaded = 4 };

struct Library {
    std::string name, file;
    unsigned passes;                             // a set of Pass
    bool direct;                                 // call the kernels behind the core library, not the standard interface
    std::vector<std::string> environment;        // NAME=VALUE, set before the library is opened
    std::string (*core)(void* handle) = nullptr; // which processor does it compute for,
    std::string expected_core{};                 // and which must it be
    std::string below{};                         // a library that this one calls, opened before it
};

struct Places {
    std::string orv, against, eigen; // folders of built libraries
};
std::vector<Library> libraries(const Places& places);

// Memory that the workers share with the program that controls them: a result, then the operands.
class Arena {
public:
    explicit Arena(std::size_t bytes);
    std::byte* result() const { return base; }
    std::byte* address(const Operand& o) const { return base + operands_begin + o.offset; }
    static constexpr std::size_t operands_begin = 4096, result_bytes = 16;

private:
    std::byte* base;
};

class Worker {
public:
    Worker(const Library& library, const std::vector<Case>& cases, const Arena& arena, int processor);
    Worker(Worker&&) = default;

    const Library& library() const { return *lib; }
    bool offers(std::size_t index) const; // can it run the case at all
    const std::string& core() const { return computes_for; }
    // One call that is not timed, if asked for, then so many timed ones.
    struct Sample {
        double seconds;   // of one call
        double undivided; // how much of that time the processor was ours
    };
    Sample sample(std::size_t index, long calls, bool warm_up) const;

private:
    struct Order {
        std::size_t index;
        long calls; // 0: only asks whether the case can run
        bool warm_up;
    };
    Sample ask(Order order) const;
    [[noreturn]] void serve(const std::vector<Case>& cases, const Arena& arena, int processor);

    const Library* lib;
    std::string computes_for;
    int orders = -1, answers = -1; // pipe ends
};

} // namespace orv::bench
