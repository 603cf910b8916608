// The engine for powers of two as its neighbours call it: all names are in frame/kernels/dft_fft.h, and here by type.
#pragma once

#include "frame/kernels/dft_fft.h"

namespace orv::dft {

// Real transforms, between reals and their packed spectra.
template <class T> struct RealEngine;
#define ORV_DFT_ENGINE(t)                                                                                              \
    template <> struct RealEngine<t_##t> {                                                                             \
        static constexpr auto& get_size = DFT(ympsFFTGetSize_R_##t);                                                   \
        static constexpr auto& init = DFT(ympsFFTInit_R_##t);                                                          \
        static constexpr auto& forward = DFT(ympsFFTFwd_RToPerm_##t);                                                  \
        static constexpr auto& inverse = DFT(ympsFFTInv_PermToR_##t);                                                  \
        static constexpr auto& multiply = DFT(ympsMulPerm_##t##_I);                                                    \
    };
ORV_DFT_REAL(ORV_DFT_ENGINE)
#undef ORV_DFT_ENGINE

} // namespace orv::dft
