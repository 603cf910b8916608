#include "compat/fftw/wisdom.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <pthread.h>

namespace orv::compat::fftw {
namespace {

#ifdef ORV_FFTW_SINGLE
constexpr char heading[] = "(orv-fftwf-wisdom";
#else
constexpr char heading[] = "(orv-fftw-wisdom";
#endif
constexpr char ending[] = "\n)\n";

struct Line {
    Line* next;
    char text[];
};
Line* lines;
pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;

class Locked {
public:
    Locked() { pthread_mutex_lock(&lock); }
    ~Locked() { pthread_mutex_unlock(&lock); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
};

// A text that grows; without memory it is cut, and says so.
class Text {
public:
    ~Text() { std::free(text_); }
    void add(const char* s, std::size_t length)
    {
        if (failed_) return;
        auto* const grown = static_cast<char*>(std::realloc(text_, length_ + length + 1));
        if ((failed_ = grown == nullptr)) return;
        text_ = grown;
        std::memcpy(text_ + length_, s, length);
        text_[length_ += length] = '\0';
    }
    void add(const char* s) { add(s, std::strlen(s)); }
    bool failed() const { return failed_; }
    const char* c_str() const { return text_ ? text_ : ""; }
    char* release()
    {
        char* const text = failed_ ? nullptr : text_;
        if (text) text_ = nullptr;
        return text;
    }

private:
    char* text_ = nullptr;
    std::size_t length_ = 0;
    bool failed_ = false;
};

void add_dims(Text& text, const char* what, const Dims& dims)
{
    text.add(what);
    for (const Dim& d : dims) {
        char triple[80];
        std::snprintf(triple, sizeof triple, " %td:%td:%td", d.n, d.is, d.os);
        text.add(triple);
    }
}

// "  (complex forward apart interleaved dims 8:1:1 loops)"
void describe(Text& text, const Problem& p)
{
    constexpr const char* forms[] = {"complex", "to-half", "from-half", "reals"};
    text.add("  (");
    text.add(forms[static_cast<int>(p.form)]);
    text.add(p.is_forward() ? " forward" : " backward");
    text.add(p.in_place() ? " in-place" : " apart");
    text.add(p.split ? " split" : " interleaved");
    add_dims(text, " dims", p.dims);
    add_dims(text, " loops", p.loops);
    if (p.form == Form::reals)
        for (int k = 0; k < p.dims.rank; ++k)
            text.add(p.kinds[k] == r2hc ? " r2hc" : p.kinds[k] == hc2r ? " hc2r" : " dht");
    text.add(")\n");
}

bool found(const char* text)
{
    for (const Line* l = lines; l != nullptr; l = l->next)
        if (std::strcmp(l->text, text) == 0) return true;
    return false;
}
bool insert(const char* text)
{
    if (found(text)) return true;
    auto* const line = static_cast<Line*>(std::malloc(sizeof(Line) + std::strlen(text) + 1));
    if (line == nullptr) return false;
    std::strcpy(line->text, text);
    Line** at = &lines; // sorted, so that the same plans give the same text
    while (*at != nullptr && std::strcmp((*at)->text, text) < 0) at = &(*at)->next;
    line->next = *at, *at = line;
    return true;
}
void forget_all()
{
    while (lines != nullptr) {
        Line* const next = lines->next;
        std::free(lines);
        lines = next;
    }
}

bool everything(Text& text)
{
    const Locked locked;
    text.add(heading);
    for (const Line* l = lines; l != nullptr; l = l->next) text.add(l->text);
    text.add(ending);
    return !text.failed();
}

// Takes a text of this very form, whole or not at all.
bool take(const char* text)
{
    const std::size_t head = sizeof heading - 1;
    if (std::strncmp(text, heading, head) != 0) return false;
    const char* const body = text + head;
    const char* at = body;
    while (std::strncmp(at, "  (", 3) == 0) {
        const char* const end = std::strchr(at, '\n');
        if (end == nullptr || end[-1] != ')') return false;
        at = end + 1;
    }
    if (std::strncmp(at, ending, sizeof ending - 2) != 0) return false;
    const Locked locked;
    for (const char* line = body; line < at;) {
        const char* const end = std::strchr(line, '\n') + 1;
        Text one;
        one.add(line, static_cast<std::size_t>(end - line));
        if (one.failed() || !insert(one.c_str())) return false;
        line = end;
    }
    return true;
}

bool take_file(std::FILE* file)
{
    Text text;
    char part[4096];
    while (const std::size_t n = std::fread(part, 1, sizeof part, file)) text.add(part, n);
    return !text.failed() && take(text.c_str());
}
bool write_file(std::FILE* file)
{
    Text text;
    return everything(text) && std::fputs(text.c_str(), file) >= 0;
}

} // namespace

bool is_known(const Problem& problem)
{
    Text text;
    describe(text, problem);
    const Locked locked;
    return !text.failed() && found(text.c_str());
}
void note(const Problem& problem)
{
    Text text;
    describe(text, problem);
    if (text.failed()) return;
    const Locked locked;
    insert(text.c_str());
}

EXPORT void X(forget_wisdom)()
{
    const Locked locked;
    forget_all();
}
EXPORT char* X(export_wisdom_to_string)()
{
    Text text;
    everything(text);
    return text.release();
}
EXPORT void X(export_wisdom)(void (*write)(char, void*), void* data)
{
    Text text;
    if (!everything(text)) return;
    for (const char* c = text.c_str(); *c != '\0'; ++c) write(*c, data);
}
EXPORT void X(export_wisdom_to_file)(std::FILE* file) { write_file(file); }
EXPORT int X(export_wisdom_to_filename)(const char* name)
{
    std::FILE* const file = std::fopen(name, "w");
    if (file == nullptr) return 0;
    const bool written = write_file(file);
    return std::fclose(file) == 0 && written;
}
EXPORT int X(import_wisdom_from_string)(const char* text) { return take(text); }
EXPORT int X(import_wisdom)(int (*read)(void*), void* data)
{
    Text text;
    for (int c = read(data); c >= 0; c = read(data)) {
        const char letter = static_cast<char>(c);
        text.add(&letter, 1);
        if (letter == '\0') break;
    }
    return !text.failed() && take(text.c_str());
}
EXPORT int X(import_wisdom_from_file)(std::FILE* file) { return take_file(file); }
EXPORT int X(import_wisdom_from_filename)(const char* name)
{
    std::FILE* const file = std::fopen(name, "r");
    if (file == nullptr) return 0;
    const bool taken = take_file(file);
    std::fclose(file);
    return taken;
}
// The system's file holds what another library found out; there is none for this one.
EXPORT int X(import_system_wisdom)() { return 0; }

} // namespace orv::compat::fftw
