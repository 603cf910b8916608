// Products of matrices: every member of every family, recomputed in the stated order bit for bit.
#include "tests/xblas/matrix.h"

namespace orv::test::extended {
namespace {

struct Shape {
    i64 m, n, k;
};

// C as expected, of which rows, columns and the sums are given by the family.
void expect_matrix(const Member& m, i64 prec, const Stored& c, Array& out, const Array& alpha, const Array& beta,
                   const std::function<Terms(i64, i64)>& terms)
{
    for (i64 i = 0; i < c.rows; ++i)
        for (i64 j = 0; j < c.columns; ++j) expect_closed(m, prec, out, c.at(i, j), alpha, beta, terms(i, j), nullptr);
}

Array copy(char type, const Array& a)
{
    Array b(type, a.length());
    b.restore(a.bits());
    return b;
}

TEST(ExtendedGemm, follows_its_order_of_operations)
{
    Random random(31);
    Rotation next;
    const std::vector<Shape> shapes{{1, 1, 1}, {2, 3, 4}, {3, 4, 5},  {4, 5, 3},
                                    {1, 9, 7}, {5, 8, 2}, {3, 11, 6}, {6, 2, 40}};
    for (const Member& m : members("gemm")) {
        const auto factors = scalars(m.type, random);
        for (const i64 prec : m.precisions())
            for (const i64 order : orders(m))
                for (const i64 ta : {no_trans, trans, conj_trans})
                    for (const i64 tb : {no_trans, trans, conj_trans})
                        for (const Shape& s : with(shapes, {3, 5, next.size()})) {
                            next.next();
                            const auto& [alpha, beta] = factors[static_cast<std::size_t>(next.run()) % factors.size()];
                            const auto dense = [&](char type, i64 rows, i64 columns, i64& ld) {
                                ld = (order == row_major ? columns : rows) + next.run() % 2;
                                return Stored(type, rows, columns, full(order, ld), random);
                            };
                            i64 lda, ldb, ldc;
                            const bool na = ta == no_trans, nb = tb == no_trans;
                            const Stored a = dense(m.first, na ? s.m : s.k, na ? s.k : s.m, lda);
                            const Stored b = dense(m.second, nb ? s.k : s.n, nb ? s.n : s.k, ldb);
                            const Stored c = dense(m.type, s.m, s.n, ldc);
                            SCOPED_TRACE(text(m, prec,
                                              {{"order", order},
                                               {"transa", ta},
                                               {"transb", tb},
                                               {"m", s.m},
                                               {"n", s.n},
                                               {"k", s.k},
                                               {"lda", lda},
                                               {"ldb", ldb},
                                               {"ldc", ldc}}));
                            Array expected = copy(m.type, c.data);
                            expect_matrix(m, prec, c, expected, alpha, beta, [&](i64 i, i64 j) {
                                Terms terms;
                                for (i64 l = 0; l < s.k; ++l) {
                                    const Element x = na ? a(i, l) : a(l, i), y = nb ? b(l, j) : b(j, l);
                                    terms.emplace_back(ta == conj_trans ? conjugate(x) : x,
                                                       tb == conj_trans ? conjugate(y) : y);
                                }
                                return terms;
                            });
                            Call(m)
                                .order(order)
                                .option(ta)
                                .option(tb)
                                .integer(s.m)
                                .integer(s.n)
                                .integer(s.k)
                                .scalar(alpha)
                                .array(a.data)
                                .integer(lda)
                                .array(b.data)
                                .integer(ldb)
                                .scalar(beta)
                                .array(c.data)
                                .integer(ldc)(prec);
                            ASSERT_TRUE(same(c.data, expected));
                        }
    }
}

TEST(ExtendedSymm, follows_its_order_of_operations_hermitian_ones_with_a_real_diagonal)
{
    Random random(32);
    Rotation next;
    const std::vector<Shape> shapes{{1, 1, 0}, {2, 5, 0}, {5, 2, 0}, {4, 4, 0}, {7, 9, 0}, {3, 13, 0}, {13, 3, 0}};
    for (const char* op : {"symm", "hemm"})
        for (const Member& m : members(op)) {
            const auto factors = scalars(m.type, random);
            for (const i64 prec : m.precisions())
                for (const i64 order : orders(m))
                    for (const i64 side : {left, right})
                        for (const i64 uplo : {upper, lower})
                            for (const Shape& s : with(shapes, {next.size(), 6, 0})) {
                                next.next();
                                const auto& [alpha, beta] =
                                    factors[static_cast<std::size_t>(next.run()) % factors.size()];
                                const i64 length = side == left ? s.m : s.n, lda = length + next.run() % 2;
                                const i64 ldb = (order == row_major ? s.n : s.m) + next.run() % 3;
                                const i64 ldc = (order == row_major ? s.n : s.m) + next.run() % 2;
                                SCOPED_TRACE(text(m, prec,
                                                  {{"order", order},
                                                   {"side", side},
                                                   {"uplo", uplo},
                                                   {"m", s.m},
                                                   {"n", s.n},
                                                   {"lda", lda}}));
                                Stored a(m.first, length, length, triangle(uplo, full(order, lda)), random);
                                if (is_hermitian(m))
                                    for (i64 i = 0; i < length; ++i) a.data.set_part(a.at(i, i), 1, std::nan(""));
                                const Stored b(m.second, s.m, s.n, full(order, ldb), random);
                                const Stored c(m.type, s.m, s.n, full(order, ldc), random);
                                Array expected = copy(m.type, c.data);
                                expect_matrix(m, prec, c, expected, alpha, beta, [&](i64 i, i64 j) {
                                    Terms terms;
                                    for (i64 l = 0; l < length; ++l)
                                        if (side == left)
                                            terms.emplace_back(symmetric_element(a, is_hermitian(m), i, l), b(l, j));
                                        else terms.emplace_back(symmetric_element(a, is_hermitian(m), l, j), b(i, l));
                                    return terms;
                                });
                                Call(m)
                                    .order(order)
                                    .option(side)
                                    .option(uplo)
                                    .integer(s.m)
                                    .integer(s.n)
                                    .scalar(alpha)
                                    .array(a.data)
                                    .integer(lda)
                                    .array(b.data)
                                    .integer(ldb)
                                    .scalar(beta)
                                    .array(c.data)
                                    .integer(ldc)(prec);
                                ASSERT_TRUE(same(c.data, expected));
                            }
        }
}

// Called as from C, column-major where not said otherwise: 2 by 2 by k.
double dgemm(i64 order, i64 k, double alpha, double beta, double c, i64 prec)
{
    const Member m("BLAS_dgemm_x");
    Array a('d', 16), b('d', 16), result('d', 16), by = scalar('d', alpha, 0), with = scalar('d', beta, 0);
    for (i64 i = 0; i < 16; ++i) a.set(i, 1, 0), b.set(i, 1, 0), result.set(i, c, 0);
    Call(m)
        .order(order)
        .option(no_trans)
        .option(no_trans)
        .integer(2)
        .integer(2)
        .integer(k)
        .scalar(by)
        .array(a)
        .integer(4)
        .array(b)
        .integer(4)
        .scalar(with)
        .array(result)
        .integer(4)(prec);
    return result[0].re;
}

TEST(ExtendedGemm, leaves_c_unscaled_without_a_depth)
{
    for (const i64 prec : {double_, extra}) EXPECT_EQ(dgemm(column_major, 0, 1, 2, 3, prec), 3);
}

TEST(ExtendedGemm, keeps_a_nan_in_c_when_alpha_and_beta_are_zero)
{
    for (const i64 prec : {double_, extra}) {
        EXPECT_TRUE(std::isnan(dgemm(column_major, 2, 0, 0, std::nan(""), prec)));
        EXPECT_EQ(dgemm(column_major, 2, 3, 0, std::nan(""), prec), 6);
    }
}

TEST(ExtendedGemm, takes_an_unknown_order_as_row_major)
{
    const Member m("BLAS_dgemm_x");
    Random random(33);
    const Stored a('d', 3, 4, full(row_major, 4), random), b('d', 4, 5, full(row_major, 5), random);
    const Array by = scalar('d', 1, 0), none = scalar('d', 0, 0);
    const auto product = [&](i64 order) {
        Array c('d', 15);
        Call(m)
            .order(order)
            .option(no_trans)
            .option(no_trans)
            .integer(3)
            .integer(5)
            .integer(4)
            .scalar(by)
            .array(a.data)
            .integer(4)
            .array(b.data)
            .integer(5)
            .scalar(none)
            .array(c)
            .integer(5)(extra);
        return c;
    };
    EXPECT_TRUE(same(product(7), product(row_major)));
}

} // namespace
} // namespace orv::test::extended
