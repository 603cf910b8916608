// What a thread of a team does: its share of the transforms, planes or lines that the argument tells.
#include "dft/compute/routes.h"

namespace orv::dft {
namespace {

// All threads but the last ones have the same share.
Span share_of(i64 items, i32 thread, i32 threads)
{
    const i64 share = (items + threads - 1) / threads, begin = min(items, thread * share);
    return {begin, min(items, begin + share)};
}

Direction direction_of(const DftShare& share) { return share.forward != 0 ? Direction::forward : Direction::backward; }

DftiNode* node_of(DftiNode* head, i32 dimension)
{
    for (; dimension > 0; --dimension) head = head->next;
    return head;
}

// One transform of the share, and the route of several.
template <class R> struct OfPairs {
    using Real = R;
    static WholeOfPairs<R> whole(const DftShare& share)
    {
        return {direction_of(share), share.node, static_cast<const R*>(share.input), static_cast<R*>(share.output)};
    }
    static i32 route(const WholeOfPairs<R>& first, i64 count, void* work)
    {
        return route_of_pairs<R>(first.direction, first.head, first.input, first.output, count, work);
    }
};
template <class R> struct OfReals {
    using Real = R;
    static WholeOfReals<R> whole(const DftShare& share)
    {
        return {direction_of(share),
                share.node,
                static_cast<const R*>(share.input),
                static_cast<R*>(share.output),
                has_half_spectrum(*share.node),
                static_cast<R*>(share.middle)};
    }
    static i32 route(const WholeOfReals<R>& first, i64 count, void* work)
    {
        return route_of_reals<R>(first.direction, first.as_pairs, first.head, first.input, first.output, count, work);
    }
};

// body(items, work area of kernels, buffer) on the thread's span of so many items, with memory of its own.
template <class Body>
void on_span(i32 thread, i32 threads, const DftShare& share, i64 items, i64 buffer_bytes, Body body)
{
    i32& status = share.status[thread];
    status = node_ok;
    const Span span = share_of(items, thread, threads);
    if (span.begin == span.end) return;
    const Buffer work(share.node->max_buffer_bytes, 4096), buffer(buffer_bytes);
    if (work.missing() || buffer.missing()) status = node_no_memory;
    else status = body(span, buffer.begin(), work.begin());
}

// Transforms, or planes of one.
template <class Kind> void planes(i32 thread, i32 threads, void* argument)
{
    const DftShare& share = *static_cast<const DftShare*>(argument);
    auto whole = Kind::whole(share);
    if (share.count > 0)
        return on_span(thread, threads, share, share.count, 0, [&](Span span, void*, void* work) {
            const Steps steps = whole.steps();
            whole.input += span.begin * steps.in;
            whole.output += span.begin * steps.out;
            return Kind::route(whole, span.end - span.begin, work);
        });
    on_span(thread, threads, share, plane_count(*share.node), whole.buffer_bytes(*share.node),
            [&](Span span, void* buffer, void* work) { return whole.planes(span, buffer, work); });
}

template <class Kind> void columns(i32 thread, i32 threads, void* argument)
{
    const DftShare& share = *static_cast<const DftShare*>(argument);
    DftiNode* const node = node_of(share.node, share.dimension);
    on_span(thread, threads, share, column_count(*share.node, *node),
            columns_buffer_bytes<typename Kind::Real>(*share.node),
            [&](Span span, void* buffer, void* work) { return Kind::whole(share).columns(node, span, buffer, work); });
}

template <class Kind> void first_pass(i32 thread, i32 threads, void* argument)
{
    const DftShare& share = *static_cast<const DftShare*>(argument);
    const auto whole = Kind::whole(share);
    on_span(thread, threads, share, whole.first_plane(nullptr, nullptr).first_count(), whole.buffer_bytes(*share.node),
            [&](Span span, void* buffer, void* work) {
                return whole.first_plane(buffer, work).first_pass(span.begin, span.end);
            });
}
template <class Kind> void second_pass(i32 thread, i32 threads, void* argument)
{
    const DftShare& share = *static_cast<const DftShare*>(argument);
    const auto whole = Kind::whole(share);
    on_span(thread, threads, share, whole.first_plane(nullptr, nullptr).second_count(), whole.buffer_bytes(*share.node),
            [&](Span span, void* buffer, void* work) {
                return whole.first_plane(buffer, work).second_pass(span.begin, span.end);
            });
}

} // namespace
} // namespace orv::dft

using namespace orv;
using namespace orv::dft;

#define BODY(name, ...)                                                                                                \
    ORV_EXPORT void DFT(name)(i32 thread, i32 threads, void* argument) { __VA_ARGS__(thread, threads, argument); }
#define BODIES(R, d, z, dz, zd, f, fc)                                                                                 \
    BODY(z##1_nd_par, planes<OfPairs<R>>)                                                                              \
    BODY(z##1_nd_out_par, planes<OfPairs<R>>)                                                                          \
    BODY(z##2_nd_par, columns<OfPairs<R>>)                                                                             \
    BODY(z##2_nd_out_par, columns<OfPairs<R>>)                                                                         \
    BODY(d##dz##1_nd_out_par, planes<OfReals<R>>)                                                                      \
    BODY(d##dz##2_nd_out_par, columns<OfReals<R>>)                                                                     \
    BODY(z##zd##1_nd_out_par, planes<OfReals<R>>)                                                                      \
    BODY(z##zd##2_nd_out_par, columns<OfReals<R>>)                                                                     \
    BODY(z##2_c_dft, first_pass<OfPairs<R>>)                                                                           \
    BODY(z##2_c_out_dft, first_pass<OfPairs<R>>)                                                                       \
    BODY(z##2_r_dft, second_pass<OfPairs<R>>)                                                                          \
    BODY(dz##2_c_dft, first_pass<OfReals<R>>)                                                                          \
    BODY(dz##2_r_dft, second_pass<OfReals<R>>)                                                                         \
    BODY(d##dz##2_c_out_dft, first_pass<OfReals<R>>)                                                                   \
    BODY(zd##2_c_dft, first_pass<OfReals<R>>)                                                                          \
    BODY(zd##2_r_dft, second_pass<OfReals<R>>)                                                                         \
    BODY(zd##2_r_out_dft, second_pass<OfReals<R>>)                                                                     \
    BODY(z##zd##2_c_dft, first_pass<OfReals<R>>)                                                                       \
    BODY(z##zd##2_r_out_dft, second_pass<OfReals<R>>)
ORV_DFT_PRECISIONS(BODIES)
