// Kernels of the grid by their letters, and the record of what ran.
#include "core/sparse/kernels.h"

#include "orv/branch.h"
#include "orv/sparse.h"

#include <cstdio>

namespace orv::core::sparse {
namespace {

constexpr const char *storages[] = {"csr", "coo", "dia", "bsr"}, *forms[] = {"mv", "mm", "sv", "sm"};

struct Text {
    char text[40];
};

// Without module and tag.
Text name_of(const Letters& l)
{
    const bool gemv = l.storage == Storage::bsr && l.kind == 'g';
    Text name;
    std::snprintf(name.text, sizeof name.text, "%c%s%d%c%c%c%c%c__%sout_%s", l.type,
                  storages[static_cast<int>(l.storage)], l.base, l.op, l.kind, l.triangle, l.diagonal,
                  l.base == 0 ? 'c' : 'f', gemv ? "gemv" : forms[static_cast<int>(l.form)], l.seq ? "seq" : "par");
    return name;
}

const char* module_of(bool narrow) { return narrow ? "spblas_lp64" : "spblas"; }

// Kind, triangle and diagonal: g, {s h t}{l u}{n u}, a{l u}, d{n u}.
constexpr unsigned shape_of(const Letters& l)
{
    const unsigned upper = l.triangle == 'u' ? 1 : 0, unit = l.diagonal == 'u' ? 1 : 0;
    switch (l.kind) {
    case 'g':
        return 0;
    case 'a':
        return 1 + upper;
    case 'd':
        return 3 + unit;
    default:
        return (l.kind == 's' ? 8 : l.kind == 'h' ? 12 : 16) + 2 * upper + unit;
    }
}
constexpr unsigned shapes = 20;

constexpr unsigned position(char letter, const char* letters)
{
    unsigned i = 0;
    while (letters[i] != letter) ++i;
    return i;
}

// A place for each name that letters can make. Few of them are ever used, and a page that is not used takes no memory.
constinit std::atomic<void*> found[2 * 4 * 4 * 4 * 2 * 4 * shapes];

unsigned place_of(const Letters& l)
{
    unsigned place = l.narrow ? 1 : 0;
    const auto append = [&](unsigned choices, unsigned choice) { place = place * choices + choice; };
    append(4, static_cast<unsigned>(l.storage));
    append(4, static_cast<unsigned>(l.form));
    append(4, position(l.type, "sdcz"));
    append(2, static_cast<unsigned>(l.base));
    append(4, position(l.op, "ntcs"));
    append(shapes, shape_of(l));
    return place;
}

// Plain data, as in status.cpp.
struct Ran {
    Letters letters;
    KernelName name; // without a stem: the one that the letters say
    int threads;     // 0: nothing ran yet
};
thread_local Ran ran;
thread_local char symbol[64];

} // namespace

void* grid_kernel(const Letters& letters)
{
    std::atomic<void*>& place = found[place_of(letters)];
    void* known = place.load(std::memory_order_acquire);
    if (known == nullptr) {
        known = branch_kernel({module_of(letters.narrow), name_of(letters).text});
        place.store(known, std::memory_order_release);
    }
    return known;
}

void remember(const Letters& letters) { ran = {letters, {}, 1}; }
void remember(KernelName name) { ran = {{}, name, 1}; }
void remember_threads(int threads) { ran.threads = threads; }

} // namespace orv::core::sparse

using namespace orv::core::sparse;

const char* orv_sparse_kernel()
{
    if (ran.threads == 0) return nullptr;
    const bool of_grid = ran.name.stem == nullptr;
    std::snprintf(symbol, sizeof symbol, "orv_%s_%s_%s", of_grid ? module_of(ran.letters.narrow) : ran.name.module,
                  orv_branch_name(), of_grid ? name_of(ran.letters).text : ran.name.stem);
    return symbol;
}

int orv_sparse_threads() { return ran.threads; }
