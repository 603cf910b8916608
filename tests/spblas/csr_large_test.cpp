// Compressed rows too large for the caches, which have loops of their own: products and solves of every name and width.
//
// A matrix of equal blocks along its diagonal does to each part of a vector what one block does, bit for bit, and that
// one is small.
#include "frame/kernels/spblas.h"
#include "tests/spblas/matrix.h"

using namespace orv;
using namespace orv::test;

namespace {

constexpr i64 copies = 20; // some 150,000 entries

template <class T> Coordinates<T> repeated(const Coordinates<T>& block)
{
    Coordinates<T> all{block.pattern, copies * block.m, copies * block.k, {}};
    for (i64 c = 0; c < copies; ++c)
        for (const auto& [i, j, a] : block.entries) all.entries.push_back({c * block.m + i, c * block.k + j, a});
    return all;
}

// Some numbers over and over again.
template <class T> std::vector<T> periodic(i64 n, i64 period, std::uint64_t seed)
{
    const auto numbers = random_elements<T>(period, seed);
    std::vector<T> all(static_cast<std::size_t>(n));
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = numbers[i % numbers.size()];
    return all;
}

// What the kernel makes of a vector that repeats after `period` elements.
template <class T, class Int> std::vector<T> result(const SparseName& name, const Coordinates<T>& a, i64 period)
{
    const CsrArrays<T, Int> csr(a, name.base, 1);
    const auto first = static_cast<Int>(1), m = static_cast<Int>(a.m);
    const auto [alpha, beta] = factors<T>()[1];
    const auto x = periodic<T>(a.m, period, 3);
    auto y = periodic<T>(a.m, period, 4);
    const T* const val = csr.val.data();
    const Int *col = csr.col.data(), *begin = csr.begin.data(), *end = csr.end.data();
    const auto address = kernel_address(module_of<Int>, name.text);
    namespace sparse = kernels::sparse;
    if (name.form == "sv")
        reinterpret_cast<sparse::csr_sv_seq<T, Int>*>(address)(&m, &alpha, val, col, begin, end, y.data());
    else if (name.run == "par")
        reinterpret_cast<sparse::csr_mv_par<T, Int>*>(address)(&first, &m, &m, &m, &alpha, val, col, begin, end,
                                                               x.data(), y.data(), &beta);
    else
        reinterpret_cast<sparse::csr_mv_seq<T, Int>*>(address)(&m, &m, &alpha, val, col, begin, end, x.data(), y.data(),
                                                               &beta);
    return y;
}

void expect_that_of_each_block(const char* form)
{
    int names = 0;
    for (const SparseName& name : sparse_names("csr", form)) {
        if (name.base == 1) continue; // the same bits: that is tested elsewhere
        ++names;
        each_width(name.type, [&]<class T, class Int> {
            static const Coordinates<T> block = square_patterns<T>(true).back(), all = repeated(block);
            SCOPED_TRACE(std::string(module_of<Int>) + ' ' + name.text);
            const auto one = result<T, Int>(name, block, block.m), many = result<T, Int>(name, all, block.m);
            for (i64 c = 0; c < copies; ++c)
                ASSERT_TRUE(same_bits(many.data() + c * block.m, one.data(), block.m)) << "block " << c;
        });
    }
    EXPECT_GT(names, 0);
}

} // namespace

TEST(CsrMv, of_a_large_matrix_is_that_of_each_of_its_blocks) { expect_that_of_each_block("mv"); }

TEST(CsrSv, of_a_large_matrix_is_that_of_each_of_its_blocks) { expect_that_of_each_block("sv"); }
