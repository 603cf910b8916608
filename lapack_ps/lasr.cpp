// A sequence of plane rotations from the left: A := P*A, A m by n, P a product of m - 1 rotations with the real numbers
// c[j], s[j]. Rotation j works on a row x and a row y below it:
//
//   y := c[j]*y - s[j]*x    and    x := s[j]*y + c[j]*x, with the y from before
//
//   v   variable pivot: rows j and j + 1          f   forward: j = 0, 1, .., m - 2
//   t   top pivot: rows 0 and j + 1               b   backward: j = m - 2, .., 1, 0
//   b   bottom pivot: rows j and m - 1
//
// m < 2 or n < 1 leaves A alone. No rotation is special: one with c = 1 and s = 0 is computed, too.
//
// All rotations go over eight columns before the next eight are met, so each column is read and written once, and the
// row that a rotation shares with the next one stays in registers. Four columns that remain go the same way, less than
// four singly. With lda = 0 four columns at a time share their memory: each rotation meets it four times.
#include "frame/kernels/lapack_ps.h"
#include "lapack_ps/lanes.h"

namespace orv::lapack {
namespace {

enum class Pivot { variable, top, bottom };
enum class Direct { forward, backward };

template <Pivot pivot, Direct direct> struct Sequence {
    i64 m;

    i64 rotation(i64 step) const { return direct == Direct::forward ? step : m - 2 - step; }
    i64 upper(i64 j) const { return pivot == Pivot::top ? 0 : j; }
    i64 lower(i64 j) const { return pivot == Pivot::bottom ? m - 1 : j + 1; }

    // A rotation's one row is carried over from the one before, the other is fresh. Its one result is finished, the
    // other is carried on: with a variable pivot the fresh row's, else the same as before.
    static constexpr bool carries_upper = pivot == Pivot::variable ? direct == Direct::forward : pivot == Pivot::top;
    static constexpr bool finishes_upper = (pivot == Pivot::variable) == carries_upper;

    i64 first_carried() const { return carries_upper ? upper(rotation(0)) : lower(rotation(0)); }
    i64 last_carried() const { return finishes_upper ? lower(rotation(m - 2)) : upper(rotation(m - 2)); }
    i64 fresh(i64 j) const { return carries_upper ? lower(j) : upper(j); }
    i64 finished(i64 j) const { return finishes_upper ? upper(j) : lower(j); }
};

template <class Scalar, class V> ORV_INLINE void rotate(Scalar c, Scalar s, V& x, V& y)
{
    const V before = y;
    y = c * before - s * x;
    x = s * before + c * x;
}

// Returns what is finished.
template <class Order, class Scalar, class V> ORV_INLINE V carry_on(Scalar c, Scalar s, V& carried, V fresh)
{
    V& x = Order::carries_upper ? carried : fresh;
    V& y = Order::carries_upper ? fresh : carried;
    rotate(c, s, x, y);
    const V finished = Order::finishes_upper ? x : y;
    carried = Order::finishes_upper ? y : x;
    return finished;
}

// A real number that multiplies a register of elements.
template <class T> struct Times {
    vec<T> value;
    explicit Times(real_t<T> a) : value{splat(a).r} {}
    ORV_INLINE vec<T> operator*(vec<T> x) const { return lane_product(value, x); }
};

// Neighbouring columns, one a lane.
template <class Order, int count, class T>
void columns(Order order, const real_t<T>* c, const real_t<T>* s, T* a, i64 lda)
{
    constexpr int registers = count / vec<T>::lanes;
    static_assert(count % vec<T>::lanes == 0);
    const i64 apart = vec<T>::lanes * lda;
    vec<T> carried[registers];
#pragma GCC unroll 8
    for (int r = 0; r < registers; ++r) carried[r] = gather(a + order.first_carried() + r * apart, lda);
    for (i64 step = 0; step < order.m - 1; ++step) {
        const i64 j = order.rotation(step);
        const Times<T> cosine(c[j]), sine(s[j]);
#pragma GCC unroll 8
        for (int r = 0; r < registers; ++r) {
            const vec<T> fresh = gather(a + order.fresh(j) + r * apart, lda);
            put<false>(a + order.finished(j) + r * apart, lda, carry_on<Order>(cosine, sine, carried[r], fresh));
        }
    }
#pragma GCC unroll 8
    for (int r = 0; r < registers; ++r) put<false>(a + order.last_carried() + r * apart, lda, carried[r]);
}

template <class Order, class T> void single_column(Order order, const real_t<T>* c, const real_t<T>* s, T* a)
{
    T carried = a[order.first_carried()];
    for (i64 step = 0; step < order.m - 1; ++step) {
        const i64 j = order.rotation(step);
        a[order.finished(j)] = carry_on<Order>(c[j], s[j], carried, a[order.fresh(j)]);
    }
    a[order.last_carried()] = carried;
}

template <class Order, class T> void four_times_one_column(Order order, const real_t<T>* c, const real_t<T>* s, T* a)
{
    for (i64 step = 0; step < order.m - 1; ++step) {
        const i64 j = order.rotation(step);
        for (int column = 0; column < 4; ++column) rotate(c[j], s[j], a[order.upper(j)], a[order.lower(j)]);
    }
}

template <class Order, class T> void lasr(Order order, i64 n, const real_t<T>* c, const real_t<T>* s, T* a, i64 lda)
{
    if (order.m < 2 || n < 1) return;
    if (lda == 0) {
        for (; n >= 4; n -= 4) four_times_one_column(order, c, s, a);
    } else {
        for (; n >= 8; n -= 8, a += 8 * lda) columns<Order, 8>(order, c, s, a, lda);
        if constexpr (4 % vec<T>::lanes == 0)
            for (; n >= 4; n -= 4, a += 4 * lda) columns<Order, 4>(order, c, s, a, lda);
    }
    for (; n > 0; --n, a += lda) single_column(order, c, s, a);
}

} // namespace
} // namespace orv::lapack

using namespace orv;
using lapack::Direct;
using lapack::Pivot;

#define LASR(name, T, pivot, direct)                                                                                   \
    ORV_EXPORT void LAPACK_PS(name)(const i64* m, const i64* n, const real_t<T>* c, const real_t<T>* s, T* a,          \
                                    const i64* lda)                                                                    \
    {                                                                                                                  \
        lapack::lasr(lapack::Sequence<Pivot::pivot, Direct::direct>{*m}, *n, c, s, a, *lda);                           \
    }
#define LASR_ALL(t, T)                                                                                                 \
    LASR(t##lasr_lvf, T, variable, forward)                                                                            \
    LASR(t##lasr_lvb, T, variable, backward)                                                                           \
    LASR(t##lasr_ltf, T, top, forward)                                                                                 \
    LASR(t##lasr_ltb, T, top, backward)                                                                                \
    LASR(t##lasr_lbf, T, bottom, forward)                                                                              \
    LASR(t##lasr_lbb, T, bottom, backward)

LASR_ALL(s, float)
LASR_ALL(d, double)
LASR_ALL(c, cpx<float>)
LASR_ALL(z, cpx<double>)
