// The engine for powers of two as the primitives around it call it: real transforms, of 2^order points, between arrays
// of reals and their packed spectra. Source and destination may be the same array, and stand at any address.
#pragma once

#include "frame/kernels/dft_primitives.h"

namespace orv::dft {

struct YmpFftSpec; // the record that Init builds in the caller's memory

// Where the division by the length goes.
enum ScaleFlag : i32 { scale_forward = 1, scale_inverse = 2, scale_both = 4, scale_none = 8 };

#define ORV_DFT_DECLARE(t)                                                                                             \
    ORV_EXPORT i32 DFT(ympsFFTGetSize_R_##t)(i32 order, i32 flag, i32 hint, i32 * spec_bytes, i32 * init_bytes,        \
                                             i32 * buffer_bytes);                                                      \
    ORV_EXPORT i32 DFT(ympsFFTInit_R_##t)(YmpFftSpec * *spec, i32 order, i32 flag, i32 hint, t_8u * memory,            \
                                          t_8u * init_memory);                                                         \
    ORV_EXPORT i32 DFT(ympsFFTFwd_RToPerm_##t)(const t_##t* src, t_##t* dst, const YmpFftSpec* spec, t_8u* buffer);    \
    ORV_EXPORT i32 DFT(ympsFFTInv_PermToR_##t)(const t_##t* src, t_##t* dst, const YmpFftSpec* spec, t_8u* buffer);
ORV_DFT_REAL(ORV_DFT_DECLARE)
#undef ORV_DFT_DECLARE

// The functions of one type.
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
