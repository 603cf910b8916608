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

template <auto& F> using Ger = Checked<F, [](auto... values) { return arguments::ger(values...); }>;

} // namespace

ORV_BLAS(11, sgemv, Gemv, xsgemv)
ORV_BLAS(11, dgemv, Gemv, xdgemv)
ORV_BLAS(11, cgemv, Gemv, xcgemv)
ORV_BLAS(11, zgemv, Gemv, xzgemv)

ORV_BLAS(9, dger, Ger, dger)
