// Level 2: arguments checked, operations on large matrices shared among threads.
//
// The work is reading the matrix once, so what a thread is worth is told in bytes of it. Members get rows or columns of
// the result such that each element goes through the same operations whoever computes it.
#include "core/blas/routine.h"
#include "core/team/team.h"
#include "frame/arguments.h"

using namespace orv;
using namespace orv::core;

namespace {

// Bytes of a matrix worth a thread: reading them takes one core 0.2 ms, and waking a team that has gone to sleep can
// cost as much.
constexpr i64 grain = i64(2) << 20;

// Part `index` of `parts` of a range. Its edges are multiples of the granules of all kernels, so that no part ends in
// leftovers that the whole has not.
struct Range {
    static constexpr i64 granule = 64;
    i64 begin, size;

    Range(i64 whole, int parts, int index)
        : begin(edge(whole, parts, index)), size(edge(whole, parts, index + 1) - begin)
    {
    }

private:
    static i64 edge(i64 whole, int parts, int index)
    {
        return index == parts ? whole : whole / granule * index / parts * granule;
    }
};

// Threads for an operation that reads `elements` and is cut along a range.
template <class T> int threads_worth(double elements, i64 range)
{
    constexpr double least = 2.0 * grain / sizeof(T), most = 1e15;
    if (elements < least) return 1;
    const i64 bytes = static_cast<i64>(elements < most ? elements : most) * i64(sizeof(T));
    return static_cast<int>(max(1, min(range / Range::granule, threads_for(bytes, grain))));
}

// Elements of a vector as a vector of the same stride.
template <class T> T* part(T* x, i64 n, i64 inc, Range r)
{
    return inc < 0 ? x + (r.begin + r.size - n) * inc : x + r.begin * inc;
}

template <auto& F> class Gemv {
    using T = value_argument<F, 3>;

public:
    constexpr explicit Gemv(const char* symbol) : kernel_(symbol) {}

    orv_status operator()(const char* trans, const i64* m, const i64* n, const T* alpha, const T* a, const i64* lda,
                          const T* x, const i64* incx, const T* beta, T* y, const i64* incy)
    {
        if (const int bad = arguments::gemv(*trans, *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy)) return -bad;
        auto* const kernel = kernel_.get();
        if (kernel == nullptr) [[unlikely]]
            return last_status();

        const i64 length = fold(*trans) == 'N' ? *m : *n; // of y
        const int threads = threads_worth<T>(static_cast<double>(*m) * static_cast<double>(*n), length);
        if (threads == 1) {
            kernel(trans, m, n, alpha, a, lda, x, incx, beta, y, incy);
            return ORV_OK;
        }
        parallel(threads, [&](int index, int count) {
            const Range r(length, count, index);
            T* const to = part(y, length, *incy, r);
            if (fold(*trans) == 'N') kernel(trans, &r.size, n, alpha, a + r.begin, lda, x, incx, beta, to, incy);
            else kernel(trans, m, &r.size, alpha, a + r.begin * *lda, lda, x, incx, beta, to, incy);
        });
        return ORV_OK;
    }

private:
    Kernel<kernel_form<F>> kernel_;
};

// Routines whose kernel is all there is to them behind the check.
template <auto& F> using Gbmv = Checked<F, arguments::gbmv>;
template <auto& F> using Ger = Checked<F, arguments::ger>;
template <auto& F> using Symv = Checked<F, arguments::symv>;
template <auto& F> using Sbmv = Checked<F, arguments::sbmv>;
template <auto& F> using Spmv = Checked<F, arguments::spmv>;
template <auto& F> using Syr = Checked<F, arguments::syr>;
template <auto& F> using Spr = Checked<F, arguments::spr>;
template <auto& F> using Syr2 = Checked<F, arguments::syr2>;
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

ORV_BLAS(10, ssymv, Symv, xssymv)
ORV_BLAS(10, dsymv, Symv, xdsymv)
ORV_BLAS(10, chemv, Symv, chemv)
ORV_BLAS(10, zhemv, Symv, zhemv)

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
ORV_BLAS(7, cher, Syr, cher)
ORV_BLAS(7, zher, Syr, zher)

ORV_BLAS(6, sspr, Spr, sspr)
ORV_BLAS(6, dspr, Spr, dspr)
ORV_BLAS(6, chpr, Spr, chpr)
ORV_BLAS(6, zhpr, Spr, zhpr)

ORV_BLAS(9, ssyr2, Syr2, xssyr2)
ORV_BLAS(9, dsyr2, Syr2, xdsyr2)
ORV_BLAS(9, cher2, Syr2, cher2)
ORV_BLAS(9, zher2, Syr2, zher2)

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
