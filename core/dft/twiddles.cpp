// The base of twiddles of short transforms, which need no table of their own.
#include "frame/dft.h"
#include "frame/export.h"

ORV_EXPORT constinit const orv_dft_fix_base_32f orv_dft_fft_fix_twiddle_table_32f{};
ORV_EXPORT constinit const orv_dft_fix_base_64f orv_dft_fft_fix_twiddle_table_64f{};
