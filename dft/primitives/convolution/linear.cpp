// Linear convolution of floats: with memory of the core's, or with a buffer that the caller brings.
#include "dft/primitives/convolution/linear.h"

namespace orv::dft {
namespace {

Status refusal(const void* a, i32 n, const void* b, i32 m, const void* dst)
{
    if (!a || !b || !dst) return null_pointer;
    return n < 1 || m < 1 ? bad_size : ok;
}

// The longer input comes first.
template <class T> i32 convolve_all(const T* a, i32 n, const T* b, i32 m, T* dst)
{
    if (const Status s = refusal(a, n, b, m, dst)) return s;
    if (n < m) return convolve_all(b, m, a, n, dst);
    const ConvolutionPlan plan = plan_convolution(n, m);
    WorkArea<T> area;
    i64 bytes;
    if (const i32 status = size_work_area(plan, area, bytes)) return status;
    const Block work(bytes);
    if (bytes > 0 && !work.memory) return no_memory;
    return convolve(plan, area, a, i64{n}, b, i64{m}, dst, work.memory);
}

template <class T> i32 convolve_in_buffer(const T* a, i32 n, const T* b, i32 m, T* dst, i32 algorithm, t_8u* buffer)
{
    if (const Status s = refusal(a, n, b, m, dst)) return s;
    if (!is_algorithm(algorithm)) return bad_algorithm;
    if (n < m) return convolve_in_buffer(b, m, a, n, dst, algorithm, buffer);
    const ConvolutionPlan plan = plan_convolution(n, m, algorithm_of(algorithm));
    WorkArea<T> area;
    i64 bytes;
    if (const i32 status = size_work_area(plan, area, bytes)) return status;
    if (bytes > 0 && !buffer) return null_pointer;
    return convolve(plan, area, a, i64{n}, b, i64{m}, dst, buffer);
}

template <class T> i32 buffer_size(const ConvolutionPlan& plan, i32* bytes)
{
    WorkArea<T> area;
    i64 needed;
    if (const i32 status = size_work_area(plan, area, needed)) return status;
    if (needed > INT32_MAX) return bad_size;
    *bytes = static_cast<i32>(needed);
    return ok;
}

i32 get_buffer_size(i32 n, i32 m, i32 type, i32 algorithm, i32* bytes)
{
    constexpr i32 type_32f = 13, type_64f = 19;
    if (!bytes) return null_pointer;
    if (n < 1 || m < 1) return bad_size;
    if (!is_algorithm(algorithm)) return bad_algorithm;
    const ConvolutionPlan plan = plan_convolution(max(n, m), min(n, m), algorithm_of(algorithm));
    if (type == type_32f) return buffer_size<t_32f>(plan, bytes);
    if (type == type_64f) return buffer_size<t_64f>(plan, bytes);
    return bad_flag;
}

} // namespace

#define CONVOLVE(t)                                                                                                    \
    PRIMITIVE(5, ympsConv_##t, convolve_all)                                                                           \
    PRIMITIVE(7, ympsConvolve_##t, convolve_in_buffer)
ORV_DFT_REAL(CONVOLVE)
PRIMITIVE(5, ympsConvolveGetBufferSize, get_buffer_size)

} // namespace orv::dft
