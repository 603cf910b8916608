// The stages of complex transforms with a radix of their own, in the order of frequencies and out of it.
#include "dft/primitives/dft/kernels.h"
#include "dft/primitives/dft/stages.h"

namespace orv::dft::general {

#define PRIME(r, Dir, forward, t)                                                                                      \
    ORV_EXPORT void DFT(ownscDft##Dir##_Prime##r##_##t)(const t_##t* src, t_##t* dst, i32 stride, i32 number,          \
                                                        const i32* starts)                                             \
    {                                                                                                                  \
        transforms<r, forward>(array(src), array(dst), stride, number,                                                 \
                               [starts](i64 b) ORV_INLINE_LAMBDA { return i64{starts[b]}; });                          \
    }
#define FACT(r, Dir, forward, t)                                                                                       \
    ORV_EXPORT void DFT(ownscDft##Dir##_Fact##r##_##t)(const t_##t* src, t_##t* dst, i32 count, i32 blocks,            \
                                                       const real_t<t_##t>* twiddles)                                  \
    {                                                                                                                  \
        join<r, forward, Decimation::in_time>(array(src), array(dst), count, blocks, twiddles);                        \
    }
#define DIRECTION(Dir, forward, t)                                                                                     \
    ORV_DFT_PRIMES(PRIME, Dir, forward, t)                                                                             \
    ORV_DFT_FACTS(FACT, Dir, forward, t)

// Out of order, input and output of the shortest transforms are both behind one another. The inverse undoes what the
// forward direction does in reverse, which is an inverse decimated in time.
#define OUT_OF_ORDER_PRIME(r, Dir, forward, t)                                                                         \
    ORV_EXPORT void DFT(ownscDftOutOrd##Dir##_Prime##r##_##t)(const t_##t* src, t_##t* dst, i32 number)                \
    {                                                                                                                  \
        transforms<r, forward>(array(src), array(dst), 1, number, [](i64 b) ORV_INLINE_LAMBDA { return r * b; });      \
    }
#define OUT_OF_ORDER_FORWARD(r, t)                                                                                     \
    ORV_EXPORT void DFT(ownscDftOutOrdFwd_Fact##r##_##t)(const t_##t* src, t_##t* dst, i32 count, i32 blocks,          \
                                                         const real_t<t_##t>* twiddles)                                \
    {                                                                                                                  \
        join<r, true, Decimation::in_frequency>(array(src), array(dst), count, blocks, twiddles);                      \
    }
#define OUT_OF_ORDER_INVERSE(r, t)                                                                                     \
    ORV_EXPORT void DFT(ownscDftOutOrdInv_Fact##r##_##t)(const t_##t* src, t_##t* dst, i32 count, i32 blocks,          \
                                                         const real_t<t_##t>* twiddles)                                \
    {                                                                                                                  \
        DFT(ownscDftInv_Fact##r##_##t)(src, dst, count, blocks, twiddles);                                             \
    }
#define STAGES(t)                                                                                                      \
    DIRECTION(Fwd, true, t)                                                                                            \
    DIRECTION(Inv, false, t)                                                                                           \
    ORV_DFT_ODD_RADIXES(OUT_OF_ORDER_PRIME, Fwd, true, t)                                                              \
    ORV_DFT_ODD_RADIXES(OUT_OF_ORDER_PRIME, Inv, false, t)                                                             \
    ORV_DFT_FACTS(OUT_OF_ORDER_FORWARD, t)                                                                             \
    ORV_DFT_FACTS(OUT_OF_ORDER_INVERSE, t)
ORV_DFT_PAIRS(STAGES)

} // namespace orv::dft::general
