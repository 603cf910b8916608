// C := alpha*A*A' + beta*C or alpha*A'*A + beta*C in one triangle of C, A' the transpose of A (syrk) or its conjugate
// transpose (herk, with real alpha and beta: the diagonal of C becomes real). An alpha or a k of 0 leaves A unread, a
// beta of 0 leaves C unread.
//
// The triangle is cut twice, each time in groups of columns (lower triangle) or rows (upper): a group is a triangle on
// the diagonal and a rectangle beside it, which is a general product. The triangles that are left are walked in small
// blocks, each computed as a square of which one half is kept.
#include "blas/level3/square.h"

namespace orv::level3 {
namespace {

template <class T, Kind kind> struct SymmetricUpdate {
    using F = Factor<T, kind>;
    bool upper, plain; // which triangle; whether A is n by k
    i64 n, k;
    F alpha;
    const T* a;
    i64 lda;
    F beta;
    T* c;
    i64 ldc;

    const T* row(i64 i) const { return plain ? a + i : a + i * lda; } // of A, or of A'
    SymmetricUpdate part(i64 i, i64 size) const
    {
        SymmetricUpdate x = *this;
        x.n = size, x.a = row(i), x.c = c + i * (ldc + 1);
        return x;
    }
    // C(i:i+rows, j:j+columns) of the whole square, to an array.
    void product(i64 i, i64 j, i64 rows, i64 columns, T by, T* to, i64 ldto) const
    {
        constexpr char turned = is_complex<T> ? mirrored<T, kind> : 'C';
        multiply(plain ? 'N' : turned, plain ? turned : 'N', rows, columns, k, as_element<T>(alpha), row(i), lda,
                 row(j), lda, by, to, ldto);
    }
    // What stands beside the block of `size` rows and columns from i on, of all n.
    void rectangle(i64 i, i64 size) const
    {
        const i64 next = i + size, rest = n - next;
        if (upper) product(i, next, size, rest, as_element<T>(beta), c + i + next * ldc, ldc);
        else product(next, i, rest, size, as_element<T>(beta), c + next + i * ldc, ldc);
    }
};

// c := f(c, x), f of registers.
template <class F, class Both> ORV_INLINE void each(i64 n, const F* x, F* c, const Both& f)
{
    constexpr i64 lanes = vec<F>::lanes;
    i64 i = 0;
    for (; i + lanes <= n; i += lanes) storeu(c + i, f(loadu(c + i), loadu(x + i)));
    for (; i < n; ++i) store_first<1>(c + i, f(load_first<1>(c + i), load_first<1>(x + i)));
}

// The triangle := square + beta*triangle. A real beta takes complex numbers as reals.
template <class T, Kind kind> void add_triangle(const SymmetricUpdate<T, kind>& x, const T* square)
{
    using F = Factor<T, kind>;
    constexpr i64 parts = sizeof(T) / sizeof(F);
    const auto columns = [&](const auto& f) ORV_INLINE_LAMBDA {
        for (i64 j = 0; j < x.n; ++j) {
            T* const c = x.c + j * x.ldc;
            const Rows rows = stored(x.upper, x.n, j);
            each(parts * (rows.to - rows.from), reinterpret_cast<const F*>(square + rows.from + j * x.n),
                 reinterpret_cast<F*>(c + rows.from), f);
            c[j] = on_diagonal<T, kind>(c[j]);
        }
    };
    if (x.beta == one<F>) return columns([](vec<F> c, vec<F> s) ORV_INLINE_LAMBDA { return c + s; });
    if (x.beta == zero<F>) return columns([](vec<F>, vec<F> s) ORV_INLINE_LAMBDA { return s; });
    columns([beta = factor<F>(x.beta)](vec<F> c, vec<F> s) ORV_INLINE_LAMBDA { return beta * c + s; });
}

template <class T, Kind kind> void scale(const SymmetricUpdate<T, kind>& x)
{
    scale_triangle<T, kind>(x.upper, x.n, x.beta, x.c, x.ldc);
}

template <class T, Kind kind> bool adds_nothing(const SymmetricUpdate<T, kind>& x)
{
    return x.alpha == zero<Factor<T, kind>> || x.k <= 0;
}

// Half of a square is thrown away, so small ones pay, though the work memory has room for more; singles take theirs on
// the stack. Triangles that are a few of them pay for still smaller ones.
constexpr i64 side = 16;
constexpr i64 tiny = 10; // rows, columns and depth of the general product's smallest case
constexpr i64 side_of(i64 n) { return n <= 2 * side ? side / 2 : side; }

template <class T, Kind kind> void walk(const SymmetricUpdate<T, kind>& x, const Square<T>& square)
{
    const i64 most = min(square.side, side_of(x.n));
    for (i64 i = 0; i < x.n; i += most) {
        const i64 size = min(x.n - i, most);
        // Few sums of few terms are added to zeros, which takes the product its shortest way.
        const bool is_tiny = max(size, x.k) <= tiny;
        if (is_tiny) blas::fill_zeros(size * size, square.at);
        x.product(i, i, size, size, is_tiny ? one<T> : zero<T>, square.at, size);
        add_triangle(x.part(i, size), square.at);
        x.rectangle(i, size);
    }
}

// The whole update by a square of the caller's.
template <class T, Kind kind> void without_memory(const SymmetricUpdate<T, kind>& x)
{
    if (adds_nothing(x)) return scale(x);
    with_local_square<T, side>([&](const Square<T>& square) { walk(x, square); });
}

template <class T> inline constexpr Request request{side, 0x4800, 128, "DSYRK_PST"};
template <> inline constexpr Request request<cpx<float>>{side, 0x20000, 128, "CSYRK_PST"};
template <> inline constexpr Request request<cpx<double>>{side, 0x40000, 128, "ZSYRK"};

template <class T, Kind kind> void small(const SymmetricUpdate<T, kind>& x)
{
    if (adds_nothing(x)) return scale(x);
    if constexpr (std::is_same_v<T, float>) without_memory(x);
    else if (!with_square<T>(request<T>, [&](const Square<T>& square) { walk(x, square); })) without_memory(x);
}

// In how many groups a triangle is cut: p + 1 where n exceeds the first p limits. They differ by type and by whether
// the rows of A are strided, and are part of the contract: where a triangle is cut shows in the rounding.
template <int size> constexpr i64 groups(i64 n, const i64 (&limits)[size])
{
    i64 p = 1;
    for (const i64 limit : limits) p += n > limit;
    return p;
}

template <class T> struct Limits {
    static i64 first(i64 n, bool) { return n > 19 ? 5 : 1; }
    static i64 second(i64 n, bool) { return n > 96 ? 2 : 1; }
};
template <> struct Limits<double> {
    static i64 first(i64 n, bool plain)
    {
        return plain ? groups(n, {96, 499, 800, 2048, 4999}) : groups(n, {64, 299, 600, 2000, 3999});
    }
    static i64 second(i64 n, bool plain)
    {
        return plain ? groups(n, {55, 128, 128, 247, 247}) : groups(n, {49, 64, 127, 199, 247});
    }
};
template <> struct Limits<float> {
    static i64 first(i64 n, bool plain)
    {
        return plain ? groups(n, {100, 300, 600, 999, 4999}) : groups(n, {100, 400, 900, 1999, 4000});
    }
    static i64 second(i64 n, bool plain) { return plain ? groups(n, {64, 100}) : groups(n, {63, 99, 128, 201, 601}); }
};

// Groups of n/p rows, in whole fours; what is left is the last.
constexpr i64 unit = 4;
template <class T, Kind kind, class Inner> void cut(const SymmetricUpdate<T, kind>& x, i64 p, const Inner& inner)
{
    const i64 height = x.n / p / unit * unit;
    if (x.n < unit * p) return inner(x);
    i64 i = 0;
    for (i64 g = 0; g + 1 < p; ++g, i += height) {
        inner(x.part(i, height));
        x.rectangle(i, height);
    }
    inner(x.part(i, x.n - i));
}

// A triangle of order 4 is a square of its own for reals.
template <class T, Kind kind> void four(const SymmetricUpdate<T, kind>& x)
{
    T square[unit * unit];
    walk(x, Square<T>{square, unit});
}
template <class T, Kind kind> void smallest(const SymmetricUpdate<T, kind>& x)
{
    if (!is_complex<T> && x.n == unit && !adds_nothing(x)) four(x);
    else small(x);
}
template <class T, Kind kind> void second_level(const SymmetricUpdate<T, kind>& x)
{
    cut(x, x.n == unit ? 1 : Limits<T>::second(x.n, x.plain), smallest<T, kind>);
}
template <class T, Kind kind> void first_level(const SymmetricUpdate<T, kind>& x)
{
    cut(x, x.n == unit ? 1 : Limits<T>::first(x.n, x.plain), second_level<T, kind>);
}

template <class T, Kind kind> void update(const SymmetricUpdate<T, kind>& x)
{
    if (x.n <= 0) return;
    if (x.k == 0) small(x);
    else first_level(x);
}

bool is_letter(const char* given, char letter) { return orv_serv_lsame(given, &letter, 1, 1) != 0; }

} // namespace

#define SYRK(symbol, T, kind, upper, body)                                                                             \
    ORV_EXPORT void BLAS(symbol)(const char* uplo, const char* trans, const i64* n, const i64* k,                      \
                                 const Factor<T, Kind::kind>* alpha, const T* a, const i64* lda,                       \
                                 const Factor<T, Kind::kind>* beta, T* c, const i64* ldc)                              \
    {                                                                                                                  \
        body(SymmetricUpdate<T, Kind::kind>{upper, is_letter(trans, 'N'), *n, *k, *alpha, a, *lda, *beta, c, *ldc});   \
    }
#define FAMILY(stem, T, kind)                                                                                          \
    SYRK(x##stem, T, kind, is_letter(uplo, 'U'), update)                                                               \
    SYRK(stem##_pst, T, kind, is_letter(uplo, 'U'), small)                                                             \
    SYRK(stem##_l_1, T, kind, (static_cast<void>(uplo), false), first_level)                                           \
    SYRK(stem##_u_1, T, kind, (static_cast<void>(uplo), true), first_level)                                            \
    SYRK(stem##_l_2, T, kind, (static_cast<void>(uplo), false), second_level)                                          \
    SYRK(stem##_u_2, T, kind, (static_cast<void>(uplo), true), second_level)

FAMILY(ssyrk, float, symmetric)
FAMILY(dsyrk, double, symmetric)
FAMILY(csyrk, cpx<float>, symmetric)
FAMILY(zsyrk, cpx<double>, symmetric)
FAMILY(cherk, cpx<float>, hermitian)
FAMILY(zherk, cpx<double>, hermitian)

SYRK(dsyrk_nobufs, double, symmetric, is_letter(uplo, 'U'), without_memory)
SYRK(csyrk_nobufs, cpx<float>, symmetric, is_letter(uplo, 'U'), without_memory)
SYRK(zsyrk_nobufs, cpx<double>, symmetric, is_letter(uplo, 'U'), without_memory)
SYRK(cherk_nobufs, cpx<float>, hermitian, is_letter(uplo, 'U'), without_memory)
SYRK(zherk_nobufs, cpx<double>, hermitian, is_letter(uplo, 'U'), without_memory)
SYRK(ssyrk_4k, float, symmetric, is_letter(uplo, 'U'), smallest)
SYRK(dsyrk_4k, double, symmetric, is_letter(uplo, 'U'), smallest)
SYRK(dsyrk_n4, double, symmetric, is_letter(uplo, 'U'), smallest)

// The work memory of dsyrk_pst, for callers of its parts.
ORV_EXPORT void BLAS(dsyrk_getbufs)(void** block)
{
    *block = orv_serv_allocate(request<double>.bytes, request<double>.alignment);
}
ORV_EXPORT void BLAS(dsyrk_freebufs)(void* block) { orv_serv_deallocate(block); }

} // namespace orv::level3
