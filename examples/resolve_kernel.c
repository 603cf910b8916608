/* A kernel called by its name: the inner product of two vectors, straight from the library of kernels.

   usage: resolve_kernel [FOLDER]     the folder that holds both libraries; by default the linker's search path */
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

/* Kernels take every argument by pointer, as Fortran does, with 64-bit integers. */
typedef double dot_kernel(const int64_t* n, const double* x, const int64_t* incx, const double* y, const int64_t* incy);

static void* open_library(const char* folder, const char* name)
{
    char path[4096];
    snprintf(path, sizeof path, "%s%s%s", folder, *folder ? "/" : "", name);
    void* library = dlopen(path, RTLD_NOW | RTLD_GLOBAL);
    if (library == NULL) {
        fprintf(stderr, "resolve_kernel: %s\n", dlerror());
        exit(1);
    }
    return library;
}

int main(int argc, char** argv)
{
    const char* folder = argc > 1 ? argv[1] : "";
    void* core = open_library(folder, "liborv.so.0");     /* memory, messages, threads: what kernels ask for */
    void* branch = open_library(folder, "liborv_mc3.so"); /* the kernels; finds the core's symbols by name */

    dot_kernel* dot = (dot_kernel*)dlsym(branch, "orv_blas_mc3_xddot");
    if (dot == NULL) {
        fprintf(stderr, "resolve_kernel: %s\n", dlerror());
        return 1;
    }
    const double x[] = {1, 2, 3, 4}, y[] = {4, 3, 2, 1};
    const int64_t n = 4, forward = 1, backward = -1;
    printf("x.y = %g, and with y from its far end %g\n", dot(&n, x, &forward, y, &forward),
           dot(&n, x, &forward, y, &backward));
    dlclose(branch);
    dlclose(core);
    return 0;
}
