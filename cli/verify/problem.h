// One problem on one line, as `orv verify` takes it and failing tests print it:
//
//     family type letters name=value...        gemm d tn m=17 n=9 k=300 lda=31 beta=0
//
// Words are separated by blanks. Letters are those of the call, in its order; a family without any leaves them out.
// Values are whole numbers, numbers (complex ones as (re,im), without blanks) or words. What the names mean and which
// may be left out is known to families alone: here a problem is text. A remark in [brackets] at the end is skipped.
#pragma once

#include <charconv>
#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace orv::verify {

// A line that cannot be followed, and in the text what was expected.
struct Mistake : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The shortest text that reads back as the same number.
template <class R> std::string number_text(R value)
{
    char text[64];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}
template <class R> std::string number_text(R re, R im) { return '(' + number_text(re) + ',' + number_text(im) + ')'; }

struct Problem {
    std::string family, type, letters;
    std::vector<std::pair<std::string, std::string>> values;

    Problem() = default;
    Problem(std::string family, std::string type, std::string letters = "")
        : family(std::move(family)), type(std::move(type)), letters(std::move(letters))
    {
    }

    Problem& with(const std::string& name, const std::string& value)
    {
        values.emplace_back(name, value);
        return *this;
    }
    Problem& with(const std::string& name, std::int64_t value) { return with(name, std::to_string(value)); }
    Problem& with(const std::string& name, float value) { return with(name, number_text(value)); }
    Problem& with(const std::string& name, double value) { return with(name, number_text(value)); }
    // A pair of real and imaginary part.
    template <class Complex>
    requires requires(Complex z) { z.re, z.im; }
    Problem& with(const std::string& name, Complex value) { return with(name, number_text(value.re, value.im)); }

    const std::string* find(const std::string& name) const
    {
        for (const auto& [known, value] : values)
            if (known == name) return &value;
        return nullptr;
    }

    std::string text() const
    {
        std::string line = family + ' ' + type;
        if (!letters.empty()) line += ' ' + letters;
        for (const auto& [name, value] : values) line.append(1, ' ').append(name).append(1, '=').append(value);
        return line;
    }

    static Problem parse(const std::string& line)
    {
        Problem p;
        std::string* const places[] = {&p.family, &p.type, &p.letters};
        std::size_t place = 0;
        std::istringstream words(line.substr(0, line.find('[')));
        for (std::string word; words >> word;) {
            const std::size_t equals = word.find('=');
            if (equals == std::string::npos) {
                if (place == 3 || !p.values.empty())
                    throw Mistake('"' + word + "\" is no name=value: family, type and letters come first, then values");
                *places[place++] = word;
                continue;
            }
            const std::string name = word.substr(0, equals);
            if (name.empty() || equals + 1 == word.size())
                throw Mistake("\"" + word + "\" wants a name before its = and a value behind it");
            if (p.find(name)) throw Mistake(name + "= is given twice");
            p.with(name, word.substr(equals + 1));
        }
        return p;
    }
};

} // namespace orv::verify
