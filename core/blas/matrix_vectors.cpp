// Level 2, all but the symmetric product of full matrices (symmetric_product.cpp): arguments checked, operations on
// large matrices shared among threads.
//
// The work is reading the matrix once, so what a thread is worth is told in bytes of it. Members get rows or columns of
// the result such that each element goes through the same operations whoever computes it.
#include "core/blas/cut.h"
#include "core/blas/shared.h"
#include "frame/arguments.h"

using namespace orv;
using namespace orv::core;

namespace {

// Threads for an operation that reads so many elements and is cut in `most` parts at most.
template <class T> int threads_worth(double elements, i64 most)
{
    return threads_for(elements * sizeof(T), grain, most);
}

// By parts of y.
template <class T> struct GemvCut {
    static i64 results(const char* trans, const i64* m, const i64* n) { return fold(*trans) == 'N' ? *m : *n; }
    template <class... P> static int threads(const char* trans, const i64* m, const i64* n, P...)
    {
        return threads_worth<T>(static_cast<double>(*m) * static_cast<double>(*n), results(trans, m, n) / granule);
    }
    template <class K>
    static void run(int index, int count, K* kernel, const char* trans, const i64* m, const i64* n, const T* alpha,
                    const T* a, const i64* lda, const T* x, const i64* incx, const T* beta, T* y, const i64* incy)
    {
        const i64 length = results(trans, m, n);
        const Range r = even_part(length, count, index);
        T* const to = part(y, length, *incy, r);
        if (fold(*trans) == 'N') kernel(trans, &r.size, n, alpha, a + r.begin, lda, x, incx, beta, to, incy);
        else kernel(trans, m, &r.size, alpha, a + r.begin * *lda, lda, x, incx, beta, to, incy);
    }
};

// By columns.
template <class T> struct GerCut {
    template <class... P> static int threads(const i64* m, const i64* n, P...)
    {
        return threads_worth<T>(static_cast<double>(*m) * static_cast<double>(*n), *n / granule);
    }
    template <class K>
    static void run(int index, int count, K* kernel, const i64* m, const i64* n, const T* alpha, const T* x,
                    const i64* incx, const T* y, const i64* incy, T* a, const i64* lda)
    {
        const Range r = even_part(*n, count, index);
        kernel(m, &r.size, alpha, x, incx, part(y, *n, *incy, r), incy, a + r.begin * *lda, lda);
    }
};

template <class T> int threads_for_triangle(i64 n)
{
    return threads_worth<T>(0.5 * static_cast<double>(n) * static_cast<double>(n), most_triangle_parts(n));
}

template <class T> struct SyrCut {
    template <class... P> static int threads(const char*, const i64* n, P...)
    {
        const int threads = threads_for_triangle<T>(*n);
        return threads > 1 && member.get() != nullptr ? threads : 1;
    }
    template <class K>
    static void run(int index, int count, K*, const char* uplo, const i64* n, const T* alpha, const T* x,
                    const i64* incx, T* a, const i64* lda)
    {
        const Columns c(fold(*uplo) == 'U', *n, count, index);
        member.get()(uplo, &c.count, alpha, part(x, *n, *incx, c.rows), incx, a + c.right * *lda + c.down, lda,
                     &c.others);
    }

private:
    static inline constinit Kernel member{
        kernels::of_type<T, kernels::blas::xssyr_in_thread, kernels::blas::xdsyr_in_thread>()};
};

template <class T> struct Syr2Cut {
    template <class... P> static int threads(const char*, const i64* n, P...)
    {
        const int threads = threads_for_triangle<T>(*n);
        return threads > 1 && member.get() != nullptr ? threads : 1;
    }
    template <class K>
    static void run(int index, int count, K*, const char* uplo, const i64* n, const T* alpha, const T* x,
                    const i64* incx, const T* y, const i64* incy, T* a, const i64* lda)
    {
        const Columns c(fold(*uplo) == 'U', *n, count, index);
        member.get()(uplo, &c.count, alpha, part(x, *n, *incx, c.rows), incx, part(y, *n, *incy, c.rows), incy,
                     a + c.right * *lda + c.down, lda, &c.others);
    }

private:
    static inline constinit Kernel member{
        kernels::of_type<T, kernels::blas::xssyr2_in_thread, kernels::blas::xdsyr2_in_thread>()};
};

template <auto& F> using Gemv = Shared<F, arguments::gemv, GemvCut<value_argument<F, 3>>>;
template <auto& F> using Ger = Shared<F, arguments::ger, GerCut<value_argument<F, 2>>>;
template <auto& F> using Syr = Shared<F, arguments::syr, SyrCut<value_argument<F, 2>>>;
template <auto& F> using Syr2 = Shared<F, arguments::syr2, Syr2Cut<value_argument<F, 2>>>;

// Routines whose kernel is all there is to them behind the check.
template <auto& F> using Gbmv = Checked<F, arguments::gbmv>;
template <auto& F> using Sbmv = Checked<F, arguments::sbmv>;
template <auto& F> using Spmv = Checked<F, arguments::spmv>;
template <auto& F> using Her = Checked<F, arguments::syr>;
template <auto& F> using Spr = Checked<F, arguments::spr>;
template <auto& F> using Her2 = Checked<F, arguments::syr2>;
template <auto& F> using Spr2 = Checked<F, arguments::spr2>;
template <auto& F> using Trmv = Checked<F, arguments::trmv>;
template <auto& F> using Tbmv = Checked<F, arguments::tbmv>;
template <auto& F> using Tpmv = Checked<F, arguments::tpmv>;

} // namespace

ORV_BLAS(11, sgemv, Gemv, xsgemv)
ORV_BLAS(11, dgemv, Gemv, xdgemv)
ORV_BLAS(11, cgemv, Gemv, xcgemv)
ORV_BLAS(11, zgemv, Gemv, xzgemv)

ORV_BLAS(13, sgbmv, Gbmv, sgbmv)
ORV_BLAS(13, dgbmv, Gbmv, dgbmv)
ORV_BLAS(13, cgbmv, Gbmv, cgbmv)
ORV_BLAS(13, zgbmv, Gbmv, zgbmv)

ORV_BLAS(9, sger, Ger, sger)
ORV_BLAS(9, dger, Ger, dger)
ORV_BLAS(9, cgeru, Ger, cgeru)
ORV_BLAS(9, zgeru, Ger, zgeru)
ORV_BLAS(9, cgerc, Ger, cgerc)
ORV_BLAS(9, zgerc, Ger, zgerc)

ORV_BLAS(11, ssbmv, Sbmv, ssbmv)
ORV_BLAS(11, dsbmv, Sbmv, dsbmv)
ORV_BLAS(11, chbmv, Sbmv, chbmv)
ORV_BLAS(11, zhbmv, Sbmv, zhbmv)

ORV_BLAS(9, sspmv, Spmv, sspmv)
ORV_BLAS(9, dspmv, Spmv, dspmv)
ORV_BLAS(9, chpmv, Spmv, chpmv)
ORV_BLAS(9, zhpmv, Spmv, zhpmv)

ORV_BLAS(7, ssyr, Syr, xssyr)
ORV_BLAS(7, dsyr, Syr, xdsyr)
ORV_BLAS(7, cher, Her, cher)
ORV_BLAS(7, zher, Her, zher)

ORV_BLAS(6, sspr, Spr, sspr)
ORV_BLAS(6, dspr, Spr, dspr)
ORV_BLAS(6, chpr, Spr, chpr)
ORV_BLAS(6, zhpr, Spr, zhpr)

ORV_BLAS(9, ssyr2, Syr2, xssyr2)
ORV_BLAS(9, dsyr2, Syr2, xdsyr2)
ORV_BLAS(9, cher2, Her2, cher2)
ORV_BLAS(9, zher2, Her2, zher2)

ORV_BLAS(8, sspr2, Spr2, sspr2)
ORV_BLAS(8, dspr2, Spr2, dspr2)
ORV_BLAS(8, chpr2, Spr2, chpr2)
ORV_BLAS(8, zhpr2, Spr2, zhpr2)

ORV_BLAS(8, strmv, Trmv, xstrmv)
ORV_BLAS(8, dtrmv, Trmv, xdtrmv)
ORV_BLAS(8, ctrmv, Trmv, xctrmv)
ORV_BLAS(8, ztrmv, Trmv, xztrmv)

ORV_BLAS(8, strsv, Trmv, strsv)
ORV_BLAS(8, dtrsv, Trmv, xdtrsv)
ORV_BLAS(8, ctrsv, Trmv, ctrsv)
ORV_BLAS(8, ztrsv, Trmv, ztrsv)

ORV_BLAS(9, stbmv, Tbmv, stbmv)
ORV_BLAS(9, dtbmv, Tbmv, dtbmv)
ORV_BLAS(9, ctbmv, Tbmv, ctbmv)
ORV_BLAS(9, ztbmv, Tbmv, ztbmv)

ORV_BLAS(9, stbsv, Tbmv, stbsv)
ORV_BLAS(9, dtbsv, Tbmv, dtbsv)
ORV_BLAS(9, ctbsv, Tbmv, ctbsv)
ORV_BLAS(9, ztbsv, Tbmv, ztbsv)

ORV_BLAS(7, stpmv, Tpmv, stpmv)
ORV_BLAS(7, dtpmv, Tpmv, dtpmv)
ORV_BLAS(7, ctpmv, Tpmv, ctpmv)
ORV_BLAS(7, ztpmv, Tpmv, ztpmv)

ORV_BLAS(7, stpsv, Tpmv, stpsv)
ORV_BLAS(7, dtpsv, Tpmv, dtpsv)
ORV_BLAS(7, ctpsv, Tpmv, ctpsv)
ORV_BLAS(7, ztpsv, Tpmv, ztpsv)
