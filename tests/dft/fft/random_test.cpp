// Transforms drawn at random: kind, order, flag, direction, format, in place or apart, addresses, with a buffer or
// without.
#include "tests/dft/fft/engine.h"
#include "tests/dft/fft/oracle.h"

#include <cmath>

namespace orv::test {
namespace {

using Wide = std::vector<cpx<long double>>;

// Places of a whole spectrum's parts in a packed one: X[k], 0 < k < n/2, from first(k) on; the last real one.
struct Packed {
    std::string format;
    std::size_t n;
    std::size_t size() const { return format == "CCS" ? n + (n == 1 ? 1 : 2) : n; }
    std::size_t part(std::size_t k) const { return format == "Pack" ? 2 * k - 1 : 2 * k; }
    std::size_t half() const { return format == "Perm" ? 1 : format == "Pack" ? n - 1 : n; }

    template <class R> std::vector<R> pack(const Wide& x) const
    {
        std::vector<R> y(size());
        y[0] = static_cast<R>(x[0].re);
        if (n > 1) y[half()] = static_cast<R>(x[n / 2].re);
        for (std::size_t k = 1; 2 * k < n; ++k)
            y[part(k)] = static_cast<R>(x[k].re), y[part(k) + 1] = static_cast<R>(x[k].im);
        return y;
    }
};

struct Draw {
    i32 order, flag;
    Direction direction;
    std::string format;
    bool in_place, with_buffer;
    std::size_t shift, shift_dst;

    explicit Draw(Random& random)
        : order(static_cast<i32>(random.integer(0, 13))), flag(i32{1} << random.integer(0, 3)),
          direction(random.integer(0, 1) ? Direction::forward : Direction::inverse),
          format(formats[random.integer(0, 2)]), in_place(random.integer(0, 1)), with_buffer(random.integer(0, 3)),
          shift(static_cast<std::size_t>(random.integer(0, 7))),
          shift_dst(static_cast<std::size_t>(random.integer(0, 7)))
    {
    }
    std::string text(const std::string& kind) const
    {
        return kind + (kind[0] == 'R' ? ' ' + format : "") + ' ' + letters(direction) +
               " order=" + std::to_string(order) + " flag=" + std::to_string(flag) +
               (in_place ? " in place" : " apart") + (with_buffer ? " buffer" : "") +
               " shifts=" + std::to_string(shift) + ',' + std::to_string(shift_dst);
    }
};

// Of all numbers together, as a part of their norm: the roundings of the transform, of its input and of its division.
template <class R>
void expect_near(const std::vector<R>& is, const std::vector<R>& should, int order, const std::string& draw)
{
    long double error = 0, norm = 0;
    for (std::size_t i = 0; i < should.size(); ++i) {
        const long double distance = static_cast<long double>(is[i]) - should[i];
        error += distance * distance, norm += static_cast<long double>(should[i]) * should[i];
    }
    EXPECT_LE(std::sqrt(error),
              (0.6L * std::sqrt(order + 0.0L) + 2) * std::numeric_limits<R>::epsilon() * std::sqrt(norm))
        << draw;
}

template <class Kind> void run(const Draw& draw, std::uint64_t stream)
{
    using R = typename Kind::R;
    const std::size_t n = std::size_t{1} << draw.order;
    const Packed packed{draw.format, n};
    const Record<Kind> record(draw.order, draw.flag, static_cast<int>(draw.shift * 5));
    t_8u* const buffer = draw.with_buffer ? record.buffer() : nullptr;
    const bool forward = draw.direction == Direction::forward;

    const auto input = random_array<cpx<R>>(static_cast<i64>(n), stream);
    Wide x;
    for (const auto& e : input) x.push_back({e.re, Kind::real ? 0 : e.im});
    Wide y = x;
    exact_transform(y, forward || Kind::real ? -1 : 1);
    const bool divides = forward ? record.spec()->scale_forward : record.spec()->scale_inverse;
    const long double norm = divides ? static_cast<long double>(record.spec()->norm) : 1;

    std::vector<R> from, to; // as they stand in memory; of planes one array behind the other
    const auto append = [](std::vector<R>& all, const Wide& numbers, long double by) {
        for (const auto& e : numbers)
            if (Kind::shape == Shape::pairs) {
                all.push_back(static_cast<R>(e.re * by)), all.push_back(static_cast<R>(e.im * by));
            } else all.push_back(static_cast<R>(e.re * by));
        if (Kind::shape == Shape::planes)
            for (const auto& e : numbers) all.push_back(static_cast<R>(e.im * by));
    };
    if (Kind::real && forward) {
        append(from, x, 1), to = packed.pack<R>(y);
        for (R& e : to) e = static_cast<R>(e * norm);
    } else if (Kind::real) from = packed.pack<R>(y), append(to, x, norm * static_cast<long double>(n));
    else append(from, x, 1), append(to, y, norm);

    const std::size_t room = draw.in_place ? std::max(from.size(), to.size()) : from.size();
    const Guarded<R> src(room, Edge::end, draw.shift), apart(to.size(), Edge::end, draw.shift_dst);
    std::copy(from.begin(), from.end(), src.begin());
    R* const dst = draw.in_place ? src.data() : apart.data();
    i32 status;
    if constexpr (Kind::shape == Shape::pairs)
        status = transform(draw.direction, reinterpret_cast<const cpx<R>*>(src.data()), reinterpret_cast<cpx<R>*>(dst),
                           record.spec(), buffer);
    else if constexpr (Kind::shape == Shape::planes)
        status = transform(draw.direction, static_cast<const R*>(src.data()), static_cast<const R*>(src.data()) + n,
                           dst, dst + n, record.spec(), buffer);
    else status = transform(draw.direction, draw.format, static_cast<const R*>(src.data()), dst, record.spec(), buffer);
    ASSERT_EQ(status, ok) << draw.text(Kind::name());
    expect_near<R>({dst, dst + to.size()}, to, draw.order, draw.text(Kind::name()));
}

TEST(PowerOfTwo, of_any_kind_drawn_at_random_is_right)
{
    Random random(77);
    for (std::uint64_t i = 0; i < 150; ++i) each_kind([&]<class Kind>(Kind) { run<Kind>(Draw(random), i); });
}

} // namespace
} // namespace orv::test
