// The signal primitives: plain functions on arrays that the Fourier engines and the convolutions are built on.
//
//   ymps<operation>_<types>[_I][_Sfs]     checks its arguments, then works; returns a status
//   owns<operation>_<types>[_I][_<law>]   the work alone
//
// A type is a width in bits with u, s (integers) or f, and c behind it for complex numbers; of two types the first is
// the input's. _I works in place. Sources come first, then the destination, its length, the scale factor; constants
// stand where their array would. Lengths are 32-bit and count elements of the destination. Reals go by value, complex
// constants by pointer to the pair. With _Sfs (_ISfs in place) a result is multiplied by 2^-factor, rounded to nearest
// with ties to even, and saturated. Workers know the factor's class:
//
//   (none) 0    _1Sfs 1    _PosSfs above 1    _NegSfs below 0, passed with its sign
//   _Bound so far below 0 that whatever is not zero saturates
#pragma once

#include "frame/kernels/prototype.h"

#define DFT(name) ORV_KERNEL(dft, name)

namespace orv::kernels::dft {

enum Status : i32 {
    ok = 0,
    bad_size = -6,
    null_pointer = -8,
    no_memory = -9,
    bad_order = -15,
    bad_flag = -16,
    bad_record = -17,
    bad_algorithm = -228
};

// The types of the names.
using t_8u = std::uint8_t;
using t_16u = std::uint16_t;
using t_32u = std::uint32_t;
using t_8s = std::int8_t;
using t_16s = std::int16_t;
using t_32s = i32;
using t_64s = i64;
using t_32f = float;
using t_64f = double;
using t_8sc = cpx<t_8s>;
using t_16sc = cpx<t_16s>;
using t_32sc = cpx<t_32s>;
using t_64sc = cpx<t_64s>;
using t_32fc = cpx<t_32f>;
using t_64fc = cpx<t_64f>;

// How a constant travels.
template <class T> using constant = std::conditional_t<is_complex<T>, const T*, T>;

// What operations look like. F: the scale factor, if there is one.
template <class T> using Allocation = T*(i32 count);
template <class T, class... F> using OnOne = i32(T* dst, i32 n, F...);
template <class T> using Filling = i32(constant<T> value, T* dst, i32 n);
template <class S, class T, class... F> using OneToOne = i32(const S* src, T* dst, i32 n, F...);
template <class T, class... F> using TwoToOne = i32(const T* a, const T* b, T* dst, i32 n, F...);
template <class T> using ThreeToOne = i32(const T* a, const T* b, const T* c, T* dst, i32 n);
template <class S, class T, class... F> using ByConstant = i32(const S* src, constant<S> c, T* dst, i32 n, F...);
template <class T, class... F> using ByConstantInPlace = i32(constant<T> c, T* srcdst, i32 n, F...);
template <class T> using Convolution = i32(const T* a, i32 n, const T* b, i32 m, T* dst);
template <class T> using Sort = i32(T* data, T* temp, i32 n);
template <class T> using IndexSort = i32(const T* keys, i32 key_stride, i32* index, i32* temp, i32 n);

// The same without a status.
template <class F> struct without_status;
template <class... A> struct without_status<i32(A...)> {
    using type = void(A...);
};
template <class F> using Work = typename without_status<F>::type;

// What stands alone.
using Free = void(void* block);
using ClearBytes = void(t_8u* dst, i64 bytes); // in 64 bits: a count of elements may be as large as 32 bits hold
using CopyBytes = void(const t_8u* src, t_8u* dst, i64 bytes);
using ScaledConvolution = i32(const t_16s* a, i32 n, const t_16s* b, i32 m, t_16s* dst, i32 factor);
using ConvolveGetBufferSize = i32(i32 n, i32 m, i32 type, i32 algorithm, i32* bytes);
template <class T> using Convolve = i32(const T* a, i32 n, const T* b, i32 m, T* dst, i32 algorithm, t_8u* buffer);
template <class X, class H, class T, class... F> using Cyclic = i32(const X* x, const H* h, T* dst, F...);
using Logarithm = t_64f(t_64f x);
template <class T, class R> using SumOfLogarithms = R(const T* src, i32 n);

} // namespace orv::kernels::dft

// The types of each family.
#define ORV_DFT_ALLOCATED(X)                                                                                           \
    X(8u) X(16u) X(32u) X(8s) X(16s) X(32s) X(64s) X(32f) X(64f) X(8sc) X(16sc) X(32sc) X(64sc) X(32fc) X(64fc)
#define ORV_DFT_FILLED(X) X(8u) X(16s) X(16sc) X(32s) X(32sc) X(64s) X(64sc) X(32f) X(32fc) X(64f) X(64fc)
#define ORV_DFT_CONJUGATED(X) X(16sc) X(32fc) X(64fc)
#define ORV_DFT_FLOATING(X) X(32f) X(64f) X(32fc) X(64fc)
#define ORV_DFT_REAL(X) X(32f) X(64f)
#define ORV_DFT_SCALED(X) X(8u) X(16s) X(32s) X(16sc) X(32sc)
#define ORV_DFT_SORTED_BY_INDEX(X) X(8u) X(16u) X(16s) X(32s) X(32u) X(32f)
#define ORV_DFT_SORTED(X) ORV_DFT_SORTED_BY_INDEX(X) X(64f)

namespace orv::kernels::dft {

#define ORV_NAME(name, ...) ORV_PROTOTYPE(dft, name, name, __VA_ARGS__)
#include "frame/kernels/dft_primitives.def"
#undef ORV_NAME

} // namespace orv::kernels::dft

namespace orv::dft {
using namespace kernels::dft;
}
