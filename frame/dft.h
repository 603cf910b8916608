// What the Fourier kernels ask of the core library beside the service layer.
#pragma once

#include "frame/types.h"

extern "C" {

// Memory of the primitives, aligned for every element type and every register; null on exhaustion.
void* orv_dft_ympMalloc(orv::i64 bytes);
void orv_dft_ympFree(void* block);
}
