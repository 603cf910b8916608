// Sums and products of sparse matrices with each other, in whole numbers, so that every order of additions gives the
// same.
#include "core/team/eagerness.h"
#include "tests/core/sparse_results.h"
#include "tests/core/teams.h"
#include "tests/support/probe.h"

using namespace orv;
using namespace orv::test;

namespace {

// Numbers from -4 to 4 in place of the values, some of them 0 where the format keeps zeros.
template <class T> Coordinates<T> in_whole_numbers(Coordinates<T> a, int stream = 0)
{
    Random random(static_cast<std::size_t>(a.m * 31 + a.k + stream));
    for (auto& entry : a.entries) {
        entry.a = element<T>::make(static_cast<real_t<T>>(random.integer(1, 4) * (random.integer(0, 1) * 2 - 1)));
        if constexpr (is_complex<T>) entry.a.im = static_cast<real_t<T>>(random.integer(-4, 4));
    }
    return a;
}

// Operands: general ones in every format, and some of other kinds.
std::vector<Style> operands()
{
    std::vector<Style> all;
    for (int format = ORV_SPARSE_CSR; format <= ORV_SPARSE_BSR; ++format)
        all.push_back({format, 'G', 'L', 'N', format % 2, format == ORV_SPARSE_BSR ? 2 : 1});
    for (const char kind : {'S', 'A', 'T'}) all.push_back({ORV_SPARSE_SKY, kind, 'U'});
    all.insert(all.end(), {{ORV_SPARSE_CSR, 'T', 'L', 'U'}, {ORV_SPARSE_CSC, 'H', 'U', 'N', 1}, {ORV_SPARSE_COO, 'D'}});
    return all;
}

std::vector<Style> results()
{
    std::vector<Style> all;
    for (int format = ORV_SPARSE_CSR; format <= ORV_SPARSE_BSR; ++format)
        for (const int base : {0, 1}) all.push_back({format, 'G', 'L', 'N', base, format == ORV_SPARSE_BSR ? 2 : 1});
    all.push_back({ORV_SPARSE_CSR, 'T', 'L'});
    all.push_back({ORV_SPARSE_SKY, 'T', 'U'});
    return all;
}

bool keeps_zeros(const Style& s)
{
    return s.format == ORV_SPARSE_CSR || s.format == ORV_SPARSE_CSC || s.format == ORV_SPARSE_COO;
}
template <class T> Elements<T> as_stored(const Style& to, Elements<T> all)
{
    std::erase_if(all, [&](const auto& e) { return !to.keeps(e.first.first, e.first.second); });
    return keeps_zeros(to) ? all : nonzeros(all);
}

template <class T>
Elements<T> sum(char trans, T alpha, const Style& sa, const Coordinates<T>& a, const Style& sb, const Coordinates<T>& b)
{
    auto all = whole_of(sb, 'N', b);
    for (auto entry : whole_of(sa, trans, a)) entry.a = alpha * entry.a, all.push_back(entry);
    return sum_of(all);
}

template <class T>
Elements<T> product(char transa, const Style& sa, const Coordinates<T>& a, char transb, const Style& sb,
                    const Coordinates<T>& b)
{
    std::vector<Coordinate<T>> all;
    const auto right = whole_of(sb, transb, b);
    for (const auto& x : whole_of(sa, transa, a))
        for (const auto& y : right)
            if (x.j == y.i) all.push_back({x.i, y.j, x.a * y.a});
    return sum_of(all);
}

#define FOR_TYPE(name, s, d, c, z)                                                                                     \
    template <class T> constexpr auto* name = s;                                                                       \
    template <> constexpr auto* name<double> = d;                                                                      \
    template <> constexpr auto* name<cpx<float>> = c;                                                                  \
    template <> constexpr auto* name<cpx<double>> = z;
FOR_TYPE(sparse_add, orv_sparse_sadd, orv_sparse_dadd, orv_sparse_cadd, orv_sparse_zadd)
#undef FOR_TYPE

template <class T, class Int> void add_all(int bits)
{
    for (const Style& sa : operands())
        for (const Style& sb : operands())
            for (const auto& [m, n] : {std::pair<i64, i64>{12, 12}, {6, 14}}) {
                if ((m != n && (sa.kind != 'G' || sb.kind != 'G')) || testing::Test::HasFailure()) continue;
                if (!exists<T>(sa, 'N') || !exists<T>(sb, 'N')) continue;
                for (const char trans : {'N', 'T', 'C'}) {
                    const i64 rows = trans == 'N' ? m : n, cols = trans == 'N' ? n : m;
                    const auto a = in_whole_numbers(sample<T>(rows, cols, sa, 3)),
                               b = in_whole_numbers(sample<T>(m, n, sb, 4), 1);
                    const Lines lines = trans == 'N' && m == n ? Lines::with_gaps : Lines::without;
                    const Operand<T, Int> left(lines, sa, a), right(lines, sb, b);
                    const T alpha = -one<T> - one<T>;
                    for (const Style& to : results()) {
                        if (m != n && to.kind != 'G') continue;
                        SCOPED_TRACE(sa.text() + ' ' + trans + " plus " + sb.text() + " to " + to.text());
                        Made c(to, bits), sizes(to, bits);
                        const orv_status status = sparse_add<T>(trans, alpha, &left.record(), &right.record(), &c);
                        ASSERT_EQ(status, ORV_OK) << sentence(status);
                        EXPECT_EQ(stored_in<T>(c), as_stored(to, sum(trans, alpha, sa, a, sb, b)));
                        if (to.kind == 'G') {
                            EXPECT_EQ(orv_sparse_check(&c), ORV_OK) << orv_last_error();
                        }
                        ASSERT_EQ(orv_sparse_add_sizes(trans, &left.record(), &right.record(), &sizes), ORV_OK);
                        if (keeps_zeros(to)) {
                            EXPECT_EQ(sizes.count, c.count);
                        }
                    }
                }
            }
}

template <class T, class Int> void multiply_all(int bits)
{
    for (const Style& sa : operands())
        for (const Style& sb : operands())
            for (const auto& [m, k, n] : {std::tuple<i64, i64, i64>{12, 12, 12}, {6, 14, 4}, {4, 0, 6}, {0, 4, 2}}) {
                const bool square = m == k && k == n;
                if ((!square && (sa.kind != 'G' || sb.kind != 'G')) || testing::Test::HasFailure()) continue;
                if (!exists<T>(sa, 'N') || !exists<T>(sb, 'N')) continue;
                for (const auto& [ta, tb] : {std::pair{'N', 'N'}, {'T', 'N'}, {'N', 'C'}, {'C', 'T'}}) {
                    const auto a = in_whole_numbers(ta == 'N' ? sample<T>(m, k, sa, 3) : sample<T>(k, m, sa, 3)),
                               b = in_whole_numbers(tb == 'N' ? sample<T>(k, n, sb, 4) : sample<T>(n, k, sb, 4), 1);
                    const Lines lines = ta == 'N' && square ? Lines::with_gaps : Lines::without;
                    const Operand<T, Int> left(lines, sa, a), right(lines, sb, b);
                    const auto expected = product(ta, sa, a, tb, sb, b);
                    for (const Style& to : results()) {
                        if (m != n && to.kind != 'G') continue;
                        SCOPED_TRACE(sa.text() + ' ' + ta + " times " + sb.text() + ' ' + tb + " to " + to.text());
                        Made c(to, bits), sizes(to, bits);
                        const orv_status status = orv_sparse_multiply(ta, &left.record(), tb, &right.record(), &c);
                        ASSERT_EQ(status, ORV_OK) << sentence(status);
                        EXPECT_EQ(stored_in<T>(c), as_stored(to, expected));
                        ASSERT_EQ(orv_sparse_multiply_sizes(ta, &left.record(), tb, &right.record(), &sizes), ORV_OK);
                        EXPECT_EQ(sizes.count, c.count);
                        EXPECT_EQ(sizes.rows, m);
                        EXPECT_EQ(sizes.cols, n);
                    }
                    for (const char order : {'R', 'c'}) {
                        const Dense<T> c(m, n, order == 'R', 3, true);
                        const orv_status status = orv_sparse_multiply_dense(
                            order, ta, &left.record(), tb, &right.record(), c.data(), c.template ld<i64>());
                        ASSERT_EQ(status, ORV_OK) << sentence(status);
                        for (i64 i = 0; i < m; ++i)
                            for (i64 j = 0; j < n; ++j) {
                                const auto found = expected.find({i, j});
                                EXPECT_EQ(c(i, j), found == expected.end() ? zero<T> : found->second);
                            }
                        EXPECT_TRUE(c.padding_is_untouched());
                    }
                }
            }
}

// Rows of some hundred entries, and of none.
template <class T> Coordinates<T> uneven()
{
    auto a = sample<T>(150, 150, Style{}, 3), more = sample<T>(20, 150, Style{}, 90);
    std::erase_if(a.entries, [](const auto& e) { return e.i >= 130; });
    for (auto& e : more.entries) a.entries.push_back({e.i + 130, e.j, e.a});
    return a;
}

// The whole of a compressed result, bit by bit.
template <class T, class Int> std::vector<std::byte> bytes_of(const orv_sparse& c)
{
    std::vector<std::byte> all;
    const auto append = [&](const void* array, std::size_t bytes) {
        const auto* at = static_cast<const std::byte*>(array);
        all.insert(all.end(), at, at + bytes);
    };
    const auto entries = static_cast<std::size_t>(c.count);
    append(c.begin, static_cast<std::size_t>(c.rows + 1) * sizeof(Int));
    append(c.col, entries * sizeof(Int)), append(c.values, entries * sizeof(T));
    return all;
}

} // namespace

TEST(SparseSums, are_right_for_every_pair_of_formats_and_of_kinds)
{
    add_all<float, i32>(32), add_all<double, i64>(32), add_all<cpx<float>, i64>(64), add_all<cpx<double>, i32>(64);
}

TEST(SparseProducts, are_right_for_every_pair_of_formats_and_of_kinds)
{
    multiply_all<float, i64>(64), multiply_all<double, i32>(32), multiply_all<cpx<float>, i32>(64),
        multiply_all<cpx<double>, i64>(32);
}

TEST(SparseSums, keep_entries_that_cancel_and_sort_what_is_not)
{
    const i32 begin[] = {1, 4, 4}, col[] = {3, 1, 3}, other[] = {3, 2, 1};
    const double values[] = {1, 2, 4}, others[] = {-5, 7, 0};
    orv_sparse a{}, b{};
    for (orv_sparse* r : {&a, &b})
        r->format = ORV_SPARSE_CSR, r->type = 'd', r->bits = 32, r->base = 1, r->rows = 2, r->cols = 3,
        r->begin = begin;
    a.col = col, a.values = values, b.col = other, b.values = others;
    Made c(ORV_SPARSE_CSR, 32);
    ASSERT_EQ(orv_sparse_dadd('N', 1, &a, &b, &c), ORV_OK) << orv_last_error();
    EXPECT_EQ(stored_in<double>(c), (Elements<double>{{{0, 0}, 2}, {{0, 1}, 7}, {{0, 2}, 0}}));
    EXPECT_EQ(orv_sparse_check(&c), ORV_DUPLICATE) << "A has column 3 twice, and nothing is out of order";
    EXPECT_EQ(col[0], 3) << "an operand was sorted";
}

TEST(SparseSums, pair_off_entries_of_one_column_however_many_columns_there_are)
{
    const i32 begin[] = {0, 3, 6}, col[] = {0, 2, 2, 1, 1, 1}, other[] = {1, 2, 2, 0, 1, 1};
    const double values[] = {1, 2, 3, 4, 5, 6}, others[] = {10, 20, 30, 40, 50, 60};
    for (const i64 columns : {3, 1000000000}) {
        orv_sparse a{}, b{};
        for (orv_sparse* r : {&a, &b})
            r->format = ORV_SPARSE_CSR, r->type = 'd', r->bits = 32, r->rows = 2, r->cols = columns, r->begin = begin;
        a.col = col, a.values = values, b.col = other, b.values = others;
        Made c(ORV_SPARSE_CSR, 32);
        ASSERT_EQ(orv_sparse_dadd('N', 1, &a, &b, &c), ORV_OK) << orv_last_error();
        const auto array = [&]<class E>(const void* of, E) {
            return std::vector<E>(static_cast<const E*>(of), static_cast<const E*>(of) + c.count);
        };
        ASSERT_EQ(c.count, 8);
        EXPECT_EQ(static_cast<const i32*>(c.begin)[1], 4);
        EXPECT_EQ(array(c.col, i32{}), (std::vector<i32>{0, 1, 2, 2, 0, 1, 1, 1}));
        EXPECT_EQ(array(c.values, 0.0), (std::vector<double>{1, 10, 22, 33, 40, 54, 65, 6}));
    }
}

TEST(SparsePairs, write_into_arrays_of_the_caller_if_there_is_room_and_leave_them_if_not)
{
    const Style sa{ORV_SPARSE_CSR}, sb{ORV_SPARSE_COO, 'S', 'L', 'N', 1};
    const auto a = in_whole_numbers(sample<double>(12, 12, sa, 3)), b = in_whole_numbers(sample<double>(12, 12, sb, 3));
    const Stored<double, i32> left(sa, a), right(sb, b);
    for (const Style& to : results()) {
        SCOPED_TRACE(to.text());
        Made sizes(to, 32);
        ASSERT_EQ(orv_sparse_multiply_sizes('N', &left.record, 'T', &right.record, &sizes), ORV_OK);
        expect_room_is_kept<double, i32>(sizes, [&](orv_sparse* c) {
            const orv_status status = orv_sparse_multiply('N', &left.record, 'T', &right.record, c);
            if (status == ORV_OK) {
                EXPECT_EQ(stored_in<double>(*c), as_stored(to, product('N', sa, a, 'T', sb, b)));
            }
            return status;
        });
        ASSERT_EQ(orv_sparse_add_sizes('T', &left.record, &right.record, &sizes), ORV_OK);
        expect_room_is_kept<double, i32>(sizes, [&](orv_sparse* c) {
            const orv_status status = orv_sparse_dadd('T', 1, &left.record, &right.record, c);
            if (status == ORV_OK) {
                EXPECT_EQ(stored_in<double>(*c), as_stored(to, sum('T', 1.0, sa, a, sb, b)));
            }
            return status;
        });
    }
}

TEST(SparseProducts, come_in_two_steps_and_again_with_other_values)
{
    const Style style{ORV_SPARSE_CSR, 'G', 'L', 'N', 1};
    const auto a = in_whole_numbers(sample<double>(12, 20, style, 3)),
               b = in_whole_numbers(sample<double>(20, 9, style, 4));
    const Stored<double, i64> left(style, a), right(style, b);
    for (const int base : {0, 1}) {
        Guarded<i64> begin(13);
        orv_sparse c{};
        c.format = ORV_SPARSE_CSR, c.bits = 64, c.base = base, c.begin = begin.data();
        ASSERT_EQ(orv_sparse_multiply_sizes('N', &left.record, 'N', &right.record, &c), ORV_OK) << orv_last_error();
        EXPECT_EQ(begin[0], base);
        ASSERT_EQ(begin[12] - begin[0], c.count);
        const Guarded<i64> col(static_cast<std::size_t>(c.count));
        const Guarded<double> values(static_cast<std::size_t>(c.count));
        c.col = col.data(), c.values = values.data();
        --c.count;
        EXPECT_EQ(orv_sparse_multiply_values('N', &left.record, 'N', &right.record, &c), ORV_NO_ROOM);
        ++c.count;
        for (const int stream : {0, 5}) {
            const auto other = in_whole_numbers(a, stream);
            const Stored<double, i64> now(style, other);
            ASSERT_EQ(orv_sparse_multiply_values('N', &now.record, 'N', &right.record, &c), ORV_OK) << orv_last_error();
            EXPECT_EQ(stored_in<double>(c), product('N', style, other, 'N', style, b));
        }
    }
}

TEST(SparsePairs, give_the_same_bits_on_any_number_of_threads)
{
    const auto same = []<class T, class Int>() {
        const auto a = uneven<T>();
        const Stored<T, Int> stored(Style{}, a);
        Made plain(ORV_SPARSE_CSR, 8 * sizeof(Int), 1); // without gaps
        ASSERT_EQ(orv_sparse_convert('N', &stored.record, &plain), ORV_OK);
        const auto each = [&](const auto& call) {
            std::vector<std::byte> alone;
            for (int threads = 1; threads <= 5; ++threads) {
                orv_set_thread_num_threads(threads);
                Made c(ORV_SPARSE_CSR, 8 * sizeof(Int));
                ASSERT_EQ(call(&c), ORV_OK) << orv_last_error();
                EXPECT_EQ(orv_sparse_threads(), threads);
                if (threads == 1) alone = bytes_of<T, Int>(c);
                else {
                    EXPECT_EQ((bytes_of<T, Int>(c)), alone) << threads << " threads";
                }
            }
        };
        each([&](orv_sparse* c) { return sparse_add<T>('T', one<T> + one<T>, &plain, &plain, c); });
        each([&](orv_sparse* c) { return orv_sparse_multiply('N', &plain, 'T', &plain, c); });
        for (const char order : {'R', 'C'}) {
            std::vector<T> alone;
            for (int threads = 1; threads <= 5; ++threads) {
                orv_set_thread_num_threads(threads);
                std::vector<T> c(150 * 150);
                ASSERT_EQ(orv_sparse_multiply_dense(order, 'N', &plain, 'N', &plain, c.data(), 150), ORV_OK);
                EXPECT_EQ(orv_sparse_threads(), threads);
                if (threads == 1) alone = c;
                else {
                    EXPECT_TRUE(same_bits(c, alone)) << threads << " threads";
                }
            }
        }
    };
    orv_team_set_eagerness(1e9);
    same.operator()<double, i32>(), same.operator()<cpx<float>, i64>();
    orv_team_set_eagerness(1), orv_set_thread_num_threads(0);
}

TEST(SparsePairs, leave_everything_as_it_was_without_memory)
{
    const Style sa{ORV_SPARSE_BSR, 'G', 'L', 'N', 0, 2}, sb{ORV_SPARSE_CSC, 'S', 'U', 'N', 1};
    const Stored<double, i32> left(sa, sample<double>(12, 12, sa)), right(sb, sample<double>(12, 12, sb));
    for (const int format : {ORV_SPARSE_CSR, ORV_SPARSE_CSC, ORV_SPARSE_DIA}) {
        Made c(format, 64);
        const auto expect_none_left = [&](const auto& call) {
            orv_status status = ORV_OK;
            each_allocation_fails(
                [&] {
                    status = call();
                    orv_sparse_free(&c);
                },
                [&] {
                    EXPECT_EQ(status, probe().failed > 0 ? ORV_NO_MEMORY : ORV_OK);
                    EXPECT_EQ(c.values, nullptr);
                });
        };
        expect_none_left([&] { return orv_sparse_dadd('T', 2, &left.record, &right.record, &c); });
        expect_none_left([&] { return orv_sparse_multiply('T', &left.record, 'N', &right.record, &c); });
    }
    std::vector<double> dense(144, 7.0);
    orv_status status = ORV_OK;
    each_allocation_fails(
        [&] {
            std::fill(dense.begin(), dense.end(), 7.0);
            status = orv_sparse_multiply_dense('R', 'N', &left.record, 'N', &right.record, dense.data(), 12);
        },
        [&] {
            EXPECT_EQ(status, probe().failed > 0 ? ORV_NO_MEMORY : ORV_OK);
            if (status != ORV_OK) {
                EXPECT_EQ(dense, std::vector<double>(144, 7.0));
            }
        });
}

TEST(SparsePairs, refuse_what_makes_no_sense_with_a_sentence)
{
    const Stored<double, i32> wide(Style{}, sample<double>(6, 9, Style{})),
        tall(Style{}, sample<double>(9, 6, Style{}));
    const Stored<float, i32> single(Style{}, sample<float>(6, 9, Style{}));
    const auto expect = [](orv_status status, orv_status expected, const std::string& says) {
        EXPECT_EQ(status, expected);
        EXPECT_NE(std::string(orv_last_error()).find(says), std::string::npos) << orv_last_error();
    };
    Made c(ORV_SPARSE_CSR, 32);
    double dense[36];
    expect(orv_sparse_dadd('N', 1, &wide.record, &tall.record, &c), -4,
           "orv_sparse_dadd: argument 4: it has other sizes than op(A), which is 6 by 9");
    expect(orv_sparse_dadd('N', 1, &wide.record, &single.record, &c), -4, "its type is not that of A");
    expect(orv_sparse_sadd('N', 1, &wide.record, &wide.record, &c), -3, "type is not that of the routine");
    expect(orv_sparse_dadd('Q', 1, &wide.record, &wide.record, &c), -1, "trans is none of N, T, C");
    expect(orv_sparse_dadd('N', 1, &wide.record, nullptr, &c), -4, "the matrix is a null pointer");
    expect(orv_sparse_dadd('N', 1, &wide.record, &wide.record, nullptr), -5, "the record of the result");
    expect(orv_sparse_multiply('N', &wide.record, 'N', &wide.record, &c), -4, "op(B) has 6 rows, and op(A) 9 columns");
    expect(orv_sparse_multiply('N', &wide.record, 'x', &tall.record, &c), -3, "trans is none of N, T, C");
    expect(orv_sparse_multiply('T', &wide.record, 'N', &single.record, &c), -4, "its type is not that of A");
    expect(orv_sparse_multiply_values('N', &wide.record, 'N', &tall.record, &c), -5, "begin is a null pointer");
    expect(orv_sparse_multiply_dense('Z', 'N', &wide.record, 'N', &tall.record, dense, 6), -1, "order is none of");
    expect(orv_sparse_multiply_dense('R', 'N', &wide.record, 'N', &tall.record, dense, 5), -7,
           "it is smaller than a line of 6");
    expect(orv_sparse_multiply_dense('R', 'N', &wide.record, 'N', &tall.record, nullptr, 6), -6, "null pointer");
    c.format = ORV_SPARSE_COO;
    expect(orv_sparse_multiply_values('N', &wide.record, 'N', &tall.record, &c), -5, "in CSR of kind G");
    EXPECT_EQ(c.values, nullptr);
    orv_sparse self = wide.record;
    expect(orv_sparse_dadd('N', 1, &wide.record, &wide.record, &self), -5, "overlaps an operand");
}
