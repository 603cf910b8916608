// Records as the transforms meet them: what is refused, and the work area.
#pragma once

#include "dft/primitives/fft/plan.h"

namespace orv::dft {

using Kind = YmpFftSpec::Kind;

// The kernels of up to 2^fixed_limit points, by order. scale: _ or _scale_.
#define ORV_DFT_FIXED_KERNELS(form, direction, scale, t)                                                               \
    {                                                                                                                  \
        DFT(ymps_##form##FFT_1##scale##t), DFT(ymps_##form##FFT_2##scale##t),                                          \
            DFT(ymps_##form##FFT##direction##_4##scale##t), DFT(ymps_##form##FFT##direction##_8##scale##t),            \
            DFT(ymps_##form##FFT##direction##_16##scale##t), DFT(ymps_##form##FFT##direction##_32##scale##t)           \
    }

template <class... P> Status refusal_of(const YmpFftSpec* spec, Kind kind, const P*... pointers)
{
    if (!spec || ((pointers == nullptr) || ...)) return null_pointer;
    return spec->id == kind ? ok : bad_record;
}

// The caller's buffer, wherever it stands, or one for the time of a call.
class WorkArea {
public:
    WorkArea(const YmpFftSpec& spec, t_8u* buffer) : memory_(buffer)
    {
        if (buffer || spec.buffer_bytes < 1) return;
        memory_ = own_ = DFT(ympsMalloc_8u)(spec.buffer_bytes);
        missing_ = !own_;
    }
    WorkArea(const WorkArea&) = delete;
    WorkArea& operator=(const WorkArea&) = delete;
    ~WorkArea()
    {
        if (own_) DFT(ympsFree)(own_);
    }
    bool missing() const { return missing_; }
    template <class T> T* as() const { return reinterpret_cast<T*>(memory_); }

private:
    t_8u *memory_, *own_ = nullptr;
    bool missing_ = false;
};

// The division of a direction, as a pass of its own.
inline void multiply(t_32f* data, i64 count, t_64f by)
{
    DFT(ympsMulC_32f_I)(static_cast<t_32f>(by), data, static_cast<i32>(count));
}
inline void multiply(t_64f* data, i64 count, t_64f by) { DFT(ympsMulC_64f_I)(by, data, static_cast<i32>(count)); }

template <bool forward> bool divides(const YmpFftSpec& spec)
{
    return forward ? spec.scale_forward : spec.scale_inverse;
}

} // namespace orv::dft
