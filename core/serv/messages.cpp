// Numbered messages, and printing for kernels whose caller asked for it.
#include "core/serv/catalogue.h"
#include "frame/export.h"
#include "frame/serv.h"
#include "orv/branch.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <iterator>

using namespace orv::core;

static_assert(std::is_sorted(std::begin(catalogue), std::end(catalogue),
                             [](const Message& a, const Message& b) { return a.number < b.number; }));

namespace {

const char* message(int number)
{
    const auto* found = std::lower_bound(std::begin(catalogue), std::end(catalogue), number,
                                         [](const Message& m, int wanted) { return m.number < wanted; });
    return found != std::end(catalogue) && found->number == number ? found->text : "this message has no text";
}

// Channels are numbered as the system numbers a program's files.
std::FILE* stream(int channel) { return channel == 1 ? stdout : stderr; }

} // namespace

// The text as the catalogue has it: the caller puts its numbers in place, so nothing has to be stored between calls.
ORV_EXPORT const char* orv_serv_get_msg(int number, ...) { return message(number); }

// One line: the message with what follows the flag in its places.
ORV_EXPORT void orv_serv_print(int channel, int number, int flag, ...)
{
    va_list arguments;
    va_start(arguments, flag);
    std::vfprintf(stream(channel), message(number), arguments);
    std::fputc('\n', stream(channel));
    va_end(arguments);
}

ORV_EXPORT void orv_serv_format_print(int channel, const char* format, int count, ...)
{
    va_list arguments;
    va_start(arguments, count);
    std::vfprintf(stream(channel), format, arguments);
    va_end(arguments);
}

// At most size bytes with the closing zero.
ORV_EXPORT void orv_serv_get_version_string_c(char* buffer, int size)
{
    const char* const branch = orv_branch_name();
    if (size > 0)
        std::snprintf(buffer, size, "orv %s, 64-bit x86 Linux, kernels %s", ORV_VERSION, branch ? branch : "none");
}
