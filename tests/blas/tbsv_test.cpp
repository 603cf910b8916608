// Complex band solves: the two bodies and which of them is taken.
#include "tests/blas/triangular.h"

#include <dlfcn.h>

namespace {
int letters_asked;
} // namespace

// Found by the branch before the core's own. Only the bodies in strips ask for letters.
extern "C" __attribute__((visibility("default"), used)) int orv_serv_lsame(const char* a, const char* b, int a_length,
                                                                           int b_length)
{
    ++letters_asked;
    using Lsame = int(const char*, const char*, int, int);
    return reinterpret_cast<Lsame*>(dlsym(RTLD_NEXT, "orv_serv_lsame"))(a, b, a_length, b_length);
}

namespace orv::test {
namespace {

template <class T> class TbsvTest : public testing::Test {
};
using Types = testing::Types<cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(TbsvTest, Types);

TYPED_TEST(TbsvTest, has_two_bodies_for_every_size)
{
    using T = TypeParam;
    for (const char* body : {"tbsv_f", "tbsv_vial1"}) {
        TriangularSweep<T> sweep(Task::solve, std::string(1, letter<T>) + body);
        for (const i64 n : {0, 1, 2, 3, 5, 17, 33, 63, 64, 65, 300})
            for (const i64 k : {0, 1, 2, 3, 5, 50}) sweep.run(Storage::band, n, k, 1, all_strides);
    }
    TriangularSweep<T> product(Task::multiply, std::string(1, letter<T>) + "tbmv_f");
    for (const i64 n : {0, 1, 5, 65}) product.run(Storage::band, n, 5, 1, all_strides);
}

TYPED_TEST(TbsvTest, chooses_its_body_by_size_width_and_operation)
{
    using T = TypeParam;
    const auto expected = [](i64 n, i64 k, char trans) {
        if (n < 64 || (n > 1000 && k > 500)) return true;
        return letter<T> == 'c' && trans == 'N' && n < 256;
    };
    void* const f = kernel_address("blas", std::string(1, letter<T>) + "tbsv");
    for (const i64 n : {1, 63, 64, 255, 256, 1000, 1001})
        for (const i64 k : {0, 5, 500, 501})
            for (const char trans : {'N', 'n', 'T', 't', 'C', 'c'}) {
                const TriangularMatrix<T> a(Storage::band, true, false, n, k, 0);
                Strided<T> x(n, 1);
                Random random;
                x.fill(random);
                letters_asked = 0;
                const i64 inc = 1;
                reinterpret_cast<kernels::blas::Tbmv<T>*>(f)("U", &trans, "N", &n, &k, *a, &a.lda, x.data(), &inc);
                ASSERT_EQ(letters_asked > 0, expected(n, k, trans)) << n << ' ' << k << ' ' << trans;
            }
}

} // namespace
} // namespace orv::test
