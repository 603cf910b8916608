// A kernel of the branch, found by its name at the first call and by one load afterwards.
//
//   constinit Kernel xdaxpy{kernels::blas::xdaxpy()};       a constant-initialised static, by its prototype
//   return xdaxpy.run(&n, &alpha, x, &incx, y, &incy);                        ORV_OK, or why it cannot run
//
// Where the kernel returns a value: if (auto* dnrm2 = xdnrm2.get()) return dnrm2(...); else last_status() tells.
#pragma once

#include "core/branch/loader.h"
#include "core/serv/status.h"

#include <atomic>
#include <type_traits>

namespace orv::core {

template <class Signature> class Kernel {
public:
    constexpr explicit Kernel(KernelName name) : name_(name) {}
    template <class Prototype> constexpr explicit Kernel(Prototype) : name_{Prototype::module, Prototype::stem}
    {
        static_assert(std::is_same_v<Signature, typename Prototype::signature>);
    }

    // The kernel, or null with the reason recorded.
    Signature* get()
    {
        Signature* known = address_.load(std::memory_order_acquire); // a plain load on x86
        return __builtin_expect(known != nullptr, 1) ? known : resolve();
    }

    KernelName name() const { return name_; }

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

template <class Prototype> Kernel(Prototype) -> Kernel<typename Prototype::signature>;

} // namespace orv::core
