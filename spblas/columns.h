// The entries of columns first to last of a matrix in compressed rows, column by column, each by row. Indices and
// pointers count from 1; rows may be in any order.
#pragma once

#include "spblas/counting.h"
#include "spblas/memory.h"

namespace orv::ORV_SPBLAS {

class Columns {
public:
    Columns(Int first, Int last, Int m, const Int* ja, const Int* ia) // arrays as they come; m rows
        : count_(static_cast<Int>(max(0, i64{last} - first + 1))),
          memory_(count_ + 1 + 2 * i64{in(first, last, m, ja, ia)})
    {
        if (!complete()) return;
        start_ = memory_.data() - first;
        clear_counts(start_ + first, count_);
        each_entry(first, last, m, ja, ia, [this](Int column, Int, Int) { ++start_[column]; });
        const Int entries = counts_to_places(start_ + first, count_, 0);
        row_ = memory_.data() + count_ + 1, at_ = row_ + entries;
        each_entry(first, last, m, ja, ia, [this](Int column, Int row, Int at) {
            const Int place = start_[column]++;
            row_[place] = row, at_[place] = at;
        });
        places_to_starts(start_ + first, count_, 0);
    }
    bool complete() const { return memory_.data() != nullptr; }

    // act(entry, row) for all of a column, as long as it says true; whether it always did.
    template <class Act> ORV_INLINE bool all(Int column, const Act& act) const
    {
        for (Int e = start_[column]; e < start_[column + 1]; ++e)
            if (!act(at_[e], row_[e])) return false;
        return true;
    }

private:
    template <class Act>
    static void each_entry(Int first, Int last, Int m, const Int* ja, const Int* ia, const Act& act)
    {
        for (Int row = 1; row <= m; ++row)
            for (Int p = ia[row - 1]; p < ia[row]; ++p)
                if (const Int column = ja[p - 1]; column >= first && column <= last) act(column, row, p);
    }
    static Int in(Int first, Int last, Int m, const Int* ja, const Int* ia)
    {
        Int entries = 0;
        each_entry(first, last, m, ja, ia, [&](Int, Int, Int) { ++entries; });
        return entries;
    }

    Int count_;
    Block<Int> memory_; // start_, row_ and at_
    Int *start_ = nullptr, *row_ = nullptr, *at_ = nullptr;
};

} // namespace orv::ORV_SPBLAS
