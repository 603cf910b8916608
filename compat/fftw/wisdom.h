// What has been planned: a line for each problem, which programs carry from one process to the next.
#pragma once

#include "compat/fftw/problem.h"

namespace orv::compat::fftw {

bool is_known(const Problem& problem);
void note(const Problem& problem); // without memory it is not noted

} // namespace orv::compat::fftw
