// Sums of squares that neither overflow nor underflow: orv_lapack_?lassq.
//
//   scale^2 * sumsq  :=  scale^2 * sumsq + sum of |x(i)|^2
//
//   n       not positive: nothing is done
//   x       n elements; a negative stride starts at the far end, 0 takes the one location n times
//   scale, sumsq   both not negative; a NaN in either stays as it is
//
// A NaN in x makes sumsq NaN; an infinity makes it infinite. In the range where no square can overflow or lose digits,
// scale becomes 1. Singles are summed in double, where every square is exact and in range. Doubles are summed plainly,
// chunk by chunk, and a chunk whose sum is out of the safe range once more in three sums of scaled squares, by the
// constants of Blue's algorithm (ACM TOMS 4 (1978) 15-23; Anderson, ACM TOMS 44 (2017) 12).
#include "frame/export.h"
#include "frame/imports.h"

#include <cmath>
#include <limits>

using namespace orv;

namespace {

consteval double power(int exponent)
{
    double x = 1;
    for (; exponent > 0; --exponent) x *= 2;
    for (; exponent < 0; ++exponent) x /= 2;
    return x;
}

template <class R> double square(R x) { return double(x) * double(x); }
template <class R> double square(cpx<R> x) { return square(x.re) + square(x.im); }

// Squares of n elements from x on, in sums that do not wait for one another.
template <class T> double plain_sum(i64 n, const T* x, i64 inc)
{
    double sum[8] = {};
    i64 i = 0;
    if (inc == 1) {
        for (; i + 8 <= n; i += 8)
#pragma GCC unroll 8
            for (int k = 0; k < 8; ++k) sum[k] += square(x[i + k]);
    }
    for (; i < n; ++i) sum[0] += square(x[i * inc]);
    return ((sum[0] + sum[1]) + (sum[2] + sum[3])) + ((sum[4] + sum[5]) + (sum[6] + sum[7]));
}

// Of singles. Where the sum is no single of full precision, or might not stay one, the scale is a power of two that
// makes it one.
template <class T> void add(i64 n, const T* x, i64 inc, float& scale, float& sumsq)
{
    const double sum = square(scale) * sumsq + plain_sum(n, x, inc);
    const double factor = sum > power(100) ? power(90) : sum < power(-100) && sum > 0 ? power(-100) : 1;
    scale = static_cast<float>(factor);
    sumsq = static_cast<float>(sum / factor / factor);
}

// Three sums of squares: of numbers whose squares might overflow, scaled down; of those whose squares lose digits,
// scaled up; of all others, among them NaN.
class Sums {
public:
    void add(double x)
    {
        const double a = std::fabs(x);
        if (a > large) big_ += square(down * a);
        else if (a < little) small_ += square(up * a);
        else middle_ += a * a;
    }
    void add(cpx<double> x) { add(x.re), add(x.im); }
    void add_square(double scale, double sumsq)
    {
        const double a = scale * std::sqrt(sumsq);
        if (a > large) big_ += (down * scale) * ((down * scale) * sumsq);
        else if (a < little) small_ += (up * scale) * ((up * scale) * sumsq);
        else middle_ += scale * (scale * sumsq);
    }
    void add_sum(double sum) { middle_ += sum; }

    void put(double& scale, double& sumsq) const
    {
        const bool middle = !(middle_ == 0); // NaN counts
        if (big_ > 0) scale = 1 / down, sumsq = big_ + (middle ? middle_ * down * down : 0);
        else if (small_ > 0 && !middle) scale = 1 / up, sumsq = small_;
        else scale = 1, sumsq = middle_ + small_ / up / up;
    }

private:
    static constexpr double little = power(-511), large = power(486), up = power(537), down = power(-538);
    double big_ = 0, middle_ = 0, small_ = 0;
};

template <class T> void add(i64 n, const T* x, i64 inc, double& scale, double& sumsq)
{
    constexpr i64 chunk = 512; // read a second time from the nearest cache
    // Below, squares that underflow might count; above, a few thousand million sums might overflow.
    constexpr double least = power(-900), most = power(960);
    Sums sums;
    sums.add_square(scale, sumsq);
    for (i64 from = 0; from < n; from += chunk) {
        const i64 count = min(chunk, n - from);
        const T* const at = x + from * inc;
        const double sum = plain_sum(count, at, inc);
        if (sum >= least && sum <= most) sums.add_sum(sum);
        else
            for (i64 i = 0; i < count; ++i) sums.add(at[i * inc]);
    }
    sums.put(scale, sumsq);
}

template <class T> void lassq(i64 n, const T* x, i64 inc, real_t<T>& scale, real_t<T>& sumsq)
{
    if (n <= 0 || std::isnan(scale) || std::isnan(sumsq)) return;
    add(n, first(x, n, inc), inc, scale, sumsq);
}

} // namespace

#define LASSQ(name, T)                                                                                                 \
    ORV_EXPORT void orv_lapack_##name(const i64* n, const T* x, const i64* incx, real_t<T>* scale, real_t<T>* sumsq)   \
    {                                                                                                                  \
        lassq(*n, x, *incx, *scale, *sumsq);                                                                           \
    }

LASSQ(slassq, float)
LASSQ(dlassq, double)
LASSQ(classq, cpx<float>)
LASSQ(zlassq, cpx<double>)
