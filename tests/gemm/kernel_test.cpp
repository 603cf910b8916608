#include "frame/kernels/blas.h"
#include "tests/gemm/panels.h"

#include <gtest/gtest.h>

#include <optional>

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> class Kernel : public ::testing::Test {
};
using Types = ::testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(Kernel, Types, TypeName);

enum class Layout { aligned, misaligned, odd_ldc };

struct Case {
    i64 m, n, k;
    Layout layout = Layout::aligned;
    char transb = 0; // 0: B is packed, else it stands in place
    Edge edge = Edge::end;

    std::string text() const
    {
        return "m=" + std::to_string(m) + " n=" + std::to_string(n) + " k=" + std::to_string(k) +
               " layout=" + std::to_string(static_cast<int>(layout)) + " transb=" + (transb ? transb : '-') +
               (edge == Edge::end ? " end" : " start");
    }
};

// The element of a product: one chain from zero in the order of the steps (complex: one for each product of parts).
template <class T> struct Chain {
    T sum = 0;
    void add(T a, T b) { sum = sum + a * b; }
    T value() const { return sum; }
};
template <class R> struct Chain<cpx<R>> {
    R re_re = 0, im_im = 0, im_re = 0, re_im = 0;
    void add(cpx<R> a, cpx<R> b)
    {
        re_re = re_re + a.re * b.re, im_im = im_im + a.im * b.im;
        im_re = im_re + a.im * b.re, re_im = re_im + a.re * b.im;
    }
    cpx<R> value() const { return {re_re - im_im, im_re + re_im}; }
};

template <class T> void fill_with_nan(T* x, i64 n) { std::memset(static_cast<void*>(x), 0xff, n * sizeof(T)); }

// One block product with operands that hold exactly what a kernel may touch.
template <class T> class Product {
public:
    Product(const Case& x, Random& random)
        : x_(x), kp_(round_up(x.k, 4)), a_stride_(kp_ * TileShape<T>::m_unit),
          ldc_(round_up(x.m, 4) + (x.layout == Layout::odd_ldc ? 5 : 4)),
          a_(packed_size(x.m, x.k, TileShape<T>::m_unit, a_stride_), x.edge),
          c_(c_size(), x.edge, x.layout == Layout::misaligned ? 1 : 0),
          scratch_(kp_ * TileShape<T>::n_unit * TileShape<T>::scratch_factor, x.edge), plain_a_(x.m * x.k),
          plain_b_(x.k * x.n)
    {
        random.fill(plain_a_), random.fill(plain_b_);
        pack_by_definition(x.m, x.k, TileShape<T>::m_unit, false, a_stride_, a_.data(),
                           [&](i64 i, i64 p) { return plain_a_[i + p * x.m]; });
        for (i64 j = 0; j < x.n; ++j) random.fill(std::span<T>(c_.data() + j * ldc_, x.m));
        place_b();
    }

    T* c() { return c_.data(); }
    i64 ldc() const { return ldc_; }
    std::vector<T> snapshot() const { return {c_.begin(), c_.end()}; }
    void restore(const std::vector<T>& c) { std::copy(c.begin(), c.end(), c_.begin()); }

    void run(const std::string& name, T beta)
    {
        const char transa = 'N', transb = x_.transb ? x_.transb : 'N';
        const T alpha = one<T>;
        kernel<GemmKernel<T>>("blas", name)(&transa, &transb, &x_.m, &x_.n, &x_.k, &alpha, a_.data(), &a_stride_,
                                            b_->data(), &b_stride_, &beta, c_.data(), &ldc_, scratch_.data(),
                                            x_.transb ? gemm::b_in_place : gemm::b_packed);
    }

    // What C must be afterwards, padding included.
    std::vector<T> expected(T beta, i64 rows) const
    {
        std::vector<T> c = snapshot();
        for (i64 j = 0; j < x_.n; ++j)
            for (i64 i = 0; i < rows; ++i) {
                Chain<T> chain;
                for (i64 p = 0; p < kp_; ++p)
                    if (p < x_.k) chain.add(plain_a_[i + p * x_.m], plain_b_[p + j * x_.k]);
                    else chain.add(zero<T>, zero<T>);
                T& element = c[i + j * ldc_];
                if (beta == zero<T>) element = chain.value();
                else element = (beta == one<T> ? element : beta * element) + chain.value();
            }
        return c;
    }

    void expect_c(const std::vector<T>& expected) const
    {
        ASSERT_TRUE(same_bits(c_.data(), expected.data(), expected.size()));
    }

private:
    // To the last element, so that a page begins behind it; but columns that stand on 16 bytes end there, too.
    i64 c_size() const
    {
        if (x_.n == 0 || x_.layout == Layout::aligned) return ldc_ * x_.n;
        return ldc_ * (x_.n - 1) + x_.m;
    }

    void place_b()
    {
        const char op = fold(x_.transb);
        if (x_.transb == 0) {
            b_stride_ = kp_ * TileShape<T>::n_unit;
            b_.emplace(packed_size(x_.n, x_.k, TileShape<T>::n_unit, b_stride_), x_.edge);
            pack_by_definition(x_.n, x_.k, TileShape<T>::n_unit, true, b_stride_, b_->data(),
                               [&](i64 j, i64 p) { return plain_b_[p + j * x_.k]; });
            return;
        }
        const i64 rows = op == 'N' ? x_.k : x_.n, columns = op == 'N' ? x_.n : x_.k;
        b_stride_ = rows + 3;
        b_.emplace(rows == 0 || columns == 0 ? 0 : b_stride_ * (columns - 1) + rows, x_.edge);
        for (i64 j = 0; j < x_.n; ++j)
            for (i64 p = 0; p < x_.k; ++p) {
                const T element = plain_b_[p + j * x_.k];
                (*b_)[op == 'N' ? p + j * b_stride_ : j + p * b_stride_] = op == 'C' ? conj(element) : element;
            }
    }

    Case x_;
    i64 kp_, a_stride_, b_stride_ = 0, ldc_;
    Guarded<T> a_, c_, scratch_;
    std::vector<T> plain_a_, plain_b_;
    std::optional<Guarded<T>> b_;
};

template <class T> std::vector<T> betas()
{
    if constexpr (is_complex<T>) return {one<T>, zero<T>, {real_t<T>(0.3), real_t<T>(-1.7)}};
    else return {one<T>, zero<T>, T(-1.7)};
}

template <class T> std::vector<std::string> block_kernels()
{
    std::vector<std::string> names{symbol<T>("ker0")};
    if (std::is_same_v<T, double>) names.push_back(symbol<T>("ker1"));
    return names;
}

template <class T> void check_block(const Case& x, Random& random)
{
    SCOPED_TRACE(x.text());
    Product<T> product(x, random);
    const std::vector<T> before = product.snapshot();
    for (const std::string& name : block_kernels<T>())
        for (const T beta : betas<T>()) {
            SCOPED_TRACE(name);
            product.restore(before);
            const std::vector<T> expected = product.expected(beta, x.m);
            if (beta == zero<T>)
                for (i64 j = 0; j < x.n; ++j) fill_with_nan(product.c() + j * product.ldc(), x.m);
            product.run(name, beta);
            ASSERT_NO_FATAL_FAILURE(product.expect_c(expected));
        }
}

TYPED_TEST(Kernel, sums_in_the_order_of_steps_and_adds_once_to_c)
{
    using T = TypeParam;
    Random random;
    i64 variant = 0;
    for (i64 m = 0; m <= 9; ++m)
        for (i64 n = 0; n <= 20; ++n)
            for (i64 k = 0; k <= 40; ++k, ++variant) {
                const Edge edge = variant % 2 ? Edge::start : Edge::end;
                check_block<T>({m, n, k, static_cast<Layout>(variant % 3), 0, edge}, random);
                check_block<T>({m, n, k, static_cast<Layout>(variant / 3 % 3), "NtTnCc"[variant % 6], edge}, random);
                if (this->HasFatalFailure()) return;
            }
}

TYPED_TEST(Kernel, serves_every_layout_of_c_and_every_form_of_b)
{
    using T = TypeParam;
    Random random;
    for (const i64 m : {1, 4, 7})
        for (const i64 n : {3, 8, 13})
            for (const i64 k : {5, 16})
                for (const Layout layout : {Layout::aligned, Layout::misaligned, Layout::odd_ldc})
                    for (const char transb : {'\0', 'N', 'n', 'T', 't', 'C', 'c'})
                        for (const Edge edge : {Edge::start, Edge::end}) {
                            check_block<T>({m, n, k, layout, transb, edge}, random);
                            if (this->HasFatalFailure()) return;
                        }
}

TYPED_TEST(Kernel, multiplies_deep_and_long_blocks)
{
    using T = TypeParam;
    Random random;
    check_block<T>({130, 37, 256, Layout::aligned, 0}, random);
    check_block<T>({67, 29, 253, Layout::odd_ldc, 'N'}, random);
    check_block<T>({67, 29, 253, Layout::misaligned, 'C'}, random);
}

// Every kernel by its name: digit of B's form, digit of C's layout, "_b0".
TYPED_TEST(Kernel, named_variants_multiply_whole_tiles)
{
    using T = TypeParam;
    Random random;
    const std::string prefixes[] = {"kernel_", "ker1_"};
    for (const std::string& prefix : prefixes)
        for (const char form : {'0', '1'})
            for (const char layout : {'0', '1'})
                for (const std::string suffix : {"", "_b0"}) {
                    if (prefix == "ker1_" && !std::is_same_v<T, double>) continue;
                    if (is_complex<T> && (form == '1' || suffix == "_b0")) continue;
                    const std::string name = symbol<T>(prefix + form + '_' + layout + suffix);
                    for (const i64 m : {0, 1, 4, 8, 11})
                        for (const i64 n : {0, 1, 7, 8, 13})
                            for (const i64 k : {0, 1, 8, 12, 19}) {
                                const Case x{m, n, k, layout == '0' ? Layout::aligned : Layout::odd_ldc,
                                             form == '0' ? '\0' : "NTc"[(m + n + k) % 3]};
                                SCOPED_TRACE(name + ' ' + x.text());
                                Product<T> product(x, random);
                                const T beta = suffix.empty() ? one<T> : zero<T>;
                                const i64 whole = m / TileShape<T>::m_unit * TileShape<T>::m_unit;
                                const std::vector<T> expected = product.expected(beta, whole);
                                product.run(name, beta);
                                ASSERT_NO_FATAL_FAILURE(product.expect_c(expected));
                            }
                }
}

TYPED_TEST(Kernel, leftover_rows_follow_the_whole_panels_as_a_narrower_one)
{
    using T = TypeParam;
    Random random;
    for (i64 m = 0; m <= 2 * TileShape<T>::m_unit; ++m)
        for (i64 n = 0; n <= 13; ++n)
            for (const char transb : {'\0', 'N', 'T', 'C'})
                for (const T beta : betas<T>()) {
                    const Case x{m, n, 10, Layout::misaligned, transb};
                    SCOPED_TRACE(x.text());
                    Product<T> product(x, random);
                    const std::vector<T> expected = product.expected(beta, m);
                    product.run(symbol<T>("ker0_pst"), beta);
                    ASSERT_NO_FATAL_FAILURE(product.expect_c(expected));
                }
}

} // namespace
} // namespace orv::test
