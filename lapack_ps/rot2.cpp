// Reflectors of order two and three with a leading one, applied to two or three vectors of n elements:
//
//   rot2   s := (x + v*y)*tau,              x -= s,  y -= s*conj(v)
//   rot3   s := (x + v1*y + v2*z)*tau,      x -= s,  y -= s*conj(v1),  z -= s*conj(v2)
//
// summed from the left. All vectors run with unit stride: the strides are not read. n < 1 leaves them alone.
#include "frame/kernels/lapack_ps.h"
#include "frame/simd.h"

namespace orv::lapack {
namespace {

// One register of each vector, or one element.
template <class T, int others> struct Reflector {
    factor<T> tau, v[others], conjugate[others];

    template <class Load, class Store> ORV_INLINE void apply(T* x, T* const (&y)[others], Load load, Store store) const
    {
        const auto head = load(x);
        auto sum = head;
        decltype(sum) tail[others];
#pragma GCC unroll 2
        for (int i = 0; i < others; ++i) sum = sum + v[i] * (tail[i] = load(y[i]));
        const auto s = tau * sum;
        store(x, head - s);
#pragma GCC unroll 2
        for (int i = 0; i < others; ++i) store(y[i], tail[i] - conjugate[i] * s);
    }
};

template <class T, int others> void reflect(i64 n, T* x, T* (&&y)[others], const Reflector<T, others>& reflector)
{
    constexpr int lanes = vec<T>::lanes;
    const auto advance = [&](int count) {
        x += count;
        for (T*& p : y) p += count;
    };
    for (; n >= lanes; n -= lanes, advance(lanes))
        reflector.apply(
            x, y, [](const T* p) { return loadu(p); }, [](T* p, vec<T> a) { storeu(p, a); });
    with_count<lanes - 1>(n, [&]<int count>() ORV_INLINE_LAMBDA {
        reflector.apply(
            x, y, [](const T* p) { return load_first<count>(p); }, [](T* p, vec<T> a) { store_first<count>(p, a); });
    });
}

} // namespace
} // namespace orv::lapack

using namespace orv;

#define ROT2(t, T)                                                                                                     \
    ORV_EXPORT void LAPACK_PS(t##rot2)(const i64* n, T* x, const i64*, T* y, const i64*, const T* tau, const T* v)     \
    {                                                                                                                  \
        using F = factor<T>;                                                                                           \
        lapack::reflect<T, 1>(*n, x, {y}, {F(*tau), {F(*v)}, {F(conj(*v))}});                                          \
    }                                                                                                                  \
    ORV_EXPORT void LAPACK_PS(t##rot3)(const i64* n, T* x, const i64*, T* y, const i64*, T* z, const i64*,             \
                                       const T* tau, const T* v1, const T* v2)                                         \
    {                                                                                                                  \
        using F = factor<T>;                                                                                           \
        lapack::reflect<T, 2>(*n, x, {y, z}, {F(*tau), {F(*v1), F(*v2)}, {F(conj(*v1)), F(conj(*v2))}});               \
    }

ROT2(s, float)
ROT2(d, double)
ROT2(c, cpx<float>)
ROT2(z, cpx<double>)
