// What one form says of another: in place and apart, at every address, packed layouts, flags, there and back.
#include "tests/dft/fft/engine.h"

#include <thread>

namespace orv::test {
namespace {

constexpr i32 largest = 13;

// The buffer that a caller brings stands at any address too, and ends at an unreadable page.
TEST(PowerOfTwo, gives_the_same_bits_in_place_and_at_every_address)
{
    each_real_type([]<class R>(R) {
        for (i32 order = 0; order <= largest; ++order) {
            const i64 n = i64{1} << order;
            const auto x = random_array<cpx<R>>(n, 1);
            for (const auto d : {Direction::forward, Direction::inverse}) {
                const Record<KindOf<R, Shape::pairs>> pairs(order);
                std::vector<cpx<R>> should(x.size());
                ASSERT_EQ(transform(d, x.data(), should.data(), pairs.spec(), pairs.buffer()), ok);
                for (const int off : {0, 1, 3, 8, 12, 20}) {
                    const Record<KindOf<R, Shape::pairs>> record(order, scale_none, off);
                    const std::size_t bytes = x.size() * sizeof(cpx<R>);
                    const GuardedBytes a(bytes + static_cast<std::size_t>(off)), b(bytes + 64);
                    auto* const src = reinterpret_cast<cpx<R>*>(a.at_end());
                    auto* const dst = reinterpret_cast<cpx<R>*>(b.at_end() + off);
                    std::memcpy(src, x.data(), bytes);
                    ASSERT_EQ(transform(d, src, dst, record.spec(), record.buffer()), ok);
                    EXPECT_EQ(std::memcmp(dst, should.data(), bytes), 0) << order << " off " << off;
                    EXPECT_EQ(std::memcmp(src, x.data(), bytes), 0);
                    ASSERT_EQ(transform(d, src, src, record.spec(), record.buffer()), ok);
                    EXPECT_EQ(std::memcmp(src, should.data(), bytes), 0) << order << " off " << off;
                }
            }
        }
    });
}

TEST(PowerOfTwo, in_two_arrays_gives_the_same_bits_in_place_and_at_every_address)
{
    each_real_type([]<class R>(R) {
        for (i32 order = 0; order <= largest; ++order) {
            const std::size_t n = std::size_t{1} << order;
            const auto re = random_array<R>(i64{1} << order, 1), im = random_array<R>(i64{1} << order, 2);
            for (const auto d : {Direction::forward, Direction::inverse}) {
                const Record<KindOf<R, Shape::planes>> record(order);
                std::vector<R> should_re(n), should_im(n);
                ASSERT_EQ(transform(d, re.data(), im.data(), should_re.data(), should_im.data(), record.spec(),
                                    record.buffer()),
                          ok);
                for (std::size_t shift = 0; shift < 5; ++shift) {
                    const Guarded<R> a(n, Edge::end, shift), b(n, Edge::start, shift / 2), c(n), e(n, Edge::end, 1);
                    std::copy(re.begin(), re.end(), a.begin()), std::copy(im.begin(), im.end(), b.begin());
                    ASSERT_EQ(transform(d, a.data(), b.data(), c.data(), e.data(), record.spec(), record.buffer()), ok);
                    EXPECT_TRUE(same_bits(c.data(), should_re.data(), i64{1} << order));
                    EXPECT_TRUE(same_bits(e.data(), should_im.data(), i64{1} << order));
                    ASSERT_EQ(transform(d, a.data(), b.data(), a.data(), b.data(), record.spec(), record.buffer()), ok);
                    EXPECT_TRUE(same_bits(a.data(), should_re.data(), i64{1} << order)) << order;
                    EXPECT_TRUE(same_bits(b.data(), should_im.data(), i64{1} << order)) << order;
                }
            }
        }
    });
}

// A spectrum of n reals in a format, out of Perm.
template <class R> std::vector<R> packed(const std::string& format, const std::vector<R>& perm)
{
    const std::size_t n = perm.size();
    std::vector<R> all{perm[0]};
    if (format == "CCS") all.push_back(0);
    if (n > 1 && format == "Perm") all.push_back(perm[1]);
    all.insert(all.end(), perm.begin() + std::min<std::ptrdiff_t>(2, static_cast<std::ptrdiff_t>(n)), perm.end());
    if (n > 1 && format != "Perm") all.push_back(perm[1]);
    if (n > 1 && format == "CCS") all.push_back(0);
    return all;
}

TEST(PowerOfTwo, of_reals_differs_between_formats_in_the_places_alone)
{
    each_real_type([]<class R>(R) {
        for (i32 order = 0; order <= largest; ++order) {
            const i64 n = i64{1} << order;
            const Record<KindOf<R, Shape::reals>> record(order);
            const auto x = random_array<R>(n, 3);
            std::vector<R> perm(x.size()), back(x.size());
            ASSERT_EQ(transform(Direction::forward, "Perm", x.data(), perm.data(), record.spec(), record.buffer()), ok);
            ASSERT_EQ(transform(Direction::inverse, "Perm", perm.data(), back.data(), record.spec(), record.buffer()),
                      ok);
            for (const std::string format : formats)
                for (const bool in_place : {false, true})
                    for (const std::size_t shift : {0u, 1u, 3u}) {
                        const auto should = packed(format, perm);
                        const Guarded<R> a(should.size(), Edge::end, shift), b(should.size());
                        std::copy(x.begin(), x.end(), a.begin());
                        R* const spectrum = in_place ? a.data() : b.data();
                        ASSERT_EQ(
                            transform(Direction::forward, format, a.data(), spectrum, record.spec(), record.buffer()),
                            ok);
                        EXPECT_EQ(std::vector<R>(spectrum, spectrum + should.size()), should) << format << order;

                        const Guarded<R> c(x.size());
                        R* const reals = in_place ? spectrum : c.data();
                        ASSERT_EQ(
                            transform(Direction::inverse, format, spectrum, reals, record.spec(), record.buffer()), ok);
                        EXPECT_EQ(std::vector<R>(reals, reals + n), back) << format << order;
                        if (in_place && format == "CCS") {
                            EXPECT_EQ(reals[n], 0);
                        }
                        if (!in_place) {
                            EXPECT_EQ(std::vector<R>(spectrum, spectrum + should.size()), should) << "source";
                        }
                    }
        }
    });
}

// Divisions are by powers of two except by the root of an odd order's length: exact, so the bits follow.
template <class Kind, class Call> void expect_flags(i32 order, i64 reals, Call call)
{
    using R = typename Kind::R;
    const auto x = random_array<R>(reals, 4);
    for (const auto d : {Direction::forward, Direction::inverse}) {
        std::vector<R> plain(x.size());
        const Record<Kind> none(order, scale_none);
        ASSERT_EQ(call(d, x.data(), plain.data(), none), ok);
        for (const i32 flag : {scale_forward, scale_inverse, scale_both}) {
            const Record<Kind> record(order, flag);
            std::vector<R> y(x.size());
            ASSERT_EQ(call(d, x.data(), y.data(), record), ok);
            const bool divides = flag == scale_both || (flag == scale_forward) == (d == Direction::forward);
            const R norm = divides ? static_cast<R>(record.spec()->norm) : R(1);
            for (std::size_t i = 0; i < y.size(); ++i) {
                const bool exact = flag != scale_both || order % 2 == 0;
                ASSERT_NEAR(y[i], plain[i] * norm, exact ? 0 : 64 * std::numeric_limits<R>::epsilon()) << order;
            }
        }
    }
}

TEST(PowerOfTwo, divides_where_its_flag_says)
{
    each_real_type([]<class R>(R) {
        for (const i32 order : {0, 1, 2, 3, 4, 5, 6, 7, 8, 11, 12, 17, 18}) {
            const i64 n = i64{1} << order;
            using Pairs = KindOf<R, Shape::pairs>;
            expect_flags<Pairs>(order, 2 * n, [](Direction d, const R* src, R* dst, const Record<Pairs>& r) {
                return transform(d, reinterpret_cast<const cpx<R>*>(src), reinterpret_cast<cpx<R>*>(dst), r.spec(),
                                 r.buffer());
            });
            using Planes = KindOf<R, Shape::planes>;
            expect_flags<Planes>(order, 2 * n, [n](Direction d, const R* src, R* dst, const Record<Planes>& r) {
                return transform(d, src, src + n, dst, dst + n, r.spec(), r.buffer());
            });
            using Reals = KindOf<R, Shape::reals>;
            expect_flags<Reals>(order, n, [](Direction d, const R* src, R* dst, const Record<Reals>& r) {
                return transform(d, "Perm", src, dst, r.spec(), r.buffer());
            });
        }
    });
}

// An inverse with its division brings back the input, up to a multiple of the input's norm.
TEST(PowerOfTwo, comes_back)
{
    each_real_type([]<class R>(R) {
        for (i32 order = 0; order <= 18; ++order) {
            const i64 n = i64{1} << order;
            const auto x = random_array<cpx<R>>(n, 5);
            const Record<KindOf<R, Shape::pairs>> record(order, order % 2 ? scale_both : scale_inverse);
            auto y = x;
            ASSERT_EQ(transform(Direction::forward, y.data(), y.data(), record.spec(), record.buffer()), ok);
            ASSERT_EQ(transform(Direction::inverse, y.data(), y.data(), record.spec(), record.buffer()), ok);
            for (std::size_t i = 0; i < x.size(); ++i) {
                ASSERT_NEAR(y[i].re, x[i].re, (order + 1) * 8 * std::numeric_limits<R>::epsilon()) << order;
                ASSERT_NEAR(y[i].im, x[i].im, (order + 1) * 8 * std::numeric_limits<R>::epsilon()) << order;
            }
        }
    });
}

TEST(PowerOfTwo, shares_a_record_among_threads_with_a_buffer_each)
{
    each_real_type([]<class R>(R) {
        for (const i32 order : {5, 9, 14, 18}) {
            const i64 n = i64{1} << order;
            using Kind = KindOf<R, Shape::pairs>;
            const Record<Kind> record(order);
            std::vector<std::vector<cpx<R>>> inputs, results(4), should;
            for (unsigned t = 0; t < 4; ++t) {
                inputs.push_back(random_array<cpx<R>>(n, 10 + t));
                should.push_back(inputs.back());
                ASSERT_EQ(
                    transform(Direction::forward, should[t].data(), should[t].data(), record.spec(), record.buffer()),
                    ok);
            }
            std::vector<std::thread> threads;
            for (unsigned t = 0; t < 4; ++t)
                threads.emplace_back([&, t] {
                    std::vector<t_8u> buffer(static_cast<std::size_t>(record.spec()->buffer_bytes));
                    for (int again = 0; again < 20; ++again) {
                        results[t] = inputs[t];
                        transform(Direction::forward, results[t].data(), results[t].data(), record.spec(),
                                  buffer.empty() ? nullptr : buffer.data());
                    }
                });
            for (auto& thread : threads) thread.join();
            for (unsigned t = 0; t < 4; ++t) EXPECT_TRUE(same_bits(results[t].data(), should[t].data(), n)) << order;
        }
    });
}

} // namespace
} // namespace orv::test
