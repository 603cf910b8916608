// A plan: a committed transform, the loops around it that it does not do itself, and the arrays it was made with.
#pragma once

#include "compat/fftw/problem.h"

#include <orv/dft.h>

namespace orv::compat::fftw {

struct Plan {
    orv_dft* dft;              // null where there is nothing to do, and for reals to reals
    orv_dft* rows[Dims::most]; // of reals: a transform of each dimension's length
    Problem problem;           // its loops are those that are left
    double additions, products;

    void run(Arrays arrays) const;
};

// Null if there is no memory, or orv refuses.
Plan* make_plan(const Problem& problem);
void free_plan(Plan* plan);

// Reals to reals, dimension after dimension; a row goes through work memory.
void run_reals(const Plan& plan, const R* in, R* out);

void set_planner_threads(int threads);
int planner_threads();

} // namespace orv::compat::fftw
