// Arrays of up to seven dimensions, whatever their strides: element (i0, i1, ...) stands at at + i0*step[0] + ...
#pragma once

#include "frame/kernels/conv.h"
#include "frame/simd.h"

namespace orv::conv {

template <class T> struct View {
    T* at;
    i32 rank;
    i64 n[most_dimensions], step[most_dimensions];

    // By the arguments of kernels: a stride below 0 counts from the last element.
    [[gnu::noinline]] static View of(T* at, i32 rank, const i32* shape, const i32* stride)
    {
        View v{at, rank, {}, {}};
        for (i32 d = 0; d < rank; ++d) {
            v.n[d] = shape[d], v.step[d] = stride[d];
            v.at = first(v.at, v.n[d], v.step[d]);
        }
        return v;
    }
    // Without gaps.
    [[gnu::noinline]] static View dense(T* at, i32 rank, const i64* n)
    {
        View v{at, rank, {}, {}};
        for (i32 d = 0; d < rank; ++d) v.n[d] = n[d], v.step[d] = d == 0 ? 1 : v.step[d - 1] * v.n[d - 1];
        return v;
    }

    [[gnu::noinline]] i64 total() const
    {
        i64 product = 1;
        for (i32 d = 0; d < rank; ++d) product *= n[d];
        return product;
    }
    [[gnu::noinline]] bool is_dense() const
    {
        i64 expected = 1;
        for (i32 d = 0; d < rank; expected *= n[d++])
            if (step[d] != expected) return false;
        return true;
    }
    // The same elements, last ones first.
    [[gnu::noinline]] View reversed() const
    {
        View v = *this;
        for (i32 d = 0; d < rank; ++d) v.at += (n[d] - 1) * step[d], v.step[d] = -step[d];
        return v;
    }
    // length[d] elements from offset[d] on, every stride[d]-th one.
    [[gnu::noinline]] View part(const i64* offset, const i64* length, const i64* stride) const
    {
        View v = *this;
        for (i32 d = 0; d < rank; ++d) v.at += offset[d] * step[d], v.n[d] = length[d], v.step[d] *= stride[d];
        return v;
    }
    View part(const i64* offset, const i64* length) const
    {
        constexpr i64 each[] = {1, 1, 1, 1, 1, 1, 1};
        return part(offset, length, each);
    }
};

template <class T> [[gnu::noinline]] View<const T> read(const View<T>& v)
{
    View<const T> r{v.at, v.rank, {}, {}};
    for (i32 d = 0; d < v.rank; ++d) r.n[d] = v.n[d], r.step[d] = v.step[d];
    return r;
}

// f(address in a, address in b) for each pair of lines along dimension 0, in as many as a has, from p and q on.
template <class A, class B, class F>
ORV_INLINE void each_line(const View<A>& a, A* p, const View<B>& b, B* q, i32 rank, F f)
{
    i64 index[most_dimensions];
    for (i32 d = 1; d < rank; ++d) index[d] = 0;
    for (;;) {
        f(p, q);
        i32 d = 1;
        for (; d < rank; ++d) {
            p += a.step[d], q += b.step[d];
            if (++index[d] < a.n[d]) break;
            p -= a.n[d] * a.step[d], q -= a.n[d] * b.step[d], index[d] = 0;
        }
        if (d >= rank) return;
    }
}
template <class A, class B, class F> ORV_INLINE void each_line(const View<A>& a, const View<B>& b, F f)
{
    each_line(a, a.at, b, b.at, a.rank, f);
}

// A number as another type: rounded, widened, with an imaginary part of zero, or without its imaginary part.
template <class To, class From> ORV_INLINE To as(From v)
{
    if constexpr (is_complex<To> && is_complex<From>)
        return {static_cast<real_t<To>>(v.re), static_cast<real_t<To>>(v.im)};
    else if constexpr (is_complex<To>) return {static_cast<real_t<To>>(v), 0};
    else if constexpr (is_complex<From>) return static_cast<To>(v.re);
    else return static_cast<To>(v);
}

// put(element of to, element of from) for all elements of `from`.
template <class From, class To, class Put>
[[gnu::noinline]] void join(const View<From>& from, const View<To>& to, Put put)
{
    const i64 n = from.n[0], p_step = from.step[0], q_step = to.step[0];
    each_line(from, to, [&](From* p, To* q) ORV_INLINE_LAMBDA {
        for (i64 i = 0; i < n; ++i, p += p_step, q += q_step) put(*q, *p);
    });
}
template <class From, class To> void copy(const View<From>& from, const View<To>& to)
{
    join(from, to, [](To& t, const From& f) ORV_INLINE_LAMBDA { t = as<To>(f); });
}
template <class From, class To> void add(const View<From>& from, const View<To>& to)
{
    join(from, to, [](To& t, const From& f) ORV_INLINE_LAMBDA { t += as<To>(f); });
}

} // namespace orv::conv
