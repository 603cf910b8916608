// The entries of a matrix, whatever its format and kind: what conversions start from where arrays do not lie as kernels
// want them.
#pragma once

#include "core/sparse/matrix.h"

namespace orv::core::sparse {

// Which entries of a record count, by its kind; those of blocks by the place of their block.
class Counting {
public:
    explicit Counting(const orv_sparse& a)
        : kind_(kind_of(a)), lower_(fold(a.uplo) == 'L'), unit_(is_unit(a) && kind_ != 'G' && kind_ != 'A'),
          block_(a.format == ORV_SPARSE_BSR ? a.block : 1)
    {
    }

    bool all() const { return kind_ == 'G'; }
    bool mirrors() const { return kind_ == 'S' || kind_ == 'H' || kind_ == 'A'; }
    bool unit() const { return unit_; }
    // By the sign of this, an entry stands below, on or above the diagonal.
    i64 side(i64 i, i64 j) const { return block_ == 1 ? i - j : i / block_ - j / block_; }
    bool operator()(i64 i, i64 j) const
    {
        if (all()) return true;
        const i64 at = side(i, j);
        if (at == 0) return kind_ != 'A' && !unit_;
        return kind_ != 'D' && lower_ == (at > 0);
    }
    // The other one of a pair.
    template <class T> T mirrored(T value) const { return kind_ == 'A' ? -value : kind_ == 'H' ? conj(value) : value; }

private:
    char kind_;
    bool lower_, unit_;
    i64 block_;
};

// act(row, column, value) for all that is stored, from 0; zeros of DIA, BSR and SKY fill up their format and are no
// entries.
template <class T, class Int, class Act> void each_entry_of_width(const orv_sparse& a, const Act& act)
{
    if (a.rows == 0 || a.cols == 0) return;
    const auto integers = [](const void* p) { return static_cast<const Int*>(p); };
    const T* val = static_cast<const T*>(a.values);
    const Int *begin = integers(a.begin), *end = a.end != nullptr ? integers(a.end) : begin + 1, *row = integers(a.row),
              *col = integers(a.col);
    const auto each_of_lines = [&](const auto& with) { // (line, entry)
        for (i64 i = 0; i < lines_of(a); ++i)
            for (i64 p = i64{begin[i]} - begin[0]; p < i64{end[i]} - begin[0]; ++p) with(i, p);
    };
    switch (a.format) {
    case ORV_SPARSE_CSR:
        return each_of_lines([&](i64 i, i64 p) { act(i, i64{col[p]} - a.base, val[p]); });
    case ORV_SPARSE_CSC:
        return each_of_lines([&](i64 j, i64 p) { act(i64{row[p]} - a.base, j, val[p]); });
    case ORV_SPARSE_COO:
        for (i64 p = 0; p < a.count; ++p) act(i64{row[p]} - a.base, i64{col[p]} - a.base, val[p]);
        return;
    case ORV_SPARSE_DIA:
        for (i64 d = 0; d < a.count; ++d)
            for (i64 i = max(0, -i64{col[d]}); i < min(a.rows, a.cols - col[d]); ++i)
                if (val[i + d * a.ld] != zero<T>) act(i, i + col[d], val[i + d * a.ld]);
        return;
    case ORV_SPARSE_BSR:
        return each_of_lines([&](i64 i, i64 p) {
            const T* block = val + p * a.block * a.block;
            const i64 j = i64{col[p]} - a.base;
            for (i64 r = 0; r < a.block; ++r)
                for (i64 s = 0; s < a.block; ++s) {
                    const T value = block[a.base == 0 ? r * a.block + s : r + s * a.block];
                    if (value != zero<T>) act(i * a.block + r, j * a.block + s, value);
                }
        });
    default:
        for (i64 i = 0; i < a.rows; ++i) {
            const i64 last = i64{begin[i + 1]} - begin[0] - 1;
            for (i64 p = i64{begin[i]} - begin[0]; p <= last; ++p) {
                const i64 j = i - (last - p);
                if (val[p] == zero<T>) continue;
                if (fold(a.uplo) == 'L') act(i, j, val[p]);
                else act(j, i, val[p]);
            }
        }
    }
}

// What becomes of a matrix.
struct Op {
    bool turns = false, conjugates = false;
    static Op of(char trans) { return {fold(trans) != 'N', fold(trans) == 'C'}; }
    i64 rows(const orv_sparse& a) const { return turns ? a.cols : a.rows; }
    i64 cols(const orv_sparse& a) const { return turns ? a.rows : a.cols; }
};

// The same for all of op(A): what counts, its mirror image, and ones.
template <class T, class Act> void each_element(const orv_sparse& a, Op op, const Act& act)
{
    const Counting counts(a);
    const auto turned = [&](i64 i, i64 j, T value) {
        if (op.conjugates) value = conj(value);
        if (op.turns) act(j, i, value);
        else act(i, j, value);
    };
    const auto whole = [&](i64 i, i64 j, T value) {
        if (!counts(i, j)) return;
        turned(i, j, value);
        if (counts.mirrors() && counts.side(i, j) != 0) turned(j, i, counts.mirrored(value));
    };
    if (a.bits == 32) each_entry_of_width<T, i32>(a, whole);
    else each_entry_of_width<T, i64>(a, whole);
    if (counts.unit())
        for (i64 i = 0; i < a.rows; ++i) turned(i, i, one<T>);
}

} // namespace orv::core::sparse
