// Public LAPACK routines that the kernel of the secular equation asks for.
//
//   orv_lapack_?lamc3   a + b, rounded to working precision whatever registers hold
//   orv_lapack_?lasd5   the roots of 1 + rho*(z1^2/(d1^2 - x^2) + z2^2/(d2^2 - x^2)), 0 <= d1 < d2, rho > 0
//   orv_lapack_?laed6   the root next to 0 of rho + z1/(d1 - x) + z2/(d2 - x) + z3/(d3 - x), d1 < d2 < d3, z > 0
//
// Published source: R.-C. Li, Solving secular equations stably and efficiently, LAPACK Working Note 89, 1994; its fixed
// weights of the third order after Gragg, Thornton and Warner. Arguments by pointer; a Fortran logical is an integer.
#include "frame/export.h"
#include "frame/imports.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orv::core {
namespace {

// Powers of two that cancel: 2^exponent takes a number of this size to between 1 and 2, within what can be represented.
template <class R> int to_unity(R size)
{
    constexpr int limit = std::numeric_limits<R>::max_exponent - 2;
    return size > 0 && std::isfinite(size) ? std::clamp(-std::ilogb(size), -limit, limit) : 0;
}

// Root number i (1 or 2) of two poles. delta receives d - sigma, work d + sigma: neither is formed from sigma, which
// may agree with a pole to all its digits, but from tau, sigma's distance to the pole that lies nearer.
template <class R> void lasd5(i64 i, const R* d, const R* z, R* delta, R rho, R* sigma, R* work)
{
    // By powers of two, squares stay in range, and results are the same but for that.
    const int exponent =
        to_unity(std::max(std::fabs(d[1]), std::sqrt(rho) * std::max(std::fabs(z[0]), std::fabs(z[1]))));
    const auto scaled = [=](R x) { return std::scalbn(x, exponent); };
    const R d1 = scaled(d[0]), d2 = scaled(d[1]);
    const R weight = scaled(scaled(rho)), first = weight * z[0] * z[0], second = weight * z[1] * z[1];
    const R gap = d2 - d1, gap_of_squares = gap * (d2 + d1);

    // The function halfway between the poles tells which one is nearer; the second root lies beyond both.
    const R halfway = 1 + 4 * (second / (d1 + 3 * d2) - first / (3 * d1 + d2)) / gap;
    const bool from_left = i == 1 && halfway > 0;

    // sigma^2 - pole^2 solves x^2 - b*x + c = 0 from the left pole, x^2 - b*x - c = 0 from the right one.
    R tau;
    if (from_left) {
        const R b = gap_of_squares + (first + second), c = first * gap_of_squares;
        tau = 2 * c / (b + std::sqrt(std::fabs(b * b - 4 * c)));
    } else {
        const R b = (first + second) - gap_of_squares, c = second * gap_of_squares;
        const R root = std::sqrt(b * b + 4 * c);
        if (i == 1) tau = b > 0 ? -2 * c / (b + root) : (b - root) / 2;
        else tau = b > 0 ? (b + root) / 2 : 2 * c / (root - b);
    }
    const R pole = from_left ? d1 : d2;
    tau /= pole + std::sqrt(std::fabs(pole * pole + tau));

    const auto original = [=](R x) { return std::scalbn(x, -exponent); };
    *sigma = original(pole + tau);
    delta[0] = original(from_left ? -tau : -(gap + tau));
    delta[1] = original(from_left ? gap - tau : -tau);
    work[0] = original(d1 + (pole + tau));
    work[1] = original(d2 + (pole + tau));
}

// The root (a - sqrt(a^2 - 4*b*c)) / (2*c) of c*x^2 - a*x + b, without cancellation.
template <class R> R quadratic_root(R a, R b, R c)
{
    const R size = std::max({std::fabs(a), std::fabs(b), std::fabs(c)});
    a /= size, b /= size, c /= size;
    if (c == 0) return b / a;
    const R root = std::sqrt(std::fabs(a * a - 4 * b * c));
    return a <= 0 ? (a - root) / (2 * c) : 2 * b / (a + root);
}

template <class R> class ThreePoles {
public:
    ThreePoles(bool upper, R rho, const R* d, const R* z, R f_at_0) : upper_(upper), rho_(rho), at_0_(f_at_0)
    {
        std::copy_n(d, 3, d_), std::copy_n(z, 3, z_);
        low_ = f_at_0 < 0 ? 0 : left_pole();
        high_ = f_at_0 < 0 ? right_pole() : 0;
    }

    // The root, into tau; false if it was not found.
    bool solve(bool estimate, R& tau)
    {
        tau = estimate ? start() : 0;
        const int exponent = bring_into_range(tau);
        const bool found = iterate(tau);
        tau = std::scalbn(tau, -exponent);
        return found;
    }

private:
    static constexpr R epsilon = std::numeric_limits<R>::epsilon() / 2;
    static constexpr int iterations = 40;

    struct Value {
        R f, slope, curvature, error;
        bool pole;
    };

    // The two poles that the root lies between.
    R left_pole() const { return d_[upper_ ? 1 : 0]; }
    R right_pole() const { return d_[upper_ ? 2 : 1]; }

    // The root with the third pole's term fixed at its value in the middle of the interval; 0 if that is no better.
    R start()
    {
        const int outer = upper_ ? 2 : 0, third = 2 - outer; // the root lies between d_[1] and d_[outer]
        const R half = (d_[outer] - d_[1]) / 2;
        const R c = rho_ + z_[third] / ((d_[third] - d_[1]) - half);
        const R a = c * (d_[1] + d_[outer]) + z_[1] + z_[outer];
        const R b = c * d_[1] * d_[outer] + z_[1] * d_[outer] + z_[outer] * d_[1];
        R tau = quadratic_root(a, b, c);
        if (tau < low_ || tau > high_) tau = (low_ + high_) / 2;
        const Value value = at(tau);
        if (value.pole) return 0;
        (value.f <= 0 ? low_ : high_) = tau;
        return std::fabs(at_0_) <= std::fabs(value.f) ? 0 : tau;
    }

    // Third powers of reciprocal distances appear: where they would overflow, all distances and weights are multiplied
    // by a power of two, which leaves the function's values what they are. Returns its exponent.
    int bring_into_range(R& tau)
    {
        constexpr int third = std::numeric_limits<R>::max_exponent / 3;
        const int needed = to_unity(std::min(std::fabs(left_pole() - tau), std::fabs(right_pole() - tau)));
        if (needed < third) return 0;
        const int exponent = std::min(needed, 2 * third);
        for (R* x : {d_, d_ + 1, d_ + 2, z_, z_ + 1, z_ + 2, &tau, &low_, &high_}) *x = std::scalbn(*x, exponent);
        return exponent;
    }

    // The function is its value at 0 and tau times a sum: so little is lost where the root is close to 0.
    Value at(R tau) const
    {
        R sum = 0, magnitudes = 0, slope = 0, curvature = 0;
        bool pole = false;
        for (int i = 0; i < 3; ++i) {
            const R distance = d_[i] - tau;
            pole |= distance == 0;
            const R once = z_[i] / distance, twice = once / distance;
            sum += once / d_[i];
            magnitudes += std::fabs(once / d_[i]);
            slope += twice;
            curvature += twice / distance;
        }
        const R error = 8 * (std::fabs(at_0_) + std::fabs(tau) * magnitudes) + std::fabs(tau) * slope;
        return {at_0_ + tau * sum, slope, curvature, error, pole};
    }

    bool iterate(R& tau)
    {
        for (int trips = 0; trips < iterations; ++trips) {
            const Value value = at(tau);
            const R f = value.f;
            if (value.pole || std::fabs(f) <= 4 * epsilon * value.error || high_ - low_ <= 4 * epsilon * std::fabs(tau))
                return true;
            (f <= 0 ? low_ : high_) = tau;
            // A function of the two poles and a constant that agrees with this one in value and two derivatives.
            const R to_left = left_pole() - tau, to_right = right_pole() - tau;
            const R sum = to_left + to_right, product = to_left * to_right;
            R step = quadratic_root(sum * f - product * value.slope, product * f,
                                    f - sum * value.slope + product * value.curvature);
            if (f * step >= 0) step = -f / value.slope;
            tau += step;
            if (tau < low_ || tau > high_) tau = (low_ + high_) / 2;
        }
        return false;
    }

    bool upper_;
    R rho_, at_0_, d_[3], z_[3], low_, high_;
};

} // namespace
} // namespace orv::core

using namespace orv;

#define SECULAR(t, T)                                                                                                  \
    ORV_EXPORT T orv_lapack_##t##lamc3(const T* a, const T* b) { return *a + *b; }                                     \
    ORV_EXPORT void orv_lapack_##t##lasd5(const i64* i, const T* d, const T* z, T* delta, const T* rho, T* sigma,      \
                                          T* work)                                                                     \
    {                                                                                                                  \
        core::lasd5(*i, d, z, delta, *rho, sigma, work);                                                               \
    }                                                                                                                  \
    ORV_EXPORT void orv_lapack_##t##laed6(const i64* iteration, const i64* orgati, const T* rho, const T* d,           \
                                          const T* z, const T* f_at_0, T* tau, i64* info)                              \
    {                                                                                                                  \
        core::ThreePoles<T> poles(*orgati != 0, *rho, d, z, *f_at_0);                                                  \
        *info = poles.solve(*iteration == 2, *tau) ? 0 : 1;                                                            \
    }

SECULAR(s, float)
SECULAR(d, double)
