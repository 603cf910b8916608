// One dimension through the linear convolution of the signal primitives, which knows its own ways to be fast. It is
// called by its exported name, so that a program that has a faster one can put it in its place.
#pragma once

#include "conv/memory.h"
#include "conv/problem.h"
#include "frame/kernels/dft_primitives.h"

namespace orv::conv {

inline i32 full_convolution(const float* x, i32 nx, const float* y, i32 ny, float* z)
{
    using namespace kernels::dft;
    return DFT(ympsConv_32f)(x, nx, y, ny, z);
}
inline i32 full_convolution(const double* x, i32 nx, const double* y, i32 ny, double* z)
{
    using namespace kernels::dft;
    return DFT(ympsConv_64f)(x, nx, y, ny, z);
}

// part(element) of all elements, as reals without gaps: a copy, or the elements themselves where they are given.
template <class R> class Plane {
public:
    template <class T, class Part>
    Plane(const View<const T>& v, Part part, const R* themselves = nullptr)
        : block_(v.n[0], themselves == nullptr), at_(themselves), n_(static_cast<i32>(v.n[0]))
    {
        if (block_.data() == nullptr) return;
        for (i64 i = 0; i < n_; ++i) block_.data()[i] = static_cast<R>(part(v.at[i * v.step[0]]));
        at_ = block_.data();
    }
    bool refused() const { return block_.refused(); }

    // z := this * y in full.
    Status convolve(const Plane& y, R* z) const
    {
        return full_convolution(at_, n_, y.at_, y.n_, z) == 0 ? ok : transform_failed;
    }

private:
    Block<R> block_;
    const R* at_;
    i32 n_;
};

// z := the outputs that p asks for out of a full result.
template <class E, class T> void cut_out(const Problem<T>& p, E* full)
{
    i64 lengths[most_dimensions], offset[most_dimensions];
    for (i32 d = 0; d < p.z.rank; ++d) lengths[d] = p.full(d), offset[d] = p.offset(d);
    copy(View<E>::dense(full, p.z.rank, lengths).part(offset, p.z.n, p.step), p.z);
}

// The first operand with its elements in the order of a convolution.
template <class T> View<const T> convolved_x(const Problem<T>& p) { return p.correlates ? p.x.reversed() : p.x; }

// Only z itself without gaps receives the result where all of it is asked for; z from its end does not.
template <class I, class T> Status convolve_reals(const Problem<T>& p)
{
    constexpr auto itself = [](T v) { return v; };
    const I *x_itself = nullptr, *y_itself = nullptr;
    I* z = nullptr;
    if constexpr (std::is_same_v<I, T>) {
        if (!p.correlates && p.x.step[0] == 1) x_itself = p.x.at;
        if (p.y.step[0] == 1) y_itself = p.y.at;
        if (p.z.step[0] == 1 && p.z.n[0] == p.full(0)) z = p.z.at;
    }
    const Plane<I> x(convolved_x(p), itself, x_itself);
    if (x.refused()) return no_memory;
    const Plane<I> y(p.y, itself, y_itself);
    if (y.refused()) return no_memory;
    const Block<I> work(p.full(0), z == nullptr);
    if (work.refused()) return no_memory;
    const Status status = x.convolve(y, z != nullptr ? z : work.data());
    if (status == ok && z == nullptr) cut_out(p, work.data());
    return status;
}

template <class R> void subtract(const R* from, R* to, i64 n)
{
    each<R, 1>(
        n, [&](i64 i, auto) ORV_INLINE_LAMBDA { storeu(to + i, loadu(to + i) - loadu(from + i)); },
        [&](i64 i) ORV_INLINE_LAMBDA { to[i] -= from[i]; });
}

// Four convolutions of the parts; z is written when all of them are there.
template <class I, class T> Status convolve_pairs(const Problem<T>& p)
{
    using R = real_t<I>;
    constexpr auto re = [](T v) { return v.re; };
    constexpr auto im = [](T v) { return v.im; };
    const i64 full = p.full(0);
    const Plane<R> x_re(convolved_x(p), re);
    if (x_re.refused()) return no_memory;
    const Plane<R> x_im(convolved_x(p), im);
    if (x_im.refused()) return no_memory;
    const Plane<R> y_re(p.y, re);
    if (y_re.refused()) return no_memory;
    const Plane<R> y_im(p.y, im);
    if (y_im.refused()) return no_memory;
    const Block<R> z_re(full);
    if (z_re.refused()) return no_memory;
    const Block<R> z_im(full);
    if (z_im.refused()) return no_memory;
    const Block<R> work(full);
    if (work.refused()) return no_memory;

    R *const z_of_re = z_re.data(), *const z_of_im = z_im.data(), *const other = work.data();
    if (const Status s = x_re.convolve(y_re, z_of_re)) return s;
    if (const Status s = x_im.convolve(y_im, other)) return s;
    subtract(other, z_of_re, full);
    if (const Status s = x_re.convolve(y_im, z_of_im)) return s;
    if (const Status s = x_im.convolve(y_re, other)) return s;
    const i64 offset = p.offset(0);
    for (i64 j = 0; j < p.z.n[0]; ++j) {
        const i64 i = offset + j * p.step[0];
        p.z.at[j * p.z.step[0]] = as<T>(I{z_of_re[i], z_of_im[i] + other[i]});
    }
    return ok;
}

} // namespace orv::conv
