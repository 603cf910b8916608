// All columns of a dimension by the plans that commit has made for its node, and the end of the plans.
#include "frame/kernels/dft_batch.h"
#include "frame/kernels/dft_compute.h"
#include "frame/serv.h"

#include <bit>

namespace orv::dft::batch {
namespace {

// Widest first, each as often as it fits.
template <class T>
i32 transform(T* data, const BatchPlans& plans, void* const* by_width, BatchInPlace<T>& run, i64 count)
{
    const i64 page = orv_serv_cpu_detect() == 4 ? 4096 : 256;
    void* const buffer = orv_serv_allocate(plans.thread_bytes, page);
    if (buffer == nullptr) return node_no_memory;
    const BatchThread alone{1, 0, buffer};
    i32 status = node_ok;
    const i64 most = min(count, plans.widest);
    for (int k = most < 1 ? -1 : std::bit_width(static_cast<u64>(most)) - 1; k >= 0; --k)
        for (const i64 width = i64{1} << k; status == node_ok && width <= count; data += width, count -= width)
            status = run(data, &alone, by_width[k]);
    orv_serv_deallocate(buffer);
    return status;
}

template <class T, class Scale>
i32 transform_and_scale(T* data, const DftiNode& node, bool forward, BatchInPlace<T>& run, Scale& scale, i64 count)
{
    const auto& plans = *static_cast<const BatchPlans*>(node.method_data);
    const i32 status = transform(data, plans, forward ? plans.forward : plans.inverse, run, count);
    const double by = forward ? node.committed_forward_scale : node.committed_backward_scale;
    if (status != node_ok || by == 1) return status;
    const i64 stride = node.placement == CFG_OUT_OF_PLACE ? node.output_stride : node.input_stride;
    for (i64 column = 0; column < count; ++column)
        scale(node.length, static_cast<real_t<T>>(by), data + column, stride);
    return node_ok;
}

i32 end(DftiNode& node, BatchFree& free_forward, BatchFree& free_inverse)
{
    auto* const plans = static_cast<BatchPlans*>(node.method_data);
    if (plans != nullptr) {
        for (int k = 0; k < BatchPlans::count; ++k) {
            if (plans->forward[k] != nullptr) free_forward(plans->forward[k]);
            if (plans->inverse[k] != nullptr) free_inverse(plans->inverse[k]);
        }
        orv_serv_free(plans);
    }
    node.method_data = nullptr;
    node.method = nullptr;
    return node_ok;
}

} // namespace

#define BATCHES(t, dir, Dir, forward, scale)                                                                           \
    ORV_EXPORT i32 DFT(xbatchfft_##dir##_##t)(t_##t * data, t_##t*, DftiNode * node, const i64* count)                 \
    {                                                                                                                  \
        return transform_and_scale(data, *node, forward, orvgDFT##Dir##BatchIT_##t, scale, *count);                    \
    }
#define END(c, t)                                                                                                      \
    ORV_EXPORT i32 DFT(batchfft_free_##c)(const DftiMethod*, DftiNode* node)                                           \
    {                                                                                                                  \
        return end(*node, orvgDFTFwdBatchITFree_##t, orvgDFTInvBatchITFree_##t);                                       \
    }
BATCHES(32fc, fwd, Fwd, true, DFT(dft_csscal))
BATCHES(32fc, inv, Inv, false, DFT(dft_csscal))
BATCHES(64fc, fwd, Fwd, true, DFT(dft_zdscal))
BATCHES(64fc, inv, Inv, false, DFT(dft_zdscal))
END(c, 32fc)
END(z, 64fc)

} // namespace orv::dft::batch
