// The six sequences of rotations, bit for bit against rotations one at a time.
#include "frame/kernels/lapack_ps.h"
#include "tests/lapack_ps/rotations.h"

#include <limits>

namespace orv::test {
namespace {

using namespace kernels::lapack_ps;

struct Member {
    char pivot, direct;

    // The two rows of rotation j, the upper one first.
    std::pair<i64, i64> rows(i64 m, i64 j) const { return {pivot == 't' ? 0 : j, pivot == 'b' ? m - 1 : j + 1}; }
    i64 rotation(i64 m, i64 step) const { return direct == 'f' ? step : m - 2 - step; }
};
constexpr Member members[] = {{'v', 'f'}, {'v', 'b'}, {'t', 'f'}, {'t', 'b'}, {'b', 'f'}, {'b', 'b'}};

template <class T> Lasr<T>* lasr(Member member)
{
    return kernel<Lasr<T>>("lapack_ps", letter<T>, "lasr_l", member.pivot, member.direct);
}

// Rotation by rotation, on `together` columns at a time: that shows where columns share their memory, only.
template <class T>
void rotate_singly(Member member, i64 m, i64 n, const real_t<T>* c, const real_t<T>* s, T* a, i64 lda)
{
    for (i64 begin = 0, together; begin < n; begin += together) {
        together = n - begin >= 4 ? 4 : 1;
        for (i64 step = 0; step < m - 1; ++step) {
            const i64 j = member.rotation(m, step);
            const auto [upper, lower] = member.rows(m, j);
            for (i64 i = begin; i < begin + together; ++i) {
                const T temp = a[lower + i * lda];
                a[lower + i * lda] = c[j] * temp - s[j] * a[upper + i * lda];
                a[upper + i * lda] = s[j] * temp + c[j] * a[upper + i * lda];
            }
        }
    }
}

template <class T> void expect_like_single_rotations(Member member, i64 m, i64 n, i64 lda, Edge edge)
{
    SCOPED_TRACE(std::string(1, letter<T>) + "lasr_l" + member.pivot + member.direct + " m=" + std::to_string(m) +
                 " n=" + std::to_string(n) + " lda=" + std::to_string(lda) + " seed=" + std::to_string(seed()));
    using R = real_t<T>;
    Random random(m * 100 + n);
    const Guarded<R> c(max(m - 1, 0), edge), s(max(m - 1, 0), edge);
    const Guarded<T> a(n < 1 ? 0 : (n - 1) * lda + m, edge);
    random.fill(c), random.fill(s);
    if (m > 2) c[1] = 1, s[1] = 0;
    for (i64 j = 0; j < n; ++j)
        for (i64 i = 0; i < m; ++i) a[i + j * lda] = random.value<T>();
    std::vector<T> expected(a.begin(), a.end());
    rotate_singly(member, m, n, c.data(), s.data(), expected.data(), lda);
    lasr<T>(member)(&m, &n, c.data(), s.data(), a.data(), &lda);
    EXPECT_EQ(first_difference(expected, a), "");
}

template <class T> void expect_all_shapes()
{
    for (const Member member : members)
        for (const i64 m : {0, 1, 2, 3, 4, 9, 10})
            for (i64 n = 0; n <= 20; ++n)
                for (const i64 lda : {m, m + 3, i64(0)}) {
                    expect_like_single_rotations<T>(member, m, n, lda, n % 2 ? Edge::start : Edge::end);
                    if (::testing::Test::HasFailure()) return;
                }
}

TEST(Lasr, equals_single_rotations_for_every_pivot_and_direction)
{
    expect_all_shapes<float>();
    expect_all_shapes<double>();
    expect_all_shapes<cpx<float>>();
    expect_all_shapes<cpx<double>>();
}

TEST(Lasr, computes_also_the_rotation_that_changes_nothing)
{
    const double nan = std::numeric_limits<double>::quiet_NaN(), c = 1, s = 0;
    double a[] = {1, nan};
    const i64 m = 2, n = 1;
    lasr<double>({'v', 'f'})(&m, &n, &c, &s, a, &m);
    EXPECT_NE(a[0], a[0]) << "0 times NaN is NaN";
}

TEST(Lasr, leaves_alone_what_has_no_rotation_or_no_column)
{
    const double c = 0, s = 1;
    double a = 7;
    for (const auto& [m, n] : {std::pair<i64, i64>(1, 1), {2, 0}, {2, -1}, {0, 3}, {-1, 3}}) {
        const i64 lda = 2;
        for (const Member member : members) lasr<double>(member)(&m, &n, &c, &s, &a, &lda);
    }
    EXPECT_EQ(a, 7);
}

} // namespace
} // namespace orv::test
