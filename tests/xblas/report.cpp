#include "core/branch/branches.h"
#include "frame/export.h"
#include "tests/xblas/problem.h"

namespace orv::test::extended {
std::vector<Report>& reports()
{
    static std::vector<Report> all;
    return all;
}
} // namespace orv::test::extended

#define REPORT(tag, code, needs)                                                                                       \
    ORV_EXPORT void orv_xblas_##tag##_BLAS_error(const char* routine, orv::i64 number, orv::i64 value,                 \
                                                 const char* form, ...)                                                \
    {                                                                                                                  \
        orv::test::extended::reports().push_back({routine, number, value, form ? form : "null"});                      \
    }
ORV_EACH_BRANCH(REPORT)
