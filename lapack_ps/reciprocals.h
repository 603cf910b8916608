// The reciprocals of a diagonal, where there are enough right-hand sides to make up for them.
#pragma once

#include "frame/serv.h"
#include "lapack_ps/scalar.h"

namespace orv::lapack {

constexpr i64 sides_for_reciprocals = 4;

// solve(r) with r[i] = 1/d[i], or 1/conj(d[i]); with null if there are few right-hand sides or no memory.
template <bool conjugate, class T, class F> void with_reciprocals(i64 n, const T* d, i64 nrhs, const F& solve)
{
    if (nrhs < sides_for_reciprocals) return solve(static_cast<const T*>(nullptr));
    auto* const block = static_cast<T*>(orv_serv_allocate(n * i64(sizeof(T)), 128));
    if (block == nullptr) return solve(static_cast<const T*>(nullptr));
    for (i64 i = 0; i < n; ++i) block[i] = reciprocal(conjugate ? conj(d[i]) : d[i]);
    solve(static_cast<const T*>(block));
    orv_serv_deallocate(block);
}

} // namespace orv::lapack
