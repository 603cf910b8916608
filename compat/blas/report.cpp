#include "compat/blas/report.h"

#include "frame/kernels/blas.h"

#include <algorithm>
#include <cstdarg>
#include <dlfcn.h>
#include <string_view>

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

constexpr std::string_view dense_kernels[] = {
#define ORV_NAME(name, ...) orv::kernels::blas::name::stem,
#include "frame/kernels/blas.def"
#undef ORV_NAME
};

} // namespace

// A kernel has the name of its routine, most with an x before it.
orv_status orv::compat::kernel_status(const char* routine)
{
    std::string_view name(routine);
    if (name.starts_with("cblas_")) name.remove_prefix(std::string_view("cblas_").size());
    if (name.ends_with("_sub")) name.remove_suffix(std::string_view("_sub").size());
    const bool is_listed = std::ranges::find(dense_kernels, name) != std::end(dense_kernels);
    char stem[16];
    std::snprintf(stem, sizeof stem, "%s%.*s", is_listed ? "" : "x", static_cast<int>(name.size()), name.data());
    if (orv_kernel("blas", stem) != nullptr) return ORV_OK;
    const orv_status status = orv_branch_status();
    return status != ORV_OK ? status : ORV_NO_KERNEL;
}

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
