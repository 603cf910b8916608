// Complex transforms of any length by their records.
#include "dft/primitives/dft/call.h"
#include "dft/primitives/dft/complex.h"
#include "dft/primitives/fft.h"

namespace orv::dft::general {
namespace {

template <bool forward, class Form> i32 transform(Kind kind, Form src, Form dst, const YmpDftSpec* record, t_8u* buffer)
{
    using Names = Whole<Form, forward>;
    if (record == nullptr || src.missing() || dst.missing()) return null_pointer;
    const YmpDftSpec& spec = record_of(record);
    if (spec.id != kind) return bad_record;
    const bool scaled = forward ? spec.scale_forward : spec.scale_inverse;
    const auto norm = static_cast<typename Form::real>(spec.norm);
    const i32 n = spec.length;
    if (n <= longest_fixed) {
        if (scaled) src.pass_behind(*Bodies<Form, forward>::scaled.of[n], norm, dst);
        else src.pass(*Bodies<Form, forward>::fixed.of[n], dst);
        return ok;
    }
    const WorkArea area(spec.buffer_bytes, buffer);
    if (area.missing()) return no_memory;
    if (spec.is_pow2) return src.pass(Names::power_of_two, dst, spec.fft_spec, area.begin());
    const i32 status = run<forward>(spec, n, src, dst, area.begin());
    if (status == ok && scaled) dst.scale(norm, n);
    return status;
}

} // namespace

#define COMPLEX(Dir, forward, t)                                                                                       \
    ORV_EXPORT i32 DFT(ympsDFT##Dir##_CToC_##t)(const t_##t* src, t_##t* dst, const YmpDftSpec* spec, t_8u* buffer)    \
    {                                                                                                                  \
        return transform<forward>(Kind::C_##t, array(src), array(dst), spec, buffer);                                  \
    }                                                                                                                  \
    ORV_EXPORT i32 DFT(ympsDFTOutOrd##Dir##_CToC_##t)(const t_##t* src, t_##t* dst, const YmpDftSpec* spec,            \
                                                      t_8u* buffer)                                                    \
    {                                                                                                                  \
        return transform<forward>(Kind::OutOrd_##t, array(src), array(dst), spec, buffer);                             \
    }
COMPLEX(Fwd, true, 32fc)
COMPLEX(Inv, false, 32fc)
COMPLEX(Fwd, true, 64fc)
COMPLEX(Inv, false, 64fc)

#define SPLIT(Dir, forward, t)                                                                                         \
    ORV_EXPORT i32 DFT(ympsDFT##Dir##_CToC_##t)(const t_##t* src_re, const t_##t* src_im, t_##t* dst_re,               \
                                                t_##t* dst_im, const YmpDftSpec* spec, t_8u* buffer)                   \
    {                                                                                                                  \
        return transform<forward>(Kind::C_##t, array(src_re, src_im), array(dst_re, dst_im), spec, buffer);            \
    }
SPLIT(Fwd, true, 32f)
SPLIT(Inv, false, 32f)
SPLIT(Fwd, true, 64f)
SPLIT(Inv, false, 64f)

} // namespace orv::dft::general
