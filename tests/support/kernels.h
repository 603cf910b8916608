// Kernels as a caller meets them: by module and name, out of the built library of the branch that runs here.
#pragma once

#include "frame/types.h"
#include "tests/support/prototypes.h"

#include <string>

namespace orv::test {

// Addresses of exported symbols; they throw with the name if there is none. A symbol by all its letters; a kernel, also
// with its signature_id: they throw where the prototypes have the name with another one; a table, which belongs to no
// module.
void* branch_symbol(const std::string& name);
void* kernel_address(const char* module, const std::string& name);
void* kernel_address(const char* module, const std::string& name, const void* signature);
void* table(const std::string& name);

// kernel<kernels::blas::Axpy<T>>("blas", "x", letter<T>, "axpy"), where the name is put together
template <class Signature, class... Parts> Signature* kernel(const char* module, const Parts&... parts)
{
    std::string name;
    (name += ... += parts);
    return reinterpret_cast<Signature*>(kernel_address(module, name, &signature_id<Signature>));
}

// kernel<kernels::blas::xdaxpy>()
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
