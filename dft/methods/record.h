// A record of the engine that a method keeps from one commit to the next: made anew only where length or scale differ.
#pragma once

#include "dft/methods/method.h"

namespace orv::dft {

// The engine on T: pairs, or reals for transforms of two arrays.
template <class T> struct Engine;
#define ORV_DFT_ENGINE(t)                                                                                              \
    template <> struct Engine<t_##t> {                                                                                 \
        static constexpr auto& init = DFT(ympsDFTInitAlloc_C_##t);                                                     \
        static constexpr auto& get_work_bytes = DFT(ympsDFTGetBufSize_C_##t);                                          \
        static constexpr auto& free = DFT(ympsDFTFree_C_##t);                                                          \
        static constexpr auto& forward = DFT(ympsDFTFwd_CToC_##t);                                                     \
        static constexpr auto& backward = DFT(ympsDFTInv_CToC_##t);                                                    \
    };
ORV_DFT_FLOATING(ORV_DFT_ENGINE)
#undef ORV_DFT_ENGINE

template <class T> struct Record {
    YmpDftSpec* spec;
    i64 length;
    i32 flag, work_bytes;

    void release()
    {
        if (spec != nullptr) Engine<T>::free(spec);
        *this = {};
    }
    i32 prepare(i64 n, i32 scale)
    {
        if (spec != nullptr && length == n && flag == scale) return node_ok;
        release();
        if (n > engine_limit<real_t<T>>(n)) return node_too_long;
        length = n, flag = scale;
        const i32 status = Engine<T>::init(&spec, static_cast<i32>(n), flag, 0);
        if (status == ok) Engine<T>::get_work_bytes(spec, &work_bytes);
        return DFT(transfer_ymp_orv_error)(status);
    }
};

} // namespace orv::dft
