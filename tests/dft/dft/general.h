// The transforms of any length as the tests call them, and what they have to give: sums of the definition in quadruple
// precision, with roots that have nothing in common with those of the library.
#pragma once

#include "frame/kernels/dft_general.h"
#include "tests/dft/primitive.h"
#include "tests/support/probe.h"
#include "tests/support/quad.h"

#include <cmath>
#include <cstdlib>
#include <memory>

namespace orv::test {

struct QuadPair {
    quad re, im;
};
inline QuadPair operator*(QuadPair a, QuadPair b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
inline QuadPair operator+(QuadPair a, QuadPair b) { return {a.re + b.re, a.im + b.im}; }

// exp(2*pi*i*k/n): Taylor's series at an angle below a sixteenth, which is then doubled three times.
inline QuadPair quad_root(i64 k, i64 n)
{
    const quad two_pi = quad(6.283185307179586) + quad(2.4492935982947064e-16) + quad(-5.989539619436679e-33);
    k %= n;
    if (2 * k > n) k -= n;
    const quad x = two_pi * static_cast<quad>(k) / static_cast<quad>(n) / 8;
    quad term = 1, re = 0, im = 0;
    for (int i = 0; i < 32; ++i) {
        (i % 2 == 0 ? re : im) += i % 4 < 2 ? term : -term;
        term = term * x / (i + 1);
    }
    QuadPair w{re, im};
    for (int i = 0; i < 3; ++i) w = w * w;
    return w;
}
inline std::vector<QuadPair> quad_roots(i64 n)
{
    std::vector<QuadPair> roots(static_cast<std::size_t>(n));
    for (i64 k = 0; k < n; ++k) roots[k] = quad_root(k, n);
    return roots;
}

template <class R> QuadPair widened(cpx<R> x) { return {x.re, x.im}; }
template <class R> QuadPair widened(R x) { return {x, 0}; }

// Point k of the forward transform of x.
template <class T> QuadPair point(const std::vector<T>& x, const std::vector<QuadPair>& roots, i64 k)
{
    const i64 n = static_cast<i64>(x.size());
    QuadPair sum{0, 0};
    i64 angle = 0, step = (n - k) % n;
    for (i64 j = 0; j < n; ++j, angle = (angle + step) % n) sum = sum + widened(x[j]) * roots[angle];
    return sum;
}

// Which points of a transform are compared: all, or of a long one so many, drawn at random, with the outermost.
inline std::vector<i64> points_to_see(i64 n, i64 at_most)
{
    std::vector<i64> points;
    if (n <= at_most) {
        for (i64 k = 0; k < n; ++k) points.push_back(k);
        return points;
    }
    Random random(static_cast<std::uint64_t>(n));
    points = {0, 1, n / 2, n - 1};
    while (static_cast<i64>(points.size()) < at_most) points.push_back(random.integer(0, n - 1));
    return points;
}

// Mean square errors, relative to the mean square of the results, in units of the last place of 1.
class Errors {
public:
    template <class R> void add(cpx<R> computed, QuadPair exact, double divided_by = 1)
    {
        const quad re = exact.re / divided_by - computed.re, im = exact.im / divided_by - computed.im;
        off_ += re * re + im * im;
        whole_ += (exact.re * exact.re + exact.im * exact.im) / divided_by / divided_by;
        unit_ = sizeof(R) == 4 ? 0x1p-23 : 0x1p-52;
    }
    double rms() const
    {
        return whole_ == 0 ? static_cast<double>(off_) : std::sqrt(static_cast<double>(off_ / whole_)) / unit_;
    }

private:
    quad off_ = 0, whole_ = 0;
    double unit_ = 1;
};

// Memory of exactly so many bytes before an unreadable page, on whatever boundary that leaves it.
class Memory {
public:
    explicit Memory(i64 bytes) : bytes_(static_cast<std::size_t>(bytes)) {}
    t_8u* get() const { return bytes_.size() == 0 ? nullptr : bytes_.data(); }

private:
    Guarded<t_8u> bytes_;
};

// The kinds of records: of complex numbers, together or in two arrays or with spectra out of order, and of reals.
enum class Form { interleaved, split, out_of_order, real };

template <class F> F* named(Form form, const std::string& operation, const std::string& real)
{
    const char* before = form == Form::out_of_order ? "ympsDFTOutOrd" : "ympsDFT";
    const bool pairs = form == Form::interleaved || form == Form::out_of_order;
    return primitive<F>(before + operation + (form == Form::real ? "_R_" : "_C_") + real + (pairs ? "c" : ""));
}

inline const YmpDftSpec& fields_of(const void* spec)
{
    return *reinterpret_cast<const YmpDftSpec*>((reinterpret_cast<std::uintptr_t>(spec) + 63) & ~std::uintptr_t{63});
}

// A record in memory of exactly the bytes that GetSize tells, with a buffer of exactly those that it tells.
template <class R> class Made {
public:
    Made(Form form, i32 n, i32 flag = scale_none) : form(form), n(n)
    {
        i32 spec = 0, init = 0, buffer = 0;
        status = named<DftGetSize>(form, "GetSize", token<R>())(n, flag, 0, &spec, &init, &buffer);
        if (status != 0) return;
        memory_ = std::make_unique<Memory>(spec);
        Memory init_memory(init);
        status = named<DftInit>(form, "Init", token<R>())(n, flag, 0, memory_->get(), init_memory.get());
        buffer_ = std::make_unique<Memory>(buffer);
    }
    YmpDftSpec* spec() const { return reinterpret_cast<YmpDftSpec*>(memory_->get()); }
    const YmpDftSpec& fields() const { return fields_of(memory_->get()); }
    t_8u* buffer() const { return buffer_->get(); }

    // Where point k of a spectrum stands that is out of order.
    i64 place(i64 k) const
    {
        const YmpDftSpec& spec = fields();
        if (form != Form::out_of_order || !spec.prime_fact) return k;
        i64 place = 0;
        for (i32 f = 0; f <= spec.last_factor; ++f) {
            place += k % spec.factors[f].radix * spec.factors[f].count;
            k /= spec.factors[f].radix;
        }
        return place;
    }

    Form form;
    i32 n, status = 0;

private:
    std::unique_ptr<Memory> memory_, buffer_;
};

template <class R> std::vector<R> parts(const std::vector<cpx<R>>& x, bool imaginary)
{
    std::vector<R> p;
    for (const auto& e : x) p.push_back(imaginary ? e.im : e.re);
    return p;
}

// A complex transform of x by a record of any kind of complex numbers, on guarded arrays, in place or not.
template <class R>
std::vector<cpx<R>> transformed(const Made<R>& dft, bool forward, std::vector<cpx<R>> x, bool in_place, t_8u* buffer)
{
    using T = cpx<R>;
    const auto n = x.size();
    const std::string name = std::string(forward ? "Fwd" : "Inv") + "_CToC_" + token<R>();
    if (dft.form == Form::split) {
        Guarded<R> re(n), im(n), other_re(n), other_im(n);
        for (std::size_t i = 0; i < n; ++i) re[i] = x[i].re, im[i] = x[i].im;
        const auto &to_re = in_place ? re : other_re, &to_im = in_place ? im : other_im;
        EXPECT_EQ(primitive<SplitDft<R>>("ympsDFT" + name)(re.data(), im.data(), to_re.data(), to_im.data(), dft.spec(),
                                                           buffer),
                  0);
        for (std::size_t i = 0; i < n; ++i) x[i] = {to_re[i], to_im[i]};
        return x;
    }
    const bool scrambled = dft.form == Form::out_of_order;
    Guarded<T> src(n), other(n);
    for (std::size_t k = 0; k < n; ++k) src[scrambled && !forward ? dft.place(k) : k] = x[k];
    const auto& dst = in_place ? src : other;
    EXPECT_EQ(primitive<Dft<T>>((scrambled ? "ympsDFTOutOrd" : "ympsDFT") + name + "c")(src.data(), dst.data(),
                                                                                        dft.spec(), buffer),
              0);
    for (std::size_t k = 0; k < n; ++k) x[k] = dst[scrambled && forward ? dft.place(k) : k];
    return x;
}

// The packed layouts, by the names that functions have for them.
inline constexpr const char* layouts[] = {"Perm", "Pack", "CCS"};
inline i64 values_in(const std::string& layout, i64 n) { return layout != "CCS" ? n : n + 2 - n % 2; }

// Point k, 0 <= 2*k <= n, of a packed spectrum of n reals.
template <class R> cpx<R> unpacked(const std::string& layout, const std::vector<R>& p, i64 n, i64 k)
{
    if (layout == "CCS") return {p[2 * k], p[2 * k + 1]};
    if (k == 0) return {p[0], 0};
    const bool perm = layout == "Perm" && n % 2 == 0;
    if (2 * k == n) return {perm ? p[1] : p[n - 1], 0};
    const i64 at = perm ? 2 * k : 2 * k - 1;
    return {p[at], p[at + 1]};
}
template <class R> std::vector<R> packed(const std::string& layout, const std::vector<cpx<R>>& spectrum, i64 n)
{
    std::vector<R> p;
    const bool perm = layout == "Perm" && n % 2 == 0;
    for (i64 k = 0; 2 * k <= n; ++k) {
        const bool real = k == 0 || 2 * k == n;
        if (!(perm && k > 0 && real)) p.push_back(spectrum[k].re);
        if (perm && k == 0) p.push_back(spectrum[n / 2].re);
        if (layout == "CCS" || !real) p.push_back(real ? R(0) : spectrum[k].im);
    }
    return p;
}

// Real transforms on guarded arrays: each of exactly the values that it has, in place the longer one.
template <class R>
std::vector<R> real_transformed(const Made<R>& dft, const std::string& layout, bool forward, const std::vector<R>& x,
                                bool in_place, t_8u* buffer)
{
    const i64 n = dft.n, values = values_in(layout, n), to = forward ? values : n;
    Guarded<R> src(in_place ? values : static_cast<i64>(x.size())), other(to);
    std::copy(x.begin(), x.end(), src.begin());
    const auto& dst = in_place ? src : other;
    const std::string name = forward ? "ympsDFTFwd_RTo" + layout : "ympsDFTInv_" + layout + "ToR";
    EXPECT_EQ(primitive<Dft<R>>(name + "_" + token<R>())(src.data(), dst.data(), dft.spec(), buffer), 0);
    return {dst.begin(), dst.begin() + to};
}

} // namespace orv::test
