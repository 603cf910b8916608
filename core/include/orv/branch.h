/* Which library of kernels runs, and direct access to it. Every function here opens it if that has not happened yet;
   none of them is needed before a computation. Thread-safe. */
#ifndef ORV_BRANCH_H
#define ORV_BRANCH_H

#include <orv/status.h>

/* Version of liborv.so, such as "0.1.0", and the path that it was loaded from. */
ORV_API const char* orv_version(void);
ORV_API const char* orv_path(void);

/* ORV_OK if the kernels can run; else ORV_OLD_PROCESSOR, ORV_NO_BRANCH, ORV_BRANCH_MISMATCH, ORV_NO_MEMORY or
   ORV_BAD_SETTING, and orv_last_error() says what to do.

   Of the kernels that are installed beside liborv.so, those that use most of this processor are taken, once and for all
   of the process. The environment variable ORV_BRANCH names others ("mc3"), and ORV_BRANCH_PATH another file. */
ORV_API orv_status orv_branch_status(void);

/* Name of the branch of kernels that runs on this processor ("mc3"), its version, and the path of its library. Name and
   version are null while orv_branch_status() is not ORV_OK; the path then names the file that was tried, or is null. */
ORV_API const char* orv_branch_name(void);
ORV_API const char* orv_branch_version(void);
ORV_API const char* orv_branch_path(void);

/* Address of a kernel by its full symbol name ("orv_blas_mc3_xddot"), or null with the reason in orv_last_error().
   It stays valid as long as liborv.so is loaded. */
ORV_API void* orv_branch_symbol(const char* name);

/* The same by module and name, whatever branch runs: orv_kernel("blas", "xddot"). */
ORV_API void* orv_kernel(const char* module, const char* name);

#endif
