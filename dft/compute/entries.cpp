// Entries, which commit installs: offsets, the work area of the call, and the way down. A kernel straight away, the
// routine of two dimensions, a serial route, the threaded transform of one dimension, or the core's team.
#include "dft/compute/routes.h"

namespace orv::dft {
namespace {

// What an entry is for.
template <class R_, bool real_, bool in_place_, Direction direction_> struct Entry {
    using R = R_;
    static constexpr bool real = real_, in_place = in_place_, forward = direction_ == Direction::forward;
    static constexpr Direction direction = direction_;
};

struct Arrays {
    void *input, *output;
};

// ---- What the core does with several threads, by type

template <class R> struct Imports;
#define IMPORTS(R, d, z, dz, zd, f, fc)                                                                                \
    template <> struct Imports<R> {                                                                                    \
        static constexpr DftPar *pairs[] = {orv_dft_compute_forward_##z##_par, orv_dft_compute_backward_##z##_par},    \
                                *packed[] = {orv_dft_compute_forward_##d##_par, orv_dft_compute_backward_##d##_par};   \
        static constexpr DftParOut *pairs_out[] = {orv_dft_compute_forward_##z##_out_par,                              \
                                                   orv_dft_compute_backward_##z##_out_par},                            \
                                   *packed_out[] = {orv_dft_compute_forward_##d##_out_par,                             \
                                                    orv_dft_compute_backward_##d##_out_par},                           \
                                   *half[] = {orv_dft_compute_forward_##dz##_par,                                      \
                                              orv_dft_compute_backward_##zd##_par},                                    \
                                   *half_out[] = {orv_dft_compute_forward_##dz##_out_par,                              \
                                                  orv_dft_compute_backward_##zd##_out_par};                            \
    };
ORV_DFT_PRECISIONS(IMPORTS)

template <class E> i32 team(DftiNode* node, Arrays a, void* work)
{
    using Import = Imports<typename E::R>;
    constexpr int i = E::forward ? 0 : 1;
    if (E::real && has_half_spectrum(*node))
        return (E::in_place ? Import::half : Import::half_out)[i](&node, a.input, a.output, work);
    if (E::in_place) return (E::real ? Import::packed : Import::pairs)[i](&node, a.output, work);
    return (E::real ? Import::packed_out : Import::pairs_out)[i](&node, a.input, a.output, work);
}

// ---- The way down

template <class E> i32 go(DftiNode* node, Arrays a, void* work)
{
    using R = typename E::R;
    using P = Precision<R>;
    DftiKernel* const kernel =
        E::real ? kernel_of_reals<R>(E::direction, *node) : kernel_of_pairs<R>(E::direction, *node);
    const bool split = is_split(*node);

    if ((node->flags & DftiNode::direct_1d) != 0) return kernel(a.input, a.output, node, work);
    if ((node->flags & DftiNode::direct_2d) != 0 && !split) {
        DftiNode* const next = node->next;
        DftiKernel* const columns = kernel_of_pairs<R>(E::direction, *next);
        if constexpr (!E::real && E::in_place)
            return (E::forward ? node->kernel_2d_forward : node->kernel_2d_backward)(
                a.output, &node->input_stride, &next->input_stride, kernel, columns, node, work);
        else
            return (E::forward ? node->kernel_2d_forward_out : node->kernel_2d_backward_out)(
                a.input, a.output, &node->input_stride, &next->input_stride, kernel, columns, node, work);
    }
    if (node->effective_threads == 1 || split) {
        const i64 count = node->number_of_transforms;
        if constexpr (E::real)
            return route_of_reals<R>(E::direction, has_half_spectrum(*node), node, a.input, a.output, count, work);
        else return route_of_pairs<R>(E::direction, node, a.input, a.output, count, work);
    }
    if constexpr (!E::real) {
        DftiKernel* const threaded = node->*(E::forward ? P::threaded_forward : P::threaded_backward);
        if (node->work_rank == 1 && node->number_of_transforms == 1 && threaded != nullptr)
            return node->via2d_data != nullptr ? threaded(a.input, a.output, node, work) : node_internal_error;
    }
    return team<E>(node, a, work);
}

template <class E> i32 enter(DftiNode* node, void* data0, void* data1, void* data2, void* data3)
{
    using R = typename E::R;
    const Buffer work(node->max_buffer_bytes, 4096);
    if (work.missing()) return node_no_memory;

    // In reals. In place pairs ignore the output's offset, as they do its strides.
    const bool half = E::real && has_half_spectrum(*node);
    const bool split = !E::real && is_split(*node);
    const i64 in_unit = (E::real || split) && !(half && !E::forward) ? 1 : 2;
    const i64 out_unit = (E::real || split) && !(half && E::forward) ? 1 : 2;
    const i64 in_at = in_unit * node->input_offset;
    const i64 out_at = !E::real && E::in_place ? in_at : out_unit * node->output_offset;
    const auto at = [](void* data, i64 reals) -> void* { return static_cast<R*>(data) + reals; };
    if (split) {
        void* in[] = {at(data0, in_at), at(data1, in_at)};
        void* out[] = {at(E::in_place ? data0 : data2, out_at), at(E::in_place ? data1 : data3, out_at)};
        return go<E>(node, {in, out}, work.begin());
    }
    const bool one_pointer = E::in_place && !half; // the two offsets of packed reals in place are the same
    return go<E>(node, {at(data0, in_at), one_pointer ? at(data0, in_at) : at(E::in_place ? data0 : data1, out_at)},
                 work.begin());
}

} // namespace
} // namespace orv::dft

using namespace orv;
using namespace orv::dft;

#define ENTRY(name, ...)                                                                                               \
    ORV_EXPORT i32 DFT(name)(DftiNode * node, void* data0, void* data1, void* data2, void* data3)                      \
    {                                                                                                                  \
        return enter<Entry<__VA_ARGS__>>(node, data0, data1, data2, data3);                                            \
    }
// One dimension and several enter alike: commit has set the flags.
#define ENTRIES_OF_RANK(p, domain, rank, R, real)                                                                      \
    ENTRY(compute_fwd_##p##_##domain##_##rank##_i, R, real, true, Direction::forward)                                  \
    ENTRY(compute_fwd_##p##_##domain##_##rank##_o, R, real, false, Direction::forward)                                 \
    ENTRY(compute_bwd_##p##_##domain##_##rank##_i, R, real, true, Direction::backward)                                 \
    ENTRY(compute_bwd_##p##_##domain##_##rank##_o, R, real, false, Direction::backward)
#define ENTRIES(R, p, z, dz, zd, f, fc)                                                                                \
    ENTRIES_OF_RANK(p, c2c, 1d, R, false)                                                                              \
    ENTRIES_OF_RANK(p, c2c, md, R, false)                                                                              \
    ENTRIES_OF_RANK(p, r2c, 1d, R, true)                                                                               \
    ENTRIES_OF_RANK(p, r2c, md, R, true)
ORV_DFT_PRECISIONS(ENTRIES)
