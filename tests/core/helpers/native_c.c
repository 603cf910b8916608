/* A C program on the public header: complex numbers are C's own. */
#include <complex.h>
#include <orv/orv.h>
#include <stdio.h>

int main(void)
{
    const float _Complex u[] = {1 + 2 * I, 3 - I}, v[] = {5 + 6 * I, 1 + 2 * I};
    const double _Complex x[] = {1 + 2 * I, 3 - I}, y[] = {5 + 6 * I, 1 + 2 * I};
    const float _Complex c = orv_cdotc(2, u, 1, v, 1);
    printf("cdotc %g %g\n", crealf(c), cimagf(c));
    const double _Complex z = orv_zdotc(2, x, 1, y, 1);
    printf("zdotc %g %g\n", creal(z), cimag(z));

    double _Complex w[] = {1, I};
    const orv_status status = orv_zaxpy(2, I, x, 1, w, 1);
    if (status == ORV_OK) printf("zaxpy %g %g\n", creal(w[0]), cimag(w[0]));
    else printf("zaxpy status %d\n", status);

    const double d[] = {1, 2, -3, 0.5}, s[] = {10, 4};
    const int64_t at[] = {1, 2}; /* positions count from 0 */
    printf("idamax %d\n", (int)orv_idamax(4, d, 1));
    printf("doti %g\n", orv_ddoti(2, s, at, d) + 24);
    return 0;
}
