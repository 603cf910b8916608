// The names of stages and of transforms of few points, by form, direction and radix.
#pragma once

#include "dft/primitives/dft/access.h"
#include "dft/primitives/members.h"
#include "frame/kernels/dft_general.h"

namespace orv::dft::general {

// Sources are not written through these.
template <class R> ORV_INLINE Interleaved<R> array(const cpx<R>* p) { return {const_cast<cpx<R>*>(p)}; }
template <class R> ORV_INLINE Split<R> array(const R* re, const R* im)
{
    return {const_cast<R*>(re), const_cast<R*>(im)};
}

// What a form's functions look like.
template <class Form> struct Shapes;
template <class R> struct Shapes<Interleaved<R>> {
    using Fixed = FixedFft<cpx<R>>;
    using ScaledFixed = FixedFft<cpx<R>, R>;
    using Prime = DftPrime<cpx<R>>;
    using Fact = DftFact<cpx<R>>;
};
template <class R> struct Shapes<Split<R>> {
    using Fixed = FixedSplitFft<R>;
    using ScaledFixed = FixedSplitFft<R, R>;
    using Prime = SplitDftPrime<R>;
    using Fact = SplitDftFact<R>;
};
template <class R> struct Shapes<Reals<R>> {
    using Fixed = FixedFft<R>;
    using ScaledFixed = FixedFft<R, R>;
    using Prime = DftPrime<R>;
    using Fact = DftFact<R>;
};

inline constexpr i32 longest_fixed = 16;

// By radix or by length; null where there is none.
template <class F> struct ByNumber {
    F* of[longest_fixed + 1];
};
template <class Form, bool forward> struct Bodies;

#define ORV_DFT_BODY(r, table, form, Dir, stage, t) table.of[r] = DFT(owns##form##Dft##Dir##_##stage##r##_##t);
#define ORV_DFT_SHORT(n, table, form, dir, t) table.of[n] = DFT(owns##form##DFT##dir##_##n##_##t);
#define ORV_DFT_POWERS(table, form, dir, t)                                                                            \
    table.of[1] = DFT(ymps_##form##FFT_1_##t), table.of[2] = DFT(ymps_##form##FFT_2_##t),                              \
    table.of[4] = DFT(ymps_##form##FFT##dir##_4_##t), table.of[8] = DFT(ymps_##form##FFT##dir##_8_##t),                \
    table.of[16] = DFT(ymps_##form##FFT##dir##_16_##t);
#define ORV_DFT_BODIES(Form, form, Dir, dir, forward, t, PRIMES, FACTS)                                                \
    template <> struct Bodies<Form, forward> {                                                                         \
        using Shape = Shapes<Form>;                                                                                    \
        static constexpr auto fixed = [] {                                                                             \
            ByNumber<Shape::Fixed> table{};                                                                            \
            ORV_DFT_FIXED_SIZES(ORV_DFT_SHORT, table, form, dir, t)                                                    \
            ORV_DFT_POWERS(table, form, dir, t)                                                                        \
            return table;                                                                                              \
        }();                                                                                                           \
        static constexpr auto scaled = [] {                                                                            \
            ByNumber<Shape::ScaledFixed> table{};                                                                      \
            ORV_DFT_FIXED_SIZES(ORV_DFT_SHORT, table, form, dir, scale_##t)                                            \
            ORV_DFT_POWERS(table, form, dir, scale_##t)                                                                \
            return table;                                                                                              \
        }();                                                                                                           \
        static constexpr auto primes = [] {                                                                            \
            ByNumber<Shape::Prime> table{};                                                                            \
            PRIMES(ORV_DFT_BODY, table, form, Dir, Prime, t)                                                           \
            return table;                                                                                              \
        }();                                                                                                           \
        static constexpr auto facts = [] {                                                                             \
            ByNumber<Shape::Fact> table{};                                                                             \
            FACTS(ORV_DFT_BODY, table, form, Dir, Fact, t)                                                             \
            return table;                                                                                              \
        }();                                                                                                           \
        static constexpr auto& any_prime = DFT(owns##form##Dft##Dir##_Prime_##t);                                      \
        static constexpr auto& any_fact = DFT(owns##form##Dft##Dir##_Fact_##t);                                        \
    };
#define ORV_DFT_FORM(Form, form, t, PRIMES, FACTS)                                                                     \
    ORV_DFT_BODIES(Form, form, Fwd, fwd, true, t, PRIMES, FACTS)                                                       \
    ORV_DFT_BODIES(Form, form, Inv, inv, false, t, PRIMES, FACTS)
ORV_DFT_FORM(Interleaved<float>, c, 32fc, ORV_DFT_PRIMES, ORV_DFT_FACTS)
ORV_DFT_FORM(Interleaved<double>, c, 64fc, ORV_DFT_PRIMES, ORV_DFT_FACTS)
ORV_DFT_FORM(Split<float>, cr, 32f, ORV_DFT_PRIMES, ORV_DFT_FACTS)
ORV_DFT_FORM(Split<double>, cr, 64f, ORV_DFT_PRIMES, ORV_DFT_FACTS)
ORV_DFT_FORM(Reals<float>, r, 32f, ORV_DFT_ODD_RADIXES, ORV_DFT_ODD_RADIXES)
ORV_DFT_FORM(Reals<double>, r, 64f, ORV_DFT_ODD_RADIXES, ORV_DFT_ODD_RADIXES)
#undef ORV_DFT_FORM
#undef ORV_DFT_BODY
#undef ORV_DFT_SHORT
#undef ORV_DFT_POWERS
#undef ORV_DFT_BODIES

} // namespace orv::dft::general
