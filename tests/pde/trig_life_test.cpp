// The life of a sine or cosine transform: what stands where in its arrays, what each operation accepts, and what it
// leaves behind. Messages have a file of their own.
#include "frame/kernels/dft_node.h"
#include "frame/serv.h"
#include "tests/pde/trig.h"
#include "tests/support/probe.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace orv::test {
namespace {

using namespace pdett;

template <class T> class TrigLife : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(TrigLife, Reals);

template <class T> constexpr T each_point = sizeof(T) == 4 ? T(1e-05F) : T(1e-12);

TYPED_TEST(TrigLife, init_fills_the_two_arrays_and_looks_at_nothing)
{
    using T = TypeParam;
    for (const i64 n : {i64{100}, i64{2}, i64{0}, i64{-7}})
        for (const i64 kind : {0, 5, 6, -1}) {
            Guarded<i64> ipar(11);
            std::fill(ipar.begin(), ipar.end(), -77);
            Guarded<T> dpar(1);
            i64 stat = -77;
            trig_init<T>(&n, &kind, ipar.data(), dpar.data(), &stat);
            const i64 should[] = {n, 1, 1, -77, -77, kind, 0, 1, 1, 1, 0};
            for (int k = 0; k < 11; ++k) EXPECT_EQ(ipar[k], should[k]) << "ipar[" << k << "]";
            EXPECT_EQ(dpar[0], static_cast<T>(n) * each_point<T>);
            EXPECT_EQ(stat, 0);
        }
}

// Tables by the formulas, in the order of additions that makes their last bits.
template <class T> void expect_tables(i64 kind, i64 n)
{
    Trig<T> trig(kind, n);
    std::fill(trig.dpar.begin() + 1, trig.dpar.end(), T(-77));
    const std::vector<T> f(static_cast<std::size_t>(n + 1), T(0));
    ASSERT_EQ(trig.commit(f.data()), 0);
    std::vector<T> should(trig.dpar.size(), T(-77));
    should[0] = static_cast<T>(n) * each_point<T>;
    const T t = static_cast<T>(3.14159265358979323846) / static_cast<T>(n);
    T angle = 0;
    for (i64 k = 1; k <= n / 2; ++k) {
        angle = kind < 2 ? static_cast<T>(k) * t : angle + t;
        if (kind == 0) should[1 + k] = std::sin(angle);
        else should[2 * k] = std::cos(angle), should[2 * k + 1] = std::sin(angle);
    }
    if (kind >= 2) {
        angle = -t / 2;
        for (i64 k = 1; k <= n / 2; ++k) should[(kind < 4 ? n : 2 * n) + 1 + k] = std::sin(angle += t);
    }
    if (kind >= 4) {
        angle = -t / 4;
        for (i64 k = 1; k <= n; ++k) should[n + 1 + k] = std::sin(angle += t / 2);
    }
    for (std::size_t k = 0; k < should.size(); ++k)
        ASSERT_EQ(trig.dpar[k], should[k]) << letter<T> << " kind " << kind << " n=" << n << " dpar[" << k << "]";
    const i64 ipar[] = {n, 0, 0, kind, 0, 1, 1, 1, 0};
    for (int k = 0; k < 9; ++k) EXPECT_EQ(trig.ipar[k < 3 ? k : k + 2], ipar[k]);
    EXPECT_NE(trig.handle, nullptr);
}

TYPED_TEST(TrigLife, commit_fills_the_tables_of_its_kind)
{
    for (i64 kind = 0; kind < kinds; ++kind)
        for (const i64 n : {2, 3, 10, 63, 64, 1001}) expect_tables<TypeParam>(kind, n);
}

TYPED_TEST(TrigLife, commit_keeps_tables_and_handle_where_it_is_told_to)
{
    using T = TypeParam;
    for (i64 kind = 0; kind < kinds; ++kind) {
        Trig<T> trig(kind, 20);
        std::vector<T> f = trig_data<T>(kind, 20, 1);
        ASSERT_EQ(trig.commit(f.data()), 0);
        const std::vector<T> dpar(trig.dpar.begin(), trig.dpar.end());
        const imports::Handle handle = trig.handle;
        trig.ipar[ipar_tables] = 0;
        {
            ProbeScope scope;
            ASSERT_EQ(trig.commit(f.data()), 0);
            EXPECT_EQ(scope->allocations, 0);
        }
        EXPECT_EQ(trig.handle, handle);
        EXPECT_EQ(std::memcmp(dpar.data() + 2, trig.dpar.data() + 2, (dpar.size() - 2) * sizeof(T)), 0);
        EXPECT_EQ(trig.forward(f.data()), 0);
        // What is looked at is looked at all the same.
        trig.ipar[ipar_threads] = -2;
        EXPECT_EQ(trig.commit(f.data()), 10);
        trig.ipar[ipar_status] = 0, trig.ipar[ipar_n] = 1;
        EXPECT_EQ(trig.commit(f.data()), -100);
    }
}

TYPED_TEST(TrigLife, commit_refuses_small_sizes_and_unknown_kinds)
{
    using T = TypeParam;
    const std::vector<T> f(10, T(0));
    for (const i64 n : {1, 0, -5}) {
        Trig<T> trig(0, 4);
        trig.ipar[ipar_n] = n;
        EXPECT_EQ(trig.commit(f.data()), -100);
        EXPECT_EQ(trig.ipar[ipar_status], -100);
        EXPECT_EQ(trig.handle, nullptr);
    }
    for (const i64 kind : {-1, 6, 100}) {
        Trig<T> trig(0, 4);
        trig.ipar[ipar_kind] = kind;
        EXPECT_EQ(trig.commit(f.data()), -100);
        EXPECT_EQ(trig.ipar[ipar_status], -100);
        EXPECT_EQ(trig.handle, nullptr);
    }
}

// Which ends a kind looks at: of kinds 0 and 2 the last, of 0 and 3 the first.
TYPED_TEST(TrigLife, commit_warns_of_ends_that_should_be_zero)
{
    using T = TypeParam;
    constexpr i64 n = 8;
    for (i64 kind = 0; kind < kinds; ++kind)
        for (const bool last : {false, true})
            for (const T value : {T(1), T(-1), each_point<T> * n, std::numeric_limits<T>::quiet_NaN()})
                for (const bool raw : {false, true}) {
                    Trig<T> trig(kind, n);
                    trig.ipar[ipar_raw] = raw;
                    std::vector<T> f(n + 1, T(0));
                    f[last ? n : 0] = value;
                    const bool looked_at = last ? kind == 0 || kind == 2 : kind == 0 || kind == 3;
                    const bool above = std::fabs(value) > trig.dpar[0];
                    const i64 should = looked_at && above && !raw ? 1 : 0;
                    EXPECT_EQ(trig.commit(f.data()), should) << kind << " " << last << " " << value;
                    EXPECT_EQ(trig.ipar[ipar_status], should);
                    EXPECT_EQ(trig.forward(f.data()), should ? -10000 : 0); // closed until it is cleared
                }
}

TYPED_TEST(TrigLife, a_transform_that_was_warned_of_runs_once_its_status_is_cleared)
{
    using T = TypeParam;
    Trig<T> trig(sine, 2);
    T f[] = {1, 5, 0};
    EXPECT_EQ(trig.commit(f), 1);
    EXPECT_EQ(trig.forward(f), -10000);
    EXPECT_EQ(trig.ipar[ipar_status], -10000);
    EXPECT_EQ(trig.backward(f), -10000);
    EXPECT_EQ(f[1], 5);
    EXPECT_EQ(trig.commit(f), -10000);
    trig.ipar[ipar_status] = 0;
    EXPECT_EQ(trig.forward(f), 0);
    EXPECT_EQ(f[0], 0);
    EXPECT_EQ(f[1], 5);
    EXPECT_EQ(trig.ipar[ipar_status], 0);
}

TYPED_TEST(TrigLife, commit_corrects_tolerance_and_threads)
{
    using T = TypeParam;
    for (i64 kind = 0; kind < kinds; ++kind)
        for (const bool bad_tolerance : {false, true})
            for (const bool bad_threads : {false, true})
                for (const bool bad_end : {false, true}) {
                    Trig<T> trig(kind, 100);
                    std::vector<T> f(101, T(0));
                    if (bad_end) f[kind == 2 ? 100 : 0] = 1;
                    if (bad_tolerance) trig.dpar[0] = -1;
                    if (bad_threads) trig.ipar[ipar_threads] = -3;
                    const bool has_ends = kind == 0 || kind == 2 || kind == 3;
                    const bool corrected = bad_threads || (has_ends && bad_tolerance);
                    EXPECT_EQ(trig.commit(f.data()), (has_ends && bad_end) + (corrected ? 10 : 0)) << kind;
                    EXPECT_EQ(trig.dpar[0], !has_ends && bad_tolerance ? T(-1) : T(100) * each_point<T>);
                    EXPECT_EQ(trig.ipar[ipar_threads], 1);
                }
}

TYPED_TEST(TrigLife, the_number_of_callers_goes_to_the_descriptor_above_one)
{
    using T = TypeParam;
    const std::vector<T> f(65, T(0));
    for (const i64 threads : {0, 1, 2, 7}) {
        Trig<T> trig(cosine, 64);
        trig.ipar[ipar_threads] = threads;
        ASSERT_EQ(trig.commit(f.data()), 0);
        EXPECT_EQ(trig.handle->number_of_user_threads, threads > 1 ? threads : 1);
        EXPECT_EQ(trig.handle->packed_format, kernels::dft::CFG_PERM);
        EXPECT_EQ(trig.handle->length, 64);
    }
}

TYPED_TEST(TrigLife, runs_refuse_unknown_kinds_and_a_lost_size)
{
    using T = TypeParam;
    for (i64 kind = 0; kind < kinds; ++kind) {
        Trig<T> trig(kind, 6);
        const std::vector<T> data = trig_data<T>(kind, 6, 2);
        std::vector<T> f = data;
        ASSERT_EQ(trig.commit(f.data()), 0);
        trig.ipar[ipar_kind] = 6;
        EXPECT_EQ(trig.forward(f.data()), -100);
        EXPECT_EQ(trig.ipar[ipar_status], -100);
        trig.ipar[ipar_kind] = kind, trig.ipar[ipar_status] = 0, trig.ipar[ipar_n] = 0;
        EXPECT_EQ(trig.forward(f.data()), -10000);
        trig.ipar[ipar_status] = 0;
        EXPECT_EQ(trig.backward(f.data()), 0); // of no elements
        EXPECT_EQ(f, data);
    }
}

TYPED_TEST(TrigLife, a_handle_is_freed_once)
{
    using T = TypeParam;
    Trig<T> trig(sine, 6);
    std::vector<T> f(7, T(0));
    EXPECT_EQ(trig.free(), -99999); // nothing has been made yet
    EXPECT_EQ(trig.ipar[ipar_status], -99999);
    trig.ipar[ipar_status] = 0;
    ASSERT_EQ(trig.commit(f.data()), 0);
    EXPECT_EQ(trig.free(), 0);
    EXPECT_EQ(trig.ipar[ipar_status], 0);
    EXPECT_EQ(trig.handle, nullptr);
    EXPECT_EQ(trig.forward(f.data()), -1000); // nothing is there to run any more
    EXPECT_EQ(trig.ipar[ipar_status], -1000);
    EXPECT_EQ(trig.free(), -99999);
}

TYPED_TEST(TrigLife, failing_allocations_end_in_a_status)
{
    using T = TypeParam;
    for (i64 kind = 0; kind < kinds; ++kind)
        for (const i64 n : {7, 32, 1021}) {
            i64 commit = 0, run = 0;
            each_allocation_fails(
                [&] {
                    Trig<T> trig(kind, n);
                    std::vector<T> f = trig_data<T>(kind, n, 1);
                    commit = trig.commit(f.data());
                    run = commit == 0 ? trig.backward(f.data()) : 0;
                    EXPECT_EQ(commit == 0, trig.handle != nullptr);
                    if (trig.handle != nullptr) {
                        EXPECT_EQ(trig.free(), 0);
                    }
                },
                [&] {
                    const bool failed = probe().failed > 0;
                    EXPECT_TRUE(!failed || commit == -1000 || run == -1000 || commit + run == 0);
                    EXPECT_TRUE(failed || commit + run == 0);
                });
        }
}

TYPED_TEST(TrigLife, entries_with_an_underscore_are_the_plain_ones)
{
    using T = TypeParam;
    const i64 n = 12, kind = staggered_sine;
    i64 ipar[ipar_size], stat = -1;
    std::vector<T> dpar(dpar_size(kind, n)), f = trig_data<T>(kind, n, 6), plain = f;
    imports::Handle handle = nullptr;
    kernel<Init<T>>("pdett", "_", letter<T>, "_init_trig_transform")(&n, &kind, ipar, dpar.data(), &stat);
    EXPECT_EQ(stat, 0);
    kernel<Commit<T>>("pdett", "_", letter<T>, "_commit_trig_transform")(f.data(), &handle, ipar, dpar.data(), &stat);
    EXPECT_EQ(stat, 0);
    Trig<T> trig(kind, n);
    ASSERT_EQ(trig.commit(f.data()), 0);
    EXPECT_EQ(std::memcmp(dpar.data() + 2, trig.dpar.data() + 2, (dpar.size() - 2) * sizeof(T)), 0);
    kernel<Run<T>>("pdett", "_", letter<T>, "_forward_trig_transform")(f.data(), &handle, ipar, dpar.data(), &stat);
    EXPECT_EQ(stat, 0);
    ASSERT_EQ(trig.forward(plain.data()), 0);
    EXPECT_EQ(f, plain);
    kernel<Run<T>>("pdett", "_", letter<T>, "_backward_trig_transform")(f.data(), &handle, ipar, dpar.data(), &stat);
    EXPECT_EQ(stat, 0);
    ASSERT_EQ(trig.backward(plain.data()), 0);
    EXPECT_EQ(f, plain);
    kernel<pdett::_free_trig_transform>()(&handle, ipar, &stat);
    EXPECT_EQ(stat, 0);
    EXPECT_EQ(handle, nullptr);
}

} // namespace
} // namespace orv::test
