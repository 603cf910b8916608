// The direct sum of a linear convolution, and cyclic convolutions of fixed small lengths: dst[k] is the sum of
// x[i]*h[(k - i) mod length], from i = 0 on.
#include "dft/primitives/conv_direct.h"
#include "dft/primitives/operations.h"
#include "dft/primitives/scale.h"

namespace orv::dft {
namespace {

template <int length, class Sum, class X, class H, class T, class Finish>
ORV_INLINE void convolve_cyclic(const X* x, const H* h, T* dst, Finish finish)
{
    T results[length]; // dst may be an input
    for (int k = 0; k < length; ++k) {
        Sum sum{};
        for (int i = 0; i < length; ++i) sum += x[i] * h[(k - i) & (length - 1)];
        results[k] = finish(sum);
    }
    for (int k = 0; k < length; ++k) dst[k] = results[k];
}

void cyclic8x8_32f(const t_32f* x, const t_32f* h, t_32f* dst)
{
    convolve_cyclic<8, t_32f>(x, h, dst, [](t_32f sum) { return sum; });
}
void cyclic4x4_32f32fc(const t_32f* x, const t_32fc* h, t_32fc* dst)
{
    convolve_cyclic<4, t_32fc>(x, h, dst, [](t_32fc sum) { return sum; });
}

void cyclic8x8_16s(const t_16s* x, const t_16s* h, t_16s* dst, i32 factor)
{
    convolve_cyclic<8, i64>(x, h, dst, [=](i64 sum) { return scaled_number<t_16s>(sum, factor); });
}
i32 checked_cyclic8x8_16s(const t_16s* x, const t_16s* h, t_16s* dst, i32 factor)
{
    if (!x || !h || !dst) return null_pointer;
    cyclic8x8_16s(x, h, dst, factor);
    return ok;
}

} // namespace

PRIMITIVE(5, ownConv_32f, add_convolution)
PRIMITIVE(5, ownConv_64f, add_convolution)
PRIMITIVE(3, ownConvCyclic8x8_32f, cyclic8x8_32f)
PRIMITIVE(3, ownConvCyclic4x4_32f32fc, cyclic4x4_32f32fc)
PRIMITIVE(4, ownConvCyclic8x8_16s_Sfs, cyclic8x8_16s)
PRIMITIVE(4, ympsConvCyclic8x8_16s_Sfs, checked_cyclic8x8_16s)

} // namespace orv::dft
