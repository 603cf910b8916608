// trsm, trmm, their parts and the product with a packed triangle: exact on small whole numbers.
#include "tests/level3/triangular.h"
#include "tests/support/probe.h"

namespace orv::test {
namespace {

template <class T> class TriangularTest : public testing::Test {
public:
    static std::string trsm() { return std::string(1, letter<T>) + "trsm"; }
    static std::string trmm() { return std::string(1, letter<T>) + "trmm"; }
    static void both(const Options& o, i64 order, i64 others, T alpha)
    {
        const Problem<T> x(o, o.left() ? order : others, o.left() ? others : order, alpha);
        x.start(x.p);
        x.call("x" + trsm());
        x.expect(x.x, x.p, alpha, trsm());
        x.start(x.x);
        x.call("x" + trmm());
        x.expect(x.p, x.x, alpha, trmm());
    }
    static T alpha(int turn)
    {
        const T alphas[] = {number<T>(1), number<T>(2, -1), number<T>(-1)};
        return turn % 11 == 10 ? zero<T> : alphas[turn % 3];
    }
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(TriangularTest, Types);
using RealTypes = testing::Types<float, double>;

TYPED_TEST(TriangularTest, is_exact_at_all_small_sizes)
{
    int turn = 0;
    for (const Options& o : all_options<TypeParam>())
        for (i64 order = 0; order <= 40; ++order)
            for (const i64 others : {0, 1, 2, 3, 4, 5, 7, 8, 11, 12, 18})
                this->both(o, order, others, this->alpha(turn++));
}

TYPED_TEST(TriangularTest, is_exact_on_both_sides_of_every_block)
{
    int turn = 0;
    for (const Options& o : all_options<TypeParam>())
        for (const i64 order : {63, 64, 65, 95, 96, 97, 127, 128, 129, 160, 255, 256, 257, 300, 512})
            this->both(o, order, order < 200 ? 6 : 5, this->alpha(turn++));
}

TYPED_TEST(TriangularTest, is_exact_over_several_sweeps)
{
    int turn = 0;
    for (const Options& o : all_options<TypeParam>())
        for (const i64 others : {511, 513, 999, 1000, 1001, 2003}) this->both(o, 37, others, this->alpha(turn++));
}

TYPED_TEST(TriangularTest, clears_b_and_reads_nothing_when_alpha_is_zero)
{
    using T = TypeParam;
    for (const std::string& name : {this->trsm(), this->trmm()})
        for (const i64 m : {3, 40}) {
            const Problem<T> x({'L', 'U', 'N', 'N'}, m, 5, zero<T>);
            for (T& e : x.a) e = nan_of<T>();
            for (T& e : x.b) e = nan_of<T>();
            x.call("x" + name);
            for (i64 j = 0; j < x.n; ++j)
                for (i64 i = 0; i < m; ++i) ASSERT_EQ(x.b[i + j * x.ldb], zero<T>);
        }
}

TYPED_TEST(TriangularTest, leaves_b_as_it_came_without_memory)
{
    using T = TypeParam;
    for (const char side : {'L', 'R'})
        for (const auto& [name, solves] : {std::pair{this->trsm(), true}, {this->trmm(), false}}) {
            const Problem<T> x({side, 'U', 'T', 'N'}, 150, 140, number<T>(2));
            const std::vector<T>&from = solves ? x.p : x.x, &to = solves ? x.x : x.p;
            i64 failing = 0;
            for (bool failed = true; failed; ++failing) {
                x.start(from);
                ProbeScope service;
                service->fail_at = failing;
                x.call("x" + name);
                EXPECT_EQ(service->checked[0], "x" + name.substr(1));
                EXPECT_EQ(service->live, 0);
                failed = service->failed > 0;
                if (failing > 0) {
                    x.expect(to, from, x.alpha, name);
                    continue;
                }
                x.expect_untouched(from);
                EXPECT_EQ(service->microarchitecture_asked, (std::is_same_v<T, double> ? 1 : 0))
                    << "the kernel is chosen before memory is asked for";
            }
            EXPECT_GT(failing, 2) << "the products inside ask, too";
        }
}

TYPED_TEST(TriangularTest, asks_for_nothing_up_to_eight_rows_on_the_left)
{
    using T = TypeParam;
    for (const i64 order : {1, 7, 8, 9})
        for (const char side : {'L', 'R'}) {
            const Problem<T> x({side, 'L', 'N', 'N'}, side == 'L' ? order : 30, side == 'L' ? 30 : order, number<T>(1));
            x.start(x.x);
            ProbeScope service;
            x.call("x" + this->trmm());
            EXPECT_EQ(service->allocations == 0, side == 'L' && order <= 8) << side << order;
        }
}

// The reciprocal of a diagonal element as a solve stores it.
template <class R> R reciprocal(R a) { return 1 / a; }
template <class R> cpx<R> reciprocal(cpx<R> a)
{
    const R larger = std::max(std::fabs(a.re), std::fabs(a.im));
    const cpx<R> u{a.re / larger, a.im / larger};
    const R t = a.re * u.re + a.im * u.im;
    return {u.re / t, -u.im / t};
}

// A diagonal matrix of numbers whose reciprocals round.
template <class T> void make_diagonal(const Problem<T>& x)
{
    Random random(7);
    for (T& e : x.a)
        if (e == e) e = zero<T>;
    for (i64 j = 0; j < x.order(); ++j) x.a[j * (x.lda + 1)] = random.value<T>();
    random.fill(x.b);
}

TYPED_TEST(TriangularTest, multiplies_by_reciprocals_in_whole_fours_and_divides_beside_them)
{
    using T = TypeParam;
    for (const char side : {'L', 'R'})
        for (const char uplo : {'L', 'U'})
            for (const i64 order : {4, 8, 11, 24}) {
                const Problem<T> x({side, uplo, 'N', 'N'}, side == 'L' ? order : 14, side == 'L' ? 14 : order, one<T>);
                make_diagonal(x);
                const std::vector<T> before(x.b.begin(), x.b.end());
                x.call("x" + this->trsm());
                // The walk of a solve comes last to what is left of the fours: at the end, or at the start.
                const bool down = (uplo == 'L') == (side == 'L');
                int differing = 0;
                for (i64 j = 0; j < x.n; ++j)
                    for (i64 i = 0; i < x.m; ++i) {
                        const i64 row = side == 'L' ? i : j, column = side == 'L' ? j : i;
                        const bool in_fours =
                            column < 12 && (down ? row < order / 4 * 4 : row >= order - order / 4 * 4);
                        const T d = x.a[row * (x.lda + 1)], was = before[i + j * x.ldb], is = x.b[i + j * x.ldb];
                        if (in_fours) {
                            EXPECT_EQ(is, was * reciprocal(d)) << x.text("trsm", i, j);
                        }
                        if constexpr (!is_complex<T>) {
                            differing += is != was / d;
                            EXPECT_TRUE(in_fours || is == was / d) << x.text("trsm", i, j);
                        }
                    }
                EXPECT_TRUE(is_complex<T> || differing > 0);
            }
}

TYPED_TEST(TriangularTest, divides_in_a_block_with_a_subnormal_diagonal)
{
    using T = TypeParam;
    using R = real_t<T>;
    const R tiny = std::numeric_limits<R>::min() / 64;
    for (const char side : {'L', 'R'}) {
        const Problem<T> x({side, 'L', 'T', 'N'}, 64, 64, one<T>);
        make_diagonal(x);
        x.a[5 * (x.lda + 1)] = number<T>(tiny);
        const i64 row = side == 'L' ? 1 : x.ldb, column = side == 'L' ? x.ldb : 1;
        for (i64 j = 0; j < 64; ++j) x.b[5 * row + j * column] = number<T>(3 * tiny);
        const std::vector<T> before(x.b.begin(), x.b.end());
        x.call("x" + this->trsm());
        int divided[2] = {};
        for (i64 j = 0; j < 64; ++j) {
            EXPECT_EQ(x.b[5 * row + j * column], number<T>(3)) << side << j;
            if constexpr (!is_complex<T>)
                for (i64 i = 0; i < 64; ++i) {
                    const i64 at = i * row + j * column;
                    divided[i / 32] += x.b[at] == before[at] / x.a[i * (x.lda + 1)];
                }
        }
        if constexpr (!is_complex<T>) {
            EXPECT_EQ(divided[0], 32 * 64) << "the block of the subnormal number";
            EXPECT_LT(divided[1], 32 * 64) << "the other block";
        }
    }
}

TYPED_TEST(TriangularTest, keeps_an_infinity_to_the_rows_that_depend_on_it)
{
    using T = TypeParam;
    for (const Options& o : all_options<T>())
        for (const i64 order : {7, 14, 70})
            for (const auto& [name, solves] : {std::pair{this->trsm(), true}, {this->trmm(), false}}) {
                const Problem<T> x(o, o.left() ? order : 9, o.left() ? 9 : order, number<T>(-1));
                const std::vector<T>&from = solves ? x.p : x.x, &to = solves ? x.x : x.p;
                const i64 row = o.left() ? 1 : x.ldb, column = o.left() ? x.ldb : 1, infinite = order / 2;
                x.start(from);
                for (i64 j = 0; j < 9; ++j)
                    x.b[infinite * row + j * column] = number<T>(std::numeric_limits<double>::infinity());
                x.call("x" + name);
                const bool lower = (o.upper() == o.plain()) != o.left(); // as it multiplies X from the left
                for (i64 i = lower ? 0 : infinite + 1; i < (lower ? infinite : order); ++i)
                    for (i64 j = 0; j < 9; ++j)
                        ASSERT_EQ(x.b[i * row + j * column], -to[i * row + j * column]) << x.text(name, i, j);
            }
}

// The record of a level, and one level with products that choose for themselves.
template <class T> struct Level {
    i64 block, col_block, order;
    T *a_work, *b_work, *strip;
};

TYPED_TEST(TriangularTest, has_levels_that_work_by_their_records)
{
    using T = TypeParam;
    alignas(16) static T triangle[2 * 16 * 16], strip[16 * 8];
    for (const Options& o : all_options<T>())
        for (const i64 order : {16, 37, 150})
            for (const i64 gives : {0, 1})
                for (const auto& [name, solves] : {std::pair{this->trsm(), true}, {this->trmm(), false}}) {
                    const Problem<T> x(o, o.left() ? order : 21, o.left() ? 21 : order, one<T>);
                    const std::vector<T>&from = solves ? x.p : x.x, &to = solves ? x.x : x.p;
                    const char upper = o.upper(), is_n = o.plain(), is_t = fold(o.trans) == 'T';
                    const Level<T> records[] = {{48, 10, gives, triangle, nullptr, strip},
                                                {16, 1000, 1 - gives, triangle, nullptr, strip}};
                    const auto* const levels = reinterpret_cast<const level3::Level<T>*>(records);
                    const i64 first = 0, last = 1;
                    const std::string symbol = name + (o.left() ? "_left" : "_right");
                    x.start(from);
                    kernel<kernels::blas::TrmmLevel<T>>("blas", symbol)(&upper, &is_n, &is_t, &o.diag, &x.m, &x.n,
                                                                        x.a.data(), &x.lda, x.b.data(), &x.ldb, levels,
                                                                        &first, &last, nullptr);
                    x.expect(to, from, one<T>, symbol);
                    if (order > 16) continue;
                    x.start(from);
                    kernel<kernels::blas::TrmmLastLevel<T>>("blas", symbol + "_ker")(&upper, &is_n, &is_t, &o.diag,
                                                                                     &x.m, &x.n, x.a.data(), &x.lda,
                                                                                     x.b.data(), &x.ldb, levels, &last);
                    x.expect(to, from, one<T>, symbol + "_ker");
                }
}

TEST(Trsm, divides_by_a_zero_on_the_diagonal_to_infinity)
{
    const Problem<double> x({'L', 'L', 'N', 'N'}, 8, 4, 1.0);
    make_diagonal(x);
    x.a[7 * (x.lda + 1)] = 0;
    for (double& e : x.b) e = 3;
    x.call("xdtrsm");
    for (i64 j = 0; j < 4; ++j) {
        EXPECT_EQ(x.b[7 + j * x.ldb], std::numeric_limits<double>::infinity());
        EXPECT_TRUE(std::isfinite(x.b[6 + j * x.ldb]));
    }
}

TYPED_TEST(TriangularTest, has_its_parts_under_names_of_their_own)
{
    using T = TypeParam;
    for (const Options& o : all_options<T>())
        for (const i64 order : {1, 5, 8, 33})
            for (const auto& [name, solves] : {std::pair{this->trsm(), true}, {this->trmm(), false}}) {
                const Problem<T> x(o, o.left() ? order : 9, o.left() ? 9 : order, one<T>);
                const std::vector<T>&from = solves ? x.p : x.x, &to = solves ? x.x : x.p;
                x.start(from);
                x.call_plain(name + "_pst");
                x.expect(to, from, one<T>, name + "_pst");
                if (!is_complex<T> && fold(o.trans) == 'C') continue;
                if (letter<T> == 'd' && (solves || o.left())) continue;
                const auto lower = [](char letter) { return static_cast<char>(letter | 0x20); };
                const std::string letters{'_', lower(o.side), lower(o.uplo), lower(o.trans)};
                x.start(from);
                x.call_letters(name + letters);
                x.expect(to, from, one<T>, name + letters);
            }
    const Problem<T> small({'l', 'u', 'n', 'n'}, 7, 5, number<T>(2));
    small.start(small.x);
    small.template call<kernels::blas::TrmmSmall<T>>(this->trmm() + "_sm_01_08");
    small.expect(small.p, small.x, small.alpha, "sm");
}

TEST(Triangular, has_a_copied_triangle_that_its_blocks_work_on)
{
    alignas(16) double packed[32 * 32], strip[32 * 4];
    for (const Options& o : all_options<double>())
        for (const bool solves : {true, false}) {
            if (!o.left() && !solves) continue;
            const i64 order = 24;
            const Problem<double> x(o, o.left() ? order : 8, o.left() ? 8 : order, 1.0);
            const std::vector<double>&from = solves ? x.p : x.x, &to = solves ? x.x : x.p;
            const std::string name = solves ? "dtrsm" : "dtrmm";
            const char upper = o.upper(), is_n = o.plain(), is_t = fold(o.trans) == 'T';
            x.start(from);
            kernel<kernels::blas::TrmmCopyA<double>>("blas", name + "_copya")(&o.side, &upper, &is_n, &is_t, &o.diag,
                                                                              &order, x.a.data(), &x.lda, packed);
            const std::string triangle = std::string(o.left() ? "_l" : "_r") + (o.upper() == o.plain() ? 'u' : 'l');
            kernel<kernels::blas::TrmmPacked>("blas", name + triangle)(&o.diag, &x.m, &x.n, packed, x.b.data(), &x.ldb,
                                                                       strip);
            x.expect(to, from, 1.0, name + triangle);
        }
}

template <class T> class PackedTriangularTest : public TriangularTest<T> {
public:
    static std::string ptrmm() { return std::string(1, letter<T>) + "ptrmm"; }
};
TYPED_TEST_SUITE(PackedTriangularTest, RealTypes);

TYPED_TEST(PackedTriangularTest, is_exact_on_both_sides_of_its_blocks)
{
    using T = TypeParam;
    int turn = 0;
    for (const Options& o : all_options<T>())
        for (const i64 order : {0, 1, 2, 5, 8, 9, 40, 127, 128, 129, 255, 256, 257, 300, 520})
            for (const i64 others : {0, 1, 6}) {
                const T alpha = this->alpha(turn++);
                const Problem<T> x(o, o.left() ? order : others, o.left() ? others : order, alpha);
                x.start(x.x);
                x.call_packed("x" + this->ptrmm());
                x.expect(x.p, x.x, alpha, this->ptrmm());
            }
}

TYPED_TEST(PackedTriangularTest, computes_without_memory_all_the_same)
{
    using T = TypeParam;
    for (const Options& o : all_options<T>()) {
        const Problem<T> x(o, o.left() ? 270 : 20, o.left() ? 20 : 270, T(2));
        x.start(x.x);
        x.call_packed(this->ptrmm() + "_pst");
        x.expect(x.p, x.x, T(2), "pst");
        for (i64 failing = 0; failing < 4; ++failing) {
            x.start(x.x);
            ProbeScope service;
            service->fail_at = failing;
            x.call_packed("x" + this->ptrmm());
            EXPECT_EQ(service->live, 0);
            EXPECT_EQ(service->failed, 1);
            x.expect(x.p, x.x, T(2), this->ptrmm());
        }
    }
}

TYPED_TEST(PackedTriangularTest, asks_for_the_processor_before_it_asks_for_memory)
{
    using T = TypeParam;
    const Problem<T> x({'L', 'U', 'N', 'N'}, 12, 5, T(2)); // one square: no products inside, which ask too
    x.start(x.x);
    ProbeScope service;
    service->fail_all = true;
    x.call_packed("x" + this->ptrmm());
    EXPECT_EQ(service->allocations, 1);
    EXPECT_EQ(service->microarchitecture_asked, (std::is_same_v<T, double> ? 1 : 0));
}

TYPED_TEST(PackedTriangularTest, copies_a_rectangle_of_packed_columns)
{
    using T = TypeParam;
    const auto copy = kernel<kernels::blas::PtrmmCopyA<T>>("blas", this->ptrmm() + "_copya");
    const i64 order = 9, rows = 3, columns = 2;
    std::vector<T> packed(order * (order + 1) / 2);
    for (std::size_t i = 0; i < packed.size(); ++i) packed[i] = T(i);
    T full[6];
    for (const char uplo : {'u', 'L'}) {
        const i64 i = uplo == 'u' ? 1 : 6, j = uplo == 'u' ? 6 : 1;
        copy(&uplo, &order, &i, &j, &rows, &columns, packed.data(), full);
        for (i64 c = 0; c < columns; ++c)
            for (i64 r = 0; r < rows; ++r) {
                const i64 at = uplo == 'u' ? (j + c) * (j + c + 1) / 2 + i + r
                                           : (j + c) * order - (j + c) * (j + c + 1) / 2 + i + r;
                EXPECT_EQ(full[r + c * rows], T(at));
            }
    }
}

TEST(Line, of_triangular_matrices_repeats_it)
{
    for (const char* name : {"xdtrsm", "xdtrmm"})
        EXPECT_TRUE(repeats(Problem<double>({'L', 'u', 'T', 'N'}, 7, 5, 0.5).text(name, 1, 2)));
    EXPECT_TRUE(repeats(Problem<cpx<float>>({'r', 'L', 'C', 'u'}, 7, 5, {1, -2}).text("xctrsm", 1, 2)));
}

} // namespace
} // namespace orv::test
