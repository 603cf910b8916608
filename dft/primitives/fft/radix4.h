// The engine: a first pass over points in bit-reversed order, then passes that join four neighbouring transforms to
// one, each element by a twiddle. Between both ends numbers stand as a view has them; the first pass brings them there,
// the last one may take them elsewhere.
#pragma once

#include "dft/primitives/fft/fixed.h"
#include "dft/primitives/fft/tables.h"

namespace orv::dft {

// The first pass has 4 points of a transform in hand, 8 where the order is odd.
constexpr i32 first_log(i32 order) { return order % 2 == 0 ? 2 : 3; }

// What is worked on at once: half of a first-level cache of 32 KiB.
template <class R> inline constexpr i32 leaf_order = sizeof(R) == 8 ? 10 : 11;

// Orders to which the twiddles of one table lead; single precision takes one step more, with a table of its own.
inline constexpr i32 table_limit = 16;
template <class R> inline constexpr i32 flat_limit = sizeof(R) == 8 ? table_limit : table_limit + 1;
template <class R> inline constexpr i64 level_one_bytes(i32 order)
{
    return table_bytes((i64{1} << min(order, table_limit)) + 1, sizeof(cpx<R>));
}
template <class R> const R* extra_twiddles(const R* table)
{
    return table + level_one_bytes<R>(table_limit) / static_cast<i64>(sizeof(R));
}

// The twiddles of the pass over transforms of so many points: behind three for each point of every pass before.
template <class R> const R* stage_twiddles(const R* table, i32 order, i64 points)
{
    return table + 2 * (points - (i64{1} << first_log(order)));
}
template <class R> const R* last_stage(const R* table, i32 n) { return stage_twiddles(table, log_of(n), n / 4); }

// How rows are multiplied: a twiddle for each, or of four rows only that of the third, whose square and cube the
// others' are.
enum class Twiddles { all, one };

template <int radix, Twiddles which, class R> ORV_INLINE void turn(split<R> (&x)[radix], const R* w)
{
    constexpr i64 lanes = vec<R>::lanes;
    const auto twiddle = [w](i64 i) ORV_INLINE_LAMBDA {
        return split<R>{load(w + 2 * lanes * i), load(w + 2 * lanes * i + lanes)};
    };
    if constexpr (which == Twiddles::one) {
        const split<R> first = twiddle(0), second = first * first;
        x[1] = x[1] * second, x[2] = x[2] * first, x[3] = x[3] * (second * first);
    } else each<radix - 1>([&](auto q) ORV_INLINE_LAMBDA { x[q + 1] = x[q + 1] * twiddle(q); });
}

// Groups of `radix` rows each, `between` points from row to row, the groups one behind the other; all columns of a row.
template <int radix, Twiddles which = Twiddles::all, class From, class To, class R>
[[gnu::noinline]] void pass(From from, To to, i64 groups, i64 between, i64 columns, const R* twiddles)
{
    constexpr i64 lanes = vec<R>::lanes, step = 2 * lanes * (which == Twiddles::one ? 1 : radix - 1);
    const auto butterfly = [=](i64 at, const R* w) ORV_INLINE_LAMBDA {
        split<R> x[radix];
        each<radix>([&](auto q) ORV_INLINE_LAMBDA { x[q] = from.get(at + q * between); });
        turn<radix, which>(x, w);
        transform<radix, true>(x);
        each<radix>([&](auto q) ORV_INLINE_LAMBDA { to.put(at + q * between, x[q]); });
    };
    // The longer loop inside.
    i64 outer = groups, inner = columns / lanes, outer_step = radix * between, inner_step = lanes;
    i64 outer_twiddles = 0, inner_twiddles = step;
    if (inner < outer) {
        std::swap(outer, inner), std::swap(outer_step, inner_step), std::swap(outer_twiddles, inner_twiddles);
    }
    for (i64 i = 0; i < outer; ++i) {
        const R* w = twiddles + i * outer_twiddles;
        i64 at = i * outer_step;
        for (i64 j = 0; j < inner; ++j, at += inner_step, w += inner_twiddles) butterfly(at, w);
    }
}

// Two transforms of n/2 points joined to one; the table has the twiddles of half of their points, the other half's are
// these times -i.
template <class From, class To, class R> [[gnu::noinline]] void join_halves(From from, To to, i64 n, const R* twiddles)
{
    constexpr i64 lanes = vec<R>::lanes;
    for (i64 c = 0; c < n / 4; c += lanes, twiddles += 2 * lanes) {
        const split<R> w{load(twiddles), load(twiddles + lanes)};
        const split<R> a = from.get(c), b = from.get(c + n / 4);
        const split<R> first = from.get(c + n / 2) * w, second = from.get(c + 3 * (n / 4)) * w;
        split<R> sum, difference;
        add_turned<true>(b, second, sum, difference);
        to.put(c, a + first), to.put(c + n / 2, a - first);
        to.put(c + n / 4, sum), to.put(c + 3 * (n / 4), difference);
    }
}

// Where point q of group i of a first pass stands in the source.
struct Reversed {
    const i32* table; // of pairs: doubled
    i64 n;
    template <int radix> ORV_INLINE i64 at(i64 group, int q) const
    {
        return table[group * (radix / 4)] / 2 + reversed(q, log_of(radix)) * (n / radix);
    }
};
struct InOrder {
    template <int radix> ORV_INLINE i64 at(i64 group, int q) const { return radix * group + q; }
};

// First passes, of the groups whose results are the points from begin to end.
template <int radix, bool forward, class R, class Place>
[[gnu::noinline]] void first_pass(const cpx<R>* src, Blocks<R> to, i64 begin, i64 end, Place place)
{
    using C = vec<cpx<R>>;
    constexpr i64 lanes = vec<R>::lanes, together = C::lanes;
    for (i64 i = begin / radix; i < end / radix; i += together) {
        C x[radix];
        each<radix>([&](auto q) ORV_INLINE_LAMBDA {
            const i64 at = place.template at<radix>(i, q);
            x[q] = gather(src + at, place.template at<radix>(i + together - 1, q) - at);
        });
        transform<radix, forward>(x);
        // Lanes are groups, and become points.
        each<radix / lanes>([&](auto t) ORV_INLINE_LAMBDA {
            if constexpr (together == 1) {
                const i64 at = radix * i + t * lanes;
                const split<R> y = apart(x[t * lanes], x[t * lanes + 1]);
                to.put(at, forward ? y : exchanged(y));
            } else {
                vec<R> rows[] = {{x[t * lanes].r}, {x[t * lanes + 1].r}, {x[t * lanes + 2].r}, {x[t * lanes + 3].r}};
                transpose(rows);
                for (int group = 0; group < together; ++group) {
                    const split<R> y{rows[2 * group], rows[2 * group + 1]};
                    to.put(radix * (i + group) + t * lanes, forward ? y : exchanged(y));
                }
            }
        });
    }
}

template <int radix, class R, class Place>
[[gnu::noinline]] void first_pass(Planes<R> src, Planes<R> to, i64 begin, i64 end, Place place)
{
    constexpr i64 lanes = vec<R>::lanes;
    for (i64 i = begin / radix; i < end / radix; i += lanes) {
        split<R> x[radix];
        each<radix>([&](auto q) ORV_INLINE_LAMBDA {
            R re[lanes], im[lanes];
            for (int l = 0; l < lanes; ++l) {
                const i64 at = place.template at<radix>(i + l, q);
                re[l] = src.re[at], im[l] = src.im[at];
            }
            x[q] = {gather(re, 1), gather(im, 1)};
        });
        transform<radix, true>(x);
        each<radix / lanes>([&](auto t) ORV_INLINE_LAMBDA {
            split<R> rows[lanes];
            for (int l = 0; l < lanes; ++l) rows[l] = x[t * lanes + l];
            transpose(rows);
            for (int l = 0; l < lanes; ++l) to.put(radix * (i + l) + t * lanes, rows[l]);
        });
    }
}

// The transform of 2^order points, up to a view. Source: gives the first pass.
template <class R, class Source, class View> class Flat {
public:
    Flat(Source source, View data, i32 order, const R* twiddles)
        : source_(source), data_(data), order_(order), table_(twiddles)
    {
    }

    template <class To> void run(To to) const
    {
        const i64 n = i64{1} << order_;
        if (order_ > table_limit) {
            transforms(0, table_limit, 2);
            join_halves(data_, to, n, extra_twiddles(table_));
        } else {
            transforms(0, order_ - 2, 4);
            pass<4>(data_, to, 1, n / 4, n / 4, stage(n / 4));
        }
    }

private:
    i32 one_level() const { return static_cast<i32>(min(order_, table_limit)); }
    const R* stage(i64 points) const { return stage_twiddles(table_, one_level(), points); }
    i32 first() const { return first_log(one_level()); }

    // So many transforms of 2^order points, from one on: as many passes at a time as the cache holds points for.
    void transforms(i64 at, i32 order, i64 count) const
    {
        if (order > leaf_order<R>) {
            for (i64 i = 0; i < count; ++i, at += i64{1} << order) {
                transforms(at, order - 2, 4);
                join(at, i64{1} << order, i64{1} << (order - 2));
            }
            return;
        }
        const i64 all = count << order, some = min(all, i64{1} << leaf_order<R>), end = at + all;
        for (; at < end; at += some) {
            if (first() == 2) source_.template first<4>(data_, at, at + some);
            else source_.template first<8>(data_, at, at + some);
            for (i64 points = i64{1} << first(); points < i64{1} << order; points *= 4) join(at, some, points);
        }
    }
    void join(i64 at, i64 all, i64 points) const
    {
        pass<4>(data_.from(at), data_.from(at), all / (4 * points), points, points, stage(points));
    }

    Source source_;
    View data_;
    i32 order_;
    const R* table_;
};

template <bool forward, class R, class Place> struct PairSource {
    const cpx<R>* src;
    Place place;
    template <int radix> void first(Blocks<R> to, i64 begin, i64 end) const
    {
        first_pass<radix, forward>(src, to, begin, end, place);
    }
};
template <class R, class Place> struct PlaneSource {
    Planes<R> src;
    Place place;
    template <int radix> void first(Planes<R> to, i64 begin, i64 end) const
    {
        first_pass<radix>(src, to, begin, end, place);
    }
};

} // namespace orv::dft
