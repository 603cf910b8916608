// The life of a handle: states, properties, and all that is refused.
#include "tests/sparseblas/interface.h"

#include <algorithm>
#include <thread>

using namespace orv;
using namespace orv::test;

namespace {

void expect_states(int handle, int state)
{
    for (const int property : {blas_new_handle, blas_open_handle, blas_valid_handle})
        EXPECT_EQ(BLAS_usgp(handle, property), property == state) << property;
    EXPECT_EQ(BLAS_usgp(handle, blas_invalid_handle), 0);
}

// A finished matrix of order 3 with ones on its diagonal and one entry in the triangle that all structures but the
// upper ones take.
int small_matrix(int structure)
{
    const int a = BLAS_duscr_begin(3, 3);
    EXPECT_EQ(BLAS_ussp(a, structure), 0);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(BLAS_duscr_insert_entry(a, 1, i, i), 0);
    EXPECT_EQ(BLAS_duscr_insert_entry(a, 2, 2, 0), 0);
    EXPECT_EQ(BLAS_duscr_end(a), 0);
    return a;
}

} // namespace

TEST(SparseBlasHandle, is_new_then_open_then_valid_then_gone)
{
    each_type([]<class T>(const Interface& interface) {
        const int handle = interface.begin<T>("uscr_begin", 4, 6);
        expect_states(handle, blas_new_handle);
        ASSERT_EQ((interface.call<T>("uscr_insert_entry", handle, one<T>, 1, 1)), 0);
        expect_states(handle, blas_open_handle);
        ASSERT_EQ((interface.call<T>("uscr_end", handle)), 0);
        expect_states(handle, blas_valid_handle);
        ASSERT_EQ(BLAS_usds(handle), 0);
        EXPECT_EQ(BLAS_usgp(handle, blas_invalid_handle), 1);
        EXPECT_EQ(BLAS_usgp(handle, blas_valid_handle), -1);
        EXPECT_EQ(BLAS_usds(handle), -1) << "released twice";
    });
}

TEST(SparseBlasHandle, of_a_released_matrix_does_not_become_that_of_another)
{
    std::vector<int> released;
    for (int i = 0; i < 1000; ++i) {
        const int handle = BLAS_duscr_begin(1, 1);
        ASSERT_GE(handle, 0);
        ASSERT_EQ(std::count(released.begin(), released.end(), handle), 0);
        released.push_back(handle);
        ASSERT_TRUE(i % 3 == 0 || BLAS_usds(handle) == 0);
    }
    for (int i = 0; i < 1000; ++i) EXPECT_EQ(BLAS_usds(released[static_cast<std::size_t>(i)]), i % 3 == 0 ? 0 : -1);
    for (const int handle : {-1, 0, 1, 2147483647, -2147483647}) {
        EXPECT_EQ(BLAS_usgp(handle, blas_invalid_handle), 1) << handle;
        EXPECT_EQ(BLAS_usds(handle), -1) << handle;
    }
}

TEST(SparseBlasHandle, tells_its_properties)
{
    each_type([]<class T>(const Interface& interface) {
        const int handle = interface.begin<T>("uscr_begin", 4, 6);
        const auto expect = [=](std::vector<int> which, int answer) {
            for (const int property : which) EXPECT_EQ(BLAS_usgp(handle, property), answer) << property;
        };
        const bool complex = is_complex<T>, wide = sizeof(real_t<T>) == 8;
        expect({blas_complex}, complex), expect({blas_real}, !complex);
        expect({blas_double_precision}, wide), expect({blas_single_precision}, !wide);
        expect({blas_num_rows}, 4), expect({blas_num_cols}, 6), expect({blas_num_nonzeros}, 0);
        expect({blas_zero_base, blas_rowmajor}, !interface.fortran);
        expect({blas_one_base, blas_colmajor}, interface.fortran);
        expect({blas_general, blas_non_unit_diag, blas_irregular}, 1);
        expect({blas_symmetric, blas_hermitian, blas_triangular, blas_lower_symmetric, blas_unit_diag, blas_regular},
               0);
        expect({0, 1, 999}, -1);
        const int i[] = {1, 2, 1, 1}, j[] = {3, 3, 3, 4};
        const std::vector<T> values(4, one<T>);
        const T* vs = values.data();
        const int *is = i, *js = j;
        ASSERT_EQ((interface.call<T>("uscr_insert_entries", handle, 4, vs, is, js)), 0);
        expect({blas_num_nonzeros}, 4);
        ASSERT_EQ((interface.call<T>("uscr_end", handle)), 0);
        expect({blas_num_nonzeros}, 3); // two of one place are one
        EXPECT_EQ(BLAS_usds(handle), 0);
    });
}

TEST(SparseBlasHandle, takes_each_property_before_the_first_entry_and_none_after_it)
{
    const std::vector<std::vector<int>> groups{{structures, structures + 7},
                                               {blas_unit_diag, blas_non_unit_diag},
                                               {blas_zero_base, blas_one_base},
                                               {blas_rowmajor, blas_colmajor},
                                               {blas_regular, blas_irregular, blas_block, blas_unassembled}};
    const int handle = BLAS_zuscr_begin(2, 2);
    for (const auto& group : groups)
        for (const int property : group) {
            EXPECT_EQ(BLAS_ussp(handle, property), 0) << property;
            for (const int other : group) EXPECT_EQ(BLAS_usgp(handle, other), other == property);
        }
    for (const auto& [half, whole] : {std::pair{blas_lower_symmetric, blas_symmetric},
                                      {blas_upper_hermitian, blas_hermitian},
                                      {blas_lower_triangular, blas_triangular}}) {
        EXPECT_EQ(BLAS_ussp(handle, half), 0);
        EXPECT_EQ(BLAS_usgp(handle, whole), 1);
        EXPECT_EQ(BLAS_ussp(handle, whole), -1) << "which half?";
    }
    for (const int property : {0, int{blas_num_rows}, int{blas_real}, int{blas_valid_handle}, 999})
        EXPECT_EQ(BLAS_ussp(handle, property), -1) << property;
    int status = 77, value = 77;
    using Property = void(const int*, const int*, int*);
    const int lower = blas_lower_symmetric;
    reinterpret_cast<Property*>(sparse_symbol("blas_ussp_"))(&handle, &lower, &status);
    reinterpret_cast<Property*>(sparse_symbol("blas_usgp_"))(&handle, &lower, &value);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(value, 1);
    const double entry[] = {1, 0};
    ASSERT_EQ(BLAS_zuscr_insert_entry(handle, entry, 1, 1), 0);
    for (const auto& group : groups)
        for (const int property : group) EXPECT_EQ(BLAS_ussp(handle, property), -1);
    reinterpret_cast<void (*)(const int*, int*)>(sparse_symbol("blas_usds_"))(&handle, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(BLAS_ussp(handle, blas_general), -1);

    const int wide = BLAS_duscr_begin(2, 3);
    for (const int property : structures) EXPECT_EQ(BLAS_ussp(wide, property), property == blas_general ? 0 : -1);
    EXPECT_EQ(BLAS_usds(wide), 0);
}

TEST(SparseBlasEntries, outside_the_matrix_or_its_triangle_are_refused_with_all_of_their_call)
{
    const double two[] = {1, 2};
    for (const int structure : structures)
        for (const bool unit : {false, true})
            for (const int base : {0, 1}) {
                const int a = BLAS_duscr_begin(3, 3);
                const Meaning<double> meaning(3, 3, structure, unit);
                BLAS_ussp(a, structure), BLAS_ussp(a, unit ? blas_unit_diag : blas_non_unit_diag);
                BLAS_ussp(a, base == 0 ? blas_zero_base : blas_one_base);
                int taken = 0;
                for (int i = -1; i <= 3; ++i)
                    for (int j = -1; j <= 3; ++j) {
                        const bool inside = i >= 0 && i < 3 && j >= 0 && j < 3 && meaning.takes(i, j);
                        EXPECT_EQ(BLAS_duscr_insert_entry(a, 1, i + base, j + base), inside ? 0 : -1) << i << j;
                        taken += inside;
                        // The first of two is good.
                        const int is[] = {structure % 2 == 0 ? base : base + 2, i + base};
                        const int js[] = {structure % 2 == 0 ? base + 2 : base, j + base};
                        const bool first = meaning.takes(is[0] - base, js[0] - base);
                        EXPECT_EQ(BLAS_duscr_insert_entries(a, 2, two, is, js), first && inside ? 0 : -1);
                        taken += first && inside ? 2 : 0;
                    }
                EXPECT_EQ(BLAS_usgp(a, blas_num_nonzeros), taken);
                EXPECT_EQ(BLAS_duscr_insert_entries(a, -1, two, nullptr, nullptr), -1);
                EXPECT_EQ(BLAS_duscr_insert_entry(a, 1, 2147483647, base), -1);
                EXPECT_EQ(BLAS_duscr_insert_entry(a, 1, -2147483647 - 1, base), -1);
                EXPECT_EQ(BLAS_duscr_insert_clique(a, -1, 2, two, 1, 1, nullptr, nullptr), -1);
                EXPECT_EQ(BLAS_duscr_insert_block(a, two, 1, 1, base, base), -1) << "it has no blocks";
                EXPECT_EQ(BLAS_usds(a), 0);
            }
}

TEST(SparseBlasCalls, out_of_turn_or_of_another_type_are_refused)
{
    const int good = small_matrix(blas_general), open = BLAS_duscr_begin(3, 3);
    const double values[] = {1, 2, 3};
    double x[] = {1, 2, 3}, y[] = {4, 5, 6};
    float single[] = {1, 2, 3};
    const int places[] = {0, 1, 2};
    const auto one_of_all = [&](int a) {
        return std::vector<int>{BLAS_dusmv(blas_no_trans, 1, a, values, 1, y, 1),
                                BLAS_dusmm(blas_colmajor, blas_no_trans, 1, 1, a, values, 3, y, 3),
                                BLAS_dussv(blas_no_trans, 1, a, x, 1),
                                BLAS_dussm(blas_colmajor, blas_no_trans, 1, 1, a, x, 3)};
    };
    for (const int a : {open, -1, 12345})
        for (const int status : one_of_all(a)) EXPECT_EQ(status, -1);
    EXPECT_EQ(BLAS_susmv(blas_no_trans, 1, good, single, 1, single, 1), -1) << "of doubles";
    EXPECT_EQ(BLAS_suscr_insert_entry(open, 1, 0, 0), -1);
    EXPECT_EQ(BLAS_suscr_end(open), -1);
    for (const int inserted :
         {BLAS_duscr_insert_entry(good, 1, 0, 0), BLAS_duscr_insert_row(good, 0, 1, values, places),
          BLAS_duscr_insert_col(good, 0, 1, values, places), BLAS_duscr_end(good)})
        EXPECT_EQ(inserted, -1) << "it is finished";
    EXPECT_EQ(BLAS_dusmv(static_cast<blas_trans_type>(114), 1, good, values, 1, y, 1), -1);
    EXPECT_EQ(BLAS_dusmv(blas_no_trans, 1, good, values, 0, y, 1), -1);
    EXPECT_EQ(BLAS_dusmv(blas_no_trans, 1, good, values, 1, y, 0), -1);
    EXPECT_EQ(BLAS_dusmm(static_cast<blas_order_type>(1), blas_no_trans, 1, 1, good, values, 3, y, 3), -1);
    EXPECT_EQ(BLAS_dusmm(blas_colmajor, blas_no_trans, 1, 1, good, values, 2, y, 3), -1);
    EXPECT_EQ(BLAS_dusmm(blas_colmajor, blas_no_trans, -1, 1, good, values, 3, y, 3), -1);
    EXPECT_EQ(BLAS_dussv(blas_no_trans, 1, good, x, 1), -1) << "it is not triangular";
    EXPECT_EQ(BLAS_dussm(blas_colmajor, blas_no_trans, 1, 1, good, x, 3), -1);
    const int triangle = small_matrix(blas_lower_triangular);
    EXPECT_EQ(BLAS_dussv(blas_no_trans, 1, triangle, x, 0), -1);
    EXPECT_EQ(BLAS_dussm(blas_colmajor, blas_no_trans, 1, 1, triangle, x, 2), -1);
    const int singular = BLAS_duscr_begin(3, 3);
    BLAS_ussp(singular, blas_lower_triangular);
    EXPECT_EQ(BLAS_uscr_end(singular), 0);
    EXPECT_EQ(BLAS_dussv(blas_no_trans, 1, singular, x, 1), -1) << "its diagonal is missing";
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(x[i], i + 1);
        EXPECT_EQ(y[i], i + 4);
    }
    for (const int a : {good, open, triangle, singular}) EXPECT_EQ(BLAS_usds(a), 0);

    const int sizes[] = {2, 0}, fine[] = {2, 1};
    for (const int a :
         {BLAS_duscr_begin(0, 1), BLAS_duscr_begin(1, -1), BLAS_duscr_block_begin(0, 1, 1, 1),
          BLAS_duscr_block_begin(1, 1, 0, 1), BLAS_duscr_block_begin(65536, 1, 65536, 1),
          BLAS_duscr_variable_block_begin(2, 2, sizes, fine), BLAS_duscr_variable_block_begin(2, 2, fine, sizes)})
        EXPECT_EQ(a, -1);
}

TEST(SparseBlasSolve, is_refused_where_one_row_lacks_its_diagonal_however_often_another_was_given_its_own)
{
    for (const int structure : {blas_lower_triangular, blas_upper_triangular}) {
        const bool lower = structure == blas_lower_triangular;
        const int a = BLAS_duscr_begin(3, 3);
        BLAS_ussp(a, structure);
        for (const int i : {0, 0, 2}) EXPECT_EQ(BLAS_duscr_insert_entry(a, 1, i, i), 0);
        EXPECT_EQ(BLAS_duscr_insert_entry(a, 1, lower ? 1 : 0, lower ? 0 : 1), 0);
        EXPECT_EQ(BLAS_duscr_end(a), 0);
        double x[] = {1, 2, 3};
        EXPECT_EQ(BLAS_dussv(blas_no_trans, 1, a, x, 1), -1);
        EXPECT_EQ(BLAS_dussv(blas_trans, 1, a, x, 1), -1);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(x[i], i + 1);
        EXPECT_EQ(BLAS_usds(a), 0);
    }
}

TEST(SparseBlasHandle, can_be_made_used_and_released_by_many_threads_at_once)
{
    std::vector<std::thread> threads;
    std::vector<int> wrong(4);
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t, &wrong] {
            for (int round = 0; round < 200; ++round) {
                const int a = BLAS_duscr_begin(2, 2);
                double y[] = {0, 0};
                const double x[] = {1, 10};
                int bad = BLAS_duscr_insert_entry(a, t, 0, 1) | BLAS_duscr_end(a);
                bad |= BLAS_dusmv(blas_no_trans, 1, a, x, 1, y, 1) | BLAS_usds(a);
                wrong[static_cast<std::size_t>(t)] += bad != 0 || y[0] != 10 * t || y[1] != 0;
            }
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4));
}
