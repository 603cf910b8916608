// The two arrays of a solver, by name, and how a step of its life ends: with a status that the caller gets and that
// stays in ipar, and, if the caller wants to read it, with a message.
#pragma once

#include "frame/kernels/pdepl.h"

namespace orv::pdepl {

using namespace kernels::pdepl;

// Numbers of diagnostics. Errors are those below 900 and from 10000 to 10899.
enum Diagnostic : i64 {
    no_cells = 0,       // 0 to 2 by axis
    x_length = 3,       // and the next one for y; a box has z_length
    bad_theta_mark = 5, // ipar[3] above 15
    bad_side = 6,       // 6 to 9 by side; a box has bad_z_side and the next
    sphere_too_coarse = 11,
    wrong_stage = 12,
    wrong_sides = 13,
    free_failed = 14,
    no_step = 15,
    right_hand_side_failed = 16,
    x_transform = 23, // its commit is the next one
    transforms_failed = 25,
    systems_failed = 26, // the spectrum too
    y_transform = 33,
    solved_but_for_constant = 900,
    negative_q = 904,
    sphere_length = 10003, // of phi, and the next one of theta
    z_length = 10005,
    bad_z_side = 10010,
    sphere_wrong_stage = 10012,
    sphere_no_step = 10015,
    sphere_right_hand_side_failed = 10016,
    x_sine_transform = 10023, // of periodic sides
    sphere_spectrum_failed = 10026,
    x_cosine_transform = 10029,
    y_sine_transform = 10033,
    y_cosine_transform = 10039,
    half_periodic_x = 10067,
    half_periodic_y = 10089,
    half_periodic_z = 10101,
    odd_circle = 10904,
    // of the sphere (level 1), by numbers that mean something else to a rectangle
    tables_moved = 3, // a warning
    bad_sphere_kind = 9
};

template <class T> struct State {
    i64* ipar;
    T* dpar;
    i64* stat;
    i64 level = 0;

    i64 cells(int axis) const { return ipar[ipar_cells + axis]; }
    i64 pair(int axis) const { return pair_of(ipar[ipar_sides + 2 * axis], ipar[ipar_sides + 2 * axis + 1]); }
    T* table(int position) const { return dpar + ipar[position] - 1; } // positions count from 1

    void set(i64 status) const { *stat = ipar[ipar_status] = status; }
    i64 fail(i64 status, i64 diagnostic, const char* text = "") const
    {
        report(diagnostic, text); // which may show what stands in ipar so far
        set(status);
        return status;
    }
    void report(i64 diagnostic, const char* text = "") const;
};

inline bool is_warning(i64 code, i64 level)
{
    return (level == 1 && code == tables_moved) || code >= 10900 || (code >= 900 && code < 10000);
}

template <> void State<float>::report(i64 diagnostic, const char* text) const;
template <> void State<double>::report(i64 diagnostic, const char* text) const;

} // namespace orv::pdepl
