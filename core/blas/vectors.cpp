// Level 1: each routine is its kernel.
#include "core/blas/routine.h"

using namespace orv;
using namespace orv::core;

ORV_BLAS(6, saxpy, Direct, xsaxpy)
ORV_BLAS(6, daxpy, Direct, xdaxpy)
ORV_BLAS(6, caxpy, Direct, xcaxpy)
ORV_BLAS(6, zaxpy, Direct, xzaxpy)

ORV_BLAS(7, saxpby, Direct, xsaxpby)
ORV_BLAS(7, daxpby, Direct, xdaxpby)
ORV_BLAS(7, caxpby, Direct, xcaxpby)
ORV_BLAS(7, zaxpby, Direct, xzaxpby)

ORV_BLAS(4, sscal, Direct, sscal)
ORV_BLAS(4, dscal, Direct, dscal)
ORV_BLAS(4, cscal, Direct, cscal)
ORV_BLAS(4, zscal, Direct, zscal)
ORV_BLAS(4, csscal, Direct, csscal)
ORV_BLAS(4, zdscal, Direct, zdscal)

ORV_BLAS(5, scopy, Direct, xscopy)
ORV_BLAS(5, dcopy, Direct, xdcopy)
ORV_BLAS(5, ccopy, Direct, xccopy)
ORV_BLAS(5, zcopy, Direct, xzcopy)

ORV_BLAS(5, sswap, Direct, xsswap)
ORV_BLAS(5, dswap, Direct, xdswap)
ORV_BLAS(5, cswap, Direct, xcswap)
ORV_BLAS(5, zswap, Direct, xzswap)

ORV_BLAS(5, sdot, Direct, xsdot)
ORV_BLAS(5, ddot, Direct, xddot)
ORV_BLAS_COMPLEX(5, cdotu, Direct, cdotu)
ORV_BLAS_COMPLEX(5, cdotc, Direct, xcdotc)
ORV_BLAS_COMPLEX(5, zdotu, Direct, zdotu)
ORV_BLAS_COMPLEX(5, zdotc, Direct, zdotc)
ORV_BLAS(6, sdsdot, Direct, sdsdot)
ORV_BLAS(5, dsdot, Direct, xdsdot)

ORV_BLAS(3, snrm2, Direct, snrm2)
ORV_BLAS(3, dnrm2, Direct, dnrm2)
ORV_BLAS(3, scnrm2, Direct, scnrm2)
ORV_BLAS(3, dznrm2, Direct, dznrm2)

ORV_BLAS(3, sasum, Direct, sasum)
ORV_BLAS(3, dasum, Direct, dasum)
ORV_BLAS(3, scasum, Direct, scasum)
ORV_BLAS(3, dzasum, Direct, dzasum)

ORV_BLAS(1, scabs1, Direct, scabs1)
ORV_BLAS(1, dcabs1, Direct, dcabs1)

ORV_BLAS(3, isamax, Direct, isamax)
ORV_BLAS(3, idamax, Direct, idamax)
ORV_BLAS(3, icamax, Direct, icamax)
ORV_BLAS(3, izamax, Direct, izamax)
ORV_BLAS(3, isamin, Direct, isamin)
ORV_BLAS(3, idamin, Direct, idamin)
ORV_BLAS(3, icamin, Direct, icamin)
ORV_BLAS(3, izamin, Direct, izamin)

ORV_BLAS(7, srot, Direct, xsrot)
ORV_BLAS(7, drot, Direct, xdrot)
ORV_BLAS(7, crot, Direct, xcrot)
ORV_BLAS(7, zrot, Direct, xzrot)
ORV_BLAS(7, csrot, Direct, xcsrot)
ORV_BLAS(7, zdrot, Direct, xzdrot)

ORV_BLAS(4, srotg, Direct, srotg)
ORV_BLAS(4, drotg, Direct, drotg)
ORV_BLAS(4, crotg, Direct, crotg)
ORV_BLAS(4, zrotg, Direct, zrotg)

ORV_BLAS(6, srotm, Direct, srotm)
ORV_BLAS(6, drotm, Direct, drotm)
ORV_BLAS(5, srotmg, Direct, srotmg)
ORV_BLAS(5, drotmg, Direct, drotmg)
