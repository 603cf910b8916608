// Matrix products through every interface, against naive loops.
#include "tests/compat/errors.h"
#include "tests/compat/expect.h"

using namespace orv;
using namespace orv::test;

namespace {

enum { row_major = 101, column_major = 102 };

// rows by columns elements, stored by columns or by rows with padding that nobody may touch.
template <class T> struct Matrix {
    i64 rows, columns, ld;
    bool by_rows;
    Guarded<T> storage;

    Matrix(i64 r, i64 c, bool rows_first, Random& random)
        : rows(r), columns(c), ld((rows_first ? c : r) + 3), by_rows(rows_first),
          storage(static_cast<std::size_t>(ld * ((rows_first ? r : c) - 1) + (rows_first ? c : r)))
    {
        random.fill(storage);
    }
    std::size_t index(i64 i, i64 j) const { return static_cast<std::size_t>(by_rows ? i * ld + j : i + j * ld); }
    T operator()(i64 i, i64 j) const { return storage[index(i, j)]; }
    T* data() const { return storage.data(); }
    Int step() const { return {ld}; }
};

template <class T> wide operand(const Matrix<T>& a, char op, i64 i, i64 j)
{
    return op == 'N' ? widen(a(i, j)) : conjugate_if(op == 'C', a(j, i));
}

int transposition(char op) { return op == 'N' ? 111 : op == 'T' ? 112 : 113; }

template <class T>
void gemm(const Interface& via, bool by_rows, char transa, char transb, i64 m, i64 n, i64 k, T alpha, T beta)
{
    SCOPED_TRACE(via.symbol("gemm ") + letter<T> + (by_rows ? " rows " : " columns ") + transa + transb +
                 " m=" + std::to_string(m) + " n=" + std::to_string(n) + " k=" + std::to_string(k));
    Random random(static_cast<std::uint64_t>(m * n * k));
    const Matrix<T> a(transa == 'N' ? m : k, transa == 'N' ? k : m, by_rows, random);
    const Matrix<T> b(transb == 'N' ? k : n, transb == 'N' ? n : k, by_rows, random), c(m, n, by_rows, random);
    std::vector<Expected> expected;
    for (const T& element : c.storage) expected.emplace_back(element);
    for (i64 i = 0; i < m; ++i)
        for (i64 j = 0; j < n; ++j) {
            Expected sum;
            if (beta != zero<T>) sum.add(widen(beta) * widen(c(i, j)), 3);
            for (i64 l = 0; l < k; ++l) sum.add(widen(alpha) * operand(a, transa, i, l) * operand(b, transb, l, j), 1);
            sum.roundings += 6;
            sum.magnitude *= 2; // the parts of alpha*a carry the sizes of both parts of alpha and a
            expected[c.index(i, j)] = sum;
        }
    const std::string routine = std::string(1, letter<T>) + "gemm";
    if (via.style == Style::cblas)
        call<void>(via, routine, by_rows ? int(row_major) : int(column_major), transposition(transa),
                   transposition(transb), Int{m}, Int{n}, Int{k}, alpha, a.data(), a.step(), b.data(), b.step(), beta,
                   c.data(), c.step());
    else
        call<void>(via, routine, transa, transb, Int{m}, Int{n}, Int{k}, alpha, a.data(), a.step(), b.data(), b.step(),
                   beta, c.data(), c.step());
    for (std::size_t i = 0; i < expected.size(); ++i) expect_near(c.storage[i], expected[i]);
}

template <class T> void gemm_of()
{
    constexpr i64 sizes[][3] = {{1, 1, 1}, {3, 4, 5}, {11, 9, 12}, {21, 33, 19}, {40, 8, 270}};
    const T alpha = is_complex<T> ? element<T>::make(0.75) + Random(9).value<T>() : element<T>::make(0.75);
    for (const Interface& via : interfaces)
        for (const bool by_rows : {false, true}) {
            if (by_rows && via.style != Style::cblas) continue;
            for (const auto& [m, n, k] : sizes)
                for (const char transa : {'N', 'T', 'C'})
                    for (const char transb : {'N', 'T', 'C'})
                        for (const T beta : {zero<T>, one<T>, element<T>::make(-0.5)}) {
                            gemm(via, by_rows, transa, transb, m, n, k, alpha, beta);
                            if (testing::Test::HasFailure()) return;
                        }
        }
}

TEST(Matrices, gemm)
{
    gemm_of<float>(), gemm_of<double>(), gemm_of<cpx<float>>(), gemm_of<cpx<double>>();
    EXPECT_TRUE(take_reports().empty());
}

TEST(Matrices, gemm_takes_letters_in_either_case)
{
    for (const Interface& via : interfaces)
        if (via.style != Style::cblas) {
            double a = 2, b = 3, c = 4;
            call<void>(via, "dgemm", 't', 'n', Int{1}, Int{1}, Int{1}, 1.0, &a, Int{1}, &b, Int{1}, 0.0, &c, Int{1});
            EXPECT_EQ(c, 6);
        }
    EXPECT_TRUE(take_reports().empty());
}

TEST(Matrices, gemm_sets_a_result_that_held_nan_when_beta_is_zero)
{
    for (const Interface& via : interfaces) {
        double a = 2, b = 3, c = NAN;
        if (via.style == Style::cblas)
            call<void>(via, "dgemm", int(column_major), 111, 111, Int{1}, Int{1}, Int{1}, 1.0, &a, Int{1}, &b, Int{1},
                       0.0, &c, Int{1});
        else call<void>(via, "dgemm", 'N', 'N', Int{1}, Int{1}, Int{1}, 1.0, &a, Int{1}, &b, Int{1}, 0.0, &c, Int{1});
        EXPECT_EQ(c, 6);
    }
}

} // namespace
