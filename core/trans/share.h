// How matrices are shared among threads.
#pragma once

#include "core/team/team.h"

namespace orv::core::trans {

// Bytes of a matrix that are worth a thread: some 0.2 ms of one core, since waking a team that has gone to sleep can
// cost as much.
inline constexpr i64 grain = 1 << 20;

// Where part `index` of a side begins. Parts end on whole cache lines and tiles.
inline constexpr u64 granule = 16;
constexpr u64 edge(u64 size, int parts, int index)
{
    return index == parts ? size : size / granule * static_cast<u64>(index) / static_cast<u64>(parts) * granule;
}

template <class T> int threads_worth(u64 rows, u64 cols)
{
    return threads_for(static_cast<double>(rows) * static_cast<double>(cols) * sizeof(T), grain);
}

} // namespace orv::core::trans
