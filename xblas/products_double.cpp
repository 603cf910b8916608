#include "xblas/products_body.h"

namespace orv::xblas {

XBLAS_PAIRS(XBLAS_ROWS, Double)
XBLAS_TRIPLES(XBLAS_PRODUCTS, Double)

} // namespace orv::xblas
