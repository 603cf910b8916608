#include "xblas/sums_body.h"

namespace orv::xblas {

XBLAS_PAIRS(XBLAS_SUMS, Extra)

} // namespace orv::xblas
