// The engine: a first pass over points in bit-reversed order, then passes that join four or eight neighbouring
// transforms to one, each element by a twiddle. Between both ends numbers stand as a view has them; the first pass
// brings them there, the last one may take them elsewhere.
#pragma once

#include "dft/primitives/fft/fixed.h"
#include "dft/primitives/fft/tables.h"

namespace orv::dft {

// The logarithm of how many points of a transform the first pass has in hand: more than registers have room for where
// that saves a pass.
constexpr i32 first_log(i32 order) { return order == 8 ? 5 : 4; }
// A pass joins eight transforms, a level for a third of the memory's traffic; four where two or four levels are left.
constexpr i32 pass_log(i32 rest) { return rest == 2 || rest == 4 ? 2 : 3; }

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

// How rows are multiplied: by a twiddle each; or there is one twiddle only, of the points 4m + 1, whose square and cube
// the other two are.
enum class Twiddles { all, one };

// Groups of `radix` rows each, `between` points from row to row, the groups one behind the other; all columns of a row.
// Rows stand in bit-reversed order, and so do the twiddles of all of them but the first.
template <int radix, Twiddles which = Twiddles::all, class From, class To, class R>
[[gnu::noinline]] void pass(From from, To to, i64 groups, i64 between, i64 columns, const R* twiddles)
{
    constexpr i64 lanes = vec<R>::lanes, step = 2 * lanes * (which == Twiddles::one ? 1 : radix - 1);
    const auto butterfly = [=](i64 at, const R* w) ORV_INLINE_LAMBDA {
        const auto twiddle = [w](i64 i) ORV_INLINE_LAMBDA {
            return split<R>{load(w + 2 * lanes * i), load(w + 2 * lanes * i + lanes)};
        };
        const auto turned = [=](auto point) ORV_INLINE_LAMBDA {
            constexpr int row = reversed(point, log_of(radix));
            const split<R> x = from.get(at + row * between);
            if constexpr (row == 0) return x;
            else if constexpr (which == Twiddles::all) return x * twiddle(row - 1);
            else {
                const split<R> first = twiddle(0);
                return x * (point == 1 ? first : point == 2 ? first * first : first * first * first);
            }
        };
        split<R> x[radix];
        transform<radix, true>(x, turned, [](auto) {});
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

// Where the points of a first pass stand: point q of a group is row(q) steps from the group's first one. A register
// that has room for two pairs takes a partner group with each: in reversed order that is the group half of all points
// away, whose points are the neighbours in the source; in order it is the next group.
struct Reversed {
    static constexpr bool partner_in_other_half = true;
    const i32* table; // of pairs: doubled
    i64 n;
    template <int radix> ORV_INLINE i64 first(i64 group) const { return table[group * (radix / 4)]; }
    template <int radix> ORV_INLINE i64 step() const { return n / radix; }
    template <int radix> ORV_INLINE i64 partner() const { return n / 2; } // so many points behind in the results
    template <int radix> static constexpr int row(int q) { return q; }
    template <int, class T> ORV_INLINE static vec<T> load(const T* p) { return loadu(p); }
};
struct InOrder {
    static constexpr bool partner_in_other_half = false;
    template <int radix> ORV_INLINE i64 first(i64 group) const { return 2 * radix * group; }
    template <int radix> ORV_INLINE i64 step() const { return 1; }
    template <int radix> ORV_INLINE i64 partner() const { return radix; }
    template <int radix> static constexpr int row(int q) { return reversed(q, log_of(radix)); }
    template <int radix, class T> ORV_INLINE static vec<T> load(const T* p) { return gather(p, radix); }
};

// Rows at equal steps, by four pointers and the first four multiples of the step: all of them at once would need more
// registers than there are, and one after the other four instructions each.
template <class T> class Rows {
public:
    ORV_INLINE Rows(const T* first, i64 step) : step_(step), first_(first) {}
    template <int row> ORV_INLINE const T* at() const { return first_ + row / 4 * (4 * step_) + row % 4 * step_; }

private:
    i64 step_;
    const T* first_;
};

// Parts of numbers to blocks: real ones lie in a half of a register, imaginary ones in the other, and are stored so,
// which spares the ports that add a shuffle. In single precision there are two points, each with that of the partner
// group.
template <bool forward> ORV_INLINE void put_parts(double* group, const vec<cpx<double>>* x, int point, i64)
{
    double* const re = group + 2 * point - point % 2;
    if (forward) scatter(re, 2, vec<double>{x->r});
    else scatter(re + 2, -2, vec<double>{x->r});
}
template <bool forward> ORV_INLINE void put_parts(float* group, const vec<cpx<float>>* x, int point, i64 partner)
{
    auto* const re = reinterpret_cast<cpx<float>*>(group + 2 * point - point % 4) + (forward ? 0 : 2);
    scatter(re, forward ? 2 : -2, vec<cpx<float>>{low_lanes(x[0].r, x[1].r)});
    scatter(re + partner, forward ? 2 : -2, vec<cpx<float>>{high_lanes(x[0].r, x[1].r)});
}

// First passes, of the groups whose results are the points from begin to end, and of their partners in the other half.
template <int radix, bool forward, class R, class Place>
[[gnu::noinline]] void first_pass(const cpx<R>* src, Blocks<R> to, i64 begin, i64 end, Place place)
{
    using C = vec<cpx<R>>;
    constexpr int together = C::lanes, groups = Place::partner_in_other_half ? 1 : together;
    const i64 step = place.template step<radix>(), partner = place.template partner<radix>();
    for (i64 i = begin / radix; i < end / radix; i += groups) {
        C x[radix];
        const Rows<cpx<R>> rows(reinterpret_cast<const cpx<R>*>(&src->re + place.template first<radix>(i)), step);
        const auto load = [&](auto q) ORV_INLINE_LAMBDA {
            return Place::template load<radix>(rows.template at<Place::template row<radix>(q)>());
        };
        constexpr int quarter = radix / 4;
        transform<radix, forward, together>(x, load, [&](int k) ORV_INLINE_LAMBDA {
            each<4>([&](auto q) ORV_INLINE_LAMBDA {
                const int point = k + q * quarter;
                put_parts<forward>(to.p + 2 * radix * i, x + point, point, partner);
            });
        });
    }
}

template <int radix, class R, class Place>
[[gnu::noinline]] void first_pass(Planes<R> src, Planes<R> to, i64 begin, i64 end, Place place)
{
    constexpr i64 lanes = vec<R>::lanes;
    for (i64 i = begin / radix; i < end / radix; i += lanes) {
        split<R> x[radix];
        i64 first[lanes];
        each<lanes>([&](auto l) ORV_INLINE_LAMBDA { first[l] = place.template first<radix>(i + l) / 2; });
        const auto load = [&](auto q) ORV_INLINE_LAMBDA {
            const i64 row = Place::template row<radix>(q) * place.template step<radix>();
            return split<R>{gather(src.re + row, first), gather(src.im + row, first)};
        };
        transform<radix, true>(x, load, [](auto) {});
        each<radix / lanes>([&](auto t) ORV_INLINE_LAMBDA {
            split<R> square[lanes];
            each<lanes>([&](auto l) ORV_INLINE_LAMBDA { square[l] = x[t * lanes + l]; });
            exchange_axes(square);
            each<lanes>([&](auto l) ORV_INLINE_LAMBDA { to.put(radix * (i + l) + t * lanes, square[l]); });
        });
    }
}

// The passes to 2^order points: done[0] levels are those of the first pass, and so on.
struct Passes {
    i32 done[table_limit / 2], last = 0;
    explicit Passes(i32 order)
    {
        for (done[0] = first_log(order); done[last] < order; ++last)
            done[last + 1] = done[last] + pass_log(order - done[last]);
    }
    int log(i32 i) const { return done[i] - done[i - 1]; }
    // The twiddles of pass i: behind those of all passes before, one for each point but those that the first pass has.
    template <class R> const R* twiddles(i32 i, const R* table) const
    {
        return table + 2 * ((i64{1} << done[i - 1]) - (1 << done[0]));
    }
    // Pass i, over `all` points.
    template <class From, class To, class R> void run(i32 i, From from, To to, i64 all, const R* table) const
    {
        const i64 points = i64{1} << done[i - 1], groups = all >> done[i];
        if (log(i) == 3) pass<8>(from, to, groups, points, points, twiddles(i, table));
        else pass<4>(from, to, groups, points, points, twiddles(i, table));
    }
};

// Of the last pass to n points the columns from begin to end; the view starts at the first of them.
template <class View, class R> void last_pass(View view, i32 n, i32 begin, i32 end, const R* table)
{
    const Passes passes(log_of(n));
    const int log = passes.log(passes.last);
    const i64 points = i64{n} >> log;
    const R* const twiddles = passes.twiddles(passes.last, table) + 2 * ((1 << log) - 1) * i64{begin};
    if (log == 3) pass<8>(view, view, 1, points, end - begin, twiddles);
    else pass<4>(view, view, 1, points, end - begin, twiddles);
}

// The transform of 2^order points, up to a view. Source: gives the first pass.
template <class R, class Source, class View> class Flat {
public:
    Flat(Source source, View data, i32 order, const R* twiddles)
        : source_(source), data_(data), order_(order), table_(twiddles),
          passes_(static_cast<i32>(min(order, table_limit)))
    {
    }
    template <class To> void run(To to) const
    {
        const i64 n = i64{1} << order_;
        if (order_ > table_limit) {
            transforms(0, passes_.last, 2 / halves);
            join_halves(data_, to, n, extra_twiddles(table_));
        } else {
            transforms(0, passes_.last - 1, (i64{1} << passes_.log(passes_.last)) / halves);
            passes_.run(passes_.last, data_, to, n, table_);
        }
    }

private:
    // Where the first pass works on both halves of all points at a time, so does everything up to the last pass.
    static constexpr i64 halves = Source::both_halves ? 2 : 1;

    // So many transforms, by the passes up to i, from one point on: as many passes at a time as a cache holds points
    // for.
    void transforms(i64 at, i32 i, i64 count) const
    {
        const i32 order = passes_.done[i];
        const i64 n = i64{1} << order;
        if (n > leaf) {
            for (const i64 end = at + count * n; at < end; at += n) {
                transforms(at, i - 1, i64{1} << passes_.log(i));
                join(i, at, n);
            }
            return;
        }
        const i64 all = count << order, some = min(all, leaf);
        for (const i64 end = at + all; at < end; at += some) {
            if (passes_.done[0] == 5) source_.template first<32>(data_, at, at + some);
            else source_.template first<16>(data_, at, at + some);
            for (i32 p = 1; p <= i; ++p) join(p, at, some);
        }
    }
    void join(i32 i, i64 at, i64 all) const
    {
        for (i64 half = 0; half < halves; ++half, at += i64{1} << (order_ - 1))
            passes_.run(i, data_.from(at), data_.from(at), all, table_);
    }
    static constexpr i64 leaf = (i64{1} << leaf_order<R>) / halves;

    Source source_;
    View data_;
    i32 order_;
    const R* table_;
    Passes passes_;
};

// What gives the first pass its points.
template <bool forward, class R, class Place> struct PairSource {
    static constexpr bool both_halves = Place::partner_in_other_half && vec<cpx<R>>::lanes > 1;
    const cpx<R>* src;
    Place place;
    template <int radix> void first(Blocks<R> to, i64 begin, i64 end) const
    {
        first_pass<radix, forward>(src, to, begin, end, place);
    }
};
template <class R, class Place> struct PlaneSource {
    static constexpr bool both_halves = false;
    Planes<R> src;
    Place place;
    template <int radix> void first(Planes<R> to, i64 begin, i64 end) const
    {
        first_pass<radix>(src, to, begin, end, place);
    }
};

} // namespace orv::dft
