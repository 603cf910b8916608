// The branch's self-description.
#include "frame/symbol.h"

ORV_EXPORT int dll_cpu_version() { return 3; }
