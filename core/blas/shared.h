// The body of a routine whose large problems are shared among threads.
#pragma once

#include "core/blas/routine.h"
#include "core/team/team.h"

namespace orv::core {

// A routine above its kernel, which Cut may have run by several threads: Cut::threads(arguments...) says how many pay,
// Cut::run(index, count, kernel, arguments...) is the part of one.
template <auto& F, auto check, class Cut> class Shared {
public:
    template <class Prototype> constexpr explicit Shared(Prototype kernel) : kernel_(kernel) {}

    template <class... P> [[gnu::always_inline]] orv_status operator()(P... arguments)
    {
        if (const int bad = on_values<F>(check, arguments...)) return -bad;
        auto* const kernel = kernel_.get();
        if (kernel == nullptr) [[unlikely]]
            return last_status();
        const int threads = Cut::threads(arguments...);
        if (threads == 1) kernel(arguments...);
        else share(threads, kernel, arguments...);
        return ORV_OK;
    }

private:
    template <class... P> [[gnu::noinline]] static void share(int threads, kernel_form<F>* kernel, P... arguments)
    {
        parallel(threads, [&](int index, int count) { Cut::run(index, count, kernel, arguments...); });
    }

    Kernel<kernel_form<F>> kernel_;
};

} // namespace orv::core
