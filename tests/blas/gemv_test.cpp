// Matrix-vector products: ?gemv and its unit-stride kernels.
#include "frame/kernels/blas.h"
#include "tests/blas/matrix_vector.h"
#include "tests/support/probe.h"

#include <algorithm>
#include <map>
#include <memory>
#include <pthread.h>

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> std::string driver() { return std::string("x") + letter<T> + "gemv"; }

template <class T>
void gemv(char trans, i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x, i64 incx, T beta, T* y, i64 incy)
{
    static auto* f = kernel<Gemv<T>>("blas", driver<T>());
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
    Line line("gemv", {type}, {trans});
    return line.with("m", m).with("n", n).with("lda", lda).with("incx", incx).with("incy", incy).text();
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

// Operands away from page edges and 16-byte boundaries: the result is the same bits, and nothing outside is touched.
TYPED_TEST(GemvTest, gives_the_same_bits_at_every_alignment_and_leading_dimension)
{
    using T = TypeParam;
    const T alpha = scalar<T>(0.7, -1.3), beta = scalar<T>(-0.4, 0.9);
    for (const i64 m : {1, 2, 3, 7, 16, 31, 53})
        for (const i64 n : {1, 3, 4, 6, 11})
            for (const char trans : {'N', 'T', 'C'}) {
                const i64 lenx = trans == 'N' ? n : m, leny = trans == 'N' ? m : n;
                std::vector<T> expected;
                for (const Place& place : places<T>())
                    for (const i64 pad : {0, 1, 3, 1100}) { // the last as in a large matrix: asking ahead
                        const Place other{place.edge, place.shift * 3 % 16};
                        Random random(static_cast<std::uint64_t>(m * 100 + n));
                        Matrix<T> a(m, n, m + pad, place.edge, place.shift / sizeof(T));
                        Strided<T> x(lenx, 1, place), y(leny, 1, other);
                        a.fill(random), x.fill(random), y.fill(random);
                        SCOPED_TRACE(problem(letter<T>, trans, m, n, a.lda, 1, 1));
                        gemv(trans, m, n, alpha, *a, a.lda, x.data(), 1, beta, y.data(), 1);
                        if (expected.empty()) expected.assign(y.data(), y.data() + leny);
                        ASSERT_EQ(std::memcmp(y.data(), expected.data(), leny * sizeof(T)), 0);
                    }
            }
}

// One kernel, called by its exported name, adds the same bits as the driver.
template <class T> void expect_kernel(const std::string& name, char trans)
{
    auto* f = kernel<GemvUnit<T>>("blas", name);
    const T alpha = scalar<T>(0.7, -1.3);
    for (const i64 m : {-1, 0, 1, 5, 16, 47})
        for (const i64 n : {-1, 0, 1, 2, 3, 4, 9})
            for (const i64 lda : {max(m, 1), max(m, 1) + 1}) {
                SCOPED_TRACE(name + " " + problem(letter<T>, trans, m, n, lda, 1, 1));
                const i64 lenx = max(trans == 'N' ? n : m, 0), leny = max(trans == 'N' ? m : n, 0);
                Random random(3);
                Matrix<T> a(m, n, lda);
                a.fill(random);
                Strided<T> x(lenx, 1), y(leny, 1);
                x.fill(random), y.fill(random);
                Strided<T> expected(y, {});
                if (m > 0 && n > 0) gemv(trans, m, n, alpha, *a, lda, x.data(), 1, one<T>, expected.data(), 1);
                f(&m, &n, &alpha, *a, &lda, x.data(), y.data());
                ASSERT_EQ(y.bits(), expected.bits());
            }
}

TEST(GemvKernel, add_what_the_driver_adds_for_even_and_odd_leading_dimensions)
{
    for (const char* parity : {"_even", "_odd"}) {
        expect_kernel<float>(std::string("sgemv_n") + parity, 'N');
        expect_kernel<float>(std::string("sgemv_t") + parity, 'T');
        expect_kernel<double>(std::string("dgemv_n") + parity, 'N');
        expect_kernel<double>(std::string("dgemv_t") + parity, 'T');
        expect_kernel<cpx<float>>(std::string("cgemv_n") + parity, 'N');
        expect_kernel<cpx<float>>(std::string("cgemv_t") + parity, 'T');
        expect_kernel<cpx<float>>(std::string("cgemv_c") + parity, 'C');
    }
    expect_kernel<cpx<double>>("zgemv_n", 'N');
    expect_kernel<cpx<double>>("zgemv_t", 'T');
    expect_kernel<cpx<double>>("zgemv_c", 'C');
}

// A of one unreadable page: whoever reads it dies.
TYPED_TEST(GemvTest, clears_y_and_reads_neither_a_nor_x_for_alpha_and_beta_of_zero)
{
    using T = TypeParam;
    const Guarded<T> none(0);
    for (const char trans : {'N', 'T', 'C'})
        for (const i64 inc : {1, -1, 2, -3, 0})
            for (i64 n = 1; n <= 30; ++n) {
                Strided<T> y(n, inc); // all NaN
                const std::vector<std::byte> before = y.bits();
                gemv(trans, n, n, zero<T>, none.data(), n, none.data(), 1, zero<T>, y.data(), inc);
                for (i64 i = 0; i < n; ++i) ASSERT_PRED2(same_bits<T>, y(i), zero<T>) << n << ' ' << inc;
                for (i64 i = 0; inc != 0 && i < n; ++i) std::memset(static_cast<void*>(&y(i)), 0xff, sizeof(T));
                if (inc == 0) continue;
                ASSERT_EQ(y.bits(), before) << "gaps, n=" << n << " inc=" << inc;
            }
}

TYPED_TEST(GemvTest, loses_nan_in_y_when_beta_is_zero_and_keeps_it_otherwise)
{
    using T = TypeParam;
    Matrix<T> a(5, 3, 5);
    Strided<T> x(3, 1), y(5, 1);
    Random random;
    a.fill(random), x.fill(random);
    gemv('N', 5, 3, one<T>, *a, 5, x.data(), 1, zero<T>, y.data(), 1);
    for (i64 i = 0; i < 5; ++i) EXPECT_TRUE(y(i) == y(i));
    x(1) = scalar<T>(NAN, 0);
    gemv('N', 5, 3, one<T>, *a, 5, x.data(), 1, zero<T>, y.data(), 1);
    for (i64 i = 0; i < 5; ++i) EXPECT_FALSE(y(i) == y(i));
    x(1) = one<T>;
    gemv('N', 5, 3, zero<T>, *a, 5, x.data(), 1, scalar<T>(2, 0), y.data(), 1);
    for (i64 i = 0; i < 5; ++i) EXPECT_FALSE(y(i) == y(i));
}

TYPED_TEST(GemvTest, leaves_y_alone_when_there_is_nothing_to_do)
{
    using T = TypeParam;
    const Guarded<T> none(0);
    Strided<T> y(9, 1);
    const std::vector<std::byte> before = y.bits();
    gemv('N', 0, 9, one<T>, none.data(), 1, none.data(), 1, zero<T>, y.data(), 1);
    gemv('T', 9, 0, one<T>, none.data(), 9, none.data(), 1, zero<T>, y.data(), 1);
    gemv('T', 9, 9, zero<T>, none.data(), 9, none.data(), 1, one<T>, y.data(), 1);
    EXPECT_EQ(y.bits(), before);
}

TYPED_TEST(GemvTest, scales_by_beta_on_both_sides_of_its_blocks)
{
    using T = TypeParam;
    const Guarded<T> none(0);
    const T beta = scalar<T>(-0.4, 0.9);
    for (const i64 inc : {1, -1, 2, -3})
        for (i64 n = 1; n <= 40; ++n) {
            Strided<T> y(n, inc);
            Random random(static_cast<std::uint64_t>(n));
            y.fill(random);
            Strided<T> expected(y, {});
            for (i64 i = 0; i < n; ++i) expected(i) = beta * expected(i);
            gemv('N', n, 1, zero<T>, none.data(), n, none.data(), 1, beta, y.data(), inc);
            ASSERT_EQ(y.bits(), expected.bits()) << n << ' ' << inc;
        }
}

TYPED_TEST(GemvTest, multiplies_one_location_by_beta_once_for_each_element_at_stride_zero)
{
    using T = TypeParam;
    const Guarded<T> none(0);
    for (i64 n = 1; n <= 20; ++n) {
        T y = scalar<T>(3, 0);
        gemv('N', n, 1, zero<T>, none.data(), n, none.data(), 1, scalar<T>(2, 0), &y, 0);
        EXPECT_PRED2(same_bits<T>, y, scalar<T>(std::ldexp(3.0, static_cast<int>(n)), 0)) << n;
    }
    // beta^3 first, then the product: the location stands for all three elements, the last of which stays.
    const T a[] = {scalar<T>(1, 0), scalar<T>(10, 0), scalar<T>(100, 0)}, x = one<T>;
    T y = one<T>;
    gemv('N', 3, 1, one<T>, a, 3, &x, 1, scalar<T>(2, 0), &y, 0);
    EXPECT_PRED2(same_bits<T>, y, scalar<T>(108, 0));
    // x at stride 0 is one value for all elements.
    y = zero<T>;
    gemv('T', 3, 1, one<T>, a, 3, &x, 0, one<T>, &y, 1);
    EXPECT_PRED2(same_bits<T>, y, scalar<T>(111, 0));
}

TYPED_TEST(GemvTest, takes_negative_dimensions_without_touching_anything)
{
    using T = TypeParam;
    const Guarded<T> none(0);
    for (const char trans : {'N', 'T'})
        for (const i64 inc : {1, 2}) {
            gemv(trans, -3, 4, one<T>, none.data(), 1, none.data(), inc, one<T>, none.data(), inc);
            gemv(trans, 4, -3, one<T>, none.data(), 4, none.data(), inc, one<T>, none.data(), inc);
        }
}

TYPED_TEST(GemvTest, runs_strided_on_a_stack_of_128_KiB_without_memory)
{
    using T = TypeParam;
    static i64 allocations;
    const auto body = [](void*) -> void* {
        ProbeScope scope;
        std::vector<T> a(1500 * 300, one<T>), x(3000, one<T>), y(3000, zero<T>);
        for (const char trans : {'N', 'T'})
            gemv(trans, 1500, 300, one<T>, a.data(), 1500, x.data(), 2, zero<T>, y.data(), 2);
        allocations = scope->allocations;
        return nullptr;
    };
    allocations = -1;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 128 << 10);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, body, nullptr), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(allocations, 0);
}

// The twin's order: T sums in one chain, row after row; N is the same as ever.
std::vector<float> in_plain_order(char trans, const Matrix<float>& a, float alpha, const std::vector<float>& x,
                                  float beta, std::vector<float> y)
{
    if (meaning<float>(trans) == 'N') return in_order(trans, a, alpha, x, beta, y, false);
    scale(y, beta);
    for (i64 j = 0; j < a.n; ++j) {
        float sum = 0;
        for (i64 i = 0; i < a.m; ++i) sum += a(i, j) * x[i];
        y[j] += alpha * sum;
    }
    return y;
}

TEST(Sgemv, leaves_for_its_reproducible_twin_unless_the_state_is_1)
{
    const float alpha = 0.7f, beta = -0.4f;
    for (const i64 m : {1, 9, 53, 1003})
        for (const i64 n : {1, 8, 13, 131})
            for (const char trans : {'N', 'T'})
                for (const i64 inc : {1, -2}) {
                    Matrix<float> a(m, n, m + 1);
                    Random random(static_cast<std::uint64_t>(m + n));
                    std::vector<float> x(trans == 'N' ? n : m), y(trans == 'N' ? m : n);
                    a.fill(random), random.fill(x), random.fill(y);
                    for (const int state : {0, 1, 2}) {
                        SCOPED_TRACE(problem('s', trans, m, n, m + 1, inc, inc) + " state " + std::to_string(state));
                        Strided<float> vx(static_cast<i64>(x.size()), inc), vy(static_cast<i64>(y.size()), inc);
                        for (std::size_t i = 0; i < x.size(); ++i) vx(static_cast<i64>(i)) = x[i];
                        for (std::size_t i = 0; i < y.size(); ++i) vy(static_cast<i64>(i)) = y[i];
                        ProbeScope scope;
                        scope->reproducibility = state;
                        gemv(trans, m, n, alpha, *a, m + 1, vx.data(), inc, beta, vy.data(), inc);
                        EXPECT_EQ(scope->reproducibility_asked, 1);
                        const std::vector<float> expected = state == 1 ? in_order(trans, a, alpha, x, beta, y, inc != 1)
                                                                       : in_plain_order(trans, a, alpha, x, beta, y);
                        for (std::size_t i = 0; i < y.size(); ++i)
                            ASSERT_PRED2(same_bits<float>, vy(static_cast<i64>(i)), expected[i]) << "element " << i;
                    }
                }
}

TEST(Sgemv, does_not_ask_for_the_state_when_there_is_nothing_to_do)
{
    ProbeScope scope;
    scope->reproducibility = 0;
    float y = 5;
    gemv<float>('N', 0, 1, 1, nullptr, 1, nullptr, 1, 0, &y, 1);
    gemv<float>('N', 1, 0, 1, nullptr, 1, nullptr, 1, 0, &y, 1);
    gemv<float>('N', 1, 1, 0, nullptr, 1, nullptr, 1, 1, &y, 1);
    EXPECT_EQ(scope->reproducibility_asked, 0);
    gemv<float>('N', 1, 1, 0, nullptr, 1, nullptr, 1, 0, &y, 1);
    EXPECT_EQ(scope->reproducibility_asked, 1);
    EXPECT_EQ(y, 0);
}

TEST(Line, of_gemv_repeats_it)
{
    EXPECT_TRUE(repeats(problem('d', 'T', 7, 4, 9, -1, 2)));
    EXPECT_TRUE(repeats(problem('c', 'c', 7, 4, 9, 1, -3)));
}

} // namespace
} // namespace orv::test
