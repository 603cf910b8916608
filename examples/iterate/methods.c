#include "methods.h"

#include "examples/now.h"

#include <math.h>
#include <orv/blas.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const double tolerance = 1e-12;

void multiply_by_orv(const orv_sparse* a, const double* x, double* y)
{
    if (orv_sparse_dmv('N', 1, a, x, 0, y) == ORV_OK) return;
    fprintf(stderr, "iterate: %s\n", orv_last_error());
    exit(1);
}

void multiply_by_loop(const orv_sparse* a, const double* x, double* y)
{
    const int64_t *begin = a->begin, *column = a->col;
    const double* value = a->values;
    for (int64_t i = 0; i < a->rows; ++i) {
        double sum = 0;
        for (int64_t e = begin[i]; e < begin[i + 1]; ++e) sum += value[e] * x[column[e]];
        y[i] = sum;
    }
}

/* What a run works with: vectors of n elements, one after the other. */
enum { vectors = 8 };
struct work {
    int n;
    product* multiply;
    const orv_sparse* a;
    const double* diagonal;
    double products; /* seconds */
    double *x, *b, *r, *p, *q, *z, *s, *t;
};

static double dot(const struct work* w, const double* x, const double* y) { return orv_ddot(w->n, x, 1, y, 1); }
static void add(const struct work* w, double f, const double* x, double* y) { orv_daxpy(w->n, f, x, 1, y, 1); }
static void times(struct work* w, const double* x, double* y)
{
    const double begin = now();
    w->multiply(w->a, x, y);
    w->products += now() - begin;
}
/* y := x divided by the diagonal, as far as it is not zero. */
static void precondition(const struct work* w, const double* x, double* y)
{
    for (int i = 0; i < w->n; ++i) y[i] = w->diagonal[i] != 0 ? x[i] / w->diagonal[i] : x[i];
}

/* Each goes on until the residual is small, and leaves what it was after each step. */
static void gradients(struct work* w, struct run* run)
{
    const double norm = sqrt(dot(w, w->b, w->b));
    precondition(w, w->r, w->z);
    memcpy(w->p, w->z, (size_t)w->n * sizeof *w->p);
    double rz = dot(w, w->r, w->z);
    while (run->iterations < most_iterations && run->residual[run->iterations] > tolerance) {
        times(w, w->p, w->q);
        const double curvature = dot(w, w->p, w->q);
        if (!(curvature > 0)) {
            run->failed = 1;
            return;
        }
        const double step = rz / curvature;
        add(w, step, w->p, w->x), add(w, -step, w->q, w->r);
        precondition(w, w->r, w->z);
        const double next = dot(w, w->r, w->z), turn = next / rz;
        rz = next;
        for (int i = 0; i < w->n; ++i) w->p[i] = w->z[i] + turn * w->p[i];
        run->residual[++run->iterations] = sqrt(dot(w, w->r, w->r)) / norm;
    }
}

static void stabilised(struct work* w, struct run* run)
{
    const double norm = sqrt(dot(w, w->b, w->b));
    double* const shadow = w->s; /* the first residual; s itself stays in r */
    memcpy(shadow, w->r, (size_t)w->n * sizeof *shadow);
    double rho = 1, alpha = 1, omega = 1;
    while (run->iterations < most_iterations && run->residual[run->iterations] > tolerance) {
        const double next = dot(w, shadow, w->r), turn = next / rho * (alpha / omega);
        rho = next;
        for (int i = 0; i < w->n; ++i) w->p[i] = w->r[i] + turn * (w->p[i] - omega * w->q[i]);
        precondition(w, w->p, w->z);
        times(w, w->z, w->q);
        alpha = rho / dot(w, shadow, w->q);
        add(w, -alpha, w->q, w->r), add(w, alpha, w->z, w->x);
        precondition(w, w->r, w->z);
        times(w, w->z, w->t);
        const double size = dot(w, w->t, w->t);
        omega = size > 0 ? dot(w, w->t, w->r) / size : 0;
        add(w, omega, w->z, w->x), add(w, -omega, w->t, w->r);
        const double residual = sqrt(dot(w, w->r, w->r)) / norm;
        if (!isfinite(residual) || !isfinite(rho)) {
            run->failed = 1;
            return;
        }
        run->residual[++run->iterations] = residual;
        if (rho == 0 || omega == 0) {
            run->failed = residual > tolerance;
            return;
        }
    }
}

const char* method_name(const struct system* system, int by_gradients)
{
    return system->symmetric && by_gradients ? "conjugate gradients" : "BiCGSTAB";
}

/* The right-hand side is A times ones. The fastest of up to five runs counts, within about two seconds. */
void solve(const struct system* system, int by_gradients, product* multiply, const orv_sparse* a, struct run* run)
{
    const size_t n = (size_t)system->n;
    double* const room = calloc(vectors * n, sizeof *room);
    if (room == NULL) {
        fprintf(stderr, "iterate: no memory for %d vectors\n", vectors);
        exit(1);
    }
    const double start = now();
    run->seconds = run->product_seconds = INFINITY;
    for (int time = 0; time < 5 && (time == 0 || now() - start < 2); ++time) {
        memset(room, 0, vectors * n * sizeof *room);
        struct work w = {.n = system->n, .multiply = multiply, .a = a, .diagonal = system->diagonal};
        double** const vector[vectors] = {&w.x, &w.b, &w.r, &w.p, &w.q, &w.z, &w.s, &w.t};
        for (int i = 0; i < vectors; ++i) *vector[i] = room + (size_t)i * n;
        for (size_t i = 0; i < n; ++i) w.p[i] = 1;
        w.multiply(w.a, w.p, w.b);
        memset(w.p, 0, n * sizeof *w.p);
        memcpy(w.r, w.b, n * sizeof *w.r);
        run->iterations = run->failed = 0, run->residual[0] = 1, run->error = 0;
        const double begin = now();
        if (by_gradients) gradients(&w, run);
        else stabilised(&w, run);
        const int steps = run->iterations > 0 ? run->iterations : 1;
        run->seconds = fmin(run->seconds, (now() - begin) / steps);
        run->product_seconds = fmin(run->product_seconds, w.products / steps);
        for (size_t i = 0; i < n; ++i)
            if (!(fabs(w.x[i] - 1) <= run->error)) run->error = fabs(w.x[i] - 1); /* NaN stays */
    }
    free(room);
}
