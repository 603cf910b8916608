// Solvers of -(u_tt*sin(t))_t/sin(t) - u_pp/sin(t)^2 + q*u = f on the sphere, p azimuth and t colatitude: all around in
// p (periodic), or on a patch between two meridians (u = 0 there). Where theta does not reach from pole to pole u = 0
// at its ends. commit, solve, free; q and f are multiplied by the square of the step in theta, f by the sine of theta,
// too.
#include "pde/poisson/inner.h"
#include "pde/poisson/loops.h"
#include "pde/poisson/spectra.h"

namespace orv::pdepl {
namespace {

constexpr i64 level = 1;

// Positions of the tables, by which a solve also sees whether they were moved. A patch has one transform, of np points.
struct Place {
    int at;
    i64 position;
};
template <class Each> bool all_places(i64 np, i64 nt, bool circle, Each each)
{
    const i64 first = dpar_tables + 1, sines = first + np + 2, inner = sines + nt + 2;
    const i64 table = circle ? sphere_table(np) : np / 2 + 1;
    const Place places[] = {{ipar_spectrum, first},
                            {ipar_spectrum_y, sines - 1},
                            {ipar_sines, sines},
                            {ipar_x_first, inner - 1},
                            {ipar_x_first_table, inner},
                            {ipar_x_second, inner + table},
                            {ipar_y_first, inner + table + 1},
                            {ipar_y_second, inner + 2 * table + 1}};
    bool all = true;
    for (const Place& place : places) all &= each(place);
    return all;
}

template <class T> i64 check_points(const State<T>& state)
{
    if (state.cells(0) < 1) return state.fail(not_allowed, no_cells);
    if (state.cells(1) < 1) return state.fail(not_allowed, no_cells + 1);
    return good;
}

template <class T> i64 make_steps(const State<T>& state)
{
    for (int axis = 0; axis < 2; ++axis) {
        T& length = state.dpar[dpar_steps + axis];
        if (!(length > 0)) return state.fail(not_allowed, sphere_length + axis);
        length /= static_cast<T>(state.cells(axis));
    }
    return good;
}

template <class T> struct SphereNames;
#define SPHERE_NAMES(t, T)                                                                                             \
    template <> struct SphereNames<T> {                                                                                \
        static constexpr auto& sines = PDEPL(t##_sphere_s);                                                            \
        static constexpr auto& right_hand_side = PDEPL(t##_sph_right_2d);                                              \
        static constexpr auto &spectrum = PDEPL(t##_sph_spectr_2d),                                                    \
                              &spectrum_of_patch = PDEPL(t##_sph_spectr_dddd_2d);                                      \
    };
SPHERE_NAMES(s, float)
SPHERE_NAMES(d, double)
#undef SPHERE_NAMES

template <class T> i64 make_tables(const State<T>& state, Handle* handle_s, Handle* handle_c)
{
    using kernels::pdett::cosine, kernels::pdett::sine;
    if (state.ipar[ipar_theta] != 0 && state.ipar[ipar_theta] != 1) return state.fail(not_allowed, bad_sphere_kind);
    const i64 np = state.cells(0), nt = state.cells(1);
    const bool circle = handle_c != nullptr;
    if (circle && np % 2 != 0) state.report(odd_circle);
    all_places(np, nt, circle, [&](Place place) {
        state.ipar[place.at] = place.position;
        return true;
    });
    if (circle) {
        if (const i64 failed = make_transform(state, sine, np / 2, 0, 0, ipar_x_first, handle_s, x_sine_transform))
            return failed;
        if (const i64 failed =
                make_transform(state, cosine, np / 2, 0, 1, ipar_x_second, handle_c, x_cosine_transform)) {
            free_inner(state.ipar, 0, 0, handle_s);
            return failed;
        }
    } else if (const i64 failed = make_transform(state, sine, np, 0, 0, ipar_x_first, handle_s, x_sine_transform)) {
        return failed;
    }
    SphereNames<T>::sines(&nt, state.dpar + dpar_steps + 1, state.dpar + dpar_first_theta, state.table(ipar_sines));
    if (const i64 failed = make_steps(state)) {
        free_inner(state.ipar, 0, 0, handle_s);
        if (circle) free_inner(state.ipar, 0, 1, handle_c);
        return failed;
    }
    i64 stat = interrupted;
    (circle ? SphereNames<T>::spectrum : SphereNames<T>::spectrum_of_patch)(
        &np, state.dpar + dpar_steps, state.dpar + dpar_steps + 1, state.table(ipar_spectrum), &stat);
    return stat == good ? stat : state.fail(stat, sphere_spectrum_failed, "spectrum");
}

// handle_c: null for a patch.
template <class T> void commit(T* f, Handle* handle_s, Handle* handle_c, const State<T>& state)
{
    const i64 code = state.ipar[ipar_status];
    const Stages stages = stages_of(code);
    if (!stages.known) return void(state.fail(not_ready, sphere_wrong_stage));
    state.set(interrupted);
    if (code != 999) {
        if (check_points(state) != good) return;
        const i64 np = state.cells(0), nt = state.cells(1);
        if ((handle_c != nullptr ? np / 2 : np) < 2) return void(state.fail(not_allowed, sphere_too_coarse));
        if (stages.tables && make_tables(state, handle_s, handle_c) != good) return;
        if (stages.right_hand_side) {
            const T *const hphi = state.dpar + dpar_steps, *const htheta = hphi + 1;
            if (!(*htheta > 0)) return void(state.fail(not_allowed, sphere_no_step));
            i64 stat = interrupted;
            SphereNames<T>::right_hand_side(&np, &nt, hphi, htheta, state.dpar + dpar_q, state.table(ipar_sines), f,
                                            &stat);
            if (stat != good) return void(state.fail(stat, sphere_right_hand_side_failed));
        }
    }
    state.set(good);
}

// basic() leaves its result in stat.
template <class T, class Basic> void solve(const State<T>& state, bool circle, Basic basic)
{
    const i64 before = state.ipar[ipar_status];
    if (before != good && before != singular) return void(state.fail(not_ready, wrong_stage));
    if (check_points(state) != good) return;
    state.set(interrupted);
    const bool in_place = all_places(state.cells(0), state.cells(1), circle,
                                     [&](Place place) { return state.ipar[place.at] == place.position; });
    if (!in_place) state.report(tables_moved);
    basic();
    state.set(*state.stat == good && !in_place ? i64{singular} : *state.stat);
}

// A patch is 0 on its meridians; the transforms know it and leave something else there.
template <class T> void clear_sides(i64 np, i64 nt, T* f)
{
    for (i64 j = 0; j <= nt; ++j) f[j * (np + 1)] = f[j * (np + 1) + np] = 0;
}

// The mean over the sphere: rows count by the sine of their theta. An odd circle is one point smaller.
template <class T> i64 take_mean_off(const State<T>& state, const T* sines, T* f)
{
    state.report(solved_but_for_constant);
    const i64 np = state.cells(0), nt = state.cells(1), around = np / 2 * 2, points = (np + 1) * (nt + 1);
    double sum = 0, weights = 0;
    for (i64 j = 0; j <= nt; ++j) {
        double row = 0;
        for (i64 i = 0; i < around; ++i) row += static_cast<double>(f[j * (np + 1) + i]);
        sum += row * static_cast<double>(sines[j]);
        weights += static_cast<double>(around) * static_cast<double>(sines[j]);
    }
    const T constant = static_cast<T>(sum / weights);
    for (i64 i = 0; i < points; ++i) f[i] -= constant;
    return singular;
}

template <class T>
i64 basic(const State<T>& state, T* f, Handle handle, Loop<T>* forward, Loop<T>* backward, bool circle)
{
    const Lent<BlockOfSphere<T>> block;
    if (block.get() == nullptr) return not_allowed;
    block->f = f, block->dpar = state.dpar, block->spectrum = state.table(ipar_spectrum), block->ipar = state.ipar;
    block->nx = state.cells(0), block->ny = state.cells(1);
    block->handle = handle;
    block->sines = state.table(ipar_sines);
    block->q = static_cast<double>(state.dpar[dpar_q]);
    block->around = circle ? pp : dd;
    const i64 kind = state.ipar[ipar_theta];
    // Sides where u = 0 leave nothing open.
    block->singular = circle && kind == 0 && magnitude(state.dpar[dpar_q]) <= state.dpar[dpar_tolerance];

    Way way(state, block.get());
    way.then(forward, transforms_failed);
    if (!way.good()) return not_allowed;
    if (kind != 0 && kind != 1) return state.report(wrong_sides), not_allowed;
    way.then(kind == 0 ? Loops<T>::to_poles : Loops<T>::between, systems_failed, of_systems)
        .then(backward, transforms_failed);
    if (!way.good()) return not_allowed;
    if (!circle) clear_sides(block->nx, block->ny, f);
    return block->singular != 0 ? take_mean_off(state, block->sines, f) : i64{good};
}

void free_transforms(Handle* handle_s, Handle* handle_c, i64* ipar, i64* stat)
{
    const State<double> state{ipar, nullptr, stat, level};
    state.set(interrupted);
    bool failed = free_inner(ipar, 0, 0, handle_s) != 0;
    if (handle_c != nullptr) failed |= free_inner(ipar, 0, 1, handle_c) != 0;
    if (failed) state.fail(transform_failed, free_failed);
    else state.set(good);
}

} // namespace
} // namespace orv::pdepl

#define SPHERE(t, T)                                                                                                   \
    ORV_EXPORT void PDEPL(t##_commit_sph_p)(T * f, Handle * handle_s, Handle * handle_c, i64 * ipar, T * dpar,         \
                                            i64 * stat)                                                                \
    {                                                                                                                  \
        orv::pdepl::commit<T>(f, handle_s, handle_c, {ipar, dpar, stat, orv::pdepl::level});                           \
    }                                                                                                                  \
    ORV_EXPORT void PDEPL(t##_commit_sph_np)(T * f, Handle * handle, i64 * ipar, T * dpar, i64 * stat)                 \
    {                                                                                                                  \
        orv::pdepl::commit<T>(f, handle, nullptr, {ipar, dpar, stat, orv::pdepl::level});                              \
    }                                                                                                                  \
    ORV_EXPORT void PDEPL(t##_sph_p)(T * f, Handle * handle_s, Handle * handle_c, i64 * ipar, T * dpar, i64 * stat)    \
    {                                                                                                                  \
        orv::pdepl::solve<T>({ipar, dpar, stat, orv::pdepl::level}, true, [=] {                                        \
            PDEPL(t##_basic_sphere)(f, handle_s, handle_c, ipar, dpar, stat);                                          \
        });                                                                                                            \
    }                                                                                                                  \
    ORV_EXPORT void PDEPL(t##_sph_np)(T * f, Handle * handle, i64 * ipar, T * dpar, i64 * stat)                        \
    {                                                                                                                  \
        orv::pdepl::solve<T>({ipar, dpar, stat, orv::pdepl::level}, false, [=] {                                       \
            PDEPL(t##_basic_sphere_dd)(f, handle, ipar, dpar, stat);                                                   \
        });                                                                                                            \
    }                                                                                                                  \
    ORV_EXPORT void PDEPL(t##_basic_sphere)(T * f, Handle*, Handle * handle_c, i64 * ipar, T * dpar, i64 * stat)       \
    {                                                                                                                  \
        *stat = orv::pdepl::basic<T>({ipar, dpar, stat, orv::pdepl::level}, f, *handle_c, orv_pdepl_##t##_ft_2d_pp,    \
                                     orv_pdepl_##t##_inv_ft_2d_pp, true);                                              \
    }                                                                                                                  \
    ORV_EXPORT void PDEPL(t##_basic_sphere_dd)(T * f, Handle * handle, i64 * ipar, T * dpar, i64 * stat)               \
    {                                                                                                                  \
        *stat = orv::pdepl::basic<T>({ipar, dpar, stat, orv::pdepl::level}, f, *handle, orv_pdepl_##t##_ft_2d_dd,      \
                                     orv_pdepl_##t##_inv_ft_2d_dd, false);                                             \
    }

namespace orv::kernels::pdepl {
SPHERE(s, float)
SPHERE(d, double)

ORV_EXPORT void PDEPL(free_sph_p)(Handle* handle_s, Handle* handle_c, i64* ipar, i64* stat)
{
    orv::pdepl::free_transforms(handle_s, handle_c, ipar, stat);
}
ORV_EXPORT void PDEPL(free_sph_np)(Handle* handle, i64* ipar, i64* stat)
{
    orv::pdepl::free_transforms(handle, nullptr, ipar, stat);
}
} // namespace orv::kernels::pdepl
