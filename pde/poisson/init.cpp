// The beginning of a solver's life: what the caller tells is put where it belongs. Nothing is looked at yet.
#include "pde/poisson/spectra.h"
#include "pde/poisson/state.h"

namespace orv::pdepl {
namespace {

// q*h^2, or an angle, below which there is nothing: some hundreds of thousands of roundings in double precision, and in
// single as many as its numbers have room for.
template <class T> inline constexpr T tolerance = T(1e-10);
template <> inline constexpr float tolerance<float> = 1e-4f;

i64 side_of(const char* sides, i64 position)
{
    constexpr struct {
        char letters[2];
        Side side;
    } kinds[] = {{{'d', 'D'}, dirichlet}, {{'n', 'N'}, neumann}, {{'p', 'P'}, periodic}};
    for (const auto& kind : kinds)
        for (const char& letter : kind.letters)
            if (PDEPL(chr_cpm)(sides, &letter, &position) != 0) return kind.side;
    return side_unknown;
}

template <class T> State<T> begin(i64* ipar, T* dpar, i64* stat)
{
    const State<T> state{ipar, dpar, stat};
    state.set(interrupted);
    ipar[ipar_errors] = ipar[ipar_warnings] = 1;
    ipar[ipar_language] = 1;
    dpar[dpar_tolerance] = tolerance<T>;
    ipar[ipar_threads] = orv_pdepl_pl_get_max_thread();
    return state;
}

template <class T, int axes>
void init_box(const T* const (&ends)[2 * axes], const i64* const (&cells)[axes], const char* sides, T q, i64* ipar,
              T* dpar, i64* stat)
{
    const State<T> state = begin(ipar, dpar, stat);
    ipar[ipar_theta] = 0;
    for (int axis = 0; axis < axes; ++axis) {
        ipar[ipar_cells + axis] = *cells[axis];
        dpar[dpar_steps + axis] = *ends[2 * axis + 1] - *ends[2 * axis];
    }
    for (int side = 0; side < 2 * axes; ++side) ipar[ipar_sides + side] = side_of(sides, side + 1);
    dpar[dpar_q] = q;
    state.set(good);
}

// A circle of phi reaches from pole to pole if theta does; a patch has sides in any case.
template <class T>
void init_sphere(bool circle, T ap, T bp, T at, T bt, i64 np, i64 nt, T q, i64* ipar, T* dpar, i64* stat)
{
    const State<T> state = begin(ipar, dpar, stat);
    const bool to_poles = magnitude(at) <= tolerance<T> && magnitude(static_cast<T>(pi) - bt) <= tolerance<T>;
    ipar[ipar_theta] = circle && to_poles ? 0 : 1;
    ipar[ipar_cells] = np, ipar[ipar_cells + 1] = nt;
    dpar[dpar_steps] = bp - ap, dpar[dpar_steps + 1] = bt - at;
    dpar[dpar_first_theta] = at;
    dpar[dpar_q] = q;
    state.set(good);
}

} // namespace
} // namespace orv::pdepl

#define INIT_SPHERE(t, T, name, circle)                                                                                \
    ORV_EXPORT void PDEPL(t##_##name)(const T* ap, const T* bp, const T* at, const T* bt, const i64* np,               \
                                      const i64* nt, const T* q, i64* ipar, T* dpar, i64* stat)                        \
    {                                                                                                                  \
        orv::pdepl::init_sphere(circle, *ap, *bp, *at, *bt, *np, *nt, *q, ipar, dpar, stat);                           \
    }
#define INIT(t, T)                                                                                                     \
    ORV_EXPORT void PDEPL(t##_init_helmholtz_2d)(const T* ax, const T* bx, const T* ay, const T* by, const i64* nx,    \
                                                 const i64* ny, const char* sides, const T* q, i64* ipar, T* dpar,     \
                                                 i64* stat)                                                            \
    {                                                                                                                  \
        orv::pdepl::init_box<T, 2>({ax, bx, ay, by}, {nx, ny}, sides, *q, ipar, dpar, stat);                           \
    }                                                                                                                  \
    ORV_EXPORT void PDEPL(t##_init_helmholtz_3d)(const T* ax, const T* bx, const T* ay, const T* by, const T* az,      \
                                                 const T* bz, const i64* nx, const i64* ny, const i64* nz,             \
                                                 const char* sides, const T* q, i64* ipar, T* dpar, i64* stat)         \
    {                                                                                                                  \
        orv::pdepl::init_box<T, 3>({ax, bx, ay, by, az, bz}, {nx, ny, nz}, sides, *q, ipar, dpar, stat);               \
    }                                                                                                                  \
    INIT_SPHERE(t, T, init_sph_p, true)                                                                                \
    INIT_SPHERE(t, T, init_sph_np, false)

namespace orv::kernels::pdepl {
INIT(s, float)
INIT(d, double)

ORV_EXPORT i64 PDEPL(chr_cpm)(const char* string, const char* letter, const i64* position)
{
    return string[*position - 1] == *letter;
}
} // namespace orv::kernels::pdepl
