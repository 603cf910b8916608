// orv_bench: times the cases of the tables on every library it finds, in turn, and writes one line of CSV for each.
// bench/compare drives it; bench/README.md tells how to read what it writes.
#include "bench/library.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <stdexcept>

#include <regex.h>
#include <sched.h>
#include <signal.h>
#include <unistd.h>

namespace orv::bench {
namespace {

constexpr struct {
    Pass pass;
    const char* name;
} passes[] = {{held, "held"}, {unrestricted, "unrestricted"}, {threaded, "threaded"}};

const char* name_of(Pass pass)
{
    return std::find_if(std::begin(passes), std::end(passes), [&](auto& p) { return pass == p.pass; })->name;
}

struct Options {
    Places places{"build/lib", "", "build/lib"};
    std::string filter, libraries; // an expression; names with commas between them; all if empty
    Pass pass = held;
    bool quick = false, list = false;
    int rounds = 5;
    double sample = 2e-3; // seconds
};

const char usage[] =
    "usage: orv_bench [--filter REGEX] [--quick] [--pass held|unrestricted|threaded] [--libraries A,B,...]\n"
    "                 [--rounds N] [--sample SECONDS] [--lib DIR] [--against-lib DIR] [--list]\n";

Options parse(int count, char** words)
{
    Options o;
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        const auto value = [&]() -> std::string {
            if (++i == count) throw std::invalid_argument(word + " wants a value\n" + usage);
            return words[i];
        };
        if (word == "--filter") o.filter = value();
        else if (word == "--quick") o.quick = true;
        else if (word == "--list") o.list = true;
        else if (word == "--libraries") o.libraries = "," + value() + ",";
        else if (word == "--rounds") o.rounds = std::max(1, std::stoi(value()));
        else if (word == "--sample") o.sample = std::stod(value());
        else if (word == "--lib") o.places.orv = value();
        else if (word == "--against-lib") o.places.against = value();
        else if (word == "--eigen-lib") o.places.eigen = value();
        else if (word == "--pass") {
            const std::string pass = value();
            const auto* found =
                std::find_if(std::begin(passes), std::end(passes), [&](auto& p) { return pass == p.name; });
            if (found == std::end(passes)) throw std::invalid_argument("no pass " + pass + "\n" + usage);
            o.pass = found->pass;
        } else throw std::invalid_argument("no option " + word + "\n" + usage);
    }
    return o;
}

// Expressions as grep -E has them. The standard library's own took as long to compile as all the rest of this file.
class Filter {
public:
    explicit Filter(const std::string& expression)
    {
        if (regcomp(&compiled, expression.c_str(), REG_EXTENDED | REG_NOSUB) != 0)
            throw std::invalid_argument("no expression: " + expression);
    }
    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;
    ~Filter() { regfree(&compiled); }

    bool matches(const std::string& text) const { return regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0; }

private:
    regex_t compiled;
};

// The operands of one case: the same numbers for every library, and before every sample.
class Operands {
public:
    Operands(const Case& c, const Arena& arena) : c(c), arena(arena)
    {
        for (const Operand& o : c.operands) {
            if (c.single()) fill<float>(o);
            else fill<double>(o);
            if (o.compared()) pristine.emplace_back(arena.address(o), arena.address(o) + c.bytes(o));
        }
    }

    void restore() const
    {
        std::size_t next = 0;
        for (const Operand& o : c.operands) {
            if (!o.compared()) continue;
            std::memcpy(arena.address(o), pristine[next].data(), pristine[next].size());
            ++next;
        }
        std::memset(arena.result(), 0, Arena::result_bytes);
    }

    // What a call left behind: its result and the operands that it wrote.
    std::vector<std::byte> outcome() const
    {
        std::vector<std::byte> all(arena.result(), arena.result() + Arena::result_bytes);
        for (const Operand& o : c.operands) {
            if (o.compared()) all.insert(all.end(), arena.address(o), arena.address(o) + c.bytes(o));
        }
        return all;
    }

private:
    template <class R> void fill(const Operand& o)
    {
        R* to = reinterpret_cast<R*>(arena.address(o));
        for (i64 i = 0; i < o.reals; ++i) {
            state = state * 6364136223846793005u + 1442695040888963407u;
            to[i] = static_cast<R>(o.scale * static_cast<double>(static_cast<i64>(state) >> 11) * 0x1p-52);
        }
        for (const i64 element : o.ones) {
            R* number = to + element * c.reals();
            for (int part = 0; part < c.reals(); ++part) number[part] = part == 0;
        }
    }

    const Case& c;
    const Arena& arena;
    std::uint64_t state = 1;
    std::vector<std::vector<std::byte>> pristine;
};

template <class R> double worst_difference(const std::byte* a, const std::byte* b, std::size_t bytes)
{
    double worst = 0;
    for (std::size_t at = 0; at + sizeof(R) <= bytes; at += sizeof(R)) {
        R x, y;
        std::memcpy(&x, a + at, sizeof x);
        std::memcpy(&y, b + at, sizeof y);
        const double difference = std::fabs(static_cast<double>(x) - static_cast<double>(y));
        worst = std::max(worst, std::isnan(difference) ? std::numeric_limits<double>::infinity() : difference);
    }
    return worst;
}

// Two libraries may differ by their roundings; more means that one of them computes something else.
bool agree(const Case& c, const std::vector<std::byte>& a, const std::vector<std::byte>& b)
{
    if (c.result == Result::index) return std::memcmp(a.data(), b.data(), sizeof(int)) == 0;
    const double eps = c.single() ? std::numeric_limits<float>::epsilon() : std::numeric_limits<double>::epsilon();
    const double allowed = eps * c.roundings * c.magnitude;
    const bool single_result = c.result == Result::single_real || c.result == Result::single_complex;
    const double result = single_result ? worst_difference<float>(a.data(), b.data(), Arena::result_bytes)
                                        : worst_difference<double>(a.data(), b.data(), Arena::result_bytes);
    const std::byte *x = a.data() + Arena::result_bytes, *y = b.data() + Arena::result_bytes;
    const std::size_t bytes = a.size() - Arena::result_bytes;
    const double operands = c.single() ? worst_difference<float>(x, y, bytes) : worst_difference<double>(x, y, bytes);
    return result <= allowed && operands <= allowed;
}

struct Contender {
    explicit Contender(const Worker* worker) : worker(worker) {}
    const Worker* worker;
    long calls = 1;
    double last = 0; // seconds of a call
    std::vector<double> seconds;
};

constexpr double long_call = 0.05; // seconds; above this a call warms itself up

// How many calls make one sample. The first call is over: it met cold pages and unbound symbols, and tells nothing of
// the time of the others. The operands change from call to call, but not in size.
void calibrate(Contender& one, std::size_t index, double sample)
{
    double seconds = one.worker->sample(index, one.calls, false).seconds;
    while (seconds * static_cast<double>(one.calls) < sample) {
        const double wanted = std::ceil(1.2 * sample / std::max(seconds, 1e-9));
        one.calls = std::max(one.calls + 1, std::min(static_cast<long>(wanted), 100 * one.calls));
        seconds = one.worker->sample(index, one.calls, true).seconds;
    }
}

// A sample during which other programs had the processor says little, so it is taken again, within reason. What then
// still was shared counts with its share of the time; false tells so.
bool take_sample(Contender& one, std::size_t index, const Operands& operands)
{
    constexpr int tries = 10;
    constexpr double ours = 0.97;
    const bool by_clock = one.worker->library().passes == threaded; // the time of one thread is not that of the call
    Worker::Sample best{};
    for (int i = 0; i < tries && best.undivided < ours; ++i) {
        operands.restore();
        const Worker::Sample sample = one.worker->sample(index, one.calls, one.last < long_call);
        if (sample.undivided > best.undivided) best = sample;
        if (best.seconds > long_call || by_clock) break;
    }
    const bool shared = best.undivided < ours && !by_clock;
    one.last = shared ? best.seconds * best.undivided : best.seconds;
    one.seconds.push_back(one.last);
    return !shared;
}

void print(const Case& c, const Contender& one, const char* pass)
{
    std::vector<double> t = one.seconds;
    std::sort(t.begin(), t.end());
    const auto figure = [&](double seconds) { return c.unit == "ns" ? seconds * 1e9 : c.work / seconds * 1e-9; };
    std::printf("%s,%s,%s,%lld,%.5g,%.5g,%.5g,%s,%s\n", c.kernel.c_str(), c.variant.c_str(),
                one.worker->library().name.c_str(), static_cast<long long>(c.size), figure(t[t.size() / 2]),
                figure(t.back()), figure(t.front()), c.unit.c_str(), pass);
    std::fflush(stdout);
}

// The slowest library sets how long a case takes; one that is out of the running by far is not worth the wait.
bool worth_timing(const Case& c, const Library& l)
{
    constexpr double small = 1e8;
    return l.name != "reference" || c.unit != "GFLOP/s" || c.work < small;
}

void compare(const std::vector<Case>& cases, std::size_t index, const std::vector<std::unique_ptr<Worker>>& workers,
             const Arena& arena, const Options& options, const char* pass)
{
    const Case& c = cases[index];
    const Operands operands(c, arena);
    std::vector<Contender> contenders;
    std::vector<std::byte> first;
    const Library* first_library = nullptr;
    bool orv_offers = false;
    for (const auto& w : workers) {
        const Library& l = w->library();
        if (!worth_timing(c, l) || !w->offers(index)) continue;
        if (l.direct && orv_offers && !c.overhead) continue;
        orv_offers |= l.name == "orv";
        Contender& one = contenders.emplace_back(w.get());
        operands.restore();
        w->sample(index, 1, false);
        if (l.name != "limit") {
            const std::vector<std::byte> outcome = operands.outcome();
            if (first.empty()) {
                first = outcome;
                first_library = &l;
            } else if (!agree(c, first, outcome)) {
                throw std::runtime_error(c.name() + ": " + first_library->name + " and " + l.name + " differ");
            }
        }
        calibrate(one, index, options.sample);
    }
    int disturbed = 0;
    for (int round = 0; round < options.rounds; ++round) {
        for (std::size_t i = 0; i < contenders.size(); ++i) {
            Contender& one = contenders[(i + round) % contenders.size()];
            disturbed += !take_sample(one, index, operands);
        }
    }
    if (disturbed > 0)
        std::fprintf(stderr, "orv_bench: %s: %d samples shared the processor\n", c.name().c_str(), disturbed);
    for (const Contender& one : contenders) print(c, one, pass);
}

bool wanted(const Library& l, const Options& o)
{
    if ((l.passes & o.pass) == 0) return false;
    if (!o.libraries.empty() && o.libraries.find("," + l.name + ",") == std::string::npos) return false;
    if (l.name == "against" && o.places.against.empty()) return false;
    if (l.file.empty() || access(l.file.c_str(), R_OK) == 0) return true;
    std::fprintf(stderr, "orv_bench: no %s, left out\n", l.file.c_str());
    return false;
}

void run(const Options& options)
{
    const Filter filter(options.filter);
    std::vector<Case> cases;
    for (Case& c : all_cases()) {
        if (options.quick && !c.quick) continue;
        if (c.threads != (options.pass == threaded ? 2 : 1)) continue;
        if (filter.matches(c.name())) cases.push_back(std::move(c));
    }
    if (options.list) {
        for (const Case& c : cases) std::printf("%s\n", c.name().c_str());
        return;
    }
    std::size_t bytes = 0;
    for (const Case& c : cases) {
        const Operand& last = c.operands.back();
        bytes = std::max(bytes, static_cast<std::size_t>(last.offset + c.bytes(last)));
    }
    const Arena arena(bytes);
    const std::vector<Library> all = libraries(options.places);
    const int processor = sched_getcpu();
    const char* pass = name_of(options.pass);

    std::printf("kernel,case,library,size,median,slowest,fastest,unit,pass\n");
    std::vector<std::unique_ptr<Worker>> workers;
    for (const Library& l : all) {
        if (!wanted(l, options)) continue;
        workers.push_back(std::make_unique<Worker>(l, cases, arena, processor));
        std::printf("#%s,%s,%s,%s\n", pass, l.name.c_str(), l.file.c_str(), workers.back()->core().c_str());
    }
    for (std::size_t i = 0; i < cases.size(); ++i) compare(cases, i, workers, arena, options, pass);
}

} // namespace
} // namespace orv::bench

int main(int count, char** words)
{
    signal(SIGPIPE, SIG_IGN); // a worker that is gone is told by its name
    try {
        orv::bench::run(orv::bench::parse(count, words));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "orv_bench: %s\n", e.what());
        return 1;
    }
}
