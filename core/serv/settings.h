// The environment variables of orv: one table, read once at the first use.
#pragma once

#include "frame/types.h"

namespace orv::core {

enum class Setting { num_threads, memory_limit, reproducible, branch, branch_path };
inline constexpr int settings = 5;

inline constexpr int most_threads = 1024;

// Value of a setting from the environment, or its default if it is not set there or makes no sense.
i64 number(Setting setting);
const char* text(Setting setting); // null if not set

// The sentences about all senseless values, one a line; null if all make sense.
const char* settings_problem();

} // namespace orv::core
