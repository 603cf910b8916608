// Diagnostics: a heading and some lines of the catalogue of messages, put together here and shown in one piece, on
// standard output or at the end of a log file. Two wordings: positions count from 0, as in C, or from 1, as in Fortran.
#include "pde/message.h"
#include "pde/trig/trig.h"

namespace orv::pdett {
namespace {

constexpr const char* log_file = "ORV_Trig_Transforms_Log.txt";
using Message = pde::Message<4185 - 1>;

// Numbers of messages.
enum : int {
    heading = 396,
    error = 397,
    warning = 398,
    of_unknown_code = 407,
    cannot_open = 408,
    what_to_do = 409,
    fortran_is_behind = 39 // so much less than the C wording, where the two differ
};

// What a message has places for.
enum class Shows : char { nothing, status, size, kind, threads, tolerance, new_tolerance, value, text };

struct Line {
    int number; // 0: no more lines
    bool has_positions;
    Shows shows;
};
struct Text {
    i64 code;
    Line lines[5];
};
constexpr Line plain(int number) { return {number, false, Shows::nothing}; }
constexpr Line with_position(int number, Shows shows) { return {number, true, shows}; }
constexpr Text texts[] = {
    {commit_not_ready, {with_position(449, Shows::status), plain(450)}},
    {size_below_2, {with_position(451, Shows::size), plain(452)}},
    {unknown_kind, {with_position(453, Shows::kind), plain(454), plain(455), plain(456)}},
    {free_interrupted, {plain(457), plain(458), plain(459)}},
    {run_not_ready, {plain(460), with_position(461, Shows::status), plain(462), plain(463)}},
    {size_is_lost, {plain(464), with_position(465, Shows::size), plain(466)}},
    {negative_tolerance,
     {with_position(467, Shows::tolerance), plain(468), plain(469), plain(470), {471, false, Shows::new_tolerance}}},
    {sine_first_not_zero, {with_position(472, Shows::value), plain(473), plain(474)}},
    {sine_last_not_zero, {with_position(475, Shows::value), plain(476), plain(477)}},
    {cosine_last_not_zero, {with_position(478, Shows::value), plain(479), plain(480)}},
    {negative_threads, {with_position(481, Shows::threads), plain(482), plain(483)}},
    {staggered_first_not_zero, {with_position(484, Shows::value), plain(485), plain(486)}},
    {transform_layer, {{487, false, Shows::text}}},
};
constexpr Text unknown_text{-1, {plain(of_unknown_code)}};

constexpr bool is_error(i64 code) { return code < 7 || code == transform_layer; }

const Text& text_of(i64 code)
{
    for (const Text& text : texts)
        if (text.code == code) return text;
    return unknown_text;
}

// What the two arrays and the caller have to show.
struct Shown {
    const i64* ipar;
    double tolerance, new_tolerance;
    const char* text;
};

void add(Line line, bool fortran, const Shown& shown, Message& message)
{
    const int number = line.has_positions && fortran ? line.number - fortran_is_behind : line.number;
    const auto integer = [&](Ipar position) { return static_cast<long long>(shown.ipar[position]); };
    switch (line.shows) {
    case Shows::nothing:
        return message.line(number);
    case Shows::status:
        return message.line(number, integer(ipar_status));
    case Shows::size:
        return message.line(number, integer(ipar_n));
    case Shows::kind:
        return message.line(number, integer(ipar_kind));
    case Shows::threads:
        return message.line(number, integer(ipar_threads), 1LL);
    case Shows::tolerance:
        return message.line(number, shown.tolerance);
    case Shows::new_tolerance:
        return message.line(number, shown.new_tolerance);
    case Shows::value:
        return message.line(number, shown.text, shown.tolerance);
    case Shows::text:
        return message.line(number, shown.text);
    }
}

void print(i64 code, const Shown& shown, bool fortran)
{
    Message message;
    message.line_break();
    message.line(heading);
    message.line(is_error(code) ? error : warning);
    for (const Line& line : text_of(code).lines) {
        if (line.number == 0) break;
        add(line, fortran, shown, message);
    }
    message.line_break(), message.line_break();

    if (shown.ipar[is_error(code) ? ipar_errors : ipar_warnings] >= 1) {
        printf("%.3079s", message.text());
        fflush(nullptr);
    } else if (!message.log(log_file)) {
        orv_serv_print(1, 0, 0);
        orv_serv_print(1, cannot_open, 0, log_file);
        orv_serv_print(1, what_to_do, 0);
    }
}

template <class T> void print(i64 code, const i64* ipar, const T* dpar, const char* text, bool fortran)
{
    Shown shown{ipar, 0, 0, text != nullptr ? text : ""};
    if (code != transform_layer && dpar != nullptr) {
        shown.tolerance = dpar[dpar_tolerance];
        shown.new_tolerance = static_cast<T>(ipar[ipar_n]) * tolerance<T>;
    }
    print(code, shown, fortran);
}

} // namespace

template <class T> void diagnose(Diagnostic code, const i64* ipar, const T* dpar, const char* text)
{
    if (ipar[is_error(code) ? ipar_errors : ipar_warnings] == 0) return;
    print(code, ipar, dpar, text, ipar[ipar_language] == 0);
}
template void diagnose(Diagnostic code, const i64* ipar, const float* dpar, const char* text);
template void diagnose(Diagnostic code, const i64* ipar, const double* dpar, const char* text);

} // namespace orv::pdett

using orv::i64;

#define PRINT(name, T, fortran)                                                                                        \
    ORV_EXPORT void PDETT(name)(const i64* code, const i64* ipar, const T* dpar, const char* text)                     \
    {                                                                                                                  \
        orv::pdett::print(*code, ipar, dpar, text, fortran);                                                           \
    }
PRINT(s_print_diagnostics_c, float, false)
PRINT(d_print_diagnostics_c, double, false)
PRINT(s_print_diagnostics_f, float, true)
PRINT(d_print_diagnostics_f, double, true)
