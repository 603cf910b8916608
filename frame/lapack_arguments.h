// What LAPACK calls a bad argument: checks in the manner of frame/arguments.h. Routines without one take whatever
// comes.
#pragma once

#include "frame/arguments.h"

namespace orv::arguments {

// Factorisations and solves.

constexpr auto potrf = [](char uplo, i64 n, auto, i64 lda, auto) {
    if (!one_of(uplo, "UL")) return 1;
    if (n < 0) return 2;
    if (lda < max(1, n)) return 4;
    return 0;
};

// A size of work memory that asks for the one which is wanted.
inline constexpr i64 workspace_query = -1;

constexpr auto sytrf = [](char uplo, i64 n, auto, i64 lda, auto, auto, i64 lwork, auto) {
    if (!one_of(uplo, "UL")) return 1;
    if (n < 0) return 2;
    if (lda < max(1, n)) return 4;
    if (lwork < 1 && lwork != workspace_query) return 7;
    return 0;
};

constexpr auto gtsv = [](i64 n, i64 nrhs, auto, auto, auto, auto, i64 ldb, auto) {
    if (n < 0) return 1;
    if (nrhs < 0) return 2;
    if (ldb < max(1, n)) return 7;
    return 0;
};

constexpr auto gttrs = [](char trans, i64 n, i64 nrhs, auto, auto, auto, auto, auto, auto, i64 ldb, auto) {
    if (!one_of(trans, "NTC")) return 1;
    if (n < 0) return 2;
    if (nrhs < 0) return 3;
    if (ldb < max(n, 1)) return 10;
    return 0;
};

constexpr auto real_pttrs = [](i64 n, i64 nrhs, auto, auto, auto, i64 ldb, auto) {
    if (n < 0) return 1;
    if (nrhs < 0) return 2;
    if (ldb < max(1, n)) return 6;
    return 0;
};

constexpr auto complex_pttrs = [](char uplo, i64 n, i64 nrhs, auto, auto, auto, i64 ldb, auto) {
    if (!one_of(uplo, "UL")) return 1;
    if (n < 0) return 2;
    if (nrhs < 0) return 3;
    if (ldb < max(1, n)) return 7;
    return 0;
};

// Tridiagonal matrices factored from both ends.

constexpr auto dttrfb = [](i64 n, auto, auto, auto, auto) { return n < 0 ? 1 : 0; };

constexpr auto dttrsb = [](char trans, i64 n, i64 nrhs, auto, auto, auto, auto, i64 ldb, auto) {
    if (!one_of(trans, "NTC")) return 1;
    if (n < 0) return 2;
    if (nrhs < 0) return 3;
    if (ldb < max(1, n)) return 8;
    return 0;
};

constexpr auto dtsvb = gtsv;

// Rotations and singular values.

constexpr auto lasr = [](char side, char pivot, char direct, i64 m, i64 n, auto, auto, auto, i64 lda) {
    if (!one_of(side, "LR")) return 1;
    if (!one_of(pivot, "VTB")) return 2;
    if (!one_of(direct, "FB")) return 3;
    if (m < 0) return 4;
    if (n < 0) return 5;
    if (lda < max(1, m)) return 9;
    return 0;
};

constexpr auto lasd3 = [](i64 nl, i64 nr, i64 sqre, i64 k, auto, auto, i64 ldq, auto, auto, i64 ldu, auto, i64 ldu2,
                          auto, i64 ldvt, auto, i64 ldvt2, auto, auto, auto, auto) {
    // The reference looks at the first three before all others, and reports them only if the others are good.
    const i64 n = nl + nr + 1, m = n + sqre;
    if (k < 1 || k > n) return 4;
    if (ldq < k) return 7;
    if (ldu < n) return 10;
    if (ldu2 < n) return 12;
    if (ldvt < m) return 14;
    if (ldvt2 < m) return 16;
    if (nl < 1) return 1;
    if (nr < 1) return 2;
    if (sqre != 0 && sqre != 1) return 3;
    return 0;
};

// Scaled copies.

constexpr auto lacpy2 = [](char, i64 m, i64 n, auto, i64 lda, auto, auto, i64 ldb, auto) {
    if (m < 0) return 2;
    if (n < 0) return 3;
    if (lda < max(1, m)) return 5;
    if (ldb < max(1, m)) return 8;
    return 0;
};

constexpr auto lacpy3 = [](char, i64 m, i64 n, auto, i64 lda, auto, auto, auto) {
    if (m < 0) return 2;
    if (n < 0) return 3;
    if (lda < max(1, m)) return 5;
    return 0;
};

} // namespace orv::arguments
