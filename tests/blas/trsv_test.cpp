// Triangular solves in blocks: the kernels of the blocks, what is handed to the public product, the division.
#include "frame/kernels/blas.h"
#include "tests/blas/triangular.h"

#include <dlfcn.h>

namespace orv::test {
namespace {

using namespace kernels::blas;

// A call of a public matrix-vector product, its operands as places in the caller's.
template <class T> struct Recorded {
    char trans;
    i64 m, n;
    T alpha;
    const T* a;
    i64 lda;
    const T* x;
    i64 incx;
    T beta;
    T* y;
    i64 incy;
};
template <class T> std::vector<Recorded<T>> calls;

template <class T>
void record(const char* name, const char* trans, const i64* m, const i64* n, const T* alpha, const T* a, const i64* lda,
            const T* x, const i64* incx, const T* beta, T* y, const i64* incy)
{
    calls<T>.push_back({*trans, *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy});
    reinterpret_cast<Gemv<T>*>(dlsym(RTLD_NEXT, name))(trans, m, n, alpha, a, lda, x, incx, beta, y, incy);
}

} // namespace
} // namespace orv::test

// Found by the branch before the core's own.
#define RECORDED_GEMV(name, T)                                                                                         \
    extern "C" __attribute__((visibility("default"), used)) void name(                                                 \
        const char* trans, const orv::i64* m, const orv::i64* n, const T* alpha, const T* a, const orv::i64* lda,      \
        const T* x, const orv::i64* incx, const T* beta, T* y, const orv::i64* incy)                                   \
    {                                                                                                                  \
        orv::test::record(#name, trans, m, n, alpha, a, lda, x, incx, beta, y, incy);                                  \
    }
RECORDED_GEMV(orv_blas_sgemv, float)
RECORDED_GEMV(orv_blas_dgemv, double)
RECORDED_GEMV(orv_blas_cgemv, orv::cpx<float>)
RECORDED_GEMV(orv_blas_zgemv, orv::cpx<double>)

namespace orv::test {
namespace {

template <class T> std::string driver() { return std::string(letter<T> == 'd' ? "x" : "") + letter<T> + "trsv"; }

template <class T> class TrsvTest : public testing::Test {
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(TrsvTest, Types);

// Blocks of 100 columns: 0..3, 4..35, 36..67, 68..99. N subtracts what a block's solution adds to the unsolved rest, T
// what the solved rest adds to the next block.
TYPED_TEST(TrsvTest, hands_its_rectangles_to_the_public_product)
{
    using T = TypeParam;
    struct Cut {
        i64 from, to;
    };
    constexpr i64 n = 100;
    constexpr Cut blocks[] = {{0, 4}, {4, 36}, {36, 68}, {68, 100}};
    for (const bool upper : {false, true})
        for (const char trans : {'N', 'T', 'C'})
            for (const i64 incx : {1, -1, 2}) {
                const TriangularMatrix<T> a(Storage::full, upper, false, n, 0, 3);
                Strided<T> x(n, incx);
                Random random;
                x.fill(random);
                calls<T>.clear();
                call(kernel_address("blas", driver<T>()), a, trans, x.data(), incx);
                const bool up = upper == (trans == 'N'); // from the end to the start
                std::vector<Cut> order(std::begin(blocks), std::end(blocks));
                if (up) std::reverse(order.begin(), order.end());
                // A block at either end has a side without a rest.
                std::erase_if(order, [=](Cut c) { return upper ? c.from == 0 : c.to == n; });
                ASSERT_EQ(calls<T>.size(), 3u);
                for (std::size_t i = 0; i < 3; ++i) {
                    SCOPED_TRACE(std::string(1, upper ? 'U' : 'L') + trans + " call " + std::to_string(i));
                    const Recorded<T>& r = calls<T>[i];
                    const Cut own = order[i], rest = upper ? Cut{0, own.from} : Cut{own.to, n};
                    EXPECT_EQ(r.trans, trans == 'C' && !is_complex<T> ? 'T' : trans);
                    EXPECT_EQ(r.m, rest.to - rest.from);
                    EXPECT_EQ(r.n, own.to - own.from);
                    EXPECT_TRUE(r.alpha == -one<T>);
                    EXPECT_TRUE(r.beta == one<T>);
                    EXPECT_EQ(r.a, *a + rest.from + own.from * a.lda);
                    EXPECT_EQ(r.lda, a.lda);
                    EXPECT_EQ(r.incx, incx);
                    EXPECT_EQ(r.incy, incx);
                    const auto place = [&](Cut c) { return incx < 0 ? &x(c.to - 1) : &x(c.from); };
                    EXPECT_EQ(r.x, place(trans == 'N' ? own : rest));
                    EXPECT_EQ(r.y, place(trans == 'N' ? rest : own));
                }
            }
}

TYPED_TEST(TrsvTest, has_one_block_up_to_32_columns_and_a_second_from_33_on)
{
    using T = TypeParam;
    for (const i64 n : {1, 31, 32, 33, 64, 65}) {
        const TriangularMatrix<T> a(Storage::full, true, true, n, 0, 0);
        Strided<T> x(n, 1);
        Random random;
        x.fill(random);
        calls<T>.clear();
        call(kernel_address("blas", driver<T>()), a, 'N', x.data(), 1);
        EXPECT_EQ(calls<T>.size(), static_cast<std::size_t>((n - 1) / 32)) << n;
        if (n == 33) {
            EXPECT_EQ(calls<T>.at(0).m, 1);
        }
    }
}

// Every kernel by its name, whose letters say what it is to solve.
TYPED_TEST(TrsvTest, solves_blocks_by_kernels_that_are_named_after_their_options)
{
    using T = TypeParam;
    for (const char uplo : {'l', 'u'})
        for (const char trans : {'n', 't', 'c'})
            for (const char diag : {'n', 'u'}) {
                if (trans == 'c' && !is_complex<T>) continue;
                const std::string name = std::string(1, letter<T>) + "trsv_" + uplo + trans + diag;
                auto* const f = kernel<TrsvOfForm<T>>("blas", name);
                for (const i64 n : {0, 1, 2, 3, 4, 5, 7, 8, 31, 32})
                    for (const i64 incx : all_strides) {
                        SCOPED_TRACE(name + " n=" + std::to_string(n) + " incx=" + std::to_string(incx));
                        const TriangularMatrix<T> a(Storage::full, uplo == 'u', diag == 'u', n, 0, 1);
                        Strided<T> x(n, incx);
                        Random random;
                        x.fill(random);
                        Strided<T> expected(x, {});
                        call(kernel_address("blas", driver<T>()), a, static_cast<char>(trans & 0xdf), expected.data(),
                             incx);
                        f(&n, *a, &a.lda, x.data(), &incx);
                        ASSERT_EQ(x.bits(), expected.bits());
                    }
            }
}

// The quotient first, then its column subtracted from what is left, column after column.
template <class R> void expect_column_order()
{
    const std::string name = std::string(1, letter<R>) + "trsv_lnn";
    auto* const f = kernel<TrsvOfForm<R>>("blas", name);
    for (i64 n = 0; n <= 32; ++n)
        for (const i64 incx : all_strides) {
            const TriangularMatrix<R> a(Storage::full, false, false, n, 0, 2);
            Strided<R> x(n, incx);
            Random random;
            x.fill(random);
            std::vector<R> expected = values(x, n);
            for (i64 j = 0; j < n; ++j) {
                expected[j] = expected[j] / a.at(j, j);
                for (i64 i = j + 1; i < n; ++i) expected[i] = expected[i] - a.at(i, j) * expected[j];
            }
            f(&n, *a, &a.lda, x.data(), &incx);
            for (i64 i = 0; i < n; ++i) ASSERT_EQ(x(i), expected[i]) << "n=" << n << " element " << i;
        }
}
TEST(Strsv, subtracts_column_after_column) { expect_column_order<float>(); }
TEST(Dtrsv, subtracts_column_after_column) { expect_column_order<double>(); }

TYPED_TEST(TrsvTest, gives_infinity_or_nan_for_a_zero_on_the_diagonal)
{
    using T = TypeParam;
    for (const bool upper : {false, true})
        for (const char trans : {'N', 'T', 'C'})
            for (const i64 n : {1, 4, 32, 70}) {
                const TriangularMatrix<T> a(Storage::full, upper, false, n, 0, 0);
                const i64 zero_at = n / 2;
                a.at(zero_at, zero_at) = zero<T>;
                Strided<T> x(n, 1);
                Random random;
                x.fill(random);
                call(kernel_address("blas", driver<T>()), a, trans, x.data(), 1);
                const bool up = upper == (trans == 'N');
                for (i64 i = 0; i < n; ++i) {
                    if (up ? i > zero_at : i < zero_at) {
                        EXPECT_TRUE(std::isfinite(size_of(x(i)))) << i;
                    }
                    if (i == zero_at) {
                        EXPECT_FALSE(std::isfinite(size_of(x(i)))) << i;
                    }
                }
            }
    if constexpr (!is_complex<T>) {
        const T a = 0;
        T x[] = {2, -3, 0};
        const i64 n = 1, inc = 1;
        auto* const f = kernel<TrsvOfForm<T>>("blas", letter<T>, "trsv_lnn");
        for (T& e : x) f(&n, &a, &n, &e, &inc);
        EXPECT_EQ(x[0], std::numeric_limits<T>::infinity());
        EXPECT_EQ(x[1], -std::numeric_limits<T>::infinity());
        EXPECT_TRUE(std::isnan(x[2]));
    }
}

// Smith's quotient with its branch.
template <class R> cpx<R> smith(cpx<R> b, cpx<R> d)
{
    if (std::fabs(d.re) >= std::fabs(d.im)) {
        const R r = d.im / d.re, t = d.re + d.im * r;
        return {(b.re + b.im * r) / t, (b.im - b.re * r) / t};
    }
    const R r = d.re / d.im, t = d.re * r + d.im;
    return {(b.re * r + b.im) / t, (b.im * r - b.re) / t};
}

template <class R> void expect_smith()
{
    using T = cpx<R>;
    Random random;
    const R huge = std::numeric_limits<R>::max() / 4, tiny = std::numeric_limits<R>::min() * 4;
    const auto quotient = [](T b, T d) {
        const i64 n = 1, inc = 1;
        kernel<Trmv<T>>("blas", driver<T>())("L", "N", "N", &n, &d, &n, &b, &inc);
        return b;
    };
    for (int i = 0; i < 1000; ++i)
        for (const R b_scale : {R(1), huge, tiny})
            for (const R d_scale : {R(1), huge, tiny}) {
                const T b = b_scale * random.value<T>(), d = d_scale * random.value<T>();
                const T q = quotient(b, d), s = smith(b, d);
                if (!std::isfinite(size_of(s))) continue;
                EXPECT_TRUE(q == s) << b.re << ' ' << b.im << " / " << d.re << ' ' << d.im;
            }
    EXPECT_TRUE((quotient({huge, huge}, {huge, huge}) == T{1, 0}));
    EXPECT_TRUE((quotient({tiny, 0}, {tiny, tiny}) == T{R(0.5), R(-0.5)}));
    EXPECT_TRUE((quotient({3, 4}, {0, 2}) == T{2, R(-1.5)}));
    EXPECT_TRUE((quotient({3, 4}, {-2, 0}) == T{R(-1.5), -2}));
}
TEST(Ctrsv, divides_as_smith) { expect_smith<float>(); }
TEST(Ztrsv, divides_as_smith) { expect_smith<double>(); }

} // namespace
} // namespace orv::test
