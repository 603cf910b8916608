#include "xblas/products_body.h"

namespace orv::xblas {

XBLAS_NARROW_PAIRS(XBLAS_ROWS, Single)
XBLAS_NARROW_TRIPLES(XBLAS_PRODUCTS, Single)

} // namespace orv::xblas
