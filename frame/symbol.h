// The symbol grammar: orv_<module>_<branch>_<name>. Only this file knows the branch tag.
#pragma once

#define ORV_EXPORT extern "C" __attribute__((visibility("default")))
#define ORV_KERNEL(module, name) orv_##module##_mc3_##name

// One line a module, so that a kernel file writes BLAS(xdaxpy) and the reader greps for it.
// The names of transposition carry a second orv_ behind the tag.
#define BLAS(name) ORV_KERNEL(blas, name)
#define LAPACK_PS(name) ORV_KERNEL(lapack_ps, name)
#define TRANS(name) ORV_KERNEL(trans, orv_##name)

// Tables that a caller may look up carry the branch tag but no module.
#define ORV_TABLE(name) orv_mc3_##name
