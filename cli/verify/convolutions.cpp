// Convolutions and correlations, as products with a matrix whose diagonals are elements of x. More than one line is two
// dimensions, with x a single line.
//
// Letters. job: v convolution, r correlation. size: f all outputs, s as many as y, v those without an edge. route:
// a the faster one, d direct sums, t transforms. sums: o in the data's own precision, d in double.
#include "cli/verify/setting.h"

#include <cmath>
#include <complex>
#include <cstring>
#include <memory>

namespace orv::verify {
namespace {

using Int = std::int64_t;

template <class T> constexpr char type_of = letter_of<T>();

template <class T>
orv_status convolution(char job, char size, char route, char sums, Int nx, Int ny, Int lines, const T* x, const T* y,
                       T* z)
{
    const Int x_shape[] = {nx, 1}, y_shape[] = {ny, lines};
    const int wanted = job == 'v' ? ORV_CONV_CONVOLUTION : ORV_CONV_CORRELATION;
    orv_conv* made = nullptr;
    orv_status status = orv_conv_create(&made, type_of<T>, wanted, lines == 1 ? 1 : 2, x_shape, y_shape);
    const std::unique_ptr<orv_conv, decltype(&orv_conv_free)> conv(made, orv_conv_free);
    const auto set = [&](int setting, int value) {
        if (status == ORV_OK) status = orv_conv_set(made, setting, value);
    };
    set(ORV_CONV_SIZE, size == 'f' ? ORV_CONV_FULL : size == 's' ? ORV_CONV_SAME : ORV_CONV_VALID);
    set(ORV_CONV_ROUTE, route == 'a' ? ORV_CONV_AUTOMATIC : route == 'd' ? ORV_CONV_DIRECT : ORV_CONV_TRANSFORM);
    set(ORV_CONV_DOUBLE_SUMS, sums == 'd' ? 1 : 0);
    return status != ORV_OK ? status : orv_conv_run(made, x, y, z);
}

// Output i of the size is output i + first of all; what multiplies y[j] there is x[i + first - j], of a correlation
// x[nx - 1 - (i + first - j)].
Plan plan(Setting& s)
{
    const i64 nx = s.extra("nx", 5, 1, 1 << 20), ny = s.extra("ny", 20, 1, 1 << 20),
              lines = s.extra("lines", 1, 1, 1000);
    const char size = s.letter("size");
    const i64 before = size == 'f' ? 0 : size == 's' ? (nx - 1) / 2 : std::min(nx, ny) - 1;
    const i64 nz = size == 'f' ? nx + ny - 1 : size == 's' ? ny : nx + ny - 1 - 2 * before;
    const bool correlates = s.letter("job") == 'r';
    View x{.array = "x", .rows = nz, .columns = ny};
    x.base = correlates ? nx - 1 - before : before;
    x.row = correlates ? -1 : 1, x.column = -x.row;
    x.below = nx - 1 - before, x.above = before;
    const View y{.array = "y", .rows = ny, .columns = lines, .row = 1, .column = ny};
    const View z{.array = "z", .rows = nz, .columns = lines, .row = 1, .column = nz};
    // Elements of x that no output needs are read all the same.
    const View all_x{.array = "x", .rows = nx, .columns = lines, .row = 1, .column = 0};
    Equation e{
        after(z), {{{1, 0}, op(x), op(y)}, {{0, 0}, ones(nz, nx), op(all_x)}}, roundings_of_sum(std::min(nx, ny))};
    if (s.letter("route") != 'd') {
        // The error of a transform is one of the norms of both operands, also where an output has few terms. All of y
        // in each output, in terms that cancel, brings it in; no element of x is larger than 1.
        const View all_y{.array = "y", .rows = ny * lines, .columns = lines, .row = 1, .column = 0};
        const Number norm{std::sqrt(static_cast<double>(nx)), 0};
        for (const Number factor : {norm, -norm}) e.terms.push_back({factor, ones(nz, all_y.rows), op(all_y, 'a')});
        e.roundings += 30 * std::log2(static_cast<double>(4 * (nx + ny) * lines));
    }
    Plan plan{{e}};
    if (s.letter("sums") == 'd') plan.work = 'd';
    return plan;
}

} // namespace

Group convolutions()
{
    return {"conv",
            "convolutions and correlations",
            {{"convolution",
              "job:vr size:fsv route:adt sums:od nx ny lines x y z",
              plan,
              {"nx=1|2|3|5|17|40 ny=1|4|16|33|70 lines=1|3", "vfao nx=64|100|300 ny=500|700 lines=1",
               "times=2 nx=1..60 ny=1..200 lines=1..20 threads=2..8"},
              {routine<convolution<float>>("s"), routine<convolution<double>>("d"),
               routine<convolution<std::complex<float>>>("c"), routine<convolution<std::complex<double>>>("z")}}}};
}

} // namespace orv::verify
