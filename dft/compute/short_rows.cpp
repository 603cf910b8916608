#include "dft/compute/short_rows.h"
#include "dft/compute/real_points.h"

namespace orv::dft {
namespace {

constexpr int shortest = 2, longest = 15;

// As many rows as a register has lanes.
template <class R> struct RowsAt {
    R* first;
    i64 step; // 0: one row, which all lanes are for
    ORV_INLINE R* row(int l) const { return first + l * step; }
};

// Of n places so many at a time, the last ones together with places before them.
template <int n, int count, class F> ORV_INLINE void each_block(F f)
{
    general::steps<(n + count - 1) / count>(
        [&](auto block) ORV_INLINE_LAMBDA { f(block * count + count <= n ? block * count : n - count); });
}

// Reals j to j + count - 1 of the rows.
template <int count, class R> ORV_INLINE void load_reals(RowsAt<R> rows, i64 j, vec<R>* x)
{
    constexpr int lanes = vec<R>::lanes;
    vec<R> square[lanes];
    general::steps<lanes>([&](auto l) ORV_INLINE_LAMBDA { square[l] = load_first<count>(rows.row(l) + j); });
    transpose(square);
    general::steps<count>([&](auto i) ORV_INLINE_LAMBDA { x[i] = square[i]; });
}
template <int n, class R> ORV_INLINE void load_rows(RowsAt<R> rows, vec<R> (&x)[n])
{
    constexpr int lanes = vec<R>::lanes, count = n < lanes ? n : lanes;
    each_block<n, count>([&](int j) ORV_INLINE_LAMBDA { load_reals<count>(rows, j, x + j); });
}
template <int count, class R> ORV_INLINE void store_reals(RowsAt<R> rows, i64 j, const vec<R>* x)
{
    constexpr int lanes = vec<R>::lanes;
    vec<R> square[lanes];
    general::steps<lanes>([&](auto i) ORV_INLINE_LAMBDA { square[i] = x[i < count ? i : 0]; });
    transpose(square);
    general::steps<lanes>([&](auto l) ORV_INLINE_LAMBDA { store_first<count>(rows.row(l) + j, square[l]); });
}
template <int n, class R> ORV_INLINE void store_rows(RowsAt<R> rows, const vec<R> (&x)[n])
{
    constexpr int lanes = vec<R>::lanes, count = n < lanes ? n : lanes;
    each_block<n, count>([&](int j) ORV_INLINE_LAMBDA { store_reals<count>(rows, j, x + j); });
}

// Both parts side by side.
ORV_INLINE void store_pairs(RowsAt<double> rows, i64 at, split<double> x)
{
    storeu(rows.row(0) + at, vec<double>{_mm_unpacklo_pd(x.re.r, x.im.r)});
    storeu(rows.row(1) + at, vec<double>{_mm_unpackhi_pd(x.re.r, x.im.r)});
}
ORV_INLINE void store_pairs(RowsAt<float> rows, i64 at, split<float> x)
{
    const vec<cpx<float>> low{_mm_unpacklo_ps(x.re.r, x.im.r)}, high{_mm_unpackhi_ps(x.re.r, x.im.r)};
    const auto pair = [&](int l) ORV_INLINE_LAMBDA { return reinterpret_cast<cpx<float>*>(rows.row(l) + at); };
    distribute(low, pair(0), pair(1)), distribute(high, pair(2), pair(3));
}
// Two points that are neighbours: in whole registers, which what loads them next need not wait for.
ORV_INLINE void store_pairs(RowsAt<double> rows, i64 at, split<double> x, split<double> y)
{
    store_pairs(rows, at, x), store_pairs(rows, at + 2, y);
}
ORV_INLINE void store_pairs(RowsAt<float> rows, i64 at, split<float> x, split<float> y)
{
    vec<float> square[] = {x.re, x.im, y.re, y.im};
    transpose(square);
    general::steps<4>([&](auto l) ORV_INLINE_LAMBDA { storeu(rows.row(l) + at, square[l]); });
}
ORV_INLINE split<double> load_pairs(RowsAt<double> rows, i64 at)
{
    const vec<double> a = loadu(rows.row(0) + at), b = loadu(rows.row(1) + at);
    return {{_mm_unpacklo_pd(a.r, b.r)}, {_mm_unpackhi_pd(a.r, b.r)}};
}
ORV_INLINE split<float> load_pairs(RowsAt<float> rows, i64 at)
{
    const auto pair = [&](int l) ORV_INLINE_LAMBDA { return reinterpret_cast<const cpx<float>*>(rows.row(l) + at); };
    const vec<cpx<float>> low = collect(pair(0), pair(1)), high = collect(pair(2), pair(3));
    return {{_mm_shuffle_ps(low.r, high.r, _MM_SHUFFLE(2, 0, 2, 0))},
            {_mm_shuffle_ps(low.r, high.r, _MM_SHUFFLE(3, 1, 3, 1))}};
}

// body(input, output) for as many rows at a time as there are lanes, then for one after the other.
template <class R, class Body>
ORV_INLINE void each_rows(const R* from, i64 from_step, R* to, i64 to_step, i64 count, Body body)
{
    for (i64 rows; count > 0; count -= rows, from += rows * from_step, to += rows * to_step) {
        constexpr i64 lanes = vec<R>::lanes;
        const bool all = count >= lanes;
        rows = all ? lanes : 1;
        body(RowsAt<R>{const_cast<R*>(from), all ? from_step : 0}, RowsAt<R>{to, all ? to_step : 0});
    }
}

template <int n, class R> void forward(const R* from, i64 from_step, R* to, i64 to_step, i64 count, Layout layout)
{
    const Places at = places(layout, n);
    const bool ccs = layout == Layout::ccs;
    each_rows(from, from_step, to, to_step, count, [=](RowsAt<R> in, RowsAt<R> out) ORV_INLINE_LAMBDA {
        vec<R> x[n];
        load_rows<n>(in, x);
        split<R> spectrum[n / 2 + 1];
        real::forward<n, R>(x, spectrum);
        const auto put_real = [&](i64 place, split<R> point) ORV_INLINE_LAMBDA {
            if (ccs) store_pairs(out, place, point);
            else store_reals<1>(out, place, &point.re);
        };
        put_real(0, spectrum[0]);
        constexpr int inner = (n - 1) / 2;
        general::steps<inner / 2>([&](auto two) ORV_INLINE_LAMBDA {
            constexpr int k = 2 * two + 1;
            store_pairs(out, 2 * k + at.shift, spectrum[k], spectrum[k + 1]);
        });
        if constexpr (inner % 2 != 0) store_pairs(out, 2 * inner + at.shift, spectrum[inner]);
        if constexpr (n % 2 == 0) put_real(at.half, spectrum[n / 2]);
    });
}

template <int n, class R> void inverse(const R* from, i64 from_step, R* to, i64 to_step, i64 count, Layout layout)
{
    const Places at = places(layout, n);
    each_rows(from, from_step, to, to_step, count, [=](RowsAt<R> in, RowsAt<R> out) ORV_INLINE_LAMBDA {
        split<R> spectrum[n / 2 + 1];
        const auto get_real = [&](i64 place, split<R>& point) ORV_INLINE_LAMBDA {
            load_reals<1>(in, place, &point.re);
            point.im = zeros<R>();
        };
        get_real(0, spectrum[0]);
        general::steps<(n - 1) / 2>(
            [&](auto k) ORV_INLINE_LAMBDA { spectrum[k + 1] = load_pairs(in, 2 * (k + 1) + at.shift); });
        if constexpr (n % 2 == 0) get_real(at.half, spectrum[n / 2]);
        vec<R> x[n];
        real::inverse<n, R>(spectrum, x);
        store_rows<n>(out, x);
    });
}

template <class R, int... n> ShortRows<R>* find(i64 length, bool is_forward, std::integer_sequence<int, n...>)
{
    static constexpr ShortRows<R>*forwards[] = {forward<shortest + n, R>...},
                     *inverses[] = {inverse<shortest + n, R>...};
    if (length < shortest || length > longest) return nullptr;
    return (is_forward ? forwards : inverses)[length - shortest];
}

} // namespace

template <class R> ShortRows<R>* short_rows(i64 n, bool is_forward)
{
    return find<R>(n, is_forward, std::make_integer_sequence<int, longest - shortest + 1>());
}
template ShortRows<float>* short_rows(i64, bool);
template ShortRows<double>* short_rows(i64, bool);

} // namespace orv::dft
