#include "tests/random/check.h"

#include "cli/verify/run.h"
#include "cli/verify/slots.h"
#include "core/team/eagerness.h"
#include "tests/random/standard.h"
#include "tests/support/bounds.h"

#include <cmath>
#include <cstring>
#include <utility>

namespace orv::test {
namespace {

using namespace verify;

constexpr const char* ways[] = {"own", "fortran", "cblas", "cblas-by-rows"};

const Library& ours()
{
    static const Library library(ORV_BLAS);
    return library;
}
const Library& reference()
{
    static const Library library(ORV_REFERENCE_BLAS);
    return library;
}

const Routine& routine_of(const Family& family, const std::string& type)
{
    for (const Routine& r : family.routines)
        if (type == r.type) return r;
    throw Mistake("no routine " + type + family.name);
}

// A product of three real ones in place of four is none of the standard's, but the same product.
std::string name_of_reference(const Family& family, const Routine& routine)
{
    const std::string name(family.name);
    return standard_name(name == "gemm3m" ? "gemm" : name, routine.type);
}

// A problem as the routine gets it.
class Trial {
public:
    Trial(const Family& family, const Drawn& drawn)
        : family_(family), routine_(routine_of(family, drawn.problem.type)), drawn_(drawn),
          setting_(family, routine_, drawn_.problem, by_rows()), plan_(family.plan(setting_)),
          shift_(setting_.extra("shift", 0, 0, 15)), threads_(setting_.extra("threads", 1, 1, 1024)),
          eager_(setting_.extra("eager", 1, 1, 1'000'000'000)), seed_(setting_.extra("seed", 1, 0, 1'000'000'000)),
          arrays_(setting_, plan_, seed_, shift_)
    {
        arrays_.remember();
    }

    std::string fault()
    {
        run_ours(threads_);
        if (const std::string touched = arrays_.touched(plan_); !touched.empty()) return touched;
        const Arrays computed = arrays_;
        if (const int least = threads_promised(); least > 0 && threads_ > least) {
            run_ours(least);
            if (!same_bits(computed)) return "other bits than on " + std::to_string(least) + " threads";
        }
        run_reference(name_of_reference(), setting_);
        const Arrays expected = arrays_;
        const std::string name(family_.name);
        if (name.ends_with("sv") || name == "trsm") bound_solution(expected);
        else bound_sum();
        return difference(computed, expected);
    }

private:
    bool by_rows() const { return drawn_.way == Way::cblas_by_rows; }
    std::string name_of_reference() const { return orv::test::name_of_reference(family_, routine_); }

    Library::Call call_of(const std::string& name, const Slots& slots) const
    {
        const bool layout = setting_.has("lda") || setting_.has("uplo");
        return {name, drawn_.way, setting_.arguments(), slots.data(), layout, routine_.result};
    }
    void run(const Library& library, const std::string& name, Setting& setting)
    {
        const Slots slots(setting, setting.resolved(), arrays_);
        Array* const result = arrays_.find("result");
        library.run(call_of(name, slots), result ? result->data() : &position_);
    }
    void run_reference(const std::string& name, Setting& setting)
    {
        arrays_.restore();
        run(reference(), name, setting);
        expected_position_ = position_;
    }
    void run_ours(i64 threads)
    {
        arrays_.restore();
        orv_set_num_threads(static_cast<int>(threads));
        orv_team_set_eagerness(static_cast<double>(eager_));
        run(ours(), standard_name(family_.name, routine_.type), setting_);
        orv_team_set_eagerness(1);
        orv_set_num_threads(0);
        computed_position_ = position_;
    }

    // The least number of threads from which on all compute the same bits; 0: not promised.
    int threads_promised()
    {
        const std::string name(family_.name);
        if (name == "gemm3m") return (setting_.size("k") - 1) % 128 < 10 ? 0 : 1;
        return name == "symv" || name == "hemv" ? 2 : 1;
    }
    bool same_bits(const Arrays& others) const
    {
        return std::equal(arrays_.begin(), arrays_.end(), others.begin(),
                          [](const auto& x, const auto& y) { return x.second.same_bits(y.second); });
    }

    // Makes numbers of an array others, as they stand after the call or before it.
    template <class F> void map(Array& array, bool after, const F& f)
    {
        if (array.kind() == 'i') return;
        for (i64 i = 0; i < array.size(); ++i) array.set(i, f(array(i, after)));
    }
    static Number magnitude(Number e) { return {std::fabs(e.re) + std::fabs(e.im), 0}; }

    // The same problem with scalars as large as theirs: what the reference computes with sizes in place of numbers is
    // the sum of the sizes of all terms.
    Problem of_sizes(bool unit_alpha)
    {
        Problem p(drawn_.problem.family, drawn_.problem.type, drawn_.problem.letters);
        const auto is_scalar = [](const std::string& name) {
            return name == "alpha" || name == "beta" || name == "sb";
        };
        for (const auto& [name, value] : drawn_.problem.values)
            if (!is_scalar(name)) p.with(name, value);
        for (const Argument& a : setting_.arguments())
            if (is_scalar(a.name)) p.with(a.name, unit_alpha ? 1.0 : magnitude(setting_.scalar(a.name)).re);
        return p;
    }
    void run_on_sizes(const std::string& name, bool unit_alpha)
    {
        const Problem problem = of_sizes(unit_alpha);
        Setting setting(family_, routine_, problem, by_rows());
        family_.plan(setting);
        for (const char* extra : {"shift", "threads", "eager", "seed"}) setting.extra(extra, 1, 0, 1'000'000'000);
        run(reference(), name, setting);
    }
    void bound_sum()
    {
        arrays_.restore();
        for (auto& [name, array] : arrays_) map(array, true, magnitude);
        run_on_sizes(name_of_reference(), false);
    }
    // |T|*|x| is what a step of a solve may lose, and what that does to x is the solution with the comparison matrix of
    // T (Higham, 8.2): |t(i,i)| on the diagonal, -|t(i,j)| beside it.
    void bound_solution(const Arrays& solution)
    {
        std::string product = name_of_reference();
        product.replace(product.size() - 2, 2, product.ends_with("sm") ? "mm" : "mv");
        const std::string unknown = setting_.has("b") ? "b" : "x";
        arrays_.restore();
        for (auto& [name, array] : arrays_) map(array, true, magnitude);
        Array& x = *arrays_.find(unknown);
        const Array& solved = solution.at(unknown);
        for (i64 i = 0; i < x.size(); ++i) x.set(i, magnitude(solved(i, true)));
        run_on_sizes(product, true);

        Array& a = *arrays_.find("a");
        map(a, false, [](Number e) { return Number{-magnitude(e).re, 0}; });
        const View& triangle = view_of("a");
        for (i64 i = 0; i < triangle.rows; ++i)
            if (const i64 at = triangle.at(i, i); at >= 0) {
                const Number d = a(at, false);
                a.set(at, {std::hypot(d.re, d.im), 0});
            }
        run_on_sizes(name_of_reference(), true);
    }
    const View& view_of(const std::string& name) const
    {
        const View* found = nullptr;
        for_each_operand(plan_, [&](const Operand& o) {
            if (o.view.array == name) found = &o.view;
        });
        return *found;
    }

    // Of elements that both computed, with the sizes that are now in the arrays.
    std::string difference(const Arrays& computed, const Arrays& expected)
    {
        if (plan_.extreme != 0)
            return static_cast<i32>(computed_position_) == static_cast<i32>(expected_position_) ? "" : "other position";
        double roundings = 0;
        for (const Equation& e : plan_.equations) roundings = std::max(roundings, e.roundings);
        for (const auto& [name, array] : computed) {
            if (array.kind() == 'i') continue;
            const bool narrow = array.kind() == 's' || array.kind() == 'c';
            const long double loss = narrow ? gamma_n<float>(roundings) : gamma_n<double>(roundings);
            const double least = narrow ? 0x1p-149 : 0x1p-1074;
            for (i64 i = 0; i < array.size(); ++i) {
                const Number c = array(i, true), e = expected.at(name)(i, true), size = arrays_.at(name)(i, true);
                // Both computed it with that loss.
                const long double bound = 2 * (loss * size.re + roundings * least);
                if (is_close(c.re, e.re, bound) && is_close(c.im, e.im, bound)) continue;
                return name + '[' + std::to_string(i) + "] is " + number_text(c.re, c.im) + ", not " +
                       number_text(e.re, e.im) + " to " + number_text(static_cast<double>(bound));
            }
        }
        return "";
    }
    static bool is_close(double c, double e, long double bound)
    {
        return (c != c && e != e) || c == e || std::fabs(static_cast<long double>(c) - e) <= bound;
    }

    const Family& family_;
    const Routine& routine_;
    Drawn drawn_;
    Setting setting_;
    Plan plan_;
    i64 shift_, threads_, eager_, seed_;
    Arrays arrays_;
    i64 position_ = 0, computed_position_ = 0, expected_position_ = 0;
};

} // namespace

std::string check(const Drawn& drawn)
{
    if (drawn.way != Way::own) return Trial(*find_family(drawn.problem.family), drawn).fault();
    const Outcome o = verify::run(drawn.problem);
    if (o.passed()) return "";
    return o.fault.empty() ? "error at " + o.verdict.place : o.fault;
}

std::vector<Way> ways_of(const Family& family, const Routine& routine)
{
    std::vector<Way> all;
    for (const Way way : {Way::fortran, Way::cblas, Way::cblas_by_rows})
        if (ours().has(symbol_of(standard_name(family.name, routine.type), way, routine.result)) &&
            reference().has(symbol_of(name_of_reference(family, routine), way, routine.result)))
            all.push_back(way);
    if (all.empty()) all.push_back(Way::own);
    return all;
}

std::string text(const Drawn& drawn) { return drawn.problem.text() + " [" + ways[static_cast<int>(drawn.way)] + ']'; }

Drawn parse(const std::string& line)
{
    Drawn d{Problem::parse(line), Way::own};
    for (int way = 0; way < 4; ++way)
        if (line.find('[' + std::string(ways[way]) + ']') != line.npos) d.way = static_cast<Way>(way);
    return d;
}

} // namespace orv::test
