// Updates of rank one and two of a triangle: ?syr, ?her, ?spr, ?hpr, ?syr2, ?her2, ?spr2, ?hpr2.
#include "frame/kernels/blas.h"
#include "tests/blas/matrix_vector.h"
#include "tests/support/probe.h"

#include <algorithm>
#include <pthread.h>

namespace orv::test {
namespace {

using namespace kernels::blas;

// One routine; rank is 1 or 2. A full one without a name of its own is xssyr, xdsyr, cher, zher and so on.
struct Family {
    int rank;
    bool packed;
    std::string suffix = {};

    template <class T> std::string stem() const
    {
        const std::string base = packed ? (is_complex<T> ? "hpr" : "spr") : is_complex<T> ? "her" : "syr";
        return base + (rank == 2 ? "2" : "");
    }
    template <class T> std::string name() const
    {
        const std::string prefix = packed || is_complex<T> ? "" : "x";
        return prefix + letter<T> + stem<T>() + suffix;
    }
};
const Family families[] = {{1, false}, {1, true}, {2, false}, {2, true}};

// One triangle of order n, full or packed, against an unreadable page. All else is NaN and must stay what it is.
template <class T> struct Triangle {
    char uplo;
    i64 n, lda;
    bool packed;
    Guarded<T> data;

    Triangle(char uplo, i64 n, i64 lda, bool packed, Place place = {})
        : uplo(uplo), n(n), lda(lda), packed(packed), data(n <= 0   ? 0
                                                           : packed ? n * (n + 1) / 2
                                                                    : (n - 1) * lda + n,
                                                           place.edge, place.shift / sizeof(T))
    {
    }
    bool upper() const { return uplo == 'U' || uplo == 'u'; }
    i64 top(i64 j) const { return upper() ? 0 : j; }
    i64 bottom(i64 j) const { return upper() ? j + 1 : n; }
    i64 index(i64 i, i64 j) const
    {
        if (!packed) return i + j * lda;
        return i + (upper() ? j * (j + 1) / 2 : j * (2 * n - j - 1) / 2);
    }
    T& operator()(i64 i, i64 j) const { return data[index(i, j)]; }
    template <class Body> void each(Body body) const
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = top(j); i < bottom(j); ++i) body(i, j, (*this)(i, j));
    }
    // Imaginary parts of the diagonal are left NaN: they count as zero.
    void fill(Random& random) const
    {
        each([&](i64 i, i64 j, T& e) {
            const T value = random.value<T>();
            if constexpr (is_complex<T>)
                if (i == j) return void(e.re = value.re);
            e = value;
        });
    }
};

// What a call is given besides the matrix. y is not used by rank one, which takes the real part of alpha.
template <class T> struct Vectors {
    T alpha;
    std::vector<T> x, y;

    Vectors(i64 n, T alpha) : alpha(alpha), x(max(n, 0)), y(max(n, 0))
    {
        Random random(static_cast<std::uint64_t>(n) + 17);
        random.fill(x), random.fill(y);
    }
};

template <class T> real_t<T> real_part(T a)
{
    if constexpr (is_complex<T>) return a.re;
    else return a;
}

// Calls by name; `first` goes to the routines that take a share.
template <class T>
void call(const Family& f, char uplo, i64 n, T alpha, const T* x, i64 incx, const T* y, i64 incy, T* a, i64 lda,
          const i64* first = nullptr)
{
    const std::string name = f.name<T>();
    const real_t<T> re = real_part(alpha);
    if (f.rank == 1 && f.packed) kernel<Spr<T>>("blas", name)(&uplo, &n, &re, x, &incx, a);
    else if (f.rank == 1 && first) kernel<SyrInThread<T>>("blas", name)(&uplo, &n, &alpha, x, &incx, a, &lda, first);
    else if (f.rank == 1) kernel<Syr<T>>("blas", name)(&uplo, &n, &re, x, &incx, a, &lda);
    else if (f.packed) kernel<Spr2<T>>("blas", name)(&uplo, &n, &alpha, x, &incx, y, &incy, a);
    else if (first) kernel<Syr2InThread<T>>("blas", name)(&uplo, &n, &alpha, x, &incx, y, &incy, a, &lda, first);
    else kernel<Syr2<T>>("blas", name)(&uplo, &n, &alpha, x, &incx, y, &incy, a, &lda);
}

template <class T> std::string problem(const Family& f, char uplo, i64 n, i64 lda, i64 incx, i64 incy)
{
    Line text = line<T>(f.stem<T>(), {uplo});
    text.with("n", n).with("incx", incx);
    if (f.rank == 2) text.with("incy", incy);
    if (!f.packed) text.with("lda", lda);
    return text.text(f.name<T>());
}

// The order of operations in scalar code. All zero factors leave a column alone, but for the imaginary diagonal.
template <class T> T updated(int rank, const Vectors<T>& v, i64 i, i64 j, T a)
{
    const T f = rank == 1 ? real_part(v.alpha) * conj(v.x[j]) : v.alpha * conj(v.y[j]);
    const T g = rank == 1 ? zero<T> : conj(v.alpha * v.x[j]);
    if (f != zero<T> || g != zero<T>) {
        a = a + f * v.x[i];
        if (rank == 2) a = a + g * v.y[i];
    }
    if constexpr (is_complex<T>)
        if (i == j) a.im = 0;
    return a;
}

template <class T> Bounded exact(int rank, const Vectors<T>& v, i64 i, i64 j, T a)
{
    if constexpr (is_complex<T>)
        if (i == j) a.im = 0;
    Bounded sum(a);
    if (rank == 1) sum += Bounded(real_part(v.alpha)) * (Bounded(v.x[i]) * Bounded(conj(v.x[j])));
    else {
        sum += Bounded(v.alpha) * (Bounded(v.x[i]) * Bounded(conj(v.y[j])));
        sum += Bounded(conj(v.alpha)) * (Bounded(v.y[i]) * Bounded(conj(v.x[j])));
    }
    if (i == j) sum.im = 0;
    return sum;
}
// On the way of the first vector: its factor, its product, and a sum for each vector.
template <class T> constexpr i64 roundings(int rank)
{
    if (!is_complex<T>) return 2 + rank;
    return rank == 1 ? 4 : 6;
}

// The triangle before a call, after it by the rule, and the worst error that the rule itself makes.
template <class T> struct Expectation {
    const Triangle<T>& a;
    std::vector<T> before, after;
    long double worst = 0;

    Expectation(const Family& f, const Triangle<T>& a, const Vectors<T>& v, bool bounded)
        : a(a), before(a.data.begin(), a.data.end()), after(before)
    {
        a.each([&](i64 i, i64 j, T& e) {
            T& to = after[a.index(i, j)];
            to = updated(f.rank, v, i, j, e);
            if (bounded) worst = std::max(worst, excess(to, exact(f.rank, v, i, j, e), roundings<T>(f.rank)));
        });
    }
    void restore() const { std::copy(before.begin(), before.end(), a.data.begin()); }
    ::testing::AssertionResult holds() const
    {
        const auto same = [](T x, T y) { return same_bits(x, y); };
        const std::size_t k = std::mismatch(after.begin(), after.end(), a.data.begin(), same).first - after.begin();
        if (k == after.size()) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << "differs first in element " << k << " of the array";
    }
};

// A vector with a stride of its own.
template <class T> struct LaidOut : Strided<T> {
    LaidOut(const std::vector<T>& x, i64 inc, Place place = {}) : Strided<T>(static_cast<i64>(x.size()), inc, place)
    {
        for (std::size_t i = 0; i < x.size(); ++i) (*this)(static_cast<i64>(i)) = x[i];
    }
};

template <class T> class RankUpdateTest : public testing::Test {
public:
    // Runs one size with every pair of strides; returns the worst error.
    static long double run(const Family& f, char uplo, i64 n, i64 pad, T alpha, std::span<const i64> strides)
    {
        Triangle<T> a(uplo, n, max(n, 1) + pad, f.packed);
        Random random(static_cast<std::uint64_t>(n * 3 + pad));
        a.fill(random);
        for (const i64 incx : strides)
            for (const i64 incy : strides) {
                if (f.rank == 1 && incy != strides[0]) continue;
                Vectors<T> v(n, alpha);
                if (incx == 0) std::fill(v.x.begin(), v.x.end(), n > 0 ? v.x.back() : zero<T>);
                if (incy == 0) std::fill(v.y.begin(), v.y.end(), n > 0 ? v.y.back() : zero<T>);
                const LaidOut<T> x(v.x, incx), y(v.y, incy);
                const bool bounded = n <= 300 && incx == strides[0] && incy == strides[0]; // the bits are as ever
                const Expectation<T> expected(f, a, v, bounded);
                worst = std::max(worst, expected.worst);
                SCOPED_TRACE(problem<T>(f, uplo, n, a.lda, incx, incy));
                call(f, uplo, n, alpha, x.data(), incx, y.data(), incy, a.data.data(), a.lda);
                EXPECT_TRUE(expected.holds());
                EXPECT_LE(expected.worst, 1);
                expected.restore();
            }
        return worst;
    }
    static inline long double worst = 0;
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(RankUpdateTest, Types);

constexpr i64 all_strides[] = {1, -1, 2, -3, 0}, few_strides[] = {1, -2};

TYPED_TEST(RankUpdateTest, keeps_its_order_of_operations_at_all_small_sizes_and_strides)
{
    using T = TypeParam;
    for (const Family& f : families) {
        this->worst = 0;
        for (i64 n = 0; n <= 70; ++n)
            for (const char uplo : {'U', 'L', 'u', 'l'}) {
                const bool folded = uplo == 'u' || uplo == 'l';
                this->run(f, uplo, n, (n + folded) % 4, folded ? one<T> : scalar<T>(0.7, -1.3), all_strides);
                if (this->HasFailure()) return;
            }
        std::printf("%s: worst error %.2Lf of its bound\n", f.name<T>().c_str(), this->worst);
    }
}

TYPED_TEST(RankUpdateTest, keeps_its_order_of_operations_at_larger_sizes)
{
    using T = TypeParam;
    for (const Family& f : families)
        for (const char uplo : {'U', 'L'}) {
            for (const i64 n : {127, 128, 129, 199, 200, 255, 256})
                this->run(f, uplo, n, n % 3, scalar<T>(0.7, -1.3), few_strides);
            for (const i64 n : {999, 1000, 1001}) {
                this->run(f, uplo, n, n % 3, scalar<T>(0.7, -1.3), std::span(few_strides, 1));
                this->run(f, uplo, n, n % 3, scalar<T>(0.7, -1.3), std::span(few_strides + 1, 1));
            }
        }
}

// Strided vectors are gathered in chunks: of 16 KiB, or for two vectors of 8 KiB each.
TYPED_TEST(RankUpdateTest, keeps_its_order_of_operations_across_chunks_of_strided_vectors)
{
    using T = TypeParam;
    constexpr i64 strides[] = {2};
    for (const int rank : {1, 2})
        for (const char uplo : {'U', 'L'})
            for (const i64 off : {0, 1})
                this->run({rank, false}, uplo, 16384 / sizeof(T) / rank + off, 1, scalar<T>(0.7, -1.3), strides);
    for (const char uplo : {'U', 'L'}) this->run({2, true}, uplo, 8192 / sizeof(T) + 3, 0, one<T>, strides);
}

TYPED_TEST(RankUpdateTest, gives_the_same_bits_at_every_alignment)
{
    using T = TypeParam;
    for (const Family& f : families)
        for (const char uplo : {'U', 'L'})
            for (const i64 n : {1, 2, 3, 7, 16, 31, 53})
                for (const Place& place : places<T>()) {
                    if (place.shift % sizeof(T) != 0) continue;
                    const Place other{place.edge, place.shift * 3 % 16}, third{place.edge, place.shift * 5 % 32};
                    const Vectors<T> v(n, scalar<T>(0.7, -1.3));
                    const LaidOut<T> x(v.x, 1, other), y(v.y, 1, third);
                    const Triangle<T> a(uplo, n, n + static_cast<i64>(place.shift) % 3, f.packed, place);
                    Random random(static_cast<std::uint64_t>(n));
                    a.fill(random);
                    const Expectation<T> expected(f, a, v, false);
                    SCOPED_TRACE(problem<T>(f, uplo, n, a.lda, 1, 1) + " shift=" + std::to_string(place.shift));
                    call(f, uplo, n, v.alpha, x.data(), 1, y.data(), 1, a.data.data(), a.lda);
                    ASSERT_TRUE(expected.holds());
                }
}

TYPED_TEST(RankUpdateTest, touches_nothing_for_an_alpha_of_zero_or_no_columns)
{
    using T = TypeParam;
    const Guarded<T> none(0); // whoever reads it dies
    for (const Family& f : families)
        for (const char uplo : {'U', 'L'})
            for (const i64 inc : {1, -2}) {
                call(f, uplo, 9, zero<T>, none.data(), inc, none.data(), inc, none.data(), 9);
                call(f, uplo, 0, one<T>, none.data(), inc, none.data(), inc, none.data(), 1);
                call(f, uplo, -3, one<T>, none.data(), inc, none.data(), inc, none.data(), 1);
            }
}

// The only non-zero factors are those of column 4. NaN in the vectors reaches that column alone.
TYPED_TEST(RankUpdateTest, leaves_columns_alone_whose_factors_are_zero)
{
    using T = TypeParam;
    constexpr i64 n = 9;
    for (const Family& f : families)
        for (const char uplo : {'U', 'L'}) {
            SCOPED_TRACE(problem<T>(f, uplo, n, n, 1, 1));
            Vectors<T> v(n, one<T>);
            std::fill(v.x.begin(), v.x.end(), zero<T>), std::fill(v.y.begin(), v.y.end(), zero<T>);
            v.x[4] = scalar<T>(NAN, NAN);
            const Triangle<T> a(uplo, n, n, f.packed);
            Random random;
            a.fill(random);
            const std::vector<T> before(a.data.begin(), a.data.end());
            call(f, uplo, n, v.alpha, v.x.data(), 1, v.y.data(), 1, a.data.data(), n);
            a.each([&](i64 i, i64 j, const T& e) {
                const real_t<T> old = real_part(before[a.index(i, j)]), now = real_part(e);
                EXPECT_TRUE(j == 4 ? now != now : now == old) << i << ' ' << j;
                if constexpr (is_complex<T>) {
                    EXPECT_TRUE(i != j || e.im == 0) << i;
                }
            });
        }
}

TYPED_TEST(RankUpdateTest, lets_infinity_and_nan_in_alpha_and_in_the_vectors_reach_the_matrix)
{
    using T = TypeParam;
    constexpr i64 n = 7;
    for (const Family& f : families)
        for (const char uplo : {'U', 'L'}) {
            Vectors<T> v(n, scalar<T>(NAN, 0));
            const Triangle<T> a(uplo, n, n, f.packed);
            Random random;
            a.fill(random);
            call(f, uplo, n, v.alpha, v.x.data(), 1, v.y.data(), 1, a.data.data(), n);
            a.each([&](i64 i, i64 j, const T& e) { EXPECT_TRUE(real_part(e) != real_part(e)) << i << ' ' << j; });

            a.fill(random);
            v.x[2] = scalar<T>(INFINITY, 0);
            call(f, uplo, n, one<T>, v.x.data(), 1, v.y.data(), 1, a.data.data(), n);
            a.each([&](i64 i, i64 j, const T& e) {
                EXPECT_EQ(std::isfinite(real_part(e)), i != 2 && j != 2) << i << ' ' << j;
            });
        }
}

TYPED_TEST(RankUpdateTest, runs_strided_on_a_stack_of_128_KiB_without_memory)
{
    using T = TypeParam;
    static i64 allocations;
    const auto body = [](void*) -> void* {
        std::vector<T> a(300 * 300, one<T>), x(600, one<T>), y(600, one<T>);
        ProbeScope scope;
        for (const Family& f : families)
            for (const char uplo : {'U', 'L'})
                for (const i64 inc : {1, 2}) call(f, uplo, 300, one<T>, x.data(), inc, y.data(), inc, a.data(), 300);
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

// Shares of a triangle of order n: upper ones by the columns before them, lower ones by the columns behind them.
template <class T> class ShareTest : public testing::Test {
};
using RealTypes = testing::Types<float, double>;
TYPED_TEST_SUITE(ShareTest, RealTypes);

template <class T> struct Share {
    Family f;
    char uplo;
    i64 n, from, to; // columns from..to-1 of n

    // The share's vectors stand between unreadable pages: nothing is read that is not its own.
    void run(const Triangle<T>& a, const Vectors<T>& v, i64 incx, i64 incy) const
    {
        const bool upper = a.upper();
        const auto own = [&](const std::vector<T>& x) {
            return upper ? std::vector<T>(x.begin(), x.begin() + to) : std::vector<T>(x.begin() + from, x.end());
        };
        const LaidOut<T> x(own(v.x), incx), y(own(v.y), incy);
        const i64 first = upper ? from : n - to;
        T* const at = from < to ? &a(upper ? 0 : from, from) : nullptr;
        call(f, uplo, to - from, v.alpha, x.data(), incx, y.data(), incy, at, a.lda, &first);
    }
};

const std::string suffixes[] = {"_in_thread", "_in_thread_cnr"};

TYPED_TEST(ShareTest, is_the_plain_routine_when_it_starts_with_the_first_column)
{
    using T = TypeParam;
    for (const int rank : {1, 2})
        for (const std::string& suffix : suffixes)
            for (const char uplo : {'U', 'L'})
                for (const i64 inc : {1, -1, 2, -3})
                    for (const i64 n : {0, 1, 2, 17, 64, 70}) {
                        if (rank == 1 && suffix == "_in_thread_cnr") continue;
                        SCOPED_TRACE(problem<T>({rank, false, suffix}, uplo, n, n + 1, inc, 1));
                        const Vectors<T> v(n, T(0.7));
                        const Triangle<T> a(uplo, n, n + 1, false);
                        Random random(2);
                        a.fill(random);
                        const std::vector<T> before(a.data.begin(), a.data.end());
                        const LaidOut<T> x(v.x, inc), y(v.y, 1);
                        call({rank, false}, uplo, n, v.alpha, x.data(), inc, y.data(), 1, a.data.data(), n + 1);
                        const std::vector<T> plain(a.data.begin(), a.data.end());
                        std::copy(before.begin(), before.end(), a.data.begin());
                        const i64 first = 0;
                        call({rank, false, suffix}, uplo, n, v.alpha, x.data(), inc, y.data(), 1, a.data.data(), n + 1,
                             &first);
                        EXPECT_TRUE(std::equal(plain.begin(), plain.end(), a.data.begin(),
                                               [](T p, T q) { return same_bits(p, q); }));
                    }
}

TYPED_TEST(ShareTest, covers_its_own_columns_and_with_the_others_the_whole)
{
    using T = TypeParam;
    for (const int rank : {1, 2})
        for (const std::string& suffix : suffixes)
            for (const char uplo : {'U', 'L', 'u', 'l'})
                for (const i64 inc : {1, -1, 2, -3})
                    for (const i64 n : {5, 33, 70, 200}) {
                        if (rank == 1 && suffix == "_in_thread_cnr") continue;
                        const Family f{rank, false, suffix};
                        SCOPED_TRACE(problem<T>(f, uplo, n, n + 1, inc, -inc));
                        const Vectors<T> v(n, T(0.7));
                        const Triangle<T> a(uplo, n, n + 1, false);
                        Random random(2);
                        a.fill(random);
                        const Expectation<T> expected(f, a, v, false);
                        std::vector<T> so_far = expected.before;
                        const i64 cuts[] = {0, 1, n / 3, n / 3, n / 2 + 1, n};
                        for (const int member : {2, 0, 4, 1, 3}) { // in any order
                            const i64 from = cuts[member], to = cuts[member + 1];
                            Share<T>{f, uplo, n, from, to}.run(a, v, inc, -inc);
                            for (i64 j = from; j < to; ++j)
                                for (i64 i = a.top(j); i < a.bottom(j); ++i)
                                    so_far[a.index(i, j)] = expected.after[a.index(i, j)];
                            ASSERT_EQ(std::memcmp(so_far.data(), a.data.data(), so_far.size() * sizeof(T)), 0);
                        }
                        ASSERT_TRUE(expected.holds());
                    }
}

// Far down, where a share spans chunks of strided vectors and is as large as what is asked for ahead.
TYPED_TEST(ShareTest, covers_a_few_long_columns)
{
    using T = TypeParam;
    for (const int rank : {1, 2})
        for (const char uplo : {'U', 'L'})
            for (const i64 inc : {1, 2}) {
                const Family f{rank, false, "_in_thread"};
                const i64 n = 5003, own = 60;
                const i64 from = uplo == 'U' ? n - own : 0;
                const Vectors<T> v(n, T(0.7));
                const Matrix<T> columns(n, own, n);
                Random random(9);
                columns.fill(random);
                const std::vector<T> before(columns.data.begin(), columns.data.end());
                const LaidOut<T> x(v.x, inc), y(v.y, 1);
                const i64 first = n - own;
                call(f, uplo, own, v.alpha, x.data(), inc, y.data(), 1, columns.data.data(), n, &first);
                for (i64 j = 0; j < own; ++j)
                    for (i64 i = 0; i < n; ++i) {
                        const bool stored = uplo == 'U' ? i <= from + j : i >= j;
                        const T old = before[i + j * n];
                        ASSERT_PRED2(same_bits<T>, columns(i, j), stored ? updated(rank, v, i, from + j, old) : old)
                            << problem<T>(f, uplo, own, n, inc, 1) << " (" << i << ',' << j << ')';
                    }
            }
}

TYPED_TEST(ShareTest, touches_nothing_for_an_alpha_of_zero_or_no_columns)
{
    using T = TypeParam;
    const Guarded<T> none(0);
    const i64 first = 5;
    for (const int rank : {1, 2})
        for (const char uplo : {'U', 'L'})
            for (const i64 inc : {1, -2}) {
                const Family f{rank, false, "_in_thread"};
                call(f, uplo, 9, zero<T>, none.data(), inc, none.data(), inc, none.data(), 9, &first);
                call(f, uplo, 0, one<T>, none.data(), inc, none.data(), inc, none.data(), 1, &first);
            }
}

// Routines with a reproducible twin ask for the state, once, and only with something to do. Whatever the state, the
// bits are those of the one order, at any alignment, stride and leading dimension.
template <class T> void expect_one_order(const Family& plain)
{
    const i64 first = 0, *const share = plain.suffix.empty() ? nullptr : &first;
    Family twin = plain;
    twin.suffix += "_cnr";
    for (const char uplo : {'U', 'L'})
        for (const i64 n : {1, 2, 9, 40, 53})
            for (const i64 inc : {1, 2, -1})
                for (const i64 shift : {0, 1, 2, 3})
                    for (const int state : {0, 1, 2, -1}) { // -1: the twin itself
                        SCOPED_TRACE(problem<T>(plain, uplo, n, n + shift, inc, 1) + " state " + std::to_string(state));
                        const Place place{Edge::start, static_cast<std::size_t>(shift) * sizeof(T)};
                        const Vectors<T> v(n, T(0.7));
                        const Triangle<T> a(uplo, n, n + shift, plain.packed, place);
                        Random random(static_cast<std::uint64_t>(n));
                        a.fill(random);
                        const Expectation<T> expected(plain, a, v, false);
                        const LaidOut<T> x(v.x, inc, place), y(v.y, 1);
                        ProbeScope scope;
                        scope->reproducibility = max(state, 0);
                        call(state < 0 ? twin : plain, uplo, n, v.alpha, x.data(), inc, y.data(), 1, a.data.data(),
                             a.lda, share);
                        EXPECT_EQ(scope->reproducibility_asked, state < 0 ? 0 : 1);
                        EXPECT_EQ(scope->allocations, 0);
                        ASSERT_TRUE(expected.holds());
                        call(plain, uplo, n, T(0), x.data(), inc, y.data(), 1, a.data.data(), a.lda, share);
                        call(plain, uplo, 0, T(1), x.data(), inc, y.data(), 1, a.data.data(), a.lda, share);
                        EXPECT_EQ(scope->reproducibility_asked, state < 0 ? 0 : 1) << "nothing to do";
                    }
}

TEST(RankUpdateState, is_asked_where_there_is_a_twin_and_no_state_changes_the_order)
{
    expect_one_order<float>({2, false});
    expect_one_order<double>({2, false});
    expect_one_order<float>({2, true});
    expect_one_order<float>({2, false, "_in_thread"});
    expect_one_order<double>({2, false, "_in_thread"});
}

TEST(RankUpdateState, is_not_asked_where_there_is_no_twin)
{
    ProbeScope scope;
    scope->reproducibility = 0;
    const double x[] = {1, 2, 3};
    double a[9] = {};
    for (const Family& f : families)
        if (f.rank == 1 || f.packed) call<double>(f, 'U', 3, 1, x, 1, x, 1, a, 3);
    EXPECT_EQ(scope->reproducibility_asked, 0);
}

TEST(Line, of_syr_and_its_kin_repeats_it)
{
    for (const Family& f : families) {
        EXPECT_TRUE(repeats(problem<float>(f, 'U', 9, 11, 2, -1)));
        EXPECT_TRUE(repeats(problem<cpx<double>>(f, 'l', 9, 11, 2, -1)));
    }
}

} // namespace
} // namespace orv::test
