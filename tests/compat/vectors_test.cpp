// Level 1 through every interface, against naive loops.
#include "tests/compat/expect.h"

#include <tuple>

using namespace orv;
using namespace orv::test;

namespace {

constexpr i64 lengths[] = {0, 1, 2, 7, 40};
constexpr i64 strides[][2] = {{1, 1}, {2, 1}, {1, -2}, {-3, 2}, {-1, -1}};

template <class T> constexpr std::string_view norm_letters = "?";
template <> constexpr std::string_view norm_letters<float> = "s";
template <> constexpr std::string_view norm_letters<double> = "d";
template <> constexpr std::string_view norm_letters<cpx<float>> = "sc";
template <> constexpr std::string_view norm_letters<cpx<double>> = "dz";

template <class T> std::string name(const char* rest) { return letter<T> + std::string(rest); }
template <class T> std::string norm_name(const char* rest) { return std::string(norm_letters<T>) + rest; }

// f.operator()<T>(via, x, y) for all types, interfaces, lengths and strides.
template <class T, class F> void vectors_of(F f)
{
    Random random;
    for (const Interface& via : interfaces)
        for (const i64 n : lengths)
            for (const auto& [incx, incy] : strides) {
                SCOPED_TRACE(via.symbol(std::string("...")) + " " + letter<T> + " n=" + std::to_string(n) +
                             " incx=" + std::to_string(incx) + " incy=" + std::to_string(incy));
                const Vector<T> x(n, incx, random), y(n, incy, random);
                f(via, x, y);
                if (testing::Test::HasFailure()) return;
            }
}
#define ON_TYPES(f, ...)                                                                                               \
    [&]<class... T>(std::tuple<T...>) {                                                                                \
        (vectors_of<T>([&](const Interface& via, const Vector<T>& x, const Vector<T>& y) { f<T>(via, x, y); }), ...);  \
    }(std::tuple<__VA_ARGS__>())
#define ALL float, double, cpx<float>, cpx<double>
#define REAL float, double
#define COMPLEX cpx<float>, cpx<double>

template <class T> constexpr T alpha = element<T>::make(-0.625);
template <> constexpr cpx<float> alpha<cpx<float>> = {-0.625f, 0.3f};
template <> constexpr cpx<double> alpha<cpx<double>> = {-0.625, 0.3};
template <class T> constexpr T beta = element<T>::make(1.25);
template <> constexpr cpx<float> beta<cpx<float>> = {1.25f, -0.7f};
template <> constexpr cpx<double> beta<cpx<double>> = {1.25, -0.7};

template <class T> void axpy(const Interface& via, const Vector<T>& x, const Vector<T>& y)
{
    After after(y);
    for (i64 i = 0; i < x.n; ++i) after[i] = Expected().add(widen(y[i]), 1).add(widen(alpha<T>) * widen(x[i]), 3);
    call<void>(via, name<T>("axpy"), x.length(), alpha<T>, x.data(), x.step(), y.data(), y.step());
    after.check();
}
TEST(Vectors, axpy) { ON_TYPES(axpy, ALL); }

template <class T> void axpby(const Interface& via, const Vector<T>& x, const Vector<T>& y)
{
    After after(y);
    for (i64 i = 0; i < x.n; ++i)
        after[i] = Expected().add(widen(beta<T>) * widen(y[i]), 3).add(widen(alpha<T>) * widen(x[i]), 3);
    call<void>(via, name<T>("axpby"), x.length(), alpha<T>, x.data(), x.step(), beta<T>, y.data(), y.step());
    after.check();
}
TEST(Vectors, axpby) { ON_TYPES(axpby, ALL); }

// Scaling and sums of magnitudes know no direction: the standard interfaces do nothing then.
template <class T> bool goes_nowhere(const Interface& via, const Vector<T>& x) { return via.standard() && x.inc < 1; }

template <class T> void scal(const Interface& via, const Vector<T>& x, const Vector<T>&)
{
    After after(x);
    for (i64 i = 0; i < x.n && !goes_nowhere(via, x); ++i) after[i] = Expected().add(widen(alpha<T>) * widen(x[i]), 3);
    call<void>(via, name<T>("scal"), x.length(), alpha<T>, x.data(), x.step());
    after.check();
}
TEST(Vectors, scal) { ON_TYPES(scal, ALL); }

template <class T> void scal_by_real(const Interface& via, const Vector<T>& x, const Vector<T>&)
{
    using R = real_t<T>;
    After after(x);
    for (i64 i = 0; i < x.n && !goes_nowhere(via, x); ++i) after[i] = Expected().add(widen(alpha<R>) * widen(x[i]), 1);
    call<void>(via, std::is_same_v<R, float> ? "csscal" : "zdscal", x.length(), alpha<R>, x.data(), x.step());
    after.check();
}
TEST(Vectors, scal_of_complex_by_real) { ON_TYPES(scal_by_real, COMPLEX); }

template <class T> void copy(const Interface& via, const Vector<T>& x, const Vector<T>& y)
{
    After after(y);
    for (i64 i = 0; i < x.n; ++i) after[i] = Expected(x[i]);
    call<void>(via, name<T>("copy"), x.length(), x.data(), x.step(), y.data(), y.step());
    after.check();
}
TEST(Vectors, copy) { ON_TYPES(copy, ALL); }

template <class T> void swap(const Interface& via, const Vector<T>& x, const Vector<T>& y)
{
    After after_x(x), after_y(y);
    for (i64 i = 0; i < x.n; ++i) after_x[i] = Expected(y[i]), after_y[i] = Expected(x[i]);
    call<void>(via, name<T>("swap"), x.length(), x.data(), x.step(), y.data(), y.step());
    after_x.check(), after_y.check();
}
TEST(Vectors, swap) { ON_TYPES(swap, ALL); }

template <class T> Expected product(const Vector<T>& x, const Vector<T>& y, bool conjugated)
{
    Expected sum;
    for (i64 i = 0; i < x.n; ++i) sum.add(conjugate_if(conjugated, x[i]) * widen(y[i]), 1);
    sum.roundings += 3;
    return sum;
}

template <class T> void dot(const Interface& via, const Vector<T>& x, const Vector<T>& y)
{
    for (const bool conjugated : {false, true}) {
        const char* rest = !is_complex<T> ? "dot" : conjugated ? "dotc" : "dotu";
        expect_near(call<T>(via, name<T>(rest), x.length(), x.data(), x.step(), y.data(), y.step()),
                    product(x, y, conjugated));
    }
}
TEST(Vectors, dot) { ON_TYPES(dot, ALL); }

template <class T> void dot_in_double(const Interface& via, const Vector<T>& x, const Vector<T>& y)
{
    expect_near(call<double>(via, "dsdot", x.length(), x.data(), x.step(), y.data(), y.step()), product(x, y, false));
    expect_near(call<float>(via, "sdsdot", x.length(), 0.5f, x.data(), x.step(), y.data(), y.step()),
                product(x, y, false).add({0.5L, 0}, 1));
}
TEST(Vectors, dot_of_floats_in_double) { ON_TYPES(dot_in_double, float); }

template <class T> void nrm2(const Interface& via, const Vector<T>& x, const Vector<T>&)
{
    long double squares = 0;
    for (i64 i = 0; i < x.n; ++i) squares += (widen(x[i]) * conj(widen(x[i]))).re;
    const auto norm = call<real_t<T>>(via, norm_name<T>("nrm2"), x.length(), x.data(), x.step());
    expect_near(norm, Expected().add({std::sqrt(squares), 0}, static_cast<int>(4 * x.n) + 8));
}
TEST(Vectors, nrm2) { ON_TYPES(nrm2, ALL); }

template <class T> void asum(const Interface& via, const Vector<T>& x, const Vector<T>&)
{
    if (x.inc < 1) return; // the standard leaves these strides open
    Expected sum;
    for (i64 i = 0; i < x.n && !goes_nowhere(via, x); ++i) sum.add({size(widen(x[i])), 0}, 2);
    expect_near(call<real_t<T>>(via, norm_name<T>("asum"), x.length(), x.data(), x.step()), sum);
}
TEST(Vectors, asum) { ON_TYPES(asum, ALL); }

template <class T> void cabs1(const Interface& via, const Vector<T>& x, const Vector<T>&)
{
    const char* routine = std::is_same_v<real_t<T>, float> ? "scabs1" : "dcabs1";
    for (i64 i = 0; i < x.n; ++i)
        expect_near(call<real_t<T>>(via, routine, x[i]), Expected().add({size(widen(x[i])), 0}, 1));
}
TEST(Vectors, cabs1) { ON_TYPES(cabs1, COMPLEX); }

template <class T> void extremes(const Interface& via, const Vector<T>& x, const Vector<T>&)
{
    i64 largest = -1, smallest = -1;
    for (i64 i = 0; i < (x.inc < 1 ? 0 : x.n); ++i) {
        if (largest < 0 || size(widen(x[i])) > size(widen(x[largest]))) largest = i;
        if (smallest < 0 || size(widen(x[i])) < size(widen(x[smallest]))) smallest = i;
    }
    if (via.style == Style::cblas) largest = max(largest, 0), smallest = max(smallest, 0);
    const std::string t(1, letter<T>);
    EXPECT_EQ(call<Int>(via, "i" + t + "amax", x.length(), x.data(), x.step()).value, largest);
    EXPECT_EQ(call<Int>(via, "i" + t + "amin", x.length(), x.data(), x.step()).value, smallest);
}
TEST(Vectors, positions_of_extremes) { ON_TYPES(extremes, ALL); }

template <class T, class C, class S>
void rotation(const Interface& via, const std::string& routine, const Vector<T>& x, const Vector<T>& y, C c, S s)
{
    After after_x(x), after_y(y);
    for (i64 i = 0; i < x.n; ++i) {
        after_x[i] = Expected().add(widen(c) * widen(x[i]), 3).add(widen(s) * widen(y[i]), 3);
        after_y[i] = Expected().add(widen(c) * widen(y[i]), 3).add(-(conj(widen(s)) * widen(x[i])), 3);
    }
    call<void>(via, routine, x.length(), x.data(), x.step(), y.data(), y.step(), c, s);
    after_x.check(), after_y.check();
}
template <class T> void rot(const Interface& via, const Vector<T>& x, const Vector<T>& y)
{
    using R = real_t<T>;
    if (is_complex<T>) rotation(via, letter<T> == 'c' ? "csrot" : "zdrot", x, y, R(0.6), R(0.8));
    // crot and zrot belong to LAPACK.
    if (!is_complex<T> || !via.standard()) rotation(via, name<T>("rot"), x, y, R(0.6), alpha<T>);
}
TEST(Vectors, rot) { ON_TYPES(rot, ALL); }

template <class T> void rotm(const Interface& via, const Vector<T>& x, const Vector<T>& y)
{
    for (const int flag : {-2, -1, 0, 1}) {
        const T param[] = {T(flag), T(0.3), T(-0.4), T(0.9), T(0.25)};
        const T h11 = flag == -1 || flag == 1 ? param[1] : 1, h21 = flag == -1 || flag == 0 ? param[2] : T(-flag);
        const T h12 = flag == -1 || flag == 0 ? param[3] : T(flag), h22 = flag == -1 || flag == 1 ? param[4] : 1;
        After after_x(x), after_y(y);
        for (i64 i = 0; i < x.n && flag != -2; ++i) {
            after_x[i] = Expected().add(widen(h11) * widen(x[i]), 2).add(widen(h12) * widen(y[i]), 2);
            after_y[i] = Expected().add(widen(h21) * widen(x[i]), 2).add(widen(h22) * widen(y[i]), 2);
        }
        call<void>(via, name<T>("rotm"), x.length(), x.data(), x.step(), y.data(), y.step(), &param[0]);
        after_x.check(), after_y.check();
    }
}
TEST(Vectors, rotm) { ON_TYPES(rotm, REAL); }

template <class T> void rotg(const Interface& via, const Vector<T>& x, const Vector<T>& y)
{
    using R = real_t<T>;
    for (i64 i = 0; i < x.n; ++i) {
        T a = x[i], b = y[i], s{};
        R c{};
        if (!is_complex<T>) call<void>(via, name<T>("rotg"), &a, &b, &c, &s);
        else if (via.style == Style::value) call<void>(via, name<T>("rotg"), &a, b, &c, &s);
        else call<void>(via, name<T>("rotg"), &a, &b, &c, &s);
        // The rotation takes (a, b) to (r, 0).
        const int roundings = 40;
        Expected r, nothing;
        r.add(widen(c) * widen(x[i]), roundings).add(widen(s) * widen(y[i]), roundings);
        expect_near(a, r);
        nothing.add(widen(c) * widen(y[i]), roundings).add(-(conj(widen(s)) * widen(x[i])), roundings);
        expect_near(T{}, nothing);
        if constexpr (!is_complex<T>) {
            const T z = std::fabs(x[i]) > std::fabs(y[i]) ? s : 1 / c;
            EXPECT_EQ(b, z);
        }
    }
}
TEST(Vectors, rotg) { ON_TYPES(rotg, ALL); }

template <class T> void rotmg(const Interface& via, const Vector<T>&, const Vector<T>&)
{
    T d1 = T(0.7), d2 = T(0.3), x1 = T(0.9), param[] = {7, 7, 7, 7, 7};
    const T y1 = T(0.4);
    call<void>(via, name<T>("rotmg"), &d1, &d2, &x1, y1, &param[0]);
    const long double h12 = T(0.3) * (long double)y1 / (T(0.7) * (long double)T(0.9)), h21 = -y1 / (long double)T(0.9);
    const long double u = 1 - h12 * h21;
    EXPECT_EQ(param[0], 0);
    EXPECT_EQ(param[1], 7);
    EXPECT_EQ(param[4], 7);
    const auto near = [](T computed, long double exact) { expect_near(computed, Expected().add({exact, 0}, 12)); };
    near(param[2], h21), near(param[3], h12), near(d1, T(0.7) / u), near(d2, T(0.3) / u), near(x1, T(0.9) * u);
}
TEST(Vectors, rotmg) { ON_TYPES(rotmg, REAL); }

// A dense vector of 2n + 1 elements and n positions in it, no two alike.
template <class T> struct Scattered {
    Random random{1};
    Vector<T> dense;
    Positions positions;

    explicit Scattered(i64 n) : dense(2 * n + 1, 1, random)
    {
        for (i64 i = 0; i < n; ++i) positions.push_back(i * 7919 % n * 2 + i % 2);
    }
};

template <class T> void sparse(const Interface& via, i64 n)
{
    SCOPED_TRACE(via.symbol(std::string("...")) + " " + letter<T> + " sparse n=" + std::to_string(n));
    Random random(2);
    const Vector<T> x(n, 1, random);
    const Int length{n};
    {
        const Scattered<T> y(n);
        After after(y.dense);
        for (i64 i = 0; i < n; ++i)
            after[y.positions[i]] =
                Expected().add(widen(y.dense[y.positions[i]]), 1).add(widen(alpha<T>) * widen(x[i]), 3);
        call<void>(via, name<T>("axpyi"), length, alpha<T>, x.data(), y.positions, y.dense.data());
        after.check();
    }
    for (const bool conjugated : {false, true}) {
        const Scattered<T> y(n);
        Expected sum;
        for (i64 i = 0; i < n; ++i) sum.add(conjugate_if(conjugated, x[i]) * widen(y.dense[y.positions[i]]), 1);
        sum.roundings += 4;
        const char* rest = !is_complex<T> ? "doti" : conjugated ? "dotci" : "dotui";
        expect_near(call<T>(via, name<T>(rest), length, x.data(), y.positions, y.dense.data()), sum);
    }
    for (const bool zeroing : {false, true}) {
        const Scattered<T> y(n);
        After after(y.dense), gathered(x);
        for (i64 i = 0; i < n; ++i) {
            gathered[i] = Expected(y.dense[y.positions[i]]);
            if (zeroing) after[y.positions[i]] = Expected();
        }
        call<void>(via, name<T>(zeroing ? "gthrz" : "gthr"), length, y.dense.data(), x.data(), y.positions);
        after.check(), gathered.check();
    }
    {
        const Scattered<T> y(n);
        After after(y.dense);
        for (i64 i = 0; i < n; ++i) after[y.positions[i]] = Expected(x[i]);
        call<void>(via, name<T>("sctr"), length, x.data(), y.positions, y.dense.data());
        after.check();
    }
    if constexpr (!is_complex<T>) {
        const Scattered<T> y(n);
        After after(y.dense), rotated(x);
        const T c = T(0.6), s = T(0.8);
        for (i64 i = 0; i < n; ++i) {
            const T yi = y.dense[y.positions[i]];
            rotated[i] = Expected().add(widen(c) * widen(x[i]), 2).add(widen(s) * widen(yi), 2);
            after[y.positions[i]] = Expected().add(widen(c) * widen(yi), 2).add(-(widen(s) * widen(x[i])), 2);
        }
        call<void>(via, name<T>("roti"), length, x.data(), y.positions, y.dense.data(), c, s);
        after.check(), rotated.check();
    }
}

// 1024 positions are widened at a time where they have 32 bits.
TEST(SparseVectors, all_routines)
{
    for (const Interface& via : interfaces) {
        if (via.style == Style::cblas) continue; // there is no published form
        for (const i64 n : {0, 1, 5, 17, 1023, 1024, 1025, 2050}) {
            sparse<float>(via, n), sparse<double>(via, n), sparse<cpx<float>>(via, n), sparse<cpx<double>>(via, n);
            if (HasFailure()) return;
        }
    }
}

} // namespace
