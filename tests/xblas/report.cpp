#include "frame/symbol.h"
#include "tests/xblas/problem.h"

namespace orv::test::extended {
std::vector<Report>& reports()
{
    static std::vector<Report> all;
    return all;
}
} // namespace orv::test::extended

ORV_EXPORT void orv_xblas_mc3_BLAS_error(const char* routine, orv::i64 code, orv::i64 value, const char* form, ...)
{
    orv::test::extended::reports().push_back({routine, code, value, form ? form : "null"});
}
