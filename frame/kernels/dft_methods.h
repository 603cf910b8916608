// Ways to do a transform, which commit tries in the order of a node's bkdown_list. Each is a record of two functions:
//
//   bkd3, bkd2, bkd1   one contiguous transform of pairs: of fixed sizes; of up to 4096 points with a small work area
//   bkd_ds2s, _ss2s    a batch of transforms of two arrays, one dimension (s for single precision)
//   bkd_as2s_1_m       the same with several batches: one after the other
//   bkd_as2s_n_m       the same with several dimensions: one after the other
//   tiny_3d            cubes of less than 11 points a side
//   par_1d_r2c         one long transform of reals, by several threads
//   bluestein          one transform of a length that no other way takes, as a convolution
//
// At the end c, z: of pairs; s, d: of reals, single and double precision; c2s, z2d: reals and the half spectrum.
#pragma once

#include "frame/kernels/dft_node.h"

namespace orv::kernels::dft {

#define ORV_NAME(name, ...) ORV_PROTOTYPE(dft, name, name, __VA_ARGS__)
#include "frame/kernels/dft_methods.def"
#undef ORV_NAME

} // namespace orv::kernels::dft
