#include "dft/compute/side_by_side_bodies.h"

namespace orv::dft::side_by_side {

template <> const Passes<float>& passes() { return table<float>; }

} // namespace orv::dft::side_by_side
