// The inverse transforms of 2 to 64 doubles, and their table.
#include "dft/batch/small.h"

namespace orv::dft::batch::small {

ORV_DFT_SMALL_RADIXES(ORV_DFT_SMALL_POINTS, Inv, false)

} // namespace orv::dft::batch::small

orv::kernels::dft::DftiKernel* const orv::kernels::dft::DFT(zsmallradix_inverse)[] = {
    ORV_DFT_SMALL_RADIXES(ORV_DFT_SMALL_ENTRY, Inv)};
