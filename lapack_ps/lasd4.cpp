// One root of the secular equation of a rank-one modification of squares: sigma^2 is the i-th smallest eigenvalue of
// diag(d)^2 + rho*z*z^T, so sigma is the root of
//
//   w(x) = 1/rho + sum over j of z[j]^2 / (d[j]^2 - x^2)          0 <= d[0] < d[1] < .., rho > 0, z of norm one
//
// between d[i-1] and d[i], or above d[n-1] for i = n. Besides sigma, delta receives d[j] - sigma and work d[j] + sigma.
// Neither is formed from sigma, which may agree with a pole to all its digits, but from tau, sigma's distance to the
// nearer pole (the origin).
//
//   n = 1      sigma = sqrt(d[0]^2 + rho*z[0]^2), delta[0] = work[0] = 1
//   n = 2      the public routine for two poles
//   info = 1   no root within 400 iterations; what is given is the last iterate. So it is when the public routine for
//              three poles finds none: info is what that routine told.
//
// Published source: R.-C. Li, Solving secular equations stably and efficiently, LAPACK Working Note 89, 1994.
#include "frame/kernels/lapack_ps.h"
#include "frame/simd.h"
#include "lapack_ps/front_ends.h"
#include "lapack_ps/scalar.h"

#include <bit>
#include <tuple>
#include <utility>

namespace orv::lapack {
namespace {

constexpr i64 iterations = 400;

template <class R> R square(R x) { return x * x; }
template <class R> R larger(R a, R b) { return a > b ? a : b; }
template <class R> R smaller(R a, R b) { return a < b ? a : b; }

// A power of two that brings numbers of this size close to 1; 1 where fourth powers of them are in range anyway.
template <class R> R scale_for(R size)
{
    constexpr bool single = sizeof(R) == 4;
    using Bits = std::conditional_t<single, std::uint32_t, std::uint64_t>;
    constexpr int fraction = single ? 23 : 52, bias = single ? 127 : 1023, comfortable = bias / 8;
    const int exponent = static_cast<int>(std::bit_cast<Bits>(size) >> fraction & (2 * bias + 1)) - bias;
    if ((exponent >= -comfortable && exponent <= comfortable) || exponent > bias) return 1; // or infinity, or NaN
    const int wanted = exponent < 1 - bias ? bias - 1 : exponent > bias - 1 ? 1 - bias : -exponent;
    return std::bit_cast<R>(static_cast<Bits>(wanted + bias) << fraction);
}

// The two roots of c*x^2 - a*x + b without cancellation: (a - sqrt(..)) / (2*c), and (a + sqrt(..)) / (2*c).
template <class R> R minus_root(R a, R b, R c)
{
    const R discriminant = square_root(magnitude(a * a - 4 * b * c));
    return c == 0 ? b / a : a <= 0 ? (a - discriminant) / (2 * c) : 2 * b / (a + discriminant);
}
template <class R> R plus_root(R a, R b, R c)
{
    const R discriminant = square_root(magnitude(a * a - 4 * b * c));
    return c == 0 ? b / a : a >= 0 ? (a + discriminant) / (2 * c) : 2 * b / (a - discriminant);
}

// Poles on one side of the root: the sum of their terms, its derivative, and the sum of all partial sums, which bounds
// what rounding does to the value. Of one pole after another, or of as many chains as a register has lanes.
template <class V> struct Side {
    V value{}, slope{}, partial_sums{};

    ORV_INLINE void add(V z, V distance)
    {
        const V quotient = z / distance;
        value += z * quotient;
        slope += quotient * quotient;
        partial_sums += value;
    }
};

template <class R> Side<R> together(const Side<vec<R>>& lanes)
{
    const auto sum = [](vec<R> a) { return first_lane(fold_lanes(a)); };
    return {sum(lanes.value), sum(lanes.slope), sum(lanes.partial_sums)};
}

template <class R> class SecularEquation {
public:
    SecularEquation(i64 n, i64 i, const R* d, const R* z, R* delta, R rho, R* work)
        : n_(n), left_(i < n ? i - 1 : n - 2), last_(i == n), d_(d), z_(z), delta_(delta), work_(work),
          scale_(scale_for(larger(magnitude(d[n - 1]), square_root(rho)))), rho_(rho * scale_ * scale_)
    {
    }

    i64 solve(R& sigma)
    {
        const i64 info = iterate();
        sigma = sigma_ / scale_;
        if (scale_ != 1)
            for (i64 j = 0; j < n_; ++j) delta_[j] /= scale_, work_[j] /= scale_;
        return info;
    }

private:
    static constexpr i64 lanes = vec<R>::lanes;

    R pole(i64 j) const { return d_[j] * scale_; }
    R distance(i64 j) const { return delta_[j] * work_[j]; } // d[j]^2 - sigma^2
    R from_left_to_right() const { return (pole(left_ + 1) - pole(left_)) * (pole(left_ + 1) + pole(left_)); }
    bool origin_is_left() const { return origin_ == left_; }

    // From a difference of squares to the difference: how far sigma is from base if sigma^2 - base^2 = square.
    static R linear(R base, R square_) { return square_ / (base + square_root(base * base + square_)); }

    void move_to(R tau)
    {
        const R from = pole(origin_);
        tau_ = tau, sigma_ = from + tau;
        const auto move = [&](auto d, auto scale, auto from, auto tau) ORV_INLINE_LAMBDA {
            return std::pair((d * scale - from) - tau, (d * scale + from) + tau);
        };
        i64 j = 0;
        for (; j + lanes <= n_; j += lanes) {
            const auto [difference, sum] = move(loadu(d_ + j), splat(scale_), splat(from), splat(tau));
            storeu(delta_ + j, difference), storeu(work_ + j, sum);
        }
        for (; j < n_; ++j) std::tie(delta_[j], work_[j]) = move(d_[j], scale_, from, tau);
    }

    vec<R> distances(i64 j) const { return loadu(delta_ + j) * loadu(work_ + j); }

    // From the ends towards the root.
    Side<R> below(i64 end) const
    {
        Side<vec<R>> wide;
        i64 j = 0;
        for (; j + lanes <= end; j += lanes) wide.add(loadu(z_ + j), distances(j));
        Side<R> psi = together<R>(wide);
        for (; j < end; ++j) psi.add(z_[j], distance(j));
        return psi;
    }
    Side<R> above(i64 begin) const
    {
        Side<vec<R>> wide;
        i64 j = n_;
        for (; j - lanes > begin; j -= lanes) wide.add(loadu(z_ + j - lanes), distances(j - lanes));
        Side<R> phi = together<R>(wide);
        for (; j - 1 > begin; --j) phi.add(z_[j - 1], distance(j - 1));
        return phi;
    }

    // The equation's value halfway between the bounds of sigma^2 tells which half the root is in, and so the origin.
    // With the terms of all other poles kept as they are there, the two poles at hand give the start.
    void start()
    {
        const i64 right = left_ + 1;
        const R gap = from_left_to_right();
        R halfway, bound;
        if (last_) {
            origin_ = right;
            halfway = linear(pole(right), rho_ / 2);
            R norm = 0; // no more than 1, but for rounding
            for (i64 j = 0; j < n_; ++j) norm += square(z_[j]);
            bound = linear(pole(right), 2 * larger(R(1), norm) * rho_);
        } else {
            origin_ = left_;
            halfway = linear(pole(left_), gap / 2);
            bound = 0;
        }
        move_to(halfway);
        const R c = rho_inverse_ + below(left_).value + above(right).value;
        const R zz_left = square(z_[left_]), zz_right = square(z_[right]);
        const R w = c + zz_left / distance(left_) + zz_right / distance(right);

        R squares; // sigma^2 less the origin's square
        if (last_) {
            low_ = w <= 0 ? halfway : 0, high_ = w <= 0 ? bound : halfway;
            squares = plus_root(zz_left + zz_right - c * gap, -zz_right * gap, c);
            if (w <= 0 && !(c > 0 && squares < rho_)) squares = rho_;
        } else if (w > 0) {
            low_ = 0, high_ = halfway;
            squares = minus_root(zz_left + zz_right + c * gap, zz_left * gap, c);
        } else {
            origin_ = right;
            low_ = linear(pole(right), -gap / 2), high_ = 0;
            squares = minus_root(zz_left + zz_right - c * gap, -zz_right * gap, c);
        }
        move_to(linear(pole(origin_), squares));
    }

    void evaluate()
    {
        psi_ = below(origin_), phi_ = above(origin_);
        const R quotient = z_[origin_] / distance(origin_), term = z_[origin_] * quotient;
        others_ = rho_inverse_ + phi_.value + psi_.value;
        own_slope_ = quotient * quotient;
        slope_ = psi_.slope + phi_.slope + own_slope_;
        w_ = others_ + term;
        error_ = 8 * (phi_.value - psi_.value) + magnitude(psi_.partial_sums) + phi_.partial_sums + 2 * rho_inverse_ +
                 3 * magnitude(term) + magnitude(distance(origin_)) * slope_;
    }

    // Steps are differences of squares: to the root of a function with few poles that agrees with w in value and slope.
    // In one scheme a pole beside the origin keeps its own weight; in the other, weighted one, the slopes of the sums
    // on either side make the weights.
    R step_by_two_poles() const
    {
        const i64 right = left_ + 1;
        const R to_left = distance(left_), to_right = distance(right);
        R c;
        if (weighted_)
            c = w_ - to_left * (psi_.slope + (origin_is_left() ? own_slope_ : 0)) -
                to_right * (phi_.slope + (origin_is_left() ? 0 : own_slope_));
        else if (origin_is_left()) c = w_ - to_right * slope_ + from_left_to_right() * square(z_[left_] / to_left);
        else c = w_ - to_left * slope_ - from_left_to_right() * square(z_[right] / to_right);
        const R a = (to_left + to_right) * w_ - to_left * to_right * slope_, b = to_left * to_right * w_;
        return last_ ? plus_root(a, b, c) : minus_root(a, b, c);
    }

    R step_by_three_poles(i64 iteration, i64& info) const
    {
        const i64 under = origin_ - 1, over = origin_ + 1;
        const R to_under = distance(under), to_over = distance(over);
        const R slopes = psi_.slope + phi_.slope, gap = (pole(over) - pole(under)) * (pole(over) + pole(under));
        R c, zz_under, zz_over;
        if (weighted_) {
            c = others_ - to_under * psi_.slope - to_over * phi_.slope;
            zz_under = square(to_under) * psi_.slope, zz_over = square(to_over) * phi_.slope;
        } else if (origin_is_left()) {
            const R own = square(z_[under] / to_under);
            c = (others_ - to_over * slopes) + gap * own;
            zz_under = square(z_[under]), zz_over = square(to_over) * (larger(psi_.slope - own, R(0)) + phi_.slope);
        } else {
            const R own = square(z_[over] / to_over);
            c = (others_ - to_under * slopes) - gap * own;
            zz_over = square(z_[over]), zz_under = square(to_under) * (psi_.slope + larger(phi_.slope - own, R(0)));
        }
        const R distances[] = {to_under, distance(origin_), to_over},
                weights[] = {zz_under, square(z_[origin_]), zz_over};
        R step;
        front::laed6(iteration, origin_is_left(), c, distances, weights, w_, &step, &info);
        return step;
    }

    void narrow()
    {
        if (w_ <= 0) low_ = larger(low_, tau_);
        else high_ = smaller(high_, tau_);
    }

    void take(R step)
    {
        if (w_ * step >= 0) step = -w_ / slope_; // Newton's goes the right way
        const R tau = tau_ + linear(sigma_, step);
        if (tau >= low_ && tau <= high_) move_to(tau);
        else move_to(tau_ + ((w_ < 0 ? high_ : low_) - tau_) / 2); // also where the step is NaN
    }

    bool found(R epsilon) const { return magnitude(w_) <= epsilon * error_; }

    i64 iterate()
    {
        const R epsilon = front::lamch<R>("Epsilon");
        rho_inverse_ = 1 / rho_;
        start();
        evaluate();
        weighted_ = last_;
        // The two poles beside the origin both count if without the origin's own term the root would not lie between
        // the origin and the pole that it lies beside.
        const bool three = !last_ && origin_ > 0 && origin_ < n_ - 1 && (origin_is_left() ? others_ < 0 : others_ > 0);

        for (i64 iteration = 2; iteration <= iterations; ++iteration) { // the start was the first
            if (found(epsilon)) return 0;
            narrow();
            i64 info = 0;
            const R step = three ? step_by_three_poles(iteration, info) : step_by_two_poles();
            if (info != 0) return info;
            const R before = w_;
            take(step);
            evaluate();
            // A step that does not leave a tenth of the error calls for the other scheme.
            if (!last_ && magnitude(w_) > magnitude(before) / 10) weighted_ = !weighted_;
        }
        return 1;
    }

    i64 n_, left_; // the root lies right of pole left_: before pole left_ + 1, or if it is the last one beyond
    bool last_;
    const R *d_, *z_;
    R *delta_, *work_;
    R scale_, rho_, rho_inverse_;

    i64 origin_;
    R tau_, sigma_, low_, high_; // low_ <= tau_ <= high_
    Side<R> psi_, phi_;          // the poles below the origin and above it
    R others_, own_slope_, slope_, w_, error_;
    bool weighted_;
};

template <class R> i64 lasd4(i64 n, i64 i, const R* d, const R* z, R* delta, R rho, R* sigma, R* work)
{
    if (n == 1) {
        *sigma = square_root(d[0] * d[0] + rho * z[0] * z[0]);
        delta[0] = work[0] = 1;
        return 0;
    }
    if (n == 2) {
        front::lasd5(i, d, z, delta, rho, sigma, work);
        return 0;
    }
    return SecularEquation<R>(n, i, d, z, delta, rho, work).solve(*sigma);
}

} // namespace
} // namespace orv::lapack

using namespace orv;

#define LASD4(name, T)                                                                                                 \
    ORV_EXPORT void LAPACK_PS(name)(const i64* n, const i64* i, const T* d, const T* z, T* delta, const T* rho,        \
                                    T* sigma, T* work, i64* info)                                                      \
    {                                                                                                                  \
        *info = lapack::lasd4(*n, *i, d, z, delta, *rho, sigma, work);                                                 \
    }

LASD4(slasd4, float)
LASD4(dlasd4, double)
