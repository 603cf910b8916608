// What kernels ask and report besides memory.
#include "core/serv/settings.h"
#include "core/serv/status.h"
#include "frame/export.h"
#include "frame/serv.h"
#include "orv/numerics.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

using namespace orv;
using namespace orv::core;

namespace {
constinit std::atomic<int> user_reproducible{-1}; // -1: as the environment says
} // namespace

// The name is not kept: most kernels go on by a route without the block, to the same result, and the others return that
// they could not.
ORV_EXPORT int orv_serv_check_ptr(const void* block, const char*, int) { return block == nullptr; }

ORV_EXPORT int orv_serv_lsame(const char* a, const char* b, int, int)
{
    const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? fold(c) : c; };
    return upper(*a) == upper(*b);
}

ORV_EXPORT void orv_serv_xerbla(const char* routine, const i64* position, int name_length)
{
    char name[64] = {}; // names arrive without a closing zero
    std::memcpy(name, routine, min(max(name_length, 0), sizeof name - 1));
    bad_argument(name, static_cast<int>(std::abs(*position)));
}

ORV_EXPORT int orv_serv_cbwr_get(int)
{
    constexpr int free_choice = 1, fixed_order = 2;
    return orv_get_reproducible() ? fixed_order : free_choice;
}

void orv_set_reproducible(int on) { user_reproducible.store(on != 0, std::memory_order_relaxed); }

int orv_get_reproducible()
{
    const int given = user_reproducible.load(std::memory_order_relaxed);
    return given >= 0 ? given : static_cast<int>(number(Setting::reproducible));
}
