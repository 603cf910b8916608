// The standard library's sort behind the routines that bench/sort.cpp times.
#include <algorithm>

#define EXPORT extern "C" __attribute__((visibility("default")))

EXPORT void ssort_(const int* n, float* x, float*) { std::sort(x, x + *n); }
EXPORT void dsort_(const int* n, double* x, double*) { std::sort(x, x + *n); }
