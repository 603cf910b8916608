// Messages of the solvers. In the Fortran wording positions in ipar and dpar count from 1; such a message stands 50
// numbers behind that of the C wording.
#include "pde/message.h"
#include "pde/poisson/state.h"

namespace orv::pdepl {
namespace {

constexpr const char* log_file = "ORV_Poisson_Library_Log.txt";
enum Text { header_of_error = 0x0b, header_of_warning = 0x0c, report_opens = 0, no_file = 201, what_to_do = 202 };
constexpr int fortran_wording = 50;

// What goes into the place of a text.
enum class Shown : unsigned char { nothing, ipar, dpar, text, code };

struct Line {
    i64 code;
    short number; // in the catalogue
    Shown shown = Shown::nothing;
    unsigned char position = 0;
};

constexpr Line lines[] = {
    {no_cells, 100, Shown::ipar, 10},
    {no_cells + 1, 101, Shown::ipar, 11},
    {no_cells + 2, 102, Shown::ipar, 12},
    {x_length, 103, Shown::dpar, 0},
    {x_length + 1, 104, Shown::dpar, 1},
    {z_length, 105, Shown::dpar, 2},
    {sphere_length, 103, Shown::dpar, 0},
    {sphere_length + 1, 104, Shown::dpar, 1},
    {bad_theta_mark, 106, Shown::ipar, 3},
    {bad_side, 107, Shown::ipar, 4},
    {bad_side + 1, 108, Shown::ipar, 5},
    {bad_side + 2, 109, Shown::ipar, 6},
    {bad_side + 3, 110, Shown::ipar, 7},
    {bad_z_side, 111, Shown::ipar, 8},
    {bad_z_side + 1, 112, Shown::ipar, 9},
    {half_periodic_x, 113, Shown::ipar, 4},
    {half_periodic_y, 114, Shown::ipar, 6},
    {half_periodic_z, 115, Shown::ipar, 8},
    {sphere_too_coarse, 116, Shown::ipar, 10},
    {wrong_stage, 117, Shown::ipar, 0},
    {sphere_wrong_stage, 117, Shown::ipar, 0},
    {wrong_sides, 118},
    {free_failed, 119},
    {no_step, 120},
    {sphere_no_step, 120},
    {right_hand_side_failed, 121},
    {sphere_right_hand_side_failed, 121},
    {x_transform, 122},
    {x_transform + 1, 123},
    {x_sine_transform, 122},
    {x_sine_transform + 1, 123},
    {x_cosine_transform, 122},
    {x_cosine_transform + 1, 123},
    {y_transform, 124},
    {y_transform + 1, 125},
    {y_sine_transform, 124},
    {y_sine_transform + 1, 125},
    {y_cosine_transform, 124},
    {y_cosine_transform + 1, 125},
    {transforms_failed, 126},
    {systems_failed, 127, Shown::text},
    {sphere_spectrum_failed, 127, Shown::text},
    {solved_but_for_constant, 128},
    {negative_q, 129, Shown::dpar, 3},
    {odd_circle, 130, Shown::ipar, 10},
};
constexpr Line sphere_lines[] = {
    {tables_moved, 131},
    {bad_sphere_kind, 132, Shown::ipar, 3},
};
constexpr Line unknown{0, 133, Shown::code};

Line line_of(i64 code, i64 level)
{
    if (level == 1)
        for (const Line& line : sphere_lines)
            if (line.code == code) return line;
    for (const Line& line : lines)
        if (line.code == code) return line;
    return unknown;
}

template <class T> void print(i64 code, const i64* ipar, const T* dpar, const char* text, i64 level, bool fortran)
{
    const bool warning = is_warning(code, level);
    const Line line = line_of(code, level);
    const bool has_position = line.shown == Shown::ipar || line.shown == Shown::dpar;
    const int number = line.number + (fortran && has_position ? fortran_wording : 0);

    pde::Message<4105> message;
    message.line_break();
    message.line(warning ? header_of_warning : header_of_error);
    switch (line.shown) {
    case Shown::nothing:
        message.line(number);
        break;
    case Shown::ipar:
        message.line(number, static_cast<long long>(ipar[line.position]));
        break;
    case Shown::dpar:
        message.line(number, static_cast<double>(dpar[line.position]));
        break;
    case Shown::text:
        message.line(number, text);
        break;
    case Shown::code:
        message.line(number, static_cast<long long>(code));
        break;
    }
    message.line_break();
    message.line_break();

    constexpr int standard_output = 1;
    if (ipar[warning ? ipar_warnings : ipar_errors] >= 1)
        return orv_serv_format_print(standard_output, "%.4105s", 1, message.text());
    if (message.log(log_file)) return;
    orv_serv_print(standard_output, report_opens, 0);
    orv_serv_print(standard_output, no_file, 0);
    orv_serv_print(standard_output, what_to_do, 0);
}

template <class T> void tell(const State<T>& state, i64 code, const char* text)
{
    const i64* const ipar = state.ipar;
    if (ipar[is_warning(code, state.level) ? ipar_warnings : ipar_errors] == 0) return;
    print(code, ipar, state.dpar, text, state.level, ipar[ipar_language] == 0);
}

} // namespace

template <> void State<float>::report(i64 diagnostic, const char* text) const { tell(*this, diagnostic, text); }
template <> void State<double>::report(i64 diagnostic, const char* text) const { tell(*this, diagnostic, text); }

} // namespace orv::pdepl

#define PRINT(name, T, fortran)                                                                                        \
    ORV_EXPORT void PDEPL(name)(const i64* code, const i64* ipar, const T* dpar, const char* text, const i64* level)   \
    {                                                                                                                  \
        orv::pdepl::print(*code, ipar, dpar, text, *level, fortran);                                                   \
    }
namespace orv::kernels::pdepl {
PRINT(d_pl_print_diagnostics_c, double, false)
PRINT(d_pl_print_diagnostics_f, double, true)
PRINT(s_pl_print_diagnostics_c, float, false)
PRINT(s_pl_print_diagnostics_f, float, true)
} // namespace orv::kernels::pdepl
