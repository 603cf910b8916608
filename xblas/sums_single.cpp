#include "xblas/sums_body.h"

namespace orv::xblas {

XBLAS_NARROW_PAIRS(XBLAS_SUMS, Single)

} // namespace orv::xblas
