// Extra precision against sums in 113 bits, on data that cancel: what is left of a sum lies 90 bits and more below its
// terms, so that a rounding to 64 bits anywhere on the way shows.
#include "tests/xblas/matrix.h"
#include "tests/xblas/signature.h"

#include <algorithm>

namespace orv::test::extended {
namespace {

using Quad = __float128;
Quad magnitude(Quad a) { return a < 0 ? -a : a; }

struct Exact {
    Quad re = 0, im = 0;
    Exact(Quad re, Quad im) : re(re), im(im) {}
    Exact(Element e = {}) : re(e.re), im(e.im) {}
};
Exact operator+(Exact a, Exact b) { return {a.re + b.re, a.im + b.im}; }
Exact operator-(Exact a) { return {-a.re, -a.im}; }
Exact operator*(Exact a, Exact b)
{
    if (a.im == 0) return {a.re * b.re, a.re * b.im};
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
Exact operator/(Exact a, Exact b)
{
    const Quad square = b.re * b.re + b.im * b.im;
    const Exact p = a * Exact(b.re, -b.im);
    return {p.re / square, p.im / square};
}
Quad magnitude(Exact a) { return magnitude(a.re) + magnitude(a.im); }

// Where an element of a matrix is found, and how it is read there. at < 0: it is 0 and not stored.
struct Where {
    i64 at = -1;
    bool conjugated = false, real = false;
};
struct Operand {
    Array* data = nullptr;
    std::function<Where(i64, i64)> where;

    Element operator()(i64 i, i64 j) const
    {
        const Where w = where(i, j);
        if (w.at < 0) return {0, 0, data->is_complex(), data->is_narrow()};
        Element e = (*data)[w.at];
        if (w.real) e.im = 0;
        return w.conjugated ? conjugate(e) : e;
    }
    bool has(i64 i, i64 j) const { return where(i, j).at >= 0; }
    void set(i64 i, i64 j, Exact e) const
    {
        const Where w = where(i, j);
        data->set(w.at, static_cast<double>(e.re), static_cast<double>(w.conjugated ? -e.im : e.im));
    }
};

// out(p, q) := alpha*sum(a(p, l)*v(l, q)) + the same with a second a or v + beta*out(p, q)
struct Sums {
    i64 rows, terms, columns;
    Operand a, v, out;
    Operand tail, b; // second ones, or none; b is multiplied by beta in place of out
    bool reads_out = true;
    i64 free_from = 0, free_to = 0; // columns of a that cancel what the others leave
    bool symmetric = false;         // a(p, l) and a(l, p) are one

    Exact sum(i64 p, i64 q, Exact alpha, Exact by, Quad* size = nullptr) const
    {
        Exact s;
        const auto add = [&](Exact product) {
            s = s + product;
            if (size) *size += magnitude(product);
        };
        for (i64 l = 0; l < terms; ++l) {
            add(alpha * (Exact(a(p, l)) * v(l, q)));
            if (tail.data) add(alpha * (Exact(a(p, l)) * tail(l, q)));
            if (b.data) add(by * (Exact(b(p, l)) * v(l, q)));
        }
        return s;
    }
};

// Chooses the free columns of a one after the other, then out, so that each takes away what the ones before have left.
// Columns of v are multiples of one another by powers of 2, so what cancels in one cancels in all.
void make_cancel(const Sums& s, Exact alpha, Exact beta)
{
    const auto is_free = [&](i64 l) { return l >= s.free_from && l < s.free_to; };
    const bool both_parts = !s.a.data->is_complex() && s.v.data->is_complex();
    for (i64 l = 0; l < s.terms; ++l)
        for (i64 q = 0; q < s.columns; ++q) {
            const Exact scale(std::ldexp(1.0, static_cast<int>(q)), 0), turn(0, 1);
            if (is_free(l)) s.v.set(l, q, both_parts && l % 2 == 1 ? scale * turn : scale);
            else if (q > 0) s.v.set(l, q, scale * Exact(s.v(l, 0)));
            if (s.tail.data && is_free(l)) s.tail.set(l, q, {});
        }
    for (i64 p = 0; p < s.rows; ++p) {
        if (s.symmetric && is_free(p)) continue;
        for (i64 l = s.free_from; l < s.free_to; ++l)
            if (s.a.has(p, l)) s.a.set(p, l, {});
        Exact rest = s.sum(p, 0, alpha, beta) / alpha;
        for (i64 l = s.free_from; l < s.free_to; ++l)
            if (s.a.has(p, l)) {
                s.a.set(p, l, -(rest / s.v(l, 0)));
                rest = rest + Exact(s.a(p, l)) * s.v(l, 0);
            }
    }
    if (s.reads_out)
        for (i64 p = 0; p < s.rows; ++p)
            for (i64 q = 0; q < s.columns; ++q) s.out.set(p, q, -(s.sum(p, q, alpha, beta) / beta));
}

constexpr double u = 0x1p-53;

// One result: its exact value and the size of all that went into it.
struct Expected {
    Exact value;
    Quad size = 0;
};

// An accurate addition loses 3u^2 of its result, a product with a double no more; operations counts them. The store
// rounds once more.
void expect_near(Element computed, const Expected& e, double operations)
{
    const auto ratio = [&](double part, Quad exact) {
        const Quad lost = e.size * (3 * u * u * operations) + magnitude(exact) * (u + (computed.narrow ? 0x1p-24 : 0));
        return static_cast<double>(magnitude(part - exact) / (lost + 0x1p-140));
    };
    ASSERT_LE(ratio(computed.re, e.value.re), 1);
    ASSERT_LE(ratio(computed.im, e.value.im), 1);
}

// A problem of a family: the arguments of its call by name, and what they mean.
class Problem {
public:
    // terms: how many each sum has.
    Problem(const Member& m, i64 terms, Random& random) : m_(m), random_(random)
    {
        sums.terms = terms;
        number["prec"] = extra;
        number["order"] = order_ = m.for_c ? pick({row_major, column_major}) : column_major;
        number["trans"] = how_ = pick({no_trans, trans, conj_trans});
        number["uplo"] = uplo_ = pick({upper, lower});
        number["diag"] = non_unit;
        incx_ = number["incx"] = pick({1, -1, 2, -3});
        incy_ = number["incy"] = pick({1, -1, 2, -3});
        for (const char* name : {"alpha", "beta"}) // of few bits, so that a product of both is exact
            array(name, m.type, 1)
                .set(0, static_cast<double>(pick({3, 5, 7})) / 4, static_cast<double>(pick({1, 3, -5})) / 8);
        const std::string op = m.op.back() == '2' ? m.op.substr(0, m.op.size() - 1) : m.op;
        if (op == "dot") make_dot();
        else if (op == "gemv" || op == "gbmv" || op == "ge_sum_mv") make_general(op == "gbmv");
        else if (op == "gemm") make_gemm();
        else if (op == "symm" || op == "hemm") make_symm();
        else if (op[0] == 't') make_triangular();
        else make_symmetric();
        const i64 free = min(terms - 1, sums.a.data->is_complex() || !sums.v.data->is_complex() ? 4 : 8);
        const bool first = op[0] == 't' && is_lower_;
        sums.free_from = first ? 0 : terms - max(0, free);
        sums.free_to = sums.free_from + max(0, free);
    }

    void check()
    {
        const Exact alpha(arrays.at("alpha")[0]);
        if (sums.b.data)
            arrays.at("beta").set(0, -0.75 * static_cast<double>(alpha.re), -0.75 * static_cast<double>(alpha.im));
        const Exact beta(arrays.at("beta")[0]);
        make_cancel(sums, alpha, beta);
        std::vector<Expected> expected;
        for (i64 p = 0; p < sums.rows; ++p)
            for (i64 q = 0; q < sums.columns; ++q) {
                Expected e;
                e.value = sums.sum(p, q, alpha, beta, &e.size);
                if (sums.reads_out) {
                    const Exact old = beta * Exact(sums.out(p, q));
                    e.value = e.value + old, e.size += magnitude(old);
                }
                expected.push_back(e);
            }
        if (in_place_) sums.out.data->restore(sums.v.data->bits());
        call();
        for (const Expected& e : expected) {
            ++results;
            cancelled += magnitude(e.value) < e.size * 0x1p-90;
        }
        auto e = expected.begin();
        for (i64 p = 0; p < sums.rows; ++p)
            for (i64 q = 0; q < sums.columns && !::testing::Test::HasFatalFailure(); ++q)
                expect_near(sums.out(p, q), *e++, 2 * static_cast<double>(sums.terms) + 8);
    }

    // The solution of alpha*sums.v by substitution in 113 bits, and what each element may lose: the losses of the ones
    // before it, times the elements of its row, and those of the row's own operations, divided by its diagonal.
    void check_solution()
    {
        const i64 n = sums.terms;
        const Exact alpha(arrays.at("alpha")[0]);
        make_ill_conditioned();
        for (i64 i = 0; i < n; ++i) { // op(T)*x with moderate x, rounded
            Exact b;
            for (i64 j = 0; j < n; ++j) b = b + Exact(sums.a(i, j)) * Exact(1 + static_cast<double>(j % 3) / 8, 0);
            sums.v.set(i, 0, b / alpha);
        }
        std::vector<Exact> x(static_cast<std::size_t>(n));
        std::vector<Quad> lost(x.size());
        for (i64 row = 0; row < n; ++row) {
            const std::size_t i = static_cast<std::size_t>(is_lower_ ? row : n - 1 - row);
            Exact rest = alpha * sums.v(static_cast<i64>(i), 0);
            Quad size = magnitude(rest), before = 0;
            for (std::size_t j = is_lower_ ? 0 : i + 1; j < (is_lower_ ? i : x.size()); ++j) {
                const Exact e = sums.a(static_cast<i64>(i), static_cast<i64>(j)), product = e * x[j];
                rest = rest + -product;
                size += magnitude(product), before += magnitude(e) * lost[j];
            }
            const Exact d = sums.a(static_cast<i64>(i), static_cast<i64>(i));
            x[i] = rest / d;
            lost[i] =
                (before + 3 * u * u * (2 * static_cast<double>(n) + 20) * size) / // a division: a dozen operations
                std::max(magnitude(d.re), magnitude(d.im));
        }
        sums.out.data->restore(sums.v.data->bits());
        call();
        for (i64 i = 0; i < n; ++i) {
            const std::size_t at = static_cast<std::size_t>(i);
            expect_near(sums.out(i, 0), {x[at], lost[at] / (3 * u * u)}, 1);
        }
    }

    std::string text() const
    {
        std::string s = m_.name;
        for (const auto& [name, value] : number) s += " " + name + "=" + std::to_string(value);
        return s + " seed=" + std::to_string(seed());
    }

private:
    void call()
    {
        call_by_name(
            m_, extra, [this](const std::string& name) { return number.at(name); },
            [this](const std::string& name) -> const Array& { return arrays.at(name); });
    }
    i64 pick(std::initializer_list<i64> values)
    {
        return values.begin()[random_.integer(0, static_cast<i64>(values.size()) - 1)];
    }
    Array& array(const std::string& name, char type, i64 n)
    {
        return arrays.emplace(name, Array(type, n)).first->second;
    }

    // A vector of n elements as a column, and a matrix whose place (i, j) is given.
    Operand vector(const std::string& name, char type, i64 n, i64 inc)
    {
        return matrix(name, type, n, 1, [=](i64 i, i64) { return Where{index(i, n, inc)}; });
    }
    Operand matrix(const std::string& name, char type, i64 rows, i64 columns,
                   const std::function<Where(i64, i64)>& where)
    {
        i64 length = 0;
        for (i64 i = 0; i < rows; ++i)
            for (i64 j = 0; j < columns; ++j) length = max(length, where(i, j).at + 1);
        Array& data = array(name, type, length);
        data.fill(random_);
        return {&data, where};
    }
    Operand read_by(i64 how, const std::string& name, char type, i64 rows, i64 columns, const Places& at)
    {
        return matrix(name, type, rows, columns, [=](i64 i, i64 j) {
            return how == no_trans ? Where{at(i, j)} : Where{at(j, i), how == conj_trans};
        });
    }
    Operand half(const std::string& name, i64 n, const Places& at)
    {
        sums.symmetric = true;
        return matrix(name, m_.first, n, n, [=, hermitian = is_hermitian(m_)](i64 i, i64 j) {
            return at(i, j) >= 0 ? Where{at(i, j), false, hermitian && i == j} : Where{at(j, i), hermitian};
        });
    }

    void make_dot()
    {
        const i64 n = number["n"] = sums.terms, how = number["conj"] = pick({conj, no_conj});
        sums.rows = sums.columns = 1;
        sums.a = matrix("x", m_.first, 1, n, [=, this](i64, i64 l) { return Where{index(l, n, incx_), how == conj}; });
        sums.v = vector("y", m_.second, n, incy_);
        sums.out = vector("r", m_.type, 1, 1);
    }
    void make_general(bool band)
    {
        sums.rows = pick({1, 2, 3, 4, 5, 7, 9}), sums.columns = 1;
        if (m_.op == "ge_sum_mv") how_ = no_trans;
        const i64 m = number["m"] = how_ == no_trans ? sums.rows : sums.terms;
        const i64 n = number["n"] = how_ == no_trans ? sums.terms : sums.rows;
        const i64 kl = number["kl"] = m - 1, ku = number["ku"] = n - 1;
        const i64 ld = number["lda"] = number["ldb"] = band ? m + n : max(m, n) + pick({0, 2});
        const Places at = band ? general_band(order_, kl, ku, ld) : full(order_, ld);
        sums.a = read_by(how_, "a", m_.first, sums.rows, sums.terms, at);
        if (m_.op == "ge_sum_mv")
            sums.b = read_by(how_, "b", m_.first, sums.rows, sums.terms, at), sums.reads_out = false;
        make_vectors();
    }
    void make_symmetric()
    {
        const i64 n = sums.rows = number["n"] = sums.terms, k = number["k"] = n - 1;
        const i64 ld = number["lda"] = n + pick({0, 1, 3});
        sums.columns = 1;
        sums.a = half("a", n,
                      m_.op[1] == 'b'   ? band_triangle(order_, uplo_, k, ld)
                      : m_.op[1] == 'p' ? packed(order_, uplo_, n)
                                        : triangle(uplo_, full(order_, ld)));
        make_vectors();
    }
    void make_vectors()
    {
        sums.v = vector("x", m_.second, sums.terms, incx_);
        if (m_.op.back() == '2') sums.tail = vector("tail", m_.second, sums.terms, incx_);
        sums.out = vector("y", m_.type, sums.rows, incy_);
    }
    void make_triangular()
    {
        const i64 n = sums.rows = number["n"] = sums.terms, ld = number["ldt"] = n + pick({0, 1, 3});
        sums.columns = 1, sums.reads_out = false, in_place_ = true;
        is_lower_ = (uplo_ == lower) == (how_ == no_trans);
        const i64 k = number["k"] = min(n - 1, pick({1, 2, 5, 40}));
        sums.a = read_by(how_, "a", m_.first, n, n,
                         m_.op == "tpmv"   ? packed(order_, uplo_, n)
                         : m_.op == "tbsv" ? band_triangle(order_, uplo_, k, ld)
                                           : triangle(uplo_, full(order_, ld)));
        sums.v = vector("before", m_.type, n, incx_);
        sums.out = vector("y", m_.type, n, incx_);
    }
    // A small diagonal beside neighbours of 1 lets what is lost grow from row to row, over all up to 2^40 times, for
    // 32-bit elements 2^16 times.
    void make_ill_conditioned()
    {
        const bool narrow = sums.a.data->is_narrow() || sums.v.data->is_narrow();
        const double rows = static_cast<double>(sums.terms);
        const double diagonal = std::exp2(-std::min(8.0, (narrow ? 16 : 40) / rows));
        const auto part = [&] { return (random_.integer(0, 1) ? 1 : -1) * (1 + random_.value<double>() / 8); };
        for (i64 i = 0; i < sums.terms; ++i)
            for (i64 j = 0; j < sums.terms; ++j) {
                const i64 distance = std::abs(i - j);
                const double size = distance == 0 ? diagonal : distance == 1 ? 1 : 0x1p-5 / rows;
                if (sums.a.has(i, j)) sums.a.set(i, j, {size * part(), size * part() / 2});
            }
    }
    void make_gemm()
    {
        const i64 m = sums.rows = number["m"] = pick({1, 2, 3, 5}), k = number["k"] = sums.terms;
        const i64 n = sums.columns = number["n"] = pick({1, 2, 3, 4, 5, 6}), ta = how_,
                  tb = pick({no_trans, trans, conj_trans});
        number["transa"] = ta, number["transb"] = tb;
        const i64 ld = number["lda"] = number["ldb"] = number["ldc"] = max(max(m, n), k) + pick({0, 1});
        sums.a = read_by(ta, "a", m_.first, m, k, full(order_, ld));
        sums.v = read_by(tb, "b", m_.second, k, n, full(order_, ld));
        sums.out = read_by(no_trans, "y", m_.type, m, n, full(order_, ld));
    }
    // With A on the right everything is seen transposed.
    void make_symm()
    {
        const i64 side = number["side"] = pick({left, right}), n = sums.rows = sums.terms;
        const i64 others = sums.columns = pick({1, 2, 3, 4, 5, 6}), seen = side == left ? no_trans : trans;
        number["m"] = side == left ? n : others, number["n"] = side == left ? others : n;
        const i64 ld = number["lda"] = number["ldb"] = number["ldc"] = max(n, others) + pick({0, 1});
        sums.a = half("a", n, triangle(uplo_, full(order_, ld)));
        if (side == right) sums.a.where = [stored = sums.a.where](i64 i, i64 j) { return stored(j, i); };
        sums.v = read_by(seen, "b", m_.second, n, others, full(order_, ld));
        sums.out = read_by(seen, "y", m_.type, n, others, full(order_, ld));
    }

    Member m_;
    Random& random_;
    i64 order_, how_, uplo_, incx_, incy_;
    bool in_place_ = false, is_lower_ = false;

public:
    std::map<std::string, i64> number;
    std::map<std::string, Array> arrays;
    Sums sums{};
    i64 results = 0, cancelled = 0; // how many there were, and of how many less than 2^-90 was left
};

bool in_extra(const Member& m) { return m.for_c && m.has_prec; }

TEST(ExtendedAccuracy, of_sums_of_products_is_that_of_106_bits_where_they_cancel)
{
    Random random(51);
    i64 size = 0;
    for (const auto& [op, signature] : signatures) {
        if (op == "sum" || op.ends_with("axpby") || op.ends_with("sv")) continue;
        i64 results = 0, cancelled = 0;
        for (const Member& m : members(op)) {
            if (!in_extra(m)) continue;
            for (int run = 0; run < 9; ++run) {
                size = size % 40 + 1;
                Problem problem(m, run > 0 ? size : size % 5 == 0 ? 100 + size : 1, random);
                SCOPED_TRACE(problem.text());
                problem.check();
                if (HasFatalFailure()) return;
                results += problem.results, cancelled += problem.cancelled;
            }
        }
        EXPECT_GT(cancelled, results / 2) << op << ": the data do not cancel";
    }
}

TEST(ExtendedAccuracy, of_solutions_outlasts_triangles_that_lose_half_of_it)
{
    Random random(52);
    i64 size = 0;
    for (const char* op : {"trsv", "tbsv"})
        for (const Member& m : members(op)) {
            if (!in_extra(m)) continue;
            for (int run = 0; run < 40; ++run) {
                size = size % 40 + 1;
                if (op == std::string("tbsv") && size == 1) continue; // only a diagonal: it divides in 64 bits
                Problem problem(m, run > 0 ? size : 150, random);
                SCOPED_TRACE(problem.text());
                problem.check_solution();
                if (HasFatalFailure()) return;
            }
        }
}

// A sum that leaves less than 2^-100 of its terms, and updates of which nothing is left but what y could not hold.
TEST(ExtendedAccuracy, of_vectors_is_that_of_106_bits_where_they_cancel)
{
    Random random(53);
    for (const char* op : {"sum", "axpby", "waxpby"})
        for (const Member& m : members(op)) {
            if (!in_extra(m)) continue;
            for (const i64 n : {1, 2, 3, 4, 5, 8, 17, 40, 300}) {
                SCOPED_TRACE(m.name + " n=" + std::to_string(n) + " seed=" + std::to_string(seed()));
                Array x(m.first, n), y(op == std::string("axpby") ? m.type : m.second, n), w(m.type, n), r(m.type, 1);
                x.fill(random), y.fill(random);
                const Array alpha = scalar(m.type, 1.25, -0.375), beta = scalar(m.type, -0.75, 0.625);
                std::vector<Expected> expected(static_cast<std::size_t>(n));
                Expected total;
                for (i64 i = 0; i < n; ++i) {
                    if (i > 0 && i + 5 > n)
                        x.set(i, static_cast<double>(-total.value.re), static_cast<double>(-total.value.im));
                    total.value = total.value + x[i], total.size += magnitude(Exact(x[i]));
                    const Exact t = Exact(alpha[0]) * x[i], rest = -(t / beta[0]);
                    y.set(i, static_cast<double>(rest.re), static_cast<double>(rest.im));
                    const Exact v = Exact(beta[0]) * y[i];
                    expected[static_cast<std::size_t>(i)] = {t + v, magnitude(t) + magnitude(v)};
                }
                call_by_name(
                    m, extra, [&](const std::string& name) { return name == "n" ? n : 1; },
                    [&](const std::string& name) -> const Array& {
                        const std::map<std::string, const Array*> arrays{{"alpha", &alpha}, {"beta", &beta}, {"x", &x},
                                                                         {"y", &y},         {"w", &w},       {"r", &r}};
                        return *arrays.at(name);
                    });
                if (m.op == "sum") expect_near(r[0], total, static_cast<double>(n));
                else
                    for (i64 i = 0; i < n; ++i)
                        expect_near((m.op == "axpby" ? y : w)[i], expected[static_cast<std::size_t>(i)], 4);
                if (HasFatalFailure()) return;
            }
        }
}

} // namespace
} // namespace orv::test::extended
