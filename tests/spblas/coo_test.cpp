// Products and solves with coordinates: every name, both widths.
#include "frame/kernels/spblas.h"
#include "tests/spblas/dense.h"
#include "tests/support/probe.h"

#include <random>

using namespace orv;
using namespace orv::test;

namespace {

namespace sparse = kernels::sparse;

template <class T, class Int> struct Arrays {
    Guarded<T> val;
    Guarded<Int> row, col;
    Arrays(const Coordinates<T>& a, int base) : val(a.entries.size()), row(val.size()), col(val.size())
    {
        for (std::size_t e = 0; e < val.size(); ++e) {
            val[e] = a.entries[e].a;
            row[e] = static_cast<Int>(a.entries[e].i + base), col[e] = static_cast<Int>(a.entries[e].j + base);
        }
    }
    Int count() const { return static_cast<Int>(val.size()); }
};

// In no order, and some entries beside the diagonal twice.
template <class T> std::vector<Coordinates<T>> shuffled(std::vector<Coordinates<T>> all)
{
    std::mt19937_64 engine(11);
    for (auto& a : all) {
        for (std::size_t e = 0, n = a.entries.size(); e < n; e += 5)
            if (a.entries[e].i != a.entries[e].j) a.entries.push_back(a.entries[e]);
        std::shuffle(a.entries.begin(), a.entries.end(), engine);
    }
    return all;
}

// A call of any product or solve: y is read and written, from first to last.
template <class T, class Int> class Call {
public:
    Call(const SparseName& name, const Coordinates<T>& a, i64 columns, i64 padding)
        : name_(name), a_(a), columns_(columns), coo_(a, name.base), x(a.k, columns, name.by_rows(), padding),
          y(a.m, columns, name.by_rows(), padding)
    {
    }
    i64 entries() const { return static_cast<i64>(a_.entries.size()); }

    void run(i64 first, i64 last) const
    {
        const auto address = kernel_address(module_of<Int>, name_.text);
        const Int f = static_cast<Int>(first), l = static_cast<Int>(last), m = static_cast<Int>(a_.m),
                  k = static_cast<Int>(a_.k), nd = static_cast<Int>(columns_), nnz = coo_.count(),
                  ldx = x.template ld<Int>(), ldy = y.template ld<Int>();
        const auto& [val, row, col] = coo_;
        if (name_.form == "sv")
            reinterpret_cast<sparse::coo_sv_seq<T, Int>*>(address)(&m, &alpha, val.data(), row.data(), col.data(), &nnz,
                                                                   y.data());
        else if (name_.form == "sm")
            reinterpret_cast<sparse::coo_sm_par<T, Int>*>(address)(&f, &l, &m, &nd, &alpha, val.data(), row.data(),
                                                                   col.data(), &nnz, y.data(), &ldy);
        else if (name_.form == "mm")
            reinterpret_cast<sparse::coo_mm_par<T, Int>*>(address)(&f, &l, &m, &nd, &alpha, val.data(), row.data(),
                                                                   col.data(), &nnz, x.data(), &ldx, y.data(), &ldy);
        else if (name_.run == "seq")
            reinterpret_cast<sparse::coo_mv_seq<T, Int>*>(address)(&m, &k, &alpha, val.data(), row.data(), col.data(),
                                                                   &nnz, x.data(), y.data());
        else if (name_.kind == 'g') { // a part is arrays of its own
            const Int count = l - f + 1, at = f - 1;
            reinterpret_cast<sparse::coo_mv_par<T, Int>*>(address)(nullptr, nullptr, &m, &k, &alpha, val.data() + at,
                                                                   row.data() + at, col.data() + at, &count, x.data(),
                                                                   y.data());
        } else
            reinterpret_cast<sparse::coo_mv_par<T, Int>*>(address)(&f, &l, &m, &k, &alpha, val.data(), row.data(),
                                                                   col.data(), &nnz, x.data(), y.data());
    }

    // Of a product: op(A) without ones in a triangle, which the caller adds.
    long double error() const
    {
        SparseName name = name_;
        auto all = meant(name, a_);
        if (name.unit() && name.kind != 'd') std::erase_if(all, [](const auto& entry) { return entry.i == entry.j; });
        long double worst = 0;
        std::vector<WideSum> sums(static_cast<std::size_t>(a_.m));
        for (i64 c = 0; c < columns_; ++c) {
            for (i64 i = 0; i < a_.m; ++i) {
                sums[static_cast<std::size_t>(i)] = {};
                sums[static_cast<std::size_t>(i)].add(y.before(i, c));
            }
            for (const auto& [i, j, a] : all) sums[static_cast<std::size_t>(i)].add(alpha, a, x(j, c));
            for (i64 i = 0; i < a_.m; ++i) {
                keep_worst(worst, sums[static_cast<std::size_t>(i)].excess(y(i, c)));
            }
        }
        return worst;
    }
    long double residual_of(i64 column) const
    {
        return residual(
            name_, a_, alpha, [&](i64 i) { return y(i, column); }, [&](i64 i) { return y.before(i, column); });
    }

private:
    SparseName name_;
    const Coordinates<T>& a_;
    i64 columns_;
    Arrays<T, Int> coo_;

public:
    T alpha = factors<T>()[0].first;
    Dense<T> x, y;
};

template <class Check> void each_name(const std::string& form, const Check& check)
{
    int names = 0;
    const bool solves = form[0] == 's';
    for (const SparseName& name : sparse_names("coo", form)) {
        ++names;
        each_width(name.type, [&]<class T, class Int> {
            for (const auto& a : shuffled(solves ? solvable_patterns<T>(name) : patterns<T>(name))) {
                if (testing::Test::HasFailure()) return;
                SCOPED_TRACE(std::string(module_of<Int>) + ' ' + name.text + ", " + a.pattern);
                check.template operator()<T, Int>(name, a);
            }
        });
    }
    EXPECT_GT(names, 0);
}

bool form_solves(const SparseName& name) { return name.form[0] == 's'; }

} // namespace

TEST(CooMv, of_every_name_is_within_the_textbook_bound)
{
    each_name("mv", []<class T, class Int>(const SparseName& name, const auto& a) {
        const Call<T, Int> call(name, a, 1, 0);
        call.run(1, call.entries());
        EXPECT_LE(call.error(), 1);
    });
}

TEST(CooMm, of_every_name_is_within_the_textbook_bound)
{
    each_name("mm", []<class T, class Int>(const SparseName& name, const auto& a) {
        const Call<T, Int> call(name, a, 5, 2);
        call.run(1, name.kind == 'd' && name.unit() ? a.m : call.entries());
        EXPECT_LE(call.error(), 1);
        EXPECT_TRUE(call.y.padding_is_untouched());
    });
}

TEST(CooProducts, of_parts_one_after_the_other_have_the_bits_of_the_whole)
{
    for (const char* form : {"mv", "mm"})
        each_name(form, []<class T, class Int>(const SparseName& name, const auto& a) {
            if (name.run == "seq") return;
            Call<T, Int> call(name, a, name.form == "mv" ? 1 : 3, 0);
            const i64 end = name.kind == 'd' && name.unit() ? a.m : call.entries();
            call.run(1, end);
            const auto whole = call.y.copy();
            call.y.restart();
            for (i64 first = 1; first <= end; first += 37) call.run(first, std::min(first + 36, end));
            EXPECT_TRUE(call.y.same_as(whole));
        });
}

TEST(CooProducts, of_parts_in_vectors_of_their_own_are_added_up_by_split_par)
{
    each_name("mv", []<class T, class Int>(const SparseName& name, const auto& a) {
        if (name.run == "seq") return;
        const Call<T, Int> first(name, a, 1, 0), other(name, a, 1, 0);
        const i64 end = first.entries();
        std::vector<T> work;
        for (int part = 0; part < 3; ++part) {
            const Call<T, Int>& call = part == 0 ? first : other;
            if (part > 0) std::fill_n(other.y.data(), a.m, zero<T>);
            call.run(end * part / 3 + 1, end * (part + 1) / 3);
            if (part > 0) work.insert(work.end(), other.y.data(), other.y.data() + a.m);
        }
        add_parts<T, Int>(3, a.m, work, first.y.data());
        EXPECT_LE(first.error(), 1);
    });
}

TEST(CooNames, do_not_depend_on_the_base_of_indices)
{
    for (const char* form : {"mv", "sv"})
        each_name(form, []<class T, class Int>(const SparseName& name, const auto& a) {
            if (name.base == 1) return;
            const Call<T, Int> call(name, a, 1, 0), other(from_one(name), a, 1, 0);
            call.run(1, call.entries());
            other.run(1, call.entries());
            EXPECT_TRUE(same_bits(call.y.data(), other.y.data(), a.m));
        });
}

TEST(CooNames, do_not_use_values_that_do_not_count)
{
    for (const char* form : {"mv", "mm", "sv", "sm"})
        each_name(form, []<class T, class Int>(const SparseName& name, const auto& a) {
            const auto nan = with_nan_where_nothing_counts(name, a);
            const Call<T, Int> call(name, nan, 1, 0);
            call.run(1, form_solves(name) ? 1 : name.kind == 'd' && name.unit() ? a.m : call.entries());
            EXPECT_LE(form_solves(name) ? call.residual_of(0) : call.error(), 1);
        });
}

TEST(CooMv, adds_in_the_order_of_the_entries)
{
    const i64 row[] = {0, 0, 0}, col[] = {0, 0, 0}, nnz = 3, n = 1;
    const double val[] = {0x1p60, 1, -0x1p60}, x = 1, alpha = 1;
    double y = 0;
    kernel<kernels::spblas::dcoo0ng__c__mvout_par>()(nullptr, nullptr, &n, &n, &alpha, val, row, col, &nnz, &x, &y);
    EXPECT_EQ(y, 0); // the 1 is lost in between
}

TEST(CooSv, of_every_name_leaves_a_small_residual)
{
    each_name("sv", []<class T, class Int>(const SparseName& name, const auto& a) {
        const Call<T, Int> call(name, a, 1, 0);
        call.run(1, 1);
        EXPECT_LE(call.residual_of(0), 1);
    });
}

TEST(CooSm, of_every_name_leaves_a_small_residual_in_the_columns_asked_for)
{
    each_name("sm", []<class T, class Int>(const SparseName& name, const auto& a) {
        const Call<T, Int> call(name, a, 5, 3);
        call.run(2, 4);
        expect_solved(call.y, a.m, 5, 1, 3, [&](i64 column) { return call.residual_of(column); });
    });
}

TEST(CooSolves, give_the_same_whichever_allocation_fails)
{
    for (const char* form : {"sv", "sm"})
        each_name(form, []<class T, class Int>(const SparseName& name, const auto& a) {
            if (a.m > 100) return; // the way without memory is slow
            Call<T, Int> call(name, a, 1, 0);
            each_allocation_fails([&] { call.y.restart(), call.run(1, 1); },
                                  [&] { EXPECT_LE(call.residual_of(0), 1); });
        });
}

TEST(CooSolves, ask_for_memory_on_128_bytes)
{
    each_name("sv", []<class T, class Int>(const SparseName& name, const auto& a) {
        const Call<T, Int> call(name, a, 1, 0);
        ProbeScope scope;
        call.run(1, 1);
        EXPECT_EQ(scope->live, 0);
        for (const i64 alignment : scope->asked_alignments) EXPECT_EQ(alignment, 128);
    });
}

TEST(CooSolves, take_the_last_diagonal_of_a_row_and_add_all_others_up)
{
    // Row 1: 3 and 2 left of the diagonal, 7 and then 4 on it.
    const i64 m = 2, nnz = 5, row[] = {1, 1, 0, 1, 1}, col[] = {0, 1, 0, 0, 1};
    const double alpha = 1, val[] = {3, 7, 2, 2, 4};
    for (const bool memory : {true, false}) {
        ProbeScope scope;
        scope->fail_all = !memory;
        double y[] = {2, 13};
        kernel<kernels::spblas::dcoo0ntlnc__svout_seq>()(&m, &alpha, val, row, col, &nnz, y);
        EXPECT_EQ(y[0], 1);
        EXPECT_EQ(y[1], 2);
        double z[] = {3, 8};
        kernel<kernels::spblas::dcoo0nd_nc__svout_seq>()(&m, &alpha, val, row, col, &nnz, z);
        EXPECT_EQ(z[0], 1.5);
        EXPECT_EQ(z[1], 2);
    }
}

TEST(CooSv, of_ones_and_no_entry_leaves_y_alone)
{
    const i64 m = 2, nnz = 0;
    const double alpha = 3;
    double y[] = {5, 6};
    kernel<kernels::spblas::dcoo0ntluc__svout_seq>()(&m, &alpha, nullptr, nullptr, nullptr, &nnz, y);
    EXPECT_EQ(y[0], 5);
    EXPECT_EQ(y[1], 6);
}

namespace {
template <class Int> void expect_lists(const std::string& prefix, Int base)
{
    const Int m = 3, nnz = 6;
    std::vector<Int> row{2, 0, 2, 1, 2, 0}, col{0, 0, 1, 1, 2, 2};
    for (auto* indices : {&row, &col})
        for (Int& index : *indices) index += base;
    for (const std::string form : {"ln", "lu", "un", "uu"}) {
        const bool lower = form[0] == 'l', unit = form[1] == 'u';
        std::vector<Int> diag(3, -1), count(3, -1), list(6, -1);
        Int flag = -5;
        auto* fill = kernel<sparse::FillRows<Int>>(module_of<Int>, prefix, form);
        fill(&m, row.data(), col.data(), &nnz, diag.data(), count.data(), list.data(), &flag);
        EXPECT_EQ(flag, 0);
        EXPECT_EQ(diag, unit ? std::vector<Int>({0, 0, 0}) : std::vector<Int>({1, 3, 4}));
        EXPECT_EQ(count, lower ? std::vector<Int>({0, 0, 2}) : std::vector<Int>({1, 1, 1}));
        EXPECT_EQ(list[0], lower ? 0 : 5);
        EXPECT_EQ(list[1], lower ? 2 : -1);
        ProbeScope scope;
        scope->fail_all = true;
        fill(&m, row.data(), col.data(), &nnz, diag.data(), count.data(), list.data(), &flag);
        EXPECT_EQ(flag, 1);
    }
}
} // namespace

TEST(CooFill, lists_the_entries_of_each_row_in_their_order)
{
    expect_lists<i64>("scoofill_0coo2csr_data_", 0);
    expect_lists<i64>("scoofill_coo2csr_data_", 1);
    expect_lists<i32>("scoofill_0coo2csr_data_", 0);
    expect_lists<i32>("scoofill_coo2csr_data_", 1);
}
