// Products with symmetric and Hermitian matrices and updates of such, and the general product by three real ones:
// arguments checked.
#include "core/blas/routine.h"
#include "frame/arguments.h"

using namespace orv;
using namespace orv::core;

namespace {

template <auto& F> using Symm = Checked<F, arguments::symm>;
template <auto& F> using Syrk = Checked<F, arguments::syrk>;
template <auto& F> using Syr2k = Checked<F, arguments::syr2k>;
template <auto& F> using Gemm3m = Checked<F, arguments::gemm>;

} // namespace

ORV_BLAS(12, ssymm, Symm, xssymm)
ORV_BLAS(12, dsymm, Symm, xdsymm)
ORV_BLAS(12, csymm, Symm, xcsymm)
ORV_BLAS(12, zsymm, Symm, xzsymm)

ORV_BLAS(12, chemm, Symm, xchemm)
ORV_BLAS(12, zhemm, Symm, xzhemm)

ORV_BLAS(10, ssyrk, Syrk, xssyrk)
ORV_BLAS(10, dsyrk, Syrk, xdsyrk)
ORV_BLAS(10, csyrk, Syrk, xcsyrk)
ORV_BLAS(10, zsyrk, Syrk, xzsyrk)

ORV_BLAS(10, cherk, Syrk, xcherk)
ORV_BLAS(10, zherk, Syrk, xzherk)

ORV_BLAS(12, ssyr2k, Syr2k, xssyr2k)
ORV_BLAS(12, dsyr2k, Syr2k, xdsyr2k)
ORV_BLAS(12, csyr2k, Syr2k, xcsyr2k)
ORV_BLAS(12, zsyr2k, Syr2k, xzsyr2k)

ORV_BLAS(12, cher2k, Syr2k, xcher2k)
ORV_BLAS(12, zher2k, Syr2k, xzher2k)

ORV_BLAS(13, cgemm3m, Gemm3m, xcgemm3m)
ORV_BLAS(13, zgemm3m, Gemm3m, xzgemm3m)
