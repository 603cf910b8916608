#include "frame/kernels/blas.h"
#include "tests/gemm/panels.h"

#include <gtest/gtest.h>

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> class Pack : public ::testing::Test {
};
using Types = ::testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(Pack, Types, TypeName);

template <class T> std::string ops() { return is_complex<T> ? "ntc" : "nt"; }

struct Case {
    char side, op; // 'a' or 'b', 'n', 't' or 'c'
    i64 n, k;      // rows of op(A) or columns of op(B), and depth
    i64 extra_ld = 0, extra_stride = 0;
    Edge edge = Edge::end;
    i64 shift = 0;

    std::string text() const
    {
        return std::string("copy") + side + op + " n=" + std::to_string(n) + " k=" + std::to_string(k) + " ld+" +
               std::to_string(extra_ld) + " stride+" + std::to_string(extra_stride) +
               (edge == Edge::end ? " end" : " start") + " shift=" + std::to_string(shift);
    }
};

// Packs a random source of exactly the elements that the operation may read, into a buffer of exactly those it may
// write.
template <class T> void check(const Case& x, T alpha, const std::string& name, Random& random)
{
    SCOPED_TRACE(x.text());
    const bool is_a = x.side == 'a';
    const i64 unit = is_a ? TileShape<T>::m_unit : TileShape<T>::n_unit;
    const bool adjacent = is_a == (x.op == 'n'); // element (c, p) at c + p*ld, else at p + c*ld
    const i64 rows = adjacent ? x.n : x.k, columns = adjacent ? x.k : x.n;
    const i64 ld = rows + x.extra_ld, stride = unit * (round_up(x.k, 4) + x.extra_stride);

    Guarded<T> source(ld * (columns - 1) + rows, x.edge, x.shift);
    for (i64 j = 0; j < columns; ++j) random.fill(std::span<T>(source.data() + j * ld, rows));
    const i64 size = packed_size(x.n, x.k, unit, stride);
    Guarded<T> buffer(size, x.edge);
    std::vector<T> expected(size);
    std::memset(static_cast<void*>(expected.data()), 0xff, size * sizeof(T));
    pack_by_definition(x.n, x.k, unit, !is_a, stride, expected.data(), [&](i64 c, i64 p) {
        T element = source[adjacent ? c + p * ld : p + c * ld];
        if (x.op == 'c') element = conj(element);
        return is_a ? alpha * element : element;
    });

    const std::vector<T> before(source.begin(), source.end());
    if (is_a) kernel<CopyA<T>>("blas", name)(&x.n, &x.k, source.data(), &ld, buffer.data(), &stride, &alpha);
    else kernel<CopyB<T>>("blas", name)(&x.k, &x.n, source.data(), &ld, buffer.data(), &stride, nullptr);

    ASSERT_TRUE(same_bits(buffer.data(), expected.data(), size));
    ASSERT_TRUE(same_bits(source.data(), before.data(), before.size()));
}

template <class T> void check(const Case& x, T alpha, Random& random)
{
    check<T>(x, alpha, symbol<T>(std::string("copy") + x.side + x.op), random);
}

template <class T> T some_alpha()
{
    if constexpr (is_complex<T>) return {real_t<T>(1.3), real_t<T>(-0.7)};
    else return T(1.3);
}

TYPED_TEST(Pack, lays_out_every_small_block_and_touches_nothing_else)
{
    using T = TypeParam;
    Random random;
    for (const char side : {'a', 'b'})
        for (const char op : ops<T>())
            for (i64 n = 1; n <= 20; ++n)
                for (i64 k = 1; k <= 20; ++k) {
                    const i64 variant = n + k;
                    check<T>({side, op, n, k, variant % 3, variant % 2, variant % 5 < 3 ? Edge::end : Edge::start,
                              variant % 4},
                             some_alpha<T>(), random);
                    if (this->HasFatalFailure()) return;
                }
}

TYPED_TEST(Pack, reads_sources_of_every_alignment_and_leading_dimension)
{
    using T = TypeParam;
    Random random;
    for (const char side : {'a', 'b'})
        for (const char op : ops<T>())
            for (const i64 n : {1, 2, 7, 8, 13, 33})
                for (const i64 k : {1, 4, 6, 31})
                    for (i64 extra_ld = 0; extra_ld < 5; ++extra_ld)
                        for (i64 shift = 0; shift < 4; ++shift)
                            for (const Edge edge : {Edge::start, Edge::end}) {
                                check<T>({side, op, n, k, extra_ld, 0, edge, shift}, some_alpha<T>(), random);
                                if (this->HasFatalFailure()) return;
                            }
}

TYPED_TEST(Pack, lays_out_whole_blocks)
{
    using T = TypeParam;
    Random random;
    for (const char side : {'a', 'b'})
        for (const char op : ops<T>()) {
            check<T>({side, op, 131, 256, 3, 0, Edge::end, 1}, some_alpha<T>(), random);
            check<T>({side, op, 64, 253, 0, 3, Edge::start, 0}, some_alpha<T>(), random);
        }
}

TYPED_TEST(Pack, writes_nothing_for_empty_blocks)
{
    using T = TypeParam;
    const i64 zero_extent = 0, some = 5, ld = 5, stride = 64;
    const T alpha = some_alpha<T>();
    Guarded<T> source(0), buffer(0); // neither may be touched
    for (const char op : ops<T>()) {
        auto* copy_a = kernel<CopyA<T>>("blas", symbol<T>(std::string("copya") + op));
        auto* copy_b = kernel<CopyB<T>>("blas", symbol<T>(std::string("copyb") + op));
        copy_a(&zero_extent, &some, source.data(), &ld, buffer.data(), &stride, &alpha);
        copy_a(&some, &zero_extent, source.data(), &ld, buffer.data(), &stride, &alpha);
        copy_b(&some, &zero_extent, source.data(), &ld, buffer.data(), &stride, nullptr);
        copy_b(&zero_extent, &some, source.data(), &ld, buffer.data(), &stride, nullptr);
    }
}

template <class T> class PackReal : public ::testing::Test {
};
using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(PackReal, RealTypes, TypeName);

TYPED_TEST(PackReal, external_copies_make_the_panels_of_op_n)
{
    using T = TypeParam;
    Random random;
    for (i64 n = 1; n <= 20; ++n)
        for (const i64 k : {1, 3, 4, 21}) {
            check<T>({'a', 'n', n, k, 1, 0}, some_alpha<T>(), symbol<T>("copya_ext"), random);
            check<T>({'b', 'n', n, k, 1, 0}, some_alpha<T>(), symbol<T>("copyb_ext"), random);
            if (this->HasFatalFailure()) return;
        }
}

} // namespace
} // namespace orv::test
