/* Solves a sparse system by iterations, every product of which is one call.

   usage: iterate MATRIX.mtx [PAGE.html]

   Conjugate gradients if the file says that the matrix is symmetric (and it turns out to be positive definite), else
   BiCGSTAB, both preconditioned by the diagonal. The right-hand side is A times ones, so the solution is known. The
   same method runs on orv's product, for a symmetric matrix with its triangle alone too, and on a plain loop. */
#include "methods.h"

#include <errno.h>
#include <orv/threads.h>
#include <stdio.h>
#include <string.h>

enum { most_runs = 3 };
static struct run runs[most_runs];

static void print(const struct run* run)
{
    printf("%-22s %6d %14.2f %14.2f %11.1e %9.1e  %s\n", run->name, run->iterations, 1e6 * run->seconds,
           1e6 * run->product_seconds, run->residual[run->iterations], run->error, run->kernel ? run->kernel : "");
}

/* All runs of one method; how many there were. */
static int solve_all(const struct system* system, int by_gradients)
{
    static char kernels[2][64];
    int count = 0;
    memset(runs, 0, sizeof runs);
    for (int half = 0; half <= system->symmetric; ++half) {
        struct run* run = &runs[count++];
        run->name = half ? "orv, lower triangle" : "orv, whole matrix";
        solve(system, by_gradients, multiply_by_orv, half ? &system->half : &system->full, run);
        snprintf(kernels[half], sizeof kernels[half], "%s", orv_sparse_kernel());
        run->kernel = kernels[half];
    }
    struct run* loop = &runs[count++];
    loop->name = "a plain loop";
    solve(system, by_gradients, multiply_by_loop, &system->full, loop);
    return count;
}

int main(int argc, char** argv)
{
    struct system system;
    if (argc < 2 || argc > 3) {
        fprintf(stderr, "usage: iterate MATRIX.mtx [PAGE.html]\n");
        return 1;
    }
    read_system(argv[1], &system);
    printf("matrix    %d by %d, %ld elements not 0, %ssymmetric\n", system.n, system.n, system.nonzeros,
           system.symmetric ? "" : "not ");
    printf("threads   %d at most\n", orv_get_num_threads());

    int by_gradients = system.symmetric, count = solve_all(&system, by_gradients);
    if (by_gradients && runs[0].failed) {
        printf("          conjugate gradients do not apply: the matrix is not positive definite\n");
        by_gradients = 0, count = solve_all(&system, by_gradients);
    }
    const char* method = method_name(&system, by_gradients);
    printf("method    %s, preconditioned by the diagonal\n\n", method);
    printf("product by              steps   us an iteration  of it product  |r|/|b|     |x-1|    kernel\n");
    for (int i = 0; i < count; ++i) print(&runs[i]);
    if (runs[0].failed) printf("the method broke down\n");
    else if (runs[0].iterations == most_iterations) printf("no convergence after %d iterations\n", most_iterations);
    if (argc == 3) {
        const char* slash = strrchr(argv[1], '/');
        if (write_page(argv[2], slash ? slash + 1 : argv[1], &system, method, runs, count) != 0) {
            fprintf(stderr, "iterate: %s: %s\n", argv[2], strerror(errno));
            return 1;
        }
        printf("\npage written to %s\n", argv[2]);
    }
    return 0;
}
