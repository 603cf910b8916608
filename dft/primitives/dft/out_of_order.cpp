// Complex transforms that leave a spectrum in the order in which the factors make it, and take it so: nothing is
// gathered from far. Lengths that do not go by factors keep the order of frequencies.
//
// Forward, the stages go from the first factor to the last, decimated in frequency; the inverse goes back the same way,
// decimated in time. With digits d[k] below factor k, place d[0]*count[0] + d[1]*count[1] + ... has the frequency
// d[0]*stride[0] + d[1]*stride[1] + ...
#include "dft/primitives/dft/any_radix.h"
#include "dft/primitives/dft/call.h"

namespace orv::dft::general {
namespace {

// Radixes that only this order has in these places: 6 and 4 take the twos and a three of a length.
template <int r, bool forward, Decimation way, class R>
void join_own(const cpx<R>* src, cpx<R>* dst, i32 count, i32 blocks, const R* twiddles)
{
    join<r, forward, way>(array(src), array(dst), count, blocks, twiddles);
}
template <int r, bool forward, class R> void transforms_own(const cpx<R>* src, cpx<R>* dst, i32 number)
{
    transforms<r, forward>(array(src), array(dst), 1, number, [](i64 b) ORV_INLINE_LAMBDA { return r * b; });
}

template <class R, bool forward> struct Scrambled;
#define ORV_DFT_PRIME(r, table, Dir, t) table.of[r] = DFT(ownscDftOutOrd##Dir##_Prime##r##_##t);
#define ORV_DFT_FACT(r, table, Dir, t) table.of[r] = DFT(ownscDftOutOrd##Dir##_Fact##r##_##t);
#define ORV_DFT_SCRAMBLED(R, Dir, forward, t)                                                                          \
    template <> struct Scrambled<R, forward> {                                                                         \
        static constexpr auto way = forward ? Decimation::in_frequency : Decimation::in_time;                          \
        static constexpr auto primes = [] {                                                                            \
            ByNumber<OutOrdPrime<t_##t>> table{};                                                                      \
            ORV_DFT_ODD_RADIXES(ORV_DFT_PRIME, table, Dir, t)                                                          \
            return table.of[4] = transforms_own<4, forward, R>, table;                                                 \
        }();                                                                                                           \
        static constexpr auto facts = [] {                                                                             \
            ByNumber<DftFact<t_##t>> table{};                                                                          \
            ORV_DFT_FACTS(ORV_DFT_FACT, table, Dir, t)                                                                 \
            return table.of[6] = join_own<6, forward, way, R>, table;                                                  \
        }();                                                                                                           \
        static constexpr auto& any_prime = DFT(ownscDft##Dir##_Prime_##t);                                             \
    };
ORV_DFT_SCRAMBLED(float, Fwd, true, 32fc)
ORV_DFT_SCRAMBLED(float, Inv, false, 32fc)
ORV_DFT_SCRAMBLED(double, Fwd, true, 64fc)
ORV_DFT_SCRAMBLED(double, Inv, false, 64fc)
#undef ORV_DFT_PRIME
#undef ORV_DFT_FACT
#undef ORV_DFT_SCRAMBLED

template <class R, bool forward> class Stages {
public:
    using T = cpx<R>;
    using Body = Scrambled<R, forward>;
    Stages(const YmpDftSpec& spec, t_8u* work) : spec_(spec), work_(work) {}

    // Part b of those that factor k makes. Only the stage of the first factor goes from one array to the other.
    void forwards(const T* src, T* dst, i32 k = 0, i32 b = 0) const
    {
        const DftFactor& f = spec_.factors[k];
        const i64 at = points(f) * b;
        src += at, dst += at;
        if (points(f) <= working_set) {
            for (i32 j = k; j < spec_.last_factor; ++j, src = dst) stage(spec_.factors[j], src, dst);
            last(f, dst, dst);
        } else {
            stage(f, src, dst);
            for (i32 i = 0; i < f.radix; ++i) forwards(dst, dst, k + 1, i);
        }
    }
    void backwards(const T* src, T* dst, i32 k = 0, i32 b = 0) const
    {
        const DftFactor& f = spec_.factors[k];
        const i64 at = points(f) * b;
        src += at, dst += at;
        if (points(f) <= working_set) {
            last(f, src, dst);
            for (i32 j = spec_.last_factor; j-- > k;) stage(spec_.factors[j], dst, dst);
        } else {
            for (i32 i = 0; i < f.radix; ++i) backwards(src, dst, k + 1, i);
            stage(f, dst, dst);
        }
    }

private:
    static i64 points(const DftFactor& f) { return i64{f.radix} * f.count; }

    void last(const DftFactor& k, const T* src, T* dst) const
    {
        const DftFactor& f = spec_.factors[spec_.last_factor];
        const i32 number = f.stride / k.stride;
        if (f.fact_table == nullptr) return Body::primes.of[f.radix](src, dst, number);
        for (i32 b = 0; b < number; ++b, src += f.radix, dst += f.radix)
            Body::any_prime(src, dst, f.radix, 1, f.fact_table, work_);
    }
    void stage(const DftFactor& f, const T* src, T* dst) const
    {
        const auto* w = static_cast<const R*>(f.twiddles);
        if (f.fact_table == nullptr) return Body::facts.of[f.radix](src, dst, f.count, f.blocks, w);
        using Block = Rows<Interleaved<R>>;
        for (i32 b = 0; b < f.blocks; ++b, src += points(f), dst += points(f))
            any_columns<forward, Body::way, R>(Block{array(src), f.count}, Block{{dst}, f.count}, f.radix, 0, f.count,
                                               w, {f.fact_table, f.radix}, work_);
    }

    const YmpDftSpec& spec_;
    t_8u* work_;
};

template <class R> void forward_by_factors(const YmpDftSpec* spec, const cpx<R>* src, cpx<R>* dst, t_8u* work)
{
    Stages<R, true>(*spec, work).forwards(src, dst);
}
template <class R> void inverse_by_factors(const YmpDftSpec* spec, const cpx<R>* src, cpx<R>* dst, t_8u* work)
{
    Stages<R, false>(*spec, work).backwards(src, dst);
}

template <class T> void reorder(const YmpDftSpec* record, const T* src, T* dst, i32 sign)
{
    const YmpDftSpec& spec = record_of(record);
    if (!spec.prime_fact) return copy(src, dst, spec.length);
    const DftFactor& f = spec.factors[spec.last_factor];
    for (i64 b = 0; b < f.stride; ++b)
        for (i64 i = 0; i < f.radix; ++i) {
            const i64 place = b * f.radix + i, frequency = spec.permutation[b] + i * f.stride;
            if (sign < 0) dst[place] = src[frequency];
            else dst[frequency] = src[place];
        }
}

} // namespace

#define OUT_OF_ORDER(t)                                                                                                \
    PRIMITIVE(4, ownscDftFwd_OutOrd_##t, forward_by_factors)                                                           \
    PRIMITIVE(4, ownscDftInv_OutOrd_##t, inverse_by_factors)                                                           \
    PRIMITIVE(4, ownscDftReord_##t, reorder)
ORV_DFT_PAIRS(OUT_OF_ORDER)

} // namespace orv::dft::general
