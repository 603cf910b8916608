// `orv info`: what orv runs on. Exit status 0 if orv can compute here, else 1.
#include "cli/verbs.h"

#include <orv/orv.h>

#include <cstdio>
#include <string>
#include <unistd.h>
#include <vector>

namespace orv::cli {
namespace {

// One line of two columns; continued lines leave the first empty.
void line(const char* name, const std::string& value) { std::printf("%-14s%s\n", name, value.c_str()); }

std::string size(std::size_t bytes)
{
    constexpr const char* units[] = {"bytes", "KiB", "MiB", "GiB"};
    int unit = 0;
    for (; unit < 3 && bytes >= 1024 && bytes % 1024 == 0; ++unit) bytes /= 1024;
    return std::to_string(bytes) + " " + units[unit];
}

std::string cache(int bytes) { return bytes > 0 ? size(bytes) : "unknown"; }

void processor()
{
    orv_processor p;
    orv_get_processor(&p);
    line("processor", p.name);
    line("caches",
         "L1 data " + cache(p.l1_data_cache) + ", L2 " + cache(p.l2_cache) + ", last level " + cache(p.last_cache));
}

bool libraries()
{
    line("core", std::string("version ") + orv_version());
    line("", orv_path());
    if (orv_branch_status() != ORV_OK) {
        line("kernels", "none: " + std::string(orv_last_error()));
        return false;
    }
    line("kernels", std::string(orv_branch_name()) + ", version " + orv_branch_version());
    line("", orv_branch_path());
    return true;
}

void state()
{
    line("threads", std::to_string(orv_get_num_threads()) + " for a large call");
    line("work memory", "up to " + size(orv_get_memory_limit()) + " kept for reuse");
    line("results", orv_get_reproducible() ? "the same bits on every run" : "fastest order of operations");
}

struct Row {
    std::string name, value, meaning;
};

void print(const std::vector<Row>& rows)
{
    std::size_t name = 0, value = 0;
    for (const Row& row : rows) name = std::max(name, row.name.size()), value = std::max(value, row.value.size());
    for (const Row& row : rows)
        std::printf("  %-*s  %-*s%s%s\n", static_cast<int>(name), row.name.c_str(),
                    static_cast<int>(row.meaning.empty() ? 0 : value), row.value.c_str(),
                    row.meaning.empty() ? "" : "  ", row.meaning.c_str());
}

void environment()
{
    std::vector<Row> rows;
    std::vector<std::string> problems;
    orv_setting s;
    for (int i = 0; orv_get_setting(i, &s); ++i) {
        rows.push_back({s.name, s.value ? s.value : std::string("not set: ") + s.fallback, s.meaning});
        if (s.problem) problems.emplace_back(s.problem);
    }
    const std::size_t own = rows.size();
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry, name = text.substr(0, text.find('='));
        if (name.starts_with("OMP_") || name.starts_with("GOMP_"))
            rows.push_back({name, text.substr(name.size() + 1), "OpenMP"});
        if (!name.starts_with("ORV_")) continue;
        bool known = false;
        for (std::size_t i = 0; i < own; ++i) known |= rows[i].name == name;
        if (!known) problems.push_back(name + " is no variable of orv and has no effect");
    }
    std::puts("\nenvironment");
    print(rows);
    for (const std::string& problem : problems) std::printf("  ! %s\n", problem.c_str());
}

} // namespace

int info(Words words)
{
    if (!words.empty()) {
        std::fprintf(stderr, "orv: info takes nothing behind it, not \"%s\"\n", words[0]);
        return 2;
    }
    processor();
    const bool ready = libraries();
    state();
    environment();
    return ready ? 0 : 1;
}

} // namespace orv::cli
