// Products and solves with diagonals: every name, both widths.
#include "frame/kernels/spblas.h"
#include "tests/spblas/dense.h"

using namespace orv;
using namespace orv::test;

namespace {

namespace sparse = kernels::sparse;

struct Shape {
    i64 m, k;
    std::vector<i64> distances;
};

// Diagonals in arrays whose corners outside the matrix are not numbers, with padding below, and the same in
// coordinates.
template <class T, class Int> struct Arrays {
    Coordinates<T> a;
    i64 lval;
    Guarded<T> val;
    Guarded<Int> distance;

    explicit Arrays(const Shape& shape, double beside = 1)
        : a{"", shape.m, shape.k, {}}, lval(shape.m + 2),
          val(shape.distances.empty() ? 0 : shape.distances.size() * static_cast<std::size_t>(lval) - 2),
          distance(shape.distances.size())
    {
        Random random(9);
        for (std::size_t k = 0; k < distance.size(); ++k) {
            const i64 d = shape.distances[k];
            distance[k] = static_cast<Int>(d);
            for (i64 i = 0; i < shape.m; ++i) {
                if (i + d < 0 || i + d >= shape.k) continue;
                T value = random.value<T>();
                if (d == 0) value = real_part(value) + one<T> + one<T>;
                else value = real_t<T>(beside) * value;
                val[k * static_cast<std::size_t>(lval) + static_cast<std::size_t>(i)] = value;
                a.entries.push_back({i, i + d, value});
            }
        }
    }
};

template <class T, class Int> class Call {
public:
    Call(const SparseName& name, const Shape& shape, i64 columns, double beside = 1)
        : name_(name), shape_(shape), columns_(columns), dia_(shape, beside),
          x(general_transposed() ? shape.m : shape.k, columns, false, 3),
          y(general_transposed() ? shape.k : shape.m, columns, false, 2)
    {
    }
    void run(i64 first, i64 last) const
    {
        const auto address = kernel_address(module_of<Int>, name_.text);
        const Int f = static_cast<Int>(first), l = static_cast<Int>(last), m = static_cast<Int>(shape_.m),
                  k = static_cast<Int>(shape_.k), nd = static_cast<Int>(columns_),
                  n = static_cast<Int>(dia_.distance.size()), lval = static_cast<Int>(dia_.lval),
                  ldx = x.template ld<Int>(), ldy = y.template ld<Int>();
        const T* val = dia_.val.data();
        const Int* distance = dia_.distance.data();
        if (name_.form == "mv")
            return reinterpret_cast<sparse::dia_mv_par<T, Int>*>(address)(nullptr, nullptr, &m, &k, &alpha, val, &lval,
                                                                          distance, &n, x.data(), y.data());
        if (name_.form == "mm")
            return reinterpret_cast<sparse::dia_mm_par<T, Int>*>(address)(&f, &l, &m, &nd, &k, &alpha, val, &lval,
                                                                          distance, &n, x.data(), &ldx, y.data(), &ldy);
        if (name_.kind == 'd' && name_.form == "sv")
            return reinterpret_cast<sparse::dia_svd_seq<T, Int>*>(address)(&m, &alpha, val, &lval, distance, &n,
                                                                           y.data());
        Int d0, dlast, d1, d2, flag;
        const std::string find = std::string("find_diag_par_") + name_.triangle + name_.diagonal;
        if (name_.kind != 'd')
            kernel<sparse::FindDiag<Int>>(module_of<Int>, find)(distance, &n, &d0, &dlast, &d1, &d2, &flag);
        if (name_.form == "sv")
            reinterpret_cast<sparse::dia_sv_seq<T, Int>*>(address)(&m, &alpha, val, &lval, distance, &n, y.data(),
                                                                   &dlast, &d2);
        else if (name_.run == "par")
            reinterpret_cast<sparse::dia_sm_par<T, Int>*>(address)(&f, &l, &m, &nd, &alpha, val, &lval, distance, &n,
                                                                   y.data(), &ldy, &dlast, &d2);
        else
            reinterpret_cast<sparse::dia_sm_seq<T, Int>*>(address)(&m, &nd, &alpha, val, &lval, distance, &n, y.data(),
                                                                   &ldy, &dlast, &d2);
    }
    long double error() const
    {
        auto all = meant(name_, dia_.a);
        if (name_.unit()) // the caller's to add
            std::erase_if(all, [](const auto& entry) { return entry.i == entry.j; });
        const i64 rows = general_transposed() ? shape_.k : shape_.m;
        std::vector<WideSum> sums(static_cast<std::size_t>(rows));
        long double worst = 0;
        for (i64 c = 0; c < columns_; ++c) {
            for (i64 i = 0; i < rows; ++i) {
                sums[static_cast<std::size_t>(i)] = {};
                sums[static_cast<std::size_t>(i)].add(y.before(i, c));
            }
            for (const auto& [i, j, a] : all) sums[static_cast<std::size_t>(i)].add(alpha, a, x(j, c));
            for (i64 i = 0; i < rows; ++i) {
                keep_worst(worst, sums[static_cast<std::size_t>(i)].excess(y(i, c)));
            }
        }
        return worst;
    }
    long double residual_of(i64 column) const
    {
        return residual(
            name_, dia_.a, alpha, [&](i64 i) { return y(i, column); }, [&](i64 i) { return y.before(i, column); });
    }

private:
    bool general_transposed() const { return name_.transposes() && name_.kind == 'g'; }

    SparseName name_;
    Shape shape_;
    i64 columns_;
    Arrays<T, Int> dia_;

public:
    T alpha = factors<T>()[0].first;
    Dense<T> x, y;
};

std::vector<Shape> shapes(const SparseName& name, bool solves)
{
    std::vector<Shape> all{{0, 0, {0}},
                           {1, 1, {0}},
                           {7, 7, {-6, -2, -1, 0, 1, 5}},
                           {30, 30, {-40, -30, -29, -11, -9, 0, 8, 9, 17, 29, 30, 31}},
                           {64, 64, {-1, 0, 1}}};
    if (!solves || name.unit()) all.push_back({25, 25, {-3, 4}}), all.push_back({9, 9, {}});
    if (name.kind == 'g')
        for (const Shape& shape : {Shape{12, 30, {-11, -4, 0, 3, 18, 29}}, Shape{30, 12, {-29, -12, 0, 7, 11}},
                                   Shape{5, 0, {0, 1}}, Shape{0, 5, {0, 1}}})
            all.push_back(shape);
    return all;
}

template <class Check> void each_name(const std::string& form, const Check& check)
{
    int names = 0;
    for (const SparseName& name : sparse_names("dia", form)) {
        ++names;
        each_width(name.type, [&]<class T, class Int> {
            for (const Shape& shape : shapes(name, form[0] == 's')) {
                if (testing::Test::HasFailure()) return;
                SCOPED_TRACE(std::string(module_of<Int>) + ' ' + name.text + ", " + std::to_string(shape.m) + " by " +
                             std::to_string(shape.k));
                check.template operator()<T, Int>(name, shape);
            }
        });
    }
    EXPECT_GT(names, 0);
}

} // namespace

TEST(DiaMv, of_every_name_is_within_the_textbook_bound)
{
    each_name("mv", []<class T, class Int>(const SparseName& name, const Shape& shape) {
        const Call<T, Int> call(name, shape, 1);
        call.run(1, 1);
        EXPECT_LE(call.error(), 1);
    });
}

TEST(DiaMm, of_every_name_is_within_the_textbook_bound)
{
    each_name("mm", []<class T, class Int>(const SparseName& name, const Shape& shape) {
        const Call<T, Int> call(name, shape, 5);
        call.run(1, 3), call.run(4, 5);
        EXPECT_LE(call.error(), 1);
        EXPECT_TRUE(call.y.padding_is_untouched());
    });
}

TEST(DiaMv, covers_every_element_across_tiles)
{
    // Sizes on both sides of a tile of 20000 rows by 5000 columns, and of two.
    for (const auto& [m, k] : {std::pair<i64, i64>{19999, 4999}, {20000, 5000}, {20001, 5001}, {40003, 10001}})
        for (const SparseName& name : sparse_names("dia", "mv")) {
            if (name.type != 'd' || (name.kind != 'g' && name.kind != 's')) continue;
            const i64 columns = name.kind == 'g' ? k : m;
            const Call<double, i64> call(
                name, {m, columns, {-m + 1, -20000, -5000, -4999, -1, 0, 1, 4999, 5000, columns - 1}}, 1);
            call.run(1, 1);
            EXPECT_LE(call.error(), 1) << name.text << ", " << m << " by " << columns;
        }
}

TEST(DiaMv, takes_tiles_in_their_order_and_in_each_the_diagonals)
{
    const i64 m = 1, k = 10001, n = 3, lval = 1, distance[] = {0, 5000, 1};
    const double alpha = 1, val[] = {0x1p60, -0x1p60, 1};
    const std::vector<double> x(static_cast<std::size_t>(k), 1);
    double y = 0;
    kernel<kernels::spblas::ddia1ng__f__mvout_par>()(nullptr, nullptr, &m, &k, &alpha, val, &lval, distance, &n,
                                                     x.data(), &y);
    EXPECT_EQ(y, 0); // the 1 comes second, and is lost
}

TEST(DiaSv, of_every_name_leaves_a_small_residual)
{
    each_name("sv", []<class T, class Int>(const SparseName& name, const Shape& shape) {
        const Call<T, Int> call(name, shape, 1, 0.25);
        call.run(1, 1);
        EXPECT_LE(call.residual_of(0), 1);
    });
}

TEST(DiaSm, of_every_name_leaves_a_small_residual_in_the_columns_asked_for)
{
    each_name("sm", []<class T, class Int>(const SparseName& name, const Shape& shape) {
        const Call<T, Int> call(name, shape, 4, 0.25);
        call.run(2, 3);
        const bool all = name.run == "seq";
        expect_solved(call.y, shape.m, 4, all ? 0 : 1, all ? 3 : 2,
                      [&](i64 column) { return call.residual_of(column); });
    });
}

namespace {
template <class Int> void expect_found(const std::string& form, std::vector<Int> list, Int dlast, Int d2, Int flag)
{
    Guarded<Int> array(list.size());
    std::copy(list.begin(), list.end(), array.begin());
    const Int n = static_cast<Int>(list.size());
    Int found[5] = {-9, -9, -9, -9, -9};
    kernel<sparse::FindDiag<Int>>(module_of<Int>, "find_diag_par_", form)(array.data(), &n, found, found + 1, found + 2,
                                                                          found + 3, found + 4);
    EXPECT_EQ(std::vector<Int>(found, found + 5), (std::vector<Int>{1, dlast, 1, d2, flag})) << form << ' ' << n;
}
template <class Int> void expect_all_found()
{
    for (const std::string unit : {"n", "u"}) {
        const Int missing = unit == "n" ? -1 : 0;
        expect_found<Int>("l" + unit, {-5, -1, 0, 2}, 2, 3, 0);
        expect_found<Int>("l" + unit, {-5, -1, 2}, 2, 3, missing);
        expect_found<Int>("l" + unit, {-5, -1}, 2, 3, missing); // none that is not negative: one behind the list
        expect_found<Int>("l" + unit, {}, 0, 1, missing);
        expect_found<Int>("l" + unit, {0}, 0, 1, 0);
        expect_found<Int>("u" + unit, {-5, 0, 2, 3}, 2, 2, 0);
        expect_found<Int>("u" + unit, {-5, 2, 3}, 2, 1, missing);
        expect_found<Int>("u" + unit, {2, 3}, 2, 0, missing);
        expect_found<Int>("u" + unit, {}, 0, 0, missing);
    }
}
} // namespace

TEST(FindDiag, counts_the_diagonals_of_a_side_and_says_whether_the_main_one_is_missing)
{
    expect_all_found<i64>();
    expect_all_found<i32>();
}
