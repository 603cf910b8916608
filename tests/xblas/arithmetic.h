// The three arithmetics in plain scalar code, from their definitions, chosen at run time: what every routine's result
// is recomputed with, bit for bit. Nothing here is shared with the library.
#pragma once

#include <cmath>

namespace orv::test::extended {

enum class Arithmetic { single, double_, extra };

// An element: its parts, whether it has an imaginary one, and whether they came from 32 bits.
struct Element {
    double re = 0, im = 0;
    bool is_complex = false, narrow = false;
};
inline Element conjugate(Element e) { return {e.re, -e.im, e.is_complex, e.narrow}; }

// h + l; the tail of a plain number is 0.
struct Pair {
    double h = 0, l = 0;
};
struct Complex {
    Pair re, im;
};

inline void split(double a, double& high, double& low)
{
    const double c = a * 134217729.0;
    high = c - (c - a);
    low = a - high;
}
inline Pair two_prod(double a, double b)
{
    double a1, a2, b1, b2;
    const double p = a * b;
    split(a, a1, a2);
    split(b, b1, b2);
    double e = a1 * b1 - p;
    e = e + a1 * b2;
    e = e + b1 * a2;
    return {p, e + a2 * b2};
}
inline Pair dd_add(Pair a, Pair b)
{
    const double s1 = a.h + b.h;
    double v = s1 - a.h;
    double s2 = (b.h - v) + (a.h - (s1 - v));
    const double t1 = a.l + b.l;
    v = t1 - a.l;
    double t2 = (b.l - v) + (a.l - (t1 - v));
    s2 = s2 + t1;
    const double t3 = s1 + s2;
    s2 = s2 - (t3 - s1);
    t2 = t2 + s2;
    const double h = t3 + t2;
    return {h, t2 - (h - t3)};
}
inline Pair dd_add_d(Pair a, double b)
{
    const double s1 = a.h + b, v = s1 - a.h;
    const double s2 = ((b - v) + (a.h - (s1 - v))) + a.l;
    const double h = s1 + s2;
    return {h, s2 - (h - s1)};
}
inline Pair dd_mul_d(Pair a, double b)
{
    const Pair p = two_prod(a.h, b);
    const double c = a.l * b, t1 = p.h + c;
    const double t2 = (c - (t1 - p.h)) + p.l;
    const double h = t1 + t2;
    return {h, t2 - (h - t1)};
}
inline Pair dd_div_d(Pair a, double d)
{
    const double q1 = a.h / d;
    const Pair p = two_prod(d, q1);
    const double s = a.h - p.h, v = s - a.h;
    const double c = (-(p.h + v)) + (a.h - (s - v));
    const double t = (c + a.l) - p.l;
    const double q2 = (s + t) / d, h = q1 + q2;
    return {h, q2 - (h - q1)};
}

// Arithmetic on numbers of one kind. A 32-bit operation is the 64-bit one rounded: with more than twice the digits the
// second rounding changes nothing.
class Ring {
public:
    explicit Ring(Arithmetic a) : arithmetic_(a) {}
    bool extra() const { return arithmetic_ == Arithmetic::extra; }

    double rounded(double a) const { return arithmetic_ == Arithmetic::single ? static_cast<float>(a) : a; }

    // What is stored: the head, to which the tail is added once more.
    double close(Pair a) const { return extra() ? a.h + a.l : a.h; }

    Pair add(Pair a, Pair b) const { return extra() ? dd_add(a, b) : Pair{rounded(a.h + b.h), 0}; }
    Pair subtract(Pair a, Pair b) const { return add(a, {-b.h, -b.l}); }
    Pair multiply(double a, double b, bool exact) const
    {
        if (!extra()) return {rounded(a * b), 0};
        return exact ? Pair{a * b, 0} : two_prod(a, b);
    }
    Pair multiply(Pair a, double b) const { return extra() ? dd_mul_d(a, b) : Pair{rounded(a.h * b), 0}; }

    // The product of two elements; of four parts if both are complex.
    Complex product(Element a, Element b) const
    {
        const bool exact = a.narrow && b.narrow;
        const auto times = [&](double x, double y) { return multiply(x, y, exact); };
        if (!a.is_complex && !b.is_complex) return {times(a.re, b.re), {}};
        if (!a.is_complex) return {times(a.re, b.re), times(a.re, b.im)};
        if (!b.is_complex) return {times(a.re, b.re), times(a.im, b.re)};
        return {subtract(times(a.re, b.re), times(a.im, b.im)), add(times(a.re, b.im), times(a.im, b.re))};
    }
    Complex add(Complex a, Complex b) const { return {add(a.re, b.re), add(a.im, b.im)}; }
    Complex subtract(Complex a, Complex b) const { return {subtract(a.re, b.re), subtract(a.im, b.im)}; }

    // What has been computed so far, times an element.
    Complex multiply(Complex s, Element a) const
    {
        if (!a.is_complex) return {multiply(s.re, a.re), multiply(s.im, a.re)};
        return {subtract(multiply(s.re, a.re), multiply(s.im, a.im)), add(multiply(s.re, a.im), multiply(s.im, a.re))};
    }
    // s + r*b, the imaginary part of plain numbers taking one product after the other.
    Complex add_product(Complex s, Element r, Element b) const
    {
        if (extra() || !b.is_complex) return add(s, product(r, b));
        return {add(s.re, product(r, b).re), add(add(s.im, multiply(r.re, b.im, false)), multiply(r.im, b.re, false))};
    }
    Complex add_product(Complex s, Complex r, Element b) const
    {
        if (extra() || !b.is_complex) return add(s, multiply(r, b));
        return {add(s.re, multiply(r, b).re), add(add(s.im, multiply(r.re, b.im)), multiply(r.im, b.re))};
    }

private:
    Arithmetic arithmetic_;
};

} // namespace orv::test::extended
