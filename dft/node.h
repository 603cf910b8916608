// What the files of transforms know of a node beyond its record: its fields by precision, services that may be missing,
// and what every method does when it takes a node.
#pragma once

#include "dft/primitives/members.h"
#include "dft/primitives/packed.h"
#include "frame/kernels/dft_node.h"
#include "frame/serv.h"

namespace orv::dft {

// ---- Settings

// Fields, constants and neighbours of a precision, R its real type.
template <class R> struct Precision;
#define ORV_DFT_PRECISION(R, setting, p, t)                                                                            \
    template <> struct Precision<R> {                                                                                  \
        static constexpr u32 code = setting;                                                                           \
        static constexpr auto forward = &DftiNode::kernel_##p##_forward, backward = &DftiNode::kernel_##p##_backward;  \
        static constexpr auto threaded_forward = &DftiNode::threaded_forward_##p;                                      \
        static constexpr auto threaded_backward = &DftiNode::threaded_backward_##p;                                    \
        static constexpr auto real_forward = &DftiNode::kernel_r##p##_forward;                                         \
        static constexpr auto real_backward = &DftiNode::kernel_r##p##_backward;                                       \
        static constexpr auto primitive_forward = &DftiNode::ymp_r##p##_forward;                                       \
        static constexpr auto primitive_backward = &DftiNode::ymp_r##p##_backward;                                     \
        static constexpr auto spec_complex = &DftiNode::spec_c_##t##fc, spec_split = &DftiNode::spec_c_##t##f;         \
        static constexpr auto spec_real = &DftiNode::spec_r_##t##f;                                                    \
        static constexpr auto spec_out_of_order = &DftiNode::spec_outord_##t##fc;                                      \
    }
ORV_DFT_PRECISION(float, CFG_SINGLE, s, 32);
ORV_DFT_PRECISION(double, CFG_DOUBLE, d, 64);
#undef ORV_DFT_PRECISION

inline bool is_in_place(const DftiNode& node) { return node.placement == CFG_IN_PLACE; }
inline bool is_ordered(const DftiNode& node) { return node.ordering == CFG_ORDERED; }
inline bool is_split(const DftiNode& node)
{
    return node.forward_domain == CFG_DOMAIN_COMPLEX && node.complex_storage == CFG_STORE_SPLIT;
}

// How many pointers a computation takes.
inline u32 pointers_of(const DftiNode& node) { return (is_in_place(node) ? 1 : 2) * (is_split(node) ? 2 : 1); }

inline bool has_half_spectrum(const DftiNode& node) { return node.conjugate_even_storage == CFG_STORE_COMPLEX; }

// How the spectrum of a row of reals is laid out.
inline Layout layout_of(u32 format)
{
    return format == CFG_PACK ? Layout::pack : format == CFG_PERM ? Layout::perm : Layout::ccs;
}
inline Layout layout_of(const DftiNode& node)
{
    return has_half_spectrum(node) ? Layout::ccs : layout_of(node.packed_format);
}

// Whether rows of a real backward transform are packed as Perm beside the spectrum, which they do not fit into.
inline bool keeps_rows_apart(const DftiNode& node)
{
    return !is_in_place(node) && node.work_rank >= 2 &&
           (has_half_spectrum(node) || node.packed_format == CFG_CCS || node.packed_format == CFG_CCE);
}

constexpr bool is_power_of_two(i64 n) { return n > 0 && (n & (n - 1)) == 0; }

// The longest length of its kind that the engine is asked for.
template <class R> constexpr i64 engine_limit(i64 n)
{
    return (is_power_of_two(n) ? i64{1} << 26 : i64{1} << 24) << (sizeof(R) == 4 ? 1 : 0);
}

// ---- Services of the core, with what stands for those that it has not given

// Who lends memory need not know what to do with a block that is none.
inline void release(void* block)
{
    if (block != nullptr) orv_serv_free(block);
}

inline i32 dynamic_threads(const DftiNode& node)
{
    return node.api->dynamic_threads != nullptr ? node.api->dynamic_threads() : 0;
}
inline i32 max_threads(const DftiNode& node) { return node.api->max_threads != nullptr ? node.api->max_threads() : 1; }
inline i32 processors(const DftiNode& node) { return node.api->processors != nullptr ? node.api->processors() : 1; }
inline bool limit_is_fixed(const DftiNode& node)
{
    return node.api->fixed_threads != nullptr && node.api->fixed_threads() != 0;
}
inline void parallel_for(const DftiNode& node, i32 threads, DftTask* task, void* argument)
{
    if (node.api->parallel_for != nullptr) return node.api->parallel_for(threads, task, argument);
    for (i32 t = 0; t < threads; ++t) task(t, threads, argument);
}
inline void parallel_together(const DftiNode& node, i32 threads, DftTask* task, void* argument)
{
    if (node.api->parallel_together != nullptr) return node.api->parallel_together(threads, task, argument);
    task(0, 1, argument);
}

// ---- What a method does

// Lets go of what is in force, unless it is the method itself, whose data then serve again.
inline void take(const DftiMethod* method, DftiNode* node)
{
    if (node->method != method) node->uncommit(node);
    node->method = method;
}

// The end of every commit.
inline void finish(DftiNode* node, DftiCompute* forward, DftiCompute* backward)
{
    node->compute_forward = forward;
    node->compute_backward = backward;
    node->nioargs = pointers_of(*node);
    node->commit_status = CFG_COMMITTED;
}

// The end of a commit that fails. The chain is its maker's.
inline i32 give_up(DftiNode* head, i32 status)
{
    head->next = nullptr;
    head->uncommit(head);
    return status;
}

// A detach begins by this: false where another method is in force, which is an internal error.
inline bool let_go(const DftiMethod* method, DftiNode* node)
{
    if (node->method != method) return false;
    node->compute_forward = node->compute_backward = nullptr;
    node->commit_status = CFG_UNCOMMITTED;
    return true;
}

// Page of buffers: what one of the processors that orv_serv_cpu_detect knows wants, and the others.
inline i64 page_bytes() { return orv_serv_cpu_detect() == 4 ? 4096 : 256; }

} // namespace orv::dft
