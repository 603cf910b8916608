// C := alpha*A*B' + alpha'*B*A' + beta*C, or alpha*A'*B + alpha'*B'*A + beta*C, in one triangle of C; ' transposes
// (syr2k), or transposes and conjugates (her2k, with a real beta: the diagonal of C becomes real). beta comes first, in
// a pass of its own: 0 stores zeros. An alpha or a k of 0 then leaves A and B unread.
//
// A block on the diagonal is one product in a square, added to C with its mirror image; the rectangle beside each is
// two general products.
#include "blas/level3/square.h"

namespace orv::level3 {
namespace {

template <class T, Kind kind> struct Update2 {
    bool upper, plain;
    i64 n, k;
    T alpha;
    const T* a;
    i64 lda;
    const T* b;
    i64 ldb;
    T* c;
    i64 ldc;

    const T* row(const T* x, i64 ld, i64 i) const { return plain ? x + i : x + i * ld; }
    // The first of both products as far as it goes to C(i:i+rows, j:j+columns); the second is that with A and B
    // exchanged, or the mirror image of what the first brings to C(j:j+columns, i:i+rows).
    void first(i64 i, i64 j, i64 rows, i64 columns, T by, T* to, i64 ldto) const
    {
        constexpr char turned = mirrored<T, kind>;
        multiply(plain ? 'N' : turned, plain ? turned : 'N', rows, columns, k, alpha, row(a, lda, i), lda,
                 row(b, ldb, j), ldb, by, to, ldto);
    }
    void both(i64 i, i64 j, i64 rows, i64 columns) const
    {
        T* const to = c + i + j * ldc;
        first(i, j, rows, columns, one<T>, to, ldc);
        exchanged().first(i, j, rows, columns, one<T>, to, ldc);
    }

private:
    Update2 exchanged() const { return {upper, plain, n, k, mirror<T, kind>(alpha), b, ldb, a, lda, c, ldc}; }
};

template <class T, Kind kind> void walk(const Update2<T, kind>& x, const Square<T>& square)
{
    for (i64 i = 0; i < x.n; i += square.side) {
        const i64 size = min(x.n - i, square.side), next = i + size, rest = x.n - next;
        x.first(i, i, size, size, zero<T>, square.at, size);
        for (i64 j = 0; j < size; ++j) {
            T* const c = x.c + i + (i + j) * x.ldc;
            const Rows rows = stored(x.upper, size, j);
            for (i64 r = rows.from; r < rows.to; ++r)
                c[r] += square.at[r + j * size] + mirror<T, kind>(square.at[j + r * size]);
            c[j] = on_diagonal<T, kind>(c[j]);
        }
        if (x.upper) x.both(i, next, size, rest);
        else x.both(next, i, rest, size);
    }
}

template <class T, Kind kind> void without_memory(const Update2<T, kind>& x)
{
    with_local_square<T, 32>([&](const Square<T>& square) { walk(x, square); });
}
template <class T, Kind kind> bool adds(const Update2<T, kind>& x) { return x.n > 0 && x.k > 0 && x.alpha != zero<T>; }

} // namespace

#define SYR2K_ARGUMENTS(T, kind)                                                                                       \
    const char *uplo, const char *trans, const i64 *n, const i64 *k, const T *alpha, const T *a, const i64 *lda,       \
        const T *b, const i64 *ldb, const Factor<T, Kind::kind>*beta, T *c, const i64 *ldc
#define SYR2K_RECORD(T, kind)                                                                                          \
    Update2<T, Kind::kind> { upper, fold(*trans) == 'N', *n, *k, *alpha, a, *lda, b, *ldb, c, *ldc }
// The last column: under which name missing memory is reported.
#define SYR2K(stem, T, kind, bytes, family)                                                                            \
    ORV_EXPORT void BLAS(stem##_nobufs)(SYR2K_ARGUMENTS(T, kind))                                                      \
    {                                                                                                                  \
        const bool upper = fold(*uplo) == 'U';                                                                         \
        scale_triangle<T, Kind::kind>(upper, *n, *beta, c, *ldc);                                                      \
        const auto x = SYR2K_RECORD(T, kind);                                                                          \
        if (adds(x)) without_memory(x);                                                                                \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(x##stem)(SYR2K_ARGUMENTS(T, kind))                                                            \
    {                                                                                                                  \
        static constexpr Request request{128, bytes, 128, family};                                                     \
        const bool upper = fold(*uplo) == 'U';                                                                         \
        scale_triangle<T, Kind::kind>(upper, *n, *beta, c, *ldc);                                                      \
        const auto x = SYR2K_RECORD(T, kind);                                                                          \
        if (!adds(x)) return;                                                                                          \
        if (!with_square<T>(request, [&](const Square<T>& square) { walk(x, square); })) without_memory(x);            \
    }

SYR2K(ssyr2k, float, symmetric, 0x20000, "xdsyr2k")
SYR2K(dsyr2k, double, symmetric, 0x20000, "xdsyr2k")
SYR2K(csyr2k, cpx<float>, symmetric, 0x20000, "xcsyr2k")
SYR2K(zsyr2k, cpx<double>, symmetric, 0x40000, "xcsyr2k")
SYR2K(cher2k, cpx<float>, hermitian, 0x20000, "xcher2k")
SYR2K(zher2k, cpx<double>, hermitian, 0x40000, "xcher2k")

} // namespace orv::level3
