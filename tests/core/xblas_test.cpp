// The public routines of extended and mixed precision: their names, their checks, and what is kept of the kernels'
// reports.
#include "orv/orv.h"
#include "tests/support/probe.h"

#include <cmath>
#include <dlfcn.h>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace orv::test {
namespace {

TEST(PublicExtended, has_a_function_for_every_kernel)
{
    std::ifstream list(ORV_XBLAS_NAMES);
    const std::string prefix = "orv_xblas_mc3_BLAS_";
    int found = 0;
    for (std::string line; std::getline(list, line);) {
        if (!line.starts_with(prefix) || line == prefix + "error" || line == prefix + "fpinfo_x") continue;
        const std::string name = "orv_xblas_" + line.substr(prefix.size());
        EXPECT_NE(dlsym(RTLD_DEFAULT, name.c_str()), nullptr) << name;
        ++found;
    }
    EXPECT_EQ(found, 488);
}

TEST(PublicExtended, computes_in_the_precision_that_is_asked_for)
{
    const double x[] = {1e16, 1, -1e16}, y[] = {1, 1, 1};
    double r = 5;
    EXPECT_EQ(orv_xblas_ddot_x(ORV_NO_CONJ, 3, 1, x, 1, 0, y, 1, &r, ORV_PREC_EXTRA), ORV_OK);
    EXPECT_EQ(r, 1);
    EXPECT_EQ(orv_xblas_ddot_x(ORV_NO_CONJ, 3, 1, x, 1, 0, y, 1, &r, ORV_PREC_DOUBLE), ORV_OK);
    EXPECT_EQ(r, 0);
    const std::complex<float> a[] = {{1, 2}, {3, 4}};
    const std::complex<double> alpha(0, 1), b[] = {{5, 6}, {7, 8}};
    std::complex<double> z;
    EXPECT_EQ(orv_xblas_zdot_c_z(ORV_CONJ, 2, alpha, a, 1, 0, b, 1, &z), ORV_OK);
    EXPECT_EQ(z, std::complex<double>(8, 70)); // i * ((1-2i)(5+6i) + (3-4i)(7+8i)) = i * (70 - 8i)
    EXPECT_EQ(orv_xblas_fpinfo(152, ORV_PREC_EXTRA), 105);
}

TEST(PublicExtended, answers_with_the_number_of_the_bad_argument)
{
    const double a[16] = {}, x[4] = {};
    double y[16] = {};
    const auto gemv = [&](int order, int trans, i64 m, i64 n, i64 lda, i64 incx, i64 incy, int prec) {
        return orv_xblas_dgemv_x(orv_order(order), orv_trans(trans), m, n, 1, a, lda, x, incx, 0, y, incy,
                                 orv_prec(prec));
    };
    EXPECT_EQ(gemv(102, 111, 2, 3, 2, 1, 1, 214), ORV_OK);
    EXPECT_EQ(gemv(101, 111, 2, 3, 3, 1, 1, 214), ORV_OK);
    EXPECT_EQ(gemv(102, 111, 2, 0, 2, 1, 1, 214), -4); // the kernel wants a column
    EXPECT_EQ(gemv(103, 111, 2, 3, 2, 1, 1, 214), -1);
    EXPECT_EQ(gemv(102, 191, 2, 3, 2, 1, 1, 214), -2);
    EXPECT_EQ(gemv(102, 111, -1, 3, 2, 1, 1, 214), -3);
    EXPECT_EQ(gemv(101, 111, 2, 3, 2, 1, 1, 214), -7);
    EXPECT_EQ(gemv(102, 111, 2, 3, 2, 0, 1, 214), -9);
    EXPECT_EQ(gemv(102, 111, 2, 3, 2, 1, 0, 214), -12);
    EXPECT_EQ(gemv(102, 111, 2, 3, 2, 1, 1, 215), -13);
    EXPECT_NE(std::string(orv_last_error()).find("orv_xblas_dgemv_x: argument 13"), std::string::npos);
    // Where kernels say nothing, or not which argument.
    EXPECT_EQ(
        orv_xblas_dsymm_x(ORV_COLUMN_MAJOR, ORV_LEFT_SIDE, ORV_UPPER, 2, 2, 1, a, 1, a, 2, 0, y, 2, ORV_PREC_EXTRA),
        -8);
    EXPECT_EQ(
        orv_xblas_dtrsv_x(ORV_COLUMN_MAJOR, ORV_UPPER, ORV_NO_TRANS, ORV_UNIT_DIAG, 3, 1, a, 2, y, 1, ORV_PREC_EXTRA),
        -8);
    EXPECT_EQ(
        orv_xblas_dgemm_x(ORV_ROW_MAJOR, ORV_TRANS, ORV_NO_TRANS, 3, 2, 1, 1, a, 2, a, 2, 0, y, 2, ORV_PREC_EXTRA), -9);
    EXPECT_EQ(
        orv_xblas_dtbsv_x(ORV_ROW_MAJOR, ORV_UPPER, ORV_TRANS, ORV_UNIT_DIAG, 3, 3, 1, a, 4, y, 1, ORV_PREC_EXTRA), -6);
}

TEST(PublicExtended, tells_when_there_is_no_memory)
{
    const double t[] = {1, 0, 0, 1};
    double x[] = {3, 4};
    ProbeScope service;
    service->fail_all = true;
    EXPECT_EQ(orv_xblas_dtrsv_x(ORV_COLUMN_MAJOR, ORV_UPPER, ORV_NO_TRANS, ORV_NON_UNIT_DIAG, 2, 1, t, 2, x, 1,
                                ORV_PREC_EXTRA),
              ORV_NO_MEMORY);
    EXPECT_EQ(x[0], 3);
}

TEST(PublicExtended, keeps_what_a_kernel_reports_that_is_called_directly)
{
    using Sum = void(i64, const double*, i64, double*, int);
    auto* sum = reinterpret_cast<Sum*>(orv_kernel("xblas", "BLAS_dsum_x"));
    ASSERT_NE(sum, nullptr);
    double r = 7;
    sum(-3, &r, 1, &r, 214);
    EXPECT_EQ(r, 7);
    EXPECT_NE(std::string(orv_last_error()).find("BLAS_dsum_x: argument 1 is not allowed; the value looked at is -3"),
              std::string::npos)
        << orv_last_error();
}

TEST(PublicExtended, answers_for_the_reports_of_this_call_alone)
{
    using Sum = void(i64, const double*, i64, double*, int);
    auto* sum = reinterpret_cast<Sum*>(orv_kernel("xblas", "BLAS_dsum_x"));
    ASSERT_NE(sum, nullptr);
    double r = 7;
    const double x = 3;
    const auto good = [&] { return orv_xblas_dsum_x(1, &x, 1, &r, ORV_PREC_EXTRA); };
    sum(-3, &r, 1, &r, 214); // in this thread, before
    EXPECT_EQ(good(), ORV_OK);
    std::thread([&] { sum(-3, &r, 1, &r, 214); }).join();
    EXPECT_EQ(good(), ORV_OK);
    // The kernel reports within a call, behind reports of others.
    EXPECT_EQ(orv_xblas_dgemv_x(ORV_COLUMN_MAJOR, ORV_NO_TRANS, 2, 0, 1, &x, 2, &x, 1, 0, &r, 1, ORV_PREC_EXTRA), -4);
    EXPECT_EQ(good(), ORV_OK);
}

} // namespace
} // namespace orv::test
