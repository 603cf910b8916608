// A look at a library's file before the dynamic linker maps it.
#pragma once

#include "frame/types.h"

namespace orv::core {

// Of a 64-bit ELF file: the bytes that it has, and those that its headers tell of. Where more are told, it was cut
// short; whoever maps it is killed by a signal as soon as he reads where nothing is. Zeros for all other files, about
// which the linker has a sentence of its own.
struct FileSize {
    u64 there, told;
};
FileSize look_at_file(const char* path);

} // namespace orv::core
