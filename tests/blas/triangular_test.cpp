// Triangular solves and products of full, packed and band matrices: every option, stride and path.
#include "tests/blas/triangular.h"

#include <pthread.h>

namespace orv::test {
namespace {

// Solves in single names: only some have the x.
template <class T> std::string routine(const std::string& stem)
{
    const bool x = stem == "trmv" || (stem == "trsv" && letter<T> == 'd');
    return std::string(x ? "x" : "") + letter<T> + stem;
}

struct Family {
    Task task;
    Storage storage;
    const char* stem;
};
constexpr Family families[] = {{Task::solve, Storage::full, "trsv"},   {Task::multiply, Storage::full, "trmv"},
                               {Task::solve, Storage::packed, "tpsv"}, {Task::multiply, Storage::packed, "tpmv"},
                               {Task::solve, Storage::band, "tbsv"},   {Task::multiply, Storage::band, "tbmv"}};

template <class T> class TriangularTest : public testing::Test {
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(TriangularTest, Types);

TYPED_TEST(TriangularTest, is_within_its_bound_at_all_small_sizes_and_strides)
{
    using T = TypeParam;
    for (const Family& f : families) {
        TriangularSweep<T> sweep(f.task, routine<T>(f.stem));
        for (i64 n = 0; n <= 70; ++n)
            for (const i64 k : {i64(n % 8), n / 2, n + 2})
                if (f.storage == Storage::band || k == n + 2) {
                    sweep.run(f.storage, n, k, (n + k) % 3, all_strides);
                    if (testing::Test::HasFailure()) return;
                }
    }
}

// Sizes about those of blocks, windows of copies and choices of a body.
template <class T>
void across_blocks(std::span<const i64> sizes, std::span<const i64> widths, std::span<const i64> strides)
{
    for (const Family& f : families) {
        TriangularSweep<T> sweep(f.task, routine<T>(f.stem));
        for (const i64 n : sizes)
            for (const i64 k : widths)
                if (f.storage == Storage::band || k == widths.front()) {
                    sweep.run(f.storage, n, k, n % 2, strides);
                    if (testing::Test::HasFailure()) return;
                }
    }
}

TYPED_TEST(TriangularTest, is_within_its_bound_across_blocks)
{
    constexpr i64 sizes[] = {127, 128, 129, 199, 200, 255, 256}, widths[] = {5, 50, 130};
    across_blocks<TypeParam>(sizes, widths, few_strides);
    constexpr i64 long_one[] = {1001}, wide[] = {501};
    across_blocks<TypeParam>(long_one, wide, std::span(few_strides).first(1));
}

template <class T> class TriangularFull : public testing::Test {
};
TYPED_TEST_SUITE(TriangularFull, Types);

TYPED_TEST(TriangularFull, is_within_its_bound_across_blocks)
{
    constexpr i64 sizes[] = {999, 1000, 1001, 1024, 1027}, widths[] = {5, 499, 500, 501};
    across_blocks<TypeParam>(sizes, widths, all_strides);
}

TYPED_TEST(TriangularTest, reads_nothing_before_its_operands)
{
    using T = TypeParam;
    for (const Family& f : families) {
        TriangularSweep<T> sweep(f.task, routine<T>(f.stem));
        for (const i64 n : {1, 2, 5, 31, 33, 70})
            for (const i64 k : {0, 1, 2, 3, 40}) sweep.run(f.storage, n, k, 0, all_strides, Edge::start);
    }
}

// Each zero in x meets a NaN in A, which reaches the result; what the NaN does not concern stays a number.
TYPED_TEST(TriangularTest, lets_nan_through_zeros)
{
    using T = TypeParam;
    for (const Family& f : families)
        for (const i64 n : {6, 66, 300}) {
            const TriangularMatrix<T> a(f.storage, false, false, n, 4, 0);
            a.at(3, 1) = element<T>::make(std::numeric_limits<real_t<T>>::quiet_NaN());
            for (const i64 incx : {1, 2}) {
                Strided<T> x(n, incx);
                for (i64 i = 0; i < n; ++i) x(i) = zero<T>;
                call(kernel_address("blas", routine<T>(f.stem)), a, 'N', x.data(), incx);
                EXPECT_TRUE(x(0) == x(0) && x(1) == x(1) && x(2) == x(2)) << f.stem << n;
                EXPECT_FALSE(x(3) == x(3)) << f.stem << n;
            }
        }
}

TYPED_TEST(TriangularTest, leaves_x_alone_when_n_is_not_positive)
{
    using T = TypeParam;
    for (const Family& f : families)
        for (const i64 n : {0, -5})
            for (const i64 incx : {1, -2}) {
                const TriangularMatrix<T> a(f.storage, false, false, n, 1, 0);
                const Guarded<T> none(0);
                call(kernel_address("blas", routine<T>(f.stem)), a, 'N', none.data(), incx);
            }
}

TYPED_TEST(TriangularTest, runs_strided_on_a_stack_of_128_KiB)
{
    using T = TypeParam;
    const auto body = [](void*) -> void* {
        for (const Family& f : families)
            TriangularSweep<T>(f.task, routine<T>(f.stem)).run(f.storage, 300, 270, 0, few_strides);
        return nullptr;
    };
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 128 << 10);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, body, nullptr), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(Line, of_triangular_matrices_repeats_it)
{
    for (const Storage storage : {Storage::full, Storage::packed, Storage::band})
        for (const Task task : {Task::solve, Task::multiply}) {
            const TriangularMatrix<cpx<float>> a(storage, true, false, 9, 3, 2);
            EXPECT_TRUE(repeats(TriangularSweep<cpx<float>>(task, "xctrmv").text(a, 'C', -2)));
        }
}

} // namespace
} // namespace orv::test
