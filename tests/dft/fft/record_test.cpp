// Records: sizes to the byte, fields, what is refused and what is left alone then.
#include "tests/dft/fft/engine.h"

#include <cmath>

namespace orv::test {
namespace {

constexpr i32 flags[] = {scale_none, scale_forward, scale_inverse, scale_both};
constexpr i32 bad_flags[] = {0, 3, 5, 7, 9, 16, -1, INT32_MAX};

// The sizes as they are documented, in the words of the documentation.
i64 down_to_64(i64 bytes) { return bytes / 64 * 64; }
template <class Kind> struct Documented {
    static constexpr i64 real = sizeof(typename Kind::R), pair = 2 * real;
    static constexpr i32 flat = Kind::wide ? 16 : 17;

    static i64 twiddles(i32 order) { return down_to_64(pair * (i64{1} << order) + pair + 63); }
    static i64 reversal(i32 order) { return down_to_64((i64{1} << order) / 4 * 4 + 67); }
    static i64 tables(i32 order)
    {
        if (order == 17 && !Kind::wide) return twiddles(16) + (i64{1} << 15) * pair + reversal(17);
        return twiddles(order) + reversal(order);
    }
    static i32 block_order(i32 order) { return Kind::wide ? (order <= 18 ? 6 : 8) : (order <= 19 ? 4 : 8); }
    static i32 buffer_order(i32 order) { return Kind::wide ? (order <= 18 ? 10 : 13) : (order <= 19 ? 10 : 14); }
    static i64 steps(i32 order)
    {
        if (order <= flat) return tables(order);
        return steps(order - block_order(order)) + (i64{1} << (order - 1)) * pair;
    }
    static i64 complex_tables(i32 order)
    {
        if (order < 6) return 0;
        if (order <= flat) return tables(order);
        return steps(order) + (order == 17 ? reversal(17) : down_to_64((i64{1} << (order - 10)) * 4 + 67));
    }
    static i64 buffer(i32 order)
    {
        if (order < 6) return 0;
        if (order <= flat) return down_to_64(pair * (i64{1} << order) + 63);
        i64 most = order >= 18 ? 2048 * pair : 0;
        for (i32 inner = order; inner > flat; inner -= block_order(inner))
            most = std::max(most, (i64{1} << buffer_order(inner)) * pair);
        return most;
    }
    static i64 quarter_wave(i32 order) { return down_to_64((i64{1} << order) / 4 * real + real + 63); }

    static Bytes of(i32 order)
    {
        if (order < 6) return {208, 0, 0};
        const i32 complex_order = Kind::real ? order - 1 : order;
        const i64 spec = complex_tables(complex_order) + (Kind::real ? quarter_wave(order) : 0) + 256;
        const i64 init = order <= 10 ? 0 : quarter_wave(order) + 64;
        EXPECT_LE(spec, INT32_MAX);
        return {static_cast<i32>(spec), static_cast<i32>(init), static_cast<i32>(buffer(complex_order))};
    }
};

TEST(PowerOfTwoRecord, has_the_documented_sizes)
{
    each_kind([]<class Kind>(Kind) {
        for (i32 order = 0; order <= Kind::limit; ++order)
            for (const i32 flag : flags) {
                const Bytes is = sizes<Kind>(order, flag), should = Documented<Kind>::of(order);
                EXPECT_EQ(is.spec, should.spec) << Kind::name() << ' ' << order;
                EXPECT_EQ(is.init, should.init) << Kind::name() << ' ' << order;
                EXPECT_EQ(is.buffer, should.buffer) << Kind::name() << ' ' << order;
            }
    });
}

TEST(PowerOfTwoRecord, of_double_pairs_has_sizes_counted_by_hand)
{
    using Kind = KindOf<double, Shape::pairs>;
    const auto expect = [](i32 order, i32 spec, i32 init, i32 buffer) {
        const Bytes is = sizes<Kind>(order);
        EXPECT_EQ(is.spec, spec);
        EXPECT_EQ(is.init, init);
        EXPECT_EQ(is.buffer, buffer);
    };
    expect(0, 208, 0, 0), expect(5, 208, 0, 0);
    expect(6, 1088 + 128 + 256, 0, 1024);
    expect(10, 16448 + 1088 + 256, 0, 16384);
    expect(11, 32832 + 2112 + 256, 4160 + 64, 32768);
    expect(16, 1048640 + 65600 + 256, 131136 + 64, 1048576);
    using Single = KindOf<float, Shape::pairs>;
    EXPECT_EQ(sizes<Single>(17).buffer, 1048576);
}

TEST(PowerOfTwoRecord, stands_on_the_first_64_byte_boundary_and_says_what_it_was_made_for)
{
    each_kind([]<class Kind>(Kind) {
        for (const i32 order : {0, 3, 5, 6, 7, 10, 11, 16, 17, 18})
            for (const i32 flag : flags)
                for (const int off : {0, 1, 40, 63}) {
                    const Bytes bytes = sizes<Kind>(order, flag);
                    const Guarded<t_8u> memory(static_cast<std::size_t>(bytes.spec + off));
                    const Guarded<t_8u> init(static_cast<std::size_t>(bytes.init + off));
                    YmpFftSpec* spec = nullptr;
                    ASSERT_EQ(Kind::init()(&spec, order, flag, 77, memory.data(), bytes.init ? init.data() : nullptr),
                              ok);
                    const auto at = reinterpret_cast<std::uintptr_t>(memory.data());
                    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(spec), (at + 63) / 64 * 64);
                    EXPECT_EQ(spec->id, Kind::id);
                    EXPECT_EQ(spec->order, order);
                    EXPECT_EQ(spec->hint, 77);
                    EXPECT_EQ(spec->scale_forward, flag == scale_forward || flag == scale_both);
                    EXPECT_EQ(spec->scale_inverse, flag == scale_inverse || flag == scale_both);
                    const double n = std::ldexp(1.0, order);
                    EXPECT_EQ(spec->norm, flag == scale_both ? 1.0 / std::sqrt(n) : 1.0 / n);
                    EXPECT_EQ(spec->buffer_bytes, bytes.buffer);
                    EXPECT_EQ(spec->user_alloc, 0);
                    EXPECT_EQ(spec->self_memory, nullptr);

                    i32 buffer = -1;
                    ASSERT_EQ(Kind::get_buf_size()(spec, &buffer), ok);
                    EXPECT_EQ(buffer, bytes.buffer ? bytes.buffer + 64 : 0);
                    EXPECT_EQ(Kind::free()(spec), ok);
                    EXPECT_EQ(spec->id, 0);
                    EXPECT_EQ(Kind::free()(spec), bad_record);
                }
    });
}

TEST(PowerOfTwoRecord, refuses_null_then_orders_out_of_range_then_flags)
{
    each_kind([]<class Kind>(Kind) {
        Bytes b;
        t_8u memory[4096];
        YmpFftSpec* spec = nullptr;
        EXPECT_EQ(Kind::get_size()(-1, 3, 0, nullptr, &b.init, &b.buffer), null_pointer);
        EXPECT_EQ(Kind::get_size()(-1, 3, 0, &b.spec, nullptr, &b.buffer), null_pointer);
        EXPECT_EQ(Kind::get_size()(-1, 3, 0, &b.spec, &b.init, nullptr), null_pointer);
        EXPECT_EQ(Kind::init()(nullptr, -1, 3, 0, memory, memory), null_pointer);
        EXPECT_EQ(Kind::init()(&spec, -1, 3, 0, nullptr, memory), null_pointer);
        EXPECT_EQ(Kind::init_alloc()(nullptr, -1, 3, 0), null_pointer);
        for (const i32 order : {-1, INT32_MIN, Kind::limit + 1, 31, INT32_MAX}) {
            ProbeScope probe;
            EXPECT_EQ(Kind::get_size()(order, 3, 0, &b.spec, &b.init, &b.buffer), bad_order) << Kind::name() << order;
            EXPECT_EQ(Kind::init()(&spec, order, 3, 0, memory, memory), bad_order);
            EXPECT_EQ(Kind::init_alloc()(&spec, order, 3, 0), bad_order);
            EXPECT_EQ(probe->allocations, 0);
        }
        EXPECT_EQ(Kind::get_size()(Kind::limit, scale_none, 0, &b.spec, &b.init, &b.buffer), ok);
        for (const i32 flag : bad_flags) {
            ProbeScope probe;
            EXPECT_EQ(Kind::get_size()(4, flag, 0, &b.spec, &b.init, &b.buffer), bad_flag);
            EXPECT_EQ(Kind::init_alloc()(&spec, 4, flag, 0), bad_flag);
            EXPECT_EQ(probe->allocations, 0);
            ASSERT_EQ(Kind::init()(&spec, 4, flag, 0, memory, memory), bad_flag);
            EXPECT_EQ(spec->id, 0);
            EXPECT_EQ(Kind::free()(spec), bad_record);
        }
        EXPECT_EQ(Kind::free()(nullptr), null_pointer);
        EXPECT_EQ(Kind::get_buf_size()(nullptr, &b.buffer), null_pointer);
        ASSERT_EQ(Kind::init()(&spec, 4, scale_none, 0, memory, nullptr), ok);
        EXPECT_EQ(Kind::get_buf_size()(spec, nullptr), null_pointer);
    });
}

TEST(PowerOfTwoRecord, needs_memory_for_a_base_from_order_11_on)
{
    each_kind([]<class Kind>(Kind) {
        for (const i32 order : {6, 10, 11, 12}) {
            std::vector<t_8u> memory(static_cast<std::size_t>(sizes<Kind>(order).spec));
            YmpFftSpec* spec = nullptr;
            EXPECT_EQ(Kind::init()(&spec, order, scale_none, 0, memory.data(), nullptr),
                      order <= 10 ? ok : null_pointer);
        }
    });
}

TEST(PowerOfTwoRecord, that_allocates_gives_back_all_of_it)
{
    each_kind([]<class Kind>(Kind) {
        for (const i32 order : {2, 7, 12, 17, 18}) {
            ProbeScope probe;
            YmpFftSpec* spec = nullptr;
            ASSERT_EQ(Kind::init_alloc()(&spec, order, scale_none, 5), ok);
            EXPECT_EQ(probe->live, 1); // the record, and no source of its tables
            EXPECT_EQ(spec->user_alloc, 1);
            EXPECT_EQ(spec->id, Kind::id);
            EXPECT_EQ(spec->order, order);
            EXPECT_EQ(Kind::free()(spec), ok);
            EXPECT_EQ(probe->live, 0);
        }
    });
}

TEST(PowerOfTwoRecord, without_memory_leaves_nothing_behind)
{
    each_kind([]<class Kind>(Kind) {
        for (const i32 order : {2, 7, 12, 18})
            each_allocation_fails(
                [&] {
                    YmpFftSpec* spec = nullptr;
                    const i32 status = Kind::init_alloc()(&spec, order, scale_none, 0);
                    EXPECT_EQ(status, probe().failed > 0 ? no_memory : ok);
                    EXPECT_EQ(spec == nullptr, status != ok);
                    if (spec) {
                        EXPECT_EQ(Kind::free()(spec), ok);
                    }
                },
                [] {});
    });
}

// All transforms of a kind, between a source and a destination of that many numbers; of reals all formats.
template <class Kind, class Visit> void each_transform(Visit visit)
{
    using R = typename Kind::R;
    for (const auto d : {Direction::forward, Direction::inverse}) {
        if constexpr (Kind::shape == Shape::pairs)
            visit([d](const R* src, R* dst, const YmpFftSpec* spec, t_8u* buffer) {
                return transform(d, reinterpret_cast<const cpx<R>*>(src), reinterpret_cast<cpx<R>*>(dst), spec, buffer);
            });
        else if constexpr (Kind::shape == Shape::planes)
            visit([d](const R* src, R* dst, const YmpFftSpec* spec, t_8u* buffer) {
                const auto behind = [](auto* p) { return p ? p + 4096 : p; };
                return transform(d, src, behind(src), dst, behind(dst), spec, buffer);
            });
        else
            for (const std::string format : formats)
                visit([d, format](const R* src, R* dst, const YmpFftSpec* spec, t_8u* buffer) {
                    return transform(d, format, src, dst, spec, buffer);
                });
    }
}

TEST(PowerOfTwo, tells_null_and_a_foreign_or_freed_record_and_leaves_the_destination_alone)
{
    each_kind([]<class Kind>(Kind) {
        using R = typename Kind::R;
        using Other = KindOf<R, Kind::real ? Shape::pairs : Shape::reals>;
        for (const i32 order : {0, 4, 6, 8}) {
            Record<Kind> record(order);
            const Record<Other> other(order);
            const auto fresh = random_array<R>(8192 + 2, 7), src = random_array<R>(8192 + 2, 8);
            each_transform<Kind>([&](auto call) {
                auto dst = fresh;
                R* const none = nullptr;
                EXPECT_EQ(call(none, dst.data(), record.spec(), record.buffer()), null_pointer);
                EXPECT_EQ(call(src.data(), none, record.spec(), record.buffer()), null_pointer);
                EXPECT_EQ(call(src.data(), dst.data(), nullptr, record.buffer()), null_pointer);
                EXPECT_EQ(call(src.data(), dst.data(), other.spec(), record.buffer()), bad_record);
                EXPECT_EQ(dst, fresh);
                EXPECT_EQ(call(dst.data(), dst.data(), other.spec(), record.buffer()), bad_record);
                EXPECT_EQ(dst, fresh);
            });
            ASSERT_EQ(Kind::free()(record.spec()), ok);
            each_transform<Kind>([&](auto call) {
                auto dst = fresh;
                EXPECT_EQ(call(src.data(), dst.data(), record.spec(), record.buffer()), bad_record);
                EXPECT_EQ(dst, fresh);
            });
        }
    });
}

TEST(PowerOfTwo, without_a_buffer_takes_one_and_without_memory_says_so)
{
    each_kind([]<class Kind>(Kind) {
        using R = typename Kind::R;
        for (const i32 order : {4, 6, 8, 12}) {
            const Record<Kind> record(order);
            const auto fresh = random_array<R>(8192 + 2, 7), src = random_array<R>(8192 + 2, 8);
            each_transform<Kind>([&](auto call) {
                auto with = fresh, dst = fresh;
                ASSERT_EQ(call(src.data(), with.data(), record.spec(), record.buffer()), ok);
                each_allocation_fails(
                    [&] {
                        dst = fresh;
                        const i32 status = call(src.data(), dst.data(), record.spec(), nullptr);
                        EXPECT_EQ(status, probe().failed > 0 ? no_memory : ok);
                        EXPECT_EQ(probe().allocations, record.spec()->buffer_bytes > 0);
                    },
                    [&] { EXPECT_EQ(dst, probe().failed > 0 ? fresh : with); });
            });
        }
    });
}

} // namespace
} // namespace orv::test
