// Block sizes and work areas at the edges of their formulas.
#include "blas/gemm/gemm.h"
#include "frame/kernels/blas.h"
#include "tests/gemm/product.h"
#include "tests/support/probe.h"

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> gemm::Desc<T> bound()
{
    gemm::Desc<T> desc = {};
    kernel<GetKernel<T>>("blas", name_of<T>("", "gemm_get_kernel"))(0, &desc);
    return desc;
}
template <class T> gemm::Desc<T> sized(i64 m, i64 n, i64 k)
{
    gemm::Desc<T> desc = bound<T>();
    kernel<GetBlksSize<T>>("blas", name_of<T>("", "gemm_get_blks_size"))(&m, &n, &k, &desc);
    return desc;
}
template <class T> int size_areas(int selector, int mode, i64 m, i64 n, i64 k, gemm::Desc<T>& desc)
{
    return kernel<GetBufsSize<T>>("blas", name_of<T>("", "gemm_get_bufs_size"))(selector, mode, &m, &n, &k, &desc);
}
template <class T> int take_areas(int selector, void** handle, gemm::Desc<T>& desc)
{
    return kernel<GetBufs<T>>("blas", name_of<T>("", "gemm_get_bufs"))(selector, handle, &desc);
}
template <class T> void free_areas(void* handle)
{
    kernel<FreeBufs<T>>("blas", name_of<T>("", "gemm_free_bufs"))(handle);
}

struct Depth {
    i64 k, kb;
};

TEST(Blocks, depth_of_real_blocks)
{
    for (auto [k, kb] :
         {Depth{-5, 128}, {0, 128},   {1, 128},   {127, 128}, {128, 128}, {129, 132},  {132, 132}, {133, 136},
          {253, 256},     {255, 256}, {256, 256}, {257, 128}, {258, 132}, {300, 152},  {304, 152}, {305, 152},
          {306, 156},     {500, 252}, {511, 256}, {512, 256}, {513, 256}, {1024, 256}, {1025, 256}}) {
        EXPECT_EQ(sized<float>(9, 9, k).kb, kb) << k;
        EXPECT_EQ(sized<double>(9, 9, k).kb, kb) << k;
    }
}

TEST(Blocks, depth_of_complex_blocks)
{
    for (auto [k, kb] : {Depth{0, 128},
                         {127, 128},
                         {129, 132},
                         {253, 256},
                         {255, 256},
                         {256, 128},
                         {257, 128},
                         {300, 128},
                         {512, 128},
                         {1023, 128},
                         {1024, 128},
                         {1025, 256},
                         {5000, 256}}) {
        EXPECT_EQ(sized<cpx<float>>(9, 9, k).kb, kb) << k;
        EXPECT_EQ(sized<cpx<double>>(9, 9, k).kb, kb) << k;
    }
}

TEST(Blocks, rows_follow_the_last_cache_and_an_unknown_one_counts_as_large)
{
    const auto expect_rows = [](auto type, i64 small, i64 large) {
        using T = decltype(type);
        const auto rows = [](std::vector<i32> cache) {
            ProbeScope probe;
            probe->cache = cache;
            return sized<T>(10, 10, 10).mb;
        };
        EXPECT_EQ(rows({1, 32768, 0, 0x400000}), small);
        EXPECT_EQ(rows({1, 32768, 0, 1}), small);
        EXPECT_EQ(rows({1, 32768, 0, 0x400001}), large);
        EXPECT_EQ(rows({0, 32768, 0, 0x1000}), large);
    };
    expect_rows(float{}, 0x300, 0x500);
    expect_rows(double{}, 0x180, 0x280);
    expect_rows(cpx<float>{}, 0x140, 0x200);
    expect_rows(cpx<double>{}, 0xa0, 0x100);
}

TEST(Blocks, columns_are_whole_granules_within_the_cap)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        const i64 unit = is_complex<T> ? 4 : 8, cap = letter<T> == 'z' ? 2000 : 5000;
        for (i64 n : {i64(-1), i64(0), i64(1), unit}) EXPECT_EQ(sized<T>(9, n, 9).nb, unit);
        EXPECT_EQ(sized<T>(9, unit + 1, 9).nb, 2 * unit);
        EXPECT_EQ(sized<T>(9, cap - unit, 9).nb, cap - unit);
        EXPECT_EQ(sized<T>(9, cap - 1, 9).nb, cap);
        EXPECT_EQ(sized<T>(9, cap + 1, 9).nb, cap);
    });
}

TEST(Blocks, sizes_that_are_set_stay)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        const i64 m = 100, n = 100, k = 100;
        for (int set = 0; set < 8; ++set) {
            gemm::Desc<T> desc = bound<T>();
            kernel<SetBlksSize<T>>("blas", name_of<T>("", "gemm_set_blks_size"))(set & 1 ? 7 : 0, set & 2 ? 9 : 0,
                                                                                 set & 4 ? 5 : 0, &desc);
            desc.get_blks_size(&m, &n, &k, &desc);
            const auto chosen = sized<T>(m, n, k);
            EXPECT_EQ(desc.mb, set & 1 ? 7 : chosen.mb);
            EXPECT_EQ(desc.nb, set & 2 ? 9 : chosen.nb);
            EXPECT_EQ(desc.kb, set & 4 ? 5 : chosen.kb);
        }
    });
}

template <class T> gemm::Desc<T> with_blocks(i64 mb, i64 nb, i64 kb)
{
    gemm::Desc<T> desc = bound<T>();
    desc.mb = mb, desc.nb = nb, desc.kb = kb;
    return desc;
}

TEST(Areas, are_sized_for_the_operands_or_for_whole_blocks)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        const i64 e = sizeof(T);
        const auto up = [](i64 x, i64 unit) { return (x + unit - 1) / unit * unit; };
        for (int mode : {0x6b, 0x6c})
            for (auto [m, n, k] : {std::array<i64, 3>{7, 9, 5}, {99, 201, 61}, {100, 200, 60}, {500, 500, 500}}) {
                gemm::Desc<T> d = with_blocks<T>(99, 201, 61);
                ASSERT_EQ(size_areas(0x64, mode, m, n, k, d), 0);
                const bool whole = mode == 0x6c;
                const i64 mp = up(whole ? 99 : std::min<i64>(m, 99), d.m_unit);
                const i64 np = up(whole ? 201 : std::min<i64>(n, 201), d.n_unit);
                const i64 kp = up(whole ? 61 : std::min<i64>(k, 61), d.k_unit);
                EXPECT_EQ(d.a.bytes, mp * e * kp + 0x200);
                EXPECT_EQ(d.a.panel_stride, kp * d.m_unit);
                EXPECT_EQ(d.a.align_shift, 12);
                EXPECT_EQ(d.b.bytes, np * e * kp + 0x200);
                EXPECT_EQ(d.b.panel_stride, kp * d.n_unit);
                EXPECT_EQ(d.b.align_shift, 12);
                EXPECT_EQ(d.scratch_bytes, kp * e * d.n_unit * d.scratch_factor + 0x200);
                EXPECT_EQ(d.scratch_align_shift, 7);
            }
    });
}

TEST(Areas, an_a_block_of_d_at_full_size_takes_a_quarter_more_than_a_mebibyte)
{
    gemm::Desc<double> d = with_blocks<double>(0x280, 5000, 256);
    size_areas(0x65, 0x6c, 1, 1, 1, d);
    EXPECT_EQ(d.a.bytes, 0x140000 + 0x200);
}

TEST(Areas, an_unknown_mode_or_selector_is_refused)
{
    gemm::Desc<double> d = with_blocks<double>(100, 100, 100);
    for (int mode : {0, 0x64, 0x6a, 0x6d}) EXPECT_EQ(size_areas(0x64, mode, 9, 9, 9, d), 1);
    ProbeScope probe;
    void* handle = nullptr;
    for (int selector : {0, 0x63, 0x67, 0x6b, 199, 201}) EXPECT_EQ(take_areas(selector, &handle, d), 1);
    EXPECT_EQ(probe->allocations, 0);
}

struct Selection {
    int selector;
    bool a, scratch, b;
};
constexpr Selection selections[] = {{0x64, true, true, true},   {200, true, true, true},   {0x65, true, false, false},
                                    {0x66, false, false, true}, {0x68, false, true, true}, {0x69, true, true, false},
                                    {0x6a, false, true, false}};

TEST(Areas, follow_one_another_on_their_boundaries_in_one_block)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (const Selection& s : selections) {
            SCOPED_TRACE(s.selector);
            gemm::Desc<T> d = with_blocks<T>(50, 60, 70);
            ASSERT_EQ(size_areas(s.selector, 0x6c, 1, 1, 1, d), 0);
            ProbeScope probe;
            void* handle = nullptr;
            ASSERT_EQ(take_areas(s.selector, &handle, d), 0);
            const i64 bytes =
                (s.a ? 8192 + d.a.bytes : 0) + (s.scratch ? 256 + d.scratch_bytes : 0) + (s.b ? 8192 + d.b.bytes : 0);
            EXPECT_EQ(probe->asked_bytes, std::vector<i64>{bytes});
            EXPECT_EQ(probe->asked_alignments, std::vector<i64>{128});
            const char* front = static_cast<char*>(handle);
            const auto expect_area = [&](bool wanted, const T* start, i64 size, std::uintptr_t boundary) {
                if (!wanted) {
                    EXPECT_EQ(start, nullptr);
                    return;
                }
                const char* at = reinterpret_cast<const char*>(start);
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(at) % boundary, 0u);
                EXPECT_GE(at, front);
                EXPECT_LT(at - front, static_cast<std::ptrdiff_t>(boundary));
                front = at + size;
            };
            expect_area(s.a, d.a.buffer, d.a.bytes, 4096);
            expect_area(s.scratch, d.scratch_buffer, d.scratch_bytes, 128);
            expect_area(s.b, d.b.buffer, d.b.bytes, 4096);
            EXPECT_LE(front, static_cast<char*>(handle) + bytes);
            free_areas<T>(handle);
            EXPECT_EQ(probe->live, 0);
        }
    });
}

TEST(Areas, give_a_null_handle_without_memory)
{
    gemm::Desc<double> d = with_blocks<double>(50, 60, 70);
    size_areas(0x64, 0x6c, 1, 1, 1, d);
    ProbeScope probe;
    probe->fail_all = true;
    void* handle = &d;
    EXPECT_EQ(take_areas(0x64, &handle, d), 0);
    EXPECT_EQ(handle, nullptr);
}

} // namespace
} // namespace orv::test
