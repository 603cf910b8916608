#include "dft/batch/passes.h"

namespace orv::dft::batch {

template <> const Passes<float>& passes()
{
    static constexpr Passes<float> all = all_passes<float>();
    return all;
}

} // namespace orv::dft::batch
