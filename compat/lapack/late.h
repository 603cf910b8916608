// Functions found by name at their first call: kernels of the branch, and routines of the LAPACK that stands behind
// this library, for what no kernel covers.
#pragma once

#include "frame/types.h"

#include <atomic>

namespace orv::compat {

// The routine of this name in the next library of the program that has it; else in liblapack.so.3, which is opened for
// it. Null, the first time with a sentence on standard error, if there is none.
void* routine_behind(const char* name);

template <class Name, void* find(Name), class F> class Late {
public:
    constexpr explicit Late(Name name) : name_(name) {}

    F* get()
    {
        F* known = address_.load(std::memory_order_acquire);
        return known != nullptr ? known : resolve();
    }

private:
    [[gnu::noinline, gnu::cold]] F* resolve()
    {
        auto* const found = reinterpret_cast<F*>(find(name_));
        address_.store(found, std::memory_order_release);
        return found;
    }

    Name name_;
    std::atomic<F*> address_{nullptr};
};

// Reports a bad argument to xerbla_, the program's own if it has one.
[[gnu::cold]] void report(const char* routine, i32 position);

} // namespace orv::compat
