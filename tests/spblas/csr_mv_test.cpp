// Products of compressed rows with one vector: every name, both widths.
#include "frame/kernels/spblas.h"
#include "tests/spblas/matrix.h"

#include <optional>

using namespace orv;
using namespace orv::test;

namespace {

template <class T, class Int> class Product {
public:
    Product(const SparseName& name, const Coordinates<T>& a, T alpha, T beta)
        : name_(name), a_(a), alpha_(alpha), beta_(beta), columns_(name.transposes() && name.kind == 'g' ? a.m : a.k),
          rows_(name.transposes() && name.kind == 'g' ? a.k : a.m), x_(static_cast<std::size_t>(columns_)),
          before_(static_cast<std::size_t>(rows_)), y(static_cast<std::size_t>(rows_))
    {
        Random random(5);
        random.fill(x_), random.fill(before_);
        if (beta == zero<T>) std::fill(before_.begin(), before_.end(), not_a_number<T>());
        store(1), restart();
    }

    void restart() { std::copy(before_.begin(), before_.end(), y.begin()); }

    // Rows first to last, counted from 1.
    void run(i64 first, i64 last) const
    {
        const CsrArrays<T, Int>& csr = *csr_;
        const Int f = static_cast<Int>(first), l = static_cast<Int>(last), m = static_cast<Int>(a_.m),
                  k = static_cast<Int>(a_.k);
        const auto address = kernel_address(module_of<Int>, name_.text);
        namespace sparse = kernels::sparse;
        if (name_.run == "par")
            reinterpret_cast<sparse::csr_mv_par<T, Int>*>(address)(&f, &l, &m, &k, &alpha_, csr.val.data(),
                                                                   csr.col.data(), csr.begin.data(), csr.end.data(),
                                                                   x_.data(), y.data(), &beta_);
        else
            reinterpret_cast<sparse::csr_mv_seq<T, Int>*>(address)(&m, &k, &alpha_, csr.val.data(), csr.col.data(),
                                                                   csr.begin.data(), csr.end.data(), x_.data(),
                                                                   y.data(), &beta_);
    }

    std::pair<T, T> factors_of() const { return {alpha_, beta_}; }
    // Whether rows write their own elements only, and y needs no scaling as a whole.
    bool own_rows() const
    {
        return name_.run == "par" && !name_.transposes() && (name_.kind == 'g' || name_.kind == 't');
    }

    // op(A)*x
    std::vector<WideSum> exact() const
    {
        std::vector<WideSum> sums(y.size());
        for (const auto& [i, j, a] : meant(name_, a_)) sums[at(i)].add(a, x_[at(j)]);
        if (own_rows() && name_.kind == 't') // outside the triangle: added and taken off
            for (const auto& [i, j, a] : a_.entries)
                if (!name_.keeps(i, j)) sums[at(i)].add(a, x_[at(j)]), sums[at(i)].add(-a, x_[at(j)]);
        return sums;
    }
    long double worst(const std::vector<WideSum>& exact) const
    {
        long double worst = 0;
        for (std::size_t i = 0; i < y.size(); ++i) {
            WideSum sum = exact[i].times(alpha_);
            if (beta_ != zero<T>) sum.add(beta_, before_[i]);
            keep_worst(worst, sum.excess(y[i]));
        }
        return worst;
    }

    // The same problem for a kernel of the other base, or with other pointers.
    void rename(const SparseName& name) { name_ = name, store(1); }
    void store(Int first_pointer) { csr_.emplace(a_, name_.base, first_pointer); }

private:
    static std::size_t at(i64 i) { return static_cast<std::size_t>(i); }

    SparseName name_;
    const Coordinates<T>& a_;
    T alpha_, beta_;
    i64 columns_, rows_;
    Guarded<T> x_, before_;
    std::optional<CsrArrays<T, Int>> csr_;

public:
    Guarded<T> y;
};

// check(product, name, a, op(A)*x) for every name and pattern, both widths, some factors.
template <class Check> void each_product(const std::string& form, const Check& check)
{
    int names = 0;
    for (const SparseName& name : sparse_names("csr", form)) {
        ++names;
        each_width(name.type, [&]<class T, class Int> {
            for (const auto& a : patterns<T>(name)) {
                const auto exact = Product<T, Int>(name, a, one<T>, one<T>).exact();
                for (const auto& [alpha, beta] : factors<T>()) {
                    if (testing::Test::HasFailure()) return;
                    SCOPED_TRACE(std::string(module_of<Int>) + ' ' + name.text + ", " + a.pattern);
                    Product<T, Int> product(name, a, alpha, beta);
                    check(product, name, a, exact);
                }
            }
        });
    }
    EXPECT_GT(names, 0);
}

} // namespace

TEST(CsrMv, of_every_name_is_within_the_textbook_bound)
{
    for (const char* form : {"mv", "gemv"})
        each_product(form, [](auto& product, const SparseName&, const auto& a, const auto& exact) {
            product.run(1, a.m);
            EXPECT_LE(product.worst(exact), 1);
        });
}

TEST(CsrMv, does_not_use_values_that_do_not_count)
{
    each_product("mv", []<class P>(P& product, const SparseName& name, const auto& a, const auto& exact) {
        if (product.own_rows()) return; // sums of whole rows
        const auto nan = with_nan_where_nothing_counts(name, a);
        const auto& [alpha, beta] = product.factors_of();
        const P other(name, nan, alpha, beta);
        other.run(1, a.m);
        EXPECT_LE(other.worst(exact), 1);
    });
}

TEST(CsrMv, takes_the_first_pointer_for_the_base_of_all_pointers)
{
    each_product("mv", [](auto& product, const SparseName&, const auto& a, const auto&) {
        product.run(1, a.m);
        const std::vector whole(product.y.begin(), product.y.end());
        product.restart();
        product.store(-7);
        product.run(1, a.m);
        EXPECT_TRUE(same_bits(product.y.data(), whole.data(), static_cast<i64>(whole.size())));
    });
}

TEST(CsrMv, of_parts_is_that_of_the_whole_where_rows_write_their_own_elements)
{
    each_product("mv", [](auto& product, const SparseName&, const auto& a, const auto&) {
        if (!product.own_rows()) return;
        product.run(1, a.m);
        const std::vector whole(product.y.begin(), product.y.end());
        for (const i64 step : {3, 64}) {
            product.restart();
            for (i64 first = 1; first <= a.m; first += step) product.run(first, std::min(first + step - 1, a.m));
            EXPECT_TRUE(same_bits(product.y.data(), whole.data(), static_cast<i64>(whole.size()))) << "by " << step;
        }
    });
}

TEST(CsrMv, of_parts_in_vectors_of_their_own_is_added_up_by_split_par)
{
    each_product("mv", []<template <class, class> class P, class T, class Int>(
                           P<T, Int>& product, const SparseName& name, const Coordinates<T>& a, const auto& exact) {
        if (name.run == "seq" || product.own_rows()) return;
        const P<T, Int> other(name, a, product.factors_of().first, zero<T>);
        std::vector<T> work;
        product.run(1, a.m / 3);
        for (const i64 part : {1, 2}) {
            other.run(a.m * part / 3 + 1, a.m * (part + 1) / 3);
            work.insert(work.end(), other.y.begin(), other.y.end());
        }
        add_parts<T, Int>(3, static_cast<i64>(product.y.size()), work, product.y.data());
        EXPECT_LE(product.worst(exact), 1);
    });
}

TEST(CsrMv, does_not_depend_on_the_base_of_indices)
{
    each_product("mv", [](auto& product, const SparseName& name, const auto& a, const auto&) {
        if (name.base == 1) return;
        product.run(1, a.m);
        const std::vector whole(product.y.begin(), product.y.end());
        product.restart();
        product.rename(from_one(name));
        product.run(1, a.m);
        EXPECT_TRUE(same_bits(product.y.data(), whole.data(), static_cast<i64>(whole.size())));
    });
}

namespace {

// One row of n entries times x, in double.
double row_times(const std::vector<double>& val, const std::vector<double>& x)
{
    const i64 one_row = 1, n = static_cast<i64>(val.size()), begin = 0;
    const double alpha = 1, beta = 0;
    std::vector<i64> col;
    for (i64 e = 0; e < n; ++e) col.push_back(n - 1 - e); // general rows need not be sorted
    double y = not_a_number<double>();
    kernel<kernels::spblas::dcsr0ng__c__mvout_par>()(&one_row, &one_row, &one_row, &n, &alpha, val.data(), col.data(),
                                                     &begin, &n, x.data(), &y, &beta);
    return y;
}

} // namespace

TEST(CsrMv, adds_the_entries_of_a_row_below_64_in_their_order)
{
    for (i64 n = 0; n < 64; ++n) {
        const auto val = random_elements<double>(n, 1), x = random_elements<double>(n, 2);
        double sum = 0;
        for (std::size_t e = 0; e < val.size(); ++e) sum += val[e] * x[val.size() - 1 - e];
        EXPECT_EQ(row_times(val, x), sum) << n;
    }
}

TEST(CsrMv, adds_entries_of_longer_rows_to_those_64_before_them)
{
    for (const std::size_t blocks : {1, 5, 20}) {
        // Each entry is taken off again 64 entries later: nothing is left of them if they meet in one partial sum.
        std::vector<double> val;
        for (std::size_t block = 0; block < 2 * blocks; ++block)
            for (std::size_t e = 0; e < 64; ++e)
                val.push_back(block % 2 == 0 ? random_elements<double>(64, block)[e] : -val[val.size() - 64]);
        EXPECT_EQ(row_times(val, std::vector<double>(val.size(), 1)), 0) << blocks;
    }
}
