// The public routines that kernels call, seen on their way: this program exports them before the core does, writes down
// each call while a test asks for it, and passes it on.
#pragma once

#include <string>
#include <vector>

namespace orv::test {

struct FrontCalls {
    FrontCalls();
    ~FrontCalls();
    FrontCalls(const FrontCalls&) = delete;
    FrontCalls& operator=(const FrontCalls&) = delete;

    // One entry a call: the routine and the words it was given, "dgemv No transpose".
    std::vector<std::string> calls;

    int count(const std::string& call) const;
};

} // namespace orv::test
