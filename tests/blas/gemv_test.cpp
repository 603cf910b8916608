// Matrix-vector products: ?gemv and its unit-stride kernels.
#include "tests/blas/matrix_vector.h"
#include "tests/support/probe.h"

#include <algorithm>
#include <map>
#include <memory>
#include <pthread.h>

namespace orv::test {
namespace {

template <class T>
using Gemv = void(const char*, const i64*, const i64*, const T*, const T*, const i64*, const T*, const i64*, const T*,
                  T*, const i64*);
template <class T> using Kernel = void(const i64*, const i64*, const T*, const T*, const i64*, const T*, T*);

template <class T> std::string driver() { return std::string("orv_blas_mc3_x") + letter<T> + "gemv"; }

template <class T>
void gemv(char trans, i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x, i64 incx, T beta, T* y, i64 incy)
{
    static auto* f = kernel<Gemv<T>>(driver<T>());
    f(&trans, &m, &n, &alpha, a, &lda, x, &incx, &beta, y, &incy);
}

// What a letter means: N, C for complex matrices, everything else T.
template <class T> char meaning(char trans)
{
    if (trans == 'N' || trans == 'n') return 'N';
    return is_complex<T> && (trans == 'C' || trans == 'c') ? 'C' : 'T';
}

std::string problem(char type, char trans, i64 m, i64 n, i64 lda, i64 incx, i64 incy)
{
    return std::string("gemv ") + type + ' ' + trans + " m=" + std::to_string(m) + " n=" + std::to_string(n) +
           " lda=" + std::to_string(lda) + " incx=" + std::to_string(incx) + " incy=" + std::to_string(incy) +
           " seed=" + std::to_string(seed());
}

// y := beta*y as the first pass does it, element i at y[i].
template <class T> void scale(std::vector<T>& y, T beta)
{
    for (T& e : y)
        if (beta == zero<T>) e = zero<T>;
        else if (beta != one<T>) e = beta * e;
}

// The order of operations of the unit-stride kernels in scalar code: N.
template <class T>
void add_columns(const Matrix<T>& a, i64 i0, i64 rows, i64 j0, i64 columns, T alpha, const T* x, T* y)
{
    for (i64 i = 0; i < rows; ++i)
        for (i64 j = 0; j < columns;) {
            const i64 left = columns - j, together = left >= 4 ? 4 : left >= 2 ? 2 : 1;
            T sum = y[i], crossed = zero<T>; // terms with x.re and, parts exchanged, with x.im
            for (const i64 end = j + together; j < end; ++j) {
                const T e = a(i0 + i, j0 + j), f = alpha * x[j];
                if constexpr (is_complex<T>) {
                    sum = {sum.re + e.re * f.re, sum.im + e.im * f.re};
                    crossed = {crossed.re + e.im * f.im, crossed.im + e.re * f.im};
                } else sum = sum + e * f;
            }
            if constexpr (is_complex<T>) sum = {sum.re - crossed.re, sum.im + crossed.im};
            y[i] = sum;
        }
}
// The same for T and C.
template <class T>
void dot_columns(bool conjugated, const Matrix<T>& a, i64 i0, i64 rows, i64 j0, i64 columns, T alpha, const T* x, T* y)
{
    constexpr int lanes = 16 / sizeof(T);
    for (i64 j = 0; j < columns; ++j) {
        T sum[lanes] = {}, crossed[lanes] = {};
        for (i64 i = 0; i < rows; ++i) {
            const T e = a(i0 + i, j0 + j), v = x[i];
            const i64 lane = i + 1 == rows && rows % 2 != 0 ? 0 : i % lanes;
            T &s = sum[lane], &c = crossed[lane];
            if constexpr (is_complex<T>) {
                s = {s.re + e.re * v.re, s.im + e.im * v.re};
                c = {c.re + e.im * v.im, c.im + e.re * v.im};
            } else s = s + e * v;
        }
        const auto folded = [](const T* v) {
            if constexpr (lanes == 4) return (v[0] + v[2]) + (v[1] + v[3]);
            else if constexpr (lanes == 2) return v[0] + v[1];
            else return v[0];
        };
        T total = folded(sum);
        if constexpr (is_complex<T>) {
            const T c = folded(crossed);
            total = conjugated ? T{total.re + c.re, c.im - total.im} : T{total.re - c.re, total.im + c.im};
        }
        y[j] = y[j] + alpha * total;
    }
}

// y for logical x and y. Strides other than 1 cut A in blocks, which N does not show and T does.
template <class T>
std::vector<T> in_order(char trans, const Matrix<T>& a, T alpha, const std::vector<T>& x, T beta, std::vector<T> y,
                        bool blocks)
{
    scale(y, beta);
    if (alpha == zero<T>) return y;
    const char op = meaning<T>(trans);
    if (op == 'N') {
        add_columns(a, 0, a.m, 0, a.n, alpha, x.data(), y.data());
        return y;
    }
    const i64 step = blocks ? 1000 : max(a.m, 1);
    for (i64 i = 0; i < a.m; i += step)
        dot_columns(op == 'C', a, i, min(step, a.m - i), 0, a.n, alpha, x.data() + i, y.data());
    return y;
}

// The textbook's answer and bound.
template <class T>
std::vector<Bounded> exact(char trans, const Matrix<T>& a, T alpha, const std::vector<T>& x, T beta,
                           const std::vector<T>& y)
{
    std::vector<Bounded> result;
    const char op = meaning<T>(trans);
    for (std::size_t i = 0; i < y.size(); ++i) {
        Bounded sum;
        for (std::size_t k = 0; k < x.size(); ++k) {
            const i64 r = static_cast<i64>(i), c = static_cast<i64>(k);
            const T e = op == 'N' ? a(r, c) : a(c, r);
            sum += Bounded(op == 'C' ? conj(e) : e) * Bounded(x[k]);
        }
        Bounded total = beta == zero<T> ? Bounded() : Bounded(beta) * Bounded(y[i]);
        total += Bounded(alpha) * sum;
        result.push_back(total);
    }
    return result;
}

template <class T> struct Sweep {
    long double worst = 0;
    std::map<std::pair<i64, i64>, std::unique_ptr<Strided<T>>> xs, ys;

    static Strided<T>& vector(auto& kept, i64 n, i64 inc)
    {
        auto& v = kept[{n, inc}];
        if (!v) v = std::make_unique<Strided<T>>(n, inc);
        return *v;
    }

    // One matrix against every pair of strides: within the bound, and bit for bit in its order.
    void run(char trans, const Matrix<T>& a, T alpha, T beta, std::span<const i64> strides)
    {
        const bool plain = meaning<T>(trans) == 'N';
        const i64 lenx = plain ? a.n : a.m, leny = plain ? a.m : a.n;
        Random random(static_cast<std::uint64_t>(a.m * 1000 + a.n));
        std::vector<T> x(lenx), y(leny);
        random.fill(x), random.fill(y);
        const bool nothing = a.m == 0 || a.n == 0;
        const std::vector<T> unit = nothing ? y : in_order(trans, a, alpha, x, beta, y, false);
        const std::vector<T> blocked = nothing ? y : in_order(trans, a, alpha, x, beta, y, true);
        const std::vector<Bounded> bounds = nothing ? std::vector<Bounded>{} : exact(trans, a, alpha, x, beta, y);
        for (const i64 incx : strides)
            for (const i64 incy : strides) {
                SCOPED_TRACE(problem(letter<T>, trans, a.m, a.n, a.lda, incx, incy));
                Strided<T>&vx = vector(xs, lenx, incx), &vy = vector(ys, leny, incy);
                for (i64 i = 0; i < lenx; ++i) vx(i) = x[i];
                for (i64 i = 0; i < leny; ++i) vy(i) = y[i];
                if (incx == 0 || incy == 0) continue; // a test of their own
                gemv(trans, a.m, a.n, alpha, *a, a.lda, vx.data(), incx, beta, vy.data(), incy);
                const std::vector<T>& expected = incx == 1 && incy == 1 ? unit : blocked;
                for (i64 i = 0; i < leny; ++i) {
                    ASSERT_PRED2(same_bits<T>, vy(i), expected[i]) << "element " << i;
                    if (nothing) continue;
                    const long double e = excess(vy(i), bounds[i], product_roundings<T>(lenx));
                    ASSERT_LE(e, 1) << "element " << i;
                    worst = std::max(worst, e);
                }
            }
    }
};

template <class T> class GemvTest : public testing::Test {
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(GemvTest, Types);

constexpr i64 strides[] = {1, -1, 2, -3};
constexpr char letters[] = {'N', 'n', 'T', 't', 'C', 'c', 'x'};

TYPED_TEST(GemvTest, keeps_its_order_of_operations_at_all_small_sizes_and_strides)
{
    using T = TypeParam;
    Sweep<T> sweep;
    for (i64 m = 0; m <= 40; ++m)
        for (i64 n = 0; n <= 40; ++n)
            for (const i64 pad : {(m + n) % 5 * 2, (m + n) % 5 * 2 + 1}) {
                Matrix<T> a(m, n, max(m, 1) + pad);
                Random random(static_cast<std::uint64_t>(m + 100 * n));
                a.fill(random);
                const char other = letters[(m + 3 * n) % 7];
                for (const char trans : {'N', 'T', 'C', other})
                    if (is_complex<T> || trans != 'C')
                        sweep.run(trans, a, scalar<T>(0.7, -1.3), scalar<T>(-0.4, 0.9), strides);
                if (testing::Test::HasFailure()) return;
            }
    std::printf("gemv %c: worst error %.2Lf of its bound\n", letter<T>, sweep.worst);
}

TYPED_TEST(GemvTest, keeps_its_order_of_operations_across_blocks)
{
    using T = TypeParam;
    Sweep<T> sweep;
    const auto at = [&](i64 m, i64 n, i64 pad) {
        Matrix<T> a(m, n, m + pad);
        Random random(static_cast<std::uint64_t>(m + 100 * n));
        a.fill(random);
        constexpr i64 few[] = {1, -2};
        for (const char trans : {'N', 'T', 'C'}) sweep.run(trans, a, scalar<T>(0.7, -1.3), scalar<T>(1, 0), few);
    };
    for (const i64 m : {127, 128, 129, 999, 1000, 1001, 2003})
        for (const i64 n : {3, 127, 128, 129, 257}) at(m, n, (m + n) % 3);
    for (const i64 m : {2, 7, 129})
        for (const i64 n : {999, 1000, 1001}) at(m, n, n % 2);
    std::printf("gemv %c across blocks: worst error %.2Lf of its bound\n", letter<T>, sweep.worst);
}

} // namespace
} // namespace orv::test
