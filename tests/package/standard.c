/* A program of somebody else's against the standard interface. */
#include <cblas.h>
#include <stdio.h>

int main(void)
{
    const double a[] = {1, 2, 3, 4}, b[] = {1, 0, 0, 1};
    double c[4];
    cblas_dgemm(CblasRowMajor, CblasTrans, CblasNoTrans, 2, 2, 2, 1, a, 2, b, 2, 0, c, 2);
    printf("%g %g %g %g\n", c[0], c[1], c[2], c[3]);
    return 0;
}
