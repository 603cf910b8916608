// Symmetric and Hermitian products and updates through every interface, with whole numbers: results are exact.
#include "tests/compat/errors.h"
#include "tests/compat/expect.h"
#include "tests/support/whole.h"

using namespace orv;
using namespace orv::test;

namespace {

enum { row_major = 101, column_major = 102 };
int number(char letter)
{
    switch (letter) {
    case 'N':
        return 111;
    case 'T':
        return 112;
    case 'C':
        return 113;
    case 'U':
        return 121;
    case 'l':
        return 122;
    case 'L':
        return 141;
    default:
        return 142;
    }
}

template <class T> struct Matrix {
    i64 rows, columns, ld;
    bool by_rows;
    std::vector<T> x;

    Matrix(i64 m, i64 n, bool rows_first, Random& random)
        : rows(m), columns(n), ld((rows_first ? n : m) + 2), by_rows(rows_first),
          x(static_cast<std::size_t>(ld * (rows_first ? m : n)))
    {
        for (T& e : x) e = whole<T>(random);
    }
    T& at(i64 i, i64 j) { return x[static_cast<std::size_t>(by_rows ? i * ld + j : i + j * ld)]; }
    T turned(char op, i64 i, i64 j) { return op == 'N' ? at(i, j) : op == 'T' ? at(j, i) : conj(at(j, i)); }
    Int step() const { return {ld}; }
};

template <class T> T real_part(T x)
{
    if constexpr (is_complex<T>) return {x.re, 0};
    else return x;
}

// Calls a routine with its letters, by number where the interface takes numbers.
template <class... A>
void call_with(const Interface& via, const std::string& routine, bool by_rows, char first, char second, A... rest)
{
    if (via.style == Style::cblas)
        call<void>(via, routine, by_rows ? int(row_major) : int(column_major), number(first), number(second), rest...);
    else call<void>(via, routine, fold(first), fold(second), rest...);
}

template <class F> void for_all_layouts(const F& f)
{
    for (const Interface& via : interfaces)
        for (const bool by_rows : {false, true})
            if (!by_rows || via.style == Style::cblas) f(via, by_rows);
}

// 'l' is the lower triangle here: 'L' the left side.
bool is_stored(char uplo, i64 i, i64 j) { return uplo == 'U' ? i <= j : i >= j; }

template <class T> void products(const std::string& stem, bool hermitian)
{
    constexpr i64 m = 5, n = 4;
    const std::string routine = std::string(1, letter<T>) + stem;
    for_all_layouts([&](const Interface& via, bool by_rows) {
        for (const char side : {'L', 'R'})
            for (const char uplo : {'U', 'l'}) {
                Random random(7);
                const i64 order = side == 'L' ? m : n;
                Matrix<T> a(order, order, by_rows, random), b(m, n, by_rows, random), c(m, n, by_rows, random), was = c;
                const T alpha = whole<T>(random), beta = whole<T>(random);
                const auto full = [&](i64 i, i64 j) {
                    if (hermitian && i == j) return real_part(a.at(i, i));
                    return is_stored(uplo, i, j) ? a.at(i, j) : hermitian ? conj(a.at(j, i)) : a.at(j, i);
                };
                call_with(via, routine, by_rows, side, uplo, Int{m}, Int{n}, alpha, a.x.data(), a.step(), b.x.data(),
                          b.step(), beta, c.x.data(), c.step());
                for (i64 i = 0; i < m; ++i)
                    for (i64 j = 0; j < n; ++j) {
                        T sum = zero<T>;
                        for (i64 p = 0; p < order; ++p)
                            sum += side == 'L' ? full(i, p) * b.at(p, j) : b.at(i, p) * full(p, j);
                        was.at(i, j) = alpha * sum + beta * was.at(i, j);
                    }
                EXPECT_EQ(c.x, was.x) << via.symbol(routine) << side << uplo << by_rows;
            }
    });
}

// F: the type of the factors that a Hermitian update wants real.
template <class T, class F> void updates(const std::string& stem, const std::string& letters)
{
    constexpr i64 n = 5, k = 3;
    constexpr bool hermitian = !std::is_same_v<T, F>;
    const bool twice = stem.back() == 'k' && stem[stem.size() - 2] == '2';
    const std::string routine = std::string(1, letter<T>) + stem;
    for_all_layouts([&](const Interface& via, bool by_rows) {
        for (const char trans : letters)
            for (const char uplo : {'U', 'l'}) {
                Random random(8);
                const bool plain = trans == 'N';
                Matrix<T> a(plain ? n : k, plain ? k : n, by_rows, random),
                    b(plain ? n : k, plain ? k : n, by_rows, random);
                Matrix<T> c(n, n, by_rows, random), was = c;
                const F beta = whole<F>(random);
                const char turn = hermitian ? 'C' : 'T', left = plain ? 'N' : turn, right = plain ? turn : 'N';
                const auto product = [&](Matrix<T>& x, Matrix<T>& y, i64 i, i64 j) {
                    T sum = zero<T>;
                    for (i64 p = 0; p < k; ++p) sum += x.turned(left, i, p) * y.turned(right, p, j);
                    return sum;
                };
                const T alpha2 = whole<T>(random);
                const F alpha1 = whole<F>(random);
                if (twice)
                    call_with(via, routine, by_rows, uplo, trans, Int{n}, Int{k}, alpha2, a.x.data(), a.step(),
                              b.x.data(), b.step(), beta, c.x.data(), c.step());
                else
                    call_with(via, routine, by_rows, uplo, trans, Int{n}, Int{k}, alpha1, a.x.data(), a.step(), beta,
                              c.x.data(), c.step());
                for (i64 i = 0; i < n; ++i)
                    for (i64 j = 0; j < n; ++j) {
                        if (!is_stored(uplo, i, j)) continue;
                        const T kept = hermitian && i == j ? real_part(was.at(i, j)) : was.at(i, j);
                        const T added = twice ? alpha2 * product(a, b, i, j) +
                                                    (hermitian ? conj(alpha2) : alpha2) * product(b, a, i, j)
                                              : alpha1 * product(a, a, i, j);
                        was.at(i, j) = added + beta * kept;
                    }
                EXPECT_EQ(c.x, was.x) << via.symbol(routine) << uplo << trans << by_rows;
            }
    });
}

TEST(SymmetricMatrices, symm_and_hemm)
{
    products<float>("symm", false), products<double>("symm", false);
    products<cpx<float>>("symm", false), products<cpx<double>>("symm", false);
    products<cpx<float>>("hemm", true), products<cpx<double>>("hemm", true);
    EXPECT_TRUE(take_reports().empty());
}

TEST(SymmetricMatrices, syrk_and_syr2k)
{
    for (const char* stem : {"syrk", "syr2k"}) {
        updates<float, float>(stem, "NTC"), updates<double, double>(stem, "NTC");
        updates<cpx<float>, cpx<float>>(stem, "NT"), updates<cpx<double>, cpx<double>>(stem, "NT");
    }
    EXPECT_TRUE(take_reports().empty());
}

TEST(SymmetricMatrices, herk_and_her2k)
{
    for (const char* stem : {"herk", "her2k"})
        updates<cpx<float>, float>(stem, "NC"), updates<cpx<double>, double>(stem, "NC");
    EXPECT_TRUE(take_reports().empty());
}

} // namespace
