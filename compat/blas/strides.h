// Scaling and sums of magnitudes know no direction. The kernels go through a vector of negative stride like any other;
// the standard routines take it, and a stride of 0, for a vector without elements.
#pragma once

#include "compat/blas/report.h"

#include <tuple>

namespace orv::compat {

template <auto& F> inline constexpr bool takes_positive_strides = false;
#define ORV_POSITIVE_STRIDES(name) template <> inline constexpr bool takes_positive_strides<orv_##name> = true;
ORV_POSITIVE_STRIDES(sscal)
ORV_POSITIVE_STRIDES(dscal)
ORV_POSITIVE_STRIDES(cscal)
ORV_POSITIVE_STRIDES(zscal)
ORV_POSITIVE_STRIDES(csscal)
ORV_POSITIVE_STRIDES(zdscal)
ORV_POSITIVE_STRIDES(sasum)
ORV_POSITIVE_STRIDES(dasum)
ORV_POSITIVE_STRIDES(scasum)
ORV_POSITIVE_STRIDES(dzasum)
#undef ORV_POSITIVE_STRIDES

// Whether a routine with these arguments, by value or by pointer, has nothing to do because of its stride, the last
// one.
template <auto& F, class... A> bool goes_nowhere(const A&... arguments)
{
    if constexpr (takes_positive_strides<F>) {
        const auto& stride = std::get<sizeof...(A) - 1>(std::tie(arguments...));
        if constexpr (std::is_pointer_v<std::remove_cvref_t<decltype(stride)>>) return *stride <= 0;
        else return stride <= 0;
    } else return false;
}

} // namespace orv::compat
