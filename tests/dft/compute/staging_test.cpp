// Copies between strided lines and rows of a buffer, by every name: each element arrives, and nothing else is written.
#include "frame/kernels/dft_compute.h"
#include "tests/dft/primitive.h"

namespace orv::test {
namespace {

using namespace orv::kernels::dft;

template <class T> std::string letters() { return {letter<T>}; }

// An array of distinct elements, and one of a filling that copies must leave alone.
template <class T> std::vector<T> numbered(i64 n)
{
    std::vector<T> a(static_cast<std::size_t>(n));
    for (i64 i = 0; i < n; ++i) a[i] = element<T>::make(static_cast<real_t<T>>(i + 1));
    return a;
}

// m lines of n elements, element i of line j at i*stride + j*distance.
struct Shape {
    i64 n, m, stride, distance;
    i64 extent() const { return n == 0 || m == 0 ? 0 : (n - 1) * stride + (m - 1) * distance + 1; }
    i64 at(i64 i, i64 j) const { return i * stride + j * distance; }
    std::string line() const
    {
        return "n=" + std::to_string(n) + " m=" + std::to_string(m) + " stride=" + std::to_string(stride) +
               " distance=" + std::to_string(distance);
    }
};

// copy(dst, src) has to move lines of one shape to lines of another. Guarded on both sides, at two alignments.
template <class T, class Copy>
void expect_copied(const Shape& to, const Shape& from, const std::string& name, Copy copy)
{
    for (const std::size_t shift : {0, 1}) {
        const std::vector<T> elements = numbered<T>(from.extent());
        const Guarded<T> src(elements.size(), Edge::end, shift), dst(to.extent(), Edge::end, shift);
        std::copy(elements.begin(), elements.end(), src.begin());
        const T filling = element<T>::make(-7);
        std::fill(dst.begin(), dst.end(), filling);
        std::vector<T> expected(dst.size(), filling);
        for (i64 j = 0; j < to.m; ++j)
            for (i64 i = 0; i < to.n; ++i) expected[to.at(i, j)] = elements[from.at(i, j)];
        copy(dst.data(), static_cast<const T*>(src.data()));
        ASSERT_TRUE(same_bits(dst.data(), expected.data(), to.extent()))
            << name << " to " << to.line() << " from " << from.line() << " shift " << shift;
    }
}

template <class T> class Staging : public testing::Test {
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(Staging, Types);

TYPED_TEST(Staging, gather_makes_rows_of_lines_and_scatter_lines_of_rows)
{
    using T = TypeParam;
    const std::string t = letters<T>(), tail = t + "_" + t;
    auto* const gather = primitive<Gather<T>>("gather_" + tail);
    auto* const scatter = primitive<Scatter<T>>("scatter_" + tail);
    for (const i64 n : {1, 2, 3, 4, 5, 7, 8, 9, 16, 19})
        for (const i64 m : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 33})
            for (const i64 pad : {0, 1, 3})
                for (const Shape& lines : {Shape{n, m, m + pad, 1}, Shape{n, m, 1, n + pad}, Shape{n, m, 2 * m + 1, 2},
                                           Shape{n, m, 3, 3 * n + pad}}) {
                    const Shape rows{n, m, 1, n + pad};
                    expect_copied<T>(rows, lines, "gather", [&](T* dst, const T* src) {
                        gather(n, m, dst, rows.distance, src, lines.stride, lines.distance);
                    });
                    expect_copied<T>(lines, rows, "scatter", [&](T* dst, const T* src) {
                        scatter(n, m, dst, lines.stride, lines.distance, src, rows.distance);
                    });
                }
}

TYPED_TEST(Staging, nothing_is_touched_without_lines_or_elements)
{
    using T = TypeParam;
    const std::string t = letters<T>(), tail = t + "_" + t;
    T none{};
    for (const auto& [n, m] : {std::pair<i64, i64>{0, 5}, {5, 0}}) {
        primitive<Gather<T>>("gather_" + tail)(n, m, &none, 9, &none, 9, 1);
        primitive<Scatter<T>>("scatter_" + tail)(n, m, &none, 9, 1, &none, 9);
    }
    EXPECT_EQ(none, T{});
}

// Widths of the members by type; those with rows behind each other.
template <class T> std::vector<i64> widths()
{
    if constexpr (is_complex<T>) {
        if (sizeof(real_t<T>) == 4) return {2, 4, 8, 16};
        return {2, 4, 8};
    }
    std::vector<i64> all;
    for (i64 w = 1; w <= (sizeof(T) == 4 ? 16 : 8); ++w) all.push_back(w);
    return all;
}

TYPED_TEST(Staging, row_copies_take_as_many_neighbouring_columns_as_their_name_says)
{
    using T = TypeParam;
    for (const i64 w : widths<T>()) {
        const std::string stem = "dft_row_" + letters<T>() + "copy_", width = std::to_string(w);
        auto* const there = primitive<RowCopy<T>>(stem + width);
        auto* const back = primitive<RowCopyBack<T>>(stem + "back_" + width);
        for (i64 n = 0; n <= 19; ++n)
            for (const i64 pad : {0, 1, 5}) {
                const Shape columns{n, w, w + pad, 1}, rows{n, w, 1, n + pad};
                expect_copied<T>(rows, columns, stem + width,
                                 [&](T* dst, const T* src) { there(n, dst, rows.distance, src, columns.stride); });
                expect_copied<T>(columns, rows, stem + "back_" + width,
                                 [&](T* dst, const T* src) { back(n, dst, columns.stride, src, rows.distance); });
            }
    }
}

template <class T> class PairStaging : public testing::Test {
};
using Pairs = testing::Types<cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(PairStaging, Pairs);

TYPED_TEST(PairStaging, mod8_copies_have_their_rows_behind_each_other)
{
    using T = TypeParam;
    const i64 widest = 128 / sizeof(T);
    for (const i64 w : {widest / 2, widest}) {
        const std::string stem = "dft_row_" + letters<T>() + "copy_", width = std::to_string(w);
        auto* const there = primitive<RowCopyWhole<T>>(stem + width + "_r_mod8");
        auto* const back = primitive<RowCopyBackWhole<T>>(stem + "back_" + width + "_rout_mod8");
        for (i64 n = 0; n <= 24; ++n) {
            const Shape columns{n, w, w + 3, 1}, rows{n, w, 1, n};
            expect_copied<T>(rows, columns, stem + width,
                             [&](T* dst, const T* src) { there(n, dst, src, columns.stride); });
            expect_copied<T>(columns, rows, stem + "back_" + width,
                             [&](T* dst, const T* src) { back(n, dst, columns.stride, src); });
        }
    }
}

template <class R> class SplitStaging : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(SplitStaging, Reals);

// Both parts in one buffer: rows of pairs' length, the imaginary part half a row behind.
template <class R, class There, class Back>
void expect_split(const Shape& lines, i64 ldd, const std::string& name, There there, Back back)
{
    const i64 n = lines.n, m = lines.m, extent = lines.extent();
    const std::vector<R> re = numbered<R>(extent), im = numbered<R>(extent);
    std::vector<R> buffer(static_cast<std::size_t>(2 * ldd * m + 1), R(-7)), expected = buffer;
    for (i64 j = 0; j < m; ++j)
        for (i64 i = 0; i < n; ++i) {
            expected[2 * ldd * j + i] = re[lines.at(i, j)];
            expected[2 * ldd * j + ldd + i] = im[lines.at(i, j)];
        }
    there(buffer.data(), buffer.data() + ldd, re.data(), im.data());
    ASSERT_EQ(buffer, expected) << name << " " << lines.line() << " ldd=" << ldd;

    std::vector<R> re_back(re.size(), R(-7)), im_back = re_back, re_expected = re_back;
    for (i64 j = 0; j < m; ++j)
        for (i64 i = 0; i < n; ++i) re_expected[lines.at(i, j)] = re[lines.at(i, j)];
    back(re_back.data(), im_back.data(), buffer.data(), buffer.data() + ldd);
    ASSERT_EQ(re_back, re_expected) << name << " back " << lines.line();
    ASSERT_EQ(im_back, re_expected) << name << " back " << lines.line();
}

TYPED_TEST(SplitStaging, two_arrays_share_rows_whose_pitch_counts_pairs)
{
    using R = TypeParam;
    const std::string tt = letters<R>() + letters<R>();
    auto* const gather = primitive<SplitGather<R>>("gather_" + tt + "_" + tt);
    auto* const scatter = primitive<SplitScatter<R>>("scatter_" + tt + "_" + tt);
    for (const i64 n : {1, 3, 8, 13})
        for (const i64 m : {1, 2, 5, 8, 17})
            for (const Shape& lines : {Shape{n, m, m, 1}, Shape{n, m, 1, n + 1}, Shape{n, m, 2 * m, 2}})
                expect_split<R>(
                    lines, n + 1, "gather_" + tt,
                    [&](R* dst_re, R* dst_im, const R* re, const R* im) {
                        gather(n, m, dst_re, dst_im, n + 1, re, im, lines.stride, lines.distance);
                    },
                    [&](R* re, R* im, const R* src_re, const R* src_im) {
                        scatter(n, m, re, im, lines.stride, lines.distance, src_re, src_im, n + 1);
                    });
}

TYPED_TEST(SplitStaging, row_copies_of_two_arrays_take_the_columns_of_both)
{
    using R = TypeParam;
    const std::string tt = letters<R>() + letters<R>();
    for (const i64 w : widths<R>()) {
        if (w == 1) continue;
        const std::string stem = "dft_row_" + tt + "copy_", width = std::to_string(w);
        auto* const there = primitive<SplitRowCopy<R>>(stem + width);
        auto* const back = primitive<SplitRowCopyBack<R>>(stem + "back_" + width);
        for (const i64 n : {0, 1, 2, 3, 4, 5, 9, 16}) {
            const i64 stride = w + 2, ldd = n + 3;
            expect_split<R>(
                {n, w, stride, 1}, ldd, stem + width,
                [&](R* dst_re, R* dst_im, const R* re, const R* im) { there(n, dst_re, dst_im, ldd, re, im, stride); },
                [&](R* re, R* im, const R* src_re, const R* src_im) { back(n, re, im, stride, src_re, src_im, ldd); });
        }
    }
}

} // namespace
} // namespace orv::test
