// Complex transforms: the checks, and which way an order goes.
#include "dft/primitives/fft/record.h"

namespace orv::dft {
namespace {

template <class T, bool forward> struct Engine;
#define ENGINE(t, forward, direction, Direction)                                                                       \
    template <> struct Engine<t_##t, forward> {                                                                        \
        static constexpr Kind kind = Kind::C_##t;                                                                      \
        static constexpr FixedFft<t_##t>* fixed[] = ORV_DFT_FIXED_KERNELS(c, direction, _, t);                         \
        static constexpr FixedFft<t_##t, real_t<t_##t>>* scaled[] = ORV_DFT_FIXED_KERNELS(c, direction, _scale_, t);   \
        static constexpr auto& flat = DFT(ymps_cRadix4##Direction##Norm_##t);                                          \
        static constexpr auto& large = DFT(ymps_cFft##Direction##_Large_##t);                                          \
    };
#define ENGINES(t) ENGINE(t, true, fwd, Fwd) ENGINE(t, false, inv, Inv)
ORV_DFT_PAIRS(ENGINES)

template <bool forward, class T> i32 transform_pairs(const T* src, T* dst, const YmpFftSpec* spec, t_8u* buffer)
{
    using Way = Engine<T, forward>;
    using R = real_t<T>;
    if (const Status s = refusal_of(spec, Way::kind, src, dst)) return s;
    const i32 order = spec->order;
    if (order <= fixed_limit) {
        if (divides<forward>(*spec)) Way::scaled[order](static_cast<R>(spec->norm), src, dst);
        else Way::fixed[order](src, dst);
        return ok;
    }
    const WorkArea work(*spec, buffer);
    if (work.missing()) return no_memory;
    if (order > flat_limit<R>) {
        Way::large(spec, src, dst, order, work.as<t_8u>());
        return ok;
    }
    const i64 n = i64{1} << order;
    Way::flat(src, dst, static_cast<i32>(n), static_cast<const R*>(spec->twiddle_table), spec->bit_reverse_table,
              work.as<T>(), dst);
    if (divides<forward>(*spec)) multiply(&dst->re, 2 * n, spec->norm);
    return ok;
}
template <bool forward, class T> i32 transform_in_place(T* srcdst, const YmpFftSpec* spec, t_8u* buffer)
{
    return transform_pairs<forward>(static_cast<const T*>(srcdst), srcdst, spec, buffer);
}

} // namespace

#define COMPLEX(t)                                                                                                     \
    PRIMITIVE(4, ympsFFTFwd_CToC_##t, transform_pairs<true>)                                                           \
    PRIMITIVE(4, ympsFFTInv_CToC_##t, transform_pairs<false>)                                                          \
    PRIMITIVE(3, ympsFFTFwd_CToC_##t##_I, transform_in_place<true>)                                                    \
    PRIMITIVE(3, ympsFFTInv_CToC_##t##_I, transform_in_place<false>)
ORV_DFT_PAIRS(COMPLEX)

} // namespace orv::dft
