#include "dft/batch/passes.h"

namespace orv::dft::batch {

template <> const Passes<double>& passes()
{
    static constexpr Passes<double> all = all_passes<double>();
    return all;
}

} // namespace orv::dft::batch
