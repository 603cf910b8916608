// Kernel tables, kernel records and the descriptor: fields by their offset, as a caller in another language meets them.
#include "blas/gemm/gemm.h"
#include "frame/kernels/blas.h"
#include "tests/gemm/product.h"
#include "tests/support/probe.h"

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class F> F field(const void* record, std::size_t offset)
{
    F value;
    std::memcpy(&value, static_cast<const char*>(record) + offset, sizeof value);
    return value;
}
i64 word(const void* record, std::size_t offset) { return field<i64>(record, offset); }
i32 half(const void* record, std::size_t offset) { return field<i32>(record, offset); }

template <class T> struct Api {
    ZeroDesc<T>* zero_desc = kernel<ZeroDesc<T>>("blas", letter<T>, "gemm_zero_desc");
    NumKernels<T>* num_kernels = kernel<NumKernels<T>>("blas", letter<T>, "gemm_num_kernels");
    GetKernel<T>* get_kernel = kernel<GetKernel<T>>("blas", letter<T>, "gemm_get_kernel");
    GetOptimalKernel<T>* get_optimal_kernel = kernel<GetOptimalKernel<T>>("blas", letter<T>, "gemm_get_optimal_kernel");
    GetKernelVersion<T>* get_kernel_version = kernel<GetKernelVersion<T>>("blas", letter<T>, "gemm_get_kernel_version");
    ApiSupport<T>* api_support = kernel<ApiSupport<T>>("blas", letter<T>, "gemm_api_support");
    SetBlksSize<T>* set_blks_size = kernel<SetBlksSize<T>>("blas", letter<T>, "gemm_set_blks_size");
    const char* records = static_cast<const char*>(table(letter<T> + std::string("_all_gemm_ker")));
    const i32* best = static_cast<const i32*>(table(letter<T> + std::string("_opt_gemm_ker")));
};

constexpr std::size_t record_bytes = 160;

// Where the fields of a record stand, and where the descriptor keeps each.
struct Pair {
    std::size_t in_record, in_desc;
};
constexpr Pair words[] = {{0, 40},    {8, 48},    {16, 56},   // m_unit, n_unit, k_unit
                          {32, 64},   {40, 72},   {48, 80},   // m_min, n_min, k_min
                          {64, 152},  {72, 160},  {80, 168},  // get_blks_size, get_bufs_size, get_bufs
                          {88, 176},  {96, 184},  {104, 192}, // copyan, copyat, copyac
                          {112, 200}, {120, 208}, {128, 216}, // copybn, copybt, copybc
                          {136, 248},                         // ker
                          {144, 224}, {152, 232}};            // copya_ext, copyb_ext
constexpr Pair halves[] = {{24, 240}, {56, 8}};               // scratch_factor, capability_mask
constexpr std::size_t desc_bytes = 280;

struct Row {
    char type;
    i64 m_unit, n_unit, k_unit, scratch_factor, m_min, n_min, k_min, capability_mask;
    std::vector<std::string> ker;
};
const Row rows[] = {{'s', 4, 8, 4, 2, 4, 4, 4, 0x7e, {"ker0"}},
                    {'d', 2, 8, 4, 1, 4, 4, 4, 0x7e, {"ker0", "ker1"}},
                    {'c', 2, 4, 4, 2, 2, 4, 4, 0x6a, {"ker0"}},
                    {'z', 1, 4, 4, 1, 2, 4, 4, 0x6a, {"ker0"}}};

template <class T> const Row& row()
{
    for (const Row& r : rows)
        if (r.type == letter<T>) return r;
    std::abort();
}

const char* record_of(const char* records, std::size_t index) { return records + index * record_bytes; }

TEST(KernelTable, holds_the_numbers_and_routines_of_each_type)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        const Api<T> api;
        const Row& r = row<T>();
        SCOPED_TRACE(letter<T>);
        for (std::size_t index = 0; index < r.ker.size(); ++index) {
            const char* record = record_of(api.records, index);
            EXPECT_EQ(word(record, 0), r.m_unit);
            EXPECT_EQ(word(record, 8), r.n_unit);
            EXPECT_EQ(word(record, 16), r.k_unit);
            EXPECT_EQ(half(record, 24), r.scratch_factor);
            EXPECT_EQ(word(record, 32), r.m_min);
            EXPECT_EQ(word(record, 40), r.n_min);
            EXPECT_EQ(word(record, 48), r.k_min);
            EXPECT_EQ(half(record, 56), r.capability_mask);
            const std::string for_c = is_complex<T> ? "c" : "t"; // real types have no operator of their own for C
            const std::string names[] = {"get_blks_size", "get_bufs_size", "get_bufs", "copyan",        "copyat",
                                         "copya" + for_c, "copybn",        "copybt",   "copyb" + for_c, r.ker[index]};
            for (std::size_t i = 0; i < std::size(names); ++i)
                EXPECT_EQ(field<void*>(record, 64 + 8 * i), kernel_address("blas", name_of<T>("", "gemm_" + names[i])));
            for (const auto& [offset, name] : {std::pair{144, "gemm_copya_ext"}, {152, "gemm_copyb_ext"}})
                EXPECT_EQ(field<void*>(record, offset),
                          is_complex<T> ? nullptr : kernel_address("blas", name_of<T>("", name)));
        }
        EXPECT_EQ(api.best[0], 0);
        EXPECT_EQ(api.best[1], letter<T> == 'd' ? 1 : 0);
    });
}

TEST(Descriptor, is_cleared_but_for_what_the_choice_of_a_kernel_overwrites)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        unsigned char bytes[desc_bytes];
        static_assert(sizeof(gemm::Desc<T>) == desc_bytes);
        std::memset(bytes, 0xab, sizeof bytes);
        gemm::Desc<T> desc;
        std::memcpy(static_cast<void*>(&desc), bytes, sizeof desc);
        Api<T>().zero_desc(&desc);
        std::memcpy(bytes, &desc, sizeof desc);
        for (std::size_t i = 0; i < desc_bytes; ++i) {
            const bool kept = (i >= 64 && i < 88) || (i >= 240 && i < 244);
            if (i >= 244 && i < 248) continue; // between fields
            EXPECT_EQ(bytes[i], kept ? 0xab : 0) << letter<T> << " byte " << i;
        }
    });
}

TEST(Descriptor, takes_over_a_record_and_keeps_the_block_sizes)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        const Api<T> api;
        i32 count = -1;
        api.num_kernels(&count);
        ASSERT_EQ(count, static_cast<i32>(row<T>().ker.size()));
        for (i32 index = 0; index < count; ++index) {
            gemm::Desc<T> desc;
            std::memset(static_cast<void*>(&desc), 0xcd, sizeof desc);
            api.zero_desc(&desc);
            api.set_blks_size(11, 22, 33, &desc);
            ASSERT_EQ(api.get_kernel(index, &desc), 0);
            const char* record = record_of(api.records, index);
            EXPECT_EQ(half(&desc, 4), index);
            EXPECT_EQ(half(&desc, 12), 0); // version
            EXPECT_EQ(word(&desc, 16), 11);
            EXPECT_EQ(word(&desc, 24), 22);
            EXPECT_EQ(word(&desc, 32), 33);
            for (Pair p : words) EXPECT_EQ(word(&desc, p.in_desc), word(record, p.in_record)) << p.in_desc;
            for (Pair p : halves) EXPECT_EQ(half(&desc, p.in_desc), half(record, p.in_record)) << p.in_desc;
        }
        gemm::Desc<T> untouched = {}, desc = {};
        EXPECT_EQ(api.get_kernel(count, &desc), 1);
        EXPECT_EQ(api.get_kernel(-1, &desc), 1);
        EXPECT_EQ(std::memcmp(&desc, &untouched, sizeof desc), 0);
    });
}

TEST(Descriptor, binds_the_second_record_on_one_processor_only)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        const Api<T> api;
        for (int code : {0, 0x41, 0x42, 0x43}) {
            ProbeScope probe;
            probe->microarchitecture = code;
            gemm::Desc<T> desc = {};
            EXPECT_EQ(api.get_optimal_kernel(&desc), 0);
            EXPECT_EQ(desc.kernel_index, letter<T> == 'd' && code == 0x42 ? 1 : 0);
        }
    });
}

TEST(Descriptor, second_record_multiplies_like_the_first)
{
    const Problem<double> p = {'n', 't', 37, 29, 41, 0.7, 0.3};
    Operands<double> first(p), second(p);
    first.call(gemm<double>());
    ProbeScope probe;
    probe->microarchitecture = 0x42;
    second.call(gemm<double>());
    expect_bits(second, [&](i64 i, i64 j) { return first.at(i, j); });
}

TEST(Version, leaves_b_in_place_for_single_up_to_512_kib)
{
    const Api<float> s;
    gemm::Desc<float> desc = {};
    const auto version = [&](i64 n, i64 k, i64 nb, i64 kb) {
        desc.nb = nb, desc.kb = kb;
        const i64 m = 100;
        return s.get_kernel_version(&m, &n, &k, &desc);
    };
    EXPECT_EQ(version(512, 256, 5000, 256), 4); // exactly 0x80000 bytes
    EXPECT_EQ(version(513, 256, 5000, 256), 2);
    EXPECT_EQ(version(513, 100000, 512, 256), 4); // of n, and of k, a block counts
    EXPECT_EQ(version(100000, 255, 512, 256), 4);
    EXPECT_EQ(version(100000, 100000, 5000, 256), 2);
}

TEST(Version, packs_b_for_the_other_types_whatever_the_arguments)
{
    const auto expect_two = [](auto type) {
        using T = decltype(type);
        EXPECT_EQ(Api<T>().get_kernel_version(nullptr, nullptr, nullptr, nullptr), 2);
    };
    expect_two(double{}), expect_two(cpx<float>{}), expect_two(cpx<double>{});
}

TEST(Descriptor, supports_the_packed_interface)
{
    for_all_types([](auto type) { EXPECT_EQ(Api<decltype(type)>().api_support(), 1); });
}

TEST(EmptySlots, do_nothing)
{
    std::vector<std::string> names = {"sgemm_getbufs", "sgemm_freebufs", "dgemm_getbufs", "dgemm_freebufs"};
    for (const std::string type : {"s", "d", "c", "z"}) {
        names.push_back("x" + type + "gemm_internal");
        for (const char* slot : {"initialize_kernel_info", "initialize_buffers", "map_thread_to_kernel"})
            names.push_back(type + "gemm_" + slot);
    }
    for (const std::string& name : names) kernel<Empty<double>>("blas", name)();
}

} // namespace
} // namespace orv::test
