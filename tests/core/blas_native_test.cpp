// The public header as C++ programs use it, with std::complex, and as C programs do.
#include "tests/support/probe.h"
#include "tests/support/process.h"

#include <complex>
#include <gtest/gtest.h>
#include <orv/orv.h>
#include <type_traits>

using namespace orv::test;

namespace {

static_assert(std::is_same_v<orv_complex_float, std::complex<float>>);
static_assert(std::is_same_v<orv_complex_double, std::complex<double>>);

TEST(BlasNative, complex_numbers_are_those_of_the_language)
{
    const std::complex<double> x[] = {{1, 2}, {3, 4}}, y[] = {{5, 6}, {7, 8}};
    EXPECT_EQ(orv_zdotu(2, x, 1, y, 1), x[0] * y[0] + x[1] * y[1]);
    EXPECT_EQ(orv_zdotc(2, x, 1, y, 1), std::conj(x[0]) * y[0] + std::conj(x[1]) * y[1]);
    const std::complex<float> u[] = {{1, 2}, {3, 4}};
    EXPECT_EQ(orv_cdotc(2, u, 1, u, -1), std::conj(u[0]) * u[1] + std::conj(u[1]) * u[0]);
    std::complex<float> v[] = {{1, 0}, {0, 1}};
    EXPECT_EQ(orv_caxpy(2, {0, 1}, u, 1, v, 1), ORV_OK);
    EXPECT_EQ(v[0], std::complex<float>(-1, 1));
    EXPECT_EQ(v[1], std::complex<float>(-4, 4));
}

TEST(BlasNative, a_c_program_computes)
{
    const Outcome outcome = run(ORV_HELPERS "/native_c");
    EXPECT_EQ(outcome.text, "cdotc 18 3\nzdotc 18 3\nzaxpy -1 1\nidamax 2\ndoti 32\n");
    EXPECT_EQ(outcome.status, 0);
}

TEST(BlasNative, without_kernels_numbers_are_nan_and_statuses_tell)
{
    const Outcome outcome = run("ORV_BRANCH_PATH=/nowhere.so " ORV_HELPERS "/native_c");
    EXPECT_EQ(outcome.text, "cdotc nan nan\nzdotc nan nan\nzaxpy status 1\nidamax -1\ndoti nan\n");
}

TEST(BlasNative, symmetric_matrices_answer_with_the_number_of_the_bad_argument)
{
    double x[16] = {}, y[16] = {};
    EXPECT_EQ(orv_dsymm('X', 'U', 2, 2, 1, x, 2, x, 2, 0, y, 2), -1);
    EXPECT_EQ(orv_dsymm('L', 'X', 2, 2, 1, x, 2, x, 2, 0, y, 2), -2);
    EXPECT_EQ(orv_dsymm('L', 'U', -1, 2, 1, x, 2, x, 2, 0, y, 2), -3);
    EXPECT_EQ(orv_dsymm('L', 'U', 2, -1, 1, x, 2, x, 2, 0, y, 2), -4);
    EXPECT_EQ(orv_dsymm('R', 'U', 1, 2, 1, x, 1, x, 2, 0, y, 2), -7);
    EXPECT_EQ(orv_dsymm('L', 'U', 2, 2, 1, x, 2, x, 1, 0, y, 2), -9);
    EXPECT_EQ(orv_dsymm('L', 'U', 2, 2, 1, x, 2, x, 2, 0, y, 1), -12);
    EXPECT_EQ(orv_dsyrk('U', 'X', 2, 3, 1, x, 2, 0, y, 2), -2);
    EXPECT_EQ(orv_dsyrk('U', 'T', 2, 3, 1, x, 2, 0, y, 2), -7);
    EXPECT_EQ(orv_dsyrk('U', 'N', 2, 3, 1, x, 2, 0, y, 1), -10);
    EXPECT_EQ(orv_dsyr2k('U', 'N', 2, -1, 1, x, 2, x, 2, 0, y, 2), -4);
    EXPECT_EQ(orv_dsyr2k('U', 'N', 2, 3, 1, x, 2, x, 1, 0, y, 2), -9);
    const orv_complex_double f = {}, z[16] = {};
    orv_complex_double c[16] = {};
    EXPECT_EQ(orv_zsyrk('U', 'C', 2, 3, f, z, 3, f, c, 2), -2) << "C is for Hermitian updates";
    EXPECT_EQ(orv_zherk('U', 'T', 2, 3, 1, z, 3, 1, c, 2), -2) << "T is for symmetric updates";
    EXPECT_EQ(orv_zher2k('L', 'T', 2, 3, f, z, 3, z, 3, 1, c, 2), -2);
    EXPECT_EQ(orv_zgemm3m('N', 'N', 2, 2, 2, f, z, 1, z, 2, f, c, 2), -8);
}

TEST(BlasNative, triangular_matrices_without_memory_tell_and_leave_the_matrix)
{
    constexpr int n = 40;
    const std::vector<double> a(n * n, 1.0), before(n * n, 3.0);
    for (const auto& [routine, is_replaced] :
         {std::pair{&orv_dtrsm, false}, {&orv_dtrmm, false}, {&orv_dtrsm, true}, {&orv_dtrmm, true}}) {
        std::vector<double> b = before;
        ProbeScope service;
        service->fail_all = true;
        service->passes_checks_on = !is_replaced; // nor does the program's own allocator tell the core anything
        EXPECT_EQ(routine('L', 'U', 'N', 'U', n, n, 2, a.data(), n, b.data(), n), ORV_NO_MEMORY);
        EXPECT_EQ(b, before);
        EXPECT_NE(std::string(orv_last_error()).find("no memory"), std::string::npos);
        service->fail_all = false;
        EXPECT_EQ(routine('L', 'U', 'N', 'U', n, n, 2, a.data(), n, b.data(), n), ORV_OK);
        EXPECT_EQ(b[n - 1], 6.0);
    }
    double t[4] = {1, 1, 1, 1}, x[4] = {};
    EXPECT_EQ(orv_dtrsm('L', 'U', 'N', 'X', 2, 2, 1, t, 2, x, 2), -4);
    EXPECT_EQ(orv_dtrmm('R', 'U', 'N', 'N', 1, 2, 1, t, 1, x, 2), -9);
    EXPECT_EQ(orv_dtrmm('R', 'U', 'N', 'N', 2, 2, 1, t, 2, x, 1), -11);
}

} // namespace
