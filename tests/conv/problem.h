// Problems of any rank, the memory that they take, and their exact results.
#pragma once

#include "tests/conv/member.h"
#include "tests/support/bounds.h"
#include "tests/support/guarded.h"
#include "tests/support/quad.h"
#include "tests/support/random.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

namespace orv::test::convolution {

using Numbers = std::vector<i32>;

inline i64 total(const Numbers& shape)
{
    i64 product = 1;
    for (const i32 n : shape) product *= n;
    return product;
}
inline Numbers dense(const Numbers& shape)
{
    Numbers strides;
    for (i64 d = 0, step = 1; d < std::ssize(shape); step *= shape[d++]) strides.push_back(static_cast<i32>(step));
    return strides;
}
// The next index of a shape, the first one fastest; false behind the last.
inline bool advance(Numbers& index, const Numbers& shape)
{
    for (std::size_t d = 0; d < shape.size(); ++d) {
        if (++index[d] < shape[d]) return true;
        index[d] = 0;
    }
    return false;
}

// Where an element stands behind the array's address.
inline i64 place(const Numbers& shape, const Numbers& stride, const Numbers& index)
{
    i64 at = 0;
    for (std::size_t d = 0; d < shape.size(); ++d)
        at += stride[d] < 0 ? i64{shape[d] - 1 - index[d]} * -stride[d] : i64{index[d]} * stride[d];
    return at;
}
inline i64 extent(const Numbers& shape, const Numbers& stride)
{
    i64 last = 0;
    for (std::size_t d = 0; d < shape.size(); ++d) last += i64{shape[d] - 1} * std::abs(stride[d]);
    return last + 1;
}

struct Problem {
    bool correlates;
    Numbers nx, ny, nz, xs, ys, zs, start, step;

    i32 rank() const { return static_cast<i32>(nx.size()); }
    i32 least_start(std::size_t d) const { return correlates ? 1 - nx[d] : 0; }
    i32 last_start(std::size_t d) const { return correlates ? ny[d] - 1 : nx[d] + ny[d] - 2; }

    std::string text() const
    {
        std::string text = correlates ? "corr" : "conv";
        const auto add = [&](const char* name, const Numbers& numbers) {
            text += std::string(" ") + name;
            for (const i32 n : numbers) text += " " + std::to_string(n);
        };
        add("nx", nx), add("ny", ny), add("nz", nz), add("xs", xs), add("ys", ys), add("zs", zs);
        add("start", start), add("step", step);
        return text;
    }
};

// Everything without gaps, and all outputs.
inline Problem full_problem(bool correlates, const Numbers& nx, const Numbers& ny)
{
    Problem p{correlates, nx, ny, {}, dense(nx), dense(ny), {}, {}, Numbers(nx.size(), 1)};
    for (std::size_t d = 0; d < nx.size(); ++d) p.nz.push_back(nx[d] + ny[d] - 1), p.start.push_back(p.least_start(d));
    p.zs = dense(p.nz);
    return p;
}

// Any shapes, outputs and strides; gaps, backwards, and inputs that repeat an element.
inline Problem random_problem(Random& random, bool correlates, int rank, i32 longest)
{
    const auto draw = [&](i64 low, i64 high) { return static_cast<i32>(random.integer(low, high)); };
    Problem p = full_problem(correlates, Numbers(static_cast<std::size_t>(rank), 1),
                             Numbers(static_cast<std::size_t>(rank), 1));
    const auto strides = [&](const Numbers& shape, bool may_repeat) {
        Numbers strides;
        i64 room = draw(0, 2) == 0 ? 2 : 1;
        for (const i32 n : shape) {
            const i64 step = draw(0, 3) == 0 ? room + draw(0, 2) : room;
            strides.push_back(static_cast<i32>(may_repeat && draw(0, 9) == 0 ? 0 : draw(0, 4) == 0 ? -step : step));
            room = step * n;
        }
        return strides;
    };
    for (std::size_t d = 0; d < p.nx.size(); ++d) {
        p.nx[d] = draw(0, 4) == 0 ? 1 : draw(1, longest), p.ny[d] = draw(0, 4) == 0 ? 1 : draw(1, longest);
        p.start[d] = draw(p.least_start(d), draw(0, 1) == 0 ? p.last_start(d) : p.least_start(d));
        p.step[d] = draw(0, 2) == 0 ? draw(1, 4) : 1;
        const i32 most = (p.last_start(d) - p.start[d]) / p.step[d] + 1;
        p.nz[d] = draw(0, 1) == 0 ? most : draw(1, most);
    }
    p.xs = strides(p.nx, true), p.ys = strides(p.ny, true), p.zs = strides(p.nz, false);
    return p;
}

// The arrays of a problem; what is not an element is NaN, and all of z.
template <class T> struct Arrays {
    Guarded<T> x, y, z;

    Arrays(const Problem& p, std::uint64_t stream, Edge edge = Edge::end)
        : x(static_cast<std::size_t>(extent(p.nx, p.xs)), edge), y(static_cast<std::size_t>(extent(p.ny, p.ys)), edge),
          z(static_cast<std::size_t>(extent(p.nz, p.zs)), edge)
    {
        Random random(stream);
        fill(random, x, p.nx, p.xs), fill(random, y, p.ny, p.ys);
    }
    // Bytes of z that no element has are as they were.
    bool gaps_untouched(const Problem& p) const
    {
        std::vector<bool> written(z.size());
        Numbers index(p.nz.size());
        do written[static_cast<std::size_t>(place(p.nz, p.zs, index))] = true;
        while (advance(index, p.nz));
        for (std::size_t i = 0; i < z.size(); ++i)
            if (!written[i] && !is_new(z[i])) return false;
        return true;
    }
    bool z_untouched() const { return std::all_of(z.begin(), z.end(), is_new); }

private:
    static bool is_new(const T& v)
    {
        unsigned char bytes[sizeof(T)];
        std::memcpy(bytes, &v, sizeof v);
        return std::all_of(std::begin(bytes), std::end(bytes), [](unsigned char b) { return b == 0xff; });
    }
    static void fill(Random& random, const Guarded<T>& array, const Numbers& shape, const Numbers& stride)
    {
        Numbers index(shape.size());
        do array[static_cast<std::size_t>(place(shape, stride, index))] = random.value<T>();
        while (advance(index, shape));
    }
};

// Without an edit: the signature is looked at where the name is found.
template <class T> i32 run(const Member& m, const Problem& p, const T* x, const T* y, T* z)
{
    if (m.line && m.decimated)
        return kernel<signature_1d_de<T>>("conv", m.name)(x, p.xs[0], y, p.ys[0], z, p.zs[0], p.nx[0], p.ny[0],
                                                          p.start[0], p.nz[0], p.step[0]);
    if (m.line)
        return kernel<signature_1d_nd<T>>("conv", m.name)(x, p.xs[0], y, p.ys[0], z, p.zs[0], p.nx[0], p.ny[0],
                                                          p.start[0], p.nz[0]);
    if (m.decimated)
        return kernel<signature_all_de<T>>("conv", m.name)(p.rank(), x, p.nx.data(), p.xs.data(), y, p.ny.data(),
                                                           p.ys.data(), z, p.nz.data(), p.zs.data(), p.start.data(),
                                                           p.step.data());
    return kernel<signature_all_nd<T>>("conv", m.name)(p.rank(), x, p.nx.data(), p.xs.data(), y, p.ny.data(),
                                                       p.ys.data(), z, p.nz.data(), p.zs.data(), p.start.data());
}
template <class T> i32 run(const Member& m, const Problem& p, const Arrays<T>& a)
{
    return run(m, p, a.x.data(), a.y.data(), a.z.data());
}

template <class T> quad re(T v)
{
    if constexpr (is_complex<T>) return v.re;
    else return v;
}
template <class T> quad im(T v)
{
    if constexpr (is_complex<T>) return v.im;
    else return 0;
}

// f(element of x, element of y) for the products of one output, x's index ascending.
template <class T, class F> void each_product(const Problem& p, const Arrays<T>& a, const Numbers& output, F f)
{
    Numbers k(p.nx.size()), i(p.nx.size());
    do {
        bool inside = true;
        for (std::size_t d = 0; d < k.size(); ++d) {
            const i32 lag = p.start[d] + output[d] * p.step[d];
            i[d] = p.correlates ? lag + k[d] : lag - k[d];
            inside = inside && i[d] >= 0 && i[d] < p.ny[d];
        }
        if (inside)
            f(a.x[static_cast<std::size_t>(place(p.nx, p.xs, k))], a.y[static_cast<std::size_t>(place(p.ny, p.ys, i))]);
    } while (advance(k, p.nx));
}

template <class T> quad norm(const Guarded<T>& array, const Numbers& shape, const Numbers& stride)
{
    quad squares = 0;
    Numbers index(shape.size());
    do {
        const T v = array[static_cast<std::size_t>(place(shape, stride, index))];
        squares += re(v) * re(v) + im(v) * im(v);
    } while (advance(index, shape));
    return root(squares);
}

// All of z against sums in quadruple precision. Direct sums: a rounding a product and a sum. Transforms: three of them,
// with at most ten roundings for each doubling of the points, of the norms of both operands.
template <class T, class I> void expect_exact(const Member& m, const Problem& p, const Arrays<T>& a)
{
    double levels = 1;
    for (std::size_t d = 0; d < p.nx.size(); ++d) levels += std::ceil(std::log2(2.0 * (p.nx[d] + p.ny[d])));
    const quad norms = norm(a.x, p.nx, p.xs) * norm(a.y, p.ny, p.ys);
    Numbers j(p.nz.size());
    do {
        quad sum_re = 0, sum_im = 0, magnitudes = 0;
        i64 terms = 0;
        each_product(p, a, j, [&](T x, T y) {
            sum_re += re(x) * re(y) - im(x) * im(y), sum_im += re(x) * im(y) + im(x) * re(y);
            magnitudes += (magnitude(re(x)) + magnitude(im(x))) * (magnitude(re(y)) + magnitude(im(y)));
            ++terms;
        });
        const T z = a.z[static_cast<std::size_t>(place(p.nz, p.zs, j))];
        quad allowed = m.direct ? quad{gamma_n<I>(static_cast<long double>(terms) + 2)} * magnitudes
                                : quad{gamma_n<I>(static_cast<long double>(30 * levels))} * norms;
        if (sizeof(T) != sizeof(I)) allowed += quad{unit<T>} * (magnitudes + allowed);
        const quad error = std::max(magnitude(re(z) - sum_re), magnitude(im(z) - sum_im));
        ASSERT_LE(static_cast<double>(error), static_cast<double>(allowed)) << m.name << ' ' << p.text();
    } while (advance(j, p.nz));
}

} // namespace orv::test::convolution
