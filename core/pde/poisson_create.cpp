// Solvers are made here: what the user tells is checked, and the kernel's tables are made once.
#include "core/pde/poisson.h"
#include "core/pde/trig.h"
#include "core/serv/status.h"
#include "frame/serv.h"

#include <cinttypes>
#include <cmath>
#include <limits>

using namespace orv;
using namespace orv::core;
using namespace orv::core::pde;

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr const char* axis_names[] = {"x", "y", "z"};
constexpr const char* sphere_names[] = {"phi", "theta"};

// Ends and cells of one axis. transformed: all but the last one.
orv_status check_axis(const char* routine, int argument, const char* name, const orv_poisson_axis& axis,
                      bool transformed)
{
    if (!(axis.a < axis.b) || !std::isfinite(axis.b - axis.a))
        return bad_argument(routine, argument, "%s goes from %g to %g; it has to ascend, between finite ends", name,
                            axis.a, axis.b);
    const bool around = axis.low == ORV_PERIODIC;
    if (axis.n < (around ? 4 : 2) || axis.n > (INT64_C(1) << 40))
        return bad_argument(routine, argument,
                            "%" PRId64 " cells along %s; between periodic ends it takes 4 at least, else 2", axis.n,
                            name);
    if (around && transformed && axis.n % 2 != 0)
        return bad_argument(routine, argument,
                            "%" PRId64
                            " cells along %s, which is periodic; only the last axis may then have an odd number",
                            axis.n, name);
    return ORV_OK;
}

orv_status check_ends(const char* routine, int argument, const char* name, const orv_poisson_axis& axis)
{
    const auto is_kind = [](int end) { return end >= ORV_DIRICHLET && end <= ORV_PERIODIC; };
    if (!is_kind(axis.low) || !is_kind(axis.high))
        return bad_argument(routine, argument,
                            "the ends of %s are %d and %d; each is ORV_DIRICHLET, ORV_NEUMANN or ORV_PERIODIC", name,
                            axis.low, axis.high);
    if ((axis.low == ORV_PERIODIC) != (axis.high == ORV_PERIODIC))
        return bad_argument(routine, argument, "one end of %s is periodic and the other is not", name);
    return ORV_OK;
}

orv_status check_sphere(const char* routine, int precision, const orv_poisson_axis& phi, const orv_poisson_axis& theta)
{
    const bool circle = phi.low == ORV_PERIODIC && phi.high == ORV_PERIODIC,
               patch = phi.low == ORV_DIRICHLET && phi.high == ORV_DIRICHLET,
               poles = theta.low == ORV_POLE && theta.high == ORV_POLE,
               ends = theta.low == ORV_DIRICHLET && theta.high == ORV_DIRICHLET;
    if (!circle && !patch)
        return bad_argument(routine, 3,
                            "the ends of phi have to be both periodic or both Dirichlet; they are %d and %d", phi.low,
                            phi.high);
    if (!(poles && circle) && !ends)
        return bad_argument(routine, 4,
                            "the ends of theta are %d and %d; both are Dirichlet, or poles if phi goes around",
                            theta.low, theta.high);
    if (const auto status = check_axis(routine, 3, sphere_names[0], phi, true)) return status;
    if (const auto status = check_axis(routine, 4, sphere_names[1], theta, false)) return status;
    const double close = precision == ORV_DFT_DOUBLE ? 1e-10 : 1e-4;
    if (poles && (std::fabs(theta.a) > close || std::fabs(theta.b - pi) > close))
        return bad_argument(routine, 4, "theta goes from %g to %g, but poles are at 0 and pi", theta.a, theta.b);
    if (theta.a < -close || theta.b > pi + close)
        return bad_argument(routine, 4, "theta goes from %g to %g, beyond the poles at 0 and pi", theta.a, theta.b);
    return ORV_OK;
}

// The eigenvalues of a second difference along an axis, wave by wave in ascending order.
struct Eigenvalues {
    double root; // of the largest possible one
    double angle, shift;
    i64 first, last;

    Eigenvalues(const orv_poisson_axis& axis, double h)
        : root(2 / h), angle(pi / (2 * static_cast<double>(axis.n))), shift(0), first(0), last(axis.n)
    {
        if (axis.low == ORV_PERIODIC) angle *= 2, last = axis.n / 2;
        else if (axis.low == ORV_DIRICHLET && axis.high == ORV_DIRICHLET) first = 1, last = axis.n - 1;
        else if (axis.low != axis.high) shift = 0.5, last = axis.n - 1;
    }
    double operator()(i64 wave) const
    {
        const double r = root * std::sin((static_cast<double>(wave) + shift) * angle);
        return r * r;
    }
    // The smallest distance of one of them from a value.
    double distance(double value) const
    {
        const double sine = std::sqrt(std::fmax(value, 0)) / root;
        const i64 near = sine >= 1 ? last : static_cast<i64>(std::asin(sine) / angle - shift);
        double least = std::numeric_limits<double>::infinity();
        for (i64 wave = near - 1; wave <= near + 2; ++wave)
            least = std::fmin(least, std::fabs((*this)(max(first, min(wave, last))) - value));
        return least;
    }
};

// How near -q is to an eigenvalue of a rectangle or a box, as a part of the largest one.
double distance_from_resonance(const orv_poisson& p)
{
    const Eigenvalues x(p.axis[0], p.step(0)), y(p.axis[1], p.step(1)), z(p.axis[2], p.axes == 3 ? p.step(2) : 1);
    const double largest = x(x.last) + y(y.last) + (p.axes == 3 ? z(z.last) : 0) + std::fabs(p.q);
    double least = std::numeric_limits<double>::infinity();
    for (i64 i = x.first; i <= x.last; ++i) {
        if (p.axes == 2) least = std::fmin(least, y.distance(-p.q - x(i)));
        else
            for (i64 j = y.first; j <= y.last; ++j) least = std::fmin(least, z.distance(-p.q - x(i) - y(j)));
    }
    return least / largest;
}

bool has_no_dirichlet_side(const orv_poisson& p)
{
    bool none = true;
    for (int side = 0; side < 2 * p.axes; ++side) none &= p.side(side) != ORV_DIRICHLET;
    return none;
}

template <class T> void init(orv_poisson& p, T* dpar)
{
    using K = PoissonKernels<T>;
    constexpr char letters[] = {'d', 'n', 'p'};
    char sides[7] = {};
    T a[3], b[3];
    const T q = static_cast<T>(p.q);
    for (int k = 0; k < p.axes; ++k) a[k] = static_cast<T>(p.axis[k].a), b[k] = static_cast<T>(p.axis[k].b);
    i64 stat = interrupted, *const ipar = p.ipar;
    if (p.is_sphere) {
        auto& kernel = p.axis[0].low == ORV_PERIODIC ? K::init_circle : K::init_patch;
        kernel.run(&a[0], &b[0], &a[1], &b[1], &p.axis[0].n, &p.axis[1].n, &q, ipar, dpar, &stat);
        if (stat == good) ipar[ipar_theta] = p.axis[1].low == ORV_POLE ? 0 : 1;
    } else {
        for (int side = 0; side < 2 * p.axes; ++side) sides[side] = letters[p.side(side)];
        if (p.axes == 2)
            K::init_2d.run(&a[0], &b[0], &a[1], &b[1], &p.axis[0].n, &p.axis[1].n, sides, &q, ipar, dpar, &stat);
        else
            K::init_3d.run(&a[0], &b[0], &a[1], &b[1], &a[2], &b[2], &p.axis[0].n, &p.axis[1].n, &p.axis[2].n, sides,
                           &q, ipar, dpar, &stat);
        // Ends that were rounded are not the ends; the length is what counts.
        for (int k = 0; k < p.axes; ++k) dpar[dpar_steps + k] = static_cast<T>(p.axis[k].b - p.axis[k].a);
    }
    if (p.q != 0) dpar[dpar_tolerance] = 0; // a small q is one all the same
    ipar[ipar_errors] = ipar[ipar_warnings] = 0;
}

// Each entry from its own angle, where kernels add up steps.
template <class T> void refill_tables(const orv_poisson& p, T* dpar)
{
    const auto refill = [&](int axis, int which) {
        const i64* const inner = p.ipar + ipar_inner + (2 * axis + which) * ipar_inner_step;
        fill_tables(dpar_at(p.ipar, dpar, transform_tables[axis][which]), inner[kernels::pdett::ipar_kind],
                    inner[kernels::pdett::ipar_n]);
    };
    for (int axis = 0; axis + 1 < p.axes; ++axis) {
        refill(axis, 0);
        if (p.axis[axis].low == ORV_PERIODIC) refill(axis, 1);
    }
}

// Tables and transforms. All that the kernels check has been checked, so what fails is memory, or a missing kernel.
template <class T> orv_status make_tables(orv_poisson& p)
{
    auto* const dpar = static_cast<T*>(orv_serv_malloc(p.dpar_size * static_cast<i64>(sizeof(T)), 64));
    if (dpar == nullptr) return fail(ORV_NO_MEMORY, "no memory is left for the tables of a Poisson solver");
    p.dpar = dpar;
    if (PoissonKernels<T>::init_2d.get() == nullptr) return last_status();
    init(p, dpar);
    constexpr i64 tables_only = 990;
    const T* const no_values[6] = {};
    p.ipar[ipar_status] = tables_only;
    if (commit<T>(p, nullptr, no_values, p.handles, p.ipar, dpar) != good)
        return fail(ORV_NO_MEMORY, "no memory is left for the transforms of a Poisson solver");
    refill_tables(p, dpar);
    return ORV_OK;
}

constinit Kernel free_2d{kernels::pdepl::free_helmholtz_2d()};
constinit Kernel free_3d{kernels::pdepl::free_helmholtz_3d()};
constinit Kernel free_circle{kernels::pdepl::free_sph_p()};
constinit Kernel free_patch{kernels::pdepl::free_sph_np()};

void drop(orv_poisson* p)
{
    i64 stat = 0;
    if (p->handles[0] != nullptr) {
        if (!p->is_sphere && p->axes == 2) free_2d.run(&p->handles[0], p->ipar, &stat);
        else if (!p->is_sphere) free_3d.run(&p->handles[0], &p->handles[1], p->ipar, &stat);
        else if (p->axis[0].low == ORV_PERIODIC) free_circle.run(&p->handles[0], &p->handles[1], p->ipar, &stat);
        else free_patch.run(&p->handles[0], p->ipar, &stat);
    }
    orv_serv_free(p->dpar);
    orv_serv_free(p);
}

orv_status finish(orv_poisson** result, const orv_poisson& told)
{
    auto* const p = static_cast<orv_poisson*>(orv_serv_malloc(sizeof(orv_poisson), 64));
    if (p == nullptr) return fail(ORV_NO_MEMORY, "no memory is left for a Poisson solver");
    *p = told;
    double cells = 0;
    for (int k = 0; k < p->axes; ++k)
        cells += 1 / (static_cast<double>(p->axis[k].n) * static_cast<double>(p->axis[k].n));
    p->tolerance = 4 * cells;
    const i64 nx = p->axis[0].n, ny = p->axis[1].n;
    p->dpar_size = p->is_sphere ? dpar_size_sphere(nx, ny) : p->axes == 2 ? dpar_size_2d(nx) : dpar_size_3d(nx, ny);
    const orv_status status = p->precision == ORV_DFT_DOUBLE ? make_tables<double>(*p) : make_tables<float>(*p);
    if (status != ORV_OK) return drop(p), status;
    *result = p;
    return ORV_OK;
}

orv_status check_common(const char* routine, orv_poisson** p, int precision, double q)
{
    if (p == nullptr) return bad_argument(routine, 1, "null");
    if (precision != ORV_DFT_SINGLE && precision != ORV_DFT_DOUBLE)
        return bad_argument(routine, 2, "%d is neither ORV_DFT_SINGLE nor ORV_DFT_DOUBLE", precision);
    if (!std::isfinite(q)) return bad_argument(routine, 5, "q is %g", q);
    return ORV_OK;
}

} // namespace

orv_status orv_poisson_create(orv_poisson** p, int precision, int axes, const orv_poisson_axis* axis, double q)
{
    constexpr const char* routine = "orv_poisson_create";
    if (const auto status = check_common(routine, p, precision, q)) return status;
    if (axes != 2 && axes != 3) return bad_argument(routine, 3, "%d axes; a rectangle has 2 and a box 3", axes);
    if (axis == nullptr) return bad_argument(routine, 4, "null");
    for (int k = 0; k < axes; ++k) {
        if (const auto status = check_ends(routine, 4, axis_names[k], axis[k])) return status;
        if (const auto status = check_axis(routine, 4, axis_names[k], axis[k], k + 1 < axes)) return status;
    }
    orv_poisson told{};
    told.precision = precision, told.axes = axes, told.q = q;
    for (int k = 0; k < axes; ++k) told.axis[k] = axis[k];
    told.is_up_to_constant = q == 0 && has_no_dirichlet_side(told);
    const double unit =
        precision == ORV_DFT_DOUBLE ? std::numeric_limits<double>::epsilon() : std::numeric_limits<float>::epsilon();
    if (!told.is_up_to_constant && (q < 0 || has_no_dirichlet_side(told)) && distance_from_resonance(told) <= 16 * unit)
        return fail(ORV_RESONANCE,
                    "%s: with q = %.17g the equation has no unique solution on this grid, to rounding; take another q "
                    "or another "
                    "number of cells",
                    routine, q);
    return finish(p, told);
}

orv_status orv_poisson_create_sphere(orv_poisson** p, int precision, const orv_poisson_axis* phi,
                                     const orv_poisson_axis* theta, double q)
{
    constexpr const char* routine = "orv_poisson_create_sphere";
    if (const auto status = check_common(routine, p, precision, q)) return status;
    if (phi == nullptr || theta == nullptr) return bad_argument(routine, phi == nullptr ? 3 : 4, "null");
    if (const auto status = check_sphere(routine, precision, *phi, *theta)) return status;
    orv_poisson told{};
    told.precision = precision, told.axes = 2, told.q = q, told.is_sphere = true;
    told.axis[0] = *phi, told.axis[1] = *theta;
    told.is_up_to_constant = q == 0 && theta->low == ORV_POLE;
    return finish(p, told);
}

void orv_poisson_free(orv_poisson* p)
{
    if (p != nullptr) drop(p);
}

int orv_poisson_is_up_to_constant(const orv_poisson* p) { return p != nullptr && p->is_up_to_constant; }

orv_status orv_poisson_set_tolerance(orv_poisson* p, double tolerance)
{
    if (p == nullptr) return bad_argument("orv_poisson_set_tolerance", 1, "null");
    if (!(tolerance >= 0)) return bad_argument("orv_poisson_set_tolerance", 2, "%g; it is 0 or above", tolerance);
    p->tolerance = tolerance;
    return ORV_OK;
}
