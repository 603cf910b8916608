/* Factors a real matrix and solves a system with it: an ordinary program against LAPACK.

   usage: factor MATRIX.mtx [PAGE.html [RUN]]

   LU factors (dgetrf), and Cholesky factors (dpotrf) if the matrix is symmetric and positive definite. The right-hand
   side is A times ones, so the solution is known. Prints times, residuals, and which libraries the time was spent in.
   RUN is the output of another run on the same matrix, which the page shows beside this one. Any libblas.so.3 will do;
   the first line says which one it was. */
#define _GNU_SOURCE
#include "factor.h"
#include "examples/now.h"

#include <cblas.h>
#include <dlfcn.h>
#include <errno.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* LAPACK as Fortran has it: the length of a character comes last. */
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* pivots, int* info);
void dgetrs_(const char* trans, const int* n, const int* columns, const double* a, const int* lda, const int* pivots,
             double* b, const int* ldb, int* info, size_t length);
void dgecon_(const char* norm, const int* n, const double* a, const int* lda, const double* a_norm, double* reciprocal,
             double* work, int* integers, int* info, size_t length);
void dpotrf_(const char* uplo, const int* n, double* a, const int* lda, int* info, size_t length);
void dpotrs_(const char* uplo, const int* n, const int* columns, const double* a, const int* lda, double* b,
             const int* ldb, int* info, size_t length);

static const int one = 1;

struct problem {
    const struct matrix* matrix;
    double norm;             /* largest sum of a column's absolute values */
    double *b, *x, *factors; /* A*x = b */
    int* pivots;
};

static void* memory(size_t count, size_t size)
{
    void* block = calloc(count, size);
    if (block == NULL) {
        fprintf(stderr, "factor: no memory for %zu numbers\n", count);
        exit(1);
    }
    return block;
}

static void set_up(const struct matrix* matrix, struct problem* p)
{
    const int n = matrix->n;
    p->matrix = matrix;
    p->b = memory((size_t)n, sizeof *p->b);
    p->x = memory((size_t)n, sizeof *p->x);
    p->factors = memory((size_t)n * (size_t)n, sizeof *p->factors);
    p->pivots = memory((size_t)n, sizeof *p->pivots);
    for (int j = 0; j < n; ++j) p->norm = fmax(p->norm, cblas_dasum(n, matrix->a + (long)j * n, 1));
    for (int i = 0; i < n; ++i) p->x[i] = 1;
    cblas_dgemv(CblasColMajor, CblasNoTrans, n, n, 1, matrix->a, n, p->x, 1, 0, p->b, 1);
}

/* Each solves the system once; the result is LAPACK's: 0, or the place where the factors end. */
static int lu(struct problem* p)
{
    const int n = p->matrix->n;
    int info;
    dgetrf_(&n, &n, p->factors, &n, p->pivots, &info);
    if (info == 0) dgetrs_("N", &n, &one, p->factors, &n, p->pivots, p->x, &n, &info, 1);
    return info;
}

static int cholesky(struct problem* p)
{
    const int n = p->matrix->n;
    int info;
    dpotrf_("L", &n, p->factors, &n, &info, 1);
    if (info == 0) dpotrs_("L", &n, &one, p->factors, &n, p->x, &n, &info, 1);
    return info;
}

/* Solves up to 5 times, for about 2 seconds at most: the first time pays for what happens once. */
static int measure(int (*solve)(struct problem*), const char* name, double operations, struct problem* p,
                   struct method* result)
{
    const size_t n = (size_t)p->matrix->n;
    const double start = now();
    int info = 0;
    *result = (struct method){.name = name, .seconds = INFINITY};
    begin_shares();
    for (int time = 0; info == 0 && time < 5 && (time == 0 || now() - start < 2); ++time) {
        memcpy(p->factors, p->matrix->a, n * n * sizeof *p->factors);
        memcpy(p->x, p->b, n * sizeof *p->x);
        start_looking();
        const double begin = now();
        info = solve(p);
        result->seconds = fmin(result->seconds, now() - begin);
        stop_looking();
    }
    result->share_count = shares(result->share);
    result->speed = operations / result->seconds * 1e-9;
    return info;
}

static void judge(const struct problem* p, struct method* result)
{
    const int n = p->matrix->n;
    double* r = memory((size_t)n, sizeof *r);
    memcpy(r, p->b, (size_t)n * sizeof *r);
    cblas_dgemv(CblasColMajor, CblasNoTrans, n, n, -1, p->matrix->a, n, p->x, 1, 1, r, 1);
    result->residual = cblas_dasum(n, r, 1) / (p->norm * cblas_dasum(n, p->x, 1));
    for (int i = 0; i < n; ++i)
        if (!(fabs(p->x[i] - 1) <= result->error)) result->error = fabs(p->x[i] - 1); /* NaN stays */
    free(r);
}

/* An estimate of how much the solution can magnify changes of the matrix, from its LU factors. */
static double condition(const struct problem* p)
{
    const int n = p->matrix->n;
    double reciprocal, *work = memory(4 * (size_t)n, sizeof *work);
    int info, *integers = memory((size_t)n, sizeof *integers);
    dgecon_("1", &n, p->factors, &n, &p->norm, &reciprocal, work, integers, &info, 1);
    free(work), free(integers);
    return 1 / reciprocal;
}

static void print(const struct method* m)
{
    printf("%-9s %9.4f %9.2f %15.1e %9.1e  ", m->name, m->seconds, m->speed, m->residual, m->error);
    for (int i = 0; i < m->share_count; ++i)
        if (m->share[i].part >= 0.005) printf(" %s %.0f%%", m->share[i].library, 100 * m->share[i].part);
    printf("\n");
}

/* Reads what another run printed. */
static void read_run(const char* path, struct run* run)
{
    static const char* const names[] = {"LU", "Cholesky"};
    char line[4200], name[20];
    FILE* file = fopen(path, "r");
    if (file == NULL) {
        fprintf(stderr, "factor: %s: %s\n", path, strerror(errno));
        exit(1);
    }
    while (fgets(line, sizeof line, file) != NULL) {
        struct method m = {0};
        int end = 0;
        sscanf(line, "BLAS %4095[^\n]", run->blas);
        sscanf(line, "LAPACK %4095[^\n]", run->lapack);
        if (sscanf(line, "%19s %lf %lf %lf %lf%n", name, &m.seconds, &m.speed, &m.residual, &m.error, &end) != 5)
            continue;
        for (int i = 0; i < most_methods; ++i)
            if (strcmp(name, names[i]) == 0) m.name = names[i];
        for (const char* rest = line + end; m.share_count < most_shares; ++m.share_count) {
            struct share* share = &m.share[m.share_count];
            if (sscanf(rest, " %63s %lf%%%n", share->library, &share->part, &end) != 2) break;
            share->part /= 100, rest += end;
        }
        if (m.name != NULL && run->count < most_methods) run->method[run->count++] = m;
    }
    fclose(file);
}

/* The file that a function was loaded from. */
static void file_of(void* function, char path[4096])
{
    Dl_info info;
    if (dladdr(function, &info) == 0) info.dli_fname = "the program itself";
    if (realpath(info.dli_fname, path) == NULL) snprintf(path, 4096, "%s", info.dli_fname);
}

int main(int argc, char** argv)
{
    struct matrix matrix;
    struct problem problem = {0};
    struct run run = {0}, other = {0};
    if (argc < 2 || argc > 4) {
        fprintf(stderr, "usage: factor MATRIX.mtx [PAGE.html [RUN]]\n");
        return 1;
    }
    read_matrix(argv[1], &matrix);
    if (argc == 4) read_run(argv[3], &other);
    const int n = matrix.n;
    const double cube = (double)n * n * n;
    set_up(&matrix, &problem);

    file_of(dlsym(RTLD_DEFAULT, "dgemm_"), run.blas);
    file_of(dlsym(RTLD_DEFAULT, "dgetrf_"), run.lapack);
    printf("BLAS      %s\nLAPACK    %s\n", run.blas, run.lapack);
    printf("matrix    %d by %d, %ld elements not 0, %ssymmetric\n", n, n, matrix.nonzeros,
           matrix.symmetric ? "" : "not ");

    struct method* m = &run.method[run.count];
    int info = measure(lu, "LU", 2 * cube / 3, &problem, m);
    if (info != 0) {
        fprintf(stderr, "factor: %s: the matrix is singular: pivot %d of %d is 0, so A*x = b has no solution or many\n",
                argv[1], info, n);
        return 1;
    }
    judge(&problem, m);
    const double kappa = condition(&problem);
    printf("condition %.1e%s\n\n", kappa,
           kappa < 1 / 2.2e-16 ? "" : ": singular as far as double can tell, no digit of x can be trusted");
    printf("method      seconds   GFLOP/s  |b-Ax|/(|A||x|)    |x-1|   time spent in\n");
    print(m);
    ++run.count;

    if (matrix.symmetric) {
        m = &run.method[run.count];
        info = measure(cholesky, "Cholesky", cube / 3, &problem, m);
        if (info == 0) {
            judge(&problem, m);
            print(m);
            ++run.count;
        } else printf("Cholesky  does not apply: the matrix is not positive definite (leading %d by %d)\n", info, info);
    } else printf("Cholesky  does not apply: the matrix is not symmetric\n");

    if (argc >= 3) {
        const char* slash = strrchr(argv[1], '/');
        if (write_page(argv[2], slash ? slash + 1 : argv[1], &matrix, &run, argc == 4 ? &other : NULL) != 0) {
            fprintf(stderr, "factor: %s: %s\n", argv[2], strerror(errno));
            return 1;
        }
        printf("\npage written to %s\n", argv[2]);
    }
    return 0;
}
