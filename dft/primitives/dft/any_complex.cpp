// The stages of complex transforms for radixes without a body of their own.
#include "dft/primitives/dft/any_radix.h"
#include "dft/primitives/dft/kernels.h"

namespace orv::dft::general {
namespace {

template <bool forward, class Form> void transform(Form src, Form dst, i32 r, i64 stride, const void* table, t_8u* work)
{
    any_prime<forward>(
        r, RadixTable<typename Form::real>(table, r), work,
        [=](i64 j) ORV_INLINE_LAMBDA { return src.template get<1>(j * stride); },
        [=](i64 k, auto x) ORV_INLINE_LAMBDA { dst.template put<1>(k, x); });
}

template <bool forward, class Form, class R = typename Form::real>
void join_block(Form src, Form dst, i32 r, i64 count, const R* twiddles, const void* table, t_8u* work)
{
    any_columns<forward, Decimation::in_time, R>(Rows<Form>{src, count}, Rows<Form>{dst, count}, r, 0, count, twiddles,
                                                 {table, r}, work);
}

} // namespace

#define ANY(Dir, forward, t)                                                                                           \
    ORV_EXPORT void DFT(ownscDft##Dir##_Prime_##t)(const t_##t* src, t_##t* dst, i32 radix, i32 stride,                \
                                                   const void* table, t_8u* work)                                      \
    {                                                                                                                  \
        transform<forward>(array(src), array(dst), radix, stride, table, work);                                        \
    }                                                                                                                  \
    ORV_EXPORT void DFT(ownscDft##Dir##_Fact_##t)(const t_##t* src, t_##t* dst, i32 radix, i32 count,                  \
                                                  const real_t<t_##t>* twiddles, const void* table, t_8u* work)        \
    {                                                                                                                  \
        join_block<forward>(array(src), array(dst), radix, count, twiddles, table, work);                              \
    }
#define ANY_PAIRS(t) ANY(Fwd, true, t) ANY(Inv, false, t)
ORV_DFT_PAIRS(ANY_PAIRS)

// With the parts exchanged, forward is inverse.
#define ANY_SPLIT(t)                                                                                                   \
    ORV_EXPORT void DFT(ownscrDftFwd_Prime_##t)(const t_##t* src_re, const t_##t* src_im, t_##t* dst_re,               \
                                                t_##t* dst_im, i32 radix, i32 stride, const void* table, t_8u* work)   \
    {                                                                                                                  \
        transform<true>(array(src_re, src_im), array(dst_re, dst_im), radix, stride, table, work);                     \
    }                                                                                                                  \
    ORV_EXPORT void DFT(ownscrDftFwd_Fact_##t)(const t_##t* src_re, const t_##t* src_im, t_##t* dst_re, t_##t* dst_im, \
                                               i32 radix, i32 count, const t_##t* twiddles, const void* table,         \
                                               t_8u* work)                                                             \
    {                                                                                                                  \
        join_block<true>(array(src_re, src_im), array(dst_re, dst_im), radix, count, twiddles, table, work);           \
    }                                                                                                                  \
    ORV_EXPORT void DFT(ownscrDftInv_Prime_##t)(const t_##t* src_re, const t_##t* src_im, t_##t* dst_re,               \
                                                t_##t* dst_im, i32 radix, i32 stride, const void* table, t_8u* work)   \
    {                                                                                                                  \
        DFT(ownscrDftFwd_Prime_##t)(src_im, src_re, dst_im, dst_re, radix, stride, table, work);                       \
    }                                                                                                                  \
    ORV_EXPORT void DFT(ownscrDftInv_Fact_##t)(const t_##t* src_re, const t_##t* src_im, t_##t* dst_re, t_##t* dst_im, \
                                               i32 radix, i32 count, const t_##t* twiddles, const void* table,         \
                                               t_8u* work)                                                             \
    {                                                                                                                  \
        DFT(ownscrDftFwd_Fact_##t)(src_im, src_re, dst_im, dst_re, radix, count, twiddles, table, work);               \
    }
ORV_DFT_REAL(ANY_SPLIT)

} // namespace orv::dft::general
