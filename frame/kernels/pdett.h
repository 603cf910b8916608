// The kernels of sine and cosine transforms, and what stands where in the two arrays that hold the state of one. What
// the kinds compute is told in pde/README.md.
#pragma once

#include "frame/imports.h"
#include "frame/kernels/prototype.h"

#define PDETT(name) ORV_KERNEL(pdett, name)

namespace orv::kernels::pdett {

enum Kind : i64 {
    sine = 0,
    cosine = 1,
    staggered_cosine = 2,
    staggered_sine = 3,
    staggered2_cosine = 4, // staggered in both spaces
    staggered2_sine = 5
};
inline constexpr i64 kinds = 6;

// Positions in ipar, integers of 64 bits.
enum Ipar {
    ipar_n = 0,        // transform size
    ipar_errors = 1,   // error messages: 0 none, above 0 to standard output, below 0 to the log file
    ipar_warnings = 2, // warnings, the same
    ipar_kind = 5,
    ipar_status = 6,   // of the last operation; what follows refuses to work unless it is 0
    ipar_tables = 7,   // 0: a commit keeps tables and handle as they are
    ipar_language = 8, // 1: positions in messages count from 0, as in C; 0: from 1, as in Fortran
    ipar_threads = 9,  // of the caller
    ipar_raw = 10,     // not 0: ends are not checked and results not scaled; staggered sines begin at the first unknown
    ipar_size = 11     // nothing behind is looked at
};

// Positions in dpar.
enum Dpar {
    dpar_tolerance = 0, // of what should be zero at the ends
    dpar_tables = 2
};

// What the tables hold behind that, with t = pi/n: of a sine, sin(k*t) for k = 1 to n/2; of all other kinds cos(k*t)
// and sin(k*t) by turns. Then, of kinds 2 to 5, sines of half steps, sin((k-1/2)*t) for k = 1 to n/2, which start at
// half_angles, and of kinds 4 and 5 those of quarter steps, sin((k-1/2)*t/2) for k = 1 to n, at quarter_angles.
constexpr i64 half_angles(i64 kind, i64 n) { return kind < staggered2_cosine ? n : 2 * n; }
constexpr i64 quarter_angles(i64 n) { return n; }

// The least length of dpar.
constexpr i64 dpar_size(i64 kind, i64 n)
{
    const i64 tables = kind == sine ? 0 : kind == cosine ? n / 2 : half_angles(kind, n);
    return dpar_tables + tables + n / 2;
}

// What operations leave in their status and in ipar. A commit that warns leaves one of the positive ones, or their sum.
enum Status : i64 {
    good = 0,
    warned_of_ends = 1,
    warned_of_correction = 10,
    bad_size_or_kind = -100,
    transform_failed = -1000,
    not_ready = -10000,
    interrupted = -99999
};

// Numbers of diagnostics. Errors are those below 7 and 1001.
enum Diagnostic : i64 {
    commit_not_ready = 0,
    size_below_2 = 1,
    unknown_kind = 3,
    free_interrupted = 4,
    run_not_ready = 5,
    size_is_lost = 6,
    negative_tolerance = 300,
    sine_first_not_zero = 302,
    sine_last_not_zero = 303,
    cosine_last_not_zero = 307,
    negative_threads = 308,
    staggered_first_not_zero = 309,
    transform_layer = 1001
};

template <class T> using Init = void(const i64* n, const i64* kind, i64* ipar, T* dpar, i64* stat);
template <class T> using Commit = void(const T* f, imports::Handle* handle, i64* ipar, T* dpar, i64* stat);
template <class T> using Run = void(T* f, imports::Handle* handle, i64* ipar, T* dpar, i64* stat);
using Free = void(imports::Handle* handle, i64* ipar, i64* stat);
template <class T> using PrintDiagnostics = void(const i64* code, const i64* ipar, const T* dpar, const char* text);
// The transform alone: no scale, no look at the state; table stands at dpar + dpar_tables. Returns what it stores in
// stat.
template <class T> using Transform = i64(T* f, imports::Handle* handle, const i64* ipar, const T* table, i64* stat);

#define ORV_NAME(name, ...) ORV_PROTOTYPE(pdett, name, name, __VA_ARGS__)
#include "frame/kernels/pdett.def"
#undef ORV_NAME

} // namespace orv::kernels::pdett
