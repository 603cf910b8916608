// What a routine of this library is made of: its name, the kernels that do the work, and the same routine of the LAPACK
// behind it. Integers have 32 bits here and 64 in kernels.
#pragma once

#include "compat/lapack/late.h"
#include "frame/lapack_arguments.h"

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include <orv/branch.h>
#include <orv/lapack.h>

#include <cstdlib>

#define STANDARD extern "C" __attribute__((visibility("default")))

namespace orv::compat {

struct KernelName {
    const char *module, *stem;
};
inline void* find_kernel(KernelName name) { return orv_kernel(name.module, name.stem); }
template <class F> using Kernel = Late<KernelName, find_kernel, F>;

// F: the routine as C declares it, with the lengths of its strings at the end, which Fortran passes behind all else.
template <class F> class Behind : Late<const char*, routine_behind, F> {
public:
    using Late<const char*, routine_behind, F>::Late;

    // Passes the call on. Where there is nothing behind, the sentence on standard error is all that happens.
    template <class... P> auto operator()(P... arguments)
    {
        F* const routine = this->get();
        using R = decltype(routine(arguments...));
        if (routine == nullptr) return R();
        return routine(arguments...);
    }
};
using Length = std::size_t;
inline constexpr Length one_letter = 1;

// Reports a bad argument if there is one, with its number as info, and says so.
inline bool refused(const char* routine, i32* info, int bad)
{
    if (bad == 0) [[likely]]
        return false;
    if (info != nullptr) *info = -bad;
    report(routine, bad);
    return true;
}

// An array of integers widened for a kernel: a short one on the stack.
class Widened {
public:
    Widened(const i32* from, i64 n) : Widened(n)
    {
        if (*this)
            for (i64 i = 0; i < n; ++i) data_[i] = from[i];
    }
    explicit Widened(i64 n)
        : data_(n <= few ? stack_ : static_cast<i64*>(std::malloc(static_cast<std::size_t>(n) * sizeof(i64))))
    {
    }
    Widened(const Widened&) = delete;
    Widened& operator=(const Widened&) = delete;
    ~Widened()
    {
        if (data_ != stack_) std::free(data_);
    }
    explicit operator bool() const { return data_ != nullptr; }
    i64* data() { return data_; }
    void put(i32* to, i64 n) const
    {
        for (i64 i = 0; i < n; ++i) to[i] = static_cast<i32>(data_[i]);
    }

private:
    static constexpr i64 few = 256;
    i64* data_;
    i64 stack_[few];
};

} // namespace orv::compat
