// One problem against the reference library, and on several threads against one.
#pragma once

#include "tests/random/draw.h"

namespace orv::test {

// What is wrong, or nothing.
std::string check(const Drawn& drawn);

// The ways in which a routine can be called beside the reference library; only `own` where it has no such routine.
std::vector<Way> ways_of(const verify::Family& family, const verify::Routine& routine);

// The line that repeats it, with how it is called in brackets; and back.
std::string text(const Drawn& drawn);
Drawn parse(const std::string& line);

} // namespace orv::test
