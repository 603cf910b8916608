// Updates of symmetric and Hermitian matrices by one matrix and by two: arguments checked, large ones shared among
// threads.
//
// A large triangle is cut in groups of rows (upper) or columns (lower): a triangle on the diagonal, for the kernel, and
// a rectangle beside it, for the general product. Where a triangle is cut shows in the rounding, so its groups go by
// its order alone, whoever computes it and if it be one thread; a rectangle is cut in any number of parts to the same
// bits. Members of a team get as many elements each.
#include "core/blas/cut_products.h"
#include "core/blas/routine.h"
#include "frame/arguments.h"

using namespace orv;
using namespace orv::core;

namespace {

// Small beside the whole, so that parts come out even, and large enough for the general product to be at its best.
constexpr i64 height_of(i64 n)
{
    constexpr i64 least = 64, best = 192;
    return max(max(n / 16, min(n / 3, best)) / tile * tile, least);
}

// Rows or columns from `begin` on, and how many there are beside the triangle on their diagonal.
struct Group {
    i64 begin, size, beside;
    i64 next() const { return begin + size; }

    Group(i64 n, i64 begin_) : begin(begin_), size(min(height_of(n), n - begin_)), beside(n - begin_ - size) {}
    // Its elements, counted in full rows (columns) of them: those of its triangle first, at least one, for who computes
    // the triangle goes by the first of them.
    i64 rows_of_triangle() const { return (size + 1) / 2; }
    i64 rows() const { return rows_of_triangle() + beside; }
    // Where a cut `row` rows after the triangle comes to lie, so that no part is too small.
    i64 edge(i64 row) const
    {
        if (row <= 0) return 0;
        const i64 down = row / tile * tile;
        return beside - down < tile ? beside : down;
    }
};

// Member `index` of `count`: triangle(group) and rectangle(group, range of what is beside it) for its share.
template <class Triangle, class Rectangle>
void walk(i64 n, int index, int count, const Triangle& triangle, const Rectangle& rectangle)
{
    i64 rows = 0;
    for (i64 i = 0; i < n; i += height_of(n)) rows += Group(n, i).rows();
    const i64 from = rows * index / count, to = rows * (index + 1) / count;
    i64 at = 0;
    for (i64 i = 0; i < n; i += height_of(n)) {
        const Group g(n, i);
        if (from <= at && at < to) triangle(g);
        at += g.rows_of_triangle();
        const i64 first = g.edge(from - at), last = g.edge(to - at);
        if (first < last) rectangle(g, Range{first, last - first});
        at += g.beside;
    }
}

template <class T>
constinit Kernel general{
    kernels::of_type<T, kernels::blas::xsgemm, kernels::blas::xdgemm, kernels::blas::xcgemm, kernels::blas::xzgemm>()};

template <class T, class F> constexpr T as_element(F f)
{
    if constexpr (std::is_same_v<T, F>) return f;
    else return {f, 0};
}

// What both updates have in common. F is the type of the factors that are real where C is Hermitian.
template <class T, class F> struct Updated {
    static constexpr char turned = std::is_same_v<T, F> ? 'T' : 'C';
    bool upper, plain;
    i64 k;
    T* c;
    i64 ldc;

    Updated(const char* uplo, const char* trans, const i64* k_, T* c_, const i64* ldc_)
        : upper(fold(*uplo) == 'U'), plain(fold(*trans) == 'N'), k(*k_), c(c_), ldc(*ldc_)
    {
    }
    const T* row(const T* a, i64 lda, i64 i) const { return plain ? a + i : a + i * lda; }
    T* diagonal(const Group& g) const { return c + g.begin * (ldc + 1); }

    // The part of a group's rectangle := alpha*A*B' + beta*(it), or alpha*A'*B + beta*(it).
    void product(const Group& g, Range part, T alpha, const T* a, i64 lda, const T* b, i64 ldb, T beta) const
    {
        const Range own{g.begin, g.size}, other{g.next() + part.begin, part.size};
        const Range rows = upper ? own : other, columns = upper ? other : own;
        const char transa = plain ? 'N' : turned, transb = plain ? turned : 'N';
        general<T>.get()(&transa, &transb, &rows.size, &columns.size, &k, &alpha, row(a, lda, rows.begin), &lda,
                         row(b, ldb, columns.begin), &ldb, &beta, c + rows.begin + columns.begin * ldc, &ldc);
    }
};

template <auto& F, int position>
using ElementOf = std::remove_const_t<std::remove_pointer_t<value_argument<F, position>>>;

// C := alpha*A*A' + beta*C or alpha*A'*A + beta*C.
template <auto& R> struct ByOne {
    using T = ElementOf<R, 5>;
    using F = value_argument<R, 4>;
    static constexpr auto check = arguments::syrk;

    static double multiplications(const i64* n, const i64* k) { return 0.5 * volume(*n, *n, *k); }

    template <class K>
    static void share(int threads, K* kernel, const char* uplo, const char* trans, const i64* n, const i64* k,
                      const F* alpha, const T* a, const i64* lda, const F* beta, T* c, const i64* ldc)
    {
        const Updated<T, F> x(uplo, trans, k, c, ldc);
        parallel(threads, [&](int index, int count) {
            walk(
                *n, index, count,
                [&](const Group& g) {
                    kernel(uplo, trans, &g.size, k, alpha, x.row(a, *lda, g.begin), lda, beta, x.diagonal(g), ldc);
                },
                [&](const Group& g, Range part) {
                    x.product(g, part, as_element<T>(*alpha), a, *lda, a, *lda, as_element<T>(*beta));
                });
        });
    }
};

// C := alpha*A*B' + alpha'*B*A' + beta*C or alpha*A'*B + alpha'*B'*A + beta*C, beta first.
template <auto& R> struct ByTwo {
    using T = ElementOf<R, 5>;
    using F = value_argument<R, 9>;
    static constexpr auto check = arguments::syr2k;

    static double multiplications(const i64* n, const i64* k) { return volume(*n, *n, *k); }

    template <class K>
    static void share(int threads, K* kernel, const char* uplo, const char* trans, const i64* n, const i64* k,
                      const T* alpha, const T* a, const i64* lda, const T* b, const i64* ldb, const F* beta, T* c,
                      const i64* ldc)
    {
        constexpr i64 nothing = 0;
        kernel(uplo, trans, n, &nothing, alpha, a, lda, b, ldb, beta, c, ldc);
        const Updated<T, F> x(uplo, trans, k, c, ldc);
        T mirrored = *alpha;
        if constexpr (!std::is_same_v<T, F>) mirrored = conj(mirrored);
        parallel(threads, [&](int index, int count) {
            walk(
                *n, index, count,
                [&](const Group& g) {
                    kernel(uplo, trans, &g.size, k, alpha, x.row(a, *lda, g.begin), lda, x.row(b, *ldb, g.begin), ldb,
                           &one<F>, x.diagonal(g), ldc);
                },
                [&](const Group& g, Range part) {
                    x.product(g, part, *alpha, a, *lda, b, *ldb, one<T>);
                    x.product(g, part, mirrored, b, *ldb, a, *lda, one<T>);
                });
        });
    }
};

template <auto& R, class Cut> class SharedUpdate {
public:
    template <class Prototype> constexpr explicit SharedUpdate(Prototype kernel) : kernel_(kernel) {}

    template <class... P> [[gnu::always_inline]] orv_status operator()(P... arguments)
    {
        if (const int bad = on_values<R>(Cut::check, arguments...)) return -bad;
        auto* const kernel = kernel_.get();
        if (kernel == nullptr) [[unlikely]]
            return last_status();
        if (is_large(arguments...)) Cut::share(threads(arguments...), kernel, arguments...);
        else kernel(arguments...);
        return ORV_OK;
    }

private:
    using Alpha = value_argument<R, 4>;
    template <class... P>
    static bool is_large(const char*, const char*, const i64* n, const i64* k, const Alpha* alpha, P...)
    {
        return is_worth_sharing<typename Cut::T>(Cut::multiplications(n, k)) && *alpha != zero<Alpha> &&
               general<typename Cut::T>.get() != nullptr;
    }
    template <class... P> static int threads(const char*, const char*, const i64* n, const i64* k, P...)
    {
        return threads_for_products<typename Cut::T>(Cut::multiplications(n, k), *n / least_side);
    }

    Kernel<kernel_form<R>> kernel_;
};
template <auto& R> using Syrk = SharedUpdate<R, ByOne<R>>;
template <auto& R> using Syr2k = SharedUpdate<R, ByTwo<R>>;

} // namespace

ORV_BLAS(10, ssyrk, Syrk, xssyrk)
ORV_BLAS(10, dsyrk, Syrk, xdsyrk)
ORV_BLAS(10, csyrk, Syrk, xcsyrk)
ORV_BLAS(10, zsyrk, Syrk, xzsyrk)

ORV_BLAS(10, cherk, Syrk, xcherk)
ORV_BLAS(10, zherk, Syrk, xzherk)

ORV_BLAS(12, ssyr2k, Syr2k, xssyr2k)
ORV_BLAS(12, dsyr2k, Syr2k, xdsyr2k)
ORV_BLAS(12, csyr2k, Syr2k, xcsyr2k)
ORV_BLAS(12, zsyr2k, Syr2k, xzsyr2k)

ORV_BLAS(12, cher2k, Syr2k, xcher2k)
ORV_BLAS(12, zher2k, Syr2k, xzher2k)
