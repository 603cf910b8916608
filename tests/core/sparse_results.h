// Results of sparse conversions, sums and products, read by what the header says of their formats.
#pragma once

#include "tests/core/sparse.h"

#include <map>
#include <span>
#include <tuple>

namespace orv::test {

template <class T> using Elements = std::map<std::pair<i64, i64>, T>;

// Freed at the end.
struct Made : orv_sparse {
    Made(int format_, int bits_, int base_ = 0) : orv_sparse{}
    {
        format = format_, bits = bits_, base = base_;
        if (format == ORV_SPARSE_BSR) block = 1;
    }
    Made(const Style& style, int bits_) : Made(style.format, bits_, style.base)
    {
        kind = style.kind, uplo = style.uplo, diag = style.diag, block = style.block;
    }
    Made(const Made&) = delete;
    ~Made() { orv_sparse_free(this); }
};

// The arrays of an operand: with gaps between its lines, or, of a format that has such, without.
enum class Lines { with_gaps, without };
template <class T, class Int> class Operand {
public:
    Operand(Lines lines, const Style& style, const Coordinates<T>& a)
        : stored_(style, a), plain_(style, 8 * sizeof(Int)),
          is_plain_(lines == Lines::without && (style.format == ORV_SPARSE_CSR || style.format == ORV_SPARSE_CSC))
    {
        if (is_plain_) {
            EXPECT_EQ(orv_sparse_convert('N', &stored_.record, &plain_), ORV_OK);
        }
    }
    const orv_sparse& record() const { return is_plain_ ? static_cast<const orv_sparse&>(plain_) : stored_.record; }

private:
    Stored<T, Int> stored_;
    Made plain_;
    bool is_plain_;
};

inline i64 index_of(const orv_sparse& r, const void* array, i64 i)
{
    return r.bits == 32 ? static_cast<const i32*>(array)[i] : static_cast<const i64*>(array)[i];
}

inline std::string sentence(orv_status status) { return std::to_string(status) + ": " + orv_last_error(); }

// What a record has stored; what fills up a format is left out. Those of one place are added.
template <class T> Elements<T> stored_in(const orv_sparse& r)
{
    Elements<T> all;
    const T* val = static_cast<const T*>(r.values);
    const auto put = [&](i64 i, i64 j, T value) {
        EXPECT_TRUE(i >= 0 && i < r.rows && j >= 0 && j < r.cols) << i << ' ' << j;
        const auto [place, is_new] = all.try_emplace({i, j}, value);
        if (!is_new) place->second = place->second + value;
    };
    const auto lines = [&](i64 count, const auto& each) {
        for (i64 i = 0; i < count; ++i)
            for (i64 p = index_of(r, r.begin, i); p < index_of(r, r.begin, i + 1); ++p)
                each(i, p - index_of(r, r.begin, 0));
    };
    switch (r.format) {
    case ORV_SPARSE_CSR:
        lines(r.rows, [&](i64 i, i64 p) { put(i, index_of(r, r.col, p) - r.base, val[p]); });
        break;
    case ORV_SPARSE_CSC:
        lines(r.cols, [&](i64 j, i64 p) { put(index_of(r, r.row, p) - r.base, j, val[p]); });
        break;
    case ORV_SPARSE_COO:
        for (i64 p = 0; p < r.count; ++p) put(index_of(r, r.row, p) - r.base, index_of(r, r.col, p) - r.base, val[p]);
        break;
    case ORV_SPARSE_DIA:
        for (i64 d = 0; d < r.count; ++d)
            for (i64 i = 0; i < r.rows; ++i) {
                const i64 j = i + index_of(r, r.col, d);
                if (j >= 0 && j < r.cols && val[i + d * r.ld] != zero<T>) put(i, j, val[i + d * r.ld]);
            }
        break;
    case ORV_SPARSE_BSR:
        lines(r.rows / r.block, [&](i64 i, i64 p) {
            for (i64 s = 0; s < r.block; ++s)
                for (i64 t = 0; t < r.block; ++t) {
                    const T value = val[p * r.block * r.block + (r.base == 0 ? s * r.block + t : s + t * r.block)];
                    if (value != zero<T>) put(i * r.block + s, (index_of(r, r.col, p) - r.base) * r.block + t, value);
                }
        });
        break;
    default:
        lines(r.rows, [&](i64 i, i64 p) {
            const i64 j = i - (index_of(r, r.begin, i + 1) - index_of(r, r.begin, 0) - 1 - p);
            if (val[p] != zero<T>) r.uplo == 'L' ? put(i, j, val[p]) : put(j, i, val[p]);
        });
    }
    return all;
}

template <class T> Elements<T> sum_of(const std::vector<Coordinate<T>>& entries)
{
    Elements<T> all;
    for (const auto& [i, j, value] : entries) {
        const auto [place, is_new] = all.try_emplace({i, j}, value);
        if (!is_new) place->second = place->second + value;
    }
    return all;
}

// Without the zeros, which some formats cannot keep.
template <class T> Elements<T> nonzeros(Elements<T> all)
{
    std::erase_if(all, [](const auto& e) { return e.second == zero<T>; });
    return all;
}

// Arrays of a caller for a result of so many entries, blocks, diagonals or elements, each up to an unreadable page.
template <class T, class Int> class Arrays {
public:
    Arrays(const orv_sparse& form, i64 count)
    {
        const bool columns = form.format == ORV_SPARSE_CSC, coordinates = form.format == ORV_SPARSE_COO,
                   skyline = form.format == ORV_SPARSE_SKY, diagonals = form.format == ORV_SPARSE_DIA;
        const i64 lines = columns                         ? form.cols
                          : form.format == ORV_SPARSE_BSR ? form.rows / form.block
                                                          : form.rows,
                  each = diagonals                       ? form.ld
                         : form.format == ORV_SPARSE_BSR ? form.block * form.block
                                                         : 1;
        record = form;
        record.count = count;
        if (!coordinates && !diagonals) record.begin = keep<Int>(lines + 1);
        if (columns || coordinates) record.row = keep<Int>(count);
        if (!columns && !skyline) record.col = keep<Int>(count);
        record.values = keep<T>(count * each);
        fresh_ = bytes();
    }
    orv_sparse record{};
    bool are_untouched() const { return bytes() == fresh_; }

private:
    template <class E> const E* keep(i64 count)
    {
        const auto array = std::make_shared<Guarded<E>>(static_cast<std::size_t>(count));
        arrays_.push_back(array);
        spans_.push_back(std::as_bytes(array->span()));
        return array->data();
    }
    std::vector<std::byte> bytes() const
    {
        std::vector<std::byte> all;
        for (const auto& span : spans_) all.insert(all.end(), span.begin(), span.end());
        return all;
    }
    std::vector<std::shared_ptr<void>> arrays_;
    std::vector<std::span<const std::byte>> spans_;
    std::vector<std::byte> fresh_;
};

inline bool same_record(const orv_sparse& a, const orv_sparse& b)
{
    const auto fields = [](const orv_sparse& r) {
        return std::tuple(r.format, r.type, r.kind, r.bits, r.rows, r.cols, r.count, r.ld, r.values, r.begin, r.row,
                          r.col, r.memory);
    };
    return fields(a) == fields(b);
}

// make(result) of that form in arrays of the caller: with as much room as it takes, one less, and none.
template <class T, class Int, class Make> void expect_room_is_kept(const orv_sparse& sizes, const Make& make)
{
    for (const i64 room : {sizes.count, sizes.count - 1, i64{0}}) {
        if (room < 0 || (room == 0 && sizes.format == ORV_SPARSE_COO)) continue; // no arrays at all
        const Arrays<T, Int> arrays(sizes, room);
        orv_sparse result = arrays.record;
        const orv_status status = make(&result);
        if (room >= sizes.count) {
            EXPECT_EQ(status, ORV_OK) << sentence(status);
            EXPECT_EQ(result.values, arrays.record.values);
            EXPECT_EQ(result.memory, nullptr);
        } else {
            EXPECT_EQ(status, ORV_NO_ROOM);
            EXPECT_NE(std::string(orv_last_error()).find("the result takes a count of " + std::to_string(sizes.count)),
                      std::string::npos)
                << orv_last_error();
            EXPECT_TRUE(same_record(result, arrays.record));
            EXPECT_TRUE(arrays.are_untouched());
        }
    }
}

} // namespace orv::test
