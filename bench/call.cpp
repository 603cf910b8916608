#include "bench/call.h"
#include "bench/library.h"

#include <dlfcn.h>
#include <link.h>
#include <numeric>
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
    using Lookup = void*(const char* module, const char* name);
    auto* lookup = reinterpret_cast<Lookup*>(dlsym(core, "orv_kernel"));
    if (lookup == nullptr) return nullptr;
    if (void* driver = lookup("blas", ("x" + routine).c_str())) return driver;
    for (const char* module : {"blas", "xblas", "lapack_ps"})
        if (void* kernel = lookup(module, routine.c_str())) return kernel;
    return nullptr;
}

// What a library defines itself. A lookup goes on through the libraries that it needs, where LAPACK has the BLAS that is
// under all of them here: it would be timed as a peer of itself.
void* own_symbol(void* library, const std::string& name)
{
    void* const found = dlsym(library, name.c_str());
    link_map *asked = nullptr, *owner = nullptr;
    Dl_info about;
    if (found == nullptr || dlinfo(library, RTLD_DI_LINKMAP, &asked) != 0 ||
        dladdr1(found, &about, reinterpret_cast<void**>(&owner), RTLD_DL_LINKMAP) == 0)
        return nullptr;
    return owner == asked ? found : nullptr;
}

struct BoundStep {
    Loop* loop = nullptr;
    void* routine = nullptr;
    Pointers p{};
};

// The routine is null if the library has none of that name.
BoundStep bind_step(const Case& c, const Step& step, void* handle, bool direct, const Arena& arena)
{
    BoundStep bound;
    bound.routine = direct ? kernel_symbol(handle, step.routine) : own_symbol(handle, step.routine + "_");

    std::size_t n = 0, letters = 0;
    Result result = c.result;
    if (direct && (result == Result::single_complex || result == Result::double_complex)) {
        bound.p[n++] = arena.result(); // kernels write a complex result through a pointer in front
        result = Result::none;
    }
    for (const int index : step.arguments) {
        const Argument& a = c.arguments[index];
        bound.p[n++] = a.kind == Argument::Kind::operand ? arena.address(c.operands[a.operand])
                                                         : const_cast<std::byte*>(a.value.data());
        letters += a.kind == Argument::Kind::letter;
    }
    // Fortran passes the lengths of character arguments by value behind all others.
    for (; !direct && letters > 0; --letters) bound.p[n++] = reinterpret_cast<void*>(1);
    bound.loop = loop_over(result, n);
    return bound;
}

struct Renewal {
    void* to;
    const void* from;
    std::size_t bytes;
};

std::vector<Renewal> renewals(const Case& c, const Arena& arena)
{
    std::vector<Renewal> all;
    for (const Operand& o : c.operands)
        if (o.origin >= 0)
            all.push_back(
                {arena.address(o), arena.address(c.operands[o.origin]), static_cast<std::size_t>(c.bytes(o))});
    return all;
}

} // namespace

Repeat bind(const Case& c, void* handle, bool direct, const Arena& arena)
{
    std::vector<Step> steps = direct ? c.kernel_steps : c.standard_steps;
    if (steps.empty()) {
        steps.push_back({c.kernel, std::vector<int>(c.arguments.size())});
        std::iota(steps[0].arguments.begin(), steps[0].arguments.end(), 0);
    }
    std::vector<BoundStep> bound;
    for (const Step& step : steps) {
        bound.push_back(bind_step(c, step, handle, direct, arena));
        if (bound.back().routine == nullptr) return {};
    }

    void* const out = arena.result();
    const std::vector<Renewal> copies = renewals(c, arena);
    if (bound.size() == 1 && copies.empty())
        return [only = bound[0], out](long calls) { only.loop(only.routine, only.p, calls, out); };
    return [=](long calls) {
        for (; calls > 0; --calls) {
            for (const Renewal& r : copies) std::memcpy(r.to, r.from, r.bytes);
            for (const BoundStep& step : bound) step.loop(step.routine, step.p, 1, out);
        }
    };
}

} // namespace orv::bench
