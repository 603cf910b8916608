#include "compat/blas/report.h"

#include <cstdarg>
#include <dlfcn.h>

using orv::i32;
using orv::i64;
using namespace orv::compat;

namespace {

template <class Int> void report_fortran(const char* symbol, const char* routine, Int position, std::size_t length)
{
    void* const next = position < not_carried_out ? dlsym(RTLD_NEXT, symbol) : nullptr;
    if (next == nullptr) print_and_stop(routine, length, position);
    reinterpret_cast<Xerbla<Int>*>(next)(routine, &position, length);
}

template <class Int>
void report_cblas(const char* symbol, Int position, const char* routine, const char* format, va_list arguments)
{
    char sentence[2048];
    std::vsnprintf(sentence, sizeof sentence, format, arguments);
    if (position == 0) {
        std::fprintf(stderr, "orv: %s was not carried out: %s", routine, sentence);
        std::exit(EXIT_FAILURE);
    }
    if (void* const next = dlsym(RTLD_NEXT, symbol))
        return reinterpret_cast<CblasXerbla<Int>*>(next)(position, routine, "%s", sentence);
    std::fprintf(stderr, "Parameter %lld to routine %s was incorrect\n%s", static_cast<long long>(position), routine,
                 sentence);
    std::exit(EXIT_FAILURE);
}

} // namespace

int RowMajorStrg = 0;
int CBLAS_CallFromC = 0;

template <> void orv::compat::FortranCall<i32>::report(i64 position) const
{
    const RoutineName routine(name);
    const auto number = static_cast<i32>(position);
    xerbla_(routine.text, &number, routine.length);
}
template <> void orv::compat::FortranCall<i64>::report(i64 position) const
{
    const RoutineName routine(name);
    xerbla_64_(routine.text, &position, routine.length);
}

void xerbla_(const char* routine, const i32* position, std::size_t length)
{
    report_fortran("xerbla_", routine, *position, length);
}
void xerbla_64_(const char* routine, const i64* position, std::size_t length)
{
    report_fortran("xerbla_64_", routine, *position, length);
}

#define CBLAS_XERBLA(symbol, Int)                                                                                      \
    void symbol(Int position, const char* routine, const char* format, ...)                                            \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, format);                                                                                   \
        report_cblas(#symbol, position, routine, format, arguments);                                                   \
        va_end(arguments);                                                                                             \
    }

CBLAS_XERBLA(cblas_xerbla, i32)
CBLAS_XERBLA(cblas_xerbla_64, i64)
CBLAS_XERBLA(cblas_xerbla64_, i64)
