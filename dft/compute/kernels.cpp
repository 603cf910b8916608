// The kernels of one dimension over the engine: its transform, then the scale that commit has kept, also after a failed
// primitive, whose status comes back.
#include "dft/compute/lines.h"

namespace orv::dft {
namespace {

inline void scale(i64 n, double factor, double* data) { DFT(dft_dscal)(n, factor, data, 1); }
inline void scale(i64 n, double factor, float* data) { DFT(dft_sscal)(n, static_cast<float>(factor), data, 1); }

enum Direction { forward, backward };
template <Direction direction> double factor_of(const DftiNode& node)
{
    return direction == forward ? node.committed_forward_scale : node.committed_backward_scale;
}

template <Direction direction, class R> i32 scaled(i32 status, i64 n, R* data, const DftiNode& node)
{
    if (factor_of<direction>(node) != 1) scale(n, factor_of<direction>(node), data);
    return DFT(transfer_ymp_orv_error)(status);
}

template <Direction direction, class R, auto spec>
i32 of_pairs(Dft<cpx<R>>* primitive, const void* input, void* output, const DftiNode& node, void* work)
{
    const i32 status = primitive(static_cast<const cpx<R>*>(input), static_cast<cpx<R>*>(output), node.*spec,
                                 static_cast<t_8u*>(work));
    return scaled<direction>(status, 2 * node.length, static_cast<R*>(output), node);
}

template <Direction direction, class R>
i32 of_two_arrays(SplitDft<R>* primitive, const void* input, void* output, const DftiNode& node, void* work)
{
    const R* const* const from = static_cast<const R* const*>(input);
    R* const* const to = static_cast<R* const*>(output);
    const i32 status =
        primitive(from[0], from[1], to[0], to[1], node.*Precision<R>::spec_split, static_cast<t_8u*>(work));
    scaled<direction>(status, node.length, to[0], node);
    return scaled<direction>(status, node.length, to[1], node);
}

// Beside as many values as there are reals, half a spectrum has the imaginary part of X[0].
inline bool has_zeros(const DftiNode& node)
{
    return node.conjugate_even_storage == CFG_STORE_COMPLEX || node.packed_format == CFG_CCS;
}

template <class R> i32 of_reals(const void* input, void* output, const DftiNode& node, void* work)
{
    const i32 status =
        (node.*Precision<R>::primitive_forward)(input, output, node.*Precision<R>::spec_real, static_cast<t_8u*>(work));
    return scaled<forward>(status, node.length + has_zeros(node), static_cast<R*>(output), node);
}

template <class R>
i32 to_reals(Dft<R>* perm_to_reals, const void* input, void* output, const DftiNode& node, void* work)
{
    R* const to = static_cast<R*>(output);
    const YmpDftSpec* const spec = node.*Precision<R>::spec_real;
    t_8u* const buffer = static_cast<t_8u*>(work);
    const i32 status = keeps_rows_apart(node) ? perm_to_reals(static_cast<const R*>(input), to, spec, buffer)
                                              : (node.*Precision<R>::primitive_backward)(input, output, spec, buffer);
    if (is_in_place(node) && node.packed_format == CFG_CCS) to[node.length] = 0;
    return scaled<backward>(status, node.length, to, node);
}

} // namespace
} // namespace orv::dft

using namespace orv;
using namespace orv::dft;

#define BODY(name, ...)                                                                                                \
    ORV_EXPORT i32 DFT(name)(void* input, void* output, DftiNode* node, void* work)                                    \
    {                                                                                                                  \
        return __VA_ARGS__(input, output, *node, work);                                                                \
    }
// Of the primitive it calls.
#define KERNEL(name, primitive, ...)                                                                                   \
    ORV_EXPORT i32 DFT(name)(void* input, void* output, DftiNode* node, void* work)                                    \
    {                                                                                                                  \
        return __VA_ARGS__(DFT(primitive), input, output, *node, work);                                                \
    }
#define KERNELS(R, d, z, dz, zd, f, fc)                                                                                \
    KERNEL(xymps_fwd_##fc, ympsDFTFwd_CToC_##fc, of_pairs<forward, R, Precision<R>::spec_complex>)                     \
    KERNEL(xymps_inv_##fc, ympsDFTInv_CToC_##fc, of_pairs<backward, R, Precision<R>::spec_complex>)                    \
    KERNEL(xymps_fwd_rev_##fc, ympsDFTOutOrdFwd_CToC_##fc, of_pairs<forward, R, Precision<R>::spec_out_of_order>)      \
    KERNEL(xymps_inv_rev_##fc, ympsDFTOutOrdInv_CToC_##fc, of_pairs<backward, R, Precision<R>::spec_out_of_order>)     \
    KERNEL(xymps_fwd_##f, ympsDFTFwd_CToC_##f, of_two_arrays<forward, R>)                                              \
    KERNEL(xymps_inv_##f, ympsDFTInv_CToC_##f, of_two_arrays<backward, R>)                                             \
    BODY(xymps_fwd_rtocomplex_##f, of_reals<R>)                                                                        \
    KERNEL(xymps_inv_complextor_##f, ympsDFTInv_PermToR_##f, to_reals<R>)
ORV_DFT_PRECISIONS(KERNELS)
