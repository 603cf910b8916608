/* A program of somebody else's, against the installed package. */
#include <orv/orv.h>
#include <stdint.h>
#include <stdio.h>

typedef void scal_kernel(const int64_t* n, const double* a, double* x, const int64_t* incx);

int main(void)
{
    scal_kernel* scal = (scal_kernel*)orv_kernel("blas", "dscal");
    if (scal == NULL) {
        fprintf(stderr, "%s\n", orv_last_error());
        return 1;
    }
    double x[] = {1, 2, 3};
    const double a = 2;
    const int64_t n = 3, step = 1;
    scal(&n, &a, x, &step);
    printf("%s %s %g\n", orv_version(), orv_branch_path(), x[2]);
    return 0;
}
