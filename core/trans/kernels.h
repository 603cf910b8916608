// The kernels of matrix copy and transposition that the core calls: kernels<double>.omatcopy. All arguments pass by
// value.
#pragma once

#include "core/branch/kernel.h"
#include "frame/export.h"
#include "frame/types.h"

namespace orv::core::trans {

template <class T> struct Kernels {
    // (ordering, trans, rows, cols, alpha, a, lda, b, ldb); in the others the steps in a row stand behind lda and ldb
    Kernel<void(char, char, u64, u64, T, const T*, u64, T*, u64)> omatcopy;
    Kernel<void(char, char, u64, u64, T, const T*, u64, u64, T*, u64, u64)> omatcopy2, omatcopy2_seq;
    // (rows, cols, alpha, a, lda, stridea, b, ldb, strideb), row-major
    Kernel<void(u64, u64, T, const T*, u64, u64, T*, u64, u64)> omatcopy2_t;
    // (ordering, transa, transb, rows, cols, alpha, a, lda, beta, b, ldb, c, ldc)
    Kernel<void(char, char, char, u64, u64, T, const T*, u64, T, const T*, u64, T*, u64)> omatadd;
    // (ordering, trans, rows, cols, alpha, ab, lda, ldb)
    Kernel<void(char, char, u64, u64, T, T*, u64, u64)> imatcopy;
    // (n, alpha, ab, lda); (n, ab, lda, member, members)
    Kernel<void(u64, T, T*, u64)> square_t;
    Kernel<void(u64, T*, u64, u64, u64)> square_t_team;
};

template <class T> Kernels<T> kernels;

#define ORV_TRANS_KERNELS(t, T)                                                                                        \
    template <> inline constinit Kernels<T> kernels<T>                                                                 \
    {                                                                                                                  \
        .omatcopy = decltype(Kernels<T>::omatcopy)({"trans", "orv_" #t "omatcopy"}),                                   \
        .omatcopy2 = decltype(Kernels<T>::omatcopy2)({"trans", "orv_" #t "omatcopy2"}),                                \
        .omatcopy2_seq = decltype(Kernels<T>::omatcopy2_seq)({"trans", "orv_" #t "omatcopy2_seq"}),                    \
        .omatcopy2_t = decltype(Kernels<T>::omatcopy2_t)({"trans", "orv_" #t "omatcopy2_t"}),                          \
        .omatadd = decltype(Kernels<T>::omatadd)({"trans", "orv_" #t "omatadd"}),                                      \
        .imatcopy = decltype(Kernels<T>::imatcopy)({"trans", "orv_" #t "imatcopy"}),                                   \
        .square_t = decltype(Kernels<T>::square_t)({"trans", "orv_" #t "imatcopy_square_t"}),                          \
        .square_t_team = decltype(Kernels<T>::square_t_team)({"trans", "orv_" #t "imatcopy_square_t_team"}),           \
    }

ORV_TRANS_KERNELS(s, float);
ORV_TRANS_KERNELS(d, double);
ORV_TRANS_KERNELS(c, cpx<float>);
ORV_TRANS_KERNELS(z, cpx<double>);

} // namespace orv::core::trans
