// The kernels of matrix copy and transposition that the core calls, by type: Kernels<double>::omatcopy.
#pragma once

#include "core/branch/kernel.h"
#include "frame/kernels/trans.h"

namespace orv::core::trans {

template <class T> struct Kernels;

#define ORV_TRANS_KERNEL(name, symbol) static inline constinit Kernel name{kernels::trans::symbol()};
#define ORV_TRANS_KERNELS(t, T)                                                                                        \
    template <> struct Kernels<T> {                                                                                    \
        ORV_TRANS_KERNEL(omatcopy, t##omatcopy)                                                                        \
        ORV_TRANS_KERNEL(omatcopy2, t##omatcopy2)                                                                      \
        ORV_TRANS_KERNEL(omatcopy2_seq, t##omatcopy2_seq)                                                              \
        ORV_TRANS_KERNEL(omatcopy2_t, t##omatcopy2_t)                                                                  \
        ORV_TRANS_KERNEL(omatadd, t##omatadd)                                                                          \
        ORV_TRANS_KERNEL(imatcopy, t##imatcopy)                                                                        \
        ORV_TRANS_KERNEL(square_t, t##imatcopy_square_t)                                                               \
        ORV_TRANS_KERNEL(square_t_team, t##imatcopy_square_t_team)                                                     \
    };

ORV_TRANS_KERNELS(s, float)
ORV_TRANS_KERNELS(d, double)
ORV_TRANS_KERNELS(c, cpx<float>)
ORV_TRANS_KERNELS(z, cpx<double>)

} // namespace orv::core::trans
