// Kernels as a caller meets them: by module and name, out of the built library of the branch that runs here.
#pragma once

#include "frame/types.h"

#include <string>

namespace orv::test {

// Addresses of exported symbols; they throw with the name if there is none. A symbol by all its letters; a kernel; a
// table, which belongs to no module.
void* branch_symbol(const std::string& name);
void* kernel_address(const char* module, const std::string& name);
void* table(const std::string& name);

// kernel<void(const i64*, ...)>("blas", "x", letter<T>, "axpy")
template <class Signature, class... Parts> Signature* kernel(const char* module, const Parts&... parts)
{
    std::string name;
    (name += ... += parts);
    return reinterpret_cast<Signature*>(kernel_address(module, name));
}

// kernel<kernels::blas::xdaxpy>(), with the signature of its prototype
template <class Prototype> typename Prototype::signature* kernel()
{
    return reinterpret_cast<typename Prototype::signature*>(kernel_address(Prototype::module, Prototype::stem));
}

// Letter of an element type in a symbol.
template <class T> inline constexpr char letter = '?';
template <> inline constexpr char letter<float> = 's';
template <> inline constexpr char letter<double> = 'd';
template <> inline constexpr char letter<cpx<float>> = 'c';
template <> inline constexpr char letter<cpx<double>> = 'z';

} // namespace orv::test
