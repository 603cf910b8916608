// Sine and cosine transforms: making and setting them.
#include "core/pde/trig.h"

#include "core/pde/trig_kernel.h"
#include "core/serv/settings.h"
#include "frame/kernels/dft_node.h"
#include "frame/serv.h"

#include <cinttypes>
#include <new>

using namespace orv;
using namespace orv::core;
using namespace orv::core::pde;
using namespace orv::kernels::pdett;

namespace {

// Cells between the points, which is what kernels count by.
i64 cells(int kind, i64 points) { return kind == sine ? points + 1 : kind == cosine ? points - 1 : points; }

constexpr i64 most_points = i64{1} << 40; // sizes of tables stay far from the end of integers

// Raw, so that rows begin at their first unknown, ends are nobody's matter and scales are the program's.
template <class T> orv_status prepare(orv_trig& trig)
{
    const i64 kind = trig.kind;
    const auto bytes = static_cast<i64>(sizeof(T)) * dpar_size(kind, trig.n);
    if (const i64 status = make_handle(trig.handle, trig.precision, trig.n)) return explain(status, trig.points);
    auto* const dpar = static_cast<T*>(orv_serv_malloc(bytes, 64));
    trig.dpar = dpar;
    if (dpar == nullptr) return explain(kernels::dft::node_no_memory, trig.points);
    i64 stat;
    if (const auto status = TrigKernels<T>::init.run(&trig.n, &kind, trig.ipar, dpar, &stat)) return status;
    trig.ipar[ipar_errors] = trig.ipar[ipar_warnings] = 0;
    trig.ipar[ipar_raw] = 1;
    fill_tables(dpar, kind, trig.n);
    return ORV_OK;
}

orv_status create(const char* routine, orv_trig** trig, int precision, int kind, i64 points, bool careful)
{
    if (trig == nullptr) return bad_argument(routine, 1, "null");
    if (precision != ORV_DFT_SINGLE && precision != ORV_DFT_DOUBLE)
        return bad_argument(routine, 2, "%d, but a precision is ORV_DFT_SINGLE or ORV_DFT_DOUBLE", precision);
    if (kind < 0 || kind >= kinds)
        return bad_argument(routine, 3, "%d, but a kind is from ORV_TRIG_SINE to ORV_TRIG_STAGGERED2_SINE", kind);
    if (points < (kind == cosine ? 2 : 1))
        return bad_argument(routine, 4, "%" PRId64 ", but a row of this kind has at least %d", points,
                            kind == cosine ? 2 : 1);
    if (points > most_points) return explain(kernels::dft::node_too_long, points);
    if (const auto status = open_branch()) return status;
    void* const block = orv_serv_calloc(1, sizeof(orv_trig), alignof(orv_trig));
    if (block == nullptr) return explain(kernels::dft::node_no_memory, points);
    auto* const made = new (block) orv_trig{};
    made->precision = precision, made->kind = kind, made->careful = careful;
    made->points = points, made->n = cells(kind, points);
    made->scales[0] = 1 / static_cast<double>(made->n), made->scales[1] = 0.5;
    orv_status status = ORV_OK;
    if (is_careful(*made)) status = prepare_careful(*made);
    else if (made->n > 1) status = precision == ORV_DFT_DOUBLE ? prepare<double>(*made) : prepare<float>(*made);
    if (status == ORV_OK) *trig = made;
    else orv_trig_free(made);
    return status;
}

} // namespace

i64 pde::make_handle(imports::Handle& handle, int precision, i64 n)
{
    const auto create =
        precision == ORV_DFT_DOUBLE ? orv_dft_dfti_create_descriptor_d_1d : orv_dft_dfti_create_descriptor_s_1d;
    i64 status = create(&handle, precision, ORV_DFT_REAL, 1, n);
    if (status == 0) status = orv_dft_dfti_set_value_intval(handle, imports::dfti_packed_format, ORV_DFT_PERM);
    if (status == 0) status = orv_dft_dfti_set_value_intval(handle, imports::dfti_number_of_user_threads, 2);
    return status ? status : orv_dft_dfti_commit_descriptor_external(handle);
}

orv_status pde::explain(i64 status, i64 points)
{
    if (status == kernels::dft::node_no_memory)
        return fail(ORV_NO_MEMORY, "no memory is left for a transform of %" PRId64 " points", points);
    return fail(ORV_UNSUPPORTED, "a transform of %" PRId64 " points: %s", points,
                orv_dft_dfti_error_message_external(status));
}

orv_status orv_trig_create(orv_trig** trig, int precision, int kind, int64_t points)
{
    return create("orv_trig_create", trig, precision, kind, points, false);
}
orv_status orv_trig_create_careful(orv_trig** trig, int precision, int kind, int64_t points)
{
    return create("orv_trig_create_careful", trig, precision, kind, points, true);
}

void orv_trig_free(orv_trig* trig)
{
    if (trig == nullptr) return;
    if (trig->handle != nullptr) orv_dft_dfti_free_descriptor_external(&trig->handle);
    for (void* const table : {trig->dpar, trig->turns})
        if (table != nullptr) orv_serv_free(table);
    orv_trig_free(trig->evens);
    orv_trig_free(trig->odds);
    orv_serv_free(trig);
}

orv_status orv_trig_set_scales(orv_trig* trig, double forward, double backward)
{
    if (trig == nullptr) return bad_argument("orv_trig_set_scales", 1, "null");
    trig->scales[0] = forward, trig->scales[1] = backward;
    return ORV_OK;
}

orv_status orv_trig_set_threads(orv_trig* trig, int threads)
{
    if (trig == nullptr) return bad_argument("orv_trig_set_threads", 1, "null");
    if (threads < 0 || threads > most_threads)
        return bad_argument("orv_trig_set_threads", 2, "%d, but threads are from 0 to %d", threads, most_threads);
    trig->threads = threads;
    return ORV_OK;
}
