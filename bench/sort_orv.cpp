// The library's sorts behind the routines that bench/sort.cpp times.
#include "orv/branch.h"

namespace {

template <class T> void sort(const char* name, int n, T* x, T* room)
{
    using Sort = int(T*, T*, int);
    static auto* const kernel = reinterpret_cast<Sort*>(orv_kernel("dft", name));
    kernel(x, room, n);
}

} // namespace

#define EXPORT extern "C" __attribute__((visibility("default")))

EXPORT void ssort_(const int* n, float* x, float* room) { sort("ympsSortRadixAscend_32f_I", *n, x, room); }
EXPORT void dsort_(const int* n, double* x, double* room) { sort("ympsSortRadixAscend_64f_I", *n, x, room); }
