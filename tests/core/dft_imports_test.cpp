// What other kernels ask of transforms, through the names that they import.
#include "frame/imports.h"
#include "tests/core/transforms.h"

#include "frame/kernels/dft_node.h"
#include <cstring>

namespace orv::test {
namespace {

using namespace orv::kernels::dft;
using namespace orv::imports;

TEST(ImportedTransforms, are_made_set_committed_run_and_freed)
{
    Handle node = nullptr;
    const auto x = random_elements<double>(30, 1);
    std::vector<std::complex<double>> y(16);
    std::vector<double> back(30);
    ASSERT_EQ(orv_dft_dfticreatedescriptor_d_1d(&node, CFG_DOMAIN_REAL, 30), node_ok);
    EXPECT_EQ(orv_dft_dftisetvalue(node, dfti_placement, CFG_OUT_OF_PLACE), node_ok);
    EXPECT_EQ(orv_dft_dftisetvalue(node, dfti_packed_format, CFG_CCE), node_ok);
    EXPECT_EQ(orv_dft_dftisetvalue(node, dfti_conjugate_even_storage, CFG_STORE_COMPLEX), node_ok);
    EXPECT_EQ(orv_dft_dftisetvalue(node, dfti_backward_scale, 1.0 / 30), node_ok);
    ASSERT_EQ(orv_dft_dfticommitdescriptor(node), node_ok);
    EXPECT_EQ(orv_dft_dfticomputeforward(node, const_cast<double*>(x.data()), y.data()), node_ok);
    EXPECT_EQ(orv_dft_dfticomputebackward(node, y.data(), back.data()), node_ok);
    auto wanted = transformed(std::vector<exact>(x.begin(), x.end()), {30}, -1);
    wanted.resize(16);
    EXPECT_LE(distance_in_units<double>(std::vector<exact>(y.begin(), y.end()), wanted), units_allowed({30}));
    for (int i = 0; i < 30; ++i) EXPECT_NEAR(back[i], x[i], 1e-14);
    EXPECT_EQ(orv_dft_dftifreedescriptor(&node), node_ok);
    EXPECT_EQ(node, nullptr);
}

TEST(ImportedTransforms, take_lengths_of_arrays_stored_by_rows)
{
    const i64 rows_first[] = {3, 5}; // 3 rows of 5
    const auto x = random_elements<float>(30, 2);
    std::vector<exact> in(15);
    for (int i = 0; i < 15; ++i) in[i] = {x[2 * i], x[2 * i + 1]};
    auto y = x;
    Handle node = nullptr;
    ASSERT_EQ(orv_dft_dfticreatedescriptor_s_md(&node, CFG_DOMAIN_COMPLEX, 2, rows_first), node_ok);
    ASSERT_EQ(orv_dft_dfticommitdescriptor(node), node_ok);
    EXPECT_EQ(orv_dft_dfticomputeforward(node, y.data(), nullptr), node_ok);
    std::vector<exact> computed(15);
    for (int i = 0; i < 15; ++i) computed[i] = {y[2 * i], y[2 * i + 1]};
    EXPECT_LE(distance_in_units<float>(computed, transformed(in, {5, 3}, -1)), units_allowed({5, 3}));
    orv_dft_dftifreedescriptor(&node);
}

TEST(ImportedTransforms, of_reals_in_place_pack_what_they_leave)
{
    Handle node = nullptr;
    ASSERT_EQ(orv_dft_dfti_create_descriptor_d_1d(&node, CFG_DOUBLE, CFG_DOMAIN_REAL, 1, 6), node_ok);
    EXPECT_EQ(orv_dft_dfti_set_value_intval(node, dfti_packed_format, CFG_PERM), node_ok);
    EXPECT_EQ(orv_dft_dfti_set_value_intval(node, dfti_number_of_user_threads, 4), node_ok);
    ASSERT_EQ(orv_dft_dfti_commit_descriptor_external(node), node_ok);
    double x[] = {1, 2, 3, 4, 5, 7};
    EXPECT_EQ(orv_dft_dfti_compute_forward_d(node, x), node_ok);
    EXPECT_EQ(x[0], 22);
    EXPECT_EQ(x[1], -4); // the middle one
    EXPECT_EQ(orv_dft_dfti_compute_backward_d(node, x), node_ok);
    for (int i = 0; i < 6; ++i) EXPECT_NEAR(x[i], 6.0 * (i == 5 ? 7 : i + 1), 1e-13);
    EXPECT_EQ(orv_dft_dfti_free_descriptor_external(&node), node_ok);
}

TEST(ImportedTransforms, answer_what_makes_no_sense_with_a_status)
{
    Handle node = nullptr;
    const i64 bad[] = {3, 0}, good[] = {3, 2};
    EXPECT_EQ(orv_dft_dfticreatedescriptor_d_1d(nullptr, CFG_DOMAIN_REAL, 4), node_inconsistent);
    EXPECT_EQ(orv_dft_dfticreatedescriptor_d_1d(&node, 7, 4), node_inconsistent);
    EXPECT_EQ(orv_dft_dfticreatedescriptor_d_1d(&node, CFG_DOMAIN_REAL, 0), node_bad_length);
    EXPECT_EQ(orv_dft_dfticreatedescriptor_d_md(&node, CFG_DOMAIN_REAL, 2, bad), node_bad_length);
    EXPECT_EQ(orv_dft_dfticreatedescriptor_d_md(&node, CFG_DOMAIN_REAL, 0, good), node_bad_length);
    EXPECT_EQ(orv_dft_dfti_create_descriptor_s_1d(&node, CFG_DOUBLE, CFG_DOMAIN_REAL, 1, 4), node_inconsistent);
    EXPECT_EQ(node, nullptr);
    EXPECT_EQ(orv_dft_dfticommitdescriptor(nullptr), node_inconsistent);
    EXPECT_EQ(orv_dft_dftisetvalue(nullptr, dfti_forward_scale, 2.0), node_inconsistent);
    EXPECT_EQ(orv_dft_dftifreedescriptor(&node), node_inconsistent);
    ASSERT_EQ(orv_dft_dfticreatedescriptor_s_1d(&node, CFG_DOMAIN_COMPLEX, 4), node_ok);
    float x[8] = {1};
    EXPECT_EQ(orv_dft_dfticomputeforward(node, x, nullptr), node_inconsistent); // not committed
    EXPECT_EQ(orv_dft_dftisetvalue(node, 12, 3), node_inconsistent);
    EXPECT_EQ(orv_dft_dftisetvalue(node, dfti_placement, CFG_ORDERED), node_inconsistent);
    ASSERT_EQ(orv_dft_dfticommitdescriptor(node), node_ok);
    EXPECT_EQ(orv_dft_dfticomputeforward(node, nullptr, nullptr), node_inconsistent);
    EXPECT_EQ(orv_dft_dftisetvalue(node, dfti_placement, CFG_OUT_OF_PLACE), node_ok);
    EXPECT_EQ(orv_dft_dfticomputeforward(node, x, x), node_inconsistent); // changed since
    ASSERT_EQ(orv_dft_dfticommitdescriptor(node), node_ok);
    EXPECT_EQ(orv_dft_dfticomputeforward(node, x, nullptr), node_inconsistent);
    EXPECT_EQ(orv_dft_dftifreedescriptor(&node), node_ok);

    EXPECT_EQ(orv_dft_dftierrorclass(node_ok, node_ok), 1);
    EXPECT_EQ(orv_dft_dftierrorclass(node_no_memory, node_ok), 0);
    EXPECT_EQ(orv_dft_dftierrorclass(node_not_in_table, node_inconsistent), 1);
    for (const i64 status : {0, 1, 2, 3, 6, 7, 9})
        EXPECT_STRNE(orv_dft_dfti_error_message_external(status), orv_dft_dfti_error_message_external(77));
}

} // namespace
} // namespace orv::test
