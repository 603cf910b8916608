// One dimension as two: the split of its length, the table of twiddles, the two transforms that it goes through, and
// the way of the data between them.
#include "dft/via_2d.h"

#include "frame/roots.h"

#include <cstdlib>

namespace orv::dft {
namespace {

// ---- The split of a length

i64 ceiling_of_root(i64 n)
{
    auto s = static_cast<i64>(__builtin_sqrt(static_cast<double>(n)));
    while (s > 1 && (s - 1) * (s - 1) >= n) --s;
    while (s * s < n) ++s;
    return s;
}

// Prime factors in rising order.
struct Factors {
    i64 of[64];
    int count = 0;

    explicit Factors(i64 n)
    {
        strip(n, 2), strip(n, 3);
        for (i64 d = 5, step = 2; d <= n / d; d += step, step = 6 - step) strip(n, d);
        if (n > 1) of[count++] = n;
    }

private:
    void strip(i64& n, i64 d)
    {
        for (; n % d == 0; n /= d) of[count++] = d;
    }
};

// The factor next to the root that a simple rule finds; 1 if there is none.
i64 first_factor(i64 n, i64 order)
{
    if (is_power_of_two(n)) return i64{1} << (order / 2);
    const i64 s = ceiling_of_root(n);
    const Factors factors(n);
    i64 p = 1, q = 1;
    for (int i = factors.count; i-- > 0;) {
        const i64 d = factors.of[i];
        (q < p || p * d > s ? q : p) *= d;
    }
    return min(p, q);
}

constexpr i64 pitch(i64 n) { return ((n + 7) & ~i64{7}) | 8; }

i32 mode_of(const DftiNode& node)
{
    if (std::getenv("DFTI_WORKSPACE_ORDER") != nullptr) return Via2dData::in_place;
    i64 mode = node.workspace == CFG_AVOID ? Via2dData::in_place : Via2dData::work_array;
    if (const char* const text = std::getenv("DFTI_WORKSPACE")) mode = std::atol(text);
    return mode >= Via2dData::out_of_place && mode <= Via2dData::in_place ? static_cast<i32>(mode)
                                                                          : i32{Via2dData::work_array};
}

// ---- What it is made of

Via2dData* data_of(const DftiNode* node) { return static_cast<Via2dData*>(node->via2d_data); }

void destroy_child(DftiNode* child)
{
    if (child != nullptr) child->destroy(child);
}

void free_data_1d_via_2d(DftiNode* node)
{
    Via2dData* const via = data_of(node);
    if (via->child2 != via->child1) destroy_child(via->child2);
    destroy_child(via->child1);
    release(via->twist);
    orv_serv_free(via);
}

void let_go(DftiNode* node)
{
    free_data_1d_via_2d(node);
    node->via2d_data = nullptr, node->via2d_free = nullptr;
}

// Every twiddle is a product of two entries, for a*b = ((a+b)^2 - (a-b)^2)/4. The squares are kept modulo 4*N.
template <class R> i32 setup_twiddle_table(Via2dData* via)
{
    const i64 entries = via->n1 + via->n2, circle = 4 * via->n1 * via->n2;
    const i64 bytes = (entries + mirrored_entries) * static_cast<i64>(sizeof(cpx<R>));
    via->twist = orv_serv_malloc(bytes, work_alignment);
    if (via->twist == nullptr) return node_no_memory;
    cpx<R>* const w = static_cast<cpx<R>*>(via->twist) + mirrored_entries;
    for (i64 j = 0, square = 0; j < entries; ++j) {
        w[j] = rounded<R>(root(-square, circle));
        square = (square + 2 * j + 1) % circle;
    }
    for (i64 j = 1; j <= mirrored_entries; ++j) w[-j] = w[j];
    return node_ok;
}

template <class R> i32 make_child(DftiNode** child, i64 n)
{
    if (const i32 status = Via2d<R>::create(child, n)) return status;
    DftiNode* const node = *child;
    node->thread_limit = 1;
    node->flags |= DftiNode::no_decomposition;
    if (const i32 status = node->methods->commit(node)) return status;
    if (node->via2d_data != nullptr) data_of(node)->mode = Via2dData::work_array; // one level alone spares memory
    return node_ok;
}

template <class R> i32 make_children(Via2dData* via)
{
    if (const i32 status = make_child<R>(&via->child1, via->n1)) return status;
    if (via->n2 != via->n1) return make_child<R>(&via->child2, via->n2);
    via->child2 = via->child1;
    return node_ok;
}

template <class R> i32 init_data(DftiNode* node, DftiNode* head)
{
    const i64 n = node->length, f = first_factor(n, node->length_order);
    if (f == 1) return node_no_split;
    auto* const via = static_cast<Via2dData*>(orv_serv_calloc(1, sizeof(Via2dData), work_alignment));
    if (via == nullptr) return node_no_memory;
    node->via2d_data = via, node->via2d_free = free_data_1d_via_2d;
    via->n1 = min(f, n / f), via->n2 = n / via->n1;
    via->ld1 = pitch(via->n1), via->ld2 = pitch(via->n2);
    via->mode = mode_of(*node);
    if (const i32 status = setup_twiddle_table<R>(via)) return give_up(head, status);
    const i32 status = make_children<R>(via);
    if (status != node_ok) let_go(node);
    return status;
}

// ---- Its way

// A child that has no kernel, as a method of its own has taken it.
template <bool forward> i32 by_entry(void*, void* data, DftiNode* child, void*)
{
    return (forward ? child->compute_forward : child->compute_backward)(child, data, nullptr, nullptr, nullptr);
}
template <class R, bool forward> DftiKernel* kernel_of(DftiNode* child)
{
    if (child->method != nullptr) return by_entry<forward>;
    return child->*(forward ? Precision<R>::forward : Precision<R>::backward);
}

template <class R, bool forward> R scale_of(const DftiNode* node)
{
    if constexpr (sizeof(R) == 4) return forward ? node->forward_scale_s : node->backward_scale_s;
    else return forward ? node->committed_forward_scale : node->committed_backward_scale;
}

// The rows of the work array, each block of them transposed to the output as long as it is in cache.
template <class R>
i32 finish_rows(R scale, cpx<R>* rows, cpx<R>* output, const Via2dData& via, DftiKernel* kernel, void* buffer)
{
    const i64 n1 = via.n1, n2 = via.n2, ld = via.ld2;
    for (i64 row = 0; row < n1; row += block_rows) {
        const i64 count = min(block_rows, n1 - row);
        for (i64 r = row; r < row + count; ++r) {
            if (const i32 status = kernel(rows + r * ld, rows + r * ld, via.child2, buffer)) return status;
            if (scale != 1) Via2d<R>::scale(n2, scale, rows + r * ld, 1);
        }
        Via2d<R>::scatter(n2, count, output + row, n1, 1, rows + row * ld, ld);
    }
    return node_ok;
}

template <class R, bool forward> i32 transform(void* input, void* output, DftiNode* node, void*)
{
    using T = cpx<R>;
    using N = Via2d<R>;
    const Via2dData& via = *data_of(node);
    const i64 n1 = via.n1, n2 = via.n2;
    auto *from = static_cast<T*>(input), *const to = static_cast<T*>(output);
    const bool separate = via.mode == Via2dData::work_array;

    const Scratch<T> work_array(separate ? n1 * via.ld2 : 0);
    if (work_array.missing()) return node_no_memory;
    T* target = work_array.begin();
    if (!separate && from == to) {
        N::transpose_in_place('C', 'T', n2, n1, one<T>, to, n2, n1);
    } else if (via.mode == Via2dData::out_of_place) {
        N::transpose('C', 'T', n2, n1, one<T>, from, n2, to, n1);
        from = to;
    } else if (!separate) target = to;

    {
        const Scratch<t_8u> buffer(via.child1->node_buffer_bytes);
        if (buffer.missing()) return node_no_memory;
        if (const i32 status = N::steps_1_2(node, n1, n2, from, target, kernel_of<R, forward>(via.child1), n2,
                                            buffer.begin(), &via, 0, forward ? 1 : -1))
            return status;
    }
    const Scratch<t_8u> buffer(via.child2->node_buffer_bytes);
    if (buffer.missing()) return node_no_memory;
    const R scale = scale_of<R, forward>(node);
    DftiKernel* const kernel = kernel_of<R, forward>(via.child2);
    if (separate) return finish_rows(scale, target, to, via, kernel, buffer.begin());
    return N::step_3(scale, to, n1, n2, via.ld2, kernel, n1, via.child2, buffer.begin());
}

} // namespace

PRIMITIVE(2, xz_init_data_1d_via_2d, init_data<double>)
PRIMITIVE(2, xc_init_data_1d_via_2d, init_data<float>)
PRIMITIVE(4, xz_1d_via_2d_f, transform<double, true>)
PRIMITIVE(4, xz_1d_via_2d_b, transform<double, false>)
PRIMITIVE(4, xc_1d_via_2d_f, transform<float, true>)
PRIMITIVE(4, xc_1d_via_2d_b, transform<float, false>)

} // namespace orv::dft
