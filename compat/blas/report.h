// What both interfaces share: how they call the core, and how they report.
//
// A bad argument goes to the error routine of the interface that was called, which the program may replace by defining
// it. Each width of integers has its own:
//
//   dgemm_      xerbla_      (name, pointer to the position as a 32-bit integer, length of the name)
//   dgemm_64_   xerbla_64_   (the same with a 64-bit integer)
//   cblas_dgemm, cblas_dgemm_64, cblas_dgemm64_
//               cblas_xerbla, cblas_xerbla_64, cblas_xerbla64_   (position by value, name, printf format, ...)
//
// The position is that of the argument in the call that the program made; a call that was not carried out for another
// reason is told with a number of compat/report.h, or, in CBLAS, with position 0 and a sentence. If the error routine
// returns, the call returns without having written anything, and a function returns NaN or no position.
//
// The routines here hand a bad argument on to the next library that has such a routine: one that is preloaded stands
// before the program's own. Else they print one line to standard error and end the program.
#pragma once

#include "compat/report.h"
#include "frame/interface.h"

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include <orv/blas.h>
#include <orv/branch.h>

#include <atomic>
#include <cstddef>

#define STANDARD extern "C" __attribute__((visibility("default")))

STANDARD void xerbla_(const char* routine, const orv::i32* position, std::size_t length);
STANDARD void xerbla_64_(const char* routine, const orv::i64* position, std::size_t length);
STANDARD void cblas_xerbla(orv::i32 position, const char* routine, const char* format, ...);
STANDARD void cblas_xerbla_64(orv::i64 position, const char* routine, const char* format, ...);
STANDARD void cblas_xerbla64_(orv::i64 position, const char* routine, const char* format, ...);

// What error routines written for the reference library read. Nonzero if the position that a cblas_xerbla receives is
// still to be translated, and if an xerbla_ hears of a call of CBLAS: never so in this library.
extern "C" __attribute__((visibility("default"))) int RowMajorStrg, CBLAS_CallFromC;

namespace orv::compat {

template <class Int> using CblasXerbla = void(Int position, const char* routine, const char* format, ...);

// The call that a program made, as its error routine hears of it.
template <class Int> struct FortranCall {
    const char* name; // "dgemm"

    [[gnu::cold]] void report(i64 position) const;
    [[gnu::cold]] void report_status(orv_status status) const { report(not_carried_out + status); }
};
template <class Int> struct CblasCall {
    const char* name; // "cblas_dgemm"
    CblasXerbla<Int>* xerbla;

    // An error routine that would translate the position is told not to.
    template <class... A> [[gnu::cold]] void report(int position, const char* format = "", A... values) const
    {
        RowMajorStrg = 0;
        xerbla(static_cast<Int>(position), name, format, values...);
    }
    [[gnu::cold]] void report_status(orv_status) const { report(0, "%s\n", orv_last_error()); }
};

// Tells of a call that was not carried out.
template <class Call> void end(const Call& call, orv_status status)
{
    if (status != ORV_OK) [[unlikely]]
        call.report_status(status);
}

// Why the kernel of a routine of level 1 cannot run; ORV_OK if it can. As calls have the name: "ddot", "cblas_ddot".
[[gnu::cold]] orv_status kernel_status(const char* routine);

// Whether the kernel of a routine of level 1 has been met in calls of one interface. Nothing else can keep such a
// routine from running, so from then on calls go straight to the core and nothing is looked at when they return.
template <auto& F, class Call> inline constinit std::atomic<bool> runs{false};

// What a routine of level 1 returned before that is known: a status, or a result that may also stand for "no kernel can
// run".
template <auto& F, class Call, class R> R first_answer(const Call& call, R result)
{
    orv_status status = ORV_OK;
    bool suspect = false;
    if constexpr (std::is_same_v<result_of<F>, orv_status>) status = result;
    else if constexpr (std::is_integral_v<R>) suspect = result < 1;
    else if constexpr (is_complex<R>) suspect = result.re != result.re;
    else suspect = result != result;
    if (suspect) status = kernel_status(call.name);
    runs<F, Call>.store(status == ORV_OK, std::memory_order_relaxed);
    end(call, status);
    return result;
}

} // namespace orv::compat
