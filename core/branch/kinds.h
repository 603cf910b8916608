// The kinds of kernels that there are, the best first. One of them is open in a process.
#pragma once

#include "core/branch/branches.h"
#include "core/serv/processor.h"

#include <algorithm>
#include <iterator>

namespace orv::core {

struct Kind {
    const char *tag, *file;
    int code;
    unsigned needs; // of Feature
};

#define ORV_KIND(tag, code, needs) {#tag, "liborv_" #tag ".so", code, needs},
inline constexpr Kind kinds[] = {ORV_EACH_BRANCH(ORV_KIND)};
inline constexpr const Kind& humblest = kinds[std::size(kinds) - 1];

#define ORV_SPACE_AND_TAG(tag, code, needs) " " #tag
inline constexpr char known_tags[] = ORV_EACH_BRANCH(ORV_SPACE_AND_TAG);

// The first kind of which something is true, or null.
template <class Condition> const Kind* find_kind(Condition condition)
{
    const Kind* found = std::find_if(std::begin(kinds), std::end(kinds), condition);
    return found != std::end(kinds) ? found : nullptr;
}

inline unsigned lacking(const Kind& kind) { return kind.needs & ~processor().features; }

} // namespace orv::core
