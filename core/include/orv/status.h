/* What a call of orv answers, and the sentence that says what to do about it. The library itself never prints, aborts
   or exits. */
#ifndef ORV_STATUS_H
#define ORV_STATUS_H

#include <orv/api.h>

/* 0: done.  -i: argument i is bad, counted from 1 as the standard interface of the routine counts; nothing was
   written.  Positive: one of the codes below; nothing was written, unless the function says that it may have been. */
typedef int orv_status;

enum {
    ORV_OK = 0,
    ORV_NO_BRANCH = 1,       /* the library of kernels cannot be opened */
    ORV_OLD_PROCESSOR = 2,   /* the processor lacks instructions that the kernels use */
    ORV_BRANCH_MISMATCH = 3, /* the library of kernels belongs to another version of orv */
    ORV_NO_KERNEL = 4,       /* the library of kernels lacks one kernel by name */
    ORV_NO_MEMORY = 5,       /* the system has no memory left */
    ORV_BAD_SETTING = 6,     /* an environment variable or a set value makes no sense */
    ORV_NOT_COMMITTED = 7,   /* what has to be committed first is not, or was changed since */
    ORV_UNSUPPORTED = 8,     /* what is asked for makes sense, but no kernel does it */
    ORV_INTERNAL_ERROR = 9,  /* a kernel failed where it must not: a fault of orv */
    ORV_BAD_INDEX = 10,      /* of sparse matrices: an index leads outside, */
    ORV_NOT_SORTED = 11,     /* entries are not sorted, */
    ORV_DUPLICATE = 12,      /* two entries stand in the same place, */
    ORV_NO_DIAGONAL = 13,    /* an element of the diagonal is not stored, */
    ORV_ZERO_DIAGONAL = 14,  /* or it is zero */
    ORV_NO_ROOM = 15,        /* arrays for a result are too small, or its indices are */

    ORV_TRANSFORM_FAILED = 16, /* of convolutions: the Fourier transform inside was refused */

    ORV_NOT_SOLVABLE = 17, /* of Poisson problems: f and the sides do not go together, so there is no solution, */
    ORV_RESONANCE = 18     /* or q is one for which there is none or many */
};

/* One line in English for any status; never null, valid for ever. */
ORV_API const char* orv_status_text(orv_status status);

/* The sentence of the calling thread's latest failure, with names and values, and what to do; empty if no call of this
   thread failed yet. A successful call leaves it alone, but for the first one of the process that needs an environment
   variable: if one of them makes no sense, that call computes with the default in its place, returns 0 all the same,
   and leaves the sentence here. Valid until the thread's next failure. */
ORV_API const char* orv_last_error(void);

/* Tries what every computation rests on: processor, kernels, environment. 0, or the first thing that is wrong with its
   sentence in orv_last_error(). After ORV_BAD_SETTING orv computes with the default in place of the bad value. */
ORV_API orv_status orv_check(void);

/* Receives bad arguments in place of the record for orv_last_error(): the routine's name as the caller knows it, and
   the argument's number counted from 1. It may print, raise or return. Null puts the record back. Returns the handler
   that stood before. One handler serves the process; setting it is thread-safe. The Fortran and CBLAS interfaces of
   libblas.so.3 report to xerbla_ and cblas_xerbla instead. */
typedef void (*orv_argument_handler)(const char* routine, int argument);
ORV_API orv_argument_handler orv_set_argument_handler(orv_argument_handler handler);

#endif
