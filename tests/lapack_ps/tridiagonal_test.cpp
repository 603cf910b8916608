// Tridiagonal systems: ?gtsv_small, ?gtts2, ?ptts2.
#include "frame/kernels/lapack_ps.h"
#include "tests/lapack_ps/fronts.h"
#include "tests/lapack_ps/tridiagonal.h"
#include "tests/support/probe.h"

#include <algorithm>
#include <map>

namespace orv::test {
namespace {

using namespace kernels::lapack_ps;

template <class T> std::string name(const char* stem) { return letter<T> + std::string(stem); }

template <class T> i64 gtsv(const System<T>& s)
{
    i64 info = -77;
    kernel<Gtsv<T>>("lapack_ps", name<T>("gtsv_small"))(&s.n, &s.nrhs, s.dl.data(), s.d.data(), s.du.data(), s.b.data(),
                                                        &s.ldb, &info);
    return info;
}

// The elimination and the substitution as they are defined.
template <class T> i64 model_gtsv(const System<T>& s)
{
    const i64 n = s.n;
    const auto &dl = s.dl, &d = s.d, &du = s.du;
    for (i64 i = 0; i < n - 1; ++i) {
        const bool last = i == n - 2;
        if (std::fabs(d[i]) < std::fabs(dl[i])) {
            const T factor = d[i] / dl[i], next = d[i + 1];
            d[i] = dl[i], d[i + 1] = du[i] - factor * next;
            if (!last) dl[i] = du[i + 1], du[i + 1] = -factor * dl[i];
            du[i] = next;
            for (i64 j = 0; j < s.nrhs; ++j) {
                const T b = s.side(i, j);
                s.side(i, j) = s.side(i + 1, j);
                s.side(i + 1, j) = b - factor * s.side(i + 1, j);
            }
        } else if (d[i] == 0) {
            return i + 1;
        } else {
            const T factor = dl[i] / d[i];
            d[i + 1] -= factor * du[i];
            for (i64 j = 0; j < s.nrhs; ++j) s.side(i + 1, j) -= factor * s.side(i, j);
            if (!last) dl[i] = 0;
        }
    }
    if (n == 0) return 0;
    if (d[n - 1] == 0) return n;
    for (i64 j = 0; j < s.nrhs; ++j)
        for (i64 i = n - 1; i >= 0; --i) {
            T b = s.side(i, j);
            if (i + 1 < n) b = b - du[i] * s.side(i + 1, j);
            if (i + 2 < n) b = b - dl[i] * s.side(i + 2, j);
            s.side(i, j) = b / d[i];
        }
    return 0;
}

template <class Body> void each_real(Body body)
{
    body.template operator()<float>();
    body.template operator()<double>();
}
template <class Body> void each_type(Body body)
{
    each_real(body);
    body.template operator()<cpx<float>>();
    body.template operator()<cpx<double>>();
}

TEST(Gtsv, keeps_the_order_of_operations)
{
    each_real([]<class T>() {
        for (const double dominance : {0.0, 2.5})
            for (const i64 sides : {0, 1, 2, 3, 4, 5, 8, 9, 21})
                for (const i64 n : {0, 1, 2, 3, 4, 5, 6, 7, 11, 20, 64, 65, 66, 128, 129, 130, 300}) {
                    const System<T> expected(n, sides), computed(n, sides);
                    expected.fill(dominance), computed.copy(expected);
                    SCOPED_TRACE(problem("gtsv", expected));
                    ASSERT_EQ(gtsv(computed), model_gtsv(expected));
                    ASSERT_EQ(computed.differs_from(expected), "");
                }
    });
}

TEST(Gtsv, stops_where_a_pivot_is_zero_and_goes_on_where_one_is_nan)
{
    each_real([]<class T>() {
        for (const i64 n : {1, 2, 3, 6, 64, 65, 66, 67})
            for (i64 k = 0; k < n; ++k)
                for (const double pivot : {0.0, not_a_number})
                    for (const i64 sides : {1, 5}) {
                        const System<T> expected(n, sides), computed(n, sides);
                        expected.fill(2.5);
                        if (k > 0) expected.du[k - 1] = 0; // nothing comes into the pivot from above
                        if (k < n - 1) expected.dl[k] = 0;
                        expected.d[k] = static_cast<T>(pivot);
                        computed.copy(expected);
                        SCOPED_TRACE(problem("gtsv", expected) + " pivot " + std::to_string(k));
                        ASSERT_EQ(gtsv(computed), pivot == 0 ? k + 1 : 0);
                        ASSERT_EQ(model_gtsv(expected), pivot == 0 ? k + 1 : 0);
                        ASSERT_EQ(computed.differs_from(expected), "");
                    }
    });
}

TEST(Gtsv, solves_dominant_systems)
{
    each_real([]<class T>() {
        for (const i64 sides : {1, 4, 9})
            for (const i64 n : {1, 2, 10, 100, 1000}) {
                const System<T> system(n, sides), x(n, sides);
                system.fill(2.5), x.copy(system);
                ASSERT_EQ(gtsv(x), 0);
                EXPECT_LE(backward_error(0, system, x), dominant_bound<T>(8)) << problem("gtsv", system);
            }
    });
}

// Factors in whole numbers, pivots +-1, +-2 (and i times these): every solve is exact, by division and by reciprocals.
template <class T> struct Factored {
    System<T> s;
    Guarded<T> du2, x;
    Guarded<i64> ipiv;
    int op;

    Factored(int op, i64 n, i64 sides, double pivot = 0)
        : s(n, sides), du2(std::max<i64>(n - 2, 0)), x(s.b.size()), ipiv(n), op(op)
    {
        Random random(static_cast<std::uint64_t>(1000 * op + 50 * n + sides));
        const auto digit = [&] { return number<T>(double(random.integer(-1, 1)), 0); };
        for (T& e : s.dl) e = digit();
        for (T& e : s.du) e = digit();
        for (T& e : du2) e = digit();
        for (T& e : s.d) {
            const double size = pivot != 0 ? pivot : random.integer(0, 1) ? 2 : -1;
            e = is_complex<T> && random.integer(0, 1) ? number<T>(0, size) : number<T>(size);
        }
        for (i64 i = 0; i < n; ++i) ipiv[i] = i + 1 + (i + 1 < n && random.integer(0, 1));
        for (i64 j = 0; j < sides; ++j)
            for (i64 i = 0; i < n; ++i) x[i + j * s.ldb] = digit();
        std::copy(x.begin(), x.end(), s.b.begin());
        for (i64 j = 0; j < sides; ++j) multiply(s.b.data() + j * s.ldb);
    }

    // b := op(P*L*U) * b
    void multiply(T* b) const
    {
        const i64 n = s.n;
        const auto c = [&](const T& a) { return op == 2 ? conj(a) : a; };
        if (op == 0) {
            for (i64 i = 0; i < n; ++i) {
                b[i] = s.d[i] * b[i];
                if (i + 1 < n) b[i] += s.du[i] * b[i + 1];
                if (i + 2 < n) b[i] += du2[i] * b[i + 2];
            }
            for (i64 i = n - 2; i >= 0; --i) { // steps of the elimination undone
                if (ipiv[i] == i + 1) b[i + 1] += s.dl[i] * b[i];
                else {
                    const T above = b[i];
                    b[i] = b[i + 1] + s.dl[i] * above, b[i + 1] = above;
                }
            }
        } else {
            for (i64 i = 0; i < n - 1; ++i) {
                if (ipiv[i] == i + 1) b[i] += c(s.dl[i]) * b[i + 1];
                else {
                    const T above = b[i];
                    b[i] = b[i + 1] + c(s.dl[i]) * above, b[i + 1] = above;
                }
            }
            for (i64 i = n - 1; i >= 0; --i) {
                b[i] = c(s.d[i]) * b[i];
                if (i > 0) b[i] += c(s.du[i - 1]) * b[i - 1];
                if (i > 1) b[i] += c(du2[i - 2]) * b[i - 2];
            }
        }
    }

    void solve() const
    {
        const i64 itrans = op;
        kernel<Gtts2<T>>("lapack_ps", name<T>("gtts2"))(&itrans, &s.n, &s.nrhs, s.dl.data(), s.d.data(), s.du.data(),
                                                        du2.data(), ipiv.data(), s.b.data(), &s.ldb);
    }
};

TEST(Gtts2, solves_exactly_in_whole_numbers_with_and_without_memory)
{
    each_type([]<class T>() {
        for (const int op : {0, 1, 2})
            for (const i64 sides : {0, 1, 2, 3, 4, 5, 8, 9, 13})
                for (i64 n = 0; n <= 14; ++n)
                    for (const bool memory : {true, false}) {
                        const Factored<T> f(op, n, sides);
                        SCOPED_TRACE(problem("gtts2", f.s) + " itrans=" + std::to_string(op));
                        ProbeScope probe;
                        probe->fail_all = !memory;
                        f.solve();
                        ASSERT_EQ(unequal(f.x, f.s.b), "");
                        ASSERT_EQ(probe->live, 0);
                    }
    });
}

TEST(Gtts2, takes_one_block_for_four_right_hand_sides_and_none_for_three)
{
    for (const i64 sides : {3, 4}) {
        const Factored<cpx<double>> f(2, 11, sides);
        const ProbeScope probe;
        f.solve();
        EXPECT_EQ(test::probe().asked_bytes, sides == 4 ? std::vector<i64>{11 * 16} : std::vector<i64>{});
        EXPECT_EQ(test::probe().asked_alignments, sides == 4 ? std::vector<i64>{128} : std::vector<i64>{});
        EXPECT_TRUE(test::probe().checked.empty()) << "no report";
    }
}

// Column j in scalar code; over_pivot(element, i) is its quotient by d(i), however that is computed.
template <class T, class OverPivot> void model_gtts2(const Factored<T>& f, i64 j, OverPivot over_pivot)
{
    const i64 n = f.s.n;
    T* const b = f.s.b.data() + j * f.s.ldb;
    const auto c = [&](const T& a) { return f.op == 2 ? conj(a) : a; };
    if (f.op == 0) {
        for (i64 i = 0; i < n - 1; ++i) {
            if (f.ipiv[i] != i + 1) std::swap(b[i], b[i + 1]);
            b[i + 1] = b[i + 1] - f.s.dl[i] * b[i];
        }
        for (i64 i = n - 1; i >= 0; --i) {
            if (i + 1 < n) b[i] = b[i] - f.s.du[i] * b[i + 1];
            if (i + 2 < n) b[i] = b[i] - f.du2[i] * b[i + 2];
            b[i] = over_pivot(b[i], i);
        }
    } else {
        for (i64 i = 0; i < n; ++i) {
            if (i > 0) b[i] = b[i] - c(f.s.du[i - 1]) * b[i - 1];
            if (i > 1) b[i] = b[i] - c(f.du2[i - 2]) * b[i - 2];
            b[i] = over_pivot(b[i], i);
        }
        for (i64 i = n - 2; i >= 0; --i) {
            b[i] = b[i] - c(f.s.dl[i]) * b[i + 1];
            if (f.ipiv[i] != i + 1) std::swap(b[i], b[i + 1]);
        }
    }
}

TEST(Gtts2, multiplies_by_reciprocals_from_four_right_hand_sides_on_and_divides_without_memory)
{
    each_type([]<class T>() {
        for (const int op : {0, 1, 2})
            for (const i64 sides : {1, 3, 4, 5, 8, 9, 13})
                for (const i64 n : {1, 2, 3, 9})
                    for (const bool memory : {true, false}) {
                        const Factored<T> expected(op, n, sides, 3), computed(op, n, sides, 3);
                        SCOPED_TRACE(problem("gtts2", computed.s) + " itrans=" + std::to_string(op));
                        const auto divisor = [&](i64 i) { return op == 2 ? conj(expected.s.d[i]) : expected.s.d[i]; };
                        const bool reciprocals = memory && sides >= 4;
                        for (i64 j = 0; j < sides; ++j)
                            model_gtts2(expected, j, [&](T x, i64 i) {
                                return reciprocals ? quotient(one<T>, divisor(i)) * x : quotient(x, divisor(i));
                            });
                        ProbeScope probe;
                        probe->fail_all = !memory;
                        computed.solve();
                        ASSERT_EQ(unequal(expected.s.b, computed.s.b), "");
                    }
    });
}

// L*D*L^H with whole numbers in L and powers of two in D.
template <class T> void ptts2(i64 iuplo, const System<T>& s, const real_t<T>* d, const T* e)
{
    if constexpr (is_complex<T>)
        kernel<ComplexPtts2<T>>("lapack_ps", name<T>("ptts2"))(&iuplo, &s.n, &s.nrhs, d, e, s.b.data(), &s.ldb);
    else kernel<Ptts2<T>>("lapack_ps", name<T>("ptts2"))(&s.n, &s.nrhs, d, e, s.b.data(), &s.ldb);
}

TEST(Ptts2, solves_exactly_in_whole_numbers_with_and_without_memory)
{
    each_type([]<class T>() {
        for (const i64 iuplo : {0, 1, 2})
            for (const i64 sides : {0, 1, 2, 3, 4, 5, 8, 9, 13})
                for (i64 n = 0; n <= 14; ++n)
                    for (const bool memory : {true, false}) {
                        const System<T> s(n, sides);
                        SCOPED_TRACE(problem("ptts2", s) + " iuplo=" + std::to_string(iuplo));
                        const Guarded<real_t<T>> d(n);
                        const Guarded<T> e(std::max<i64>(n - 1, 0)), x(s.b.size());
                        Random random(static_cast<std::uint64_t>(n));
                        for (auto& f : d) f = random.integer(0, 1) ? 4 : 1;
                        for (T& f : e) f = number<T>(double(random.integer(-1, 1)), double(random.integer(0, 1)));
                        for (i64 j = 0; j < sides; ++j) {
                            T *const b = s.b.data() + j * s.ldb, *const to = x.data() + j * s.ldb;
                            for (i64 i = 0; i < n; ++i) to[i] = b[i] = whole<T>(random);
                            // b := L*D*L^H*b; U^H*D*U is the same with e conjugated.
                            const auto below = [&](i64 i) { return iuplo == 1 ? conj(e[i]) : e[i]; };
                            for (i64 i = 0; i + 1 < n; ++i) b[i] += conj(below(i)) * b[i + 1];
                            for (i64 i = 0; i < n; ++i) b[i] = d[i] * b[i];
                            for (i64 i = n - 1; i > 0; --i) b[i] += below(i - 1) * b[i - 1];
                        }
                        ProbeScope probe;
                        probe->fail_all = !memory;
                        ptts2<T>(iuplo, s, d.data(), e.data());
                        ASSERT_EQ(unequal(x, s.b), "");
                        ASSERT_EQ(probe->allocations, n > 1 && sides >= 4 ? 1 : 0);
                        if (probe->allocations > 0) {
                            ASSERT_EQ(probe->asked_bytes[0], n * i64(sizeof(real_t<T>)));
                        }
                        ASSERT_EQ(probe->live, 0);
                    }
    });
}

TEST(Ptts2, multiplies_by_reciprocals_from_four_right_hand_sides_on_and_divides_without_memory)
{
    each_type([]<class T>() {
        using R = real_t<T>;
        for (const i64 sides : {3, 4, 9})
            for (const bool memory : {true, false}) {
                const i64 n = 7;
                const System<T> expected(n, sides), computed(n, sides);
                expected.fill(0), computed.copy(expected);
                SCOPED_TRACE(problem("ptts2", computed));
                const Guarded<R> d(n);
                for (i64 i = 0; i < n; ++i) d[i] = R(3 + i);
                const auto& e = expected.dl;
                const bool reciprocals = memory && sides >= 4;
                for (i64 j = 0; j < sides; ++j) {
                    T* const b = expected.b.data() + j * expected.ldb;
                    for (i64 i = 1; i < n; ++i) b[i] = b[i] - e[i - 1] * b[i - 1];
                    for (i64 i = n - 1; i >= 0; --i) {
                        b[i] = reciprocals ? T((1 / d[i]) * b[i]) : quotient(b[i], d[i]);
                        if (i + 1 < n) b[i] = b[i] - conj(e[i]) * b[i + 1];
                    }
                }
                ProbeScope probe;
                probe->fail_all = !memory;
                ptts2<T>(0, computed, d.data(), computed.dl.data());
                ASSERT_EQ(unequal(expected.b, computed.b), "");
            }
    });
}

TEST(Ptts2, scales_the_row_of_order_one_by_the_public_routine)
{
    each_type([]<class T>() {
        const System<T> s(1, 5);
        s.fill(0);
        const real_t<T> d = 3;
        const T before = s.side(0, 4);
        FrontCalls fronts;
        ptts2<T>(0, s, &d, nullptr);
        const std::map<char, const char*> routine{{'s', "sscal"}, {'d', "dscal"}, {'c', "csscal"}, {'z', "zdscal"}};
        EXPECT_EQ(fronts.calls, std::vector<std::string>{routine.at(letter<T>)});
        EXPECT_TRUE(same(s.side(0, 4), T((1 / d) * before)));
    });
}

} // namespace
} // namespace orv::test
