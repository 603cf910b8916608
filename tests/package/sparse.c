/* A program of somebody else's against the Sparse BLAS. */
#include <blas_sparse.h>
#include <stdio.h>

int main(void)
{
    const double x[] = {1, 10};
    double y[] = {0, 0};
    const blas_sparse_matrix a = BLAS_duscr_begin(2, 2);
    BLAS_duscr_insert_entry(a, 3, 0, 1);
    BLAS_duscr_insert_entry(a, 4, 1, 0);
    BLAS_duscr_end(a);
    BLAS_dusmv(blas_no_trans, 1, a, x, 1, y, 1);
    printf("%g %g %d\n", y[0], y[1], BLAS_usds(a));
    return 0;
}
