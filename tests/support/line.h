// The line that repeats a failing problem: what a test prints can be pasted behind `orv verify`.
#pragma once

#include "cli/verify/problem.h"
#include "frame/types.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>
#include <string>

namespace orv::test {

// family type letters name=value... seed=, and in brackets what `orv verify` has no name for.
class Line : public verify::Problem {
public:
    Line(const std::string& family, const std::string& type, const std::string& letters = "")
        : Problem(family, type, letters)
    {
    }
    template <class Value> Line& with(const std::string& name, Value value)
    {
        Problem::with(name, value);
        return *this;
    }
    Line& with(const std::string& name, std::uint64_t value) { return with(name, static_cast<i64>(value)); }
    std::string text(const std::string& remark = "")
    {
        if (!find("seed")) with("seed", seed());
        return Problem::text() + (remark.empty() ? "" : " [" + remark + ']');
    }
};

template <class T> Line line(const std::string& family, const std::string& letters = "")
{
    return {family, std::string(1, letter<T>), letters};
}

// Whether `orv verify` understands the line, and finds right what it says.
testing::AssertionResult repeats(const std::string& line);

} // namespace orv::test
