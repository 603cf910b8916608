// Opening the branch so that it can also go away again.
//
// The branch and the core need each other: the branch imports the service layer and public wrappers from the core, the
// core calls kernels. The dynamic linker records the first direction when it binds the branch, and from then on keeps
// the core loaded as long as the branch is. A handle on the branch that the core kept would keep the branch loaded as
// long as the core is, so a program that closes the core would never be rid of either. Therefore the core keeps no
// handle. It looks one symbol of the branch up in the global scope, for which the dynamic linker records that the core
// needs the branch, and gives its handle back. Now each holds the other, nobody outside holds the branch, and
// the program's dlclose(core) unloads both: the linker follows such records from what is still open, as a garbage
// collector does.
//
// Only lookups in the global scope are recorded so, which is why the branch is opened RTLD_GLOBAL. The core joins the
// global scope too, if the program opened it privately: else the branch would find neither the core's symbols nor the
// mathematics library that the core brings along.
#include "core/branch/loader.h"

#include "core/branch/file.h"
#include "core/branch/kinds.h"
#include "core/serv/settings.h"
#include "core/serv/status.h"
#include "frame/types.h"
#include "orv/branch.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <pthread.h>
#include <unistd.h>

namespace orv::core {
namespace {

constexpr const char* code_symbol = "dll_cpu_version"; // answers the code of its kind

struct Branch {
    const Kind* kind;
    orv_status status = ORV_NO_BRANCH;
    char sentence[2 * PATH_MAX]; // why the branch is not open
    char path[PATH_MAX], version[32], core_path[PATH_MAX];
};
Branch branch;

template <class... Arguments> void refuse(orv_status status, const char* format, Arguments... arguments)
{
    branch.status = status;
    std::snprintf(branch.sentence, sizeof branch.sentence, format, arguments...);
}

const char* linker_reason()
{
    const char* reason = dlerror();
    return reason ? reason : "no reason given";
}

// The linker tells of want of memory only in words, but leaves behind what it was answered when it asked in vain.
void* open_library(const char* path, int mode)
{
    errno = 0;
    return dlopen(path, mode);
}
bool wanted_memory() { return errno == ENOMEM; }

void refuse_for_want_of_memory()
{
    refuse(ORV_NO_MEMORY, "no memory is left to open the library of kernels: start the program again with more of it");
}

// Puts the core in the global scope, and finds the folder it was loaded from. The scope keeps what it is told when the
// handle is given back.
bool find_core(char* folder)
{
    Dl_info self;
    if (dladdr(reinterpret_cast<void*>(branch_symbol), &self) == 0) return false;
    void* handle = open_library(self.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_GLOBAL);
    if (handle == nullptr) return false;
    char origin[PATH_MAX]; // absolute, also if the program has changed its folder since
    const bool known = dlinfo(handle, RTLD_DI_ORIGIN, origin) == 0;
    dlclose(handle);
    if (!known || realpath(origin, folder) == nullptr) return false;
    const char* slash = std::strrchr(self.dli_fname, '/');
    const char* file = slash ? slash + 1 : self.dli_fname;
    return std::snprintf(branch.core_path, PATH_MAX, "%s/%s", folder, file) < PATH_MAX;
}

// The version that the branch carries as an ELF note (name "orv", type 1) in its first loaded pages.
struct Note {
    const void* address; // within the object
    char* version;
    std::size_t size;
};

int read_note(dl_phdr_info* object, std::size_t, void* argument)
{
    auto& note = *static_cast<Note*>(argument);
    const auto inside = [&](const ElfW(Phdr) & p) {
        const auto offset = reinterpret_cast<ElfW(Addr)>(note.address) - object->dlpi_addr - p.p_vaddr;
        return p.p_type == PT_LOAD && offset < p.p_memsz;
    };
    bool ours = false;
    for (int i = 0; i < object->dlpi_phnum; ++i) ours |= inside(object->dlpi_phdr[i]);
    if (!ours) return 0;
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        const auto& p = object->dlpi_phdr[i];
        if (p.p_type != PT_NOTE || p.p_align > 4) continue;
        const char* at = reinterpret_cast<const char*>(object->dlpi_addr + p.p_vaddr);
        const char* const end = at + p.p_memsz;
        while (at + sizeof(ElfW(Nhdr)) <= end) {
            const auto& head = *reinterpret_cast<const ElfW(Nhdr)*>(at);
            const char* name = at + sizeof head;
            const char* text = name + round_up(head.n_namesz, 4);
            if (head.n_type == 1 && head.n_namesz == 4 && std::memcmp(name, "orv", 4) == 0)
                std::snprintf(note.version, note.size, "%.*s", static_cast<int>(head.n_descsz), text);
            at = text + round_up(head.n_descsz, 4);
        }
    }
    return 1;
}

// Where a second copy of orv is in the process, the lookup in the global scope finds the first copy's symbol, and
// nothing records that this core needs this branch. Then the handle stays open, and the second copy stays loaded for
// good.
void keep_without_handle(void* handle)
{
    if (dlsym(RTLD_DEFAULT, code_symbol) == dlsym(handle, code_symbol)) dlclose(handle);
}

void refuse_processor(const Kind& kind)
{
    const auto [name, since] = name_of_first(lacking(kind));
    if (&kind == &humblest)
        return refuse(ORV_OLD_PROCESSOR,
                      "this processor (%s) lacks %s, which all kernels use: run the program on one made since %d",
                      processor().name, name, since);
    refuse(ORV_OLD_PROCESSOR,
           "this processor (%s) lacks %s, which the kernels %s use: run the program on one made since %d, or let orv "
           "choose, without ORV_BRANCH and ORV_BRANCH_PATH",
           processor().name, name, kind.tag, since);
}

bool set_path(const char* folder, const Kind& kind)
{
    return std::snprintf(branch.path, sizeof branch.path, "%s/%s", folder, kind.file) < PATH_MAX;
}

// The best kind for this processor that is installed; the best of all if none is. Null if the processor is too old.
const Kind* best_in(const char* folder)
{
    const auto can_run = [](const Kind& kind) { return lacking(kind) == 0; };
    const Kind* const installed = find_kind(
        [&](const Kind& kind) { return can_run(kind) && set_path(folder, kind) && access(branch.path, F_OK) == 0; });
    return installed ? installed : find_kind(can_run);
}

// The kind of kernels in an opened library, with its version in the record; null if it is none.
const Kind* recognise(void* handle)
{
    const auto cpu_version = reinterpret_cast<int (*)()>(dlsym(handle, code_symbol));
    if (cpu_version == nullptr) return nullptr;
    Note note{reinterpret_cast<void*>(cpu_version), branch.version, sizeof branch.version};
    dl_iterate_phdr(read_note, &note);
    return find_kind([code = cpu_version()](const Kind& kind) { return kind.code == code; });
}

// Whether an opened library may serve; wanted is null if any kind may.
bool accept(void* handle, const Kind* wanted)
{
    const Kind* const found = recognise(handle);
    if (found == nullptr || std::strcmp(branch.version, ORV_VERSION) != 0)
        refuse(ORV_BRANCH_MISMATCH,
               "%s is not the library of kernels of version %s (it %s%s): install both libraries from one build, or "
               "correct ORV_BRANCH_PATH",
               branch.path, ORV_VERSION, branch.version[0] ? "has version " : "tells no version", branch.version);
    else if (wanted != nullptr && found != wanted)
        refuse(ORV_BRANCH_MISMATCH,
               "%s holds the kernels %s, not %s: install both libraries from one build, or correct ORV_BRANCH and "
               "ORV_BRANCH_PATH",
               branch.path, found->tag, wanted->tag);
    else if (lacking(*found)) refuse_processor(*found);
    else branch.kind = found;
    return branch.kind != nullptr;
}

// Opens the file at the path in the record.
void open_path(const Kind* wanted)
{
    if (const FileSize size = look_at_file(branch.path); size.there < size.told)
        return refuse(
            ORV_NO_BRANCH, "%s is cut short: it has %llu of the %llu bytes that it tells of itself; install orv again",
            branch.path, static_cast<unsigned long long>(size.there), static_cast<unsigned long long>(size.told));
    void* handle = open_library(branch.path, RTLD_NOW | RTLD_GLOBAL);
    if (handle == nullptr) {
        if (wanted_memory()) return refuse_for_want_of_memory();
        return refuse(ORV_NO_BRANCH,
                      "the library of kernels cannot be opened (%s): put %s of version %s beside liborv.so, or set "
                      "ORV_BRANCH_PATH to its path",
                      linker_reason(), (wanted ? *wanted : humblest).file, ORV_VERSION);
    }
    if (!accept(handle, wanted)) {
        dlclose(handle);
        return;
    }
    keep_without_handle(handle);
    branch.status = ORV_OK;
}

void open_once()
{
    char folder[PATH_MAX];
    if (!find_core(folder)) {
        if (wanted_memory()) return refuse_for_want_of_memory();
        return refuse(ORV_NO_BRANCH, "liborv.so cannot find out where it lies: link it as a shared library");
    }
    const Kind* wanted = nullptr;
    if (const char* tag = text(Setting::branch)) {
        wanted = find_kind([=](const Kind& kind) { return std::strcmp(kind.tag, tag) == 0; });
        if (wanted == nullptr)
            return refuse(ORV_BAD_SETTING, "ORV_BRANCH=\"%.60s\" is no name of kernels: give one of%s", tag,
                          known_tags);
        if (lacking(*wanted)) return refuse_processor(*wanted);
    }
    if (const char* given = text(Setting::branch_path)) {
        std::snprintf(branch.path, sizeof branch.path, "%s", given);
        return open_path(wanted);
    }
    if (wanted == nullptr) wanted = best_in(folder);
    if (wanted == nullptr) return refuse_processor(humblest);
    if (!set_path(folder, *wanted))
        return refuse(ORV_NO_BRANCH, "the path of %s is too long: install orv in another folder", wanted->file);
    open_path(wanted);
}

} // namespace

orv_status open_branch()
{
    static pthread_once_t once = PTHREAD_ONCE_INIT; // starts afresh in a child that was forked in its midst
    pthread_once(&once, open_once);
    return branch.status == ORV_OK ? ORV_OK : fail(branch.status, "%s", branch.sentence);
}

void* branch_symbol(const char* name)
{
    if (open_branch() != ORV_OK) return nullptr;
    void* handle = open_library(branch.path, RTLD_NOW | RTLD_NOLOAD);
    if (handle == nullptr && wanted_memory())
        return fail(ORV_NO_MEMORY, "no memory is left to look %s up", name), nullptr;
    void* address = handle ? dlsym(handle, name) : nullptr;
    if (handle) dlclose(handle);
    if (address == nullptr)
        fail(ORV_NO_KERNEL, "%s has no symbol %s: install both libraries from one build", branch.path, name);
    return address;
}

void* branch_kernel(KernelName name)
{
    if (open_branch() != ORV_OK) return nullptr;
    char symbol[128]; // twice the longest
    const int length = std::snprintf(symbol, sizeof symbol, "orv_%s_%s_%s", name.module, branch.kind->tag, name.stem);
    if (length < static_cast<int>(sizeof symbol)) return branch_symbol(symbol);
    fail(ORV_NO_KERNEL, "no kernel has a name as long as that of %s in %s", name.stem, name.module);
    return nullptr;
}

} // namespace orv::core

using namespace orv::core;

const char* orv_version() { return ORV_VERSION; }
const char* orv_path() { return (open_branch(), branch.core_path); }
orv_status orv_branch_status() { return open_branch(); }
const char* orv_branch_name() { return open_branch() == ORV_OK ? branch.kind->tag : nullptr; }
const char* orv_branch_version() { return open_branch() == ORV_OK ? branch.version : nullptr; }
const char* orv_branch_path() { return (open_branch(), branch.path[0] ? branch.path : nullptr); }
void* orv_branch_symbol(const char* name) { return branch_symbol(name); }
void* orv_kernel(const char* module, const char* name) { return branch_kernel({module, name}); }

orv_status orv_check()
{
    if (const orv_status status = open_branch(); status != ORV_OK) return status;
    const char* problem = settings_problem();
    return problem ? fail(ORV_BAD_SETTING, "%s", problem) : ORV_OK;
}
