// Products of general matrices, also by three real ones in place of a complex one, and of a real matrix with a complex
// one: arguments checked, large ones shared among threads.
#include "core/blas/cut_products.h"
#include "core/blas/shared.h"
#include "frame/arguments.h"
#include "orv/numerics.h"

using namespace orv;
using namespace orv::core;

namespace {

// By rows and columns of C. A has elements of type E.
template <class T, class E> struct GemmCut {
    template <class... P>
    static int threads(const char*, const char*, const i64* m, const i64* n, const i64* k, const T* alpha, P...)
    {
        if (*alpha == zero<T>) return 1;
        const double products = std::is_same_v<T, E> ? volume(*m, *n, *k) : 0.5 * volume(*m, *n, *k);
        const int threads = threads_for_products<T>(products, Grid::most_parts(*m) * Grid::most_parts(*n));
        return threads == 1 ? 1 : Grid(*m, *n, threads).parts();
    }
    template <class K>
    static void run(int index, int count, K* kernel, const char* transa, const char* transb, const i64* m, const i64* n,
                    const i64* k, const T* alpha, const E* a, const i64* lda, const T* b, const i64* ldb, const T* beta,
                    T* c, const i64* ldc)
    {
        const Grid grid(*m, *n, count);
        if (index >= grid.parts())
            return; // the system gave fewer members than there should be, and that is no good cut
        const Range rows = even_part(*m, grid.rows, index % grid.rows, tile);
        const Range columns = even_part(*n, grid.columns, index / grid.rows, tile);
        const E* const a_part = fold(*transa) == 'N' ? a + rows.begin : a + rows.begin * *lda;
        const T* const b_part = fold(*transb) == 'N' ? b + columns.begin * *ldb : b + columns.begin;
        kernel(transa, transb, &rows.size, &columns.size, k, alpha, a_part, lda, b_part, ldb, beta,
               c + rows.begin + columns.begin * *ldc, ldc);
    }
};

// The kernel multiplies blocks of A and B that are so many steps deep. Where the last of them is shallow, leftovers of
// few rows and columns are added up in another order, and a cut makes other leftovers.
template <class T> struct Gemm3mCut : GemmCut<T, T> {
    template <class... P>
    static int threads(const char* transa, const char* transb, const i64* m, const i64* n, const i64* k, P... others)
    {
        constexpr i64 depth = 128, shallow = 10;
        const bool ends_shallow = (*k - 1) % depth < shallow;
        const int threads = GemmCut<T, T>::threads(transa, transb, m, n, k, others...);
        return threads > 1 && ends_shallow && orv_get_reproducible() ? 1 : threads;
    }
};

template <auto& F> using C = value_argument<F, 5>;
template <auto& F>
using Gemm =
    Shared<F, arguments::gemm, GemmCut<C<F>, std::remove_const_t<std::remove_pointer_t<value_argument<F, 6>>>>>;
template <auto& F> using Gemm3m = Shared<F, arguments::gemm, Gemm3mCut<C<F>>>;

} // namespace

ORV_BLAS(13, sgemm, Gemm, xsgemm)
ORV_BLAS(13, dgemm, Gemm, xdgemm)
ORV_BLAS(13, cgemm, Gemm, xcgemm)
ORV_BLAS(13, zgemm, Gemm, xzgemm)

ORV_BLAS(13, cgemm3m, Gemm3m, xcgemm3m)
ORV_BLAS(13, zgemm3m, Gemm3m, xzgemm3m)

ORV_BLAS(13, scgemm, Gemm, xscgemm)
ORV_BLAS(13, dzgemm, Gemm, xdzgemm)
