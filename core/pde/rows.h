// Transforms of the rows of a grid along one axis, forth and back. Rows stand in memory as they are, or at a stride and
// then go through a buffer, some at a time.
#pragma once

#include "core/pde/grid.h"
#include "core/pde/trig_kernel.h"
#include "core/trans/kernels.h"
#include "frame/serv.h"

namespace orv::core::pde {

// The first or the second transform of a solver along an axis.
template <class T> TrigKernel<T> transform_along(const i64* ipar, T* dpar, int axis, int which, Handle handle)
{
    return {ipar + ipar_inner + (2 * axis + which) * ipar_inner_step,
            dpar_at(ipar, dpar, transform_tables[axis][which]), handle};
}

// A row between two sides, by what is known of them.
template <class T> class Row {
public:
    Row(i64 pair, i64 n, const i64* ipar, T* dpar, int axis, Handle handle)
        : pair_(pair), n_(n), first_(transform_along(ipar, dpar, axis, 0, handle)),
          second_(transform_along(ipar, dpar, axis, pair == pp ? 1 : 0, handle))
    {
    }

    // False if it failed.
    bool run(Direction direction, T* row)
    {
        if (pair_ != pp) return first_.run(direction, pair_ == dn ? row + 1 : row); // a Dirichlet end is no unknown
        return direction == Direction::forward ? forward_around(row) : backward_around(row);
    }

private:
    // Twice the even part stands in places 0 to m, the odd one behind it, the last point first; that turns the sign of
    // every second wave, forth and back.
    bool forward_around(T* row)
    {
        const i64 m = n_ / 2;
        for (i64 j = 1; j < m; ++j) {
            const T a = row[j], b = row[2 * m - j];
            row[j] = a + b, row[2 * m - j] = a - b;
        }
        row[0] += row[0];
        row[m] += row[m];
        return both(Direction::forward, row, m);
    }
    bool backward_around(T* row)
    {
        const i64 m = n_ / 2;
        const bool worked = both(Direction::backward, row, m);
        for (i64 j = 1; j < m; ++j) {
            const T even = row[j], odd = row[2 * m - j];
            row[j] = even + odd, row[2 * m - j] = even - odd;
        }
        for (i64 j = 2 * m; j <= n_; ++j) row[j] = row[0];
        return worked;
    }
    // The two transforms meet in place m, which is the even one's; the odd one has zeros at its ends.
    bool both(Direction direction, T* row, i64 m)
    {
        const T middle = row[m];
        const bool odd_good = first_.run(direction, row + m);
        row[m] = middle;
        return second_.run(direction, row) && odd_good;
    }

    i64 pair_, n_;
    TrigKernel<T> first_, second_;
};

inline double work_of_row(i64 n) { return 10. * static_cast<double>(n) * (64 - __builtin_clzll(static_cast<u64>(n))); }

// Rows behind each other.
template <class T>
i64 transform_rows(i64* ipar, T* dpar, Handle handle, i64 pair, Direction direction, T* f, i64 n, i64 rows)
{
    FirstFailure failure;
    share(ipar, rows, work_of_row(n), [&](i64 begin, i64 end) {
        Row<T> row(pair, n, ipar, dpar, 0, handle);
        for (i64 j = begin; j < end; ++j)
            if (!row.run(direction, f + j * (n + 1))) failure.note(loop_failed);
    });
    return failure.status();
}

// Along y, in planes of nx + 1 by ny + 1 points.
template <class T>
i64 transform_columns(i64* ipar, T* dpar, Handle handle, i64 pair, Direction direction, T* f, i64 nx, i64 ny,
                      i64 planes)
{
    constexpr i64 width = 64 / sizeof(T); // a cache line of columns
    const i64 strips = (nx + width) / width, length = ny + 1;
    auto* const turn = trans::Kernels<T>::omatcopy2_t.get();
    if (turn == nullptr) return loop_failed;
    FirstFailure failure;
    share(ipar, planes * strips, static_cast<double>(width) * work_of_row(ny), [&](i64 begin, i64 end) {
        auto* const buffer = static_cast<T*>(orv_serv_allocate(width * length * static_cast<i64>(sizeof(T)), 128));
        if (buffer == nullptr) return failure.note(loop_no_memory);
        Row<T> row(pair, ny, ipar, dpar, 1, handle);
        for (i64 part = begin; part < end; ++part) {
            const i64 first = part % strips * width, columns = min(width, nx + 1 - first);
            T* const at = f + part / strips * (nx + 1) * length + first;
            turn(length, columns, T(1), at, nx + 1, 1, buffer, length, 1);
            for (i64 i = 0; i < columns; ++i)
                if (!row.run(direction, buffer + i * length)) failure.note(loop_failed);
            turn(columns, length, T(1), buffer, length, 1, at, nx + 1, 1);
        }
        orv_serv_deallocate(buffer);
    });
    return failure.status();
}

} // namespace orv::core::pde
