// Updates of rank 2k of a panel (panel.h): ?syr2k_nb, ?her2k_nb.
//
//   C := alpha*A*B^H + conj(alpha)*B*A^H + beta*C       trans N: A and B are n by k
//   C := alpha*A^H*B + conj(alpha)*B^H*A + beta*C       any other letter: they are k by n
//
//   n, k, nb   order, depth and width; one of them not positive: nothing is done
//   alpha      complex if the matrices are; beta is real
//   c          the panel of nb columns is read and written; beta 0: it is not read. The imaginary parts of a Hermitian
//              diagonal count as zero and are left zero.
//
// Without transposition four columns of A and B go into a column of C at a time, else two elements of a column of C are
// computed by their inner products at a time. Elements go through registers where everything is in step.
#include "frame/kernels/lapack_ps.h"
#include "lapack_ps/panel.h"

#include <type_traits>

namespace orv::lapack {
namespace {

template <class T> struct Operands {
    Path path;
    i64 k;
    T alpha;
    const T *a, *b;
    i64 lda, ldb;
    real_t<T> beta;
};

// What C was, times beta.
template <class T> T scaled(T c, real_t<T> beta)
{
    if (beta == 0) return zero<T>;
    if (beta == 1) return c;
    if constexpr (is_complex<T>) return {beta * c.re, beta * c.im};
    else return beta * c;
}

// c(from:to) += sum of a(:,l)*t(l) + b(:,l)*s(l) over `depth` columns from l on, t and s by row j of the other matrix.
template <int depth, class T> void add_columns(const Operands<T>& o, i64 from, i64 to, i64 j, i64 l, T* c)
{
    const T *a[depth], *b[depth];
    T t[4] = {}, s[4] = {};
    for (int d = 0; d < depth; ++d) {
        a[d] = o.a + (l + d) * o.lda, b[d] = o.b + (l + d) * o.ldb;
        t[d] = o.alpha * conj(b[d][j]), s[d] = conj(o.alpha * a[d][j]);
    }
    const factor<T> f[4] = {factor<T>(t[0]), factor<T>(t[1]), factor<T>(t[2]), factor<T>(t[3])};
    const factor<T> g[4] = {factor<T>(s[0]), factor<T>(s[1]), factor<T>(s[2]), factor<T>(s[3])};
    each_row(
        o.path, from, to, c,
        [&](i64 i) ORV_INLINE_LAMBDA {
            vec<T> sum = loadu(c + i);
#pragma GCC unroll 4
            for (int d = 0; d < depth; ++d) sum = sum + f[d] * loadu(a[d] + i) + g[d] * loadu(b[d] + i);
            storeu(c + i, sum);
        },
        [&](i64 i) ORV_INLINE_LAMBDA {
#pragma GCC unroll 4
            for (int d = 0; d < depth; ++d) c[i] = c[i] + t[d] * a[d][i] + s[d] * b[d][i];
        });
}

template <class T> void update_by_columns(const Operands<T>& o, i64 from, i64 to, i64 j, T* c)
{
    for (i64 i = from; i < to; ++i) c[i] = scaled(c[i], o.beta);
    i64 l = 0;
    for (; l + 4 <= o.k; l += 4) add_columns<4>(o, from, to, j, l, c);
    for (; l < o.k; ++l) add_columns<1>(o, from, to, j, l, c);
}

// c(i:i+count) := beta*c + alpha*a(:,i)^H*b(:,j) + conj(alpha)*b(:,i)^H*a(:,j)
template <int count, class T> void update_by_products(const Operands<T>& o, i64 i, i64 j, T* c)
{
    const T *const aj = o.a + j * o.lda, *const bj = o.b + j * o.ldb;
    InnerProduct<T> ab[count], ba[count];
    each_row(
        o.path, 0, o.k, aj,
        [&](i64 l) ORV_INLINE_LAMBDA {
#pragma GCC unroll 2
            for (int r = 0; r < count; ++r) {
                ab[r].add(loadu(o.a + (i + r) * o.lda + l), loadu(bj + l));
                ba[r].add(loadu(o.b + (i + r) * o.ldb + l), loadu(aj + l));
            }
        },
        [&](i64 l) ORV_INLINE_LAMBDA {
#pragma GCC unroll 2
            for (int r = 0; r < count; ++r) {
                ab[r].add(o.a[(i + r) * o.lda + l], bj[l]);
                ba[r].add(o.b[(i + r) * o.ldb + l], aj[l]);
            }
        });
    for (int r = 0; r < count; ++r)
        c[i + r] = scaled(c[i + r], o.beta) + (o.alpha * ab[r].total() + conj(o.alpha) * ba[r].total());
}

template <class T>
void syr2k_nb(const char* uplo, const char* trans, i64 n, i64 nb, const Operands<T>& o, T* c, i64 ldc)
{
    if (n <= 0 || o.k <= 0 || nb <= 0) return;
    const Panel<T> panel(uplo, n, nb, c, ldc);
    const bool by_columns = fold(*trans) == 'N';
    for (i64 j = panel.from; j < panel.to; ++j) {
        T* const column = panel.column(j);
        const i64 from = panel.upper ? 0 : j, to = panel.upper ? j + 1 : n;
        if constexpr (is_complex<T>) column[j].im = 0;
        if (by_columns) update_by_columns(o, from, to, j, column);
        else {
            i64 i = from;
            for (; i + 2 <= to; i += 2) update_by_products<2>(o, i, j, column);
            for (; i < to; ++i) update_by_products<1>(o, i, j, column);
        }
        if constexpr (is_complex<T>) column[j].im = 0;
    }
}

} // namespace

#define SYR2K_NB(name, T)                                                                                              \
    ORV_EXPORT void LAPACK_PS(name)(const char* uplo, const char* trans, const i64* n, const i64* k, const i64* nb,    \
                                    const T* alpha, const T* a, const i64* lda, const T* b, const i64* ldb,            \
                                    const real_t<T>* beta, T* c, const i64* ldc)                                       \
    {                                                                                                                  \
        const Path path = path_in_step(is_even(*lda) && is_even(*ldb) && is_even(*ldc), a, b, c);                      \
        syr2k_nb(uplo, trans, *n, *nb, {path, *k, *alpha, a, b, *lda, *ldb, *beta}, c, *ldc);                          \
    }

SYR2K_NB(ssyr2k_nb, float)
SYR2K_NB(dsyr2k_nb, double)
SYR2K_NB(cher2k_nb, cpx<float>)
SYR2K_NB(zher2k_nb, cpx<double>)

} // namespace orv::lapack
