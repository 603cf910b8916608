// The merging step of divide and conquer: its argument checks and small cases alone, everything else as a part of the
// whole method, whose other steps are those of an independent library.
#include "frame/kernels/lapack_ps.h"
#include "tests/lapack_ps/fronts.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"

#include <algorithm>
#include <cmath>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <vector>

// Bad arguments as kernels tell of them: this program exports the operation before the core does.
namespace {
std::string reported_routine;
orv::i64 reported_argument;
} // namespace

extern "C" __attribute__((visibility("default"), used)) void orv_serv_xerbla(const char* routine,
                                                                             const orv::i64* position, int length)
{
    reported_routine.assign(routine, length), reported_argument = *position;
}

namespace orv::test {
namespace {

using namespace kernels::lapack_ps;

template <class R> Lasd3<R>* lasd3() { return kernel<Lasd3<R>>("lapack_ps", letter<R>, "lasd3"); }

// Other steps of the method, by their published interfaces.
template <class R> class Library {
public:
    static void* symbol(const char* name)
    {
        static void* const library = dlopen(ORV_REFERENCE_LAPACK, RTLD_NOW | RTLD_LOCAL);
        void* found = library == nullptr ? nullptr : dlsym(library, (letter<R> + std::string(name) + "_").c_str());
        if (found == nullptr) throw std::runtime_error(name);
        return found;
    }
    // B = U*diag(d)*VT of a small upper bidiagonal matrix, n by n + sqre.
    static void lasdq(i32 sqre, i32 n, R* d, R* e, R* vt, i32 ldvt, R* u, i32 ldu)
    {
        using F = void(const char*, const i32*, const i32*, const i32*, const i32*, const i32*, R*, R*, R*, const i32*,
                       R*, const i32*, R*, const i32*, R*, i32*, std::size_t);
        const i32 m = n + sqre, none = 0, one = 1;
        std::vector<R> work(4 * n + 4);
        R unused;
        i32 info;
        reinterpret_cast<F*>(symbol("lasdq"))("U", &sqre, &n, &m, &n, &none, d, e, vt, &ldvt, u, &ldu, &unused, &one,
                                              work.data(), &info, 1);
        EXPECT_EQ(info, 0);
    }
    // Merges, sorts and deflates; see Deflated.
    using Lasd2 = void(const i32* nl, const i32* nr, const i32* sqre, i32* k, R* d, R* z, const R* alpha, const R* beta,
                       R* u, const i32* ldu, R* vt, const i32* ldvt, R* dsigma, R* u2, const i32* ldu2, R* vt2,
                       const i32* ldvt2, i32* idxp, i32* idx, i32* idxc, i32* idxq, i32* coltyp, i32* info);
    // The permutation that sorts two sorted parts; the second one runs downward.
    static void lamrg(i32 n1, i32 n2, const R* d, i32* permutation)
    {
        using F = void(const i32*, const i32*, const R*, const i32*, const i32*, i32*);
        const i32 up = 1, down = -1;
        reinterpret_cast<F*>(symbol("lamrg"))(&n1, &n2, d, &up, &down, permutation);
    }
};

// What is seen of the merging steps of a run.
struct Seen {
    int merges = 0, deflated = 0, full = 0, single = 0, upper_only = 0;
};

// The singular value decomposition of upper bidiagonal matrices by divide and conquer.
template <class R> class DivideAndConquer {
public:
    // B is n by n + sqre: d on the diagonal, e above. d receives the singular values, in some order.
    DivideAndConquer(i64 n, i64 sqre, const std::vector<R>& d, const std::vector<R>& e)
        : n_(n), m_(n + sqre), d_(d), e_(e), u_(n_ * n_), vt_(m_ * m_)
    {
        e_.resize(n_);
        std::vector<i32> order(n);
        solve(0, n, sqre, u_.data(), vt_.data(), order.data());
    }

    // In the manner of LAPACK's own tests: all are below 30 for a method that is stable.
    double residual(const std::vector<R>& diagonal, const std::vector<R>& above) const
    {
        long double worst = 0, norm = 0;
        for (i64 i = 0; i < n_; ++i) {
            long double row = 0;
            for (i64 j = 0; j < m_; ++j) {
                long double b = i == j ? diagonal[i] : j == i + 1 ? above[i] : R(0);
                row += std::fabs(b);
                for (i64 k = 0; k < n_; ++k) b -= static_cast<long double>(u_[i + k * n_]) * d_[k] * vt_[k + j * m_];
                worst = std::max(worst, std::fabs(b));
            }
            norm = std::max(norm, row);
        }
        return scaled(worst / std::max(norm, static_cast<long double>(std::numeric_limits<R>::min())));
    }
    double off_orthogonal() const { return std::max(off_orthogonal(u_, n_), off_orthogonal(vt_, m_)); }

    Seen seen;

private:
    double scaled(long double x) const
    {
        return static_cast<double>(x / (n_ * static_cast<long double>(std::numeric_limits<R>::epsilon())));
    }
    double off_orthogonal(const std::vector<R>& q, i64 n) const
    {
        long double worst = 0;
        for (i64 a = 0; a < n; ++a)
            for (i64 b = a; b < n; ++b) {
                long double sum = a == b ? -1 : 0;
                for (i64 i = 0; i < n; ++i) sum += static_cast<long double>(q[i + a * n]) * q[i + b * n];
                worst = std::max(worst, std::fabs(sum));
            }
        return scaled(worst);
    }

    // Rows begin to begin + n of B; u and vt point to the part's own block of the two factors.
    void solve(i64 begin, i64 n, i64 sqre, R* u_block, R* vt_block, i32* order)
    {
        constexpr i64 small = 3;
        if (n <= small) {
            for (i64 i = 0; i < n; ++i) u_block[i + i * n_] = 1;
            for (i64 i = 0; i < n + sqre; ++i) vt_block[i + i * m_] = 1;
            Library<R>::lasdq(sqre, n, d_.data() + begin, e_.data() + begin, vt_block, m_, u_block, n_);
            std::iota(order, order + n, 1); // merging wants ascending order
            std::sort(order, order + n, [&](i32 a, i32 b) { return d_[begin + a - 1] < d_[begin + b - 1]; });
            return;
        }
        const i64 nl = n / 2, nr = n - nl - 1;
        const R alpha = d_[begin + nl], beta = e_[begin + nl];
        solve(begin, nl, 1, u_block, vt_block, order);
        const i64 next = nl + 1;
        solve(begin + next, nr, sqre, u_block + next + next * n_, vt_block + next + next * m_, order + next);
        merge(nl, nr, sqre, d_.data() + begin, alpha, beta, u_block, vt_block, order);
    }

    void merge(i32 nl, i32 nr, i32 sqre, R* values, R alpha, R beta, R* u_block, R* vt_block, i32* order)
    {
        const i32 n = nl + nr + 1, m = n + sqre, ldu = n_, ldvt = m_;
        values[nl] = 0;
        R norm = std::max(std::fabs(alpha), std::fabs(beta));
        for (i32 i = 0; i < n; ++i) norm = std::max(norm, std::fabs(values[i]));
        for (i32 i = 0; i < n; ++i) values[i] /= norm;
        alpha /= norm, beta /= norm;

        std::vector<R> z(m), dsigma(n), u2(n * n), vt2(m * m);
        std::vector<i32> idxp(n), idx(n), idxc(n), kinds(std::max(n, 4));
        i32 k, info;
        reinterpret_cast<typename Library<R>::Lasd2*>(Library<R>::symbol("lasd2"))(
            &nl, &nr, &sqre, &k, values, z.data(), &alpha, &beta, u_block, &ldu, vt_block, &ldvt, dsigma.data(),
            u2.data(), &n, vt2.data(), &m, idxp.data(), idx.data(), idxc.data(), order, kinds.data(), &info);
        ASSERT_EQ(info, 0);
        ++seen.merges, seen.deflated += k < n, seen.full += k == n, seen.single += k == 1,
            seen.upper_only += kinds[0] == 0;

        // The step itself, its work in guarded blocks.
        const Guarded<R> q(k * k), poles(k), weights(k);
        const Guarded<i64> where(n), counts(4);
        std::copy_n(dsigma.begin(), k, poles.begin()), std::copy_n(z.begin(), k, weights.begin());
        std::copy(idxc.begin(), idxc.end(), where.begin()), std::copy_n(kinds.begin(), 4, counts.begin());
        const i64 nl_ = nl, nr_ = nr, sqre_ = sqre, k_ = k, ldu_ = ldu, ldvt_ = ldvt, ldu2 = n, ldvt2 = m;
        i64 outcome = 77;
        lasd3<R>()(&nl_, &nr_, &sqre_, &k_, values, q.data(), &k_, poles.data(), u_block, &ldu_, u2.data(), &ldu2,
                   vt_block, &ldvt_, vt2.data(), &ldvt2, where.data(), counts.data(), weights.data(), &outcome);
        ASSERT_EQ(outcome, 0);
        EXPECT_GE(values[0], 0);
        EXPECT_TRUE(std::is_sorted(values, values + k));

        for (i32 i = 0; i < n; ++i) values[i] *= norm;
        Library<R>::lamrg(k, n - k, values, order);
    }

    i64 n_, m_;
    std::vector<R> d_, e_, u_, vt_;
};

template <class R> class Lasd3Of : public ::testing::Test {
};
using Reals = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Lasd3Of, Reals);

template <class R> std::string text(const char* kind, i64 n, i64 sqre)
{
    return std::string(1, letter<R>) + "lasd3 in a " + kind + " SVD n=" + std::to_string(n) +
           " sqre=" + std::to_string(sqre) + " seed=" + std::to_string(seed());
}

template <class R> Seen expect_decomposition(const char* kind, i64 sqre, const std::vector<R>& d, std::vector<R> e)
{
    const i64 n = static_cast<i64>(d.size());
    SCOPED_TRACE(text<R>(kind, n, sqre));
    if (sqre == 0) e.back() = 0;
    const DivideAndConquer<R> svd(n, sqre, d, e);
    EXPECT_LT(svd.residual(d, e), 30);
    EXPECT_LT(svd.off_orthogonal(), 30);
    return svd.seen;
}

TYPED_TEST(Lasd3Of, takes_its_part_in_a_whole_decomposition)
{
    using R = TypeParam;
    Random random;
    Seen seen;
    const auto add = [&](const Seen& more) {
        seen.merges += more.merges, seen.deflated += more.deflated, seen.full += more.full;
        seen.single += more.single, seen.upper_only += more.upper_only;
    };
    for (const i64 sqre : {0, 1})
        for (const i64 n : {4, 5, 7, 8, 12, 20, 33, 60}) {
            std::vector<R> d(n), e(n);
            random.fill(d), random.fill(e);
            add(expect_decomposition("random", sqre, d, e));
            for (i64 i = 0; i < n; ++i) d[i] = R(std::pow(10.0, -double(i) / 3)), e[i] = d[i] / 2;
            add(expect_decomposition("graded", sqre, d, e));
            std::fill(d.begin(), d.end(), R(1)), std::fill(e.begin(), e.end(), R(1));
            add(expect_decomposition("constant", sqre, d, e));
            std::fill(e.begin(), e.end(), std::numeric_limits<R>::epsilon() * 64);
            add(expect_decomposition("clustered", sqre, d, e));
            std::fill(e.begin(), e.end(), R(0));
            add(expect_decomposition("diagonal", sqre, d, e));
            for (i64 i = 0; i < n; ++i) d[i] = i % 3 == 0 ? R(0) : R(1), e[i] = i % 5 == 0 ? R(0) : R(0.5);
            add(expect_decomposition("singular", sqre, d, e));
            if (this->HasFailure()) return;
        }
    // All ways through were taken.
    EXPECT_GT(seen.deflated, 0);
    EXPECT_GT(seen.full, 0);
    EXPECT_GT(seen.single, 0);
    EXPECT_GT(seen.upper_only, 0);
}

// One root: d is |z|, u2's column and vt2's row go over, the column negated unless z is positive.
TYPED_TEST(Lasd3Of, copies_the_vectors_where_there_is_one_root)
{
    using R = TypeParam;
    for (const R weight : {R(0.5), R(-0.5), R(0)}) {
        const i64 nl = 4, nr = 5, sqre = 1, k = 1, n = nl + nr + 1, m = n + sqre, ldq = 1;
        const Guarded<R> u(n), u2(n), vt(m * m), vt2(m * m);
        Random random;
        random.fill(u2), random.fill(vt2);
        const Guarded<R> d(1), z(1);
        z[0] = weight;
        i64 info = 77;
        lasd3<R>()(&nl, &nr, &sqre, &k, d.data(), nullptr, &ldq, nullptr, u.data(), &n, u2.data(), &n, vt.data(), &m,
                   vt2.data(), &m, nullptr, std::vector<i64>{0, 0, 0, 0}.data(), z.data(), &info);
        EXPECT_EQ(info, 0);
        EXPECT_EQ(d[0], std::fabs(weight));
        for (i64 i = 0; i < n; ++i) EXPECT_EQ(u[i], weight > 0 ? u2[i] : -u2[i]);
        for (i64 j = 0; j < m; ++j) {
            EXPECT_EQ(vt[j * m], vt2[j * m]);
            EXPECT_TRUE(std::isnan(vt[1 + j * m])) << "another row";
        }
    }
}

// The kinds of columns choose the products: upper, lower, both.
TYPED_TEST(Lasd3Of, calls_the_public_routines_that_the_kinds_of_columns_ask_for)
{
    using R = TypeParam;
    struct Way {
        i64 k, kinds[3];
        std::vector<std::string> left, right;
    };
    const std::string product = "gemm N N";
    for (const Way& way : std::initializer_list<Way>{
             {4, {1, 1, 1}, {product, product, "copy", product}, {product, product, product}},
             {4, {2, 1, 0}, {product, "copy", product}, {product, product, product}},
             {4, {0, 2, 1}, {product, "copy", product}, {product, product, product}},
             {4, {0, 3, 0}, {"lacpy F", "copy", product}, {product, product, product}},
             {5, {2, 2, 0}, {product, "copy", product}, {product, product}}, // no row behind those of the lower part
             {2, {1, 0, 0}, {product}, {product}}}) {
        const i64 nl = 2, nr = 2, sqre = 0, n = 5, k = way.k;
        const Guarded<R> d(k), q(k * k), dsigma(k), u(n * k), u2(n * n), vt(n * n), vt2(n * n), z(k);
        Random random;
        random.fill(u2), random.fill(vt2), random.fill(z);
        for (i64 i = 0; i < k; ++i) dsigma[i] = R(i);
        const std::vector<i64> idxc{1, 2, 3, 4, 5}, ctot{way.kinds[0], way.kinds[1], way.kinds[2], n - k};
        i64 info = 77;
        FrontCalls fronts;
        lasd3<R>()(&nl, &nr, &sqre, &k, d.data(), q.data(), &k, dsigma.data(), u.data(), &n, u2.data(), &n, vt.data(),
                   &n, vt2.data(), &n, idxc.data(), ctot.data(), z.data(), &info);
        EXPECT_EQ(info, 0);

        std::vector<std::string> expected;
        const auto add = [&](i64 times, const std::string& call) {
            for (i64 i = 0; i < times; ++i) expected.push_back(letter<R> + call);
        };
        add(k, "lamc3"), add(1, "copy"), add(1, "nrm2"), add(1, "lascl G");
        add(k, k == 2 ? "lasd5" : "lamch Epsilon"); // of the roots
        for (const auto& vectors : {way.left, way.right}) {
            add(k, "nrm2");
            for (const std::string& call : vectors) add(1, call);
        }
        EXPECT_EQ(fronts.calls, expected) << k << ' ' << ctot[0] << ctot[1] << ctot[2];
    }
}

TYPED_TEST(Lasd3Of, hands_on_that_a_root_was_not_found)
{
    using R = TypeParam;
    const i64 nl = 2, nr = 2, sqre = 0, k = 4, n = 5;
    const R nan = std::numeric_limits<R>::quiet_NaN();
    std::vector<R> d(n, R(77)), q(k * k), dsigma{0, 1, 2, 3}, u(n * n), u2(n * n), vt(n * n), vt2(n * n),
        z{1, nan, 1, 1};
    const std::vector<i64> idxc{1, 2, 3, 4, 5}, ctot{1, 1, 1, 1};
    i64 info = 77;
    lasd3<R>()(&nl, &nr, &sqre, &k, d.data(), q.data(), &k, dsigma.data(), u.data(), &n, u2.data(), &n, vt.data(), &n,
               vt2.data(), &n, idxc.data(), ctot.data(), z.data(), &info);
    EXPECT_EQ(info, 1);
    EXPECT_EQ(d[1], R(77)) << "at once";
}

TYPED_TEST(Lasd3Of, reports_bad_arguments_and_writes_nothing_else)
{
    using R = TypeParam;
    struct Arguments {
        i64 bad, nl, nr, sqre, k, ldq, ldu, ldu2, ldvt, ldvt2;
    };
    for (const Arguments& a : std::initializer_list<Arguments>{{1, 0, 2, 0, 1, 9, 9, 9, 9, 9},
                                                               {2, 2, 0, 0, 1, 9, 9, 9, 9, 9},
                                                               {3, 2, 2, 2, 1, 9, 9, 9, 9, 9},
                                                               {3, 2, 2, -1, 1, 9, 9, 9, 9, 9},
                                                               {4, 2, 2, 0, 0, 9, 9, 9, 9, 9},
                                                               {4, 2, 2, 1, 6, 9, 9, 9, 9, 9},
                                                               {7, 2, 2, 0, 4, 3, 9, 9, 9, 9},
                                                               {10, 2, 2, 0, 4, 4, 4, 9, 9, 9},
                                                               {12, 2, 2, 0, 4, 4, 5, 4, 9, 9},
                                                               {14, 2, 2, 1, 4, 4, 5, 5, 5, 9},
                                                               {16, 2, 2, 1, 4, 4, 5, 5, 6, 5},
                                                               {1, 0, 0, 7, 0, 0, 0, 0, 0, 0}}) {
        i64 info = 77;
        reported_routine.clear();
        lasd3<R>()(&a.nl, &a.nr, &a.sqre, &a.k, nullptr, nullptr, &a.ldq, nullptr, nullptr, &a.ldu, nullptr, &a.ldu2,
                   nullptr, &a.ldvt, nullptr, &a.ldvt2, nullptr, nullptr, nullptr, &info);
        EXPECT_EQ(info, -a.bad);
        EXPECT_EQ(reported_routine, sizeof(R) == 4 ? "SLASD3" : "DLASD3");
        EXPECT_EQ(reported_argument, a.bad);
    }
}

} // namespace
} // namespace orv::test
