// Rows of sines and cosines drawn at random: kind, way, points, rows, layout, scales and threads, element by element
// beside the sums of the formulas.
#include "tests/core/drawn.h"
#include "tests/core/trig_rows.h"

namespace orv::test {
namespace {

constexpr int problems = 600; // of each type

class DrawnTrig : public Drawn {};

// Rows in memory with gaps, one after the other or across, backwards and forwards.
template <class T> struct Rows {
    i64 stride, distance, origin;
    std::vector<T> memory;

    Rows(Random& random, i64 points, i64 rows)
    {
        i64 &inner = random.integer(0, 1) ? stride : distance, &outer = &inner == &stride ? distance : stride;
        const i64 count = &inner == &stride ? points : rows, others = points + rows - count;
        inner = random.integer(1, 3), outer = (count - 1) * inner + random.integer(1, 5);
        memory.resize(static_cast<std::size_t>((others - 1) * outer + (count - 1) * inner + 1));
        random.fill(memory);
        origin = 0;
        for (const auto& [step, n] : {std::pair<i64&, i64>(stride, points), std::pair<i64&, i64>(distance, rows)})
            if (random.integer(0, 3) == 0) origin += (n - 1) * step, step = -step;
    }
    std::size_t at(i64 row, i64 point) const
    {
        return static_cast<std::size_t>(origin + row * distance + point * stride);
    }
};

template <class T> void run(Random& random)
{
    const i64 kind = random.integer(0, pdett::kinds - 1);
    const Way way = ways[random.integer(0, 1)];
    const i64 points = random.integer(least_points(kind), random.integer(0, 3) ? 40 : 160);
    const i64 rows = random.integer(0, random.integer(0, 3) ? 6 : 40);
    const bool forward = random.integer(0, 1), in_place = random.integer(0, 1);
    const Made trig = made<T>(kind, points, way);
    const double n = static_cast<double>(cells(kind, points));
    double scale = forward ? 1 / n : 0.5;
    if (random.integer(0, 2) == 0) {
        scale = random.value<double>();
        ASSERT_EQ(orv_trig_set_scales(trig.get(), forward ? scale : 7, forward ? 7 : scale), ORV_OK);
    }
    if (random.integer(0, 3) == 0) {
        ASSERT_EQ(orv_trig_set_threads(trig.get(), static_cast<int>(random.integer(0, 3))), ORV_OK);
    }
    const int threads = static_cast<int>(random.integer(1, 5));
    orv_set_thread_num_threads(threads);
    SCOPED_TRACE(std::string(1, letter<T>) + " kind " + std::to_string(kind) +
                 (way == Way::careful ? " careful " : " ") + (forward ? "forward " : "backward ") +
                 std::to_string(rows) + " rows of " + std::to_string(points) + (in_place ? " in place, " : ", ") +
                 std::to_string(threads) + " threads");

    Rows<T> from(random, points, max(rows, 1)), to = in_place ? from : Rows<T>(random, points, max(rows, 1));
    std::vector<T> expected = to.memory;
    const auto call = forward ? orv_trig_forward_rows : orv_trig_backward_rows;
    T* const target = to.memory.data() + to.origin;
    ASSERT_EQ(call(trig.get(), rows, in_place ? target : from.memory.data() + from.origin, from.stride, from.distance,
                   target, to.stride, to.distance),
              ORV_OK)
        << orv_last_error();

    std::vector<T> x(static_cast<std::size_t>(points));
    for (i64 r = 0; r < rows; ++r) {
        for (i64 j = 0; j < points; ++j) x[j] = from.memory[from.at(r, j)];
        const auto should = sums(kind, forward, x);
        const long double bound = bound_of(kind, way, x);
        for (i64 k = 0; k < points; ++k) {
            const T result = to.memory[to.at(r, k)];
            ASSERT_LE(std::fabs(static_cast<long double>(result) - should[k] * scale), bound * std::fabs(scale))
                << "row " << r << " element " << k;
            expected[to.at(r, k)] = result;
        }
    }
    EXPECT_EQ(to.memory, expected) << "written beside the rows";
}

TEST_F(DrawnTrig, rows_are_what_the_formulas_say)
{
    draw<float, double>(problems, 72, []<class T>(Random& random, T) { run<T>(random); });
}

} // namespace
} // namespace orv::test
