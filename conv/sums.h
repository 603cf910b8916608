// The direct sums: z[j] = sum over i of a[i]*b[i + shift + j*step], in every dimension over those i for which both
// indices lie in their arrays; zero where there are none.
//
// Each output is one chain: the products go to it one after the other, i ascending, dimension 0 fastest, each product
// and each sum rounded once. Of complex numbers the chains are four, of re*re, im*im, re*im and im*re, which meet at
// the end. So an output does not depend on which others are computed beside it: a group of them is only summed together
// over those i that all need, the ones before and behind are added by themselves. With neighbours in b and a step of 1
// a group is some registers of outputs; else it is four outputs.
#pragma once

#include "conv/view.h"

namespace orv::conv {

// The chains of n outputs.
template <class I, int n> struct Chains {
    static constexpr bool complex = is_complex<I>;
    I straight[n];              // a.re*b, or the whole product
    I crossed[complex ? n : 1]; // a.im*b

    ORV_INLINE void add(int k, I a, I b)
    {
        if constexpr (complex) {
            straight[k] += a.re * b;
            crossed[k] += a.im * b;
        } else straight[k] += a * b;
    }
    ORV_INLINE I value(int k) const
    {
        if constexpr (complex) return {straight[k].re - crossed[k].im, straight[k].im + crossed[k].re};
        else return straight[k];
    }
};

// The values of a register of chains.
template <class I> ORV_INLINE vec<I> joined(vec<I> straight, vec<I> crossed)
{
    if constexpr (is_complex<I>) return add_sub(straight, swap_neighbours(crossed));
    else return straight;
}

// Lines of a and b that meet: count elements of each, beginning at a and b, and as many lines as a_view has in its
// first `rank` dimensions. b_view has no use for its lengths.
template <class T> struct Lines {
    const View<const T>&a_view, &b_view;
    const T *a, *b;
    i64 count;
    i32 rank;

    template <class F> ORV_INLINE void each(F f) const { each_line(a_view, a, b_view, b, rank, f); }
};

// Outputs one by one, `n` of them `spread` apart in b.
template <class T, class I, int n_> struct OneByOne {
    static constexpr int n = n_;
    [[gnu::noinline]] static void sum(const Lines<T>& lines, i64 spread, Chains<I, n>& chains)
    {
        Chains<I, n> c = chains;
        const i64 a_step = lines.a_view.step[0], b_step = lines.b_view.step[0], count = lines.count;
        lines.each([&](const T* a, const T* b) ORV_INLINE_LAMBDA {
            for (i64 i = 0; i < count; ++i, a += a_step, b += b_step) {
                const I factor = as<I>(*a);
#pragma GCC unroll 4
                for (int k = 0; k < n; ++k) c.add(k, factor, as<I>(b[k * spread]));
            }
        });
        chains = c;
    }
};

// So many registers of outputs that are neighbours in b.
template <class T, class I, int registers> struct Neighbours {
    static constexpr int lanes = vec<I>::lanes, n = registers * lanes;

    ORV_INLINE static vec<I> wide(const T* b)
    {
        if constexpr (sizeof(T) == sizeof(I)) return loadu(b);
        else if constexpr (!is_complex<T>) return load_widened(b);
        else return {load_widened_first<vec<double>::lanes>(reinterpret_cast<const real_t<T>*>(b)).r};
    }
    template <class R> ORV_INLINE static vec<I> times(R a, vec<I> b) { return lane_product(vec<I>{splat(a).r}, b); }

    // The chains in registers.
    struct Sums {
        vec<I> straight[registers], crossed[registers];

        ORV_INLINE void add(const Lines<T>& lines)
        {
            const i64 a_step = lines.a_view.step[0], count = lines.count;
            lines.each([&](const T* a, const T* b) ORV_INLINE_LAMBDA {
                for (const T* const end = b + count; b != end; a += a_step, ++b) {
                    const I factor = as<I>(*a);
#pragma GCC unroll 8
                    for (int k = 0; k < registers; ++k) {
                        const vec<I> v = wide(b + k * lanes);
                        if constexpr (is_complex<I>) {
                            straight[k] += times(factor.re, v);
                            crossed[k] += times(factor.im, v);
                            settle(crossed[k]);
                        } else straight[k] += times(factor, v);
                        settle(straight[k]); // the next load is to wait: registers would not hold all of them at once
                    }
                }
            });
        }
    };

    [[gnu::noinline]] static void sum(const Lines<T>& lines, i64 /* of neighbours */, Chains<I, n>& chains)
    {
        Sums sums;
#pragma GCC unroll 8
        for (int k = 0; k < registers; ++k) {
            sums.straight[k] = loadu(chains.straight + k * lanes);
            if constexpr (is_complex<I>) sums.crossed[k] = loadu(chains.crossed + k * lanes);
        }
        sums.add(lines);
#pragma GCC unroll 8
        for (int k = 0; k < registers; ++k) {
            storeu(chains.straight + k * lanes, sums.straight[k]);
            if constexpr (is_complex<I>) storeu(chains.crossed + k * lanes, sums.crossed[k]);
        }
    }
    // The outputs themselves, from zero on, where they are neighbours, too, and are not rounded.
    [[gnu::noinline]] static void store(const Lines<T>& lines, I* z)
    {
        Sums sums;
#pragma GCC unroll 8
        for (int k = 0; k < registers; ++k) sums.straight[k] = sums.crossed[k] = zeros<I>();
        sums.add(lines);
#pragma GCC unroll 8
        for (int k = 0; k < registers; ++k) storeu(z + k * lanes, joined(sums.straight[k], sums.crossed[k]));
    }
};

// The indices i of one output, from first to last; none if last is below first.
struct Range {
    i64 first, last;
};
inline Range range_of(i64 na, i64 nb, i64 lag) { return {max(0, -lag), min(na - 1, nb - 1 - lag)}; }

// One line of outputs along dimension 0.
template <class T, class I> class Line {
public:
    Line(const View<const T>& a, const View<const T>& b) : a_(a), b_(b) {}

    // The elements of a and b that meet in the dimensions above the first, lags being those of the line; false if none.
    bool meet(const View<const T>& a, const View<const T>& b, const i64* lags)
    {
        a_.at = a.at, b_.at = b.at;
        for (i32 d = 1; d < a.rank; ++d) {
            const Range r = range_of(a.n[d], b.n[d], lags[d]);
            if (r.last < r.first) return false;
            a_.at += r.first * a.step[d], a_.n[d] = r.last - r.first + 1;
            b_.at += (r.first + lags[d]) * b.step[d];
        }
        return true;
    }

    // n outputs z[j*z_step], whose lags are lag + j*step.
    void compute(i64 lag, i64 step, T* z, i64 z_step, i64 n) const
    {
        using Wide = Neighbours<T, I, is_complex<I> ? 4 : 8>;
        using Narrow = Neighbours<T, I, 2>;
        i64 j = 0;
        if (b_.step[0] == 1 && step == 1) {
            while (n - j >= Narrow::n) {
                const i64 first = lag + j;
                const bool inside = n - j >= Wide::n && all_inside(first, first + Wide::n - 1);
                if (inside) inner_group<Wide>(first, 1, z + j * z_step, z_step), j += Wide::n;
                else group<Narrow>(first, 1, z + j * z_step, z_step), j += Narrow::n;
            }
        }
        for (; n - j >= 4; j += 4) group<OneByOne<T, I, 4>>(lag + j * step, step, z + j * z_step, z_step);
        for (; j < n; ++j) group<OneByOne<T, I, 1>>(lag + j * step, step, z + j * z_step, z_step);
    }

private:
    i64 na() const { return a_.n[0]; }
    i64 nb() const { return b_.n[0]; }
    // Whether all of a meets b for every output with these lags.
    bool all_inside(i64 first_lag, i64 last_lag) const { return first_lag >= 0 && last_lag <= nb() - na(); }

    ORV_INLINE Lines<T> lines(const T* a, const T* b, i64 lag, Range r, i32 rank) const
    {
        const i64 first = r.first;
        return {a_, b_, a + first * a_.step[0], b + (first + lag) * b_.step[0], r.last - first + 1, rank};
    }

    // The group of outputs of the form By, the first of which has that lag: where all of a meets b for all of them, and
    // where that need not be so.
    template <class By> void inner_group(i64 lag, i64 step, T* z, i64 z_step) const
    {
        const Lines<T> all = lines(a_.at, b_.at, lag, {0, na() - 1}, a_.rank);
        if constexpr (std::is_same_v<T, I> && requires { By::store(all, z); })
            if (z_step == 1) return By::store(all, z);
        Chains<I, By::n> chains{};
        By::sum(all, step * b_.step[0], chains);
        store(chains, z, z_step);
    }
    template <class By> [[gnu::noinline]] void group(i64 lag, i64 step, T* z, i64 z_step) const
    {
        const i64 last_lag = lag + (By::n - 1) * step;
        if (all_inside(lag, last_lag)) return inner_group<By>(lag, step, z, z_step);
        Chains<I, By::n> chains{};
        const Range common{range_of(na(), nb(), lag).first, range_of(na(), nb(), last_lag).last};
        if constexpr (By::n == 1) {
            if (common.first <= common.last) By::sum(lines(a_.at, b_.at, lag, common, a_.rank), 0, chains);
        } else if (common.last < common.first) {
            for (int k = 0; k < By::n; ++k) group<OneByOne<T, I, 1>>(lag + k * step, step, z + k * z_step, z_step);
            return;
        } else add_edges_too<By>(lag, step, common, chains);
        store(chains, z, z_step);
    }
    template <int n> void store(const Chains<I, n>& chains, T* z, i64 z_step) const
    {
        for (int k = 0; k < n; ++k) z[k * z_step] = as<T>(chains.value(k));
    }

    // All of an output's products in a line before those of the next one.
    template <class By> void add_edges_too(i64 lag, i64 step, Range common, Chains<I, By::n>& chains) const
    {
        const i64 first = range_of(na(), nb(), lag + (By::n - 1) * step).first, last = range_of(na(), nb(), lag).last;
        each_line(a_, b_, [&](const T* a, const T* b) ORV_INLINE_LAMBDA {
            for (const bool behind : {false, true}) {
                const Range some = behind ? Range{common.last + 1, last} : Range{first, common.first - 1};
                if (some.first <= some.last) add(a, b, lag, step, some, chains);
                if (!behind) By::sum(lines(a, b, lag, common, 1), step * b_.step[0], chains);
            }
        });
    }
    // Products that some outputs of a group have and others not: of neighbours among them, for each i.
    template <int n>
    [[gnu::noinline]] void add(const T* a, const T* b, i64 lag, i64 step, Range r, Chains<I, n>& chains) const
    {
        for (i64 i = r.first; i <= r.last; ++i) {
            const I factor = as<I>(a[i * a_.step[0]]);
            const i64 place = i + lag; // in b, of output 0
            const i64 begin = place >= 0 ? 0 : step == 1 ? -place : (step - 1 - place) / step;
            const i64 beyond = nb() - place, end = min(n, step == 1 ? beyond : (beyond + step - 1) / step);
            const T* at = b + (place + begin * step) * b_.step[0];
            for (i64 k = begin; k < end; ++k, at += step * b_.step[0])
                chains.add(static_cast<int>(k), factor, as<I>(*at));
        }
    }

    View<const T> a_, b_;
};

template <class I, class T>
void sum_products(const View<const T>& a, const View<const T>& b, const View<T>& z, const i64* shift, const i64* step)
{
    i64 lags[most_dimensions] = {}, index[most_dimensions] = {};
    for (i32 d = 0; d < z.rank; ++d) lags[d] = shift[d];
    Line<T, I> line(a, b);
    each_line(z, z, [&](T* at, T*) {
        if (line.meet(a, b, lags)) line.compute(lags[0], step[0], at, z.step[0], z.n[0]);
        else
            for (i64 j = 0; j < z.n[0]; ++j) at[j * z.step[0]] = T{};
        for (i32 d = 1; d < z.rank; ++d) { // where each_line goes next
            lags[d] += step[d];
            if (++index[d] < z.n[d]) break;
            lags[d] = shift[d], index[d] = 0;
        }
    });
}

} // namespace orv::conv
