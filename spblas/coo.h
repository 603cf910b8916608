// Matrices in coordinates: entries in any order, whose indices count from the base of the name. Arrays of entries stay
// where they are; vectors are moved, so that an index needs no conversion.
#pragma once

#include "spblas/sums.h"

namespace orv::ORV_SPBLAS {

template <class T> struct Coo {
    const T* val;
    const Int *row, *col;
};

} // namespace orv::ORV_SPBLAS
