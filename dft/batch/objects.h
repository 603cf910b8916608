// The objects of a plan, and the memory that they are in.
//
//   BatchPlan            the length and its tables, for all below
//     Division           columns shared among a team
//       Share            one member's columns: those that fill registers, and the rest
//         Base, Base     how they are transformed
#pragma once

#include "frame/kernels/dft_batch.h"
#include "frame/simd.h"

namespace orv::dft::batch {

inline constexpr i64 alignment = 256;
constexpr i64 block(i64 bytes, i64 boundary = alignment) { return round_up(bytes, boundary); }

// What a plan's memory, and a thread's buffer, begin with, whatever the address. Blocks follow at a fixed distance.
struct [[gnu::packed]] Area {
    BatchArena next;
    i64 owned; // of a plan's memory: Free gives it back
};
inline constexpr i64 before_blocks = 0x110;
static_assert(sizeof(Area) <= before_blocks - 15);

ORV_INLINE t_8u* first_block(const void* area)
{
    auto* const begin = static_cast<t_8u*>(const_cast<void*>(area));
    return begin + (before_blocks - static_cast<i64>(reinterpret_cast<std::uintptr_t>(begin) % 16));
}
ORV_INLINE BatchArena* place_arena(void* area)
{
    auto* const arena = static_cast<BatchArena*>(area);
    *arena = first_block(area);
    return arena;
}

// Where the elements of columns stand: element j of column c at j*stride + c*distance.
struct Layout {
    i64 stride, distance;
};

struct Division {
    BatchEnv env;
    BatchEnvList children;
    i64 columns;
    Layout from, to;
};

// Rule 1: columns side by side, in registers, of a length with straight-line code; 2: of any other length; what fills
// no register is staged. 3: all are staged.
struct Share {
    BatchEnv env;
    BatchEnvList children;
    i64 rule;
};

struct Base {
    BatchEnv env;
    const BatchPlan* plan;
    i64 together; // columns at once
};

static_assert(sizeof(BatchPlan) <= alignment && sizeof(Division) <= alignment && sizeof(Share) <= alignment &&
              sizeof(Base) <= alignment);

} // namespace orv::dft::batch
