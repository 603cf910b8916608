/* alone: a program whose system has no LAPACK asks liborv_lapack for what it has a kernel for, and for what it leaves
   to the LAPACK behind it. "alone bad" makes a call with a bad argument. Built with OWN_ERRORS it has an error routine
   of its own, which prints what it gets and returns. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

extern void dlasr_(const char* side, const char* pivot, const char* direct, const int* m, const int* n, const double* c,
                   const double* s, double* a, const int* lda);
extern void dlasr_64_(const char* side, const char* pivot, const char* direct, const long* m, const long* n,
                      const double* c, const double* s, double* a, const long* lda);
extern void dpotrf_(const char* uplo, const int* n, double* a, const int* lda, int* info);
extern double dlange_(const char* norm, const int* m, const int* n, const double* a, const int* lda, double* work);

/* The library looks for a LAPACK through this. */
__attribute__((visibility("default"))) void* dlopen(const char* path, int mode)
{
    void* (*next)(const char*, int) = (void* (*)(const char*, int))dlsym(RTLD_NEXT, "dlopen");
    return path != NULL && strncmp(path, "liblapack", 9) == 0 ? NULL : next(path, mode);
}

#ifdef OWN_ERRORS
__attribute__((visibility("default"))) void xerbla_(const char* routine, const int* position, size_t length)
{
    printf("mine: %.*s %d\n", (int)length, routine, *position);
}
__attribute__((visibility("default"))) void xerbla_64_(const char* routine, const long* position, size_t length)
{
    printf("mine: %.*s %ld of 64 bits\n", (int)length, routine, *position);
}
#endif

int main(int count, char** words)
{
    (void)words;
    const int n = 2, bad = -1;
    const long n64 = 2;
    const double c[] = {0}, s[] = {1};
    double a[] = {1, 2, 3, 4}, definite[] = {4, 0, 0, 4}, work[2];
    int info = 0;
    if (count > 1) dlasr_("L", "V", "F", &bad, &n, c, s, a, &n);
    dpotrf_("L", &n, definite, &n, &info);
    printf("%d %g\n", info, dlange_("M", &n, &n, definite, &n, work));
    dlasr_("L", "V", "F", &n, &n, c, s, a, &n);
    printf("%g %g %g %g\n", a[0], a[1], a[2], a[3]);
    fflush(stdout);
    dlasr_("R", "V", "F", &n, &n, c, s, a, &n);
    dlasr_64_("R", "V", "F", &n64, &n64, c, s, a, &n64);
    printf("%g %g %g %g\n", a[0], a[1], a[2], a[3]);
    return 0;
}
