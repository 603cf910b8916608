// `orv verify`: whether this machine computes what it should. Exit status 0 if all of it does, 1 if not, 2 if what was
// asked for makes no sense.
#include "cli/verbs.h"
#include "cli/verify/run.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace orv::cli {
namespace {

using namespace verify;

constexpr const char* help_text = R"(usage: orv verify [FAMILY...]
       orv verify "FAMILY TYPE LETTERS name=value..."
       orv verify --list | --help

Without more: computes some ten thousand small problems, every family of routines once at the sizes where its inner
paths change, and compares with plain loops in a wider type. An error is told as a share of its bound: the textbook's
limit of what rounding can do to that sum, so that at most 1 is right. Elements that are no part of a result must
keep their bits, and what is not to be read holds NaN. Where large problems are shared among threads, they are run
with one thread and with all, and smaller ones of sizes drawn at random as if they were large. Exit status 0 if all is right, else 1.

With families, or groups of them, only those. With a problem, that one; failures and failing tests print such lines:

    orv verify "gemm d tn m=17 n=9 k=300 lda=31 beta=0"

TYPE and LETTERS are those of the routine (dgemm of a transposed and a plain matrix). Values that are left out
are moderate ones, leading dimensions the smallest that will do, strides 1. Besides the arguments there are seed=
(of the data), threads=, eager=: problems so many times smaller than usual are shared among threads, and shift=: how
many reals arrays stand behind a multiple of 64 bytes.)";

double seconds() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

// What runs now, for the message of a crash.
char running[512];

void die(int signal)
{
    const auto say = [](const char* text) { [[maybe_unused]] const auto n = write(2, text, std::strlen(text)); };
    say("\norv: verify was stopped by a ");
    say(signal == SIGILL ? "bad instruction" : signal == SIGFPE ? "bad operation" : "bad memory access");
    say(" in the problem\n  ");
    say(running);
    say("\n");
    _exit(1);
}

Outcome watched(const Problem& problem)
{
    std::snprintf(running, sizeof running, "%s", problem.text().c_str());
    return run(problem);
}

std::string told(const Verdict& v)
{
    if (v.error != v.error) return v.place + " is NaN or infinite";
    char text[200];
    if (v.bound > 0)
        std::snprintf(text, sizeof text, "largest error %.2g at %s, %.2g of its bound %.2g", v.error, v.place.c_str(),
                      v.share, v.bound);
    else if (v.error == 0) std::snprintf(text, sizeof text, "no error, as it should be");
    else std::snprintf(text, sizeof text, "error %.2g at %s, which should be exact", v.error, v.place.c_str());
    return text;
}

std::string told(const Outcome& o)
{
    if (!o.fault.empty()) return o.fault;
    return o.refused.empty() ? told(o.verdict) : "refuses " + o.refused + ", and writes nothing";
}

int one(const std::string& line)
{
    const Outcome o = watched(Problem::parse(line));
    std::printf("%s\n%s\n%s\n", o.problem.text().c_str(), told(o).c_str(), o.passed() ? "right" : "WRONG");
    return o.passed() ? 0 : 1;
}

// A line on a terminal that fills while problems are done.
class Progress {
public:
    explicit Progress(std::size_t all) : all_(all), shown_(isatty(STDOUT_FILENO) != 0) {}
    void step(const char* family)
    {
        ++done_;
        const double now = seconds();
        if (!shown_ || now < next_) return;
        next_ = now + 0.05;
        constexpr int width = 40;
        const int full = static_cast<int>(done_ * width / all_);
        std::printf("\r%.*s%.*s %3d%%  %-16s", full, "########################################", width - full,
                    "........................................", static_cast<int>(100 * done_ / all_), family);
        std::fflush(stdout);
    }
    void clear() const
    {
        if (shown_) std::printf("\r%70s\r", "");
    }

private:
    std::size_t all_, done_ = 0;
    bool shown_;
    double next_ = 0;
};

struct Row {
    const Family* family;
    std::vector<Problem> problems;
    std::vector<Outcome> failures{};
    double worst = 0, seconds = 0;
};

constexpr std::size_t most_shown = 5; // failures of a family

void print(const Row& row)
{
    char worst[32] = "exact";
    if (row.worst > 0) std::snprintf(worst, sizeof worst, "%.2g", row.worst);
    std::printf("  %-16s %8zu   %10s %8.2f s", row.family->name, row.problems.size(), worst, row.seconds);
    if (!row.failures.empty()) std::printf("   %zu WRONG", row.failures.size());
    std::puts("");
}

int many(const std::vector<const Family*>& chosen)
{
    std::vector<Row> rows;
    std::size_t all = 0, wrong = 0;
    for (const Family* family : chosen) {
        rows.push_back({family, problems(*family)});
        all += rows.back().problems.size();
    }
    const double start = seconds();
    Progress progress(all);
    for (Row& row : rows) {
        const double from = seconds();
        for (const Problem& problem : row.problems) {
            progress.step(row.family->name);
            Outcome o = watched(problem);
            row.worst = std::max(row.worst, o.verdict.share);
            if (!o.passed()) row.failures.push_back(std::move(o));
        }
        row.seconds = seconds() - from;
        wrong += row.failures.size();
    }
    progress.clear();

    std::printf("%-18s %8s %12s %10s\n", "", "problems", "worst error", "time");
    for (const Group& group : groups()) {
        bool titled = false;
        for (const Row& row : rows)
            for (const Family& family : group.families)
                if (row.family == &family) {
                    if (!titled) std::puts(group.title);
                    titled = true;
                    print(row);
                }
    }
    std::printf("\n%zu problems in %.1f s; errors are shares of their bounds, so at most 1 is right\n", all,
                seconds() - start);
    if (wrong == 0) return std::puts("all right"), 0;
    std::printf("%zu WRONG; `orv verify \"LINE\"` repeats a line:\n", wrong);
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < std::min(row.failures.size(), most_shown); ++i)
            std::printf("  %s\n      %s\n", row.failures[i].problem.text().c_str(), told(row.failures[i]).c_str());
        if (row.failures.size() > most_shown)
            std::printf("  ... and %zu more of %s\n", row.failures.size() - most_shown, row.family->name);
    }
    return 1;
}

std::string types_of(const Family& family)
{
    std::string all;
    for (const Routine& r : family.routines) all += std::string(all.empty() ? "" : " ") + r.type;
    return all;
}

int list()
{
    for (const Group& group : groups()) {
        std::printf("%s: %s\n", group.name, group.title);
        for (const Family& family : group.families)
            std::printf("  %-16s %s\n  %16s types %s\n", family.name, family.arguments, "", types_of(family).c_str());
    }
    return 0;
}

// The families that all words name, alone or as groups; none if a word names neither.
std::vector<const Family*> families_of(Words words)
{
    std::vector<const Family*> all;
    for (const char* word : words) {
        if (const Family* family = find_family(word)) all.push_back(family);
        else if (const Group* group = find_group(word))
            for (const Family& member : group->families) all.push_back(&member);
        else return {};
    }
    if (words.empty())
        for (const Group& group : groups())
            for (const Family& member : group.families) all.push_back(&member);
    return all;
}

int run(Words words)
{
    if (orv_branch_status() != ORV_OK) return std::fprintf(stderr, "orv: %s\n", orv_last_error()), 1;
    for (const int signal : {SIGSEGV, SIGBUS, SIGABRT, SIGILL, SIGFPE}) std::signal(signal, die);
    if (const auto families = families_of(words); !families.empty()) return many(families);
    std::string line;
    for (const char* word : words) line += std::string(line.empty() ? "" : " ") + word;
    return one(line);
}

} // namespace

int verify(Words words)
{
    const std::string first = words.empty() ? "" : words[0];
    if (first == "--help") return std::puts(help_text), 0;
    if (first == "--list") return list();
    try {
        if (first.starts_with("-")) throw Mistake("there is no option " + first + "; --list and --help are the two");
        return run(words);
    } catch (const Mistake& mistake) {
        std::fprintf(stderr, "orv: verify: %s\n", mistake.what());
        return 2;
    }
}

} // namespace orv::cli
