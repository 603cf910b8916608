// The register kernels by name, ?gemm_kernel_<form>_<layout>[_b0], and the ?gemm_ker? that choose among them.
//   form    0: B is packed, 1: B stands in place and is copied strip by strip
//   layout  0: the columns of C stand on 16 bytes, 1: anywhere
//   _b0     C is replaced and never read
// dgemm_ker1 is the second record of doubles: the scheme of fewer loads.
#include "blas/gemm/kernel.h"

#include "frame/kernels/blas.h"

namespace orv::gemm {
namespace {

constexpr BForm form_of(int digit) { return digit == 0 ? b_packed : b_in_place; }
constexpr TileStore accumulate(int layout) { return layout == 0 ? TileStore::add_aligned : TileStore::add; }

template <class T> using Kernel = void(const Block<T>&);

template <class T, int form, int layout, template <class, int, int> class Scheme>
constexpr Kernel<T>* accumulating = kernel<a_unit<T>, form_of(form), accumulate(layout), Scheme, T>;
template <class T, int form, template <class, int, int> class Scheme>
constexpr Kernel<T>* replacing = kernel<a_unit<T>, form_of(form), TileStore::replace, Scheme, T>;

// Panels of any height: whole ones, and a narrower one as rows left over make it. Here C may stand anywhere.
template <BForm form, TileStore store, class T> void panel_by_panel(const Block<T>& x)
{
    for_each_panel<a_unit<T>>(x.m, [&](auto rows, i64 i) {
        Block<T> y = x;
        y.m = decltype(rows)::value;
        y.a += panel_offset(i, a_unit<T>, x.a_stride, x.k);
        y.c += i;
        kernel<decltype(rows)::value, form, store, Repeating>(y);
    });
}

// Sums start at zero, so for a beta of 0 storing them is the same as adding them to a cleared C.
template <class T> bool replaces(const Block<T>& x) { return x.beta == zero<T>; }

template <class T> void ker0_pst(const Block<T>& x, i32 form)
{
    if (form == b_packed)
        replaces(x) ? panel_by_panel<b_packed, TileStore::replace>(x) : panel_by_panel<b_packed, TileStore::add>(x);
    else
        replaces(x) ? panel_by_panel<b_in_place, TileStore::replace>(x) : panel_by_panel<b_in_place, TileStore::add>(x);
}

template <class T, int form, template <class, int, int> class Scheme> Kernel<T>* select(const Block<T>& x)
{
    const bool aligned = is_aligned(x.c, vector_bytes) && x.ldc % vec<T>::lanes == 0;
    if (replaces(x)) return replacing<T, form, Scheme>;
    return aligned ? accumulating<T, form, 0, Scheme> : accumulating<T, form, 1, Scheme>;
}

// Whole panels of A through the kernel that fits, the rows left over through ker0_pst.
template <template <class, int, int> class Scheme, class T> void ker(Block<T> x, i32 form)
{
    const i64 panels = x.m / a_unit<T>;
    Kernel<T>* const selected = form == b_packed ? select<T, 0, Scheme>(x) : select<T, 1, Scheme>(x);
    if (panels > 0) selected(x);

    x.a += panels * x.a_stride;
    x.c += panels * a_unit<T>;
    x.m -= panels * a_unit<T>;
    if (x.m > 0) ker0_pst(x, form);
}

} // namespace

#define KER(symbol, T, call, ...)                                                                                      \
    ORV_EXPORT void BLAS(symbol)(const char*, const char* transb, const i64* m, const i64* n, const i64* k, const T*,  \
                                 const T* a, const i64* a_stride, const T* b, const i64* b_stride, const T* beta,      \
                                 T* c, const i64* ldc, T* scratch, [[maybe_unused]] i32 b_form)                        \
    {                                                                                                                  \
        call(Block<T>{*transb, *m, *n, *k, a, *a_stride, b, *b_stride, *beta, c, *ldc, scratch} __VA_OPT__(, )         \
                 __VA_ARGS__);                                                                                         \
    }
#define KERNEL(name, form, layout, T, scheme) KER(name##_##form##_##layout, T, (accumulating<T, form, layout, scheme>))
#define KERNEL_B0(name, form, layout, T, scheme) KER(name##_##form##_##layout##_b0, T, (replacing<T, form, scheme>))
// clang-format off
#define KERNELS(name, T, scheme)                                                                                       \
    KERNEL(name, 0, 0, T, scheme) KERNEL_B0(name, 0, 0, T, scheme)                                                     \
    KERNEL(name, 0, 1, T, scheme) KERNEL_B0(name, 0, 1, T, scheme)                                                     \
    KERNEL(name, 1, 0, T, scheme) KERNEL_B0(name, 1, 0, T, scheme)                                                     \
    KERNEL(name, 1, 1, T, scheme) KERNEL_B0(name, 1, 1, T, scheme)
// clang-format on

KERNELS(sgemm_kernel, float, Repeating)
KERNELS(dgemm_kernel, double, Repeating)
KERNELS(dgemm_ker1, double, Swapping)
KERNEL(cgemm_kernel, 0, 0, cpx<float>, Repeating)
KERNEL(cgemm_kernel, 0, 1, cpx<float>, Repeating)
KERNEL(zgemm_kernel, 0, 0, cpx<double>, Repeating)
KERNEL(zgemm_kernel, 0, 1, cpx<double>, Repeating)

KER(sgemm_ker0, float, ker<Repeating>, b_form)
KER(dgemm_ker0, double, ker<Repeating>, b_form)
KER(dgemm_ker1, double, ker<Swapping>, b_form)
KER(cgemm_ker0, cpx<float>, ker<Repeating>, b_form)
KER(zgemm_ker0, cpx<double>, ker<Repeating>, b_form)

KER(sgemm_ker0_pst, float, ker0_pst, b_form)
KER(dgemm_ker0_pst, double, ker0_pst, b_form)
KER(cgemm_ker0_pst, cpx<float>, ker0_pst, b_form)
KER(zgemm_ker0_pst, cpx<double>, ker0_pst, b_form)

} // namespace orv::gemm
