// Plans that several groups share: the extended precision routines have one more letter and scalars, else they are
// those of the BLAS. Arguments that a routine does not have count as 1.
#pragma once

#include "cli/verify/setting.h"

namespace orv::verify {

// y := alpha*op(A)*(x + tail) + beta*y
Plan gemv(Setting& s);
Plan gbmv(Setting& s);
// y := alpha*A*(x + tail) + beta*y, A symmetric or Hermitian, in the storage that the arguments tell
Plan symv(Setting& s);
Plan hemv(Setting& s);
// x := alpha*op(A)*x and x := alpha*op(A)^-1*x, in the storage that the arguments tell
Plan trmv(Setting& s);
Plan trsv(Setting& s);

// C := alpha*op(A)*op(B) + beta*C
Plan gemm(Setting& s);
// C := alpha*A*B + beta*C or alpha*B*A + beta*C
Plan symm(Setting& s);
Plan hemm(Setting& s);

// The term beta*y. Where the routine does not read y if beta is 0 there is none then, and y holds NaN before the call.
inline void add_scaled(Setting& s, std::vector<Term>& terms, const View& y)
{
    const Number beta = s.scalar("beta");
    if (beta != Number{} || s.extended()) terms.push_back({beta, op(y)});
}

} // namespace orv::verify
