#include "tests/support/prototypes.h"

#include "frame/kernels/blas.h"
#include "frame/kernels/conv.h"
#include "frame/kernels/dft_batch.h"
#include "frame/kernels/dft_compute.h"
#include "frame/kernels/dft_fft.h"
#include "frame/kernels/dft_general.h"
#include "frame/kernels/dft_methods.h"
#include "frame/kernels/dft_node.h"
#include "frame/kernels/dft_primitives.h"
#include "frame/kernels/lapack_ps.h"
#include "frame/kernels/pdepl.h"
#include "frame/kernels/pdett.h"
#include "frame/kernels/spblas.h"
#include "frame/kernels/trans.h"

namespace orv::test {

#define ENTRY(prototype) {prototype::module, prototype::stem, &signature_id<prototype::signature>},

std::span<const Prototype> prototypes()
{
    static constexpr Prototype all[] = {
#define ORV_NAME(name, ...) ENTRY(kernels::blas::name)
#include "frame/kernels/blas.def"
#undef ORV_NAME
#define ORV_NAME(name, ...) ENTRY(kernels::conv::name)
#include "frame/kernels/conv.def"
        ORV_CONV_ALL(ORV_CONV_PROTOTYPE)
#undef ORV_NAME
#define ORV_NAME(name, ...) ENTRY(kernels::dft::name)
#include "frame/kernels/dft_batch.def"
#include "frame/kernels/dft_compute.def"
#include "frame/kernels/dft_fft.def"
#include "frame/kernels/dft_general.def"
#include "frame/kernels/dft_methods.def"
#include "frame/kernels/dft_node.def"
#include "frame/kernels/dft_primitives.def"
#undef ORV_NAME
#define ORV_NAME(name, ...) ENTRY(kernels::lapack_ps::name)
#include "frame/kernels/lapack_ps.def"
#undef ORV_NAME
#define ORV_NAME(name, ...) ENTRY(kernels::pdepl::name)
#include "frame/kernels/pdepl.def"
#undef ORV_NAME
#define ORV_NAME(name, ...) ENTRY(kernels::pdett::name)
#include "frame/kernels/pdett.def"
#undef ORV_NAME
#define ORV_NAME(name, ...) ENTRY(kernels::spblas::name)
#include "frame/kernels/spblas.def"
            ORV_SPBLAS_ALL(ORV_SPBLAS_PROTOTYPE)
#undef ORV_NAME
#define ORV_NAME(name, ...) ENTRY(kernels::spblas_lp64::name)
#include "frame/kernels/spblas.def"
                ORV_SPBLAS_ALL(ORV_SPBLAS_PROTOTYPE)
#undef ORV_NAME
#define ORV_NAME(name, ...) ENTRY(kernels::trans::name)
#include "frame/kernels/trans.def"
#undef ORV_NAME
    };
    return all;
}

} // namespace orv::test
