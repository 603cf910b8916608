// Problems drawn at random: any family of `orv verify`, told by the names of its arguments.
#pragma once

#include "cli/verify/family.h"
#include "cli/verify/random.h"

namespace orv::test {

// How a routine is called, for which a problem line has no word: by the standard interface, beside the reference
// library, or by our own, to be judged as `orv verify` does.
enum class Way { own, fortran, cblas, cblas_by_rows };

struct Drawn {
    verify::Problem problem;
    Way way;
};

// `most`: multiplications, about.
Drawn draw(const verify::Family& family, const verify::Routine& routine, Way way, double most, verify::Random& random);

} // namespace orv::test
