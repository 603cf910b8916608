// Matrix copies as BLAS libraries offer them beyond the standard: omatcopy and imatcopy, with letters or numbers for
// ordering and transposition, and geadd, C := alpha*A + beta*C.
#pragma once

#include "compat/blas/report.h"

#include <orv/trans.h>

namespace orv::compat {

// The native routines of a type.
template <class T> struct Native;
#define ORV_NATIVE(t, T)                                                                                               \
    template <> struct Native<T> {                                                                                     \
        static constexpr auto& omatcopy = orv_##t##omatcopy;                                                           \
        static constexpr auto& imatcopy = orv_##t##imatcopy;                                                           \
        static constexpr auto& omatadd = orv_##t##omatadd;                                                             \
    };
ORV_NATIVE(s, float)
ORV_NATIVE(d, double)
ORV_NATIVE(c, cpx<float>)
ORV_NATIVE(z, cpx<double>)
#undef ORV_NATIVE

// Each tells the caller of a bad argument by its position, counted in the routine's own list. The native routines look
// for it: their lists agree.
template <class Caller> void finish(const Caller& caller, orv_status status)
{
    if (status < 0) [[unlikely]]
        return caller.report_argument(-status);
    end(caller, status);
}

template <class T, class Caller>
void omatcopy(const Caller& caller, char ordering, char trans, i64 rows, i64 cols, T alpha, const T* a, i64 lda, T* b,
              i64 ldb)
{
    finish(caller, Native<T>::omatcopy(ordering, trans, rows, cols, alpha, a, lda, b, ldb));
}

template <class T, class Caller>
void imatcopy(const Caller& caller, char ordering, char trans, i64 rows, i64 cols, T alpha, T* ab, i64 lda, i64 ldb)
{
    finish(caller, Native<T>::imatcopy(ordering, trans, rows, cols, alpha, ab, lda, ldb));
}

// A factor of 0 leaves its matrix unread, as in the standard's routines: C may be uninitialised, A may hold NaN.
// Positions are those of the call with the ordering in front.
template <class T, class Caller>
void geadd(const Caller& caller, char ordering, i64 rows, i64 cols, T alpha, const T* a, i64 lda, T beta, T* c, i64 ldc)
{
    const i64 line = max(1, fold(ordering) == 'R' ? cols : rows);
    if (rows < 0) [[unlikely]]
        return caller.report_argument(2);
    if (cols < 0) [[unlikely]]
        return caller.report_argument(3);
    if (lda < line) [[unlikely]]
        return caller.report_argument(6);
    if (ldc < line) [[unlikely]]
        return caller.report_argument(9);
    if (alpha == zero<T>) end(caller, Native<T>::imatcopy(ordering, 'N', rows, cols, beta, c, ldc, ldc));
    else if (beta == zero<T>) end(caller, Native<T>::omatcopy(ordering, 'N', rows, cols, alpha, a, lda, c, ldc));
    else end(caller, Native<T>::omatadd(ordering, 'N', 'N', rows, cols, alpha, a, lda, beta, c, ldc, c, ldc));
}

} // namespace orv::compat
