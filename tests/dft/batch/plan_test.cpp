// Plans of batches: the sizes told, what is refused, and what is left when they end.
#include "tests/dft/batch/batch.h"

namespace orv::test {
namespace {

template <class Body> void every_entry(Body body)
{
    for (const bool forward : {true, false})
        for (const char* form : batch_forms) {
            body(BatchName<float>{forward, form});
            body(BatchName<double>{forward, form});
        }
}

template <class R> t_8u* next_free(const BatchPlanOf<R>& plan)
{
    return *reinterpret_cast<BatchArena*>(plan.memory.get());
}

// The first block lies so far behind the memory, wherever that is; blocks are multiples of 256.
t_8u* first_block(t_8u* memory) { return memory + 0x110 - reinterpret_cast<std::uintptr_t>(memory) % 16; }

TEST(BatchPlan, takes_exactly_the_bytes_told)
{
    every_entry([]<class R>(BatchName<R> name) {
        for (const i64 n : {2, 16, 18, 60, 64, 100, 128, 216, 243, 1000, 4096})
            for (const i64 columns : {1, 2, 5, 16, 100}) {
                const BatchPlanOf<R> plan(name, n, columns, columns);
                EXPECT_EQ(next_free(plan), plan.memory.get() + plan.bytes) << n << " " << columns;
                EXPECT_EQ((plan.bytes - 0x110) % 256, 0);
                EXPECT_EQ((plan.thread_bytes - 0x110) % 256, 0);
            }
    });
}

TEST(BatchPlan, serves_in_memory_at_any_address)
{
    every_entry([]<class R>(BatchName<R> name) {
        const i64 n = 30, columns = 5;
        const auto x = random_array<cpx<R>>(n * columns, 1);
        const auto expected = BatchPlanOf<R>(name, n, columns, 7).transformed(x);
        for (i64 off = 1; off < 16; ++off) {
            const BatchPlanOf<R> plan(name, n, columns, 7, off);
            EXPECT_EQ(next_free(plan), first_block(plan.memory.get()) + plan.bytes - 0x110);
            const auto result = plan.transformed(x);
            EXPECT_TRUE(same_bits(result.data(), expected.data(), n * columns));
            std::vector<cpx<R>> data(plan.read_from(n - 1, columns - 1) + 1 + n * columns);
            EXPECT_EQ(plan.run(data.data(), data.data(), 2, off), 0);
        }
    });
}

TEST(BatchPlan, gives_all_blocks_of_its_memory_back_at_its_end)
{
    every_entry([]<class R>(BatchName<R> name) {
        for (const i64 n : {3, 100, 252}) {
            const BatchPlanOf<R> plan(name, n, 5, 5);
            ASSERT_EQ(name.template entry<BatchFree>("Free")(plan.memory.get()), 0);
            EXPECT_EQ(next_free(plan), first_block(plan.memory.get()));
            std::vector<cpx<R>> data(static_cast<std::size_t>(2 * n * 5));
            EXPECT_EQ(plan.run(data.data(), data.data()), 7) << "a plan without columns";
        }
    });
}

TEST(BatchPlan, does_not_change_and_takes_no_memory_when_it_runs)
{
    every_entry([]<class R>(BatchName<R> name) {
        const BatchPlanOf<R> plan(name, 90, 7, 9);
        const std::vector<t_8u> before(plan.memory.get(), plan.memory.get() + plan.bytes);
        const auto x = random_array<cpx<R>>(90 * 7, 1);
        ProbeScope probe;
        plan.transformed(x);
        EXPECT_EQ(probe->allocations, 0);
        EXPECT_TRUE(same_bits(before.data(), plan.memory.get(), plan.bytes));
    });
}

TEST(BatchPlan, refuses_null_before_numbers_before_lengths)
{
    every_entry([]<class R>(BatchName<R> name) {
        for (const char* operation : {"GetSize", "GetThreadSize"}) {
            const auto size = name.template entry<BatchGetSize>(operation);
            EXPECT_EQ(size(17, 1, 0, 1, 1, nullptr), 3);
            name.size(operation, 17, 0, 1, 3);
            name.size(operation, 16, -1, 1, 3);
            name.size(operation, 16, 1, 0, 3);
            name.size(operation, 0, 1, 1, 3);
            for (i64 n = 1; n <= 300; ++n) {
                const i64 bytes = name.size(operation, n, 4, 4, is_covered(n) ? 0 : 7);
                EXPECT_EQ(bytes == -1, !is_covered(n)) << n;
            }
            i64 bytes = -1;
            EXPECT_EQ(size(16, 2, 4, 4, 1, &bytes), 7);
            EXPECT_EQ(size(16, 1, 4, 4, 2, &bytes), 7);
            EXPECT_EQ(bytes, -1);
        }
        EXPECT_EQ(name.template entry<BatchInit>("Init")(nullptr, 16, 1, 4, 4, 1), 3);
        std::vector<t_8u> memory(4096, 0x5a), untouched(memory);
        EXPECT_EQ(name.template entry<BatchInit>("Init")(memory.data(), 34, 1, 4, 4, 1), 7);
        EXPECT_EQ(name.template entry<BatchInit>("Init")(memory.data(), 16, 1, 0, 4, 1), 3);
        EXPECT_EQ(memory, untouched);
        EXPECT_EQ(name.template entry<BatchInitAlloc>("InitAlloc")(nullptr, 16, 1, 4, 4, 1), 3);
        EXPECT_EQ(name.template entry<BatchFree>("Free")(nullptr), 3);
    });
}

template <class R> i32 run(BatchName<R> name, cpx<R>* data, const BatchThread* ctx, const void* plan)
{
    if (name.in_place()) return name.template entry<BatchInPlace<cpx<R>>>("")(data, ctx, plan);
    return name.template entry<Batch<cpx<R>>>("")(data, data, ctx, plan);
}

TEST(BatchPlan, refuses_to_run_on_null_and_by_plans_of_others)
{
    every_entry([]<class R>(BatchName<R> name) {
        const BatchPlanOf<R> plan(name, 16, 4, 4);
        const Memory buffer(plan.thread_bytes);
        std::vector<cpx<R>> data(64, cpx<R>{1, 2}), untouched(data);
        const BatchThread ctx{1, 0, buffer.get()};
        EXPECT_EQ(run<R>(name, nullptr, &ctx, plan.memory.get()), 3);
        EXPECT_EQ(run<R>(name, data.data(), nullptr, plan.memory.get()), 3);
        EXPECT_EQ(run<R>(name, data.data(), &ctx, nullptr), 3);
        for (const BatchThread& bad : {BatchThread{1, 0, nullptr}, BatchThread{0, 0, buffer.get()},
                                       BatchThread{2, 2, buffer.get()}, BatchThread{2, -1, buffer.get()}})
            EXPECT_EQ(run<R>(name, data.data(), &bad, plan.memory.get()), 3);
        EXPECT_EQ(run<R>({!name.forward, name.form}, data.data(), &ctx, plan.memory.get()), 7);
        EXPECT_TRUE(same_bits(data.data(), untouched.data(), 64));
    });
}

TEST(BatchPlan, in_a_block_of_its_own_goes_back_to_where_it_came_from)
{
    every_entry([]<class R>(BatchName<R> name) {
        const auto init = name.template entry<BatchInitAlloc>("InitAlloc");
        ProbeScope probe;
        void* plan = &probe;
        EXPECT_EQ(init(&plan, 17, 1, 4, 4, 1), 7);
        EXPECT_EQ(probe->allocations, 0);
        probe->fail_all = true;
        EXPECT_EQ(init(&plan, 60, 1, 4, 4, 1), 1);
        EXPECT_EQ(plan, &probe) << "not touched";
        probe->fail_all = false;
        ASSERT_EQ(init(&plan, 60, 1, 4, 4, 1), 0);
        EXPECT_EQ(probe->asked_bytes.back(), name.size("GetSize", 60, 4, 4));
        EXPECT_EQ(probe->live, 1);
        EXPECT_EQ(name.template entry<BatchFree>("Free")(plan), 0);
        EXPECT_EQ(probe->live, 0);
    });
}

} // namespace
} // namespace orv::test
