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
    ORV_INLINE void add_one(const T* a, const T* x) { s.r[0] += *a * *x; }
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
    ORV_INLINE void add_one(const cpx<R>* a, const cpx<R>* x) { add(load_first<1>(a), load_first<1>(x)); }
    ORV_INLINE cpx<R> value(bool conjugates) const { return first_lane(values(conjugates)); }
    ORV_INLINE vec<cpx<R>> values(bool conjugates) const
    {
        const auto turned = swap_neighbours(by_im);
        return conjugates ? by_re + conj(turned) : add_sub(by_re, turned);
    }
};

template <class T> ORV_INLINE void add_entries(Sum<T>& sum, const T* val, const Int* col, const T* x)
{
    sum.add(loadu(val), gather_at(x, col));
}
template <class T> ORV_INLINE void add_rest(Sum<T>& sum, const Entries<T>& row, i64 from, const T* x)
{
    for (i64 e = from; e < row.n; ++e) sum.add_one(row.val + e, x + row.col[e]);
}

// All registers into the first, two and two.
template <int count, class T> ORV_INLINE void add_up(Sum<T> (&sum)[count])
{
#pragma GCC unroll 3
    for (int half = count / 2; half > 0; half /= 2)
#pragma GCC unroll 4
        for (int r = 0; r < half; ++r) sum[r] += sum[r + half];
}

// Eight entries a step into four registers of two; with narrow integers sixteen into two. Fewer registers if one holds
// more than two sums.
template <class T> struct Steps {
    static constexpr int lanes = vec<T>::lanes;
    static constexpr int entries = sizeof(Int) == 8 ? 8 : 16;
    static constexpr int registers = sizeof(Int) == 4 ? 2 : lanes == 4 ? 2 : 4;
};

template <class T> [[gnu::noinline]] T dot(const Entries<T>& row, const T* x, bool conjugates)
{
    using S = Steps<T>;
    Sum<T> sum[S::registers]{};
    i64 e = 0;
    for (; e + S::entries <= row.n; e += S::entries)
#pragma GCC unroll 16
        for (int g = 0; g < S::entries / S::lanes; ++g)
            add_entries(sum[g % S::registers], row.val + e + g * S::lanes, row.col + e + g * S::lanes, x);
    add_up(sum);
    sum[0].fold();
    add_rest(sum[0], row, e, x);
    return sum[0].value(conjugates);
}

// Rows from this length on take that many entries a step, into half as many registers of pairs.
inline constexpr i64 long_row = 64;

// There are not registers for all partial sums at once, so a piece of the row is gone through several times, each time
// for some of them. Pieces are short enough to stay in the first-level cache.
inline constexpr i64 piece = 8 * long_row;

template <class T> [[gnu::noinline]] T long_dot(const Entries<T>& row, const T* x, bool conjugates)
{
    constexpr int lanes = vec<T>::lanes, together = Sum<T>::together;
    constexpr int registers = lanes == 1 ? 32 : long_row / lanes;
    const i64 steps_end = row.n / long_row * long_row;
    Sum<T> kept[registers], total{};
    for (i64 from = 0; from < steps_end; from += piece) {
        const i64 to = min(from + piece, steps_end);
        for (int r = 0; r < registers; r += together) {
            Sum<T> sum[together]{};
            if (from > 0)
                for (int g = 0; g < together; ++g) sum[g] = kept[r + g];
            for (i64 e = from; e < to; e += long_row)
                for (i64 part = r * lanes; part < long_row; part += registers * lanes)
#pragma GCC unroll 8
                    for (int g = 0; g < together; ++g)
                        add_entries(sum[g], row.val + e + part + g * lanes, row.col + e + part + g * lanes, x);
            if (to < steps_end) {
                for (int g = 0; g < together; ++g) kept[r + g] = sum[g];
            } else {
                add_up(sum);
                total += sum[0];
            }
        }
    }
    total.fold();
    add_rest(total, row, steps_end, x);
    return total.value(conjugates);
}

template <class T> ORV_INLINE T plain_dot(const Entries<T>& row, const T* x, bool conjugates)
{
    Sum<T> sum{};
    add_rest(sum, row, 0, x);
    return sum.value(conjugates);
}

} // namespace orv::ORV_SPBLAS
