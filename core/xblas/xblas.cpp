// The public routines of extended and mixed precision. Each is its kernel behind a check of the arguments; the kernels'
// own checks differ from family to family, and in some report nothing.
#include "core/branch/branches.h"
#include "core/branch/kernel.h"
#include "core/serv/status.h"
#include "core/xblas/arguments.h"
#include "frame/export.h"
#include "frame/interface.h"

// In the library a complex number is the type that kernels know; it is passed like C's own.
#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include "orv/xblas.h"

namespace orv::core {
namespace {

thread_local orv_status reported; // by a kernel since this was cleared

// Kernels take complex scalars by pointer.
template <class A> auto passed(const A& value)
{
    if constexpr (is_complex<A>) return &value;
    else return value;
}
template <class... A> using KernelForm = void(decltype(passed(std::declval<A>()))...);

// Whole numbers and options as the check takes them.
template <class A> i64 number(const A& value)
{
    if constexpr (std::is_integral_v<A> || std::is_enum_v<A>) return static_cast<i64>(value);
    else return 0;
}

template <class... A>
orv_status call(Kernel<KernelForm<A...>>& kernel, const char* name, const char* signature, const A&... arguments)
{
    const i64 numbers[] = {number(arguments)...};
    if (const int bad = extended::bad_argument(signature, numbers, sizeof...(A))) return bad_argument(name, bad);
    reported = ORV_OK;
    const orv_status status = kernel.run(passed(arguments)...);
    return status == ORV_OK ? reported : status;
}

template <class F> struct kernel_of;
template <class... A> struct kernel_of<orv_status(A...)> {
    using type = Kernel<KernelForm<A...>>;
};

} // namespace
} // namespace orv::core

using namespace orv;
using namespace orv::core;

// What kernels report unless the program exports a routine of this name itself: kept for orv_last_error().
static void keep(const char* routine, i64 code, i64 value, const char* form)
{
    const auto text = static_cast<long long>(value);
    if (form != nullptr) reported = fail(ORV_NO_MEMORY, "%s: no memory is left", routine);
    else if (code == 0) reported = fail(-1, "%s: an option, a leading dimension or a stride is not allowed", routine);
    else
        reported = fail(static_cast<orv_status>(code), "%s: argument %lld is not allowed; the value looked at is %lld",
                        routine, static_cast<long long>(-code), text);
}
#define REPORT(tag, code, needs)                                                                                       \
    ORV_EXPORT void orv_xblas_##tag##_BLAS_error(const char* routine, i64 number, i64 value, const char* form, ...)      \
    {                                                                                                                  \
        keep(routine, number, value, form);                                                                              \
    }
ORV_EACH_BRANCH(REPORT)

int64_t orv_xblas_fpinfo(int property, orv_prec prec)
{
    static constinit Kernel<i64(int, int)> kernel{{"xblas", "BLAS_fpinfo_x"}};
    auto* fpinfo = kernel.get();
    return fpinfo != nullptr ? fpinfo(property, prec) : 0;
}

// One routine: its kernel, and the form by value as the header declares it. count: of its arguments.
#define ROUTINE(name, signature, count)                                                                                \
    orv_status orv_xblas_##name(ORV_PARAMETERS_##count(value_argument, orv_xblas_##name))                              \
    {                                                                                                                  \
        static constinit kernel_of<decltype(orv_xblas_##name)>::type kernel{{"xblas", "BLAS_" #name}};                 \
        return call(kernel, "orv_xblas_" #name, signature, ORV_NAMES_##count);                                         \
    }

// Each family: the names of its arguments, for the check, and how many there are with and without prec. ld:... tells
// what a leading dimension has to hold.
#define DOT "conj n alpha x incx beta y incy r"
#define ROUTINE_dot_X(name, T, A, B) ROUTINE(name, DOT " prec", 10)
#define ROUTINE_dot(name, T, A, B) ROUTINE(name, DOT, 9)
ORV_XBLAS_TWO_INPUTS(ROUTINE_dot, dot)
#define SUM "n x incx r"
#define ROUTINE_sum_X(name, T, A, B) ROUTINE(name, SUM " prec", 5)
#define ROUTINE_sum(name, T, A, B) ROUTINE(name, SUM, 4)
ORV_XBLAS_SUM(ROUTINE_sum, sum)
#define AXPBY "n alpha x incx beta y incy"
#define ROUTINE_axpby_X(name, T, A, B) ROUTINE(name, AXPBY " prec", 8)
#define ROUTINE_axpby(name, T, A, B) ROUTINE(name, AXPBY, 7)
ORV_XBLAS_ONE_INPUT(ROUTINE_axpby, axpby)
#define WAXPBY "n alpha x incx beta y incy w incw"
#define ROUTINE_waxpby_X(name, T, A, B) ROUTINE(name, WAXPBY " prec", 10)
#define ROUTINE_waxpby(name, T, A, B) ROUTINE(name, WAXPBY, 9)
ORV_XBLAS_TWO_INPUTS(ROUTINE_waxpby, waxpby)
#define GEMV "order trans m n alpha a ld:mn x incx beta y incy"
#define ROUTINE_gemv_X(name, T, A, B) ROUTINE(name, GEMV " prec", 13)
#define ROUTINE_gemv(name, T, A, B) ROUTINE(name, GEMV, 12)
ORV_XBLAS_TWO_INPUTS(ROUTINE_gemv, gemv)
#define GEMV2 "order trans m n alpha a ld:mn x x incx beta y incy"
#define ROUTINE_gemv2_X(name, T, A, B) ROUTINE(name, GEMV2 " prec", 14)
#define ROUTINE_gemv2(name, T, A, B) ROUTINE(name, GEMV2, 13)
ORV_XBLAS_TWO_INPUTS(ROUTINE_gemv2, gemv2)
#define GBMV "order trans m n kl ku alpha a ld:band x incx beta y incy"
#define ROUTINE_gbmv_X(name, T, A, B) ROUTINE(name, GBMV " prec", 15)
#define ROUTINE_gbmv(name, T, A, B) ROUTINE(name, GBMV, 14)
ORV_XBLAS_TWO_INPUTS(ROUTINE_gbmv, gbmv)
#define GBMV2 "order trans m n kl ku alpha a ld:band x x incx beta y incy"
#define ROUTINE_gbmv2_X(name, T, A, B) ROUTINE(name, GBMV2 " prec", 16)
#define ROUTINE_gbmv2(name, T, A, B) ROUTINE(name, GBMV2, 15)
ORV_XBLAS_TWO_INPUTS(ROUTINE_gbmv2, gbmv2)
#define SYMV "order uplo n alpha a ld:n x incx beta y incy"
#define ROUTINE_symv_X(name, T, A, B) ROUTINE(name, SYMV " prec", 12)
#define ROUTINE_symv(name, T, A, B) ROUTINE(name, SYMV, 11)
ORV_XBLAS_TWO_INPUTS(ROUTINE_symv, symv)
#define HEMV "order uplo n alpha a ld:n x incx beta y incy"
#define ROUTINE_hemv_X(name, T, A, B) ROUTINE(name, HEMV " prec", 12)
#define ROUTINE_hemv(name, T, A, B) ROUTINE(name, HEMV, 11)
ORV_XBLAS_HERMITIAN(ROUTINE_hemv, hemv)
#define SYMV2 "order uplo n alpha a ld:n x x incx beta y incy"
#define ROUTINE_symv2_X(name, T, A, B) ROUTINE(name, SYMV2 " prec", 13)
#define ROUTINE_symv2(name, T, A, B) ROUTINE(name, SYMV2, 12)
ORV_XBLAS_TWO_INPUTS(ROUTINE_symv2, symv2)
#define HEMV2 "order uplo n alpha a ld:n x x incx beta y incy"
#define ROUTINE_hemv2_X(name, T, A, B) ROUTINE(name, HEMV2 " prec", 13)
#define ROUTINE_hemv2(name, T, A, B) ROUTINE(name, HEMV2, 12)
ORV_XBLAS_HERMITIAN(ROUTINE_hemv2, hemv2)
#define SBMV "order uplo n k alpha a ld:k x incx beta y incy"
#define ROUTINE_sbmv_X(name, T, A, B) ROUTINE(name, SBMV " prec", 13)
#define ROUTINE_sbmv(name, T, A, B) ROUTINE(name, SBMV, 12)
ORV_XBLAS_TWO_INPUTS(ROUTINE_sbmv, sbmv)
#define HBMV "order uplo n k alpha a ld:k x incx beta y incy"
#define ROUTINE_hbmv_X(name, T, A, B) ROUTINE(name, HBMV " prec", 13)
#define ROUTINE_hbmv(name, T, A, B) ROUTINE(name, HBMV, 12)
ORV_XBLAS_HERMITIAN(ROUTINE_hbmv, hbmv)
#define SPMV "order uplo n alpha a x incx beta y incy"
#define ROUTINE_spmv_X(name, T, A, B) ROUTINE(name, SPMV " prec", 11)
#define ROUTINE_spmv(name, T, A, B) ROUTINE(name, SPMV, 10)
ORV_XBLAS_TWO_INPUTS(ROUTINE_spmv, spmv)
#define HPMV "order uplo n alpha a x incx beta y incy"
#define ROUTINE_hpmv_X(name, T, A, B) ROUTINE(name, HPMV " prec", 11)
#define ROUTINE_hpmv(name, T, A, B) ROUTINE(name, HPMV, 10)
ORV_XBLAS_HERMITIAN(ROUTINE_hpmv, hpmv)
#define GE_SUM_MV "order m n alpha a ld:mn x incx beta b ld:mn y incy"
#define ROUTINE_ge_sum_mv_X(name, T, A, B) ROUTINE(name, GE_SUM_MV " prec", 14)
#define ROUTINE_ge_sum_mv(name, T, A, B) ROUTINE(name, GE_SUM_MV, 13)
ORV_XBLAS_TWO_INPUTS(ROUTINE_ge_sum_mv, ge_sum_mv)
#define TRMV "order uplo trans diag n alpha t ld:n x incx"
#define ROUTINE_trmv_X(name, T, A, B) ROUTINE(name, TRMV " prec", 11)
#define ROUTINE_trmv(name, T, A, B) ROUTINE(name, TRMV, 10)
ORV_XBLAS_ONE_INPUT(ROUTINE_trmv, trmv)
#define TPMV "order uplo trans diag n alpha t x incx"
#define ROUTINE_tpmv_X(name, T, A, B) ROUTINE(name, TPMV " prec", 10)
#define ROUTINE_tpmv(name, T, A, B) ROUTINE(name, TPMV, 9)
ORV_XBLAS_ONE_INPUT(ROUTINE_tpmv, tpmv)
#define TRSV "order uplo trans diag n alpha t ld:n x incx"
#define ROUTINE_trsv_X(name, T, A, B) ROUTINE(name, TRSV " prec", 11)
#define ROUTINE_trsv(name, T, A, B) ROUTINE(name, TRSV, 10)
ORV_XBLAS_ONE_INPUT(ROUTINE_trsv, trsv)
#define TBSV "order uplo trans diag n k alpha t ld:k x incx"
#define ROUTINE_tbsv_X(name, T, A, B) ROUTINE(name, TBSV " prec", 12)
#define ROUTINE_tbsv(name, T, A, B) ROUTINE(name, TBSV, 11)
ORV_XBLAS_ONE_INPUT(ROUTINE_tbsv, tbsv)
#define GEMM "order transa transb m n k alpha a ld:a b ld:b beta c ld:mn"
#define ROUTINE_gemm_X(name, T, A, B) ROUTINE(name, GEMM " prec", 15)
#define ROUTINE_gemm(name, T, A, B) ROUTINE(name, GEMM, 14)
ORV_XBLAS_TWO_INPUTS(ROUTINE_gemm, gemm)
#define SYMM "order side uplo m n alpha a ld:side b ld:mn beta c ld:mn"
#define ROUTINE_symm_X(name, T, A, B) ROUTINE(name, SYMM " prec", 14)
#define ROUTINE_symm(name, T, A, B) ROUTINE(name, SYMM, 13)
ORV_XBLAS_TWO_INPUTS(ROUTINE_symm, symm)
#define HEMM "order side uplo m n alpha a ld:side b ld:mn beta c ld:mn"
#define ROUTINE_hemm_X(name, T, A, B) ROUTINE(name, HEMM " prec", 14)
#define ROUTINE_hemm(name, T, A, B) ROUTINE(name, HEMM, 13)
ORV_XBLAS_HERMITIAN(ROUTINE_hemm, hemm)
