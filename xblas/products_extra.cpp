#include "xblas/products_body.h"

namespace orv::xblas {

XBLAS_PAIRS(XBLAS_ROWS, Extra)
XBLAS_TRIPLES(XBLAS_PRODUCTS, Extra)

} // namespace orv::xblas
