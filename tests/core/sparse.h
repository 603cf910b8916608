// Sparse matrices for tests of the public interface: one list of entries, what it means by kind, and a record over each
// storage format, in arrays that end at unreadable pages.
#pragma once

#include "tests/core/routines.h"
#include "tests/spblas/dense.h"

#include <memory>
#include <set>

namespace orv::test {

// A matrix, and how it is to be stored. Indices and kinds are those of blocks of the order `block`: what is on the
// diagonal of these counts as a whole. Other formats than BSR have blocks of one element.
struct Style {
    int format = ORV_SPARSE_CSR;
    char kind = 'G', uplo = 'L', diag = 'N';
    int base = 0;
    i64 block = 1;

    bool unit() const { return diag == 'U' && kind != 'G' && kind != 'A'; }
    bool mirrors() const { return kind == 'S' || kind == 'H' || kind == 'A'; }
    // An entry by its block: whether it counts as it is stored.
    bool keeps(i64 i, i64 j) const
    {
        const i64 bi = i / block, bj = j / block;
        if (bi == bj) return kind != 'A' && !unit();
        return kind != 'D' && (kind == 'G' || (uplo == 'L') == (bi > bj));
    }
    std::string text() const
    {
        static const char* const formats[] = {"", "CSR", "CSC", "COO", "DIA", "BSR", "SKY"};
        return std::string(formats[format]) + ' ' + kind + uplo + diag + " base " + std::to_string(base) + " block " +
               std::to_string(block);
    }
};

// op(A) with all its entries: those that don't count are gone, mirrored ones and ones are there.
template <class T> std::vector<Coordinate<T>> whole_of(const Style& style, char trans, const Coordinates<T>& a)
{
    std::vector<Coordinate<T>> all;
    for (const auto& [i, j, value] : a.entries) {
        if (!style.keeps(i, j)) continue;
        all.push_back({i, j, value});
        if (!style.mirrors() || i / style.block == j / style.block) continue;
        all.push_back({j, i, style.kind == 'H' ? conjugated(value) : style.kind == 'A' ? -value : value});
    }
    if (style.unit())
        for (i64 i = 0; i < a.m; ++i) all.push_back({i, i, one<T>});
    for (auto& entry : all) {
        if (trans != 'N') std::swap(entry.i, entry.j);
        if (trans == 'C') entry.a = conjugated(entry.a);
    }
    return all;
}

// The arrays of a format, and the record that points to them.
template <class T, class Int> class Stored {
public:
    Stored(const Style& style, const Coordinates<T>& a) : style_(style)
    {
        record.format = style.format, record.type = letter<T>;
        record.kind = style.kind, record.uplo = style.uplo, record.diag = style.diag;
        record.bits = 8 * sizeof(Int), record.base = style.base;
        record.rows = a.m, record.cols = a.k, record.block = style.block;
        switch (style.format) {
        case ORV_SPARSE_CSR:
        case ORV_SPARSE_BSR:
            compressed(a);
            break;
        case ORV_SPARSE_CSC: {
            Coordinates<T> turned{a.pattern, a.k, a.m, a.entries};
            for (auto& entry : turned.entries) std::swap(entry.i, entry.j);
            compressed(turned);
            std::swap(record.row, record.col);
            break;
        }
        case ORV_SPARSE_COO:
            coordinates(a);
            break;
        case ORV_SPARSE_DIA:
            diagonals(a);
            break;
        default:
            skyline(a);
        }
    }

    orv_sparse record{};

    // For tests that spoil a matrix.
    Int& index(const void* array, i64 i) const { return const_cast<Int*>(static_cast<const Int*>(array))[i]; }
    T& value(i64 i) const { return const_cast<T*>(static_cast<const T*>(record.values))[i]; }

private:
    template <class E> const E* keep(const std::vector<E>& elements)
    {
        const auto array = std::make_shared<Guarded<E>>(elements.size());
        std::copy(elements.begin(), elements.end(), array->begin());
        arrays_.push_back(array);
        return array->data();
    }

    void compressed(const Coordinates<T>& a)
    {
        const i64 b = style_.block;
        std::vector<Coordinate<T>> entries = a.entries;
        std::sort(entries.begin(), entries.end(), [b](const auto& x, const auto& y) {
            return std::pair(x.i / b, x.j / b) < std::pair(y.i / b, y.j / b);
        });
        std::vector<Int> begin, end, col;
        std::vector<T> val;
        auto entry = entries.begin();
        constexpr Int start = 5; // of pointers, whatever it is
        for (i64 row = 0; row < a.m / b; ++row) {
            if (row % 3 == 1) col.push_back(-1), val.resize(val.size() + b * b, not_a_number<T>()); // a gap
            begin.push_back(start + static_cast<Int>(col.size()));
            for (i64 last = -1; entry != entries.end() && entry->i / b == row; ++entry) {
                if (entry->j / b != last) {
                    last = entry->j / b;
                    col.push_back(static_cast<Int>(last + style_.base));
                    val.resize(val.size() + b * b, zero<T>);
                }
                const i64 r = entry->i % b, s = entry->j % b;
                val[val.size() - b * b + (style_.base == 0 ? r * b + s : r + s * b)] = entry->a;
            }
            end.push_back(start + static_cast<Int>(col.size()));
        }
        if (!begin.empty()) begin[0] = start;
        record.begin = keep(begin), record.end = keep(end), record.col = keep(col), record.values = keep(val);
    }

    void coordinates(const Coordinates<T>& a)
    {
        std::vector<Coordinate<T>> entries = a.entries;
        std::shuffle(entries.begin(), entries.end(), std::mt19937(7));
        std::vector<Int> row, col;
        std::vector<T> val;
        for (const auto& [i, j, value] : entries) {
            row.push_back(static_cast<Int>(i + style_.base)), col.push_back(static_cast<Int>(j + style_.base));
            val.push_back(value);
        }
        record.count = static_cast<i64>(val.size());
        record.row = keep(row), record.col = keep(col), record.values = keep(val);
    }

    void diagonals(const Coordinates<T>& a)
    {
        std::set<i64> distances;
        for (const auto& [i, j, value] : a.entries) distances.insert(j - i);
        const i64 ld = a.m + 3;
        std::vector<Int> list;
        std::vector<T> val;
        for (const i64 d : distances) {
            std::vector<T> diagonal(static_cast<std::size_t>(ld), not_a_number<T>());
            for (i64 i = 0; i < a.m; ++i)
                if (i + d >= 0 && i + d < a.k) diagonal[static_cast<std::size_t>(i)] = zero<T>;
            for (const auto& [i, j, value] : a.entries)
                if (j - i == d) diagonal[static_cast<std::size_t>(i)] = value;
            list.push_back(static_cast<Int>(d));
            val.insert(val.end(), diagonal.begin(), diagonal.end());
        }
        if (!val.empty()) val.resize(val.size() - 3); // the last row is the last before the page
        record.count = static_cast<i64>(list.size()), record.ld = ld;
        record.col = keep(list), record.values = keep(val);
    }

    void skyline(const Coordinates<T>& a)
    {
        std::vector<Int> begin{3};
        std::vector<T> val;
        for (i64 line = 0; line < a.m; ++line) {
            std::vector<T> profile(1, zero<T>); // to the diagonal
            for (const auto& [i, j, value] : a.entries) {
                const i64 along = style_.uplo == 'L' ? i : j, across = style_.uplo == 'L' ? j : i;
                if (along != line || across > line) continue;
                if (line - across + 1 > static_cast<i64>(profile.size()))
                    profile.insert(profile.begin(), static_cast<std::size_t>(line - across + 1) - profile.size(),
                                   zero<T>);
                profile[profile.size() - static_cast<std::size_t>(line - across) - 1] = value;
            }
            val.insert(val.end(), profile.begin(), profile.end());
            begin.push_back(begin[0] + static_cast<Int>(val.size()));
        }
        record.begin = keep(begin), record.values = keep(val);
    }

    Style style_;
    std::vector<std::shared_ptr<void>> arrays_;
};

// Sparse routines by element type.
#define FOR_TYPE(name, s, d, c, z)                                                                                     \
    template <class T> constexpr auto* name = s;                                                                       \
    template <> constexpr auto* name<double> = d;                                                                      \
    template <> constexpr auto* name<cpx<float>> = c;                                                                  \
    template <> constexpr auto* name<cpx<double>> = z;
FOR_TYPE(sparse_mv, orv_sparse_smv, orv_sparse_dmv, orv_sparse_cmv, orv_sparse_zmv)
FOR_TYPE(sparse_mm, orv_sparse_smm, orv_sparse_dmm, orv_sparse_cmm, orv_sparse_zmm)
FOR_TYPE(sparse_sv, orv_sparse_ssv, orv_sparse_dsv, orv_sparse_csv, orv_sparse_zsv)
FOR_TYPE(sparse_sm, orv_sparse_ssm, orv_sparse_dsm, orv_sparse_csm, orv_sparse_zsm)
#undef FOR_TYPE

// A pattern that all formats can hold, with a diagonal that is well above what stands beside it.
template <class T> Coordinates<T> sample(i64 m, i64 k, const Style& style, i64 each = 4)
{
    Coordinates<T> a{"sample", m, k, {}};
    Random random(static_cast<std::size_t>(m * 100 + k));
    std::set<std::pair<i64, i64>> places;
    for (i64 i = 0; i < m; ++i)
        for (i64 e = 0; e < (i % 5 == 3 ? 0 : each); ++e)
            if (k > 0) places.insert({i, random.integer(0, k - 1)});
    if (style.kind != 'G')
        for (i64 i = 0; i < m; ++i) places.insert({i, i});
    for (const auto& [i, j] : places) {
        T value = real_t<T>(0.125) * random.value<T>();
        if (i == j) value = (style.kind == 'H' ? real_part(value) : value) + one<T> + one<T>;
        const bool in_block = i != j && i / style.block == j / style.block;
        if (!(in_block && style.mirrors())) a.entries.push_back({i, j, value});
        else if (i > j) a.entries.push_back({i, j, value}), a.entries.push_back({j, i, value});
    }
    return a;
}

// Whether there are such matrices, and such a call.
template <class T> bool exists(const Style& s, char trans)
{
    if (s.format == ORV_SPARSE_BSR) return !(is_complex<T> && (s.kind == 'H' || (s.kind == 'S' && trans == 'C')));
    if (s.format == ORV_SPARSE_SKY)
        return s.kind != 'G' && s.kind != 'D' && !(is_complex<T> && (s.kind == 'H' || trans == 'C'));
    return true;
}

// visit(style) for every format, kind, triangle, diagonal and base.
template <class Visitor> void each_style(const std::string& kinds, const Visitor& visit)
{
    for (int format = ORV_SPARSE_CSR; format <= ORV_SPARSE_SKY; ++format)
        for (const char kind : kinds)
            for (const char uplo : {'L', 'U'})
                for (const char diag : {'N', 'U'})
                    for (const int base : {0, 1})
                        for (const i64 block : {1, 2, 3}) {
                            const Style style{format, kind, uplo, diag, base, block};
                            if (format != ORV_SPARSE_BSR && block > 1) continue;
                            if ((kind == 'G' || kind == 'D') && uplo == 'U') continue;
                            if ((kind == 'G' || kind == 'A') && diag == 'U') continue;
                            visit(style);
                        }
}

// visit.operator()<T, Int>() for all types and widths.
template <class Visitor> void each_type(const Visitor& visit)
{
    for (const char type : {'s', 'd', 'c', 'z'}) each_width(type, visit);
}

} // namespace orv::test
