// Many transforms of one dimension: lines are staged in rows of a buffer where they are strided, a block at a time, so
// that a block's rows are transformed while they are in cache, and every line of the array is read and written once.
#pragma once

#include "dft/compute/lines.h"

namespace orv::dft {

// What a transform runs by. The buffer has room for a block of rows; nobody looks at it where lines are dense.
struct Run {
    DftiNode* node;
    DftiKernel* kernel;
    void* buffer;
    i64 log2_block;
    void* work; // of the kernel
};

// Work memory for the time of a call, from a page's boundary on.
class Buffer {
public:
    explicit Buffer(i64 bytes) : Buffer(bytes, page_bytes()) {}
    Buffer(i64 bytes, i64 alignment)
        : begin_(bytes > 0 ? orv_serv_allocate(bytes, alignment) : nullptr), missing_(bytes > 0 && begin_ == nullptr)
    {
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    ~Buffer()
    {
        if (begin_ != nullptr) orv_serv_deallocate(begin_);
    }
    bool missing() const { return missing_; }
    void* begin() const { return begin_; }

private:
    void* begin_;
    bool missing_;
};

// Pairs of half a spectrum of n reals, or of a row that holds either.
constexpr i64 half(i64 n) { return n / 2 + 1; }

// Reals of a packed row.
constexpr i64 packed_length(Layout layout, i64 n) { return layout == Layout::ccs ? 2 * half(n) : n; }
// The layout that the kernel back to reals reads.
inline Layout read_by_kernel(const DftiNode& node) { return keeps_rows_apart(node) ? Layout::perm : layout_of(node); }

template <class R> void unpack_row(i64 n, Layout layout, const R* packed, cpx<R>* half);
template <class R> void pack_row(i64 n, Layout layout, const cpx<R>* half, R* packed);

// Reals that a row of the buffer takes.
template <class In, class Out> i64 row_reals(const DftiNode& node)
{
    return 2 * (is_complex<In> && is_complex<Out> ? node.length : half(node.length));
}
template <class In, class Out> i64 block_bytes(const DftiNode& node, i64 log2_block, i64 count)
{
    return min(i64{1} << log2_block, count) * row_reals<In, Out>(node) * static_cast<i64>(sizeof(real_t<In>));
}

// Blocks of columns that are side by side; of single precision twice as many have as many bytes.
template <class R> constexpr i64 log2_of_columns(i64 of_double) { return of_double + (sizeof(R) == 4); }

// Pairs to pairs, reals to packed rows and back, reals to pairs, pairs to reals.
template <class In, class Out>
i32 transform(const Run& run, i64 count, const Lines<const In>& in, const Lines<Out>& out);

// The same for pairs in place, where the node may have plans for columns that are side by side.
template <class R> i32 transform(const Run& run, i64 count, const Lines<cpx<R>>& data);

// As many lines in each of so many planes, if they are short and need no staging; else nothing is done.
template <class R>
bool short_lines_of_planes(const Run& run, i64 count, const Lines<const cpx<R>>& in, const Lines<cpx<R>>& out,
                           i64 planes, i64 in_step, i64 out_step);

// Both with the node's strides and distances, and a buffer of their own for blocks: for transforms that lie element
// beside element.
template <class In, class Out>
i32 transform_batch(DftiNode* node, const In* input, Out* output, DftiKernel* kernel, i64 count, void* work);
template <class R> i32 transform_batch(DftiNode* node, cpx<R>* data, DftiKernel* kernel, i64 count, void* work);

} // namespace orv::dft
