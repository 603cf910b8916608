// Products with symmetric and Hermitian matrices, full, packed and banded: x?symv, ?hemv, ?spmv, ?hpmv, ?sbmv, ?hbmv.
#include "frame/kernels/blas.h"
#include "tests/blas/matrix_vector.h"
#include "tests/support/probe.h"

#include <algorithm>
#include <pthread.h>

namespace orv::test {
namespace {

using namespace kernels::blas;

enum class Kind { full, packed, band };

template <class T> std::string name_of(Kind kind)
{
    const std::string t(1, letter<T>), symmetric = is_complex<T> ? "h" : "s";
    if (kind == Kind::packed) return t + symmetric + "pmv";
    if (kind == Kind::band) return t + symmetric + "bmv";
    return is_complex<T> ? t + "hemv" : "x" + t + "symv";
}

// A matrix in its storage, against an unreadable page. All that a routine has no business to read is NaN: the other
// triangle, the padding, the corners of a band, imaginary parts of a Hermitian diagonal.
template <class T> struct Triangle {
    Kind kind;
    char uplo;
    i64 n, k, lda;
    Guarded<T> data;

    Triangle(Kind kind, char uplo, i64 n, i64 k, i64 pad, Random& random, Place place = {})
        : kind(kind), uplo(uplo), n(n), k(kind == Kind::band ? k : max(n - 1, 0)),
          lda(kind == Kind::band ? this->k + 1 + pad : max(n, 1) + pad),
          data(size(), place.edge, place.shift / sizeof(T))
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < n; ++i)
                if (is_stored(i, j)) {
                    T& e = data[offset(i, j)] = random.value<T>();
                    if constexpr (is_complex<T>)
                        if (i == j) e.im = NAN;
                }
    }
    bool upper() const { return uplo == 'U' || uplo == 'u'; }
    bool is_stored(i64 i, i64 j) const { return upper() ? i <= j && j - i <= k : i >= j && i - j <= k; }
    T operator()(i64 i, i64 j) const
    {
        if (!is_stored(i, j)) return is_stored(j, i) ? conj((*this)(j, i)) : zero<T>;
        const T e = data[offset(i, j)];
        if constexpr (is_complex<T>)
            if (i == j) return {e.re, 0};
        return e;
    }

private:
    std::size_t size() const
    {
        if (n == 0) return 0;
        const i64 length = kind == Kind::packed ? n * (n + 1) / 2 : (n - 1) * lda + (kind == Kind::band ? k + 1 : n);
        return static_cast<std::size_t>(length);
    }
    std::size_t offset(i64 i, i64 j) const
    {
        i64 at = i + j * lda;
        if (kind == Kind::band) at = (upper() ? k + i - j : i - j) + j * lda;
        if (kind == Kind::packed) at = i + (upper() ? j * (j + 1) / 2 : j * n - j * (j + 1) / 2);
        return static_cast<std::size_t>(at);
    }
};

template <class T> std::vector<T> contents(const Guarded<T>& data) { return {data.begin(), data.end()}; }
template <class T> bool same(const std::vector<T>& a, const std::vector<T>& b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

// What a routine computes with, whatever the storage.
template <class T> struct Call {
    Kind kind;
    char uplo;
    i64 n, k;
    const T* a;
    i64 lda;

    Call(const Triangle<T>& t) : kind(t.kind), uplo(t.uplo), n(t.n), k(t.k), a(t.data.data()), lda(t.lda) {}
    Call(Kind kind, i64 n, const T* a) : kind(kind), uplo('U'), n(n), k(0), a(a), lda(max(n, 1)) {}

    void operator()(T alpha, const T* x, i64 incx, T beta, T* y, i64 incy, const char* suffix = "") const
    {
        const std::string name = name_of<T>(kind) + suffix;
        if (kind == Kind::full) kernel<Symv<T>>("blas", name)(&uplo, &n, &alpha, a, &lda, x, &incx, &beta, y, &incy);
        if (kind == Kind::packed) kernel<Spmv<T>>("blas", name)(&uplo, &n, &alpha, a, x, &incx, &beta, y, &incy);
        if (kind == Kind::band)
            kernel<Sbmv<T>>("blas", name)(&uplo, &n, &k, &alpha, a, &lda, x, &incx, &beta, y, &incy);
    }
};

template <class T> std::string problem(const Triangle<T>& a, i64 incx, i64 incy)
{
    const char* const families[] = {"symv", "spmv", "sbmv", "hemv", "hpmv", "hbmv"};
    const int storage = a.kind == Kind::full ? 0 : a.kind == Kind::packed ? 1 : 2;
    Line text = line<T>(families[storage + (is_complex<T> ? 3 : 0)], {a.uplo});
    text.with("n", a.n);
    if (a.kind == Kind::band) text.with("k", a.k);
    if (a.kind != Kind::packed) text.with("lda", a.lda);
    return text.with("incx", incx).with("incy", incy).text();
}

template <class T>
std::vector<Bounded> exact(const Triangle<T>& a, T alpha, const std::vector<T>& x, T beta, const std::vector<T>& y)
{
    std::vector<Bounded> result;
    for (i64 i = 0; i < a.n; ++i) {
        Bounded sum;
        for (i64 j = max(0, i - a.k); j < std::min(a.n, i + a.k + 1); ++j) sum += Bounded(a(i, j)) * Bounded(x[j]);
        Bounded total = beta == zero<T> ? Bounded() : Bounded(beta) * Bounded(y[i]);
        total += Bounded(alpha) * sum;
        result.push_back(total);
    }
    return result;
}

// Each element is a sum of as many products as a row has elements; copies of strided vectors add up to four sums more.
template <class T> i64 roundings(const Triangle<T>& a) { return product_roundings<T>(std::min(a.n, 2 * a.k + 1) + 4); }

constexpr i64 strides[] = {1, -1, 2, -3};

// One matrix against every pair of strides: within the bound, and nothing else touched.
template <class T> long double worst_error(const Triangle<T>& a, T alpha, T beta, std::span<const i64> incs = strides)
{
    Random random(static_cast<std::uint64_t>(a.n));
    std::vector<T> x(a.n), y(a.n);
    random.fill(x), random.fill(y);
    const std::vector<Bounded> expected = exact(a, alpha, x, beta, y);
    const std::vector<T> matrix = contents(a.data);
    long double worst = 0;
    for (const i64 incx : incs) {
        Strided<T> vx(a.n, incx);
        for (i64 i = 0; i < a.n; ++i) vx(i) = x[i];
        const std::vector<std::byte> x_before = vx.bits();
        for (const i64 incy : incs) {
            SCOPED_TRACE(problem(a, incx, incy));
            Strided<T> vy(a.n, incy);
            const std::vector<std::byte> gaps = vy.bits();
            if (beta != zero<T>)
                for (i64 i = 0; i < a.n; ++i) vy(i) = y[i];
            Call<T>{a}(alpha, vx.data(), incx, beta, vy.data(), incy);
            for (i64 i = 0; i < a.n; ++i) {
                const long double e = excess(vy(i), expected[i], roundings(a));
                EXPECT_LE(e, 1) << "element " << i;
                worst = std::max(worst, e);
                std::memset(static_cast<void*>(&vy(i)), 0xff, sizeof(T));
            }
            EXPECT_EQ(vy.bits(), gaps);
            EXPECT_EQ(vx.bits(), x_before);
            if (testing::Test::HasFailure()) return worst;
        }
    }
    EXPECT_TRUE(same(contents(a.data), matrix)) << problem(a, 0, 0);
    return worst;
}

template <class T> class SymvTest : public testing::Test {
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(SymvTest, Types);

constexpr Kind kinds[] = {Kind::full, Kind::packed, Kind::band};

// The widths of band to try; the other storages have none.
std::vector<i64> widths(Kind kind, i64 n)
{
    if (kind != Kind::band) return {0};
    return {0, 1, 2, 3, 4, 5, 6, 8, 11, n / 2, max(n - 1, 0), n + 2};
}

TYPED_TEST(SymvTest, is_within_the_bound_at_all_small_sizes_strides_and_widths)
{
    using T = TypeParam;
    const T scalars[] = {scalar<T>(0.7, -1.3), one<T>, zero<T>};
    for (const Kind kind : kinds) {
        long double worst = 0;
        for (i64 n = 0; n <= 70; ++n)
            for (const i64 k : widths(kind, n))
                for (const char uplo : {'U', 'L', n % 2 != 0 ? 'u' : 'l'}) {
                    Random random(static_cast<std::uint64_t>(n + 100 * k));
                    const Triangle<T> a(kind, uplo, n, k, (n + k) % 4, random);
                    const i64 pick = (n + k) % 8; // of nine pairs all but zero and zero
                    worst = std::max(worst, worst_error(a, scalars[pick / 3], scalars[pick % 3]));
                    if (testing::Test::HasFailure()) return;
                }
        std::printf("%s: worst error %.2Lf of its bound\n", name_of<T>(kind).c_str(), worst);
    }
}

TYPED_TEST(SymvTest, is_within_the_bound_across_blocks_and_windows)
{
    using T = TypeParam;
    constexpr i64 few[] = {1, -3};
    for (const Kind kind : kinds) {
        long double worst = 0;
        const auto at = [&](i64 n, i64 k) {
            for (const char uplo : {'U', 'L'}) {
                Random random(static_cast<std::uint64_t>(n + k));
                const Triangle<T> a(kind, uplo, n, k, n % 3, random);
                worst = std::max(worst, worst_error(a, scalar<T>(0.7, -1.3), scalar<T>(-0.4, 0.9), few));
            }
        };
        for (const i64 n : {127, 128, 129, 199, 200, 255, 256, 257, 515})
            for (const i64 k : {5, 50, 128}) at(n, k);
        // Rows in windows: 8192 bytes each.
        for (const i64 n : {999, 1000, 1001, 8192 / static_cast<int>(sizeof(T)) + 130}) at(n, 500);
        std::printf("%s across blocks: worst error %.2Lf of its bound\n", name_of<T>(kind).c_str(), worst);
    }
}

// Packed or not, strips take the same rows in the same order; full ones of large matrices ask ahead while they do.
TYPED_TEST(SymvTest, gives_the_bits_of_packed_storage_in_large_matrices)
{
    using T = TypeParam;
    for (const char uplo : {'U', 'L'})
        for (const i64 n : {100, 727}) {
            Random one(7), other(7);
            const Triangle<T> full(Kind::full, uplo, n, 0, 3, one), packed(Kind::packed, uplo, n, 0, 0, other);
            std::vector<T> x(n), y(n);
            one.fill(x), one.fill(y);
            auto z = y;
            const T alpha = scalar<T>(0.7, -1.3), beta = scalar<T>(-0.4, 0.9);
            Call<T>{full}(alpha, x.data(), 1, beta, y.data(), 1);
            Call<T>{packed}(alpha, x.data(), 1, beta, z.data(), 1);
            ASSERT_EQ(std::memcmp(y.data(), z.data(), y.size() * sizeof(T)), 0) << problem(full, 1, 1);
        }
}

TYPED_TEST(SymvTest, reads_nothing_outside_its_operands_at_any_alignment)
{
    using T = TypeParam;
    const T alpha = scalar<T>(0.7, -1.3), beta = scalar<T>(-0.4, 0.9);
    for (const Kind kind : kinds)
        for (const char uplo : {'U', 'L'})
            for (const i64 n : {1, 2, 3, 4, 5, 7, 13, 30})
                for (const i64 k : {0, 2, 5, 9})
                    for (const Place& place : places<T>()) {
                        const Place other{place.edge, place.shift * 3 % 16};
                        Random random(static_cast<std::uint64_t>(n));
                        const Triangle<T> a(kind, uplo, n, k, 1, random, place);
                        Strided<T> x(n, 1, other), y(n, 1, place);
                        x.fill(random), y.fill(random);
                        SCOPED_TRACE(problem(a, 1, 1) + " shift=" + std::to_string(place.shift));
                        const std::vector<T> logical_x(x.data(), x.data() + n), logical_y(y.data(), y.data() + n);
                        const std::vector<Bounded> expected = exact(a, alpha, logical_x, beta, logical_y);
                        Call<T>{a}(alpha, x.data(), 1, beta, y.data(), 1);
                        for (i64 i = 0; i < n; ++i) ASSERT_LE(excess(y(i), expected[i], roundings(a)), 1);
                    }
}

TYPED_TEST(SymvTest, clears_y_and_reads_neither_a_nor_x_for_alpha_and_beta_of_zero)
{
    using T = TypeParam;
    const Guarded<T> none(0);
    for (const Kind kind : kinds)
        for (const i64 inc : {1, -1, 2, -3})
            for (i64 n = 1; n <= 30; ++n) {
                Strided<T> y(n, inc); // all NaN
                Call<T>{kind, n, none.data()}(zero<T>, none.data(), 1, zero<T>, y.data(), inc);
                for (i64 i = 0; i < n; ++i) ASSERT_PRED2(same_bits<T>, y(i), zero<T>) << n << ' ' << inc;
            }
}

TYPED_TEST(SymvTest, multiplies_by_beta_and_reads_neither_a_nor_x_for_alpha_of_zero)
{
    using T = TypeParam;
    const Guarded<T> none(0);
    const T beta = scalar<T>(-0.4, 0.9);
    for (const Kind kind : kinds)
        for (const i64 inc : {1, -1, 2, -3})
            for (i64 n = 1; n <= 30; ++n) {
                Strided<T> y(n, inc);
                Random random(static_cast<std::uint64_t>(n));
                y.fill(random);
                Strided<T> expected(y, {});
                for (i64 i = 0; i < n; ++i) expected(i) = beta * expected(i);
                Call<T>{kind, n, none.data()}(zero<T>, none.data(), 1, beta, y.data(), inc);
                ASSERT_EQ(y.bits(), expected.bits()) << n << ' ' << inc;
            }
}

TYPED_TEST(SymvTest, leaves_y_alone_and_asks_nothing_when_there_is_nothing_to_do)
{
    using T = TypeParam;
    const Guarded<T> none(0);
    ProbeScope scope;
    scope->reproducibility = 0;
    for (const Kind kind : kinds) {
        Call<T>{kind, 0, none.data()}(one<T>, none.data(), 1, zero<T>, none.data(), 1);
        Call<T>{kind, 9, none.data()}(zero<T>, none.data(), 1, one<T>, none.data(), 1);
    }
    EXPECT_EQ(scope->reproducibility_asked, 0);
}

TYPED_TEST(SymvTest, carries_nan_of_the_triangle_and_of_x_to_y)
{
    using T = TypeParam;
    for (const Kind kind : kinds)
        for (const char uplo : {'U', 'L'})
            for (const i64 n : {1, 6, 23}) {
                Random random(static_cast<std::uint64_t>(n));
                const Triangle<T> a(kind, uplo, n, n, 0, random);
                Strided<T> x(n, 1), y(n, 1);
                for (i64 at = 0; at < n; ++at) {
                    x.fill(random);
                    x(at) = scalar<T>(NAN, 0);
                    Call<T>{a}(one<T>, x.data(), 1, zero<T>, y.data(), 1);
                    for (i64 i = 0; i < n; ++i) ASSERT_FALSE(y(i) == y(i)) << problem(a, 1, 1);
                }
            }
}

TYPED_TEST(SymvTest, runs_strided_on_a_stack_of_128_KiB_without_memory)
{
    using T = TypeParam;
    static i64 allocations;
    const auto body = [](void*) -> void* {
        constexpr i64 n = 1200;
        Random random;
        for (const Kind kind : kinds) {
            const Triangle<T> a(kind, 'L', n, 700, 0, random);
            std::vector<T> x(2 * n, one<T>), y(2 * n, zero<T>);
            ProbeScope scope;
            Call<T>{a}(one<T>, x.data(), 2, zero<T>, y.data(), 2);
            Call<T>{a}(one<T>, x.data(), 1, zero<T>, y.data(), 1);
            allocations += scope->allocations;
        }
        return nullptr;
    };
    allocations = 0;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 128 << 10);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, body, nullptr), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(allocations, 0);
}

// The sums of one row's products with f, and of one column's with x, as the twins form them.
template <class T> struct Chain {
    T sum,
        crossed = zero<T>; // of complex products the terms with the real part, and parts exchanged with the imaginary
    void add(T e, T f)
    {
        if constexpr (is_complex<T>) {
            sum = {sum.re + e.re * f.re, sum.im + e.im * f.re};
            crossed = {crossed.re + e.im * f.im, crossed.im + e.re * f.im};
        } else sum = sum + e * f;
    }
    T product() const
    {
        if constexpr (is_complex<T>) return {sum.re - crossed.re, sum.im + crossed.im};
        else return sum;
    }
    T conjugated() const
    {
        if constexpr (is_complex<T>) return {sum.re + crossed.re, crossed.im - sum.im};
        else return sum;
    }
};

// The order of the reproducible twins in scalar code: strips of four columns, then of what is left two and one, and so
// too where four columns have no rows in a stretch (bands of less than three diagonals).
template <class T>
std::vector<T> in_order(const Triangle<T>& a, T alpha, const std::vector<T>& x, T beta, std::vector<T> y)
{
    for (T& e : y)
        if (beta == zero<T>) e = zero<T>;
        else if (beta != one<T>) e = beta * e;
    if (alpha == zero<T>) return y;
    for (i64 j = 0; j < a.n;) {
        const i64 left = std::min(a.n - j, a.k + 1), columns = left >= 4 ? 4 : left >= 2 ? 2 : 1;
        std::vector<Chain<T>> across(columns, Chain<T>{zero<T>});
        for (i64 i = 0; i < a.n; ++i) {
            Chain<T> row{y[i]};
            for (i64 c = 0; c < columns; ++c)
                if (i != j + c && a.is_stored(i, j + c)) {
                    row.add(a(i, j + c), alpha * x[j + c]);
                    across[c].add(a(i, j + c), x[i]);
                }
            y[i] = row.product();
        }
        for (i64 c = 0; c < columns; ++c, ++j) {
            const T f = alpha * x[j], d = a(j, j);
            if constexpr (is_complex<T>) y[j] = y[j] + d.re * f;
            else y[j] = y[j] + d * f;
            y[j] = y[j] + alpha * across[c].conjugated();
        }
    }
    return y;
}

template <class T> void expect_twin(Kind kind)
{
    const T alpha = scalar<T>(0.7, -1.3);
    for (const i64 n : {1, 2, 3, 4, 5, 6, 7, 8, 21, 66, 131, 515})
        for (const i64 k : widths(kind, n))
            for (const char uplo : {'U', 'L'})
                for (const T beta : {scalar<T>(-0.4, 0.9), zero<T>}) {
                    std::vector<T> expected;
                    for (const i64 inc : strides)
                        for (const i64 pad : {0, 1}) {
                            Random random(static_cast<std::uint64_t>(n + 100 * k));
                            const Place place{Edge::start, static_cast<std::size_t>(pad + (inc & 2)) * sizeof(T)};
                            const Triangle<T> a(kind, uplo, n, k, pad, random, place);
                            Strided<T> x(n, inc, place), y(n, inc, place);
                            std::vector<T> logical_x(n), logical_y(n);
                            random.fill(logical_x), random.fill(logical_y);
                            for (i64 i = 0; i < n; ++i) x(i) = logical_x[i], y(i) = logical_y[i];
                            if (expected.empty()) expected = in_order(a, alpha, logical_x, beta, logical_y);
                            SCOPED_TRACE(problem(a, inc, inc));
                            Call<T>{a}(alpha, x.data(), inc, beta, y.data(), inc, "_cnr");
                            for (i64 i = 0; i < n; ++i)
                                ASSERT_PRED2(same_bits<T>, y(i), expected[i]) << "element " << i;
                        }
                }
}

TEST(SymvTwins, keep_one_order_whatever_alignment_stride_and_leading_dimension)
{
    expect_twin<float>(Kind::full);
    expect_twin<double>(Kind::band);
    expect_twin<cpx<float>>(Kind::band);
}

// The routine's bits are its twin's in every state but 1; state 1 computes otherwise, which shows in some element.
template <class T> void expect_leaving(Kind kind)
{
    constexpr i64 n = 203;
    const T alpha = scalar<T>(0.7, -1.3), beta = scalar<T>(-0.4, 0.9);
    for (const char uplo : {'U', 'L'}) {
        Random random(7);
        const Triangle<T> a(kind, uplo, n, 60, 1, random);
        Strided<T> x(n, 1), y(n, 1);
        x.fill(random), y.fill(random);
        Strided<T> twin(y, {});
        Call<T>{a}(alpha, x.data(), 1, beta, twin.data(), 1, "_cnr");
        for (const int state : {0, 1, 2}) {
            SCOPED_TRACE(problem(a, 1, 1) + " state " + std::to_string(state));
            Strided<T> result(y, {});
            ProbeScope scope;
            scope->reproducibility = state;
            Call<T>{a}(alpha, x.data(), 1, beta, result.data(), 1);
            EXPECT_EQ(scope->reproducibility_asked, 1);
            EXPECT_EQ(result.bits() == twin.bits(), state != 1);
        }
    }
}

TEST(SymvTwins, take_over_unless_the_state_is_1)
{
    expect_leaving<float>(Kind::full);
    expect_leaving<double>(Kind::band);
    expect_leaving<cpx<float>>(Kind::band);
}

TEST(SymvTwins, are_not_asked_for_by_routines_that_have_none)
{
    ProbeScope scope;
    scope->reproducibility = 0;
    const auto call = []<class T>(Kind kind, T one) { Call<T>{kind, 1, &one}(one, &one, 1, one, &one, 1); };
    call(Kind::full, 1.0), call(Kind::full, cpx<float>{1, 0}), call(Kind::full, cpx<double>{1, 0});
    call(Kind::packed, 1.0f), call(Kind::packed, 1.0), call(Kind::packed, cpx<float>{1, 0});
    call(Kind::packed, cpx<double>{1, 0}), call(Kind::band, 1.0f), call(Kind::band, cpx<double>{1, 0});
    EXPECT_EQ(scope->reproducibility_asked, 0);
}

TEST(Line, of_symv_and_its_kin_repeats_it)
{
    Random random;
    for (const Kind kind : {Kind::full, Kind::packed, Kind::band}) {
        EXPECT_TRUE(repeats(problem(Triangle<double>(kind, 'U', 9, 3, 1, random), 1, -2)));
        EXPECT_TRUE(repeats(problem(Triangle<cpx<float>>(kind, 'l', 9, 3, 1, random), 1, -2)));
    }
}

} // namespace
} // namespace orv::test
