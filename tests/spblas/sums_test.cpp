// Sums of compressed rows, against sums over entries that have no roundings.
#include "tests/spblas/compressed.h"

using namespace orv;
using namespace orv::test;

namespace {

template <class T> T whole_factor() // with all parts
{
    if constexpr (is_complex<T>) return {2, -1};
    else return -2;
}
template <class T> Entries<T> times(T factor, Entries<T> entries)
{
    for (auto& entry : entries) entry.a = factor * entry.a;
    return entries;
}
template <class T, class Int> struct Sum {
    bool transposed;
    Int first, last, sort;
    const Csr<T, Int>&a, &b;

    Int operator()(const Csr<T, Int>& c, i64 room, i64 m, i64 n) const
    {
        const Int rows = static_cast<Int>(m), columns = static_cast<Int>(n), nzmax = static_cast<Int>(room);
        const T beta = whole_factor<T>();
        Int info = 77;
        kernel<sparse::CsrAdd<T, Int>>(module_of<Int>, letter<T>, transposed ? "mcsradd_tr" : "mcsradd_notr")(
            &first, &last, &sort, &rows, &columns, a.val.data(), a.col.data(), a.start.data(), &beta, b.val.data(),
            b.col.data(), b.start.data(), c.val.data(), c.col.data(), c.start.data(), &nzmax, &info);
        return info;
    }
};

constexpr std::pair<i64, i64> shapes[] = {{0, 4}, {1, 1}, {4, 7}, {17, 5}, {23, 23}};

// Each sum, of matrices in no order: check(sum, entries of A, of op(B), shape). B is stored transposed where that is
// asked.
template <class Check> void each_sum(const Check& check)
{
    each_type([&]<class T, class Int> {
        for (const bool turned : {false, true})
            for (const auto& [m, n] : shapes)
                for (const auto& [first, last] : {std::pair<i64, i64>{1, m}, {m / 3 + 1, m - m / 4}, {2, 1}}) {
                    if (first > m + 1) continue;
                    const auto a = disorder<T>(m, n, 1).entries;
                    const auto b = (turned ? disorder<T>(n, m, 2) : disorder<T>(m, n, 2)).entries;
                    const Csr<T, Int> as(m, a, 1), bs(turned ? n : m, b, 1);
                    const Sum<T, Int> sum{turned, static_cast<Int>(first), static_cast<Int>(last), 3, as, bs};
                    check(sum, a, turned ? transposed(b) : b, m, n);
                }
    });
}
// What is known of a sum of matrices with several entries of one place: its sums.
template <class T> Entries<T> sum_of(const Entries<T>& a, const Entries<T>& b)
{
    auto all = a;
    for (const auto& entry : times(whole_factor<T>(), b)) all.push_back(entry);
    return added_up(all);
}

} // namespace

TEST(CsrAdd, of_rows_in_no_order_is_the_sum_in_sorted_rows_when_sorting_is_asked_for)
{
    each_sum([]<class T, class Int>(const Sum<T, Int>& sum, const Entries<T>& a, const Entries<T>& b, i64 m, i64 n) {
        const Csr<T, Int> c(m, count(a) + count(b));
        ASSERT_EQ(sum(c, count(a) + count(b), m, n), 0);
        EXPECT_TRUE(untouched_but(c.start, sum.first, sum.last));
        EXPECT_EQ(c.start[static_cast<std::size_t>(sum.first - 1)], 1);
        const auto got = rows_of(c, sum.first, sum.last);
        EXPECT_EQ(added_up(got), in_rows(sum_of(a, b), sum.first, sum.last));
        EXPECT_TRUE(std::is_sorted(got.begin(), got.end(), [](const auto& x, const auto& y) {
            return std::pair(x.i, x.j) < std::pair(y.i, y.j);
        }));
        // A is sorted in the rows of the call, B too where it is not transposed; nothing else of them changes.
        const auto sorted_rows = [&](const Entries<T>& entries) {
            auto expected = entries;
            std::stable_sort(expected.begin(), expected.end(), [&](const auto& x, const auto& y) {
                const bool inside = x.i >= sum.first - 1 && x.i < sum.last;
                return std::pair(x.i, inside && x.i == y.i ? x.j : 0) < std::pair(y.i, inside && x.i == y.i ? y.j : 0);
            });
            return expected;
        };
        EXPECT_EQ(sum.a.entries(1), sorted_rows(a));
        if (!sum.transposed) {
            EXPECT_EQ(sum.b.entries(1), sorted_rows(b));
        } else {
            EXPECT_EQ(transposed(sum.b.entries(1)), b);
        }
    });
}

TEST(CsrAdd, has_one_entry_for_each_place_of_either_matrix_even_if_they_cancel)
{
    each_sum([]<class T, class Int>(const Sum<T, Int>& sum, const Entries<T>& a_, const Entries<T>& b_, i64 m, i64 n) {
        const auto a = added_up(a_), b = added_up(b_); // places once, sorted
        const Csr<T, Int> as(m, a, 1), bs(sum.transposed ? n : m, sum.transposed ? transposed(b) : b, 1);
        const auto expected = in_rows(sum_of(a, b), sum.first, sum.last);
        const Csr<T, Int> c(m, count(expected)); // which is all the room that it needs
        const Sum<T, Int> of_sorted{sum.transposed, sum.first, sum.last, 0, as, bs};
        ASSERT_EQ(of_sorted(c, count(expected), m, n), 0);
        EXPECT_EQ(rows_of(c, sum.first, sum.last), expected);
        if (!sum.transposed) return;
        const Csr<T, Int> places(m, 0);
        const Int rows = static_cast<Int>(m), columns = static_cast<Int>(n);
        kernel<sparse::CsrAddPlaces<T, Int>>(module_of<Int>, letter<T>, "mcsradd_gloc")(
            &sum.first, &sum.last, &rows, &columns, as.col.data(), as.start.data(), bs.col.data(), bs.start.data(),
            places.start.data());
        for (std::size_t i = 0; i < c.start.size(); ++i) EXPECT_EQ(places.start[i], c.start[i]);
    });
}

TEST(CsrAdd, tells_the_row_without_room_and_leaves_the_rows_before_it)
{
    each_sum([]<class T, class Int>(const Sum<T, Int>& sum, const Entries<T>& a_, const Entries<T>& b_, i64 m, i64 n) {
        const auto a = added_up(a_), b = added_up(b_);
        const Csr<T, Int> as(m, a, 1), bs(sum.transposed ? n : m, sum.transposed ? transposed(b) : b, 1);
        const auto expected = in_rows(sum_of(a, b), sum.first, sum.last);
        for (const i64 room : {count(expected) - 1, count(expected) / 2, i64{0}}) {
            if (room < 0 || room == count(expected)) continue;
            const Csr<T, Int> c(m, room);
            const i64 row = expected[static_cast<std::size_t>(room)].i + 1;
            const Sum<T, Int> of_sorted{sum.transposed, sum.first, sum.last, 0, as, bs};
            ASSERT_EQ(of_sorted(c, room, m, n), row);
            EXPECT_EQ(rows_of(c, sum.first, sum.last), in_rows(expected, sum.first, row - 1));
        }
    });
}
