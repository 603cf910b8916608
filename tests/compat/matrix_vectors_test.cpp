// Level 2 through every interface, by columns and by rows, against naive loops over the whole matrix.
#include "tests/compat/errors.h"
#include "tests/compat/expect.h"

#include <cstring>

using namespace orv;
using namespace orv::test;

namespace {

// An option as a letter and as an enumerator.
struct Option {
    char letter;
    int value;
};
Option transposition(char c) { return {c, c == 'N' ? 111 : c == 'T' ? 112 : 113}; }
Option triangle(char c) { return {c, c == 'U' ? 121 : 122}; }
Option diagonal(char c) { return {c, c == 'N' ? 131 : 132}; }

template <class A> A as_letter(A a) { return a; }
char as_letter(Option o) { return o.letter; }
template <class A> A as_value(A a) { return a; }
int as_value(Option o) { return o.value; }

// One way to call: an interface and how it has matrices stored.
struct Way {
    const Interface& via;
    bool by_rows;

    template <class... A> void operator()(const std::string& routine, A... a) const
    {
        if (via.style == Style::cblas) call<void>(via, routine, by_rows ? 101 : 102, as_value(a)...);
        else call<void>(via, routine, as_letter(a)...);
    }
    std::string text(const std::string& routine) const
    {
        return via.symbol(routine) + (by_rows ? " rows" : " columns");
    }
};

template <class F> void each_way(F f)
{
    for (const Interface& via : interfaces)
        for (const bool by_rows : {false, true}) {
            if (by_rows && via.style != Style::cblas) continue;
            f(Way{via, by_rows});
            if (testing::Test::HasFailure()) return;
        }
    EXPECT_TRUE(take_reports().empty());
}

enum class Storage { full, band, packed };
enum class Kind { general, symmetric, triangular, unit_triangular };

// A matrix as it is stored; elements that are not to be read are NaN.
template <class T> struct Stored {
    Storage storage;
    Kind kind;
    char part; // G all, U, L
    bool by_rows;
    i64 m, n, below, above, ld;
    Guarded<T> a;

    Stored(Storage s, Kind k, char p, bool rows, i64 height, i64 width, i64 kl, i64 ku, Random& random)
        : storage(s), kind(k), part(p), by_rows(rows), m(height), n(width), below(kl), above(ku),
          ld((s == Storage::band ? kl + ku + 1
              : rows             ? n
                                 : m) +
             2),
          a(size())
    {
        for (i64 i = 0; i < m; ++i)
            for (i64 j = 0; j < n; ++j)
                if (holds(i, j)) {
                    T& element = a[index(i, j)];
                    element = random.value<T>();
                    // Solutions of triangular systems stay of moderate size.
                    if (kind >= Kind::triangular && i == j) element += orv::element<T>::make(2);
                }
    }
    std::size_t size() const
    {
        if (storage == Storage::packed) return static_cast<std::size_t>(n * (n + 1) / 2);
        const i64 lines = by_rows ? m : n, last = storage == Storage::band ? below + above + 1 : by_rows ? n : m;
        return static_cast<std::size_t>(ld * (lines - 1) + last);
    }
    bool holds(i64 i, i64 j) const
    {
        if (kind == Kind::unit_triangular && i == j) return false;
        if ((part == 'U' && i > j) || (part == 'L' && i < j)) return false;
        return storage != Storage::band || (i - j <= below && j - i <= above);
    }
    std::size_t index(i64 i, i64 j) const
    {
        i64 at;
        if (storage == Storage::full) at = by_rows ? i * ld + j : i + j * ld;
        else if (storage == Storage::band) at = by_rows ? i * ld + below + j - i : above + i - j + j * ld;
        else {
            const i64 line = by_rows ? i : j, in_line = by_rows ? j : i;
            at = (part == 'U') != by_rows ? line * (line + 1) / 2 + in_line : line * (2 * n - line - 1) / 2 + in_line;
        }
        return static_cast<std::size_t>(at);
    }
    // The element of the whole matrix.
    wide operator()(i64 i, i64 j) const
    {
        if (kind == Kind::unit_triangular && i == j) return {1, 0};
        if (holds(i, j)) {
            const wide stored = widen(a[index(i, j)]);
            return kind == Kind::symmetric && i == j ? wide{stored.re, 0} : stored;
        }
        if (kind == Kind::symmetric && holds(j, i)) return conj(widen(a[index(j, i)]));
        return {0, 0};
    }
    wide operator()(char op, i64 i, i64 j) const
    {
        return op == 'N' ? (*this)(i, j) : op == 'T' ? (*this)(j, i) : conj((*this)(j, i));
    }
    T* data() const { return a.data(); }
    Int step() const { return {ld}; }
};

template <class T> std::string name(const std::string& rest) { return letter<T> + rest; }
// symv is the symmetric one of the reals and the Hermitian one of the complex numbers.
template <class T> std::string symmetric(const std::string& rest)
{
    if (rest[0] == 'p' || rest[0] == 'b') return name<T>((is_complex<T> ? "h" : "s") + rest);
    return name<T>((is_complex<T> ? "he" : "sy") + rest);
}

template <class T> T scalar(double re, double im)
{
    if constexpr (is_complex<T>) return {static_cast<real_t<T>>(re), static_cast<real_t<T>>(im)};
    else return static_cast<T>(re);
}

// y := alpha*op(A)*x + beta*y, as it should be.
template <class T, class Element>
After<T> product(const Vector<T>& y, const Vector<T>& x, T alpha, T beta, Element element)
{
    After<T> after(y);
    for (i64 i = 0; i < y.n; ++i) {
        Expected sum;
        if (beta != zero<T>) sum.add(widen(beta) * widen(y[i]), 3);
        for (i64 j = 0; j < x.n; ++j)
            if (const wide a = element(i, j); size(a) != 0) sum.add(widen(alpha) * a * widen(x[j]), 3);
        sum.roundings += 8;
        sum.magnitude *= 2; // the parts of alpha*x carry the sizes of both parts of each
        after[i] = sum;
    }
    return after;
}

constexpr i64 strides[][2] = {{1, 1}, {2, -3}, {-1, 2}};

template <class T> void general(const Way& way, Storage storage, i64 m, i64 n, i64 kl, i64 ku)
{
    const bool band = storage == Storage::band;
    const std::string routine = name<T>(band ? "gbmv" : "gemv");
    Random random(static_cast<std::uint64_t>(m * n));
    for (const char op : {'N', 'T', 'C'})
        for (const auto& [incx, incy] : strides)
            for (const T beta : {zero<T>, scalar<T>(-0.5, 0.25)}) {
                SCOPED_TRACE(way.text(routine) + " " + op + " m=" + std::to_string(m) + " n=" + std::to_string(n) +
                             " kl=" + std::to_string(kl) + " ku=" + std::to_string(ku) +
                             " incx=" + std::to_string(incx) + " incy=" + std::to_string(incy));
                const Stored<T> a(storage, Kind::general, 'G', way.by_rows, m, n, kl, ku, random);
                const Vector<T> x(op == 'N' ? n : m, incx, random), y(op == 'N' ? m : n, incy, random);
                const T alpha = scalar<T>(0.75, -0.5);
                if (beta == zero<T>) y[0] = scalar<T>(NAN, NAN);
                const auto after = product(y, x, alpha, beta, [&](i64 i, i64 j) { return a(op, i, j); });
                if (band)
                    way(routine, transposition(op), Int{m}, Int{n}, Int{kl}, Int{ku}, alpha, a.data(), a.step(),
                        x.data(), x.step(), beta, y.data(), y.step());
                else
                    way(routine, transposition(op), Int{m}, Int{n}, alpha, a.data(), a.step(), x.data(), x.step(), beta,
                        y.data(), y.step());
                after.check();
                if (testing::Test::HasFailure()) return;
            }
}

template <class T> void symmetric_product(const Way& way, Storage storage, i64 n, i64 k)
{
    const std::string routine = symmetric<T>(storage == Storage::full     ? "mv"
                                             : storage == Storage::packed ? "pmv"
                                                                          : "bmv");
    Random random(static_cast<std::uint64_t>(n));
    for (const char part : {'U', 'L'})
        for (const auto& [incx, incy] : strides)
            for (const T beta : {zero<T>, scalar<T>(-0.5, 0.25)}) {
                SCOPED_TRACE(way.text(routine) + " " + part + " n=" + std::to_string(n) + " k=" + std::to_string(k) +
                             " incx=" + std::to_string(incx) + " incy=" + std::to_string(incy));
                const Stored<T> a(storage, Kind::symmetric, part, way.by_rows, n, n, part == 'L' ? k : 0,
                                  part == 'U' ? k : 0, random);
                const Vector<T> x(n, incx, random), y(n, incy, random);
                const T alpha = scalar<T>(0.75, -0.5);
                if (beta == zero<T>) y[0] = scalar<T>(NAN, NAN);
                const auto after = product(y, x, alpha, beta, [&](i64 i, i64 j) { return a(i, j); });
                if (storage == Storage::full)
                    way(routine, triangle(part), Int{n}, alpha, a.data(), a.step(), x.data(), x.step(), beta, y.data(),
                        y.step());
                else if (storage == Storage::packed)
                    way(routine, triangle(part), Int{n}, alpha, a.data(), x.data(), x.step(), beta, y.data(), y.step());
                else
                    way(routine, triangle(part), Int{n}, Int{k}, alpha, a.data(), a.step(), x.data(), x.step(), beta,
                        y.data(), y.step());
                after.check();
                if (testing::Test::HasFailure()) return;
            }
}

// What A should be; where nothing is said it keeps its bits.
template <class T> struct Update {
    const Stored<T>& a;
    std::vector<T> before;
    std::vector<Expected> expected;

    explicit Update(const Stored<T>& matrix) : a(matrix), before(a.a.begin(), a.a.end()), expected(before.size()) {}
    Expected& operator()(i64 i, i64 j) { return expected[a.index(i, j)] = Expected().add(a(i, j), 2); }
    void check() const
    {
        for (std::size_t i = 0; i < before.size(); ++i) {
            if (expected[i].roundings > 0) expect_near(a.a[i], expected[i]);
            else EXPECT_EQ(std::memcmp(&a.a[i], &before[i], sizeof(T)), 0);
        }
    }
};

template <class T> void rank_one(const Way& way, const std::string& routine, i64 m, i64 n)
{
    Random random(static_cast<std::uint64_t>(m * n));
    for (const auto& [incx, incy] : strides) {
        SCOPED_TRACE(way.text(routine) + " m=" + std::to_string(m) + " n=" + std::to_string(n) +
                     " incx=" + std::to_string(incx) + " incy=" + std::to_string(incy));
        const Stored<T> a(Storage::full, Kind::general, 'G', way.by_rows, m, n, 0, 0, random);
        const Vector<T> x(m, incx, random), y(n, incy, random);
        const T alpha = scalar<T>(-1.25, 0.5);
        Update<T> update(a);
        for (i64 i = 0; i < m; ++i)
            for (i64 j = 0; j < n; ++j)
                update(i, j)
                    .add(widen(alpha) * widen(x[i]) * conjugate_if(routine.back() == 'c', y[j]), 10)
                    .magnitude *= 2;
        way(routine, Int{m}, Int{n}, alpha, x.data(), x.step(), y.data(), y.step(), a.data(), a.step());
        update.check();
        if (testing::Test::HasFailure()) return;
    }
}

template <class T> void symmetric_update(const Way& way, Storage storage, int vectors, i64 n)
{
    const bool full = storage == Storage::full;
    const std::string routine = symmetric<T>(std::string(full ? "r" : "pr") + (vectors == 2 ? "2" : ""));
    Random random(static_cast<std::uint64_t>(n));
    for (const char part : {'U', 'L'})
        for (const auto& [incx, incy] : strides) {
            SCOPED_TRACE(way.text(routine) + " " + part + " n=" + std::to_string(n) + " incx=" + std::to_string(incx) +
                         " incy=" + std::to_string(incy));
            const Stored<T> a(storage, Kind::symmetric, part, way.by_rows, n, n, 0, 0, random);
            const Vector<T> x(n, incx, random), y(n, incy, random);
            if (n > 3) x[2] = y[2] = zero<T>;
            const T alpha = scalar<T>(-1.25, vectors == 2 ? 0.5 : 0);
            real_t<T> real_alpha;
            if constexpr (is_complex<T>) real_alpha = alpha.re;
            else real_alpha = alpha;
            Update<T> update(a);
            for (i64 i = 0; i < n; ++i)
                for (i64 j = 0; j < n; ++j) {
                    if (!a.holds(i, j)) continue;
                    const wide xy = widen(alpha) * widen(x[i]) * conj(widen(vectors == 2 ? y[j] : x[j]));
                    const wide yx = conj(widen(alpha)) * widen(y[i]) * conj(widen(x[j]));
                    Expected& element = update(i, j).add(xy, 10);
                    if (vectors == 2) element.add(yx, 10);
                    element.magnitude *= 2;
                }
            if (vectors == 1 && full)
                way(routine, triangle(part), Int{n}, real_alpha, x.data(), x.step(), a.data(), a.step());
            else if (vectors == 1) way(routine, triangle(part), Int{n}, real_alpha, x.data(), x.step(), a.data());
            else if (full)
                way(routine, triangle(part), Int{n}, alpha, x.data(), x.step(), y.data(), y.step(), a.data(), a.step());
            else way(routine, triangle(part), Int{n}, alpha, x.data(), x.step(), y.data(), y.step(), a.data());
            update.check();
            for (i64 i = 0; i < n; ++i) EXPECT_EQ(conj(a.a[a.index(i, i)]), a.a[a.index(i, i)]); // real
            if (testing::Test::HasFailure()) return;
        }
}

// x := op(A)*x, or the solution of op(A)*x' = x in its place: then op(A)*x' is x, but for as many roundings.
template <class T> void triangular(const Way& way, Storage storage, bool solve, i64 n, i64 k)
{
    const char* const middle = storage == Storage::full ? "r" : storage == Storage::packed ? "p" : "b";
    const std::string routine = name<T>(std::string("t") + middle + (solve ? "sv" : "mv"));
    Random random(static_cast<std::uint64_t>(n));
    for (const char part : {'U', 'L'})
        for (const char op : {'N', 'T', 'C'})
            for (const char diag : {'N', 'U'})
                for (const i64 inc : {1, 2, -1}) {
                    SCOPED_TRACE(way.text(routine) + " " + part + op + diag + " n=" + std::to_string(n) +
                                 " k=" + std::to_string(k) + " inc=" + std::to_string(inc));
                    const Stored<T> a(storage, diag == 'N' ? Kind::triangular : Kind::unit_triangular, part,
                                      way.by_rows, n, n, part == 'L' ? k : 0, part == 'U' ? k : 0, random);
                    const Vector<T> x(n, inc, random);
                    std::vector<T> before;
                    for (i64 i = 0; i < n; ++i) before.push_back(x[i]);
                    if (storage == Storage::full)
                        way(routine, triangle(part), transposition(op), diagonal(diag), Int{n}, a.data(), a.step(),
                            x.data(), x.step());
                    else if (storage == Storage::packed)
                        way(routine, triangle(part), transposition(op), diagonal(diag), Int{n}, a.data(), x.data(),
                            x.step());
                    else
                        way(routine, triangle(part), transposition(op), diagonal(diag), Int{n}, Int{k}, a.data(),
                            a.step(), x.data(), x.step());
                    for (i64 i = 0; i < n; ++i) {
                        Expected sum;
                        for (i64 j = 0; j < n; ++j)
                            if (const wide element = a(op, i, j); size(element) != 0)
                                sum.add(element * widen(solve ? x[j] : before[static_cast<std::size_t>(j)]), 4);
                        sum.magnitude *= 2;
                        expect_near(solve ? before[static_cast<std::size_t>(i)] : x[i], sum);
                    }
                    if (testing::Test::HasFailure()) return;
                }
}

template <class F> void on_types(F f)
{
    f.template operator()<float>(), f.template operator()<double>();
    f.template operator()<cpx<float>>(), f.template operator()<cpx<double>>();
}
#define TYPES(...) each_way([](const Way& way) { on_types([&]<class T>() { __VA_ARGS__; }); })

TEST(MatrixVectors, gemv)
{
    TYPES(for (const auto& [m, n]
               : {std::array<i64, 2>{1, 1}, {7, 5}, {4, 21}, {40, 33}}) general<T>(way, Storage::full, m, n, 0, 0));
}

TEST(MatrixVectors, gbmv)
{
    TYPES(for (const auto& [m, n, kl, ku]
               : {std::array<i64, 4>{1, 1, 0, 0}, {7, 5, 2, 1}, {4, 21, 1, 3}, {40, 33, 5, 0}})
              general<T>(way, Storage::band, m, n, kl, ku));
}

TEST(MatrixVectors, ger)
{
    TYPES(for (const auto& [m, n]
               : {std::array<i64, 2>{1, 1}, {7, 5}, {4, 21}, {40, 3}}) {
        if constexpr (is_complex<T>) {
            rank_one<T>(way, name<T>("geru"), m, n);
            rank_one<T>(way, name<T>("gerc"), m, n);
        } else rank_one<T>(way, name<T>("ger"), m, n);
    });
}

TEST(MatrixVectors, symmetric_and_hermitian_products)
{
    TYPES(for (const i64 n
               : {1, 6, 33}) {
        symmetric_product<T>(way, Storage::full, n, 0);
        symmetric_product<T>(way, Storage::packed, n, 0);
        for (const i64 k : {0, 3}) symmetric_product<T>(way, Storage::band, n, k);
    });
}

TEST(MatrixVectors, symmetric_and_hermitian_updates)
{
    TYPES(for (const i64 n
               : {1, 6, 33}) for (const int vectors
                                  : {1, 2}) {
        symmetric_update<T>(way, Storage::full, vectors, n);
        symmetric_update<T>(way, Storage::packed, vectors, n);
    });
}

TEST(MatrixVectors, triangular_products_and_solves)
{
    TYPES(for (const i64 n
               : {1, 6, 37}) for (const bool solve
                                  : {false, true}) {
        triangular<T>(way, Storage::full, solve, n, 0);
        triangular<T>(way, Storage::packed, solve, n, 0);
        for (const i64 k : {0, 3}) triangular<T>(way, Storage::band, solve, n, k);
    });
}

// Conjugates that rows ask for are made piece by piece, of 8 KiB.
TEST(MatrixVectors, long_vectors_are_conjugated_in_pieces)
{
    const Way rows{interfaces[5], true};
    ASSERT_EQ(rows.via.style, Style::cblas);
    using T = cpx<double>;
    for (const i64 n : {512, 513, 1030}) {
        general<T>(rows, Storage::full, n, 9, 0, 0);
        rank_one<T>(rows, "zgerc", 5, n);
    }
    general<T>(rows, Storage::band, 1030, 40, 1000, 2);
    general<T>(rows, Storage::band, 530, 525, 3, 7);
    symmetric_product<T>(rows, Storage::full, 512, 0);
    symmetric_product<T>(rows, Storage::full, 513, 0);
    symmetric_product<T>(rows, Storage::packed, 513, 0);
    symmetric_product<T>(rows, Storage::band, 513, 300);
    for (const int vectors : {1, 2}) {
        symmetric_update<T>(rows, Storage::full, vectors, 513);
        symmetric_update<T>(rows, Storage::packed, vectors, 513);
    }
}

} // namespace
