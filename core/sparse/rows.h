// The road of conversions, sums and products: every operand becomes compressed rows, which the kernels work on.
#pragma once

#include "core/sparse/entries.h"
#include "core/sparse/vectors.h"

#include <limits>
#include <utility>

namespace orv::core::sparse {

// Arrays of a result, one behind the other in a block that outlives the call unless it is given back.
class Memory {
public:
    Memory() = default;
    Memory(Memory&& other) noexcept : at_(other.release()), for_work_(other.for_work_) {}
    Memory& operator=(Memory&& other) noexcept
    {
        std::swap(at_, other.at_), std::swap(for_work_, other.for_work_);
        return *this;
    }
    ~Memory()
    {
        if (at_ != nullptr) (for_work_ ? orv_serv_deallocate : orv_serv_free)(at_);
    }
    // False without memory; arrays(take) takes them by take(place of the pointer, elements). for_work: the block is
    // none that a result is, but of those that are kept for the next call.
    template <class Arrays> bool take(const Arrays& arrays, bool for_work = false)
    {
        constexpr i64 alignment = 128;
        i64 bytes = 0;
        const auto sized = []<class E>(E*, i64 count) { return round_up(count * i64{sizeof(E)}, alignment); };
        arrays([&](auto*& array, i64 count) { bytes += sized(array, count); });
        *this = {};
        for_work_ = for_work;
        at_ = (for_work ? orv_serv_allocate : orv_serv_malloc)(max(bytes, alignment), alignment);
        if (at_ == nullptr) return false;
        char* next = static_cast<char*>(at_);
        arrays([&]<class E>(E*& array, i64 count) {
            array = count > 0 ? reinterpret_cast<E*>(next) : nullptr;
            next += sized(array, count);
        });
        return true;
    }
    void* release() { return std::exchange(at_, nullptr); }
    bool has() const { return at_ != nullptr; }

private:
    void* at_ = nullptr;
    bool for_work_ = false;
};

// Those of the caller, or its own. Row i has the entries from begin[i] - begin[0] on; its own begin at base.
template <class T, class Int> struct Rows {
    i64 m = 0, n = 0;
    Int base = 0;
    const Int *begin = nullptr, *col = nullptr;
    const T* val = nullptr;
    Memory memory{};       // none: the arrays are the caller's
    bool sorted = false;   // by how they were made
    bool for_work = false; // and not to become a result; told before they are made

    i64 entries() const { return i64{begin[m]} - begin[0]; }
    // Arrays moved so that kernels find row 1 by pointers and entries that count from 1.
    const Int* pointers() const { return begin; }
    const Int* columns() const { return col + (1 - begin[0]); }
    const T* values() const { return val + (1 - begin[0]); }
};

// Its own arrays, to be filled.
template <class T, class Int> struct OwnArrays {
    Int *begin = nullptr, *col = nullptr;
    T* val = nullptr;
};
template <class T, class Int> bool take(Rows<T, Int>& rows, i64 entries, OwnArrays<T, Int>& arrays)
{
    const bool taken = rows.memory.take(
        [&](const auto& take) { take(arrays.begin, rows.m + 1), take(arrays.col, entries), take(arrays.val, entries); },
        rows.for_work);
    rows.begin = arrays.begin, rows.col = arrays.col, rows.val = arrays.val;
    return taken;
}
template <class T, class Int> OwnArrays<T, Int> writable(const Rows<T, Int>& rows)
{
    return {const_cast<Int*>(rows.begin), const_cast<Int*>(rows.col), const_cast<T*>(rows.val)};
}

template <class Int> orv_status refuse_entries(i64 entries)
{
    if (entries < std::numeric_limits<Int>::max()) return ORV_OK;
    return fail(ORV_NO_ROOM, "%lld entries do not fit in indices of %d bits; ask for 64",
                static_cast<long long>(entries), static_cast<int>(8 * sizeof(Int)));
}
inline orv_status no_memory_for(i64 entries)
{
    return fail(ORV_NO_MEMORY, "no memory is left for %lld entries", static_cast<long long>(entries));
}

// A copy that can be written, counting from base.
template <class T, class From, class Int> orv_status copy_rows(const Rows<T, From>& from, int base, Rows<T, Int>& to)
{
    const i64 entries = from.entries();
    if (const orv_status bad = refuse_entries<Int>(entries)) return bad;
    Rows<T, Int> own{from.m, from.n, static_cast<Int>(base)};
    own.for_work = to.for_work;
    OwnArrays<T, Int> arrays;
    if (!take(own, entries, arrays)) return no_memory_for(entries);
    for (i64 i = 0; i <= from.m; ++i) arrays.begin[i] = static_cast<Int>(i64{from.begin[i]} - from.begin[0] + base);
    for (i64 p = 0; p < entries; ++p) arrays.col[p] = static_cast<Int>(i64{from.col[p]} - from.base + base);
    if (entries > 0) std::memcpy(arrays.val, from.val, static_cast<std::size_t>(entries) * sizeof(T));
    to = std::move(own);
    return ORV_OK;
}

template <class T, class Int> void conjugate(const Rows<T, Int>& own)
{
    T* const val = writable(own).val;
    for (i64 p = 0; p < own.entries(); ++p) val[p] = conj(val[p]);
}

template <class T, class Int> bool is_sorted(const Rows<T, Int>& rows)
{
    for (i64 i = 0; i < rows.m; ++i)
        for (i64 p = i64{rows.begin[i]} - rows.begin[0] + 1; p < i64{rows.begin[i + 1]} - rows.begin[0]; ++p)
            if (rows.col[p] < rows.col[p - 1]) return false;
    return true;
}
template <class T, class Int> orv_status sort(const Rows<T, Int>& own)
{
    const Int first = 1, last = static_cast<Int>(own.m);
    const auto [begin, col, val] = writable(own);
    return Kernels<T, Int>::sort_rows.run(&first, &last, begin, col, val);
}

// Rows of m, from coordinates in any order that count from base.
template <class T, class Int>
orv_status rows_of_coordinates(i64 m, i64 n, const Int* row, const Int* col, const T* val, i64 count, Int from,
                               Int base, Rows<T, Int>& rows)
{
    Rows<T, Int> own{m, n, base};
    own.for_work = rows.for_work;
    OwnArrays<T, Int> arrays;
    if (!take(own, count, arrays)) return no_memory_for(count);
    const Int job[] = {1, base, from, 0, std::numeric_limits<Int>::max(), 0}, order = static_cast<Int>(m);
    Int entries = static_cast<Int>(count), info = 0;
    const orv_status status =
        Kernels<T, Int>::csrcoo.run(job, &order, arrays.val, arrays.col, arrays.begin, &entries, const_cast<T*>(val),
                                    const_cast<Int*>(row), const_cast<Int*>(col), &info);
    own.sorted = true;
    if (status == ORV_OK) rows = std::move(own);
    return status;
}

// Rows of the elements of op(A) that count in a record like `wanted`.
template <class T, class Int>
orv_status listed(const orv_sparse& a, Op op, const orv_sparse& wanted, Rows<T, Int>& rows)
{
    const Counting counts(wanted);
    i64 count = 0;
    each_element<T>(a, op, [&](i64 i, i64 j, T) { count += counts(i, j); });
    if (const orv_status bad = refuse_entries<Int>(count)) return bad;
    const Block<Int> places(max(1, 2 * count));
    const Block<T> values(max(1, count));
    if (places.get() == nullptr || values.get() == nullptr) return no_memory_for(count);
    Int *const row = places.get(), *const col = row + count;
    i64 next = 0;
    each_element<T>(a, op, [&](i64 i, i64 j, T value) {
        if (!counts(i, j)) return;
        row[next] = static_cast<Int>(i), col[next] = static_cast<Int>(j), values.get()[next++] = value;
    });
    return rows_of_coordinates<T, Int>(op.rows(a), op.cols(a), row, col, values.get(), count, 0,
                                       static_cast<Int>(wanted.base), rows);
}

// Compressed rows into those of the transpose. The kernel knows square matrices, so others get as many pointers.
template <class T, class Int> orv_status turn(const Rows<T, Int>& from, Int base, Rows<T, Int>& to)
{
    const i64 order = max(from.m, from.n), entries = from.entries();
    const bool is_square = from.m == from.n;
    const Block<Int> pointers(is_square ? 1 : 2 * (order + 1));
    Rows<T, Int> own{from.n, from.m, base};
    own.for_work = to.for_work;
    OwnArrays<T, Int> arrays;
    if (pointers.get() == nullptr || !take(own, entries, arrays)) return no_memory_for(entries);
    Int *begin = const_cast<Int*>(from.begin), *turned = arrays.begin;
    if (!is_square) {
        begin = pointers.get(), turned = begin + order + 1;
        for (i64 i = 0; i <= order; ++i) begin[i] = from.begin[min(i, from.m)];
    }
    const Int job[] = {0, from.base, base, 0, 0, 1}, n = static_cast<Int>(order);
    Int info = 0;
    const orv_status status = Kernels<T, Int>::csrcsc.run(job, &n, const_cast<T*>(from.val), const_cast<Int*>(from.col),
                                                          begin, arrays.val, arrays.col, turned, &info);
    if (status != ORV_OK) return status;
    if (!is_square) std::memcpy(arrays.begin, turned, static_cast<std::size_t>(own.m + 1) * sizeof(Int));
    own.sorted = true;
    to = std::move(own);
    return ORV_OK;
}

// Whether a record has compressed lines that follow each other.
template <class Int> bool follow_each_other(const orv_sparse& a)
{
    const bool compressed = a.format == ORV_SPARSE_CSR || a.format == ORV_SPARSE_CSC;
    return compressed && (a.end == nullptr || a.end == static_cast<const Int*>(a.begin) + 1);
}

// General matrices of such lines.
template <class T, class Other, class Int>
orv_status rows_of_width(const orv_sparse& a, Op op, const orv_sparse& wanted, bool any_base, Rows<T, Int>& rows)
{
    const bool columns = a.format == ORV_SPARSE_CSC;
    const Rows<T, Other> stored{columns ? a.cols : a.rows,
                                columns ? a.rows : a.cols,
                                static_cast<Other>(a.base),
                                static_cast<const Other*>(a.begin),
                                static_cast<const Other*>(columns ? a.row : a.col),
                                static_cast<const T*>(a.values)};
    const bool turns = op.turns != columns, conjugates = op.conjugates && is_complex<T>;
    orv_status status = ORV_OK;
    if constexpr (sizeof(Int) == sizeof(Other)) {
        const bool as_they_are = any_base || a.base == wanted.base;
        if (turns) status = turn(stored, static_cast<Int>(wanted.base), rows);
        else if (as_they_are && !conjugates)
            rows = {stored.m, stored.n, stored.base, stored.begin, stored.col, stored.val};
        else status = copy_rows(stored, wanted.base, rows);
    } else {
        status = copy_rows(stored, wanted.base, rows);
        if (status == ORV_OK && turns) {
            Rows<T, Int> turned;
            turned.for_work = rows.for_work;
            status = turn(rows, rows.base, turned);
            rows = std::move(turned);
        }
    }
    if (status == ORV_OK && conjugates) conjugate(rows);
    return status;
}

enum class Order { any, sorted };

// op(A) as far as it counts in a record like `wanted`, whose kind, triangle, base and format (of blocks) are looked at.
// Any order and any base can be asked for where nothing need be copied then.
template <class T, class Int>
orv_status rows_of(const orv_sparse& a, Op op, const orv_sparse& wanted, Order order, bool any_base, Rows<T, Int>& rows)
{
    const bool empty = a.rows == 0 || a.cols == 0, // and may have null pointers for arrays
        general = Counting(a).all() && Counting(wanted).all() && !empty, narrow = a.bits == 32;
    orv_status status;
    if (general && narrow && follow_each_other<i32>(a)) status = rows_of_width<T, i32>(a, op, wanted, any_base, rows);
    else if (general && !narrow && follow_each_other<i64>(a))
        status = rows_of_width<T, i64>(a, op, wanted, any_base, rows);
    else if (general && a.format == ORV_SPARSE_COO && a.bits == 8 * sizeof(Int) && !(op.conjugates && is_complex<T>)) {
        const Int *row = static_cast<const Int*>(a.row), *col = static_cast<const Int*>(a.col);
        status = rows_of_coordinates<T, Int>(op.rows(a), op.cols(a), op.turns ? col : row, op.turns ? row : col,
                                             static_cast<const T*>(a.values), a.count, static_cast<Int>(a.base),
                                             static_cast<Int>(wanted.base), rows);
    } else status = listed<T, Int>(a, op, wanted, rows);
    if (status != ORV_OK || order == Order::any || rows.sorted || is_sorted(rows)) return status;
    if (!rows.memory.has()) {
        Rows<T, Int> own;
        status = copy_rows(rows, wanted.base, own);
        rows = std::move(own);
    }
    return status == ORV_OK ? sort(rows) : status;
}

} // namespace orv::core::sparse
