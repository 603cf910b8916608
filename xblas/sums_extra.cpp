#include "xblas/sums_body.h"

namespace orv::xblas {

XBLAS_SUMS_NARROW(Extra)
XBLAS_SUMS_WIDE(Extra)

} // namespace orv::xblas
