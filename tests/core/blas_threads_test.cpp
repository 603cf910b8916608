// The matrix product on several threads: the same bits, and no team for little work.
#include "tests/support/kernels.h"
#include "tests/support/random.h"

#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <vector>

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include <orv/orv.h>

using namespace orv;
using namespace orv::test;

namespace {
int teams; // parallel regions that were opened
}

// In place of the OpenMP run-time's entry, which it passes on to.
extern "C" __attribute__((visibility("default"))) void GOMP_parallel(void (*body)(void*), void* data, unsigned threads,
                                                                     unsigned flags)
{
    ++teams;
    static const auto next = reinterpret_cast<decltype(&GOMP_parallel)>(dlsym(RTLD_NEXT, "GOMP_parallel"));
    next(body, data, threads, flags);
}

namespace {

template <class T> using Gemm = orv_status(char, char, i64, i64, i64, T, const T*, i64, const T*, i64, T, T*, i64);
template <class T> constexpr Gemm<T>* gemm = nullptr;
template <> constexpr Gemm<float>* gemm<float> = orv_sgemm;
template <> constexpr Gemm<double>* gemm<double> = orv_dgemm;
template <> constexpr Gemm<cpx<float>>* gemm<cpx<float>> = orv_cgemm;
template <> constexpr Gemm<cpx<double>>* gemm<cpx<double>> = orv_zgemm;

template <class T> std::vector<T> random_elements(i64 count, std::uint64_t stream)
{
    std::vector<T> elements(static_cast<std::size_t>(count));
    Random(stream).fill(elements);
    return elements;
}

struct Shape {
    i64 m, n, k;
    bool shared; // by more than one thread, if there are more
};

// The whole of C, padding included, as one thread and as several compute it.
template <class T> void same_bits(const Shape& shape, char transa, char transb, T beta)
{
    const auto [m, n, k, shared] = shape;
    SCOPED_TRACE(std::string("gemm ") + letter<T> + " " + transa + transb + " m=" + std::to_string(m) +
                 " n=" + std::to_string(n) + " k=" + std::to_string(k));
    const i64 lda = (transa == 'N' ? m : k) + 1, ldb = (transb == 'N' ? k : n) + 3, ldc = m + 2;
    const auto a = random_elements<T>(lda * (transa == 'N' ? k : m), 1);
    const auto b = random_elements<T>(ldb * (transb == 'N' ? n : k), 2), start = random_elements<T>(ldc * n, 3);
    const T alpha = Random(4).value<T>();

    const auto product = [&](int threads) {
        EXPECT_EQ(orv_set_thread_num_threads(threads), ORV_OK);
        auto c = start;
        teams = 0;
        EXPECT_EQ(gemm<T>(transa, transb, m, n, k, alpha, a.data(), lda, b.data(), ldb, beta, c.data(), ldc), ORV_OK);
        EXPECT_EQ(teams, shared && threads > 1 ? 1 : 0) << threads << " threads";
        return c;
    };
    const auto alone = product(1);
    for (const int threads : {2, 3, 4})
        EXPECT_EQ(std::memcmp(product(threads).data(), alone.data(), alone.size() * sizeof(T)), 0)
            << threads << " threads";
    orv_set_thread_num_threads(0);
}

template <class T> void gemm_of(std::initializer_list<Shape> shapes)
{
    for (const Shape& shape : shapes) {
        same_bits<T>(shape, 'N', 'N', zero<T>);
        same_bits<T>(shape, 'T', 'C', element<T>::make(0.5));
        if (testing::Test::HasFailure()) return;
    }
}

// Leftovers of every granule, both ways of cutting, the plain path (few rows, few columns, little depth), rank one, a
// depth of several blocks, more columns than a block holds.
TEST(BlasThreads, gemm_gives_the_same_bits_on_any_number_of_threads)
{
    gemm_of<float>({{203, 209, 217, true},
                    {21, 5011, 90, true},
                    {1301, 3, 2100, true},
                    {3, 1301, 2100, true},
                    {2049, 2055, 3, true},
                    {97, 99, 900, true}});
    gemm_of<double>({{161, 167, 179, true},
                     {17, 5011, 60, true},
                     {1301, 7, 610, true},
                     {1, 3001, 1400, true},
                     {2049, 1055, 3, true},
                     {2049, 2055, 1, true},
                     {97, 99, 520, true}});
    gemm_of<cpx<float>>({{129, 131, 135, true},
                         {17, 5011, 30, true},
                         {1301, 3, 610, true},
                         {1, 1301, 1700, true},
                         {1049, 1055, 3, true},
                         {97, 99, 270, true}});
    gemm_of<cpx<double>>({{101, 107, 103, true},
                          {17, 2011, 31, true},
                          {1301, 3, 310, true},
                          {1, 1301, 900, true},
                          {749, 755, 3, true},
                          {69, 71, 270, true}});
}

TEST(BlasThreads, small_products_wake_no_team)
{
    gemm_of<float>({{10, 10, 10, false}, {100, 100, 100, false}, {199, 200, 200, false}});
    gemm_of<double>({{10, 10, 10, false}, {100, 100, 100, false}, {158, 158, 158, false}});
    gemm_of<cpx<float>>({{100, 100, 100, false}});
    gemm_of<cpx<double>>({{99, 100, 100, false}});
}

// A part that no granule fits in would be no part.
TEST(BlasThreads, a_small_result_of_great_depth_stays_whole) { gemm_of<double>({{31, 31, 5000, false}}); }

TEST(BlasThreads, a_bad_argument_wakes_no_team)
{
    std::vector<double> c(1, 1);
    orv_set_thread_num_threads(2);
    teams = 0;
    EXPECT_EQ(orv_dgemm('N', 'N', 1000, 1000, 1000, 1, c.data(), 999, c.data(), 1000, 0, c.data(), 1000), -8);
    EXPECT_EQ(teams, 0);
    EXPECT_EQ(c[0], 1);
    orv_set_thread_num_threads(0);
}

} // namespace
