// What a routine of this library is made of: its symbol, the kernels that do the work (frame/kernels/lapack_ps.h), and
// the same routine of the LAPACK behind it. A routine has two symbols, dpotrf_ with 32-bit integers and dpotrf_64_ with
// 64-bit ones, which kernels have too.
#pragma once

#include "compat/lapack/late.h"
#include "frame/kernels/lapack_ps.h"
#include "frame/lapack_arguments.h"

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include <orv/branch.h>
#include <orv/lapack.h>

#include <cstdlib>
#include <limits>
#include <type_traits>

#define STANDARD extern "C" __attribute__((visibility("default")))

namespace orv::compat {

// A kernel by its prototype: constinit Kernel dgetc2{lapack_ps::dgetc2()}.
namespace lapack_ps = kernels::lapack_ps;
struct KernelName {
    const char *module, *stem;
};
inline void* find_kernel(KernelName name) { return orv_kernel(name.module, name.stem); }
template <class F> struct Kernel : Late<KernelName, find_kernel, F> {
    template <class Prototype>
    constexpr explicit Kernel(Prototype) : Late<KernelName, find_kernel, F>({Prototype::module, Prototype::stem})
    {
        static_assert(std::is_same_v<F, typename Prototype::signature>);
    }
};
template <class Prototype> Kernel(Prototype) -> Kernel<typename Prototype::signature>;

using Length = std::size_t;
inline constexpr Length one_letter = 1;

// A routine by its symbol. F: as C declares it, with the lengths of its strings at the end, which Fortran passes behind
// all else. info is null where the routine has none.
template <class Int, class F> class Routine : Late<const char*, routine_behind, F> {
public:
    using Late<const char*, routine_behind, F>::Late;

    // Reports a bad argument if there is one, with its number as info, and says so.
    bool refuses(Int* info, int bad)
    {
        if (bad == 0) [[likely]]
            return false;
        tell(info, bad);
        return true;
    }

    // Passes the call on. Where there is nothing behind, that is reported, and functions are NaN.
    template <class... P> auto hand_on(Int* info, P... arguments)
    {
        F* const behind = this->get();
        using R = decltype(behind(arguments...));
        if (behind != nullptr) return behind(arguments...);
        tell(info, not_carried_out + orv_branch_status());
        if constexpr (!std::is_void_v<R>) return std::numeric_limits<R>::quiet_NaN();
    }
    bool has_one_behind() { return this->get() != nullptr; }

private:
    [[gnu::cold]] void tell(Int* info, int number)
    {
        if (info != nullptr) *info = -number;
        report<Int>(this->name(), number);
    }
};

// An array of integers as kernels have it, and what they leave there: a short one on the stack.
template <class Int> class Widened {
public:
    Widened(const Int* from, i64 n) : Widened(n)
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
    void put(Int* to, i64 n) const
    {
        for (i64 i = 0; i < n; ++i) to[i] = static_cast<Int>(data_[i]);
    }

private:
    static constexpr i64 few = 256;
    i64* data_;
    i64 stack_[few];
};

} // namespace orv::compat

// DEFINE(t, T, end, Int) in both widths: t and end are what the symbol begins and ends with.
#define ORV_BOTH_WIDTHS(DEFINE, t, T) DEFINE(t, T, _, i32) DEFINE(t, T, _64_, i64)
