// Two operands: what sums and products of compressed rows have in common.
#pragma once

#include "core/sparse/convert.h"
#include "core/sparse/share.h"
#include "core/team/team.h"

namespace orv::core::sparse {

// Entries that are worth a thread.
template <class T> inline constexpr double pair_grain = is_complex<T> ? 2e4 : 4e4;

template <class T> int threads_for_rows(i64 m, i64 work)
{
    return threads_for(static_cast<double>(work), pair_grain<T>, max(1, m));
}

// Runs act(first row from 1, last row, index) for the rows of each thread, cut so that before(row) is even. Returns by
// how many threads.
template <class T, class Before, class Act> int each_share(i64 m, i64 work, const Before& before, const Act& act)
{
    int parts = 1;
    parallel(threads_for_rows<T>(m, work), [&](int index, int count) {
        const i64 first = 1 + share_of(before, m, work, index, count),
                  last = share_of(before, m, work, index + 1, count);
        if (index == 0) parts = count;
        if (first <= last) act(first, last, index);
    });
    return parts;
}

// Something to remember about each column, for each thread.
template <class Int> class Marks {
public:
    Marks(i64 n, int threads) : length_(round_up(n + 1, 64)), block_(length_ * threads) {}
    bool complete() const { return block_.get() != nullptr; }
    Int* of(int index) const { return block_.get() + length_ * index; }

private:
    i64 length_;
    Block<Int> block_;
};

// Numbers of entries, starts[i + 1] of row i, become pointers from 1 on.
template <class Int> orv_status counts_to_starts(i64 m, Int* starts)
{
    i64 entries = 0;
    for (i64 i = 0; i < m; ++i) entries += starts[i + 1];
    if (const orv_status bad = refuse_entries<Int>(entries)) return bad;
    starts[0] = 1;
    for (i64 i = 0; i < m; ++i) starts[i + 1] += starts[i];
    return ORV_OK;
}

// A result in compressed rows, as the record that conversions start from.
template <class T, class Int> orv_sparse record_of(const Rows<T, Int>& rows)
{
    orv_sparse r{};
    r.format = ORV_SPARSE_CSR, r.type = type_letter<T>, r.kind = 'G';
    r.bits = 8 * sizeof(Int), r.base = static_cast<int>(rows.base);
    r.rows = rows.m, r.cols = rows.n;
    r.begin = rows.begin, r.col = rows.col, r.values = rows.val;
    return r;
}

// Whether a result has as many entries as its compressed rows.
inline bool keeps_entries(const orv_sparse& form)
{
    const bool lists = form.format == ORV_SPARSE_CSR || form.format == ORV_SPARSE_CSC || form.format == ORV_SPARSE_COO;
    return lists && Counting(form).all();
}
inline bool is_general_csr(const orv_sparse& form) { return form.format == ORV_SPARSE_CSR && Counting(form).all(); }

// The form in which operands are computed with.
inline orv_sparse as_rows(orv_sparse form)
{
    form.format = ORV_SPARSE_CSR, form.kind = 'G';
    return form;
}

// The result, of which the rows start there (from 1): fill(arrays) computes their columns and values. It goes to its
// place at once if that is in general compressed rows, else it is converted.
template <class T, class Int, class Fill>
orv_status make(const Wish& wish, const orv_sparse& form, const Int* starts,
                std::initializer_list<const orv_sparse*> operands, const Fill& fill)
{
    const i64 m = form.rows, entries = i64{starts[m]} - 1;
    const auto fill_all = [&](const OwnArrays<T, Int>& arrays) {
        for (i64 i = 0; i <= m; ++i) arrays.begin[i] = starts[i] - 1 + static_cast<Int>(form.base);
        fill(arrays);
    };
    if (wish.sizes_alone && keeps_entries(form)) return tell_sizes(form, entries, *wish.asked), orv_status{ORV_OK};
    if (is_general_csr(form)) {
        Result<T, Int> result(wish.name, wish.position, form, *wish.asked);
        if (const orv_status bad = result.take(entries, operands)) return bad;
        fill_all({result.begin, result.col, result.values});
        result.commit();
        return ORV_OK;
    }
    Rows<T, Int> rows{m, form.cols, static_cast<Int>(form.base)};
    OwnArrays<T, Int> arrays;
    if (!take(rows, entries, arrays)) return no_memory_for(entries);
    fill_all(arrays);
    return convert<T, Int>(wish, Op{}, record_of(rows), form, operands);
}

} // namespace orv::core::sparse
