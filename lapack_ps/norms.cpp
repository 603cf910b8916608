// Norms of matrices: x?lange, x?lansy, x?lanhe. All return the norm of A that a letter names, in either case:
//
//   norm    M: the largest |a(i,j)|   O or 1: the largest sum of a column   I: the largest sum of a row
//           F or E: the square root of the sum of squares, summed by the public routine ?lassq. Any other letter gives
//           0.
//   m, n    a is m by n, columns lda apart; 0 without reading a if it is empty
//   uplo    lansy, lanhe: U: the upper triangle of a matrix of order n is stored, anything else: the lower; the other
//           one is not read. lanhe takes the diagonal as real and does not read its imaginary parts.
//   work    sums of rows: m elements for I (lange), n for O, 1 and I (lansy, lanhe); not used otherwise, may be null
//
// M goes past a NaN: the result is the largest of the other elements, 0 if there are none. All other norms are NaN if
// an element is. An infinite element makes them infinite, unless there is a NaN.
//
// Of complex elements |a| is sqrt(re^2 + im^2). Where the norm shows that such squares have overflowed, or might have
// lost digits below the least normal number, it is computed once more with scaled squares.
#include "frame/kernels/lapack_ps.h"
#include "frame/serv.h"
#include "frame/simd.h"
#include "lapack_ps/front_ends.h"

#include <type_traits>

namespace orv::lapack {
namespace {

template <class R> ORV_INLINE R maximum(R a, R b) { return a > b ? a : b; }
ORV_INLINE float root(float a) { return __builtin_sqrtf(a); }
ORV_INLINE double root(double a) { return __builtin_sqrt(a); }

// A register of squares |p[0]|^2, |p[1]|^2, ..
template <class R> ORV_INLINE vec<R> squares(const cpx<R>* p)
{
    const auto a = loadu(p), b = loadu(p + vec<cpx<R>>::lanes);
    return add_parts(lane_product(a, a), lane_product(b, b));
}

// How large an element is: measures are many(p), a register of neighbours, and one(x), one element.
template <class T> struct Magnitude {
    using R = real_t<T>;
    ORV_INLINE static vec<R> many(const T* p)
    {
        if constexpr (is_complex<T>) return root(squares(p));
        else return magnitude(loadu(p));
    }
    ORV_INLINE static R one(T x)
    {
        if constexpr (is_complex<T>) return root(x.re * x.re + x.im * x.im);
        else return magnitude(x);
    }
};

// The same without overflow and underflow on the way.
template <class T> struct ScaledMagnitude {
    static float one(cpx<float> x) { return static_cast<float>(root(double(x.re) * x.re + double(x.im) * x.im)); }
    static double one(cpx<double> x)
    {
        constexpr double up = 0x1p600, down = 0x1p-600;
        const double larger = maximum(magnitude(x.re), magnitude(x.im));
        if (larger > 0x1p500) return up * Magnitude<cpx<double>>::one(down * x);
        if (larger < 0x1p-400) return down * Magnitude<cpx<double>>::one(up * x);
        return Magnitude<cpx<double>>::one(x);
    }
    static vec<real_t<T>> many(const T* p)
    {
        return generate<real_t<T>>([=](int lane) ORV_INLINE_LAMBDA { return one(p[lane]); });
    }
};

// A norm of complex elements is right if it is finite and so large that squares without all their digits cannot count.
template <class R> bool is_sure(R norm)
{
    constexpr R least = sizeof(R) == 4 ? R(0x1p-30) : R(0x1p-440);
    return (norm >= least && norm - norm == 0) || norm != norm;
}

// norm(measure), and once more with the careful measure if that is called for.
template <class T, class Norm> real_t<T> measured(Norm norm)
{
    const real_t<T> value = norm(Magnitude<T>());
    if constexpr (is_complex<T>)
        if (!is_sure(value)) return norm(ScaledMagnitude<T>());
    return value;
}

// The sums of all rows or columns are compared by this: a NaN stays.
template <class R> ORV_INLINE void keep_larger(R& value, R sum)
{
    if (value < sum || sum != sum) value = sum;
}

// The sums of `columns` columns of n elements, side by side, so that short ones need not wait for their own additions.
template <int columns, class Measure, class T>
ORV_INLINE void sum_columns(Measure, i64 n, const T* a, i64 lda, real_t<T> (&sums)[columns])
{
    using R = real_t<T>;
    constexpr int chains = 8 / columns;
    vec<R> s[columns][chains] = {};
    each<R, chains, 1>(
        n,
        [&]<int count>(i64 i, std::integral_constant<int, count>) ORV_INLINE_LAMBDA {
#pragma GCC unroll 8
            for (int r = 0; r < count; ++r)
#pragma GCC unroll 4
                for (int k = 0; k < columns; ++k) s[k][r] += Measure::many(a + k * lda + i + r * vec<R>::lanes);
        },
        [&](i64 i) ORV_INLINE_LAMBDA {
#pragma GCC unroll 4
            for (int k = 0; k < columns; ++k) s[k][0].r[0] += Measure::one(a[k * lda + i]);
        });
#pragma GCC unroll 4
    for (int k = 0; k < columns; ++k) {
#pragma GCC unroll 8
        for (int r = 1; r < chains; ++r) s[k][0] += s[k][r];
        sums[k] = first_lane(fold_lanes(s[k][0]));
    }
}

template <class Measure, class T> real_t<T> largest_column(Measure measure, i64 m, i64 n, const T* a, i64 lda)
{
    real_t<T> value = 0;
    const auto pass = [&]<int columns>(std::integral_constant<int, columns>, i64 j) ORV_INLINE_LAMBDA {
        real_t<T> sums[columns];
        sum_columns(measure, m, a + j * lda, lda, sums);
        for (const real_t<T> sum : sums) keep_larger(value, sum);
    };
    i64 j = 0;
    for (; j + 4 <= n; j += 4) pass(std::integral_constant<int, 4>(), j);
    for (; j < n; ++j) pass(std::integral_constant<int, 1>(), j);
    return value;
}

// The largest of everything that it is shown. A NaN is never larger. Complex elements are compared by their squares.
template <class Measure, class T> class Largest {
    using R = real_t<T>;
    static constexpr bool squared = is_complex<T> && std::is_same_v<Measure, Magnitude<T>>;
    vec<R> most_[8] = {};
    R rest_ = 0;

    ORV_INLINE static vec<R> many(const T* p)
    {
        if constexpr (squared) return squares(p);
        else return Measure::many(p);
    }
    ORV_INLINE static R one(T x)
    {
        if constexpr (squared) return x.re * x.re + x.im * x.im;
        else return Measure::one(x);
    }

public:
    void see(i64 n, const T* x)
    {
        each<R, 8, 1>(
            n,
            [&]<int count>(i64 i, std::integral_constant<int, count>) ORV_INLINE_LAMBDA {
#pragma GCC unroll 8
                for (int r = 0; r < count; ++r) most_[r] = maximum(many(x + i + r * vec<R>::lanes), most_[r]);
            },
            [&](i64 i) ORV_INLINE_LAMBDA { rest_ = maximum(one(x[i]), rest_); });
    }
    void see_real(R x) { rest_ = maximum(squared ? x * x : magnitude(x), rest_); } // the root of a square is |x|

    R result() const
    {
        R value = rest_;
        for (const vec<R>& v : most_)
            for (int lane = 0; lane < vec<R>::lanes; ++lane) value = maximum(R(v.r[lane]), value);
        return squared ? root(value) : value;
    }
};

// work(0:m) := sums of the rows of a, four columns a pass, in their order.
template <class Measure, class T> void sum_rows(Measure, i64 m, i64 n, const T* a, i64 lda, real_t<T>* work)
{
    using R = real_t<T>;
    for (i64 i = 0; i < m; ++i) work[i] = 0;
    const auto pass = [&]<int columns>(std::integral_constant<int, columns>, const T* c) ORV_INLINE_LAMBDA {
        i64 i = 0;
        for (; i + vec<R>::lanes <= m; i += vec<R>::lanes) {
            vec<R> s = loadu(work + i);
#pragma GCC unroll 4
            for (int k = 0; k < columns; ++k) s += Measure::many(c + i + k * lda);
            storeu(work + i, s);
        }
        for (; i < m; ++i)
            for (int k = 0; k < columns; ++k) work[i] += Measure::one(c[i + k * lda]);
    };
    i64 j = 0;
    for (; j + 4 <= n; j += 4) pass(std::integral_constant<int, 4>(), a + j * lda);
    for (; j < n; ++j) pass(std::integral_constant<int, 1>(), a + j * lda);
}

// work(0:n) += the n neighbours; returns their sum.
template <class Measure, class T> real_t<T> add_to_rows(Measure, i64 n, const T* x, real_t<T>* work)
{
    using R = real_t<T>;
    vec<R> s[4] = {};
    each<R, 4, 1>(
        n,
        [&]<int count>(i64 i, std::integral_constant<int, count>) ORV_INLINE_LAMBDA {
#pragma GCC unroll 4
            for (int r = 0; r < count; ++r) {
                const vec<R> v = Measure::many(x + i + r * vec<R>::lanes);
                R* const to = work + i + r * vec<R>::lanes;
                storeu(to, loadu(to) + v), s[r] += v;
            }
        },
        [&](i64 i) ORV_INLINE_LAMBDA {
            const R v = Measure::one(x[i]);
            work[i] += v, s[1].r[0] += v;
        });
    return first_lane(fold_lanes((s[0] + s[1]) + (s[2] + s[3])));
}

enum class Norm { largest, columns, rows, squares, none };

Norm named(const char* letter)
{
    const auto is = [&](const char* name) { return orv_serv_lsame(letter, name, 1, 1) != 0; };
    if (is("M")) return Norm::largest;
    if (is("O") || is("1")) return Norm::columns;
    if (is("I")) return Norm::rows;
    if (is("F") || is("E")) return Norm::squares;
    return Norm::none;
}

template <class T> real_t<T> lange(Norm norm, i64 m, i64 n, const T* a, i64 lda, real_t<T>* work)
{
    using R = real_t<T>;
    if (min(m, n) <= 0) return 0;
    switch (norm) {
    case Norm::largest:
        return measured<T>([&]<class Measure>(Measure) {
            Largest<Measure, T> largest;
            for (i64 j = 0; j < n; ++j) largest.see(m, a + j * lda);
            return largest.result();
        });
    case Norm::columns:
        return measured<T>([&](auto measure) { return largest_column(measure, m, n, a, lda); });
    case Norm::rows:
        return measured<T>([&](auto measure) {
            sum_rows(measure, m, n, a, lda, work);
            R value = 0;
            for (i64 i = 0; i < m; ++i) keep_larger(value, work[i]);
            return value;
        });
    case Norm::squares: {
        R scale = 0, sum = 1;
        for (i64 j = 0; j < n; ++j) front::lassq(m, a + j * lda, 1, &scale, &sum);
        return scale * root(sum);
    }
    case Norm::none:
        break;
    }
    return 0;
}

// The stored triangle of a symmetric matrix, or of a Hermitian one, whose diagonal is real.
template <class T, bool hermitian> struct Triangle {
    using R = real_t<T>;
    bool upper;
    i64 n;
    const T* a;
    i64 lda;

    // What column j has off the diagonal, and how much of it.
    const T* beside(i64 j) const { return a + j * lda + (upper ? 0 : j + 1); }
    i64 count(i64 j) const { return upper ? j : n - 1 - j; }
    const T* diagonal(i64 j) const { return a + j + j * lda; }
    template <class Measure> R magnitude_on_diagonal(Measure, i64 j) const
    {
        if constexpr (hermitian) return magnitude(diagonal(j)->re);
        else return Measure::one(*diagonal(j));
    }
    void add_diagonal_squares(R* scale, R* sum) const
    {
        if constexpr (hermitian) front::lassq(n, &a->re, 2 * (lda + 1), scale, sum);
        else front::lassq(n, a, lda + 1, scale, sum);
    }
};

// The sums of rows, which are those of columns. Each element off the diagonal is read once and counts twice.
template <class Measure, class T, bool hermitian>
real_t<T> largest_sum(Measure measure, const Triangle<T, hermitian>& t, real_t<T>* work)
{
    real_t<T> value = 0;
    for (i64 i = 0; i < t.n; ++i) work[i] = 0;
    for (i64 j = 0; j < t.n; ++j) {
        real_t<T>* const rows = t.upper ? work : work + j + 1;
        work[j] += t.magnitude_on_diagonal(measure, j) + add_to_rows(measure, t.count(j), t.beside(j), rows);
    }
    for (i64 i = 0; i < t.n; ++i) keep_larger(value, work[i]);
    return value;
}

template <class T, bool hermitian> real_t<T> symmetric(Norm norm, Triangle<T, hermitian> t, real_t<T>* work)
{
    using R = real_t<T>;
    if (t.n <= 0) return 0;
    switch (norm) {
    case Norm::largest:
        return measured<T>([&]<class Measure>(Measure) {
            Largest<Measure, T> largest;
            for (i64 j = 0; j < t.n; ++j) {
                largest.see(t.count(j), t.beside(j));
                if constexpr (hermitian) largest.see_real(t.diagonal(j)->re);
                else largest.see(1, t.diagonal(j));
            }
            return largest.result();
        });
    case Norm::columns:
    case Norm::rows:
        return measured<T>([&](auto measure) { return largest_sum(measure, t, work); });
    case Norm::squares: {
        R scale = 0, sum = 1;
        for (i64 j = t.upper ? 1 : 0; j < (t.upper ? t.n : t.n - 1); ++j)
            front::lassq(t.count(j), t.beside(j), 1, &scale, &sum);
        sum = 2 * sum;
        t.add_diagonal_squares(&scale, &sum);
        return scale * root(sum);
    }
    case Norm::none:
        break;
    }
    return 0;
}

template <bool hermitian, class T>
real_t<T> triangular(const char* norm, const char* uplo, i64 n, const T* a, i64 lda, real_t<T>* work)
{
    if (n <= 0) return 0;
    const bool upper = orv_serv_lsame(uplo, "U", 1, 1) != 0;
    return symmetric(named(norm), Triangle<T, hermitian>{upper, n, a, lda}, work);
}

} // namespace

#define LANGE(name, T)                                                                                                 \
    ORV_EXPORT real_t<T> LAPACK_PS(name)(const char* norm, const i64* m, const i64* n, const T* a, const i64* lda,     \
                                         real_t<T>* work)                                                              \
    {                                                                                                                  \
        return lange(named(norm), *m, *n, a, *lda, work);                                                              \
    }
#define LANSY(name, T, hermitian)                                                                                      \
    ORV_EXPORT real_t<T> LAPACK_PS(name)(const char* norm, const char* uplo, const i64* n, const T* a, const i64* lda, \
                                         real_t<T>* work)                                                              \
    {                                                                                                                  \
        return triangular<hermitian>(norm, uplo, *n, a, *lda, work);                                                   \
    }

LANGE(xslange, float)
LANGE(xdlange, double)
LANGE(xclange, cpx<float>)
LANGE(xzlange, cpx<double>)

LANSY(xslansy, float, false)
LANSY(xdlansy, double, false)
LANSY(xclansy, cpx<float>, false)
LANSY(xzlansy, cpx<double>, false)
LANSY(xclanhe, cpx<float>, true)
LANSY(xzlanhe, cpx<double>, true)

} // namespace orv::lapack
