// Products with triangular matrices and solves: arguments checked. Their kernels give up without memory, and tell of it
// only by the block that they asked for in vain.
#include "core/blas/routine.h"
#include "frame/arguments.h"

using namespace orv;
using namespace orv::core;

namespace {

template <auto& F> class Triangular {
public:
    constexpr explicit Triangular(const char* symbol) : kernel_(symbol) {}

    template <class... P> orv_status operator()(P... arguments)
    {
        if (const int bad = on_values<F>(arguments::trmm, arguments...)) return -bad;
        auto* const kernel = kernel_.get();
        if (kernel == nullptr) [[unlikely]]
            return last_status();
        forget_missing_block();
        kernel(arguments...);
        if (missed_block("xtrsm") || missed_block("xtrmm")) [[unlikely]]
            return fail(ORV_NO_MEMORY,
                        "no memory is left for a product with a triangular matrix or a solve: the matrix "
                        "is as it was");
        return ORV_OK;
    }

private:
    Kernel<kernel_form<F>> kernel_;
};

} // namespace

ORV_BLAS(11, strmm, Triangular, xstrmm)
ORV_BLAS(11, dtrmm, Triangular, xdtrmm)
ORV_BLAS(11, ctrmm, Triangular, xctrmm)
ORV_BLAS(11, ztrmm, Triangular, xztrmm)

ORV_BLAS(11, strsm, Triangular, xstrsm)
ORV_BLAS(11, dtrsm, Triangular, xdtrsm)
ORV_BLAS(11, ctrsm, Triangular, xctrsm)
ORV_BLAS(11, ztrsm, Triangular, xztrsm)
