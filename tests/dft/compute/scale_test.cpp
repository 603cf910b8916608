// Factors and plain copies, element by element.
#include "frame/kernels/dft_compute.h"
#include "tests/dft/primitive.h"

namespace orv::test {
namespace {

using namespace orv::kernels::dft;

template <class T> const char* scale_name()
{
    if constexpr (is_complex<T>) return sizeof(T) == 8 ? "dft_csscal" : "dft_zdscal";
    else return sizeof(T) == 4 ? "dft_sscal" : "dft_dscal";
}

template <class T> class Scale : public testing::Test {
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(Scale, Types);

TYPED_TEST(Scale, every_part_of_every_element_is_multiplied_once)
{
    using T = TypeParam;
    using R = real_t<T>;
    auto* const scale = primitive<DftScale<T>>(scale_name<T>());
    const R factor = R(1) / R(3);
    for (i64 n = 0; n <= 37; ++n)
        for (const i64 stride : {1, 2, 5}) {
            const i64 extent = n == 0 ? 0 : (n - 1) * stride + 1;
            const Guarded<T> data(extent);
            const std::vector<T> elements = random_array<T>(extent, n);
            std::copy(elements.begin(), elements.end(), data.begin());
            std::vector<T> expected = elements;
            for (i64 i = 0; i < n; ++i) {
                R* const parts = reinterpret_cast<R*>(&expected[i * stride]);
                for (std::size_t p = 0; p < sizeof(T) / sizeof(R); ++p) parts[p] *= factor;
            }
            scale(n, factor, data.data(), stride);
            ASSERT_TRUE(same_bits(data.data(), expected.data(), extent)) << "n=" << n << " stride=" << stride;
        }
}

TYPED_TEST(Scale, copies_keep_what_lies_between)
{
    using T = TypeParam;
    auto* const copy = primitive<DftCopy<T>>(std::string("dft_") + letter<T> + "copy");
    for (i64 n = 0; n <= 20; ++n)
        for (const i64 from : {1, 3})
            for (const i64 to : {1, 2}) {
                const std::vector<T> src = random_array<T>(n * from + 1, n);
                std::vector<T> dst(static_cast<std::size_t>(n * to + 1), element<T>::make(-7)), expected = dst;
                for (i64 i = 0; i < n; ++i) expected[i * to] = src[i * from];
                copy(n, src.data(), from, dst.data(), to);
                ASSERT_TRUE(same_bits(dst.data(), expected.data(), n * to + 1)) << "n=" << n;
            }
}

template <class R> void expect_both_parts_scaled(const char* name)
{
    for (i64 n = 0; n <= 21; ++n) {
        std::vector<R> re = random_array<R>(n + 1, 2 * n), im = random_array<R>(n + 1, 2 * n + 1);
        std::vector<R> re_expected = re, im_expected = im;
        for (i64 i = 0; i < n; ++i) re_expected[i] *= R(0.3), im_expected[i] *= R(0.3);
        primitive<SplitScale<R>>(name)(n, R(0.3), re.data(), im.data());
        ASSERT_EQ(re, re_expected) << "n=" << n;
        ASSERT_EQ(im, im_expected) << "n=" << n;
    }
}
TEST(SplitScale, multiplies_two_arrays)
{
    expect_both_parts_scaled<float>("scal_ss");
    expect_both_parts_scaled<double>("scal_dd");
}

} // namespace
} // namespace orv::test
