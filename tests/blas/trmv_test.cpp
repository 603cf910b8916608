// Triangular products: the kernel of the blocks, and pieces for the members of a team.
#include "frame/kernels/blas.h"
#include "tests/blas/triangular.h"

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> class TrmvTest : public testing::Test {
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(TrmvTest, Types);

TYPED_TEST(TrmvTest, has_a_kernel_for_its_blocks_that_takes_any_triangle)
{
    using T = TypeParam;
    TriangularSweep<T> sweep(Task::multiply, std::string(1, letter<T>) + "trmv_in");
    for (const i64 n : {0, 1, 3, 4, 17, 63, 64, 65, 130}) sweep.run(Storage::full, n, 0, 1, all_strides);
}

template <class T> void in_thread(const TriangularMatrix<T>& a, char trans, T* x, i64 incx, i64 count, i64 first_column)
{
    static auto* const f = kernel<TrmvInThread<T>>("blas", "x", letter<T>, "trmv_in_thread");
    const char uplo = a.upper ? 'U' : 'L', diag = a.unit ? 'U' : 'N';
    f(&uplo, &trans, &diag, &a.n, *a, &a.lda, x, &incx, &count, &first_column);
}

TYPED_TEST(TrmvTest, is_the_whole_product_for_a_member_with_all_columns)
{
    using T = TypeParam;
    for (const bool upper : {false, true})
        for (const char trans : {'N', 'T', 'C'})
            for (const i64 incx : all_strides)
                for (const i64 n : {0, 1, 64, 65, 200}) {
                    const TriangularMatrix<T> a(Storage::full, upper, false, n, 0, 1);
                    Strided<T> x(n, incx);
                    Random random;
                    x.fill(random);
                    Strided<T> expected(x, {});
                    call(kernel_address("blas", std::string("x") + letter<T> + "trmv"), a, trans, expected.data(),
                         incx);
                    in_thread(a, trans, x.data(), incx, n, 0);
                    ASSERT_EQ(x.bits(), expected.bits()) << upper << trans << n << ' ' << incx;
                }
}

// Its own triangle times its own elements, all others NaN and left alone.
TYPED_TEST(TrmvTest, keeps_to_the_columns_of_its_member)
{
    using T = TypeParam;
    constexpr i64 n = 150;
    for (const bool upper : {false, true})
        for (const char trans : {'N', 'T', 'C'})
            for (const i64 incx : all_strides)
                for (const auto& [count, from] : {std::pair<i64, i64>{0, 40}, {1, 149}, {70, 30}, {100, 50}}) {
                    const TriangularMatrix<T> a(Storage::full, upper, false, n, 0, 1);
                    const TriangularMatrix<T> own(Storage::full, upper, false, count, 0, 0);
                    own.each([&](i64 i, i64 j) { own.at(i, j) = a.at(from + i, from + j); });
                    Strided<T> x(n, incx), expected(count, 1);
                    Random random;
                    for (i64 i = 0; i < count; ++i) expected(i) = x(from + i) = random.value<T>();
                    Strided<T> other(x, {});
                    call(kernel_address("blas", std::string("x") + letter<T> + "trmv"), own, trans, expected.data(), 1);
                    in_thread(a, trans, x.data(), incx, count, from);
                    for (i64 i = 0; i < count; ++i) {
                        ASSERT_NEAR(static_cast<double>(size_of(x(from + i) - expected(i))), 0,
                                    static_cast<double>(gamma_n<T>(2 * count + 20) * count))
                            << i;
                        other(from + i) = x(from + i);
                    }
                    ASSERT_EQ(x.bits(), other.bits());
                }
}

} // namespace
} // namespace orv::test
