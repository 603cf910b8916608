// What the files of this folder give to each other.
#pragma once

#include "frame/kernels/dft_node.h"
#include "frame/kernels/pdett.h"

namespace orv::pdett {

using namespace kernels::pdett;
using imports::Handle;

// The layer of Fourier transforms, by element type.
template <class T> struct Layer;
template <> struct Layer<float> {
    static constexpr auto create = orv_dft_dfti_create_descriptor_s_1d;
    static constexpr auto forward = orv_dft_dfti_compute_forward_s, backward = orv_dft_dfti_compute_backward_s;
    static constexpr i32 precision = kernels::dft::CFG_SINGLE;
};
template <> struct Layer<double> {
    static constexpr auto create = orv_dft_dfti_create_descriptor_d_1d;
    static constexpr auto forward = orv_dft_dfti_compute_forward_d, backward = orv_dft_dfti_compute_backward_d;
    static constexpr i32 precision = kernels::dft::CFG_DOUBLE;
};

// What should be zero at the ends may be off by so much for each of n points.
template <class T> inline constexpr T tolerance = 0;
template <> inline constexpr float tolerance<float> = 1e-05F;
template <> inline constexpr double tolerance<double> = 1e-12;

template <class T> void fill_tables(i64 kind, i64 n, T* table);

// A diagnostic, in the language that ipar names, unless its class is silent. The text is null for those without one.
template <class T> void diagnose(Diagnostic code, const i64* ipar, const T* dpar, const char* text);

// One transform, each result multiplied by scale; what the Fourier transform returns.
template <class T> struct Job {
    T* f;
    i64 n;
    const T* table;
    T scale;
    Handle handle;
};
template <class T> using Routine = i64(const Job<T>&);
template <class T> Routine<T> whole_sine;
template <class T> Routine<T> whole_cosine;
template <class T> Routine<T> staggered_cosine_forward;
template <class T> Routine<T> staggered_cosine_backward;
template <class T> Routine<T> staggered_sine_forward;
template <class T> Routine<T> staggered_sine_backward;
template <class T> Routine<T> staggered2_cosine_forward;
template <class T> Routine<T> staggered2_cosine_backward;
template <class T> Routine<T> staggered2_sine_forward;
template <class T> Routine<T> staggered2_sine_backward;

// A job by its routine; 0, or what a failed Fourier transform leaves in stat, which is then told. A size that was lost
// is no work.
template <class T> i64 run_routine(Routine<T>* routine, const Job<T>& job, const i64* ipar, i64* stat)
{
    const i64 status = job.n > 0 ? routine(job) : 0;
    if (status == 0) return good;
    diagnose<T>(transform_layer, ipar, nullptr, orv_dft_dfti_error_message_external(status));
    return *stat = transform_failed;
}

} // namespace orv::pdett

// A routine's exported names, one a precision.
#define ORV_PDETT_ROUTINE(name, routine)                                                                               \
    ORV_PDETT_ROUTINE_OF(sptk_dft_##name, float, routine)                                                              \
    ORV_PDETT_ROUTINE_OF(dptk_dft_##name, double, routine)
#define ORV_PDETT_ROUTINE_OF(name, T, routine)                                                                         \
    template orv::i64 orv::pdett::routine(const Job<T>&);                                                              \
    ORV_EXPORT orv::i64 PDETT(name)(T * f, orv::imports::Handle * handle, const orv::i64* ipar, const T* table,        \
                                    orv::i64* stat)                                                                    \
    {                                                                                                                  \
        using namespace orv::pdett;                                                                                    \
        return run_routine<T>(routine<T>, {f, ipar[ipar_n], table, 1, *handle}, ipar, stat);                           \
    }
