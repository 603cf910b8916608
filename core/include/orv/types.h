/* Number types of the public interface. */
#ifndef ORV_TYPES_H
#define ORV_TYPES_H

#include <stdint.h>

/* Complex numbers: two reals, the real part first. C99's own type in C, std::complex in C++; a program that prefers
   another type of that layout, passed and returned as a structure of two reals, defines both macros before it includes
   any orv header. */
#ifndef ORV_COMPLEX_FLOAT
#ifdef __cplusplus
#include <complex>
#define ORV_COMPLEX_FLOAT std::complex<float>
#define ORV_COMPLEX_DOUBLE std::complex<double>
#else
#define ORV_COMPLEX_FLOAT float _Complex
#define ORV_COMPLEX_DOUBLE double _Complex
#endif
#endif

typedef ORV_COMPLEX_FLOAT orv_complex_float;
typedef ORV_COMPLEX_DOUBLE orv_complex_double;

#endif
