// Rows of a few reals, a row in each lane of a register, so that a row is transformed as if it were alone.
#pragma once

#include "dft/primitives/packed.h"

namespace orv::dft {

// So many rows, so many reals apart, and their spectra in a layout. Both arrays may be the same.
template <class R> using ShortRows = void(const R* from, i64 from_step, R* to, i64 to_step, i64 count, Layout layout);

// Of n reals, without scale; null where n is not 2 to 15.
template <class R> ShortRows<R>* short_rows(i64 n, bool forward);

} // namespace orv::dft
