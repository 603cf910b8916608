// sortrow(first, last, ia, ja, a) sorts rows first to last of compressed rows by column, from 1; entries of one column
// stay in their order. Pointers count from 1, unless first is 1 and ia[0] is 0.
//
// A row in order costs one look at each entry. The entries of a short row are put where they belong by how many columns
// are smaller, without a branch that depends on them; those of a longer one by the digits of their columns, from the
// last digit on, to and from a block on the stack or, of very long rows, in memory. Without memory such a row is cut in
// halves, and these are merged where they lie: the blocks between a cut of the one and a cut of the other change
// places.
#include "spblas/sort.h"
#include "spblas/counting.h"
#include "spblas/memory.h"
#include "spblas/vectors.h"

#include <bit>
#include <limits>
#include <utility>

namespace orv::ORV_SPBLAS {
namespace {

template <class T> struct RowSort {
    Int* col;
    T* val;

    [[gnu::noinline]] void sort(Int first, Int last) const
    {
        const Int count = last - first;
        if (in_order(first, last)) return;
        if (count <= longest_inserted) return insert(first, last);
        if (count <= longest_ranked) return rank(first, count);
        if (count <= longest_on_stack) return sort_on_stack(first, count);
        if (const Block<Int> c(count); c.data() != nullptr)
            if (const Block<T> v(count); v.data() != nullptr) return sort_by_digits(first, count, {c.data(), v.data()});
        const Int middle = first + count / 2;
        sort(first, middle), sort(middle, last);
        merge(first, middle, last);
    }

private:
    using Lanes = Int __attribute__((vector_size(vector_bytes)));
    using Unsigned = std::make_unsigned_t<Int>;
    static constexpr Int lanes = vector_bytes / sizeof(Int);
    static constexpr Int longest_inserted = 3, longest_ranked = 24 * lanes, longest_on_stack = 2048;

    bool in_order(Int first, Int last) const
    {
        bool falls = false; // where it does cannot be foreseen, so the loop goes on
        for (Int p = first + 1; p < last; ++p) falls |= col[p] < col[p - 1];
        return !falls;
    }
    void copy_to(const RowSort& to, Int count) const
    {
        for (Int p = 0; p < count; ++p) to.col[p] = col[p];
        copy(val, to.val, count);
    }

    void insert(Int first, Int last) const
    {
        for (Int p = first + 1; p < last; ++p) {
            const Int c = col[p];
            const T v = val[p];
            Int q = p;
            for (; q > first && col[q - 1] > c; --q) col[q] = col[q - 1], val[q] = val[q - 1];
            col[q] = c, val[q] = v;
        }
    }

    [[gnu::noinline]] void rank(Int first, Int count) const
    {
        constexpr int group = 4; // entries compared with all others at a time
        static_assert(longest_ranked % group == 0 && group % lanes == 0);
        alignas(vector_bytes) Int c[longest_ranked];
        T v[longest_ranked];
        const RowSort row{col + first, val + first}, copied{c, v};
        row.copy_to(copied, count);
        for (Int p = count; p % group != 0; ++p) c[p] = std::numeric_limits<Int>::max();
        Int places = 0;
        for (Int p = 0; p < count; p += group) {
            Lanes smaller[group] = {}; // -1 for each
            for (Int q = 0; q < count; q += lanes) {
                const Lanes others = *reinterpret_cast<const Lanes*>(c + q);
                repeat<group>([&](auto g) ORV_INLINE_LAMBDA { smaller[g] += others < c[p + g]; });
            }
            for (Int g = 0; g < group && p + g < count; ++g) {
                Int place = 0;
                for (int lane = 0; lane < lanes; ++lane) place -= smaller[g][lane];
                row.col[place] = c[p + g], row.val[place] = v[p + g];
                places += place;
            }
        }
        if (places == count * (count - 1) / 2) return;
        copied.copy_to(row, count); // entries of one column went to one place
        insert(first, first + count);
    }

    [[gnu::noinline]] void sort_on_stack(Int first, Int count) const
    {
        Int c[longest_on_stack];
        T v[longest_on_stack];
        sort_by_digits(first, count, {c, v});
    }
    [[gnu::noinline]] void sort_by_digits(Int first, Int count, RowSort to) const
    {
        constexpr int most_bits = 8;
        const RowSort row{col + first, val + first};
        Int low = row.col[0], high = low;
        for (Int p = 1; p < count; ++p) {
            low = row.col[p] < low ? row.col[p] : low;
            high = row.col[p] > high ? row.col[p] : high;
        }
        // The row is not in order, so there is a digit.
        const int bits = std::bit_width(static_cast<Unsigned>(high) - static_cast<Unsigned>(low)),
                  rounds = (bits + most_bits - 1) / most_bits, digit = (bits + rounds - 1) / rounds;
        RowSort from = row;
        for (int shift = 0; shift < rounds * digit; shift += digit, std::swap(from, to)) {
            const auto digit_of = [=](Int column) ORV_INLINE_LAMBDA {
                const Unsigned distance = static_cast<Unsigned>(column) - static_cast<Unsigned>(low);
                return (distance >> shift) & ((Unsigned{1} << digit) - 1);
            };
            Int place[1 << most_bits];
            clear_counts(place, 1 << digit);
            for (Int p = 0; p < count; ++p) ++place[digit_of(from.col[p])];
            counts_to_places(place, 1 << digit, 0);
            for (Int p = 0; p < count; ++p) {
                const Int at = place[digit_of(from.col[p])]++;
                to.col[at] = from.col[p], to.val[at] = from.val[p];
            }
        }
        if (rounds % 2 != 0) from.copy_to(row, count);
    }

    [[gnu::noinline]] void merge(Int first, Int middle, Int last) const
    {
        if (first == middle || middle == last || col[middle - 1] <= col[middle]) return;
        if (last - first == 2) return exchange(first, middle);
        // The longer run is cut in half, the other where its entries belong behind that cut.
        const bool first_is_longer = middle - first > last - middle;
        const Int cut = first_is_longer ? first + (middle - first) / 2 : middle + (last - middle) / 2;
        const Int low = first_is_longer ? cut : where(first, middle, [=, this](Int c) { return c > col[cut]; });
        const Int high = first_is_longer ? where(middle, last, [=, this](Int c) { return c >= col[cut]; }) : cut;
        rotate(low, middle, high);
        const Int meet = low + (high - middle);
        merge(first, low, meet), merge(meet, high, last);
    }

    // The first entry of a run that belongs behind, in columns that ascend.
    template <class Behind> Int where(Int first, Int last, const Behind& behind) const
    {
        while (first < last) {
            const Int middle = first + (last - first) / 2;
            if (behind(col[middle])) last = middle;
            else first = middle + 1;
        }
        return first;
    }

    void exchange(Int p, Int q) const
    {
        const Int c = col[p];
        const T v = val[p];
        col[p] = col[q], val[p] = val[q];
        col[q] = c, val[q] = v;
    }
    [[gnu::noinline]] void reverse(Int first, Int last) const
    {
        for (--last; first < last; ++first, --last) exchange(first, last);
    }
    void rotate(Int first, Int middle, Int last) const // what begins at middle goes in front
    {
        reverse(first, middle), reverse(middle, last), reverse(first, last);
    }
};

} // namespace

template <class T> void sort_entries(Int* col, T* val, Int first, Int last) { RowSort<T>{col, val}.sort(first, last); }
template void sort_entries(Int*, type_s*, Int, Int);
template void sort_entries(Int*, type_d*, Int, Int);
template void sort_entries(Int*, type_c*, Int, Int);
template void sort_entries(Int*, type_z*, Int, Int);

namespace {

template <class T> void sortrow(const Int* first, const Int* last, const Int* ia, Int* ja, T* a)
{
    if (*first <= *last) sort_rows(*first - 1, *last, ia, *first == 1 && ia[0] == 0 ? 0 : 1, ja, a);
}

} // namespace

SPBLAS_SDCZ(5, , sortrow, sortrow)

} // namespace orv::ORV_SPBLAS
