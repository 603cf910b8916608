/* orv: numerical kernels for 64-bit x86 Linux. Everything that a program can call.

   All functions can be called from C and C++, from any thread, at any time after the library is loaded; there is no
   call to begin or to end with. The library never prints, aborts or exits, and leaves the program's floating-point
   modes and OpenMP settings alone. */
#ifndef ORV_H
#define ORV_H

#include <orv/blas.h>
#include <orv/branch.h>
#include <orv/conv.h>
#include <orv/dft.h>
#include <orv/lapack.h>
#include <orv/memory.h>
#include <orv/numerics.h>
#include <orv/poisson.h>
#include <orv/processor.h>
#include <orv/settings.h>
#include <orv/sparse.h>
#include <orv/status.h>
#include <orv/threads.h>
#include <orv/trans.h>
#include <orv/trig.h>
#include <orv/types.h>
#include <orv/xblas.h>

#endif
