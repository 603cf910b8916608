#include "dft/compute/side_by_side_bodies.h"

namespace orv::dft::side_by_side {

template <> const Passes<double>& passes() { return table<double>; }

} // namespace orv::dft::side_by_side
