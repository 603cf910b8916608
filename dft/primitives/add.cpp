// Sums of two arrays, and of an array and a constant. Only workers.
#include "dft/primitives/operations.h"

namespace orv::dft {

#define ADD(t, law, ...)                                                                                               \
    ORV_DFT_WORKER(TwoArrays, Sum, Add, t, law, __VA_ARGS__)                                                           \
    ORV_DFT_WORKER(ArrayAndConstant, Sum, AddC, t, law, __VA_ARGS__)
ORV_DFT_WORKERS(ADD)

} // namespace orv::dft
