// Skylines, and the products and small routines that stand alone.
#include "frame/kernels/spblas.h"
#include "tests/spblas/dense.h"

using namespace orv;
using namespace orv::test;

namespace {

namespace sparse = kernels::sparse;

template <class Check> void each_type(const Check& check)
{
    for (const char type : {'s', 'd', 'c', 'z'}) each_width(type, check);
}

// A triangle by profiles, of rows if it is lower and of columns if it is upper.
template <class T, class Int> struct Skyline {
    Coordinates<T> a;
    Guarded<T> val;
    Guarded<Int> pntr;

    Skyline(i64 n, bool lower, Int base) : a{"", n, n, {}}, val(size(n)), pntr(static_cast<std::size_t>(n + 1))
    {
        Random random(8);
        std::size_t next = 0;
        for (i64 i = 0; i < n; ++i) {
            pntr[static_cast<std::size_t>(i)] = base + static_cast<Int>(next);
            for (i64 j = i - beside(i); j <= i; ++j) {
                T value = real_t<T>(0.25) * random.value<T>();
                if (i == j) value = value + one<T> + one<T>;
                val[next++] = value;
                a.entries.push_back(lower ? Coordinate<T>{i, j, value} : Coordinate<T>{j, i, value});
            }
        }
        pntr[static_cast<std::size_t>(n)] = base + static_cast<Int>(next);
    }

private:
    static i64 beside(i64 i) { return i % 5 == 0 ? 0 : i * 7 % (i + 1); }
    static std::size_t size(i64 n)
    {
        i64 all = 0;
        for (i64 i = 0; i < n; ++i) all += beside(i) + 1;
        return static_cast<std::size_t>(all);
    }
};

SparseName meaning(char kind, i64 op, i64 uplo, i64 nonunit)
{
    SparseName name{};
    name.kind = kind, name.op = op == 1 ? 'n' : 't', name.triangle = uplo == 1 ? 'l' : 'u';
    name.diagonal = kind != 'a' && nonunit == 0 ? 'u' : 'n';
    return name;
}

template <class T, class Int> void expect_product(char kind, Int op, Int uplo, Int nonunit)
{
    const i64 n = 23, columns = 4;
    const Skyline<T, Int> sky(n, uplo == 1, 3);
    const Dense<T> b(n, columns, false, 1), c(n, columns, false, 2);
    const T alpha = factors<T>()[0].first;
    const Int first = 2, last = 3, m = n, nd = columns, ldb = b.template ld<Int>(), ldc = c.template ld<Int>();
    const char* module = module_of<Int>;
    if (kind == 's')
        kernel<sparse::SkymmSym<T, Int>>(module, letter<T>, "skymmsk")(&first, &last, &m, &nd, &uplo, &nonunit, &alpha,
                                                                       sky.val.data(), sky.pntr.data(), b.data(), &ldb,
                                                                       c.data(), &ldc);
    else
        kernel<sparse::Skymm<T, Int>>(module, letter<T>, kind == 't' ? "skymmgk" : "skymmkk")(
            &op, &first, &last, &m, &nd, &uplo, &nonunit, &alpha, sky.val.data(), sky.pntr.data(), b.data(), &ldb,
            c.data(), &ldc);
    const auto all = meant(meaning(kind, op, uplo, nonunit), sky.a);
    for (const i64 j : {0, 1, 2, 3}) {
        std::vector<WideSum> sums(n);
        for (i64 i = 0; i < n; ++i) sums[static_cast<std::size_t>(i)].add(c.before(i, j));
        if (j == 1 || j == 2)
            for (const auto& [i, k, value] : all) sums[static_cast<std::size_t>(i)].add(alpha, value, b(k, j));
        for (i64 i = 0; i < n; ++i)
            ASSERT_LE(sums[static_cast<std::size_t>(i)].excess(c(i, j)), 1)
                << module << ' ' << letter<T> << kind << " op " << op << " uplo " << uplo << " nonunit " << nonunit;
    }
    EXPECT_TRUE(c.padding_is_untouched());
}

} // namespace

TEST(Skyline, products_of_every_kind_and_option_are_within_the_textbook_bound)
{
    each_type([]<class T, class Int> {
        for (const char kind : {'t', 's', 'a'})
            for (const Int op : {1, 2})
                for (const Int uplo : {1, 2})
                    for (const Int nonunit : {0, 1}) expect_product<T, Int>(kind, kind == 's' ? 1 : op, uplo, nonunit);
    });
}

TEST(Skyline, solves_leave_a_small_residual)
{
    each_type([]<class T, class Int> {
        for (const Int op : {1, 2})
            for (const Int uplo : {1, 2})
                for (const Int nonunit : {0, 1}) {
                    const Skyline<T, Int> sky(23, uplo == 1, 1);
                    const Dense<T> y(23, 1, false, 0);
                    const Int n = 23;
                    kernel<sparse::Skysv<T, Int>>(module_of<Int>, letter<T>, "skysvk")(
                        &op, &uplo, &nonunit, &n, sky.val.data(), sky.pntr.data(), y.data());
                    EXPECT_LE(residual(
                                  meaning('t', op, uplo, nonunit), sky.a, one<T>, [&](i64 i) { return y(i, 0); },
                                  [&](i64 i) { return y.before(i, 0); }),
                              1)
                        << module_of<Int> << ' ' << letter<T> << " op " << op << " uplo " << uplo;
                }
    });
}

namespace {
template <class Int> void expect_symmetric()
{
    SparseName name{};
    name.kind = 's', name.op = 'n', name.triangle = 'u', name.diagonal = 'n';
    for (auto a : square_patterns<double>(false)) {
        std::erase_if(a.entries, [](const auto& e) { return e.i > e.j; });
        for (const int base : {0, 1}) {
            Guarded<double> val(a.entries.size()), x(static_cast<std::size_t>(a.m)), y(x.size());
            Guarded<Int> col(val.size()), ia(x.size() + 1);
            std::size_t next = 0;
            for (i64 i = 0; i <= a.m; ++i) {
                ia[static_cast<std::size_t>(i)] = static_cast<Int>(next) + static_cast<Int>(base);
                for (; next < val.size() && a.entries[next].i == i; ++next)
                    val[next] = a.entries[next].a, col[next] = static_cast<Int>(a.entries[next].j + base);
            }
            Random(4).fill(x);
            const Int m = static_cast<Int>(a.m);
            kernel<sparse::CsrSymmvs<Int>>(module_of<Int>, "dcsrsymmvs")(&m, val.data(), col.data(), ia.data(),
                                                                         x.data(), y.data());
            std::vector<WideSum> sums(x.size());
            for (const auto& [i, j, value] : meant(name, a))
                sums[static_cast<std::size_t>(i)].add(value, x[static_cast<std::size_t>(j)]);
            for (std::size_t i = 0; i < sums.size(); ++i) EXPECT_LE(sums[i].excess(y[i]), 1) << a.pattern << ' ' << i;
        }
    }
}
} // namespace

TEST(CsrSymmetric, product_of_an_upper_triangle_overwrites_y)
{
    expect_symmetric<i64>();
    expect_symmetric<i32>();
}

TEST(Helpers, tell_zero_from_everything_else)
{
    each_type([]<class T, class Int> {
        using R = real_t<T>;
        const auto flag_of = [](T value) {
            Int flags[] = {7, 7};
            kernel<sparse::Zerocheck<T, Int>>(module_of<Int>, letter<T>, "zerocheck")(&value, flags);
            EXPECT_EQ(flags[1], 7);
            return flags[0];
        };
        EXPECT_EQ(flag_of(zero<T>), 0);
        EXPECT_EQ(flag_of(-zero<T>), 0);
        EXPECT_EQ(flag_of(one<T>), 1);
        EXPECT_EQ(flag_of(not_a_number<T>()), 1);
        if constexpr (is_complex<T>) {
            EXPECT_EQ(flag_of({0, std::numeric_limits<R>::denorm_min()}), 1);
            EXPECT_EQ(flag_of({0, -0.0f}), 0);
        } else EXPECT_EQ(flag_of(std::numeric_limits<R>::denorm_min()), 1);
    });
}

TEST(Helpers, set_negate_and_clear)
{
    each_type([]<class T, class Int> {
        T value = not_a_number<T>();
        kernel<sparse::Change<T, Int>>(module_of<Int>, letter<T>, "ones")(&value);
        EXPECT_EQ(value, one<T>);
        kernel<sparse::Change<T, Int>>(module_of<Int>, letter<T>, "neones")(&value);
        EXPECT_EQ(value, -one<T>);
        for (Int n = 0; n <= 40; ++n) {
            Guarded<T> array(static_cast<std::size_t>(n));
            kernel<sparse::Zeros<T, Int>>(module_of<Int>, letter<T>, "zeros")(array.data(), &n);
            for (const T& element : array) EXPECT_EQ(element, zero<T>);
        }
    });
}

TEST(Helpers, add_the_parts_of_a_product_in_their_order)
{
    each_type([]<class T, class Int> {
        const Int first = 3, last = 9, parts = 4, stride = 10;
        const auto work = random_elements<T>(30, 1), before = random_elements<T>(10, 2);
        auto y = before;
        kernel<sparse::SplitPar<T, Int>>(module_of<Int>, letter<T>, "split_par")(&first, &last, &parts, &stride,
                                                                                 work.data(), y.data());
        for (std::size_t i = 0; i < 10; ++i) {
            T expected = before[i];
            if (i >= 2 && i < 9) expected = expected + work[i] + work[10 + i] + work[20 + i];
            EXPECT_EQ(y[i], expected) << i;
        }
    });
}

TEST(Helpers, add_shares_that_do_not_reach_all_rows)
{
    each_type([]<class T, class Int> {
        for (const bool upper : {false, true})
            for (const Int n : {0, 1, 3, 99, 100, 117}) {
                // Share k has k % 6 of 5 rows and more; ones, so that sums are exact.
                const Int m = 5, length = 3, first = 2;
                std::vector<Int> offsets{m};
                for (Int k = 0; k < n; ++k) offsets.push_back(offsets.back() + k % 6);
                Guarded<T> y(static_cast<std::size_t>(offsets.back()));
                std::fill(y.begin(), y.end(), one<T>);
                kernel<sparse::SplitSym<T, Int>>(module_of<Int>, letter<T>,
                                                 upper ? "split_symu_par" : "split_syml_par")(&length, &n, &first, &m,
                                                                                              offsets.data(), y.data());
                for (Int i = 0; i < m; ++i) {
                    T expected = one<T>;
                    for (Int k = 0; k < n; ++k)
                        if (i >= 1 && i < 4 && (upper ? i >= m - k % 6 : i < k % 6)) expected += one<T>;
                    EXPECT_EQ(y[static_cast<std::size_t>(i)], expected) << i << " of " << n;
                }
            }
    });
}
