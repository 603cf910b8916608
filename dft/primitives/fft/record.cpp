// Records: their sizes, how they are built and given back.
#include "dft/primitives/fft/record.h"

namespace orv::dft {
namespace {

template <class R, bool real> constexpr i32 limit = complex_limit<R> + (real ? 1 : 0);

bool is_flag(i32 flag)
{
    return flag == scale_none || flag == scale_forward || flag == scale_inverse || flag == scale_both;
}

template <class R, bool real>
i32 get_sizes(i32 order, i32 flag, i32 /* hint */, i32* spec_bytes, i32* init_bytes, i32* buffer_bytes)
{
    if (!spec_bytes || !init_bytes || !buffer_bytes) return null_pointer;
    if (order < 0 || order > limit<R, real>) return bad_order;
    if (!is_flag(flag)) return bad_flag;
    const Sizes sizes = sizes_of<R>(order, real);
    *spec_bytes = static_cast<i32>(sizes.spec), *init_bytes = static_cast<i32>(sizes.init);
    *buffer_bytes = static_cast<i32>(sizes.buffer);
    return ok;
}

t_8u* on_boundary(t_8u* memory) { return behind_table(memory); }

template <class R> struct Names;
#define NAMES(t)                                                                                                       \
    template <> struct Names<t_##t> {                                                                                  \
        static constexpr auto& base = DFT(ymps_initTabTwdBase_##t);                                                    \
        static constexpr auto& level_one = DFT(ymps_initTabTwd_L1_##t);                                                \
        static constexpr auto& large = DFT(ymps_initTabTwd_Large_##t);                                                 \
        static constexpr auto& reals = DFT(ymps_initTabTwdRealRec_##t);                                                \
        static constexpr const t_##t* fixed_base = orv_dft_fft_fix_twiddle_table_##t.sines;                            \
    };
ORV_DFT_REAL(NAMES)

// The complex tables of so many points, from memory on. Returns what is behind them.
template <class R> t_8u* build_tables(YmpFftSpec& spec, i32 order, const R* base, i32 base_order, t_8u* memory)
{
    if (order <= fixed_limit) return memory;
    if (order > table_limit) return Names<R>::large(&spec, order, base, base_order, memory);
    spec.twiddle_table = memory;
    auto* const reversal = reinterpret_cast<i32*>(memory + level_one_bytes<R>(order));
    Names<R>::level_one(order, base, base_order, reinterpret_cast<R*>(memory));
    spec.bit_reverse_table = reversal;
    return DFT(ymps_initTabBitRevNorm)(order, reversal);
}

template <class R, Kind kind, bool real>
i32 build(YmpFftSpec** spec, i32 order, i32 flag, i32 hint, t_8u* memory, t_8u* init_memory)
{
    if (!spec || !memory) return null_pointer;
    if (order < 0 || order > limit<R, real>) return bad_order;
    YmpFftSpec& made = *reinterpret_cast<YmpFftSpec*>(on_boundary(memory));
    clear(&made, 1);
    *spec = &made;
    if (!is_flag(flag)) return bad_flag;
    const Sizes sizes = sizes_of<R>(order, real);
    if (sizes.init > 0 && !init_memory) return null_pointer;

    const auto n = static_cast<t_64f>(i64{1} << order);
    made.hint = hint, made.order = order;
    made.scale_forward = flag == scale_forward || flag == scale_both;
    made.scale_inverse = flag == scale_inverse || flag == scale_both;
    made.norm = flag == scale_both ? 1.0 / __builtin_sqrt(n) : 1.0 / n;
    made.buffer_bytes = static_cast<i32>(sizes.buffer);
    if (order > fixed_limit) {
        const R* base = Names<R>::fixed_base;
        i32 base_order = orv_dft_fix_base_64f::order;
        if (sizes.init > 0) {
            auto* const own = reinterpret_cast<R*>(on_boundary(init_memory));
            Names<R>::base(order, own);
            base = own, base_order = order;
        }
        t_8u* const tables = reinterpret_cast<t_8u*>(&made) + round_up(sizeof made, table_boundary);
        t_8u* const rest = build_tables(made, real ? order - 1 : order, base, base_order, tables);
        if (real) {
            made.real_twiddles = rest;
            Names<R>::reals(order, base, base_order, reinterpret_cast<R*>(rest));
        }
    }
    made.id = kind;
    return ok;
}

template <class R, Kind kind, bool real> i32 allocate(YmpFftSpec** spec, i32 order, i32 flag, i32 hint)
{
    if (!spec) return null_pointer;
    i32 spec_bytes, init_bytes, buffer_bytes;
    const i32 status = get_sizes<R, real>(order, flag, hint, &spec_bytes, &init_bytes, &buffer_bytes);
    if (status != ok) return status;
    t_8u* const memory = DFT(ympsMalloc_8u)(spec_bytes);
    if (!memory) return no_memory;
    t_8u* const init_memory = DFT(ympsMalloc_8u)(init_bytes); // none for 0
    if (init_bytes > 0 && !init_memory) {
        DFT(ympsFree)(memory);
        return no_memory;
    }
    build<R, kind, real>(spec, order, flag, hint, memory, init_memory);
    if (init_memory) DFT(ympsFree)(init_memory);
    (*spec)->user_alloc = 1, (*spec)->self_memory = memory;
    return ok;
}

template <Kind kind> i32 give_back(YmpFftSpec* spec)
{
    if (const Status s = refusal_of(spec, kind)) return s;
    spec->id = Kind::none;
    if (spec->user_alloc == 1) DFT(ympsFree)(spec->self_memory);
    return ok;
}

template <Kind kind> i32 get_buffer_size(const YmpFftSpec* spec, i32* bytes)
{
    if (const Status s = refusal_of(spec, kind, bytes)) return s;
    *bytes = spec->buffer_bytes < 1 ? 0 : spec->buffer_bytes + static_cast<i32>(table_boundary);
    return ok;
}

} // namespace

#define RECORD(kind, R, real)                                                                                          \
    PRIMITIVE(6, ympsFFTGetSize_##kind, get_sizes<R, real>)                                                            \
    PRIMITIVE(6, ympsFFTInit_##kind, build<R, Kind::kind, real>)                                                       \
    PRIMITIVE(4, ympsFFTInitAlloc_##kind, allocate<R, Kind::kind, real>)                                               \
    PRIMITIVE(1, ympsFFTFree_##kind, give_back<Kind::kind>)                                                            \
    PRIMITIVE(2, ympsFFTGetBufSize_##kind, get_buffer_size<Kind::kind>)
RECORD(C_32fc, t_32f, false)
RECORD(C_64fc, t_64f, false)
RECORD(C_32f, t_32f, false)
RECORD(C_64f, t_64f, false)
RECORD(R_32f, t_32f, true)
RECORD(R_64f, t_64f, true)

} // namespace orv::dft
