// Copies of matrices through the interfaces that other libraries have them in.
#include "tests/compat/call.h"
#include "tests/compat/errors.h"

#include "tests/support/kernels.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace orv;
using namespace orv::test;

namespace {

template <class T> class CopiesTest : public ::testing::Test {
};
using Types = ::testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(CopiesTest, Types);

template <class T> constexpr T number(double re, double im)
{
    if constexpr (is_complex<T>) return {static_cast<real_t<T>>(re), static_cast<real_t<T>>(im)};
    else return static_cast<T>(re);
}
template <class T> std::vector<T> numbers(std::size_t n)
{
    std::vector<T> all;
    for (std::size_t i = 0; i < n; ++i) all.push_back(number<T>(static_cast<double>(i + 1), -static_cast<double>(i)));
    return all;
}

constexpr char letters[] = {'N', 'T', 'C', 'R'}; // 111, 112, ... of CBLAS

template <class T, class... A>
void copy(const Interface& via, const char* rest, int layout, int trans, const A&... arguments)
{
    const std::string routine = letter<T> + std::string(rest);
    if (via.style == Style::cblas) return call<void>(via, routine, layout, trans, arguments...);
    const bool known = trans >= 111 && trans <= 114;
    call<void>(via, routine,
               layout == 101   ? 'r'
               : layout == 102 ? 'C'
                               : 'x',
               known ? letters[trans - 111] : 'x', arguments...);
}

TYPED_TEST(CopiesTest, omatcopy_and_imatcopy_take_letters_or_numbers)
{
    using T = TypeParam;
    const T alpha = number<T>(2, 1);
    for (const Interface& via : interfaces) {
        if (!via.standard()) continue;
        for (const int layout : {101, 102})
            for (int trans = 111; trans <= 114; ++trans) {
                const i64 rows = 2, cols = 3, m = layout == 101 ? rows : cols, n = layout == 101 ? cols : rows;
                const bool turns = trans == 112 || trans == 113, conjugates = trans >= 113;
                const std::vector<T> a = numbers<T>(30), before = numbers<T>(30);
                std::vector<T> b = before, expected = before;
                for (i64 i = 0; i < m; ++i)
                    for (i64 j = 0; j < n; ++j)
                        expected[turns ? j * 5 + i : i * 5 + j] =
                            alpha * (conjugates ? conj(a[i * 4 + j]) : a[i * 4 + j]);
                SCOPED_TRACE(via.symbol("omatcopy") + ' ' + std::to_string(layout) + ' ' + std::to_string(trans));
                copy<T>(via, "omatcopy", layout, trans, Int{rows}, Int{cols}, alpha, a.data(), Int{4}, b.data(),
                        Int{5});
                EXPECT_TRUE(b == expected);
                std::vector<T> ab = before;
                copy<T>(via, "imatcopy", layout, trans, Int{rows}, Int{cols}, alpha, ab.data(), Int{4}, Int{5});
                EXPECT_TRUE(ab == expected);
            }
    }
    EXPECT_TRUE(take_reports().empty());
}

TYPED_TEST(CopiesTest, geadd_adds_and_does_not_read_behind_factors_of_zero)
{
    using T = TypeParam;
    const T nan = number<T>(NAN, NAN);
    for (const Interface& via : interfaces) {
        if (!via.standard()) continue;
        for (const int layout : {101, 102})
            for (const T alpha : {number<T>(2, 1), zero<T>})
                for (const T beta : {number<T>(-1, 3), zero<T>}) {
                    std::vector<T> a = numbers<T>(12), c = numbers<T>(12);
                    if (via.style == Style::fortran && layout == 101) continue;
                    const i64 rows = 3, cols = 2, lines = layout == 101 ? rows : cols,
                              length = layout == 101 ? cols : rows;
                    std::vector<T> expected = c;
                    for (i64 i = 0; i < lines; ++i)
                        for (i64 j = 0; j < length; ++j) {
                            T &x = a[i * 4 + j], &y = c[i * 3 + j];
                            const T from_a = alpha == zero<T> ? zero<T> : alpha * x,
                                    from_c = beta == zero<T> ? zero<T> : beta * y;
                            expected[i * 3 + j] = from_a + from_c;
                            if (alpha == zero<T>) x = nan;
                            else if (beta == zero<T>) y = nan;
                        }
                    if (alpha == zero<T> && beta == zero<T>) c.assign(12, zero<T>), expected = c;
                    const std::string routine = letter<T> + std::string("geadd");
                    if (via.style == Style::cblas)
                        call<void>(via, routine, layout, Int{rows}, Int{cols}, alpha, a.data(), Int{4}, beta, c.data(),
                                   Int{3});
                    else
                        call<void>(via, routine, Int{rows}, Int{cols}, alpha, a.data(), Int{4}, beta, c.data(), Int{3});
                    for (std::size_t i = 0; i < 12; ++i)
                        EXPECT_TRUE(c[i] == expected[i]) << via.symbol(routine) << ' ' << i;
                }
    }
}

std::string upper(std::string name)
{
    for (char& c : name) c = static_cast<char>(std::toupper(c));
    return name;
}

void expect_report(const Interface& via, const std::string& routine, i64 position, const std::string& text = "")
{
    const std::vector<Report> reports = take_reports();
    ASSERT_EQ(reports.size(), 1u) << via.symbol(routine) << ' ' << position;
    if (via.style == Style::cblas)
        EXPECT_EQ(reports[0], (Report{"cblas_xerbla" + std::string(via.suffix), "cblas_" + routine, position, text}));
    else EXPECT_EQ(reports[0], (Report{via.bits == 32 ? "xerbla_" : "xerbla_64_", upper(routine), position, ""}));
}

TYPED_TEST(CopiesTest, bad_arguments_reach_the_error_routine_by_position)
{
    using T = TypeParam;
    take_reports();
    std::vector<T> a(40, one<T>), b(40, one<T>);
    const std::vector<T> before = b;
    const auto omatcopy = [&](const Interface& via, i64 position, int layout, int trans, i64 rows, i64 cols, i64 lda,
                              i64 ldb, const std::string& text = "") {
        copy<T>(via, "omatcopy", layout, trans, Int{rows}, Int{cols}, one<T>, a.data(), Int{lda}, b.data(), Int{ldb});
        expect_report(via, letter<T> + std::string("omatcopy"), position, text);
        copy<T>(via, "imatcopy", layout, trans, Int{rows}, Int{cols}, one<T>, b.data(), Int{lda}, Int{ldb});
        expect_report(via, letter<T> + std::string("imatcopy"), position == 9 ? 8 : position, text);
    };
    for (const Interface& via : interfaces) {
        if (!via.standard()) continue;
        omatcopy(via, 1, 100, 111, 2, 3, 3, 3, "Illegal layout setting, 100\n");
        omatcopy(via, 1, 103, 999, -2, 3, 3, 3, "Illegal layout setting, 103\n");
        omatcopy(via, 2, 101, 110, -2, 3, 3, 3, "Illegal Trans setting, 110\n");
        omatcopy(via, 2, 101, 115, 2, 3, 3, 3, "Illegal Trans setting, 115\n");
        omatcopy(via, 3, 101, 111, -1, -1, 3, 3);
        omatcopy(via, 4, 102, 112, 2, -1, 0, 3);
        omatcopy(via, 7, 101, 111, 2, 3, 2, 2);
        omatcopy(via, 7, 102, 111, 2, 3, 1, 2);
        omatcopy(via, 7, 102, 111, 0, 0, 0, 1);
        omatcopy(via, 9, 101, 111, 2, 3, 3, 2);
        omatcopy(via, 9, 101, 112, 2, 3, 3, 1);
        omatcopy(via, 9, 102, 114, 2, 3, 2, 1);
        omatcopy(via, 9, 102, 113, 2, 3, 2, 2);

        const auto geadd = [&](i64 position, int layout, i64 rows, i64 cols, i64 lda, i64 ldc,
                               const std::string& text = "") {
            const std::string routine = letter<T> + std::string("geadd");
            if (via.style == Style::cblas)
                call<void>(via, routine, layout, Int{rows}, Int{cols}, one<T>, a.data(), Int{lda}, one<T>, b.data(),
                           Int{ldc});
            else if (layout == 102)
                call<void>(via, routine, Int{rows}, Int{cols}, one<T>, a.data(), Int{lda}, one<T>, b.data(), Int{ldc});
            else return;
            expect_report(via, routine, via.style == Style::cblas ? position : position - 1, text);
        };
        geadd(1, 7, 2, 3, 3, 3, "Illegal layout setting, 7\n");
        geadd(2, 102, -1, -3, 3, 3);
        geadd(3, 102, 1, -3, 0, 3);
        geadd(6, 102, 3, 2, 2, 2);
        geadd(6, 101, 2, 3, 2, 2);
        geadd(9, 102, 3, 2, 3, 2);
        geadd(9, 101, 2, 3, 3, 2);
    }
    EXPECT_TRUE(b == before);
}

} // namespace
