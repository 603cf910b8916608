// Tables of a record, and where they are put.
#pragma once

#include "dft/primitives/dft/plan.h"

namespace orv::dft::general {

// Places for tables: behind one another in memory of the caller, or each a block of its own, null where there is none.
struct Store {
    t_8u* next;
    bool separate;

    template <class T> T* take(i64 bytes)
    {
        if (separate) return reinterpret_cast<T*>(DFT(ympsMalloc_8u)(static_cast<i32>(bytes)));
        auto* taken = reinterpret_cast<T*>(next);
        next += whole_boundaries(bytes);
        return taken;
    }
};

// The functions of one type that have the type in their names.
template <class R> struct Tables;
#define ORV_DFT_TABLES(t, pair)                                                                                        \
    template <> struct Tables<t_##t> {                                                                                 \
        static constexpr auto& init_base = DFT(ownsInitTabDftBase_##t);                                                \
        static constexpr auto& create_base = DFT(ownsCreateTabDftBase_##t);                                            \
        static constexpr auto& init_direct = DFT(ownsInitTabDftDir_##t);                                               \
        static constexpr auto& create_direct = DFT(ownsCreateTabDftDir_##t);                                           \
        static constexpr auto& init_factors = DFT(ownsInitDftPrimeFact_##t##_##t);                                     \
        static constexpr auto& create_factors = DFT(ownsInitAllocDftPrimeFact_##t##_##t);                              \
        static constexpr auto& init_convolution = DFT(ownsInitDftConv_##t);                                            \
        static constexpr auto& create_convolution = DFT(ownsInitAllocDftConv_##t);                                     \
        static constexpr auto& get_size = DFT(ympsDFTGetSize_C_##pair);                                                \
        static constexpr auto& init = DFT(ympsDFTInit_C_##pair);                                                       \
        static constexpr auto& init_alloc = DFT(ympsDFTInitAlloc_C_##pair);                                            \
        static constexpr auto& free = DFT(ympsDFTFree_C_##pair);                                                       \
        static constexpr auto& forward = DFT(ympsDFTFwd_CToC_##pair);                                                  \
        static constexpr auto& inverse = DFT(ympsDFTInv_CToC_##pair);                                                  \
        static constexpr auto& multiply = DFT(ympsMul_##pair##_I);                                                     \
        static constexpr auto& scale = DFT(ympsMulC_##t##_I);                                                          \
    };
ORV_DFT_TABLES(32f, 32fc)
ORV_DFT_TABLES(64f, 64fc)
#undef ORV_DFT_TABLES

// Real transforms of even length: the tables of both directions; false if memory ran out.
template <class R> bool put_recombinations(YmpDftSpec& spec, i32 points, Store& store);

} // namespace orv::dft::general
