// Convolutions and correlations drawn at random: type, shapes, outputs, strides, route, sums and threads, element by
// element beside sums in long double.
#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include "frame/types.h"
#include <orv/conv.h>

#include "tests/core/drawn.h"
#include "tests/core/teams.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"

#include <cmath>
#include <complex>
#include <limits>

namespace orv::test {
namespace {

using Shape = std::vector<i64>;
using Wide = std::complex<long double>;
constexpr int problems = 500; // of each type

class DrawnConv : public Drawn {};

template <class T> const T untouched = T{7};
template <class R> const cpx<R> untouched<cpx<R>>{7, 7};

template <class T> Wide wide(const T& v)
{
    if constexpr (is_complex<T>) return {v.re, v.im};
    else return v;
}

// An array in memory with gaps, in any order of dimensions, backwards and forwards; of y and x also repeated elements.
template <class T> struct Array {
    Shape shape, strides;
    std::vector<T> memory;
    bool given = false; // else without gaps

    Array(Random& random, const Shape& n, bool written) : shape(n), strides(n.size())
    {
        given = random.integer(0, 2) > 0;
        i64 room = given ? random.integer(1, 3) : 1;
        for (std::size_t d = 0; d < n.size(); ++d) {
            strides[d] = given && random.integer(0, 3) == 0 ? -room : room;
            room = room * n[d] + (given ? random.integer(0, 3) : 0);
            if (given && !written && random.integer(0, 15) == 0) strides[d] = 0;
        }
        memory.resize(static_cast<std::size_t>(room));
        if (written) std::fill(memory.begin(), memory.end(), untouched<T>);
        else random.fill(memory);
    }
    std::size_t place(const Shape& index) const
    {
        i64 at = 0;
        for (std::size_t d = 0; d < shape.size(); ++d)
            at += strides[d] < 0 ? (shape[d] - 1 - index[d]) * -strides[d] : index[d] * strides[d];
        return static_cast<std::size_t>(at);
    }
    const i64* told() const { return given ? strides.data() : nullptr; }
};

bool next(Shape& index, const Shape& shape)
{
    for (std::size_t d = 0; d < shape.size(); ++d) {
        if (++index[d] < shape[d]) return true;
        index[d] = 0;
    }
    return false;
}

i64 volume(const Shape& shape)
{
    i64 product = 1;
    for (const i64 n : shape) product *= n;
    return product;
}

// Sum of products of an output, and of their magnitudes.
template <class T> std::pair<Wide, long double> sum(const Array<T>& x, const Array<T>& y, int job, const Shape& at)
{
    Wide all = 0;
    long double magnitudes = 0;
    Shape k(at.size(), 0), other(at.size());
    do {
        bool inside = true;
        for (std::size_t d = 0; d < at.size(); ++d) {
            other[d] = job == ORV_CONV_CONVOLUTION ? at[d] - k[d] : at[d] + k[d];
            inside &= other[d] >= 0 && other[d] < y.shape[d];
        }
        if (!inside) continue;
        const Wide product = wide(x.memory[x.place(k)]) * wide(y.memory[y.place(other)]);
        all += product, magnitudes += std::abs(product);
    } while (next(k, x.shape));
    return {all, magnitudes};
}

template <class T> long double norm(const Array<T>& a)
{
    long double squares = 0;
    Shape index(a.shape.size(), 0);
    do squares += std::norm(wide(a.memory[a.place(index)]));
    while (next(index, a.shape));
    return std::sqrt(squares);
}

Shape draw_shape(Random& random, int rank)
{
    constexpr i64 longest[] = {0, 90, 10, 5, 3, 3, 2, 2};
    Shape shape;
    for (int d = 0; d < rank; ++d)
        shape.push_back(random.integer(1, random.integer(0, 4) ? longest[rank] : 4 * longest[rank] / rank));
    return shape;
}

template <class T> void run(Random& random)
{
    const int rank = static_cast<int>(random.integer(0, 2) ? random.integer(1, 2) : random.integer(1, 7));
    const int job = static_cast<int>(random.integer(1, 2));
    const Shape nx = draw_shape(random, rank), ny = draw_shape(random, rank);
    orv_conv* conv = nullptr;
    ASSERT_EQ(orv_conv_create(&conv, letter<T>, job, rank, nx.data(), ny.data()), ORV_OK) << orv_last_error();
    const auto set = [&](int setting, i64 value) { ASSERT_EQ(orv_conv_set(conv, setting, value), ORV_OK); };
    const i64 route = random.integer(ORV_CONV_AUTOMATIC, ORV_CONV_TRANSFORM);
    const bool is_double = sizeof(real_t<T>) == 8, double_sums = !is_double && random.integer(0, 2) == 0;
    set(ORV_CONV_ROUTE, route), set(ORV_CONV_DOUBLE_SUMS, double_sums);
    set(ORV_CONV_SIZE, random.integer(ORV_CONV_FULL, ORV_CONV_VALID));

    Shape start(nx.size()), count(nx.size()), step(nx.size());
    if (random.integer(0, 1)) {
        for (std::size_t d = 0; d < nx.size(); ++d) {
            const i64 first = job == ORV_CONV_CONVOLUTION ? 0 : 1 - nx[d], last = first + nx[d] + ny[d] - 2;
            start[d] = random.integer(first, last);
            step[d] = random.integer(0, 2) ? 1 : random.integer(1, 9);
            count[d] = random.integer(1, (last - start[d]) / step[d] + 1);
        }
        ASSERT_EQ(orv_conv_set_outputs(conv, start.data(), count.data(), step.data()), ORV_OK) << orv_last_error();
    } else step.assign(nx.size(), 1);
    ASSERT_EQ(orv_conv_get_outputs(conv, count.data(), start.data()), ORV_OK);

    const Array<T> x(random, nx, false), y(random, ny, false);
    Array<T> z(random, count, true);
    ASSERT_EQ(orv_conv_set_strides(conv, x.told(), y.told(), z.told()), ORV_OK);
    const int threads = static_cast<int>(random.integer(1, 5));
    orv_set_thread_num_threads(threads);
    std::string text = std::string(1, letter<T>) + (job == ORV_CONV_CONVOLUTION ? " convolution" : " correlation");
    for (const Shape& shape : {nx, ny, count, step}) {
        text += ' ';
        for (const i64 n : shape) text += std::to_string(n) + ' ';
    }
    SCOPED_TRACE(text + "route " + std::to_string(route) + ", " + std::to_string(threads) + " threads");

    for (int again = 0; again < 2; ++again) // what the first run keeps serves the second
        ASSERT_EQ(orv_conv_run(conv, x.memory.data(), y.memory.data(), z.memory.data()), ORV_OK) << orv_last_error();
    i64 taken = 0;
    orv_conv_get(conv, ORV_CONV_ROUTE_TAKEN, &taken);
    orv_conv_free(conv);

    const auto products = static_cast<long double>(std::min(volume(nx), volume(ny)));
    const long double unit = std::numeric_limits<real_t<T>>::epsilon() / 2,
                      unit_of_sums = double_sums ? std::numeric_limits<double>::epsilon() / 2 : unit;
    const long double norms = norm(x) * norm(y),
                      doublings = std::log2(4.0L * static_cast<long double>(volume(nx) + volume(ny)));
    std::vector<T> expected_gaps = z.memory;
    Shape j(count.size(), 0);
    do {
        Shape at(j.size());
        for (std::size_t d = 0; d < j.size(); ++d) at[d] = start[d] + j[d] * step[d];
        const auto [value, magnitudes] = sum(x, y, job, at);
        const long double allowed =
            unit * std::abs(value) +
            unit_of_sums * (taken == ORV_CONV_DIRECT ? (products + 4) * 2 * magnitudes : 20 * doublings * norms);
        ASSERT_LE(std::abs(wide(z.memory[z.place(j)]) - value), allowed) << "output " << testing::PrintToString(j);
        expected_gaps[z.place(j)] = untouched<T>;
    } while (next(j, count));
    EXPECT_TRUE(same_bits(expected_gaps, std::vector<T>(expected_gaps.size(), untouched<T>)))
        << "written between outputs";
}

TEST_F(DrawnConv, outputs_are_within_the_bounds_of_their_route)
{
    draw<float, double, cpx<float>, cpx<double>>(problems, 71, []<class T>(Random& random, T) { run<T>(random); });
}

} // namespace
} // namespace orv::test
