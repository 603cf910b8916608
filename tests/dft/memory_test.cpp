#include "tests/dft/primitive.h"
#include "tests/support/probe.h"

namespace orv::test {
namespace {

// Calls visit(T{}) for the types of a family's list.
#define VISIT(t) visit(t_##t{});
template <class Visit> void each_allocated(Visit visit) { ORV_DFT_ALLOCATED(VISIT) }

template <class T> T* allocate(i32 count) { return primitive<Allocation<T>>("ympsMalloc_" + token<T>())(count); }
void release(void* block) { primitive<void(void*)>("ympsFree")(block); }

TEST(PrimitiveMemory, gives_as_many_bytes_as_the_elements_need_on_a_cache_line)
{
    each_allocated([]<class T>(T) {
        ProbeScope probe;
        T* block = allocate<T>(37);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0u);
        EXPECT_EQ(probe->asked_bytes, std::vector<i64>{37 * i64{sizeof(T)}}) << token<T>();
        std::memset(static_cast<void*>(block), 1, 37 * sizeof(T));
        release(block);
        EXPECT_EQ(probe->live, 0);
    });
}

TEST(PrimitiveMemory, gives_null_for_a_count_below_one_without_asking_anybody)
{
    each_allocated([]<class T>(T) {
        for (const i32 count : bad_lengths) {
            ProbeScope probe;
            EXPECT_EQ(allocate<T>(count), nullptr) << token<T>();
            EXPECT_EQ(probe->allocations, 0);
        }
    });
}

TEST(PrimitiveMemory, counts_bytes_beyond_32_bits)
{
    each_allocated([]<class T>(T) {
        ProbeScope probe;
        probe->fail_all = true;
        EXPECT_EQ(allocate<T>(INT32_MAX), nullptr);
        EXPECT_EQ(probe->asked_bytes, std::vector<i64>{INT32_MAX * i64{sizeof(T)}}) << token<T>();
    });
}

TEST(PrimitiveMemory, gives_null_when_the_service_layer_does)
{
    each_allocated([]<class T>(T) {
        ProbeScope probe;
        probe->fail_at = 0;
        EXPECT_EQ(allocate<T>(1), nullptr) << token<T>();
    });
}

TEST(PrimitiveMemory, takes_null_back) { release(nullptr); }

} // namespace
} // namespace orv::test
