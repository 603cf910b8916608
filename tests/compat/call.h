// Every way to call a routine, by name: the test's own reading of how each interface passes arguments.
#pragma once

#include "frame/types.h"

#include <array>
#include <dlfcn.h>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace orv::test {

// What a test passes: an integer, an array of positions from 0, a scalar, a pointer to elements, or a character.
struct Int {
    i64 value;
};
using Positions = std::vector<i64>;

enum class Style { value, pointer, fortran, cblas };

// One interface: how a name is made from that of the routine, and how it passes arguments.
struct Interface {
    const char *prefix, *suffix;
    Style style;
    int bits;

    std::string symbol(const std::string& routine) const { return prefix + routine + suffix; }
    bool standard() const { return style == Style::fortran || style == Style::cblas; }
};
inline constexpr std::array interfaces{
    Interface{"orv_", "", Style::value, 64},
    Interface{"orv_blas_", "", Style::pointer, 64},
    Interface{"orv_blas_lp64_", "", Style::pointer, 32},
    Interface{"", "_", Style::fortran, 32},
    Interface{"", "_64_", Style::fortran, 64},
    Interface{"cblas_", "", Style::cblas, 32},
    Interface{"cblas_", "_64", Style::cblas, 64},
    Interface{"cblas_", "64_", Style::cblas, 64},
};

inline void* symbol(const std::string& name)
{
    void* address = dlsym(RTLD_DEFAULT, name.c_str());
    if (address == nullptr) throw std::runtime_error("no symbol " + name);
    return address;
}

namespace detail {

template <class I> std::vector<I> counted_from(i64 base, const Positions& positions)
{
    std::vector<I> result;
    for (const i64 p : positions) result.push_back(static_cast<I>(p + base));
    return result;
}

// An argument as one style takes it; the object holds what a pointer leads to until the call is over.
template <class I, class A> struct ByPointer {
    A held;
    explicit ByPointer(A a) : held(a) {}
    const void* get() const
    {
        if constexpr (std::is_pointer_v<A>) return held;
        else return &held;
    }
};
template <class I> struct ByPointer<I, Int> {
    I held;
    explicit ByPointer(Int a) : held(static_cast<I>(a.value)) {}
    const void* get() const { return &held; }
};
template <class I> struct ByPointer<I, Positions> {
    std::vector<I> held;
    explicit ByPointer(const Positions& a) : held(counted_from<I>(1, a)) {}
    const void* get() const { return held.data(); }
};

template <class A> struct ByValue {
    A held;
    explicit ByValue(A a) : held(a) {}
    A get() const { return held; }
};
template <> struct ByValue<Int> {
    Int held;
    explicit ByValue(Int a) : held(a) {}
    i64 get() const { return held.value; }
};
template <> struct ByValue<Positions> {
    const Positions& held;
    explicit ByValue(const Positions& a) : held(a) {}
    const i64* get() const { return held.data(); }
};

template <class I, class A> struct Cblas {
    A held;
    explicit Cblas(A a) : held(a) {}
    auto get() const
    {
        if constexpr (std::is_same_v<A, Int>) return static_cast<I>(held.value);
        else if constexpr (is_complex<A>) return static_cast<const void*>(&held);
        else return held;
    }
};

template <class R, class... P> R invoke(void* function, P... arguments)
{
    return reinterpret_cast<R (*)(P...)>(function)(arguments...);
}

template <class I, class R, class... A> R call_by_pointer(const Interface& via, const std::string& routine, A... a)
{
    void* const f = symbol(via.symbol(routine));
    if constexpr (std::is_void_v<R>) invoke<R>(f, ByPointer<I, A>(a).get()...);
    else if constexpr (std::is_same_v<R, Int>) return {invoke<I>(f, ByPointer<I, A>(a).get()...) - 1};
    else if constexpr (is_complex<R>) {
        if (via.style == Style::fortran) return invoke<R>(f, ByPointer<I, A>(a).get()...);
        R result;
        invoke<void>(f, static_cast<const void*>(&result), ByPointer<I, A>(a).get()...);
        return result;
    } else return invoke<R>(f, ByPointer<I, A>(a).get()...);
}

template <class I, class R, class... A> R call_cblas(const Interface& via, const std::string& routine, A... a)
{
    if constexpr (std::is_void_v<R>) invoke<R>(symbol(via.symbol(routine)), Cblas<I, A>(a).get()...);
    else if constexpr (std::is_same_v<R, Int>) {
        return {static_cast<i64>(invoke<std::size_t>(symbol(via.symbol(routine)), Cblas<I, A>(a).get()...))};
    } else if constexpr (is_complex<R>) {
        R result;
        void* const f = symbol(via.symbol(routine + "_sub"));
        invoke<void>(f, Cblas<I, A>(a).get()..., static_cast<void*>(&result));
        return result;
    } else return invoke<R>(symbol(via.symbol(routine)), Cblas<I, A>(a).get()...);
}

} // namespace detail

// Calls a routine. R: void, a number, or Int for a position, which counts from 0 here, -1 meaning none (0 in CBLAS).
template <class R, class... A> R call(const Interface& via, const std::string& routine, A... a)
{
    if (via.style == Style::cblas) {
        if (via.bits == 32) return detail::call_cblas<i32, R>(via, routine, a...);
        return detail::call_cblas<i64, R>(via, routine, a...);
    }
    if (via.style != Style::value) {
        if (via.bits == 32) return detail::call_by_pointer<i32, R>(via, routine, a...);
        return detail::call_by_pointer<i64, R>(via, routine, a...);
    }
    void* const f = symbol(via.symbol(routine));
    if constexpr (std::is_same_v<R, Int>) return {detail::invoke<i64>(f, detail::ByValue<A>(a).get()...)};
    else return detail::invoke<R>(f, detail::ByValue<A>(a).get()...);
}

} // namespace orv::test
