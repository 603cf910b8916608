// Running a command and looking at what it says.
#pragma once

#include <string>

namespace orv::test {

struct Outcome {
    int status;       // exit status, or minus the signal that ended it
    std::string text; // standard output and standard error
};

// Runs a line of shell, such as "ORV_NUM_THREADS=2 orv info".
Outcome run(const std::string& line);

} // namespace orv::test
