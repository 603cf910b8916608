// Sums of the entries of a row times elements of x: the loops that nearly all time goes to.
//
// Partial sums are numbered: entry e of a step belongs to sum e modulo their number. They are added at the end, two and
// two, and what the steps leave follows entry by entry.
#pragma once

#include "spblas/vectors.h"

namespace orv::ORV_SPBLAS {

// Entries of a matrix that follow each other.
template <class T> struct Entries {
    const T* val;
    const Int* col;
    i64 n;
};

static_assert(vector_bytes == 16, "the lanes below are gathered by name, and the sums are numbered by them");

// The elements of x that a register of entries meets.
ORV_INLINE vec<double> gather_at(const double* x, const Int* col)
{
    return {_mm_loadh_pd(_mm_load_sd(x + col[0]), x + col[1])};
}
ORV_INLINE vec<float> gather_at(const float* x, const Int* col)
{
    const __m128 low = _mm_unpacklo_ps(_mm_load_ss(x + col[0]), _mm_load_ss(x + col[1]));
    return {_mm_movelh_ps(low, _mm_unpacklo_ps(_mm_load_ss(x + col[2]), _mm_load_ss(x + col[3])))};
}
ORV_INLINE vec<cpx<float>> gather_at(const cpx<float>* x, const Int* col)
{
    return {_mm_loadh_pi(load_first<1>(x + col[0]).r, reinterpret_cast<const __m64*>(x + col[1]))};
}
ORV_INLINE vec<cpx<double>> gather_at(const cpx<double>* x, const Int* col) { return loadu(x + col[0]); }

// A register of partial sums. Complex ones keep the products by real and by imaginary parts of the entries apart: that
// takes no shuffle a product, and whether entries are conjugated is asked once, at the end.
template <class T> struct Sum {
    static constexpr int together = 8; // that leave registers for the rest
    vec<T> s;
    ORV_INLINE void add(vec<T> a, vec<T> x) { s += a * x; }
    ORV_INLINE void operator+=(const Sum& other) { s += other.s; }
    ORV_INLINE void fold() { s = fold_lanes(s); }
    ORV_INLINE T value(bool) const { return first_lane(s); }
    ORV_INLINE vec<T> values(bool) const { return s; }
};
template <class R> struct Sum<cpx<R>> {
    static constexpr int together = 4;
    vec<cpx<R>> by_re, by_im;
    ORV_INLINE void add(vec<cpx<R>> a, vec<cpx<R>> x)
    {
        by_re += lane_product(real_parts(a), x), by_im += lane_product(imaginary_parts(a), x);
    }
    ORV_INLINE void operator+=(const Sum& other) { by_re += other.by_re, by_im += other.by_im; }
    ORV_INLINE void fold() { by_re = fold_lanes(by_re), by_im = fold_lanes(by_im); }
    ORV_INLINE cpx<R> value(bool conjugates) const { return first_lane(values(conjugates)); }
    ORV_INLINE vec<cpx<R>> values(bool conjugates) const
    {
        const auto turned = swap_neighbours(by_im);
        return conjugates ? by_re + conj(turned) : add_sub(by_re, turned);
    }
};

// One partial sum, to which entries are added one by one.
template <class T> struct One {
    T s;
    ORV_INLINE static One of(const Sum<T>& folded) { return {first_lane(folded.s)}; }
    ORV_INLINE void add(const T* a, const T* x) { s += *a * *x; }
    ORV_INLINE void operator+=(const One& other) { s += other.s; }
    ORV_INLINE T value(bool) const { return s; }
};
template <class R> struct One<cpx<R>> {
    Sum<cpx<R>> s;
    ORV_INLINE static One of(const Sum<cpx<R>>& folded) { return {folded}; }
    ORV_INLINE void add(const cpx<R>* a, const cpx<R>* x) { s.add(load_first<1>(a), load_first<1>(x)); }
    ORV_INLINE void operator+=(const One& other) { s += other.s; }
    ORV_INLINE cpx<R> value(bool conjugates) const { return s.value(conjugates); }
};

template <class T> ORV_INLINE void add_entries(Sum<T>& sum, const T* val, const Int* col, const T* x)
{
    sum.add(loadu(val), gather_at(x, col));
}
// Entry by entry; of reals a register of products is made at once, which takes fewer loads and changes no sum.
template <class T> ORV_INLINE void add_rest(One<T>& sum, Entries<T> rest, const T* x)
{
    i64 e = 0;
    if constexpr (!is_complex<T>)
        for (constexpr int lanes = vec<T>::lanes; e + lanes <= rest.n; e += lanes) {
            const vec<T> products = loadu(rest.val + e) * gather_at(x, rest.col + e);
            repeat<lanes>([&](auto l) ORV_INLINE_LAMBDA { sum.s += products.r[l.value]; });
        }
    for (; e < rest.n; ++e) sum.add(rest.val + e, x + rest.col[e]);
}

// All sums into the first, two and two.
template <int count, class S> ORV_INLINE void add_up(S* sum)
{
    constexpr int half = count / 2;
    repeat<half>([&](auto r) ORV_INLINE_LAMBDA { sum[r] += sum[r + half]; });
    if constexpr (half > 1) add_up<half>(sum);
}

// Eight entries a step into four registers of two; with narrow integers sixteen into two. Fewer registers if one holds
// more than two sums.
template <class T> struct Steps {
    static constexpr int lanes = vec<T>::lanes;
    static constexpr int entries = sizeof(Int) == 8 ? 8 : 16;
    static constexpr int registers = sizeof(Int) == 4 ? 2 : lanes == 4 ? 2 : 4;
};

template <class T> [[gnu::noinline]] T dot(const T* val, const Int* col, i64 n, const T* x, bool conjugates)
{
    using S = Steps<T>;
    Sum<T> sum[S::registers]{};
    i64 e = 0;
    for (; e + S::entries <= n; e += S::entries)
        repeat<S::entries / S::lanes>([&](auto g) ORV_INLINE_LAMBDA {
            add_entries(sum[g % S::registers], val + e + g * S::lanes, col + e + g * S::lanes, x);
        });
    add_up<S::registers>(sum);
    sum[0].fold();
    auto all = One<T>::of(sum[0]);
    add_rest(all, {val + e, col + e, n - e}, x);
    return all.value(conjugates);
}

// Rows from this length on take that many entries a step, into half as many registers of pairs.
inline constexpr i64 long_row = 64;

// There are not registers for all partial sums at once, so a piece of the row is gone through several times, each time
// for some of them. Pieces are short enough to stay in the first-level cache.
inline constexpr i64 piece = 8 * long_row;

template <class T> [[gnu::noinline]] T long_dot(const T* val, const Int* col, i64 n, const T* x, bool conjugates)
{
    constexpr int lanes = vec<T>::lanes, together = Sum<T>::together;
    constexpr int registers = lanes == 1 ? 32 : long_row / lanes;
    const i64 steps_end = n / long_row * long_row;
    Sum<T> kept[registers]; // from piece to piece
    Sum<T> total{};
    for (i64 from = 0; from < steps_end; from += piece) {
        const i64 to = min(from + piece, steps_end);
        for (int r = 0; r < registers; r += together) {
            Sum<T> sum[together]{};
            if (from > 0) repeat<together>([&](auto g) ORV_INLINE_LAMBDA { sum[g] = kept[r + g]; });
            const T* from_val = val + r * lanes;
            const Int* from_col = col + r * lanes;
            for (i64 e = from; e < to; e += registers * lanes)
                repeat<together>([&](auto g) ORV_INLINE_LAMBDA {
                    add_entries(sum[g], from_val + e + g * lanes, from_col + e + g * lanes, x);
                });
            if (to < steps_end) {
                repeat<together>([&](auto g) ORV_INLINE_LAMBDA { kept[r + g] = sum[g]; });
            } else {
                add_up<together>(sum);
                total += sum[0];
            }
        }
    }
    total.fold();
    auto all = One<T>::of(total);
    add_rest(all, {val + steps_end, col + steps_end, n - steps_end}, x);
    return all.value(conjugates);
}

template <class T> ORV_INLINE T plain_dot(Entries<T> row, const T* x, bool conjugates)
{
    One<T> sum{};
    add_rest(sum, row, x);
    return sum.value(conjugates);
}

} // namespace orv::ORV_SPBLAS
