// Memory of the Fourier primitives: that of objects which outlive a call, on cache lines. Through the service layer's
// own names, so that a program that replaces those gets these requests too.
#include "frame/dft.h"
#include "frame/export.h"
#include "frame/serv.h"

namespace {

constexpr orv::i64 alignment = 64;

}

ORV_EXPORT void* orv_dft_ympMalloc(orv::i64 bytes) { return orv_serv_malloc(bytes, alignment); }
ORV_EXPORT void orv_dft_ympFree(void* block) { orv_serv_free(block); }
