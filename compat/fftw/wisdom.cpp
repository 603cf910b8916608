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

// "(complex forward apart interleaved dims 8:1:1 loops)" in a line of its own
void describe(Text& text, const Problem& p)
{
    constexpr const char* forms[] = {"complex", "to-half", "from-half", "reals"};
    constexpr const char* kinds[] = {" r2hc",    " hc2r",    " dht",     " redft00", " redft01", " redft10",
                                     " redft11", " rodft00", " rodft01", " rodft10", " rodft11"};
    text.add("\n  (");
    text.add(forms[static_cast<int>(p.form)]);
    text.add(p.is_forward() ? " forward" : " backward");
    text.add(p.in_place() ? " in-place" : " apart");
    text.add(p.split ? " split" : " interleaved");
    add_dims(text, " dims", p.dims);
    add_dims(text, " loops", p.loops);
    if (p.form == Form::reals)
        for (int k = 0; k < p.dims.rank; ++k) text.add(kinds[p.kinds[k]]);
    text.add(")");
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

// The length of the line of a problem; 0 if it is none.
std::size_t length_of_line(const char* text)
{
    constexpr char open[] = "\n  (";
    if (std::strncmp(text, open, sizeof open - 1) != 0) return 0;
    const std::size_t end =
        sizeof open - 1 + std::strspn(text + sizeof open - 1, "abcdefghijklmnopqrstuvwxyz0123456789-: ");
    return text[end] == ')' ? end + 1 : 0;
}

// Takes a text of this very form, whole or not at all.
bool take(const char* text)
{
    const std::size_t head = sizeof heading - 1;
    if (std::strncmp(text, heading, head) != 0) return false;
    const char* const body = text + head;
    const char* end = body;
    while (const std::size_t n = length_of_line(end)) end += n;
    if (std::strncmp(end, ending, sizeof ending - 2) != 0) return false;
    const Locked locked;
    for (const char* line = body; line < end; line += length_of_line(line)) {
        Text one;
        one.add(line, length_of_line(line));
        if (one.failed() || !insert(one.c_str())) return false;
    }
    return true;
}

// Reads up to the bracket that closes the first one, so that other texts may stand behind it.
bool take_letters(int (*read)(void*), void* data)
{
    Text text;
    for (int depth = 0, c = read(data); c > 0; c = read(data)) {
        const bool blank = c == ' ' || c == '\n' || c == '\t' || c == '\r';
        if (depth == 0 && blank) continue;
        depth += (c == '(') - (c == ')');
        if (depth <= 0 && c != ')') return false;
        const char letter = static_cast<char>(c);
        text.add(&letter, 1);
        if (depth == 0) return !text.failed() && take(text.c_str());
    }
    return false;
}
int letter_of_file(void* file) { return std::fgetc(static_cast<std::FILE*>(file)); }
int letter_of_text(void* at) { return *(*static_cast<const char**>(at))++; }
bool take_file(std::FILE* file) { return take_letters(letter_of_file, file); }
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
EXPORT int X(import_wisdom_from_string)(const char* text) { return take_letters(letter_of_text, &text); }
EXPORT int X(import_wisdom)(int (*read)(void*), void* data) { return take_letters(read, data); }
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
