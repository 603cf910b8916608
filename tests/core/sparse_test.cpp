// The public sparse routines: every format, kind, option, type and width, beside a sum in wide arithmetic.
#include "tests/core/sparse_operands.h"
#include "tests/support/probe.h"

using namespace orv;
using namespace orv::test;

namespace {

std::string told(const Style& style, char trans) { return style.text() + ' ' + trans + ": " + orv_last_error(); }

// check(style, trans, matrix, alpha, beta) of all products that there are.
template <class T, class Check> void each_product(const Check& check)
{
    each_style("GSHATD", [&](const Style& style) {
        for (const char trans : {'N', 't', 'C'})
            for (const auto& [m, k] : {std::pair<i64, i64>{24, 24}, {6, 30}, {30, 6}, {1, 1}, {0, 6}, {6, 0}}) {
                if (testing::Test::HasFailure()) return;
                if ((m != k && style.kind != 'G') || m % style.block != 0 || k % style.block != 0) continue;
                if (!exists<T>(style, fold(trans))) continue;
                const auto a = sample<T>(m, k, style);
                for (const auto& [alpha, beta] : factors<T>()) check(style, trans, a, alpha, beta);
            }
    });
}

} // namespace

TEST(Sparse, products_with_vectors_are_within_the_textbook_bound)
{
    each_type([]<class T, class Int> {
        each_product<T>([](const Style& style, char trans, const Coordinates<T>& a, T alpha, T beta) {
            const Stored<T, Int> stored(style, a);
            const i64 rows = trans == 'N' ? a.m : a.k, cols = trans == 'N' ? a.k : a.m;
            Operands<T> o(rows, cols, 1, false, beta == zero<T>);
            ASSERT_EQ(sparse_mv<T>(trans, alpha, &stored.record, o.x.data(), beta, o.y.data()), ORV_OK)
                << told(style, trans);
            EXPECT_LE(worst(style, fold(trans), a, alpha, beta, o, rows, 1), 1) << told(style, trans);
        });
    });
}

TEST(Sparse, products_with_dense_matrices_are_within_the_textbook_bound)
{
    each_type([]<class T, class Int> {
        each_product<T>([](const Style& style, char trans, const Coordinates<T>& a, T alpha, T beta) {
            if (beta == one<T> || alpha == zero<T>) return;
            const Stored<T, Int> stored(style, a);
            const i64 rows = trans == 'N' ? a.m : a.k, cols = trans == 'N' ? a.k : a.m;
            for (const i64 columns : {1, 9, 50})
                for (const char order : {'R', 'c'}) {
                    if (columns == 50 && (a.m != 24 || style.uplo == 'U')) continue;
                    Operands<T> o(rows, cols, columns, order == 'R', beta == zero<T>);
                    ASSERT_EQ(sparse_mm<T>(order, trans, alpha, &stored.record, columns, o.x.data(),
                                           o.x.template ld<i64>(), beta, o.y.data(), o.y.template ld<i64>()),
                              ORV_OK)
                        << told(style, trans);
                    EXPECT_LE(worst(style, fold(trans), a, alpha, beta, o, rows, columns), 1)
                        << told(style, trans) << ' ' << order << ' ' << columns;
                    EXPECT_TRUE(o.y.padding_is_untouched());
                }
        });
    });
}

TEST(Sparse, products_of_one_row_and_without_padding_are_right)
{
    // Columns of a matrix with one row are as near to each other as rows of one with one column.
    each_style("G", [](const Style& style) {
        if (style.block != 1 || style.format == ORV_SPARSE_SKY) return;
        const auto a = sample<double>(6, 1, style);
        const Stored<double, i64> stored(style, a);
        for (const char order : {'R', 'C'}) {
            const Dense<double> x(6, 9, order == 'R', 0), y(1, 9, order == 'R', 0);
            ASSERT_EQ(orv_sparse_dmm(order, 'T', 1, &stored.record, 9, x.data(), x.ld<i64>(), 0, y.data(), y.ld<i64>()),
                      ORV_OK);
            for (i64 c = 0; c < 9; ++c) {
                WideSum sum;
                for (const auto& [i, j, value] : a.entries) sum.add(value, x(i, c));
                EXPECT_LE(sum.excess(y(0, c)), 1) << style.text() << ' ' << order;
            }
        }
    });
}

namespace {

template <class T, class Check> void each_solve(const Check& check)
{
    each_style("TD", [&](const Style& style) {
        for (const char trans : {'n', 'T', 'C'})
            for (const i64 n : {0, 6, 24}) {
                if (testing::Test::HasFailure()) return;
                if (exists<T>(style, trans)) check(style, trans, sample<T>(n, n, style));
            }
    });
}

} // namespace

TEST(Sparse, solves_leave_small_residuals)
{
    each_type([]<class T, class Int> {
        each_solve<T>([](const Style& style, char trans, const Coordinates<T>& a) {
            const Stored<T, Int> stored(style, a);
            for (const auto& [alpha, unused] : factors<T>()) {
                Operands<T> o(a.m, a.m, 1, false, true);
                ASSERT_EQ(sparse_sv<T>(trans, alpha, &stored.record, o.x.data(), o.y.data()), ORV_OK)
                    << told(style, trans);
                EXPECT_LE(residual(style, fold(trans), a, alpha, o, 1), 1) << told(style, trans);
            }
        });
    });
}

TEST(Sparse, solves_for_many_columns_leave_small_residuals_and_the_padding)
{
    each_type([]<class T, class Int> {
        each_solve<T>([](const Style& style, char trans, const Coordinates<T>& a) {
            const Stored<T, Int> stored(style, a);
            const T alpha = factors<T>()[0].first;
            for (const i64 columns : {1, 9, 50})
                for (const char order : {'r', 'C'}) {
                    if (columns == 50 && style.uplo == 'U') continue;
                    Operands<T> o(a.m, a.m, columns, order == 'r', true);
                    ASSERT_EQ(sparse_sm<T>(order, trans, alpha, &stored.record, columns, o.x.data(),
                                           o.x.template ld<i64>(), o.y.data(), o.y.template ld<i64>()),
                              ORV_OK)
                        << told(style, trans);
                    EXPECT_LE(residual(style, fold(trans), a, alpha, o, columns), 1)
                        << told(style, trans) << ' ' << order << ' ' << columns;
                    EXPECT_TRUE(o.y.padding_is_untouched());
                }
        });
    });
}

TEST(Sparse, solves_in_place_give_the_bits_of_those_beside)
{
    each_solve<double>([](const Style& style, char trans, const Coordinates<double>& a) {
        const Stored<double, i32> stored(style, a);
        Operands<double> o(a.m, a.m, 9, true, true), in_place(a.m, a.m, 9, true, true);
        const i64 ldx = o.x.ld<i64>(), ldy = o.y.ld<i64>();
        ASSERT_EQ(orv_sparse_dsm('R', trans, 0.75, &stored.record, 9, o.x.data(), ldx, o.y.data(), ldy), ORV_OK);
        ASSERT_EQ(orv_sparse_dsm('R', trans, 0.75, &stored.record, 9, in_place.x.data(), ldx, in_place.x.data(), ldx),
                  ORV_OK);
        for (i64 i = 0; i < a.m; ++i)
            for (i64 c = 0; c < 9; ++c) ASSERT_EQ(o.y(i, c), in_place.x(i, c)) << told(style, trans);
    });
}

TEST(Sparse, alpha_of_zero_reads_neither_the_matrix_nor_x)
{
    const Style style{ORV_SPARSE_CSR, 'G'};
    Coordinates<double> a = sample<double>(6, 6, style);
    for (auto& entry : a.entries) entry.a = not_a_number<double>();
    const Stored<double, i64> stored(style, a);
    const std::vector<double> x(6, not_a_number<double>());
    std::vector<double> y(6, 3);
    EXPECT_EQ(orv_sparse_dmv('N', 0, &stored.record, x.data(), 2, y.data()), ORV_OK);
    EXPECT_EQ(y, std::vector<double>(6, 6));
}

TEST(Sparse, a_row_without_its_diagonal_is_no_solve_and_nothing_is_written)
{
    each_type([]<class T, class Int> {
        each_style("TD", [](const Style& style) {
            if (style.format == ORV_SPARSE_SKY || style.format == ORV_SPARSE_DIA || testing::Test::HasFailure()) return;
            Coordinates<T> a = sample<T>(24, 24, style);
            const i64 b = style.block, missing = 23 / b; // where a search would leave the arrays
            std::erase_if(a.entries, [=](const auto& e) { return e.i / b == missing && e.j / b == missing; });
            const Stored<T, Int> stored(style, a);
            for (const char trans : {'N', 'T', 'C'}) {
                Operands<T> o(24, 24, 2, true, false);
                const auto before = o.y.copy();
                const orv_status expected = style.unit() ? ORV_OK : ORV_NO_DIAGONAL;
                EXPECT_EQ(sparse_sm<T>('R', trans, one<T>, &stored.record, 2, o.x.data(), 5, o.y.data(), 7), expected)
                    << told(style, trans);
                if (expected == ORV_OK) continue;
                EXPECT_EQ(sparse_sv<T>(trans, one<T>, &stored.record, o.x.data(), o.y.data()), expected);
                EXPECT_TRUE(o.y.same_as(before));
                const i64 row = missing * b + style.base;
                EXPECT_NE(std::string(orv_last_error()).find("row " + std::to_string(row)), std::string::npos)
                    << told(style, trans);
            }
        });
    });
}

TEST(Sparse, a_diagonal_that_the_caller_answers_for_is_not_looked_for)
{
    const i64 begin[] = {0, 1, 2, 3}, col[] = {0, 0, 2};
    const double values[] = {2, 8, 4}, x[] = {2, 20, 12};
    orv_sparse a{};
    a.format = ORV_SPARSE_CSR, a.type = 'd', a.kind = 'T', a.uplo = 'L', a.bits = 64, a.rows = a.cols = 3;
    a.begin = begin, a.col = col, a.values = values;
    double y[3]{};
    EXPECT_EQ(orv_sparse_dsv('N', 1, &a, x, y), ORV_NO_DIAGONAL);
    a.has_diagonal = 1;
    EXPECT_EQ(orv_sparse_dsv('N', 1, &a, x, y), ORV_OK);
    EXPECT_EQ(y[1], 3); // divided by the entry behind its row
    a.memory = nullptr, a.kind = 'G', a.has_diagonal = 1;
    orv_sparse copy{};
    copy.format = ORV_SPARSE_CSC, copy.kind = 'T', copy.uplo = 'L', copy.bits = 64, copy.has_diagonal = 1;
    ASSERT_EQ(orv_sparse_convert('N', &a, &copy), ORV_OK) << orv_last_error();
    EXPECT_EQ(orv_sparse_dsv('N', 1, &copy, x, y), ORV_NO_DIAGONAL); // of results nobody has
    orv_sparse_free(&copy);
}

TEST(Sparse, solves_that_need_not_look_for_the_diagonal_give_the_same_bits)
{
    each_style("TD", [](const Style& style) {
        if (!exists<double>(style, 'N') || testing::Test::HasFailure()) return;
        const Stored<double, i32> stored(style, sample<double>(24, 24, style));
        orv_sparse answered = stored.record;
        answered.has_diagonal = 1;
        const Operands<double> o(24, 24, 1, false, false), p(24, 24, 1, false, false);
        for (const char trans : {'N', 'T'}) {
            EXPECT_EQ(orv_sparse_dsv(trans, 2, &stored.record, o.x.data(), o.y.data()), ORV_OK);
            EXPECT_EQ(orv_sparse_dsv(trans, 2, &answered, o.x.data(), p.y.data()), ORV_OK);
            EXPECT_TRUE(same_bits(o.y.data(), p.y.data(), 24)) << told(style, trans);
        }
    });
}

TEST(Sparse, diagonals_without_the_main_one_and_empty_skylines_are_no_solves)
{
    for (const int format : {ORV_SPARSE_DIA, ORV_SPARSE_SKY})
        for (const char kind : {'T', 'D'}) {
            const Style style{format, kind};
            if (!exists<double>(style, 'N')) continue;
            Coordinates<double> a = sample<double>(6, 6, style);
            std::erase_if(a.entries, [](const auto& e) { return e.i == e.j; });
            const Stored<double, i64> stored(style, a);
            if (format == ORV_SPARSE_SKY)
                for (i64 i = 1; i < 7; ++i) stored.index(stored.record.begin, i) = stored.index(stored.record.begin, 0);
            double x[6]{}, y[6]{};
            orv_sparse record = stored.record;
            EXPECT_EQ(orv_sparse_dsv('N', 1, &record, x, y), ORV_NO_DIAGONAL) << style.text();
            if (format != ORV_SPARSE_DIA) continue;
            record.has_diagonal = 1; // a look at the list of diagonals costs nothing
            EXPECT_EQ(orv_sparse_dsv('N', 1, &record, x, y), ORV_NO_DIAGONAL);
        }
}

TEST(Sparse, what_there_is_not_is_refused_and_said)
{
    each_style("GSHATD", [](const Style& style) {
        if (exists<cpx<double>>(style, 'C')) return;
        const Stored<cpx<double>, i64> stored(style, sample<cpx<double>>(6, 6, style));
        cpx<double> x[6]{}, y[6]{};
        const cpx<double> alpha{1, 0};
        EXPECT_EQ(orv_sparse_zmv('C', alpha, &stored.record, x, alpha, y), -3) << style.text();
        EXPECT_NE(std::string(orv_last_error()).find("argument 3: "), std::string::npos) << orv_last_error();
    });
}

TEST(Sparse, the_kernel_that_ran_can_be_asked_and_found)
{
    const auto ran = [](const Style& style, auto integer, char trans) {
        const auto a = sample<double>(6, 6, style);
        const Stored<double, decltype(integer)> stored(style, a);
        double x[6]{}, y[6]{};
        EXPECT_EQ(orv_sparse_dmv(trans, 1, &stored.record, x, 0, y), ORV_OK);
        EXPECT_NE(orv_branch_symbol(orv_sparse_kernel()), nullptr);
        EXPECT_EQ(orv_sparse_threads(), 1);
        const std::string name = orv_sparse_kernel(), tag = orv_branch_name();
        return name.substr(0, name.find(tag)) + name.substr(name.find(tag) + tag.size() + 1);
    };
    EXPECT_EQ(ran({ORV_SPARSE_CSR, 'G'}, i64{}, 'N'), "orv_spblas_dcsr0ng__c__mvout_par");
    EXPECT_EQ(ran({ORV_SPARSE_CSR, 'T', 'L', 'U', 1}, i32{}, 'C'), "orv_spblas_lp64_dcsr1ttluf__mvout_seq");
    EXPECT_EQ(ran({ORV_SPARSE_CSC, 'S', 'L', 'N', 0}, i64{}, 'T'), "orv_spblas_dcsr0nsunc__mvout_par");
    EXPECT_EQ(ran({ORV_SPARSE_COO, 'A', 'U'}, i64{}, 'T'), "orv_spblas_dcoo0nal_c__mvout_par");
    EXPECT_EQ(ran({ORV_SPARSE_DIA, 'D'}, i64{}, 'N'), "orv_spblas_ddia1nd_nf__mvout_par");
    EXPECT_EQ(ran({ORV_SPARSE_BSR, 'G', 'L', 'N', 1}, i32{}, 'N'), "orv_spblas_lp64_dbsr1ng__f__gemvout_par");
    EXPECT_EQ(ran({ORV_SPARSE_BSR, 'G'}, i64{}, 'T'), "orv_spblas_cspblas_dbsrmmgen");
    EXPECT_EQ(ran({ORV_SPARSE_SKY, 'T'}, i64{}, 'T'), "orv_spblas_dskymmgk");
}

TEST(Sparse, without_memory_calls_go_on_or_say_so_and_write_nothing)
{
    const auto attempt = [](const Style& style, char order, bool solves) {
        const auto a = sample<double>(24, 24, style);
        const Stored<double, i64> stored(style, a);
        Operands<double> o(24, 24, 3, order == 'R', false);
        const i64 ldx = o.x.ld<i64>(), ldy = o.y.ld<i64>();
        const auto before = o.y.copy();
        orv_status status = ORV_OK;
        bool refused = false;
        each_allocation_fails(
            [&] {
                o.y.restart();
                status = solves ? orv_sparse_dsm(order, 'N', 1, &stored.record, 3, o.x.data(), ldx, o.y.data(), ldy)
                                : orv_sparse_dmm(order, 'N', 1, &stored.record, 3, o.x.data(), ldx, 1, o.y.data(), ldy);
            },
            [&] {
                if (status == ORV_OK) {
                    EXPECT_LE(solves ? residual(style, 'N', a, 1.0, o, 3) : worst(style, 'N', a, 1.0, 1.0, o, 24, 3), 1)
                        << style.text();
                } else {
                    refused = true;
                    EXPECT_EQ(status, ORV_NO_MEMORY) << style.text();
                    EXPECT_TRUE(o.y.same_as(before)) << style.text();
                }
            });
        return refused;
    };
    EXPECT_FALSE(attempt({ORV_SPARSE_CSR, 'G'}, 'R', false));
    EXPECT_TRUE(attempt({ORV_SPARSE_CSR, 'G'}, 'C', false)); // has to be turned
    EXPECT_FALSE(attempt({ORV_SPARSE_COO, 'T'}, 'R', true));
    EXPECT_TRUE(attempt({ORV_SPARSE_BSR, 'T', 'L', 'N', 0, 2}, 'R', true));
}
