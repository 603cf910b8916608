// The public routines: arguments checked, then the kernel. A plain copy is the C library's, and a transposition in
// place that no kernel does quickly goes its own way (turn.h).
#include "core/trans/kernels.h"
#include "core/trans/share.h"
#include "core/trans/turn.h"
#include "frame/interface.h"
#include "frame/matrix_arguments.h"

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include "orv/trans.h"

#include <cstring>

using namespace orv;
using namespace orv::core;
using core::trans::Kernels;

namespace {

// B := A, m rows of n elements. Members get rows each, or pieces if all rows are one.
template <class T> void copy(u64 m, u64 n, const T* a, u64 lda, T* b, u64 ldb)
{
    if (m == 0 || n == 0) return; // there may be no matrices
    if (lda == n && ldb == n) n *= m, m = 1;
    core::parallel(core::trans::threads_worth<T>(m, n), [=](int index, int count) {
        const u64 begin = core::trans::edge(m == 1 ? n : m, count, index),
                  part = core::trans::edge(m == 1 ? n : m, count, index + 1) - begin;
        if (m == 1) std::memcpy(b + begin, a + begin, part * sizeof(T));
        else
            for (u64 i = begin; i < begin + part; ++i) std::memcpy(b + i * ldb, a + i * lda, n * sizeof(T));
    });
}

// Whether the routine only moves elements to the same place of another matrix.
template <class T> bool is_copy(char trans, T alpha)
{
    return alpha == one<T> && (fold(trans) == 'N' || (!is_complex<T> && fold(trans) == 'R'));
}

template <class T>
orv_status omatcopy(char ordering, char trans, i64 rows, i64 cols, T alpha, const T* a, i64 lda, T* b, i64 ldb)
{
    if (const int bad = arguments::omatcopy(ordering, trans, rows, cols, alpha, a, lda, b, ldb)) return -bad;
    if (is_copy(trans, alpha)) {
        const bool by_rows = fold(ordering) == 'R';
        copy<T>(by_rows ? rows : cols, by_rows ? cols : rows, a, lda, b, ldb);
        return ORV_OK;
    }
    return Kernels<T>::omatcopy.run(ordering, trans, rows, cols, alpha, a, lda, b, ldb);
}

template <class T>
orv_status omatcopy2(char ordering, char trans, i64 rows, i64 cols, T alpha, const T* a, i64 lda, i64 stridea, T* b,
                     i64 ldb, i64 strideb)
{
    if (const int bad = arguments::omatcopy2(ordering, trans, rows, cols, alpha, a, lda, stridea, b, ldb, strideb))
        return -bad;
    return Kernels<T>::omatcopy2.run(ordering, trans, rows, cols, alpha, a, lda, stridea, b, ldb, strideb);
}

template <class T>
orv_status omatadd(char ordering, char transa, char transb, i64 rows, i64 cols, T alpha, const T* a, i64 lda, T beta,
                   const T* b, i64 ldb, T* c, i64 ldc)
{
    if (const int bad = arguments::omatadd(ordering, transa, transb, rows, cols, alpha, a, lda, beta, b, ldb, c, ldc))
        return -bad;
    return Kernels<T>::omatadd.run(ordering, transa, transb, rows, cols, alpha, a, lda, beta, b, ldb, c, ldc);
}

template <class T> orv_status imatcopy(char ordering, char trans, i64 rows, i64 cols, T alpha, T* ab, i64 lda, i64 ldb)
{
    if (const int bad = arguments::imatcopy(ordering, trans, rows, cols, alpha, ab, lda, ldb)) return -bad;
    const bool turns = arguments::one_of(trans, "TC"), by_rows = fold(ordering) == 'R';
    if (turns && (rows != cols || lda != ldb)) {
        const i64 m = by_rows ? rows : cols, n = by_rows ? cols : rows;
        if (core::trans::turn(trans, m, n, alpha, ab, lda, ldb)) return ORV_OK;
    }
    return Kernels<T>::imatcopy.run(ordering, trans, rows, cols, alpha, ab, lda, ldb);
}

orv_status reported(const char* routine, orv_status status)
{
    return status < 0 ? bad_argument(routine, -status) : status;
}

} // namespace

#define ROUTINE(arity, name, function)                                                                                 \
    orv_status orv_##name(ORV_PARAMETERS_##arity(value_argument, orv_##name))                                          \
    {                                                                                                                  \
        return reported("orv_" #name, function(ORV_NAMES_##arity));                                                    \
    }
#define ROUTINES(t)                                                                                                    \
    ROUTINE(9, t##omatcopy, omatcopy)                                                                                  \
    ROUTINE(11, t##omatcopy2, omatcopy2) ROUTINE(13, t##omatadd, omatadd) ROUTINE(8, t##imatcopy, imatcopy)

ROUTINES(s)
ROUTINES(d)
ROUTINES(c)
ROUTINES(z)
