// Cholesky factorisation by halves: the leading half, by it the part beside the diagonal, with that the trailing half
// brought up to date, and then factored in its turn. Halves small enough are one call of a kernel; all else is trsm and
// syrk, so that large matrices take their time there.
#include "core/branch/kernel.h"
#include "core/serv/status.h"
#include "frame/kernels/lapack_ps.h"
#include "frame/lapack_arguments.h"

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include "orv/blas.h"
#include "orv/lapack.h"

using namespace orv;
using namespace orv::core;

namespace {

// A kernel for one triangle, and the largest order it is called for: up to there it computes in registers all the way.
template <class T> struct Small {
    Kernel<kernels::lapack_ps::Potrf<T>> kernel;
    i64 largest;
};

// What the steps are for each type: X*L^H = B (side R) or U^H*X = B (side L), and C := C - A*A^H or C - A^H*A.
template <class T> struct Steps;
#define STEPS(t, T, syrk, largest_lower, largest_upper)                                                                \
    template <> struct Steps<T> {                                                                                      \
        static inline constinit Small<T> lower{Kernel(kernels::lapack_ps::t##potrf_l_small()), largest_lower},         \
            upper{Kernel(kernels::lapack_ps::t##potrf_u_small()), largest_upper};                                      \
        static orv_status solve(bool is_upper, i64 m, i64 n, const T* a, i64 lda, T* b, i64 ldb)                       \
        {                                                                                                              \
            return orv_##t##trsm(is_upper ? 'L' : 'R', is_upper ? 'U' : 'L', 'C', 'N', m, n, one<T>, a, lda, b, ldb);  \
        }                                                                                                              \
        static void update(bool is_upper, i64 n, i64 k, const T* a, i64 lda, T* c, i64 ldc)                            \
        {                                                                                                              \
            orv_##t##syrk(is_upper ? 'U' : 'L', is_upper ? 'C' : 'N', n, k, -1, a, lda, 1, c, ldc);                    \
        }                                                                                                              \
    };
STEPS(s, float, syrk, 49, 49)
STEPS(d, double, syrk, 39, 49)
STEPS(c, cpx<float>, herk, 19, 49)
STEPS(z, cpx<double>, herk, 39, 39)

template <class T> class Cholesky {
public:
    Cholesky(char uplo, i64 lda)
        : upper_(fold(uplo) == 'U'), small_(upper_ ? Steps<T>::upper : Steps<T>::lower), kernel_(small_.kernel.get()),
          lda_(lda)
    {
    }
    bool can_run() const { return kernel_ != nullptr; }

    // Factors the n by n block at a; the number of the first pivot that is not positive, or 0.
    i64 factor(i64 n, T* a) const
    {
        if (n <= small_.largest) {
            i64 info = 0;
            kernel_(upper_ ? "U" : "L", &n, a, &lda_, &info);
            return info;
        }
        const i64 k = half(n), rest = n - k;
        T *const beside = upper_ ? a + k * lda_ : a + k, *const behind = a + k + k * lda_;
        if (const i64 pivot = factor(k, a)) return pivot;
        solve(k, rest, a, beside);
        Steps<T>::update(upper_, rest, k, beside, lda_, behind, lda_);
        const i64 pivot = factor(rest, behind);
        return pivot == 0 ? 0 : k + pivot;
    }

private:
    // Halves are whole cache lines where there is a choice.
    static i64 half(i64 n) { return n / 2 < 8 ? n / 2 : n / 2 / 8 * 8; }

    void solve(i64 k, i64 others, const T* a, T* b) const
    {
        if (Steps<T>::solve(upper_, upper_ ? k : others, upper_ ? others : k, a, lda_, b, lda_) != ORV_OK) [[unlikely]]
            solve_without_memory(k, others, a, b);
    }

    // Element by element. Both triangles look the same from here: `down` goes along a column of the upper one and along
    // a row of the lower one.
    void solve_without_memory(i64 k, i64 others, const T* a, T* b) const
    {
        const i64 down = upper_ ? 1 : lda_, across = upper_ ? lda_ : 1;
        for (i64 j = 0; j < others; ++j)
            for (i64 i = 0; i < k; ++i) {
                T sum = b[i * down + j * across];
                for (i64 l = 0; l < i; ++l) sum -= conj(a[l * down + i * across]) * b[l * down + j * across];
                b[i * down + j * across] = reciprocal(a[i * (down + across)]) * sum;
            }
    }
    static real_t<T> reciprocal(T pivot)
    {
        if constexpr (is_complex<T>) return 1 / pivot.re;
        else return 1 / pivot;
    }

    bool upper_;
    Small<T>& small_;
    kernels::lapack_ps::Potrf<T>* kernel_;
    i64 lda_;
};

template <class T> orv_status potrf(const char* routine, char uplo, i64 n, T* a, i64 lda, i64* info)
{
    if (const int bad = arguments::potrf(uplo, n, a, lda, info)) return bad_argument(routine, bad);
    const Cholesky<T> cholesky(uplo, lda);
    if (!cholesky.can_run()) return last_status();
    *info = cholesky.factor(n, a);
    return ORV_OK;
}

} // namespace

#define POTRF(name, T)                                                                                                 \
    orv_status orv_##name(char uplo, i64 n, T* a, i64 lda, i64* info)                                                  \
    {                                                                                                                  \
        return potrf("orv_" #name, uplo, n, a, lda, info);                                                             \
    }

POTRF(spotrf, float)
POTRF(dpotrf, double)
POTRF(cpotrf, cpx<float>)
POTRF(zpotrf, cpx<double>)
