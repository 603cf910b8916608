// Tridiagonal systems in theta, one for each wave in phi. With s[j] the sine of row j, h the step in theta and l what
// the second difference in phi does to a wave, times h^2, the equation of row j times s[j]*h^2 is
//
//     s[j-1/2]*(u[j] - u[j-1]) + s[j+1/2]*(u[j] - u[j+1]) + (l/s[j] + q*h^2*s[j])*u[j] = f[j],
//
// s[j+1/2] = (s[j] + s[j+1])/2. Where theta has ends u is 0 there. A pole is one point: only the wave that does not
// change with phi reaches it, and its equation is the balance of the cap within half a step, whose share of s is
// s[1]/8. The right-hand side there, multiplied by a sine of 0, is gone; it is taken to be that of the row beside,
// which differs from it by the square of the step.
#include "core/pde/grid.h"
#include "core/pde/systems.h"
#include "frame/export.h"
#include "frame/serv.h"

namespace orv::core::pde {
namespace {

template <class T> class Theta {
public:
    explicit Theta(const BlockOfSphere<T>& block) : s_(block.sines), qh2_(block.q), n_(block.ny) {}

    double s(i64 j) const { return static_cast<double>(s_[j]); }
    double between(i64 j) const { return (s(j) + s(j + 1)) / 2; } // of rows j and j + 1
    // Row j between the ends.
    double diagonal(i64 j, double wave) const { return between(j - 1) + between(j) + wave / s(j) + qh2_ * s(j); }
    // Of the pole at row 0 or n.
    double neighbour(bool south) const { return south ? s(n_ - 1) : s(1); }
    double cap(bool south) const { return neighbour(south) / 8; }
    double pole_diagonal(bool south) const { return neighbour(south) / 2 + qh2_ * cap(south); }

private:
    const T* s_;
    double qh2_;
    i64 n_;
};

// The system of one wave, its rows at a stride. Rows first to end; of poles rows 0 and n are in it.
template <class T>
bool solve_wave(const Theta<T>& theta, T* f, i64 stride, i64 n, double wave, double scale, bool poles,
                bool singular_one, double* work)
{
    const i64 first = poles ? 0 : 1, end = poles ? n + 1 : n, count = end - first;
    double *const a = work, *const b = a + count, *const more = b + count, *const lower = more + count,
                  *const x = lower + count;
    double sum = 0, weights = 0;
    for (i64 j = first; j < end; ++j) {
        const i64 k = j - first;
        const bool pole = j == 0 || j == n, south = j == n;
        // The share of row j in the integral over theta, and its right-hand side.
        const i64 from = j == 0 ? 1 : south ? n - 1 : j;
        const double share_of_row = pole ? theta.cap(south) : theta.s(j);
        x[k] = static_cast<double>(f[from * stride]) * scale * (pole ? 0.125 : 1);
        a[k] = pole ? theta.pole_diagonal(south) : theta.diagonal(j, wave);
        b[k] = -theta.between(j < n ? j : n - 1);
        sum += x[k], weights += share_of_row;
    }
    if (singular_one)
        for (i64 j = first; j < end; ++j)
            x[j - first] -= sum / weights * (j == 0 || j == n ? theta.cap(j == n) : theta.s(j));
    if (poles) b[0] = -theta.neighbour(false) / 2, b[count - 2] = -theta.neighbour(true) / 2;
    const bool solved =
        count < 1 || solve_symmetric(singular_one ? count - 1 : count, a, b, more, lower, x, least_pivot<T>);
    if (singular_one) x[count - 1] = 0;
    for (i64 j = 0; j <= n; ++j) f[j * stride] = j >= first && j < end ? static_cast<T>(x[j - first]) : T(0);
    return solved;
}

template <class T> void solve_sphere(BlockOfSphere<T>* block, bool to_poles)
{
    const i64 np = block->nx, nt = block->ny, pair = block->around;
    const Waves waves_of_row = waves(pair, np);
    const Theta<T> theta(*block);
    const double scale = 1 / gain(pair, np);
    FirstFailure failure;
    share(block->ipar, waves_of_row.end - waves_of_row.first, 40. * static_cast<double>(nt), [&](i64 begin, i64 end) {
        const i64 bytes = 5 * (nt + 1) * static_cast<i64>(sizeof(double));
        auto* const work = static_cast<double*>(orv_serv_allocate(bytes, 128));
        if (work == nullptr) return failure.note(loop_no_memory);
        for (i64 i = begin; i < end; ++i) {
            const i64 place = waves_of_row.first + i, entry = waves_of_row.entry(place);
            const bool poles = to_poles && place == 0;
            const bool solved =
                solve_wave(theta, block->f + place, np + 1, nt, static_cast<double>(block->spectrum[entry]), scale,
                           poles, poles && block->singular != 0, work);
            if (!solved) failure.note(loop_resonance);
        }
        orv_serv_deallocate(work);
    });
    finish(block, failure.status());
}

} // namespace
} // namespace orv::core::pde

using namespace orv::core::pde;

#define SPHERE_LOOPS(t, T)                                                                                             \
    ORV_EXPORT void orv_pdepl_##t##_lu_sph_2d_pp(BlockOfSphere<T>* block) { solve_sphere(block, true); }               \
    ORV_EXPORT void orv_pdepl_##t##_lu_sph_2d_dd(BlockOfSphere<T>* block) { solve_sphere(block, false); }
SPHERE_LOOPS(s, float)
SPHERE_LOOPS(d, double)
