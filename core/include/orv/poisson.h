/* Direct solvers of the Poisson and the Helmholtz equation on regular grids: -(u_xx + u_yy) + q*u = f on a rectangle,
   the same with u_zz in a box, and on a sphere. The answer takes the place of f, after some passes over the grid.

       orv_poisson_axis axes[2] = {{0, 1, 200, ORV_DIRICHLET, ORV_DIRICHLET},     200 cells in x, 100 in y
                                   {0, 2, 100, ORV_NEUMANN, ORV_DIRICHLET}};
       orv_poisson* p;
       orv_poisson_create(&p, ORV_DFT_DOUBLE, 2, axes, 0);
       orv_dpoisson_solve(p, u, NULL, NULL, NULL);           u: 101 rows of 201 numbers, f before and u afterwards
       orv_poisson_free(p);

   Grid      An axis from a to b has n cells and n + 1 points, the ends among them. Of 3 by 2 cells the corners are

                 y = axes[1].b   u[2*sy] ------------------ u[3*sx + 2*sy]       sx, sy: strides in elements;
                                    |      side 3 (high y)     |                 1 and 4 = nx + 1 unless told
                       side 0       |                          |   side 1
                      (low x)       |      side 2 (low y)      |  (high x)       in a box sz = (nx + 1)*(ny + 1),
                 y = axes[1].a   u[0] ---------------------- u[3*sx]             sides 4 and 5 are low and high z
                                 x = axes[0].a              x = axes[0].b

   Sides     ORV_DIRICHLET: u is given there.  ORV_NEUMANN: its derivative outwards is given.  ORV_PERIODIC: the grid
             goes on at the facing side, which is periodic, too; the last point of the axis is the first one again, and
             what f has there is not read.
   Scheme    (2u[i] - u[i-1] - u[i+1])/h^2 along each axis, of second order; at a Neumann side u[-1] = u[1] + 2h*du.
             The equations hold at all points but those on Dirichlet sides, where what f has is not read. All of them
             are solved to rounding, times the condition of the system.
   Solvable  If no side tells u itself and q is 0, u is determined up to a constant: the answer is the one with mean 0,
             in which points on a side count half. And there is none unless f and what flows in through the sides add up
             to 0. The grid is never exact about that, so what is amiss, spread evenly over f, is taken off f, and told;
             if it is more than the tolerance, ORV_NOT_SOLVABLE is returned and nothing written.
             For some q below 0 there is none or many: ORV_RESONANCE.
   Results   Every function returns a status (orv/status.h). Where it is not 0 nothing was written, unless memory ran
             out in the middle or ORV_RESONANCE was met in a solve. Nothing is printed, no file is touched.
   Threads   A solver is only read by a solve, which any number of threads may call at once on arrays of their own.
             Large grids are shared among threads; their number does not change a bit of the result. */
#ifndef ORV_POISSON_H
#define ORV_POISSON_H

#include <orv/dft.h>
#include <orv/status.h>

typedef struct orv_poisson orv_poisson; /* a solver: a grid, what is told of its sides, and q */

/* What is told of u at an end of an axis. */
enum {
    ORV_DIRICHLET = 0,
    ORV_NEUMANN = 1,
    ORV_PERIODIC = 2,
    ORV_POLE = 3 /* of a sphere, see there */
};

typedef struct {
    double a, b; /* a below b */
    int64_t n;   /* cells: at least 2; between periodic ends at least 4, and on all axes but the last an even number */
    int low, high; /* what is told at a and at b */
} orv_poisson_axis;

/* Makes a solver for 2 or 3 axes: a rectangle or a box. *p is not touched on failure.
   Bad: 1 null; 2 neither ORV_DFT_SINGLE nor ORV_DFT_DOUBLE; 3 neither 2 nor 3; 4 null, or an axis makes no sense, of
   which orv_last_error() tells more; 5 not finite. ORV_RESONANCE: q is, to rounding, minus an eigenvalue of the grid.
   ORV_NO_MEMORY. */
ORV_API orv_status orv_poisson_create(orv_poisson** p, int precision, int axes, const orv_poisson_axis* axis, double q);

/* On the sphere: -(sin(t)*u_t)_t/sin(t) - u_pp/sin(t)^2 + q*u = f, where p, the azimuth, takes the place of x, and t,
   the colatitude, that of y: 0 at the north pole, pi at the south pole. phi: both ends periodic (a full circle, b - a =
   2*pi, but that is not looked at) or both Dirichlet (a patch). theta: both ends ORV_POLE (a = 0, b = pi to 10 digits,
   or 4 in single precision), for which phi is periodic, or both Dirichlet. All points of a row at a pole are that one
   point: they get the same answer, and f is not read there but taken to be what it is one row away. The mean of an
   answer that is determined up to a constant is that over the surface. Bad: 1, 2 as above; 3 phi; 4 theta; 5 q. */
ORV_API orv_status orv_poisson_create_sphere(orv_poisson** p, int precision, const orv_poisson_axis* phi,
                                             const orv_poisson_axis* theta, double q);

/* Ends its life; null is allowed. */
ORV_API void orv_poisson_free(orv_poisson* p);

/* 1 if answers are determined up to a constant, 0 if f and the sides determine them. Null: 0. */
ORV_API int orv_poisson_is_up_to_constant(const orv_poisson* p);

/* What may be amiss with f before ORV_NOT_SOLVABLE, as a part of the mean magnitude of f and of what flows in. Unless
   set it is 4 times the sum of 1/n^2 over the axes, for that is what sums over a grid leave of integrals that are 0;
   infinity takes everything. Bad: 1 null; 2 below 0 or NaN. */
ORV_API orv_status orv_poisson_set_tolerance(orv_poisson* p, double tolerance);

/* The values of one side: that of point (j, k) of the side is values[j*stride[0] + k*stride[1]], where j counts along
   the first of the other axes and k along the second; on a rectangle there is no k. Strides of 0 are one value for the
   whole side. values null: zeros. Of periodic sides and poles nothing is read. Where two Dirichlet sides meet the later
   one wins. */
typedef struct {
    const double* values;
    int64_t stride[2];
} orv_dpoisson_side;
typedef struct {
    const float* values;
    int64_t stride[2];
} orv_spoisson_side;

/* Solves. u: f before, u afterwards, all points. strides: one an axis, none of them 0; null: no gaps, x fastest. Others
   go through a copy. sides: one of each side, in the order of the picture; null: zeros everywhere. misfit: null, or
   receives what was taken off f at all points, 0 if nothing had to be.
   Bad: 1 null, or of the other precision; 2 null; 3 a stride of 0. ORV_NOT_SOLVABLE, ORV_RESONANCE (u is
   lost), ORV_NO_MEMORY. */
ORV_API orv_status orv_dpoisson_solve(const orv_poisson* p, double* u, const int64_t* strides,
                                      const orv_dpoisson_side* sides, double* misfit);
ORV_API orv_status orv_spoisson_solve(const orv_poisson* p, float* u, const int64_t* strides,
                                      const orv_spoisson_side* sides, double* misfit);

#endif
