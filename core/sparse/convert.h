// Compressed rows into a result of any format. There is no way round the rows: with six formats on either side that
// would be thirty roads. Diagonals and blocks are written here, for their kernels know square matrices only, and leave
// the blocks of a row in the order in which they meet them.
#pragma once

#include "core/sparse/result.h"
#include "frame/arguments.h"

#include <algorithm>

namespace orv::core::sparse {

// form: the record of the result. rows: the matrix; of CSC its transpose.
template <class T, class Int> class Writer {
public:
    Writer(const Rows<T, Int>& rows, const orv_sparse& form)
        : rows_(rows), form_(form), base_(static_cast<Int>(form.base)), marks_(marks_for(form))
    {
    }

    // Entries, blocks, diagonals or elements of the result.
    orv_status count(i64* n)
    {
        if (marks_for(form_) > 0 && marks_.get() == nullptr) return no_memory_for(rows_.entries());
        switch (form_.format) {
        case ORV_SPARSE_DIA:
            *n = mark_diagonals();
            break;
        case ORV_SPARSE_BSR:
            *n = count_blocks();
            break;
        case ORV_SPARSE_SKY:
            return count_skyline(n);
        default:
            *n = rows_.entries();
        }
        return refuse_entries<Int>(*n);
    }

    // Into the arrays of the result, once they are counted.
    orv_status write(const Result<T, Int>& to)
    {
        switch (form_.format) {
        case ORV_SPARSE_CSR:
            copy(to.begin, to.col, to.values);
            return ORV_OK;
        case ORV_SPARSE_CSC:
            copy(to.begin, to.row, to.values);
            return ORV_OK;
        case ORV_SPARSE_COO:
            return coordinates(to);
        case ORV_SPARSE_DIA:
            diagonals(to);
            return ORV_OK;
        case ORV_SPARSE_BSR:
            blocks(to);
            return ORV_OK;
        default:
            return skyline(0, to.values, to.begin);
        }
    }

private:
    static constexpr Int no_limit = std::numeric_limits<Int>::max();

    static i64 marks_for(const orv_sparse& form)
    {
        return form.format == ORV_SPARSE_DIA   ? form.rows + form.cols
               : form.format == ORV_SPARSE_BSR ? form.cols / form.block
               : form.format == ORV_SPARSE_SKY ? form.rows + 1
                                               : 0;
    }
    void clear_marks() { std::fill_n(marks_.get(), marks_for(form_), Int{0}); }

    // act(column from 0, entry) for row i.
    template <class Act> void each_of_row(i64 i, const Act& act) const
    {
        const i64 first = rows_.begin[0];
        for (i64 p = rows_.begin[i] - first, end = rows_.begin[i + 1] - first; p < end; ++p)
            act(i64{rows_.col[p]} - rows_.base, p);
    }

    void copy(Int* begin, Int* index, T* values) const
    {
        const i64 entries = rows_.entries();
        for (i64 i = 0; i <= rows_.m; ++i) begin[i] = rows_.begin[i] - rows_.begin[0] + base_;
        std::copy_n(rows_.col, entries, index);
        std::copy_n(rows_.val, entries, values);
    }

    orv_status coordinates(const Result<T, Int>& to) const
    {
        const Int job[] = {0, rows_.base, base_, 0, no_limit, 3}, m = static_cast<Int>(rows_.m);
        Int count = 0, info = 0;
        return Kernels<T, Int>::csrcoo.run(job, &m, const_cast<T*>(rows_.val), const_cast<Int*>(rows_.col),
                                           const_cast<Int*>(rows_.begin), &count, to.values, to.row, to.col, &info);
    }

    i64 mark_diagonals()
    {
        clear_marks();
        i64 n = 0;
        for (i64 i = 0; i < rows_.m; ++i)
            each_of_row(i, [&](i64 j, i64) { n += std::exchange(marks_.get()[j - i + rows_.m], Int{1}) == 0; });
        return n;
    }
    void diagonals(const Result<T, Int>& to)
    {
        Int* const place = marks_.get() + rows_.m;
        i64 n = 0;
        for (i64 d = -rows_.m; d < rows_.n; ++d)
            if (place[d] != 0) to.col[n] = static_cast<Int>(d), place[d] = static_cast<Int>(n++);
        for (i64 d = 0; d < n; ++d) std::fill_n(to.values + d * form_.ld, form_.rows, zero<T>);
        for (i64 i = 0; i < rows_.m; ++i)
            each_of_row(i, [&](i64 j, i64 p) { to.values[i + place[j - i] * form_.ld] += rows_.val[p]; });
    }

    // act(column of blocks) for every entry of a row of blocks.
    template <class Act> void each_of_blocks(i64 block_row, const Act& act) const
    {
        const i64 b = form_.block;
        for (i64 i = block_row * b; i < (block_row + 1) * b; ++i)
            each_of_row(i, [&](i64 j, i64 p) { act(j / b, i % b, j % b, p); });
    }
    i64 count_blocks()
    {
        clear_marks();
        i64 n = 0;
        for (i64 row = 0; row < form_.rows / form_.block; ++row)
            each_of_blocks(row, [&](i64 column, i64, i64, i64) {
                n += std::exchange(marks_.get()[column], static_cast<Int>(row + 1)) != row + 1;
            });
        return n;
    }
    void blocks(const Result<T, Int>& to)
    {
        const i64 b = form_.block, size = b * b, by_row = base_ == 0 ? b : 1, by_column = base_ == 0 ? 1 : b;
        Int *const place = marks_.get(),
                   n = 0; // behind the block of a column; those of rows before are no larger than n
        clear_marks();
        for (i64 row = 0; row < form_.rows / b; ++row) {
            const Int first = n;
            to.begin[row] = first + base_;
            each_of_blocks(row, [&](i64 column, i64, i64, i64) {
                if (place[column] <= first) to.col[n] = static_cast<Int>(column), place[column] = ++n;
            });
            std::sort(to.col + first, to.col + n);
            std::fill(to.values + first * size, to.values + n * size, zero<T>);
            for (Int e = first; e < n; ++e) place[to.col[e]] = e + 1, to.col[e] += base_;
            each_of_blocks(row, [&](i64 column, i64 r, i64 s, i64 p) {
                to.values[(place[column] - 1) * size + r * by_row + s * by_column] += rows_.val[p];
            });
        }
        to.begin[form_.rows / b] = n + base_;
    }

    orv_status skyline(Int asks, T* values, Int* pointers) const
    {
        const Int job[] = {0, rows_.base, base_, fold(form_.uplo) == 'L' ? 0 : 1, no_limit, asks},
                  m = static_cast<Int>(rows_.m);
        Int info = 0;
        return Kernels<T, Int>::csrsky.run(job, &m, const_cast<T*>(rows_.val), const_cast<Int*>(rows_.col),
                                           const_cast<Int*>(rows_.begin), values, pointers, &info);
    }
    orv_status count_skyline(i64* n) const // pointers may have gone round, their distances not
    {
        if (const orv_status bad = skyline(1, nullptr, marks_.get())) return bad;
        using Unsigned = std::make_unsigned_t<Int>;
        const Int* pointer = marks_.get();
        *n = 0;
        for (i64 i = 0; i < rows_.m; ++i)
            *n += static_cast<i64>(static_cast<Unsigned>(pointer[i + 1]) - static_cast<Unsigned>(pointer[i]));
        return refuse_entries<Int>(*n);
    }

    const Rows<T, Int>& rows_;
    const orv_sparse& form_;
    Int base_;
    Block<Int> marks_;
};

// What a caller asks for: the routine, the position of the result among its arguments, its record.
struct Wish {
    const char* name;
    int position;
    orv_sparse* asked;
    bool sizes_alone = false;
};

// The sizes of a result, all that is told of it.
inline void tell_sizes(const orv_sparse& form, i64 count, orv_sparse& asked)
{
    asked.type = form.type, asked.rows = form.rows, asked.cols = form.cols, asked.ld = form.ld, asked.count = count;
}

// Rows as the result.
template <class T, class Int>
orv_status deliver(const Wish& wish, Rows<T, Int>&& rows, const orv_sparse& form,
                   std::initializer_list<const orv_sparse*> operands)
{
    const bool compressed = form.format == ORV_SPARSE_CSR || form.format == ORV_SPARSE_CSC;
    Result<T, Int> result(wish.name, wish.position, form, *wish.asked);
    if (compressed && !wish.sizes_alone && rows.memory.has() && !result.writes_into_arrays()) {
        result.adopt(std::move(rows));
        result.commit();
        return ORV_OK;
    }
    Writer<T, Int> writer(rows, form);
    i64 count = 0;
    if (const orv_status bad = writer.count(&count)) return bad;
    if (wish.sizes_alone) return tell_sizes(form, count, *wish.asked), orv_status{ORV_OK};
    if (const orv_status bad = result.take(count, operands)) return bad;
    const orv_status status = writer.write(result);
    if (status == ORV_OK) result.commit();
    return status;
}

// op(A) as the result, its lines sorted.
template <class T, class Int>
orv_status convert(const Wish& wish, Op op, const orv_sparse& a, const orv_sparse& form,
                   std::initializer_list<const orv_sparse*> operands)
{
    orv_sparse lines = form; // columns are the rows of the transpose
    if (form.format == ORV_SPARSE_CSC) {
        lines.format = ORV_SPARSE_CSR, op.turns = !op.turns;
        lines.uplo = fold(form.uplo) == 'L' ? 'U' : 'L';
    }
    Rows<T, Int> rows;
    const orv_status status = rows_of<T, Int>(a, op, lines, Order::sorted, false, rows);
    return status == ORV_OK ? deliver(wish, std::move(rows), form, operands) : status;
}

// act.operator()<T, Int>() for the element type and the width of a record.
template <class Act> orv_status with_types(const orv_sparse& form, const Act& act)
{
    const auto with_width = [&]<class T>() {
        return form.bits == 32 ? act.template operator()<T, i32>() : act.template operator()<T, i64>();
    };
    switch (form.type) {
    case 's':
        return with_width.template operator()<float>();
    case 'd':
        return with_width.template operator()<double>();
    case 'c':
        return with_width.template operator()<cpx<float>>();
    default:
        return with_width.template operator()<cpx<double>>();
    }
}

// Letter and record of an operand.
inline orv_status refuse_operand(const char* name, int trans_position, int position, char trans, const orv_sparse* a)
{
    if (!arguments::one_of(trans, "NTC")) return bad_argument(name, trans_position, "trans is none of N, T, C");
    const char* fault = fault_of(a);
    return fault == nullptr ? ORV_OK : bad_argument(name, position, "%s", fault);
}

} // namespace orv::core::sparse
