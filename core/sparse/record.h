// Whether a record can be used.
#pragma once

#include "frame/types.h"

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include "orv/sparse.h"

namespace orv::core::sparse {

// A sentence about what is wrong with a record, or null. Entries are not looked at.
const char* fault_of(const orv_sparse* a);

// The same without its arrays: whether there are such matrices.
const char* fault_of_form(const orv_sparse& a);

// What a call asks beside: type the letter of its elements, trans a letter that has been looked at.
const char* fault_of(const orv_sparse* a, char type, char trans, bool solves);

} // namespace orv::core::sparse
