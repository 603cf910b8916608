#include "compat/lapack/late.h"

#include <dlfcn.h>

using orv::i32;
using orv::i64;
using orv::compat::Xerbla;

// Weak: this library needs none, but the linker sees to it that a program's own is found.
extern "C" {
[[gnu::weak]] Xerbla<i32> xerbla_;
[[gnu::weak]] Xerbla<i64> xerbla_64_;
}

namespace {

// Stays open: what was found in it is called at any time.
void* lapack_behind()
{
    static constinit std::atomic<void*> opened{nullptr};
    void* handle = opened.load(std::memory_order_acquire);
    if (handle == nullptr) opened.store(handle = dlopen("liblapack.so.3", RTLD_LAZY | RTLD_LOCAL));
    return handle;
}

template <class Int> Xerbla<Int>* error_routine()
{
    constexpr bool is_narrow = sizeof(Int) == sizeof(i32);
    Xerbla<Int>* linked;
    if constexpr (is_narrow) linked = xerbla_;
    else linked = xerbla_64_;
    if (linked != nullptr) return linked;
    return reinterpret_cast<Xerbla<Int>*>(orv::compat::routine_behind(is_narrow ? "xerbla_" : "xerbla_64_"));
}

} // namespace

void* orv::compat::routine_behind(const char* name)
{
    if (void* next = dlsym(RTLD_NEXT, name)) return next;
    void* const handle = lapack_behind();
    return handle != nullptr ? dlsym(handle, name) : nullptr;
}

template <class Int> void orv::compat::report(const char* symbol, Int position)
{
    const RoutineName routine(symbol);
    auto* const xerbla = error_routine<Int>();
    if (xerbla == nullptr) print_and_stop(routine.text, routine.length, position);
    xerbla(routine.text, &position, routine.length);
}
template void orv::compat::report(const char*, i32);
template void orv::compat::report(const char*, i64);
