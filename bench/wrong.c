/* Two routines of a library that computes nothing, for the test that such a library is found out. */
__attribute__((visibility("default"))) void daxpy_(void) {}

__attribute__((visibility("default"))) void dscal_(const int* n, const double* alpha, double* x)
{
    (void)n;
    (void)alpha;
    x[0] = __builtin_nan("");
}
