// Rows through a sine or cosine transform. A row that stands without gaps where it is wanted is transformed there; all
// others go through work memory, some at a time where neighbours in memory belong to different rows.
#include "core/pde/trig.h"
#include "core/pde/trig_kernel.h"
#include "core/serv/block.h"
#include "core/team/team.h"

#include <cinttypes>
#include <cmath>
#include <cstring>

using namespace orv;
using namespace orv::core;
using namespace orv::core::pde;
using namespace orv::kernels::pdett;

namespace {

constexpr i64 cache_line_bytes = 64;

template <class T> struct Rows {
    const T* from;
    i64 from_stride, from_distance;
    T* to;
    i64 to_stride, to_distance;
};

// One transform in place, unscaled, of a row without gaps. A sine has its zero before the first point.
template <class T> class OneRow {
public:
    OneRow(const orv_trig& trig, Direction direction)
        : trig_(trig), direction_(direction), kernel_(trig.ipar, static_cast<T*>(trig.dpar), trig.handle)
    {
    }

    bool ready() const { return trig_.n == 1 || is_careful(trig_) || TrigKernels<T>::of(direction_) != nullptr; }
    bool run(T* row, T* work)
    {
        if (trig_.n == 1) return short_row(row), true;
        if (is_careful(trig_)) return run_careful(trig_, direction_ == Direction::forward, row, work);
        return kernel_.run(direction_, row - (trig_.kind == sine));
    }

private:
    // Of a single cell, for which kernels have no tables.
    void short_row(T* row) const
    {
        if (trig_.kind == cosine) {
            const T first = row[0], last = row[1];
            row[0] = first + last, row[1] = first - last;
        } else if (trig_.kind >= staggered2_cosine) row[0] *= static_cast<T>(std::sqrt(2.0));
        else if (direction_ == Direction::backward) row[0] *= 2;
    }

    const orv_trig& trig_;
    Direction direction_;
    TrigKernel<T> kernel_;
};

template <class T> class Job {
public:
    Job(const orv_trig& trig, Direction direction, const Rows<T>& rows)
        : trig_(trig), transform_(trig, direction), rows_(rows),
          scale_(static_cast<T>(trig.scales[static_cast<int>(direction)]))
    {
    }

    bool ready() const { return transform_.ready(); }

    // False if there is no memory.
    bool run(i64 first, i64 end)
    {
        const bool before_first = trig_.kind == sine && !is_careful(trig_); // a kernel writes there
        return rows_.to_stride == 1 && !before_first ? in_place(first, end) : through_memory(first, end);
    }

private:
    bool in_place(i64 first, i64 end)
    {
        const core::Block<T> work(trig_.work);
        if (work.missing()) return false;
        for (i64 r = first; r < end; ++r) {
            T* const row = rows_.to + r * rows_.to_distance;
            const T* const from = rows_.from + r * rows_.from_distance;
            if (row != from) gather(from, row);
            if (!transform_.run(row, work.get())) return false;
            if (scale_ != 1)
                for (i64 j = 0; j < trig_.points; ++j) row[j] *= scale_;
        }
        return true;
    }

    bool through_memory(i64 first, i64 end)
    {
        constexpr i64 line = cache_line_bytes / sizeof(T);
        const bool crossed = rows_.from_stride != 1 || rows_.to_stride != 1;
        const i64 together = crossed ? min(line, end - first) : 1;
        const i64 distance = round_up(trig_.points + 2, line) + line; // no two rows at the same place of a page
        const core::Block<T> work(distance * together + trig_.work);
        if (work.missing()) return false;
        T *const row = work.get() + (trig_.kind == sine), *const beside = work.get() + distance * together;
        for (i64 r = first; r < end; r += together) {
            const i64 count = min(together, end - r);
            const T* const from = rows_.from + r * rows_.from_distance;
            T* const to = rows_.to + r * rows_.to_distance;
            if (crossed)
                for (i64 j = 0; j < trig_.points; ++j)
                    for (i64 k = 0; k < count; ++k)
                        row[k * distance + j] = from[k * rows_.from_distance + j * rows_.from_stride];
            else gather(from, row);
            for (i64 k = 0; k < count; ++k)
                if (!transform_.run(row + k * distance, beside)) return false;
            if (crossed)
                for (i64 j = 0; j < trig_.points; ++j)
                    for (i64 k = 0; k < count; ++k)
                        to[k * rows_.to_distance + j * rows_.to_stride] = row[k * distance + j] * scale_;
            else
                for (i64 j = 0; j < trig_.points; ++j) to[j] = row[j] * scale_;
        }
        return true;
    }

    void gather(const T* from, T* row) const
    {
        if (rows_.from_stride == 1) std::memcpy(row, from, static_cast<std::size_t>(trig_.points) * sizeof(T));
        else
            for (i64 j = 0; j < trig_.points; ++j) row[j] = from[j * rows_.from_stride];
    }

    const orv_trig& trig_;
    OneRow<T> transform_;
    const Rows<T>& rows_;
    T scale_;
};

// Elements, each times the logarithm of a row's, that are worth a thread.
constexpr double grain = 50000;

template <class T> orv_status transform(const orv_trig& trig, Direction direction, i64 count, const Rows<T>& rows)
{
    const Job<T> job(trig, direction, rows);
    if (!job.ready()) return last_status();
    const auto n = static_cast<double>(trig.n);
    const int most = trig.threads > 0 ? trig.threads : most_threads;
    const int threads = threads_for(n * std::log2(2 * n) * static_cast<double>(count), grain, min(most, count));
    std::atomic<bool> failed{false};
    parallel(threads, [&](int index, int members) {
        Job<T> mine(job);
        if (!mine.run(count * index / members, count * (index + 1) / members)) failed = true;
    });
    return failed ? fail(ORV_NO_MEMORY, "no memory is left for a row of %" PRId64 " points", trig.points) : ORV_OK;
}

orv_status transform(const orv_trig* trig, Direction direction, i64 count, const void* from, i64 from_stride,
                     i64 from_distance, void* to, i64 to_stride, i64 to_distance)
{
    if (count == 0) return ORV_OK;
    const auto rows = [=]<class T>(T) {
        return Rows<T>{static_cast<const T*>(from), from_stride, from_distance,
                       static_cast<T*>(to),         to_stride,   to_distance};
    };
    if (trig->precision == ORV_DFT_DOUBLE) return transform(*trig, direction, count, rows(double{}));
    return transform(*trig, direction, count, rows(float{}));
}

orv_status row(const char* routine, const orv_trig* trig, Direction direction, const void* from, void* to)
{
    if (const int wrong = trig == nullptr ? 1 : from == nullptr ? 2 : to == nullptr ? 3 : 0)
        return bad_argument(routine, wrong, "null");
    return transform(trig, direction, 1, from, 1, 0, to, 1, 0);
}

orv_status many(const char* routine, const orv_trig* trig, Direction direction, i64 count, const void* from,
                i64 from_stride, i64 from_distance, void* to, i64 to_stride, i64 to_distance)
{
    if (const int wrong = trig == nullptr ? 1 : from == nullptr ? 3 : to == nullptr ? 6 : 0)
        return bad_argument(routine, wrong, "null");
    if (count < 0) return bad_argument(routine, 2, "%" PRId64 " rows, but there are 0 or more", count);
    if (from == to && from_stride != to_stride && trig->points > 1)
        return bad_argument(routine, 7, "%" PRId64 ", but in place it is the stride of argument 4, %" PRId64, to_stride,
                            from_stride);
    if (from == to && from_distance != to_distance && count > 1)
        return bad_argument(routine, 8, "%" PRId64 ", but in place it is the distance of argument 5, %" PRId64,
                            to_distance, from_distance);
    return transform(trig, direction, count, from, from_stride, from_distance, to, to_stride, to_distance);
}

} // namespace

#define ROWS(direction)                                                                                                \
    orv_status orv_trig_##direction(const orv_trig* trig, const void* from, void* to)                                  \
    {                                                                                                                  \
        return row("orv_trig_" #direction, trig, Direction::direction, from, to);                                      \
    }                                                                                                                  \
    orv_status orv_trig_##direction##_rows(const orv_trig* trig, int64_t rows, const void* from, int64_t from_stride,  \
                                           int64_t from_distance, void* to, int64_t to_stride, int64_t to_distance)    \
    {                                                                                                                  \
        return many("orv_trig_" #direction "_rows", trig, Direction::direction, rows, from, from_stride,               \
                    from_distance, to, to_stride, to_distance);                                                        \
    }
ROWS(forward)
ROWS(backward)
