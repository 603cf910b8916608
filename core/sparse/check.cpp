// orv_sparse_check: looks at every entry of a matrix, and says of the first that is wrong what and where it is.
#include "core/serv/status.h"
#include "core/sparse/record.h"
#include "core/sparse/vectors.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace orv::core::sparse {
namespace {

// What is wrong with a matrix: the gravest, and of that the first.
class Findings {
public:
    explicit Findings(int base) : base_(base) {}

    [[gnu::format(printf, 3, 4)]] void tell(orv_status what, const char* format, ...)
    {
        if (!would_be_told(what)) return;
        worst_ = what;
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(sentence_, sizeof sentence_, format, arguments);
        va_end(arguments);
    }
    bool would_be_told(orv_status what) const { return worst_ == ORV_OK || what < worst_; }
    bool leads_outside() const { return worst_ == ORV_BAD_INDEX; }
    orv_status report() const
    {
        if (worst_ == ORV_OK) return ORV_OK;
        return fail(worst_, "orv_sparse_check: %s (all counted from %d)", sentence_, base_);
    }

private:
    int base_;
    orv_status worst_ = ORV_OK;
    char sentence_[512] = "";
};

template <class T, class Int> class Check {
public:
    explicit Check(const orv_sparse& a) : a_(a), found_(a.base), val_(static_cast<const T*>(a.values)) {}

    orv_status run()
    {
        switch (a_.format) {
        case ORV_SPARSE_CSR:
            compressed("row", "column", a_.rows, a_.cols, a_.col, 1);
            break;
        case ORV_SPARSE_CSC:
            compressed("column", "row", a_.cols, a_.rows, a_.row, 1);
            break;
        case ORV_SPARSE_BSR:
            compressed("block row", "block column", a_.rows / a_.block, a_.cols / a_.block, a_.col,
                       a_.block * a_.block);
            break;
        case ORV_SPARSE_COO:
            if (!coordinates()) return fail(ORV_NO_MEMORY, "orv_sparse_check: no memory is left");
            break;
        case ORV_SPARSE_DIA:
            diagonals();
            break;
        default:
            skyline();
        }
        return found_.report();
    }

private:
    using Number = long long; // in sentences

    Number told(i64 number) const { return number + a_.base; }
    static const Int* integers(const void* p) { return static_cast<const Int*>(p); }

    bool wants_diagonal() const
    {
        const char kind = kind_of(a_);
        return (kind == 'T' || kind == 'D') && !is_unit(a_);
    }
    bool is_zero(i64 entry, i64 size) const
    {
        for (i64 e = entry * size; e < (entry + 1) * size; ++e)
            if (val_[e] != zero<T>) return false;
        return true;
    }
    // Element i of the diagonal: whether it is there, and whether it is zero.
    void judge_diagonal(const char* row, i64 i, bool stored, bool is_zero)
    {
        if (!wants_diagonal()) return;
        if (!stored) found_.tell(ORV_NO_DIAGONAL, "%s %lld has no entry on the diagonal", row, told(i));
        else if (is_zero) found_.tell(ORV_ZERO_DIAGONAL, "%s %lld has a zero on the diagonal", row, told(i));
    }
    bool inside(const char* line, i64 i, i64 entry, const char* across, i64 j, i64 limit)
    {
        if (j >= 0 && j < limit) return true;
        found_.tell(ORV_BAD_INDEX, "%s %lld, entry %lld: %s %lld is none of the %lld from %d on", line, told(i),
                    told(entry), across, told(j), static_cast<Number>(limit), a_.base);
        return false;
    }

    // Lines of entries with their places across, of `size` values each.
    void compressed(const char* line, const char* across, i64 lines, i64 length, const void* places, i64 size)
    {
        const Int *begin = integers(a_.begin), *end = a_.end != nullptr ? integers(a_.end) : begin + 1,
                  *place = integers(places);
        for (i64 i = 0; i < lines && !found_.leads_outside(); ++i) {
            const i64 from = i64{begin[i]} - begin[0], to = i64{end[i]} - begin[0];
            if (from < 0 || to < from) {
                found_.tell(ORV_BAD_INDEX, "%s %lld goes from entry %lld to entry %lld", line, told(i), told(from),
                            told(to - 1));
                return;
            }
            bool stored = false, is_null = false;
            for (i64 e = from, last = -1; e < to; ++e) {
                const i64 j = i64{place[e]} - a_.base;
                if (!inside(line, i, e, across, j, length)) return;
                if (j == last)
                    found_.tell(ORV_DUPLICATE, "%s %lld has %s %lld twice, with the entries %lld and %lld", line,
                                told(i), across, told(j), told(e - 1), told(e));
                else if (j < last)
                    found_.tell(ORV_NOT_SORTED, "%s %lld is not sorted: entry %lld with %s %lld stands behind %s %lld",
                                line, told(i), told(e), across, told(j), across, told(last));
                if (j == i) stored = true, is_null = is_zero(e, size);
                last = j;
            }
            judge_diagonal(line, i, stored, is_null);
        }
    }

    // False without memory. Entries are listed by row, and columns marked with the latest entry that has them.
    bool coordinates()
    {
        const Int *row = integers(a_.row), *col = integers(a_.col);
        for (i64 e = 0; e < a_.count; ++e) {
            const i64 i = i64{row[e]} - a_.base, j = i64{col[e]} - a_.base;
            if (i < 0 || i >= a_.rows) {
                found_.tell(ORV_BAD_INDEX, "entry %lld: row %lld is none of the %lld from %d on", told(e), told(i),
                            static_cast<Number>(a_.rows), a_.base);
                return true;
            }
            if (!inside("row", i, e, "column", j, a_.cols)) return true;
        }
        const Block<i64> starts(a_.rows + 1), list(a_.count + 1), marks(a_.cols + 1);
        if (starts.get() == nullptr || list.get() == nullptr || marks.get() == nullptr) return false;
        i64* const start = starts.get();
        for (i64 i = 0; i <= a_.rows; ++i) start[i] = 0;
        for (i64 j = 0; j < a_.cols; ++j) marks.get()[j] = -1;
        for (i64 e = 0; e < a_.count; ++e) ++start[row[e] - a_.base];
        for (i64 i = 0, sum = 0; i <= a_.rows; ++i) sum += std::exchange(start[i], sum);
        for (i64 e = 0; e < a_.count; ++e) list.get()[start[row[e] - a_.base]++] = e; // start[i]: where row i ends
        for (i64 i = 0; i < a_.rows; ++i) {
            bool stored = false, is_null = false;
            for (i64 at = i > 0 ? start[i - 1] : 0; at < start[i]; ++at) {
                const i64 e = list.get()[at], j = i64{col[e]} - a_.base;
                i64& mark = marks.get()[j];
                if (mark >= 0 && row[mark] == row[e])
                    found_.tell(ORV_DUPLICATE, "the entries %lld and %lld both stand in row %lld, column %lld",
                                told(mark), told(e), told(i), told(j));
                mark = e;
                if (j == i) stored = true, is_null = is_zero(e, 1);
            }
            judge_diagonal("row", i, stored, is_null);
        }
        return true;
    }

    void diagonals()
    {
        const Int* distance = integers(a_.col);
        bool stored = false;
        for (i64 d = 0; d < a_.count; ++d) {
            const Number here = distance[d], before = d > 0 ? distance[d - 1] : here - 1;
            if (here <= -a_.rows || here >= a_.cols)
                found_.tell(ORV_BAD_INDEX, "diagonal %lld: the distance %lld leads out of the matrix", told(d), here);
            if (here == before)
                found_.tell(ORV_DUPLICATE, "the diagonals %lld and %lld both have the distance %lld", told(d - 1),
                            told(d), here);
            else if (here < before)
                found_.tell(ORV_NOT_SORTED, "diagonal %lld with the distance %lld stands behind that of %lld", told(d),
                            here, before);
            if (here != 0) continue;
            stored = true;
            for (i64 i = 0; i < a_.rows; ++i) judge_diagonal("row", i, true, val_[i + d * a_.ld] == zero<T>);
        }
        if (!stored && a_.rows > 0) judge_diagonal("row", 0, false, false);
    }

    void skyline()
    {
        const Int* begin = integers(a_.begin);
        for (i64 i = 0; i < a_.rows; ++i) {
            const i64 end = i64{begin[i + 1]} - begin[0], length = i64{begin[i + 1]} - begin[i];
            if (length < 0 || length > i + 1) {
                found_.tell(ORV_BAD_INDEX, "row %lld has %lld elements up to the diagonal", told(i),
                            static_cast<Number>(length));
                return;
            }
            judge_diagonal("row", i, length > 0, length > 0 && val_[end - 1] == zero<T>);
        }
    }

    const orv_sparse& a_;
    Findings found_;
    const T* val_;
};

template <class T> orv_status check(const orv_sparse& a)
{
    return a.bits == 32 ? Check<T, i32>(a).run() : Check<T, i64>(a).run();
}

} // namespace
} // namespace orv::core::sparse

using namespace orv;
using namespace orv::core::sparse;

orv_status orv_sparse_check(const orv_sparse* a)
{
    if (const char* fault = fault_of(a)) return core::bad_argument("orv_sparse_check", 1, "%s", fault);
    switch (a->type) {
    case 's':
        return check<float>(*a);
    case 'd':
        return check<double>(*a);
    case 'c':
        return check<cpx<float>>(*a);
    default:
        return check<cpx<double>>(*a);
    }
}
