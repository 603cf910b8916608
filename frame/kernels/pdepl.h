// The kernels of Helmholtz solvers, what stands where in the two arrays that hold the state of one, and the parameter
// block by which they hand the loops over a grid to the core. The problems and the scheme are told in
// pde/poisson/README.md.
#pragma once

#include "frame/kernels/pdett.h"

#define PDEPL(name) ORV_KERNEL(pdepl, name)

namespace orv::kernels::pdepl {

using imports::Handle;

// What is told of u on a side.
enum Side : i64 { side_unknown = -1, dirichlet = 0, neumann = 1, periodic = 2 };

// Two facing sides, low and high, as one number.
constexpr i64 pair_of(i64 low, i64 high) { return 2 * low + high; }
enum Pair : i64 { dd = 0, dn = 1, nd = 2, nn = 3, pp = 6 };

// Positions in ipar, integers of 64 bits.
enum Ipar {
    ipar_status = 0,   // of the last operation; before a commit, its stages
    ipar_errors = 1,   // error messages: 0 none, above 0 to standard output, below 0 to the log file
    ipar_warnings = 2, // warnings, the same
    ipar_theta = 3,    // sphere: 0 from pole to pole, 1 else; rectangles and boxes: at most 15
    ipar_sides = 4,    // a Side for ax, bx, ay, by, and az, bz
    ipar_cells = 10,   // nx, ny, and nz; np and nt
    // Positions in dpar, counted from 1. What a solver does not have takes no room.
    ipar_spectrum = 13,
    ipar_spectrum_y = 14,
    ipar_sines = 15,
    ipar_x_first = 16, // dpar of the first transform along x
    ipar_x_first_table = 17,
    ipar_x_second = 18, // periodic sides take a sine transform and then a cosine transform
    ipar_y_first = 23,  // boxes; on the sphere the second table of x
    ipar_y_second = 24, // boxes; on the sphere the end
    ipar_language = 21, // 1: positions in messages count from 0, as in C; 0: from 1, as in Fortran
    ipar_threads = 22,
    ipar_inner = 40,      // ipar of the transforms: first and second of x, first and second of y,
    ipar_inner_step = 20, // so far apart
    ipar_size = 128
};

// Positions in dpar.
enum Dpar {
    dpar_steps = 0, // lengths until a commit makes steps hx, hy, hz of them
    dpar_first_theta = 2,
    dpar_q = 3, // the sphere multiplies it by the square of its step in theta
    dpar_tolerance = 4,
    dpar_tables = 5
};

// What is left out by a commit: 9 in the units, tens and hundreds of its stage code.
struct Stages {
    bool known, tables, right_hand_side, boundary;
};
constexpr Stages stages_of(i64 code)
{
    const i64 units = code % 10, tens = code / 10 % 10, hundreds = code / 100;
    const auto is_flag = [](i64 digit) { return digit == 0 || digit == 9; };
    return {code >= 0 && is_flag(units) && is_flag(tens) && is_flag(hundreds), units == 0, hundreds == 0, tens == 0};
}

// What operations leave in their status and in ipar.
enum Status : i64 {
    good = 0,
    singular = 1, // solved but for a constant; on the sphere also: tables do not lie where they should
    no_points = -2,
    not_allowed = -100,
    transform_failed = -1000,
    not_ready = -10000,
    interrupted = -99999
};

// How a singular problem may end in a loop of tridiagonal systems, which is the core's: what it leaves in the block.
enum LoopStatus : i64 {
    loop_failed = -1,
    loop_no_memory = -2,
    loop_resonance = -3 // a system without a unique solution, of a problem that is not marked as singular
};

// The parameter block. Words of 8 bytes, and values, no addresses of them. Loops report failure by a negative status.
template <class T> struct Block {
    T *f, *dpar, *spectrum;
    i64* ipar;
    i64 nx, ny;
    i64 singular; // not 0: a constant may be added to the solution
    i64 status;
    Handle handle; // of the transforms along x; periodic sides have one for both kinds
    i64 scratch[14];
};
template <class T> struct BlockOfBox {
    T *f, *dpar, *spectrum; // the spectrum of x; that of y is where ipar tells
    i64* ipar;
    i64 nx, ny, nz;
    i64 singular;
    i64 status;
    Handle handle, y_handle;
    i64 scratch[14];
};
template <class T> struct BlockOfSphere : Block<T> {
    T* sines;
    double q;   // times the square of the step in theta
    i64 around; // the Pair of phi: pp or dd
};

// The least length of dpar. Transforms take at most 3/2 of their points.
constexpr i64 dpar_size_2d(i64 nx) { return dpar_tables + (nx + 1) + (nx + nx / 2 + 6); }
constexpr i64 dpar_size_3d(i64 nx, i64 ny)
{
    return dpar_tables + (nx + 1) + (ny + 1) + (nx + nx / 2 + 6) + (ny + ny / 2 + 6);
}
constexpr i64 dpar_size_sphere(i64 np, i64 nt) { return dpar_tables + np + nt + np + np / 2 + 8; }

// Of a sphere's tables behind each other, each of a transform of np/2 points: as the positions in ipar tell.
constexpr i64 sphere_table(i64 np) { return 3 * np / 4; }

// f: (nx + 1)*(ny + 1) values, x fastest, or as many times nz + 1. bd_*: a value for each point of a side, x before y
// before z; null: zeros.
template <class T>
using Init2d = void(const T* ax, const T* bx, const T* ay, const T* by, const i64* nx, const i64* ny, const char* sides,
                    const T* q, i64* ipar, T* dpar, i64* stat);
template <class T>
using Init3d = void(const T* ax, const T* bx, const T* ay, const T* by, const T* az, const T* bz, const i64* nx,
                    const i64* ny, const i64* nz, const char* sides, const T* q, i64* ipar, T* dpar, i64* stat);
template <class T>
using Step2d = void(T* f, const T* bd_ax, const T* bd_bx, const T* bd_ay, const T* bd_by, Handle* xhandle, i64* ipar,
                    T* dpar, i64* stat);
template <class T>
using Step3d = void(T* f, const T* bd_ax, const T* bd_bx, const T* bd_ay, const T* bd_by, const T* bd_az,
                    const T* bd_bz, Handle* xhandle, Handle* yhandle, i64* ipar, T* dpar, i64* stat);
using Free2d = void(Handle* xhandle, i64* ipar, i64* stat);
using Free3d = void(Handle* xhandle, Handle* yhandle, i64* ipar, i64* stat);

template <class T>
using InitSphere = void(const T* ap, const T* bp, const T* at, const T* bt, const i64* np, const i64* nt, const T* q,
                        i64* ipar, T* dpar, i64* stat);
template <class T> using StepSphere = void(T* f, Handle* handle_s, Handle* handle_c, i64* ipar, T* dpar, i64* stat);
template <class T> using StepPatch = void(T* f, Handle* handle, i64* ipar, T* dpar, i64* stat);
using FreeSphere = void(Handle* handle_s, Handle* handle_c, i64* ipar, i64* stat);
using FreePatch = void(Handle* handle, i64* ipar, i64* stat);

// The steps that those are made of.
template <class T> using Basic3d = void(T* f, Handle* xhandle, Handle* yhandle, i64* ipar, T* dpar, i64* stat);
template <class T> using RightHandSide2d = void(const i64* nx, const i64* ny, const T* hy, T* f, i64* stat);
template <class T>
using RightHandSide3d = void(const i64* nx, const i64* ny, const i64* nz, const T* hz, T* f, i64* stat);
template <class T> using Spectrum2d = void(const i64* nx, const T* hx, const T* hy, const T* q, T* table, i64* stat);
template <class T>
using Spectrum3d = void(const i64* nx, const i64* ny, const T* hx, const T* hy, const T* hz, const T* q, T* table_x,
                        T* table_y, i64* stat);
template <class T> using SpectrumSphere = void(const i64* np, const T* hphi, const T* htheta, T* table, i64* stat);
template <class T>
using RightHandSideSphere = void(const i64* np, const i64* nt, const T* hphi, const T* htheta, T* q, const T* sines,
                                 T* f, i64* stat);
template <class T> using SinesOfTheta = void(const i64* nt, const T* length, const T* first, T* sines);
template <class T> using Sine = T(const T* angle);
using CompareLetter = i64(const char* string, const char* letter, const i64* position); // counted from 1
// level: 0 rectangles and boxes; 1 the sphere, to which some numbers mean something else.
template <class T>
using PrintDiagnostics = void(const i64* code, const i64* ipar, const T* dpar, const char* text, const i64* level);

#define ORV_NAME(name, ...) ORV_PROTOTYPE(pdepl, name, name, __VA_ARGS__)
#include "frame/kernels/pdepl.def"
#undef ORV_NAME

template <class T> using Loop = void(Block<T>* block);
template <class T> using LoopOfBox = void(BlockOfBox<T>* block);
template <class T> using LoopOfSphere = void(BlockOfSphere<T>* block);

} // namespace orv::kernels::pdepl

// The loops over a grid, which the core has: transforms of all rows, a tridiagonal system for each of their results.
extern "C" {
#define ORV_PDEPL_LOOPS(t, T, pair)                                                                                    \
    orv::kernels::pdepl::Loop<T> orv_pdepl_##t##_ft_2d_##pair, orv_pdepl_##t##_lu_2d_##pair,                           \
        orv_pdepl_##t##_inv_ft_2d_##pair;                                                                              \
    orv::kernels::pdepl::LoopOfBox<T> orv_pdepl_##t##_ft_3d_x_##pair, orv_pdepl_##t##_ft_3d_y_##pair,                  \
        orv_pdepl_##t##_lu_3d_##pair, orv_pdepl_##t##_inv_ft_3d_x_##pair, orv_pdepl_##t##_inv_ft_3d_y_##pair;
#define ORV_PDEPL_ALL_LOOPS(t, T)                                                                                      \
    ORV_PDEPL_LOOPS(t, T, dd)                                                                                          \
    ORV_PDEPL_LOOPS(t, T, dn)                                                                                          \
    ORV_PDEPL_LOOPS(t, T, nd)                                                                                          \
    ORV_PDEPL_LOOPS(t, T, nn)                                                                                          \
    ORV_PDEPL_LOOPS(t, T, pp)                                                                                          \
    orv::kernels::pdepl::LoopOfSphere<T> orv_pdepl_##t##_lu_sph_2d_dd, orv_pdepl_##t##_lu_sph_2d_pp;
ORV_PDEPL_ALL_LOOPS(s, float)
ORV_PDEPL_ALL_LOOPS(d, double)
#undef ORV_PDEPL_LOOPS
#undef ORV_PDEPL_ALL_LOOPS
orv::i64 orv_pdepl_pl_get_max_thread(void);
}
