// sortrow(first, last, ia, ja, a) sorts rows first to last of compressed rows by column, from 1; entries of one column
// stay in their order. Pointers count from 1, unless first is 1 and ia[0] is 0.
//
// Short runs are sorted by insertion, and merged where they lie: the blocks between a cut of the one and a cut of the
// other change places. A row in order costs one look at each entry.
#include "spblas/sort.h"

namespace orv::ORV_SPBLAS {
namespace {

template <class T> struct RowSort {
    Int* col;
    T* val;

    [[gnu::noinline]] void sort(Int first, Int last) const
    {
        if (last - first <= longest_insertion) return insert(first, last);
        const Int middle = first + (last - first) / 2;
        sort(first, middle), sort(middle, last);
        merge(first, middle, last);
    }

private:
    static constexpr Int longest_insertion = 128;

    [[gnu::noinline]] void insert(Int first, Int last) const
    {
        for (Int p = first + 1; p < last; ++p) {
            const Int c = col[p];
            if (c >= col[p - 1]) continue;
            const T v = val[p];
            Int q = p;
            for (; q > first && col[q - 1] > c; --q) col[q] = col[q - 1], val[q] = val[q - 1];
            col[q] = c, val[q] = v;
        }
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
