// Matrix products: arguments checked, large ones shared among threads.
#include "core/blas/routine.h"
#include "core/team/team.h"
#include "frame/arguments.h"

using namespace orv;
using namespace orv::core;

namespace {

// A cut of m by n elements into one part a thread: rows by columns, the parts as square as may be, which reads the
// least.
struct Grid {
    int rows = 1, columns = 1;

    Grid(i64 m, i64 n, int parts)
    {
        double best = 0;
        for (int r = 1; r <= parts; ++r) {
            const double edges = static_cast<double>(m) / r + static_cast<double>(n) * r / parts;
            if (parts % r != 0 || (best != 0 && edges >= best)) continue;
            best = edges, rows = r, columns = parts / r;
        }
    }
};

// Every edge of a part but the last is a multiple of the granules of all kernels: no part ends in leftovers that the
// whole has not, and each element of C goes through the same operations whoever computes it.
constexpr i64 granule = 16;
constexpr i64 edge(i64 size, int parts, int index)
{
    return index == parts ? size : size / granule * index / parts * granule;
}

template <auto& F> class Gemm {
    using T = value_argument<F, 5>;

    // Multiplications worth a thread, 0.2 ms of one core: waking a team that has gone to sleep can cost as much.
    static constexpr i64 grain = 16'000'000 / static_cast<i64>(sizeof(real_t<T>)) / (is_complex<T> ? 4 : 1);
    // A part has at least this many rows and columns, or the whole is not cut that way: panels stay whole.
    static constexpr i64 least = 32;

public:
    constexpr explicit Gemm(const char* symbol) : kernel_(symbol) {}

    [[gnu::always_inline]] orv_status operator()(const char* transa, const char* transb, const i64* m, const i64* n,
                                                 const i64* k, const T* alpha, const T* a, const i64* lda, const T* b,
                                                 const i64* ldb, const T* beta, T* c, const i64* ldc)
    {
        if (const int bad = arguments::gemm(*transa, *transb, *m, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc))
            return -bad;
        auto* const kernel = kernel_.get();
        if (kernel == nullptr) [[unlikely]]
            return last_status();

        const int threads = threads_worth(*m, *n, *k);
        if (threads == 1) kernel(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
        else share(threads, kernel, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
        return ORV_OK;
    }

private:
    [[gnu::noinline]] static void share(int threads, kernel_form<F>* kernel, const char* transa, const char* transb,
                                        const i64* m, const i64* n, const i64* k, const T* alpha, const T* a,
                                        const i64* lda, const T* b, const i64* ldb, const T* beta, T* c, const i64* ldc)
    {
        parallel(threads, [&](int index, int count) {
            const Grid grid(*m, *n, count);
            const int row = index % grid.rows, column = index / grid.rows;
            const i64 i = edge(*m, grid.rows, row), rows = edge(*m, grid.rows, row + 1) - i;
            const i64 j = edge(*n, grid.columns, column), columns = edge(*n, grid.columns, column + 1) - j;
            const T* const a_part = fold(*transa) == 'N' ? a + i : a + i * *lda;
            const T* const b_part = fold(*transb) == 'N' ? b + j * *ldb : b + j;
            kernel(transa, transb, &rows, &columns, k, alpha, a_part, lda, b_part, ldb, beta, c + i + j * *ldc, ldc);
        });
    }

    static int threads_worth(i64 m, i64 n, i64 k)
    {
        const double work = static_cast<double>(m) * static_cast<double>(n) * static_cast<double>(k);
        if (work < 2.0 * grain) return 1;
        const i64 most = max(m / least, 1) * max(n / least, 1);
        return static_cast<int>(min(most, threads_for(static_cast<i64>(work < 1e18 ? work : 1e18), grain)));
    }

    Kernel<kernel_form<F>> kernel_;
};

} // namespace

ORV_BLAS(13, sgemm, Gemm, xsgemm)
ORV_BLAS(13, dgemm, Gemm, xdgemm)
ORV_BLAS(13, cgemm, Gemm, xcgemm)
ORV_BLAS(13, zgemm, Gemm, xzgemm)
