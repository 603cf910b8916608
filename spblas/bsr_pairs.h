// The kernels for blocks of order 2 of doubles with 32-bit indices from 1, which carry no module in their names:
//
//   <tag>_dbsrng__f__gemvout_sse42_lb2_int32   y := alpha*A*x + beta*y, block rows first to last
//   <tag>_dbsrng__f__mmout_sse42_lb2_int32     Y := alpha*A*X + beta*Y, the same for nd columns
#pragma once

#include "spblas/options.h"

#define SPBLAS_PAIRS(form) SPBLAS_PAIRS_OF(ORV_BRANCH_TAG, form)
#define SPBLAS_PAIRS_OF(tag, form) SPBLAS_PAIRS_OF_(tag, form)
#define SPBLAS_PAIRS_OF_(tag, form) tag##_dbsrng__f__##form##out_sse42_lb2_int32

#define SPBLAS_NARROW ORV_JOIN(SPBLAS_NARROW_, ORV_SPBLAS)
#define SPBLAS_NARROW_spblas 0
#define SPBLAS_NARROW_spblas_lp64 1

namespace orv::ORV_SPBLAS {

ORV_EXPORT Lb2Gemv SPBLAS_PAIRS(gemv);
ORV_EXPORT Lb2Mm SPBLAS_PAIRS(mm);
inline constexpr auto& pairs_gemv = SPBLAS_PAIRS(gemv);
inline constexpr auto& pairs_mm = SPBLAS_PAIRS(mm);

// Whether products of a type and this module's integers go to them.
template <class T> inline constexpr bool has_pairs = std::is_same_v<T, double>&& std::is_same_v<Int, i32>;

} // namespace orv::ORV_SPBLAS
