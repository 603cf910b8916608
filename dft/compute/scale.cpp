// Factors and plain copies of strided elements; elements are of one type, pairs times a real.
#include "dft/compute/lines.h"
#include "frame/simd.h"

using namespace orv;
using namespace orv::dft;

namespace {

template <class R> void scale_reals(i64 n, R factor, R* data)
{
    const vec<R> by = splat(factor);
    each<R, 4, 1>(
        n,
        [&]<class Count>(i64 i, Count count) ORV_INLINE_LAMBDA {
            for (int k = 0; k < count; ++k) {
                R* const at = data + i + k * vec<R>::lanes;
                storeu(at, loadu(at) * by);
            }
        },
        [&](i64 i) { data[i] *= factor; });
}

template <class T> void scale(i64 n, real_t<T> factor, T* data, i64 stride)
{
    if (stride == 1) return scale_reals(n * reals<T>, factor, reinterpret_cast<real_t<T>*>(data));
    for (i64 i = 0; i < n; ++i)
        if constexpr (is_complex<T>) data[i * stride] = factor * data[i * stride];
        else data[i * stride] *= factor;
}

template <class T> void copy_strided(i64 n, const T* src, i64 src_stride, T* dst, i64 dst_stride)
{
    if (src_stride == 1 && dst_stride == 1) return copy(src, dst, n);
    for (i64 i = 0; i < n; ++i) dst[i * dst_stride] = src[i * src_stride];
}

} // namespace

#define SCALE(name, t, T)                                                                                              \
    ORV_EXPORT void DFT(name)(i64 n, real_t<T> factor, T * data, i64 stride) { scale(n, factor, data, stride); }       \
    ORV_EXPORT void DFT(dft_##t##copy)(i64 n, const T* src, i64 src_stride, T* dst, i64 dst_stride)                    \
    {                                                                                                                  \
        copy_strided(n, src, src_stride, dst, dst_stride);                                                             \
    }
SCALE(dft_sscal, s, float)
SCALE(dft_dscal, d, double)
SCALE(dft_csscal, c, cpx<float>)
SCALE(dft_zdscal, z, cpx<double>)

ORV_EXPORT void DFT(scal_ss)(i64 n, float factor, float* re, float* im)
{
    scale_reals(n, factor, re);
    scale_reals(n, factor, im);
}
ORV_EXPORT void DFT(scal_dd)(i64 n, double factor, double* re, double* im)
{
    scale_reals(n, factor, re);
    scale_reals(n, factor, im);
}
