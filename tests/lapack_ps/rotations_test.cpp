// rot2, rot3 and lartv, bit for bit against scalar code.
#include "frame/kernels/lapack_ps.h"
#include "tests/lapack_ps/rotations.h"

namespace orv::test {
namespace {

using namespace kernels::lapack_ps;

template <class T> std::string named(const char* routine) { return letter<T> + std::string(routine); }

template <class Test> void for_all_types(Test test)
{
    test.template operator()<float>();
    test.template operator()<double>();
    test.template operator()<cpx<float>>();
    test.template operator()<cpx<double>>();
}

// Arrays of n elements at an edge: a step of a stride would leave them.
template <class T> std::vector<T> copy(const Guarded<T>& a) { return {a.begin(), a.end()}; }

TEST(Rot2, reflects_two_vectors_with_unit_stride_whatever_the_strides_say)
{
    for_all_types([]<class T>() {
        for (i64 n = -1; n <= 21; ++n)
            for (const i64 inc : {1, 2, -3, 0})
                for (const Edge edge : {Edge::start, Edge::end}) {
                    SCOPED_TRACE(named<T>("rot2") + " n=" + std::to_string(n) + " inc=" + std::to_string(inc));
                    Random random(n + 1);
                    const Guarded<T> x(max(n, 0), edge), y(max(n, 0), edge);
                    random.fill(x), random.fill(y);
                    const T tau = random.value<T>(), v = random.value<T>();
                    std::vector<T> ex = copy(x), ey = copy(y);
                    for (i64 i = 0; i < n; ++i) {
                        const T s = (ex[i] + v * ey[i]) * tau;
                        ex[i] -= s;
                        ey[i] -= s * conj(v);
                    }
                    kernel<Rot2<T>>("lapack_ps", named<T>("rot2"))(&n, x.data(), &inc, y.data(), &inc, &tau, &v);
                    ASSERT_EQ(first_difference(ex, x), "");
                    ASSERT_EQ(first_difference(ey, y), "");
                }
    });
}

TEST(Rot3, reflects_three_vectors_with_unit_stride_whatever_the_strides_say)
{
    for_all_types([]<class T>() {
        for (i64 n = -1; n <= 21; ++n)
            for (const i64 inc : {1, 2, -3, 0})
                for (const Edge edge : {Edge::start, Edge::end}) {
                    SCOPED_TRACE(named<T>("rot3") + " n=" + std::to_string(n) + " inc=" + std::to_string(inc));
                    Random random(n + 1);
                    const Guarded<T> x(max(n, 0), edge), y(max(n, 0), edge), z(max(n, 0), edge);
                    random.fill(x), random.fill(y), random.fill(z);
                    const T tau = random.value<T>(), v1 = random.value<T>(), v2 = random.value<T>();
                    std::vector<T> ex = copy(x), ey = copy(y), ez = copy(z);
                    for (i64 i = 0; i < n; ++i) {
                        const T s = (v1 * ey[i] + ex[i] + v2 * ez[i]) * tau;
                        ex[i] -= s;
                        ey[i] -= s * conj(v1);
                        ez[i] -= s * conj(v2);
                    }
                    kernel<Rot3<T>>("lapack_ps", named<T>("rot3"))(&n, x.data(), &inc, y.data(), &inc, z.data(), &inc,
                                                                   &tau, &v1, &v2);
                    ASSERT_EQ(first_difference(ex, x), "");
                    ASSERT_EQ(first_difference(ey, y), "");
                    ASSERT_EQ(first_difference(ez, z), "");
                }
    });
}

TEST(Lartv, rotates_each_pair_by_its_own_angle_at_all_strides)
{
    constexpr i64 strides[] = {1, 2, -1, -2, 0};
    for_all_types([&]<class T>() {
        using R = real_t<T>;
        for (i64 n = 0; n <= 9; ++n)
            for (const i64 incx : strides)
                for (const i64 incy : strides)
                    for (const i64 incc : strides)
                        for (const Edge edge : {Edge::start, Edge::end}) {
                            SCOPED_TRACE(named<T>("lartv") + " n=" + std::to_string(n) + " inc " +
                                         std::to_string(incx) + ' ' + std::to_string(incy) + ' ' +
                                         std::to_string(incc) + " seed=" + std::to_string(seed()));
                            Random random(n);
                            Strided<T> x(n, incx, {edge}), y(n, incy, {edge}), s(n, incc, {edge});
                            Strided<R> c(n, incc, {edge});
                            x.fill(random), y.fill(random), s.fill(random), c.fill(random);
                            const Strided<T> ex(x, {edge}), ey(y, {edge});
                            for (i64 i = 0; i < n; ++i) {
                                const T before = ex(i);
                                ex(i) = c(i) * before + s(i) * ey(i);
                                ey(i) = c(i) * ey(i) - conj(s(i)) * before;
                            }
                            kernel<Lartv<T>>("lapack_ps", named<T>("lartv"))(&n, x.data(), &incx, y.data(), &incy,
                                                                             c.data(), s.data(), &incc);
                            ASSERT_EQ(ex.bits(), x.bits());
                            ASSERT_EQ(ey.bits(), y.bits());
                        }
    });
}

} // namespace
} // namespace orv::test
