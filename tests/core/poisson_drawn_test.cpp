// Rectangles and boxes drawn at random: axes, sides, q, layout, values on the sides and threads. What is solved is put
// into the equations, each of them looked at.
#include "tests/core/drawn.h"
#include "tests/core/poisson.h"

#include <limits>

namespace orv::test {
namespace {

constexpr int problems = 500; // of each type

class DrawnPoisson : public Drawn {};

orv_poisson_axis draw_axis(Random& random, bool last)
{
    const double a = random.value<double>() * 3;
    orv_poisson_axis axis{a, a + 0.3 + std::fabs(random.value<double>()) * 2, 0, 0, 0};
    const bool around = random.integer(0, 3) == 0;
    axis.low = around ? ORV_PERIODIC : static_cast<int>(random.integer(ORV_DIRICHLET, ORV_NEUMANN));
    axis.high = around ? ORV_PERIODIC : static_cast<int>(random.integer(ORV_DIRICHLET, ORV_NEUMANN));
    axis.n = random.integer(2, random.integer(0, 4) ? 9 : 24);
    if (around) axis.n = last ? axis.n + 2 : 2 * (axis.n / 2) + 2;
    return axis;
}

struct Point {
    i64 at[3];
};

template <class T> class Problem {
public:
    explicit Problem(Random& random)
    {
        axes = static_cast<int>(random.integer(2, 3));
        for (int k = 0; k < axes; ++k) axis[k] = draw_axis(random, k + 1 == axes);
        const double draw = random.value<double>();
        q = draw < -0.4 ? 0 : draw < 0 ? 60 * draw : 60 * draw;
        i64 order[] = {0, 1, 2}, room = random.integer(1, 2);
        for (int k = axes - 1; k > 0; --k) std::swap(order[k], order[random.integer(0, k)]);
        has_strides = random.integer(0, 1);
        if (!has_strides) room = 1, order[0] = 0, order[1] = 1, order[2] = 2;
        for (int k = 0; k < axes; ++k) {
            const i64 d = order[k], points = axis[d].n + 1;
            stride[d] = room;
            room = room * points + (has_strides ? random.integer(0, 3) : 0);
            if (has_strides && random.integer(0, 3) == 0) origin += (points - 1) * stride[d], stride[d] = -stride[d];
        }
        memory.resize(static_cast<std::size_t>(room));
        random.fill(memory);
        for (int side = 0; side < 2 * axes; ++side) draw_side(random, side);
    }

    int kind(int side) const { return side % 2 ? axis[side / 2].high : axis[side / 2].low; }
    double step(int k) const { return (axis[k].b - axis[k].a) / static_cast<double>(axis[k].n); }
    i64 end(int k) const { return k < axes ? axis[k].n : 0; }
    std::size_t place(const Point& p) const
    {
        i64 at = origin;
        for (int k = 0; k < axes; ++k) at += p.at[k] * stride[k];
        return static_cast<std::size_t>(at);
    }
    template <class Visit> void each(Visit visit) const
    {
        for (i64 k = 0; k <= end(2); ++k)
            for (i64 j = 0; j <= end(1); ++j)
                for (i64 i = 0; i <= end(0); ++i) visit(Point{{i, j, k}});
    }
    // What is told on a side.
    double told(int side, const Point& p) const
    {
        if (sides[side].values == nullptr) return 0;
        const int own = side / 2, first = own == 0 ? 1 : 0, second = own == 2 ? 1 : 2;
        const i64 at = p.at[first] * sides[side].stride[0] + (axes == 3 ? p.at[second] * sides[side].stride[1] : 0);
        return static_cast<double>(sides[side].values[at]);
    }
    // The last side of that kind that a point is on, or -1.
    int side_of(const Point& p, int wanted) const
    {
        int found = -1;
        for (int side = 0; side < 2 * axes; ++side)
            if (kind(side) == wanted && p.at[side / 2] == (side % 2 ? axis[side / 2].n : 0)) found = side;
        return found;
    }
    bool is_repeated(const Point& p) const
    {
        bool repeated = false;
        for (int k = 0; k < axes; ++k) repeated |= axis[k].low == ORV_PERIODIC && p.at[k] == axis[k].n;
        return repeated;
    }

    // The left-hand side of the equation of a point.
    long double left(const std::vector<T>& u, const Point& p) const
    {
        const auto value = [&](const Point& at) { return static_cast<long double>(u[place(at)]); };
        long double sum = q * value(p);
        for (int k = 0; k < axes; ++k) {
            const i64 n = axis[k].n;
            const long double h = step(k);
            Point below = p, above = p;
            --below.at[k], ++above.at[k];
            long double slope = 0;
            if (axis[k].low == ORV_PERIODIC) below.at[k] = (below.at[k] + n) % n;
            else if (p.at[k] == 0) below = above, slope = 2 * h * told(2 * k, p);
            else if (p.at[k] == n) above = below, slope = 2 * h * told(2 * k + 1, p);
            sum += (2 * value(p) - value(below) - value(above) - slope) / (h * h);
        }
        return sum;
    }

    int axes;
    orv_poisson_axis axis[3];
    double q;
    bool has_strides;
    i64 stride[3] = {}, origin = 0;
    std::vector<T> memory, values[6];
    Side<T> sides[6] = {};

private:
    // Nothing, one value, or one for each point, with the same at both ends of what goes around.
    void draw_side(Random& random, int side)
    {
        const int own = side / 2, first = own == 0 ? 1 : 0, second = own == 2 ? 1 : 2;
        const i64 form = random.integer(0, 2), n = end(first) + 1, m = axes == 3 ? end(second) + 1 : 1;
        if (form == 0) return;
        const i64 inner = form == 1 ? 0 : random.integer(1, 2),
                  outer = form == 1 ? 0 : n * inner + random.integer(0, 2);
        values[side].resize(static_cast<std::size_t>((n - 1) * inner + (m - 1) * outer + 1));
        random.fill(values[side]);
        for (i64 j = 0; j < m; ++j)
            if (axis[first].low == ORV_PERIODIC) values[side][(n - 1) * inner + j * outer] = values[side][j * outer];
        for (i64 i = 0; i < n && axes == 3; ++i)
            if (axis[second].low == ORV_PERIODIC) values[side][i * inner + (m - 1) * outer] = values[side][i * inner];
        sides[side] = {values[side].data(), {inner, outer}};
    }
};

template <class T> void run(Random& random)
{
    const Problem<T> problem(random);
    std::string text = std::string(1, sizeof(T) == 8 ? 'd' : 's') + " q=" + std::to_string(problem.q);
    for (int k = 0; k < problem.axes; ++k)
        text += " " + std::to_string(problem.axis[k].n) + "DNP"[problem.axis[k].low] + "DNP"[problem.axis[k].high];
    const int threads = static_cast<int>(random.integer(1, 5));
    orv_set_thread_num_threads(threads);
    SCOPED_TRACE(text + ", " + std::to_string(threads) + " threads");

    orv_poisson* made = nullptr;
    const orv_status status = orv_poisson_create(&made, precision<T>, problem.axes, problem.axis, problem.q);
    if (status == ORV_RESONANCE) return;
    ASSERT_EQ(status, ORV_OK) << orv_last_error();
    const Solver p(made, orv_poisson_free);
    ASSERT_EQ(orv_poisson_set_tolerance(made, HUGE_VAL), ORV_OK);
    std::vector<T> u = problem.memory, gaps = problem.memory;
    double misfit = -1;
    ASSERT_EQ(
        solve(p, u.data() + problem.origin, problem.has_strides ? problem.stride : nullptr, problem.sides, &misfit),
        ORV_OK)
        << orv_last_error();
    if (orv_poisson_is_up_to_constant(made) == 0) {
        EXPECT_EQ(misfit, 0);
    }

    // Each transform forth and back is off by as much as tests/pde/trig.h says, of its own size.
    long double squares = 0, norm = std::fabs(problem.q), roundings = 8;
    problem.each(
        [&](const Point& at) { squares += static_cast<long double>(u[problem.place(at)]) * u[problem.place(at)]; });
    for (int k = 0; k < problem.axes; ++k) {
        const long double n = static_cast<long double>(problem.axis[k].n);
        norm += 4 / (problem.step(k) * problem.step(k));
        roundings += 2 * 24 * std::log2(2 * n) * (1 + std::sqrt(n) / 4);
    }
    for (int side = 0; side < 2 * problem.axes; ++side) // what flows in
        for (const T value : problem.values[side]) squares += static_cast<long double>(value) * value;
    const long double allowed = roundings * std::numeric_limits<T>::epsilon() / 2 * (norm * std::sqrt(squares) + 1);
    problem.each([&](const Point& at) {
        const T value = u[problem.place(at)];
        gaps[problem.place(at)] = value;
        if (const int side = problem.side_of(at, ORV_DIRICHLET); side >= 0) {
            EXPECT_EQ(value, static_cast<T>(problem.told(side, at))) << testing::PrintToString(at.at);
        } else if (problem.is_repeated(at)) {
            Point first = at;
            for (int k = 0; k < problem.axes; ++k)
                if (problem.axis[k].low == ORV_PERIODIC) first.at[k] %= problem.axis[k].n;
            EXPECT_EQ(value, u[problem.place(first)]) << testing::PrintToString(at.at);
        } else {
            const long double right = static_cast<long double>(problem.memory[problem.place(at)]) - misfit;
            EXPECT_LE(std::fabs(problem.left(u, at) - right), allowed) << testing::PrintToString(at.at);
        }
    });
    EXPECT_EQ(u, gaps) << "written between the points";
}

TEST_F(DrawnPoisson, answers_solve_all_equations)
{
    draw<float, double>(problems, 73, []<class T>(Random& random, T) { run<T>(random); });
}

} // namespace
} // namespace orv::test
