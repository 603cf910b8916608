// The product with a triangle, as a product with a packed triangle calls it.
#pragma once

#include "blas/level3/triangular_levels.h"

namespace orv::level3 {

// X := T*X, neither of them empty, with or without memory. For reals.
template <class T> void triangular_product(const Triangular<T>& x);

} // namespace orv::level3
