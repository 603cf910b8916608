// Where a result goes: into arrays of the caller that its record has, or into new ones.
#pragma once

#include "core/serv/status.h"
#include "core/sparse/record.h"
#include "core/sparse/rows.h"

#include <initializer_list>

namespace orv::core::sparse {

// Elements of a record's arrays; what it has of entries, blocks or diagonals is `count`.
struct Lengths {
    i64 begin = 0, row = 0, col = 0, values = 0;
};
inline Lengths lengths_of(const orv_sparse& a, i64 count)
{
    switch (a.format) {
    case ORV_SPARSE_CSR:
        return {a.rows + 1, 0, count, count};
    case ORV_SPARSE_CSC:
        return {a.cols + 1, count, 0, count};
    case ORV_SPARSE_COO:
        return {0, count, count, count};
    case ORV_SPARSE_DIA:
        return {0, 0, count, count * a.ld};
    case ORV_SPARSE_BSR:
        return {lines_of(a) + 1, 0, count, count * a.block * a.block};
    default:
        return {a.rows + 1, 0, 0, count};
    }
}

// What arrays cover, the empty ones apart.
struct Span {
    const char *from, *to;
    bool overlaps(Span other) const { return from < other.to && other.from < to && from < to && other.from < other.to; }
};
template <class Act> void each_array(const orv_sparse& a, i64 count, const Act& act) // (name, array, span)
{
    const Lengths lengths = lengths_of(a, count);
    const i64 index = a.bits / 8, value = a.type == 's' ? 4 : a.type == 'z' ? 16 : 8;
    const auto one = [&](const char* name, const void* at, i64 bytes) {
        const char* from = static_cast<const char*>(at);
        act(name, at, Span{from, from + bytes});
    };
    one("begin", a.begin, lengths.begin * index);
    one("row", a.row, lengths.row * index);
    one("col", a.col, lengths.col * index);
    one("values", a.values, lengths.values * value);
}
// Entries, blocks or diagonals of an operand, those in gaps between its lines, too.
inline i64 count_of(const orv_sparse& a)
{
    if (a.format == ORV_SPARSE_COO || a.format == ORV_SPARSE_DIA) return a.count;
    if (a.begin == nullptr) return 0;
    const auto counted = [&]<class Int>(const Int* begin) {
        const Int* end = a.end != nullptr && a.format != ORV_SPARSE_SKY ? static_cast<const Int*>(a.end) : begin + 1;
        i64 last = begin[0];
        for (i64 i = 0; i < lines_of(a); ++i) last = max(last, end[i]);
        return last - begin[0];
    };
    return a.bits == 32 ? counted(static_cast<const i32*>(a.begin)) : counted(static_cast<const i64*>(a.begin));
}

// The record of a result of `of`'s type, without arrays. Faults of what the caller asks for, as argument `position`.
inline orv_status form_of(const char* name, int position, const orv_sparse* asked, const orv_sparse& of, i64 rows,
                          i64 cols, orv_sparse* form)
{
    if (asked == nullptr) return bad_argument(name, position, "the record of the result is a null pointer");
    orv_sparse r = *asked;
    if (r.type != 0 && r.type != of.type)
        return bad_argument(name, position, "type is %c, and that of the result is %c", r.type, of.type);
    r.type = of.type, r.rows = rows, r.cols = cols, r.count = 0, r.has_diagonal = 0;
    if (r.format == ORV_SPARSE_DIA && r.ld == 0) r.ld = max(1, rows);
    if (const char* fault = fault_of_form(r)) return bad_argument(name, position, "%s", fault);
    const Counting counts(r);
    const bool leaves_out = r.format == ORV_SPARSE_BSR && r.block > 1 && (counts.unit() || kind_of(r) == 'A'),
               left_out = of.format == ORV_SPARSE_BSR && of.block == r.block && kind_of(of) == kind_of(r);
    if (leaves_out && !left_out)
        return bad_argument(name, position, "in BSR kind A and diag U leave out whole blocks; ask for kind G");
    *form = r;
    return ORV_OK;
}

// The caller's arrays in a record of his, or those of an earlier result, be they empty.
inline bool has_arrays(const orv_sparse& r)
{
    return r.values != nullptr || r.begin != nullptr || r.row != nullptr || r.col != nullptr || r.memory != nullptr;
}

// A result while it is made. Nothing of the caller's is written before all that can fail is done.
template <class T, class Int> class Result {
public:
    // form: without arrays; asked: the caller's record.
    Result(const char* name, int position, const orv_sparse& form, orv_sparse& asked)
        : name_(name), position_(position), record_(form), asked_(asked)
    {
    }

    Int *begin = nullptr, *row = nullptr, *col = nullptr;
    T* values = nullptr;

    // Arrays for so many entries, blocks or diagonals, none of which may be one of the operands'.
    orv_status take(i64 count, std::initializer_list<const orv_sparse*> operands)
    {
        const Lengths need = lengths_of(record_, count);
        record_.count = count;
        if (!writes_into_arrays()) {
            const bool taken = memory_.take([&](const auto& take) {
                take(begin, need.begin), take(row, need.row), take(col, need.col), take(values, need.values);
            });
            return taken ? orv_status{ORV_OK} : no_memory_for(count);
        }
        const char *shared = nullptr, *missing = nullptr;
        each_array(with_arrays(), count, [&](const char* what, const void* at, Span span) {
            if (at != nullptr && overlaps(span, operands)) shared = what;
            if (at == nullptr && span.from != span.to) missing = what;
        });
        if (shared != nullptr) return bad_argument(name_, position_, "%s of the result overlaps an operand", shared);
        if (count > asked_.count)
            return fail(ORV_NO_ROOM, "%s: the result takes a count of %lld, and there is room for %lld", name_,
                        static_cast<long long>(count), static_cast<long long>(asked_.count));
        if (missing != nullptr) return bad_argument(name_, position_, "%s of the result is a null pointer", missing);
        const auto integers = [](const void* p) { return static_cast<Int*>(const_cast<void*>(p)); };
        begin = integers(asked_.begin), row = integers(asked_.row), col = integers(asked_.col);
        values = static_cast<T*>(const_cast<void*>(asked_.values));
        return ORV_OK;
    }
    // In place of take(): rows that are the result already, where the caller has no arrays.
    void adopt(Rows<T, Int>&& rows)
    {
        record_.count = rows.entries();
        const OwnArrays<T, Int> own = writable(rows);
        begin = own.begin, values = own.val;
        (record_.format == ORV_SPARSE_CSC ? row : col) = own.col;
        memory_ = std::move(rows.memory);
    }

    void commit()
    {
        record_.begin = begin, record_.row = row, record_.col = col, record_.values = values, record_.end = nullptr;
        if (!writes_into_arrays()) record_.memory = memory_.release();
        asked_ = record_;
    }
    bool writes_into_arrays() const { return has_arrays(asked_); }

private:
    orv_sparse with_arrays() const
    {
        orv_sparse r = record_;
        r.begin = asked_.begin, r.row = asked_.row, r.col = asked_.col, r.values = asked_.values;
        return r;
    }
    static bool overlaps(Span span, std::initializer_list<const orv_sparse*> operands)
    {
        bool found = false;
        for (const orv_sparse* operand : operands)
            each_array(*operand, count_of(*operand), [&](const char*, const void* at, Span other) {
                found |= at != nullptr && span.overlaps(other);
            });
        return found;
    }

    const char* name_;
    int position_;
    orv_sparse record_;
    orv_sparse& asked_;
    Memory memory_;
};

} // namespace orv::core::sparse
