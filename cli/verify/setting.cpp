#include "cli/verify/setting.h"

#include <algorithm>
#include <cmath>

namespace orv::verify {
namespace {

std::string usual_letters(const std::string& name)
{
    if (name.starts_with("trans")) return "ntc";
    if (name == "uplo") return "ul";
    if (name == "diag") return "nu";
    if (name == "side") return "lr";
    return name == "conj" ? "nc" : "cr"; // order, ordering: columns or rows
}

std::string alternatives(const std::string& letters)
{
    std::string text(1, letters[0]);
    for (std::size_t i = 1; i < letters.size(); ++i)
        text += (i + 1 < letters.size() ? ", " : " or ") + std::string(1, letters[i]);
    return text;
}

// Values that nobody gave: no special ones, of few bits.
Number usual_scalar(const std::string& name)
{
    if (name == "alpha") return {0.75, -0.5};
    if (name == "beta") return {-0.5, 0.25};
    if (name == "c") return {0.6, 0};
    if (name == "d2") return {0.5, 0};
    return {0.8, 0.3};
}

const char* read(const std::string& text, std::size_t from, double& value)
{
    return std::from_chars(text.data() + from, text.data() + text.size(), value).ptr;
}

bool read_number(const std::string& text, bool complex, Number& value)
{
    const char* const end = text.data() + text.size();
    value = {};
    if (text[0] != '(') return read(text, 0, value.re) == end;
    const char* const comma = read(text, 1, value.re);
    if (!complex || comma == end || *comma != ',') return false;
    const char* const close = read(text, static_cast<std::size_t>(comma - text.data()) + 1, value.im);
    return close + 1 == end && *close == ')';
}

constexpr struct {
    const char* name;
    char work;
} precisions[] = {{"single", 0}, {"double", 'd'}, {"indigenous", 'd'}, {"extra", 'x'}};

// Not inlined: GCC 12 takes two of them side by side for nothing at all (-ftree-slp-vectorize).
[[gnu::noinline]] double to_float(double value) { return static_cast<float>(value); }

constexpr i64 largest = 1'000'000;

} // namespace

std::vector<Argument> arguments_of(const Family& family, const Routine& routine)
{
    std::vector<Argument> all;
    std::istringstream words(family.arguments);
    for (std::string word; words >> word;) {
        const std::size_t colon = word.find(':');
        const char kind = routine.kinds[all.size()];
        Argument a{word.substr(0, colon), "", kind};
        if (kind == 'l' || kind == 'o') a.letters = colon == word.npos ? usual_letters(a.name) : word.substr(colon + 1);
        all.push_back(a);
    }
    if (all.size() < routine.kinds.size()) all.push_back({"prec", "", 'o'});
    return all;
}

Setting::Setting(const Family& family, const Routine& routine, const Problem& problem, bool by_rows)
    : family_(family), routine_(routine), problem_(problem), by_rows_(by_rows),
      arguments_(arguments_of(family, routine))
{
    std::string expected;
    std::size_t count = 0;
    for (const Argument& a : arguments_)
        if (!a.letters.empty()) {
            expected += (count++ ? "; " : "") + a.name + ": " + alternatives(a.letters);
            if (count > problem.letters.size()) continue;
            const char letter = problem.letters[count - 1];
            if (a.letters.find(letter | 0x20) != a.letters.npos) letters_[a.name] = letter;
        }
    if (letters_.size() == count && count == problem.letters.size()) return;
    if (count == 0)
        throw Mistake(family.name + std::string(" takes no letters, so \"") + problem.letters + "\" means nothing");
    throw Mistake(family.name + std::string(" wants ") + std::to_string(count) + (count == 1 ? " letter" : " letters") +
                  " behind the type (" + expected + "), " +
                  (problem.letters.empty() ? "and there is none" : "not \"" + problem.letters + '"'));
}

char Setting::kind_of(const std::string& name) const
{
    for (const Argument& a : arguments_)
        if (a.name == name) return a.kind;
    return name == "result" ? routine_.result : 0;
}

char Setting::letter(const std::string& name) const
{
    const auto found = letters_.find(name);
    return found == letters_.end() ? '?' : fold(found->second) | 0x20;
}

i64 Setting::whole(const std::string& name, i64 otherwise, i64 least, i64 most, const std::string& expected)
{
    if (const auto known = values_.find(name); known != values_.end()) return std::stoll(known->second);
    i64 value = otherwise;
    if (const std::string* text = given(name)) {
        const char* const end = text->data() + text->size();
        const auto [read_to, error] = std::from_chars(text->data(), end, value);
        if (error != std::errc() || read_to != end || value < least || value > most)
            throw Mistake(what(name) + expected + ", not " + *text);
    }
    values_[name] = std::to_string(value);
    asked_.push_back(name);
    return value;
}

i64 Setting::extra(const std::string& name, i64 otherwise, i64 least, i64 most)
{
    return whole(name, otherwise, least, most,
                 "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
}

i64 Setting::size(const std::string& name, i64 otherwise) { return extra(name, otherwise, 0, largest); }

i64 Setting::leading(const std::string& name, i64 least)
{
    const i64 value = whole(name, least, 0, largest, "a whole number of at least " + std::to_string(least) + " here");
    if (value >= least) return value;
    if (routine_.kernel) throw Mistake(what(name) + "at least " + std::to_string(least) + " here: nothing checks it");
    const auto is_it = [&](const Argument& a) { return a.name == name; };
    const auto position = std::find_if(arguments_.begin(), arguments_.end(), is_it) - arguments_.begin() + 1;
    if (refused_ == 0 || position < refused_) {
        refused_ = static_cast<int>(position);
        refusal_ = name + '=' + std::to_string(value) + ", which has to be at least " + std::to_string(least) + " here";
    }
    return least;
}

i64 Setting::stride(const std::string& name, bool zero)
{
    const i64 value = whole(name, 1, -1000, 1000, "a whole number from -1000 to 1000");
    if (value == 0 && !zero) throw Mistake(what(name) + "a stride other than 0");
    return value;
}

Number Setting::scalar(const std::string& name)
{
    const char kind = kind_of(name);
    if (kind == 0) return {1, 0};
    const bool complex = is_complex(name), narrow = kind == 's' || kind == 'c';
    Number value = usual_scalar(name);
    if (!complex) value.im = 0;
    if (const std::string* text = given(name); text && !read_number(*text, complex, value))
        throw Mistake(what(name) + (complex ? "a number or (re,im)" : "a number") + ", not " + *text);
    if (narrow) value = {to_float(value.re), to_float(value.im)};
    const auto number = [&](double part) { return narrow ? number_text(static_cast<float>(part)) : number_text(part); };
    const std::string text = value.im == 0 ? number(value.re) : '(' + number(value.re) + ',' + number(value.im) + ')';
    if (values_.emplace(name, text).second) asked_.push_back(name);
    return value;
}

char Setting::work()
{
    if (!has("prec")) return 0;
    const std::string* text = given("prec");
    const std::string name = text ? *text : "extra";
    for (const auto& precision : precisions)
        if (name == precision.name) {
            values_["prec"] = name;
            return precision.work;
        }
    throw Mistake(what("prec") + "single, double, indigenous or extra, not " + name);
}

View Setting::vector(const std::string& name, i64 n, const std::string& by, bool zero)
{
    const i64 inc = by.empty() ? 1 : stride(by, zero);
    return {.array = name, .rows = n, .base = inc < 0 ? (1 - n) * inc : 0, .row = inc};
}

View Setting::matrix(const std::string& name, const std::string& lead, i64 rows, i64 columns, i64 gap)
{
    const bool along = by_rows();
    const i64 ld = leading(lead, (std::max<i64>(along ? columns : rows, 1) - 1) * gap + 1);
    return {.array = name, .rows = rows, .columns = columns, .row = along ? ld : gap, .column = along ? gap : ld};
}

View Setting::matrix_for(char op, const std::string& name, const std::string& lead, i64 rows, i64 columns)
{
    const bool turned = op == 't' || op == 'c';
    return matrix(name, lead, turned ? columns : rows, turned ? rows : columns);
}

View Setting::band(const std::string& name, i64 rows, i64 columns, i64 below, i64 above)
{
    const i64 ld = leading("lda", below + above + 1);
    View v{.array = name, .rows = rows, .columns = columns, .base = above, .row = 1, .column = ld - 1};
    if (by_rows()) v.base = below, v.row = ld - 1, v.column = 1;
    v.below = below, v.above = above;
    return v;
}

View Setting::triangle(const std::string& name, i64 n, View::Rest rest)
{
    const bool upper = letter("uplo") == 'u', packed = name == "a" && !has("lda");
    View v;
    if (packed) {
        const bool growing = upper != by_rows();
        v = {.array = name, .rows = n, .columns = n, .places = View::Places::packed_shrinking};
        if (growing) v.places = View::Places::packed_growing;
    } else if (name == "a" && has("k") && !has("c")) {
        const i64 k = extra("k", 1, 0, diagonals(n));
        v = band(name, n, n, upper ? 0 : k, upper ? k : 0);
    } else v = matrix(name, "ld" + name, n, n);
    v.keep_triangle(upper);
    v.rest = rest;
    return v;
}

View Setting::triangular(const std::string& name, i64 n)
{
    View v = triangle(name, n, View::Rest::zero);
    v.dominant = true;
    v.unit = letter("diag") == 'u';
    return v;
}

View Setting::element(const std::string& name, i64 position) const { return {.array = name, .base = position}; }

i64 Setting::diagonals(i64 order) const { return extended() ? std::max<i64>(order - 1, 0) : largest; }

Problem Setting::resolved() const
{
    Problem p(family_.name, routine_.type, problem_.letters);
    for (const Argument& a : arguments_)
        if (const auto found = values_.find(a.name); found != values_.end()) p.with(a.name, found->second);
    for (const std::string& name : asked_)
        if (!p.find(name)) p.with(name, values_.at(name));
    for (const auto& [name, value] : problem_.values)
        if (!p.find(name)) {
            std::string message(family_.name);
            message.append(" has no ").append(name).append("=; it takes");
            for (const auto& [other, text] : p.values) message.append(1, ' ').append(other);
            throw Mistake(message);
        }
    return p;
}

} // namespace orv::verify
