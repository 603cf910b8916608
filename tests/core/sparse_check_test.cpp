// orv_sparse_check, and records that make no sense: each fault by a matrix that has it.
#include "tests/core/sparse.h"
#include "tests/support/probe.h"

using namespace orv;
using namespace orv::test;

namespace {

using Spoil = std::function<void(Stored<double, i32>&)>;

struct Fault {
    const char* what;
    Style style;
    Spoil spoil;
    orv_status status;
    const char* says; // somewhere in the sentence
};

// Rows 0 to 3 with the columns {0} {0 1} {1 2} {0 1 3}: every kind can be read from it.
Coordinates<double> four()
{
    return {"four", 4, 4, {{0, 0, 4}, {1, 0, 1}, {1, 1, 5}, {2, 1, 2}, {2, 2, 6}, {3, 0, 3}, {3, 1, 4}, {3, 3, 7}}};
}

// Where entry (i, j) stands in the arrays.
i64 at(const Stored<double, i32>& m, i64 i, i64 j)
{
    const orv_sparse& r = m.record;
    const bool columns = r.format == ORV_SPARSE_CSC;
    const void* across = columns ? r.row : r.col;
    const i64 line = (columns ? j : i) / r.block, place = (columns ? i : j) / r.block + r.base;
    if (r.format == ORV_SPARSE_COO) {
        for (i64 e = 0; e < r.count; ++e)
            if (m.index(r.row, e) == i + r.base && m.index(r.col, e) == j + r.base) return e;
    } else {
        for (i64 e = m.index(r.begin, line); e < m.index(r.end, line); ++e)
            if (m.index(across, e - m.index(r.begin, 0)) == place) return e - m.index(r.begin, 0);
    }
    ADD_FAILURE() << "there is no entry " << i << ' ' << j;
    return 0;
}
Spoil moves(i64 i, i64 j, i32 to) // another column for an entry; of CSC another row
{
    return [=](auto& m) { m.index(m.record.format == ORV_SPARSE_CSC ? m.record.row : m.record.col, at(m, i, j)) = to; };
}
Spoil becomes(i64 i, i64 j, double value)
{
    return [=](auto& m) { m.value(at(m, i, j)) = value; };
}
Spoil nothing()
{
    return [](auto&) {};
}

constexpr Style csr{ORV_SPARSE_CSR, 'T', 'L', 'N', 0}, from_one{ORV_SPARSE_CSR, 'T', 'L', 'N', 1},
    csc{ORV_SPARSE_CSC, 'T', 'L', 'N', 1}, coo{ORV_SPARSE_COO, 'T', 'L', 'N', 1}, dia{ORV_SPARSE_DIA, 'T'},
    sky{ORV_SPARSE_SKY, 'T', 'L', 'N', 1}, bsr{ORV_SPARSE_BSR, 'T', 'L', 'N', 1, 2};

// Entries stand at 0 | gap 1 | 2 3 | 4 5 | 6 7 8 in compressed rows: a gap is before row 1.
const Fault faults[] = {
    {"sound", csr, nothing(), ORV_OK, ""},
    {"sound", from_one, nothing(), ORV_OK, ""},
    {"sound", csc, nothing(), ORV_OK, ""},
    {"sound", coo, nothing(), ORV_OK, ""},
    {"sound", dia, nothing(), ORV_OK, ""},
    {"sound", sky, nothing(), ORV_OK, ""},
    {"sound", bsr, nothing(), ORV_OK, ""},
    {"column too large", csr, moves(2, 2, 4), ORV_BAD_INDEX, "row 2, entry 5: column 4 is none of the 4 from 0 on"},
    {"column too small", from_one, moves(1, 0, 0), ORV_BAD_INDEX,
     "row 2, entry 3: column 0 is none of the 4 from 1 on"},
    {"row too large", csc, moves(3, 3, 5), ORV_BAD_INDEX, "row 5 is none of the 4 from 1 on"},
    {"negative length", csr, [](auto& m) { m.index(m.record.end, 1) = m.index(m.record.begin, 1) - 1; }, ORV_BAD_INDEX,
     "row 1 goes from entry 2 to entry 0"},
    {"before the first", csr, [](auto& m) { m.index(m.record.begin, 2) = m.index(m.record.begin, 0) - 2; },
     ORV_BAD_INDEX, "row 2 goes from entry -2"},
    {"not sorted", csr, moves(3, 1, 0), ORV_DUPLICATE, "row 3 has column 0 twice, with the entries 6 and 7"},
    {"duplicate", csr, moves(3, 0, 2), ORV_NOT_SORTED,
     "row 3 is not sorted: entry 7 with column 1 stands behind column 2"},
    {"no diagonal", csr, moves(2, 2, 3), ORV_NO_DIAGONAL, "row 2 has no entry on the diagonal"},
    {"no diagonal", from_one, moves(2, 2, 4), ORV_NO_DIAGONAL, "row 3 has no entry on the diagonal"},
    {"no diagonal", {ORV_SPARSE_CSR, 'G'}, moves(2, 2, 3), ORV_OK, ""},
    {"no diagonal", {ORV_SPARSE_CSR, 'T', 'L', 'U'}, moves(2, 2, 3), ORV_OK, ""},
    {"zero diagonal", csr, becomes(1, 1, -0.0), ORV_ZERO_DIAGONAL, "row 1 has a zero on the diagonal"},
    {"small diagonal", csr, becomes(1, 1, 5e-324), ORV_OK, ""},
    {"zero diagonal", csc, becomes(1, 1, 0), ORV_ZERO_DIAGONAL, "column 2 has a zero on the diagonal"},
    {"the gravest of several", csr, [](auto& m) { moves(3, 3, 9)(m), becomes(0, 0, 0)(m), moves(2, 2, 1)(m); },
     ORV_BAD_INDEX, "column 9"},
    {"row too small", coo, [](auto& m) { m.index(m.record.row, at(m, 2, 1)) = 0; }, ORV_BAD_INDEX, "row 0 is none of"},
    {"column too large", coo, moves(2, 1, 5), ORV_BAD_INDEX, "column 5 is none of the 4 from 1 on"},
    {"duplicate", coo, moves(3, 1, 1), ORV_DUPLICATE, "both stand in row 4, column 1"},
    {"no diagonal", coo, moves(2, 2, 1), ORV_NO_DIAGONAL, "row 3 has no entry on the diagonal"},
    {"zero diagonal", coo, becomes(3, 3, 0), ORV_ZERO_DIAGONAL, "row 4 has a zero on the diagonal"},
    {"distance too large", dia, [](auto& m) { m.index(m.record.col, 0) = -4; }, ORV_BAD_INDEX,
     "diagonal 0: the distance -4 leads out"},
    {"not sorted", dia, [](auto& m) { m.index(m.record.col, 0) = -1; }, ORV_NOT_SORTED,
     "diagonal 1 with the distance -2 stands behind that of -1"},
    {"duplicate", dia, [](auto& m) { m.index(m.record.col, 1) = -1; }, ORV_DUPLICATE,
     "the diagonals 1 and 2 both have the distance -1"},
    {"no main diagonal", dia, [](auto& m) { m.index(m.record.col, m.record.count - 1) = 1; }, ORV_NO_DIAGONAL,
     "row 0 has no entry"},
    {"zero diagonal", dia, [](auto& m) { m.value((m.record.count - 1) * m.record.ld + 2) = 0; }, ORV_ZERO_DIAGONAL,
     "row 2 has a zero"},
    {"too long", sky, [](auto& m) { m.index(m.record.begin, 1) += 2; }, ORV_BAD_INDEX,
     "row 1 has 3 elements up to the diagonal"},
    {"negative length", sky, [](auto& m) { m.index(m.record.begin, 1) -= 2; }, ORV_BAD_INDEX, "row 1 has -1 elements"},
    {"empty", sky, [](auto& m) { m.index(m.record.begin, 1) -= 1; }, ORV_BAD_INDEX, "row 2 has 3 elements"},
    {"no diagonal", sky,
     [](auto& m) {
         for (i64 i = 1; i < 5; ++i) m.index(m.record.begin, i) -= 1;
     },
     ORV_NO_DIAGONAL, "row 1 has no entry"},
    {"zero diagonal", sky, [](auto& m) { m.value(0) = 0; }, ORV_ZERO_DIAGONAL, "row 1 has a zero"},
    {"block column", bsr, moves(2, 2, 3), ORV_BAD_INDEX,
     "block row 2, entry 4: block column 3 is none of the 2 from 1 on"},
    {"block of zeros", bsr,
     [](auto& m) {
         for (i64 e = 0; e < 4; ++e) m.value(e) = 0;
     },
     ORV_ZERO_DIAGONAL, "block row 1 has a zero on the diagonal"},
    {"block with a zero", bsr, [](auto& m) { m.value(0) = 0; }, ORV_OK, ""},
};

} // namespace

TEST(SparseCheck, finds_each_fault_and_says_where_it_is)
{
    for (const Fault& fault : faults) {
        SCOPED_TRACE(std::string(fault.what) + " in " + fault.style.text());
        Stored<double, i32> matrix(fault.style, four());
        fault.spoil(matrix);
        EXPECT_EQ(orv_sparse_check(&matrix.record), fault.status) << orv_last_error();
        if (fault.status != ORV_OK) {
            EXPECT_NE(std::string(orv_last_error()).find(fault.says), std::string::npos) << orv_last_error();
        }
    }
}

TEST(SparseCheck, finds_nothing_wrong_in_sound_matrices)
{
    each_type([]<class T, class Int> {
        each_style("GSHATD", [](const Style& style) {
            if (!exists<T>(style, 'N')) return;
            const Stored<T, Int> stored(style, sample<T>(24, 24, style));
            EXPECT_EQ(orv_sparse_check(&stored.record), ORV_OK) << style.text() << ": " << orv_last_error();
        });
    });
}

TEST(SparseCheck, of_coordinates_says_so_without_memory)
{
    const Stored<double, i32> stored(coo, four());
    orv_status status = ORV_OK;
    each_allocation_fails([&] { status = orv_sparse_check(&stored.record); },
                          [&] { EXPECT_TRUE(status == ORV_OK || status == ORV_NO_MEMORY); });
    EXPECT_EQ(status, ORV_OK);
}

TEST(SparseRecord, every_bad_field_is_refused_by_every_routine)
{
    struct Bad {
        const char* says;
        Style style;
        std::function<void(orv_sparse&)> spoil;
    };
    const Bad bad[] = {
        {"format", csr, [](auto& r) { r.format = 0; }},
        {"format", csr, [](auto& r) { r.format = 7; }},
        {"type", csr, [](auto& r) { r.type = 'f'; }},
        {"kind", csr, [](auto& r) { r.kind = 'Q'; }},
        {"uplo", csr, [](auto& r) { r.uplo = 0; }},
        {"diag", csr, [](auto& r) { r.diag = 'X'; }},
        {"bits", csr, [](auto& r) { r.bits = 16; }},
        {"base", csr, [](auto& r) { r.base = 2; }},
        {"rows or cols is negative", csr, [](auto& r) { r.rows = -1; }},
        {"rows and cols differ", csr, [](auto& r) { r.cols = 5; }},
        {"32 bits", csr, [](auto& r) { r.rows = r.cols = i64{1} << 31; }},
        {"count", coo, [](auto& r) { r.count = -1; }},
        {"ld", dia, [](auto& r) { r.ld = 3; }},
        {"block is", bsr, [](auto& r) { r.block = 0; }},
        {"multiple of block", bsr, [](auto& r) { r.block = 3; }},
        {"kinds of matrices in SKY", sky, [](auto& r) { r.kind = 'G'; }},
        {"begin", csr, [](auto& r) { r.begin = nullptr; }},
        {"values", csr, [](auto& r) { r.values = nullptr; }},
        {"col", csr, [](auto& r) { r.col = nullptr; }},
        {"row", csc, [](auto& r) { r.row = nullptr; }},
        {"row", coo, [](auto& r) { r.row = nullptr; }},
        {"values or col", dia, [](auto& r) { r.col = nullptr; }},
    };
    for (const Bad& b : bad) {
        Stored<double, i32> stored(b.style, four());
        b.spoil(stored.record);
        const orv_sparse* const a = &stored.record;
        double x[4]{}, y[4]{};
        const auto refused = [&](orv_status status, int argument) {
            EXPECT_EQ(status, -argument) << b.says;
            EXPECT_NE(std::string(orv_last_error()).find(b.says), std::string::npos) << orv_last_error();
        };
        refused(orv_sparse_check(a), 1);
        refused(orv_sparse_dmv('N', 1, a, x, 1, y), 3);
        refused(orv_sparse_dmm('R', 'N', 1, a, 1, x, 1, 1, y, 1), 4);
        refused(orv_sparse_dsv('N', 1, a, x, y), 3);
        refused(orv_sparse_dsm('R', 'N', 1, a, 1, x, 1, y, 1), 4);
    }
}

TEST(SparseRecord, bad_arguments_are_refused_by_their_number)
{
    const Stored<double, i32> stored(csr, four());
    const Stored<double, i32> general(Style{ORV_SPARSE_CSR, 'G'}, four());
    const orv_sparse *a = &stored.record, *g = &general.record;
    double x[16]{}, y[16]{};
    EXPECT_EQ(orv_sparse_dmv('X', 1, a, x, 1, y), -1);
    EXPECT_EQ(orv_sparse_dmv('N', 1, nullptr, x, 1, y), -3);
    EXPECT_EQ(orv_sparse_smv('N', 1, a, nullptr, 1, nullptr), -3); // of doubles
    EXPECT_EQ(orv_sparse_dmm('X', 'N', 1, a, 1, x, 4, 1, y, 4), -1);
    EXPECT_EQ(orv_sparse_dmm('C', 'X', 1, a, 1, x, 4, 1, y, 4), -2);
    EXPECT_EQ(orv_sparse_dmm('C', 'N', 1, a, -1, x, 4, 1, y, 4), -5);
    EXPECT_EQ(orv_sparse_dmm('C', 'N', 1, a, 1, x, 3, 1, y, 4), -7);
    EXPECT_EQ(orv_sparse_dmm('C', 'N', 1, a, 1, x, 4, 1, y, 3), -10);
    EXPECT_EQ(orv_sparse_dmm('R', 'N', 1, a, 3, x, 2, 1, y, 3), -7);
    EXPECT_EQ(orv_sparse_dmm('R', 'N', 1, a, 3, x, 3, 1, y, i64{1} << 31), -10);
    EXPECT_EQ(orv_sparse_dsv('N', 1, g, x, y), -3);
    EXPECT_EQ(orv_sparse_dsm('C', 'N', 1, a, 1, x, 4, y, 3), -9);
    EXPECT_EQ(orv_sparse_dsm('C', 'N', 1, g, 1, x, 4, y, 4), -4);
}

TEST(SparseRecord, fields_left_zero_mean_the_usual)
{
    const i32 rows[] = {0, 1, 3}, columns[] = {1, 0, 1};
    const double values[] = {2, 3, 4}, x[] = {10, 100};
    orv_sparse a{};
    a.format = ORV_SPARSE_CSR, a.type = 'd', a.bits = 32, a.rows = a.cols = 2;
    a.begin = rows, a.col = columns, a.values = values;
    double y[] = {not_a_number<double>(), not_a_number<double>()};
    EXPECT_EQ(orv_sparse_dmv('N', 1, &a, x, 0, y), ORV_OK);
    EXPECT_EQ(y[0], 200);
    EXPECT_EQ(y[1], 430);
}
