// The life of a transform: its arrays are filled, it is committed, runs forward and backward, and is freed. All
// arguments come by address, as in Fortran; all state is in ipar and dpar, which belong to the caller, and in the
// descriptor of a Fourier transform behind the handle. What operations leave in stat they leave in ipar, too, and where
// that is not 0 the next one refuses to work until the caller has cleared it: also after a commit that only warned.
#include "pde/trig/trig.h"

#include <cstdio>

namespace orv::pdett {
namespace {

void leave(i64 status, i64* ipar, i64* stat) { *stat = ipar[ipar_status] = status; }

// The result of an operation that cannot go on.
template <class T> i64 refuse(Diagnostic code, i64 status, const i64* ipar, const T* dpar)
{
    diagnose(code, ipar, dpar, nullptr);
    return status;
}

template <class T> void init(i64 n, i64 kind, i64* ipar, T* dpar, i64* stat)
{
    ipar[ipar_n] = n;
    ipar[ipar_kind] = kind;
    ipar[ipar_errors] = ipar[ipar_warnings] = 1;
    ipar[ipar_tables] = ipar[ipar_language] = ipar[ipar_threads] = 1;
    ipar[ipar_raw] = 0;
    dpar[dpar_tolerance] = static_cast<T>(n) * tolerance<T>;
    leave(good, ipar, stat);
}

// ---- Commit

// Ends that a kind takes as zero, with the diagnostics of those that are not.
struct End {
    Kind kind;
    bool last;
    Diagnostic code;
};
constexpr End ends[] = {{sine, false, sine_first_not_zero},
                        {sine, true, sine_last_not_zero},
                        {staggered_cosine, true, cosine_last_not_zero},
                        {staggered_sine, false, staggered_first_not_zero}};

template <class T> i64 check_ends(const T* f, const i64* ipar, const T* dpar)
{
    i64 warned = 0;
    for (const End& end : ends) {
        if (end.kind != ipar[ipar_kind]) continue;
        const T value = f[end.last ? ipar[ipar_n] : 0];
        if (!(magnitude(value) > dpar[dpar_tolerance])) continue;
        char text[32];
        std::sprintf(text, "%e", static_cast<double>(value));
        diagnose(end.code, ipar, dpar, text);
        warned = warned_of_ends;
    }
    return warned;
}

bool has_ends(i64 kind) { return kind == sine || kind == staggered_cosine || kind == staggered_sine; }

template <class T> i64 make_descriptor(Handle* handle, const i64* ipar)
{
    i64 status = Layer<T>::create(handle, Layer<T>::precision, kernels::dft::CFG_DOMAIN_REAL, 1, ipar[ipar_n]);
    if (status != 0) return status;
    status = orv_dft_dfti_set_value_intval(*handle, imports::dfti_packed_format, kernels::dft::CFG_PERM);
    if (status == 0 && ipar[ipar_threads] > 1)
        status = orv_dft_dfti_set_value_intval(*handle, imports::dfti_number_of_user_threads, ipar[ipar_threads]);
    if (status == 0) status = orv_dft_dfti_commit_descriptor_external(*handle);
    if (status != 0) orv_dft_dfti_free_descriptor_external(handle);
    return status;
}

template <class T> i64 commit(const T* f, Handle* handle, i64* ipar, T* dpar)
{
    const i64 n = ipar[ipar_n], kind = ipar[ipar_kind];
    if (ipar[ipar_status] != good) return refuse(commit_not_ready, not_ready, ipar, dpar);
    if (n < 2) return refuse(size_below_2, bad_size_or_kind, ipar, dpar);
    if (kind < 0 || kind >= kinds) return refuse(unknown_kind, bad_size_or_kind, ipar, dpar);

    i64 warnings = 0, corrections = 0;
    if (has_ends(kind)) {
        if (dpar[dpar_tolerance] < 0) {
            diagnose(negative_tolerance, ipar, dpar, nullptr);
            dpar[dpar_tolerance] = static_cast<T>(n) * tolerance<T>;
            corrections = warned_of_correction;
        }
        if (ipar[ipar_raw] == 0) warnings = check_ends(f, ipar, dpar);
    }
    if (ipar[ipar_tables] != 0) fill_tables(kind, n, dpar + dpar_tables);
    if (ipar[ipar_threads] < 0) {
        diagnose(negative_threads, ipar, dpar, nullptr);
        ipar[ipar_threads] = 1;
        corrections = warned_of_correction;
    }
    if (ipar[ipar_tables] != 0) {
        if (const i64 status = make_descriptor<T>(handle, ipar)) {
            diagnose(transform_layer, ipar, dpar, orv_dft_dfti_error_message_external(status));
            return transform_failed;
        }
    }
    return warnings + corrections;
}

// ---- Run

template <class T> struct Routines {
    Routine<T>*forward, *backward;
};
template <class T>
constexpr Routines<T> routines[] = {{whole_sine<T>, whole_sine<T>},
                                    {whole_cosine<T>, whole_cosine<T>},
                                    {staggered_cosine_forward<T>, staggered_cosine_backward<T>},
                                    {staggered_sine_forward<T>, staggered_sine_backward<T>},
                                    {staggered2_cosine_forward<T>, staggered2_cosine_backward<T>},
                                    {staggered2_sine_forward<T>, staggered2_sine_backward<T>}};

// The end that is no result is scaled with the results: by both directions of kinds that end in it, by the forward one
// of kinds that begin with it, and of a sine.
template <class T> void scale_end(bool is_forward, const i64* ipar, T* f, T scale)
{
    const i64 n = ipar[ipar_n], kind = ipar[ipar_kind];
    if (kind == staggered_cosine || (kind == sine && is_forward)) f[n] *= scale;
    if (kind == staggered_sine && is_forward) f[0] *= scale;
}

template <class T> i64 run(bool is_forward, T* f, Handle* handle, const i64* ipar, const T* dpar, i64* stat)
{
    const i64 n = ipar[ipar_n], kind = ipar[ipar_kind];
    if (ipar[ipar_status] != good) return refuse(run_not_ready, not_ready, ipar, dpar);
    if (kind < 0 || kind >= kinds) return refuse(unknown_kind, bad_size_or_kind, ipar, dpar);

    const bool raw = ipar[ipar_raw] != 0;
    const T scale = raw ? 1 : is_forward ? 1 / static_cast<T>(n) : T(0.5);
    T* const first = f + (kind == staggered_sine && !raw);
    Routine<T>* const routine = is_forward ? routines<T>[kind].forward : routines<T>[kind].backward;
    if (const i64 status = run_routine<T>(routine, {first, n, dpar + dpar_tables, scale, *handle}, ipar, stat))
        return status;
    if (is_forward && n == 0) return refuse(size_is_lost, not_ready, ipar, dpar);
    if (!raw && n > 0) scale_end(is_forward, ipar, f, scale);
    return good;
}

void free(Handle* handle, i64* ipar, i64* stat)
{
    leave(interrupted, ipar, stat);
    if (orv_dft_dfti_free_descriptor_external(handle) == 0) leave(good, ipar, stat);
}

} // namespace
} // namespace orv::pdett

using namespace orv;
namespace pdett = orv::pdett;

#define INIT_ARGUMENTS(T) const i64 *n, const i64 *kind, i64 *ipar, T *dpar, i64 *stat
#define COMMIT_ARGUMENTS(T) const T *f, imports::Handle *handle, i64 *ipar, T *dpar, i64 *stat
#define RUN_ARGUMENTS(T) T *f, imports::Handle *handle, i64 *ipar, T *dpar, i64 *stat
#define FREE_ARGUMENTS imports::Handle *handle, i64 *ipar, i64 *stat

// The form with an underscore before it leads to the plain one.
#define ENTRY(name, arguments, names, ...)                                                                             \
    ORV_EXPORT void PDETT(name)(arguments) { __VA_ARGS__; }                                                            \
    ORV_EXPORT void PDETT(_##name)(arguments) { PDETT(name) names; }
#define ENTRIES(t, T)                                                                                                  \
    ENTRY(t##_init_trig_transform, INIT_ARGUMENTS(T), (n, kind, ipar, dpar, stat),                                     \
          pdett::init(*n, *kind, ipar, dpar, stat))                                                                    \
    ENTRY(t##_commit_trig_transform, COMMIT_ARGUMENTS(T), (f, handle, ipar, dpar, stat),                               \
          pdett::leave(pdett::commit(f, handle, ipar, dpar), ipar, stat))                                              \
    ENTRY(t##_forward_trig_transform, RUN_ARGUMENTS(T), (f, handle, ipar, dpar, stat),                                 \
          pdett::leave(pdett::run(true, f, handle, ipar, dpar, stat), ipar, stat))                                     \
    ENTRY(t##_backward_trig_transform, RUN_ARGUMENTS(T), (f, handle, ipar, dpar, stat),                                \
          pdett::leave(pdett::run(false, f, handle, ipar, dpar, stat), ipar, stat))
ENTRIES(s, float)
ENTRIES(d, double)
ENTRY(free_trig_transform, FREE_ARGUMENTS, (handle, ipar, stat), pdett::free(handle, ipar, stat))
