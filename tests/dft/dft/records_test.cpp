// Records: the way that each length goes, sizes, refusals, memory.
#include "tests/dft/dft/general.h"

#include <thread>

namespace orv::test {
namespace {

constexpr Form forms[] = {Form::interleaved, Form::split, Form::out_of_order, Form::real};
constexpr i32 flags[] = {scale_none, scale_forward, scale_inverse, scale_both};

// f<float>(), f<double>()
template <class F> void both_types(F f) { f.template operator()<float>(), f.template operator()<double>(); }

std::vector<i32> radixes(const YmpDftSpec& spec)
{
    std::vector<i32> list;
    if (spec.prime_fact)
        for (i32 k = 0; k <= spec.last_factor; ++k) list.push_back(spec.factors[k].radix);
    return list;
}

TEST(GeneralDftRecord, has_the_kind_the_length_and_nothing_more_for_the_shortest)
{
    constexpr i32 single[] = {13, 14, 0x434D414A, 15}, twice[] = {16, 17, 0x434D414B, 18};
    for (int f = 0; f < 4; ++f)
        for (i32 n = 1; n <= 16; ++n) {
            const Made<float> s(forms[f], n);
            const Made<double> d(forms[f], n);
            EXPECT_EQ(s.fields().id, single[f]);
            EXPECT_EQ(d.fields().id, twice[f]);
            EXPECT_EQ(d.fields().length, n);
            EXPECT_EQ(d.fields().buffer_bytes, 0);
            EXPECT_EQ(d.fields().is_pow2 + d.fields().prime_fact + d.fields().conv_length, 0);
            EXPECT_EQ(d.fields().direct_table, nullptr);
        }
}

TEST(GeneralDftRecord, leaves_powers_of_two_to_their_engine)
{
    for (const Form form : forms)
        for (i32 n = 32; n <= 1024; n *= 2) {
            const Made<double> dft(form, n);
            ASSERT_EQ(dft.status, 0);
            EXPECT_EQ(dft.fields().is_pow2, 1);
            ASSERT_NE(dft.fields().fft_spec, nullptr);
            EXPECT_EQ(1 << dft.fields().fft_spec->order, n);
            EXPECT_TRUE(radixes(dft.fields()).empty());
        }
}

struct Factored {
    i32 n;
    std::vector<i32> list, found; // found: out of order
};
const Factored factored[] = {{18, {3, 6}, {6, 3}},
                             {24, {4, 6}, {6, 4}},
                             {34, {17, 2}, {2, 17}},
                             {36, {3, 3, 4}, {4, 3, 3}},
                             {40, {5, 8}, {2, 4, 5}},
                             {45, {3, 3, 5}, {3, 3, 5}},
                             {48, {3, 16}, {4, 4, 3}},
                             {91, {7, 13}, {7, 13}},
                             {96, {4, 4, 6}, {6, 4, 4}},
                             {160, {5, 4, 8}, {2, 4, 4, 5}},
                             {267, {3, 89}, {3, 89}},
                             {298, {149, 2}, {2, 149}},
                             {1000, {5, 5, 5, 8}, {2, 4, 5, 5, 5}},
                             {7921, {89, 89}, {89, 89}},
                             {43046721, std::vector<i32>(16, 3), std::vector<i32>(16, 3)}};

TEST(GeneralDftRecord, lists_factors_with_an_even_one_last_or_as_they_are_found)
{
    for (const auto& [n, list, found] : factored) {
        if (n > 10000) continue;
        const Made<double> dft(Form::interleaved, n), scrambled(Form::out_of_order, n), split(Form::split, n);
        ASSERT_EQ(radixes(dft.fields()), list) << n;
        EXPECT_EQ(radixes(split.fields()), list) << n;
        EXPECT_EQ(radixes(scrambled.fields()), found) << n;
        EXPECT_EQ(scrambled.fields().out_of_order, 1);
        i32 stride = 1;
        for (i32 k = 0; k <= dft.fields().last_factor; ++k) {
            const DftFactor& f = dft.fields().factors[k];
            EXPECT_EQ(f.stride, stride);
            EXPECT_EQ(f.count, n / f.stride / f.radix);
            stride *= f.radix;
        }
    }
}

TEST(GeneralDftRecord, halves_even_lengths_of_reals)
{
    EXPECT_EQ(radixes(Made<double>(Form::real, 36).fields()), (std::vector<i32>{3, 6}));
    EXPECT_EQ(radixes(Made<double>(Form::real, 45).fields()), (std::vector<i32>{3, 3, 5}));
    EXPECT_NE(Made<double>(Form::real, 36).fields().recombine_forward, nullptr);
    EXPECT_EQ(Made<double>(Form::real, 45).fields().recombine_forward, nullptr);
}

TEST(GeneralDftRecord, goes_by_sums_for_primes_up_to_89)
{
    for (const i32 n : {17, 19, 53, 83, 89}) {
        const Made<double> dft(Form::interleaved, n);
        EXPECT_TRUE(radixes(dft.fields()).empty()) << n;
        EXPECT_NE(dft.fields().direct_table, nullptr);
    }
    const Made<double> dft(Form::interleaved, 17);
    EXPECT_NE(dft.fields().direct_table, nullptr);
    EXPECT_EQ(dft.fields().conv_length, 0);
    EXPECT_EQ(dft.fields().buffer_bytes, 16 * 17 + 64);
}

TEST(GeneralDftRecord, convolves_what_has_too_large_factors)
{
    // 303 = 3*101 and 302 = 2*151 have a factor above the largest for odd and for even lengths, 9409 = 97*97 too.
    constexpr i32 lengths[][2] = {{97, 200},  {101, 256},   {127, 256},    {191, 384},    {302, 640},
                                  {303, 640}, {4093, 8192}, {4099, 16384}, {9409, 32768}, {10403, 32768}};
    for (const auto& [n, length] : lengths) {
        const Made<double> dft(Form::interleaved, n);
        EXPECT_EQ(dft.fields().conv_length, length) << n;
        EXPECT_EQ(dft.fields().prime_fact, 0);
        ASSERT_NE(dft.fields().conv_spec, nullptr);
        EXPECT_EQ(dft.fields().conv_spec->length, length);
    }
}

TEST(GeneralDftRecord, knows_where_to_scale)
{
    both_types([]<class R>() {
        for (const i32 n : {7, 48, 64, 101})
            for (const i32 flag : flags) {
                const Made<R> dft(Form::interleaved, n, flag);
                const YmpDftSpec& spec = dft.fields();
                EXPECT_EQ(spec.scale_forward, flag == scale_forward || flag == scale_both);
                EXPECT_EQ(spec.scale_inverse, flag == scale_inverse || flag == scale_both);
                EXPECT_EQ(spec.norm, flag == scale_both ? 1.0 / std::sqrt(double(n)) : 1.0 / double(n));
            }
    });
}

// n, out of every way.
constexpr i32 some_lengths[] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10,  11,  12,  13,  14,  15,  16,  17,  18,
                                20, 30, 34, 45, 49, 64, 89, 91, 97, 105, 119, 134, 182, 202, 210, 289, 600, 674};

TEST(GeneralDft, comes_back_from_its_inverse_scaled_as_the_flag_says)
{
    both_types([]<class R>() {
        const double unit = sizeof(R) == 4 ? 0x1p-23 : 0x1p-52;
        for (const i32 n : some_lengths)
            for (const i32 flag : flags) {
                const double gain = flag == scale_none ? n : 1, allowed = 20 * unit * std::log2(n + 1.0);
                const double ahead = flag == scale_forward ? 1.0 / n : flag == scale_both ? 1 / std::sqrt(n) : 1;
                for (const Form form : {Form::interleaved, Form::split, Form::out_of_order}) {
                    const Made<R> dft(form, n, flag), plain(form, n);
                    const auto x = random_array<cpx<R>>(n, 7);
                    const auto spectrum = transformed(dft, true, x, false, dft.buffer());
                    const auto unscaled = transformed(plain, true, x, false, plain.buffer());
                    const auto back = transformed(dft, false, spectrum, true, dft.buffer());
                    for (i32 k = 0; k < n; ++k) {
                        EXPECT_NEAR(spectrum[k].re, ahead * unscaled[k].re, allowed * n * ahead) << n << ' ' << flag;
                        EXPECT_NEAR(back[k].re, gain * x[k].re, allowed * gain) << n << ' ' << flag;
                        EXPECT_NEAR(back[k].im, gain * x[k].im, allowed * gain) << n << ' ' << flag;
                    }
                }
                for (const std::string layout : layouts) {
                    const Made<R> dft(Form::real, n, flag), plain(Form::real, n);
                    const auto x = random_array<R>(n, 8);
                    const auto spectrum = real_transformed(dft, layout, true, x, false, dft.buffer());
                    const auto unscaled = real_transformed(plain, layout, true, x, false, plain.buffer());
                    const auto back = real_transformed(dft, layout, false, spectrum, true, dft.buffer());
                    EXPECT_NEAR(spectrum[0], ahead * unscaled[0], allowed * n * ahead) << n << ' ' << flag;
                    for (i32 k = 0; k < n; ++k) EXPECT_NEAR(back[k], gain * x[k], allowed * gain) << n << ' ' << flag;
                }
            }
    });
}

TEST(GeneralDft, zeroes_the_value_behind_the_reals_after_an_inverse_in_place_from_ccs)
{
    for (const i32 n : {3, 4, 9, 18, 30, 45, 64, 89, 97}) {
        const Made<double> dft(Form::real, n);
        auto x = random_array<double>(n + 2, 3);
        EXPECT_EQ(primitive<Dft<double>>("ympsDFTInv_CCSToR_64f")(x.data(), x.data(), dft.spec(), dft.buffer()), 0);
        EXPECT_EQ(x[n], 0) << n;
    }
}

TEST(GeneralDft, is_the_same_for_threads_that_share_a_record)
{
    for (const i32 n : {15, 60, 97, 101, 1001}) {
        const Made<double> dft(Form::interleaved, n);
        const auto x = random_array<cpx<double>>(n, 5);
        const auto alone = transformed(dft, true, x, false, dft.buffer());
        std::vector<std::thread> team;
        std::vector<int> same(4);
        for (int t = 0; t < 4; ++t)
            team.emplace_back([&, t] {
                const Memory buffer(dft.fields().buffer_bytes);
                same[t] = 1;
                for (int i = 0; i < 20; ++i) {
                    const auto result = transformed(dft, true, x, i % 2 == 0, buffer.get());
                    same[t] &= same_bits(result.data(), alone.data(), n);
                }
            });
        for (auto& t : team) t.join();
        EXPECT_EQ(same, std::vector<int>(4, 1)) << n;
    }
}

TEST(GeneralDftRecord, stands_on_the_first_boundary_wherever_its_memory_begins)
{
    for (const i32 n : {15, 60, 64, 97, 101})
        for (int shift = 0; shift < 64; shift += 7) {
            i32 spec = 0, init = 0, buffer = 0;
            ASSERT_EQ(named<DftGetSize>(Form::interleaved, "GetSize", "64f")(n, scale_none, 0, &spec, &init, &buffer),
                      0);
            const Guarded<t_8u> memory(spec, Edge::end, shift), work(init, Edge::end, shift),
                area(buffer, Edge::end, shift);
            ASSERT_EQ(named<DftInit>(Form::interleaved, "Init", "64f")(n, scale_none, 0, memory.data(), work.data()),
                      0);
            auto x = random_array<cpx<double>>(n, 5);
            const auto* record = reinterpret_cast<const YmpDftSpec*>(memory.data());
            EXPECT_EQ(primitive<Dft<cpx<double>>>("ympsDFTFwd_CToC_64fc")(x.data(), x.data(), record, area.data()), 0);
            EXPECT_EQ(primitive<Dft<cpx<double>>>("ympsDFTFwd_CToC_64fc")(x.data(), x.data(), &fields_of(record),
                                                                          area.data()),
                      0);
        }
}

TEST(GeneralDftRecord, refuses_null_before_the_length_and_the_length_before_the_flag)
{
    both_types([]<class R>() {
        for (const Form form : forms) {
            const auto get_size = named<DftGetSize>(form, "GetSize", token<R>());
            const auto init = named<DftInit>(form, "Init", token<R>());
            const auto init_alloc = named<DftInitAlloc>(form, "InitAlloc", token<R>());
            i32 a = 77, b = 77, c = 77;
            EXPECT_EQ(get_size(0, 3, 0, nullptr, &b, &c), -8);
            EXPECT_EQ(get_size(0, 3, 0, &a, nullptr, &c), -8);
            EXPECT_EQ(get_size(0, 3, 0, &a, &b, nullptr), -8);
            EXPECT_EQ(init(0, 3, 0, nullptr, nullptr), -8);
            EXPECT_EQ(init_alloc(nullptr, 0, 3, 0), -8);
            std::vector<t_8u> memory(1024, 0x5a);
            YmpDftSpec* made = nullptr;
            for (const i32 n : bad_lengths) {
                EXPECT_EQ(get_size(n, 3, 0, &a, &b, &c), -6);
                EXPECT_EQ(init(n, 3, 0, memory.data(), nullptr), -6);
                EXPECT_EQ(init_alloc(&made, n, 3, 0), -6);
            }
            EXPECT_EQ(memory, std::vector<t_8u>(1024, 0x5a));
            for (const i32 flag : {0, 3, 5, 9, 16, -1}) {
                EXPECT_EQ(get_size(48, flag, 0, &a, &b, &c), -16);
                EXPECT_EQ(init_alloc(&made, 48, flag, 0), -16);
                EXPECT_EQ(init(48, flag, 0, memory.data(), nullptr), -16);
                EXPECT_EQ(fields_of(memory.data()).id, 0);
                EXPECT_EQ(fields_of(memory.data()).length, 48);
            }
            EXPECT_EQ(init(48, scale_none, 0, memory.data(), nullptr), -8) << "tables are made in init_memory";
            EXPECT_EQ(fields_of(memory.data()).id, 0);
            EXPECT_EQ(init(12, scale_none, 0, memory.data(), nullptr), 0) << "and short lengths have none";
            EXPECT_EQ(made, nullptr);
            EXPECT_EQ(a + b + c, 3 * 77);
        }
    });
}

TEST(GeneralDftRecord, refuses_lengths_that_nothing_covers)
{
    i32 a = 0, b = 0, c = 0;
    for (const Form form : {Form::interleaved, Form::split, Form::out_of_order}) {
        const auto get_size = named<DftGetSize>(form, "GetSize", "64f");
        EXPECT_EQ(get_size((1 << 26) - 1, scale_none, 0, &a, &b, &c), -6) << "3*2731*8191";
        EXPECT_EQ(get_size((1 << 26) + 4, scale_none, 0, &a, &b, &c), -6);
        EXPECT_EQ(get_size(1 << 26, scale_none, 0, &a, &b, &c), 0);
        EXPECT_EQ(get_size(3 << 24, scale_none, 0, &a, &b, &c), 0);
        EXPECT_EQ(get_size(33554467, scale_none, 0, &a, &b, &c), -6) << "a prime above 2^25";
        EXPECT_EQ(get_size(43046721, scale_none, 0, &a, &b, &c), 0) << "3^16";
    }
}

// What refused calls leave of their arrays.
template <class Call> void refused(i32 code, const YmpDftSpec* spec, Call call)
{
    std::vector<double> src(256, 1), dst(256, 77);
    EXPECT_EQ(call(src.data(), dst.data(), spec), code);
    if (spec != nullptr) {
        EXPECT_EQ(call(nullptr, dst.data(), spec), -8);
        EXPECT_EQ(call(src.data(), nullptr, spec), -8);
    }
    EXPECT_EQ(dst, std::vector<double>(256, 77));
}
template <class Try> void each_transform(Form form, Try attempt)
{
    if (form == Form::real)
        for (const std::string layout : layouts)
            for (const std::string& name : {"ympsDFTFwd_RTo" + layout, "ympsDFTInv_" + layout + "ToR"})
                attempt([name](const double* src, double* dst, const YmpDftSpec* spec) {
                    return primitive<Dft<double>>(name + "_64f")(src, dst, spec, nullptr);
                });
    else
        for (const std::string name : {"Fwd_CToC_64f", "Inv_CToC_64f"})
            attempt([name, form](const double* src, double* dst, const YmpDftSpec* spec) {
                if (form == Form::split) {
                    const auto f = primitive<SplitDft<double>>("ympsDFT" + name);
                    if (src != nullptr && dst != nullptr) {
                        EXPECT_EQ(f(src, nullptr, dst, dst + 128, spec, nullptr), -8);
                        EXPECT_EQ(f(src, src + 128, dst, nullptr, spec, nullptr), -8);
                    }
                    return f(src, src + 128, dst, dst + 128, spec, nullptr);
                }
                const std::string whole = (form == Form::out_of_order ? "ympsDFTOutOrd" : "ympsDFT") + name + "c";
                return primitive<Dft<cpx<double>>>(whole)(reinterpret_cast<const cpx<double>*>(src),
                                                          reinterpret_cast<cpx<double>*>(dst), spec, nullptr);
            });
}

TEST(GeneralDft, refuses_null_other_kinds_and_freed_records_and_writes_nothing)
{
    for (const Form form : forms)
        for (const i32 n : {12, 48, 64, 97}) {
            const Made<double> dft(form, n);
            each_transform(form, [&](auto call) { refused(-8, nullptr, call); });
            for (const Form other : forms)
                if (other != form) {
                    const Made<double> wrong(other, n);
                    each_transform(form, [&](auto call) { refused(-17, wrong.spec(), call); });
                    i32 bytes = 77;
                    EXPECT_EQ(named<DftGetBufSize>(form, "GetBufSize", "64f")(wrong.spec(), &bytes), -17);
                    EXPECT_EQ(bytes, 77);
                    EXPECT_EQ(named<DftFree>(form, "Free", "64f")(wrong.spec()), -17);
                }
            const auto free = named<DftFree>(form, "Free", "64f");
            EXPECT_EQ(free(nullptr), -8);
            ProbeScope probe;
            EXPECT_EQ(free(dft.spec()), 0) << "memory of the caller stays the caller's";
            EXPECT_EQ(dft.fields().id, 0);
            EXPECT_EQ(free(dft.spec()), -17);
            each_transform(form, [&](auto call) { refused(-17, dft.spec(), call); });
        }
}

TEST(GeneralDft, writes_nothing_without_memory_for_a_buffer)
{
    for (const Form form : forms)
        for (const i32 n : {48, 97, 90, 101}) {
            const Made<double> dft(form, n);
            if (dft.fields().buffer_bytes == 0) continue;
            ProbeScope probe;
            probe->fail_all = true;
            each_transform(form, [&](auto call) { refused(-9, dft.spec(), call); });
            EXPECT_EQ(probe->live, 0);
        }
}

TEST(GeneralDftRecord, tells_buffers_with_room_to_align_them)
{
    for (const Form form : forms)
        for (const i32 n : {12, 48, 64, 97, 101}) {
            const Made<double> dft(form, n);
            const auto get = named<DftGetBufSize>(form, "GetBufSize", "64f");
            i32 bytes = -1;
            EXPECT_EQ(get(dft.spec(), &bytes), 0);
            EXPECT_EQ(bytes, dft.fields().buffer_bytes == 0 ? 0 : dft.fields().buffer_bytes + 64) << n;
            EXPECT_EQ(get(dft.spec(), nullptr), -8);
            EXPECT_EQ(get(nullptr, &bytes), -8);
        }
}

TEST(GeneralDftRecord, made_in_blocks_of_its_own_transforms_as_one_in_memory_of_the_caller_and_leaves_nothing)
{
    both_types([]<class R>() {
        for (const Form form : {Form::interleaved, Form::split, Form::out_of_order, Form::real})
            for (const i32 n : some_lengths) {
                const Made<R> in_memory(form, n);
                ProbeScope probe;
                YmpDftSpec* made = nullptr;
                ASSERT_EQ(named<DftInitAlloc>(form, "InitAlloc", token<R>())(&made, n, scale_none, 0), 0);
                EXPECT_EQ(radixes(*made), radixes(in_memory.fields()));
                EXPECT_EQ(made->conv_length, in_memory.fields().conv_length);
                EXPECT_EQ(made->buffer_bytes, in_memory.fields().buffer_bytes);
                if (form == Form::interleaved || form == Form::out_of_order) {
                    auto x = random_array<cpx<R>>(n, 9), y = x;
                    const auto f = primitive<Dft<cpx<R>>>(
                        (form == Form::interleaved ? "ympsDFTFwd_CToC_" : "ympsDFTOutOrdFwd_CToC_") + token<R>() + "c");
                    EXPECT_EQ(f(x.data(), x.data(), made, nullptr), 0);
                    EXPECT_EQ(f(y.data(), y.data(), in_memory.spec(), nullptr), 0);
                    EXPECT_TRUE(same_bits(x.data(), y.data(), n)) << n;
                }
                EXPECT_EQ(named<DftFree>(form, "Free", token<R>())(made), 0);
                EXPECT_EQ(probe->live, 0) << n;
            }
    });
}

TEST(GeneralDftRecord, leaves_nothing_behind_whichever_block_is_refused)
{
    both_types([]<class R>() {
        for (const Form form : forms)
            for (const i32 n : {12, 17, 34, 48, 64, 91, 97, 101, 202, 289, 600}) {
                YmpDftSpec* made = nullptr;
                i32 status = 0;
                each_allocation_fails(
                    [&] {
                        made = nullptr;
                        status = named<DftInitAlloc>(form, "InitAlloc", token<R>())(&made, n, scale_none, 0);
                        if (status == 0) named<DftFree>(form, "Free", token<R>())(made);
                    },
                    [&] { EXPECT_TRUE(status == 0 || (status == -9 && made == nullptr)) << n << ": " << status; });
            }
    });
}

} // namespace
} // namespace orv::test
