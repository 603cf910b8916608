// Functions found by name at their first call: kernels of the branch, and routines of the LAPACK that stands behind
// this library, for what no kernel covers.
#pragma once

#include "compat/report.h"
#include "frame/types.h"

#include <atomic>

namespace orv::compat {

// The routine of this name in the next library of the program that has it; else in liblapack.so.3, which is opened for
// it. Null if there is none. A LAPACK that has the plain names with 64-bit integers is never asked: it cannot stand in
// one process with the other kind.
void* routine_behind(const char* name);

template <class Name, void* find(Name), class F> class Late {
public:
    constexpr explicit Late(Name name) : name_(name) {}

    F* get()
    {
        F* known = address_.load(std::memory_order_acquire);
        return known != nullptr ? known : resolve();
    }
    Name name() const { return name_; }

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

// Tells xerbla_, or xerbla_64_, of a call by its symbol: the program's own if it has one. A position is that of a bad
// argument, or a number of compat/report.h.
template <class Int> [[gnu::cold]] void report(const char* symbol, Int position);

} // namespace orv::compat
