#include "cli/verify/run.h"

#include "cli/verify/random.h"
#include "cli/verify/slots.h"
#include "core/team/eagerness.h"

#include <algorithm>
#include <limits>

namespace orv::verify {
namespace {

std::string types_of(const Family& family)
{
    std::string all;
    for (const Routine& r : family.routines) all += (all.empty() ? "" : " ") + std::string(r.type);
    return all;
}

const Routine& routine_of(const Family& family, const std::string& type)
{
    for (const Routine& r : family.routines)
        if (type == r.type) return r;
    throw Mistake(std::string(family.name) + " wants a type behind its name, one of " + types_of(family) +
                  (type.empty() ? "" : ", not \"" + type + '"'));
}

// All combinations of letters that the arguments take.
std::vector<std::string> combinations(const std::vector<Argument>& arguments)
{
    std::vector<std::string> all{""};
    for (const Argument& a : arguments) {
        if (a.letters.empty()) continue;
        std::vector<std::string> longer;
        for (const std::string& word : all)
            for (const char letter : a.letters) longer.push_back(word + letter);
        all = std::move(longer);
    }
    return all;
}

// What a value of a sweep stands for, "1|4|9" or all; nothing: the sweep is not for this routine or machine.
std::vector<std::string> alternatives(const std::string& name, const std::string& text)
{
    std::vector<std::string> all;
    std::istringstream values(name == "prec" ? "single|double|indigenous|extra" : text);
    for (std::string value; std::getline(values, value, '|');) {
        if (value == "all") {
            if (orv_get_num_threads() == 1) continue;
            value = std::to_string(orv_get_num_threads());
        }
        all.push_back(value);
    }
    return all;
}

// A line with times= draws so many problems: letters, and of each name one of its values, of 20..300 any from 20 to
// 300. It draws the same with every run: what was right once is right again, or something has changed.
void draw(const Family& family, const Routine& routine, const Problem& sweep, const std::vector<std::string>& letters,
          std::vector<Problem>& all)
{
    u64 seed = 0;
    for (const char c : family.name + std::string(routine.type) + sweep.text()) seed = 31 * seed + static_cast<u64>(c);
    Random random(seed);
    for (i64 i = std::stoll(*sweep.find("times")); i > 0; --i) {
        Problem problem(family.name, routine.type, random.of(letters));
        for (const auto& [name, values] : sweep.values) {
            if (name == "times") continue;
            const auto choice = alternatives(name, values);
            const std::string& value = random.of(choice);
            const std::size_t dots = value.find("..");
            if (dots == value.npos) problem.with(name, value);
            else problem.with(name, random.size(std::stoll(value), std::stoll(value.substr(dots + 2))));
        }
        all.push_back(problem);
    }
}

// The problems of one line of a sweep.
void expand(const Family& family, const Routine& routine, const char* line, std::vector<Problem>& all)
{
    const Problem sweep = Problem::parse(line);
    const std::string &type = sweep.family, &given = sweep.type; // a word further to the front than in a problem
    if (!type.empty() && type != routine.type) return;
    const auto arguments = arguments_of(family, routine);
    const auto letters = given.empty() ? combinations(arguments) : std::vector{given};
    if (sweep.find("times")) return draw(family, routine, sweep, letters, all);
    std::vector<Problem> problems;
    problems.reserve(letters.size());
    for (const std::string& word : letters) problems.emplace_back(family.name, routine.type, word);
    for (const auto& [name, values] : sweep.values) {
        if (name == "prec" && arguments.back().name != name) continue;
        std::vector<Problem> more;
        for (const std::string& value : alternatives(name, values))
            for (const Problem& problem : problems) more.push_back(Problem(problem).with(name, value));
        problems = std::move(more);
    }
    all.insert(all.end(), problems.begin(), problems.end());
}

} // namespace

const std::vector<Group>& groups()
{
    static const std::vector<Group> all{vectors(),        sparse_vectors(),   matrix_vectors(), matrix_products(),
                                        transpositions(), extended(),         transforms(),     waves(),
                                        convolutions(),   poisson_problems(), sparse_matrices()};
    return all;
}

const Family* find_family(const std::string& name)
{
    for (const Group& group : groups())
        for (const Family& family : group.families)
            if (name == family.name) return &family;
    return nullptr;
}

const Group* find_group(const std::string& name)
{
    for (const Group& group : groups())
        if (name == group.name) return &group;
    return nullptr;
}

Outcome run(const Problem& problem)
{
    const Family* const family = find_family(problem.family);
    if (family == nullptr)
        throw Mistake("there is no family \"" + problem.family + "\"; `orv verify --list` names all there are");
    Setting setting(*family, routine_of(*family, problem.type), problem);
    const Plan plan = family->plan(setting);
    const i64 shift = setting.extra("shift", 0, 0, 15), threads = setting.extra("threads", 1, 1, 1024);
    const i64 eager = problem.find("eager") ? setting.extra("eager", 1, 1, 1'000'000'000) : 1;
    const i64 seed = setting.extra("seed", 1, 0, std::numeric_limits<i64>::max());
    Outcome outcome{setting.resolved(), {}};

    Arrays arrays(setting, plan, seed, shift);
    arrays.remember();
    const Slots slots(setting, outcome.problem, arrays);
    i64 position = 0;
    Array* const result = arrays.find("result");
    orv_set_num_threads(static_cast<int>(threads));
    orv_team_set_eagerness(static_cast<double>(eager));
    const Routine& routine = setting.routine();
    const orv_status status = routine.call(routine, slots.data(), result ? result->data() : &position);
    orv_set_num_threads(0);
    orv_team_set_eagerness(1);
    if (status != -setting.refused())
        outcome.fault = "answered " + std::to_string(status) + " (" + orv_status_text(status) + "), not " +
                        std::to_string(-setting.refused());
    else outcome.fault = arrays.touched(setting.refused() ? Plan{} : plan);
    outcome.refused = setting.refusal();
    if (setting.refused() != 0 || !outcome.fault.empty()) return outcome;
    for (const Equation& e : plan.equations)
        outcome.verdict.include(plan.extreme ? judge_extreme(plan.extreme, e.terms[0].left.view, position, arrays)
                                             : judge(e, plan.work, arrays));
    return outcome;
}

std::vector<Problem> problems(const Family& family)
{
    std::vector<Problem> all;
    for (const Routine& routine : family.routines)
        for (const char* line : family.sweeps) expand(family, routine, line, all);
    return all;
}

} // namespace orv::verify
