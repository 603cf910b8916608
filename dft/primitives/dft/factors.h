// Transforms by factors, from the last factor to the first.
//
// The last one runs on the input itself, which it reads in digit-reversed order; every other joins what the ones before
// have left together. While a transform has more elements than the working set, its parts are finished one by one.
#pragma once

#include "dft/primitives/dft/plan.h"

namespace orv::dft::general {

template <class Form, bool forward> class ByFactors {
public:
    // work: of radixes without a body.
    ByFactors(const YmpDftSpec& spec, t_8u* work) : spec_(spec), work_(work) {}

    // All of it. Stages leave their results in `between` and only the first factor's in dst, which may be the same.
    void join(Form src, Form between, Form dst) const { join(src, between, 0, 0, dst); }

    // The way back, for stages that undo what they do: takes part b of src apart, and overwrites it.
    void part(Form src, Form dst, i32 k = 0, i32 b = 0) const
    {
        const DftFactor& f = spec_.factors[k];
        const Form part_b = src + points(f) * b;
        if (points(f) <= working_set) {
            for (i32 j = k; j < spec_.last_factor; ++j) stage(spec_.factors[j], part_b, part_b);
            last(f, b, [&](i64 start, i64 place) ORV_INLINE_LAMBDA { return Way{part_b + place, dst + start}; });
        } else {
            stage(f, part_b, part_b);
            for (i32 i = 0; i < f.radix; ++i) part(src, dst, k + 1, b * f.radix + i);
        }
    }

private:
    using Body = Bodies<Form, forward>;
    struct Way {
        Form from, to;
    };
    static i64 points(const DftFactor& f) { return i64{f.radix} * f.count; }

    // Part number b of those that factor k joins, from the input to `part` of its own in the result, and from there on.
    void join(Form src, Form result, i32 k, i32 b, Form to) const
    {
        const DftFactor& f = spec_.factors[k];
        const Form part = result + points(f) * b;
        if (points(f) <= working_set) {
            last(f, b, [&](i64 start, i64 place) ORV_INLINE_LAMBDA { return Way{src + start, part + place}; });
            for (i32 j = spec_.last_factor; --j > k;) stage(spec_.factors[j], part, part);
        } else {
            for (i32 i = 0; i < f.radix; ++i) {
                const i32 below = b * f.radix + i;
                join(src, result, k + 1, below, result + points(spec_.factors[k + 1]) * below);
            }
        }
        if (k < spec_.last_factor) stage(f, part, to);
    }

    // The transforms of the last factor that part b of factor k consists of. way(start, place): the arrays of a
    // transform whose elements are from start on in the one and from place on in the other.
    template <class Ways> void last(const DftFactor& k, i32 b, Ways way) const
    {
        const DftFactor& f = spec_.factors[spec_.last_factor];
        const i32 number = f.stride / k.stride;
        const i32* starts = spec_.permutation + i64{b} * number;
        if (auto* const body = f.fact_table != nullptr ? nullptr : Body::primes.of[f.radix]) {
            const Way all = way(0, 0);
            return all.from.pass(*body, all.to, f.stride, number, starts);
        }
        for (i32 i = 0; i < number; ++i) {
            const Way one = way(starts[i], i64{i} * f.radix);
            one.from.pass(Body::any_prime, one.to, f.radix, f.stride, f.fact_table, work_);
        }
    }
    void stage(const DftFactor& f, Form from, Form to) const
    {
        const auto* w = static_cast<const typename Form::real*>(f.twiddles);
        if (auto* const body = f.fact_table != nullptr ? nullptr : Body::facts.of[f.radix])
            return from.pass(*body, to, f.count, f.blocks, w);
        for (i32 b = 0; b < f.blocks; ++b, from = from + points(f), to = to + points(f))
            from.pass(Body::any_fact, to, f.radix, f.count, w, f.fact_table, work_);
    }

    const YmpDftSpec& spec_;
    t_8u* work_;
};

inline i32 points_of(const YmpDftSpec& spec) { return spec.factors[0].radix * spec.factors[0].count; }

// In place, the result grows at the head of the work area until its last stage.
template <bool forward, class Form> void by_factors(const YmpDftSpec& spec, Form src, Form dst, t_8u* work)
{
    const i64 n = points_of(spec);
    const Form between = src.meets(dst) ? Form::within(work, n) : dst;
    ByFactors<Form, forward>(spec, work + area_of_result<typename Form::real>(n)).join(src, between, dst);
}

} // namespace orv::dft::general
