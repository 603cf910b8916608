// The error routines of the test program, which take the place of the libraries' own.
#pragma once

#include "frame/types.h"

#include <string>
#include <vector>

namespace orv::test {

// What reached an error routine: which one, with what.
struct Report {
    std::string routine; // "xerbla_"
    std::string name;    // "DGEMM "
    i64 position;
    std::string text; // the formatted rest, of CBLAS
    bool operator==(const Report&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const Report& report);

// Everything reported since the last call.
std::vector<Report> take_reports();

} // namespace orv::test
