// Blocks of elements, from the core's allocator and back to it.
#include "dft/primitives/members.h"
#include "frame/dft.h"

namespace orv::dft {
namespace {

// Null for a count below 1, without asking anybody.
template <class T> T* allocate(i32 count)
{
    return count < 1 ? nullptr : static_cast<T*>(orv_dft_ympMalloc(i64{count} * static_cast<i64>(sizeof(T))));
}

} // namespace

#define MALLOC(t) PRIMITIVE(1, ympsMalloc_##t, allocate<t_##t>)
ORV_DFT_ALLOCATED(MALLOC)
PRIMITIVE(1, ympsFree, orv_dft_ympFree)

} // namespace orv::dft
