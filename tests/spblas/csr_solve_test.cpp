// Solves with compressed rows: every name, both widths.
#include "frame/kernels/spblas.h"
#include "tests/spblas/dense.h"
#include "tests/support/probe.h"

using namespace orv;
using namespace orv::test;

namespace {

template <class T, class Int> class Solve {
public:
    Solve(SparseName name, const Coordinates<T>& a, i64 columns = 1, i64 padding = 0)
        : name_(std::move(name)), a_(a), csr_(a, name_.base, 1), y(a.m, columns, name_.by_rows(), padding)
    {
    }
    void run(i64 first = 1, i64 last = 1) const
    {
        const auto m = static_cast<Int>(a_.m);
        const auto address = kernel_address(module_of<Int>, name_.text);
        const auto& [val, col, begin, end] = csr_;
        if (name_.form == "sv")
            return reinterpret_cast<kernels::sparse::csr_sv_seq<T, Int>*>(address)(&m, &alpha, val.data(), col.data(),
                                                                                   begin.data(), end.data(), y.data());
        const Int f = static_cast<Int>(first), l = static_cast<Int>(last), ld = y.template ld<Int>();
        reinterpret_cast<kernels::sparse::csr_sm_par<T, Int>*>(address)(&f, &l, &m, &l, &alpha, val.data(), col.data(),
                                                                        begin.data(), end.data(), y.data(), &ld);
    }
    long double worst(i64 column) const
    {
        return residual(
            name_, a_, alpha, [&](i64 i) { return y(i, column); }, [&](i64 i) { return y.before(i, column); });
    }

private:
    SparseName name_;
    const Coordinates<T>& a_;
    CsrArrays<T, Int> csr_;

public:
    T alpha = factors<T>()[0].first;
    Dense<T> y;
};

template <class Check> void each_solve(const std::string& form, const Check& check)
{
    int names = 0;
    for (const SparseName& name : sparse_names("csr", form)) {
        ++names;
        each_width(name.type, [&]<class T, class Int> {
            for (const auto& a : solvable_patterns<T>(name)) {
                if (testing::Test::HasFailure()) return;
                SCOPED_TRACE(std::string(module_of<Int>) + ' ' + name.text + ", " + a.pattern);
                check.template operator()<T, Int>(name, a);
            }
        });
    }
    EXPECT_GT(names, 0);
}

} // namespace

TEST(CsrSv, of_every_name_leaves_a_small_residual)
{
    each_solve("sv", []<class T, class Int>(const SparseName& name, const auto& a) {
        const Solve<T, Int> solve(name, a);
        solve.run();
        EXPECT_LE(solve.worst(0), 1);
    });
}

TEST(CsrSm, of_every_name_leaves_a_small_residual_in_the_columns_asked_for)
{
    each_solve("sm", []<class T, class Int>(const SparseName& name, const auto& a) {
        const Solve<T, Int> solve(name, a, 5, 3);
        solve.run(2, 4);
        expect_solved(solve.y, a.m, 5, 1, 3, [&](i64 column) { return solve.worst(column); });
    });
}

TEST(CsrSv, does_not_depend_on_the_base_of_indices)
{
    each_solve("sv", []<class T, class Int>(const SparseName& name, const auto& a) {
        if (name.base == 1) return;
        const Solve<T, Int> solve(name, a), other(from_one(name), a);
        solve.run(), other.run();
        EXPECT_TRUE(same_bits(solve.y.data(), other.y.data(), a.m));
    });
}

TEST(CsrSolves, do_not_use_values_that_do_not_count)
{
    for (const char* form : {"sv", "sm"})
        each_solve(form, []<class T, class Int>(const SparseName& name, const auto& a) {
            const auto nan = with_nan_where_nothing_counts(name, a);
            const Solve<T, Int> solve(name, nan);
            solve.run();
            EXPECT_LE(solve.worst(0), 1);
        });
}

TEST(CsrSm, asks_for_one_column_on_128_bytes_and_gives_it_back)
{
    each_solve("sm", []<class T, class Int>(const SparseName& name, const auto& a) {
        const Solve<T, Int> solve(name, a, 3);
        ProbeScope scope;
        solve.run(1, 3);
        EXPECT_EQ(scope->allocations, a.m > 0 ? 1 : 0);
        EXPECT_EQ(scope->live, 0);
        for (const i64 alignment : scope->asked_alignments) EXPECT_EQ(alignment, 128);
        for (const i64 bytes : scope->asked_bytes) EXPECT_EQ(bytes, a.m * i64(sizeof(T)));
    });
}

TEST(CsrSm, solves_without_memory)
{
    each_solve("sm", []<class T, class Int>(const SparseName& name, const auto& a) {
        const Solve<T, Int> solve(name, a, 3, 1);
        ProbeScope scope;
        scope->fail_all = true;
        solve.run(1, 3);
        EXPECT_EQ(scope->failed, a.m > 0 ? 1 : 0);
        for (const i64 column : {0, 1, 2}) EXPECT_LE(solve.worst(column), 1) << column;
        EXPECT_TRUE(solve.y.padding_is_untouched());
    });
}

TEST(CsrSv, takes_off_one_sum_a_row_in_the_order_of_its_search)
{
    each_solve("sv", []<class T, class Int>(const SparseName& name, const auto& a) {
        if constexpr (!is_complex<T>) {
            if (name.kind != 't' || name.transposes()) return;
            const Solve<T, Int> solve(name, a);
            solve.run();
            std::vector<T> sum(static_cast<std::size_t>(a.m)), diagonal(sum.size(), one<T>);
            auto entries = a.entries; // in the order in which rows are solved, and in each from the far end
            if (name.triangle == 'u') std::reverse(entries.begin(), entries.end());
            const auto at = [](i64 i) { return static_cast<std::size_t>(i); };
            for (const auto& [i, j, value] : entries) {
                if (!name.keeps(i, j)) continue;
                if (i == j) diagonal[at(i)] = value;
                else sum[at(i)] += value * solve.y(j, 0);
            }
            for (i64 i = 0; i < a.m; ++i) {
                const T solved = (solve.y.before(i, 0) - sum[at(i)]) / diagonal[at(i)];
                ASSERT_EQ(solve.y(i, 0), solved) << "row " << i;
            }
        }
    });
}

TEST(CsrSv, takes_the_value_behind_a_row_without_a_diagonal)
{
    // Row 0 is (4), row 1 has only the entry left of its diagonal, and 8 stands behind it.
    const i64 m = 2, col[] = {0, 0}, begin[] = {0, 1}, end[] = {1, 2};
    const double alpha = 1, val[] = {4, 3, 8};
    double y[] = {4, 19};
    kernel<kernels::spblas::dcsr0ntlnc__svout_seq>()(&m, &alpha, val, col, begin, end, y);
    EXPECT_EQ(y[0], 1);
    EXPECT_EQ(y[1], 2);
}

TEST(CsrSv, takes_the_next_entry_of_a_row_without_a_diagonal)
{
    const i64 m = 2, col[] = {1, 0, 1}, begin[] = {0, 1}, end[] = {1, 3};
    const double alpha = 1, val[] = {4, 3, 2};
    double y[] = {4, 19};
    kernel<kernels::spblas::dcsr0ntlnc__svout_seq>()(&m, &alpha, val, col, begin, end, y);
    EXPECT_EQ(y[0], 1); // divided by the entry above the diagonal
    EXPECT_EQ(y[1], 8);
}

TEST(CsrSv, takes_the_entry_behind_the_smaller_columns_where_a_diagonal_matrix_has_none)
{
    // Row 0 begins above its diagonal, row 1 ends below it, row 2 is empty; 8 stands behind all of them.
    const i64 m = 3, col[] = {1, 2, 0}, begin[] = {0, 2, 3}, end[] = {2, 3, 3};
    const double alpha = 8, val[] = {4, 3, 5, 8};
    double y[] = {1, 2, 3};
    kernel<kernels::spblas::dcsr0nd_nc__svout_seq>()(&m, &alpha, val, col, begin, end, y);
    EXPECT_EQ(y[0], 2);
    EXPECT_EQ(y[1], 2);
    EXPECT_EQ(y[2], 3);
}
