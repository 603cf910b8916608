#include "core/serv/settings.h"

#include "core/serv/status.h"
#include "orv/settings.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <unistd.h>

namespace orv::core {
namespace {

// Each parser says whether the text makes sense, and stores the number if there is one.
bool whole_number(const char* text, i64 low, i64 high, i64* value)
{
    if (*text < '0' || *text > '9') return false;
    char* end;
    *value = std::strtoll(text, &end, 10); // saturates far above any bound used here
    return *end == 0 && *value >= low && *value <= high;
}

bool thread_count(const char* text, i64* value) { return whole_number(text, 1, most_threads, value); }
bool switch_value(const char* text, i64* value) { return whole_number(text, 0, 1, value); }
bool any_name(const char*, i64*) { return true; } // the loader refuses what it does not know
bool file_path(const char* text, i64*) { return std::strchr(text, '/') != nullptr; }

// Bytes, or with a letter KiB, MiB, GiB.
bool byte_count(const char* text, i64* value)
{
    const std::size_t length = std::strlen(text);
    char digits[32];
    if (length == 0 || length >= sizeof digits) return false;
    std::memcpy(digits, text, length + 1);
    int shift = 0;
    constexpr char units[] = {'K', 'M', 'G'};
    for (int u = 0; u < 3; ++u)
        if (fold(digits[length - 1]) == units[u]) shift = 10 * (u + 1);
    if (shift) digits[length - 1] = 0;
    if (!whole_number(digits, 0, (i64{1} << 46) >> shift, value)) return false;
    *value <<= shift;
    return true;
}

i64 default_memory_limit() { return (i64{64} << 20) * max(1, sysconf(_SC_NPROCESSORS_ONLN)); }

struct Row {
    const char *name, *meaning, *fallback;
    bool (*parse)(const char* text, i64* value);
    const char* expected; // after "give ..."
    i64 (*default_number)();
};

constexpr auto zero_by_default = [] { return i64{0}; };

constexpr Row table[settings] = {
    {"ORV_NUM_THREADS", "threads a call may use", "as OpenMP", thread_count, "a whole number from 1 to 1024",
     zero_by_default},
    {"ORV_MEMORY_LIMIT", "work memory kept for reuse", "64M for each processor", byte_count,
     "bytes, or a number with K, M or G such as 512M", default_memory_limit},
    {"ORV_REPRODUCIBLE", "1: the same bits on every run", "0", switch_value, "0 or 1", zero_by_default},
    {"ORV_BRANCH", "the kernels, by name", "the best for this processor", any_name, "the name of kernels",
     zero_by_default},
    {"ORV_BRANCH_PATH", "the library of kernels", "beside liborv.so", file_path, "the path of a file, with a /",
     zero_by_default},
};

struct Value {
    bool given;      // in the environment, and sensible
    char text[4096]; // as given; empty if not set
    i64 number;
};
Value values[settings];
char problems[settings][400];
char all_problems[settings * 400];

void read(const Row& row, Value& value, char* problem)
{
    value.number = row.default_number();
    const char* text = secure_getenv(row.name); // a privileged program must not load what its caller names
    if (text == nullptr || *text == 0) return;
    std::snprintf(value.text, sizeof value.text, "%s", text);
    i64 number = 0;
    value.given = std::strlen(text) < sizeof value.text && row.parse(text, &number);
    if (value.given) value.number = number;
    else
        std::snprintf(problem, sizeof problems[0], "%s=\"%.60s\" makes no sense: give %s; the default is used (%s)",
                      row.name, text, row.expected, row.fallback);
}

// The first call that needs a setting also leaves what makes no sense in orv_last_error(), since a program that never
// calls orv_check() would not hear of it.
void read_all()
{
    for (int i = 0; i < settings; ++i) {
        read(table[i], values[i], problems[i]);
        if (problems[i][0] == 0) continue;
        if (all_problems[0] != 0) std::strcat(all_problems, "\n");
        std::strcat(all_problems, problems[i]);
    }
    if (all_problems[0] != 0) fail(ORV_BAD_SETTING, "%s", all_problems);
}

const Value& value(int index)
{
    static pthread_once_t once = PTHREAD_ONCE_INIT;
    pthread_once(&once, read_all);
    return values[index];
}

} // namespace

i64 number(Setting setting) { return value(static_cast<int>(setting)).number; }

const char* text(Setting setting)
{
    const Value& v = value(static_cast<int>(setting));
    return v.given ? v.text : nullptr;
}

const char* settings_problem()
{
    value(0);
    return all_problems[0] ? all_problems : nullptr;
}

} // namespace orv::core

int orv_get_setting(int index, orv_setting* setting)
{
    using namespace orv::core;
    if (index < 0 || index >= settings) return 0;
    const Value& v = value(index);
    const Row& row = table[index];
    *setting = {row.name, row.meaning, row.fallback, v.text[0] ? v.text : nullptr,
                problems[index][0] ? problems[index] : nullptr};
    return 1;
}
