// Bad arguments, in the way of each interface.
#include "core/blas/routine.h"
#include "frame/arguments.h"
#include "frame/serv.h"

namespace orv::core {

orv_status report_by_value(const char* routine, orv_status status) { return bad_argument(routine, -status); }

orv_status report_by_pointer(const char* routine, orv_status status)
{
    const i64 negated_position = status;
    orv_serv_xerbla(arguments::Name(routine).text, &negated_position, arguments::Name::length);
    return status;
}

} // namespace orv::core
