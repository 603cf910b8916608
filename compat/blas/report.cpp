#include "compat/blas/report.h"

#include <orv/branch.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>

using orv::i32;
using orv::i64;

namespace {

void print_fortran(const char* routine, std::size_t length, i64 position)
{
    std::fprintf(stderr, " ** On entry to %.*s parameter number %2lld had an illegal value\n", static_cast<int>(length),
                 routine, static_cast<long long>(position));
}

void print_cblas(i64 position, const char* routine, const char* format, va_list arguments)
{
    if (position != 0)
        std::fprintf(stderr, "Parameter %lld to routine %s was incorrect\n", static_cast<long long>(position), routine);
    std::vfprintf(stderr, format, arguments);
}

constinit std::atomic<bool> explained{false}, told{false};

} // namespace

int RowMajorStrg = 0;

bool orv::compat::explain()
{
    if (orv_branch_status() == ORV_OK) return true;
    if (!explained.exchange(true)) std::fprintf(stderr, "orv: %s\n", orv_last_error());
    return false;
}

void orv::compat::tell(orv_status status)
{
    if (explain() && status > 0 && !told.exchange(true)) std::fprintf(stderr, "orv: %s\n", orv_last_error());
}

void xerbla_(const char* routine, const i32* position, std::size_t length)
{
    print_fortran(routine, length, *position);
}
void xerbla_64_(const char* routine, const i64* position, std::size_t length)
{
    print_fortran(routine, length, *position);
}

#define CBLAS_XERBLA(symbol, Int)                                                                                      \
    void symbol(Int position, const char* routine, const char* format, ...)                                            \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, format);                                                                                   \
        print_cblas(position, routine, format, arguments);                                                             \
        va_end(arguments);                                                                                             \
    }

CBLAS_XERBLA(cblas_xerbla, i32)
CBLAS_XERBLA(cblas_xerbla_64, i64)
CBLAS_XERBLA(cblas_xerbla64_, i64)
