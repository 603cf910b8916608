// Rows of blocks, diagonals and skylines: every value of job, in both directions.
#include "tests/spblas/compressed.h"

using namespace orv;
using namespace orv::test;

namespace {

template <class T, class Int> struct Bsr {
    i64 size, ld;
    Guarded<T> val;
    Guarded<Int> col, start;

    Bsr(i64 rows, i64 blocks, i64 order, i64 gap)
        : size(order), ld(order * order + gap), val(static_cast<std::size_t>(blocks > 0 ? blocks * ld - gap : 0)),
          col(static_cast<std::size_t>(blocks)), start(static_cast<std::size_t>(rows + 1))
    {
    }
    T& at(i64 block, i64 i, i64 j, bool by_rows) const
    {
        return val[static_cast<std::size_t>(block * ld + (by_rows ? i * size + j : i + j * size))];
    }
    // By rows of blocks; all elements, zeros too.
    Entries<T> entries(Int base, bool by_rows) const
    {
        Entries<T> all;
        for (std::size_t row = 0; row + 1 < start.size(); ++row)
            for (i64 b = start[row] - base; b < start[row + 1] - base; ++b)
                for (i64 i = 0; i < size; ++i)
                    for (i64 j = 0; j < size; ++j)
                        all.push_back({static_cast<i64>(row) * size + i,
                                       (col[static_cast<std::size_t>(b)] - base) * size + j, at(b, i, j, by_rows)});
        return all;
    }
    bool gaps_are_untouched() const
    {
        for (std::size_t p = 0; p < val.size(); ++p)
            if (static_cast<i64>(p) % ld >= size * size && val[p] == val[p]) return false; // not a number
        return true;
    }
};

template <class T, class Int>
Int csrbsr(std::array<Int, 6> job, i64 m, i64 size, i64 ld, const Csr<T, Int>& a, const Bsr<T, Int>& b)
{
    const Int rows = static_cast<Int>(m), mblk = static_cast<Int>(size), ldabsr = static_cast<Int>(ld);
    Int info = 77;
    kernel<sparse::CsrBsr<T, Int>>(module_of<Int>, "orv_", letter<T>,
                                   "csrbsr")(job.data(), &rows, &mblk, &ldabsr, a.val.data(), a.col.data(),
                                             a.start.data(), b.val.data(), b.col.data(), b.start.data(), &info);
    return info;
}

// Columns of blocks by rows of blocks, as the rows of each bring them.
template <class T> std::vector<std::vector<i64>> blocks_met(const Entries<T>& entries, i64 rows, i64 size)
{
    std::vector<std::vector<i64>> met(static_cast<std::size_t>(rows));
    for (const auto& [i, j, value] : entries) {
        auto& row = met[static_cast<std::size_t>(i / size)];
        if (std::find(row.begin(), row.end(), j / size) == row.end()) row.push_back(j / size);
    }
    return met;
}

} // namespace

TEST(CsrToBsr, has_the_blocks_in_the_order_in_which_rows_bring_them)
{
    each_base([]<class T, class Int>(Int csr, Int bsr) {
        for (const i64 m : orders)
            for (const i64 size : {1, 2, 3, 7})
                for (const Int detail : {0, 1, 2})
                    for (const Int asks : {0, 1, 5}) {
                        const auto entries = disorder<T>(m, m).entries;
                        const i64 rows = (m + size - 1) / size;
                        const auto met = blocks_met(entries, rows, size);
                        std::vector<i64> columns;
                        for (const auto& row : met) columns.insert(columns.end(), row.begin(), row.end());
                        const Csr<T, Int> a(m, entries, csr);
                        const Bsr<T, Int> b(rows, static_cast<i64>(columns.size()), size, 2);
                        ASSERT_EQ((csrbsr<T, Int>({0, csr, bsr, detail, 0, asks}, m, size, b.ld, a, b)), 0);
                        EXPECT_EQ(b.start[0], bsr);
                        for (std::size_t row = 0; row < met.size(); ++row)
                            EXPECT_EQ(b.start[row + 1] - b.start[row], static_cast<Int>(met[row].size()));
                        for (std::size_t k = 0; k < columns.size(); ++k) EXPECT_EQ(b.col[k] - bsr, columns[k]);
                        if (asks == 0) {
                            EXPECT_TRUE(untouched(b.val));
                            continue;
                        }
                        EXPECT_TRUE(b.gaps_are_untouched());
                        ASSERT_EQ(sorted(without_zeros(b.entries(bsr, detail == 1))), without_zeros(added_up(entries)))
                            << letter<T> << m << ' ' << size;
                    }
    });
}

TEST(CsrToBsr, counts_the_blocks_alone_with_twice_the_memory)
{
    each_type([]<class T, class Int> {
        for (const i64 size : {1, 2, 3}) {
            const auto entries = disorder<T>(41, 41).entries;
            const i64 rows = (41 + size - 1) / size;
            std::size_t blocks = 0;
            for (const auto& row : blocks_met(entries, rows, size)) blocks += row.size();
            const Csr<T, Int> a(41, entries, 1);
            const Bsr<T, Int> b(rows, 0, size, 0);
            ProbeScope probe;
            ASSERT_EQ((csrbsr<T, Int>({0, 1, 1, 0, 0, -1}, 41, size, b.ld, a, b)), 0);
            EXPECT_EQ(b.start[0], static_cast<Int>(blocks));
            EXPECT_TRUE(untouched(b.start, 1));
            ASSERT_EQ((csrbsr<T, Int>({0, 1, 1, 0, 0, 0}, 41, size, b.ld, a, Bsr<T, Int>(rows, blocks, size, 0))), 0);
            ASSERT_EQ(probe->asked_bytes.size(), 2u);
            EXPECT_EQ(probe->asked_bytes[0], 2 * rows * static_cast<i64>(sizeof(Int)));
            EXPECT_EQ(probe->asked_bytes[1], rows * static_cast<i64>(sizeof(Int)));
            for (const i64 alignment : probe->asked_alignments) EXPECT_EQ(alignment, 128);
            EXPECT_EQ(probe->live, 0);
        }
    });
}

TEST(CsrToBsr, says_what_is_wrong_and_writes_nothing)
{
    each_type([]<class T, class Int> {
        const Csr<T, Int> a(5, disorder<T>(5, 5).entries, 1);
        const Bsr<T, Int> b(3, 9, 2, 0);
        for (const Int back : {0, 1}) {
            EXPECT_EQ((csrbsr<T, Int>({back, 1, 1, 0, 0, 1}, 5, 0, 4, a, b)), 1);
            EXPECT_EQ((csrbsr<T, Int>({back, 1, 1, 0, 0, 1}, 5, -3, 9, a, b)), 1);
            EXPECT_EQ((csrbsr<T, Int>({back, 1, 1, 0, 0, 1}, 5, 2, 3, a, b)), 2);
        }
        for (const Int asks : {1, 0, -1}) {
            ProbeScope probe;
            probe->fail_all = true;
            EXPECT_EQ((csrbsr<T, Int>({0, 1, 1, 0, 0, asks}, 5, 2, 4, a, b)), -1);
            EXPECT_EQ(probe->failed, 1);
        }
        EXPECT_TRUE(untouched(b.val) && untouched(b.col) && untouched(b.start));
    });
}

TEST(BsrToCsr, drops_zeros_and_keeps_the_order_of_blocks)
{
    each_base([]<class T, class Int>(Int csr, Int bsr) {
        for (const i64 rows : {0, 1, 6})
            for (const i64 size : {1, 2, 3})
                for (const Int detail : {0, 1})
                    for (const Int asks : {0, 1}) {
                        Random random(7);
                        const Bsr<T, Int> b(rows, 2 * rows, size, 3);
                        for (i64 k = 0; k < 2 * rows; ++k) {
                            b.col[static_cast<std::size_t>(k)] = static_cast<Int>(random.integer(0, rows - 1)) + bsr;
                            for (i64 i = 0; i < size; ++i)
                                for (i64 j = 0; j < size; ++j)
                                    b.at(k, i, j, detail == 1) =
                                        random.integer(0, 2) == 0 ? -zero<T> : whole_number<T>(random);
                        }
                        for (i64 i = 0; i <= rows; ++i)
                            b.start[static_cast<std::size_t>(i)] =
                                static_cast<Int>(i % 2 == 1 ? 2 * i + 1 : 2 * i) + bsr;
                        if (rows == 1) b.start[1] = 2 + bsr;
                        auto expected = without_zeros(b.entries(bsr, detail == 1));
                        std::stable_sort(expected.begin(), expected.end(),
                                         [](const auto& x, const auto& y) { return x.i < y.i; });
                        const Csr<T, Int> a(rows * size, count(expected));
                        ASSERT_EQ((csrbsr<T, Int>({1, csr, bsr, detail, 0, asks}, rows, size, b.ld, a, b)), 0);
                        EXPECT_EQ(a.start[0], csr);
                        EXPECT_EQ(a.entries(csr, asks != 0), asks != 0 ? expected : pattern(expected));
                        EXPECT_TRUE(asks != 0 || untouched(a.val));
                    }
    });
}

namespace {

template <class T, class Int> struct Dia {
    i64 n, ld;
    Guarded<T> val;
    Guarded<Int> distance;

    Dia(i64 order, i64 diagonals, i64 gap = 2)
        : n(order), ld(order + gap), val(static_cast<std::size_t>(diagonals > 0 ? diagonals * ld - gap : 0)),
          distance(static_cast<std::size_t>(diagonals))
    {
    }
    T& at(i64 i, i64 k) const { return val[static_cast<std::size_t>(i + k * ld)]; }
    // By rows, in the order of the first `diagonals` distances.
    Entries<T> entries(Int diagonals) const
    {
        Entries<T> all;
        for (i64 i = 0; i < n; ++i)
            for (Int k = 0; k < diagonals; ++k)
                if (const i64 j = i + distance[static_cast<std::size_t>(k)]; j >= 0 && j < n)
                    all.push_back({i, j, at(i, k)});
        return all;
    }
};

template <class T, class Int>
Int csrdia(std::array<Int, 6> job, const Csr<T, Int>& a, const Dia<T, Int>& b, Int& diagonals, const Csr<T, Int>& rest)
{
    const Int order = static_cast<Int>(b.n), ld = static_cast<Int>(b.ld);
    Int info = 77;
    kernel<sparse::CsrDia<T, Int>>(module_of<Int>, "orv_", letter<T>, "csrdia")(
        job.data(), &order, a.val.data(), a.col.data(), a.start.data(), b.val.data(), &ld, b.distance.data(),
        &diagonals, rest.val.data(), rest.col.data(), rest.start.data(), &info);
    return info;
}

template <class T> Entries<T> beside(Entries<T> entries, const std::vector<i64>& distances)
{
    std::erase_if(entries, [&](const auto& e) {
        return std::find(distances.begin(), distances.end(), e.j - e.i) != distances.end();
    });
    return entries;
}

// The distances of the most frequent diagonals, the lower ones first of those with as many entries, in ascending order.
template <class T> std::vector<i64> most_frequent(const Entries<T>& entries, i64 n, i64 most)
{
    std::vector<std::pair<i64, i64>> frequencies;
    for (i64 d = 1 - n; d < n; ++d) {
        const auto found = std::count_if(entries.begin(), entries.end(), [=](const auto& e) { return e.j - e.i == d; });
        if (found > 0) frequencies.push_back({-found, d});
    }
    std::sort(frequencies.begin(), frequencies.end());
    std::vector<i64> distances;
    for (const auto& [frequency, d] : frequencies)
        if (static_cast<i64>(distances.size()) < most) distances.push_back(d);
    std::sort(distances.begin(), distances.end());
    return distances;
}

} // namespace

TEST(CsrToDia, takes_the_diagonals_that_are_named_and_keeps_the_rest_if_asked)
{
    each_base([]<class T, class Int>(Int csr, Int dia) {
        for (const i64 n : orders)
            for (const Int asks : {0, 1, 2}) {
                const auto entries = disorder<T>(n, n).entries;
                // In no order, one named twice, and some that the matrix does not have.
                const std::vector<i64> distances{3, 0, -n - 4, -1, n, 0};
                auto rest = beside(entries, distances);
                const Csr<T, Int> a(n, entries, csr), kept(n, asks == 1 ? count(rest) : 0);
                const Dia<T, Int> b(n, 6);
                for (std::size_t k = 0; k < 6; ++k) b.distance[k] = static_cast<Int>(distances[k]);
                Int diagonals = 6;
                ASSERT_EQ((csrdia<T, Int>({0, csr, dia, 0, 0, asks}, a, b, diagonals, kept)), 0);
                EXPECT_EQ(diagonals, 6);
                auto expected = added_up(entries);
                for (const auto& entry : rest) expected.push_back({entry.i, entry.j, -entry.a});
                EXPECT_EQ(without_zeros(added_up(b.entries(6))), without_zeros(added_up(expected))) << n;
                if (asks == 1) {
                    EXPECT_EQ(kept.entries(csr), rest);
                } else {
                    EXPECT_TRUE(kept.is_untouched());
                }
            }
    });
}

TEST(CsrToDia, chooses_the_diagonals_with_the_most_entries)
{
    each_base([]<class T, class Int>(Int csr, Int dia) {
        for (const i64 n : orders)
            for (const Int most : {0, 1, 3, 20, 100})
                for (const Int asks : {10, 11}) {
                    const auto entries = disorder<T>(n, n).entries;
                    const auto distances = most_frequent(entries, n, most);
                    const auto rest = beside(entries, distances);
                    const Csr<T, Int> a(n, entries, csr), kept(n, asks == 11 ? count(rest) : 0);
                    const Dia<T, Int> b(n, static_cast<i64>(distances.size())); // no room for more than there are
                    Int diagonals = most;
                    ASSERT_EQ((csrdia<T, Int>({0, csr, dia, 0, 0, asks}, a, b, diagonals, kept)), 0);
                    ASSERT_EQ(diagonals, static_cast<Int>(distances.size())) << n << " at most " << most;
                    for (std::size_t k = 0; k < distances.size(); ++k) EXPECT_EQ(b.distance[k], distances[k]);
                    auto inside = added_up(entries);
                    std::erase_if(inside, [&](const auto& e) { return beside<T>({e}, distances).size() == 1; });
                    EXPECT_EQ(without_zeros(b.entries(diagonals)), without_zeros(inside));
                    if (asks == 11) {
                        EXPECT_EQ(kept.entries(csr), rest);
                    } else {
                        EXPECT_TRUE(kept.is_untouched());
                    }
                }
    });
}

TEST(CsrToDia, needs_a_counter_for_each_diagonal)
{
    each_type([]<class T, class Int> {
        const Csr<T, Int> a(5, disorder<T>(5, 5).entries, 1), rest(5, 0);
        const Dia<T, Int> b(5, 2);
        Int diagonals = 2;
        ProbeScope probe;
        probe->fail_all = true;
        EXPECT_EQ((csrdia<T, Int>({0, 1, 1, 0, 0, 10}, a, b, diagonals, rest)), -1);
        EXPECT_EQ(probe->asked_bytes, std::vector<i64>{9 * static_cast<i64>(sizeof(Int))});
        EXPECT_EQ(probe->asked_alignments, std::vector<i64>{128});
        EXPECT_TRUE(untouched(b.val) && untouched(b.distance) && rest.is_untouched());
        EXPECT_EQ(diagonals, 2);
    });
}

TEST(DiaToCsr, goes_by_rows_and_by_the_order_of_distances)
{
    each_base([]<class T, class Int>(Int csr, Int dia) {
        for (const i64 n : orders)
            for (const Int asks : {0, 1}) {
                const Dia<T, Int> b(n, 4);
                const i64 distances[] = {2, -1, 0, -n - 1};
                Random random(2);
                for (i64 k = 0; k < 4; ++k) {
                    b.distance[static_cast<std::size_t>(k)] = static_cast<Int>(distances[k]);
                    for (i64 i = 0; i < n; ++i)
                        b.at(i, k) = random.integer(0, 2) == 0 ? -zero<T> : whole_number<T>(random);
                }
                const auto expected = asks == 0 ? without_zeros(b.entries(4)) : b.entries(4);
                const Csr<T, Int> a(n, count(expected)), none(0, 0);
                Int diagonals = 4;
                ASSERT_EQ((csrdia<T, Int>({1, csr, dia, 0, 0, asks}, a, b, diagonals, none)), 0);
                EXPECT_EQ(a.start[0], csr);
                EXPECT_EQ(a.entries(csr), expected);
            }
    });
}

namespace {

template <class T, class Int> struct Sky {
    Guarded<T> val;
    Guarded<Int> start;
    Sky(i64 n, i64 elements) : val(static_cast<std::size_t>(elements)), start(static_cast<std::size_t>(n + 1)) {}

    Entries<T> entries(bool upper) const // by lines
    {
        Entries<T> all;
        for (i64 line = 0; line + 1 < static_cast<i64>(start.size()); ++line) {
            const Int begin = start[static_cast<std::size_t>(line)], end = start[static_cast<std::size_t>(line + 1)];
            for (Int p = begin; p < end; ++p) {
                const i64 other = line - (end - 1 - p);
                const T value = val[static_cast<std::size_t>(p - start[0])];
                all.push_back(upper ? Coordinate<T>{other, line, value} : Coordinate<T>{line, other, value});
            }
        }
        return all;
    }
};

template <class T, class Int> Int csrsky(std::array<Int, 6> job, i64 n, const Csr<T, Int>& a, const Sky<T, Int>& b)
{
    const Int order = static_cast<Int>(n);
    Int info = 77;
    kernel<sparse::CsrSky<T, Int>>(module_of<Int>, "orv_", letter<T>, "csrsky")(
        job.data(), &order, a.val.data(), a.col.data(), a.start.data(), b.val.data(), b.start.data(), &info);
    return info;
}

template <class T> Entries<T> triangle(Entries<T> entries, bool upper)
{
    std::erase_if(entries, [=](const auto& e) { return upper ? e.i > e.j : e.i < e.j; });
    return entries;
}
// Lengths of the profiles, of each one at least.
template <class T> std::vector<i64> profiles(const Entries<T>& entries, i64 n, bool upper)
{
    std::vector<i64> lengths(static_cast<std::size_t>(n), 1);
    for (const auto& [i, j, value] : triangle(entries, upper)) {
        i64& length = lengths[static_cast<std::size_t>(upper ? j : i)];
        length = std::max(length, (upper ? j - i : i - j) + 1);
    }
    return lengths;
}

} // namespace

TEST(CsrToSky, gives_pointers_and_then_values_if_there_is_room)
{
    each_base([]<class T, class Int>(Int csr, Int sky) {
        for (const i64 n : orders)
            for (const Int upper : {0, 1, 2}) {
                const auto entries = disorder<T>(n, n).entries;
                const auto lengths = profiles(entries, n, upper != 0);
                i64 total = 0;
                for (const i64 length : lengths) total += length;
                const Csr<T, Int> a(n, entries, csr);
                const auto expect_pointers = [&](const Sky<T, Int>& b) {
                    EXPECT_EQ(b.start[0], sky);
                    for (std::size_t i = 0; i < lengths.size(); ++i)
                        EXPECT_EQ(b.start[i + 1] - b.start[i], lengths[i]) << n << ' ' << upper;
                };
                const Sky<T, Int> whole(n, total), pointers(n, 0), less(n, total);
                const Int room = static_cast<Int>(total);
                ASSERT_EQ((csrsky<T, Int>({0, csr, sky, upper, room, 0}, n, a, whole)), 0);
                expect_pointers(whole);
                EXPECT_EQ(sorted(without_zeros(whole.entries(upper != 0))),
                          without_zeros(added_up(triangle(entries, upper != 0))));
                ASSERT_EQ((csrsky<T, Int>({0, csr, sky, upper, 0, 1}, n, a, pointers)), 0);
                expect_pointers(pointers);
                if (n == 0) continue;
                ASSERT_EQ((csrsky<T, Int>({0, csr, sky, upper, room - 1, 0}, n, a, less)), 1);
                expect_pointers(less);
                EXPECT_TRUE(untouched(less.val));
            }
    });
}

TEST(SkyToCsr, drops_zeros_and_has_sorted_rows_of_either_triangle)
{
    each_base([]<class T, class Int>(Int csr, Int sky) {
        for (const i64 n : orders)
            for (const Int upper : {0, 1}) {
                const auto lengths = profiles(disorder<T>(n, n).entries, n, upper != 0);
                i64 total = 0;
                for (const i64 length : lengths) total += length;
                const Sky<T, Int> b(n, total);
                b.start[0] = sky;
                for (std::size_t i = 0; i < lengths.size(); ++i)
                    b.start[i + 1] = b.start[i] + static_cast<Int>(lengths[i]);
                Random random(1);
                for (T& value : b.val) value = random.integer(0, 3) == 0 ? -zero<T> : whole_number<T>(random);
                const auto expected = sorted(without_zeros(b.entries(upper != 0)));
                const Csr<T, Int> a(n, count(expected)), pointers(n, 0), less(n, count(expected));
                const Int room = static_cast<Int>(count(expected));
                ASSERT_EQ((csrsky<T, Int>({1, csr, sky, upper, room, 0}, n, a, b)), 0);
                EXPECT_EQ(a.start[0], csr);
                EXPECT_EQ(a.entries(csr), expected);
                ASSERT_EQ((csrsky<T, Int>({1, csr, sky, upper, 0, 1}, n, pointers, b)), 0);
                if (room > 0) {
                    ASSERT_EQ((csrsky<T, Int>({1, csr, sky, upper, room - 1, 0}, n, less, b)), 1);
                }
                for (std::size_t i = 0; i < a.start.size(); ++i) {
                    EXPECT_EQ(pointers.start[i], a.start[i]);
                    if (room > 0) {
                        EXPECT_EQ(less.start[i], a.start[i]);
                    }
                }
                EXPECT_TRUE(untouched(less.val) && untouched(less.col));
            }
    });
}
