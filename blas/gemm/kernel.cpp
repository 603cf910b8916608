// The register kernels by name, ?gemm_kernel_<form>_<layout>[_b0], and the ?gemm_ker? that choose among them.
//   form    0: B is packed, 1: B stands in place and is copied strip by strip
//   layout  0: the columns of C stand on 16 bytes, 1: anywhere
//   _b0     C is replaced and never read
#include "blas/gemm/kernel.h"

#include "frame/symbol.h"

namespace orv::gemm {
namespace {

constexpr BForm form_of(int digit) { return digit == 0 ? b_packed : b_in_place; }
constexpr Update accumulate(int layout) { return layout == 0 ? Update::add_aligned : Update::add; }

template <class T> using Kernel = void(const Block<T>&);

template <class T, int form, int layout, Schedule schedule>
constexpr Kernel<T>* accumulating = kernel<a_unit<T>, form_of(form), accumulate(layout), schedule, T>;
template <class T, int form, Schedule schedule>
constexpr Kernel<T>* replacing = kernel<a_unit<T>, form_of(form), Update::replace, schedule, T>;

// Rows left over, m of them, as the one narrower panel behind the whole ones. Here C may stand anywhere.
template <BForm form, Update update, class T> void leftover_rows(const Block<T>& x)
{
    constexpr Schedule schedule = Schedule::interleaved;
    for_each_panel<a_unit<T>>(x.m, [&](auto rows, i64) { kernel<decltype(rows)::value, form, update, schedule>(x); });
}

// Complex kernels have no form that replaces C: they add to a C that beta has cleared.
template <class T> bool replaces(const Block<T>& x) { return !is_complex<T> && x.beta == zero<T>; }

template <class T> void ker0_pst(const Block<T>& x, i32 form)
{
    if (form == b_packed)
        replaces(x) ? leftover_rows<b_packed, Update::replace>(x) : leftover_rows<b_packed, Update::add>(x);
    else replaces(x) ? leftover_rows<b_in_place, Update::replace>(x) : leftover_rows<b_in_place, Update::add>(x);
}

template <class T, int form, Schedule schedule> Kernel<T>* select(const Block<T>& x)
{
    const bool aligned = is_aligned(x.c, vector_bytes) && x.ldc % vec<T>::lanes == 0;
    if (replaces(x)) return replacing<T, form, schedule>;
    return aligned ? accumulating<T, form, 0, schedule> : accumulating<T, form, 1, schedule>;
}

// Whole panels of A through the kernel that fits, the rows left over through ker0_pst.
template <Schedule schedule, class T> void ker(Block<T> x, i32 form)
{
    Kernel<T>* const selected = form == b_packed ? select<T, 0, schedule>(x) : select<T, 1, schedule>(x);
    selected(x);

    const i64 panels = x.m / a_unit<T>;
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
#define KERNEL(name, form, layout, T, schedule)                                                                        \
    KER(name##_##form##_##layout, T, (accumulating<T, form, layout, Schedule::schedule>))
#define KERNEL_B0(name, form, layout, T, schedule)                                                                     \
    KER(name##_##form##_##layout##_b0, T, (replacing<T, form, Schedule::schedule>))
#define KERNELS(name, T, schedule)                                                                                     \
    KERNEL(name, 0, 0, T, schedule)                                                                                    \
    KERNEL_B0(name, 0, 0, T, schedule)                                                                                 \
    KERNEL(name, 0, 1, T, schedule) KERNEL_B0(name, 0, 1, T, schedule) KERNEL(name, 1, 0, T, schedule)                 \
        KERNEL_B0(name, 1, 0, T, schedule) KERNEL(name, 1, 1, T, schedule) KERNEL_B0(name, 1, 1, T, schedule)

KERNELS(sgemm_kernel, float, interleaved)
KERNELS(dgemm_kernel, double, interleaved)
KERNELS(dgemm_ker1, double, loads_first)
KERNEL(cgemm_kernel, 0, 0, cpx<float>, interleaved)
KERNEL(cgemm_kernel, 0, 1, cpx<float>, interleaved)
KERNEL(zgemm_kernel, 0, 0, cpx<double>, interleaved)
KERNEL(zgemm_kernel, 0, 1, cpx<double>, interleaved)

KER(sgemm_ker0, float, ker<Schedule::interleaved>, b_form)
KER(dgemm_ker0, double, ker<Schedule::interleaved>, b_form)
KER(dgemm_ker1, double, ker<Schedule::loads_first>, b_form)
KER(cgemm_ker0, cpx<float>, ker<Schedule::interleaved>, b_form)
KER(zgemm_ker0, cpx<double>, ker<Schedule::interleaved>, b_form)

KER(sgemm_ker0_pst, float, ker0_pst, b_form)
KER(dgemm_ker0_pst, double, ker0_pst, b_form)
KER(cgemm_ker0_pst, cpx<float>, ker0_pst, b_form)
KER(zgemm_ker0_pst, cpx<double>, ker0_pst, b_form)

} // namespace orv::gemm
