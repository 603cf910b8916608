// Kernels as a caller meets them: by symbol name, out of the built branch library.
#pragma once

#include "frame/types.h"

#include <string>

namespace orv::test {

// Address of an exported symbol of the branch; throws with the name if there is none.
void* branch_symbol(const std::string& name);

// kernel<void(const i64*, ...)>("orv_blas_mc3_xdaxpy")
template <class Signature> Signature* kernel(const std::string& name)
{
    return reinterpret_cast<Signature*>(branch_symbol(name));
}

// Letter of an element type in a symbol.
template <class T> inline constexpr char letter = '?';
template <> inline constexpr char letter<float> = 's';
template <> inline constexpr char letter<double> = 'd';
template <> inline constexpr char letter<cpx<float>> = 'c';
template <> inline constexpr char letter<cpx<double>> = 'z';

} // namespace orv::test
