// What the kinds of records differ in, their names in the engine for powers of two, and what each of them takes.
#pragma once

#include "dft/primitives/dft/kernels.h"
#include "dft/primitives/dft/tables.h"
#include "dft/primitives/fft.h"

namespace orv::dft::general {

struct Family {
    Kind id;
    FftGetSize* get_size;
    FftInit* init;
    FftInitAlloc* init_alloc;
    FftFree* free;
    FftGetBufSize* get_buf_size;

    Elements elements() const { return is_real(id) ? Elements::real : Elements::complex; }
};

#define ORV_DFT_FAMILY(name, kind)                                                                                     \
    inline constexpr Family family_##name{Kind::name,                                                                  \
                                          DFT(ympsFFTGetSize_##kind),                                                  \
                                          DFT(ympsFFTInit_##kind),                                                     \
                                          DFT(ympsFFTInitAlloc_##kind),                                                \
                                          DFT(ympsFFTFree_##kind),                                                     \
                                          DFT(ympsFFTGetBufSize_##kind)};
#define ORV_DFT_KIND(kind) ORV_DFT_FAMILY(kind, kind)
ORV_DFT_KINDS(ORV_DFT_KIND)
ORV_DFT_FAMILY(OutOrd_32fc, C_32fc)
ORV_DFT_FAMILY(OutOrd_64fc, C_64fc)
#undef ORV_DFT_FAMILY
#undef ORV_DFT_KIND

// Bytes of a record with its tables, of what its making works in, and of a transform's buffer; each serves at any
// address.
struct Sizes {
    i64 spec, init, buffer;
};
template <class R> i32 sizes(const Family& family, i32 n, i32 flag, i32 hint, Sizes& total);

inline i32 order_of(i32 power_of_two) { return __builtin_ctz(static_cast<unsigned>(power_of_two)); }

} // namespace orv::dft::general
