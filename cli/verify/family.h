// A family of routines: one operation in several types, told in one table entry.
#pragma once

#include "cli/verify/plan.h"
#include "cli/verify/problem.h"
#include "cli/verify/routine.h"

namespace orv::verify {

class Setting;

struct Family {
    const char* name;
    // Names of the arguments in the order of the call. Names tell the engine what it has to know: lda is a leading
    // dimension, uplo a letter. "trans:nt" gives letters other than the usual ones.
    const char* arguments;
    Plan (*plan)(Setting&);
    // What a run goes through: lines of values, "m=1|4|9 n=5" for m of 1, of 4 and of 9, each in all types and with all
    // combinations of letters, or with the type and the letters that stand before the values. threads=1|all is one
    // thread, and all where there are more. A line with times= draws so many problems at random, n=20..300 a size.
    std::vector<const char*> sweeps;
    std::vector<Routine> routines;
};

struct Group {
    const char *name, *title;
    std::vector<Family> families;
};

// All there are.
const std::vector<Group>& groups();

Group vectors();
Group sparse_vectors();
Group matrix_vectors();
Group matrix_products();
Group transpositions();
Group extended();
Group transforms();
Group waves();
Group convolutions();
Group poisson_problems();
Group sparse_matrices();

} // namespace orv::verify
