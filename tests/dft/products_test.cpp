// Products and sums of arrays and constants. What a name does is read from its letters here, independently of the
// tables that the names come out of.
#include "tests/dft/exact.h"

#include <tuple>

namespace orv::test {
namespace {

// A worker or a public primitive: its operation, its forms and what its factor is.
struct Name {
    std::string stem; // ownsMulC, ympsMul, ...
    bool in_place = false;
    std::string law; // what stands behind the type and _I

    bool is_public() const { return stem.starts_with("ymps"); }
    bool is_sum() const { return stem.find("Add") != std::string::npos; }
    bool by_constant() const { return stem.ends_with('C'); }
    bool takes_factor() const
    {
        return is_public() ? law == "Sfs"
                           : law == "_PosSfs" || law == "_NegSfs" || law == "_PosOvfSfs" || law == "_NegOvfSfs";
    }
    // The factor where the name says it.
    i32 fixed_factor() const
    {
        if (law.find("1") != std::string::npos) return 1;
        return law.find("Bound") != std::string::npos ? -20 : 0;
    }
    std::string of(const std::string& type) const
    {
        if (is_public()) return stem + '_' + type + (in_place || !law.empty() ? "_" : "") + (in_place ? "I" : "") + law;
        return stem + '_' + type + (in_place ? "_I" : "") + law;
    }
};

template <class T> T expected(const Name& name, T a, T b, i32 factor)
{
    const auto x = exact(a), y = exact(b);
    return name.is_sum() ? result<T>(x + y, factor) : result<T>(x * y, factor);
}

// The call in its shape; in place dst holds b (a for constants) before.
template <class T, class... F> i32 call_with(const Name& name, const T* a, const T* b, T* dst, i32 n, F... factor)
{
    const auto run = [&]<class Shape>(Shape*, auto... arguments) {
        if (name.is_public()) return primitive<Shape>(name.of(token<T>()))(arguments..., factor...);
        primitive<Work<Shape>>(name.of(token<T>()))(arguments..., factor...);
        return i32{ok};
    };
    if (!name.by_constant()) {
        if (name.in_place) return run(static_cast<OneToOne<T, T, F...>*>(nullptr), a, dst, n);
        return run(static_cast<TwoToOne<T, F...>*>(nullptr), a, b, dst, n);
    }
    if (name.in_place) return run(static_cast<ByConstantInPlace<T, F...>*>(nullptr), as_constant(*b), dst, n);
    return run(static_cast<ByConstant<T, T, F...>*>(nullptr), a, as_constant(*b), dst, n);
}
template <class T> i32 call(const Name& name, const T* a, const T* b, T* dst, i32 n, i32 factor)
{
    return name.takes_factor() ? call_with(name, a, b, dst, n, factor) : call_with(name, a, b, dst, n);
}

// The constant that the _Ovf workers are for.
template <class T> bool has_another_worker(const Name& name, T c)
{
    if constexpr (std::is_same_v<T, t_16sc>) return name.stem == "ownsMulC" && c == T{INT16_MIN, INT16_MIN};
    else return false;
}

// All pairs of edges in one call, or one call for each constant.
template <class T> void expect_edges(const Name& name, i32 factor)
{
    std::vector<T> a, b;
    edge_pairs(a, b);
    const auto count = static_cast<i32>(a.size());
    const i32 piece = name.by_constant() ? 24 : count;
    for (i32 from = 0; from < count; from += piece) {
        const i32 n = std::min(piece, count - from);
        for (i32 k = 0; k < (name.by_constant() ? n : 1); ++k) {
            const T *x = &a[static_cast<std::size_t>(from)], *y = &b[static_cast<std::size_t>(from + k)];
            if (has_another_worker(name, *y)) continue;
            std::vector<T> dst(x, x + n);
            if (name.in_place && !name.by_constant()) dst.assign(y, y + n);
            ASSERT_EQ(call(name, x, y, dst.data(), n, factor), ok);
            for (i32 i = 0; i < n; ++i) {
                const T should = expected(name, x[i], name.by_constant() ? *y : y[i], factor);
                ASSERT_TRUE(same_bits(&dst[static_cast<std::size_t>(i)], &should, 1))
                    << name.of(token<T>()) << " factor=" << factor << " element " << from + i << " constant "
                    << from + k;
            }
        }
    }
}

// All lengths, and all boundaries that the operands may have to registers.
template <class T> void expect_places(const Name& name, i32 factor)
{
    const auto a = random_array<T>(70, 1), b = random_array<T>(70, 2);
    std::vector<T> should(70);
    for (std::size_t i = 0; i < 70; ++i) should[i] = expected(name, a[i], name.by_constant() ? b[0] : b[i], factor);
    Room room_a, room_b, room_dst;
    const auto put = [](Room& room, const std::vector<T>& from, i32 n, i64 distance) {
        T* at = room.place<T>(n, distance);
        std::memcpy(static_cast<void*>(at), from.data(), static_cast<std::size_t>(n) * sizeof(T));
        return at;
    };
    for (i32 n = name.is_public() ? 1 : 0; n <= 70; ++n)
        for (const i64 at_dst : distances<T>())
            for (const i64 at_a : distances<T>()) {
                const i64 at_b = (3 * at_a + at_dst) % 16 / static_cast<i64>(sizeof(real_t<T>)) *
                                 static_cast<i64>(sizeof(real_t<T>));
                const bool constant_in_place = name.in_place && name.by_constant();
                const T* x = constant_in_place ? nullptr : put(room_a, a, n, at_a);
                const T* y = name.by_constant() ? b.data() : name.in_place ? nullptr : put(room_b, b, n, at_b);
                T* dst =
                    name.in_place ? put(room_dst, name.by_constant() ? a : b, n, at_dst) : room_dst.place<T>(n, at_dst);
                ASSERT_EQ(call(name, x, y, dst, n, factor), ok);
                ASSERT_TRUE(same_bits(dst, should.data(), n))
                    << name.of(token<T>()) << " n=" << n << " factor=" << factor << " from page " << at_a << ' ' << at_b
                    << ' ' << at_dst;
                ASSERT_TRUE(room_dst.untouched_around()) << name.of(token<T>()) << " n=" << n;
            }
}

template <class T> void expect_scaled_workers()
{
    for (const char* stem : {"ownsMul", "ownsMulC", "ownsAdd", "ownsAddC"})
        for (const bool in_place : {false, true})
            for (const char* law : {"", "_1Sfs", "_PosSfs", "_NegSfs", "_Bound"}) {
                const Name name{stem, in_place, law};
                if (!name.takes_factor()) {
                    expect_edges<T>(name, name.fixed_factor());
                    expect_places<T>(name, name.fixed_factor());
                    continue;
                }
                const bool positive = name.law == "_PosSfs";
                for (i32 s = positive ? 2 : -15; s <= (positive ? 31 : -1); ++s) expect_edges<T>(name, s);
                expect_places<T>(name, positive ? 15 : -3);
                if (testing::Test::HasFailure()) return;
            }
}

TEST(ProductWorkers, follow_the_law_of_factors_with_16_bits) { expect_scaled_workers<t_16s>(); }
TEST(ProductWorkers, follow_the_law_of_factors_with_pairs_of_16_bits) { expect_scaled_workers<t_16sc>(); }

TEST(ProductWorkers, survive_the_constant_with_both_parts_lowest)
{
    const t_16sc lowest{INT16_MIN, INT16_MIN};
    for (const auto& [law, least, most] : {std::tuple{"_Ovf", 0, 0},
                                           {"_1OvfSfs", 1, 1},
                                           {"_PosOvfSfs", 2, 31},
                                           {"_NegOvfSfs", -15, -1},
                                           {"_BoundOvf", -20, -20}}) {
        const Name name{"ownsMulC", true, law};
        for (i32 s = least; s <= most; ++s) {
            std::vector<t_16sc> a, b;
            edge_pairs(a, b);
            auto dst = a;
            call(name, dst.data(), &lowest, dst.data(), static_cast<i32>(a.size()), s);
            for (std::size_t i = 0; i < a.size(); ++i)
                ASSERT_EQ(dst[i], expected(name, a[i], lowest, s))
                    << law << " factor=" << s << ' ' << a[i].re << ' ' << a[i].im;
        }
    }
}

#define VISIT(t) visit(t_##t{});
template <class Visit> void each_floating(Visit visit) { ORV_DFT_FLOATING(VISIT) }
template <class Visit>
void each_scaled(Visit visit){ORV_DFT_SCALED(VISIT)}

TEST(ProductWorkers, round_floats_once_an_operation)
{
    each_floating([]<class T>(T) {
        for (const char* stem : {"ownsMul", "ownsMulC", "ownsAdd", "ownsAddC"})
            for (const bool in_place : {false, true}) expect_places<T>({stem, in_place, ""}, 0);
    });
}

TEST(ProductWorkers, multiply_two_and_three_arrays_in_one_pass)
{
    each_floating([]<class T>(T) {
        const auto a = random_array<T>(71, 1), b = random_array<T>(71, 2), c = random_array<T>(71, 3);
        for (i32 n = 0; n <= 70; ++n)
            for (std::size_t shift = 0; shift < 2; ++shift) {
                Guarded<T> two(static_cast<std::size_t>(n)), three(static_cast<std::size_t>(n), Edge::start, shift);
                primitive<Work<TwoToOne<T>>>("ownps_Mpy2_" + token<T>())(&a[shift], b.data(), two.data(), n);
                primitive<Work<ThreeToOne<T>>>("ownps_Mpy3_" + token<T>())(&a[shift], b.data(), &c[shift], three.data(),
                                                                           n);
                for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i) {
                    const T first = a[i + shift] * b[i], second = first * c[i + shift];
                    ASSERT_TRUE(same_bits(&two[i], &first, 1)) << token<T>() << " n=" << n << " i=" << i;
                    ASSERT_TRUE(same_bits(&three[i], &second, 1)) << token<T>() << " n=" << n << " i=" << i;
                }
            }
    });
}

// From both sides of every class: what vanishes, what is rounded, what is plain, what saturates.
TEST(Products, follow_the_law_of_factors_on_all_edges)
{
    each_scaled([]<class T>(T) {
        for (const char* stem : {"ympsMul", "ympsMulC"})
            for (const bool in_place : {false, true}) {
                const Name name{stem, in_place, "Sfs"};
                for (i32 s = -70; s <= 70; ++s) expect_edges<T>(name, s);
                for (const i32 s : {INT32_MIN, INT32_MAX}) expect_edges<T>(name, s);
                if (testing::Test::HasFailure()) return;
            }
    });
}

TEST(Products, take_every_length_at_every_boundary)
{
    for (const char* stem : {"ympsMul", "ympsMulC"})
        for (const bool in_place : {false, true}) {
            each_scaled([&]<class T>(T) {
                for (const i32 s : {0, 1, 7, -2, -40, 66}) expect_places<T>({stem, in_place, "Sfs"}, s);
            });
            each_floating([&]<class T>(T) { expect_places<T>({stem, in_place, ""}, 0); });
            expect_places<t_16s>({stem, in_place, ""}, 0);
        }
}

TEST(Products, round_ties_to_even)
{
    auto* multiply = primitive<TwoToOne<t_16s, i32>>("ympsMul_16s_Sfs");
    const t_16s one = 1;
    for (const auto& [v, s, should] : {std::tuple<t_16s, i32, t_16s>{3, 1, 2},
                                       {5, 1, 2},
                                       {-3, 1, -2},
                                       {-5, 1, -2},
                                       {1, 1, 0},
                                       {-1, 1, 0},
                                       {6, 2, 2},
                                       {10, 2, 2},
                                       {7, 2, 2},
                                       {-6, 2, -2}}) {
        t_16s dst = 99;
        EXPECT_EQ(multiply(&v, &one, &dst, 1, s), ok);
        EXPECT_EQ(dst, should) << v << " factor " << s;
    }
}

TEST(Products, by_constants_that_need_no_product_are_zeros_and_copies)
{
    each_scaled([]<class T>(T) {
        const auto a = random_array<T>(33, 4);
        for (const auto& [c, s] : {std::pair{zero<T>, 0}, {zero<T>, -9}, {one<T>, 0}}) {
            std::vector<T> dst(33, a[0]), should = c == zero<T> ? std::vector<T>(33) : a;
            EXPECT_EQ(call<T>({"ympsMulC", false, "Sfs"}, a.data(), &c, dst.data(), 33, s), ok);
            EXPECT_TRUE(same_bits(dst.data(), should.data(), 33)) << token<T>();
        }
    });
}

// Null in each place in turn, also with a bad length; then bad lengths.
template <class T> void expect_refusals(const Name& name)
{
    T a[1]{}, b[1]{}, dst[1];
    std::memset(static_cast<void*>(dst), 0x5a, sizeof dst);
    for (const i32 n : {0, 1}) {
        if (!name.in_place || !name.by_constant()) {
            EXPECT_EQ(call<T>(name, nullptr, b, dst, n, 0), null_pointer);
        }
        if (!name.in_place && !name.by_constant()) {
            EXPECT_EQ(call<T>(name, a, nullptr, dst, n, 0), null_pointer);
        }
        EXPECT_EQ(call<T>(name, a, b, nullptr, n, 0), null_pointer);
    }
    for (const i32 n : bad_lengths) EXPECT_EQ(call<T>(name, a, b, dst, n, 0), bad_size) << name.of(token<T>());
    for (std::size_t i = 0; i < sizeof dst; ++i) EXPECT_EQ(reinterpret_cast<unsigned char*>(dst)[i], 0x5a);
}

TEST(Products, tell_null_before_a_bad_length_and_touch_nothing)
{
    for (const char* stem : {"ympsMul", "ympsMulC"})
        for (const bool in_place : {false, true}) {
            each_scaled([&]<class T>(T) { expect_refusals<T>({stem, in_place, "Sfs"}); });
            each_floating([&]<class T>(T) { expect_refusals<T>({stem, in_place, ""}); });
            expect_refusals<t_16s>({stem, in_place, ""});
        }
    const t_32fc x{};
    t_32fc dst{7, 7};
    EXPECT_EQ((primitive<ByConstant<t_32fc, t_32fc>>("ympsMulC_32fc")(&x, nullptr, &dst, 1)), null_pointer);
    EXPECT_EQ(dst.re, 7);
}

} // namespace
} // namespace orv::test
