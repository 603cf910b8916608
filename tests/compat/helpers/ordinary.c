/* ordinary [fortran | cblas]: calls of every kind of result, then a bad one of that interface. Errors go to the
   library's own routines; or, where this is built with OWN_ERRORS, to some that print what they get and return. */
#include <cblas.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>

extern double ddot_(const int* n, const double* x, const int* incx, const double* y, const int* incy);
extern int idamax_(const int* n, const double* x, const int* incx);
extern void dgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k,
                   const double* alpha, const double* a, const int* lda, const double* b, const int* ldb,
                   const double* beta, double* c, const int* ldc, size_t length_a, size_t length_b);

#ifdef OWN_ERRORS
void xerbla_(const char* routine, const int* position, size_t length)
{
    printf("mine: %.*s %d\n", (int)length, routine, *position);
}
void cblas_xerbla(int position, const char* routine, const char* format, ...)
{
    va_list arguments;
    char sentence[40];
    va_start(arguments, format);
    vsnprintf(sentence, sizeof sentence, format, arguments);
    va_end(arguments);
    printf("mine: %s %d %s\n", routine, position, sentence);
}
#endif

int main(int count, char** words)
{
    const char* const bad_call = count > 1 ? words[1] : "";
    const int n = 2, one = 1, bad = -1;
    const double x[] = {1, 2}, scale = 1;
    double y[] = {3, 4}, z[] = {0, 0};
    printf("%g\n", ddot_(&n, x, &one, y, &one));
    printf("%g\n", cblas_ddot(2, x, 1, y, 1));
    for (int time = 0; time < 2; ++time) { /* what cannot be carried out is told of each time */
        printf("%d\n", idamax_(&n, x, &one));
        cblas_daxpy(2, 1, x, 1, y, 1);
    }
    cblas_zdotu_sub(1, x, 1, x, 1, z);
    dgemm_("N", "N", &one, &one, &one, &scale, x, &one, x, &one, &scale, y, &one, 1, 1);
    printf("%g %g %g\n", y[0], y[1], z[0]);
    fflush(stdout);
    if (strcmp(bad_call, "fortran") == 0) dgemm_("N", "N", &bad, &n, &n, &scale, x, &n, y, &n, &scale, z, &n, 1, 1);
    if (strcmp(bad_call, "cblas") == 0)
        cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, 2, 2, -1, 1, x, 2, y, 2, 1, z, 2);
    puts("the end");
    return 0;
}
