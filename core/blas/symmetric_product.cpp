// y := alpha*A*x + beta*y, A symmetric or Hermitian.
//
// An element of a triangle is multiplied for its column and for its row while it is at hand, so that the matrix is read
// once. However a team cuts the triangle, then, all parts add to the same elements of y, and the cut tells in which
// order those sums are rounded. So it goes by n alone: a team of any size computes the same pieces, whoever takes them.
// A piece is some columns: the triangle on their diagonal and the rectangle beside it. Each has sums of its own, which
// y takes one piece after the other.
//
// One thread takes the triangle as a whole, 5 to 10 % faster than by pieces, and so does everybody if results are to be
// reproducible: these two differ from a team's in the last bits.
#include "core/blas/cut.h"
#include "core/blas/routine.h"
#include "core/team/team.h"
#include "frame/arguments.h"
#include "frame/serv.h"
#include "orv/numerics.h"

#include <algorithm>

using namespace orv;
using namespace orv::core;

namespace {

// More pieces than this gain little: all threads read the same memory.
constexpr i64 most_pieces = 16;

template <class T> int pieces_of(i64 n)
{
    const double worth = eagerly(0.5 * static_cast<double>(n) * static_cast<double>(n) * sizeof(T)) / grain;
    return worth < 2 ? 1 : static_cast<int>(std::min<double>(worth, most_pieces));
}

// Kernels by type. y1 += alpha*B*x1 and y2 += alpha*op(B)*x2 in one pass over B:
template <class T> struct Kernels;
template <> struct Kernels<float> {
    static inline constinit Kernel both{kernels::blas::sgem2vu()};
    static inline constinit Kernel copy{kernels::blas::xscopy()};
    static inline constinit Kernel axpy{kernels::blas::xsaxpy()};
};
template <> struct Kernels<double> {
    static inline constinit Kernel both{kernels::blas::dgem2vu()};
    static inline constinit Kernel copy{kernels::blas::xdcopy()};
    static inline constinit Kernel axpy{kernels::blas::xdaxpy()};
};
template <> struct Kernels<cpx<float>> {
    static inline constinit Kernel both{kernels::blas::cgem2vc_f()};
    static inline constinit Kernel copy{kernels::blas::xccopy()};
};
template <> struct Kernels<cpx<double>> {
    static inline constinit Kernel both{kernels::blas::zgem2vc_f()};
    static inline constinit Kernel copy{kernels::blas::xzcopy()};
};

template <auto& F> class Symv {
    using T = value_argument<F, 2>;
    using R = real_t<T>;

public:
    template <class Prototype> constexpr explicit Symv(Prototype kernel) : kernel_(kernel) {}

    orv_status operator()(const char* uplo, const i64* n, const T* alpha, const T* a, const i64* lda, const T* x,
                          const i64* incx, const T* beta, T* y, const i64* incy)
    {
        if (const int bad = on_values<F>(arguments::symv, uplo, n, alpha, a, lda, x, incx, beta, y, incy)) return -bad;
        auto* const kernel = kernel_.get();
        if (kernel == nullptr) [[unlikely]]
            return last_status();
        const int pieces = pieces_of<T>(*n), threads = pieces < 2 ? 1 : std::min(pieces, available_threads());
        if (threads == 1 || *alpha == zero<T> || orv_get_reproducible() ||
            !by_team(threads, pieces, uplo, *n, alpha, a, lda, x, incx, beta, y, incy))
            kernel(uplo, n, alpha, a, lda, x, incx, beta, y, incy);
        return ORV_OK;
    }

private:
    using Kernels = ::Kernels<T>;
    static constexpr i64 unit = 1;

    // False if there is no memory for the sums; then nothing was done.
    [[gnu::noinline]] bool by_team(int threads, int pieces, const char* uplo, i64 n, const T* alpha, const T* a,
                                   const i64* lda, const T* x, const i64* incx, const T* beta, T* y, const i64* incy)
    {
        const i64 length = round_up(n, granule);
        T* const sums = static_cast<T*>(orv_serv_allocate((pieces + 1) * length * i64(sizeof(T)), 128));
        if (sums == nullptr) return false;
        const T* unit_x = x;
        if (*incx != 1) {
            T* const to = sums + pieces * length;
            Kernels::copy.get()(&n, x, incx, to, &unit);
            unit_x = to;
        }
        const auto piece = [&](int p) { return Columns(fold(*uplo) == 'U', n, pieces, p); };
        parallel(threads, [&](int index, int count) {
            for (int p = pieces * index / count; p < pieces * (index + 1) / count; ++p)
                multiply(piece(p), uplo, alpha, a, lda, unit_x, sums + p * length);
        });
        kernel_.get()(uplo, &n, &zero<T>, a, lda, x, incx, beta, y, incy); // y := beta*y
        for (int p = 0; p < pieces; ++p) {
            const Range rows = piece(p).rows;
            add(rows.size, sums + p * length + rows.begin, part(y, n, *incy, rows), *incy);
        }
        orv_serv_deallocate(sums);
        return true;
    }

    // sums(c.rows) := alpha*A*x as far as A's elements are in the columns c or, mirrored, in the rows c.
    void multiply(const Columns& c, const char* uplo, const T* alpha, const T* a, const i64* lda, const T* x, T* sums)
    {
        const i64 own = c.right, beside = c.rows.begin < own ? c.rows.begin : own + c.count;
        kernel_.get()(uplo, &c.count, alpha, a + own * (*lda + 1), lda, x + own, &unit, &zero<T>, sums + own, &unit);
        std::fill_n(sums + beside, c.others, zero<T>);
        const T* const rectangle = a + beside + own * *lda;
        const auto both = Kernels::both.get();
        if constexpr (std::is_same_v<T, cpx<double>>)
            both(&c.others, &c.count, alpha, rectangle, lda, x + own, x + beside, sums + beside, sums + own);
        else
            both(&c.others, &c.count, alpha, rectangle, lda, x + own, &unit, x + beside, &unit, &one<T>, sums + beside,
                 &unit, sums + own, &unit);
    }

    // y += sums, as reals: 1 + 0i times an infinity would be NaN.
    static void add(i64 n, const T* sums, T* y, i64 incy)
    {
        constexpr i64 reals = sizeof(T) / sizeof(R);
        const i64 apart = incy == 1 ? 1 : reals, count = n * reals / apart, step = incy * apart;
        for (i64 p = 0; p < apart; ++p)
            ::Kernels<R>::axpy.get()(&count, &one<R>, reinterpret_cast<const R*>(sums) + p, &apart,
                                     reinterpret_cast<R*>(y) + p, &step);
    }

    Kernel<kernel_form<F>> kernel_;
};

} // namespace

ORV_BLAS(10, ssymv, Symv, xssymv)
ORV_BLAS(10, dsymv, Symv, xdsymv)
ORV_BLAS(10, chemv, Symv, chemv)
ORV_BLAS(10, zhemv, Symv, zhemv)
