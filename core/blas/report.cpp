// Bad arguments, in the way of each interface.
#include "core/blas/routine.h"
#include "frame/serv.h"

#include <cstring>

namespace orv::core {

orv_status report_by_value(const char* routine, orv_status status) { return bad_argument(routine, -status); }

// The name as Fortran knows it: upper-case, six letters, filled up with blanks.
orv_status report_by_pointer(const char* routine, orv_status status)
{
    char name[] = "      ";
    for (int i = 0; i < 6 && routine[i] != '\0'; ++i) name[i] = fold(routine[i]);
    const i64 negated_position = status;
    orv_serv_xerbla(name, &negated_position, 6);
    return status;
}

} // namespace orv::core
