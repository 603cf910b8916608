// x?gemm_par: the loop orders, what each does about beta and alpha before its loops, and what without memory.
#include "blas/gemm/gemm.h"
#include "frame/kernels/blas.h"
#include "tests/gemm/product.h"
#include "tests/support/probe.h"

#include <array>

namespace orv::test {
namespace {

using namespace kernels::blas;

using gemm::Desc;

template <class T> Desc<T> bound(i64 mb, i64 nb, i64 kb)
{
    Desc<T> desc = {};
    kernel<GetOptimalKernel<T>>("blas", name_of<T>("", "gemm_get_optimal_kernel"))(&desc);
    desc.mb = mb, desc.nb = nb, desc.kb = kb;
    return desc;
}

template <class T> int run(const Operands<T>& x, i32 version, Desc<T>& desc, const T* a, i64 lda, const T* b, i64 ldb)
{
    const Problem<T>& p = x.p;
    return kernel<GemmPar<T>>("blas", name_of<T>("x", "gemm_par"))(&p.transa, &p.transb, &p.m, &p.n, &p.k, &p.alpha, a,
                                                                   &lda, b, &ldb, &p.beta, x.c.data(), &p.ldc, version,
                                                                   &desc);
}
template <class T> int run(const Operands<T>& x, i32 version, Desc<T>& desc)
{
    return run(x, version, desc, x.a.data(), x.p.lda, x.b.data(), x.p.ldb);
}

constexpr i32 orders_of_matrices[] = {2, 4, 0x80, 0x100};
constexpr i32 orders_of_panels[] = {8, 0x10, 0x20, 0x40};

TEST(LoopOrder, all_give_the_same_bits_across_their_block_edges)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        unsigned turn = 0;
        for (i32 version : orders_of_matrices)
            for (auto [mb, nb, kb] : {std::array<i64, 3>{8, 16, 12}, {5, 9, 10}, {7, 3, 4}, {100, 100, 100}})
                for (auto [m, n, k] :
                     {std::array<i64, 3>{4, 4, 4}, {19, 37, 33}, {8, 16, 12}, {9, 17, 13}, {21, 7, 50}})
                    for (T beta : {zero<T>, one<T>, scalar<T>(-0.5, 0.25)}) {
                        ++turn;
                        const Problem<T> p = {
                            "ntcN"[turn % 4], "tcnT"[turn / 4 % 4], m, n, k, scalar<T>(0.7, 0.4), beta};
                        Operands<T> x(p.padded(turn % 2, turn % 3, turn % 4), {}, turn);
                        Desc<T> desc = bound<T>(mb, nb, kb);
                        if (beta == zero<T>)
                            for (i64 j = 0; j < n; ++j)
                                for (i64 i = 0; i < m; ++i) x.at(i, j) = scalar<T>(NAN, NAN);
                        ASSERT_EQ(run(x, version, desc), 0);
                        SCOPED_TRACE("version " + std::to_string(version) + " kb=" + std::to_string(kb));
                        expect_bits(x, [&](i64 i, i64 j) { return blocked_entry(x, i, j, kb); });
                    }
    });
}

// op(A), times alpha, as blocks of kb steps one after another; op(B) alike.
template <class T> struct Panels {
    std::vector<cpx<double>> a, b; // any type that is aligned to 16 bytes
    i64 a_stride, b_stride;

    T* a_data() { return reinterpret_cast<T*>(a.data()); }
    T* b_data() { return reinterpret_cast<T*>(b.data()); }

    Panels(const Operands<T>& x, const Desc<T>& d)
    {
        const Problem<T>& p = x.p;
        const i64 kp = round_up(min(p.k, d.kb), 4), blocks = (p.k + d.kb - 1) / d.kb;
        a_stride = kp * d.m_unit, b_stride = kp * d.n_unit;
        const i64 a_block = round_up(p.m, d.m_unit) / d.m_unit * a_stride;
        const i64 b_block = round_up(p.n, d.n_unit) / d.n_unit * b_stride;
        a.resize((a_block * blocks * sizeof(T)) / 16 + 1), b.resize((b_block * blocks * sizeof(T)) / 16 + 1);
        for (i64 q = 0; q < blocks; ++q) {
            const i64 depth = min(d.kb, p.k - q * d.kb);
            const auto copya = p.na() ? d.copyan : fold(p.transa) == 'C' ? d.copyac : d.copyat;
            const auto copyb = p.nb() ? d.copybn : fold(p.transb) == 'C' ? d.copybc : d.copybt;
            copya(&p.m, &depth, x.a.data() + q * d.kb * (p.na() ? p.lda : 1), &p.lda, a_data() + q * a_block, &a_stride,
                  &p.alpha);
            copyb(&depth, &p.n, x.b.data() + q * d.kb * (p.nb() ? 1 : p.ldb), &p.ldb, b_data() + q * b_block, &b_stride,
                  nullptr);
        }
    }
};

TEST(LoopOrder, takes_operands_that_the_caller_has_packed)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        unsigned turn = 0;
        for (i32 version : orders_of_panels)
            for (auto [m, n, k] : {std::array<i64, 3>{4, 4, 4}, {19, 37, 33}, {1, 3, 5}, {8, 15, 24}})
                for (T beta : {zero<T>, one<T>, scalar<T>(-0.5, 0.25)}) {
                    ++turn;
                    const Problem<T> p = {"ntc"[turn % 3], "tcn"[turn / 3 % 3], m, n, k, scalar<T>(0.7, 0.4), beta};
                    Operands<T> x(p.padded(turn % 2, turn % 3, turn % 4), {}, turn);
                    Desc<T> desc = bound<T>(7, 13, 12);
                    Panels<T> packed(x, desc);
                    const bool a_ready = version != 0x20, b_ready = version == 0x20 || version == 0x40;
                    ProbeScope probe;
                    ASSERT_EQ(run(x, version, desc, a_ready ? packed.a_data() : x.a.data(),
                                  a_ready ? packed.a_stride : x.p.lda, b_ready ? packed.b_data() : x.b.data(),
                                  b_ready ? packed.b_stride : x.p.ldb),
                              0);
                    EXPECT_EQ(probe->live, 0);
                    SCOPED_TRACE("version " + std::to_string(version));
                    expect_bits(x, [&](i64 i, i64 j) { return blocked_entry(x, i, j, 12); });
                }
    });
}

// What the descriptor's routines are asked, as one letter a call: A, B pack, K multiplies.
std::string calls;
Desc<double> real_kernels;

std::string calls_of(i32 version, i64 m, i64 n, i64 k)
{
    Operands<double> x(Problem<double>{'n', 'n', m, n, k});
    Desc<double> desc = bound<double>(4, 16, 12);
    real_kernels = desc;
    desc.copyan = [](const i64* m, const i64* k, const double* a, const i64* lda, double* buffer, const i64* stride,
                     const double* alpha) {
        calls += 'A';
        real_kernels.copyan(m, k, a, lda, buffer, stride, alpha);
    };
    desc.copybn = [](const i64* k, const i64* n, const double* b, const i64* ldb, double* buffer, const i64* stride,
                     const double* unused) {
        EXPECT_EQ(unused, nullptr);
        calls += 'B';
        real_kernels.copybn(k, n, b, ldb, buffer, stride, unused);
    };
    desc.ker = [](const char* ta, const char* tb, const i64* m, const i64* n, const i64* k, const double* alpha,
                  const double* a, const i64* a_stride, const double* b, const i64* b_stride, const double* beta,
                  double* c, const i64* ldc, double* scratch, i32 b_form) {
        EXPECT_EQ(*alpha, 1);
        EXPECT_TRUE(b_form != gemm::b_packed || *k % 4 == 0);
        calls += b_form == gemm::b_packed ? 'K' : 'k';
        real_kernels.ker(ta, tb, m, n, k, alpha, a, a_stride, b, b_stride, beta, c, ldc, scratch, b_form);
    };
    calls.clear();
    run(x, version, desc);
    expect_product(x);
    return calls;
}

TEST(LoopOrder, nests_its_loops_as_its_version_says)
{
    // Blocks of 4 rows, 16 columns, 12 steps: two in each direction.
    EXPECT_EQ(calls_of(2, 8, 32, 24), "BAKAKBAKAKBAKAKBAKAK");
    EXPECT_EQ(calls_of(4, 8, 32, 23), "AkAkAkAkAkAkAkAk");
    EXPECT_EQ(calls_of(0x80, 8, 32, 24), "BAKAKBKBAKAKBKBAKAKBKBAKAKBK");  // panels of two rows
    EXPECT_EQ(calls_of(0x100, 8, 32, 24), "ABKBKAKABKBKAKABKBKAKABKBKAK"); // panels of eight columns
}

TEST(LoopOrder, keeps_the_rules_of_alpha_and_beta_apart)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        const T half = scalar<T>(0.5);
        for (i32 version : {2, 4, 0x80, 0x100, 8, 0x10, 0x20, 0x40})
            for (T beta : {one<T>, zero<T>, half}) {
                Operands<T> x(Problem<T>{'n', 'n', 20, 20, 20, zero<T>, beta});
                Desc<T> desc = bound<T>(8, 8, 8);
                EXPECT_EQ(run<T>(x, version, desc, nullptr, 20, nullptr, 20), 0);
                SCOPED_TRACE("version " + std::to_string(version));
                const bool left = version == 2 && beta == zero<T>; // a zero is kept for a first pass that never comes
                expect_bits(x, [&](i64 i, i64 j) { return left ? x.was(i, j) : scaled(beta, x.was(i, j)); });
            }
    });
}

TEST(LoopOrder, refuses_an_unknown_version_and_touches_nothing)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (i32 version : {1, 3, 6, 0x7e, 0x200, -1}) {
            Operands<T> x(Problem<T>{'n', 'n', 20, 20, 20, one<T>, scalar<T>(2)});
            Desc<T> desc = bound<T>(8, 8, 8);
            EXPECT_EQ(run(x, version, desc), 1);
            expect_unchanged(x);
        }
    });
}

TEST(LoopOrder, leaves_an_empty_c_at_once)
{
    Desc<double> desc = bound<double>(8, 8, 8);
    for (auto [m, n] : {std::array<i64, 2>{0, 5}, {5, 0}, {-1, 5}}) {
        const double scalar = 2;
        const i64 k = 5;
        EXPECT_EQ(kernel<GemmPar<double>>("blas", "xdgemm_par")("n", "n", &m, &n, &k, &scalar, nullptr, &k, nullptr, &k,
                                                                &scalar, nullptr, &k, 2, &desc),
                  0);
    }
}

TEST(LoopOrder, chooses_what_the_caller_left_open)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        const Problem<T> p = {'n', 'n', 20, 20, 300, one<T>, one<T>};
        Operands<T> x(p);
        Desc<T> desc = bound<T>(0, 8, 0);
        EXPECT_EQ(run(x, 0, desc), 0);
        EXPECT_EQ(desc.kb, is_complex<T> ? 128 : 152);
        EXPECT_EQ(desc.nb, 8);
        EXPECT_NE(desc.mb, 0);
        expect_bits(x, [&](i64 i, i64 j) { return blocked_entry(x, i, j, desc.kb); });
    });
}

TEST(LoopOrder, goes_to_the_plain_path_below_the_least_operands)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (i32 version : orders_of_matrices)
            for (auto [dm, dn, dk] : {std::array<i64, 3>{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}})
                for (T beta : {zero<T>, one<T>, scalar<T>(0.5)}) {
                    Desc<T> desc = bound<T>(8, 8, 8);
                    const Problem<T> p = {
                        't', 'n', desc.m_min - dm, desc.n_min - dn, desc.k_min - dk, scalar<T>(1 / 3.0, 0.3), beta};
                    Operands<T> x(p);
                    ProbeScope probe;
                    EXPECT_EQ(run(x, version, desc), 0);
                    const bool plain = dm + dn + dk > 0;
                    EXPECT_EQ(probe->allocations, plain ? 0 : 1);
                    expect_bits(x,
                                [&](i64 i, i64 j) { return plain ? plain_entry(x, i, j) : blocked_entry(x, i, j, 8); });
                }
    });
}

TEST(LoopOrder, makes_a_rank_one_update_of_depth_one_for_double_and_a_beta_of_one)
{
    for (i32 version : orders_of_matrices) {
        Operands<double> x(Problem<double>{'t', 'n', 9, 12, 1, 1 / 3.0, 1});
        Desc<double> desc = bound<double>(8, 8, 8);
        EXPECT_EQ(run(x, version, desc), 0);
        expect_bits(x, [&](i64 i, i64 j) { return x.was(i, j) + x.p.alpha * x.right(0, j) * x.left(i, 0); });
    }
    Operands<double> x(Problem<double>{'t', 'n', 9, 12, 1, 1 / 3.0, 0.5});
    Desc<double> desc = bound<double>(8, 8, 8);
    EXPECT_EQ(run(x, 2, desc), 0);
    expect_bits(x, [&](i64 i, i64 j) { return plain_entry(x, i, j); });
}

TEST(LoopOrder, makes_the_plain_product_without_memory_and_scales_c_once)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (i32 version : orders_of_matrices)
            for (T beta : {zero<T>, one<T>, scalar<T>(0.5)}) {
                Operands<T> x(Problem<T>{'t', 'n', 20, 30, 40, scalar<T>(1 / 3.0, 0.3), beta});
                Desc<T> desc = bound<T>(8, 8, 8);
                ProbeScope probe;
                probe->fail_all = true;
                EXPECT_EQ(run(x, version, desc), 0);
                EXPECT_EQ(probe->checked, std::vector<std::string>{"xgemm"});
                expect_bits(x, [&](i64 i, i64 j) { return plain_entry(x, i, j); });
            }
    });
}

TEST(LoopOrder, says_that_there_was_no_memory_where_an_operand_is_packed_already)
{
    for_all_types([](auto type) {
        using T = decltype(type);
        for (i32 version : orders_of_panels) {
            Operands<T> x(Problem<T>{'n', 'n', 20, 30, 40});
            Desc<T> desc = bound<T>(8, 8, 8);
            ProbeScope probe;
            probe->fail_all = true;
            EXPECT_EQ(run(x, version, desc), 1);
            EXPECT_EQ(probe->checked, std::vector<std::string>{"xgemm"});
            expect_unchanged(x);
        }
    });
}

} // namespace
} // namespace orv::test
