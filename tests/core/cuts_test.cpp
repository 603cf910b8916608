// Every way in which a matrix is cut among threads, at all sizes of the groups of a symmetric update and at many
// others. Small problems are shared as if they were large. Operands are small whole numbers, so that results are exact
// and what one thread computes undivided is what any other cut has to give, to the element.
#include "core/team/eagerness.h"
#include "tests/core/routines.h"
#include "tests/core/teams.h"
#include "tests/support/sanitized.h"
#include "tests/support/whole.h"

#include <algorithm>

using namespace orv;
using namespace orv::test;

namespace {

// An instrumented program takes fewer.
const i64 draws = sanitized() ? 5 : 40;

template <class T> class Cuts : public testing::Test {
public:
    ~Cuts() override { orv_team_set_eagerness(1); }

protected:
    using R = real_t<T>;

    std::vector<T> wholes(i64 count)
    {
        std::vector<T> all(static_cast<std::size_t>(count));
        for (T& e : all) e = whole<T>(random_);
        return all;
    }
    char one_of(const char* letters) { return letters[random_.integer(0, static_cast<i64>(std::strlen(letters)) - 1)]; }
    i64 size(i64 least = 64, i64 most = 400) { return random_.integer(least, most); }
    i64 stride() { return one_of("aab") == 'a' ? 1 : -2; }

    // call(elements) by several threads leaves what it leaves on one alone, to which nothing is worth a cut.
    template <class Call> void expect_the_same(const std::string& text, const std::vector<T>& start, const Call& call)
    {
        const int threads = static_cast<int>(random_.integer(2, 8));
        SCOPED_TRACE(text + ' ' + letter<T> + " on " + std::to_string(threads) + " threads");
        orv_team_set_eagerness(1);
        const auto alone = on_threads<T>(1, false, start, call);
        orv_team_set_eagerness(1e9);
        const auto shared = on_threads<T>(threads, true, start, call);
        const auto first = std::ranges::mismatch(alone, shared).in1 - alone.begin();
        EXPECT_EQ(static_cast<std::size_t>(first), alone.size()) << "the first element that differs";
    }

    // By one matrix and by two, of a symmetric or a Hermitian one.
    void update(i64 n)
    {
        constexpr bool complex = is_complex<T>;
        const i64 k = random_.integer(1, 3), ldc = n + random_.integer(0, 2);
        const char uplo = one_of("UL"), trans = one_of("NT");
        const i64 lda = (trans == 'N' ? n : k) + 1;
        const auto a = wholes(lda * (trans == 'N' ? k : n)), b = wholes(lda * (trans == 'N' ? k : n)),
                   c = wholes(ldc * n);
        const T alpha = element<T>::make(2), beta = element<T>::make(-1);
        const std::string text = std::string(1, uplo) + trans + " n=" + std::to_string(n) + " k=" + std::to_string(k);
        const bool hermitian = complex && one_of("SH") == 'H';
        if (!hermitian) {
            expect_the_same("syrk " + text, c,
                            [&](T* to) { return syrk<T>(uplo, trans, n, k, alpha, a.data(), lda, beta, to, ldc); });
            expect_the_same("syr2k " + text, c, [&](T* to) {
                return syr2k<T>(uplo, trans, n, k, alpha, a.data(), lda, b.data(), lda, beta, to, ldc);
            });
        } else if constexpr (complex) {
            const char turned = trans == 'N' ? 'N' : 'C';
            expect_the_same("herk " + text, c,
                            [&](T* to) { return herk<T>(uplo, turned, n, k, R(2), a.data(), lda, R(-1), to, ldc); });
            expect_the_same("her2k " + text, c, [&](T* to) {
                return her2k<T>(uplo, turned, n, k, alpha, a.data(), lda, b.data(), lda, R(-1), to, ldc);
            });
        }
    }

    Random random_;
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(Cuts, Types);

// Groups are 64 to 192 rows high by their order, and the last of them has what is left: 1, 2, ... rows.
TYPED_TEST(Cuts, symmetric_updates_of_every_order_have_all_their_elements)
{
    for (i64 n = 65; n <= 600 && !this->HasFailure(); n += sanitized() ? 16 : 1) this->update(n);
}

TYPED_TEST(Cuts, products_have_all_their_elements)
{
    using T = TypeParam;
    const T alpha = element<T>::make(3), beta = element<T>::make(-2);
    for (i64 i = 0; i < draws && !this->HasFailure(); ++i) {
        const i64 m = this->size(), n = this->size(), k = this->size(1, 20), ld = 401;
        const char ta = this->one_of("NTC"), tb = this->one_of("NTC"), side = this->one_of("LR"),
                   uplo = this->one_of("UL"), diag = this->one_of("NU");
        const auto a = this->wholes(ld * ld), b = this->wholes(ld * ld), c = this->wholes(ld * n);
        const std::string text = std::string() + ' ' + ta + tb + side + uplo + diag + " m=" + std::to_string(m) +
                                 " n=" + std::to_string(n) + " k=" + std::to_string(k);
        const auto general = [&](const std::string& name, auto* routine, const auto* left) {
            this->expect_the_same(name + text, c, [&](T* to) {
                return routine(ta, tb, m, n, k, alpha, left, ld, b.data(), ld, beta, to, ld);
            });
        };
        const auto symmetric = [&](const std::string& name, auto* routine) {
            this->expect_the_same(name + text, c, [&](T* to) {
                return routine(side, uplo, m, n, alpha, a.data(), ld, b.data(), ld, beta, to, ld);
            });
        };
        general("gemm", gemm<T>, a.data());
        symmetric("symm", symm<T>);
        if constexpr (is_complex<T>) {
            general("gemm3m", gemm3m<T>, a.data());
            general("mixed", mixed<T>, reinterpret_cast<const real_t<T>*>(a.data()));
            symmetric("hemm", hemm<T>);
        }
        this->expect_the_same("trmm" + text, c,
                              [&](T* to) { return trmm<T>(side, uplo, ta, diag, m, n, alpha, a.data(), ld, to, ld); });
        // A solve of whole numbers stays whole where the triangle is the identity, but for one column or row.
        std::vector<T> triangle(a.size(), zero<T>);
        const i64 order = side == 'L' ? m : n, column = uplo == 'U' ? order - 1 : 0;
        for (i64 j = 0; j < order; ++j) {
            triangle[static_cast<std::size_t>(j * (ld + 1))] = one<T>;
            if (j != column) triangle[static_cast<std::size_t>(j + column * ld)] = this->wholes(1)[0];
        }
        this->expect_the_same("trsm" + text, c, [&](T* to) {
            return trsm<T>(side, uplo, ta, diag, m, n, alpha, triangle.data(), ld, to, ld);
        });
    }
}

TYPED_TEST(Cuts, matrices_and_vectors_have_all_their_elements)
{
    using T = TypeParam;
    using R = real_t<T>;
    const T alpha = element<T>::make(3), beta = element<T>::make(-2);
    for (i64 i = 0; i < draws && !this->HasFailure(); ++i) {
        const i64 m = this->size(128), n = this->size(256), ld = 401, incx = this->stride(), incy = this->stride();
        const char trans = this->one_of("NTC"), uplo = this->one_of("UL");
        const auto a = this->wholes(ld * n), x = this->wholes(2 * ld), y = this->wholes(2 * ld);
        const std::string text = std::string() + ' ' + trans + uplo + " m=" + std::to_string(m) +
                                 " n=" + std::to_string(n) + " incx=" + std::to_string(incx) +
                                 " incy=" + std::to_string(incy);
        this->expect_the_same("gemv" + text, y, [&](T* to) {
            return gemv<T>(trans, m, n, alpha, a.data(), ld, x.data(), incx, beta, to, incy);
        });
        this->expect_the_same("ger" + text, a,
                              [&](T* to) { return geru<T>(m, n, alpha, x.data(), incx, y.data(), incy, to, ld); });
        this->expect_the_same("symv" + text, y, [&](T* to) {
            return hemv<T>(uplo, n, alpha, a.data(), ld, x.data(), incx, beta, to, incy);
        });
        if constexpr (!is_complex<T>) { // Hermitian ones are not shared
            this->expect_the_same("syr" + text, a,
                                  [&](T* to) { return her<T>(uplo, n, R(3), x.data(), incx, to, ld); });
            this->expect_the_same("syr2" + text, a, [&](T* to) {
                return her2<T>(uplo, n, alpha, x.data(), incx, y.data(), incy, to, ld);
            });
        }
    }
}

// Above 32 KiB the kernel asks for a team. Squares in place take one of three threads and more.
TYPED_TEST(Cuts, transpositions_have_all_their_elements)
{
    using T = TypeParam;
    const T alpha = element<T>::make(2);
    for (i64 i = 0; i < draws && !this->HasFailure(); ++i) {
        const i64 rows = this->size(100, 300), cols = this->size(100, 300), lda = 301, ldb = 302;
        const char op = this->one_of("NTRC"), ordering = this->one_of("RC");
        const auto a = this->wholes(lda * lda), b = this->wholes(ldb * ldb);
        const std::string text =
            std::string() + ' ' + ordering + op + " rows=" + std::to_string(rows) + " cols=" + std::to_string(cols);
        for (const T factor : {alpha, one<T>})
            this->expect_the_same("omatcopy" + text, b, [&](T* to) {
                return omatcopy<T>(ordering, op, rows, cols, factor, a.data(), lda, to, ldb);
            });
        for (const int threads : {3, 5, 8}) {
            SCOPED_TRACE("imatcopy" + text + " on " + std::to_string(threads));
            const auto turn = [&](T* to) { return imatcopy<T>('R', 'T', rows, rows, one<T>, to, ldb, ldb); };
            orv_team_set_eagerness(1);
            const auto alone = on_threads<T>(1, false, b, turn);
            orv_team_set_eagerness(1e9);
            EXPECT_EQ(on_threads<T>(threads, true, b, turn), alone);
        }
    }
}

} // namespace
