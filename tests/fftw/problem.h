// A problem laid out in memory: arrays between unreadable pages, NaN in the gaps, numbers in the elements.
#pragma once

#include "tests/fftw/api.h"
#include "tests/support/guarded.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace orv::test {

enum class Form { complex, r2c, c2r, r2r };
enum { redft00 = 3, real_kinds = 11 }; // kinds of r2r: three of spectra, then four of cosines and four of sines

struct Problem {
    Form form = Form::complex;
    int sign = -1;
    bool split = false, in_place = false;
    std::vector<Dim> dims, loops;
    std::vector<int> kinds;

    bool halves() const { return form == Form::r2c || form == Form::c2r; }
    bool pairs(bool output) const // whether a side is of complex numbers
    {
        return form == Form::complex || form == (output ? Form::r2c : Form::c2r);
    }
    std::ptrdiff_t length(std::size_t k, bool output) const
    {
        const bool half = halves() && k + 1 == dims.size() && pairs(output);
        return half ? dims[k].n / 2 + 1 : dims[k].n;
    }
    double points() const
    {
        double n = 1;
        for (const Dim& d : dims) n *= static_cast<double>(d.n);
        return n;
    }
    // Where the elements of a side are.
    std::vector<std::ptrdiff_t> positions(bool output) const
    {
        std::vector<std::ptrdiff_t> at{0};
        const auto along = [&](std::ptrdiff_t n, std::ptrdiff_t stride) {
            std::vector<std::ptrdiff_t> more;
            for (const std::ptrdiff_t p : at)
                for (std::ptrdiff_t i = 0; i < n; ++i) more.push_back(p + i * stride);
            at = std::move(more);
        };
        for (const Dim& d : loops) along(d.n, output ? d.os : d.is);
        for (std::size_t k = 0; k < dims.size(); ++k) along(length(k, output), output ? dims[k].os : dims[k].is);
        return at;
    }
};

inline std::string describe(const Problem& p)
{
    std::string text = std::vector<std::string>{"complex", "r2c", "c2r", "r2r"}[static_cast<std::size_t>(p.form)];
    text += (p.split ? " split" : "") + std::string(p.in_place ? " in place" : "") + " sign " + std::to_string(p.sign);
    const auto add = [&](const char* what, const std::vector<Dim>& dims) {
        text += what;
        for (const Dim& d : dims)
            text += " " + std::to_string(d.n) + ":" + std::to_string(d.is) + ":" + std::to_string(d.os);
    };
    add(" dims", p.dims), add(" loops", p.loops);
    for (const int kind : p.kinds) text += " kind " + std::to_string(kind);
    return text;
}

// The arrays of one side, or of both in place: one, or two where they are split.
template <class R> class Side {
public:
    Side(std::vector<std::ptrdiff_t> reals, int planes, Edge edge, std::size_t shift)
        : reals_(std::move(reals)), low_(reals_.empty() ? 0 : *std::min_element(reals_.begin(), reals_.end()))
    {
        const std::ptrdiff_t high = reals_.empty() ? -1 : *std::max_element(reals_.begin(), reals_.end());
        for (int k = 0; k < planes; ++k)
            arrays_.push_back(std::make_unique<Guarded<R>>(static_cast<std::size_t>(high - low_ + 1), edge, shift));
    }
    R* plane(std::size_t k) const { return k < arrays_.size() ? arrays_[k]->data() - low_ : nullptr; }
    std::size_t planes() const { return arrays_.size(); }
    const std::vector<std::ptrdiff_t>& reals() const { return reals_; }
    const Guarded<R>& array(std::size_t k) const { return *arrays_[k]; }

private:
    std::vector<std::ptrdiff_t> reals_;
    std::ptrdiff_t low_;
    std::vector<std::unique_ptr<Guarded<R>>> arrays_;
};

template <class R> struct Arrays {
    std::vector<std::ptrdiff_t> in_reals, out_reals; // where reals of the input and of the output are
    std::shared_ptr<Side<R>> in, out;

    explicit Arrays(const Problem& p, Edge edge = Edge::end, std::size_t shift = 0)
        : in_reals(reals(p, false)), out_reals(reals(p, true))
    {
        std::vector<std::ptrdiff_t> first = in_reals;
        if (p.in_place) first.insert(first.end(), out_reals.begin(), out_reals.end());
        const auto planes = [&](bool output) { return p.split && p.pairs(output) ? 2 : 1; };
        in = std::make_shared<Side<R>>(first, planes(false), edge, shift);
        out = p.in_place ? in : std::make_shared<Side<R>>(out_reals, planes(true), edge, shift);
    }
    R* ri() const { return in->plane(0); }
    R* ii() const { return in->plane(1); }
    R* ro() const { return out->plane(0); }
    R* io() const { return out->plane(1); }

    static std::vector<std::ptrdiff_t> reals(const Problem& p, bool output)
    {
        std::vector<std::ptrdiff_t> at;
        const bool interleaved = p.pairs(output) && !p.split;
        for (const std::ptrdiff_t k : p.positions(output)) {
            at.push_back(interleaved ? 2 * k : k);
            if (interleaved) at.push_back(2 * k + 1);
        }
        return at;
    }
    void fill(unsigned seed) const
    {
        std::minstd_rand random(seed);
        for (std::size_t plane = 0; plane < in->planes(); ++plane)
            for (const std::ptrdiff_t k : in_reals)
                in->plane(plane)[k] = static_cast<R>(static_cast<double>(random() % 2001) / 1000 - 1);
    }
    // The real numbers of a side in the order of indices: the same for all layouts.
    std::vector<R*> numbers(bool output) const
    {
        std::vector<R*> all;
        const Side<R>& side = output ? *out : *in;
        for (const std::ptrdiff_t k : output ? out_reals : in_reals)
            for (std::size_t plane = 0; plane < side.planes(); ++plane) all.push_back(side.plane(plane) + k);
        return all;
    }
    void copy_input(const Arrays& from) const
    {
        const auto to_all = numbers(false), from_all = from.numbers(false);
        for (std::size_t k = 0; k < to_all.size(); ++k) *to_all[k] = *from_all[k];
    }
    // All bytes of all arrays.
    std::vector<std::vector<R>> all() const
    {
        std::vector<std::vector<R>> copy;
        for (const auto* side : {in.get(), out.get()})
            for (std::size_t k = 0; k < side->planes(); ++k)
                copy.emplace_back(side->array(k).begin(), side->array(k).end());
        return copy;
    }
};
template <class R> bool same_bytes(const std::vector<R>& a, const std::vector<R>& b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(R)) == 0);
}

// A plan through the widest door.
template <class R> Plan guru64(const Api<R>& api, const Problem& p, const Arrays<R>& a, unsigned flags)
{
    using C = typename Api<R>::C;
    const int rank = static_cast<int>(p.dims.size()), loops = static_cast<int>(p.loops.size());
    const Dim *d = p.dims.data(), *l = p.loops.data();
    auto *const ci = reinterpret_cast<C*>(a.ri()), *const co = reinterpret_cast<C*>(a.ro());
    switch (p.form) {
    case Form::complex:
        if (!p.split) return api.plan("guru64_dft", rank, d, loops, l, ci, co, p.sign, flags);
        return p.sign < 0 ? api.plan("guru64_split_dft", rank, d, loops, l, a.ri(), a.ii(), a.ro(), a.io(), flags)
                          : api.plan("guru64_split_dft", rank, d, loops, l, a.ii(), a.ri(), a.io(), a.ro(), flags);
    case Form::r2c:
        return p.split ? api.plan("guru64_split_dft_r2c", rank, d, loops, l, a.ri(), a.ro(), a.io(), flags)
                       : api.plan("guru64_dft_r2c", rank, d, loops, l, a.ri(), co, flags);
    case Form::c2r:
        return p.split ? api.plan("guru64_split_dft_c2r", rank, d, loops, l, a.ri(), a.ii(), a.ro(), flags)
                       : api.plan("guru64_dft_c2r", rank, d, loops, l, ci, a.ro(), flags);
    default:
        return api.plan("guru64_r2r", rank, d, loops, l, a.ri(), a.ro(), p.kinds.data(), flags);
    }
}

// Runs a plan on these arrays, whatever arrays it was made with: by C's name, or by Fortran's.
template <class R> void execute(const Api<R>& api, const Problem& p, Plan plan, const Arrays<R>& a, bool fortran)
{
    using C = typename Api<R>::C;
    const auto run = [&](std::string name, auto... arrays) {
        name = (p.split ? "execute_split_" : "execute_") + name;
        if (fortran) api.fortran(name + "_", &plan, arrays...);
        else api.template call<void>(name, plan, arrays...);
    };
    auto *const ci = reinterpret_cast<C*>(a.ri()), *const co = reinterpret_cast<C*>(a.ro());
    if (p.form == Form::r2r) return run("r2r", a.ri(), a.ro());
    if (p.form == Form::r2c) return p.split ? run("dft_r2c", a.ri(), a.ro(), a.io()) : run("dft_r2c", a.ri(), co);
    if (p.form == Form::c2r) return p.split ? run("dft_c2r", a.ri(), a.ii(), a.ro()) : run("dft_c2r", ci, a.ro());
    if (!p.split) return run("dft", ci, co);
    return p.sign < 0 ? run("dft", a.ri(), a.ii(), a.ro(), a.io()) : run("dft", a.ii(), a.ri(), a.io(), a.ro());
}

// The same without gaps, interleaved and out of place: what any library does.
inline Problem compact(Problem p)
{
    p.split = p.in_place = false;
    std::ptrdiff_t in = 1, out = 1;
    for (std::size_t k = p.dims.size(); k-- > 0;) {
        p.dims[k].is = in, p.dims[k].os = out;
        in *= p.length(k, false), out *= p.length(k, true);
    }
    for (auto l = p.loops.rbegin(); l != p.loops.rend(); ++l) {
        l->is = in, l->os = out;
        in *= l->n, out *= l->n;
    }
    return p;
}

// A spectrum of reals is none of any numbers.
template <class R> void fill(const Problem& p, const Arrays<R>& a, unsigned seed)
{
    if (p.form != Form::c2r) return a.fill(seed);
    Problem back = compact(p);
    back.form = Form::r2c;
    back = compact(back);
    const Arrays<R> signal(back);
    signal.fill(seed);
    const Plan plan = guru64(debian<R>(), back, signal, estimate);
    debian<R>().execute(plan), debian<R>().destroy(plan);
    const auto to = a.numbers(false), from = signal.numbers(true);
    for (std::size_t k = 0; k < to.size(); ++k) *to[k] = *from[k];
}

// The farthest of our output from the oracle's, in the rounding errors that may be.
template <class R> double worst(const Problem& p, const Arrays<R>& a, const Arrays<R>& b)
{
    const double n = p.points();
    double size = p.form == Form::c2r ? n : std::sqrt(2 * n); // of a spectrum, which has grown already
    for (const int kind : p.kinds)
        if (kind >= redft00) size *= std::sqrt(2.0); // sums of sines or cosines are so much longer
    const double bound = 4 * std::numeric_limits<R>::epsilon() * (std::log2(n) + 2) * size;
    double far = 0;
    const auto is = a.numbers(true), should = b.numbers(true);
    for (std::size_t k = 0; k < is.size(); ++k) {
        const double error = std::abs(static_cast<double>(*is[k]) - *should[k]);
        far = std::isnan(error) ? INFINITY : std::max(far, error / bound);
    }
    return far;
}

} // namespace orv::test
