// Coordinates, compressed columns and dense matrices: every value of job, in both directions.
#include "tests/spblas/compressed.h"

using namespace orv;
using namespace orv::test;

namespace {

template <class T, class Int> struct Coo {
    Guarded<T> val;
    Guarded<Int> row, col;
    explicit Coo(i64 room) : val(static_cast<std::size_t>(room)), row(val.size()), col(val.size()) {}
};

template <class T, class Int>
Int csrcoo(std::array<Int, 6> job, i64 n, const Csr<T, Int>& a, Int& nnz, const Coo<T, Int>& b)
{
    const Int order = static_cast<Int>(n);
    Int info = 77;
    kernel<sparse::CsrCoo<T, Int>>(module_of<Int>, "orv_", letter<T>,
                                   "csrcoo")(job.data(), &order, a.val.data(), a.col.data(), a.start.data(), &nnz,
                                             b.val.data(), b.row.data(), b.col.data(), &info);
    return info;
}

template <class T, class Int> Int csrcsc(std::array<Int, 6> job, i64 n, const Csr<T, Int>& a, const Csr<T, Int>& b)
{
    const Int order = static_cast<Int>(n);
    Int info = 77;
    kernel<sparse::CsrCsc<T, Int>>(module_of<Int>, "orv_", letter<T>,
                                   "csrcsc")(job.data(), &order, a.val.data(), a.col.data(), a.start.data(),
                                             b.val.data(), b.col.data(), b.start.data(), &info);
    return info;
}

template <class T, class Int> Int dnscsr(std::array<Int, 6> job, i64 m, i64 n, T* dense, i64 ld, const Csr<T, Int>& a)
{
    const Int rows = static_cast<Int>(m), columns = static_cast<Int>(n), lda = static_cast<Int>(ld);
    Int info = 77;
    kernel<sparse::DnsCsr<T, Int>>(module_of<Int>, "orv_", letter<T>, "dnscsr")(
        job.data(), &rows, &columns, dense, &lda, a.val.data(), a.col.data(), a.start.data(), &info);
    return info;
}

} // namespace

TEST(CsrToCoo, gives_what_is_asked_for_and_nothing_else)
{
    each_base([]<class T, class Int>(Int csr, Int coo) {
        for (const i64 n : orders)
            for (const Int asks : {1, 2, 3}) {
                const auto entries = disorder<T>(n, n).entries;
                const Csr<T, Int> a(n, entries, csr);
                const Coo<T, Int> b(count(entries));
                Int nnz = 99;
                const Int room = static_cast<Int>(count(entries)); // exactly
                ASSERT_EQ((csrcoo<T, Int>({0, csr, coo, 9, room, asks}, n, a, nnz, b)), 0);
                EXPECT_EQ(nnz, room);
                for (std::size_t e = 0; e < entries.size(); ++e) {
                    EXPECT_EQ(b.row[e] - coo, entries[e].i);
                    if (asks >= 2) {
                        EXPECT_EQ(b.col[e] - coo, entries[e].j);
                    }
                    if (asks == 3) {
                        EXPECT_EQ(b.val[e], entries[e].a);
                    }
                }
                EXPECT_TRUE(asks >= 2 || untouched(b.col));
                EXPECT_TRUE(asks == 3 || untouched(b.val));
            }
    });
}

TEST(CsrToCoo, writes_nothing_without_room_or_for_an_unknown_request)
{
    each_type([]<class T, class Int> {
        const auto entries = disorder<T>(16, 16).entries;
        const Csr<T, Int> a(16, entries, 1);
        const Coo<T, Int> b(count(entries));
        const Int room = static_cast<Int>(count(entries));
        Int nnz = 99;
        EXPECT_EQ((csrcoo<T, Int>({0, 1, 1, 0, room - 1, 3}, 16, a, nnz, b)), 1);
        EXPECT_EQ((csrcoo<T, Int>({0, 1, 1, 0, 0, 3}, 16, a, nnz, b)), 1);
        for (const Int asks : {-1, 0, 4, 10}) EXPECT_EQ((csrcoo<T, Int>({0, 1, 1, 0, room, asks}, 16, a, nnz, b)), 2);
        EXPECT_EQ((csrcoo<T, Int>({0, 1, 1, 0, room - 1, 0}, 16, a, nnz, b)), 1) << "room is judged first";
        EXPECT_EQ(nnz, 99);
        EXPECT_TRUE(untouched(b.val) && untouched(b.row) && untouched(b.col));
    });
}

TEST(CooToCsr, puts_entries_of_any_order_in_sorted_rows_those_of_one_place_as_they_came)
{
    each_base([]<class T, class Int>(Int csr, Int coo) {
        for (const i64 n : orders)
            for (const Int asks : {0, 1, 3}) {
                auto entries = disorder<T>(n, n, 4).entries;
                std::stable_sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
                    return (a.i * 7 + a.j * 3) % 11 < (b.i * 7 + b.j * 3) % 11;
                });
                const Coo<T, Int> b(count(entries));
                for (std::size_t e = 0; e < entries.size(); ++e) {
                    b.val[e] = entries[e].a;
                    b.row[e] = static_cast<Int>(entries[e].i) + coo, b.col[e] = static_cast<Int>(entries[e].j) + coo;
                }
                const Csr<T, Int> a(n, count(entries));
                Int nnz = static_cast<Int>(count(entries));
                ASSERT_EQ((csrcoo<T, Int>({1, csr, coo, 9, nnz, asks}, n, a, nnz, b)), 0);
                EXPECT_EQ(a.start[0], csr);
                EXPECT_EQ(a.entries(csr), sorted(entries)) << letter<T> << n;
            }
    });
}

TEST(CooToCsr, copies_as_it_comes_and_leaves_the_pointers_when_asked)
{
    each_base([]<class T, class Int>(Int csr, Int coo) {
        const auto entries = disorder<T>(41, 41, 5).entries;
        const Coo<T, Int> b(count(entries));
        for (std::size_t e = 0; e < entries.size(); ++e)
            b.val[e] = entries[e].a, b.col[e] = static_cast<Int>(entries[e].j) + coo; // rows are not read
        const Csr<T, Int> a(41, count(entries));
        Int nnz = static_cast<Int>(count(entries));
        ASSERT_EQ((csrcoo<T, Int>({1, csr, coo, 0, nnz, 2}, 41, a, nnz, b)), 0);
        for (std::size_t e = 0; e < entries.size(); ++e) {
            EXPECT_EQ(a.col[e] - csr, entries[e].j);
            EXPECT_EQ(a.val[e], entries[e].a);
        }
        EXPECT_TRUE(untouched(a.start));
    });
}

TEST(CooToCsr, writes_nothing_without_room)
{
    each_type([]<class T, class Int> {
        const Coo<T, Int> b(5);
        const Csr<T, Int> a(3, 5);
        Int nnz = 5;
        for (const Int room : {4, 0})
            for (const Int asks : {0, 2}) EXPECT_EQ((csrcoo<T, Int>({1, 0, 0, 0, room, asks}, 3, a, nnz, b)), 1);
        EXPECT_TRUE(a.is_untouched());
    });
}

TEST(SortRow, moves_values_along_and_keeps_entries_of_one_column_in_their_order)
{
    each_type([]<class T, class Int> {
        // Around the lengths where the way of sorting changes. From row `first` on, as base 0 is for whole matrices.
        for (const i64 length : {0, 1, 2, 3, 4, 5, 47, 48, 49, 95, 96, 97, 257, 2048, 2049, 3000})
            for (const int kind : {0, 1, 2, 3}) { // random, descending, all of one column, far apart
                Entries<T> entries;
                Random random(static_cast<std::uint64_t>(length));
                for (i64 i = 0; i < 3; ++i)
                    for (i64 e = 0; e < length; ++e) {
                        const i64 j = kind == 0   ? random.integer(0, length / 2)
                                      : kind == 1 ? length - e
                                      : kind == 2 ? 4
                                                  : random.integer(0, std::numeric_limits<Int>::max() - 1);
                        entries.push_back({i, j, element<T>::make(static_cast<real_t<T>>(e))});
                    }
                for (const Int base : {0, 1})
                    for (const Int first : {1, 2}) {
                        if (base == 0 && first == 2) continue;
                        const Csr<T, Int> a(3, entries, base);
                        const Int last = 2;
                        kernel<sparse::SortRow<T, Int>>(module_of<Int>, letter<T>, "sortrow")(
                            &first, &last, a.start.data(), a.col.data(), a.val.data());
                        auto expected = entries;
                        const auto row = [&](i64 i) { return expected.begin() + i * length; };
                        std::stable_sort(row(first - 1), row(last), [](const auto& x, const auto& y) {
                            return std::pair(x.i, x.j) < std::pair(y.i, y.j);
                        });
                        ASSERT_EQ(a.entries(base), expected) << length << ' ' << kind;
                    }
            }
    });
}

TEST(SortRow, sorts_very_long_rows_without_memory_too)
{
    each_type([]<class T, class Int> {
        Entries<T> entries;
        Random random;
        for (i64 e = 0; e < 5000; ++e)
            entries.push_back({0, random.integer(0, 3000), element<T>::make(static_cast<real_t<T>>(e))});
        auto expected = entries;
        std::stable_sort(expected.begin(), expected.end(), [](const auto& x, const auto& y) { return x.j < y.j; });
        std::optional<Csr<T, Int>> a;
        each_allocation_fails(
            [&] {
                const Int row = 1;
                a.emplace(1, entries, 1);
                kernel<sparse::SortRow<T, Int>>(module_of<Int>, letter<T>, "sortrow")(&row, &row, a->start.data(),
                                                                                      a->col.data(), a->val.data());
            },
            [&] { ASSERT_EQ(a->entries(1), expected); });
    });
}

TEST(CsrAndCsc, turn_into_each_other_sorted_in_both_directions)
{
    each_base([]<class T, class Int>(Int csr, Int csc) {
        for (const i64 n : orders) {
            const auto entries = disorder<T>(n, n, 6).entries;
            const Csr<T, Int> a(n, entries, csr), b(n, count(entries)), again(n, count(entries));
            ASSERT_EQ((csrcsc<T, Int>({0, csr, csc, 0, 0, 1}, n, a, b)), 0);
            EXPECT_EQ(b.start[0], csc);
            ASSERT_EQ(b.entries(csc), transposed(entries));
            ASSERT_EQ((csrcsc<T, Int>({1, csr, csc, 0, 0, 1}, n, again, b)), 0);
            EXPECT_EQ(again.entries(csr), sorted(entries));
        }
    });
}

TEST(CsrAndCsc, leave_values_alone_when_only_the_pattern_is_asked_for)
{
    each_base([]<class T, class Int>(Int csr, Int csc) {
        const auto entries = disorder<T>(41, 41, 6).entries;
        const Csr<T, Int> a(41, entries, csr), b(41, count(entries));
        ASSERT_EQ((csrcsc<T, Int>({0, csr, csc, 0, 0, 0}, 41, a, b)), 0);
        EXPECT_EQ(b.entries(csc, false), pattern(transposed(entries)));
        EXPECT_TRUE(untouched(b.val));
    });
}

TEST(CsrAndCsc, read_bases_and_request_as_integers_of_32_bits)
{
    each_type([]<class T, class Int> {
        if constexpr (sizeof(Int) == 8) {
            const auto entries = disorder<T>(41, 41, 6).entries;
            const Csr<T, Int> a(41, entries, 0), b(41, count(entries));
            const Int high = Int{5} << 32;
            ASSERT_EQ((csrcsc<T, Int>({0, high, high + 1, 0, 0, high}, 41, a, b)), 0);
            EXPECT_EQ(b.entries(1, false), pattern(transposed(entries)));
            EXPECT_TRUE(untouched(b.val));
        }
    });
}

namespace {

bool in_part(i64 part, i64 i, i64 j) { return part == 0 ? i >= j : part == 1 ? i <= j : true; }

// m by n elements with padding, zeros of both signs among them.
template <class T> struct DenseMatrix {
    i64 m, n, ld;
    Guarded<T> a;

    DenseMatrix(i64 rows, i64 columns)
        : m(rows), n(columns), ld(rows + 2), a(static_cast<std::size_t>(n > 0 ? (n - 1) * ld + m : 0))
    {
        Random random(3);
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < m; ++i) {
                T value = random.integer(0, 2) == 0 ? whole_number<T>(random) : zero<T>;
                if (i % 3 == 1) value = zero<T>;
                at(i, j) = value == zero<T> && random.integer(0, 1) == 0 ? -zero<T> : value;
            }
    }
    T& at(i64 i, i64 j) const { return a[static_cast<std::size_t>(i + j * ld)]; }
    Entries<T> entries(i64 part) const
    {
        Entries<T> all;
        for (i64 i = 0; i < m; ++i)
            for (i64 j = 0; j < n; ++j)
                if (in_part(part, i, j) && at(i, j) != zero<T>) all.push_back({i, j, at(i, j)});
        return all;
    }
    bool padding_is_untouched() const
    {
        for (i64 p = 0; p < static_cast<i64>(a.size()); ++p)
            if (p % ld >= m && !same_bits(&a[static_cast<std::size_t>(p)], not_written().data(), 1)) return false;
        return true;
    }

private:
    static const Guarded<T>& not_written()
    {
        static const Guarded<T> element(1);
        return element;
    }
};
constexpr std::pair<i64, i64> shapes[] = {{0, 0}, {0, 3}, {3, 0}, {1, 1}, {7, 7}, {9, 4}, {4, 9}};

} // namespace

TEST(DenseToCsr, takes_each_part_of_a_matrix_without_its_zeros)
{
    each_base([]<class T, class Int>(Int csr, Int dense_base) {
        for (const auto& [m, n] : shapes)
            for (const Int part : {0, 1, 2}) {
                const DenseMatrix<T> dense(m, n);
                const auto entries = dense.entries(part);
                const Csr<T, Int> a(m, count(entries)), pointers(m, 0);
                const Int room = static_cast<Int>(count(entries));
                ASSERT_EQ((dnscsr<T, Int>({0, csr, dense_base, part, room, 1}, m, n, dense.a.data(), dense.ld, a)), 0);
                EXPECT_EQ(a.start[0], csr);
                ASSERT_EQ(a.entries(csr), entries) << m << 'x' << n << " part " << part;
                ASSERT_EQ((dnscsr<T, Int>({0, csr, dense_base, part, 0, 0}, m, n, dense.a.data(), dense.ld, pointers)),
                          0);
                for (std::size_t i = 0; i < a.start.size(); ++i) EXPECT_EQ(pointers.start[i], a.start[i]);
            }
    });
}

TEST(DenseToCsr, tells_the_row_without_room_and_leaves_what_it_has_written_before)
{
    each_base([]<class T, class Int>(Int csr, Int) {
        const DenseMatrix<T> dense(7, 7);
        const auto entries = dense.entries(2);
        for (i64 room = 0; room < count(entries); ++room) {
            const Csr<T, Int> a(7, room);
            const i64 row = entries[static_cast<std::size_t>(room)].i;
            EXPECT_EQ((dnscsr<T, Int>({0, csr, 0, 2, static_cast<Int>(room), 1}, 7, 7, dense.a.data(), dense.ld, a)),
                      row + 1);
            auto expected = entries;
            std::erase_if(expected, [=](const auto& entry) { return entry.i >= row; });
            EXPECT_EQ(a.entries(csr), expected) << room;
            for (auto e = expected.size(); e < static_cast<std::size_t>(room); ++e) { // of the row itself
                EXPECT_EQ(a.col[e] - csr, entries[e].j) << room;
                EXPECT_EQ(a.val[e], entries[e].a) << room;
            }
        }
    });
}

TEST(DenseToCsr, gives_empty_rows_for_a_matrix_of_zeros)
{
    each_base([]<class T, class Int>(Int csr, Int) {
        const std::vector<T> zeros(12, -zero<T>);
        const Csr<T, Int> a(4, 0);
        EXPECT_EQ((dnscsr<T, Int>({0, csr, 0, 2, 0, 1}, 4, 3, const_cast<T*>(zeros.data()), 4, a)), 0);
        for (const Int start : a.start) EXPECT_EQ(start, csr);
    });
}

TEST(CsrToDense, clears_all_and_adds_the_entries_of_the_part)
{
    each_base([]<class T, class Int>(Int csr, Int dense_base) {
        for (const auto& [m, n] : shapes)
            for (const Int part : {0, 1, 2}) {
                if (n == 0) continue;
                const auto entries = disorder<T>(m, n, 9).entries;
                const Csr<T, Int> a(m, entries, csr);
                const DenseMatrix<T> dense(m, n);
                ASSERT_EQ((dnscsr<T, Int>({1, csr, dense_base, part, 0, 0}, m, n, dense.a.data(), dense.ld, a)), 0);
                auto expected = added_up(entries);
                std::erase_if(expected, [=](const auto& e) { return !in_part(part, e.i, e.j); });
                EXPECT_EQ(dense.entries(2), without_zeros(expected));
                EXPECT_TRUE(dense.padding_is_untouched());
            }
    });
}
