// The branch's self-description: its tag, and its version as an ELF note, which the core compares with its own before
// it calls any kernel (`readelf -n` shows it).
#include "frame/symbol.h"

ORV_EXPORT int dll_cpu_version() { return orv::branch_code; }

namespace {

struct Note {
    unsigned name_size = sizeof name, text_size = sizeof text, type = 1;
    char name[4] = {'o', 'r', 'v', 0};
    alignas(4) char text[(sizeof ORV_VERSION + 3) / 4 * 4] = ORV_VERSION;
};

[[gnu::section(".note.orv"), gnu::used, gnu::aligned(4)]] constexpr Note version_note;

} // namespace
