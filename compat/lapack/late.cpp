#include "compat/lapack/late.h"

#include <cstdio>
#include <cstring>
#include <dlfcn.h>

using orv::i32;

namespace {

using Xerbla = void(const char* routine, const i32* position, std::size_t length);

// Stays open: what was found in it is called at any time.
void* lapack_behind()
{
    static constinit std::atomic<void*> opened{nullptr};
    void* handle = opened.load(std::memory_order_acquire);
    if (handle == nullptr) opened.store(handle = dlopen("liblapack.so.3", RTLD_LAZY | RTLD_LOCAL));
    return handle;
}

void* find_behind(const char* name)
{
    if (void* next = dlsym(RTLD_NEXT, name)) return next;
    void* const handle = lapack_behind();
    return handle != nullptr ? dlsym(handle, name) : nullptr;
}

} // namespace

void* orv::compat::routine_behind(const char* name)
{
    void* const found = find_behind(name);
    static constinit std::atomic<bool> told{false};
    if (found == nullptr && !told.exchange(true))
        std::fprintf(
            stderr,
            "orv: %s is called with arguments that liborv_lapack leaves to the LAPACK behind it, and there is none: "
            "link the program with one, or install liblapack.so.3\n",
            name);
    return found;
}

// Names go upper-case, and short ones filled up with blanks.
void orv::compat::report(const char* routine, i32 position)
{
    char name[] = "      \0\0";
    for (std::size_t i = 0; i + 1 < sizeof name && routine[i] != '\0'; ++i)
        name[i] = routine[i] >= 'a' ? static_cast<char>(routine[i] & 0xdf) : routine[i];
    void* found = dlsym(RTLD_DEFAULT, "xerbla_");
    if (found == nullptr) found = find_behind("xerbla_");
    if (found != nullptr) reinterpret_cast<Xerbla*>(found)(name, &position, std::strlen(name));
    else std::fprintf(stderr, " ** On entry to %s parameter number %2d had an illegal value\n", name, position);
}
