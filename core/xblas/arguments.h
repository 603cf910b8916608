// What the public routines of extended precision call a bad argument. A check for each operation takes its arguments in
// their order and gives the number of the first one that is bad, counted from 1; 0 if all are good. `auto` is what no
// check looks at: scalars, arrays, and prec, which is checked for all operations in one place.
#pragma once

#include "frame/types.h"

namespace orv::core::extended {

constexpr bool known(orv_order order) { return order == ORV_ROW_MAJOR || order == ORV_COLUMN_MAJOR; }
constexpr bool known(orv_trans trans) { return trans >= ORV_NO_TRANS && trans <= ORV_CONJ_TRANS; }
constexpr bool known(orv_uplo uplo) { return uplo == ORV_UPPER || uplo == ORV_LOWER; }
constexpr bool known(orv_diag diag) { return diag == ORV_NON_UNIT_DIAG || diag == ORV_UNIT_DIAG; }
constexpr bool known(orv_side side) { return side == ORV_LEFT_SIDE || side == ORV_RIGHT_SIDE; }
constexpr bool known(orv_conj conj) { return conj == ORV_CONJ || conj == ORV_NO_CONJ; }
constexpr bool known(orv_prec prec) { return prec >= ORV_PREC_SINGLE && prec <= ORV_PREC_EXTRA; }

// Whether a leading dimension holds a matrix of this shape, whole or transposed.
constexpr bool holds(i64 ld, orv_order order, i64 rows, i64 columns)
{
    return ld >= max(1, order == ORV_ROW_MAJOR ? columns : rows);
}
constexpr bool holds(i64 ld, orv_order order, orv_trans trans, i64 rows, i64 columns)
{
    return trans == ORV_NO_TRANS ? holds(ld, order, rows, columns) : holds(ld, order, columns, rows);
}

// ---- Vectors --------------------------------------------------------------------------------------------------------

constexpr auto dot = [](orv_conj conj, i64 n, auto, auto, i64 incx, auto, auto, i64 incy, auto, auto...) {
    if (!known(conj)) return 1;
    if (n < 0) return 2;
    if (incx == 0) return 5;
    if (incy == 0) return 8;
    return 0;
};

constexpr auto sum = [](i64 n, auto, i64 incx, auto, auto...) {
    if (n < 0) return 1;
    if (incx == 0) return 3;
    return 0;
};

constexpr auto axpby = [](i64 n, auto, auto, i64 incx, auto, auto, i64 incy, auto...) {
    if (n < 0) return 1;
    if (incx == 0) return 4;
    if (incy == 0) return 7;
    return 0;
};

constexpr auto waxpby = [](i64 n, auto, auto, i64 incx, auto, auto, i64 incy, auto, i64 incw, auto...) {
    if (n < 0) return 1;
    if (incx == 0) return 4;
    if (incy == 0) return 7;
    if (incw == 0) return 9;
    return 0;
};

// ---- General matrices -----------------------------------------------------------------------------------------------

constexpr int general(orv_order order, orv_trans trans, i64 m, i64 n)
{
    if (!known(order)) return 1;
    if (!known(trans)) return 2;
    if (m < 0) return 3;
    if (n < 0) return 4;
    return 0;
}

constexpr auto gemv = [](orv_order order, orv_trans trans, i64 m, i64 n, auto, auto, i64 lda, auto, i64 incx, auto,
                         auto, i64 incy, auto...) {
    if (const int bad = general(order, trans, m, n)) return bad;
    if (!holds(lda, order, m, n)) return 7;
    if (incx == 0) return 9;
    if (incy == 0) return 12;
    return 0;
};

constexpr auto gemv2 = [](orv_order order, orv_trans trans, i64 m, i64 n, auto, auto, i64 lda, auto, auto, i64 incx,
                          auto, auto, i64 incy, auto...) {
    if (const int bad = general(order, trans, m, n)) return bad;
    if (!holds(lda, order, m, n)) return 7;
    if (incx == 0) return 10;
    if (incy == 0) return 13;
    return 0;
};

constexpr int band(orv_order order, orv_trans trans, i64 m, i64 n, i64 kl, i64 ku, i64 lda)
{
    if (const int bad = general(order, trans, m, n)) return bad;
    if (kl < 0 || kl >= max(1, m)) return 5;
    if (ku < 0 || ku >= max(1, n)) return 6;
    if (lda < 1 || lda - 1 - kl < ku) return 9; // kl + ku + 1 might overflow
    return 0;
}

constexpr auto gbmv = [](orv_order order, orv_trans trans, i64 m, i64 n, i64 kl, i64 ku, auto, auto, i64 lda, auto,
                         i64 incx, auto, auto, i64 incy, auto...) {
    if (const int bad = band(order, trans, m, n, kl, ku, lda)) return bad;
    if (incx == 0) return 11;
    if (incy == 0) return 14;
    return 0;
};

constexpr auto gbmv2 = [](orv_order order, orv_trans trans, i64 m, i64 n, i64 kl, i64 ku, auto, auto, i64 lda, auto,
                          auto, i64 incx, auto, auto, i64 incy, auto...) {
    if (const int bad = band(order, trans, m, n, kl, ku, lda)) return bad;
    if (incx == 0) return 12;
    if (incy == 0) return 15;
    return 0;
};

constexpr auto ge_sum_mv = [](orv_order order, i64 m, i64 n, auto, auto, i64 lda, auto, i64 incx, auto, auto, i64 ldb,
                              auto, i64 incy, auto...) {
    if (!known(order)) return 1;
    if (m < 0) return 2;
    if (n < 0) return 3;
    if (!holds(lda, order, m, n)) return 6;
    if (incx == 0) return 8;
    if (!holds(ldb, order, m, n)) return 11;
    if (incy == 0) return 13;
    return 0;
};

constexpr auto gemm = [](orv_order order, orv_trans transa, orv_trans transb, i64 m, i64 n, i64 k, auto, auto, i64 lda,
                         auto, i64 ldb, auto, auto, i64 ldc, auto...) {
    if (!known(order)) return 1;
    if (!known(transa)) return 2;
    if (!known(transb)) return 3;
    if (m < 0) return 4;
    if (n < 0) return 5;
    if (k < 0) return 6;
    if (!holds(lda, order, transa, m, k)) return 9;
    if (!holds(ldb, order, transb, k, n)) return 11;
    if (!holds(ldc, order, m, n)) return 14;
    return 0;
};

// ---- Symmetric and Hermitian matrices -------------------------------------------------------------------------------

constexpr int symmetric(orv_order order, orv_uplo uplo, i64 n)
{
    if (!known(order)) return 1;
    if (!known(uplo)) return 2;
    if (n < 0) return 3;
    return 0;
}

constexpr auto symv = [](orv_order order, orv_uplo uplo, i64 n, auto, auto, i64 lda, auto, i64 incx, auto, auto,
                         i64 incy, auto...) {
    if (const int bad = symmetric(order, uplo, n)) return bad;
    if (lda < max(1, n)) return 6;
    if (incx == 0) return 8;
    if (incy == 0) return 11;
    return 0;
};
constexpr auto hemv = symv;

constexpr auto symv2 = [](orv_order order, orv_uplo uplo, i64 n, auto, auto, i64 lda, auto, auto, i64 incx, auto, auto,
                          i64 incy, auto...) {
    if (const int bad = symmetric(order, uplo, n)) return bad;
    if (lda < max(1, n)) return 6;
    if (incx == 0) return 9;
    if (incy == 0) return 12;
    return 0;
};
constexpr auto hemv2 = symv2;

constexpr auto sbmv = [](orv_order order, orv_uplo uplo, i64 n, i64 k, auto, auto, i64 lda, auto, i64 incx, auto, auto,
                         i64 incy, auto...) {
    if (const int bad = symmetric(order, uplo, n)) return bad;
    if (k < 0 || k >= max(1, n)) return 4;
    if (lda <= k) return 7;
    if (incx == 0) return 9;
    if (incy == 0) return 12;
    return 0;
};
constexpr auto hbmv = sbmv;

constexpr auto spmv = [](orv_order order, orv_uplo uplo, i64 n, auto, auto, auto, i64 incx, auto, auto, i64 incy,
                         auto...) {
    if (const int bad = symmetric(order, uplo, n)) return bad;
    if (incx == 0) return 7;
    if (incy == 0) return 10;
    return 0;
};
constexpr auto hpmv = spmv;

constexpr auto symm = [](orv_order order, orv_side side, orv_uplo uplo, i64 m, i64 n, auto, auto, i64 lda, auto,
                         i64 ldb, auto, auto, i64 ldc, auto...) {
    if (!known(order)) return 1;
    if (!known(side)) return 2;
    if (!known(uplo)) return 3;
    if (m < 0) return 4;
    if (n < 0) return 5;
    if (lda < max(1, side == ORV_LEFT_SIDE ? m : n)) return 8;
    if (!holds(ldb, order, m, n)) return 10;
    if (!holds(ldc, order, m, n)) return 13;
    return 0;
};
constexpr auto hemm = symm;

// ---- Triangular matrices --------------------------------------------------------------------------------------------

constexpr int triangular(orv_order order, orv_uplo uplo, orv_trans trans, orv_diag diag, i64 n)
{
    if (!known(order)) return 1;
    if (!known(uplo)) return 2;
    if (!known(trans)) return 3;
    if (!known(diag)) return 4;
    if (n < 0) return 5;
    return 0;
}

constexpr auto trmv = [](orv_order order, orv_uplo uplo, orv_trans trans, orv_diag diag, i64 n, auto, auto, i64 ldt,
                         auto, i64 incx, auto...) {
    if (const int bad = triangular(order, uplo, trans, diag, n)) return bad;
    if (ldt < max(1, n)) return 8;
    if (incx == 0) return 10;
    return 0;
};
constexpr auto trsv = trmv;

constexpr auto tpmv = [](orv_order order, orv_uplo uplo, orv_trans trans, orv_diag diag, i64 n, auto, auto, auto,
                         i64 incx, auto...) {
    if (const int bad = triangular(order, uplo, trans, diag, n)) return bad;
    if (incx == 0) return 9;
    return 0;
};

constexpr auto tbsv = [](orv_order order, orv_uplo uplo, orv_trans trans, orv_diag diag, i64 n, i64 k, auto, auto,
                         i64 ldt, auto, i64 incx, auto...) {
    if (const int bad = triangular(order, uplo, trans, diag, n)) return bad;
    if (k < 0 || k >= max(1, n)) return 6;
    if (ldt <= k) return 9;
    if (incx == 0) return 11;
    return 0;
};

} // namespace orv::core::extended
