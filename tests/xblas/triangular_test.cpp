// Triangular products and solves: every member, recomputed in the stated order bit for bit, and residuals of the solves
// by complex diagonals.
#include "tests/support/probe.h"
#include "tests/xblas/matrix.h"

#include <algorithm>
#include <complex>

namespace orv::test::extended {
namespace {

constexpr i64 increments[] = {1, -1, 2, -3, 1};
const std::vector<i64> sizes{1, 2, 3, 6, 9, 14, 40};

struct Options {
    i64 order, uplo, how, diag;
};
std::vector<Options> all_options(const Member& m, std::initializer_list<i64> transposes)
{
    std::vector<Options> all;
    for (const i64 order : orders(m))
        for (const i64 uplo : {upper, lower})
            for (const i64 how : transposes)
                for (const i64 diag : {non_unit, unit}) all.push_back({order, uplo, how, diag});
    return all;
}
bool transposes(i64 how) { return how == trans || how == conj_trans; }
bool conjugates(i64 how) { return how == conj_trans || how == conj; }
bool is_upper(const Options& o) { return (o.uplo == upper) != transposes(o.how); }

// Element (i, j) of op(T); the unit diagonal is not stored.
Element element(const Stored& t, const Options& o, i64 i, i64 j)
{
    const Element e = transposes(o.how) ? t(j, i) : t(i, j);
    return conjugates(o.how) ? conjugate(e) : e;
}
void spoil_unit_diagonal(Stored& t, const Options& o)
{
    for (i64 i = 0; i < t.rows; ++i)
        if (o.diag == unit) t.data.set(t.at(i, i), std::nan(""), std::nan(""));
}

std::string text(const Member& m, i64 prec, const Options& o, i64 n, i64 k, i64 incx)
{
    std::map<std::string, i64> values{{"order", o.order}, {"uplo", o.uplo}, {"trans", o.how},
                                      {"diag", o.diag},   {"n", n},         {"incx", incx}};
    if (m.op == "tbsv") values["k"] = k;
    return repeat(m, prec, values);
}

// x := alpha*op(T)*x; columns(i): the columns of row i in the order of its sum.
void expect_product(const Member& m, i64 prec, const Options& o, const Stored& t, const Array& alpha, Vector& x,
                    const std::function<std::vector<i64>(i64)>& columns)
{
    const Ring ring(m.arithmetic(prec));
    const Array before = [&] {
        Array a(m.type, x.data.length());
        a.restore(x.data.bits());
        return a;
    }();
    const auto old = [&](i64 i) { return before[index(i, x.n, x.inc)]; };
    for (i64 i = 0; i < x.n; ++i) {
        const i64 at = index(i, x.n, x.inc);
        if (m.op == "trmv" && equals(alpha, 0)) {
            x.data.set(at, 0, 0);
            continue;
        }
        Complex sum;
        for (const i64 j : columns(i)) {
            const bool one = i == j && o.diag == unit;
            const Complex term =
                one ? Complex{{old(j).re, 0}, {old(j).im, 0}} : ring.product(element(t, o, i, j), old(j));
            sum = {ring.add(sum.re, term.re), m.is_complex() ? ring.add(sum.im, term.im) : Pair{}};
        }
        if (m.op == "tpmv" || !equals(alpha, 1)) sum = ring.multiply(sum, alpha[0]);
        store(ring, x.data, at, sum);
    }
}

TEST(ExtendedTrmv, follows_its_order_of_operations)
{
    Random random(21);
    Rotation next;
    for (const Member& m : members("trmv")) {
        const auto factors = scalars(m.type, random);
        for (const i64 prec : m.precisions())
            for (const Options& o : all_options(m, {no_trans, trans, conj_trans}))
                for (const i64 n : with(sizes, next.size())) {
                    next.next();
                    const i64 incx = next(increments), ld = n + next.run() % 3;
                    const Array& alpha = factors[static_cast<std::size_t>(next.run()) % factors.size()].first;
                    SCOPED_TRACE(text(m, prec, o, n, 0, incx));
                    Stored t(m.first, n, n, triangle(o.uplo, full(o.order, ld)), random);
                    spoil_unit_diagonal(t, o);
                    Vector x(m.type, n, incx, random), expected(m.type, n, incx, random);
                    expected.data.restore(x.data.bits());
                    expect_product(m, prec, o, t, alpha, expected, [&](i64 i) { // from the diagonal outwards
                        std::vector<i64> columns;
                        for (i64 j = i; j >= 0 && j < n; j += is_upper(o) ? 1 : -1) columns.push_back(j);
                        return columns;
                    });
                    Call(m)
                        .order(o.order)
                        .option(o.uplo)
                        .option(o.how)
                        .option(o.diag)
                        .integer(n)
                        .scalar(alpha)
                        .array(t.data)
                        .integer(ld)
                        .array(x.data)
                        .integer(incx)(prec);
                    ASSERT_TRUE(same(x.data, expected.data));
                }
    }
}

TEST(ExtendedTpmv, follows_its_order_of_operations)
{
    Random random(22);
    Rotation next;
    for (const Member& m : members("tpmv")) {
        const auto factors = scalars(m.type, random);
        for (const i64 prec : m.precisions())
            for (const Options& o : all_options(m, {no_trans, trans, conj_trans}))
                for (const i64 n : with(sizes, next.size())) {
                    next.next();
                    const i64 incx = next(increments);
                    const Array& alpha = factors[static_cast<std::size_t>(next.run()) % factors.size()].first;
                    SCOPED_TRACE(text(m, prec, o, n, 0, incx));
                    Stored t(m.first, n, n, packed(o.order, o.uplo, n), random);
                    spoil_unit_diagonal(t, o);
                    Vector x(m.type, n, incx, random), expected(m.type, n, incx, random);
                    expected.data.restore(x.data.bits());
                    expect_product(m, prec, o, t, alpha, expected, [&](i64 i) {
                        std::vector<i64> columns;
                        for (i64 j = is_upper(o) ? i : 0; j <= (is_upper(o) ? n - 1 : i); ++j) columns.push_back(j);
                        const bool columns_stored = (o.order == column_major) != transposes(o.how);
                        if (is_upper(o) && columns_stored) std::reverse(columns.begin(), columns.end());
                        return columns;
                    });
                    Call(m)
                        .order(o.order)
                        .option(o.uplo)
                        .option(o.how)
                        .option(o.diag)
                        .integer(n)
                        .scalar(alpha)
                        .array(t.data)
                        .array(x.data)
                        .integer(incx)(prec);
                    ASSERT_TRUE(same(x.data, expected.data));
                }
    }
}

// Diagonals near 1 and small elements beside them keep solutions of any size moderate.
void make_solvable(Stored& t)
{
    for (i64 i = 0; i < t.rows; ++i)
        for (i64 j = 0; j < t.columns; ++j)
            if (i != j && t.has(i, j)) t.data.set(t.at(i, j), t(i, j).re / 16, t(i, j).im / 16);
            else if (i == j) t.data.set(t.at(i, j), 1 + (t(i, j).re > 0 ? 0.3 : 0.7), t(i, j).im > 0 ? 0.6 : -2.9);
}

// Whether the orders fix every bit: not how a complex number is divided by a complex one.
bool division_is_told(const Member& m, const Options& o)
{
    return o.diag == unit || !(m.first == 'c' || m.first == 'z');
}

Pair divided(const Ring& ring, Pair a, double d)
{
    return ring.extra() ? dd_div_d(a, d) : Pair{ring.rounded(a.h / d), 0};
}

// x := alpha*op(T)^-1*x, bit for bit where the division is told. columns(i): what row i subtracts, in order.
void expect_solution(const Member& m, Arithmetic arithmetic, const Options& o, const Stored& t, const Array& alpha,
                     Vector& x, const std::function<std::vector<i64>(i64)>& columns)
{
    const Ring ring(arithmetic);
    std::vector<Complex> solved(static_cast<std::size_t>(x.n));
    for (i64 row = 0; row < x.n; ++row) {
        const i64 i = is_upper(o) ? x.n - 1 - row : row;
        Complex value = ring.product(x[i], alpha[0]);
        for (const i64 j : columns(i))
            value = ring.subtract(value, ring.multiply(solved[static_cast<std::size_t>(j)], element(t, o, i, j)));
        if (o.diag == non_unit) {
            const double d = element(t, o, i, i).re;
            value = {divided(ring, value.re, d), m.is_complex() ? divided(ring, value.im, d) : Pair{}};
        }
        solved[static_cast<std::size_t>(i)] = value;
        x.data.set(index(i, x.n, x.inc), value.re.h, value.im.h);
    }
}

using Quad = __float128;
Quad magnitude(Quad a) { return a < 0 ? -a : a; }

// The residual alpha*b - op(T)*x against the terms that went into it, in roundings of the arithmetic and of x.
void expect_small_residual(const Member& m, Arithmetic arithmetic, const Options& o, const Stored& t,
                           const Array& alpha, const Vector& b, const Vector& x, i64 k)
{
    const double result = m.is_narrow() ? std::ldexp(1.0, -24) : std::ldexp(1.0, -53);
    const double step = arithmetic == Arithmetic::extra    ? std::ldexp(1.0, -100)
                        : arithmetic == Arithmetic::single ? std::ldexp(1.0, -24)
                                                           : std::ldexp(1.0, -53);
    for (i64 i = 0; i < x.n; ++i) {
        const Element c = alpha[0], r = b[i];
        Quad re = Quad(c.re) * r.re - Quad(c.im) * r.im, im = Quad(c.re) * r.im + Quad(c.im) * r.re;
        Quad size = (magnitude(c.re) + magnitude(c.im)) * (magnitude(r.re) + magnitude(r.im));
        for (i64 j = max(0, i - k); j <= min(x.n - 1, i + k); ++j) {
            if (is_upper(o) ? j < i : j > i) continue;
            const Element e = i == j && o.diag == unit ? Element{1, 0, false, false} : element(t, o, i, j), v = x[j];
            re -= Quad(e.re) * v.re - Quad(e.im) * v.im;
            im -= Quad(e.re) * v.im + Quad(e.im) * v.re;
            size += (magnitude(e.re) + magnitude(e.im)) * (magnitude(v.re) + magnitude(v.im));
        }
        // Each x(j) is rounded once when stored; every row does 4 operations a term and a dozen for the division.
        const Quad allowed = size * (result + (4.0 * static_cast<double>(min(x.n, k + 1)) + 16) * step);
        ASSERT_LE(static_cast<double>(magnitude(re)), static_cast<double>(allowed)) << "row " << i;
        ASSERT_LE(static_cast<double>(magnitude(im)), static_cast<double>(allowed)) << "row " << i;
    }
}

TEST(ExtendedTrsv, follows_its_order_of_operations)
{
    Random random(23);
    Rotation next;
    for (const Member& m : members("trsv")) {
        const auto factors = scalars(m.type, random);
        for (const i64 prec : m.precisions())
            for (const Options& o : all_options(m, {no_trans, trans, conj_trans}))
                for (const i64 n : with(sizes, next.size())) {
                    next.next();
                    const i64 incx = next(increments), ld = n + next.run() % 3;
                    const Array& alpha = factors[static_cast<std::size_t>(next.run()) % factors.size()].first;
                    SCOPED_TRACE(text(m, prec, o, n, 0, incx));
                    Stored t(m.first, n, n, triangle(o.uplo, full(o.order, ld)), random);
                    make_solvable(t);
                    spoil_unit_diagonal(t, o);
                    Vector x(m.type, n, incx, random), b(m.type, n, incx, random), expected(m.type, n, incx, random);
                    b.data.restore(x.data.bits());
                    expected.data.restore(x.data.bits());
                    Call(m)
                        .order(o.order)
                        .option(o.uplo)
                        .option(o.how)
                        .option(o.diag)
                        .integer(n)
                        .scalar(alpha)
                        .array(t.data)
                        .integer(ld)
                        .array(x.data)
                        .integer(incx)(prec);
                    if (equals(alpha, 0)) {
                        for (i64 i = 0; i < n; ++i) expected.data.set(index(i, n, incx), 0, 0);
                        ASSERT_TRUE(same(x.data, expected.data));
                    } else if (division_is_told(m, o)) {
                        expect_solution(m, m.arithmetic(prec), o, t, alpha, expected, [&](i64 i) {
                            std::vector<i64> columns;
                            for (i64 j = is_upper(o) ? i + 1 : 0; j < (is_upper(o) ? n : i); ++j) columns.push_back(j);
                            return columns;
                        });
                        ASSERT_TRUE(same(x.data, expected.data));
                    } else expect_small_residual(m, m.arithmetic(prec), o, t, alpha, b, x, n);
                    if (HasFatalFailure()) return;
                }
    }
}

TEST(ExtendedTbsv, follows_its_order_of_operations)
{
    Random random(24);
    Rotation next;
    const std::vector<std::pair<i64, i64>> bands{{1, 0}, {2, 1},  {6, 0},  {6, 1},  {6, 2},
                                                 {7, 6}, {13, 4}, {40, 3}, {40, 39}};
    for (const Member& m : members("tbsv")) {
        const auto factors = scalars(m.type, random);
        for (const i64 prec : m.precisions())
            for (const Options& o : all_options(m, {no_trans, trans, conj_trans, conj}))
                for (const auto& [n, k] : with(bands, {next.size(), next.size() / 3})) {
                    next.next();
                    const i64 incx = next(increments), ld = k + 1 + next.run() % 3;
                    const Array& alpha = factors[static_cast<std::size_t>(next.run()) % factors.size()].first;
                    SCOPED_TRACE(text(m, prec, o, n, k, incx));
                    Stored t(m.first, n, n, band_triangle(o.order, o.uplo, k, ld), random);
                    make_solvable(t);
                    spoil_unit_diagonal(t, o);
                    Vector x(m.type, n, incx, random), b(m.type, n, incx, random), expected(m.type, n, incx, random);
                    b.data.restore(x.data.bits());
                    expected.data.restore(x.data.bits());
                    Call(m)
                        .order(o.order)
                        .option(o.uplo)
                        .option(o.how)
                        .option(o.diag)
                        .integer(n)
                        .integer(k)
                        .scalar(alpha)
                        .array(t.data)
                        .integer(ld)
                        .array(x.data)
                        .integer(incx)(prec);
                    const Arithmetic arithmetic = m.arithmetic(k == 0 && m.has_prec ? double_ : prec);
                    if (equals(alpha, 0)) {
                        for (i64 i = 0; i < n; ++i) expected.data.set(index(i, n, incx), 0, 0);
                        ASSERT_TRUE(same(x.data, expected.data));
                    } else if (k == 0 && o.diag == unit && equals(alpha, 1)) {
                        ASSERT_TRUE(same(x.data, expected.data));
                    } else if (division_is_told(m, o)) {
                        expect_solution(m, arithmetic, o, t, alpha, expected, [&, k = k, n = n](i64 i) {
                            std::vector<i64> columns; // the oldest solution first
                            for (i64 d = k; d > 0; --d) {
                                const i64 j = is_upper(o) ? i + d : i - d;
                                if (j >= 0 && j < n) columns.push_back(j);
                            }
                            return columns;
                        });
                        ASSERT_TRUE(same(x.data, expected.data));
                    } else expect_small_residual(m, arithmetic, o, t, alpha, b, x, k);
                    if (HasFatalFailure()) return;
                }
    }
}

// How much memory a solve takes: blocks, and numbers in each.
std::pair<i64, i64> memory(const Member& m, i64 prec, i64 count)
{
    const i64 parts = m.is_complex() ? 2 : 1;
    switch (m.arithmetic(prec)) {
    case Arithmetic::extra:
        return {2, count * parts};
    case Arithmetic::double_:
        return {m.is_narrow() ? 1 : 0, count * parts};
    default:
        return {0, 0};
    }
}

TEST(ExtendedSolves, leave_x_alone_and_tell_when_there_is_no_memory)
{
    Random random(25);
    for (const char* op : {"trsv", "tbsv"})
        for (const Member& m : members(op))
            for (const i64 prec : m.precisions())
                for (const i64 k : {0, 3}) {
                    if (op == std::string("trsv") && k == 0) continue;
                    constexpr i64 n = 7;
                    SCOPED_TRACE(text(m, prec, {{"k", k}}));
                    const bool band = op == std::string("tbsv");
                    Stored t(m.first, n, n,
                             band ? band_triangle(column_major, upper, k, k + 1)
                                  : triangle(upper, full(column_major, n)),
                             random);
                    make_solvable(t);
                    const Array alpha = scalar(m.type, 2, 0);
                    const Vector x(m.type, n, 1, random);
                    const std::string untouched = x.data.bits();
                    const auto solve = [&] {
                        Call call(m);
                        call.order(column_major).option(upper).option(no_trans).option(non_unit).integer(n);
                        if (band) call.integer(k);
                        call.scalar(alpha).array(t.data).integer(band ? k + 1 : n).array(x.data).integer(1)(prec);
                    };
                    const auto [blocks, numbers] =
                        band && k == 0 ? std::pair<i64, i64>{} : memory(m, prec, band ? k : n);
                    for (i64 failing = 0; failing < blocks; ++failing) {
                        ProbeScope service;
                        service->fail_at = failing;
                        reports().clear();
                        solve();
                        EXPECT_EQ(x.data.bits(), untouched);
                        EXPECT_EQ(reports(), (std::vector<Report>{{"blas_malloc", 0, 0, "malloc failed.\n"}}));
                        EXPECT_EQ(service->allocations, blocks);
                        EXPECT_EQ(service->live, blocks - 1) << "the other block is lost, as documented";
                        free_what_is_left();
                    }
                    ProbeScope service;
                    reports().clear();
                    solve();
                    EXPECT_TRUE(reports().empty());
                    EXPECT_EQ(service->allocations, blocks);
                    EXPECT_EQ(service->live, 0);
                    const std::vector<i64> bytes(static_cast<std::size_t>(blocks), 8 * numbers);
                    EXPECT_EQ(service->asked_bytes, bytes);
                    EXPECT_EQ(service->asked_alignments, std::vector<i64>(static_cast<std::size_t>(blocks), 128));
                }
}

TEST(ExtendedTrsv, takes_no_memory_to_clear_x)
{
    Random random(26);
    const Member m("BLAS_dtrsv_x");
    const Vector x('d', 5, 1, random);
    ProbeScope service;
    const Array t('d', 25), alpha = scalar('d', 0, 0);
    Call(m)
        .order(row_major)
        .option(lower)
        .option(trans)
        .option(non_unit)
        .integer(5)
        .scalar(alpha)
        .array(t)
        .integer(5)
        .array(x.data)
        .integer(1)(extra);
    for (i64 i = 0; i < 5; ++i) EXPECT_EQ(x[i].re, 0);
    EXPECT_EQ(service->allocations, 0);
}

TEST(ExtendedSolves, divide_by_a_zero_diagonal_as_it_comes)
{
    for (const char* name : {"BLAS_dtrsv_x", "BLAS_ztrsv_x"})
        for (const i64 prec : {double_, extra}) {
            const Member m{name};
            Array t(m.first, 1), x = scalar(m.type, 1, 1), alpha = scalar(m.type, 1, 0);
            t.set(0, 0, 0);
            reports().clear();
            Call(m)
                .order(column_major)
                .option(upper)
                .option(no_trans)
                .option(non_unit)
                .integer(1)
                .scalar(alpha)
                .array(t)
                .integer(1)
                .array(x)
                .integer(1)(prec);
            EXPECT_FALSE(std::isfinite(x[0].re));
            EXPECT_TRUE(reports().empty());
        }
}

TEST(Line, of_extended_precision_repeats_it)
{
    const auto expect = [](const char* op, const auto& text_of) {
        for (const Member& m : members(op)) {
            if (!m.for_c) continue;
            EXPECT_TRUE(repeats(text_of(m, m.precisions().back())));
        }
    };
    expect("trmv", [](const Member& m, i64 prec) {
        return text(m, prec, {row_major, upper, conj_trans, unit}, 7, 0, -1);
    });
    expect("tbsv", [](const Member& m, i64 prec) {
        return text(m, prec, {column_major, lower, trans, non_unit}, 7, 2, 1);
    });
    expect("dot", [](const Member& m, i64 prec) { return text(m, prec, {{"n", 192}, {"incx", 2}, {"conj", conj}}); });
    expect("sum", [](const Member& m, i64 prec) { return text(m, prec, {{"n", 112}}); });
    expect("hemm", [](const Member& m, i64 prec) {
        return text(m, prec, {{"order", row_major}, {"side", right}, {"uplo", lower}, {"m", 5}, {"n", 3}});
    });
}

} // namespace
} // namespace orv::test::extended
