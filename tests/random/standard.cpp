#include "tests/random/standard.h"

#include <cctype>
#include <cstring>
#include <dlfcn.h>

namespace orv::test {
namespace {

// On x86-64, whole numbers and pointers go to a routine one way and real numbers another, each in their order, and what
// it does not expect it does not see: one signature serves all.
constexpr int most_words = 16;
struct Words {
    i64 whole[most_words] = {};
    double real[2] = {};
    int wholes = 0, reals = 0;

    void add(i64 word) { whole[wholes++] = word; }
    void add(const void* pointer) { add(reinterpret_cast<i64>(pointer)); }
    void add_real(const void* from, std::size_t bytes) { std::memcpy(&real[reals++], from, bytes); }
};

template <class R, std::size_t... i> R call(void* function, const Words& w, std::index_sequence<i...>)
{
    using Routine = R(std::remove_cvref_t<decltype(w.whole[i])>..., double, double);
    return reinterpret_cast<Routine*>(function)(w.whole[i]..., w.real[0], w.real[1]);
}
template <class R> R call(void* function, const Words& w)
{
    return call<R>(function, w, std::make_index_sequence<most_words>());
}

int cblas_number(const std::string& option, char letter)
{
    constexpr std::pair<char, int> numbers[] = {{'n', 111}, {'t', 112}, {'c', 113}, {'u', 121}, {'l', 122}};
    if (option == "side") return std::tolower(letter) == 'l' ? 141 : 142;
    if (option == "diag") return std::tolower(letter) == 'n' ? 131 : 132;
    for (const auto& [known, number] : numbers)
        if (known == std::tolower(letter)) return number;
    return 0;
}

bool is_real(char kind) { return kind == 's' || kind == 'd'; }

// Numbers and positions by value, all else by address.
void add_cblas_argument(Words& words, const verify::Argument& a, void* address)
{
    if (a.kind == 'l') words.add(cblas_number(a.name, *static_cast<char*>(address)));
    else if (a.kind == 'i') words.add(*static_cast<i64*>(address));
    else if (is_real(a.kind) && (a.name == "alpha" || a.name == "beta" || a.name == "sb"))
        words.add_real(address, a.kind == 's' ? 4 : 8);
    else words.add(address);
}

} // namespace

Library::Library(const char* path) : handle_(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {}

void* Library::find(const std::string& symbol) const { return dlsym(handle_, symbol.c_str()); }
bool Library::has(const std::string& symbol) const { return find(symbol) != nullptr; }

void Library::run(const Call& call, void* result) const
{
    const bool fortran = call.way == Way::fortran, complex = call.result == 'c' || call.result == 'z';
    Words words;
    if (!fortran && call.layout) words.add(call.way == Way::cblas_by_rows ? 101 : 102);
    for (std::size_t i = 0; i < call.arguments.size(); ++i)
        if (fortran) words.add(call.addresses[i]);
        else add_cblas_argument(words, call.arguments[i], call.addresses[i]);
    if (!fortran && complex) words.add(result);

    void* const routine = find(symbol_of(call.symbol, call.way, call.result));
    const auto returned = [&]<class R>(R) {
        const R value = orv::test::call<R>(routine, words);
        std::memcpy(result, &value, sizeof value);
    };
    if (call.result == 0 || (complex && !fortran)) orv::test::call<void>(routine, words);
    else if (call.result == 'i') returned(i32());
    else if (call.result == 's') returned(float());
    else if (call.result == 'd') returned(double());
    else if (call.result == 'c') returned(cpx<float>());
    else returned(cpx<double>());
}

std::string standard_name(const std::string& family, const std::string& type)
{
    if (family.starts_with("rot")) return ""; // sizes in place of numbers do not tell what a difference may lose
    if (family == "dsdot" || family == "sdsdot") return family;
    if (family == "amax") return 'i' + type + family;
    if ((family == "nrm2" || family == "asum") && type == "c") return "sc" + family;
    if ((family == "nrm2" || family == "asum") && type == "z") return "dz" + family;
    return type + family;
}

std::string symbol_of(const std::string& name, Way way, char result)
{
    if (way == Way::fortran) return name + '_';
    return "cblas_" + name + (result == 'c' || result == 'z' ? "_sub" : "");
}

} // namespace orv::test
