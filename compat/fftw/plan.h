// A plan: a committed transform, the loops around it that it does not do itself, and the arrays it was made with.
#pragma once

#include "compat/fftw/problem.h"

#include <orv/dft.h>
#include <orv/trig.h>

namespace orv::compat::fftw {

constexpr int precision = sizeof(R) == 4 ? ORV_DFT_SINGLE : ORV_DFT_DOUBLE;

// Reals to reals along a dimension: by a half spectrum, or as sines or cosines.
struct Line {
    orv_dft* spectrum;
    orv_trig* wave;
};

struct Plan {
    orv_dft* dft;           // null where there is nothing to do, and for reals to reals
    Line lines[Dims::most]; // of reals, a dimension each
    Problem problem;        // its loops are those that are left
    double additions, products;

    void run(Arrays arrays) const;
};

// Null if there is no memory, or orv refuses.
Plan* make_plan(const Problem& problem);
void free_plan(Plan* plan);

// Reals to reals, dimension after dimension.
bool lines_made(Plan& plan);
void run_reals(const Plan& plan, const R* in, R* out);

[[noreturn]] void give_up();

void set_planner_threads(int threads);
int planner_threads();

} // namespace orv::compat::fftw
