#include "xblas/sums_body.h"

namespace orv::xblas {

XBLAS_SUMS_NARROW(Single)

} // namespace orv::xblas
