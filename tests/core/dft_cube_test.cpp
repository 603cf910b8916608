// Transforms through the public door, drawn at random over everything that can be set, beside their definition. What
// stands between the elements, and what is only read, has to stay.
#include "tests/core/transforms.h"

#include <algorithm>
#include <orv/status.h>

namespace orv::test {
namespace {

// What is drawn and cannot be read back.
struct Draw {
    bool is_real, in_place, is_split, in_order;
    int format;
    bool knows_spectrum; // each of its elements can be told from the definition
};

std::vector<i64> drawn_lengths(Random& random)
{
    static constexpr i64 most_by_rank[] = {0, 300, 36, 12, 7, 5, 4, 3};
    const i64 rank = std::min(random.integer(1, 9), random.integer(1, 7)); // fewer of the many
    std::vector<i64> lengths(rank);
    for (i64& n : lengths) n = random.integer(1, most_by_rank[rank]);
    return lengths;
}

// Strides for extents in some order with gaps; what is beyond the last one is left in `unit`.
std::vector<i64> drawn_strides(Random& random, const std::vector<i64>& extents, std::size_t fixed, i64& unit)
{
    std::vector<std::size_t> order(extents.size());
    for (std::size_t k = 0; k < order.size(); ++k) order[k] = k;
    for (std::size_t k = order.size(); k > fixed + 1; --k)
        std::swap(order[k - 1], order[random.integer(static_cast<i64>(fixed), static_cast<i64>(k) - 1)]);
    std::vector<i64> strides(extents.size());
    for (const std::size_t k : order) {
        strides[k] = unit;
        unit *= extents[k];
        if (random.integer(0, 2) == 0) unit += random.integer(1, 3);
    }
    return strides;
}

void draw_side(Random& random, Transform& t, bool of_spectrum, i64 transforms)
{
    Places p = places(t, of_spectrum);
    i64 unit = random.integer(0, 2) == 0 ? random.integer(2, 4) : 1;
    const bool batch_first = random.integer(0, 3) == 0;
    i64 distance = unit;
    if (batch_first) unit *= transforms;
    auto strides = drawn_strides(random, p.extents, 0, unit);
    if (!batch_first) distance = unit;
    if (random.integer(0, 3) == 0) { // backwards in some dimensions
        for (i64& stride : strides)
            if (random.integer(0, 1)) stride = -stride;
        if (random.integer(0, 1)) distance = -distance;
    }
    EXPECT_EQ(orv_dft_set_strides(t, of_spectrum ? t.strides(false).data() : strides.data(),
                                  of_spectrum ? strides.data() : nullptr),
              ORV_OK);
    t.set(of_spectrum ? ORV_DFT_SPECTRUM_DISTANCE : ORV_DFT_SIGNAL_DISTANCE, distance);
    t.set(of_spectrum ? ORV_DFT_SPECTRUM_OFFSET : ORV_DFT_SIGNAL_OFFSET, random.integer(0, 5));
}

// A half spectrum on the reals that it comes from.
void draw_real_in_place(Random& random, Transform& t)
{
    Places p = places(t, true);
    i64 unit = 1;
    const auto spectrum = drawn_strides(random, p.extents, 1, unit);
    auto signal = spectrum;
    for (std::size_t k = 1; k < signal.size(); ++k) signal[k] *= 2;
    EXPECT_EQ(orv_dft_set_strides(t, signal.data(), spectrum.data()), ORV_OK);
    const i64 offset = random.integer(0, 3);
    t.set(ORV_DFT_SIGNAL_DISTANCE, 2 * unit).set(ORV_DFT_SPECTRUM_DISTANCE, unit);
    t.set(ORV_DFT_SIGNAL_OFFSET, 2 * offset).set(ORV_DFT_SPECTRUM_OFFSET, offset);
}

Draw draw(Random& random, Transform& t)
{
    Draw d{};
    d.is_real = t.get(ORV_DFT_DOMAIN) == ORV_DFT_REAL;
    d.in_place = random.integer(0, 1) == 0;
    d.is_split = random.integer(0, 3) == 0 && !(d.is_real && d.in_place);
    d.in_order = random.integer(0, 5) != 0;
    const bool may_be_packed = d.is_real && !d.is_split && t.lengths().size() <= 2;
    d.format = may_be_packed ? static_cast<int>(random.integer(ORV_DFT_CCS, ORV_DFT_HALF)) : int{ORV_DFT_HALF};
    const bool is_packed = d.format != ORV_DFT_HALF;
    d.knows_spectrum = (d.in_order || d.is_real || d.is_split) && !(is_packed && t.lengths().size() == 2);

    const i64 transforms = random.integer(0, 2) == 0 ? random.integer(2, 9) : 1;
    t.set(ORV_DFT_PLACEMENT, d.in_place ? ORV_DFT_IN_PLACE : ORV_DFT_OUT_OF_PLACE);
    t.set(ORV_DFT_STORAGE, d.is_split ? ORV_DFT_SPLIT : ORV_DFT_INTERLEAVED);
    t.set(ORV_DFT_FORMAT, d.format);
    t.set(ORV_DFT_ORDERING, d.in_order ? ORV_DFT_ORDERED : ORV_DFT_ANY_ORDER);
    t.set(ORV_DFT_WORKSPACE, random.integer(0, 3) == 0 ? ORV_DFT_AVOID : ORV_DFT_ALLOW);
    t.set(ORV_DFT_TRANSFORMS, transforms);
    t.set(ORV_DFT_THREADS, random.integer(0, 3));
    if (random.integer(0, 1) == 0) {
        const double n = static_cast<double>(product(t.lengths()));
        const double scales[] = {1, 1 / n, 1 / std::sqrt(n), -0.375};
        EXPECT_EQ(orv_dft_set_scales(t, scales[random.integer(0, 3)], scales[random.integer(0, 3)]), ORV_OK);
    }
    if (random.integer(0, 2) == 0) return d; // as it is by default
    if (d.is_real && d.in_place && !is_packed) {
        draw_real_in_place(random, t);
    } else {
        if (!d.in_place) draw_side(random, t, false, transforms);
        draw_side(random, t, true, transforms);
        const auto same = t.strides(true);
        if (d.in_place) orv_dft_set_strides(t, same.data(), same.data());
    }
    return d;
}

// One side's arrays: two of them if it is split.
template <class R> struct Memory {
    Memory(const std::vector<Places>& sides, bool is_split, Edge edge)
    {
        arrays.reserve(2);
        for (int i = 0; i < (is_split ? 2 : 1); ++i) arrays.emplace_back(sides, edge);
    }
    R* re() const { return arrays[0].data(); }
    R* im() const { return arrays.size() == 2 ? arrays[1].data() : nullptr; }
    std::vector<std::vector<R>> copy() const
    {
        std::vector<std::vector<R>> all;
        for (const auto& a : arrays) all.push_back(a.copy());
        return all;
    }
    bool gaps_are_as_in(const std::vector<std::vector<R>>& before) const
    {
        for (std::size_t i = 0; i < arrays.size(); ++i)
            if (!arrays[i].gaps_are_as_in(before[i])) return false;
        return true;
    }
    bool is_as(const std::vector<std::vector<R>>& before) const
    {
        for (std::size_t i = 0; i < arrays.size(); ++i)
            if (!arrays[i].is_as(before[i])) return false;
        return true;
    }
    std::vector<Array<R>> arrays;
};

template <class R> void put(const Memory<R>& m, const Places& p, i64 place, exact value)
{
    m.re()[place * p.reals] = static_cast<R>(value.real());
    if (p.reals == 2) m.re()[place * p.reals + 1] = static_cast<R>(value.imag());
    else if (m.im()) m.im()[place] = static_cast<R>(value.imag());
}

template <class R> exact at(const Memory<R>& m, const Places& p, i64 place)
{
    const R re = m.re()[place * p.reals];
    return {re, p.reals == 2 ? m.re()[place * p.reals + 1] : m.im() ? m.im()[place] : R(0)};
}

// Element i of a spectrum as it is stored, from the whole spectrum y.
exact stored(const Draw& d, const Places& p, const std::vector<i64>& lengths, const std::vector<exact>& y, i64 i)
{
    const i64 n = lengths[0];
    if (!d.is_real) return y[i];
    if (d.format == ORV_DFT_HALF) return y[i / p.extents[0] * n + i % p.extents[0]];
    if (d.format == ORV_DFT_PERM && n % 2 == 0 && i == 1) return y[n / 2].real();
    const bool shifted = d.format == ORV_DFT_PACK || (d.format == ORV_DFT_PERM && n % 2 == 1);
    const i64 part = shifted && i > 0 ? i + 1 : i; // as in CCS
    const exact number = y[part / 2 % n];
    return part % 2 ? number.imag() : number.real();
}

template <class R> class Problem {
public:
    Problem(Random& random, int domain, std::vector<i64> lengths)
        : random_(random), t_(sizeof(R) == 8 ? ORV_DFT_DOUBLE : ORV_DFT_SINGLE, domain, std::move(lengths)),
          d_(draw(random, t_))
    {
    }

    void run()
    {
        SCOPED_TRACE(text());
        ASSERT_EQ(orv_dft_commit(t_), ORV_OK) << orv_last_error();
        SCOPED_TRACE(orv_dft_method(t_));
        make_memory();
        forward();
        if (!testing::Test::HasFailure()) backward();
    }

private:
    std::string text() const
    {
        std::string s = sizeof(R) == 8 ? "double " : "float ";
        s += d_.is_real ? "real " : "complex ";
        for (const i64 n : t_.lengths()) s += std::to_string(n) + " ";
        s += d_.in_place ? "in place " : "out of place ";
        s += d_.is_split ? "split " : "";
        s += d_.in_order ? "" : "any order ";
        s += "format " + std::to_string(d_.format) + " transforms " + std::to_string(t_.get(ORV_DFT_TRANSFORMS));
        for (const bool of_spectrum : {false, true}) {
            const Places p = places(t_, of_spectrum);
            s += of_spectrum ? "; spectrum" : "; signal";
            for (const i64 n : p.strides) s += " " + std::to_string(n);
            s += " distance " + std::to_string(p.distance) + " offset " + std::to_string(p.offset);
        }
        return s + " seed " + std::to_string(seed());
    }

    void make_memory()
    {
        signal_places_ = places(t_, false), spectrum_places_ = places(t_, true);
        const Edge edge = random_.integer(0, 1) ? Edge::end : Edge::start;
        if (d_.in_place) {
            signal_ = spectrum_ =
                std::make_shared<Memory<R>>(std::vector{signal_places_, spectrum_places_}, d_.is_split, edge);
        } else {
            signal_ = std::make_shared<Memory<R>>(std::vector{signal_places_}, d_.is_split && !d_.is_real, edge);
            spectrum_ = std::make_shared<Memory<R>>(std::vector{spectrum_places_}, d_.is_split, edge);
        }
        orv_dft_get_scales(t_, &forward_scale_, &backward_scale_);
        for (i64 b = 0; b < signal_places_.transforms; ++b) {
            x_.emplace_back(product(t_.lengths()));
            for (exact& v : x_.back()) v = {random_.value<R>(), d_.is_real ? R(0) : random_.value<R>()};
            y_.push_back(transformed(x_.back(), t_.lengths(), -1));
        }
    }

    void write_signal()
    {
        for (i64 b = 0; b < signal_places_.transforms; ++b)
            signal_places_.each(b, [&](i64 place, i64 i) { put(*signal_, signal_places_, place, x_[b][i]); });
    }

    orv_status call(bool is_forward)
    {
        const Memory<R>&from = is_forward ? *signal_ : *spectrum_, &to = is_forward ? *spectrum_ : *signal_;
        if (d_.is_split)
            return is_forward ? orv_dft_forward_split(t_, from.re(), from.im(), to.re(), to.im())
                              : orv_dft_backward_split(t_, from.re(), from.im(), to.re(), to.im());
        return is_forward ? orv_dft_forward(t_, from.re(), to.re()) : orv_dft_backward(t_, from.re(), to.re());
    }

    void expect_done(bool is_forward)
    {
        Memory<R>&from = is_forward ? *signal_ : *spectrum_, &to = is_forward ? *spectrum_ : *signal_;
        const auto before_from = from.copy(), before_to = to.copy();
        ASSERT_EQ(call(is_forward), ORV_OK) << orv_last_error();
        EXPECT_TRUE(to.gaps_are_as_in(before_to)) << "something was written between the elements";
        if (!d_.in_place) {
            EXPECT_TRUE(from.is_as(before_from)) << "the input was written";
        }
    }

    void forward()
    {
        write_signal();
        expect_done(true);
        if (!d_.knows_spectrum) return;
        for (i64 b = 0; b < spectrum_places_.transforms; ++b) {
            std::vector<exact> computed, wanted;
            spectrum_places_.each(b, [&](i64 place, i64 i) {
                computed.push_back(at(*spectrum_, spectrum_places_, place));
                wanted.push_back(stored(d_, spectrum_places_, t_.lengths(), y_[b], i) *
                                 static_cast<long double>(forward_scale_));
            });
            EXPECT_LE(distance_in_units<R>(computed, wanted), units_allowed(t_.lengths()))
                << "forward, transform " << b;
        }
    }

    // From what forward has left.
    void backward()
    {
        expect_done(false);
        const long double gain = static_cast<long double>(forward_scale_) * backward_scale_ * product(t_.lengths());
        for (i64 b = 0; b < signal_places_.transforms; ++b) {
            std::vector<exact> computed, wanted;
            signal_places_.each(b, [&](i64 place, i64 i) {
                computed.push_back(at(*signal_, signal_places_, place));
                wanted.push_back(x_[b][i] * gain);
            });
            EXPECT_LE(distance_in_units<R>(computed, wanted), 2 * units_allowed(t_.lengths()))
                << "and back, transform " << b;
        }
    }

    Random& random_;
    Transform t_;
    Draw d_;
    Places signal_places_, spectrum_places_;
    std::shared_ptr<Memory<R>> signal_, spectrum_; // one in place
    double forward_scale_ = 1, backward_scale_ = 1;
    std::vector<std::vector<exact>> x_, y_;
};

template <class R> void run_many(int domain, int count, std::uint64_t stream)
{
    Random random(stream);
    for (int i = 0; i < count && !testing::Test::HasFailure(); ++i)
        Problem<R>(random, domain, drawn_lengths(random)).run();
}

constexpr int some = 150;

TEST(Transforms, of_complex_doubles_are_what_the_definition_says) { run_many<double>(ORV_DFT_COMPLEX, some, 1); }
TEST(Transforms, of_complex_floats_are_what_the_definition_says) { run_many<float>(ORV_DFT_COMPLEX, some, 2); }
TEST(Transforms, of_doubles_are_what_the_definition_says) { run_many<double>(ORV_DFT_REAL, some, 3); }
TEST(Transforms, of_floats_are_what_the_definition_says) { run_many<float>(ORV_DFT_REAL, some, 4); }

TEST(TransformsNightly, of_complex_doubles_are_what_the_definition_says)
{
    run_many<double>(ORV_DFT_COMPLEX, 20 * some, 5);
}
TEST(TransformsNightly, of_complex_floats_are_what_the_definition_says)
{
    run_many<float>(ORV_DFT_COMPLEX, 20 * some, 6);
}
TEST(TransformsNightly, of_doubles_are_what_the_definition_says) { run_many<double>(ORV_DFT_REAL, 20 * some, 7); }
TEST(TransformsNightly, of_floats_are_what_the_definition_says) { run_many<float>(ORV_DFT_REAL, 20 * some, 8); }

} // namespace
} // namespace orv::test
