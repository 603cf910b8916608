#include "tests/random/draw.h"

#include "cli/verify/setting.h"

#include <cctype>
#include <cmath>

namespace orv::test {
namespace {

using namespace verify;

// Small ones often, edges of blocks often, some a good deal further.
i64 side(Random& random, i64 least, i64 most)
{
    const i64 kind = random.from(1, 10), far = kind == 1 ? 700 : kind <= 5 ? 24 : 300;
    return random.size(least, std::min(far, most));
}

i64 stride(Random& random)
{
    constexpr i64 usual[] = {1, 1, 1, 1, -1, 2, -2, 3, -3, 7, 0};
    return random.of(usual);
}

std::string scalar(Random& random, bool complex, bool narrow)
{
    constexpr double special[] = {0, 1, -1, 0.5};
    const auto part = [&] {
        const double value = random.one_in(2) ? random.of(special) : random();
        return narrow ? static_cast<double>(static_cast<float>(value)) : value;
    };
    if (!complex || random.one_in(3)) return number_text(part());
    const double re = part();
    return number_text(re, part());
}

// Sizes, strides and scalars.
void add_values(Problem& p, const std::vector<Argument>& arguments, double most, Random& random)
{
    const auto has = [&](const char* name) {
        return std::ranges::any_of(arguments, [&](const Argument& a) { return a.name == name; });
    };
    const bool vector = p.letters.empty() && !has("m"), cubic = !vector && (has("c") || has("side"));
    const i64 least = p.family.starts_with("xblas_"); // those refuse to do nothing
    const double largest = vector ? most / 100 : std::pow(most, cubic ? 1 / 3.0 : 0.5);
    for (const Argument& a : arguments) {
        const i64 longest = static_cast<i64>(random.one_in(3) ? 3 * largest : largest);
        const auto is = [&](auto... names) { return ((a.name == names) || ...); };
        if (is("m", "n", "rows", "cols") || (is("k") && cubic))
            p.with(a.name, vector ? random.size(least, longest) : side(random, least, longest));
        else if (is("k", "kl", "ku")) p.with(a.name, random.from(0, random.one_in(2) ? 3 : 50));
        else if (a.name.starts_with("inc")) p.with(a.name, stride(random));
        else if (a.name.starts_with("stride")) p.with(a.name, random.from(1, 3));
        else if (is("alpha", "beta"))
            p.with(a.name, scalar(random, a.kind == 'c' || a.kind == 'z', a.kind == 's' || a.kind == 'c'));
        else if (is("prec")) {
            const std::string precisions[] = {"single", "double", "indigenous", "extra"};
            p.with(a.name, random.of(precisions));
        }
    }
}

// What the routine takes as the least leading dimensions, and something behind them.
void add_padding(Problem& p, const std::vector<Argument>& arguments, const Setting& setting, Random& random)
{
    const Problem least = setting.resolved();
    for (const Argument& a : arguments)
        if (const std::string* ld = least.find(a.name); ld && a.name.starts_with("ld") && random.one_in(2))
            p.with(a.name, i64(std::stol(*ld)) + random.from(0, 40));
}

} // namespace

Drawn draw(const Family& family, const Routine& routine, Way way, double most, Random& random)
{
    const auto arguments = arguments_of(family, routine);
    for (;;) {
        Drawn d{Problem(family.name, routine.type), way};
        for (const Argument& a : arguments)
            if (!a.letters.empty()) {
                const char letter = random.of(a.letters);
                d.problem.letters += random.one_in(2) ? letter : static_cast<char>(std::toupper(letter));
            }
        add_values(d.problem, arguments, most, random);
        try {
            Setting setting(family, routine, d.problem, way == Way::cblas_by_rows);
            family.plan(setting);
            add_padding(d.problem, arguments, setting, random);
        } catch (const Mistake&) { // no problem for this family: a stride that it does not take, a band too wide
            continue;
        }
        constexpr i64 eager[] = {1, 30, 1000, 100'000};
        d.problem.with("shift", random.from(0, 15)).with("threads", std::max<i64>(random.from(-2, 8), 1));
        d.problem.with("eager", random.of(eager)).with("seed", random.from(0, 1'000'000'000));
        return d;
    }
}

} // namespace orv::test
