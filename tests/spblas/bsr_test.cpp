// Rows of blocks: products, solves, inverses; every name, both widths.
#include "frame/kernels/spblas.h"
#include "tests/spblas/dense.h"

using namespace orv;
using namespace orv::test;

namespace {

namespace sparse = kernels::sparse;

// What orv_serv_cpuisbulldozer answers here, and how often it was asked.
int special_family = 0, asked = 0;

constexpr i64 orders[] = {1, 2, 3, 9};

// Blocks of order lb where a pattern has entries, in both forms.
template <class T, class Int> struct Blocks {
    Coordinates<T> a; // its elements
    CsrArrays<T, Int> list;
    Guarded<T> val;

    Blocks(const Coordinates<T>& pattern, i64 lb, bool by_rows, bool symmetric)
        : a{"", pattern.m * lb, pattern.k * lb, {}}, list(pattern, by_rows ? 0 : 1, by_rows ? 0 : 1),
          val(list.val.size() * static_cast<std::size_t>(lb * lb))
    {
        Random random(3);
        const Int base = by_rows ? 0 : 1;
        for (i64 i = 0; i < pattern.m; ++i)
            for (Int e = list.begin[at(i)] - list.begin[0]; e < list.end[at(i)] - list.begin[0]; ++e)
                for (i64 r = 0; r < lb; ++r)
                    for (i64 s = 0; s < lb; ++s) {
                        const i64 j = list.col[at(e)] - base;
                        T value = real_t<T>(0.125) * random.value<T>();
                        if (i == j && r == s) value = value + one<T> + one<T>;
                        if (i == j && symmetric && s < r) value = element(lb, by_rows, e, s, r);
                        element(lb, by_rows, e, r, s) = value;
                        a.entries.push_back({i * lb + r, j * lb + s, value});
                    }
    }

private:
    static std::size_t at(i64 i) { return static_cast<std::size_t>(i); }
    T& element(i64 lb, bool by_rows, i64 e, i64 r, i64 s) const
    {
        return val[at(e * lb * lb + (by_rows ? r * lb + s : r + s * lb))];
    }
};

// What blocks mean: triangles and diagonals are those of blocks, of which each is used whole.
template <class T> std::vector<Coordinate<T>> meant_by_blocks(const SparseName& name, const Coordinates<T>& a, i64 lb)
{
    std::vector<Coordinate<T>> all;
    for (const auto& [i, j, value] : a.entries) {
        if (!name.keeps(i / lb, j / lb)) continue;
        all.push_back({i, j, value});
        if (i / lb != j / lb && (name.kind == 's' || name.kind == 'a'))
            all.push_back({j, i, name.kind == 'a' ? -value : value});
    }
    if (name.unit())
        for (i64 i = 0; i < a.m; ++i) all.push_back({i, i, one<T>});
    for (auto& entry : all) {
        if (name.transposes()) std::swap(entry.i, entry.j);
        if (name.conjugates()) entry.a = conjugated(entry.a);
    }
    return all;
}

// Y := alpha*op(A)*X + beta*before
template <class T>
long double error(const std::vector<Coordinate<T>>& all, i64 columns, T alpha, T beta, const Dense<T>& x,
                  const Dense<T>& y, i64 rows)
{
    std::vector<WideSum> sums(static_cast<std::size_t>(rows));
    long double worst = 0;
    for (i64 c = 0; c < columns; ++c) {
        for (i64 i = 0; i < rows; ++i) {
            auto& sum = sums[static_cast<std::size_t>(i)] = {};
            if (beta != zero<T>) sum.add(beta, y.before(i, c));
        }
        for (const auto& [i, j, a] : all) sums[static_cast<std::size_t>(i)].add(alpha, a, x(j, c));
        for (i64 i = 0; i < rows; ++i) {
            keep_worst(worst, sums[static_cast<std::size_t>(i)].excess(y(i, c)));
        }
    }
    return worst;
}

template <class Check> void each_type(const Check& check)
{
    for (const char type : {'s', 'd', 'c', 'z'}) each_width(type, check);
}

template <class T> Coordinates<T> block_pattern(i64 m, bool with_diagonal)
{
    std::vector<i64> lengths{3, 0, 1, 5, 9, 2, 4, 0, 7};
    lengths.resize(static_cast<std::size_t>(m));
    return drawn<T>("blocks", m, lengths, with_diagonal);
}

} // namespace

// The branch asks the program before the core.
extern "C" __attribute__((visibility("default"), used)) int orv_serv_cpuisbulldozer()
{
    return ++asked, special_family;
}

TEST(BsrMv, of_every_name_is_within_the_textbook_bound)
{
    int names = 0;
    for (const char* form : {"mv", "gemv"})
        for (const SparseName& name : sparse_names("bsr", form)) {
            ++names;
            each_width(name.type, [&]<class T, class Int> {
                for (const i64 lb : orders)
                    for (const auto& [alpha, beta] : factors<T>()) {
                        const auto pattern = block_pattern<T>(9, false);
                        const Blocks<T, Int> blocks(pattern, lb, name.by_rows(), name.kind == 's');
                        const Dense<T> x(9 * lb, 1, false, 0), y(9 * lb, 1, false, 0, beta == zero<T>);
                        const auto function = kernel<sparse::bsr_mv_par<T, Int>>(module_of<Int>, name.text);
                        const Int mb = 9, order = static_cast<Int>(lb);
                        const auto run = [&](Int first, Int last) {
                            function(&first, &last, &mb, &mb, &order, &alpha, blocks.val.data(), blocks.list.col.data(),
                                     blocks.list.begin.data(), blocks.list.end.data(), x.data(), y.data(), &beta);
                        };
                        if (name.kind == 'g') run(1, 4), run(5, 9), run(3, 2);
                        else run(1, 9);
                        ASSERT_LE(error(meant_by_blocks(name, blocks.a, lb), 1, alpha, beta, x, y, 9 * lb), 1)
                            << module_of<Int> << ' ' << name.text << " of order " << lb;
                    }
            });
        }
    EXPECT_EQ(names, 24);
}

namespace {

// C := C + alpha*op(A)*B by the routine of a kind.
template <class T, class Int>
void expect_product(const std::string& routine, char kind, Int op, Int uplo, Int nonunit, bool by_rows, i64 lb)
{
    SparseName name{};
    name.kind = kind, name.op = op == 1 ? 'n' : op == 3 ? 'c' : 't';
    name.triangle = kind == 'g' || kind == 'd' ? '_' : uplo == 1 ? 'l' : 'u';
    name.diagonal = kind != 'g' && kind != 'a' && nonunit == 0 ? 'u' : 'n';
    const i64 columns = 4;
    const Blocks<T, Int> blocks(block_pattern<T>(9, false), lb, by_rows, kind == 's');
    const Dense<T> b(9 * lb, columns, by_rows, 1), c(9 * lb, columns, by_rows, 2);
    const T alpha = factors<T>()[0].first;
    const Int mb = 9, nd = columns, order = static_cast<Int>(lb), ldb = b.template ld<Int>(),
              ldc = c.template ld<Int>();
    const std::string prefix = std::string(by_rows ? "cspblas_" : "") + letter<T> + routine;
    const char* module = module_of<Int>;
    const auto call = [&]<class F>(std::type_identity<F>, auto... options) {
        kernel<F>(module, prefix)(options..., &mb, &nd, &order, &alpha, blocks.val.data(), blocks.list.col.data(),
                                  blocks.list.begin.data(), blocks.list.end.data(), b.data(), &ldb, c.data(), &ldc);
    };
    switch (kind) {
    case 'g':
        call(std::type_identity<sparse::BsrmmGen<T, Int>>(), &op);
        break;
    case 's':
        call(std::type_identity<sparse::BsrmmSym<T, Int>>(), &uplo, &nonunit);
        break;
    case 't':
        call(std::type_identity<sparse::BsrmmTr<T, Int>>(), &op, &uplo, &nonunit);
        break;
    case 'a':
        call(std::type_identity<sparse::BsrmmSkew<T, Int>>(), &op, &uplo);
        break;
    default:
        call(std::type_identity<sparse::BsrmmDiag<T, Int>>(), &op, &nonunit);
    }
    ASSERT_LE(error(meant_by_blocks(name, blocks.a, lb), columns, alpha, one<T>, b, c, 9 * lb), 1)
        << module << ' ' << prefix << ", op " << op << " uplo " << uplo << " nonunit " << nonunit << " order " << lb;
    EXPECT_TRUE(c.padding_is_untouched());
}

} // namespace

TEST(BsrMm, of_every_kind_and_option_is_within_the_textbook_bound)
{
    each_type([]<class T, class Int> {
        for (const bool by_rows : {false, true})
            for (const i64 lb : orders)
                for (const Int op : {1, 2, 3})
                    for (const Int uplo : {1, 2})
                        for (const Int nonunit : {0, 1}) {
                            if (testing::Test::HasFailure()) return;
                            const auto expect = [&](const char* routine, char kind) {
                                expect_product<T, Int>(routine, kind, op, uplo, nonunit, by_rows, lb);
                            };
                            expect("bsrmmtr", 't');
                            if (op == 1) expect("bsrmmsym", 's');
                            if (uplo == 1) expect("bsrmmdiag", 'd');
                            if (nonunit == 0) expect("bsrmmskew", 'a');
                            if (uplo == 1 && nonunit == 0) expect("bsrmmgen", 'g');
                        }
    });
}

TEST(BsrBlock, adds_a_block_times_a_vector_at_elements_counted_from_0)
{
    each_type([]<class T, class Int> {
        for (const bool by_rows : {false, true})
            for (const i64 lb : orders) {
                const Blocks<T, Int> blocks(from_rows<T>("one block", 1, {{0}}), lb, by_rows, false);
                const Dense<T> x(lb + 2, 1, false, 0), y(lb + 5, 1, false, 0);
                const Int order = static_cast<Int>(lb), frow = 5, fcol = 2;
                kernel<sparse::Bsrbv<T, Int>>(module_of<Int>, std::string(by_rows ? "cspblas_" : "") + letter<T>,
                                              "bsrbv")(&order, &frow, &fcol, blocks.val.data(), x.data(), y.data());
                auto all = blocks.a.entries;
                for (auto& entry : all) entry.i += frow, entry.j += fcol;
                EXPECT_LE(error(all, 1, one<T>, one<T>, x, y, lb + 5), 1);
            }
    });
}

namespace {

template <class T, class Int>
void expect_solved(bool by_columns, bool by_rows, Int op, Int uplo, i64 lb, bool with_diagonal)
{
    const auto pattern = block_pattern<T>(9, with_diagonal);
    const Blocks<T, Int> blocks(pattern, lb, by_rows, false);
    Coordinates<T> a = blocks.a;
    if (by_columns) { // the list has columns of A, blocks stay as they are
        for (auto& [i, j, value] : a.entries) {
            const i64 r = i % lb, s = j % lb, column = i / lb, row = j / lb;
            i = row * lb + r, j = column * lb + s;
        }
    }
    const Int mb = 9, nd = 3, order = static_cast<Int>(lb), flag = 1;
    const char* base = by_rows ? "_cspblas" : "";
    const auto& list = blocks.list;
    const auto invert = kernel<sparse::BsrInvdiag<T, Int>>(module_of<Int>, letter<T>, "bsr", base, "_invdiag");
    const Int none = 0;
    const std::vector<T> before(blocks.val.begin(), blocks.val.end());
    invert(&mb, &none, &order, blocks.val.data(), list.col.data(), list.begin.data(), list.end.data());
    invert(&none, &flag, &order, blocks.val.data(), list.col.data(), list.begin.data(), list.end.data());
    ASSERT_TRUE(same_bits(before.data(), blocks.val.data(), static_cast<i64>(before.size())));
    invert(&mb, &flag, &order, blocks.val.data(), list.col.data(), list.begin.data(), list.end.data());

    const Dense<T> c(9 * lb, nd, by_rows, 2);
    const Int ldc = c.template ld<Int>();
    kernel<sparse::BsrGauss<T, Int>>(module_of<Int>, letter<T>, by_columns ? "bsc" : "bsr", base,
                                     "_gauss")(&op, &uplo, &order, &mb, &nd, blocks.val.data(), list.col.data(),
                                               list.begin.data(), list.end.data(), c.data(), &ldc);
    SparseName name{};
    name.kind = 't', name.op = op == 1 ? 'n' : op == 3 ? 'c' : 't', name.triangle = uplo == 1 ? 'l' : 'u';
    auto all = meant_by_blocks(name, a, lb);
    for (i64 i = 0; i < 9; ++i) // blocks that are missing count for ones
        if (std::none_of(all.begin(), all.end(), [&](const auto& e) { return e.i / lb == i && e.j / lb == i; }))
            for (i64 r = 0; r < lb; ++r) all.push_back({i * lb + r, i * lb + r, one<T>});
    for (i64 j = 0; j < nd; ++j) {
        std::vector<WideSum> sums(static_cast<std::size_t>(9 * lb));
        for (const auto& [i, k, value] : all) sums[static_cast<std::size_t>(i)].add(value, c(k, j));
        for (i64 i = 0; i < 9 * lb; ++i) {
            auto& sum = sums[static_cast<std::size_t>(i)];
            sum.add(-one<T>, c.before(i, j));
            sum.terms *= static_cast<long double>(2 * lb); // inverses, of well-conditioned blocks
            ASSERT_LE(sum.excess(zero<T>), 1) << module_of<Int> << ' ' << letter<T> << (by_columns ? "bsc" : "bsr")
                                              << base << " op " << op << " uplo " << uplo << " order " << lb;
        }
    }
    EXPECT_TRUE(c.padding_is_untouched());
}

} // namespace

TEST(BsrGauss, solves_with_the_inverses_of_diagonal_blocks)
{
    each_type([]<class T, class Int> {
        for (const bool by_columns : {false, true})
            for (const bool by_rows : {false, true})
                for (const Int op : {1, 2, 3})
                    for (const Int uplo : {1, 2})
                        for (const i64 lb : orders)
                            for (const bool with_diagonal : {true, false})
                                if (!testing::Test::HasFailure())
                                    expect_solved<T, Int>(by_columns, by_rows, op, uplo, lb, with_diagonal);
    });
}

TEST(BsrInvdiag, exchanges_rows_for_a_larger_pivot)
{
    const i64 mb = 1, flag = 1, lb = 3, col = 0, begin = 0, end = 1;
    double val[] = {0, 2, 0, 0, 0, 4, 8, 0, 0};
    kernel<kernels::spblas::dbsr_cspblas_invdiag>()(&mb, &flag, &lb, val, &col, &begin, &end);
    const double expected[] = {0, 0, 0.125, 0.5, 0, 0, 0, 0.25, 0};
    EXPECT_TRUE(same_bits(val, expected, 9));
}

TEST(BsrPairs, multiply_dense_columns_in_groups_of_any_width)
{
    const auto mm = reinterpret_cast<sparse::Lb2Mm*>(branch_symbol("mc3_dbsrng__f__mmout_sse42_lb2_int32"));
    const Blocks<double, i32> blocks(block_pattern<double>(9, false), 2, false, false);
    SparseName name{};
    name.op = 'n', name.kind = 'g', name.triangle = '_';
    const i32 mb = 9, lb = 2, first = 2, last = 8;
    for (special_family = 0; special_family < 2; ++special_family)
        for (const i64 padding : {3, 2048 - 18, 2049 - 18}) // columns a multiple of 1024 apart, and not
            for (const i64 columns : {0, 1, 5, 6, 7, 12, 13, 20})
                for (const double beta : {0.0, -0.5}) {
                    const Dense<double> x(18, columns, false, padding), y(18, columns, false, padding, beta == 0);
                    const i32 nd = static_cast<i32>(columns), ld = x.ld<i32>();
                    const double alpha = 0.75;
                    mm(&first, &last, &mb, &nd, &lb, &alpha, blocks.val.data(), blocks.list.col.data(),
                       blocks.list.begin.data(), blocks.list.end.data(), x.data(), &ld, y.data(), &ld, &beta);
                    for (i64 c = 0; c < columns; ++c)
                        for (const i64 i : {0, 1, 16, 17}) // rows of no block row asked for
                            ASSERT_TRUE(same_bits(&y(i, c), std::array{y.before(i, c)}.data(), 1));
                    for (i64 c = 0; c < columns; ++c)
                        for (const i64 i : {0, 1, 16, 17}) y(i, c) = 0;
                    auto all = meant_by_blocks(name, blocks.a, 2);
                    std::erase_if(all, [](const auto& e) { return e.i < 2 || e.i > 15; });
                    std::vector<WideSum> sums(18);
                    for (i64 c = 0; c < columns; ++c) {
                        std::fill(sums.begin(), sums.end(), WideSum{});
                        for (i64 i = 2; i < 16 && beta != 0; ++i)
                            sums[static_cast<std::size_t>(i)].add(beta, y.before(i, c));
                        for (const auto& [i, j, a] : all) sums[static_cast<std::size_t>(i)].add(alpha, a, x(j, c));
                        for (i64 i = 0; i < 18; ++i)
                            ASSERT_LE(sums[static_cast<std::size_t>(i)].excess(y(i, c)), 1) << columns;
                    }
                }
    special_family = 0;
    EXPECT_GT(asked, 0);
}
