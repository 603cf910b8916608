#include "cli/verify/oracle.h"

#include <cmath>
#include <limits>
#include <ranges>
#include <stdexcept>

namespace orv::verify {
namespace {

// Unit roundoff of a kind; x: an addition of pairs of doubles loses 3u^2 of its result, a product no more.
double unit(char kind)
{
    if (kind == 'x') return 3 * 0x1p-106;
    return kind == 's' || kind == 'c' ? 0x1p-24 : 0x1p-53;
}
double least(char kind)
{
    return kind == 's' || kind == 'c' ? std::numeric_limits<float>::denorm_min()
                                      : std::numeric_limits<double>::denorm_min();
}
double gamma(double n, double u) { return n * u / (1 - n * u); }
double size(Number a) { return std::fabs(a.re) + std::fabs(a.im); }

// Rows or columns of an operand, one after the other, in the wider type.
template <class Wide> struct Run {
    std::vector<cpx<Wide>> elements;
    std::vector<double> sizes;

    void add(Number e) { elements.push_back({e.re, e.im}), sizes.push_back(size(e)); }
    void clear() { elements.clear(), sizes.clear(); }
};

// One element of the left side: its value, and the sizes of all that went into it.
template <class Wide> struct WideSum {
    cpx<Wide> value{};
    double sizes = 0;

    void add(Number factor, cpx<Wide> e, double s)
    {
        value += cpx<Wide>{factor.re, factor.im} * e;
        sizes += size(factor) * s;
    }
};

template <bool complex, class Wide> cpx<Wide> dot(const cpx<Wide>* x, const cpx<Wide>* y, i64 n)
{
    cpx<Wide> sum{};
    for (i64 l = 0; l < n; ++l)
        if constexpr (complex) sum += x[l] * y[l];
        else sum.re += x[l].re * y[l].re;
    return sum;
}

// factor*op(L)*op(R), row by row.
template <class Wide> class Product {
public:
    Product(const Term& term, const Arrays& arrays)
        : factor_(term.factor), left_(term.left, arrays), length_(left_.columns())
    {
        if (!term.right) return;
        right_.emplace(*term.right, arrays);
        complex_ = left_.complex() || right_->complex();
        for (i64 j = 0; j < right_->columns(); ++j)
            for (i64 l = 0; l < length_; ++l) columns_.add((*right_)(l, j));
    }
    i64 rows() const { return left_.rows(); }
    i64 columns() const { return right_ ? right_->columns() : left_.columns(); }

    void start(i64 i)
    {
        row_.clear();
        for (i64 l = 0; l < length_; ++l) row_.add(left_(i, l));
    }
    // Element j of the row.
    void add_to(WideSum<Wide>& sum, i64 j) const
    {
        if (!right_) return sum.add(factor_, row_.elements[j], row_.sizes[j]);
        const cpx<Wide>*x = row_.elements.data(), *y = columns_.elements.data() + j * length_;
        double sizes = 0;
        for (i64 l = 0; l < length_; ++l) sizes += row_.sizes[l] * columns_.sizes[j * length_ + l];
        sum.add(factor_, complex_ ? dot<true>(x, y, length_) : dot<false>(x, y, length_), sizes);
    }

private:
    Number factor_;
    Elements left_;
    std::optional<Elements> right_;
    i64 length_;
    bool complex_ = false;
    Run<Wide> row_, columns_;
};

// The array that the call has written.
const View& written(const Equation& equation)
{
    if (equation.value) return equation.value->view;
    for (const Term& t : equation.terms | std::views::reverse) {
        if (t.left.after) return t.left.view;
        if (t.right && t.right->after) return t.right->view;
    }
    throw std::logic_error("an equation has nothing that the call has written");
}

template <class Wide> Verdict judge_in(const Equation& equation, char work, const Arrays& arrays)
{
    const View& result = written(equation);
    const char kind = arrays.at(result.array).kind();
    const bool wider = work != 0 && unit(work) < unit(kind);
    const double loss = gamma(equation.roundings, unit(wider ? work : kind));
    const double store = wider ? unit(kind) : 0, underflow = equation.roundings * least(kind);

    std::vector<Product<Wide>> products;
    products.reserve(equation.terms.size());
    for (const Term& term : equation.terms) products.emplace_back(term, arrays);
    std::optional<Elements> value;
    if (equation.value) value.emplace(*equation.value, arrays);
    const i64 rows = value ? value->rows() : products[0].rows(),
              columns = value ? value->columns() : products[0].columns();
    const auto magnitude = [](Wide a) { return static_cast<double>(a < 0 ? -a : a); };

    Verdict worst;
    for (i64 i = 0; i < rows; ++i) {
        for (Product<Wide>& p : products) p.start(i);
        for (i64 j = 0; j < columns; ++j) {
            if (value && result.at(i, j) < 0) continue; // the other triangle
            WideSum<Wide> sum;
            for (const Product<Wide>& p : products) p.add_to(sum, j);
            const Number v = value ? (*value)(i, j) : Number{};
            const double re = magnitude(sum.value.re - v.re), im = magnitude(sum.value.im - v.im);
            const double error = re >= im || re != re ? re : im;
            // What the store rounds is the value, or the solution, which stands in the sum.
            const double bound = loss * sum.sizes + store * (value ? size(v) : sum.sizes) + underflow;
            double share = error == 0 ? 0 : error / bound;
            if (share != share) share = std::numeric_limits<double>::infinity();
            if (worst.place.empty() || share > worst.share)
                worst = {share, error, bound, result.array + '(' + std::to_string(i) + ',' + std::to_string(j) + ')'};
        }
    }
    return worst;
}

} // namespace

// 113 bits where the routine computes with 105, else 64.
Verdict judge(const Equation& equation, char work, const Arrays& arrays)
{
    return work == 'x' ? judge_in<__float128>(equation, work, arrays) : judge_in<long double>(equation, work, arrays);
}

Verdict judge_extreme(int extreme, const View& x, i64 position, const Arrays& arrays)
{
    i64 expected = x.rows > 0 ? 0 : -1;
    // Sizes as the routine rounds them: the sum of two floats may round to that of two others.
    const bool narrow = arrays.at(x.array).kind() == 'c' || arrays.at(x.array).kind() == 's';
    const Operand operand = op(x);
    const Elements elements(operand, arrays);
    const auto key = [&](i64 i) {
        const double s = size(elements(i, 0));
        return extreme * (narrow ? static_cast<float>(s) : s);
    };
    for (i64 i = 1; i < x.rows; ++i)
        if (key(i) > key(expected)) expected = i;
    if (position == expected) return {0, 0, 0, "result"};
    return {std::numeric_limits<double>::infinity(), static_cast<double>(std::abs(position - expected)), 0, "result"};
}

} // namespace orv::verify
