// dot, sum, axpby, waxpby: every member, recomputed in the stated order bit for bit.
#include "tests/xblas/problem.h"

namespace orv::test::extended {
namespace {

// All from 0 to 40 come in turn, and some hundreds.
std::vector<i64> lengths()
{
    static i64 run = 0;
    ++run;
    return {0, 1, 2, 3 + run % 38, run % 16 == 0 ? 200 + run % 101 : 5};
}
constexpr std::pair<i64, i64> strides[] = {{1, 1}, {2, -1}, {-3, 2}};

TEST(ExtendedDot, follows_its_order_of_operations)
{
    Random random(1);
    for (const Member& m : members("dot"))
        for (const i64 prec : m.precisions())
            for (const i64 n : lengths())
                for (const auto& [incx, incy] : strides)
                    for (const i64 how : {conj, no_conj, i64(0)}) {
                        const Vector x(m.first, n, incx, random), y(m.second, n, incy, random);
                        for (const auto& [alpha, beta] : scalars(m.type, random)) {
                            SCOPED_TRACE(text(m, prec, {{"n", n}, {"incx", incx}, {"incy", incy}, {"conj", how}}));
                            Array r(m.type, 1);
                            r.fill(random);
                            Array expected(m.type, 1);
                            expected.restore(r.bits());
                            if (!(equals(beta, 1) && (n == 0 || equals(alpha, 0)))) {
                                const Ring ring(m.arithmetic(prec));
                                Complex sum;
                                for (i64 i = 0; i < n; ++i) {
                                    const Element e = how == conj ? conjugate(x[i]) : x[i];
                                    const Complex p = ring.product(e, y[i]);
                                    sum.re = ring.add(sum.re, p.re);
                                    if (e.is_complex || y[i].is_complex) sum.im = ring.add(sum.im, p.im);
                                }
                                store(ring, expected, 0, ring.add_product(ring.multiply(sum, alpha[0]), r[0], beta[0]));
                            }
                            Call(m)
                                .option(how)
                                .integer(n)
                                .scalar(alpha)
                                .array(x.data)
                                .integer(incx)
                                .scalar(beta)
                                .array(y.data)
                                .integer(incy)
                                .array(r)(prec);
                            ASSERT_TRUE(same(r, expected));
                        }
                    }
}

TEST(ExtendedSum, adds_in_64_bits_or_more_whatever_the_type)
{
    Random random(2);
    for (const Member& m : members("sum"))
        for (const i64 prec : m.precisions())
            for (const i64 n : lengths())
                for (const i64 incx : {1, -2, 3}) {
                    SCOPED_TRACE(text(m, prec, {{"n", n}, {"incx", incx}}));
                    const Vector x(m.type, n, incx, random);
                    Array r(m.type, 1), expected(m.type, 1);
                    r.fill(random);
                    Complex sum;
                    for (i64 i = 0; i < n; ++i)
                        if (prec == extra) sum = {dd_add_d(sum.re, x[i].re), dd_add_d(sum.im, x[i].im)};
                        else sum = {{sum.re.h + x[i].re, 0}, {sum.im.h + x[i].im, 0}};
                    expected.set(0, sum.re.h, sum.im.h);
                    Call(m).integer(n).array(x.data).integer(incx).array(r)(prec);
                    ASSERT_TRUE(same(r, expected));
                }
}

// alpha*x + beta*y, the part of y first; plain imaginary parts take four products one after the other.
Complex combined(const Ring& ring, Element alpha, Element x, Element beta, Element y)
{
    const Complex u = ring.product(y, beta), t = ring.product(x, alpha);
    if (ring.extra() || !x.is_complex) return ring.add(u, t);
    return {ring.add(u.re, t.re),
            ring.add(ring.add(u.im, ring.multiply(x.im, alpha.re, false)), ring.multiply(x.re, alpha.im, false))};
}

TEST(ExtendedAxpby, follows_its_order_of_operations)
{
    Random random(3);
    for (const Member& m : members("axpby"))
        for (const i64 prec : m.precisions())
            for (const i64 n : lengths())
                for (const auto& [incx, incy] : strides)
                    for (const auto& [alpha, beta] : scalars(m.type, random)) {
                        SCOPED_TRACE(text(m, prec, {{"n", n}, {"incx", incx}, {"incy", incy}}));
                        const Vector x(m.first, n, incx, random);
                        Vector y(m.type, n, incy, random), expected(m.type, n, incy, random);
                        expected.data.restore(y.data.bits());
                        const Ring ring(m.arithmetic(prec));
                        for (i64 i = 0; i < n; ++i)
                            if (!(equals(alpha, 0) && equals(beta, 1)))
                                store(ring, expected.data, index(i, n, incy),
                                      combined(ring, alpha[0], x[i], beta[0], y[i]));
                        Call(m).integer(n).scalar(alpha).array(x.data).integer(incx).scalar(beta).array(y.data).integer(
                            incy)(prec);
                        ASSERT_TRUE(same(y.data, expected.data));
                    }
}

TEST(ExtendedWaxpby, follows_its_order_of_operations)
{
    Random random(4);
    for (const Member& m : members("waxpby"))
        for (const i64 prec : m.precisions())
            for (const i64 n : lengths())
                for (const auto& [incx, incy] : strides)
                    for (const i64 incw : {1, -2})
                        for (const auto& [alpha, beta] : scalars(m.type, random)) {
                            SCOPED_TRACE(text(m, prec, {{"n", n}, {"incx", incx}, {"incy", incy}, {"incw", incw}}));
                            const Vector x(m.first, n, incx, random), y(m.second, n, incy, random);
                            Vector w(m.type, n, incw, random), expected(m.type, n, incw, random);
                            const Ring ring(m.arithmetic(prec));
                            for (i64 i = 0; i < n; ++i)
                                store(ring, expected.data, index(i, n, incw),
                                      combined(ring, alpha[0], x[i], beta[0], y[i]));
                            Call(m)
                                .integer(n)
                                .scalar(alpha)
                                .array(x.data)
                                .integer(incx)
                                .scalar(beta)
                                .array(y.data)
                                .integer(incy)
                                .array(w.data)
                                .integer(incw)(prec);
                            ASSERT_TRUE(same(w.data, expected.data));
                        }
}

TEST(ExtendedWaxpby, may_write_onto_an_input)
{
    Random random(5);
    const Member m("BLAS_dwaxpby_x");
    const Array alpha = scalar('d', 3, 0), beta = scalar('d', -0.1, 0);
    for (const bool onto_x : {true, false}) {
        const Vector x('d', 9, 1, random), y('d', 9, 1, random), w('d', 9, 1, random);
        const auto call = [&](const Vector& to) {
            Call(m)
                .integer(9)
                .scalar(alpha)
                .array(x.data)
                .integer(1)
                .scalar(beta)
                .array(y.data)
                .integer(1)
                .array(to.data)
                .integer(1)(extra);
        };
        call(w);
        call(onto_x ? x : y);
        EXPECT_TRUE(same(onto_x ? x.data : y.data, w.data));
    }
}

double ddot(const std::vector<double>& x, const std::vector<double>& y, i64 prec, double alpha, double beta, double r)
{
    using F = void(int, i64, double, const double*, i64, double, const double*, i64, double*, int);
    kernel<F>("xblas", "BLAS_ddot_x")(192, static_cast<i64>(x.size()), alpha, x.data(), 1, beta, y.data(), 1, &r,
                                      static_cast<int>(prec));
    return r;
}

TEST(ExtendedDot, keeps_what_cancels_below_double_rounding)
{
    EXPECT_EQ(ddot({1e16, 1, -1e16}, {1, 1, 1}, extra, 1, 0, 0), 1);
    EXPECT_EQ(ddot({1e16, 1, -1e16}, {1, 1, 1}, double_, 1, 0, 0), 0);
}

TEST(ExtendedDot, scales_r_by_beta_when_there_are_no_elements)
{
    const double nan = std::nan("");
    for (const i64 prec : {single, extra}) {
        EXPECT_EQ(ddot({}, {}, prec, 5, 2, 3), 6);
        EXPECT_EQ(ddot({}, {}, prec, nan, 1, 3), 3);
        EXPECT_EQ(ddot({nan}, {1}, prec, 0, 1, 3), 3);
        EXPECT_TRUE(std::isnan(ddot({nan}, {1}, prec, 0, 0.5, 3)));
        EXPECT_TRUE(std::isnan(ddot({1}, {nan}, prec, 0, 0, 3)));
        EXPECT_TRUE(std::isnan(ddot({1}, {1}, prec, 1, 0, nan)));
    }
}

} // namespace
} // namespace orv::test::extended
