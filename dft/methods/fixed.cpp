// One contiguous transform of pairs of a size that has straight code, with nothing between the call and that code: no
// table, no memory, no scale.
#include "dft/methods/row.h"

namespace orv::dft {
namespace {

// The transform of n points by its name; 64 and 128 points are the engine's, which needs none of its tables for them.
template <class T, bool forward, int n> ORV_INLINE void transform(const T* src, T* dst);
#define FIXED(n, T, t, fwd, inv)                                                                                       \
    template <> ORV_INLINE void transform<T, true, n>(const T* src, T* dst) { DFT(ymps_cFFT##fwd##_##t)(src, dst); }   \
    template <> ORV_INLINE void transform<T, false, n>(const T* src, T* dst) { DFT(ymps_cFFT##inv##_##t)(src, dst); }
#define OF_ENGINE(n, T, t)                                                                                             \
    template <> ORV_INLINE void transform<T, true, n>(const T* src, T* dst)                                            \
    {                                                                                                                  \
        DFT(ymps_cRadix4FwdNorm_##t)(src, dst, n, nullptr, nullptr, nullptr, src);                                     \
    }                                                                                                                  \
    template <> ORV_INLINE void transform<T, false, n>(const T* src, T* dst)                                           \
    {                                                                                                                  \
        DFT(ymps_cRadix4InvNorm_##t)(src, dst, n, nullptr, nullptr, nullptr, src);                                     \
    }
#define ALL_OF(T, t)                                                                                                   \
    FIXED(2, T, t, _2, _2)                                                                                             \
    FIXED(4, T, t, fwd_4, inv_4)                                                                                       \
    FIXED(8, T, t, fwd_8, inv_8)                                                                                       \
    FIXED(16, T, t, fwd_16, inv_16)                                                                                    \
    FIXED(32, T, t, fwd_32, inv_32)                                                                                    \
    OF_ENGINE(64, T, t)                                                                                                \
    OF_ENGINE(128, T, t)
ALL_OF(cpx<float>, 32fc)
ALL_OF(cpx<double>, 64fc)

template <class T, bool forward, int n> i32 apart(DftiNode*, void* input, void* output, void*, void*)
{
    transform<T, forward, n>(static_cast<const T*>(input), static_cast<T*>(output));
    return node_ok;
}
template <class T, bool forward, int n> i32 in_place(DftiNode*, void* data, void*, void*, void*)
{
    transform<T, forward, n>(static_cast<const T*>(data), static_cast<T*>(data));
    return node_ok;
}

struct Row {
    i64 length; // the last row has 0
    DftiCompute *apart_forward, *apart_backward, *in_place_forward, *in_place_backward;
};
template <class T, int... n>
constexpr Row rows[] = {{n, apart<T, true, n>, apart<T, false, n>, in_place<T, true, n>, in_place<T, false, n>}..., {}};

template <class T, int... n> i32 commit(const DftiMethod* method, DftiNode* node)
{
    if (!is_plain_row<real_t<T>>(*node) || !is_unscaled(*node)) return node_not_this_method;
    const Row* row = rows<T, n...>;
    while (row->length != 0 && row->length != node->work_lengths.dims[0].n) ++row;
    if (row->length == 0) return node_not_in_table;
    take(method, node);
    if (is_in_place(*node)) finish(node, row->in_place_forward, row->in_place_backward);
    else finish(node, row->apart_forward, row->apart_backward);
    return node_ok;
}

} // namespace

#define ROWS(name, ...) ORV_EXPORT constinit const DftiMethod DFT(name){commit<__VA_ARGS__>, detach<NoState>};
ROWS(bkd3_c, cpx<float>, 16, 32, 64)
ROWS(bkd3_z, cpx<double>, 8, 16, 32, 64, 128)
ROWS(bkd2_c, cpx<float>, 2, 4, 8, 16, 32, 64)
ROWS(bkd2_z, cpx<double>, 2, 4, 8, 16, 32, 64)

} // namespace orv::dft
