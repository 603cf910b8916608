// A probe between the branch and the service layer. Test programs export these operations themselves, so the branch
// finds them before the core's; each passes on to the core unless the test asked for something else.
#pragma once

#include "frame/types.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orv::test {

struct Probe {
    bool active = false; // off: every operation passes on unseen, from any thread

    // Allocation number fail_at (counted from 0) returns null; -1: none does. fail_all: every one does.
    i64 fail_at = -1;
    bool fail_all = false;

    i64 allocations = 0, failed = 0, live = 0;
    std::vector<void*> living;        // blocks taken and not given back
    std::vector<std::string> checked; // names that check_ptr was given
    bool passes_checks_on = true;     // to the core's check_ptr; else the answer is the probe's own
    std::vector<i64> asked_bytes, asked_alignments;

    std::optional<int> reproducibility, microarchitecture; // answers in place of the core's
    int reproducibility_asked = 0, microarchitecture_asked = 0;
    std::optional<std::vector<i32>> cache; // entries from 0 on
};

// The probe of this process. Kernels may meet it from several threads; a test looks at it when they are done.
Probe& probe();

// Fresh at the start and at the end of a scope.
struct ProbeScope {
    ProbeScope() { probe() = {}, probe().active = true; }
    ~ProbeScope() { probe() = {}; }
    Probe* operator->() { return &probe(); }
};

// Gives back what a routine has left taken, for the few that are told to leave something.
void free_what_is_left();

// Runs the call with allocation 0 failing, then 1, and so on until none is left to fail. After each run nothing may
// still be allocated; check() looks at the result.
void each_allocation_fails(const std::function<void()>& call, const std::function<void()>& check);

} // namespace orv::test
