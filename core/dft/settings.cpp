// Making, setting and asking. Nothing here needs the kernels.
#include "core/serv/settings.h"
#include "core/dft/descriptor.h"
#include "core/dft/nodes.h"
#include "frame/serv.h"

#include <cinttypes>
#include <new>

using namespace orv;
using namespace orv::core;
using namespace orv::core::dft;

namespace {

// An orv_dft of its own, or null.
orv_dft* make(const Settings& settings)
{
    void* const block = orv_serv_calloc(1, sizeof(orv_dft), alignof(orv_dft));
    if (block == nullptr) return nullptr;
    auto* const dft = new (block) orv_dft{};
    dft->settings = settings;
    return dft;
}

// A setting that takes one of a few values.
struct Place {
    int Settings::*field;
    int values[4];
    int count;
    const char *name, *choice;
};

const Place* place_of(int setting)
{
#define PLACE(field, name, count, choice, ...)                                                                         \
    {                                                                                                                  \
        &Settings::field, {__VA_ARGS__}, count, #name, choice                                                          \
    }
    static constexpr Place places[] = {
        PLACE(placement, ORV_DFT_PLACEMENT, 2, "ORV_DFT_IN_PLACE or ORV_DFT_OUT_OF_PLACE", ORV_DFT_IN_PLACE,
              ORV_DFT_OUT_OF_PLACE),
        PLACE(storage, ORV_DFT_STORAGE, 2, "ORV_DFT_INTERLEAVED or ORV_DFT_SPLIT", ORV_DFT_INTERLEAVED, ORV_DFT_SPLIT),
        PLACE(format, ORV_DFT_FORMAT, 4, "ORV_DFT_HALF, ORV_DFT_CCS, ORV_DFT_PACK or ORV_DFT_PERM", ORV_DFT_HALF,
              ORV_DFT_CCS, ORV_DFT_PACK, ORV_DFT_PERM),
        PLACE(ordering, ORV_DFT_ORDERING, 2, "ORV_DFT_ORDERED or ORV_DFT_ANY_ORDER", ORV_DFT_ORDERED,
              ORV_DFT_ANY_ORDER),
        PLACE(workspace, ORV_DFT_WORKSPACE, 2, "ORV_DFT_ALLOW or ORV_DFT_AVOID", ORV_DFT_ALLOW, ORV_DFT_AVOID),
        PLACE(directions, ORV_DFT_DIRECTIONS, 3, "ORV_DFT_BOTH, ORV_DFT_FORWARD or ORV_DFT_BACKWARD", ORV_DFT_BOTH,
              ORV_DFT_FORWARD, ORV_DFT_BACKWARD),
    };
#undef PLACE
    static_assert(ORV_DFT_DIRECTIONS - ORV_DFT_PLACEMENT == 5);
    const bool is_one = setting >= ORV_DFT_PLACEMENT && setting <= ORV_DFT_DIRECTIONS;
    return is_one ? &places[setting - ORV_DFT_PLACEMENT] : nullptr;
}

template <class Number> void change(orv_dft* dft, Number& what, i64 value)
{
    if (what == value) return;
    what = static_cast<Number>(value);
    dft->committed = false;
}

void change(orv_dft* dft, Choice& what, i64 value)
{
    if (what.made && what.value == value) return;
    what = {true, value};
    dft->committed = false;
}

orv_status bad_value(const char* name, const char* choice, i64 value)
{
    return bad_argument("orv_dft_set", 3, "%" PRId64 ", but %s is %s", value, name, choice);
}

orv_status set_count(orv_dft* dft, const char* name, auto& what, i64 value, i64 most)
{
    if (value < 0 || value > most)
        return bad_value(name, most == most_threads ? "from 0 to 1024" : "at least 0", value);
    return change(dft, what, value), ORV_OK;
}

orv_status set(orv_dft* dft, int setting, i64 value)
{
    Settings& s = dft->settings;
    if (const Place* place = place_of(setting)) {
        for (int i = 0; i < place->count; ++i)
            if (place->values[i] == value) return change(dft, s.*place->field, value), ORV_OK;
        return bad_value(place->name, place->choice, value);
    }
    switch (setting) {
    case ORV_DFT_TRANSFORMS:
        return set_count(dft, "ORV_DFT_TRANSFORMS", s.transforms, value, INT64_MAX);
    case ORV_DFT_THREADS:
        return set_count(dft, "ORV_DFT_THREADS", s.threads, value, most_threads);
    case ORV_DFT_SIGNAL_DISTANCE:
        return change(dft, s.side[signal].distance, value), ORV_OK;
    case ORV_DFT_SPECTRUM_DISTANCE:
        return change(dft, s.side[spectrum].distance, value), ORV_OK;
    case ORV_DFT_SIGNAL_OFFSET:
        return change(dft, s.side[signal].offset, value), ORV_OK;
    case ORV_DFT_SPECTRUM_OFFSET:
        return change(dft, s.side[spectrum].offset, value), ORV_OK;
    default:
        return bad_argument("orv_dft_set", 2, "%d, which is nothing that can be set", setting);
    }
}

// False if there is no such setting.
bool get(const orv_dft* dft, int setting, i64& value)
{
    const Settings& s = dft->settings;
    if (const Place* place = place_of(setting)) return value = s.*place->field, true;
    switch (setting) {
    case ORV_DFT_TRANSFORMS:
        return value = s.transforms, true;
    case ORV_DFT_SIGNAL_DISTANCE:
        return value = layout(s, signal).distance, true;
    case ORV_DFT_SPECTRUM_DISTANCE:
        return value = layout(s, spectrum).distance, true;
    case ORV_DFT_SIGNAL_OFFSET:
        return value = layout(s, signal).offset, true;
    case ORV_DFT_SPECTRUM_OFFSET:
        return value = layout(s, spectrum).offset, true;
    case ORV_DFT_THREADS:
        return value = s.threads, true;
    case ORV_DFT_PRECISION:
        return value = s.precision, true;
    case ORV_DFT_DOMAIN:
        return value = s.domain, true;
    case ORV_DFT_RANK:
        return value = s.rank, true;
    case ORV_DFT_COMMITTED:
        return value = dft->committed, true;
    case ORV_DFT_THREADS_USED:
        return value = threads_used(*dft), true;
    default:
        return false;
    }
}

bool has_zero(const Settings& s, const int64_t* strides)
{
    for (int k = 0; strides && k < s.rank; ++k)
        if (strides[k] == 0 && s.lengths[k] > 1) return true;
    return false;
}

void set_strides(orv_dft* dft, SideName name, const int64_t* strides)
{
    Side& side = dft->settings.side[name];
    change(dft, side.has_strides, strides != nullptr);
    for (int k = 0; strides && k < dft->settings.rank; ++k) change(dft, side.strides[k], strides[k]);
}

void get_strides(const Settings& s, SideName side, int64_t* strides)
{
    const Layout l = layout(s, side);
    for (int k = 0; strides && k < s.rank; ++k) strides[k] = l.strides[k];
}

} // namespace

orv_status orv_dft_create(orv_dft** dft, int precision, int domain, int rank, const int64_t* lengths)
{
    constexpr const char* routine = "orv_dft_create";
    if (dft == nullptr) return bad_argument(routine, 1, "null");
    if (precision != ORV_DFT_SINGLE && precision != ORV_DFT_DOUBLE)
        return bad_argument(routine, 2, "%d, but a precision is ORV_DFT_SINGLE or ORV_DFT_DOUBLE", precision);
    if (domain != ORV_DFT_COMPLEX && domain != ORV_DFT_REAL)
        return bad_argument(routine, 3, "%d, but a domain is ORV_DFT_COMPLEX or ORV_DFT_REAL", domain);
    if (rank < 1 || rank > ORV_DFT_MAX_RANK)
        return bad_argument(routine, 4, "%d, but a rank is from 1 to %d", rank, ORV_DFT_MAX_RANK);
    if (const auto status = check_lengths(routine, 5, rank, lengths)) return status;

    orv_dft* const made = make(defaults(precision, domain, rank, lengths));
    if (made == nullptr) return fail(ORV_NO_MEMORY, "orv_dft_create: no memory is left");
    *dft = made;
    return ORV_OK;
}

orv_status orv_dft_copy(orv_dft** copy, const orv_dft* dft)
{
    if (const int wrong = copy == nullptr ? 1 : dft == nullptr ? 2 : 0)
        return bad_argument("orv_dft_copy", wrong, "null");
    orv_dft* const made = make(dft->settings);
    if (made == nullptr) return fail(ORV_NO_MEMORY, "orv_dft_copy: no memory is left");
    *copy = made;
    return ORV_OK;
}

void orv_dft_free(orv_dft* dft)
{
    if (dft == nullptr) return;
    drop_nodes(*dft);
    orv_serv_free(dft);
}

orv_status orv_dft_set(orv_dft* dft, int setting, int64_t value)
{
    return dft ? set(dft, setting, value) : bad_argument("orv_dft_set", 1, "null");
}

orv_status orv_dft_get(const orv_dft* dft, int setting, int64_t* value)
{
    if (dft == nullptr) return bad_argument("orv_dft_get", 1, "null");
    i64 found;
    if (!get(dft, setting, found)) return bad_argument("orv_dft_get", 2, "%d, which is no setting", setting);
    if (value) *value = found;
    return ORV_OK;
}

orv_status orv_dft_set_scales(orv_dft* dft, double forward_scale, double backward_scale)
{
    if (dft == nullptr) return bad_argument("orv_dft_set_scales", 1, "null");
    double* const scales = dft->settings.scales;
    if (scales[forward] != forward_scale || scales[backward] != backward_scale) dft->committed = false;
    scales[forward] = forward_scale, scales[backward] = backward_scale;
    return ORV_OK;
}

orv_status orv_dft_get_scales(const orv_dft* dft, double* forward_scale, double* backward_scale)
{
    if (dft == nullptr) return bad_argument("orv_dft_get_scales", 1, "null");
    if (forward_scale) *forward_scale = dft->settings.scales[forward];
    if (backward_scale) *backward_scale = dft->settings.scales[backward];
    return ORV_OK;
}

orv_status orv_dft_set_strides(orv_dft* dft, const int64_t* of_signal, const int64_t* of_spectrum)
{
    if (dft == nullptr) return bad_argument("orv_dft_set_strides", 1, "null");
    const Settings& s = dft->settings;
    if (const int wrong = has_zero(s, of_signal) ? 2 : has_zero(s, of_spectrum) ? 3 : 0)
        return bad_argument("orv_dft_set_strides", wrong, "0 in a dimension longer than 1");
    set_strides(dft, signal, of_signal);
    set_strides(dft, spectrum, of_spectrum);
    return ORV_OK;
}

orv_status orv_dft_get_strides(const orv_dft* dft, int64_t* of_signal, int64_t* of_spectrum)
{
    if (dft == nullptr) return bad_argument("orv_dft_get_strides", 1, "null");
    get_strides(dft->settings, signal, of_signal);
    get_strides(dft->settings, spectrum, of_spectrum);
    return ORV_OK;
}

orv_status orv_dft_get_lengths(const orv_dft* dft, int64_t* lengths)
{
    if (dft == nullptr) return bad_argument("orv_dft_get_lengths", 1, "null");
    for (int k = 0; lengths && k < dft->settings.rank; ++k) lengths[k] = dft->settings.lengths[k];
    return ORV_OK;
}
