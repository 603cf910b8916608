// Sums of two matrices: ?omatadd, and the routines for each pair of operations.
#include "frame/kernels/trans.h"
#include "tests/trans/matrices.h"

namespace orv::test {
namespace {

using namespace kernels::trans;

template <class T> class OmataddTest : public ::testing::Test {
};
TYPED_TEST_SUITE(OmataddTest, Types);

constexpr char ops[] = {'N', 'T', 'R', 'C'};

// A sum and its check; rows and cols are those of C in row-major order.
template <class T> struct Addition {
    char opa, opb;
    u64 rows, cols;
    T alpha, beta;
    u64 lda, ldb, ldc;
    Storage<T> a, b, c;

    Addition(char opa, char opb, u64 rows, u64 cols, T alpha, T beta, u64 pada, u64 padb, u64 padc)
        : opa(opa), opb(opb), rows(rows), cols(cols), alpha(alpha), beta(beta), lda(width(opa) + pada),
          ldb(width(opb) + padb), ldc(cols + padc), a(turns(opa) ? extent(cols, rows, lda) : extent(rows, cols, lda)),
          b(turns(opb) ? extent(cols, rows, ldb) : extent(rows, cols, ldb)), c(extent(rows, cols, ldc))
    {
    }
    u64 width(char op) const { return turns(op) ? rows : cols; }

    std::vector<T> expected() const
    {
        std::vector<T> result = c.copy();
        for (u64 i = 0; i < rows; ++i)
            for (u64 j = 0; j < cols; ++j) {
                const T x = conjugated_by(opa, a[turns(opa) ? j * lda + i : i * lda + j]);
                const T y = conjugated_by(opb, b[turns(opb) ? j * ldb + i : i * ldb + j]);
                result[i * ldc + j] = alpha * x + beta * y;
            }
        return result;
    }
    std::string text() const
    {
        Line text = line<T>("omatadd", {'R', opa, opb}); // or the transposes, by columns
        text.with("rows", rows).with("cols", cols).with("alpha", alpha).with("lda", lda);
        return text.with("beta", beta).with("ldb", ldb).with("ldc", ldc).text();
    }
    void run() const
    {
        const std::vector<T> after = expected(), a_before = a.copy(), b_before = b.copy();
        SCOPED_TRACE(text());
        const bool by_rows = (rows + cols) % 2 == 0;
        kernel<Omatadd<T>>("trans", symbol<T>("omatadd"))(by_rows ? 'r' : 'C', opa, static_cast<char>(opb | 0x20),
                                                          by_rows ? rows : cols, by_rows ? cols : rows, alpha, a.data(),
                                                          lda, beta, b.data(), ldb, c.data(), ldc);
        ASSERT_HOLDS(c, after);
        ASSERT_HOLDS(a, a_before);
        ASSERT_HOLDS(b, b_before);
    }
};

TYPED_TEST(OmataddTest, adds_every_pair_of_operations_on_every_small_shape)
{
    using T = TypeParam;
    for (const char opa : ops)
        for (const char opb : ops)
            for (u64 rows = 1; rows <= 21; ++rows)
                for (u64 cols = 1; cols <= 21; ++cols) {
                    Addition<T>(opa, opb, rows, cols, scalar<T>(0.7, -1.3), scalar<T>(-0.4, 0.9), rows % 3, cols % 4,
                                (rows + cols) % 5)
                        .run();
                    if (this->HasFatalFailure()) return;
                }
}

TYPED_TEST(OmataddTest, adds_in_bands_of_rows)
{
    using T = TypeParam;
    constexpr u64 page = 4096 / sizeof(T);
    for (const char opa : ops)
        for (const char opb : ops)
            for (const u64 rows : {u64(53), u64(70), page + 3})
                for (const u64 cols : {u64(55), u64(109)}) {
                    Addition<T>(opa, opb, rows, cols, scalar<T>(0.7, -1.3), scalar<T>(-0.4, 0.9), 0, 1, 2).run();
                    if (this->HasFatalFailure()) return;
                }
}

TYPED_TEST(OmataddTest, offers_each_pair_by_name)
{
    using T = TypeParam;
    const std::vector<std::string> real = {"nn", "nt", "tt"},
                                   complex = {"nn", "nt", "nc", "tt", "tc", "cc", "rn", "rt", "rc", "rr"};
    for (const std::string& pair : is_complex<T> ? complex : real) {
        const Addition<T> sum(fold(pair[0]), fold(pair[1]), 14, 23, scalar<T>(0.7, -1.3), scalar<T>(2, 0.5), 1, 2, 3);
        const std::vector<T> after = sum.expected();
        kernel<OmataddOfForm<T>>("trans", symbol<T>("omatadd_" + pair))(
            14, 23, sum.alpha, sum.a.data(), sum.lda, sum.beta, sum.b.data(), sum.ldb, sum.c.data(), sum.ldc);
        ASSERT_HOLDS(sum.c, after) << pair;
    }
}

TYPED_TEST(OmataddTest, leaves_c_alone_for_a_letter_that_is_none)
{
    using T = TypeParam;
    const auto known = [](int letter, const char* all) { return letter != 0 && std::strchr(all, letter) != nullptr; };
    auto* f = kernel<Omatadd<T>>("trans", symbol<T>("omatadd"));
    const Addition<T> sum('N', 'N', 4, 4, one<T>, one<T>, 0, 0, 0);
    const std::vector<T> before = sum.c.copy();
    for (int letter = -128; letter < 128; ++letter) {
        const auto l = static_cast<char>(letter);
        const auto call = [&](char ordering, char opa, char opb) {
            f(ordering, opa, opb, 4, 4, one<T>, sum.a.data(), 4, one<T>, sum.b.data(), 4, sum.c.data(), 4);
        };
        if (!known(letter, "RrCc")) call(l, 'N', 'N');
        if (!known(letter, "NnTtRrCc")) call('R', l, 'N'), call('C', 'T', l), call('R', l, l);
        ASSERT_HOLDS(sum.c, before) << letter;
    }
}

TYPED_TEST(OmataddTest, touches_nothing_without_rows_or_columns)
{
    using T = TypeParam;
    const Guarded<T> none(0);
    for (const char opa : ops)
        for (const char opb : ops)
            for (const auto& [rows, cols] : {std::pair<u64, u64>{0, 5}, {5, 0}, {0, 0}})
                kernel<Omatadd<T>>("trans", symbol<T>("omatadd"))('R', opa, opb, rows, cols, one<T>, none.data(), 5,
                                                                  one<T>, none.data(), 5, none.data(), 5);
}

TYPED_TEST(OmataddTest, adds_to_an_operand_in_its_place)
{
    using T = TypeParam;
    for (const char opb : ops) {
        const Addition<T> sum('N', opb, 19, 19, scalar<T>(0.7, -1.3), scalar<T>(-0.4, 0.9), 0, 0, 0);
        const std::vector<T> after = sum.expected();
        kernel<Omatadd<T>>("trans", symbol<T>("omatadd"))('R', 'N', opb, 19, 19, sum.alpha, sum.a.data(), 19, sum.beta,
                                                          sum.b.data(), 19, sum.a.data(), 19);
        ASSERT_HOLDS(sum.a, after) << opb;
    }
}

TYPED_TEST(OmataddTest, lets_nan_spread_through_factors_of_zero)
{
    using T = TypeParam;
    for (const char opa : ops)
        for (const char opb : ops)
            for (const bool in_a : {false, true}) {
                const Addition<T> sum(opa, opb, 11, 9, in_a ? zero<T> : one<T>, in_a ? one<T> : zero<T>, 0, 0, 0);
                for (u64 i = 0; i < 99; ++i) (in_a ? sum.a : sum.b)[i] = scalar<T>(NAN, NAN);
                sum.run();
                if (this->HasFatalFailure()) return;
                for (u64 i = 0; i < 99; ++i) ASSERT_FALSE(sum.c[i] == sum.c[i]);
            }
}

TYPED_TEST(OmataddTest, keeps_the_sign_of_zero)
{
    using T = TypeParam;
    for (const double x : {0.0, -0.0})
        for (const double y : {0.0, -0.0})
            for (const double alpha : {1.0, -1.0, 0.0, -0.0}) {
                const Addition<T> sum('N', 'T', 9, 9, scalar<T>(alpha, 0), scalar<T>(1, -0.0), 0, 0, 0);
                for (u64 i = 0; i < 81; ++i) sum.a[i] = scalar<T>(x, y), sum.b[i] = scalar<T>(y, x);
                sum.run();
                if (this->HasFatalFailure()) return;
            }
}

TEST(Line, of_copies_and_sums_repeats_it)
{
    EXPECT_TRUE(repeats(Addition<cpx<float>>('C', 'N', 3, 4, {1, 2}, {0.5f, 0}, 1, 0, 2).text()));
    for (const char* routine : {"omatcopy", "imatcopy"})
        EXPECT_TRUE(repeats(problem<double>(routine, 'C', 't', 3, 4, 5, 6, 0.7)));
}

} // namespace
} // namespace orv::test
