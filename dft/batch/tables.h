// What the passes over columns of a length go by: the places of the shortest transforms, and the twiddles of joins.
#pragma once

#include "dft/batch/factors.h"
#include "dft/primitives/dft/stages.h"
#include "frame/roots.h"

namespace orv::dft::batch {

template <class R> struct Tables {
    i64 length, apart; // of a shortest transform's points; negative: read backwards
    i64 joins;
    const i64 *radixes, *starts, *places;
    const R* twiddles; // of the join by radixes[j] from places[j] on
};

template <class R> constexpr i64 reals_of_twiddles(const Factors& f)
{
    i64 reals = 0, n = f.last();
    for (i64 j = f.joins(); j-- > 0; n *= f.of[j]) reals += n * (f.of[j] - 1) * general::reals_of_twiddle<R>;
    return reals;
}

// A register of twiddles has the same in all its lanes.
template <class R> void put_twiddles(const Factors& f, R* to, i64* places)
{
    constexpr i64 lanes = vec<cpx<R>>::lanes;
    const R* const begin = to;
    i64 joined = f.last();
    for (i64 j = f.joins(); j-- > 0; joined *= f.of[j]) {
        places[j] = to - begin;
        for (i64 q = 0; q < joined; ++q)
            for (i64 row = 1; row < f.of[j]; ++row) {
                const auto w = rounded<R>(root(-row * q, joined * f.of[j]));
                for (i64 lane = 0; lane < lanes; ++lane, to += 2) to[0] = to[1] = w.re;
                for (i64 lane = 0; lane < lanes; ++lane, to += 2) to[0] = -w.im, to[1] = w.im;
            }
    }
}

// Where each of the shortest transforms begins: its place in digits of the radixes, read backwards.
inline void put_starts(const Factors& f, i64 length, bool forward, i64* starts)
{
    const i64 transforms = length / f.last();
    for (i64 t = 0; t < transforms; ++t) {
        i64 start = 0, digits = 1, rest = t, below = transforms;
        for (i64 j = 0; j < f.joins(); ++j) {
            below /= f.of[j];
            start += rest / below * digits;
            rest %= below, digits *= f.of[j];
        }
        starts[t] = forward ? start : length - start;
    }
}

} // namespace orv::dft::batch
