// Singular values and vectors of a merged problem of a divide and conquer method: the roots of the secular equation of
// order k, the singular vectors of the matrix whose singular values they are, and their products with the vectors of
// the two parts, nl and nr rows with one row between them; n = nl + nr + 1 and m = n + sqre.
//
//   d        k      receives the roots
//   q        k by k   work
//   dsigma   k      the poles, ascending from 0; what addition would round away is taken off
//   u        n by k, vt  k by m     receive the vectors, and differences and sums of poles and roots on the way
//   u2       n by k, vt2 k by m     the vectors of the two parts, columns (rows) sorted by which of the parts they are
//                    non-zero in: ctot[0] the upper, ctot[1] the lower, ctot[2] both, behind the first one; row ctot[0]
//                    of vt2 is overwritten
//   idxc     k      where a pole's vector lies in that order, from 1; the first pole's is first
//   z        k      the modification; receives the one that has the roots exactly
//   info     0; -i if argument i is bad, which orv_serv_xerbla is told; or what lasd4 told of a root
//
// Published sources: M. Gu and S. Eisenstat, A divide-and-conquer algorithm for the bidiagonal SVD, SIAM J. Matrix
// Anal. Appl. 16, 1995: z is computed anew from the roots, and so the vectors are orthogonal however close roots are.
#include "frame/kernels/lapack_ps.h"
#include "frame/serv.h"
#include "lapack_ps/front_ends.h"
#include "lapack_ps/scalar.h"

namespace orv::lapack {
namespace {

template <class R> constexpr auto lasd4 = kernels::lapack_ps::LAPACK_PS(dlasd4);
template <> constexpr auto lasd4<float> = kernels::lapack_ps::LAPACK_PS(slasd4);

float sign(float size, float of) { return orv_serv_s_sign(&size, &of); }
double sign(double size, double of) { return orv_serv_d_sign(&size, &of); }

// A matrix by its first element and the distance of columns.
template <class R> struct Matrix {
    R* a;
    i64 ld;
    R& operator()(i64 i, i64 j) const { return a[i + j * ld]; }
    R* from(i64 i, i64 j) const { return a + i + j * ld; }
};

struct Sizes {
    i64 nl, nr, sqre, k;
    i64 n() const { return nl + nr + 1; }
    i64 m() const { return n() + sqre; }
};

i64 bad_argument(const Sizes& s, i64 ldq, i64 ldu, i64 ldu2, i64 ldvt, i64 ldvt2)
{
    if (s.nl < 1) return 1;
    if (s.nr < 1) return 2;
    if (s.sqre != 0 && s.sqre != 1) return 3;
    if (s.k < 1 || s.k > s.n()) return 4;
    if (ldq < s.k) return 7;
    if (ldu < s.n()) return 10;
    if (ldu2 < s.n()) return 12;
    if (ldvt < s.m()) return 14;
    if (ldvt2 < s.m()) return 16;
    return 0;
}

template <class R> class Merge {
public:
    Merge(Sizes sizes, R* d, Matrix<R> q, R* dsigma, Matrix<R> u, Matrix<const R> u2, Matrix<R> vt, Matrix<R> vt2,
          const i64* idxc, const i64* ctot, R* z)
        : nl_(sizes.nl), nr_(sizes.nr), n_(sizes.n()), m_(sizes.m()), k_(sizes.k), d_(d), q_(q), dsigma_(dsigma), u_(u),
          u2_(u2), vt_(vt), vt2_(vt2), idxc_(idxc), upper_(ctot[0]), lower_(ctot[1]), both_(ctot[2]), z_(z)
    {
    }

    i64 run()
    {
        if (k_ == 1) {
            single_root();
            return 0;
        }
        if (const i64 info = roots()) return info;
        fit_modification();
        left_vectors();
        right_vectors();
        return 0;
    }

private:
    void single_root()
    {
        d_[0] = magnitude(z_[0]);
        front::copy(m_, vt2_.a, vt2_.ld, vt_.a, vt_.ld);
        if (z_[0] > 0) front::copy(n_, u2_.a, 1, u_.a, 1);
        else
            for (i64 i = 0; i < n_; ++i) u_(i, 0) = -u2_(i, 0);
    }

    // Column j of u and of vt receives the differences and the sums of all poles and root j.
    i64 roots()
    {
        for (i64 i = 0; i < k_; ++i) dsigma_[i] = front::lamc3(dsigma_[i], dsigma_[i]) - dsigma_[i];
        front::copy(k_, z_, 1, q_.a, 1);
        R rho = front::nrm2(k_, z_, 1);
        i64 info;
        front::lascl("G", 0, 0, rho, R(1), k_, 1, z_, k_, &info); // a norm of NaN is left to lasd4
        rho *= rho;
        info = 0;
        for (i64 j = 0; j < k_ && info == 0; ++j) {
            const i64 number = j + 1;
            lasd4<R>(&k_, &number, dsigma_, z_, u_.from(0, j), &rho, d_ + j, vt_.from(0, j), &info);
        }
        return info;
    }

    // z[i]^2 is the product of all root[j]^2 - pole[i]^2 over that of pole[p]^2 - pole[i]^2, all p but i: each root
    // with a pole that it lies beside. The signs are those of z as it came.
    void fit_modification()
    {
        for (i64 i = 0; i < k_; ++i) z_[i] = u_(i, k_ - 1) * vt_(i, k_ - 1);
        for (i64 j = 0; j < k_ - 1; ++j) {
            const auto factor = [&](i64 i, i64 pole) {
                return u_(i, j) * vt_(i, j) / (dsigma_[i] - dsigma_[pole]) / (dsigma_[i] + dsigma_[pole]);
            };
            for (i64 i = 0; i <= j; ++i) z_[i] *= factor(i, j + 1);
            for (i64 i = j + 1; i < k_; ++i) z_[i] *= factor(i, j);
        }
        for (i64 i = 0; i < k_; ++i) z_[i] = sign(square_root(magnitude(z_[i])), q_(i, 0));
    }

    // The left vectors of the small problem go to q, those of the right stay in vt, both before the products.
    void left_vectors()
    {
        for (i64 i = 0; i < k_; ++i) {
            for (i64 j = 0; j < k_; ++j) {
                vt_(j, i) = z_[j] / u_(j, i) / vt_(j, i);
                u_(j, i) = dsigma_[j] * vt_(j, i);
            }
            u_(0, i) = -1; // the first pole is 0, and this is no product of it
            const R norm = front::nrm2(k_, u_.from(0, i), 1);
            q_(0, i) = u_(0, i) / norm;
            for (i64 j = 1; j < k_; ++j) q_(j, i) = u_(idxc_[j] - 1, i) / norm;
        }
        if (k_ == 2) {
            product(n_, k_, k_, u2_.a, u2_.ld, q_.a, q_.ld, 0, u_.a, u_.ld);
            return;
        }
        // Upper rows: columns of the upper part and of both; then the row between; then the lower rows.
        const i64 in_both = 1 + upper_ + lower_, in_lower = 1 + upper_;
        if (upper_ > 0) {
            product(nl_, k_, upper_, u2_.from(0, 1), u2_.ld, q_.from(1, 0), q_.ld, 0, u_.a, u_.ld);
            if (both_ > 0)
                product(nl_, k_, both_, u2_.from(0, in_both), u2_.ld, q_.from(in_both, 0), q_.ld, 1, u_.a, u_.ld);
        } else if (both_ > 0)
            product(nl_, k_, both_, u2_.from(0, in_both), u2_.ld, q_.from(in_both, 0), q_.ld, 0, u_.a, u_.ld);
        else front::lacpy("F", nl_, k_, u2_.a, u2_.ld, u_.a, u_.ld);
        front::copy(k_, q_.a, q_.ld, u_.from(nl_, 0), u_.ld);
        product(nr_, k_, lower_ + both_, u2_.from(nl_ + 1, in_lower), u2_.ld, q_.from(in_lower, 0), q_.ld, 0,
                u_.from(nl_ + 1, 0), u_.ld);
    }

    void right_vectors()
    {
        for (i64 i = 0; i < k_; ++i) {
            const R norm = front::nrm2(k_, vt_.from(0, i), 1);
            q_(i, 0) = vt_(0, i) / norm;
            for (i64 j = 1; j < k_; ++j) q_(i, j) = vt_(idxc_[j] - 1, i) / norm;
        }
        if (k_ == 2) {
            product(k_, m_, k_, q_.a, q_.ld, vt2_.a, vt2_.ld, 0, vt_.a, vt_.ld);
            return;
        }
        // Left columns: the first row of vt2 and those of the upper part, then those of both.
        const i64 left = nl_ + 1, in_both = 1 + upper_ + lower_;
        product(k_, left, 1 + upper_, q_.a, q_.ld, vt2_.a, vt2_.ld, 0, vt_.a, vt_.ld);
        if (in_both < vt2_.ld)
            product(k_, left, both_, q_.from(0, in_both), q_.ld, vt2_.from(in_both, 0), vt2_.ld, 1, vt_.a, vt_.ld);

        // Right columns: the first row moves to before those of the lower part.
        if (upper_ > 0) {
            for (i64 i = 0; i < k_; ++i) q_(i, upper_) = q_(i, 0);
            for (i64 j = left; j < m_; ++j) vt2_(upper_, j) = vt2_(0, j);
        }
        product(k_, m_ - left, 1 + lower_ + both_, q_.from(0, upper_), q_.ld, vt2_.from(upper_, left), vt2_.ld, 0,
                vt_.from(0, left), vt_.ld);
    }

    static void product(i64 rows, i64 columns, i64 depth, const R* a, i64 lda, const R* b, i64 ldb, int beta, R* c,
                        i64 ldc)
    {
        front::gemm("N", "N", rows, columns, depth, R(1), a, lda, b, ldb, R(beta), c, ldc);
    }

    i64 nl_, nr_, n_, m_, k_;
    R* d_;
    Matrix<R> q_;
    R* dsigma_;
    Matrix<R> u_;
    Matrix<const R> u2_;
    Matrix<R> vt_, vt2_;
    const i64* idxc_;
    i64 upper_, lower_, both_; // columns of the three kinds
    R* z_;
};

} // namespace
} // namespace orv::lapack

using namespace orv;

#define LASD3(name, NAME, T)                                                                                           \
    ORV_EXPORT void LAPACK_PS(name)(const i64* nl, const i64* nr, const i64* sqre, const i64* k, T* d, T* q,           \
                                    const i64* ldq, T* dsigma, T* u, const i64* ldu, const T* u2, const i64* ldu2,     \
                                    T* vt, const i64* ldvt, T* vt2, const i64* ldvt2, const i64* idxc,                 \
                                    const i64* ctot, T* z, i64* info)                                                  \
    {                                                                                                                  \
        const lapack::Sizes sizes{*nl, *nr, *sqre, *k};                                                                \
        const i64 bad = lapack::bad_argument(sizes, *ldq, *ldu, *ldu2, *ldvt, *ldvt2);                                 \
        *info = -bad;                                                                                                  \
        if (bad != 0) orv_serv_xerbla(NAME, &bad, 6);                                                                  \
        else                                                                                                           \
            *info = lapack::Merge<T>(sizes, d, {q, *ldq}, dsigma, {u, *ldu}, {u2, *ldu2}, {vt, *ldvt}, {vt2, *ldvt2},  \
                                     idxc, ctot, z)                                                                    \
                        .run();                                                                                        \
    }

LASD3(slasd3, "SLASD3", float)
LASD3(dlasd3, "DLASD3", double)
