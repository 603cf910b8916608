// What the Fourier kernels ask of the core library beside the service layer.
#pragma once

#include "frame/sines.h"

extern "C" {

// Memory of the primitives, aligned for every element type and every register; null on exhaustion.
void* orv_dft_ympMalloc(orv::i64 bytes);
void orv_dft_ympFree(void* block);

// The base of twiddles for up to 2^10 points.
using orv_dft_fix_base_32f = orv::Base<float, 10>;
using orv_dft_fix_base_64f = orv::Base<double, 10>;
extern const orv_dft_fix_base_32f orv_dft_fft_fix_twiddle_table_32f;
extern const orv_dft_fix_base_64f orv_dft_fft_fix_twiddle_table_64f;
}
