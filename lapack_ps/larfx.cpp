// A reflector applied to an m by n matrix C: C := H*C (side L) or C := C*H (any other), H = I - tau*v*v^H.
//
// The order of H is m (left) or n (right), and v has as many elements. tau = 0 leaves C alone. Orders up to 10 are
// written out, u being conj(v) on the left and v on the right:
//
//   order 1    each element of C is multiplied by 1 - tau*v[0]*conj(v[0])
//   2 to 10    each column (left) or row (right) c:   sum := u[0]*c[0] + u[1]*c[1] + ..    from the left
//                                                     c[i] -= sum*t[i],  t[i] = tau*conj(u[i])
//
// and work is not used. Above, work takes n (left) or m (right) elements: a public matrix-vector product fills it, and
// a public update takes it from there.
#include "frame/kernels/lapack_ps.h"
#include "frame/serv.h"
#include "frame/simd.h"
#include "lapack_ps/front_ends.h"

#include <utility>

namespace orv::lapack {
namespace {

enum class Side { left, right };

// Hands every column (left) or row (right) of C to body: get(i) is its element i, put(i, x) writes it. Neighbours go
// together, one a lane; they touch no element of each other.
// On the left two neighbours are put together by a shuffle. With two products and two sums of two doubles that is five
// operations for three ports, where a column alone takes eight: 1.6 times as fast at most.
template <Side side, class T, class Body> ORV_INLINE void sweep(i64 count, T* c, i64 ldc, Body body)
{
    constexpr bool left = side == Side::left;
    const i64 along = left ? 1 : ldc, across = left ? ldc : 1;
    constexpr int lanes = vec<T>::lanes;
    for (; count >= lanes; count -= lanes, c += lanes * across)
        body([=](int i) ORV_INLINE_LAMBDA { return load_strided<!left>(c + i * along, across); },
             [=](int i, vec<T> x) ORV_INLINE_LAMBDA {
                 if constexpr (left) scatter(c + i, across, x);
                 else storeu(c + i * along, x);
             });
    for (; count > 0; --count, c += across)
        body([=](int i) ORV_INLINE_LAMBDA { return load_first<1>(c + i * along); },
             [=](int i, vec<T> x) ORV_INLINE_LAMBDA { store_first<1>(c + i * along, x); });
}

template <Side side, class T> constexpr T in_sums(T v) { return side == Side::left ? conj(v) : v; }

template <Side side, class T> void scale(const T* v, T tau, i64 count, T* c, i64 ldc)
{
    const factor<T> scalar(one<T> - tau * v[0] * conj(v[0]));
    sweep<side>(count, c, ldc, [&](auto get, auto put) ORV_INLINE_LAMBDA { put(0, scalar * get(0)); });
}

template <Side side, class T, int... i>
void reflect(std::integer_sequence<int, i...>, const T* v, T tau, i64 count, T* c, i64 ldc)
{
    const factor<T> u[] = {factor<T>(in_sums<side>(v[i]))...}, t[] = {factor<T>(tau * conj(in_sums<side>(v[i])))...};
    sweep<side>(count, c, ldc, [&](auto get, auto put) ORV_INLINE_LAMBDA {
        const vec<T> x[] = {get(i)...};
        const vec<T> terms[] = {u[i] * x[i]...};
        const auto plus = []<class... V>(vec<T> first, V... rest) ORV_INLINE_LAMBDA { return (first + ... + rest); };
        const vec<T> sum = plus(terms[i]...);
        (put(i, x[i] - t[i] * sum), ...);
    });
}

// Two columns of reals: their rows are needed side by side in the sums only, for the rest whole registers of a column
// serve. That takes half the loads and stores, and two more shuffles for the two sums: worth it from order 5 on.
template <int order, int lanes = vec<double>::lanes>
void reflect_columns(const double* v, double tau, i64 count, double* c, i64 ldc)
{
    static_assert(lanes == 2, "a register is two columns, and a pair of rows of one");
    constexpr int pairs = order / 2, last = order - 1;
    constexpr bool odd = order % 2 != 0;
    vec<double> u[order], t[pairs + 1];
    for (int i = 0; i < order; ++i) u[i] = splat(v[i]);
    for (int k = 0; k < pairs; ++k) t[k] = splat(tau) * loadu(v + 2 * k);
    t[pairs] = splat(tau * v[last]);

    for (; count >= 2; count -= 2, c += 2 * ldc) {
        double* const column[] = {c, c + ldc};
        vec<double> x[pairs][2], sum, end;
#pragma GCC unroll 5
        for (int k = 0; k < pairs; ++k) {
            vec<double> row[] = {x[k][0] = loadu(column[0] + 2 * k), x[k][1] = loadu(column[1] + 2 * k)};
            transpose(row);
            const vec<double> term = u[2 * k] * row[0];
            sum = k == 0 ? term : sum + term;
            sum += u[2 * k + 1] * row[1];
        }
        if constexpr (odd) sum += u[last] * (end = gather(c + last, ldc));
        const vec<double> sums[] = {splat(sum.r[0]), splat(sum.r[1])};
#pragma GCC unroll 5
        for (int k = 0; k < pairs; ++k)
            for (int j = 0; j < 2; ++j) storeu(column[j] + 2 * k, x[k][j] - t[k] * sums[j]);
        if constexpr (odd) scatter(c + last, ldc, end - t[pairs] * sum);
    }
    if (count > 0) reflect<Side::left>(std::make_integer_sequence<int, order>(), v, tau, count, c, ldc);
}

template <Side side, int order, class T> void reflect_written_out(const T* v, T tau, i64 count, T* c, i64 ldc)
{
    if constexpr (order == 1) scale<side>(v, tau, count, c, ldc);
    else if constexpr (order >= 5 && side == Side::left && !is_complex<T> && vec<T>::lanes == 2)
        reflect_columns<order>(v, tau, count, c, ldc);
    else reflect<side>(std::make_integer_sequence<int, order>(), v, tau, count, c, ldc);
}

template <class T> using WrittenOut = void (*)(const T* v, T tau, i64 count, T* c, i64 ldc);

constexpr int longest = 10;

template <Side side, class T, int... i> WrittenOut<T> of_order(i64 order, std::integer_sequence<int, i...>)
{
    static constexpr WrittenOut<T> table[] = {reflect_written_out<side, i + 1, T>...};
    return table[order - 1];
}

template <Side side, class T> void reflect_by_products(i64 m, i64 n, const T* v, T tau, T* c, i64 ldc, T* work)
{
    if constexpr (side == Side::left) {
        front::gemv(is_complex<T> ? "Conjugate transpose" : "Transpose", m, n, one<T>, c, ldc, v, 1, zero<T>, work, 1);
        front::gerc(m, n, -tau, v, 1, work, 1, c, ldc);
    } else {
        front::gemv("No transpose", m, n, one<T>, c, ldc, v, 1, zero<T>, work, 1);
        front::gerc(m, n, -tau, work, 1, v, 1, c, ldc);
    }
}

template <Side side, class T> void larfx(i64 m, i64 n, const T* v, T tau, T* c, i64 ldc, T* work)
{
    const i64 order = side == Side::left ? m : n, count = side == Side::left ? n : m;
    if (order < 1) return;
    if (order <= longest) of_order<side, T>(order, std::make_integer_sequence<int, longest>())(v, tau, count, c, ldc);
    else reflect_by_products<side>(m, n, v, tau, c, ldc, work);
}

} // namespace
} // namespace orv::lapack

using namespace orv;
using lapack::Side;

#define LARFX(name, T)                                                                                                 \
    ORV_EXPORT void LAPACK_PS(name)(const char* side, const i64* m, const i64* n, const T* v, const T* tau, T* c,      \
                                    const i64* ldc, T* work)                                                           \
    {                                                                                                                  \
        if (*tau == zero<T>) return;                                                                                   \
        if (orv_serv_lsame(side, "L", 1, 1)) lapack::larfx<Side::left>(*m, *n, v, *tau, c, *ldc, work);                \
        else lapack::larfx<Side::right>(*m, *n, v, *tau, c, *ldc, work);                                               \
    }

LARFX(dlarfx, double)
LARFX(clarfx, cpx<float>)
