/* A program whose system has no LAPACK: asks liborv_lapack for what it has no kernel for, then for what it has. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

extern void dlasr_(const char* side, const char* pivot, const char* direct, const int* m, const int* n, const double* c,
                   const double* s, double* a, const int* lda);

/* The library looks for liblapack through this. */
__attribute__((visibility("default"))) void* dlopen(const char* path, int mode)
{
    void* (*next)(const char*, int) = (void* (*)(const char*, int))dlsym(RTLD_NEXT, "dlopen");
    return path != NULL && strcmp(path, "liblapack.so.3") == 0 ? NULL : next(path, mode);
}

int main(void)
{
    const int n = 2, bad = -1;
    const double c[] = {0}, s[] = {1};
    double a[] = {1, 2, 3, 4};
    dlasr_("R", "V", "F", &n, &n, c, s, a, &n);
    dlasr_("R", "V", "F", &n, &n, c, s, a, &n);
    printf("%g %g %g %g\n", a[0], a[1], a[2], a[3]);
    dlasr_("L", "V", "F", &n, &n, c, s, a, &n);
    printf("%g %g %g %g\n", a[0], a[1], a[2], a[3]);
    fflush(stdout);
    dlasr_("L", "V", "F", &bad, &n, c, s, a, &n);
    return 0;
}
