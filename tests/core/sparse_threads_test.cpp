// Sparse products and solves on teams of 1 to 5.
#include "core/sparse/share.h"
#include "core/team/eagerness.h"
#include "tests/core/sparse.h"
#include "tests/core/teams.h"

using namespace orv;
using namespace orv::test;

namespace {

class SparseTeams : public testing::Test {
public:
    SparseTeams() { orv_team_set_eagerness(1e9); }
    ~SparseTeams() override { orv_team_set_eagerness(1), orv_set_thread_num_threads(0); }
};

template <class T, class Call> std::vector<T> on(int threads, std::vector<T> y, const Call& call)
{
    orv_set_thread_num_threads(threads);
    teams = 0;
    EXPECT_EQ(call(y.data()), ORV_OK) << orv_last_error();
    EXPECT_TRUE(teams == 0 || orv_sparse_threads() > 1);
    return y;
}

// Whether products with a vector are promised the same bits on any number of threads.
bool own_rows(const Style& s, char trans)
{
    const bool as_stored = s.format == ORV_SPARSE_CSC ? trans != 'N' : trans == 'N';
    switch (s.format) {
    case ORV_SPARSE_CSR:
    case ORV_SPARSE_CSC:
        return as_stored && (s.kind == 'G' || s.kind == 'T');
    case ORV_SPARSE_DIA:
    case ORV_SPARSE_BSR:
        return as_stored && s.kind == 'G';
    default:
        return false;
    }
}

// Most of the entries are in the last rows.
template <class T> Coordinates<T> uneven(const Style& style)
{
    auto a = sample<T>(210, 210, style, 3);
    auto more = sample<T>(30, 210, Style{}, 100);
    std::erase_if(a.entries, [](const auto& e) { return e.i >= 180 && e.i != e.j; });
    for (auto& e : more.entries)
        if (e.j / style.block < (e.i + 180) / style.block) a.entries.push_back({e.i + 180, e.j, real_t<T>(0.1) * e.a});
    std::sort(a.entries.begin(), a.entries.end(),
              [](const auto& x, const auto& y) { return std::pair(x.i, x.j) < std::pair(y.i, y.j); });
    return a;
}

template <class T>
void expect_small_error(const Style& style, char trans, const Coordinates<T>& a, const std::vector<T>& x,
                        const std::vector<T>& start, const std::vector<T>& y)
{
    std::vector<WideSum> sums(y.size());
    for (const auto& [i, j, value] : whole_of(style, trans, a))
        sums[static_cast<std::size_t>(i)].add(value, x[static_cast<std::size_t>(j)]);
    for (std::size_t i = 0; i < y.size(); ++i) {
        sums[i].add(one<T>, start[i]);
        sums[i].terms += 6; // sums of parts
        ASSERT_LE(sums[i].excess(y[i]), 1) << "row " << i;
    }
}

} // namespace

TEST_F(SparseTeams, products_with_vectors_do_not_depend_on_threads_where_told_and_else_on_their_number_alone)
{
    const auto all = []<class T, class Int> {
        each_style("GSHATD", [](const Style& style) {
            if (style.block == 3 || (style.base == 1) != (style.block == 2)) return;
            const auto a = uneven<T>(style);
            const Stored<T, Int> stored(style, a);
            const auto x = random_elements<T>(210, 1), start = random_elements<T>(210, 2);
            for (const char trans : {'N', 'T', 'C'}) {
                if (!exists<T>(style, trans) || testing::Test::HasFailure()) continue;
                SCOPED_TRACE(style.text() + ' ' + trans);
                const auto call = [&](T* y) {
                    return sparse_mv<T>(trans, one<T>, &stored.record, x.data(), one<T>, y);
                };
                const auto alone = on(1, start, call);
                for (int threads = 2; threads <= 5; ++threads) {
                    const auto shared = on(threads, start, call), again = on(threads, start, call);
                    EXPECT_TRUE(same_bits(shared, again)) << threads << " threads";
                    if (own_rows(style, trans)) {
                        EXPECT_EQ(orv_sparse_threads(), threads);
                        EXPECT_TRUE(same_bits(shared, alone)) << threads << " threads";
                    } else if (style.kind != 'T' && threads == 3) expect_small_error(style, trans, a, x, start, shared);
                }
            }
        });
    };
    all.operator()<double, i64>();
    all.operator()<cpx<float>, i32>();
}

TEST_F(SparseTeams, symmetric_and_transposed_products_are_shared)
{
    for (const auto& [style, trans] : {std::pair<Style, char>{{ORV_SPARSE_CSR, 'S'}, 'N'},
                                       {{ORV_SPARSE_CSR, 'G'}, 'T'},
                                       {{ORV_SPARSE_CSC, 'G'}, 'N'},
                                       {{ORV_SPARSE_COO, 'G'}, 'N'},
                                       {{ORV_SPARSE_COO, 'S'}, 'N'},
                                       {{ORV_SPARSE_DIA, 'S'}, 'N'}}) {
        const Stored<double, i64> stored(style, sample<double>(210, 210, style, 12));
        const auto x = random_elements<double>(210, 1);
        on(3, x, [&, t = trans](double* y) { return orv_sparse_dmv(t, 1, &stored.record, x.data(), 0, y); });
        EXPECT_EQ(orv_sparse_threads(), 3) << style.text();
    }
}

TEST_F(SparseTeams, dense_products_and_solves_give_the_same_bits_on_any_number_of_threads)
{
    each_style("GSTD", [](const Style& style) {
        if (!exists<double>(style, 'N') || style.block == 3 || (style.base == 1) != (style.block == 2)) return;
        const i64 columns = 19;
        const Stored<double, i32> stored(style, uneven<double>(style));
        const auto x = random_elements<double>(210 * columns, 1), start = random_elements<double>(210 * columns, 2);
        for (const char order : {'R', 'C'})
            for (const char trans : {'N', 'T'}) {
                const i64 ld = order == 'R' ? columns : 210;
                const auto same = [&](const auto& call) {
                    const auto alone = on(1, start, call);
                    for (int threads = 2; threads <= 5; ++threads)
                        EXPECT_TRUE(same_bits(on(threads, start, call), alone))
                            << style.text() << ' ' << trans << order << ' ' << threads << " threads";
                };
                same([&](double* y) {
                    return orv_sparse_dmm(order, trans, 1, &stored.record, columns, x.data(), ld, 1, y, ld);
                });
                if (style.kind == 'T' || style.kind == 'D')
                    same([&](double* y) {
                        return orv_sparse_dsm(order, trans, 1, &stored.record, columns, x.data(), ld, y, ld);
                    });
            }
    });
}

TEST(SparseShares, have_even_entries_not_rows)
{
    // Half of all entries are in row 0.
    const i64 n = 1000;
    std::vector<i64> begin{0};
    for (i64 i = 0; i < n; ++i) begin.push_back(begin.back() + (i == 0 ? 30000 : 30));
    const i64 work = core::sparse::work_of(begin.data(), begin.data() + 1, n);
    for (const int count : {2, 3, 5}) {
        i64 largest = 0;
        for (int index = 0; index < count; ++index) {
            const i64 from = core::sparse::share_of_rows(begin.data(), n, work, index, count),
                      to = core::sparse::share_of_rows(begin.data(), n, work, index + 1, count);
            ASSERT_LE(from, to);
            const auto entries = begin[static_cast<std::size_t>(to)] - begin[static_cast<std::size_t>(from)];
            largest = std::max(largest, entries);
        }
        EXPECT_LE(largest, std::max<i64>(30000, 60000 / count) + 1000) << count;
    }
}

TEST(SparseShares, have_every_row_once_in_whatever_order_rows_lie)
{
    Random random(3);
    for (int draw = 0; draw < 200; ++draw) {
        const i64 n = random.integer(0, 40);
        std::vector<i32> begin, end;
        for (i64 i = 0; i < n; ++i) {
            begin.push_back(static_cast<i32>(random.integer(0, 1000)));
            end.push_back(begin.back() + static_cast<i32>(random.integer(0, 50)));
        }
        const i32 m = static_cast<i32>(n);
        const i64 work = core::sparse::work_of(begin.data(), end.data(), m);
        i32 before = 0;
        for (int index = 1; index <= 7; ++index) {
            const i32 edge = core::sparse::share_of_rows(begin.data(), m, work, index, 7);
            ASSERT_GE(edge, before);
            before = edge;
        }
        EXPECT_EQ(before, m);
    }
}
