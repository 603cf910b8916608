// Conversions and transposes of sparse matrices: every pair of formats, against the list of entries that both were made
// from.
#include "tests/core/sparse_results.h"
#include "tests/support/probe.h"

using namespace orv;
using namespace orv::test;

namespace {

// What of op(A) counts in a record of that style.
template <class T> Elements<T> counting(const Style& from, char trans, const Coordinates<T>& a, const Style& to)
{
    std::vector<Coordinate<T>> kept;
    for (const auto& entry : whole_of(from, trans, a))
        if (to.keeps(entry.i, entry.j)) kept.push_back(entry);
    return sum_of(kept);
}

bool is_possible(const Style& to, i64 rows, i64 cols, bool complex)
{
    if (rows % to.block != 0 || cols % to.block != 0) return false;
    if (to.format == ORV_SPARSE_BSR)
        return !(complex && to.kind == 'H') && (to.block == 1 || (to.kind != 'A' && !to.unit()));
    return to.format != ORV_SPARSE_SKY || (to.kind != 'G' && to.kind != 'D' && !(complex && to.kind == 'H'));
}

// visit(style) of results: every format and base, blocks of orders 1 and 3.
template <class Visitor> void each_target(char kind, char uplo, char diag, const Visitor& visit)
{
    for (int format = ORV_SPARSE_CSR; format <= ORV_SPARSE_SKY; ++format)
        for (const int base : {0, 1})
            for (const i64 block : {1, 3})
                if (block == 1 || format == ORV_SPARSE_BSR) visit(Style{format, kind, uplo, diag, base, block});
}

template <class T, class From> void convert_all(const std::string& kinds, int bits)
{
    each_style(kinds, [&](const Style& from) {
        for (const auto& [m, k] : {std::pair<i64, i64>{12, 12}, {6, 18}, {18, 6}, {0, 6}, {6, 0}}) {
            if (testing::Test::HasFailure()) return;
            if ((m != k && from.kind != 'G') || m % from.block != 0 || k % from.block != 0) continue;
            if (from.format == ORV_SPARSE_SKY && (from.kind == 'G' || from.kind == 'D')) continue;
            if (!exists<T>(from, 'N')) continue;
            const auto a = sample<T>(m, k, from, 3);
            const Stored<T, From> stored(from, a);
            for (const char trans : {'N', 't', 'C'})
                for (const char kind : std::set<char>{from.kind, 'G'})
                    for (const char uplo : {'L', 'U'}) {
                        if ((kind == 'G' || kind == 'D') && uplo == 'U') continue;
                        each_target(kind, uplo, from.diag, [&](const Style& to) {
                            const i64 rows = trans == 'N' ? m : k, cols = trans == 'N' ? k : m;
                            if (!is_possible(to, rows, cols, is_complex<T>)) return;
                            SCOPED_TRACE(from.text() + ' ' + trans + " to " + to.text());
                            Made b(to, bits);
                            const orv_status status = orv_sparse_convert(trans, &stored.record, &b);
                            ASSERT_EQ(status, ORV_OK) << sentence(status);
                            EXPECT_EQ(b.rows, rows);
                            EXPECT_EQ(b.cols, cols);
                            EXPECT_EQ(stored_in<T>(b), counting(from, fold(trans), a, to));
                            const orv_status sound = orv_sparse_check(&b);
                            EXPECT_TRUE(sound == ORV_OK || sound == ORV_NO_DIAGONAL || sound == ORV_ZERO_DIAGONAL)
                                << sentence(sound);
                            Made sizes(to, bits);
                            ASSERT_EQ(orv_sparse_convert_sizes(trans, &stored.record, &sizes), ORV_OK);
                            EXPECT_EQ(sizes.count, b.count);
                            EXPECT_EQ(sizes.ld, b.ld);
                            EXPECT_EQ(sizes.rows, rows);
                            EXPECT_EQ(sizes.type, letter<T>);
                            EXPECT_EQ(sizes.values, nullptr);
                        });
                    }
        }
    });
}

} // namespace

TEST(SparseConvert, goes_from_every_format_of_general_matrices_to_every_other)
{
    convert_all<float, i32>("G", 32), convert_all<float, i64>("G", 32);
    convert_all<double, i32>("G", 64), convert_all<double, i64>("G", 64);
    convert_all<cpx<float>, i32>("G", 64), convert_all<cpx<float>, i64>("G", 64);
    convert_all<cpx<double>, i64>("G", 32), convert_all<cpx<double>, i32>("G", 32);
}

TEST(SparseConvert, goes_on_from_its_results)
{
    // Which have no gaps, so that their arrays are taken as they are.
    each_type([]<class T, class Int> {
        for (const auto& [m, k] : {std::pair<i64, i64>{12, 12}, {6, 18}, {18, 6}})
            each_target('G', 'L', 'N', [&](const Style& from) {
                if (from.format > ORV_SPARSE_COO || testing::Test::HasFailure()) return;
                const auto a = sample<T>(m, k, from, 3);
                const Stored<T, Int> stored(from, a);
                Made b(from, 8 * sizeof(Int));
                ASSERT_EQ(orv_sparse_convert('N', &stored.record, &b), ORV_OK);
                for (const char trans : {'N', 'T', 'C'})
                    each_target('G', 'L', 'N', [&](const Style& to) {
                        if (!is_possible(to, m, k, is_complex<T>)) return;
                        for (const int bits : {32, 64}) {
                            SCOPED_TRACE(from.text() + ' ' + trans + " to " + to.text());
                            Made c(to, bits);
                            ASSERT_EQ(orv_sparse_convert(trans, &b, &c), ORV_OK);
                            EXPECT_EQ(stored_in<T>(c), counting(from, trans, a, to));
                            EXPECT_EQ(orv_sparse_check(&c), ORV_OK) << orv_last_error();
                        }
                    });
            });
    });
}

TEST(SparseConvert, keeps_half_of_a_symmetric_matrix_or_makes_it_whole)
{
    convert_all<double, i32>("SHA", 32);
    convert_all<cpx<double>, i64>("SHA", 32);
}

TEST(SparseConvert, takes_triangles_and_diagonals_as_they_count)
{
    convert_all<double, i64>("TD", 64);
    convert_all<cpx<float>, i32>("TD", 64);
}

TEST(SparseConvert, writes_into_arrays_of_the_caller_if_there_is_room_and_leaves_them_if_not)
{
    const Style from{ORV_SPARSE_CSR, 'S', 'L'};
    const auto a = sample<double>(12, 12, from, 3);
    const Stored<double, i32> stored(from, a);
    for (const char kind : {'G', 'S'})
        each_target(kind, 'L', 'N', [&](const Style& to) {
            if (!is_possible(to, 12, 12, false)) return;
            SCOPED_TRACE(to.text());
            Made sizes(to, 64);
            if (to.format == ORV_SPARSE_DIA) sizes.ld = 15;
            ASSERT_EQ(orv_sparse_convert_sizes('N', &stored.record, &sizes), ORV_OK);
            expect_room_is_kept<double, i64>(sizes, [&](orv_sparse* b) {
                const orv_status status = orv_sparse_convert('N', &stored.record, b);
                if (status == ORV_OK) {
                    EXPECT_EQ(stored_in<double>(*b), counting(from, 'N', a, to));
                }
                return status;
            });
        });
}

TEST(SparseConvert, takes_unsorted_entries_several_in_a_place_zeros_and_empty_rows)
{
    // Row 0: columns 3, 1, 3 and a zero in 0; row 1 empty; row 2: column 2.
    const i32 begin[] = {0, 4, 4, 5}, col[] = {3, 1, 3, 0, 2}, row[] = {0, 0, 0, 0, 2};
    const double values[] = {1, 2, 4, 0, 8};
    orv_sparse csr{}, coo{};
    csr.format = ORV_SPARSE_CSR, coo.format = ORV_SPARSE_COO;
    for (orv_sparse* a : {&csr, &coo})
        a->type = 'd', a->bits = 32, a->rows = 3, a->cols = 4, a->col = col, a->values = values;
    csr.begin = begin, coo.row = row, coo.count = 5;
    const Elements<double> all{{{0, 0}, 0}, {{0, 1}, 2}, {{0, 3}, 5}, {{2, 2}, 8}};
    for (const orv_sparse* a : {&csr, &coo})
        each_target('G', 'L', 'N', [&](const Style& to) {
            if (!is_possible(to, 3, 4, false)) return;
            SCOPED_TRACE(to.text());
            for (const int bits : {32, 64}) {
                Made b(to, bits);
                ASSERT_EQ(orv_sparse_convert('N', a, &b), ORV_OK) << orv_last_error();
                const bool one_a_place = to.format == ORV_SPARSE_DIA || to.format == ORV_SPARSE_BSR;
                EXPECT_EQ(stored_in<double>(b), one_a_place ? nonzeros(all) : all);
                if (!one_a_place) {
                    EXPECT_EQ(b.count, 5);
                }
                EXPECT_EQ(orv_sparse_check(&b), one_a_place ? ORV_OK : ORV_DUPLICATE) << orv_last_error();
            }
        });
    EXPECT_EQ(col[0], 3) << "an operand was sorted";
}

TEST(SparseConvert, leaves_everything_as_it_was_without_memory)
{
    for (const char trans : {'N', 'C'})
        each_target('S', 'U', 'N', [&](const Style& to) {
            const Style from{ORV_SPARSE_COO, 'S', 'L', 'N', 1};
            const Stored<cpx<double>, i64> stored(from, sample<cpx<double>>(12, 12, from));
            if (!is_possible(to, 12, 12, true)) return;
            SCOPED_TRACE(to.text());
            Made b(to, 32);
            orv_status status = ORV_OK;
            each_allocation_fails(
                [&] {
                    status = orv_sparse_convert(trans, &stored.record, &b);
                    if (status == ORV_OK) orv_sparse_free(&b);
                },
                [&] {
                    if (probe().failed > 0) {
                        EXPECT_EQ(status, ORV_NO_MEMORY);
                    } else {
                        EXPECT_EQ(status, ORV_OK);
                    }
                    EXPECT_EQ(b.values, nullptr);
                    EXPECT_EQ(b.memory, nullptr);
                    if (probe().failed > 0) {
                        EXPECT_EQ(b.rows, 0);
                    }
                });
        });
}

TEST(SparseConvert, refuses_what_makes_no_sense_with_a_sentence)
{
    const Stored<double, i32> stored(Style{}, sample<double>(6, 9, Style{}));
    const orv_sparse& a = stored.record;
    const auto expect = [&](const orv_sparse& wish, orv_status status, const std::string& says) {
        orv_sparse b = wish;
        EXPECT_EQ(orv_sparse_convert('N', &a, &b), status);
        EXPECT_EQ(orv_last_error(), "orv_sparse_convert: argument " + std::to_string(-status) + ": " + says);
        EXPECT_TRUE(same_record(b, wish));
    };
    const auto form = [](const auto& change) {
        orv_sparse b{};
        b.format = ORV_SPARSE_CSC, b.bits = 32;
        change(b);
        return b;
    };
    expect(form([](auto& b) { b.format = 9; }), -3, "format is none of ORV_SPARSE_CSR to SKY");
    expect(form([](auto& b) { b.bits = 0; }), -3, "bits is none of 32 and 64");
    expect(form([](auto& b) { b.type = 's'; }), -3, "type is s, and that of the result is d");
    expect(form([](auto& b) { b.kind = 'T', b.uplo = 'L'; }), -3, "rows and cols differ, which only kind G may");
    expect(form([](auto& b) { b.format = ORV_SPARSE_BSR; }), -3, "block is smaller than 1");
    expect(form([](auto& b) { b.format = ORV_SPARSE_BSR, b.block = 2; }), -3, "rows or cols is no multiple of block");
    expect(form([](auto& b) { b.format = ORV_SPARSE_SKY; }), -3, "kinds of matrices in SKY are S, A and T");
    expect(form([&](auto& b) { b = a; }), -3, "values of the result overlaps an operand");
    expect(form([&](auto& b) { b.begin = &a, b.row = a.values, b.count = 1000; }), -3,
           "row of the result overlaps an operand");
    expect(form([&](auto& b) { b.begin = &a, b.row = &b, b.count = 1000; }), -3,
           "values of the result is a null pointer");
    EXPECT_EQ(orv_sparse_convert('N', &a, nullptr), -3);
    EXPECT_EQ(orv_sparse_convert('N', nullptr, nullptr), -2);
    EXPECT_EQ(orv_sparse_convert('X', &a, nullptr), -1);

    const Style square{ORV_SPARSE_CSR, 'A', 'L'};
    const Stored<double, i32> skew(square, sample<double>(6, 6, square));
    orv_sparse b = form([](auto& r) { r.format = ORV_SPARSE_BSR, r.block = 2, r.kind = 'A', r.uplo = 'L'; });
    EXPECT_EQ(orv_sparse_convert('N', &skew.record, &b), -3);
    EXPECT_EQ(orv_last_error(), std::string("orv_sparse_convert: argument 3: in BSR kind A and diag U leave out whole "
                                            "blocks; ask for kind G"));
}

TEST(SparseConvert, gives_a_result_back_once_and_leaves_arrays_of_the_caller)
{
    const Stored<double, i32> stored(Style{}, sample<double>(6, 9, Style{}));
    orv_sparse mine = stored.record;
    orv_sparse_free(&mine);
    EXPECT_TRUE(same_record(mine, stored.record));
    orv_sparse_free(nullptr);

    Made b(ORV_SPARSE_COO, 32);
    ASSERT_EQ(orv_sparse_convert('N', &stored.record, &b), ORV_OK);
    EXPECT_NE(b.memory, nullptr);
    orv_sparse_free(&b);
    EXPECT_EQ(b.memory, nullptr);
    EXPECT_EQ(b.values, nullptr);
    EXPECT_EQ(b.count, 0);
    orv_sparse_free(&b);
    ASSERT_EQ(orv_sparse_convert('N', &stored.record, &b), ORV_OK) << "a record can be used again";
    const orv_sparse first = b;
    ASSERT_EQ(orv_sparse_convert('N', &stored.record, &b), ORV_OK);
    EXPECT_TRUE(same_record(b, first)) << "into the same arrays";

    const Stored<double, i32> nothing(Style{}, sample<double>(6, 0, Style{}));
    orv_sparse_free(&b);
    ASSERT_EQ(orv_sparse_convert('N', &nothing.record, &b), ORV_OK);
    EXPECT_EQ(orv_sparse_convert('N', &stored.record, &b), ORV_NO_ROOM) << "an empty result has no room";
}
