// Products with triangular matrices and solves: arguments checked, large ones shared among threads.
//
// The kernels give up without memory, and return whether they did. Alone, that leaves B as it was; a member of a team
// computes its part by the kernel that needs none, as the others may have theirs.
#include "core/blas/cut_products.h"
#include "core/blas/routine.h"
#include "frame/arguments.h"

using namespace orv;
using namespace orv::core;

namespace {

// B := alpha*B, and the solve or product without memory, which takes uplo and transa as three flags.
template <class T>
using Scale = kernels::of_type<T, kernels::blas::sgemm_mscale, kernels::blas::dgemm_mscale, kernels::blas::cgemm_mscale,
                               kernels::blas::zgemm_mscale>;
template <auto& F> struct PlainOf;

template <auto& F> class Triangular {
    using T = value_argument<F, 6>;

public:
    template <class Prototype> constexpr explicit Triangular(Prototype kernel) : kernel_(kernel) {}

    template <class... P> [[gnu::always_inline]] orv_status operator()(P... arguments)
    {
        if (const int bad = on_values<F>(arguments::trmm, arguments...)) return -bad;
        auto* const kernel = kernel_.get();
        if (kernel == nullptr) [[unlikely]]
            return last_status();
        if (const int threads = threads_worth(arguments...); threads > 1) share(threads, kernel, arguments...);
        else if (kernel(arguments...) != Done::yes) [[unlikely]]
            return fail(ORV_NO_MEMORY,
                        "no memory is left for a product with a triangular matrix or a solve: the matrix "
                        "is as it was");
        return ORV_OK;
    }

private:
    using Solve = kernels::blas::Trmm<T>;
    using Done = kernels::blas::Done;

    template <class... P>
    static int threads_worth(const char* side, const char*, const char*, const char*, const i64* m, const i64* n,
                             const T* alpha, P...)
    {
        const bool left = fold(*side) == 'L';
        const double multiplications = 0.5 * volume(*m, *n, left ? *m : *n);
        if (!is_worth_sharing<T>(multiplications) || *alpha == zero<T> || plain.get() == nullptr ||
            scale.get() == nullptr)
            return 1;
        return threads_for_products<T>(multiplications, (left ? *n : *m) / least_side);
    }

    // By columns of B, or by rows of it where A comes from the right: each needs all of A.
    [[gnu::noinline]] static void share(int threads, Solve* kernel, const char* side, const char* uplo,
                                        const char* trans, const char* diag, const i64* m, const i64* n, const T* alpha,
                                        const T* a, const i64* lda, T* b, const i64* ldb)
    {
        const bool left = fold(*side) == 'L';
        parallel(threads, [&](int index, int count) {
            const Range r = even_part(left ? *n : *m, count, index, tile);
            const i64 *const rows = left ? m : &r.size, *const columns = left ? &r.size : n;
            T* const part = b + r.begin * (left ? *ldb : 1);
            if (kernel(side, uplo, trans, diag, rows, columns, alpha, a, lda, part, ldb) == Done::yes) return;
            const char is_upper = fold(*uplo) == 'U', is_n = fold(*trans) == 'N', is_t = fold(*trans) == 'T';
            scale.get()(rows, columns, alpha, part, ldb);
            plain.get()(side, &is_upper, &is_n, &is_t, diag, rows, columns, a, lda, part, ldb);
        });
    }

    Kernel<Solve> kernel_;
    static inline constinit Kernel plain{typename PlainOf<F>::Kernel()};
    static inline constinit Kernel scale{Scale<T>()};
};

} // namespace

#define TRIANGULAR(name)                                                                                               \
    namespace {                                                                                                        \
    template <> struct PlainOf<orv_##name> {                                                                           \
        using Kernel = kernels::blas::name##_pst;                                                                      \
    };                                                                                                                 \
    }                                                                                                                  \
    ORV_BLAS(11, name, Triangular, x##name)

TRIANGULAR(strmm)
TRIANGULAR(dtrmm)
TRIANGULAR(ctrmm)
TRIANGULAR(ztrmm)

TRIANGULAR(strsm)
TRIANGULAR(dtrsm)
TRIANGULAR(ctrsm)
TRIANGULAR(ztrsm)
