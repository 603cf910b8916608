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
// The position is that of the argument in the call that the program made. The routines here print one line to standard
// error and return; then the call returns without having written anything.
#pragma once

#include "frame/interface.h"

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include <orv/blas.h>

#include <atomic>
#include <cstddef>

#define STANDARD extern "C" __attribute__((visibility("default")))

STANDARD void xerbla_(const char* routine, const orv::i32* position, std::size_t length);
STANDARD void xerbla_64_(const char* routine, const orv::i64* position, std::size_t length);
STANDARD void cblas_xerbla(orv::i32 position, const char* routine, const char* format, ...);
STANDARD void cblas_xerbla_64(orv::i64 position, const char* routine, const char* format, ...);
STANDARD void cblas_xerbla64_(orv::i64 position, const char* routine, const char* format, ...);

// Nonzero if the position that a cblas_xerbla receives is still to be translated: never so in this library.
extern "C" __attribute__((visibility("default"))) int RowMajorStrg;

namespace orv::compat {

// Whether kernels can run. If not, says once on standard error why.
[[gnu::cold]] bool explain();

// Passes a result on. Results that also stand for "no kernel can run" are rare, and then worth a look.
template <class R> R answer(R result)
{
    bool suspect;
    if constexpr (std::is_integral_v<R>) suspect = result < 1;
    else if constexpr (is_complex<R>) suspect = result.re != result.re;
    else suspect = result != result;
    if (suspect) [[unlikely]]
        explain();
    return result;
}

// To be said before the last call of a routine that returns nothing: nothing is left to do after it then, and the
// arguments pass on where they stand.
inline constinit std::atomic<bool> known_to_run{false};
inline void expect_kernels()
{
    if (!known_to_run.load(std::memory_order_relaxed)) [[unlikely]]
        known_to_run.store(explain(), std::memory_order_relaxed);
}

// Says once on standard error why a call was not carried out.
[[gnu::cold]] void tell(orv_status status);
inline void done(orv_status status)
{
    if (status != ORV_OK) [[unlikely]]
        tell(status);
}

} // namespace orv::compat
