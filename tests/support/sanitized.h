// Whether this is a build with the address sanitizer, whose run-time limits what a process can do and brings libraries
// of its own.
#pragma once

#include <dlfcn.h>

namespace orv::test {

inline bool sanitized() { return dlsym(RTLD_DEFAULT, "__asan_init") != nullptr; }

} // namespace orv::test
