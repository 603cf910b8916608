// Products of compressed rows with dense matrices: every name, both widths.
#include "frame/kernels/spblas.h"
#include "tests/spblas/dense.h"

using namespace orv;
using namespace orv::test;

namespace {

template <class T, class Int> class Product {
public:
    Product(const SparseName& name, const Coordinates<T>& a, i64 columns, T alpha, T beta)
        : name_(name), a_(a), columns_(columns), alpha_(alpha), beta_(beta), csr_(a, name.base, 1),
          x_(general_transposed() ? a.m : a.k, columns, name.by_rows(), 2),
          y(rows(), columns, name.by_rows(), 3, beta == zero<T>)
    {
        if (beta == zero<T>) // rows beyond m are the caller's to scale
            for (i64 i = a.m; i < rows(); ++i)
                for (i64 j = 0; j < columns; ++j) y(i, j) = zero<T>;
    }
    void run(i64 first, i64 last) const
    {
        const auto address = kernel_address(module_of<Int>, name_.text);
        const Int f = static_cast<Int>(first), l = static_cast<Int>(last), m = static_cast<Int>(a_.m),
                  nd = static_cast<Int>(columns_), ldx = x_.template ld<Int>(), ldy = y.template ld<Int>();
        const auto& [val, col, begin, end] = csr_;
        namespace sparse = kernels::sparse;
        if (name_.run == "par")
            reinterpret_cast<sparse::csr_mm_par<T, Int>*>(address)(&f, &l, &m, &nd, &alpha_, val.data(), col.data(),
                                                                   begin.data(), end.data(), x_.data(), &ldx, y.data(),
                                                                   &ldy, &beta_);
        else
            reinterpret_cast<sparse::csr_mm_seq<T, Int>*>(address)(&m, &nd, &alpha_, val.data(), col.data(),
                                                                   begin.data(), end.data(), x_.data(), &ldx, y.data(),
                                                                   &ldy, &beta_);
    }
    // The kernel does not know the rows of a transposed matrix, and scales as many as there are before.
    i64 rows() const { return general_transposed() ? std::max(a_.m, a_.k) : a_.m; }
    bool own_rows() const
    {
        return name_.run == "par" && !name_.transposes() && (name_.kind == 'g' || name_.kind == 't');
    }
    long double worst() const
    {
        long double worst = 0;
        const auto all = meant(name_, a_);
        std::vector<WideSum> sums(static_cast<std::size_t>(rows()));
        for (i64 c = 0; c < columns_; ++c) {
            std::fill(sums.begin(), sums.end(), WideSum{});
            for (const auto& [i, j, a] : all) sums[static_cast<std::size_t>(i)].add(a, x_(j, c));
            for (i64 i = 0; i < rows(); ++i) {
                WideSum sum = sums[static_cast<std::size_t>(i)].times(alpha_);
                if (i < a_.m && beta_ != zero<T>) sum.add(beta_, y.before(i, c));
                if (i >= a_.m && beta_ != zero<T>) sum.add(y.before(i, c));
                keep_worst(worst, sum.excess(y(i, c)));
            }
        }
        return worst;
    }

private:
    bool general_transposed() const { return name_.transposes() && name_.kind == 'g'; }

    SparseName name_;
    const Coordinates<T>& a_;
    i64 columns_;
    T alpha_, beta_;
    CsrArrays<T, Int> csr_;
    Dense<T> x_;

public:
    Dense<T> y;
};

template <class Check> void each_name(const Check& check)
{
    int names = 0;
    for (const SparseName& name : sparse_names("csr", "mm")) {
        ++names;
        each_width(name.type, [&]<class T, class Int> {
            for (const auto& a : patterns<T>(name)) {
                if (testing::Test::HasFailure()) return;
                SCOPED_TRACE(std::string(module_of<Int>) + ' ' + name.text + ", " + a.pattern);
                check.template operator()<T, Int>(name, a);
            }
        });
    }
    EXPECT_GT(names, 0);
}

} // namespace

TEST(CsrMm, of_every_name_is_within_the_textbook_bound)
{
    each_name([]<class T, class Int>(const SparseName& name, const auto& a) {
        const auto [alpha, beta] = factors<T>()[static_cast<std::size_t>(a.m % 3)];
        const Product<T, Int> product(name, a, 3, alpha, beta);
        product.run(1, a.m);
        EXPECT_LE(product.worst(), 1);
        EXPECT_TRUE(product.y.padding_is_untouched());
    });
}

TEST(CsrMm, does_not_use_values_that_do_not_count)
{
    each_name([]<class T, class Int>(const SparseName& name, const auto& a) {
        const auto nan = with_nan_where_nothing_counts(name, a);
        const Product<T, Int> product(name, nan, 2, one<T>, one<T>);
        product.run(1, a.m);
        EXPECT_LE(product.worst(), 1);
    });
}

TEST(CsrMm, does_every_number_of_columns)
{
    for (const SparseName& name : sparse_names("csr", "mm")) {
        if (name.kind != 'g' && name.triangle != 'l') continue;
        each_width(name.type, [&]<class T, class Int> {
            const auto a = drawn<T>("square", 12, {3, 12, 0, 5, 4, 1, 7, 12, 2, 0, 6, 9});
            for (i64 columns = 0; columns <= 33; ++columns) {
                const auto [alpha, beta] = factors<T>()[static_cast<std::size_t>(columns % 4)];
                const Product<T, Int> product(name, a, columns, alpha, beta);
                product.run(1, a.m);
                EXPECT_LE(product.worst(), 1) << module_of<Int> << ' ' << name.text << ", " << columns;
                EXPECT_TRUE(product.y.padding_is_untouched());
            }
        });
    }
}

TEST(CsrMm, of_parts_is_that_of_the_whole_where_rows_write_their_own_elements)
{
    each_name([]<class T, class Int>(const SparseName& name, const auto& a) {
        const auto [alpha, beta] = factors<T>()[1];
        Product<T, Int> product(name, a, 9, alpha, beta);
        if (!product.own_rows()) return;
        product.run(1, a.m);
        const auto whole = product.y.copy();
        for (const i64 step : {7, 65}) {
            product.y.restart();
            for (i64 first = 1; first <= a.m; first += step) product.run(first, std::min(first + step - 1, a.m));
            EXPECT_TRUE(product.y.same_as(whole)) << "by " << step;
        }
    });
}

TEST(CsrMm, by_columns_does_not_depend_on_blocks_of_rows)
{
    // 20 entries a row times 20, and 12 columns times 12: 544 for each row, so blocks begin at 31250 rows.
    for (const i64 m : {31200, 31300}) {
        const i64 k = 50, nd = 12, one_row = 1;
        std::vector<i64> begin, col;
        std::vector<double> val;
        for (i64 i = 0; i < m; ++i) {
            begin.push_back(static_cast<i64>(col.size()) + 1);
            for (i64 e = 0; e < 20; ++e) col.push_back((i * 3 + e * 2) % k + 1), val.push_back(double(e + i % 7));
        }
        std::vector<i64> end(begin.begin() + 1, begin.end());
        end.push_back(static_cast<i64>(col.size()) + 1);
        const auto x = random_elements<double>(k * nd, 3);
        std::vector<double> y(static_cast<std::size_t>(m * nd)), by_row(y);
        const double alpha = 2, beta = 0;
        const auto product = kernel<kernels::spblas::dcsr1ng__f__mmout_par>();
        product(&one_row, &m, &m, &nd, &alpha, val.data(), col.data(), begin.data(), end.data(), x.data(), &k, y.data(),
                &m, &beta);
        for (i64 i = 1; i <= m; ++i)
            product(&i, &i, &m, &nd, &alpha, val.data(), col.data(), begin.data(), end.data(), x.data(), &k,
                    by_row.data(), &m, &beta);
        EXPECT_TRUE(same_bits(y.data(), by_row.data(), m * nd));
    }
}

TEST(CsrMm, of_a_diagonal_matrix_takes_the_first_of_two_entries_in_both_layouts)
{
    const i64 m = 2, nd = 1, ld = 2, col0[] = {0, 0, 1}, col1[] = {1, 1, 2}, pointers[] = {0, 2, 3};
    const double one = 1, val[] = {3, 100, 5}, x[] = {1, 0, 1};
    double by_rows[] = {0, 0, 0}, by_columns[] = {0, 0};
    kernel<kernels::spblas::dcsr0nd_nc__mmout_seq>()(&m, &nd, &one, val, col0, pointers, pointers + 1, x, &ld, by_rows,
                                                     &ld, &one);
    EXPECT_EQ(by_rows[0], 3);
    EXPECT_EQ(by_rows[2], 5);
    const double both[] = {1, 1};
    kernel<kernels::spblas::dcsr1nd_nf__mmout_seq>()(&m, &nd, &one, val, col1, pointers, pointers + 1, both, &ld,
                                                     by_columns, &ld, &one);
    EXPECT_EQ(by_columns[0], 3);
    EXPECT_EQ(by_columns[1], 5);
}
