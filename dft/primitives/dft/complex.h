// Complex transforms that are no powers of two, whichever way the record goes.
#pragma once

#include "dft/primitives/dft/plan.h"

namespace orv::dft::general {

// Whole transforms of one form and direction, by name. Split arrays are never out of order.
template <class Form, bool forward> struct Whole;
#define ORV_DFT_WHOLE(Form, form, Dir, forward, t, out)                                                                \
    template <> struct Whole<Form, forward> {                                                                          \
        static constexpr auto& power_of_two = DFT(ympsFFT##Dir##_CToC_##t);                                            \
        static constexpr auto& by_factors = DFT(owns##form##Dft##Dir##_PrimeFact_##t);                                 \
        static constexpr auto& out_of_order = DFT(owns##form##Dft##Dir##_##out##_##t);                                 \
        static constexpr auto& direct = DFT(owns##form##Dft_Dir_##t);                                                  \
        static constexpr auto& convolution = DFT(owns##form##Dft_Conv_##t);                                            \
    };
ORV_DFT_WHOLE(Interleaved<float>, c, Fwd, true, 32fc, OutOrd)
ORV_DFT_WHOLE(Interleaved<float>, c, Inv, false, 32fc, OutOrd)
ORV_DFT_WHOLE(Interleaved<double>, c, Fwd, true, 64fc, OutOrd)
ORV_DFT_WHOLE(Interleaved<double>, c, Inv, false, 64fc, OutOrd)
ORV_DFT_WHOLE(Split<float>, cr, Fwd, true, 32f, PrimeFact)
ORV_DFT_WHOLE(Split<float>, cr, Inv, false, 32f, PrimeFact)
ORV_DFT_WHOLE(Split<double>, cr, Fwd, true, 64f, PrimeFact)
ORV_DFT_WHOLE(Split<double>, cr, Inv, false, 64f, PrimeFact)
#undef ORV_DFT_WHOLE

// Without scale. n: the points of the transform, which are the record's length or half of it.
template <bool forward, class Form> i32 run(const YmpDftSpec& spec, i32 n, Form src, Form dst, t_8u* work)
{
    using Names = Whole<Form, forward>;
    constexpr i32 sign = forward ? 1 : -1;
    if (n <= longest_fixed) return src.pass(*Bodies<Form, forward>::fixed.of[n], dst), ok;
    if (spec.prime_fact)
        return src.pass_behind(spec.out_of_order ? Names::out_of_order : Names::by_factors, &spec, dst, work), ok;
    if (spec.conv_length == 0) return src.pass(Names::direct, dst, n, sign, spec.direct_table, work), ok;
    return src.pass_behind(Names::convolution, &spec, dst, n, sign, work);
}

} // namespace orv::dft::general
