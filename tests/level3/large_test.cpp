// Large matrices, of random numbers: orders beyond the outermost blocks, and on both sides of where cuts of triangles
// change.
#include "frame/kernels/blas.h"
#include "tests/support/by_vector.h"
#include "tests/support/kernels.h"

#include <string>

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> std::string symbol(const char* name) { return std::string("x") + letter<T> + name; }

template <class T> class LargeMatrices : public testing::Test {
public:
    const T alpha = Random(4).value<T>(), beta = Random(5).value<T>();

    void triangular(char side, char uplo, char trans, i64 order, i64 others)
    {
        SCOPED_TRACE(std::string() + letter<T> + side + uplo + trans + " order " + std::to_string(order) + ", " +
                     std::to_string(others));
        const char diag = 'N';
        const bool left = side == 'L';
        const Half<T> a = triangle<T>(uplo, diag, order);
        const Matrix<T> b(left ? order : others, left ? others : order, 2);
        const auto v = WideVector::random(b.n);
        const auto multiplied = [&](const Matrix<T>& y) {
            return left ? a.times_triangle(trans, y.times(v)) : y.times(a.times_triangle(trans, v));
        };
        for (const bool solves : {false, true}) {
            Matrix<T> x = b;
            kernel<Trmm<T>>("blas", symbol<T>(solves ? "trsm" : "trmm"))(
                &side, &uplo, &trans, &diag, &b.m, &b.n, &alpha, a.data(), &a.ld, x.elements.data(), &b.ld);
            if (solves) expect_equal<T>(multiplied(x), b.times(v).times(wide(alpha)), order);
            else expect_equal<T>(x.times(v), multiplied(b).times(wide(alpha)), order);
        }
    }
    void symmetric(char side, char uplo, i64 order, i64 others)
    {
        SCOPED_TRACE(std::string() + letter<T> + side + uplo + " order " + std::to_string(order));
        const bool left = side == 'L';
        const Half<T> a(uplo, order, 1);
        const Matrix<T> b(left ? order : others, left ? others : order, 2), c(b.m, b.n, 3);
        Matrix<T> x = c;
        kernel<Symm<T>>("blas", symbol<T>("symm"))(&side, &uplo, &b.m, &b.n, &alpha, a.data(), &a.ld, b.data(), &b.ld,
                                                   &beta, x.elements.data(), &c.ld);
        const auto v = WideVector::random(b.n);
        const auto ab = left ? a.times_whole(b.times(v)) : b.times(a.times_whole(v));
        expect_equal<T>(x.times(v), ab.times(wide(alpha)).plus(c.times(v).times(wide(beta))), order);
    }
    void updates(char uplo, char trans, i64 n, i64 k)
    {
        SCOPED_TRACE(std::string() + letter<T> + uplo + trans + " n=" + std::to_string(n));
        const bool plain = trans == 'N';
        const Matrix<T> a(plain ? n : k, plain ? k : n, 1), b(a.m, a.n, 2);
        const Half<T> c(uplo, n, 3);
        const auto v = WideVector::random(n), old = c.times_whole(v).times(wide(beta));
        const char first = plain ? 'N' : 'T', second = plain ? 'T' : 'N';
        Half<T> x = c;
        kernel<Syrk<T>>("blas", symbol<T>("syrk"))(&uplo, &trans, &n, &k, &alpha, a.data(), &a.ld, &beta,
                                                   x.elements.data(), &c.ld);
        EXPECT_TRUE(x.leaves_the_rest(c));
        expect_equal<T>(x.times_whole(v), a.times(first, a.times(second, v)).times(wide(alpha)).plus(old), k);
        x = c;
        kernel<Syr2k<T>>("blas", symbol<T>("syr2k"))(&uplo, &trans, &n, &k, &alpha, a.data(), &a.ld, b.data(), &b.ld,
                                                     &beta, x.elements.data(), &c.ld);
        EXPECT_TRUE(x.leaves_the_rest(c));
        const auto both = a.times(first, b.times(second, v)).plus(b.times(first, a.times(second, v)));
        expect_equal<T>(x.times_whole(v), both.times(wide(alpha)).plus(old), 2 * k);
    }
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(LargeMatrices, Types);

TYPED_TEST(LargeMatrices, with_triangles_keep_to_the_bound)
{
    for (const char trans : {'N', 'T'}) {
        this->triangular('L', 'U', trans, 699, 1011);
        this->triangular('L', 'L', trans, 1003, 9);
        this->triangular('R', 'L', trans, 699, 525);
        for (const i64 order : {1999, 2000}) this->triangular('R', 'U', trans, order, 9); // other blocks of solves
    }
}

TYPED_TEST(LargeMatrices, that_are_symmetric_keep_to_the_bound)
{
    for (const char uplo : {'U', 'L'}) {
        this->symmetric('L', uplo, 1001, 9);
        this->symmetric('R', uplo, 999, 13);
    }
}

TYPED_TEST(LargeMatrices, that_are_updated_keep_to_the_bound)
{
    for (const i64 n : {600, 601, 800, 801, 999, 1000}) this->updates(n % 2 ? 'U' : 'L', n % 3 ? 'N' : 'T', n, 5);
    this->updates('L', 'T', 2001, 3);
    this->updates('U', 'N', 2049, 3);
    this->updates('L', 'N', 499, 600);
}

} // namespace
} // namespace orv::test
