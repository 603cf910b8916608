// A sine or cosine transform by a kernel, as one thread uses it.
#pragma once

#include "core/branch/kernel.h"
#include "frame/kernels/pdett.h"

#include <algorithm>

namespace orv::core::pde {

enum class Direction : bool { forward, backward };

template <class T> struct TrigKernels;
#define ORV_TRIG_KERNELS(t, T)                                                                                         \
    template <> struct TrigKernels<T> {                                                                                \
        static inline constinit Kernel init{kernels::pdett::t##_init_trig_transform()};                                \
        static inline constinit Kernel forward{kernels::pdett::t##_forward_trig_transform()};                          \
        static inline constinit Kernel backward{kernels::pdett::t##_backward_trig_transform()};                        \
        static auto* of(Direction direction)                                                                           \
        {                                                                                                              \
            return direction == Direction::forward ? forward.get() : backward.get();                                   \
        }                                                                                                              \
    };
ORV_TRIG_KERNELS(s, float)
ORV_TRIG_KERNELS(d, double)
#undef ORV_TRIG_KERNELS

// A run writes the state in ipar, so each thread has its own.
template <class T> class TrigKernel {
public:
    TrigKernel(const i64* ipar, T* dpar, imports::Handle handle) : dpar_(dpar), handle_(handle)
    {
        std::copy_n(ipar, kernels::pdett::ipar_size, ipar_);
    }

    // In place; false if it failed.
    bool run(Direction direction, T* row)
    {
        auto* const kernel = TrigKernels<T>::of(direction);
        if (kernel == nullptr) return false;
        i64 stat;
        kernel(row, &handle_, ipar_, dpar_, &stat);
        return stat == kernels::pdett::good;
    }

private:
    T* dpar_;
    imports::Handle handle_;
    i64 ipar_[kernels::pdett::ipar_size];
};

} // namespace orv::core::pde
