// Products of compressed rows, with a result in compressed rows or dense, against sums that have no roundings; and the
// routines that stand beside them.
#include "tests/spblas/compressed.h"
#include "tests/spblas/dense.h"

using namespace orv;
using namespace orv::test;

namespace {

// What op(A)*B is, with the columns of each row in the order in which they are met; a: op(A) by rows.
template <class T> Entries<T> product_of(const Entries<T>& a, const Entries<T>& b)
{
    Entries<T> all;
    for (const auto& x : a)
        for (const auto& y : b) {
            if (y.i != x.j) continue;
            const auto met = [&](const auto& e) { return e.i == x.i && e.j == y.j; };
            const auto place = std::find_if(all.begin(), all.end(), met);
            if (place != all.end()) place->a += x.a * y.a;
            else all.push_back({x.i, y.j, x.a * y.a});
        }
    return all;
}
// Columns for rows; entries of a column stay in the order of their rows.
template <class T> Entries<T> by_columns(Entries<T> entries)
{
    for (auto& entry : entries) std::swap(entry.i, entry.j);
    std::stable_sort(entries.begin(), entries.end(), [](const auto& x, const auto& y) { return x.i < y.i; });
    return entries;
}

// A product C = op(A)*B of rows by n, inner terms each, of matrices in no order.
template <class T, class Int> struct Product {
    bool turned; // op(A) is A transposed
    i64 rows, inner, n;
    Entries<T> factor, other, expected;
    Csr<T, Int> a, b;

    Product(bool transposed, i64 of_c, i64 terms, i64 columns)
        : turned(transposed), rows(of_c), inner(terms), n(columns),
          factor(turned ? disorder<T>(inner, rows, 3).entries : disorder<T>(rows, inner, 3).entries),
          other(disorder<T>(inner, n, 4).entries), expected(product_of(turned ? by_columns(factor) : factor, other)),
          a(turned ? inner : rows, factor, 1), b(inner, other, 1)
    {
    }

    // mcsr_notr, mcsr_trans
    Int operator()(i64 from, i64 to, Int request, i64 before, const Csr<T, Int>& c, i64 room, Int* work = nullptr) const
    {
        const Int first = static_cast<Int>(from), last = static_cast<Int>(to), start = static_cast<Int>(before);
        const Int m = static_cast<Int>(turned ? inner : rows), columns = static_cast<Int>(n);
        const Int nzmax = static_cast<Int>(room);
        Int info = 77;
        kernel<sparse::CsrProduct<T, Int>>(module_of<Int>, letter<T>, turned ? "mcsr_trans" : "mcsr_notr")(
            &first, &last, &m, &columns, &request, &start, a.val.data(), a.col.data(), a.start.data(), b.val.data(),
            b.col.data(), b.start.data(), c.val.data(), c.col.data(), c.start.data(), &nzmax, work, &info);
        return info;
    }
    // multcsr_tr, multcsr_trom
    Int whole(const char* name, Int request, i64 block_rows, const Csr<T, Int>& c, i64 room) const
    {
        const Int m = static_cast<Int>(inner), of_c = static_cast<Int>(rows), columns = static_cast<Int>(n);
        const Int nzmax = static_cast<Int>(room), block = static_cast<Int>(block_rows);
        Int info = 77;
        kernel<sparse::CsrProductTransposed<T, Int>>(module_of<Int>, letter<T>, name)(
            &request, &m, &of_c, &columns, &block, a.val.data(), a.col.data(), a.start.data(), b.val.data(),
            b.col.data(), b.start.data(), c.val.data(), c.col.data(), c.start.data(), &nzmax, &info);
        return info;
    }
    // mcsr_trnnz
    void counts(i64 from, i64 to, const Guarded<Int>& numbers) const
    {
        const Int first = static_cast<Int>(from), last = static_cast<Int>(to);
        const Int m = static_cast<Int>(inner), columns = static_cast<Int>(n);
        kernel<sparse::CsrProductCounts<T, Int>>(module_of<Int>, letter<T>, "mcsr_trnnz")(
            &m, &columns, &first, &last, a.col.data(), a.start.data(), b.col.data(), b.start.data(), numbers.data());
    }
    Int size(i64 row) const // of row `row` of C, from 1
    {
        return static_cast<Int>(in_rows(expected, row, row).size());
    }
    // The first row, from 1, that does not fit with all before it.
    i64 row_without(i64 room) const { return expected[static_cast<std::size_t>(room)].i + 1; }
};

struct Shape {
    i64 rows, inner, n;
};
constexpr Shape shapes[] = {{0, 3, 2}, {1, 1, 1}, {3, 0, 4}, {4, 5, 0}, {7, 4, 9}, {5, 12, 3}, {23, 23, 23}};

template <class Check> void each_product(const std::vector<bool>& transposed, const Check& check)
{
    each_type([&]<class T, class Int> {
        for (const bool turned : transposed)
            for (const auto& [rows, inner, n] : shapes) check(Product<T, Int>(turned, rows, inner, n));
    });
}

} // namespace

TEST(CsrProduct, has_columns_as_they_are_met_and_needs_no_more_room_than_it_has_entries)
{
    each_product({false, true}, []<class T, class Int>(const Product<T, Int>& product) {
        const Csr<T, Int> c(product.rows, count(product.expected));
        ASSERT_EQ(product(1, product.rows, 0, 0, c, count(product.expected)), 0);
        EXPECT_EQ(c.start[0], 1);
        EXPECT_EQ(c.entries(1), product.expected) << letter<T> << product.rows << (product.turned ? 't' : 'n');
    });
}

TEST(CsrProduct, in_two_passes_is_that_of_one)
{
    each_product({false, true}, []<class T, class Int>(const Product<T, Int>& product) {
        const Csr<T, Int> c(product.rows, count(product.expected)), sizes(product.rows, 0);
        ASSERT_EQ(product(1, product.rows, 1, 0, sizes, 0), 0);
        std::copy(sizes.start.begin(), sizes.start.end(), c.start.begin());
        ASSERT_EQ(product(1, product.rows, 2, 99, c, 0), 0) << "neither start nor room are read";
        EXPECT_EQ(c.entries(1), product.expected);
        EXPECT_TRUE(std::equal(c.start.begin(), c.start.end(), sizes.start.begin()));
    });
}

TEST(CsrProduct, of_parts_is_that_of_the_whole)
{
    each_product({false, true}, []<class T, class Int>(const Product<T, Int>& product) {
        const i64 cut = product.rows / 3, room = count(product.expected);
        const Csr<T, Int> c(product.rows, room);
        const i64 before = count(in_rows(product.expected, 1, cut));
        ASSERT_EQ(product(cut + 1, product.rows, 0, before, c, room), 0);
        EXPECT_TRUE(untouched_but(c.start, static_cast<Int>(cut + 1), static_cast<Int>(product.rows)));
        ASSERT_EQ(product(1, cut, 0, 0, c, room), 0);
        EXPECT_EQ(c.entries(1), product.expected);
    });
}

TEST(CsrProduct, tells_the_row_without_room_and_leaves_the_rows_before_it)
{
    each_product({false, true}, []<class T, class Int>(const Product<T, Int>& product) {
        const i64 all = count(product.expected);
        for (const i64 room : {all - 1, all / 2, i64{0}}) {
            if (room < 0 || room == all) continue;
            const Csr<T, Int> c(product.rows, room);
            const i64 row = product.row_without(room);
            ASSERT_EQ(product(1, product.rows, 0, 0, c, room), row);
            EXPECT_EQ(c.entries(1), in_rows(product.expected, 1, row - 1));
        }
    });
}

TEST(CsrProduct, works_in_the_markers_that_it_is_given_or_asks_for_them)
{
    each_product({false, true}, []<class T, class Int>(const Product<T, Int>& product) {
        const i64 room = count(product.expected);
        const auto bytes = product.n * static_cast<i64>(sizeof(Int));
        for (const Int request : {0, 1}) {
            const Csr<T, Int> c(product.rows, room), d(product.rows, room);
            const Guarded<Int> work(static_cast<std::size_t>(product.n));
            ProbeScope probe;
            ASSERT_EQ(product(1, product.rows, request, 0, c, room), 0);
            const auto asked = probe->asked_bytes.size();
            EXPECT_EQ(asked, product.turned ? 2u : 1u);
            EXPECT_GE(probe->asked_bytes.back(), (request == 1 ? 2 : 1) * bytes);
            ASSERT_EQ(product(1, product.rows, request, 0, d, room, work.data()), 0);
            EXPECT_EQ(probe->asked_bytes.size(), asked + (product.turned ? 1 : 0));
            EXPECT_EQ(probe->live, 0);
            EXPECT_TRUE(std::equal(c.start.begin(), c.start.end(), d.start.begin()));
        }
    });
}

TEST(CsrProduct, writes_nothing_without_memory)
{
    each_product({false, true}, []<class T, class Int>(const Product<T, Int>& product) {
        const i64 room = count(product.expected);
        for (const i64 fails : {0, 1}) {
            if (fails == 1 && !product.turned) continue;
            const Csr<T, Int> c(product.rows, room);
            ProbeScope probe;
            probe->fail_at = fails;
            EXPECT_EQ(product(1, product.rows, 0, 0, c, room), -1);
            EXPECT_EQ(probe->live, 0);
            EXPECT_TRUE(c.is_untouched());
        }
    });
}

TEST(CsrProductCounts, are_the_entries_of_each_row_with_and_without_memory)
{
    each_product({true}, []<class T, class Int>(const Product<T, Int>& product) {
        for (const i64 fails : {-1, 0, 1}) {
            const Guarded<Int> numbers(static_cast<std::size_t>(product.rows));
            const i64 first = product.rows / 4 + 1, last = product.rows - product.rows / 4;
            ProbeScope probe;
            probe->fail_at = fails;
            product.counts(first, last, numbers);
            EXPECT_EQ(probe->live, 0);
            for (i64 row = 1; row <= product.rows; ++row)
                EXPECT_EQ(numbers[static_cast<std::size_t>(row - 1)],
                          row < first || row > last ? Int{-1} : product.size(row));
        }
    });
}

TEST(CsrProductByBlocks, is_the_product_whatever_the_block)
{
    each_product({true}, []<class T, class Int>(const Product<T, Int>& product) {
        const i64 all = count(product.expected);
        for (const i64 block : {1, 2, 5, 100, 0, -1})
            for (const Int request : {0, 2}) {
                const Csr<T, Int> c(product.rows, all);
                ASSERT_EQ(product.whole("multcsr_tr", request, block, c, request == 0 ? all : 0), 0);
                EXPECT_EQ(c.entries(1), product.expected) << block;
                if (all == 0 || request == 2) continue;
                const Csr<T, Int> less(product.rows, all - 1);
                const i64 row = product.row_without(all - 1);
                ASSERT_EQ(product.whole("multcsr_tr", request, block, less, all - 1), row);
                EXPECT_EQ(less.entries(1), in_rows(product.expected, 1, row - 1));
            }
    });
}

TEST(CsrProductByBlocks, refuses_to_count)
{
    each_product({true}, []<class T, class Int>(const Product<T, Int>& product) {
        const Csr<T, Int> c(product.rows, count(product.expected));
        for (const Int request : {1, 3, -1})
            EXPECT_EQ(product.whole("multcsr_tr", request, 2, c, count(product.expected)), 77) << "info is left";
        EXPECT_TRUE(c.is_untouched());
    });
}

TEST(CsrProductByBlocks, keeps_the_rows_that_were_done_when_there_is_no_more_memory)
{
    each_type([]<class T, class Int> {
        const Product<T, Int> product(true, 23, 23, 23);
        const Csr<T, Int> c(23, count(product.expected));
        ProbeScope probe;
        probe->fail_at = 2; // the markers, then the columns of a block of ten, then those of the next
        EXPECT_EQ(product.whole("multcsr_tr", 0, 10, c, count(product.expected)), -1);
        EXPECT_EQ(probe->live, 0);
        EXPECT_EQ(c.entries(1), in_rows(product.expected, 1, 10));
    });
}

TEST(CsrProductSorted, has_sorted_rows_and_gives_back_its_first_array_when_the_second_fails)
{
    each_product({true}, []<class T, class Int>(const Product<T, Int>& product) {
        const i64 all = count(product.expected);
        for (const Int request : {0, 2}) {
            const Csr<T, Int> c(product.rows, all);
            ASSERT_EQ(product.whole("multcsr_trom", request, 0, c, request == 0 ? all : 0), 0);
            EXPECT_EQ(c.entries(1), sorted(product.expected));
        }
        const Csr<T, Int> sizes(product.rows, 0), none(product.rows, all);
        ASSERT_EQ(product.whole("multcsr_trom", 1, 0, sizes, 0), 0);
        for (i64 row = 1; row <= product.rows; ++row) {
            const auto i = static_cast<std::size_t>(row);
            EXPECT_EQ(sizes.start[i] - sizes.start[i - 1], product.size(row));
        }
        for (const i64 fails : {0, 1}) {
            ProbeScope probe;
            probe->fail_at = fails;
            EXPECT_EQ(product.whole("multcsr_trom", 0, 0, none, all), -1);
            EXPECT_EQ(probe->live, 0);
            EXPECT_TRUE(none.is_untouched());
        }
        if (all == 0) return;
        const Csr<T, Int> less(product.rows, all - 1);
        const i64 row = product.row_without(all - 1);
        ASSERT_EQ(product.whole("multcsr_trom", 0, 0, less, all - 1), row);
        EXPECT_EQ(less.entries(1), sorted(in_rows(product.expected, 1, row - 1)));
    });
}

TEST(CsrProductDense, of_parts_is_that_of_the_whole_in_both_orders)
{
    each_product({false, true}, []<class T, class Int>(const Product<T, Int>& product) {
        for (const bool by_rows : {true, false}) {
            const Dense<T> c(product.rows, product.n, by_rows, 3);
            const Int op = product.turned ? 1 : 0, n = static_cast<Int>(product.n), ldc = c.template ld<Int>();
            if (product.turned) // is added
                for (i64 i = 0; i < product.rows; ++i)
                    for (i64 j = 0; j < product.n; ++j) c(i, j) = zero<T>;
            // Rows of A: of C, too, unless A is transposed.
            const Int all = static_cast<Int>(product.turned ? product.inner : product.rows), middle = all / 2;
            const auto multiply = [&](Int first, Int last) {
                kernel<sparse::CsrProductDense<T, Int>>(module_of<Int>, letter<T>,
                                                        by_rows ? "csrmultd_ker" : "csrmultd_ker_t")(
                    &op, &first, &last, &n, product.a.val.data(), product.a.col.data(), product.a.start.data(),
                    product.b.val.data(), product.b.col.data(), product.b.start.data(), c.data(), &ldc);
            };
            multiply(middle + 1, all);
            for (i64 i = 0; i < (product.turned ? 0 : middle); ++i)
                for (i64 j = 0; j < n; ++j) EXPECT_EQ(c(i, j), c.before(i, j));
            multiply(1, middle);
            Entries<T> got;
            for (i64 i = 0; i < product.rows; ++i)
                for (i64 j = 0; j < n; ++j) got.push_back({i, j, c(i, j)});
            EXPECT_EQ(without_zeros(got), without_zeros(sorted(product.expected)));
            EXPECT_TRUE(c.padding_is_untouched());
        }
    });
}

TEST(Matcopy, scales_by_columns_and_does_not_read_what_alpha_zero_drops)
{
    each_type([]<class T, class Int> {
        for (const i64 m : {0, 1, 12, 13, 14, 33})
            for (const i64 n : {0, 1, 3})
                for (const T alpha : {zero<T>, one<T>, factors<T>()[0].first}) {
                    const Dense<T> a(m, n, false, 1, alpha == zero<T>), b(m, n, false, 2, true);
                    const Int rows = static_cast<Int>(m), columns = static_cast<Int>(n);
                    const Int lda = a.template ld<Int>(), ldb = b.template ld<Int>();
                    kernel<sparse::Matcopy<T, Int>>(module_of<Int>, letter<T>, "matcopy")(&rows, &columns, a.data(),
                                                                                          &lda, b.data(), &ldb, &alpha);
                    for (i64 i = 0; i < m; ++i)
                        for (i64 j = 0; j < n; ++j) {
                            const T expected = alpha == zero<T> ? zero<T> : alpha * a(i, j);
                            EXPECT_TRUE(same_bits(&b(i, j), &expected, 1)) << m << ' ' << i;
                        }
                    EXPECT_TRUE(b.padding_is_untouched());
                }
    });
}

TEST(Matcopy, goes_element_by_element_where_the_two_overlap)
{
    each_type([]<class T, class Int> {
        for (const std::size_t ahead : {0u, 1u, 2u, 5u}) {
            const auto before = random_elements<T>(60, 5);
            auto elements = before, expected = before;
            const T alpha = factors<T>()[0].first;
            const Int m = 20, n = 2, lda = 22, ldb = 25;
            for (std::size_t j = 0; j < 2; ++j)
                for (std::size_t i = 0; i < 20; ++i) expected[ahead + i + 25 * j] = alpha * expected[i + 22 * j];
            kernel<sparse::Matcopy<T, Int>>(module_of<Int>, letter<T>, "matcopy")(
                &m, &n, elements.data(), &lda, elements.data() + ahead, &ldb, &alpha);
            EXPECT_TRUE(same_bits(elements.data(), expected.data(), 60)) << ahead;
        }
    });
}

namespace {

// L, below its diagonal and by columns, with whole numbers, and D of powers of two: what is multiplied is solved
// exactly.
template <class Int> struct Factor {
    static constexpr std::size_t n = 70;
    std::vector<double> a, d;
    std::vector<Int> ja, ia{1};

    Factor()
    {
        Random random(12);
        for (std::size_t j = 0; j < n; ++j) {
            for (std::size_t i = j + 1; i < n && i < j + 14; ++i)
                if (random.integer(0, 2) == 0) {
                    a.push_back(static_cast<double>(random.integer(-1, 1)));
                    ja.push_back(static_cast<Int>(i + 1));
                }
            ia.push_back(static_cast<Int>(a.size()) + 1);
            d.push_back(random.integer(0, 1) == 0 ? 0.5 : -2.0);
        }
    }
    // L*D*L' times x; columns that are left out are empty.
    std::vector<double> times(std::vector<double> x, const std::vector<bool>& left_out) const
    {
        const auto each = [&](std::size_t j, const auto& act) {
            if (!left_out[j])
                for (Int p = ia[j]; p < ia[j + 1]; ++p)
                    act(a[static_cast<std::size_t>(p - 1)],
                        static_cast<std::size_t>(ja[static_cast<std::size_t>(p - 1)] - 1));
        };
        for (std::size_t j = 0; j < n; ++j) each(j, [&](double l, std::size_t i) { x[j] += l * x[i]; });
        for (std::size_t j = 0; j < n; ++j) x[j] *= d[j];
        for (std::size_t j = n; j-- > 0;) each(j, [&](double l, std::size_t i) { x[i] += l * x[j]; });
        return x;
    }
};

template <class Int> void expect_factor_solves()
{
    const Factor<Int> f;
    std::vector<double> x;
    for (std::size_t i = 0; i < f.n; ++i) x.push_back(static_cast<double>(i % 7) - 3);
    const Int n = f.n;
    const std::vector<bool> none(f.n);
    std::vector<bool> some(f.n);
    for (std::size_t j = 0; j < f.n; ++j) some[j] = j % 3 == 1 || j == 31 || j == 63;
    i32 flags[3] = {};
    for (std::size_t j = 0; j < f.n; ++j)
        if (some[j]) flags[j / 32] = static_cast<i32>(static_cast<std::uint32_t>(flags[j / 32]) | 1u << j % 32);

    auto y = f.times(x, none);
    kernel<sparse::FactorSolve<Int>>(module_of<Int>, "dcscgss")(&n, f.a.data(), f.ja.data(), f.ia.data(), f.d.data(),
                                                                y.data());
    EXPECT_EQ(y, x);
    const auto flagged = [&](std::vector<double> right, Int request) {
        kernel<sparse::FlaggedFactorSolve<Int>>(module_of<Int>, "orv_ildlt_sv")(
            &n, f.a.data(), f.ja.data(), f.ia.data(), flags, f.d.data(), right.data(), &request);
        return right;
    };
    EXPECT_EQ(flagged(f.times(x, some), 0), x);
    EXPECT_EQ(flagged(f.times(x, none), 2), x) << "flags are not read";
    EXPECT_EQ(flagged(f.times(x, none), -1), x);
    EXPECT_EQ(flagged(x, 1), x) << "nothing is done";
}

} // namespace

TEST(FactorSolve, undoes_a_product_with_the_factors_and_leaves_flagged_columns_out)
{
    expect_factor_solves<i64>();
    expect_factor_solves<i32>();
}

TEST(SparseMemory, comes_from_the_service_layer_on_128_bytes_and_none_is_null)
{
    for (const char* module : {"spblas", "spblas_lp64"}) {
        auto* take = kernel<sparse::TakeMemory>(module, "spmalloc");
        auto* give = kernel<sparse::GiveMemory>(module, "spfree");
        ProbeScope probe;
        EXPECT_EQ(take(0), nullptr);
        EXPECT_EQ(probe->allocations, 0);
        void* block = take(1000);
        EXPECT_EQ(probe->asked_bytes, std::vector<i64>{1000});
        EXPECT_EQ(probe->asked_alignments, std::vector<i64>{128});
        EXPECT_EQ(probe->live, 1);
        give(block);
        EXPECT_EQ(probe->live, 0);
    }
}
