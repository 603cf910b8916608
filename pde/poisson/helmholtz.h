// Solvers of -u_xx - u_yy (- u_zz) + q*u = f with what is told of u on each side: commit, solve, free, the same for a
// rectangle (2 axes) and for a box (3). All but the last axis are transformed; along the last one stands a tridiagonal
// system for each wave.
#pragma once

#include "pde/poisson/inner.h"
#include "pde/poisson/sides.h"
#include "pde/poisson/spectra.h"

namespace orv::pdepl {

inline constexpr i64 no_cells_of[] = {no_cells, no_cells + 1, no_cells + 2};
inline constexpr i64 bad_length_of[] = {x_length, x_length + 1, z_length};
inline constexpr i64 bad_side_of[] = {bad_side, bad_side + 1, bad_side + 2, bad_side + 3, bad_z_side, bad_z_side + 1};
inline constexpr i64 half_periodic_of[] = {half_periodic_x, half_periodic_y, half_periodic_z};
inline constexpr struct {
    i64 plain, sine, cosine;
} transform_of[] = {{x_transform, x_sine_transform, x_cosine_transform},
                    {y_transform, y_sine_transform, y_cosine_transform}};

template <class T, int axes> i64 check_cells(const State<T>& state)
{
    for (int axis = 0; axis < axes; ++axis)
        if (state.cells(axis) < 1) return state.fail(not_allowed, no_cells_of[axis]);
    return good;
}

template <class T, int axes> i64 check_sides(const State<T>& state)
{
    for (int side = 0; side < 2 * axes; ++side) {
        const i64 kind = state.ipar[ipar_sides + side];
        if (kind < dirichlet || kind > periodic) return state.fail(not_allowed, bad_side_of[side]);
    }
    return good;
}

// Where tables lie in dpar. Transforms behind spectra, and of an axis the second behind the first; there is always room
// for two.
template <int axes> void lay_out(i64* ipar)
{
    const i64 nx = ipar[ipar_cells], ny = ipar[ipar_cells + 1];
    const auto room = [](i64 n) { return n + n / 2 + 6; };
    ipar[ipar_spectrum] = dpar_tables + 1;
    ipar[ipar_spectrum_y] = ipar[ipar_spectrum] + nx + 1;
    ipar[ipar_sines] = ipar[ipar_spectrum_y] + (axes == 3 ? ny + 1 : 0);
    ipar[ipar_x_first] = ipar[ipar_sines];
    ipar[ipar_x_first_table] = ipar[ipar_x_first] + 1;
    ipar[ipar_x_second] = ipar[ipar_x_first] + nx / 2 + 3;
    ipar[ipar_y_first] = ipar[ipar_x_first] + room(nx);
    ipar[ipar_y_second] = ipar[ipar_y_first] + (axes == 3 ? ny / 2 + 3 : 0);
}

inline constexpr int first_table[] = {ipar_x_first, ipar_y_first}, second_table[] = {ipar_x_second, ipar_y_second},
                     spectrum_table[] = {ipar_spectrum, ipar_spectrum_y};

// Of periodic sides the sine transform leaves its tables only. The two places around n/2 behind its sines are cleared.
template <class T> i64 make_transforms(const State<T>& state, int axis, Handle* handle)
{
    const i64 n = state.cells(axis), pair = state.pair(axis);
    const auto& numbers = transform_of[axis];
    if (pair != pp) return make_transform(state, kind_of(pair), n, axis, 0, first_table[axis], handle, numbers.plain);

    Handle sine_handle = nullptr;
    if (const i64 failed =
            make_transform(state, kernels::pdett::sine, n / 2, axis, 0, first_table[axis], &sine_handle, numbers.sine))
        return failed;
    if (free_inner(state.ipar, axis, 0, &sine_handle) != 0) return state.fail(transform_failed, free_failed);
    T* const table = state.table(first_table[axis]) + kernels::pdett::dpar_tables;
    table[n / 2 - 1] = table[n / 2] = 0;
    return make_transform(state, kernels::pdett::cosine, n / 2, axis, 1, second_table[axis], handle, numbers.cosine);
}

template <class T, int axes> i64 make_tables(const State<T>& state, Handle* const (&handles)[axes - 1])
{
    if (const i64 failed = check_sides<T, axes>(state)) return failed;
    for (int axis = 0; axis < axes; ++axis) {
        const i64* const sides = state.ipar + ipar_sides + 2 * axis;
        if ((sides[0] == periodic) != (sides[1] == periodic)) return state.fail(not_allowed, half_periodic_of[axis]);
    }
    for (int axis = 0; axis < axes; ++axis)
        if (!(state.dpar[dpar_steps + axis] > 0)) return state.fail(not_allowed, bad_length_of[axis]);
    for (int axis = 0; axis < axes; ++axis) state.dpar[dpar_steps + axis] /= static_cast<T>(state.cells(axis));
    if (state.dpar[dpar_q] < 0) state.report(negative_q);

    lay_out<axes>(state.ipar);
    const T last = state.dpar[dpar_steps + axes - 1];
    for (int axis = 0; axis < axes - 1; ++axis) {
        if (const i64 failed = make_transforms(state, axis, handles[axis])) {
            if (axis > 0) free_inner(state.ipar, 0, 0, handles[0]);
            return failed;
        }
        // Every system has 2 + q*h*h on its diagonal once, beside what the transformed axes add.
        const T constant = axis == 0 ? 2 : 0, q = axis == 0 ? state.dpar[dpar_q] : T(0);
        if (const i64 failed = fill_spectrum(state.cells(axis), state.dpar[dpar_steps + axis], last, constant, q,
                                             angle_of(state.pair(axis)), state.table(spectrum_table[axis])))
            return state.fail(failed, systems_failed, "spectrum");
    }
    return good;
}

template <class T> struct RightHandSides;
#define ORV_RIGHT_HAND_SIDES(t, T)                                                                                     \
    template <> struct RightHandSides<T> {                                                                             \
        static constexpr auto &of_rectangle = PDEPL(t##_right_hand_side_2d), &of_box = PDEPL(t##_right_hand_side_3d);  \
    };
ORV_RIGHT_HAND_SIDES(s, float)
ORV_RIGHT_HAND_SIDES(d, double)
#undef ORV_RIGHT_HAND_SIDES

template <class T, int axes> i64 scale_right_hand_side(const State<T>& state, T* f)
{
    const T* const step = state.dpar + dpar_steps + axes - 1;
    const i64* const cells = state.ipar + ipar_cells;
    if (!(*step > 0)) return state.fail(not_allowed, no_step);
    i64 stat = interrupted;
    if constexpr (axes == 2) RightHandSides<T>::of_rectangle(cells, cells + 1, step, f, &stat);
    else RightHandSides<T>::of_box(cells, cells + 1, cells + 2, step, f, &stat);
    return stat == good ? stat : state.fail(stat, right_hand_side_failed);
}

template <class T, int axes>
void commit(T* f, const Sides<T, axes>& sides, Handle* const (&handles)[axes - 1], const State<T>& state)
{
    const i64 code = state.ipar[ipar_status];
    const Stages stages = stages_of(code);
    if (!stages.known) return void(state.fail(not_ready, wrong_stage));
    state.set(interrupted);
    if (code != 999) {
        if (check_cells<T, axes>(state) != good) return;
        if (stages.tables && make_tables<T, axes>(state, handles) != good) return;
        if (stages.right_hand_side && scale_right_hand_side<T, axes>(state, f) != good) return;
        if (stages.boundary) {
            if (state.ipar[ipar_theta] > 15) return void(state.fail(not_allowed, bad_theta_mark));
            if (check_sides<T, axes>(state) != good) return;
            bring_in_sides<T, axes>(state, f, sides);
        }
    }
    state.set(good);
}

// basic() leaves its result in stat.
template <class T, int axes, class Basic>
void solve(T* f, const Sides<T, axes>& sides, const State<T>& state, Basic basic)
{
    const i64 before = state.ipar[ipar_status];
    if (before != good && before != singular) return void(state.fail(not_ready, wrong_stage));
    if (check_cells<T, axes>(state) != good) return;
    state.set(interrupted);
    basic();
    const i64 result = *state.stat;
    if (result == good || result == singular) write_sides<T, axes>(state, f, sides);
    state.set(result);
}

// Each axis' transform by the state of its first one.
template <int axes> void free_transforms(Handle* const (&handles)[axes - 1], i64* ipar, i64* stat)
{
    const State<double> state{ipar, nullptr, stat};
    state.set(interrupted);
    bool failed = false;
    for (int axis = 0; axis < axes - 1; ++axis) failed |= free_inner(ipar, axis, 0, handles[axis]) != 0;
    if (failed) state.fail(transform_failed, free_failed);
    else state.set(good);
}

} // namespace orv::pdepl
