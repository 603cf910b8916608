// A solve of a rectangle or a box on a right-hand side that has been made ready.
#include "pde/poisson/loops.h"

namespace orv::pdepl {
namespace {

bool allows_constant(i64 pair) { return pair == nn || pair == pp; }

// The mean over the grid, in which a side counts half, an edge of a box a quarter.
template <int axes, class T> double mean(const State<T>& state, const T* f)
{
    const i64 nx = state.cells(0), ny = state.cells(1), nz = axes == 3 ? state.cells(2) : 0;
    const auto weight = [](i64 i, i64 n) { return i == 0 || i == n ? 0.5 : 1; };
    double sum = 0;
    for (i64 k = 0; k <= nz; ++k)
        for (i64 j = 0; j <= ny; ++j) {
            double row = -0.5 * (static_cast<double>(f[0]) + static_cast<double>(f[nx]));
            for (i64 i = 0; i <= nx; ++i) row += static_cast<double>(f[i]);
            sum += row * weight(j, ny) * (axes == 3 ? weight(k, nz) : 1);
            f += nx + 1;
        }
    return sum / (static_cast<double>(nx) * static_cast<double>(ny) * (axes == 3 ? static_cast<double>(nz) : 1));
}

template <int axes, class T> i64 take_mean_off(const State<T>& state, T* f)
{
    state.report(solved_but_for_constant);
    const T constant = static_cast<T>(mean<axes>(state, f));
    i64 points = 1;
    for (int axis = 0; axis < axes; ++axis) points *= state.cells(axis) + 1;
    for (i64 i = 0; i < points; ++i) f[i] -= constant;
    return singular;
}

template <class T, class Block> void fill(Block* block, const State<T>& state, T* f)
{
    block->f = f, block->dpar = state.dpar, block->ipar = state.ipar;
    block->spectrum = state.table(ipar_spectrum);
    block->nx = state.cells(0), block->ny = state.cells(1);
}

template <class T> i64 solve_rectangle(const State<T>& state, T* f, Handle handle)
{
    const Lent<Block<T>> block;
    if (block.get() == nullptr) return not_allowed;
    fill(block.get(), state, f);
    block->handle = handle;
    const i64 x = state.pair(0), y = state.pair(1);
    const T* const spectrum = block->spectrum;
    block->singular =
        allows_constant(x) && allows_constant(y) && magnitude(2 - spectrum[0]) <= state.dpar[dpar_tolerance];

    using L = Loops<T>;
    auto *const forward = loop_of(L::forward, x), *const systems = loop_of(L::systems, y);
    if (forward == nullptr) return state.report(wrong_sides), not_allowed;
    Way way(state, block.get());
    way.then(forward, transforms_failed);
    if (!way.good() || systems == nullptr) return not_allowed;
    way.then(systems, systems_failed, of_systems).then(loop_of(L::backward, x), transforms_failed);
    if (!way.good()) return not_allowed;
    return block->singular != 0 ? take_mean_off<2>(state, f) : i64{good};
}

template <class T> i64 solve_box(const State<T>& state, T* f, Handle xhandle, Handle yhandle)
{
    const Lent<BlockOfBox<T>> block;
    if (block.get() == nullptr) return not_allowed;
    fill(block.get(), state, f);
    block->nz = state.cells(2);
    block->handle = xhandle, block->y_handle = yhandle;
    const i64 x = state.pair(0), y = state.pair(1), z = state.pair(2);
    const T least = block->spectrum[0] + *state.table(ipar_spectrum_y);
    block->singular = allows_constant(x) && allows_constant(y) && allows_constant(z) &&
                      magnitude(2 - least) <= state.dpar[dpar_tolerance];

    using L = Loops<T>;
    auto *const forward_x = loop_of(L::forward_x, x), *const forward_y = loop_of(L::forward_y, y),
                *const systems = loop_of(L::systems_of_box, z);
    if (forward_x == nullptr || forward_y == nullptr) return state.report(wrong_sides), not_allowed;
    Way way(state, block.get());
    way.then(forward_x, transforms_failed).then(forward_y, transforms_failed);
    if (!way.good() || systems == nullptr) return not_allowed;
    way.then(systems, systems_failed, of_systems)
        .then(loop_of(L::backward_y, y), transforms_failed)
        .then(loop_of(L::backward_x, x), transforms_failed);
    if (!way.good()) return not_allowed;
    return block->singular != 0 ? take_mean_off<3>(state, f) : i64{good};
}

} // namespace
} // namespace orv::pdepl

#define BASIC(t, T)                                                                                                    \
    ORV_EXPORT void PDEPL(t##_basic_2d_poisson)(T * f, Handle * handle, i64 * ipar, T * dpar, i64 * stat)              \
    {                                                                                                                  \
        *stat = orv::pdepl::solve_rectangle<T>({ipar, dpar, stat}, f, *handle);                                        \
    }                                                                                                                  \
    ORV_EXPORT void PDEPL(t##_basic_3d_poisson)(T * f, Handle * xhandle, Handle * yhandle, i64 * ipar, T * dpar,       \
                                                i64 * stat)                                                            \
    {                                                                                                                  \
        *stat = orv::pdepl::solve_box<T>({ipar, dpar, stat}, f, *xhandle, *yhandle);                                   \
    }

namespace orv::kernels::pdepl {
BASIC(s, float)
BASIC(d, double)
} // namespace orv::kernels::pdepl
