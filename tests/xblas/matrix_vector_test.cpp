// Products of matrices and vectors: every member of every family, recomputed in the stated order bit for bit.
#include "tests/xblas/matrix.h"

namespace orv::test::extended {
namespace {

constexpr i64 increments[] = {1, -1, 2, -3, 1};

// The routines with two vectors want lda no shorter than y, whatever the storage.
i64 two_bound(const Member& m, i64 how, i64 rows, i64 columns)
{
    return m.op == "gemv2" ? (how == no_trans ? rows : columns) : 0;
}

// Runs y := alpha*M*x + beta*y for a matrix M, of which element(i, j, use) uses element (i, j) if it has one, and
// compares. before, matrix: the arguments before alpha, and those between alpha and x.
template <class Element_of>
void run(const Member& m, i64 prec, i64 rows, i64 columns, Element_of element, const std::function<void(Call&)>& before,
         const std::function<void(Call&)>& matrix, i64 incx, i64 incy, const Array& alpha, const Array& beta,
         Random& random)
{
    const bool two = m.op.back() == '2';
    const Vector head(m.second, columns, incx, random), tail(m.second, columns, incx, random);
    Vector y(m.type, rows, incy, random), expected(m.type, rows, incy, random);
    expected.data.restore(y.data.bits());
    for (i64 i = 0; i < rows; ++i) {
        Terms heads, tails;
        for (i64 j = 0; j < columns; ++j)
            element(i, j, [&](Element e) {
                heads.emplace_back(e, head[j]);
                tails.emplace_back(e, tail[j]);
            });
        expect_closed(m, prec, expected.data, index(i, rows, incy), alpha, beta, heads, two ? &tails : nullptr);
    }
    Call call(m);
    before(call);
    call.scalar(alpha);
    matrix(call);
    call.array(head.data);
    if (two) call.array(tail.data);
    call.integer(incx).scalar(beta).array(y.data).integer(incy);
    call(prec);
    ASSERT_TRUE(same(y.data, expected.data));
}

const std::vector<std::pair<i64, i64>> shapes{{1, 1}, {2, 5}, {5, 2},   {4, 4},  {9, 3},
                                              {0, 3}, {7, 8}, {41, 13}, {3, 40}, {9, 65}};

TEST(ExtendedGemv, follows_its_order_of_operations)
{
    Random random(11);
    Rotation next;
    for (const char* op : {"gemv", "gemv2"})
        for (const Member& m : members(op)) {
            const auto factors = scalars(m.type, random);
            for (const i64 prec : m.precisions())
                for (const i64 order : orders(m))
                    for (const i64 how : {no_trans, trans, conj_trans})
                        for (const auto& [rows, columns] : with(shapes, {next.size(), next.size(3)})) {
                            next.next();
                            const i64 incx = next(increments), incy = increments[next.run() % 4];
                            const auto& [alpha, beta] = factors[static_cast<std::size_t>(next.run()) % factors.size()];
                            // The routine with two vectors asks for the length of y, whatever the storage.
                            const i64 ld =
                                max(max(1, order == row_major ? columns : rows), two_bound(m, how, rows, columns)) +
                                next.run() % 3;
                            SCOPED_TRACE(text(m, prec,
                                              {{"order", order},
                                               {"trans", how},
                                               {"m", rows},
                                               {"n", columns},
                                               {"lda", ld},
                                               {"incx", incx},
                                               {"incy", incy}}));
                            const Stored a(m.first, rows, columns, full(order, ld), random);
                            run(
                                m, prec, how == no_trans ? rows : columns, how == no_trans ? columns : rows,
                                [&](i64 i, i64 j, auto use) {
                                    if (how == no_trans) use(a(i, j));
                                    else use(how == conj_trans ? conjugate(a(j, i)) : a(j, i));
                                },
                                [&](Call& c) { c.order(order).option(how).integer(rows).integer(columns); },
                                [&](Call& c) { c.array(a.data).integer(ld); }, incx, incy, alpha, beta, random);
                            if (HasFatalFailure()) return;
                        }
        }
}

TEST(ExtendedGbmv, follows_its_order_of_operations)
{
    Random random(12);
    Rotation next;
    struct Shape {
        i64 m, n, kl, ku;
    };
    const std::vector<Shape> bands{{1, 1, 0, 0}, {6, 6, 2, 1},  {5, 9, 1, 3},  {9, 5, 3, 1},
                                   {7, 7, 6, 6}, {12, 4, 0, 2}, {4, 12, 3, 0}, {40, 37, 5, 9}};
    const std::vector<Shape> long_rows{{71, 70, 32, 30}, {66, 75, 31, 32}}; // of 63 and 64 elements
    for (const char* op : {"gbmv", "gbmv2"})
        for (const Member& m : members(op)) {
            const auto factors = scalars(m.type, random);
            for (const i64 prec : m.precisions())
                for (const i64 order : orders(m))
                    for (const i64 how : {no_trans, trans, conj_trans})
                        for (const Shape& s : with(bands, next.run() % 5 < 4 ? Shape{next.size(), next.size(),
                                                                                     next.size() / 3, next.size() / 2}
                                                                             : next(long_rows))) {
                            next.next();
                            const i64 incx = next(increments), incy = increments[next.run() % 4];
                            const auto& [alpha, beta] = factors[static_cast<std::size_t>(next.run()) % factors.size()];
                            const i64 ld = s.kl + s.ku + 1 + next.run() % 3;
                            SCOPED_TRACE(text(m, prec,
                                              {{"order", order},
                                               {"trans", how},
                                               {"m", s.m},
                                               {"n", s.n},
                                               {"kl", s.kl},
                                               {"ku", s.ku},
                                               {"incx", incx},
                                               {"incy", incy}}));
                            const Stored a(m.first, s.m, s.n, general_band(order, s.kl, s.ku, ld), random);
                            run(
                                m, prec, how == no_trans ? s.m : s.n, how == no_trans ? s.n : s.m,
                                [&](i64 i, i64 j, auto use) {
                                    if (how != no_trans) std::swap(i, j);
                                    if (a.has(i, j)) use(how == conj_trans ? conjugate(a(i, j)) : a(i, j));
                                },
                                [&](Call& c) {
                                    c.order(order).option(how).integer(s.m).integer(s.n).integer(s.kl).integer(s.ku);
                                },
                                [&](Call& c) { c.array(a.data).integer(ld); }, incx, incy, alpha, beta, random);
                            if (HasFatalFailure()) return;
                        }
        }
}

// Symmetric and Hermitian matrices in one of three storages.
void symmetric(const std::vector<const char*>& ops, std::uint64_t stream)
{
    Random random(stream);
    Rotation next;
    const std::vector<std::pair<i64, i64>> sizes{{1, 0}, {2, 1}, {5, 2}, {6, 6}, {7, 6}, {11, 0}, {9, 3}, {40, 7}};
    const std::vector<std::pair<i64, i64>> long_rows{{66, 31}, {71, 32}}; // in bands of 63 and 65 elements
    for (const char* op : ops)
        for (const Member& m : members(op)) {
            const auto factors = scalars(m.type, random);
            for (const i64 prec : m.precisions())
                for (const i64 order : orders(m))
                    for (const i64 uplo : {upper, lower})
                        for (const auto& [n, k] :
                             with(sizes,
                                  next.run() % 5 < 4 ? std::pair{next.size(), next.size() / 3} : next(long_rows))) {
                            next.next();
                            const i64 incx = next(increments), incy = increments[next.run() % 4];
                            const auto& [alpha, beta] = factors[static_cast<std::size_t>(next.run()) % factors.size()];
                            const bool band = m.op[1] == 'b', in_packed = m.op[1] == 'p';
                            const i64 ld = (band ? k + 1 : n) + next.run() % 3;
                            SCOPED_TRACE(text(m, prec,
                                              {{"order", order},
                                               {"uplo", uplo},
                                               {"n", n},
                                               {"k", k},
                                               {"lda", ld},
                                               {"incx", incx},
                                               {"incy", incy}}));
                            Stored a(m.first, n, n,
                                     band        ? band_triangle(order, uplo, k, ld)
                                     : in_packed ? packed(order, uplo, n)
                                                 : triangle(uplo, full(order, ld)),
                                     random);
                            if (is_hermitian(m))
                                for (i64 i = 0; i < n; ++i) a.data.set_part(a.at(i, i), 1, std::nan(""));
                            run(
                                m, prec, n, n,
                                [&](i64 i, i64 j, auto use) {
                                    if (in_symmetric(a, i, j)) use(symmetric_element(a, is_hermitian(m), i, j));
                                },
                                [&](Call& c) {
                                    c.order(order).option(uplo).integer(n);
                                    if (band) c.integer(k);
                                },
                                [&](Call& c) {
                                    c.array(a.data);
                                    if (!in_packed) c.integer(ld);
                                },
                                incx, incy, alpha, beta, random);
                            if (::testing::Test::HasFatalFailure()) return;
                        }
        }
}

TEST(ExtendedSymv, follows_its_order_of_operations) { symmetric({"symv", "symv2"}, 13); }
TEST(ExtendedHemv, reads_real_diagonals_and_follows_its_order_of_operations) { symmetric({"hemv", "hemv2"}, 14); }
TEST(ExtendedSbmv, follows_its_order_of_operations) { symmetric({"sbmv", "hbmv"}, 15); }
TEST(ExtendedSpmv, follows_its_order_of_operations) { symmetric({"spmv", "hpmv"}, 16); }

TEST(ExtendedGeSumMv, follows_its_order_of_operations_and_never_reads_y)
{
    Random random(17);
    Rotation next;
    for (const Member& m : members("ge_sum_mv")) {
        const auto factors = scalars(m.type, random);
        for (const i64 prec : m.precisions())
            for (const i64 order : orders(m))
                for (const auto& [rows, columns] : with(shapes, {next.size(), next.size(3)}))
                    for (const auto& [alpha, beta] : factors) {
                        next.next();
                        if (rows == 0) continue;
                        const i64 incx = next(increments), incy = increments[next.run() % 4];
                        const i64 least = order == row_major ? columns : rows;
                        const i64 lda = least + next.run() % 2, ldb = least + next.run() % 3;
                        SCOPED_TRACE(text(
                            m, prec, {{"order", order}, {"m", rows}, {"n", columns}, {"incx", incx}, {"incy", incy}}));
                        const Stored a(m.first, rows, columns, full(order, lda), random);
                        const Stored b(m.first, rows, columns, full(order, ldb), random);
                        const Vector x(m.second, columns, incx, random);
                        Vector y(m.type, rows, incy, random), expected(m.type, rows, incy, random);
                        const Ring ring(m.arithmetic(prec));
                        for (i64 i = 0; i < rows; ++i) {
                            y.data.set(index(i, rows, incy), std::nan(""), std::nan(""));
                            Terms of_a, of_b;
                            for (i64 j = 0; j < columns; ++j)
                                of_a.emplace_back(a(i, j), x[j]), of_b.emplace_back(b(i, j), x[j]);
                            const auto times = [&](const Terms& terms, const Array& by) {
                                const Complex sum = sum_of(ring, terms);
                                return equals(by, 1) ? sum : ring.multiply(sum, by[0]);
                            };
                            Complex result;
                            if (equals(alpha, 0)) result = equals(beta, 0) ? Complex{} : times(of_b, beta);
                            else if (equals(beta, 0)) result = times(of_a, alpha);
                            else
                                result = ring.add_product(ring.multiply(sum_of(ring, of_a), alpha[0]),
                                                          sum_of(ring, of_b), beta[0]);
                            store(ring, expected.data, index(i, rows, incy), result);
                        }
                        Call(m)
                            .order(order)
                            .integer(rows)
                            .integer(columns)
                            .scalar(alpha)
                            .array(a.data)
                            .integer(lda)
                            .array(x.data)
                            .integer(incx)
                            .scalar(beta)
                            .array(b.data)
                            .integer(ldb)
                            .array(y.data)
                            .integer(incy)(prec);
                        ASSERT_TRUE(same(y.data, expected.data));
                    }
    }
}

} // namespace
} // namespace orv::test::extended
