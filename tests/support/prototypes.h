// All kernels with a prototype (frame/kernels/): where they belong, their names, their signatures.
#pragma once

#include <span>

namespace orv::test {

template <class Signature> inline constexpr char signature_id = 0; // its address stands for the signature

struct Prototype {
    const char *module, *stem;
    const void* signature;
};
std::span<const Prototype> prototypes();

} // namespace orv::test
