// The library's solvers behind the routine that bench/poisson.cpp times, made at the first call of a grid and kept.
#include "orv/dft.h"
#include "orv/poisson.h"

#include <array>
#include <map>
#include <stdexcept>

namespace {

using Cells = std::array<int, 3>;

orv_poisson* solver(int precision, const Cells& cells)
{
    static std::map<Cells, orv_poisson*> kept[2]; // to the end of the program
    orv_poisson*& p = kept[precision == ORV_DFT_DOUBLE][cells];
    orv_poisson_axis axes[3];
    for (int k = 0; k < 3; ++k) axes[k] = {0, 1, cells[k], ORV_DIRICHLET, ORV_DIRICHLET};
    if (p == nullptr && orv_poisson_create(&p, precision, cells[2] == 0 ? 2 : 3, axes, 0) != ORV_OK)
        throw std::runtime_error(orv_last_error());
    return p;
}

} // namespace

#define EXPORT extern "C" __attribute__((visibility("default")))
EXPORT void dpoisson_(const int* nx, const int* ny, const int* nz, double* u)
{
    orv_dpoisson_solve(solver(ORV_DFT_DOUBLE, {*nx, *ny, *nz}), u, nullptr, nullptr, nullptr);
}
EXPORT void spoisson_(const int* nx, const int* ny, const int* nz, float* u)
{
    orv_spoisson_solve(solver(ORV_DFT_SINGLE, {*nx, *ny, *nz}), u, nullptr, nullptr, nullptr);
}
