// A kernel of the branch, found by its name at the first call and by one load afterwards.
//
//   constinit Kernel<void(const i64*, ...)> xdaxpy{{"blas", "xdaxpy"}};     a constant-initialised static
//   return xdaxpy.run(&n, &alpha, x, &incx, y, &incy);                        ORV_OK, or why it cannot run
//
// Where the kernel returns a value: if (auto* dnrm2 = xdnrm2.get()) return dnrm2(...); else last_status() tells.
#pragma once

#include "core/branch/loader.h"
#include "core/serv/status.h"

#include <atomic>

namespace orv::core {

template <class Signature> class Kernel {
public:
    constexpr explicit Kernel(KernelName name) : name_(name) {}

    // The kernel, or null with the reason recorded.
    Signature* get()
    {
        Signature* known = address_.load(std::memory_order_acquire); // a plain load on x86
        return __builtin_expect(known != nullptr, 1) ? known : resolve();
    }

    template <class... Arguments> orv_status run(Arguments... arguments)
    {
        Signature* kernel = get();
        if (kernel == nullptr) return last_status();
        kernel(arguments...);
        return ORV_OK;
    }

private:
    [[gnu::noinline, gnu::cold]] Signature* resolve()
    {
        auto* found = reinterpret_cast<Signature*>(branch_kernel(name_));
        address_.store(found, std::memory_order_release);
        return found;
    }

    KernelName name_;
    std::atomic<Signature*> address_{nullptr};
};

} // namespace orv::core
