// The steps of one dimension as two, on blocks of neighbouring columns that become rows of a buffer.
#include "dft/via_2d.h"

namespace orv::dft {
namespace {

// Point c of row r times W[r+c] * conj(W[|r-c|]), or times its conjugate.
template <class R> void twist(cpx<R>* x, i64 n, const cpx<R>* w, i64 r, i32 sign)
{
    constexpr i64 lanes = vec<cpx<R>>::lanes;
    static_assert(lanes <= mirrored_entries, "registers reach that far below the table");
    const auto factors = [=](i64 c) ORV_INLINE_LAMBDA {
        const vec<cpx<R>> far = loadu(w + r + c);
        const vec<cpx<R>> near = r >= c ? gather(w + r - c, -1) : loadu(w + c - r);
        return sign > 0 ? element_product(far, conj(near)) : element_product(conj(far), near);
    };
    i64 c = 0;
    for (; c + lanes <= n; c += lanes) storeu(x + c, element_product(loadu(x + c), factors(c)));
    for (; c < n; ++c) {
        const cpx<R> far = w[r + c], near = w[r < c ? c - r : r - c];
        x[c] *= sign > 0 ? far * conj(near) : conj(far) * near;
    }
}

// Rows of n points at a pitch: transformed, and twisted as those from `first` on.
template <class R>
i32 row_1d_dft_twist(cpx<R>* rows, i64 count, i64 n, i64 ld, DftiKernel* kernel, void* buffer, const Via2dData& via,
                     i64 first, i32 sign)
{
    const cpx<R>* const w = static_cast<const cpx<R>*>(via.twist) + mirrored_entries;
    for (i64 r = 0; r < count; ++r) {
        if (const i32 status = kernel(rows + r * ld, rows + r * ld, via.child1, buffer)) return status;
        twist(rows + r * ld, n, w, first + r, sign);
    }
    return node_ok;
}

template <class T>
i32 steps_1_2(DftiNode*, i64 n1, i64 n2, T* data, T* target, DftiKernel* kernel, i64 stride, t_8u* buffer,
              const Via2dData* via, i64 row, i32 sign)
{
    using R = real_t<T>;
    using N = Via2d<R>;
    if (target == nullptr) return row_1d_dft_twist<R>(data, n2, n1, n1, kernel, buffer, *via, row, sign);
    const i64 ld = via->ld1;
    const Scratch<T> block(min(block_rows, n2) * ld);
    if (block.missing()) return node_no_memory;
    for (i64 column = 0; column < n2; column += block_rows) {
        const i64 count = min(block_rows, n2 - column);
        N::gather(n1, count, block.begin(), ld, data + column, stride, 1);
        if (const i32 status =
                row_1d_dft_twist<R>(block.begin(), count, n1, ld, kernel, buffer, *via, row + column, sign))
            return status;
        if (via->mode == Via2dData::work_array) N::scatter(n1, count, target + column, via->ld2, 1, block.begin(), ld);
        else N::scatter(n1, count, target + column * n1, 1, n1, block.begin(), ld);
    }
    return node_ok;
}

template <class T>
i32 step_3(real_t<T> scale, T* data, i64 n1, i64 n2, i64 ld, DftiKernel* kernel, i64 stride, DftiNode* child,
           t_8u* buffer)
{
    using N = Via2d<real_t<T>>;
    const Scratch<T> block(min(block_rows, n2) * ld);
    if (block.missing()) return node_no_memory;
    T* const rows = block.begin();
    for (i64 column = 0; column < n1; column += block_rows) {
        const i64 count = min(block_rows, n1 - column);
        N::gather(n2, count, rows, ld, data + column, stride, 1);
        for (i64 r = 0; r < count; ++r) {
            if (const i32 status = kernel(rows + r * ld, rows + r * ld, child, buffer)) return status;
            if (scale != 1) N::scale(n2, scale, rows + r * ld, 1);
        }
        N::scatter(n2, count, data + column, stride, 1, rows, ld);
    }
    return node_ok;
}

} // namespace

PRIMITIVE(11, xz_4step_1_2, steps_1_2)
PRIMITIVE(11, xc_4step_1_2, steps_1_2)
PRIMITIVE(9, xz_4step_3, step_3)
PRIMITIVE(9, xc_4step_3, step_3)

} // namespace orv::dft
