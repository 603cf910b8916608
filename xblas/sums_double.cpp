#include "xblas/sums_body.h"

namespace orv::xblas {

XBLAS_SUMS_NARROW(Double)
XBLAS_SUMS_WIDE(Double)

} // namespace orv::xblas
