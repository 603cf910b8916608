// One problem, run and judged; and the problems that a family is checked with.
#pragma once

#include "cli/verify/oracle.h"

namespace orv::verify {

// What became of a problem.
struct Outcome {
    Problem problem; // with all values given
    Verdict verdict;
    std::string fault{};   // what else went wrong, or empty
    std::string refused{}; // the bad argument that the routine has to refuse, or empty

    bool passed() const { return fault.empty() && verdict.share <= 1; }
};

// Null if there is none.
const Family* find_family(const std::string& name);
const Group* find_group(const std::string& name);

// Throws Mistake if the problem does not say what to run.
Outcome run(const Problem& problem);

std::vector<Problem> problems(const Family& family);

} // namespace orv::verify
