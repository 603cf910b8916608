#include "bench/call.h"
#include "bench/library.h"

#include <dlfcn.h>
#include <utility>

namespace orv::bench {
namespace {

using Pointers = std::array<void*, 20>;
using Loop = void(void* routine, const Pointers& p, long calls, void* result);

template <std::size_t> using Any = void*;

template <class R, std::size_t... I>
void repeat(void* routine, const Pointers& p, long calls, void* result, std::index_sequence<I...>)
{
    const auto call = reinterpret_cast<R (*)(Any<I>...)>(routine);
    if constexpr (std::is_void_v<R>) {
        for (long i = 0; i < calls; ++i) call(p[I]...);
    } else {
        R last{};
        for (long i = 0; i < calls; ++i) last = call(p[I]...);
        std::memcpy(result, &last, sizeof last);
    }
}

// The loop for so many arguments, out of a table with a row for each number of them.
template <class R> Loop* loop_over(std::size_t arguments)
{
    static constexpr auto table = []<std::size_t... N>(std::index_sequence<N...>)
    {
        return std::array<Loop*, sizeof...(N)>{+[](void* routine, const Pointers& p, long calls, void* result) {
            repeat<R>(routine, p, calls, result, std::make_index_sequence<N>());
        }...};
    }
    (std::make_index_sequence<std::tuple_size_v<Pointers> + 1>());
    return table.at(arguments);
}

Loop* loop_over(Result result, std::size_t arguments)
{
    switch (result) {
    case Result::none:
        break;
    case Result::single_real:
        return loop_over<float>(arguments);
    case Result::double_real:
        return loop_over<double>(arguments);
    case Result::single_complex:
        return loop_over<_Complex float>(arguments);
    case Result::double_complex:
        return loop_over<_Complex double>(arguments);
    case Result::index:
        return loop_over<int>(arguments);
    }
    return loop_over<void>(arguments);
}

// Kernels are found through the core library by name; drivers have an x before the name of the routine.
void* kernel_symbol(void* core, const std::string& routine)
{
    using Lookup = void*(const char*);
    auto* lookup = reinterpret_cast<Lookup*>(dlsym(core, "orv_branch_symbol"));
    if (lookup == nullptr) return nullptr;
    void* kernel = lookup(("orv_blas_mc3_x" + routine).c_str());
    if (kernel == nullptr) kernel = lookup(("orv_blas_mc3_" + routine).c_str());
    return kernel ? kernel : lookup(("orv_xblas_mc3_" + routine).c_str());
}

} // namespace

Repeat bind(const Case& c, void* handle, bool direct, const Arena& arena)
{
    void* routine = direct ? kernel_symbol(handle, c.kernel) : dlsym(handle, (c.kernel + "_").c_str());
    if (routine == nullptr) return {};

    Pointers p{};
    std::size_t n = 0, letters = 0;
    Result result = c.result;
    if (direct && (result == Result::single_complex || result == Result::double_complex)) {
        p[n++] = arena.result(); // kernels write a complex result through a pointer in front
        result = Result::none;
    }
    for (const Argument& a : c.arguments) {
        p[n++] = a.kind == Argument::Kind::operand ? arena.address(c.operands[a.operand])
                                                   : const_cast<std::byte*>(a.value.data());
        letters += a.kind == Argument::Kind::letter;
    }
    // Fortran passes the lengths of character arguments by value behind all others.
    for (; !direct && letters > 0; --letters) p[n++] = reinterpret_cast<void*>(1);

    Loop* loop = loop_over(result, n);
    return [=, out = arena.result()](long calls) { loop(routine, p, calls, out); };
}

} // namespace orv::bench
