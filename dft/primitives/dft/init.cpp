// Records: their sizes, their making in memory of the caller or in blocks of their own, and their end.
#include "dft/primitives/dft/family.h"

namespace orv::dft::general {
namespace {

template <class T> YmpDftSpec* record_in(T* memory) { return reinterpret_cast<YmpDftSpec*>(on_boundary(memory)); }

constexpr bool is_scale_flag(i32 flag)
{
    return flag == scale_forward || flag == scale_inverse || flag == scale_both || flag == scale_none;
}

template <class R> i32 get_size(const Family& family, i32 length, i32 flag, i32 hint, i32* spec, i32* init, i32* buffer)
{
    if (const Status s = refusal(length, spec, init, buffer)) return s;
    if (!is_scale_flag(flag)) return bad_flag;
    Sizes s{};
    if (const i32 status = sizes<R>(family, length, flag, hint, s)) return status;
    *spec = static_cast<i32>(s.spec), *init = static_cast<i32>(s.init), *buffer = static_cast<i32>(s.buffer);
    return ok;
}

// The fields that no table belongs to.
void begin(YmpDftSpec& spec, const Family& family, i32 length, i32 flag, i32 hint)
{
    clear(&spec, 1);
    spec.id = family.id, spec.length = length, spec.hint = hint;
    spec.out_of_order = is_out_of_order(family.id);
    spec.scale_forward = flag == scale_forward || flag == scale_both;
    spec.scale_inverse = flag == scale_inverse || flag == scale_both;
    spec.norm = 1.0 / (flag == scale_both ? __builtin_sqrt(static_cast<double>(length)) : static_cast<double>(length));
}

// All that lies behind the record, in memory of the caller.
template <class R>
i32 build(YmpDftSpec& spec, const Family& family, i32 flag, i32 hint, t_8u* memory, t_8u* init_memory)
{
    const Plan p = plan_of(spec);
    if (p.method == Method::power_of_two) {
        spec.is_pow2 = 1;
        if (const i32 s = family.init(&spec.fft_spec, order_of(spec.length), flag, hint, memory, init_memory)) return s;
        return family.get_buf_size(spec.fft_spec, &spec.buffer_bytes);
    }
    if (spec.length > longest_length) return bad_size;
    Sizes s{};
    const i32 status = sizes<R>(family, spec.length, flag, hint, s);
    if (init_memory == nullptr && (status != ok || s.init > 0)) return null_pointer;
    if (status != ok) return status;
    spec.buffer_bytes = static_cast<i32>(s.buffer);

    auto* const base = reinterpret_cast<cpx<R>*>(on_boundary(init_memory));
    const i32 roots = p.method == Method::convolution ? 2 * p.points : p.points;
    if (s.init > 0) Tables<R>::init_base(roots, base);
    if (p.method == Method::factors) memory = Tables<R>::init_factors(&spec, base, memory);
    else if (p.method == Method::direct) {
        spec.direct_table = memory;
        memory = Tables<R>::init_direct(p.points, base, roots, memory);
    }
    Store store{memory, false};
    if (p.halved) put_recombinations<R>(spec, p.points, store);
    if (p.method != Method::convolution) return ok;
    return Tables<R>::init_convolution(&spec, p.points, base, roots, store.next, init_memory);
}

template <class R> i32 init(const Family& family, i32 length, i32 flag, i32 hint, t_8u* memory, t_8u* init_memory)
{
    if (const Status s = refusal(length, memory)) return s;
    YmpDftSpec& spec = *record_in(memory);
    begin(spec, family, length, flag, hint);
    const i32 status = !is_scale_flag(flag)
                           ? bad_flag
                           : build<R>(spec, family, flag, hint, reinterpret_cast<t_8u*>(&spec + 1), init_memory);
    if (status != ok) spec.id = Kind::none;
    return status;
}

void release(const void* block) { DFT(ympsFree)(const_cast<void*>(block)); }

template <class R> void release_tables(YmpDftSpec& spec, const Family& family)
{
    if (spec.fft_spec != nullptr) family.free(spec.fft_spec);
    for (const void* table :
         {spec.direct_table, spec.chirp_a, spec.chirp_b, spec.recombine_forward, spec.recombine_inverse})
        release(table);
    release(spec.permutation);
    if (spec.conv_spec != nullptr) Tables<R>::free(spec.conv_spec);
    const void *fact_table = nullptr, *twiddles = nullptr;
    for (const DftFactor& f : spec.factors) {
        if (f.fact_table != fact_table) release(fact_table = f.fact_table);
        if (f.twiddles != twiddles) release(twiddles = f.twiddles);
    }
}

template <class R> i32 free(const Family& family, YmpDftSpec* record)
{
    if (record == nullptr) return null_pointer;
    YmpDftSpec& spec = *record_in(record);
    if (spec.id != family.id) return bad_record;
    if (spec.self_memory != nullptr) release_tables<R>(spec, family);
    spec.id = Kind::none;
    release(spec.self_memory);
    return ok;
}

// As build, with a block for each table.
template <class R> i32 build_in_blocks(YmpDftSpec& spec, const Family& family, i32 flag, i32 hint)
{
    const Plan p = plan_of(spec);
    if (p.method == Method::power_of_two) {
        spec.is_pow2 = 1;
        if (const i32 s = family.init_alloc(&spec.fft_spec, order_of(spec.length), flag, hint)) return s;
        return family.get_buf_size(spec.fft_spec, &spec.buffer_bytes);
    }
    Sizes s{};
    if (const i32 status = sizes<R>(family, spec.length, flag, hint, s)) return status;
    spec.buffer_bytes = static_cast<i32>(s.buffer);
    Store store{nullptr, true};
    if (p.halved && !put_recombinations<R>(spec, p.points, store)) return no_memory;
    if (s.init == 0) return ok;

    const i32 roots = p.method == Method::convolution ? 2 * p.points : p.points;
    auto* const base = Tables<R>::create_base(roots);
    if (base == nullptr) return no_memory;
    i32 status = ok;
    if (p.method == Method::factors) status = Tables<R>::create_factors(&spec, base);
    else if (p.method == Method::convolution) status = Tables<R>::create_convolution(&spec, p.points, base, roots);
    else {
        spec.direct_table = Tables<R>::create_direct(p.points, base, roots);
        if (spec.direct_table == nullptr) status = no_memory;
    }
    release(base);
    return status;
}

template <class R> i32 init_alloc(const Family& family, YmpDftSpec** made, i32 length, i32 flag, i32 hint)
{
    if (const Status s = refusal(length, made)) return s;
    if (!is_scale_flag(flag)) return bad_flag;
    t_8u* const memory = DFT(ympsMalloc_8u)(sizeof(YmpDftSpec) + boundary);
    if (memory == nullptr) return no_memory;
    YmpDftSpec& spec = *record_in(memory);
    begin(spec, family, length, flag, hint);
    spec.self_memory = memory;
    const i32 status = build_in_blocks<R>(spec, family, flag, hint);
    if (status == ok) *made = &spec;
    else free<R>(family, &spec);
    return status;
}

i32 get_buf_size(const Family& family, const YmpDftSpec* record, i32* bytes)
{
    if (record == nullptr || bytes == nullptr) return null_pointer;
    const YmpDftSpec& spec = *record_in(const_cast<YmpDftSpec*>(record));
    if (spec.id != family.id) return bad_record;
    *bytes = spec.buffer_bytes < 1 ? 0 : spec.buffer_bytes + static_cast<i32>(boundary);
    return ok;
}

} // namespace

#define RECORDS(OutOrd, name, kind, R)                                                                                 \
    ORV_EXPORT i32 DFT(ympsDFT##OutOrd##GetSize_##kind)(i32 length, i32 flag, i32 hint, i32 * spec, i32 * init_bytes,  \
                                                        i32 * buffer)                                                  \
    {                                                                                                                  \
        return get_size<R>(family_##name, length, flag, hint, spec, init_bytes, buffer);                               \
    }                                                                                                                  \
    ORV_EXPORT i32 DFT(ympsDFT##OutOrd##Init_##kind)(i32 length, i32 flag, i32 hint, t_8u * memory,                    \
                                                     t_8u * init_memory)                                               \
    {                                                                                                                  \
        return init<R>(family_##name, length, flag, hint, memory, init_memory);                                        \
    }                                                                                                                  \
    ORV_EXPORT i32 DFT(ympsDFT##OutOrd##InitAlloc_##kind)(YmpDftSpec * *spec, i32 length, i32 flag, i32 hint)          \
    {                                                                                                                  \
        return init_alloc<R>(family_##name, spec, length, flag, hint);                                                 \
    }                                                                                                                  \
    ORV_EXPORT i32 DFT(ympsDFT##OutOrd##Free_##kind)(YmpDftSpec * spec) { return free<R>(family_##name, spec); }       \
    ORV_EXPORT i32 DFT(ympsDFT##OutOrd##GetBufSize_##kind)(const YmpDftSpec* spec, i32* bytes)                         \
    {                                                                                                                  \
        return get_buf_size(family_##name, spec, bytes);                                                               \
    }
RECORDS(, C_32fc, C_32fc, float)
RECORDS(, C_64fc, C_64fc, double)
RECORDS(, C_32f, C_32f, float)
RECORDS(, C_64f, C_64f, double)
RECORDS(, R_32f, R_32f, float)
RECORDS(, R_64f, R_64f, double)
RECORDS(OutOrd, OutOrd_32fc, C_32fc, float)
RECORDS(OutOrd, OutOrd_64fc, C_64fc, double)

} // namespace orv::dft::general
